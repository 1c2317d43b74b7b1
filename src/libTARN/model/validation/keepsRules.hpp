#pragma once

namespace libtarn {
namespace model {

class LibTarnDocumentInternal;
class LibTarnExtensionImp;
class LibTarnHeaderImp;

namespace validation {

/// Whether the element and all below it are known to keep the rules of the format. False as well
/// for nodes, indexes and name validators of the host's, whose functions are for the walk of a
/// Validator to call. That walk also finds the violation to report.
bool keepsRules(const LibTarnDocumentInternal& root);
bool keepsRules(const LibTarnHeaderImp& header);
bool keepsRules(const LibTarnExtensionImp& extension);

}  // namespace validation
}  // namespace model
}  // namespace libtarn
