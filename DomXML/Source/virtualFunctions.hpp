#pragma once

#include <cstddef>
#include <cstring>

#include "libtarn/IDomElement.hpp"

namespace libDomXml {

/// Slots of virtual functions in the virtual tables of elements, as the Itanium C++ ABI lays them
/// out: both destructors, then the other functions in the order of their declarations.
enum class VirtualFunction : std::size_t {
  CLONE = 2,              ///< IDomElement::clone()
  CLONE_INTO_POOL = 3,    ///< IDomElement::clone(IMemoryPool*)
  CLONE_BY_FACTORY = 27,  ///< TarnDomElement::clone(TarnFactory&)
};

/// Returns true if a call of `function` runs the same code for both elements: the class of one has
/// not overridden the function of the other. Without this, a copy of nested elements of a host
/// class would recurse as deep as the document; C++ has no expression for it.
///
/// False when in doubt: a program that is not position-independent may see another address of the
/// same function.
inline bool runSameCode(const IDomElement& a, const IDomElement& b, VirtualFunction function) {
  const auto code = [function](const IDomElement& element) {
    const void* const* table = nullptr;
    std::memcpy(&table, static_cast<const void*>(&element), sizeof(table));
    return table[static_cast<std::size_t>(function)];
  };
  return code(a) == code(b);
}

}  // namespace libDomXml
