#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <new>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "TestPools.hpp"
#include "libtarn/libtarn.hpp"
#include "libtarn/model/indexation/ITarnUniqueAndNonUniqueMultiIndex.hpp"
#include "libtarn/model/indexation/TarnIndexFactory.hpp"
#include "support/HeapCount.hpp"
#include "support/documents.hpp"

namespace {

using namespace libtarn::model;
using namespace libtarn::model::indexation;
using tarn_test::ArrayPool;
using tarn_test::LimitedPool;
using tarn_test::namesOf;

using Names = std::vector<std::string>;
using ObjectIndex = ITarnUniqueAndNonUniqueMultiIndex<LibTarnManagedObject>;

class IndexMemoryTest : public ::testing::Test {
 protected:
  Scalar* scalar(const std::string& name) {
    return document_.getFactory().createScalar(name.c_str(), nullptr);
  }
  LibTarnManagedObject* object(const std::string& className, const std::string& distName) {
    return document_.getFactory().createLibTarnManagedObject(className.c_str(), distName.c_str(),
                                                             nullptr);
  }
  // Runs `add` with no block, one block, ... until the pool's memory is enough. `unchanged` is
  // called after each failure. Returns the number of failures.
  static std::size_t addWithFailures(LimitedPool& pool, const std::function<void()>& add,
                                     const std::function<void()>& unchanged) {
    for (std::size_t blocks = 0;; ++blocks) {
      pool.limit(blocks);
      try {
        add();
        pool.limit(static_cast<std::size_t>(-1));
        return blocks;
      } catch (const std::bad_alloc&) {
        unchanged();
      }
    }
  }

