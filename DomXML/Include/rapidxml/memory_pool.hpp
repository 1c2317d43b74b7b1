// Included by other headers; not for hosts.
#pragma once

// The source of the records of a tree.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <type_traits>

#include "libtarn/Assertion.hpp"
#include "libtarn/IMemoryPool.hpp"
#include "libtarn/TarnApi.hpp"
#include "libtarn/rapidxml/nodes.hpp"

namespace rapidxml {

/// Allocates nodes, attributes and strings for the parser.
template <class Ch>
class TARN_API IXMLFactory {
 public:
  virtual ~IXMLFactory() = default;

  /// Returns a detached node. The parser passes null and 0 for all but `type`.
  virtual xml_node<Ch>* allocate_node(node_type type, const Ch* name, const Ch* value,
                                      std::size_t name_size, std::size_t value_size) = 0;

  /// Returns a detached attribute. The parser passes null and 0 for everything.
  virtual xml_attribute<Ch>* allocate_attribute(const Ch* name, const Ch* value,
                                                std::size_t name_size, std::size_t value_size) = 0;

  /// Returns room for `size` characters, filled from `source` unless it is null. With size 0,
  /// copies the whole NUL-terminated `source` and its NUL.
  virtual Ch* allocate_string(const Ch* source, std::size_t size) = 0;
};

/// Bump allocator of one document. Everything allocated from it is released when the pool is
/// destroyed; no destructor of what was built in it runs.
///
/// Block of the pool, newest first:
///
///   raw                align(raw)      + header                           raw + size
///   | slack            | previous block | records, strings ...             |
///
/// A request that the current block cannot hold opens a new block; the rest of the old one is
/// abandoned. The first block is part of the pool object. Not copyable. Used by one thread at a
/// time.
template <class Ch>
class TARN_API memory_pool : public libDomXml::IMemoryPool, public IXMLFactory<Ch> {
 public:
  /// Returns a block of that many bytes, aligned for any type.
  using alloc_func = void*(std::size_t);
  /// Takes back a block.
  using free_func = void(void*);
  /// Like alloc_func. Also gets the newest block of the pool (null for the first), so that it can
  /// cut blocks from larger pieces.
  using alloc_next_func = void*(std::size_t, void*);

  /// Alignment of every result in bytes.
  static constexpr std::size_t alignment = sizeof(void*);
  /// Size in bytes of the block inside the pool object.
  static constexpr std::size_t static_pool_size = 1024;
  /// Least usable size in bytes of a further block (230 KiB).
  static constexpr std::size_t dynamic_pool_size = 235520;
  /// Bytes of a further block beside its usable size: the link to the previous block, and what it
  /// may cost to align the link and the first record.
  static constexpr std::size_t block_overhead = sizeof(char*) + 2 * alignment - 2;

  /// An empty pool, whose first block is part of the object.
  memory_pool() : m_begin(m_static_memory), m_ptr(align(m_static_memory)), m_end(static_end()) {}
  memory_pool(const memory_pool&) = delete;
  memory_pool& operator=(const memory_pool&) = delete;

  ~memory_pool() override {
    while (m_begin != m_static_memory) {
      char* const previous = *reinterpret_cast<char**>(align(m_begin));
      m_free_func ? m_free_func(m_begin) : delete[] m_begin;
      m_begin = previous;
    }
  }

  /// Returns a detached record; texts are not copied.
  xml_node<Ch>* allocate_node(node_type type, const Ch* name, const Ch* value,
                              std::size_t name_size, std::size_t value_size) override {
    auto* const node = new (allocate_aligned(sizeof(xml_node<Ch>))) xml_node<Ch>(type);
    set_texts(*node, name, value, name_size, value_size);
    return node;
  }

  /// Returns a detached record; texts are not copied.
  xml_attribute<Ch>* allocate_attribute(const Ch* name, const Ch* value, std::size_t name_size,
                                        std::size_t value_size) override {
    auto* const attribute = new (allocate_aligned(sizeof(xml_attribute<Ch>))) xml_attribute<Ch>();
    set_texts(*attribute, name, value, name_size, value_size);
    return attribute;
  }

  /// Returns a copy of `size` characters; with size 0, of everything up to and with the NUL.
  /// Without `source` the characters are uninitialised.
  Ch* allocate_string(const Ch* source, std::size_t size) override {
    TARN_ASSERT(source || size, "source || size");
    if (size == 0) size = internal::measure(source) + 1;
    auto* const result = static_cast<Ch*>(allocate_aligned(size * sizeof(Ch)));
    if (source) std::memcpy(result, source, size * sizeof(Ch));
    return result;
  }

