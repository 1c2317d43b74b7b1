// The XML core through DomDocument: any text parses or is refused, the tree is consistent in both
// cases, and a printed tree parses to the same tree.

#include "../support/Text.hpp"
#include "../support/check.hpp"
#include "libtarn/DomDocument.hpp"
#include "libtarn/rapidxml/rapidxml_print.hpp"
#include "support/consistency.hpp"

namespace {

using libDomXml::DomDocument;

std::string print(const DomDocument& document, int flags) {
  std::string out;
  rapidxml::print_node(out, &document, flags, 0);
  return out;
}

std::string parseAndPrint(const std::string& source) {
  fuzz::Text text(source);
  DomDocument document(false);
  fuzz::check(document.rapidParse(text.get()) == 0, "what was printed is parsed again");
  return print(document, 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Text text(data, size);
  // Maps are slow: only one input in four uses them.
  DomDocument document(size % 4 == 0);
  const bool parsed = document.rapidParse(text.get()) == 0;
  fuzz::checkNothing(tarn_test::brokenTree(document, &document));
  const std::string printed = print(document, 0);
  print(document, rapidxml::print_no_indenting);
  if (!parsed || printed.find('\0') != std::string::npos) return 0;

  // Blanks that were written as references are a value in the first parse, and indentation in the
  // second.
  const std::string settled = parseAndPrint(printed);
  fuzz::check(parseAndPrint(settled) == settled, "a printed document stays as it is");
  return 0;
}
