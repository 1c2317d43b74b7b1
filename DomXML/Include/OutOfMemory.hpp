#pragma once

namespace libDomXml {

/// What a document whose pool takes its blocks from memory maps does when the system gives none.
enum class OutOfMemory {
  Assert,  ///< The process ends with the assertion "memory".
  Throw    ///< The operation throws std::bad_alloc; the document can be used on or destroyed.
};

}  // namespace libDomXml
