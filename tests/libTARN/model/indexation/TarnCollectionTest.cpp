#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "libtarn/libtarn.hpp"
#include "libtarn/model/indexation/ITarnUniqueAndNonUniqueMultiIndex.hpp"
#include "libtarn/model/indexation/TarnIndexFactory.hpp"
#include "support/MapIndex.hpp"

namespace {

using namespace libtarn::model;
using namespace libtarn::model::indexation;

using Numbers = std::vector<std::size_t>;

// A range-for would give the objects.
Numbers serialsOf(const ManagedObjectCollection& collection) {
  Numbers serials;
  auto entry = collection.begin();
  while (entry != collection.end()) {
    serials.push_back(entry->serial);
    ++entry;
  }
  return serials;
}

class TarnCollectionTest : public ::testing::Test {
 protected:
  const std::vector<ManagedObjectEntry> entries_ = {
      {"", nullptr, 0}, {"", nullptr, 1}, {"", nullptr, 2}, {"", nullptr, 3}, {"", nullptr, 4}};

  EntryRun<ManagedObjectEntry> run(std::size_t first, std::size_t last,
                                   const EntryRun<ManagedObjectEntry>* next) const {
    return {entries_.data() + first, entries_.data() + last, next};
  }
};

TEST_F(TarnCollectionTest, CollectionOfNothingIsEmpty) {
  const ManagedObjectCollection nothing;
  EXPECT_TRUE(nothing.empty());
  EXPECT_EQ(nothing.begin(), nothing.end());
  const auto noEntries = run(2, 2, nullptr);
  EXPECT_TRUE(ManagedObjectCollection(noEntries).empty());
}

TEST_F(TarnCollectionTest, WalkGoesFromRunToRunAndOverEmptyOnes) {
  const auto last = run(5, 5, nullptr);
  const auto third = run(3, 5, &last);
  const auto second = run(3, 3, &third);
  const auto first = run(0, 3, &second);
  const auto leading = run(0, 0, &first);
  EXPECT_EQ(serialsOf(ManagedObjectCollection(leading)), (Numbers{0, 1, 2, 3, 4}));
  // The end of a run is the first entry after it.
  const ManagedObjectCollection::iterator atNextRun(first.end, &first);
  EXPECT_EQ(atNextRun->serial, 3U);
  EXPECT_EQ(serialsOf({ManagedObjectCollection(first).begin(), atNextRun}), (Numbers{0, 1, 2}));
}

TEST_F(TarnCollectionTest, CopiedIteratorStaysWhereItIs) {
  const auto all = run(0, 5, nullptr);
  auto it = ManagedObjectCollection(all).begin();
  const auto before = it++;
  EXPECT_EQ(before->serial, 0U);
  EXPECT_EQ(it->serial, 1U);
  EXPECT_NE(before, it);
}

TEST(IndexInterfaceTest, IndexOfAHostAndOfTheLibraryGiveTheSameAnswers) {
  LibTarnDocument document;
  for (unsigned seed = 0; seed < 10; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    tarn_test::MapIndex host;
    const TarnIndexFactory factory(*document.getItsTarnDomDocument());
    ITarnUniqueIndex<Scalar>& own = *factory.createUniqueScalarNameTarnIndex();
    for (int step = 0; step < 2000; ++step) {
      const std::string name = std::to_string(random() % 500);
      Scalar* const element = document.getFactory().createScalar(name.c_str(), nullptr);
      switch (random() % 4) {
        case 0:
          ASSERT_EQ(own.remove(element), host.remove(element));
          break;
        case 1:
          ASSERT_EQ(own.remove(name.c_str()), host.remove(name.c_str()));
          break;
        default:
          ASSERT_EQ(own.add(element), host.add(element));
      }
      ASSERT_EQ(own.find(name.c_str()), host.find(name.c_str()));
      ASSERT_EQ(own.size(), host.size());
      if (step % 50 != 0) continue;
      const ScalarCollection expected = host.getCollection();
      auto it = expected.begin();
      for (const auto& [key, scalar] : own.getCollection()) {
        ASSERT_NE(it, expected.end());
        ASSERT_STREQ(key, it->first);
        ASSERT_EQ(scalar, it->second);
        ++it;
      }
      ASSERT_EQ(it, expected.end());
    }
  }
}

// Walks during which the index changes. Each step goes to the next entry of the changed index.

using ObjectIndex = ITarnUniqueAndNonUniqueMultiIndex<LibTarnManagedObject>;

class ChangingIndexTest : public ::testing::Test {
 protected:
  LibTarnManagedObject* object(const std::string& className, const std::string& name) {
    return document_.getFactory().createLibTarnManagedObject(className.c_str(), name.c_str(),
                                                             nullptr);
  }
  Scalar* scalar(const std::string& name) {
    return document_.getFactory().createScalar(name.c_str(), nullptr);
  }
  // The same number of objects in each of three classes; the walk is through the middle one.
  ObjectIndex& indexOfThreeClasses(int count) {
    ObjectIndex& index = *factory_.createUniqueAndNonUniqueMultiIndex();
    for (int i = 0; i < count; ++i) {
      for (const char* const className : {"A", "B", "C"}) {
        index.add(object(className, className + std::to_string(i) + "-1"));
      }
    }
    return index;
  }

