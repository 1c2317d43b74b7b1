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
/// A value: elements and attributes hold one each. Two factories are equal for linking when they
/// have the same pool object. A pool that is out of memory is an assertion ("memory").
class TARN_API DomFactory {
 public:
  /// Creates everything in `pool`, which must outlive the factory.
  explicit DomFactory(IMemoryPool* pool) : pool_(pool) {}

  /// Returns room for `size` characters, filled from `source` unless it is null; no NUL is
  /// appended. With size 0, copies the whole NUL-terminated `source` and its NUL. Throws
  /// std::bad_alloc for a size that an unsigned int cannot hold.
  char* allocateString(const char* source, std::size_t size);

  /// Returns a detached element with copies of name and value (null: none). A size of 0 means that
  /// the text is NUL-terminated.
  DomElement* allocateNode(rapidxml::node_type type, const char* name, const char* value,
                           std::size_t nameSize, std::size_t valueSize);

  /// Returns a detached attribute; texts as in allocateNode().
  DomAttribute* allocateAttribute(const char* name, const char* value, std::size_t nameSize,
                                  std::size_t valueSize);

  /// Copies the texts of `source`, NUL-terminated, and sets them as those of `target`, which lives
  /// in this pool. A text that holds a NUL is copied up to it. Unset texts become "".
  void copyTexts(const rapidxml::xml_base<char>& source, rapidxml::xml_base<char>& target);

  /// Returns the pool.
  IMemoryPool* getMemoryPool() const { return pool_; }

  /// Returns memory for one object of `size` bytes, never null (asserted). Throws like
  /// allocateString().
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
