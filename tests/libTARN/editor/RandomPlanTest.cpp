// Random sources and deltas: what a plan says beside what merges do.

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "libtarn/libtarn.hpp"
#include "support/CapturedLog.hpp"
#include "support/consistency.hpp"
#include "support/describe.hpp"
#include "support/documents.hpp"
#include "support/randomDocuments.hpp"
#include "support/referenceMerge.hpp"

namespace {

using namespace libtarn::model;
using libtarn::editor::Difference;
using libtarn::editor::TarnDiff;
using libtarn::editor::TarnMerge;
using libtarn::editor::TarnPlan;
using tarn_test::CapturedLog;
using tarn_test::loaded;
using tarn_test::printed;
using tarn_test::RandomDocuments;
using tarn_test::ReferenceElement;
using tarn_test::render;
using Strings = std::vector<std::string>;
using Documents = std::vector<std::unique_ptr<LibTarnDocument>>;

Strings described(const std::vector<Difference>& differences) {
  Strings lines;
  for (const Difference& each : differences) lines.push_back(tarn_test::describe(each));
  return lines;
}

// Attributes, texts and elements that copies drop, and elements that copies complete.
void makeOdd(ReferenceElement& element, std::mt19937& random) {
  const auto pick = [&random](unsigned count) { return static_cast<unsigned>(random() % count); };
  for (ReferenceElement& child : element.children) makeOdd(child, random);
  if (element.tag == "tarn" || element.tag == "cmData" || pick(6) != 0) return;
  const auto number = std::to_string(element.children.size());
  switch (pick(5)) {
    case 0:
      element.attributes.emplace_back("unit", "m");
      break;
    case 1:
      element.value += "text";
      break;
    case 2:
      element.children.push_back({"p", "1", {{"name", "odd" + number}}, {}});
      break;
    case 3:
      element.children.push_back({"li", "", {{"name", "odd" + number}}, {}});
      break;
    default:
      // Its copy is refused.
      element.children.push_back(
          {"managedObject", "", {}, {{"p", "", {{"name", "a"}}, {}}, {"p", "", {}, {}}}});
      if (pick(3) == 0) element.children.back().children[1] = element.children.back().children[0];
  }
}

struct Scene {
  std::string source;
  std::vector<std::string> deltas;
};

Scene randomScene(unsigned seed) {
  RandomDocuments documents(seed);
  std::mt19937 random(seed);
  ReferenceElement model = documents.source();
  Scene scene;
  ReferenceElement printedModel = model;
  if (seed % 3 == 0) makeOdd(printedModel, random);
  scene.source = render(printedModel);
  for (unsigned i = 0; i < 1 + seed % 4; ++i) {
    ReferenceElement delta = documents.delta(model, seed % 5 == 0 ? 6 : 1000);
    ReferenceElement printedDelta = delta;
    if (seed % 3 != 1) makeOdd(printedDelta, random);
    scene.deltas.push_back(render(printedDelta));
    tarn_test::referenceMerge(model, delta);
  }
  return scene;
}

Documents loadedAll(const std::vector<std::string>& texts) {
  Documents documents;
  for (const std::string& text : texts) documents.push_back(loaded(text));
  return documents;
}

std::vector<LibTarnDocument*> pointersTo(const Documents& documents) {
  std::vector<LibTarnDocument*> pointers;
  for (const auto& each : documents) pointers.push_back(each.get());
  return pointers;
}

// Merges one delta after the other. Returns the reason of the first that is refused.
std::string mergeAll(LibTarnDocument& source, const Documents& deltas) {
  for (const auto& delta : deltas) {
    TarnMerge merge(source);
    try {
      if (!merge.mergeDocument(*delta)) return merge.getDiagnostic().message;
    } catch (const exceptions::ModelException& fault) {
      return fault.what();
    }
  }
  return "";
}

struct Counts {
  unsigned applied = 0;
  unsigned refused = 0;
  unsigned copies = 0;
};

void comparePlan(const Scene& scene, Counts& counts) {
  const CapturedLog log;
  const auto original = loaded(scene.source);
  const auto source = loaded(scene.source);
  const Documents deltas = loadedAll(scene.deltas);
  const std::string before = printed(*source);
  TarnPlan plan(*source, pointersTo(deltas));
  ASSERT_EQ(printed(*source), before);
  for (std::size_t i = 0; i < deltas.size(); ++i) {
    ASSERT_EQ(printed(*deltas[i]), printed(*loaded(scene.deltas[i])));
  }

  const auto merged = loaded(scene.source);
  const Documents others = loadedAll(scene.deltas);
  const std::string reason = mergeAll(*merged, others);
  ASSERT_EQ(plan.getConflicts().empty(), reason.empty()) << reason;
  const Strings differences = described(plan.getDifferences());
  if (!reason.empty()) {
    ASSERT_FALSE(plan.apply());
    ASSERT_EQ(printed(*source), before);
    ASSERT_EQ(tarn_test::brokenDocument(*source), "");
    // The first delta that a merge refuses has the first conflict.
    const auto& first = plan.getConflicts().front();
    ASSERT_EQ(plan.getDiagnostic().message, first.reason);
    ++counts.refused;
    counts.copies += first.reason.find("already contains") != std::string::npos ? 1 : 0;
    return;
  }
  ASSERT_EQ(differences, described(TarnDiff(*original, *merged).getDifferences()));
  ASSERT_TRUE(plan.apply());
  ASSERT_EQ(printed(*source), printed(*merged));
  ASSERT_EQ(tarn_test::brokenDocument(*source), "");
  for (std::size_t i = 0; i < deltas.size(); ++i) {
    ASSERT_EQ(printed(*deltas[i]), printed(*others[i]));
  }
  // The texts stay.
  ASSERT_EQ(described(plan.getDifferences()), differences);
  ++counts.applied;
}

TEST(RandomPlanTest, PlanSaysWhatMergesDo) {
  Counts counts;
  for (unsigned seed = 0; seed < 4000; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const Scene scene = randomScene(seed);
    ASSERT_NO_FATAL_FAILURE(comparePlan(scene, counts)) << scene.source << "\n"
                                                        << scene.deltas.front();
  }
  EXPECT_GT(counts.applied, 1000U);
  EXPECT_GT(counts.refused, 500U);
  EXPECT_GT(counts.copies, 20U);
}

// One delta whose conflicting objects are left out is merged as the rest of the plan says.
TEST(RandomPlanTest, PlanWithConflictsIsThatOfTheRest) {
  unsigned planned = 0;
  for (unsigned seed = 0; seed < 2000; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const CapturedLog log;
    RandomDocuments documents(seed);
    ReferenceElement model = documents.source();
    const auto source = loaded(render(model));
    const auto delta = loaded(render(documents.delta(model, 3)));
    const TarnPlan plan(*source, *delta);
    if (plan.getConflicts().empty()) continue;
    ++planned;
    const auto rest = loaded(printed(*delta));
    for (const auto& conflict : plan.getConflicts()) {
      ASSERT_EQ(conflict.delta, 0U);
      ASSERT_EQ(delta->getLibTarnCmData()->getLibTarnManagedObject(conflict.distName),
                conflict.object);
      ASSERT_NE(delta->getTextOffset(*conflict.object), libtarn::util::NO_OFFSET);
      rest->getLibTarnCmData()->removeLibTarnManagedObject(conflict.distName);
    }
    const TarnPlan planOfRest(*source, *rest);
    ASSERT_TRUE(planOfRest.getConflicts().empty());
    ASSERT_EQ(described(planOfRest.getDifferences()), described(plan.getDifferences()));
    // Each of them alone is a conflict of a merge, with that reason.
    for (const auto& conflict : plan.getConflicts()) {
      TarnMerge merge(*source);
      ASSERT_FALSE(merge.mergeManagedObject(
          *delta->getLibTarnCmData()->getLibTarnManagedObject(conflict.distName)));
      ASSERT_EQ(merge.getDiagnostic().message, conflict.reason);
    }
  }
  EXPECT_GT(planned, 500U);
}

}  // namespace
