#pragma once

#include <cstddef>

namespace tarn_test {

/// True if maps can be made to fail in this program. Sanitizers replace mmap() themselves.
bool canFailMaps();

/// Lets calls of mmap() on this thread fail as if memory had run out: the `number`-th from now on,
/// counted from 1, and all that follow. Maps of the C library do not count. One fault at a time.
class MapFault {
 public:
  explicit MapFault(std::size_t number);
  ~MapFault();
  MapFault(const MapFault&) = delete;
  MapFault& operator=(const MapFault&) = delete;

  /// True if that call was reached.
  bool happened() const;
};

}  // namespace tarn_test
