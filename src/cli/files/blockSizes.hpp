#pragma once

#include <cstddef>

namespace tarn {

/// Bytes that are read from a file at a time, into memory that stays in the cache.
constexpr std::size_t READ_BLOCK = std::size_t{1} << 18U;

/// Bytes that are compressed or decompressed at a time.
constexpr std::size_t GZIP_BLOCK = std::size_t{1} << 17U;

}  // namespace tarn
