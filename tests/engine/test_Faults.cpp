// Every allocation of every scenario fails once: what the caller is told, that nothing is lost, and that the next call
// works.

#include "CacheFixture.h"
#include "FailingAllocator.h"
#include "FaultScenarios.h"
#include "HostFixture.h"
#include "TestTypes.h"

#include "vxAPIFrame.h"
#include "vxBlockSlabs.h"
#include "vxThread.h"

#include <array>
#include <gtest/gtest.h>
#include <map>
#include <new>
#include <sstream>
#include <tuple>

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

// Hears errors and fatal messages without an allocation of its own.
class SilentRecorder {
 public:
  SilentRecorder() {
    VXErrorOutput.sendMessagesToCerr(false);
    _handle = VXErrorOutput.addMessageCB(&SilentRecorder::_hear, this, VX_WARNING | VX_ERROR | VX_FATAL);
  }
  ~SilentRecorder() {
    VXErrorOutput.removeMessageCB(_handle);
    VXErrorOutput.sendMessagesToCerr(true);
  }
  SilentRecorder(const SilentRecorder&) = delete;
  SilentRecorder& operator=(const SilentRecorder&) = delete;

  int take() { return _numMessages.exchange(0); }

 private:
  static void _hear(void* userData, const VXMessage*) { ++static_cast<SilentRecorder*>(userData)->_numMessages; }

  VXCallbackHandle _handle;
  std::atomic<int> _numMessages{0};
};

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

enum class Lack { ofOne, fromOneOn };

using Parameters = std::tuple<std::size_t, VXuint32, bool, Lack>;

class FaultSweep : public testing::TestWithParam<Parameters> {
 protected:
  void SetUp() override {
    registerTestModules();
    registerTestTypes();
    followVoxels();
  }
  void TearDown() override { stopFailing(); }

  const FaultRow& row() const { return faultRows()[std::get<0>(GetParam())]; }
  VXuint32 numThreads() const { return std::get<1>(GetParam()); }
  bool isHandlingOn() const { return std::get<2>(GetParam()); }

  void startFailing(long n) const {
    if (n < 0) return;
    std::get<3>(GetParam()) == Lack::ofOne ? failAllocation(n) : failAllocationsFrom(n);
  }

  // Runs the scenario with an allocation that fails, none if the number is negative. \return whether it was met.
  bool run(long n, bool isChecked = true) {
    const long numBlocks = getNumLiveBlocks();
    const long numVoxelBlocks = getNumLiveVoxelBlocks();
    bool hasFailed = false;
    {
      SilentRecorder recorder;
      Host::pushDefaultHost();
      Host::getDefaultHost().setMaxNumThreads(numThreads());
      std::unique_ptr<FaultScenario> scenario = row().make();
      {
        const ExceptionHandling handling(isHandlingOn());
        hasFailed = callWith(*scenario, recorder, n);
      }
      scenario.reset();
      Host::popDefaultHost();
      EXPECT_EQ(recorder.take(), 0);
    }
    EXPECT_TRUE(waitForThreads(5000));
    if (!isChecked) return hasFailed;
    EXPECT_EQ(getNumLiveBlocks(), numBlocks) << "leaked";
    EXPECT_EQ(getNumLiveVoxelBlocks(), numVoxelBlocks) << "leaked voxels";
    return hasFailed;
  }

  bool callWith(FaultScenario& scenario, SilentRecorder& recorder, long n) {
    startFailing(n);
    const Answer answer = answerOf(scenario);
    const bool hasFailed = stopFailing() < 0 && n >= 0;
    const int numMessages = recorder.take();
    if (hasFailed) records[numRecords++]=std::make_tuple(static_cast<int>(getFailedAllocation().kind), getFailedAllocation().size, answer.way, answer.code, numMessages>0);
    if (!hasFailed || !answer.isFailure()) {
      EXPECT_FALSE(answer.isFailure()) << answer;
      EXPECT_EQ(numMessages, 0);
      scenario.expectRight();
    } else {
      EXPECT_GT(numMessages, 0) << answer;
      scenario.expectFailed();
    }
    expectRest();
    _vxAPIRecursionFlag = 0;
    expectPages(scenario, answer);
    scenario.mend();
    EXPECT_EQ(answerOf(scenario).code, 0) << "next call";
    EXPECT_EQ(recorder.take(), 0) << "next call";
    scenario.expectRight();
    scenario.mend();
    return hasFailed;
  }

  void expectRest() {
    EXPECT_EQ(Host::getDefaultHost().isProcessingActive(), 0U);
    EXPECT_EQ(Field::enableNotificationsCounterState(), 1);
    EXPECT_EQ(VXIsMultithreadingActive(), 0);
    EXPECT_EQ(BaseOp::getNumBaseOps() >= 0, true);
  }

  void expectPages(FaultScenario& scenario, const Answer& answer) {
    const std::vector<TestModule*> modules = scenario.modules();
    int locksBehind = 1;
    for (TestModule* const module : modules) {
      SCOPED_TRACE(module->whoAmI(true));
      EXPECT_EQ(module->getMarker(), 0);
      const PagedImg& img = module->img();
      int lowest = 1, highest = 0;
      for (VXint64 id = 0; id < img.getNumPages(); ++id) {
        const CachedBuffer* const page = img.getPage(id, PagedImg::OWN_PAGE);
        if (!page || !page->isInitialized()) continue;
        const int locks = static_cast<int>(page->getLockCount());
        lowest = std::min(lowest, locks);
        highest = std::max(highest, locks);
      }
      if (!answer.isFailure()) {
        EXPECT_EQ(highest, module == modules.front() ? scenario.numLocksOfResult() : 0);
      } else {
        EXPECT_LE(highest, locksBehind);
        if (highest > 0) { EXPECT_EQ(lowest, highest); }
        locksBehind = highest;
      }
    }
  }

 public:
  static inline std::map<std::tuple<int, std::size_t, int, int, bool>, int> histogram;
  static inline std::tuple<int, std::size_t, int, int, bool> records[1000]; static inline int numRecords=0;
};

TEST_P(FaultSweep, EveryAllocationMayFail) {
  for (int i = 0; i < 3; ++i) {
    run(-1, false);
  }
  long n = 0;
  for (bool hasFailed = true; hasFailed && !HasFailure(); ++n) {
    SCOPED_TRACE("allocation " + std::to_string(n));
    hasFailed = run(n);
  }
  for (int i=0;i<numRecords;++i) { ++histogram[records[i]]; }
  numRecords=0;
  std::printf("%ld allocations\n", n);
  for (auto& [k, c] : histogram) {
    auto [kind, size, way, code, said] = k;
    std::ostringstream s;
    s << Answer{static_cast<Answer::Way>(way), code};
    std::printf("  kind %d size %zu %s said %d: %d\n", kind, size, s.str().c_str(), said, c);
  }
  histogram.clear();
}

std::string nameOfRun(const testing::TestParamInfo<Parameters>& info) {
  const auto& [row, numThreads, isHandlingOn, lack] = info.param;
  return std::string(faultRows()[row].name) + (numThreads == 1 ? "OnOneThread" : "OnTwoThreads") +
         (isHandlingOn ? "Handled" : "Unhandled") + (lack == Lack::ofOne ? "" : "AndAllAfterIt");
}

INSTANTIATE_TEST_SUITE_P(Scenarios, FaultSweep,
                         testing::Combine(testing::Range(std::size_t{0}, faultRows().size()), testing::Values(1U, 2U),
                                          testing::Bool(), testing::Values(Lack::ofOne, Lack::fromOneOn)),
                         nameOfRun);

}  // namespace
}  // namespace vx::test
