#pragma once

#include "support/ReferenceTree.hpp"

namespace tarn_test {

/// The reference model of a merge: merges trees of the roots of two documents. No text may hold a
/// NUL.
///
/// Returns true if the delta can be merged, otherwise false with `source` unchanged. Replaces
/// "auto" in `delta` by the operation that it stands for.
bool referenceMerge(ReferenceElement& source, ReferenceElement& delta);

/// The reference model of a merge of one object into the cmData of a source. Returns true if the
/// object fits, otherwise false with `cmData` unchanged.
bool referenceMergeObject(ReferenceElement& cmData, const ReferenceElement& object);

/// The reference model of a deep copy through the factory.
ReferenceElement copyOf(const ReferenceElement& element);

}  // namespace tarn_test