  LibTarnDocument document_;
  TarnIndexFactory factory_{*document_.getItsTarnDomDocument()};
};

constexpr int COUNTS[] = {1, 2, 3, 4, 5, 64, 65, 129, 200, 1000};

TEST_F(ChangingIndexTest, ClassWalkThatStepsAndThenRemovesMeetsItsClassOnly) {
  for (const int count : COUNTS) {
    SCOPED_TRACE(count);
    ObjectIndex& index = indexOfThreeClasses(count);
    const ManagedObjectCollection ofClass = index.getNonUniqueCollection("B");
    int met = 0;
    for (auto it = ofClass.begin(); it != ofClass.end();) {
      LibTarnManagedObject* const current = *it;
      ++it;
      ASSERT_STREQ(current->getClass(), "B");
      ASSERT_TRUE(index.remove(current));
      ++met;
    }
    EXPECT_EQ(met, count);
    EXPECT_EQ(index.size(), 2U * static_cast<std::size_t>(count));
  }
}

TEST_F(ChangingIndexTest, RangeForMayRemoveWhatItMeets) {
  for (const int count : COUNTS) {
    SCOPED_TRACE(count);
    ObjectIndex& index = indexOfThreeClasses(count);
    int met = 0;
    for (LibTarnManagedObject* const each : index.getNonUniqueCollection("B")) {
      ASSERT_STREQ(each->getClass(), "B");
      ASSERT_TRUE(index.remove(each));
      ++met;
    }
    EXPECT_EQ(met, count);
    for (LibTarnManagedObject* const each : index.getCollection()) {
      ASSERT_TRUE(index.remove(each));
      ++met;
    }
    EXPECT_EQ(met, 3 * count);
    EXPECT_EQ(index.size(), 0U);

    ITarnUniqueIndex<Scalar>& scalars = *factory_.createUniqueScalarNameTarnIndex();
    for (int i = 0; i < count; ++i) scalars.add(scalar(std::to_string(i)));
    met = 0;
    for (const auto& entry : scalars.getCollection()) {
      ASSERT_TRUE(scalars.remove(entry.first));
      ++met;
    }
    EXPECT_EQ(met, count);
    EXPECT_EQ(scalars.size(), 0U);
  }
}

TEST_F(ChangingIndexTest, ClassWalkThatAddsToItsClassEnds) {
  ObjectIndex& index = indexOfThreeClasses(100);
  int met = 0;
  for (LibTarnManagedObject* const each : index.getNonUniqueCollection("B")) {
    ASSERT_STREQ(each->getClass(), "B");
    // Added again, after all others of the class; then another class right after this one.
    ASSERT_TRUE(index.remove(each));
    ASSERT_TRUE(index.add(each));
    index.add(object("B" + std::to_string(met), "D-" + std::to_string(met)));
    ++met;
  }
  EXPECT_EQ(met, 100);
  EXPECT_EQ(index.size(), 400U);
}

TEST_F(ChangingIndexTest, WalkAtItsEndStaysThereWhateverIsAdded) {
  ObjectIndex& index = indexOfThreeClasses(3);
  for (const ManagedObjectCollection& all :
       {index.getNonUniqueCollection("B"), index.getNonUniqueCollection("C"),
        index.getCollection()}) {
    auto it = all.begin();
    while (it != all.end()) ++it;
    index.add(object("B1", "Y-" + std::to_string(index.size())));
    index.add(object("Z", "Z-" + std::to_string(index.size())));
    index.remove(*index.getCollection().begin());
    EXPECT_EQ(it, all.end());
  }
}

TEST_F(ChangingIndexTest, WalkInAnIndexThatIsClearedEnds) {
  ObjectIndex& index = indexOfThreeClasses(100);
  const ManagedObjectCollection all = index.getCollection();
  const ManagedObjectCollection ofClass = index.getNonUniqueCollection("B");
  auto it = all.begin();
  auto itOfClass = ofClass.begin();
  index.clear();
  index.add(object("B", "B-1"));
  EXPECT_EQ(it, all.end());
  EXPECT_EQ(itOfClass, ofClass.end());
}

// The next entry of a walk must be the next one of a reference model with the same changes.
TEST_F(ChangingIndexTest, WalksOverParametersAgreeWithAMap) {
  for (unsigned seed = 0; seed < 200; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const unsigned names = 4U << seed % 8;
    ITarnUniqueIndex<Scalar>& index = *factory_.createUniqueScalarNameTarnIndex();
    std::map<std::string, Scalar*> model;
    const auto change = [&] {
      const std::string name = std::to_string(random() % names);
      if (random() % 2 == 0) {
        ASSERT_EQ(index.remove(name.c_str()), model.erase(name) == 1);
      } else if (Scalar* const added = scalar(name); index.add(added)) {
        ASSERT_TRUE(model.emplace(name, added).second);
      }
    };
    for (unsigned i = 0; i < names; ++i) change();
    for (int walk = 0; walk < 5; ++walk) {
      const ScalarCollection all = index.getCollection();
      auto expected = model.begin();
      for (auto it = all.begin(); it != all.end(); ++it) {
        ASSERT_NE(expected, model.end());
        ASSERT_EQ(it->first, expected->first);
        ASSERT_EQ(it->second, expected->second);
        const std::string current = it->first;
        for (unsigned changes = random() % 4; changes > 0; --changes) change();
        expected = model.upper_bound(current);
      }
      ASSERT_EQ(expected, model.end());
    }
  }
}

TEST_F(ChangingIndexTest, WalksOverObjectsAgreeWithMaps) {
  for (unsigned seed = 0; seed < 200; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const unsigned names = 4U << seed % 9;
    ObjectIndex& index = *factory_.createUniqueAndNonUniqueMultiIndex();
    // By class and number of insertion, and by name.
    std::map<std::pair<std::string, std::size_t>, LibTarnManagedObject*> byClass;
    std::map<std::string, std::pair<std::string, std::size_t>> byName;
    std::size_t serial = 0;
    const auto change = [&] {
      const std::string name = "A-" + std::to_string(random() % names);
      if (random() % 2 == 0) {
        LibTarnManagedObject* const found = index.findUniqueElement(name.c_str());
        ASSERT_EQ(found != nullptr, byName.count(name) == 1);
        if (!found) return;
        ASSERT_TRUE(index.remove(found));
        byClass.erase(byName[name]);
        byName.erase(name);
      } else {
        const std::string className = "C" + std::to_string(random() % 3);
        LibTarnManagedObject* const added = object(className, name);
        if (!index.add(added)) return;
        byClass.emplace(std::pair(className, serial), added);
        byName.emplace(name, std::pair(className, serial++));
      }
    };
    for (unsigned i = 0; i < names; ++i) change();
    for (int walk = 0; walk < 4; ++walk) {
      const std::string className = "C" + std::to_string(walk);
      const std::pair<std::string, std::size_t> end(className, serial);
      const ManagedObjectCollection ofClass = index.getNonUniqueCollection(className.c_str());
      auto expected = byClass.lower_bound({className, 0});
      for (auto it = ofClass.begin(); it != ofClass.end();) {
        ASSERT_NE(expected, byClass.end());
        ASSERT_EQ(*it, expected->second);
        std::pair<std::string, std::size_t> current = expected->first;
        // Changes come before or after the step.
        const bool stepFirst = random() % 2 == 0;
        if (stepFirst) {
          ++it;
          expected = byClass.upper_bound(current);
          if (expected == byClass.lower_bound(end)) {
            ASSERT_EQ(it, ofClass.end());
            break;
          }
          current = expected->first;
        }
        for (unsigned changes = random() % 4; changes > 0; --changes) change();
        expected = stepFirst ? byClass.lower_bound(current) : byClass.upper_bound(current);
        if (!stepFirst) ++it;
        if (expected == byClass.lower_bound(end)) {
          ASSERT_EQ(it, ofClass.end());
        }
      }
      const ManagedObjectCollection all = index.getCollection();
      auto next = byName.begin();
      for (LibTarnManagedObject* const each : all) {
        ASSERT_NE(next, byName.end());
        ASSERT_EQ(each->getDistName().getText(), next->first);
        const std::string current = next->first;
        for (unsigned changes = random() % 4; changes > 0; --changes) change();
        next = byName.upper_bound(current);
      }
      ASSERT_EQ(next, byName.end());
    }
  }
}

}  // namespace
