#pragma once

#include <cstddef>

namespace tarn {

/// Bytes of a file that are read at a time, by way of memory that stays in the cache.
constexpr std::size_t READ_BLOCK = std::size_t{1} << 18U;

/// Bytes that are packed or unpacked at a time.
constexpr std::size_t GZIP_BLOCK = std::size_t{1} << 17U;

}  // namespace tarn
