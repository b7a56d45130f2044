// Each function of the C interface, well called and badly, with each of its allocations failing.

#include "FailingAllocator.h"
#include "Rows.h"

namespace vx::test {
namespace {

class Allocations : public ::testing::TestWithParam<rows::Row> {
 protected:
  void SetUp() override { VXErrorOutput.sendMessagesToCerr(false); }
  void TearDown() override {
    stopFailing();
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
    const long live = getNumLiveBlocks();
    bool hasFailed = false;
    {
      World world;
      const auto call = row.prepare(world);
      failAllocation(n);
      call();
      hasFailed = stopFailing() < 0;
      tidyUp();
    }
    EXPECT_EQ(getNumLiveBlocks(), live) << "leaked";
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
    stopFailing();
    EXPECT_TRUE(calls.front().run());
    const auto call = calls.front().prepare();
    const long live = getNumLiveBlocks();
    failAllocation(n);
    const bool isAnswered = call();
    const bool hasFailed = stopFailing() < 0;
    EXPECT_TRUE(isAnswered || hasFailed) << "another answer";
    EXPECT_EQ(getNumLiveBlocks(), live) << "leaked";
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
    const long live = getNumLiveBlocks();
    failAllocation(n);
    const VXErrorCode code = VXPushState(0);
    if (stopFailing() >= 0) {
      EXPECT_EQ(code, 0);
      break;
    }
    EXPECT_EQ(code, 14) << n;
    EXPECT_EQ(&Host::getDefaultHost(), host) << n;
    EXPECT_EQ(VXErrorOutput.getMessageFilter(), static_cast<unsigned int>(VX_FATAL)) << n;
    EXPECT_EQ(VXPopState(), 44) << n;
    EXPECT_EQ(getNumLiveBlocks(), live) << n;
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
    failAllocation(n);
    const int isConnected = VXFieldConnectFrom(in, out);
    if (stopFailing() >= 0) {
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
    failAllocation(0);
    call();
    EXPECT_LT(stopFailing(), 0);
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
  failAllocation(0);
  VXFieldSensor* const sensor = VXCreateFieldSensor(nullptr, [](void*, void*) {});
  EXPECT_LT(stopFailing(), 0);
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
