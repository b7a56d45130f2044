#include "vxTraceBuffer.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <memory>
#include <thread>
#include <type_traits>

namespace vx::test {
namespace {

using Buffer = TraceBuffer<unsigned short>;

static_assert(std::is_standard_layout_v<Buffer>);
static_assert(offsetof(Buffer, _stackTop) == 0);
static_assert(offsetof(Buffer, _listIndex) == 2);
static_assert(offsetof(Buffer, _stack) == 8);
static_assert(offsetof(Buffer, _list) == 8 + 65536 * sizeof(char*));
static_assert(sizeof(Buffer) == 8 + 2 * 65536 * sizeof(char*));

TEST(TraceBuffer, EntryPushesOnTheStackAndNotesInTheList) {
  const auto buffer = std::make_unique<Buffer>();
  const char* const outer = "source/vxOne:outer()";
  const char* const inner = "source/vxOne:inner()";
  buffer->enter(outer);
  buffer->enter(inner);
  EXPECT_EQ(buffer->_stackTop, 2);
  EXPECT_EQ(buffer->_listIndex, 2);
  EXPECT_EQ(buffer->_stack[0], outer);
  EXPECT_EQ(buffer->_stack[1], inner);
  buffer->leave();
  EXPECT_EQ(buffer->_stackTop, 1);
  EXPECT_EQ(buffer->_stack[1], nullptr);
  EXPECT_EQ(buffer->_list[1], inner) << "the list is never cleared";
  EXPECT_EQ(buffer->_listIndex, 2);
}

TEST(TraceBuffer, IndicesWrapByTheirOwnWidth) {
  const auto buffer = std::make_unique<Buffer>();
  buffer->_listIndex = 65535;
  buffer->_stackTop = 65535;
  const char* const text = "source/vxOne:wrap()";
  buffer->enter(text);
  EXPECT_EQ(buffer->_list[65535], text);
  EXPECT_EQ(buffer->_listIndex, 0);
  EXPECT_EQ(buffer->_stack[65535], text);
  EXPECT_EQ(buffer->_stackTop, 0);
  buffer->leave();
  EXPECT_EQ(buffer->_stackTop, 65535);
  EXPECT_EQ(buffer->_stack[65535], nullptr);
}

TEST(TraceFrame, LeavesOnEveryWayOut) {
  const unsigned short top = VXGlobalTraceBuffer._stackTop;
  const unsigned short index = VXGlobalTraceBuffer._listIndex;
  try {
    const TraceFrame trace("source/vxOne:throws()");
    EXPECT_EQ(VXGlobalTraceBuffer._stackTop, top + 1);
    EXPECT_STREQ(VXGlobalTraceBuffer._stack[top], "source/vxOne:throws()");
    throw 1;
  } catch (int) {
  }
  EXPECT_EQ(VXGlobalTraceBuffer._stackTop, top);
  EXPECT_EQ(VXGlobalTraceBuffer._stack[top], nullptr);
  EXPECT_STREQ(VXGlobalTraceBuffer._list[index], "source/vxOne:throws()") << "the list still shows it";
}

TEST(TraceFrame, ManyThreadsTraceAtOnce) {
  std::thread threads[4];
  for (std::thread& thread : threads) {
    thread = std::thread([] {
      for (int i = 0; i < 5000; ++i) {
        const TraceFrame outer("source/vxOne:outer()");
        const TraceFrame inner("source/vxOne:inner()");
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  VXGlobalTraceBuffer._stackTop = 0;  // threads may leave it out of step
}

}  // namespace
}  // namespace vx::test
