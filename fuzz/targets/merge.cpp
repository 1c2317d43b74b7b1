// A merge of two documents cut from one input: the result is that of the reference model, a refused
// merge changes nothing, and both documents stay consistent.

#include <optional>

#include "../support/Text.hpp"
#include "../support/check.hpp"
#include "libtarn/libtarn.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "support/ReferenceTree.hpp"
#include "support/consistency.hpp"
#include "support/referenceMerge.hpp"

namespace {

using namespace libtarn::model;
using tarn_test::ReferenceElement;

// Separates the two documents in the input.
constexpr char SEPARATOR[] = "<!--+-->";
constexpr std::size_t MOST_LEVELS = 200;

const rapidxml::xml_node<char>& rootOf(const LibTarnDocument& document) {
  return *document.getItsTarnDomDocument()->getRootElement();
}

// Returns nothing for a document that the reference model cannot hold.
std::optional<ReferenceElement> referenceOf(const LibTarnDocument& document) {
  if (tarn_test::depthOf(rootOf(document)) > MOST_LEVELS) return std::nullopt;
  ReferenceElement reference = tarn_test::toReferenceTree(rootOf(document));
  if (tarn_test::holdsNul(reference)) return std::nullopt;
  return reference;
}

// Returns nothing when the copy of an object breaks a rule of the model.
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

  std::optional<ReferenceElement> referenceSource = referenceOf(source);
  std::optional<ReferenceElement> referenceDelta = referenceOf(*delta);
  const std::optional<bool> merged = merge(source, *delta);
  fuzz::checkNothing(tarn_test::brokenDocument(*delta));
  if (referenceSource && referenceDelta && merged) {
    fuzz::check(tarn_test::referenceMerge(*referenceSource, *referenceDelta) == *merged,
                "merged or refused");
    fuzz::check(tarn_test::toReferenceTree(rootOf(*delta)) == *referenceDelta,
                "the delta is as it should be");
  }
  // The source may not point into the delta.
  delta.reset();
  fuzz::checkNothing(tarn_test::brokenDocument(source));
  if (referenceSource && referenceDelta && merged) {
    fuzz::check(tarn_test::toReferenceTree(rootOf(source)) == *referenceSource,
                "the source is as it should be");
  }
  return 0;
}
