#include <expat.h>

#include "../Work.hpp"

namespace bench {

namespace {

struct ExpatState {
  explicit ExpatState(const std::string& source) : text(source) {}

  std::string text;
  std::size_t events = 0;
};

void countStart(void* user, const XML_Char* /*name*/, const XML_Char** /*attributes*/) {
  ++*static_cast<std::size_t*>(user);
}
void countEnd(void* user, const XML_Char* /*name*/) { ++*static_cast<std::size_t*>(user); }
void countText(void* user, const XML_Char* /*text*/, int /*size*/) {
  ++*static_cast<std::size_t*>(user);
}

// Events only: expat builds no tree.
bool parseEvents(ExpatState& state) {
  XML_Parser const parser = XML_ParserCreate(nullptr);
  XML_SetUserData(parser, &state.events);
  XML_SetElementHandler(parser, countStart, countEnd);
  XML_SetCharacterDataHandler(parser, countText);
  const bool done =
      XML_Parse(parser, state.text.data(), static_cast<int>(state.text.size()), 1) == XML_STATUS_OK;
  XML_ParserFree(parser);
  return done && state.events > 0;
}

}  // namespace

void addExpatWorks(std::vector<Work>& works) {
  works.push_back({PARSE, "expat (events)", [](const std::string& text, Memory /*memory*/) {
                     return roundOn(std::make_shared<ExpatState>(text), parseEvents);
                   }});
}

}  // namespace bench
