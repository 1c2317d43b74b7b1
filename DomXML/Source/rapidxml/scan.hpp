#pragma once

// Finds the end of a run of characters, many bytes at a time.
//
// A block is as many bytes as one instruction compares: sixteen with SSE2 or NEON, otherwise those
// of a machine word, of either byte order. Comparing a block with a character gives a mask, from
// which the index of the first match is read.
//
// A block may be loaded from any address, so it must not reach beyond the text, whose length is not
// known in advance. The scanner therefore measures the text ahead of the parser, about a thousand
// bytes at a time, up to the terminating NUL. Blocks are loaded only from measured text, in which
// no byte is NUL. After it the scanner looks at one byte at a time and stops at the NUL. Measuring
// costs little: it brings the bytes into the caches before the parser reads them.

#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#elif defined(__ARM_NEON)
#include <arm_neon.h>
#endif

#include "character_classes.hpp"

namespace rapidxml {
namespace internal {

/// The bytes of a machine word. The mask has the highest bit of each byte that matches.
class word_block {
 public:
  using word = std::uintptr_t;
  using mask = word;
  static constexpr std::size_t size = sizeof(word);

  explicit word_block(const char* position) { std::memcpy(&m_bytes, position, size); }
  /// A block of two halves. Only for blocks that are large enough.
  word_block(std::uint64_t first, std::uint64_t /*second*/) : m_bytes(static_cast<word>(first)) {}

  void store(char* position) const { std::memcpy(position, &m_bytes, size); }

  mask equal(char c) const {
    const word difference = m_bytes ^ each(static_cast<unsigned char>(c));
    return ~(((difference & low_bits) + low_bits) | difference) & high_bits;
  }
  /// Matches bytes up to `c`, which is an ASCII character.
  mask at_most(char c) const {
    return ~(((m_bytes & low_bits) + each(static_cast<unsigned char>(0x7F - c))) | m_bytes) &
           high_bits;
  }
  static bool any(mask matches) { return matches != 0; }
  static mask none_of(mask matches) { return matches ^ high_bits; }
  /// Returns the index of the first match; there must be one.
  static std::size_t first(mask matches) {
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    const int bits = __builtin_clzll(matches) - 8 * static_cast<int>(sizeof(long long) - size);
#else
    const int bits = __builtin_ctzll(matches);
#endif
    return static_cast<std::size_t>(bits) / 8;
  }

 private:
  static constexpr word each(unsigned char byte) { return ~word{0} / 0xFF * byte; }
  static constexpr word high_bits = ~word{0} / 0xFF * 0x80;
  static constexpr word low_bits = ~high_bits;

  word m_bytes;
};

#if defined(__SSE2__)

/// Sixteen bytes in an SSE2 register. The mask has all bits of each byte that matches.
class wide_block {
 public:
  using mask = __m128i;
  static constexpr std::size_t size = 16;

  explicit wide_block(const char* position)
      : m_bytes(_mm_loadu_si128(reinterpret_cast<const __m128i*>(position))) {}
  wide_block(std::uint64_t first, std::uint64_t second)
      : m_bytes(_mm_set_epi64x(static_cast<long long>(second), static_cast<long long>(first))) {}

  void store(char* position) const {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(position), m_bytes);
  }

  mask equal(char c) const { return _mm_cmpeq_epi8(m_bytes, _mm_set1_epi8(c)); }
  mask at_most(char c) const {
    return _mm_cmpeq_epi8(_mm_min_epu8(m_bytes, _mm_set1_epi8(c)), m_bytes);
  }
  static bool any(mask matches) { return _mm_movemask_epi8(matches) != 0; }
  static mask none_of(mask matches) { return _mm_xor_si128(matches, _mm_set1_epi8(-1)); }
  static std::size_t first(mask matches) {
    return static_cast<std::size_t>(
        __builtin_ctz(static_cast<unsigned>(_mm_movemask_epi8(matches))));
  }

 private:
  __m128i m_bytes;
};

#elif defined(__ARM_NEON)

/// Sixteen bytes in a NEON register. The mask has all bits of each byte that matches.
class wide_block {
 public:
  using mask = uint8x16_t;
  static constexpr std::size_t size = 16;

  explicit wide_block(const char* position)
      : m_bytes(vld1q_u8(reinterpret_cast<const std::uint8_t*>(position))) {}
  wide_block(std::uint64_t first, std::uint64_t second)
      : m_bytes(vcombine_u8(vcreate_u8(first), vcreate_u8(second))) {}

  void store(char* position) const { vst1q_u8(reinterpret_cast<std::uint8_t*>(position), m_bytes); }

