// Whole loads: load and walk report the same violation, with the same message. A loaded document is
// consistent, and prints to a text that loads as the same document.

#include <boost/shared_ptr.hpp>
#include <vector>

#include "../support/Text.hpp"
#include "../support/check.hpp"
#include "libtarn/libtarn.hpp"
#include "support/consistency.hpp"

namespace {

using libtarn::model::LibTarnDocument;

struct Outcome {
  int code;
  std::string message;

  bool operator==(const Outcome& other) const {
    return code == other.code && message == other.message;
  }
};

Outcome outcomeOf(const LibTarnDocument& document, int code) {
  return {code, document.getDiagnostic().message};
}

std::string print(LibTarnDocument& document) {
  std::string out;
  libtarn::util::dumpTarnDocument(document, out);
  return out;
}

// Parses the text, then many truncated texts on the same document, through the model and through
// the DOM layer.
void loadAgain(LibTarnDocument& document, const char* text, std::size_t size) {
  constexpr std::size_t ROUNDS = 100;
  constexpr std::size_t MOST_OF_A_ROUND = 1024;                                      // bytes
  constexpr std::size_t BLOCK = rapidxml::memory_pool<char>::dynamic_pool_size * 2;  // taken whole
  libtarn::model::TarnDomDocument& dom = *document.getItsTarnDomDocument();
  document.parse(text, true);
  fuzz::checkNothing(tarn_test::brokenDocument(document, tarn_test::Indexes::SOUND));
  const std::size_t before = dom.pool_size();
  for (std::size_t round = 0; round < ROUNDS; ++round) {
    document.parse(round % 2 == 0 ? "<tarn" : "<p", true);
    dom.parse("<p/>", boost::shared_ptr<libDomXml::IStripper>());
  }
  fuzz::check(dom.pool_size() - before <= 8 * (size + 1) + ROUNDS * MOST_OF_A_ROUND + BLOCK,
              "what stays of a text is copied once");
  fuzz::checkNothing(tarn_test::brokenDocument(document, tarn_test::Indexes::SOUND));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Text text(data, size);
  LibTarnDocument checked;
  const Outcome outcome = outcomeOf(checked, checked.parse(text.get(), true));
  LibTarnDocument document;
  Outcome inSteps = outcomeOf(document, document.parse(text.get(), false));
  const bool loaded = inSteps.code == 0;
  if (loaded) inSteps = outcomeOf(document, document.validate());
  fuzz::check(outcome == inSteps, "a check while parsing says what the walk says");

  const libtarn::model::Diagnostic found = LibTarnDocument::validate(
      [&] { return std::vector<char>(text.get(), text.get() + size + 1); });
  const libtarn::model::Diagnostic& expected = checked.getDiagnostic();
  fuzz::check(found.code == expected.code && found.message == expected.message &&
                  found.offset == expected.offset,
              "a check without a document says what a load says");
  using libtarn::model::validation::Diagnosis;
  fuzz::check(Diagnosis::of(text.get(), 1).empty() == (expected.code == 0),
              "a text has findings when it is not valid, and only then");

  // The indexes of a load that failed are not complete.
  using tarn_test::Indexes;
  fuzz::checkNothing(
      tarn_test::brokenDocument(document, loaded ? Indexes::IN_STEP : Indexes::SOUND));
  const std::string printed = print(document);
  fuzz::check(printed == print(checked), "both loads give the same document");
  loadAgain(checked, text.get(), size);
  if (!loaded || printed.find('\0') != std::string::npos) return 0;

  LibTarnDocument again;
  fuzz::check(again.parse(printed.c_str(), false) == 0, "what was printed is loaded again");
  fuzz::checkNothing(tarn_test::brokenDocument(again));
  const std::string settled = print(again);
  LibTarnDocument third;
  fuzz::check(third.parse(settled.c_str(), false) == 0 && print(third) == settled,
              "a printed document stays as it is");
  return 0;
}
