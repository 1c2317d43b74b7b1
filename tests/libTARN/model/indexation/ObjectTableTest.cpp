#include <gtest/gtest.h>

#include <deque>
#include <map>
#include <random>
#include <string>
#include <string_view>

#include "TestPools.hpp"
#include "model/indexation/ObjectTable.hpp"

namespace {

using namespace libtarn::model::indexation;
using tarn_test::LimitedPool;

// These tests never dereference an entry.
libtarn::model::LibTarnManagedObject* const SOME_OBJECT =
    reinterpret_cast<libtarn::model::LibTarnManagedObject*>(alignof(std::max_align_t));

// Names whose hashes have low `bits` within `width` slots from `first` on, with wrap-around.
class NamesOfSlots {
 public:
  NamesOfSlots(unsigned bits, std::uint32_t first, std::uint32_t width)
      : mask_((std::uint32_t{1} << bits) - 1), first_(first), width_(width) {}

  const char* next() {
    std::string name;
    do {
      name = "A-" + std::to_string(number_++);
    } while (((textHash(name.data(), name.size()) - first_) & mask_) >= width_);
    names_.push_back(name);
    return names_.back().c_str();
  }

 private:
  std::uint32_t mask_;
  std::uint32_t first_;
  std::uint32_t width_;
  std::uint32_t number_ = 0;
  std::deque<std::string> names_;
};

using Model = std::map<std::string_view, std::size_t>;

void expectSame(const ObjectTable& table, const Model& model) {
  ASSERT_EQ(table.size(), model.size());
  for (const auto& [name, serial] : model) {
    const ManagedObjectEntry* const entry = table.find(name.data());
    ASSERT_NE(entry, nullptr) << name;
    ASSERT_EQ(entry->serial, serial);
  }
}

// Occupied rows of slots across the end of the table, while it grows and shrinks.
TEST(ObjectTableTest, NamesOfFewSlotsAreFoundWhateverWasAddedAndErased) {
  for (unsigned seed = 0; seed < 12; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    LimitedPool pool;
    ObjectTable table(&pool);
    // For every size of the table, the slots are around 0.
    NamesOfSlots crowd(12, static_cast<std::uint32_t>(-20), 20 + seed);
    NamesOfSlots others(1, 0, 2);
    Model model;
    std::size_t crowded = 0;
    for (std::size_t step = 0; step < 2500; ++step) {
      if (random() % 100 < 45 && !model.empty()) {
        auto it = model.lower_bound("A-" + std::to_string(random() % 100000));
        if (it == model.end()) it = model.begin();
        ASSERT_TRUE(table.erase(it->first.data()));
        ASSERT_EQ(table.find(it->first.data()), nullptr);
        ASSERT_FALSE(table.erase(it->first.data()));
        model.erase(it);
      } else {
        const char* const name = (random() % 3 == 0 ? others : crowd).next();
        const auto added = table.add({name, SOME_OBJECT, step});
        ASSERT_NE(added, ObjectTable::Added::DUPLICATE);
        if (added == ObjectTable::Added::CROWDED) {
          ++crowded;
          ASSERT_EQ(table.find(name), nullptr);
        } else {
          model.emplace(name, step);
        }
      }
      if (step % 100 == 0) expectSame(table, model);
    }
    expectSame(table, model);
    if (seed == 0) {
      EXPECT_GT(crowded, 0U);
    }
  }
}

TEST(ObjectTableTest, GrowingBringsNoEntryFurtherAway) {
  for (const std::uint32_t first : {0U, 900U, 1000U, 1023U}) {
    SCOPED_TRACE(first);
    LimitedPool pool;
    ObjectTable table(&pool);
    NamesOfSlots crowd(10, first, 1);
    NamesOfSlots others(10, first + 1, 300);
    Model model;
    std::size_t serial = 0;
    // As many names of one slot as the table accepts; then names of the slots after it, until the
    // table has grown twice.
    for (int i = 0; i < 100; ++i) {
      const char* const name = crowd.next();
      if (table.add({name, SOME_OBJECT, serial}) == ObjectTable::Added::YES) {
        model.emplace(name, serial++);
      }
    }
    for (int i = 0; i < 3000; ++i) {
      const char* const name = others.next();
      if (table.add({name, SOME_OBJECT, serial}) == ObjectTable::Added::YES) {
        model.emplace(name, serial++);
      }
    }
    EXPECT_GT(model.size(), 100U);
    expectSame(table, model);
  }
}

}  // namespace
