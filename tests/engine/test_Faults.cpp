// Every allocation of every scenario fails once: what the caller is told, that nothing is lost, and that the next call
// works.

#include "CacheFixture.h"
#include "FailingAllocator.h"
#include "FaultRecorder.h"
#include "FaultScenarios.h"
#include "HostFixture.h"

#include "vxAPIFrame.h"
#include "vxThread.h"
#include "vxTraceBuffer.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <new>
#include <ostream>
#include <string>
#include <vector>

// The linker puts it in the place of free().
extern "C" {
void __real_free(void* memory);
void __wrap_free(void* memory) {
  vx::test::voxelsFreed(memory);
  __real_free(memory);
}
}

namespace vx::test {
namespace {

// How a call came back.
struct Answer {
  enum Way { returned, threwCode, threwNoMemory, threwOther } way = returned;
  int code = 0;

  bool isFailure() const { return way != returned || code != VX_RESULT_OK; }
};

std::ostream& operator<<(std::ostream& stream, const Answer& answer) {
  static constexpr const char* ways[] = {"returned ", "threw ", "threw std::bad_alloc", "threw something else"};
  stream << ways[answer.way];
  if (answer.way <= Answer::threwCode) stream << answer.code;
  return stream;
}

Answer answerOf(FaultScenario& scenario) {
  try {
    return {Answer::returned, scenario.call()};
  } catch (int code) {
    return {Answer::threwCode, code};
  } catch (const std::bad_alloc&) {
    return {Answer::threwNoMemory};
  } catch (...) {
    return {Answer::threwOther};
  }
}

// How much memory is missing.
enum class Lack { ofOneBlock, fromOneBlockOn };

struct Parameters {
  std::size_t row;
  VXuint32 numThreads;
  bool isHandlingOn;
  Lack lack;

  std::string name() const {
    return std::string(faultRows()[row].name) + (numThreads == 1 ? "OnOneThread" : "OnTwoThreads") +
           (isHandlingOn ? "Handled" : "Unhandled") + (lack == Lack::ofOneBlock ? "" : "WithoutAnyFromThereOn");
  }
};
std::ostream& operator<<(std::ostream& stream, const Parameters& parameters) { return stream << parameters.name(); }

std::vector<Parameters> allParameters() {
  std::vector<Parameters> all;
  for (std::size_t row = 0; row < faultRows().size(); ++row) {
    for (const VXuint32 numThreads : {1U, 2U}) {
      all.push_back({row, numThreads, true, Lack::ofOneBlock});
      all.push_back({row, numThreads, false, Lack::ofOneBlock});
    }
    all.push_back({row, 2, true, Lack::fromOneBlockOn});
  }
  return all;
}

// The entry of a slab in the cache's map of them: the head of a node, the key, and four words.
constexpr std::size_t slabEntrySize = 4 * sizeof(void*) + sizeof(void*) + 4 * sizeof(VXuint64);

class FaultSweep : public testing::TestWithParam<Parameters> {
 protected:
  void SetUp() override {
    registerFaultModules();
    followVoxels();
  }
  void TearDown() override { stopFailing(); }

  const FaultRow& row() const { return faultRows()[GetParam().row]; }

  // Runs the scenario with an allocation that fails, none if the number is negative. \return whether it was met.
  bool run(long n) {
    bool hasFailed = false;
    {
      const FaultRecorder recorder;
      Host::pushDefaultHost();
      Host::getDefaultHost().setMaxNumThreads(GetParam().numThreads);
      std::unique_ptr<FaultScenario> scenario = row().make();
      {
        const ExceptionHandling handling(GetParam().isHandlingOn);
        hasFailed = callWith(*scenario, n);
      }
      scenario.reset();
      Host::popDefaultHost();
      EXPECT_EQ(FaultRecorder::take(), 0) << "at the end";
    }
    EXPECT_TRUE(waitForThreads(5000));
    return hasFailed;
  }

  // The calls under test with an allocation that fails, and the next ones.
  bool callWith(FaultScenario& scenario, long n) {
    if (n >= 0) GetParam().lack == Lack::ofOneBlock ? failAllocation(n) : failAllocationsFrom(n);
    const unsigned short traceDepth = VXGlobalTraceBuffer._stackTop;
    const Answer answer = answerOf(scenario);
    const bool hasFailed = stopFailing() < 0 && n >= 0;
    expectAnswer(answer, hasFailed, FaultRecorder::take());
    answer.isFailure() ? scenario.expectFailed() : scenario.expectRight();
    expectRest(answer);
    // Threads garble the trace, which is accepted.
    if (GetParam().numThreads == 1) {
      EXPECT_EQ(VXGlobalTraceBuffer._stackTop, traceDepth);
    }
    expectPages(scenario, answer);
    scenario.mend();

    const Answer next = answerOf(scenario);
    EXPECT_FALSE(next.isFailure()) << "next call " << next;
    EXPECT_EQ(FaultRecorder::take(), 0) << "in the next call";
    scenario.expectRight();
    scenario.mend();
    return hasFailed;
  }

