#include "MessageRecorder.h"

#include "vxMemory.h"

#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace vx::test {
namespace {

using Messages = std::vector<Message>;
constexpr VXuint64 tooLarge[] = {~0ULL, ~0ULL - 63, 1ULL << 63, (1ULL << 63) - 1, (1ULL << 63) - 64};

bool isAligned(const void* memory) { return reinterpret_cast<std::uintptr_t>(memory) % 64 == 0; }

TEST(Memory, BlocksAreAlignedTo64BytesAndWhollyWritable) {
  for (const VXuint64 size : {0ULL, 1ULL, 63ULL, 64ULL, 65ULL, 1000ULL, 1ULL << 20}) {
    void* memory = VXAlloc(size, VX_RETURN_NULL);
    ASSERT_NE(memory, nullptr) << size;
    EXPECT_TRUE(isAligned(memory)) << size;
    std::memset(memory, 0x5a, size);
    VXFree(memory);
  }
}

TEST(Memory, FreeIgnoresNull) {
  VXFree(nullptr);
  Memory::freeMemory(nullptr);
}

TEST(Memory, ASizeThatCannotBeAddressedGivesNull) {
  MessageRecorder messages;
  for (const VXuint64 size : tooLarge) {
    EXPECT_EQ(VXAlloc(size, VX_RETURN_NULL), nullptr);
    EXPECT_EQ(VXRealloc(nullptr, size, VX_RETURN_NULL), nullptr);
    EXPECT_EQ(Memory::allocateMemory(size, VX_RETURN_NULL), nullptr);
  }
  EXPECT_EQ(messages.take(), Messages{});
}

TEST(Memory, AFatalFailureIsReportedAndGivesNull) {
  MessageRecorder messages;
  EXPECT_EQ(VXAlloc(~0ULL, VX_FATAL_MEMORY_ERROR), nullptr);
  EXPECT_EQ(Memory::allocateMemory(~0ULL, VX_FATAL_MEMORY_ERROR), nullptr);
  const auto taken = messages.take();
  ASSERT_EQ(taken.size(), 2U);
  for (const Message& message : taken) {
    EXPECT_EQ(message.type, VX_FATAL);
    EXPECT_EQ(message.code, VX_NO_MEMORY);
  }
}

TEST(Memory, ReallocationKeepsContentsAndAlignment) {
  auto* memory = static_cast<unsigned char*>(VXAlloc(10, VX_RETURN_NULL));
  for (unsigned char i = 0; i < 10; ++i) memory[i] = i;
  for (const VXuint64 size : {100ULL, 1000ULL, 100000ULL, 50ULL, 11ULL}) {
    memory = static_cast<unsigned char*>(VXRealloc(memory, size, VX_RETURN_NULL));
    ASSERT_NE(memory, nullptr);
    EXPECT_TRUE(isAligned(memory));
    for (unsigned char i = 0; i < 10; ++i) EXPECT_EQ(memory[i], i) << size;
    std::memset(memory + 10, 0xff, size - 10);
  }
  memory = static_cast<unsigned char*>(Memory::reallocateMemory(memory, 3, VX_RETURN_NULL));
  EXPECT_EQ(memory[2], 2);
  VXFree(memory);
}

TEST(Memory, AFailedReallocationLeavesTheBlock) {
  MessageRecorder messages;
  char* memory = VXStrDup("kept", VX_RETURN_NULL);
  EXPECT_EQ(VXRealloc(memory, ~0ULL, VX_RETURN_NULL), nullptr);
  EXPECT_EQ(messages.take(), Messages{});
  EXPECT_EQ(VXRealloc(memory, ~0ULL, VX_FATAL_MEMORY_ERROR), nullptr);
  EXPECT_EQ(messages.take().size(), 1U);
  EXPECT_STREQ(memory, "kept");
  VXFree(memory);
}

TEST(Memory, TextsAndBlocksAreCopied) {
  const std::string text = "some text";
  char* copy = VXStrDup(text.c_str(), VX_RETURN_NULL);
  EXPECT_EQ(copy, text);
  EXPECT_NE(copy, text.c_str());
  VXFree(copy);
  char* empty = VXStrDup("", VX_RETURN_NULL);
  EXPECT_STREQ(empty, "");
  VXFree(empty);
  const char data[4] = {1, 0, 2, 0};
  void* block = VXMemDup(data, sizeof data, VX_RETURN_NULL);
  EXPECT_EQ(std::memcmp(block, data, sizeof data), 0);
  VXFree(block);
  MessageRecorder messages;
  EXPECT_EQ(VXStrDup(nullptr, VX_FATAL_MEMORY_ERROR), nullptr);
  EXPECT_EQ(VXMemDup(nullptr, 5, VX_FATAL_MEMORY_ERROR), nullptr);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST(Memory, ProductsOfSizesAreChecked) {
  unsigned long long product = 7;
  EXPECT_TRUE(multiplySizes(0, ~0ULL, product));
  EXPECT_EQ(product, 0U);
  EXPECT_TRUE(multiplySizes(~0ULL, 1, product));
  EXPECT_EQ(product, ~0ULL);
  EXPECT_TRUE(multiplySizes(1ULL << 32, (1ULL << 32) - 1, product));
  product = 7;
  EXPECT_FALSE(multiplySizes(1ULL << 32, 1ULL << 32, product));
  EXPECT_FALSE(multiplySizes(~0ULL, 2, product));
  EXPECT_EQ(product, 7U);
}

}  // namespace
}  // namespace vx::test
