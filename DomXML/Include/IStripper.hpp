#pragma once

#include <cstddef>

#include "libtarn/TarnApi.hpp"

namespace libDomXml {

/// Copies document text before it is parsed, and may leave parts of it out.
class TARN_API IStripper {
 public:
  virtual ~IStripper() = default;

  /// Copies from `text`, which holds `length` characters, to `destination`, which has room for as
  /// many and a terminating NUL. Returns the number of characters written, at most `length`.
  virtual std::size_t copy(char* destination, const char* text, std::size_t length) = 0;
};

}  // namespace libDomXml
