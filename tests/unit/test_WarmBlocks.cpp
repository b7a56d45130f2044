#include "vxBlockSlabs.h"
#include "vxUtilsAPI.h"
#include "vxWarmBlocks.h"

#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <vector>

namespace vx::test {
namespace {

constexpr VXuint64 KB = 1024;

void* newBlock(VXuint64 size) {
  void* const block = VXAlloc(size, VX_RETURN_NULL);
  std::memset(block, 1, static_cast<std::size_t>(size));
  return block;
}

TEST(WarmBlocksTest, AreEmptyAtFirst) {
  BlockSlabs slabs;
  WarmBlocks blocks(slabs, 100 * KB);
  EXPECT_EQ(blocks.getBytes(), 0U);
  EXPECT_EQ(blocks.take(KB), nullptr);
  EXPECT_EQ(blocks.take(0), nullptr);
  EXPECT_EQ(blocks.take(~0ULL), nullptr);
  blocks.clear();
}

TEST(WarmBlocksTest, TheLastOfASizeComesBackFirst) {
  BlockSlabs slabs;
  WarmBlocks blocks(slabs, 100 * KB);
  void* const first = newBlock(4 * KB);
  void* const second = newBlock(4 * KB);
  void* const other = newBlock(8 * KB);
  blocks.put(first, 4 * KB);
  blocks.put(second, 4 * KB);
  blocks.put(other, 8 * KB);
  EXPECT_EQ(blocks.getBytes(), 16 * KB);
  EXPECT_EQ(blocks.take(4 * KB - 1), nullptr);
  EXPECT_EQ(blocks.take(4 * KB), second);
  EXPECT_EQ(blocks.take(8 * KB), other);
  EXPECT_EQ(blocks.take(4 * KB), first);
  EXPECT_EQ(blocks.take(4 * KB), nullptr);
  EXPECT_EQ(blocks.getBytes(), 0U);
  for (void* const block : {first, second}) {
    std::memset(block, 2, 4 * KB);
    VXFree(block);
  }
  VXFree(other);
}

TEST(WarmBlocksTest, TheOldestGoAtTheBound) {
  BlockSlabs slabs;
  WarmBlocks blocks(slabs, 10 * KB);
  void* const old = newBlock(6 * KB);
  void* const young = newBlock(4 * KB);
  blocks.put(old, 6 * KB);
  blocks.put(young, 4 * KB);
  EXPECT_EQ(blocks.getBytes(), 10 * KB);
  blocks.put(newBlock(KB), KB);
  EXPECT_EQ(blocks.getBytes(), 5 * KB);
  EXPECT_EQ(blocks.take(6 * KB), nullptr);
  blocks.put(newBlock(10 * KB), 10 * KB);
  EXPECT_EQ(blocks.getBytes(), 10 * KB);
  EXPECT_EQ(blocks.take(4 * KB), nullptr);
}

TEST(WarmBlocksTest, WhatDoesNotSuitIsFreed) {
  BlockSlabs slabs;
  WarmBlocks blocks(slabs, 10 * KB);
  blocks.put(newBlock(10 * KB + 1), 10 * KB + 1);
  blocks.put(newBlock(WarmBlocks::minBlockSize - 1), WarmBlocks::minBlockSize - 1);
  blocks.put(newBlock(1), 0);
  EXPECT_EQ(blocks.getBytes(), 0U);
  blocks.put(newBlock(WarmBlocks::minBlockSize), WarmBlocks::minBlockSize);
  EXPECT_EQ(blocks.getBytes(), WarmBlocks::minBlockSize);
  blocks.clear();
  EXPECT_EQ(blocks.getBytes(), 0U);
}

// Takes and puts of many sizes: what comes back was put in with that size, lies here once, and all is accounted for.
TEST(WarmBlocksTest, KeepTheirBooksOverRandomUse) {
  constexpr VXuint64 bound = 256 * KB;
  std::mt19937 random(7);
  BlockSlabs slabs;
  WarmBlocks blocks(slabs, bound);
  std::map<void*, VXuint64> used;
  for (int step = 0; step < 20000; ++step) {
    const VXuint64 size = KB + random() % 40 * 512;
    if (random() % 2 || used.empty()) {
      const VXuint64 before = blocks.getBytes();
      void* block = blocks.take(size);
      ASSERT_EQ(blocks.getBytes(), before - (block ? size : 0));
      if (!block) block = newBlock(size);
      std::memset(block, 3, static_cast<std::size_t>(size));
      ASSERT_TRUE(used.emplace(block, size).second);
    } else {
      const auto victim = used.begin();
      blocks.put(victim->first, victim->second);
      used.erase(victim);
      ASSERT_LE(blocks.getBytes(), bound);
    }
  }
  for (const auto& [block, size] : used) VXFree(block);
}

}  // namespace
}  // namespace vx::test
