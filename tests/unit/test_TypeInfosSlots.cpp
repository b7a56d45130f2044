#include "MessageRecorder.h"
#include "TestTypes.h"

#include "vxTypeInfos.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <new>
#include <thread>
#include <vector>

namespace {
// While set, no memory is given for anything as large as a saved record.
thread_local bool refusesLargeBlocks = false;
}  // namespace

// Not inline, or gcc takes the pairs of new and free for a mistake.
[[gnu::noinline]] void* operator new(std::size_t size) {
  void* const memory = refusesLargeBlocks && size >= sizeof(VXTypeInfos) ? nullptr : std::malloc(size);
  if (!memory) throw std::bad_alloc();
  return memory;
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace vx::test {
namespace {

const std::vector<Message> none;

const Message emptyStack = {VX_FATAL, VX_EMPTY_STACK, "VXTypeInfoPop(VXTypePushSingleInfo pushInfo) (2)",
                            "Ignoring call."};

const Message refusedInThreads = {
    VX_FATAL, VX_TYPE_CHANGE_IN_THREADS, "_VXTypeInfosPushAndSet()",
    "Changing/setting up carrier/registered types in multithreaded mode operations are supported only once, because "
    "otherwise deadlocks might occur. See VX Programming guide for details. Maybe you used carrier/registered types "
    "indirectly by calling functions from a BaseOp::calcOutSubImage() body (e.g. by using copySubImage operations on "
    "non standard types). The VXTypeInfosTable is not updated therefore which might lead to invalid calculations or "
    "crashes."};

// The whole table, byte for byte.
struct TableImage {
  std::vector<unsigned char> bytes = std::vector<unsigned char>(sizeof VXTypeInfosTable);
  TableImage() { std::memcpy(bytes.data(), VXTypeInfosTable, sizeof VXTypeInfosTable); }
  bool operator==(const TableImage& other) const { return bytes == other.bytes; }
};

// Multi-threading is active in its scope.
struct MultithreadingScope {
  MultithreadingScope() { _VXSetMultithreadingActive(1); }
  ~MultithreadingScope() { _VXSetMultithreadingActive(0); }
};

// A second type in the carrier of the complex numbers.
VXDataType otherComplexType() {
  static VXTypeInfos infos;
  static const VXDataType number = [] {
    infos = *VXGetTypeInfosForDataType(complexType());
    infos.name = "other complex";
    infos.dataType = -1;
    VXRegisterTypeInfos(&infos);
    return infos.dataType;
  }();
  return number;
}

class TypeSlotsTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    ASSERT_TRUE(registerTestTypes());
    ASSERT_GE(otherComplexType(), 10);
  }
  void TearDown() override {
    EXPECT_EQ(recorder.take(), none);
    EXPECT_TRUE(TableImage() == before) << "every test leaves the table as it was";
  }
  bool isInSlot(VXint32 slot, VXDataType type) const {
    return std::memcmp(&VXTypeInfosTable[slot], VXGetTypeInfosForDataType(type), sizeof(VXTypeInfos)) == 0;
  }
  TableImage before;
  MessageRecorder recorder;
};

void expectPushed(const VXTypePushSingleInfo& pushed, VXint32 pushInfo, VXint32 slot) {
  EXPECT_EQ(pushed.pushInfo, pushInfo);
  EXPECT_EQ(pushed.slot, slot);
}

TEST_F(TypeSlotsTest, StandardTypesTouchNothing) {
  for (VXDataType type = 0; type < 10; ++type) {
    const VXTypePushSingleInfo output = VXTypeInfosPushAndSetOutput(type);
    expectPushed(output, 0, type);
    const VXTypePushSingleInfo input = VXTypeInfosPushAndSetInput(type);
    expectPushed(input, 0, type);
    EXPECT_TRUE(TableImage() == before);
    VXTypeInfoPop(input);
    VXTypeInfoPop(output.pushInfo, output.slot);
  }
}

TEST_F(TypeSlotsTest, AnInvalidTypeHasNoSlot) {
  expectPushed(VXTypeInfosPushAndSetOutput(-1), 0, -1);
  expectPushed(VXTypeInfosPushAndSetInput(VXNumDataTypes()), 0, -1);
  VXTypeInfoPop(0, -1);
  VXTypeInfoPop(1, -1);
  VXTypeInfoPop(1, 40);
}

TEST_F(TypeSlotsTest, ARegisteredTypeComesIntoItsOutputAndInputSlot) {
  const VXTypePushSingleInfo output = VXTypeInfosPushAndSetOutput(complexType());
  expectPushed(output, 1, 11);
  EXPECT_TRUE(isInSlot(11, complexType()));
  const VXTypePushSingleInfo input = VXTypeInfosPushAndSetInput(vector3Type());
  expectPushed(input, 2, 34);
  EXPECT_TRUE(isInSlot(34, vector3Type()));
  VXTypeInfoPop(input);
  VXTypeInfoPop(output);
}

TEST_F(TypeSlotsTest, BothGivesTheOutputSlotFirst) {
  const VXTypePushInfo pushed = VXTypeInfosPushAndSetBoth(largeType());
  expectPushed(pushed.first, 1, 19);
  expectPushed(pushed.second, 2, 39);
  EXPECT_TRUE(isInSlot(19, largeType()));
  EXPECT_TRUE(isInSlot(39, largeType()));
  VXTypeInfosPop(pushed);
}

TEST_F(TypeSlotsTest, TwoTypesOnOneSlotAreUndoneInReverse) {
  const VXTypePushInfo pushed = VXTypeInfosPushAndSetTypes(complexType(), 0, otherComplexType(), 0);
  expectPushed(pushed.first, 1, 11);
  expectPushed(pushed.second, 1, 11);
  EXPECT_TRUE(isInSlot(11, otherComplexType()));
  VXTypeInfosPop(pushed);
}

TEST_F(TypeSlotsTest, TwoSinglePushesAreUndoneAsAPair) {
  const VXTypePushSingleInfo first = VXTypeInfosPushAndSetOutput(complexType());
  const VXTypePushSingleInfo second = VXTypeInfosPushAndSetOutput(otherComplexType());
  VXTypeInfosPop(first, second);
}

TEST_F(TypeSlotsTest, ATypeThatIsInItsSlotAlreadyIsLeftThereByItsPop) {
  const VXTypePushSingleInfo outer = VXTypeInfosPushAndSetOutput(complexType());
  const VXTypePushSingleInfo inner = VXTypeInfosPushAndSetOutput(complexType());
  expectPushed(inner, 3, 11);
  VXTypeInfoPop(inner);
  EXPECT_TRUE(isInSlot(11, complexType()));
  VXTypeInfoPop(outer);
}

TEST_F(TypeSlotsTest, NestedPushesRestoreEachLevelExactly) {
  const VXTypePushSingleInfo a = VXTypeInfosPushAndSetOutput(complexType());
  const TableImage afterA;
  const VXTypePushSingleInfo b = VXTypeInfosPushAndSetOutput(otherComplexType());
  const TableImage afterB;
  const VXTypePushSingleInfo c = VXTypeInfosPushAndSetOutput(complexType());
  expectPushed(c, 1, 11);
  VXTypeInfoPop(c);
  EXPECT_TRUE(TableImage() == afterB);
  VXTypeInfoPop(b);
  EXPECT_TRUE(TableImage() == afterA);
  VXTypeInfoPop(a);
}

TEST_F(TypeSlotsTest, APopWithoutAPushIsReported) {
  VXTypeInfoPop(1, 11);
  EXPECT_EQ(recorder.take(), std::vector<Message>{emptyStack});
  VXTypeInfoPop(3, 11);
  VXTypeInfoPop(0, 11);
}

TEST_F(TypeSlotsTest, ABusySlotRefusesAnotherTypeInThreads) {
  const MultithreadingScope scope;
  const VXTypePushSingleInfo first = VXTypeInfosPushAndSetOutput(complexType());
  const TableImage afterFirst;
  const VXTypePushSingleInfo refused = VXTypeInfosPushAndSetOutput(otherComplexType());
  expectPushed(refused, 1, 11);
  EXPECT_EQ(recorder.take(), std::vector<Message>{refusedInThreads});
  EXPECT_TRUE(TableImage() == afterFirst) << "the slot is not changed";
  VXTypeInfoPop(refused);
  EXPECT_TRUE(TableImage() == afterFirst) << "the first user still has it";
  VXTypeInfoPop(first);
}

TEST_F(TypeSlotsTest, ARefusedPushThatIsPoppedLastRestoresTheSlot) {
  const MultithreadingScope scope;
  const VXTypePushSingleInfo first = VXTypeInfosPushAndSetOutput(complexType());
  const VXTypePushSingleInfo refused = VXTypeInfosPushAndSetInput(complexType());
  const VXTypePushSingleInfo refusedToo = VXTypeInfosPushAndSetOutput(otherComplexType());
  EXPECT_EQ(recorder.take(), std::vector<Message>{refusedInThreads});
  VXTypeInfoPop(first);
  EXPECT_TRUE(isInSlot(11, complexType()));
  VXTypeInfoPop(refusedToo);
  VXTypeInfoPop(refused);
}

TEST_F(TypeSlotsTest, SeveralUsersOfOneTypeShareItsSlotInThreads) {
  const MultithreadingScope scope;
  const VXTypePushSingleInfo first = VXTypeInfosPushAndSetOutput(complexType());
  const VXTypePushSingleInfo second = VXTypeInfosPushAndSetOutput(complexType());
  expectPushed(second, 3, 11);
  VXTypeInfoPop(second);
  EXPECT_TRUE(isInSlot(11, complexType()));
  VXTypeInfoPop(first);
}

TEST_F(TypeSlotsTest, DifferentSlotsMayBePoppedInAnyOrder) {
  const MultithreadingScope scope;
  const VXTypePushSingleInfo complex = VXTypeInfosPushAndSetOutput(complexType());
  const VXTypePushSingleInfo vector = VXTypeInfosPushAndSetOutput(vector3Type());
  VXTypeInfoPop(complex);
  EXPECT_TRUE(isInSlot(14, vector3Type()));
  EXPECT_EQ(VXTypeInfosTable[11].dataType, -1);
  VXTypeInfoPop(vector);
}

TEST_F(TypeSlotsTest, ThePushBeforeThreadsIsStillRestoredAfterThem) {
  const VXTypePushSingleInfo outer = VXTypeInfosPushAndSetOutput(complexType());
  {
    const MultithreadingScope scope;
    const VXTypePushSingleInfo inner = VXTypeInfosPushAndSetOutput(complexType());
    expectPushed(inner, 3, 11);
    VXTypeInfoPop(inner);
  }
  EXPECT_TRUE(isInSlot(11, complexType()));
  VXTypeInfoPop(outer);
}

TEST_F(TypeSlotsTest, WithoutMemoryToSaveASlotItStaysAndThereIsNothingToPop) {
  std::vector<VXTypePushSingleInfo> pushed;
  VXTypePushSingleInfo failed = {9, 9};
  refusesLargeBlocks = true;
  // What is saved is kept in memory that grows now and then, so that a few pushes may still find room.
  for (int i = 0; i < 1000 && failed.pushInfo != 0; ++i) {
    failed = VXTypeInfosPushAndSetOutput(i % 2 == 0 ? complexType() : otherComplexType());
    if (failed.pushInfo != 0) pushed.push_back(failed);
  }
  refusesLargeBlocks = false;
  EXPECT_EQ(recorder.take(), (std::vector<Message>{{VX_FATAL, VX_NO_MEMORY, "_VXTypeInfosPushAndSet()",
                                                    "The VXTypeInfosTable is not updated."}}));
  expectPushed(failed, 0, 11);
  VXTypeInfoPop(failed);
  while (!pushed.empty()) {
    VXTypeInfoPop(pushed.back());
    pushed.pop_back();
  }
  const VXTypePushSingleInfo next = VXTypeInfosPushAndSetOutput(complexType());
  expectPushed(next, 1, 11);
  VXTypeInfoPop(next);
}

// The type stays in the slot where the user who set it left before another one of the same type.
TEST(TypeSlotsInThreadsTest, TheTypeStaysAfterTheLastUserWhoFoundIt) {
  ASSERT_TRUE(registerTestTypes());
  MessageRecorder recorder;
  const MultithreadingScope scope;
  const VXTypePushSingleInfo first = VXTypeInfosPushAndSetOutput(mixedType());
  const VXTypePushSingleInfo second = VXTypeInfosPushAndSetOutput(mixedType());
  VXTypeInfoPop(first);
  VXTypeInfoPop(second);
  EXPECT_EQ(VXTypeInfosTable[12].dataType, mixedType());
  EXPECT_EQ(recorder.take(), none);
  // What was saved first is still there for one pop.
  VXTypeInfoPop(1, 12);
  EXPECT_EQ(recorder.take(), none);
  EXPECT_EQ(VXTypeInfosTable[12].dataType, -1);
  VXTypeInfoPop(1, 12);
  EXPECT_EQ(recorder.take(), std::vector<Message>{emptyStack});
}

TEST(TypeSlotsInThreadsTest, WhatIsLeftOfASlotDoesNotAddUp) {
  ASSERT_TRUE(registerTestTypes());
  MessageRecorder recorder;
  const MultithreadingScope scope;
  const VXTypeInfos slotBefore = VXTypeInfosTable[11];
  for (int i = 0; i < 3; ++i) {
    for (const VXDataType type : {complexType(), otherComplexType()}) {
      const VXTypePushSingleInfo first = VXTypeInfosPushAndSetOutput(type);
      const VXTypePushSingleInfo second = VXTypeInfosPushAndSetOutput(type);
      expectPushed(first, 1, 11);
      VXTypeInfoPop(first);
      VXTypeInfoPop(second);
    }
  }
  VXTypeInfoPop(1, 11);
  EXPECT_EQ(recorder.take(), none);
  EXPECT_EQ(VXTypeInfosTable[11].dataType, complexType());
  VXTypeInfoPop(1, 11);
  EXPECT_EQ(recorder.take(), std::vector<Message>{emptyStack});
  VXTypeInfosTable[11] = slotBefore;
}

TEST(TypeSlotsInThreadsTest, ManyThreadsPushAndPopTheSameTypes) {
  ASSERT_TRUE(registerTestTypes());
  MessageRecorder recorder;
  const MultithreadingScope scope;
  const VXDataType vector = vector3Type();
  const VXDataType large = largeType();
  // Held for the whole time, as a module's page calculation holds it, so that the slots are read without a lock.
  const VXTypePushInfo held = VXTypeInfosPushAndSetTypes(vector, 0, large, 1);
  std::atomic<int> numWrong = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 2000; ++i) {
        const VXTypePushInfo pushed = VXTypeInfosPushAndSetTypes(vector, 0, large, 1);
        if (pushed.first.pushInfo != 3 || VXTypeInfosTable[14].dataType != vector) ++numWrong;
        if (pushed.second.pushInfo != 3 || VXTypeInfosTable[39].dataType != large) ++numWrong;
        VXTypeInfosPop(pushed);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(numWrong, 0);
  VXTypeInfosPop(held);
  EXPECT_EQ(VXTypeInfosTable[14].dataType, -1);
  EXPECT_EQ(VXTypeInfosTable[39].dataType, -1);
  EXPECT_EQ(recorder.take(), none);
}

}  // namespace
}  // namespace vx::test
