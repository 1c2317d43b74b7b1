#pragma once

namespace libDomXml {

/// What a document whose pool uses memory maps does when the system has no memory.
enum class OutOfMemory {
  Assert,  ///< The process ends with the assertion "memory".
  Throw    ///< The operation throws std::bad_alloc; the document can still be used or destroyed.
};

}  // namespace libDomXml
