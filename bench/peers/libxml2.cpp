#include <libxml/parser.h>
#include <libxml/tree.h>

#include "../Work.hpp"

namespace bench {

namespace {

struct Libxml2State {
  explicit Libxml2State(const std::string& source) : text(source) {}
  Libxml2State(const Libxml2State&) = delete;
  Libxml2State& operator=(const Libxml2State&) = delete;
  ~Libxml2State() { xmlFreeDoc(document); }

  bool parse() {
    document = xmlReadMemory(
        text.data(), static_cast<int>(text.size()), nullptr, nullptr,
        XML_PARSE_HUGE | XML_PARSE_COMPACT | XML_PARSE_NOBLANKS | XML_PARSE_NOWARNING);
    return document != nullptr;
  }

  std::string text;
  xmlDoc* document = nullptr;
};

std::shared_ptr<Libxml2State> parsed(const std::string& text) {
  auto state = std::make_shared<Libxml2State>(text);
  state->parse();
  return state;
}

}  // namespace

void addLibxml2Works(std::vector<Work>& works) {
  works.push_back({PARSE, "libxml2", [](const std::string& text, Memory /*memory*/) {
                     return roundOn(std::make_shared<Libxml2State>(text),
                                    [](Libxml2State& state) { return state.parse(); });
                   }});
  works.push_back({PRINT, "libxml2", [](const std::string& text, Memory /*memory*/) {
                     return roundOn(parsed(text), [](Libxml2State& state) {
                       xmlChar* printed = nullptr;
                       int size = 0;
                       xmlDocDumpFormatMemory(state.document, &printed, &size, 1);
                       xmlFree(printed);
                       return size > 0;
                     });
                   }});
  works.push_back({RELEASE, "libxml2", [](const std::string& text, Memory /*memory*/) {
                     return roundOn(parsed(text), [](Libxml2State& state) {
                       xmlFreeDoc(state.document);
                       state.document = nullptr;
                       return true;
                     });
                   }});
}

}  // namespace bench
