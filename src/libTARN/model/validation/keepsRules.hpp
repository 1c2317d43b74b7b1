#pragma once

namespace libtarn {
namespace model {

class LibTarnDocumentInternal;
class LibTarnExtensionImp;
class LibTarnHeaderImp;

namespace validation {

/// Returns true if the document is known to keep the rules of the format. False as well for a
/// host's nodes, indexes and name validators, whose functions a Validator must call. A Validator
/// also finds the violation to report.
bool keepsRules(const LibTarnDocumentInternal& root);
/// Returns true if the header and all below it are known to keep the rules of the format.
bool keepsRules(const LibTarnHeaderImp& header);
/// Returns true if the extension and all below it are known to keep the rules of the format.
bool keepsRules(const LibTarnExtensionImp& extension);

}  // namespace validation
}  // namespace model
}  // namespace libtarn
