#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace libtarn {
namespace model {
namespace indexation {

/// Returns a hash of a text of `size` bytes, for tables in memory only: it depends on the byte
/// order.
///
/// Anyone can construct texts with equal hashes; callers must stay fast then.
inline std::uint32_t textHash(const char* text, std::size_t size) {
  constexpr std::uint64_t PRIME = 0x9E3779B97F4A7C15U;  // 2^64 divided by the golden ratio
  std::uint64_t hash = size * PRIME;
  const auto mix = [&hash](std::uint64_t word) {
    hash = (hash ^ word) * PRIME;
    hash ^= hash >> 32U;
  };
  std::uint64_t word = 0;
  for (; size >= sizeof(word); size -= sizeof(word), text += sizeof(word)) {
    std::memcpy(&word, text, sizeof(word));
    mix(word);
  }
  word = 0;
  if (size >= 4) {
    std::uint32_t ends[2];
    std::memcpy(&ends[0], text, 4);
    std::memcpy(&ends[1], text + size - 4, 4);
    word = std::uint64_t{ends[0]} << 32U | ends[1];
  } else if (size > 0) {
    word = std::uint64_t{static_cast<unsigned char>(text[0])} << 16U |
           std::uint64_t{static_cast<unsigned char>(text[size / 2])} << 8U |
           static_cast<unsigned char>(text[size - 1]);
  }
  mix(word);
  return static_cast<std::uint32_t>(hash);
}

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
