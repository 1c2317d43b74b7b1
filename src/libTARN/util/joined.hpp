#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace libtarn {
namespace util {

namespace joining {

inline void append(std::string& text, const char* part) {
  if (part) text += part;
}
inline void append(std::string& text, std::string_view part) { text += part; }
inline void append(std::string& text, std::size_t number) { text += std::to_string(number); }

}  // namespace joining

/// The parts one behind the other: texts, of which null is an empty one, and numbers. Throws
/// std::bad_alloc without memory, where a stream would cut the text and go on, and writes numbers
/// alike in every locale. Takes its parts by value, since a reference to a constant such as
/// TAG_NAME would make that one a symbol of the library.
template <class... Parts>
std::string joined(Parts... parts) {
  std::string text;
  (joining::append(text, parts), ...);
  return text;
}

}  // namespace util
}  // namespace libtarn
