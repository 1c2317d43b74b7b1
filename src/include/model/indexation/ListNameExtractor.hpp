// Included by other headers; not for hosts.
#pragma once

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace model {

class List;

namespace indexation {

/// Returns the key of a list: its name, "" when it has none. The text is the element's own.
struct TARN_API ListNameExtractor {
  const char* operator()(const List* element) const;
};

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