  LibTarnDocument document_;
};

TEST_F(IndexMemoryTest, IndexesTakeNothingFromTheHeapAndGiveNothingBack) {
  std::vector<Scalar*> scalars;
  std::vector<LibTarnManagedObject*> objects;
  for (int i = 0; i < 5000; ++i) {
    scalars.push_back(scalar("p" + std::to_string(i * 7919 % 5000)));
    objects.push_back(object("C" + std::to_string(i % 7), "A-" + std::to_string(i * 7919 % 5000)));
  }
  ArrayPool pool(4U << 20);
  const std::size_t before = tarn_test::heapAllocations();
  const TarnIndexFactory factory(pool);
  ITarnUniqueIndex<Scalar>& names = *factory.createUniqueScalarNameTarnIndex();
  ObjectIndex& distNames = *factory.createUniqueAndNonUniqueMultiIndex();
  for (Scalar* const element : scalars) names.add(element);
  for (std::size_t i = 0; i < 2500; ++i) distNames.add(objects[i]);
  std::size_t members = 0;
  for (const char* className : {"C0", "C1", "C2", "C3", "C4", "C5", "C6"}) {
    const ManagedObjectCollection all = distNames.getNonUniqueCollection(className);
    members += static_cast<std::size_t>(std::distance(all.begin(), all.end()));
  }
  for (std::size_t i = 2500; i < 5000; ++i) distNames.add(objects[i]);
  const std::size_t added = distNames.size() + names.size();
  std::size_t removed = 0;
  for (Scalar* const element : scalars) removed += names.remove(element) ? 1 : 0;
  for (LibTarnManagedObject* const element : objects) removed += distNames.remove(element) ? 1 : 0;
  distNames.clear();
  EXPECT_EQ(tarn_test::heapAllocations(), before);
  EXPECT_EQ(members, 2500U);
  EXPECT_EQ(added, 10000U);
  EXPECT_EQ(removed, 10000U);
}

TEST_F(IndexMemoryTest, EntriesAddedInOrderTakeLittleMoreThanTheirOwnSize) {
  std::vector<Scalar*> scalars;
  for (int i = 10000; i < 20000; ++i) scalars.push_back(scalar(std::to_string(i)));
  ArrayPool pool(4U << 20);
  ITarnUniqueIndex<Scalar>& index = *TarnIndexFactory(pool).createUniqueScalarNameTarnIndex();
  const std::size_t empty = pool.usedBytes();
  EXPECT_LE(empty, 3 * sizeof(void*)) << "two indexes live in every managed object";
  for (Scalar* const element : scalars) ASSERT_TRUE(index.add(element));
  const std::size_t own = scalars.size() * 2 * sizeof(void*);
  EXPECT_LT(pool.usedBytes(), own + own / 8);
}

TEST_F(IndexMemoryTest, PositionOfARemovedObjectIsUsedAgain) {
  ArrayPool pool(1U << 20);
  ObjectIndex& index = *TarnIndexFactory(pool).createUniqueAndNonUniqueMultiIndex();
  for (int i = 0; i < 100; ++i) index.add(object("C", "A-" + std::to_string(i)));
  LibTarnManagedObject* const moving = object("C", "B-1");
  index.add(moving);
  const std::size_t filled = pool.usedBytes();
  for (int i = 0; i < 1000; ++i) {
    ASSERT_TRUE(index.remove(moving));
    ASSERT_TRUE(index.add(moving));
  }
  EXPECT_EQ(pool.usedBytes(), filled);
}

TEST_F(IndexMemoryTest, NameIndexIsUnchangedByAnAddThatGetsNoMemory) {
  LimitedPool pool;
  ITarnUniqueIndex<Scalar>& index = *TarnIndexFactory(pool).createUniqueScalarNameTarnIndex();
  std::set<std::string> model;
  std::mt19937 random(11);
  std::size_t failures = 0;
  for (int step = 0; step < 3000; ++step) {
    SCOPED_TRACE("seed 11, step " + std::to_string(step));
    const std::string name = std::to_string(random() % 100000);
    Scalar* const element = scalar(name);
    bool added = false;
    failures += addWithFailures(
        pool, [&] { added = index.add(element); },
        [&] {
          ASSERT_EQ(index.find(name.c_str()), nullptr);
          ASSERT_EQ(namesOf(index.getCollection()), Names(model.begin(), model.end()));
        });
    ASSERT_EQ(added, model.insert(name).second);
    ASSERT_EQ(index.size(), model.size());
  }
  EXPECT_GT(failures, 50U);
  EXPECT_EQ(namesOf(index.getCollection()), Names(model.begin(), model.end()));
}

TEST_F(IndexMemoryTest, BothViewsAreUnchangedByAnAddThatGetsNoMemory) {
  LimitedPool pool;
  ObjectIndex& index = *TarnIndexFactory(pool).createUniqueAndNonUniqueMultiIndex();
  std::set<std::string> model;
  std::map<std::string, Names> byClass;
  const auto expectSame = [&] {
    ASSERT_EQ(index.size(), model.size());
    ASSERT_EQ(namesOf(index.getCollection()), Names(model.begin(), model.end()));
    for (const auto& [className, members] : byClass) {
      ASSERT_EQ(namesOf(index.getNonUniqueCollection(className.c_str())), members) << className;
    }
  };
  std::mt19937 random(12);
  std::size_t failures = 0;
  for (int step = 0; step < 3000; ++step) {
    SCOPED_TRACE("seed 12, step " + std::to_string(step));
    const std::string className = "C" + std::to_string(random() % 3);
    const std::string name = "A-" + std::to_string(random() % 100000);
    LibTarnManagedObject* const element = object(className, name);
    bool added = false;
    failures += addWithFailures(
        pool, [&] { added = index.add(element); },
        [&] {
          if (step > 100) expectSame();
        });
    ASSERT_EQ(added, model.insert(name).second);
    if (added) byClass[className].push_back(name);
    if (step == 100) expectSame();
  }
  EXPECT_GT(failures, 100U);
  expectSame();
}

TEST_F(IndexMemoryTest, ViewByClassThatGetsNoMemoryIsBuiltWhenThereIsSome) {
  LimitedPool pool;
  ObjectIndex& index = *TarnIndexFactory(pool).createUniqueAndNonUniqueMultiIndex();
  Names members;
  for (int i = 0; i < 3000; ++i) {
    members.push_back("A-" + std::to_string(i * 1237 % 3000));
    index.add(object("C", members.back()));
  }
  Names found;
  const std::size_t failures = addWithFailures(
      pool, [&] { found = namesOf(index.getNonUniqueCollection("C")); },
      [&] { ASSERT_EQ(index.size(), 3000U); });
  EXPECT_GT(failures, 40U);
  EXPECT_EQ(found, members);
}

}  // namespace
