// A merge of two documents cut from one input: the result is what a merge of plain trees gives, a
// refused merge changes nothing, and both documents stay sound.

#include <optional>

#include "../support/Text.hpp"
#include "../support/check.hpp"
#include "libtarn/libtarn.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "support/PlainTree.hpp"
#include "support/consistency.hpp"
#include "support/plainMerge.hpp"

namespace {

using namespace libtarn::model;
using tarn_test::PlainElement;

// The documents stand one behind the other, with this between them.
constexpr char SEPARATOR[] = "<!--+-->";
constexpr std::size_t MOST_LEVELS = 200;

const rapidxml::xml_node<char>& rootOf(const LibTarnDocument& document) {
  return *document.getItsTarnDomDocument()->getRootElement();
}

// Nothing for a document that the plain merge cannot hold.
std::optional<PlainElement> plainOf(const LibTarnDocument& document) {
  if (tarn_test::depthOf(rootOf(document)) > MOST_LEVELS) return std::nullopt;
  PlainElement plain = tarn_test::toPlain(rootOf(document));
  if (tarn_test::holdsZero(plain)) return std::nullopt;
  return plain;
}

// Nothing when the copy of an object breaks a rule of the model.
std::optional<bool> merge(LibTarnDocument& source, LibTarnDocument& delta) {
  try {
    return libtarn::editor::TarnMerge(source).mergeDocument(delta);
  } catch (const exceptions::ModelException&) {
    return std::nullopt;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  const std::size_t cut = input.find(SEPARATOR);
  if (cut == std::string::npos) return 0;
  LibTarnDocument source;
  if (source.parse(input.substr(0, cut).c_str(), false) != 0) return 0;
  auto delta = std::make_unique<LibTarnDocument>();
  if (delta->parse(input.substr(cut + sizeof(SEPARATOR) - 1).c_str(), false) != 0) return 0;

  std::optional<PlainElement> plainSource = plainOf(source);
  std::optional<PlainElement> plainDelta = plainOf(*delta);
  const std::optional<bool> merged = merge(source, *delta);
  fuzz::checkNothing(tarn_test::brokenDocument(*delta));
  if (plainSource && plainDelta && merged) {
    fuzz::check(tarn_test::mergePlain(*plainSource, *plainDelta) == *merged, "merged or refused");
    fuzz::check(tarn_test::toPlain(rootOf(*delta)) == *plainDelta, "the delta is as it should be");
  }
  // Nothing of the delta may be left in the source.
  delta.reset();
  fuzz::checkNothing(tarn_test::brokenDocument(source));
  if (plainSource && plainDelta && merged) {
    fuzz::check(tarn_test::toPlain(rootOf(source)) == *plainSource,
                "the source is as it should be");
  }
  return 0;
}