  mask equal(char c) const { return vceqq_u8(m_bytes, vdupq_n_u8(static_cast<std::uint8_t>(c))); }
  mask at_most(char c) const { return vcleq_u8(m_bytes, vdupq_n_u8(static_cast<std::uint8_t>(c))); }
  static bool any(mask matches) { return nibbles(matches) != 0; }
  static mask none_of(mask matches) { return vmvnq_u8(matches); }
  static std::size_t first(mask matches) {
    return static_cast<std::size_t>(__builtin_ctzll(nibbles(matches))) / 4;
  }

 private:
  // Returns four bits for each byte.
  static std::uint64_t nibbles(mask matches) {
    const uint8x8_t narrow = vshrn_n_u16(vreinterpretq_u16_u8(matches), 4);
    return vget_lane_u64(vreinterpret_u64_u8(narrow), 0);
  }

  uint8x16_t m_bytes;
};

#else

using wide_block = word_block;

#endif

// Where a run of a character class ends. `ends` returns a mask of the bytes of a block at which the
// run may end; none of the bytes is NUL. Unless `exact`, such a byte is looked up in the class.

template <class Class>
struct run_of;

template <>
struct run_of<whitespace> {
  static constexpr bool exact = true;
  template <class Block>
  static typename Block::mask ends(const Block& block) {
    return Block::none_of(block.equal(' ') | block.equal('\n') | block.equal('\t') |
                          block.equal('\r'));
  }
};

// Everything that ends a name is up to "?", and hardly any character of a name is.
struct run_of_name {
  static constexpr bool exact = false;
  template <class Block>
  static typename Block::mask ends(const Block& block) {
    return block.at_most('?');
  }
};
template <>
struct run_of<node_name> : run_of_name {};
template <>
struct run_of<attribute_name> : run_of_name {};

template <char End>
struct run_up_to {
  static constexpr bool exact = true;
  template <class Block>
  static typename Block::mask ends(const Block& block) {
    return block.equal(End) | block.equal('&');
  }
};
template <>
struct run_of<without_references<text>> : run_up_to<'<'> {};
template <>
struct run_of<without_references<single_quoted>> : run_up_to<'\''> {};
template <>
struct run_of<without_references<double_quoted>> : run_up_to<'"'> {};

/// Looks ahead in one NUL-terminated text. A value of the parser; holds pointers into the text.
template <class Block>
class basic_scanner {
 public:
  explicit basic_scanner(const char* text) : m_measured(text), m_last_block(text - 1) {}

  /// Returns the end of the run of characters of `Class` that begins at `cursor`, which is `cursor`
  /// when the run is empty. Cursors must not go back.
  template <class Class>
  [[gnu::always_inline]] char* end_of(char* cursor) {
    if (cursor <= m_last_block) {
      const typename Block::mask ends = run_of<Class>::ends(Block(cursor));
      if (Block::any(ends)) {
        cursor += Block::first(ends);
        if (run_of<Class>::exact || !contains<Class>(*cursor)) return cursor;
      }
    }
    return end_further_on<Class>(cursor);
  }

 private:
  static constexpr std::size_t step = 1024;
  static constexpr std::size_t cache_line = 64;

  // A function of its own, so that rare work does not slow the parser down.
  template <class Class>
  [[gnu::noinline]] char* end_further_on(char* cursor) {
    while (cursor <= m_last_block || measure(cursor)) {
      const typename Block::mask ends = run_of<Class>::ends(Block(cursor));
      if (!Block::any(ends)) {
        cursor += Block::size;
        continue;
      }
      cursor += Block::first(ends);
      if (run_of<Class>::exact || !contains<Class>(*cursor)) return cursor;
      ++cursor;
    }
    while (contains<Class>(*cursor)) ++cursor;
    return cursor;
  }

  // Measures until there is room for a block at `cursor`. Returns false when the NUL is too near.
  bool measure(const char* cursor) {
    if (m_complete) return false;
    if (m_measured < cursor) m_measured = cursor;
    // Prefetches the next step while this one is parsed.
    for (std::size_t i = step; i < 2 * step; i += cache_line) __builtin_prefetch(m_measured + i);
    const std::size_t length = strnlen(m_measured, step);
    m_measured += length;
    m_complete = length < step;
    if (m_measured - cursor < static_cast<std::ptrdiff_t>(Block::size)) return false;
    m_last_block = m_measured - Block::size;
    return true;
  }

  const char* m_measured;    // no byte of the text before this is NUL
  const char* m_last_block;  // the last position where a block of such bytes begins
  bool m_complete = false;
};

using scanner = basic_scanner<wide_block>;

}  // namespace internal
}  // namespace rapidxml