  /// Installs the functions that blocks come from and go to. Nothing may have been allocated yet
  /// (asserted). `allocate` must not return null (asserted when it does). An exception of
  /// `allocate` leaves the request that caused it, with the pool unchanged.
  void set_allocator(alloc_func* allocate, free_func* release) {
    assert_unused();
    m_alloc_func = allocate;
    m_alloc_next_func = nullptr;
    m_free_func = release;
  }
  /// Like set_allocator(), for an alloc_next_func.
  void set_growing_allocator(alloc_next_func* allocate, free_func* release) {
    assert_unused();
    m_alloc_func = nullptr;
    m_alloc_next_func = allocate;
    m_free_func = release;
  }

  /// Returns the bytes of all blocks taken so far, used or not.
  std::size_t pool_size() const { return m_block_bytes; }

 protected:
  /// Returns `size` bytes, aligned. Throws std::bad_alloc, with the pool unchanged, when there is
  /// no memory.
  void* allocate_aligned(std::size_t size) {
    char* const result = align(m_ptr);
    if (result > m_end || size > static_cast<std::size_t>(m_end - result)) {
      return allocate_in_new_block(size);
    }
    __builtin_prefetch(result + 512, 1);
    m_ptr = result + size;
    return result;
  }

  /// Forgets everything allocated since the object at `first`, itself included. Its memory is given
  /// out again, as far as it lies in the current block.
  void forget_from(void* first) {
    const auto address = reinterpret_cast<std::uintptr_t>(first);
    const bool in_block = address >= reinterpret_cast<std::uintptr_t>(m_begin) &&
                          address < reinterpret_cast<std::uintptr_t>(m_end);
    m_ptr = in_block ? static_cast<char*>(first) : align(align(m_begin) + sizeof(char*));
  }

 private:
  static_assert(std::is_same_v<Ch, char>, "records are made for char");
  static_assert(alignof(xml_node<Ch>) <= alignment && alignof(xml_attribute<Ch>) <= alignment,
                "the pool aligns to the size of a pointer");

  static char* align(char* position) {
    const auto address = reinterpret_cast<std::uintptr_t>(position);
    return position + (-address % alignment);
  }

  char* static_end() { return m_static_memory + static_pool_size; }

  [[gnu::noinline]] void* allocate_in_new_block(std::size_t size) {
    const std::size_t usable = size > dynamic_pool_size ? size : dynamic_pool_size;
    if (usable > SIZE_MAX - block_overhead) throw std::bad_alloc();
    const std::size_t raw_size = usable + block_overhead;
    char* const raw = allocate_raw(raw_size);
    char* const header = align(raw);
    *reinterpret_cast<char**>(header) = m_begin;
    m_begin = raw;
    m_end = raw + raw_size;
    m_block_bytes += raw_size;
    char* const result = align(header + sizeof(char*));
    m_ptr = result + size;
    return result;
  }

  void assert_unused() const {
    TARN_ASSERT(m_begin == m_static_memory && m_ptr == align(m_begin),
                "m_begin == m_static_memory && m_ptr == align(m_begin)");
  }

  char* allocate_raw(std::size_t size) {
    if (!m_alloc_func && !m_alloc_next_func) return new char[size];
    void* const memory =
        m_alloc_func ? m_alloc_func(size) : m_alloc_next_func(size, newest_block());
    TARN_ASSERT(memory, "memory");
    return static_cast<char*>(memory);
  }

  void* newest_block() const { return m_begin == m_static_memory ? nullptr : m_begin; }

  static void set_texts(xml_base<Ch>& record, const Ch* name, const Ch* value,
                        std::size_t name_size, std::size_t value_size) {
    if (name) record.name(name, name_size ? name_size : internal::measure(name));
    if (value) record.value(value, value_size ? value_size : internal::measure(value));
  }

  char* m_begin;  // raw start of the current block
  char* m_ptr;    // its first free byte
  char* m_end;    // one past its last byte
  char m_static_memory[static_pool_size];
  alloc_func* m_alloc_func = nullptr;
  free_func* m_free_func = nullptr;
  alloc_next_func* m_alloc_next_func = nullptr;
  std::size_t m_block_bytes = 0;
};

extern template class memory_pool<char>;

}  // namespace rapidxml
