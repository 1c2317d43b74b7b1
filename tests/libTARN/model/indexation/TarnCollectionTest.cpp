#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <vector>

#include "libtarn.hpp"
#include "model/indexation/TarnIndexFactory.hpp"

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
  // An end of a run is the first entry behind it.
  const ManagedObjectCollection::iterator border(first.end, &first);
  EXPECT_EQ(border->serial, 3U);
  EXPECT_EQ(serialsOf({ManagedObjectCollection(first).begin(), border}), (Numbers{0, 1, 2}));
}

TEST_F(TarnCollectionTest, CopiedIteratorStaysWhereItIs) {
  const auto all = run(0, 5, nullptr);
  auto it = ManagedObjectCollection(all).begin();
  const auto before = it++;
  EXPECT_EQ(before->serial, 0U);
  EXPECT_EQ(it->serial, 1U);
  EXPECT_NE(before, it);
}

/// An index as a host may write it: a map, laid out anew for every collection.
class HostIndex : public ITarnUniqueIndex<Scalar> {
 public:
  bool add(Scalar* element) override { return map_.emplace(element->getId(), element).second; }
  bool remove(Scalar* element) override { return map_.erase(element->getId()) == 1; }
  bool remove(const char* name) override { return map_.erase(name) == 1; }
  Scalar* find(const char* name) const override {
    const auto it = map_.find(name);
    return it == map_.end() ? nullptr : it->second;
  }
  ScalarCollection getCollection() const override {
    entries_.clear();
    for (const auto& [name, element] : map_) entries_.emplace_back(name.c_str(), element);
    run_ = {entries_.data(), entries_.data() + entries_.size(), nullptr};
    return ScalarCollection(run_);
  }
  std::size_t size() const override { return map_.size(); }

 private:
  std::map<std::string, Scalar*> map_;
  mutable std::vector<ParameterEntry<Scalar>> entries_;
  mutable EntryRun<ParameterEntry<Scalar>> run_{};
};

TEST(IndexInterfaceTest, IndexOfAHostAndOfTheLibraryGiveTheSameAnswers) {
  LibTarnDocument document;
  for (unsigned seed = 0; seed < 10; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    HostIndex host;
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

// What a host must not do; it may get wrong entries but neither leaves the index nor hangs.
TEST(IndexInterfaceTest, WalkThatRemovesWhatItMeetsEnds) {
  LibTarnDocument document;
  for (const int count : {1, 2, 3, 5, 64, 65, 129, 1000}) {
    SCOPED_TRACE(count);
    const TarnIndexFactory factory(*document.getItsTarnDomDocument());
    auto& index = *factory.createUniqueAndNonUniqueMultiIndex();
    for (int i = 0; i < count; ++i) {
      const std::string name = "A-" + std::to_string(i);
      index.add(document.getFactory().createLibTarnManagedObject("C", name.c_str(), nullptr));
    }
    std::size_t met = 0;
    for (LibTarnManagedObject* const element : index.getCollection()) {
      ++met;
      index.remove(element);
      if (met % 3 == 0) index.add(element);
    }
    EXPECT_LE(met, 2U * static_cast<std::size_t>(count));
  }
}

TEST(IndexInterfaceTest, WalkEndsWhenTheRestWasRemovedMeanwhile) {
  LibTarnDocument document;
  const TarnIndexFactory factory(*document.getItsTarnDomDocument());
  ITarnUniqueIndex<Scalar>& index = *factory.createUniqueScalarNameTarnIndex();
  std::vector<Scalar*> scalars;
  for (int i = 1000; i < 2000; ++i) {
    scalars.push_back(document.getFactory().createScalar(std::to_string(i).c_str(), nullptr));
    index.add(scalars.back());
  }
  const ScalarCollection all = index.getCollection();
  auto it = all.begin();
  for (int i = 0; i < 10; ++i) ++it;
  for (std::size_t i = 5; i < scalars.size(); ++i) index.remove(scalars[i]);
  int steps = 0;
  while (it != all.end() && steps < 2000) {
    ++it;
    ++steps;
  }
  EXPECT_EQ(it, all.end());
}

}  // namespace
