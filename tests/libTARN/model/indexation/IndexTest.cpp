#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "libtarn/libtarn.hpp"
#include "libtarn/model/indexation/CharComparePredicate.hpp"
#include "libtarn/model/indexation/ITarnUniqueAndNonUniqueMultiIndex.hpp"
#include "libtarn/model/indexation/TarnAllocator.hpp"
#include "libtarn/model/indexation/TarnIndexFactory.hpp"
#include "libtarn/model/indexation/TarnMapIndex.hpp"
#include "libtarn/model/indexation/TarnUniqueAndNonUniqueMultiIndex.hpp"
#include "model/indexation/HashedObject.hpp"
#include "text/textHash.hpp"

namespace {

using namespace libtarn::model;
using namespace libtarn::model::indexation;

class IndexTest : public ::testing::Test {
 protected:
  Scalar* scalar(const char* name) { return document_.getFactory().createScalar(name, nullptr); }
  LibTarnManagedObject* object(const char* className, const char* distName) {
    return document_.getFactory().createLibTarnManagedObject(className, distName, nullptr);
  }
  std::vector<std::string> names(const ManagedObjectCollection& collection) {
    std::vector<std::string> result;
    for (const LibTarnManagedObject* mo : collection)
      result.emplace_back(mo->getDistName().getText());
    return result;
  }

