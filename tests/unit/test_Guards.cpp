#include "MessageRecorder.h"
#include "TestAllocator.h"

#include "vxGuards.h"

#include <cstddef>
#include <cstdlib>
#include <gtest/gtest.h>
#include <new>
#include <string>
#include <vector>

namespace vx::test {
namespace {

struct Counted {
  static inline int numAlive = 0;
  int value;
  explicit Counted(int v) : value(v) {
    if (v < 0) throw std::string("negative");
    ++numAlive;
  }
  ~Counted() { --numAlive; }
};

struct ThrowsWhenDeleted {
  ~ThrowsWhenDeleted() noexcept(false) { throw 3; }
};

void expectFatal(MessageRecorder& messages, VXErrorCode code, int line) {
  const auto taken = messages.take();
  ASSERT_EQ(taken.size(), 1U);
  EXPECT_EQ(taken[0].type, VX_FATAL);
  EXPECT_EQ(taken[0].code, code);
  EXPECT_EQ(taken[0].file, "tests/unit/test_Guards.cpp");
  EXPECT_EQ(taken[0].line, line);
}

int caughtCode(void (*call)()) {
  try {
    call();
  } catch (int code) {
    return code;
  }
  return 0;
}

TEST(CheckFatal, ReportsAndThrowsItsCode) {
  MessageRecorder messages;
  checkFatal(true);
  EXPECT_TRUE(messages.take().empty());
  const int line = __LINE__ + 1;
  EXPECT_EQ(caughtCode([] { checkFatal(false); }), VX_BAD_POINTER);
  expectFatal(messages, VX_BAD_POINTER, line);
  const int secondLine = __LINE__ + 1;
  EXPECT_EQ(caughtCode([] { checkFatal(false, VX_BAD_INDEX); }), VX_BAD_INDEX);
  expectFatal(messages, VX_BAD_INDEX, secondLine);
}

TEST(GuardedBlock, ReportsAndThrowsOn) {
  MessageRecorder messages;
  EXPECT_EQ(guardedBlock([] { return 5; }), 5);
  EXPECT_TRUE(messages.take().empty());
  const int line = __LINE__ + 1;
  EXPECT_EQ(caughtCode([] { guardedBlock([] { throw 7; }); }), 7) << "the exception itself passes on";
  expectFatal(messages, VX_UNKNOWN_EXCEPTION, line);
}

TEST(GuardedNew, MakesAnObject) {
  MessageRecorder messages;
  Counted* object = guardedNew<Counted>(SourcePosition(), 5);
  ASSERT_NE(object, nullptr);
  EXPECT_EQ(object->value, 5);
  EXPECT_EQ(Counted::numAlive, 1);
  guardedDelete(object);
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(Counted::numAlive, 0);
  guardedDelete(object);
  EXPECT_TRUE(messages.take().empty());
}

TEST(GuardedNew, TellsAThrowingConstructorFromMissingMemory) {
  MessageRecorder messages;
  const int line = __LINE__ + 1;
  EXPECT_EQ(guardedNew<Counted>(SourcePosition(), -1), nullptr);
  expectFatal(messages, VX_CONSTRUCTOR_FAILED, line);

  static int numMessages = 0;
  static VXErrorCode code = 0;
  VXErrorOutput.addMessageCB(
      [](void*, const VXMessage* message) {
        ++numMessages;
        code = message->errorCode;
      },
      nullptr, VX_FATAL);
  messages.pause();
  {
    const FailingAllocations failing;
    EXPECT_EQ(guardedNew<Counted>(SourcePosition(), 1), nullptr);
  }
  EXPECT_EQ(numMessages, 1);
  EXPECT_EQ(code, VX_NO_MEMORY);
  VXErrorOutput.destroy();
}

TEST(GuardedNew, KeepsAWideAlignment) {
  struct alignas(128) Wide {
    char bytes[128];
  };
  Wide* object = guardedNew<Wide>(SourcePosition());
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(object) % 128, 0U);
  guardedDelete(object);
}

TEST(GuardedDelete, ReportsAThrowingDestructorAndNullsThePointer) {
  MessageRecorder messages;
  auto* object = new ThrowsWhenDeleted;
  const int line = __LINE__ + 1;
  guardedDelete(object);
  EXPECT_EQ(object, nullptr);
  expectFatal(messages, VX_DESTRUCTOR_FAILED, line);
}

}  // namespace
}  // namespace vx::test
