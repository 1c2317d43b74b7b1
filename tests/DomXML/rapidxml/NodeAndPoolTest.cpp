#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "libtarn/rapidxml/rapidxml.hpp"
#include "support/treeDump.hpp"

namespace {

using namespace rapidxml;

constexpr std::size_t word = sizeof(void*);

static_assert(sizeof(node_type) == 4, "a 32-bit integer");
static_assert(sizeof(xml_base<char>) == 3 * word + 8, "three pointers and two sizes");
static_assert(sizeof(xml_attribute<char>) == sizeof(xml_base<char>) + 2 * word, "two links");
static_assert(sizeof(xml_node<char>) == sizeof(xml_base<char>) + 7 * word, "a kind and six links");
static_assert(word != 4 || (sizeof(xml_base<char>) == 20 && sizeof(xml_node<char>) == 48 &&
                            sizeof(xml_attribute<char>) == 28),
              "sizes of the 32-bit target");

template <class Value>
Value valueAt(const void* record, std::size_t offset) {
  Value value;
  std::memcpy(&value, static_cast<const char*>(record) + offset, sizeof(value));
  return value;
}

TEST(NodeTest, FieldsHaveTheirOrder) {
  xml_document<char> document;
  auto* const parent = document.allocate_node(node_element, "parent", nullptr, 0, 0);
  auto* const before = document.allocate_node(node_element, "b", nullptr, 0, 0);
  auto* const node = document.allocate_node(node_element, "node", "value", 0, 0);
  auto* const after = document.allocate_node(node_element, "a", nullptr, 0, 0);
  auto* const child = document.allocate_node(node_element, "c", nullptr, 0, 0);
  auto* const last = document.allocate_node(node_element, "l", nullptr, 0, 0);
  auto* const attribute = document.allocate_attribute("x", "y", 0, 0);
  auto* const lastAttribute = document.allocate_attribute("z", nullptr, 0, 0);
  for (auto* n : {before, node, after}) parent->append_node(n);
  node->append_node(child);
  node->append_node(last);
  node->append_attribute(attribute);
  node->append_attribute(lastAttribute);

  EXPECT_EQ(valueAt<const char*>(node, 0), node->name());
  EXPECT_EQ(valueAt<const char*>(node, word), node->value());
  EXPECT_EQ(valueAt<std::uint32_t>(node, 2 * word), 4U);
  EXPECT_EQ(valueAt<std::uint32_t>(node, 2 * word + 4), 5U);
  EXPECT_EQ(valueAt<xml_node<char>*>(node, 2 * word + 8), parent);
  const std::size_t base = sizeof(xml_base<char>);
  EXPECT_EQ(valueAt<node_type>(node, base), node_element);
  EXPECT_EQ(valueAt<xml_node<char>*>(node, base + word), child);
  EXPECT_EQ(valueAt<xml_node<char>*>(node, base + 2 * word), last);
  EXPECT_EQ(valueAt<void*>(node, base + 3 * word), attribute);
  EXPECT_EQ(valueAt<void*>(node, base + 4 * word), lastAttribute);
  EXPECT_EQ(valueAt<xml_node<char>*>(node, base + 5 * word), before);
  EXPECT_EQ(valueAt<xml_node<char>*>(node, base + 6 * word), after);
  EXPECT_EQ(valueAt<void*>(lastAttribute, base), attribute);
  EXPECT_EQ(valueAt<void*>(attribute, base + word), lastAttribute);
}

TEST(NodeTest, DocumentHasItsPoolAtTheStart) {
  xml_document<char> document;
  EXPECT_EQ(static_cast<void*>(static_cast<memory_pool<char>*>(&document)),
            static_cast<void*>(&document));
  EXPECT_EQ(document.type(), node_document);
}

TEST(NodeTest, UnsetTextsShareOneEmptyText) {
  const xml_node<char> a(node_element);
  const xml_node<char> b(node_element);
  EXPECT_STREQ(a.name(), "");
  EXPECT_EQ(a.name(), b.value());
  EXPECT_EQ(a.name_size() + a.value_size(), 0U);
}

class NodeTreeTest : public ::testing::Test {
 protected:
  xml_node<char>* make(const char* name) {
    return document_.allocate_node(node_element, name, nullptr, 0, 0);
  }
  xml_document<char> document_;
};

TEST_F(NodeTreeTest, LookUpsFindByNameInBothDirections) {
  auto* const root = make("r");
  for (const char* name : {"a", "b", "A", "b", "ab"}) root->append_node(make(name));
  EXPECT_EQ(root->first_node()->next_sibling("b"), root->first_node("b"));
  EXPECT_EQ(root->last_node("b"), root->last_node()->previous_sibling("b"));
  EXPECT_NE(root->first_node("b"), root->last_node("b"));
  EXPECT_EQ(root->first_node("abc", 1), root->first_node());
  EXPECT_EQ(root->last_node("a", 0, false), root->first_node("A"));
  // Comparison without case, up to the last letter and no further.
  root->append_node(make("aZ"));
  EXPECT_EQ(root->first_node("Az ", 2, false), root->last_node());
  EXPECT_EQ(root->first_node("a[", 0, false), nullptr);
  EXPECT_EQ(root->first_node("x"), nullptr);
  EXPECT_EQ(root->last_node("x"), nullptr);
  EXPECT_EQ(root->last_node()->next_sibling(), nullptr);
  EXPECT_EQ(root->first_node()->previous_sibling("a"), nullptr);
}

TEST_F(NodeTreeTest, InsertAndRemoveKeepTheLinks) {
  auto* const root = make("r");
  auto* const a = make("a");
  auto* const b = make("b");
  auto* const c = make("c");
  root->insert_node(nullptr, b);
  root->insert_node(b, a);
  root->insert_node(nullptr, c);
  EXPECT_EQ(tarn_test::dump(*root), "r{a b c}");
  root->remove_node(b);
  EXPECT_EQ(tarn_test::dump(*root), "r{a c}");
  root->insert_node(a, b);
  EXPECT_EQ(tarn_test::dump(*root), "r{b a c}");
  root->remove_node(c);
  root->remove_node(b);
  EXPECT_EQ(tarn_test::dump(*root), "r{a}");
  root->remove_node(a);
  EXPECT_EQ(root->first_node(), nullptr);
  root->append_node(c);
  EXPECT_EQ(tarn_test::dump(*root), "r{c}");
  root->remove_all_nodes();
  EXPECT_EQ(c->parent(), nullptr);
  EXPECT_EQ(tarn_test::dump(*root), "r");
}

TEST_F(NodeTreeTest, RemovalOfTheOnlyChildClearsBothLinks) {
  auto* const root = make("r");
  auto* const child = make("c");
  root->append_node(child);
  root->remove_node(child);
  const std::size_t base = sizeof(xml_base<char>);
  EXPECT_EQ(valueAt<xml_node<char>*>(root, base + word), nullptr);
  EXPECT_EQ(valueAt<xml_node<char>*>(root, base + 2 * word), nullptr);
}

TEST_F(NodeTreeTest, LastAttributeOfANameIsSearchedFromTheEnd) {
  auto* const root = make("r");
  EXPECT_EQ(root->last_attribute("a"), nullptr);
  std::vector<xml_attribute<char>*> attributes;
  for (const char* name : {"a", "b", "a", "A", "ab"}) {
    attributes.push_back(document_.allocate_attribute(name, nullptr, 0, 0));
    root->append_attribute(attributes.back());
  }
  EXPECT_EQ(root->last_attribute("a"), attributes[2]);
  EXPECT_EQ(root->first_attribute("a"), attributes[0]);
  EXPECT_EQ(root->last_attribute("b"), attributes[1]);
  EXPECT_EQ(root->last_attribute("ba", 1), attributes[1]);
  EXPECT_EQ(root->last_attribute("a", 0, false), attributes[3]);
  EXPECT_EQ(root->last_attribute("x"), nullptr);
  EXPECT_EQ(root->last_attribute(), attributes[4]);
}

TEST_F(NodeTreeTest, AttributesAreLinkedAndRemoved) {
  auto* const root = make("r");
  std::vector<xml_attribute<char>*> attributes;
  for (const char* name : {"a", "b", "c"}) {
    attributes.push_back(document_.allocate_attribute(name, name, 0, 0));
    root->append_attribute(attributes.back());
  }
  EXPECT_EQ(tarn_test::dump(*root), "r(a=a b=b c=c)");
  EXPECT_EQ(root->last_attribute("a"), attributes[0]);
  root->remove_attribute(attributes[1]);
  EXPECT_EQ(tarn_test::dump(*root), "r(a=a c=c)");
  EXPECT_EQ(attributes[1]->next_attribute(), nullptr);
  root->remove_attribute(attributes[0]);
  root->remove_attribute(attributes[2]);
  EXPECT_EQ(root->last_attribute(), nullptr);
  root->append_attribute(attributes[2]);
  root->remove_all_attributes();
  EXPECT_EQ(attributes[2]->parent(), nullptr);
}

using NodeDeathTest = NodeTreeTest;

TEST_F(NodeDeathTest, BrokenPreconditionsAreAssertions) {
  auto* const root = make("r");
  auto* const child = make("c");
  EXPECT_DEATH(root->last_node(), "assertion failed: m_first_node");
  EXPECT_DEATH(root->next_sibling(), "assertion failed: this->m_parent");
  EXPECT_DEATH(root->previous_sibling(), "assertion failed: this->m_parent");
  EXPECT_DEATH(root->remove_node(child), "assertion failed: where && where->parent\\(\\) == this");
  EXPECT_DEATH(root->remove_node(nullptr), "where && where->parent\\(\\) == this");
  EXPECT_DEATH(root->insert_node(child, make("x")), "!where \\|\\| where->parent\\(\\) == this");
  root->append_node(child);
  EXPECT_DEATH(root->append_node(child),
               "child && !child->parent\\(\\) && child->type\\(\\) != node_document");
  EXPECT_DEATH(root->append_node(nullptr), "child && !child->parent");
  EXPECT_DEATH(root->append_node(&document_), "child->type\\(\\) != node_document");
  EXPECT_DEATH(root->insert_node(child, child), "child && !child->parent");
  auto* const attribute = document_.allocate_attribute("a", nullptr, 0, 0);
  EXPECT_DEATH(root->remove_attribute(attribute),
               "first_attribute\\(\\) && where->parent\\(\\) == this");
  root->append_attribute(attribute);
  EXPECT_DEATH(root->append_attribute(attribute), "attribute && !attribute->parent\\(\\)");
}

// The pool

std::vector<std::size_t> blockSizes;
std::size_t releasedBlocks = 0;

void* countingAllocate(std::size_t size) {
  blockSizes.push_back(size);
  return new char[size];
}

void countingRelease(void* memory) {
  ++releasedBlocks;
  delete[] static_cast<char*>(memory);
}

class PoolTest : public ::testing::Test {
 protected:
  void SetUp() override {
    blockSizes.clear();
    releasedBlocks = 0;
  }
};

static_assert(memory_pool<char>::block_overhead == (word == 4 ? 10 : 22), "link and slack");

TEST_F(PoolTest, BlocksHaveTheirExactSizes) {
  {
    memory_pool<char> pool;
    pool.set_allocator(&countingAllocate, &countingRelease);
    pool.allocate_string(nullptr, 1024);
    EXPECT_TRUE(blockSizes.empty());
    pool.allocate_string(nullptr, 1);
    EXPECT_EQ(blockSizes.size(), 1U);
    pool.allocate_string(nullptr, 235520 - word);
    EXPECT_EQ(blockSizes.size(), 1U);
    pool.allocate_string(nullptr, 235521);
    pool.allocate_string(nullptr, 16 * word);
    EXPECT_EQ(blockSizes, (std::vector<std::size_t>{235520 + memory_pool<char>::block_overhead,
                                                    235521 + memory_pool<char>::block_overhead,
                                                    235520 + memory_pool<char>::block_overhead}));
  }
  EXPECT_EQ(releasedBlocks, 3U);
}

TEST_F(PoolTest, ResultsAreAlignedToTheSizeOfAPointer) {
  memory_pool<char> pool;
  for (std::size_t size = 1; size < 3000; size += 7) {
    const auto address = reinterpret_cast<std::uintptr_t>(pool.allocate_string(nullptr, size));
    EXPECT_EQ(address % word, 0U);
  }
}

TEST_F(PoolTest, StringsAreCopiedByTheirRules) {
  memory_pool<char> pool;
  EXPECT_STREQ(pool.allocate_string("", 0), "");
  EXPECT_STREQ(pool.allocate_string("abc", 0), "abc");
  EXPECT_EQ(std::string(pool.allocate_string("abc", 2), 2), "ab");
  EXPECT_NE(pool.allocate_string(nullptr, 8), nullptr);
  EXPECT_DEATH(pool.allocate_string(nullptr, 0), "assertion failed: source \\|\\| size");
}

TEST_F(PoolTest, StringOfASizeTakesNoMoreThanItsSize) {
  memory_pool<char> pool;
  const std::string source(word, 'a');
  char* const first = pool.allocate_string(source.c_str(), word);
  char* const second = pool.allocate_string("b", 0);
  EXPECT_EQ(second, first + word);
  EXPECT_EQ(*second, 'b');
}

TEST_F(PoolTest, StringOfASizeGetsNoTerminator) {
  memory_pool<char> pool;
  pool.set_allocator(
      [](std::size_t size) -> void* {
        char* const block = new char[size];
        std::memset(block, '?', size);
        return block;
      },
      &countingRelease);
  pool.allocate_string(nullptr, memory_pool<char>::static_pool_size);
  const char* const copy = pool.allocate_string("abcdef", 2);
  EXPECT_EQ(std::string(copy, 4), "ab??");
}

TEST_F(PoolTest, NodesTakeGivenOrMeasuredTexts) {
  memory_pool<char> pool;
  const auto* const node = pool.allocate_node(node_pi, "name", "value", 2, 0);
  EXPECT_EQ(node->type(), node_pi);
  EXPECT_EQ(node->name_size(), 2U);
  EXPECT_EQ(node->value_size(), 5U);
  const auto* const attribute = pool.allocate_attribute("name", nullptr, 0, 0);
  EXPECT_EQ(attribute->name_size(), 4U);
  EXPECT_STREQ(attribute->value(), "");

  const auto* const sized = pool.allocate_node(node_element, "name", "value", 0, 3);
  EXPECT_EQ(sized->name_size(), 4U);
  EXPECT_EQ(sized->value_size(), 3U);
  const auto* const sizedAttribute = pool.allocate_attribute("name", "value", 3, 2);
  EXPECT_EQ(sizedAttribute->name_size(), 3U);
  EXPECT_EQ(sizedAttribute->value_size(), 2U);
}

TEST_F(PoolTest, AllocatorMayOnlyBeSetBeforeTheFirstAllocation) {
  memory_pool<char> pool;
  pool.allocate_string(nullptr, 1);
  EXPECT_DEATH(pool.set_allocator(&countingAllocate, &countingRelease),
               "m_begin == m_static_memory && m_ptr == align\\(m_begin\\)");
}

// Arguments and results of a growing allocator, call by call.
std::vector<std::pair<void*, void*>> newestAndNext;

TEST_F(PoolTest, GrowingAllocatorIsReportedTheNewestBlock) {
  newestAndNext.clear();
  const auto growing = [](std::size_t size, void* newest) {
    newestAndNext.emplace_back(newest, countingAllocate(size));
    return newestAndNext.back().second;
  };
  memory_pool<char> pool;
  pool.set_growing_allocator(growing, &countingRelease);
  for (int i = 0; i < 3; ++i) pool.allocate_string(nullptr, 200000);
  ASSERT_EQ(newestAndNext.size(), 3U);
  EXPECT_EQ(newestAndNext[0].first, nullptr);
  EXPECT_EQ(newestAndNext[1].first, newestAndNext[0].second);
  EXPECT_EQ(newestAndNext[2].first, newestAndNext[1].second);
}

TEST_F(PoolTest, AllocatorThatWasSetLastIsTheOne) {
  const auto growing = [](std::size_t size, void*) { return countingAllocate(size); };
  memory_pool<char> pool;
  pool.set_growing_allocator(growing, &countingRelease);
  pool.set_allocator([](std::size_t) -> void* { return nullptr; }, &countingRelease);
  EXPECT_DEATH(pool.allocate_string(nullptr, 2000), "assertion failed: memory");
  pool.set_growing_allocator(growing, &countingRelease);
  pool.allocate_string(nullptr, 2000);
  EXPECT_EQ(blockSizes.size(), 1U);

  // Without an allocator: the heap.
  memory_pool<char> other;
  other.set_growing_allocator(growing, &countingRelease);
  other.set_allocator(nullptr, nullptr);
  other.allocate_string(nullptr, 2000);
  EXPECT_EQ(blockSizes.size(), 1U);
}

TEST_F(PoolTest, AllocatorThatGivesNothingIsAnAssertion) {
  memory_pool<char> pool;
  pool.set_allocator([](std::size_t) -> void* { return nullptr; }, [](void*) {});
  EXPECT_DEATH(pool.allocate_string(nullptr, 2000), "assertion failed: memory");
}

TEST_F(PoolTest, RequestThatCannotBeServedLeavesThePoolAsItWas) {
  memory_pool<char> pool;
  char* const before = pool.allocate_string("abc", 0);
  EXPECT_THROW(pool.allocate_string(nullptr, std::numeric_limits<std::size_t>::max()),
               std::bad_alloc);
  EXPECT_EQ(pool.allocate_string("d", 0), before + word);
}

TEST_F(PoolTest, ForgottenMemoryOfTheCurrentBlockIsGivenOutAgain) {
  struct Forgetting : memory_pool<char> {
    using memory_pool<char>::allocate_aligned;
    using memory_pool<char>::forget_from;
  };
  Forgetting pool;
  pool.set_allocator(&countingAllocate, &countingRelease);
  void* const first = pool.allocate_aligned(64);
  void* const second = pool.allocate_aligned(64);
  pool.forget_from(second);
  EXPECT_EQ(pool.allocate_aligned(1), second);
  pool.forget_from(first);
  EXPECT_EQ(pool.allocate_aligned(64), first);

  // Behind what lies in an older block, the current one is empty.
  void* const inNewBlock = pool.allocate_aligned(1024);
  pool.allocate_aligned(64);
  pool.forget_from(second);
  EXPECT_EQ(pool.allocate_aligned(2048), inNewBlock);
  EXPECT_EQ(blockSizes.size(), 1U);
  // Blocks may have any order in memory.
  pool.allocate_aligned(235520);
  pool.forget_from(inNewBlock);
  void* const inThirdBlock = pool.allocate_aligned(64);
  EXPECT_EQ(blockSizes.size(), 2U);
  pool.forget_from(inThirdBlock);
  EXPECT_EQ(pool.allocate_aligned(235520), inThirdBlock);
  EXPECT_EQ(blockSizes.size(), 2U);
}

TEST_F(PoolTest, BasePoolOffersNoRawMemory) {
  libDomXml::IMemoryPool pool;
  EXPECT_EQ(pool.allocateMemory(8), nullptr);
  pool.deallocateMemory(nullptr);
}

}  // namespace
