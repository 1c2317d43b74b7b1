#include <tinyxml2.h>

#include "../Work.hpp"

namespace bench {

namespace {

struct Tinyxml2State {
  explicit Tinyxml2State(const std::string& source) : text(source) {}

  bool parse() { return document.Parse(text.data(), text.size()) == tinyxml2::XML_SUCCESS; }

  std::string text;
  tinyxml2::XMLDocument document;
};

}  // namespace

void addTinyxml2Works(std::vector<Work>& works) {
  works.push_back({PARSE, "tinyxml2", [](const std::string& text, Memory /*memory*/) {
                     return roundOn(std::make_shared<Tinyxml2State>(text),
                                    [](Tinyxml2State& state) { return state.parse(); });
                   }});
  works.push_back({PRINT, "tinyxml2", [](const std::string& text, Memory /*memory*/) {
                     auto parsed = std::make_shared<Tinyxml2State>(text);
                     parsed->parse();
                     return roundOn(parsed, [](Tinyxml2State& state) {
                       tinyxml2::XMLPrinter printer;
                       state.document.Print(&printer);
                       return printer.CStrSize() > 1;
                     });
                   }});
}

}  // namespace bench
