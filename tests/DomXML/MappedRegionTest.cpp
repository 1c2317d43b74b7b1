#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include "../../DomXML/Source/MappedRegion.hpp"
#include "libtarn/DomDocument.hpp"

namespace {

using libDomXml::MappedRegion;

constexpr std::size_t BLOCK = 235530;

// Read from the list of maps, where an emulator shows the program that it runs.
std::size_t mappedPages() {
  std::size_t bytes = 0;
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    std::size_t endOfNumber = 0;
    const auto begin = std::stoull(line, &endOfNumber, 16);
    bytes +=
        static_cast<std::size_t>(std::stoull(line.substr(endOfNumber + 1), nullptr, 16) - begin);
  }
  return bytes / 4096;
}

std::vector<char*> allocateBlocks(std::size_t count) {
  std::vector<char*> blocks;
  for (std::size_t i = 0; i < count; ++i) {
    void* const block = MappedRegion::allocate(BLOCK, blocks.empty() ? nullptr : blocks.back());
    if (!block) break;
    std::memset(block, static_cast<int>(i), BLOCK);
    blocks.push_back(static_cast<char*>(block));
  }
  return blocks;
}

TEST(MappedRegionTest, BlocksAreAlignedAndDoNotOverlap) {
  const std::vector<char*> blocks = allocateBlocks(200);
  ASSERT_EQ(blocks.size(), 200U);
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(blocks[i]) % sizeof(void*), 0U);
    EXPECT_EQ(blocks[i][0], static_cast<char>(i));
    EXPECT_EQ(blocks[i][BLOCK - 1], static_cast<char>(i));
  }
  for (std::size_t i = blocks.size(); i > 0; --i) MappedRegion::release(blocks[i - 1]);
}

TEST(MappedRegionTest, EverythingIsFreedWithTheLastBlock) {
  const std::size_t before = mappedPages();
  const std::vector<char*> blocks = allocateBlocks(100);
  EXPECT_GT(mappedPages(), before + 100 * BLOCK / 4096);
  for (char* const block : blocks) MappedRegion::release(block);
  EXPECT_LE(mappedPages(), before + 16);
}

TEST(MappedRegionTest, FirstMapHoldsOneBlockAndFurtherOnesGrow) {
  const std::vector<char*> blocks = allocateBlocks(40);
  std::size_t neighbours = 0;
  for (std::size_t i = 1; i < blocks.size(); ++i) {
    const auto distance = reinterpret_cast<std::uintptr_t>(blocks[i]) -
                          reinterpret_cast<std::uintptr_t>(blocks[i - 1]);
    neighbours += distance >= BLOCK && distance < BLOCK + 64 ? 1 : 0;
  }
  EXPECT_GT(neighbours, 30U);
  for (std::size_t i = blocks.size(); i > 0; --i) MappedRegion::release(blocks[i - 1]);
}

TEST(MappedRegionTest, LargeBlocksGetMapsOfTheirOwn) {
  void* const small = MappedRegion::allocate(BLOCK, nullptr);
  auto* const large = static_cast<char*>(MappedRegion::allocate(100U << 20, small));
  ASSERT_NE(large, nullptr);
  large[(100U << 20) - 1] = 'x';
  void* const next = MappedRegion::allocate(BLOCK, large);
  ASSERT_NE(next, nullptr);
  MappedRegion::release(next);
  MappedRegion::release(large);
  MappedRegion::release(small);
}

// The number of blocks that fit into `bytes` more of address space, in a process of its own.
// Returns at most `most`, since under an emulator the limit has no effect.
std::size_t blocksWithin(std::size_t bytes, std::size_t most, bool alone) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) return 0;
  if (fork() == 0) {
    std::size_t count = 0;
    const rlim_t used = mappedPages() * 4096;
    const rlimit limit{used + bytes, used + bytes};
    setrlimit(RLIMIT_AS, &limit);
    if (alone) {
      while (count < most && libDomXml::DomDocument::mmapAlloc(BLOCK)) ++count;
    } else {
      void* newest = nullptr;
      for (; count < most; ++count) {
        newest = MappedRegion::allocate(BLOCK, newest);
        if (!newest) break;
      }
    }
    _exit(write(ends[1], &count, sizeof(count)) == sizeof(count) ? 0 : 1);
  }
  std::size_t count = 0;
  const bool isReported = read(ends[0], &count, sizeof(count)) == sizeof(count);
  wait(nullptr);
  for (const int end : ends) close(end);
  return isReported ? count : 0;
}

TEST(MappedRegionTest, MemoryThatIsLeftIsUsedWhenTheNextMapWouldBeTooLarge) {
  for (const std::size_t mebibytes : {6U, 40U, 70U}) {
    const std::size_t bytes = mebibytes << 20U;
    const std::size_t most = bytes / BLOCK + 1;
    const std::size_t alone = blocksWithin(bytes, most, true);
    ASSERT_GT(alone, 10U);
    EXPECT_GE(blocksWithin(bytes, most, false), alone * 95 / 100) << mebibytes;
  }
}

TEST(MappedRegionTest, SizesThatNoMemoryHasAreRefused) {
  EXPECT_EQ(MappedRegion::allocate(std::numeric_limits<std::size_t>::max(), nullptr), nullptr);
  EXPECT_EQ(MappedRegion::allocate(std::numeric_limits<std::size_t>::max() / 2 + 1, nullptr),
            nullptr);
}

TEST(MappedRegionTest, DestroyedDocumentsLeaveNoMaps) {
  const std::size_t before = mappedPages();
  for (int round = 0; round < 20; ++round) {
    libDomXml::DomDocument document(true);
    for (int i = 0; i < 30; ++i) std::memset(document.allocateMemory(200000), round, 200000);
  }
  EXPECT_LE(mappedPages(), before + 64);
}

}  // namespace
