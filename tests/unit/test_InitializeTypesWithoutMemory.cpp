// The start-up of the type table where memory fails, in a program of its own: there is one start-up for each process.

#include "MessageRecorder.h"

#include "vxAPI.h"
#include "vxRuntime.h"
#include "vxStdTypeInfos.h"
#include "vxUtilsAPI.h"

#include <gtest/gtest.h>

namespace {

// Nothing is left at load, so the library's own start-up fails too.
int allocationsLeft = 0;

}  // namespace

// The linker leads calls of VXAlloc() and VXRealloc() here.
extern "C" {
void* __real_VXAlloc(VXuint64 size, VXMemoryErrorHandling handling);
void* __real_VXRealloc(void* memory, VXuint64 size, VXMemoryErrorHandling handling);
void* __wrap_VXAlloc(VXuint64 size, VXMemoryErrorHandling handling);
void* __wrap_VXRealloc(void* memory, VXuint64 size, VXMemoryErrorHandling handling);

void* __wrap_VXAlloc(VXuint64 size, VXMemoryErrorHandling handling) {
  // A size that can't be had makes the true function fail in its own way.
  if (allocationsLeft-- <= 0) size = ~0ULL;
  return __real_VXAlloc(size, handling);
}

void* __wrap_VXRealloc(void* memory, VXuint64 size, VXMemoryErrorHandling handling) {
  if (allocationsLeft-- <= 0) size = ~0ULL;
  return __real_VXRealloc(memory, size, handling);
}
}

namespace {

TEST(InitializeTypesTest, TheStartUpGoesOnWithoutThem) {
  EXPECT_NE(vx::Runtime::fromName("ImageProperties"), nullptr);
  EXPECT_NE(vx::Runtime::fromName("TreeNodeException"), nullptr);
  EXPECT_EQ(VXInit(1, 8, 68), 1);
}

TEST(InitializeTypesTest, RegistersAllTypesOrNoneAndMayBeRepeated) {
  EXPECT_EQ(VXAreTypesInitialized(), 0);
  vx::test::MessageRecorder recorder;
  // No record; four; all ten, but no array; one of the two arrays.
  for (const int number : {0, 4, 6, 1}) {
    allocationsLeft = number;
    EXPECT_EQ(VXInitializeTypes(), 0);
    EXPECT_EQ(VXAreTypesInitialized(), 0);
    EXPECT_EQ(VXNumDataTypes(), 0);
    EXPECT_EQ(VXSizeOf(VXint8Type), 0U);
    EXPECT_EQ(VXTypeInfosTable[0].dataType, -1);
    for (const vx::test::Message& message : recorder.take()) {
      EXPECT_EQ(message.type, VX_FATAL);
      EXPECT_EQ(message.code, VX_NO_MEMORY);
    }
  }
  EXPECT_NE(VXTStdTypeInfos<VXint64>::_myInfos, nullptr);
  allocationsLeft = 2;
  EXPECT_EQ(VXInitializeTypes(), 1);
  EXPECT_EQ(VXAreTypesInitialized(), 1);
  EXPECT_EQ(VXNumDataTypes(), 10);
  EXPECT_EQ(VXTStdTypeInfos<char>::_numInstances, 1);
  EXPECT_EQ(VXTStdTypeInfos<VXint64>::_numInstances, 1);
  EXPECT_STREQ(VXNameFromDataType(9), "int64");
  EXPECT_EQ(VXTypeInfosTable[9].dataType, 9);
  EXPECT_TRUE(recorder.take().empty());
}

}  // namespace