  void expectAnswer(const Answer& answer, bool hasFailed, int numMessages) {
    if (!answer.isFailure()) {
      EXPECT_TRUE(!hasFailed || isDispensable(getFailedAllocation())) << getFailedAllocation().size << " bytes";
      EXPECT_EQ(numMessages, 0) << "without a failure";
      return;
    }
    EXPECT_TRUE(hasFailed) << answer;
    if (answer.way == Answer::returned) {
      EXPECT_EQ(std::count(row().failureCodes.begin(), row().failureCodes.end(), answer.code), 1) << answer;
    } else {
      EXPECT_TRUE(row().escape == Escape::whenOff && !GetParam().isHandlingOn) << answer;
      EXPECT_TRUE(answer.way == Answer::threwNoMemory || answer.code == VX_NO_MEMORY) << answer;
    }
    // What passes the frame untouched is the host's to tell of.
    EXPECT_TRUE(numMessages > 0 || answer.way == Answer::threwNoMemory) << answer << " in silence";
  }

  // Whether the library can do without: the calls went well.
  bool isDispensable(const FailedAllocation& failed) const {
    switch (failed.kind) {
      case AllocationKind::objectOrNull:
        return GetParam().numThreads > 1;  // a thread; its chunk is calculated by the requesting one
      case AllocationKind::voxels:
        return GetParam().lack == Lack::ofOneBlock;  // a slab, or a block that is then asked for without the cache
      default:
        return GetParam().lack == Lack::ofOneBlock && failed.size == slabEntrySize;
    }
  }

  // Nothing is under way.
  static void expectRest(const Answer& answer) {
    EXPECT_EQ(Host::getDefaultHost().isProcessingActive(), 0U);
    EXPECT_EQ(Field::enableNotificationsCounterState(), 1);
    EXPECT_EQ(VXIsMultithreadingActive(), 0);
    // The flag stays where an exception passes to the host, by contract.
    EXPECT_TRUE(_vxAPIRecursionFlag.exchange(0) == 0 || answer.way != Answer::returned);
  }

  static void expectPages(FaultScenario& scenario, const Answer& answer) {
    const std::vector<TestModule*> modules = scenario.modules();
    Buffers pages = scenario.buffers();
    // Those of the requested image first, and then of its inputs, down to where memory was missing.
    const auto numFailedGroups = static_cast<std::size_t>(FaultRecorder::takeFailedGroups());
    const bool isBypassed = !modules.empty() && modules[0] && modules[0]->getBypass(0) >= 0;
    for (std::size_t level = 0; level < modules.size(); ++level) {
      if (!modules[level]) continue;
      SCOPED_TRACE(modules[level]->whoAmI(true));
      EXPECT_EQ(modules[level]->getMarker(), 0);
      const std::vector<VXint64> locks = locksOf(modules[level]->img(), pages);
      if (answer.isFailure() && level < numFailedGroups) {
        expectFailedGroup(locks, level == 0 ? locks.size() : level == 1 ? scenario.numPagesOfInput() : 1, level == 0);
      } else if (!answer.isFailure() || !(isBypassed && level == 1)) {  // which stand in for those of the failed group
        const VXint64 expected = !answer.isFailure() && level == 0 ? scenario.numLocksOfResult() : 0;
        EXPECT_TRUE(std::all_of(locks.begin(), locks.end(), [=](VXint64 count) { return count == expected; }))
            << testing::PrintToString(locks) << " instead of " << expected;
      }
    }
    if (!modules.empty()) expectInvariants(Host::getDefaultHost().getConstCache(), pages);
  }

  // How often the initialised pages of an image are locked, by their ids.
  static std::vector<VXint64> locksOf(const PagedImg& img, Buffers& pages) {
    std::vector<VXint64> locks;
    for (VXint64 id = 0; id < img.getNumPages(); ++id) {
      const CachedBuffer* const page = img.getPage(id, PagedImg::OWN_PAGE);
      if (!page) continue;
      pages.push_back(page);
      if (page->isInitialized()) locks.push_back(page->getLockCount());
    }
    return locks;
  }

  // A group that failed keeps its pages locked, once each; for the requested image these are all pages. Groups of
  // inputs are smaller: those before the one that failed were given free.
  static void expectFailedGroup(const std::vector<VXint64>& locks, std::size_t numPagesOfGroup, bool isRequested) {
    const auto numLocked = static_cast<std::size_t>(std::count(locks.begin(), locks.end(), 1));
    EXPECT_EQ(static_cast<std::size_t>(std::count(locks.begin(), locks.end(), 0)), locks.size() - numLocked);
    EXPECT_LE(numLocked, numPagesOfGroup) << testing::PrintToString(locks);
    EXPECT_TRUE(std::is_sorted(locks.begin(), locks.end())) << testing::PrintToString(locks);
    if (isRequested) {
      EXPECT_EQ(numLocked, locks.size());
    }
  }
};

TEST_P(FaultSweep, EveryAllocationMayFail) {
  // What is made once, and what is kept for later, is made by the first runs; failures keep something, too.
  for (const long n : {-1L, 0L, -1L}) run(n);
  bool hasFailed = true;
  long n = 0;
  for (; hasFailed && !HasFailure(); ++n) {
    SCOPED_TRACE("allocation " + std::to_string(n));
    const long numBlocks = getNumLiveBlocks();
    const long numVoxelBlocks = getNumLiveVoxelBlocks();
    hasFailed = run(n);
    if (HasFailure()) break;  // which has been kept
    EXPECT_EQ(getNumLiveBlocks(), numBlocks) << "leaked";
    EXPECT_EQ(getNumLiveVoxelBlocks(), numVoxelBlocks) << "leaked voxels";
  }
  EXPECT_TRUE(n > 1 || row().failureCodes.empty()) << "no allocation was met";
}

INSTANTIATE_TEST_SUITE_P(Scenarios, FaultSweep, testing::ValuesIn(allParameters()),
                         [](const auto& instance) { return instance.param.name(); });

}  // namespace
}  // namespace vx::test
