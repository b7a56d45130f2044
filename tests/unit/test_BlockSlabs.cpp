#include "vxBlockSlabs.h"
#include "vxUtilsAPI.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <vector>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace vx::test {
namespace {

constexpr VXuint64 KB = 1024;
constexpr VXuint64 MB = 1024 * KB;

struct Block {
  void* memory;
  VXuint64 size;
};

Block take(BlockSlabs& slabs, VXuint64 size) {
  void* const memory = slabs.allocate(size);
  EXPECT_NE(memory, nullptr);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(memory) % 64, 0U);
  std::memset(memory, 1, static_cast<std::size_t>(size));
  return {memory, size};
}

void freeAll(BlockSlabs& slabs, const std::vector<Block>& blocks) {
  for (const Block& block : blocks) slabs.free(block.memory, block.size);
}

TEST(BlockSlabsTest, OtherSizesTakeNoSlab) {
  BlockSlabs slabs;
  std::vector<Block> blocks;
  for (const VXuint64 size : {VXuint64{0}, VXuint64{1}, BlockSlabs::minBlockSize - 1, BlockSlabs::maxBlockSize + 1}) {
    blocks.push_back(take(slabs, size));
  }
  EXPECT_EQ(slabs.allocate(~0ULL), nullptr);
  EXPECT_EQ(slabs.getNumSlabs(), 0U);
  for (const VXuint64 size : {BlockSlabs::minBlockSize, BlockSlabs::maxBlockSize}) {
    blocks.push_back(take(slabs, size));
    EXPECT_EQ(slabs.getNumSlabs(), 1U);
  }
  freeAll(slabs, blocks);
  EXPECT_EQ(slabs.getNumSlabs(), 0U);
}

TEST(BlockSlabsTest, ASlabEndsWithItsLastBlock) {
  BlockSlabs slabs;
  std::vector<Block> blocks;
  for (VXuint64 i = 0; i < 2 * BlockSlabs::slabBytes / MB; ++i) blocks.push_back(take(slabs, MB));
  EXPECT_EQ(slabs.getNumSlabs(), 2U);
  // The last one of the first slab, which no other block is cut from any more.
  const std::size_t half = blocks.size() / 2;
  for (std::size_t i = 1; i < half; ++i) slabs.free(blocks[i].memory, MB);
  EXPECT_EQ(slabs.getNumSlabs(), 2U);
  slabs.free(blocks[0].memory, MB);
  EXPECT_EQ(slabs.getNumSlabs(), 1U);
  freeAll(slabs, {blocks.begin() + static_cast<std::ptrdiff_t>(half), blocks.end()});
  EXPECT_EQ(slabs.getNumSlabs(), 0U);
  const Block again = take(slabs, MB);
  EXPECT_EQ(slabs.getNumSlabs(), 1U);
  freeAll(slabs, {again});
}

#ifdef __linux__
// How many pages of the system a block of a slab takes.
long numResidentPages(const Block& block) {
  std::vector<unsigned char> pages(static_cast<std::size_t>(block.size / 4096));
  EXPECT_EQ(mincore(block.memory, static_cast<std::size_t>(block.size), pages.data()), 0);
  return std::count_if(pages.begin(), pages.end(), [](unsigned char page) { return (page & 1) != 0; });
}

TEST(BlockSlabsTest, TheMemoryOfAFreeBlockGoesBackWhileOthersAreInUse) {
  BlockSlabs slabs;
  std::vector<Block> blocks;
  for (int i = 0; i < 12; ++i) blocks.push_back(take(slabs, MB));  // some in usual pages, some in huge ones
  for (std::size_t i = 0; i < blocks.size(); i += 2) {
    EXPECT_EQ(numResidentPages(blocks[i]), 256);
    slabs.free(blocks[i].memory, MB);
    EXPECT_EQ(numResidentPages(blocks[i]), 0);
    EXPECT_EQ(numResidentPages(blocks[i + 1]), 256);
  }
  for (std::size_t i = 1; i < blocks.size(); i += 2) slabs.free(blocks[i].memory, MB);
  EXPECT_EQ(slabs.getNumSlabs(), 0U);
}
#endif

TEST(BlockSlabsTest, ABlockOfTheCallersOwnIsFreed) {
  BlockSlabs slabs;
  slabs.free(VXAlloc(64 * KB, VX_RETURN_NULL), 64 * KB);
  const Block cut = take(slabs, MB);
  slabs.free(VXAlloc(64 * KB, VX_RETURN_NULL), 64 * KB);
  EXPECT_EQ(slabs.getNumSlabs(), 1U);
  freeAll(slabs, {cut});
}

// Blocks of many sizes that come and go: none lies in another, and each keeps what was written to it.
TEST(BlockSlabsTest, BlocksKeepApartOverRandomUse) {
  std::mt19937 random(11);
  BlockSlabs slabs;
  std::map<unsigned char*, std::pair<VXuint64, unsigned char>> used;
  std::size_t mostSlabs = 0;
  for (int step = 0; step < 4000; ++step) {
    if (random() % 5 < 3 || used.empty()) {
      const VXuint64 size = 12 * KB + random() % 300 * 1000;
      auto* const memory = static_cast<unsigned char*>(slabs.allocate(size));
      ASSERT_NE(memory, nullptr);
      const auto next = used.upper_bound(memory);
      ASSERT_TRUE(next == used.end() || memory + size <= next->first);
      ASSERT_TRUE(next == used.begin() || std::prev(next)->first + std::prev(next)->second.first <= memory);
      const auto mark = static_cast<unsigned char>(random());
      std::memset(memory, mark, static_cast<std::size_t>(size));
      ASSERT_TRUE(used.emplace(memory, std::pair(size, mark)).second);
    } else {
      const auto victim = std::next(used.begin(), static_cast<std::ptrdiff_t>(random() % used.size()));
      const auto [size, mark] = victim->second;
      unsigned char* const memory = victim->first;
      ASSERT_TRUE(std::all_of(memory, memory + size, [m = mark](unsigned char byte) { return byte == m; }));
      slabs.free(memory, size);
      used.erase(victim);
    }
    mostSlabs = std::max(mostSlabs, slabs.getNumSlabs());
  }
  EXPECT_GT(mostSlabs, 1U);
  for (const auto& [memory, contents] : used) slabs.free(memory, contents.first);
  EXPECT_EQ(slabs.getNumSlabs(), 0U);
}

}  // namespace
}  // namespace vx::test
