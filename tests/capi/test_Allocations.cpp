// Each function of the C interface, well called and badly, with each of its allocations failing.

#include "Rows.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> numLive{0};
// How many allocations until one fails; negative for none. One fails, those after it don't.
std::atomic<long> untilFailure{-1};

bool shallFail() { return untilFailure.load() >= 0 && untilFailure.fetch_sub(1) == 0; }

void* allocate(std::size_t size, std::size_t alignment) {
  if (shallFail()) return nullptr;
  void* memory = nullptr;
  if (posix_memalign(&memory, alignment, size ? size : 1) != 0) return nullptr;
  ++numLive;
  return memory;
}

void* allocateOrThrow(std::size_t size, std::size_t alignment) {
  if (void* const memory = allocate(size, alignment)) return memory;
  throw std::bad_alloc();
}

void release(void* memory) {
  if (memory) --numLive;
  std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) { return allocateOrThrow(size, alignof(std::max_align_t)); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return allocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return allocate(size, alignof(std::max_align_t));
}
void operator delete(void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { release(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { release(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { release(memory); }

// What voxel memory comes from. It goes back by free(), which isn't counted.
extern "C" void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
  if (shallFail()) return nullptr;
  void* memory = nullptr;
  return posix_memalign(&memory, alignment, size) == 0 ? memory : nullptr;
}

namespace vx::test {
namespace {

class Allocations : public ::testing::TestWithParam<rows::Row> {
 protected:
  void SetUp() override { VXErrorOutput.sendMessagesToCerr(false); }
  void TearDown() override {
    untilFailure = -1;
    VXErrorOutput.sendMessagesToCerr(true);
  }

  static void tidyUp() {
    while (VXPopState() == 0) continue;
    VXClearCache();
  }
};

TEST_P(Allocations, MayFailAndNothingIsLost) {
  const rows::Row& row = GetParam();
  if (row.kind == rows::Kind::stops) return;  // nothing would be left to test
  long long expected = 0;
  // What is made once, and what is kept for later, is made by the first calls.
  for (int i = 0; i < 3; ++i) {
    World world;
    expected = row.call(world);
    row.call(world);
    tidyUp();
  }
  for (long n = 0;; ++n) {
    SCOPED_TRACE("allocation " + std::to_string(n));
    const long live = numLive;
    bool hasFailed = false;
    {
      World world;
      const auto call = row.prepare(world);
      untilFailure = n;
      call();
      hasFailed = untilFailure.exchange(-1) < 0;
      tidyUp();
    }
    EXPECT_EQ(numLive, live) << "leaked";
    {
      World world;
      EXPECT_EQ(row.call(world), expected) << "usable afterwards";
      tidyUp();
    }
    if (HasFailure() || !hasFailed) break;
  }
}

TEST_P(Allocations, MayFailInARefusal) {
  const rows::Row& row = GetParam();
  for (long n = 0;; ++n) {
    SCOPED_TRACE("allocation " + std::to_string(n));
    World world;
    const std::vector<rows::RefusedCall> calls = row.refusedCalls(world);
    if (calls.empty()) break;
    untilFailure = -1;
    EXPECT_TRUE(calls.front().run());
    const auto call = calls.front().prepare();
    const long live = numLive;
    untilFailure = n;
    const bool isAnswered = call();
    const bool hasFailed = untilFailure.exchange(-1) < 0;
    EXPECT_TRUE(isAnswered || hasFailed) << "another answer";
    EXPECT_EQ(numLive, live) << "leaked";
    EXPECT_TRUE(calls.front().run()) << "usable afterwards";
    if (HasFailure() || !hasFailed) break;
  }
}

TEST(AllocationsOfAPush, LeaveTheStateAsItWas) {
  VXErrorOutput.sendMessagesToCerr(false);
  VXErrorOutput.setMessageFilter(VX_FATAL);
  long n = 0;
  for (;; ++n) {
    const Host* const host = &Host::getDefaultHost();
    const long live = numLive;
    untilFailure = n;
    const VXErrorCode code = VXPushState(0);
    if (untilFailure.exchange(-1) >= 0) {
      EXPECT_EQ(code, 0);
      break;
    }
    EXPECT_EQ(code, 14) << n;
    EXPECT_EQ(&Host::getDefaultHost(), host) << n;
    EXPECT_EQ(VXErrorOutput.getMessageFilter(), static_cast<unsigned int>(VX_FATAL)) << n;
    EXPECT_EQ(VXPopState(), 44) << n;
    EXPECT_EQ(numLive, live) << n;
  }
  EXPECT_GT(n, 3);
  EXPECT_EQ(VXPopState(), 0);
  VXErrorOutput.setMessageFilter(ErrorOutput::defaultMessageFilter);
  VXErrorOutput.sendMessagesToCerr(true);
}

TEST(AllocationsOfAConnection, LeaveNeitherLinkNorAttachment) {
  World world;
  Field* const in = world.field("InputConnectorField");
  Field* const out = world.image();
  VXErrorOutput.sendMessagesToCerr(false);
  for (long n = 0;; ++n) {
    VXFieldDisconnect(in);
    untilFailure = n;
    const int isConnected = VXFieldConnectFrom(in, out);
    if (untilFailure.exchange(-1) >= 0) {
      EXPECT_EQ(isConnected, 1);
      break;
    }
    EXPECT_EQ(isConnected, 0);
    EXPECT_EQ(world.module()->getInField(0)->getInputConnectorValue().getLink(), nullptr) << n;
    EXPECT_EQ(in->getNumSourceFields(), 0U) << n;
    EXPECT_EQ(out->getNumDestinationFields(), 0U) << n;
  }
  VXErrorOutput.sendMessagesToCerr(true);
}

// A host that can't be made lets the functions that need one throw.
class AllocationsOfTheHost : public ::testing::Test {
 protected:
  template <class Call>
  void expectFrame(const std::string& label, const char* words, Call call) {
    SCOPED_TRACE(label);
    Host::destroyDefaultHost();
    messages.take();
    untilFailure = 0;
    call();
    EXPECT_LT(untilFailure.exchange(-1), 0);
    const Messages taken = messages.take();
    ASSERT_EQ(taken.size(), 2U);
    EXPECT_EQ(taken[0].type, VX_FATAL);
    EXPECT_EQ(taken[0].code, 2);
    EXPECT_EQ(taken[1], (Message{VX_FATAL, 1, "vxAPI:" + label, frameReason(words)}));
  }
  template <class Result, class Call>
  void expectFrame(const std::string& label, const char* words, Result answer, Call call) {
    expectFrame(label, words, [=] { EXPECT_EQ(call(), answer); });
  }

  static constexpr char code[] = "Returning VX_UNKNOWN_EXCEPTION.";
  static constexpr char nothing[] = "Returning VX_EMPTY_PARAM.";
  static constexpr char zero[] = "Returning 0.";

  MessageRecorder messages;
};

TEST_F(AllocationsOfTheHost, EndInTheFrameOfEachService) {
  expectFrame("_VXSetMaxNumThreads(numThreads)", code, 1, [] { return VXSetMaxNumThreads(2); });
  expectFrame("_VXGetMaxNumThreads()", zero, 0, &VXGetMaxNumThreads);
  expectFrame("_VXPushState(readEnvVars)", code, 1, [] { return VXPushState(0); });
  expectFrame("_VXPopState()", code, 1, &VXPopState);
  expectFrame("_VXCacheGetCurrentSizeKB()", zero, 0U, &VXCacheGetCurrentSizeKB);
  expectFrame("_VXCacheGetPeakSizeKB()", zero, 0U, &VXCacheGetPeakSizeKB);
  expectFrame("_VXCacheGetMaxSizeKB()", zero, 0U, &VXCacheGetMaxSizeKB);
  expectFrame("_VXCacheSetMaxSizeKB(size)", nothing, [] { VXCacheSetMaxSizeKB(5); });
  expectFrame("_VXCacheGetMemoryOptLevel()", zero, 0U, &VXCacheGetMemoryOptLevel);
  expectFrame("_VXCacheSetMemoryOptLevel(level)", nothing, [] { VXCacheSetMemoryOptLevel(1); });
  expectFrame("_VXClearCache()", nothing, &VXClearCache);
  expectFrame("_VXHostGetNumPagesCalculated()", zero, 0U, &VXHostGetNumPagesCalculated);
  expectFrame("_VXHostGetNumPagesHit()", zero, 0U, &VXHostGetNumPagesHit);
  expectFrame("_VXHostSetProgressCB(userData, callback)", nothing, [] { VXHostSetProgressCB(nullptr, nullptr); });
  expectFrame("_VXHostUpdateProgress(info1, info2)", nothing, [] { VXHostUpdateProgress("a", "b"); });
  expectFrame("_VXHostSetBreakCheckCB(userData, callback)", nothing, [] { VXHostSetBreakCheckCB(nullptr, nullptr); });
  expectFrame("_VXImageFreeTile(data)", nothing, [] { VXImageFreeTile(nullptr); });
  // The next call makes one.
  EXPECT_EQ(VXGetMaxNumThreads(), 2);
  EXPECT_EQ(VXPopState(), 44);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST(AllocationsOfASensor, EndInAFatalMessageAndNull) {
  MessageRecorder messages;
  untilFailure = 0;
  VXFieldSensor* const sensor = VXCreateFieldSensor(nullptr, [](void*, void*) {});
  EXPECT_LT(untilFailure.exchange(-1), 0);
  EXPECT_EQ(sensor, nullptr);
  EXPECT_EQ(messages.take(),
            (Messages{{VX_FATAL, 2, "vxAPI: VXCreateFieldSensor",
                       "Sensor creation failed. Maybe the system ran out ofmemory. Returning NULL instead of a sensor "
                       "pointer."}}));
}

INSTANTIATE_TEST_SUITE_P(AllFunctions, Allocations, ::testing::ValuesIn(rows::allRows()),
                         [](const auto& instance) { return instance.param.name; });

}  // namespace
}  // namespace vx::test
