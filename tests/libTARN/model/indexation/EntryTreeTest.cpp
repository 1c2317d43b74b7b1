#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <new>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "TestPools.hpp"
#include "model/indexation/EntryTree.hpp"

namespace {

struct Number;

}  // namespace

namespace libtarn {
namespace model {
namespace indexation {

// Nothing changes during a walk here.
template <>
EntryPosition<Number> lowerBound(const EntrySequence<Number>& /*sequence*/,
                                 const Number& /*entry*/) {
  return {};
}

}  // namespace indexation
}  // namespace model
}  // namespace libtarn

namespace {

using libtarn::model::indexation::EntryTree;
using tarn_test::LimitedPool;

struct Number {
  std::intptr_t value;
};
struct NumberOrder {
  static int compare(const Number& a, const Number& b) {
    return a.value < b.value ? -1 : (a.value > b.value ? 1 : 0);
  }
};
using Tree = EntryTree<Number, NumberOrder>;

std::vector<std::intptr_t> contentOf(const Tree& tree) {
  std::vector<std::intptr_t> content;
  for (const Number& number : tree.collection()) content.push_back(number.value);
  return content;
}

void expectSame(const Tree& tree, const std::set<std::intptr_t>& model) {
  ASSERT_EQ(tree.size(), model.size());
  ASSERT_EQ(contentOf(tree), std::vector<std::intptr_t>(model.begin(), model.end()));
  ASSERT_EQ(tree.collection().empty(), model.empty());
}

TEST(EntryTreeTest, EmptyTreeFindsNothing) {
  LimitedPool pool;
  Tree tree(&pool);
  EXPECT_TRUE(tree.collection().empty());
  EXPECT_EQ(tree.find({1}), nullptr);
  EXPECT_FALSE(tree.erase({1}));
  EXPECT_EQ(tree.size(), 0U);
}

void fillAndDrain(std::vector<std::intptr_t> numbers, unsigned seed) {
  SCOPED_TRACE("seed " + std::to_string(seed));
  LimitedPool pool;
  Tree tree(&pool);
  for (const std::intptr_t number : numbers) ASSERT_TRUE(tree.add({number}));
  for (const std::intptr_t number : numbers) ASSERT_FALSE(tree.add({number}));
  expectSame(tree, std::set<std::intptr_t>(numbers.begin(), numbers.end()));
  for (const std::intptr_t number : numbers) {
    ASSERT_NE(tree.find({number}), nullptr);
    ASSERT_EQ(tree.find({number + 1}), nullptr);
    ASSERT_EQ(tree.lowerBound({number - 1}).entry->value, number);
  }
  std::shuffle(numbers.begin(), numbers.end(), std::mt19937(seed));
  while (!numbers.empty()) {
    ASSERT_TRUE(tree.erase({numbers.back()}));
    ASSERT_FALSE(tree.erase({numbers.back()}));
    numbers.pop_back();
    if (numbers.size() % 9973 == 0) {
      expectSame(tree, std::set<std::intptr_t>(numbers.begin(), numbers.end()));
    }
  }
  ASSERT_TRUE(tree.add({7}));
  expectSame(tree, {7});
}

TEST(EntryTreeTest, OneHundredThousandEntriesInAnyOrder) {
  std::vector<std::intptr_t> numbers(100000);
  for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = static_cast<std::intptr_t>(2 * i);
  fillAndDrain(numbers, 1);
  std::reverse(numbers.begin(), numbers.end());
  fillAndDrain(numbers, 2);
  std::shuffle(numbers.begin(), numbers.end(), std::mt19937(3));
  fillAndDrain(numbers, 4);
}

TEST(EntryTreeTest, RandomAddsAndErasesAgreeWithASet) {
  for (unsigned seed = 0; seed < 60; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    LimitedPool pool;
    Tree tree(&pool);
    std::set<std::intptr_t> model;
    const unsigned range = 1U << (2 + seed % 12);
    for (int step = 0; step < 3000; ++step) {
      const auto number = static_cast<std::intptr_t>(random() % range);
      const unsigned erasePercent = (step / 500) % 2 == 0 ? 20 : 80;
      if (random() % 100 < erasePercent) {
        ASSERT_EQ(tree.erase({number}), model.erase(number) == 1);
      } else {
        ASSERT_EQ(tree.add({number}), model.insert(number).second);
      }
      ASSERT_EQ(tree.find({number}) != nullptr, model.count(number) == 1);
      const auto bound = model.lower_bound(number + 1);
      const auto position = tree.lowerBound({number + 1});
      ASSERT_EQ(position.entry == nullptr, bound == model.end());
      if (position.entry) {
        ASSERT_EQ(position.entry->value, *bound);
        ASSERT_EQ(position.hasKey, *bound == number + 1);
      }
      if (step % 100 == 0) expectSame(tree, model);
    }
    tree.clear();
    expectSame(tree, {});
    // It can be used like a new one.
    model.clear();
    for (int i = 0; i < 300; ++i) {
      const auto number = static_cast<std::intptr_t>(random() % range);
      ASSERT_EQ(tree.add({number}), model.insert(number).second);
    }
    expectSame(tree, model);
  }
}

// Whole leaves are removed at the ends or in the middle, and others are added there.
TEST(EntryTreeTest, RemovedLeavesAreReplaced) {
  constexpr std::intptr_t COUNT = 3000;
  const std::intptr_t ranges[][2] = {{0, 1000}, {1000, 2000}, {2000, COUNT}, {0, COUNT}, {64, 192}};
  for (const auto& [from, to] : ranges) {
    SCOPED_TRACE(from);
    LimitedPool pool;
    Tree tree(&pool);
    std::set<std::intptr_t> model;
    const auto add = [&](std::intptr_t number) {
      ASSERT_EQ(tree.add({number}), model.insert(number).second);
    };
    for (std::intptr_t i = 0; i < COUNT; ++i) add(i);
    for (int round = 0; round < 3; ++round) {
      for (std::intptr_t i = from; i < to; ++i) {
        ASSERT_EQ(tree.erase({i}), model.erase(i) == 1);
      }
      expectSame(tree, model);
      // Downwards, then upwards beyond both ends.
      for (std::intptr_t i = to; i > from - 500; i -= 2) add(i);
      for (std::intptr_t i = from - 500; i < to + 500; ++i) add(i);
      expectSame(tree, model);
    }
  }
}

TEST(EntryTreeTest, SortedEntriesAreTakenWhereTheyLie) {
  const std::size_t counts[] = {0, 1, 63, 64, 65, 127, 128, 129, 5000};
  for (const std::size_t count : counts) {
    SCOPED_TRACE(count);
    LimitedPool pool;
    Tree tree(&pool);
    std::vector<Number> numbers(count);
    std::set<std::intptr_t> model;
    for (std::size_t i = 0; i < count; ++i) {
      numbers[i].value = static_cast<std::intptr_t>(2 * i);
      model.insert(numbers[i].value);
    }
    tree.takeSorted(numbers.data(), count);
    expectSame(tree, model);
    for (std::intptr_t number = -1; number < 2 * static_cast<std::intptr_t>(count); number += 7) {
      ASSERT_EQ(tree.add({number}), model.insert(number).second);
    }
    ASSERT_TRUE(tree.add({1000000}));
    model.insert(1000000);
    expectSame(tree, model);
    // From the front on.
    while (!model.empty()) {
      ASSERT_TRUE(tree.erase({*model.begin()}));
      model.erase(model.begin());
    }
    expectSame(tree, model);
  }
}

TEST(EntryTreeTest, AddWithoutMemoryChangesNothing) {
  for (unsigned seed = 0; seed < 4; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    LimitedPool pool;
    Tree tree(&pool);
    std::set<std::intptr_t> model;
    std::size_t refused = 0;
    for (int step = 0; step < 20000; ++step) {
      const auto number = seed == 0 ? step : static_cast<std::intptr_t>(random() % 100000);
      for (std::size_t blocks = 0;; ++blocks) {
        pool.limit(blocks);
        try {
          const bool added = tree.add({number});
          ASSERT_EQ(added, model.insert(number).second);
          break;
        } catch (const std::bad_alloc&) {
          ++refused;
          ASSERT_EQ(tree.size(), model.size());
          ASSERT_EQ(tree.find({number}), nullptr);
        }
      }
    }
    EXPECT_GT(refused, 300U);
    expectSame(tree, model);
  }
}

// For trees of any shape: grown at random, then thinned out so that leaves are removed, too.
TEST(EntryTreeTest, ErasedEntryIsAddedAgainWithoutMemory) {
  for (unsigned seed = 0; seed < 13; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    LimitedPool pool;
    Tree tree(&pool);
    std::set<std::intptr_t> model;
    const std::size_t most = std::size_t{1} << (3 + seed % 13);
    for (int round = 0; round < 3; ++round) {
      while (model.size() < most) {
        const auto number = static_cast<std::intptr_t>(random() % (4 * most));
        ASSERT_EQ(tree.add({number}), model.insert(number).second);
      }
      while (model.size() > most / 50 + 1) {
        const auto number = *model.lower_bound(
            std::min(*model.rbegin(), static_cast<std::intptr_t>(random() % (4 * most))));
        pool.limit(0);
        ASSERT_TRUE(tree.erase({number}));
        ASSERT_NO_THROW(ASSERT_TRUE(tree.add({number})));
        ASSERT_TRUE(tree.erase({number}));
        pool.limit(static_cast<std::size_t>(-1));
        model.erase(number);
      }
      expectSame(tree, model);
    }
  }
}

TEST(EntryTreeTest, PreparedAddNeedsNoMemoryWhateverIsErasedBefore) {
  std::mt19937 random(1);
  LimitedPool pool;
  Tree tree(&pool);
  std::set<std::intptr_t> model;
  for (int step = 0; step < 60000; ++step) {
    pool.limit(static_cast<std::size_t>(-1));
    tree.prepareAdd();
    pool.limit(0);
    if (random() % 4 == 0 && !model.empty()) {
      ASSERT_TRUE(tree.erase({*model.begin()}));
      model.erase(model.begin());
    }
    const auto number = static_cast<std::intptr_t>(random() % 1000000);
    ASSERT_NO_THROW(ASSERT_EQ(tree.add({number}), model.insert(number).second));
  }
  expectSame(tree, model);
}

}  // namespace
