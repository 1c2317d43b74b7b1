// Random sources and deltas, merged by the library and by a reference model in standard
// containers. The results are compared element by element.

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "libtarn/editor/TarnMerge.hpp"
#include "libtarn/libtarn.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "support/CapturedLog.hpp"
#include "support/HeapDocument.hpp"
#include "support/consistency.hpp"
#include "support/documents.hpp"
#include "support/randomDocuments.hpp"
#include "support/referenceMerge.hpp"

namespace {

using namespace libtarn::model;
using libtarn::editor::TarnMerge;
using tarn_test::CapturedLog;
using tarn_test::HeapDocument;
using tarn_test::loaded;
using tarn_test::RandomDocuments;
using tarn_test::ReferenceElement;
using tarn_test::render;

// The library beside the reference model

// The tree is that of the model, and the indexes agree with it.
void expectSame(const LibTarnDocument& document, const ReferenceElement& model) {
  const ReferenceElement copied =
      tarn_test::toReferenceTree(*document.getItsTarnDomDocument()->getRootElement());
  ASSERT_TRUE(copied == model) << render(copied) << "\nand not\n" << render(model);
  ASSERT_EQ(tarn_test::brokenDocument(document), "");
}

struct Counts {
  unsigned merged = 0;
  unsigned refused = 0;
};

// Merges deltas one after the other into one source.
void mergeDocuments(unsigned seed, unsigned conflictOdds, Counts& counts) {
  CapturedLog log;
  RandomDocuments generator(seed);
  ReferenceElement sourceModel = generator.source();
  const auto source = loaded(render(sourceModel));
  TarnMerge tarnMerge(*source);
  for (int round = 0; round < 4; ++round) {
    ReferenceElement deltaModel = generator.delta(sourceModel, conflictOdds);
    const std::string before = source->getItsTarnDomDocument()->printDocument();
    auto delta = std::make_unique<HeapDocument>(render(deltaModel));
    log.clear();
    const bool done = tarnMerge.mergeDocument(delta->get());
    ASSERT_EQ(done, tarn_test::referenceMerge(sourceModel, deltaModel)) << render(deltaModel);
    ASSERT_EQ(log.messages("ERROR").size(), done ? 0U : 1U);
    ASSERT_NO_FATAL_FAILURE(expectSame(delta->get(), deltaModel));
    delta.reset();
    ASSERT_NO_FATAL_FAILURE(expectSame(*source, sourceModel));
    if (!done) {
      ASSERT_EQ(source->getItsTarnDomDocument()->printDocument(), before);
    }
    ++(done ? counts.merged : counts.refused);
  }
}

TEST(RandomMergeTest, DocumentsMergeAsTheReferenceModelSays) {
  Counts counts;
  for (unsigned seed = 0; seed < 1500; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    ASSERT_NO_FATAL_FAILURE(mergeDocuments(seed, seed % 2 == 0 ? 1000 : 8, counts));
  }
  // The deltas cause both outcomes.
  EXPECT_GT(counts.merged, 2000U);
  EXPECT_GT(counts.refused, 500U);
}

TEST(RandomMergeTest, SingleObjectsMergeAsTheReferenceModelSays) {
  for (unsigned seed = 0; seed < 1500; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    CapturedLog log;
    RandomDocuments generator(seed);
    ReferenceElement sourceModel = generator.source();
    const auto source = loaded(render(sourceModel));
    ReferenceElement deltaModel = generator.delta(sourceModel, 3);
    auto delta = std::make_unique<HeapDocument>(render(deltaModel));
    log.clear();
    TarnMerge tarnMerge(*source);
    ReferenceElement& cmData = *sourceModel.firstChild("cmData");
    for (const ReferenceElement& object : deltaModel.firstChild("cmData")->children) {
      if (object.tag != "managedObject") continue;
      const std::string name = object.attributeOr("distName");
      LibTarnManagedObject* const element =
          delta->get().getLibTarnCmData()->getLibTarnManagedObject(name.c_str());
      ASSERT_EQ(tarnMerge.mergeManagedObject(*element),
                tarn_test::referenceMergeObject(cmData, object));
    }
    ASSERT_TRUE(log.lines().empty());
    ASSERT_NO_FATAL_FAILURE(expectSame(delta->get(), deltaModel));
    delta.reset();
    ASSERT_NO_FATAL_FAILURE(expectSame(*source, sourceModel));
  }
}

}  // namespace
