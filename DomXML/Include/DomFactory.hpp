#pragma once

#include <climits>
#include <cstddef>
#include <new>

#include "libtarn/Assertion.hpp"
#include "libtarn/IMemoryPool.hpp"
#include "libtarn/TarnApi.hpp"
#include "libtarn/rapidxml/nodes.hpp"

namespace libDomXml {

class DomAttribute;
class DomElement;

/// Creates DOM objects in one pool, with copies of their texts in the same pool.
///
/// A value: elements and attributes hold one each. Two factories are the same for linking when
/// their pools are the same object. A pool that has no memory left is an assertion ("memory").
class TARN_API DomFactory {
 public:
  /// Makes everything in `pool`, which must outlive it.
  explicit DomFactory(IMemoryPool* pool) : pool_(pool) {}

  /// Room for `size` characters, filled from `source` when given; no terminator is added. Size 0
  /// takes the whole zero-terminated source with its terminator. Throws std::bad_alloc for a size
  /// that an unsigned int cannot hold.
  char* allocateString(const char* source, std::size_t size);

  /// A detached element with copies of name and value (null: none). A size of 0 means that the text
  /// is zero-terminated.
  DomElement* allocateNode(rapidxml::node_type type, const char* name, const char* value,
                           std::size_t nameSize, std::size_t valueSize);

  /// A detached attribute, its texts as in allocateNode().
  DomAttribute* allocateAttribute(const char* name, const char* value, std::size_t nameSize,
                                  std::size_t valueSize);

  /// Gives `target`, which lives in this pool, copies of the texts of `source`, each up to a zero
  /// that it may hold, and ended by one. Unset texts become "".
  void copyTexts(const rapidxml::xml_base<char>& source, rapidxml::xml_base<char>& target);

  /// The pool.
  IMemoryPool* getMemoryPool() const { return pool_; }

  /// Memory for one object of `size` bytes. Throws as allocateString(); never null (asserted).
  void* allocateObject(std::size_t size) {
    if (size > UINT_MAX) throw std::bad_alloc();
    void* const memory = pool_->allocateMemory(static_cast<unsigned int>(size));
    TARN_ASSERT(memory, "memory");
    return memory;
  }

 private:
  void setTexts(rapidxml::xml_base<char>& record, const char* name, const char* value,
                std::size_t nameSize, std::size_t valueSize);

  IMemoryPool* pool_;
};

}  // namespace libDomXml
