#pragma once

namespace libtarn {
namespace model {

class List;

namespace indexation {

/// The key of an index: the name of a list, "" when it has none. The text is the element's own.
struct ListNameExtractor {
  const char* operator()(const List* element) const;
};

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