  LibTarnDocument document_;
  TarnIndexFactory factory_{*document_.getItsTarnDomDocument()};
};

using Names = std::vector<std::string>;
using ObjectIndex = ITarnUniqueAndNonUniqueMultiIndex<LibTarnManagedObject>;
using FilledIndex =
    TarnUniqueAndNonUniqueMultiIndex<LibTarnManagedObject, ManagedObjectDistNameExtractor,
                                     ManagedObjectClassNameExtractor>;

TEST_F(IndexTest, SecondScalarOfANameIsRefusedAndTheFirstStays) {
  ITarnUniqueIndex<Scalar>& index = *factory_.createUniqueScalarNameTarnIndex();
  Scalar* const first = scalar("x");
  Scalar* const second = scalar("x");
  EXPECT_TRUE(index.add(first));
  EXPECT_FALSE(index.add(second));
  EXPECT_EQ(index.find("x"), first);
  EXPECT_EQ(index.size(), 1U);
  // The key decides, not the pointer.
  EXPECT_TRUE(index.remove(second));
  EXPECT_EQ(index.find("x"), nullptr);
  EXPECT_FALSE(index.remove(first));
}

TEST_F(IndexTest, CollectionIsInByteOrderWithMissingNamesFirst) {
  ITarnUniqueIndex<Scalar>& index = *factory_.createUniqueScalarNameTarnIndex();
  EXPECT_TRUE(index.getCollection().empty());
  for (const char* name : {"b", "a", "\xC3\xA9", "ab", "B"}) index.add(scalar(name));
  index.add(scalar(nullptr));
  Names order;
  for (const auto& entry : index.getCollection()) {
    EXPECT_EQ(entry.second->getId(), entry.first);
    order.emplace_back(entry.first);
  }
  EXPECT_EQ(order, (Names{"", "B", "a", "ab", "b", "\xC3\xA9"}));
  EXPECT_FALSE(index.add(scalar("")));
  EXPECT_NE(index.find(nullptr), nullptr);
  EXPECT_TRUE(index.remove("ab"));
  EXPECT_FALSE(index.remove("ab"));
  EXPECT_EQ(index.size(), 5U);
}

TEST_F(IndexTest, EmptyIndexTakesEntriesAllAtOnce) {
  TarnMapIndex<Scalar, ScalarNameExtractor> index(*document_.getItsTarnDomDocument());
  Scalar* const a = scalar("a");
  Scalar* const b = scalar("b");
  const ParameterEntry<Scalar> entries[] = {{b->getName(), b}, {a->getName(), a}};
  EXPECT_TRUE(index.fill(entries, 2, false));
  EXPECT_EQ(index.find("a"), a);
  EXPECT_EQ(index.size(), 2U);
  Scalar* const c = scalar("c");
  const ParameterEntry<Scalar> further[] = {{c->getName(), c}};
  EXPECT_FALSE(index.fill(further, 1, true));
  EXPECT_EQ(index.find("c"), nullptr);
  EXPECT_EQ(index.find("b"), b);
  index.clear();
  EXPECT_EQ(index.size(), 0U);
  EXPECT_EQ(index.find("a"), nullptr);
  EXPECT_TRUE(index.fill(further, 1, true));
  EXPECT_EQ(index.find("c"), c);
}

TEST_F(IndexTest, ListsAreFoundByName) {
  ITarnUniqueIndex<List>& index = *factory_.createUniqueIndexForList();
  List* const list = document_.getFactory().createList("l");
  EXPECT_TRUE(index.add(list));
  EXPECT_EQ(index.find("l"), list);
  EXPECT_EQ((*index.getCollection().begin()).second, list);
  EXPECT_TRUE(index.remove(list));
}

TEST_F(IndexTest, ManagedObjectsAreInByteOrderOfTheirNames) {
  auto& index = *factory_.createUniqueAndNonUniqueMultiIndex();
  EXPECT_TRUE(index.getNonUniqueCollection("C").empty());
  EXPECT_TRUE(index.add(object("C", "A-1/B-2")));
  EXPECT_TRUE(index.add(object("C", "A-1/B-10")));
  EXPECT_FALSE(index.add(object("D", "A-1/B-2")));
  EXPECT_EQ(names(index.getCollection()), (Names{"A-1/B-10", "A-1/B-2"}));
  EXPECT_EQ(index.size(), 2U);
  EXPECT_EQ(index.findUniqueElement("A-1"), nullptr);
  EXPECT_EQ(index.findUniqueElement(nullptr), nullptr);
  auto* const nameless =
      dynamic_cast<LibTarnManagedObject*>(document_.getFactory().allocateTarnManagedObjectNode());
  EXPECT_TRUE(index.add(nameless));
  EXPECT_EQ(index.findUniqueElement(nullptr), nameless);
}

TEST_F(IndexTest, ObjectsOfAClassAreInTheOrderOfInsertion) {
  auto& index = *factory_.createUniqueAndNonUniqueMultiIndex();
  for (const char* name : {"Z-3", "Z-1", "Z-2"}) index.add(object("C", name));
  index.add(object("B", "Z-9"));
  EXPECT_EQ(names(index.getNonUniqueCollection("C")), (Names{"Z-3", "Z-1", "Z-2"}));
  EXPECT_TRUE(index.getNonUniqueCollection("X").empty());
  EXPECT_TRUE(index.getNonUniqueCollection("").empty());
  // From now on the index updates the view.
  LibTarnManagedObject* const third = index.findUniqueElement("Z-3");
  EXPECT_TRUE(index.remove(third));
  EXPECT_FALSE(index.remove(third));
  index.add(object("C", "Z-0"));
  index.add(third);
  EXPECT_EQ(names(index.getNonUniqueCollection("C")), (Names{"Z-1", "Z-2", "Z-0", "Z-3"}));
  EXPECT_EQ(names(index.getNonUniqueCollection("B")), (Names{"Z-9"}));
  index.clear();
  EXPECT_TRUE(index.getCollection().empty());
  EXPECT_TRUE(index.getNonUniqueCollection("C").empty());
  EXPECT_TRUE(index.add(third));
  EXPECT_EQ(names(index.getNonUniqueCollection("C")), (Names{"Z-3"}));
}

TEST_F(IndexTest, ObjectsAddedAllAtOnceComeBeforeLaterOnesOfTheirClass) {
  for (const bool viewFirst : {false, true}) {
    FilledIndex index(*document_.getItsTarnDomDocument());
    // An index that was cleared accepts objects all at once, and shows none of its earlier ones.
    LibTarnManagedObject* const gone = object("C", "A-9");
    index.add(gone);
    EXPECT_EQ(names(index.getCollection()), Names{"A-9"});
    EXPECT_EQ(names(index.getNonUniqueCollection("C")), Names{"A-9"});
    index.remove(gone);
    std::vector<HashedObject> objects;
    for (const char* const name : {"A-3", "A-1", "A-2"}) {
      LibTarnManagedObject* const made = object("C", name);
      const char* const key = made->getDistName().getText();
      objects.push_back({key, made, textHash(key, std::strlen(key))});
    }
    ASSERT_TRUE(index.fill(objects.data(), objects.size()));
    EXPECT_FALSE(index.fill(objects.data(), 1));
    EXPECT_EQ(names(index.getCollection()), (Names{"A-1", "A-2", "A-3"}));
    if (viewFirst) {
      EXPECT_EQ(names(index.getNonUniqueCollection("C")), (Names{"A-3", "A-1", "A-2"}));
    }
    EXPECT_TRUE(index.add(object("C", "A-0")));
    EXPECT_TRUE(index.add(object("C", "A-4")));
    EXPECT_EQ(names(index.getNonUniqueCollection("C")), (Names{"A-3", "A-1", "A-2", "A-0", "A-4"}));
  }
}

TEST_F(IndexTest, ClearedIndexIsAsGoodAsNew) {
  ObjectIndex& index = *factory_.createUniqueAndNonUniqueMultiIndex();
  LibTarnManagedObject* const first = object("C", "A-1");
  index.add(first);
  index.add(object("C", "A-2"));
  EXPECT_EQ(names(index.getCollection()), (Names{"A-1", "A-2"}));
  EXPECT_EQ(names(index.getNonUniqueCollection("C")), (Names{"A-1", "A-2"}));
  index.clear();
  EXPECT_EQ(index.findUniqueElement("A-1"), nullptr);
  EXPECT_TRUE(index.getNonUniqueCollection("C").empty());
  EXPECT_TRUE(index.add(object("C", "A-2")));
  EXPECT_TRUE(index.add(first));
  EXPECT_EQ(names(index.getCollection()), (Names{"A-1", "A-2"}));
  EXPECT_EQ(names(index.getNonUniqueCollection("C")), (Names{"A-2", "A-1"}));
}

TEST_F(IndexTest, ViewsAgreeAfterAClassWasChangedWithoutTheIndex) {
  for (std::size_t changed = 0; changed < 4; ++changed) {
    ObjectIndex& index = *factory_.createUniqueAndNonUniqueMultiIndex();
    Names left{"A-1", "A-2", "A-3", "A-4"};
    std::vector<LibTarnManagedObject*> objects;
    for (const std::string& name : left) {
      objects.push_back(object("C", name.c_str()));
      index.add(objects.back());
    }
    EXPECT_EQ(names(index.getNonUniqueCollection("C")), left);
    dynamic_cast<TarnDomElement&>(*objects[changed]).setAttribute("class", "D");
    EXPECT_TRUE(index.remove(objects[changed]));
    left.erase(left.begin() + static_cast<std::ptrdiff_t>(changed));
    EXPECT_EQ(names(index.getNonUniqueCollection("C")), left);
  }
}

TEST_F(IndexTest, RandomObjectsAgreeWithStandardContainers) {
  for (unsigned seed = 0; seed < 20; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    auto& index = *factory_.createUniqueAndNonUniqueMultiIndex();
    std::map<std::string, LibTarnManagedObject*> byName;
    std::map<std::string, Names> byClass;
    for (int step = 0; step < 600; ++step) {
      const std::string name = "A-" + std::to_string(random() % 200);
      if (random() % 3 == 0) {
        const auto it = byName.find(name);
        LibTarnManagedObject* const found = index.findUniqueElement(name.c_str());
        ASSERT_EQ(found, it == byName.end() ? nullptr : it->second);
        if (!found) continue;
        ASSERT_TRUE(index.remove(found));
        Names& members = byClass[found->getClass()];
        members.erase(std::find(members.begin(), members.end(), name));
        byName.erase(it);
      } else {
        const std::string className = "C" + std::to_string(random() % 5);
        LibTarnManagedObject* const added = object(className.c_str(), name.c_str());
        const bool isNew = byName.emplace(name, added).second;
        ASSERT_EQ(index.add(added), isNew);
        if (isNew) byClass[className].push_back(name);
      }
      if (step < 200) continue;
      for (const auto& [className, members] : byClass) {
        ASSERT_EQ(names(index.getNonUniqueCollection(className.c_str())), members);
      }
    }
    Names ordered;
    for (const auto& entry : byName) ordered.push_back(entry.first);
    ASSERT_EQ(names(index.getCollection()), ordered);
  }
}

TEST(CharComparePredicateTest, OrdersByBytesAndTakesNullForTheEmptyText) {
  const CharComparePredicate less;
  EXPECT_TRUE(less("a", "b"));
  EXPECT_FALSE(less("a", "a"));
  EXPECT_TRUE(less("a", "\x80"));
  EXPECT_TRUE(less(nullptr, "a"));
  EXPECT_FALSE(less(nullptr, ""));
}

TEST_F(IndexTest, AllocatorsOverOnePoolAreEqual) {
  libDomXml::IMemoryPool nothing;
  const TarnAllocator<int> a(document_.getItsTarnDomDocument());
  const TarnAllocator<double> b(a);
  EXPECT_TRUE(a == b);
  EXPECT_TRUE(a != TarnAllocator<int>(&nothing));
  std::map<int, int, std::less<>, TarnAllocator<std::pair<const int, int>>> map(
      (TarnAllocator<std::pair<const int, int>>(a)));
  for (int i = 0; i < 100; ++i) map[i] = i;
  EXPECT_EQ(map.at(99), 99);
  EXPECT_THROW(TarnAllocator<int>(&nothing).allocate(1), std::bad_alloc);
  EXPECT_THROW(TarnAllocator<int>(a).allocate(static_cast<std::size_t>(-1)), std::bad_alloc);
}

TEST(TarnIndexFactoryTest, PoolWithoutMemoryGivesNoIndex) {
  libDomXml::IMemoryPool nothing;
  const TarnIndexFactory factory(nothing);
  EXPECT_EQ(factory.createUniqueScalarNameTarnIndex(), nullptr);
  EXPECT_EQ(factory.createUniqueIndexForList(), nullptr);
  EXPECT_EQ(factory.createUniqueAndNonUniqueMultiIndex(), nullptr);
}

}  // namespace
