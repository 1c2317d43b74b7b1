#pragma once

#include <cstddef>

namespace tarn_test {

/// Whether maps can be made to fail in this program: a sanitizer keeps mmap() for itself.
bool canFailMaps();

/// Lets calls of mmap() fail, as without memory: the `number`-th from now on, from 1, and all that
/// follow it. Maps that the C library makes for itself do not count. One at a time, on its thread.
class MapFault {
 public:
  explicit MapFault(std::size_t number);
  ~MapFault();
  MapFault(const MapFault&) = delete;
  MapFault& operator=(const MapFault&) = delete;

  /// Whether it has come to that call.
  bool happened() const;
};

}  // namespace tarn_test
