#pragma once

#include "support/PlainTree.hpp"

namespace tarn_test {

/// What a merge of two documents does, on plain trees of their roots. No text may hold a zero byte.
///
/// Answers whether the delta can be merged; `source` is as it was when not. Operations that "auto"
/// comes to are written into `delta`.
bool mergePlain(PlainElement& source, PlainElement& delta);

/// What a merge of one object into the cmData of a source does. Answers whether it fits; `cmData`
/// is as it was when not.
bool mergePlainObject(PlainElement& cmData, const PlainElement& object);

/// What a deep copy of an element through the factory has.
PlainElement copyOf(const PlainElement& element);

}  // namespace tarn_test
