// Lower limits for every parser: to copy the text, to search it for "<", and to touch as much
// memory as the tree takes.

#include <cstring>

#include "../Work.hpp"

namespace bench {

namespace {

// Bytes of tree for each byte of text, about what libtarn takes.
constexpr std::size_t TREE_FACTOR = 4;
constexpr std::size_t PAGE = 4096;

struct CopyState {
  std::string text;
  std::vector<char> copy;
};

std::size_t countTags(const std::string& text) {
  std::size_t count = 0;
  const char* position = text.data();
  const char* const end = position + text.size();
  while ((position = static_cast<const char*>(
              std::memchr(position, '<', static_cast<std::size_t>(end - position))))) {
    ++count;
    ++position;
  }
  return count;
}

}  // namespace

void addLimits(std::vector<Work>& works) {
  works.push_back({LIMIT, "memcpy of the text", [](const std::string& text, Memory /*memory*/) {
                     auto state = std::make_shared<CopyState>();
                     state->text = text;
                     state->copy.resize(text.size());
                     return roundOn(state, [](CopyState& both) {
                       std::memcpy(both.copy.data(), both.text.data(), both.text.size());
                       return both.copy.back() == both.text.back();
                     });
                   }});
  works.push_back({LIMIT, "scan for \"<\"", [](const std::string& text, Memory /*memory*/) {
                     return roundOn(std::make_shared<std::string>(text),
                                    [](const std::string& copy) { return countTags(copy) > 0; });
                   }});
  works.push_back(
      {LIMIT, "first touch of the tree's memory", [](const std::string& text, Memory /*memory*/) {
         const std::size_t size = TREE_FACTOR * text.size();
         return roundOn(std::make_shared<std::unique_ptr<char[]>>(),
                        [size](std::unique_ptr<char[]>& memory) {
                          memory.reset(new char[size]);
                          volatile char* const bytes = memory.get();
                          for (std::size_t i = 0; i < size; i += PAGE) bytes[i] = 1;
                          return bytes[0] == 1;
                        });
       }});
}

}  // namespace bench
