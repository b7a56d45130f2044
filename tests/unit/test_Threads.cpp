#include "MessageRecorder.h"
#include "TestAllocator.h"

#include "vxMutex.h"
#include "vxSystemInfo.h"
#include "vxThread.h"
#include "vxTimeCounter.h"

#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <memory>
#include <pthread.h>
#include <sched.h>
#include <set>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace vx::test {
namespace {

// Tells the test that a thread has come to its end.
struct Gate {
  std::atomic<int> numPassed{0};
  void pass() {
    ++numPassed;
    numPassed.notify_all();
  }
  void waitFor(int number) {
    for (int n = numPassed; n < number; n = numPassed) numPassed.wait(n);
  }
  static void enter(void* gate) { static_cast<Gate*>(gate)->pass(); }
};

TEST(StartThread, RunsTheFunctionWithItsArgumentAndGivesEachThreadItsOwnHandle) {
  static Gate gate;  // outlives the last thread's way out
  std::set<std::uintptr_t> threads;
  for (const unsigned int stackSize : {0U, 1U, 65536U, 1U << 20}) {
    const ThreadHandle handle = StartThread(&Gate::enter, stackSize, &gate);
    EXPECT_TRUE(handle.valid);
    threads.insert(handle.thread);
  }
  gate.waitFor(4);
  EXPECT_EQ(threads.size(), 4U);
  EXPECT_EQ(threads.count(0), 0U);
}

// What a thread of StartThread() is for the system.
pthread_t threadOf(unsigned int stackSize) {
  static std::atomic<pthread_t> id;
  static Gate gate;
  const int before = gate.numPassed;
  EXPECT_TRUE(StartThread(
                  [](void*) {
                    id = pthread_self();
                    gate.pass();
                  },
                  stackSize, nullptr)
                  .valid);
  gate.waitFor(before + 1);
  return id;
}

TEST(StartThread, AThreadThatIsDoneMayBeStartedAgain) {
  // It waits a while for that; whether it does so already isn't known when it has passed the gate.
  bool isSame = false;
  for (int i = 0; i < 1000 && !isSame; ++i) {
    const pthread_t first = threadOf(0);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    isSame = pthread_equal(first, threadOf(0)) != 0;
  }
  EXPECT_TRUE(isSame);
}

// Work that moves to a processor, says so, and stays until it is released.
struct PinnedWork {
  explicit PinnedWork(const cpu_set_t& set) : processors(set) {}
  ~PinnedWork() { release(); }
  PinnedWork(const PinnedWork&) = delete;
  PinnedWork& operator=(const PinnedWork&) = delete;

  // \return whether a thread began with it; it has moved then.
  bool start() {
    const auto run = [](void* data) {
      auto& work = *static_cast<PinnedWork*>(data);
      work.id = pthread_self();
      pthread_setaffinity_np(pthread_self(), sizeof work.processors, &work.processors);
      work.begun.pass();
      work.released.waitFor(1);
      work.ended.pass();
    };
    if (!StartThread(run, 0, this).valid) return false;
    begun.waitFor(1);
    return true;
  }
  void release() {
    if (begun.numPassed == 0 || released.numPassed != 0) return;
    released.pass();
    ended.waitFor(1);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));  // until it waits for work
  }

  cpu_set_t processors;
  std::atomic<pthread_t> id{};
  Gate begun, released, ended;
};

cpu_set_t oneProcessor(int processor) {
  cpu_set_t set;
  CPU_ZERO(&set);
  CPU_SET(processor, &set);
  return set;
}

std::vector<int> allowedProcessors() {
  cpu_set_t all;
  EXPECT_EQ(sched_getaffinity(0, sizeof all, &all), 0);
  std::vector<int> processors;
  for (int i = 0; i < CPU_SETSIZE; ++i) {
    if (CPU_ISSET(i, &all)) processors.push_back(i);
  }
  return processors;
}

// A thread for itself, so that where it runs is of no consequence for other tests.
template <class Function>
void runPinned(int processor, Function function) {
  std::thread([&] {
    const cpu_set_t set = oneProcessor(processor);
    ASSERT_EQ(pthread_setaffinity_np(pthread_self(), sizeof set, &set), 0);
    function();
  }).join();
}

// Of two threads, one ends on the processor of the caller and one on another; then two are started.
// \param isOtherLast which of the two ends last.
// \return whether the one of the other processor is started first, and the other one then.
bool isOtherProcessorFirst(int here, int there, bool isOtherLast) {
  bool isRight = false;
  waitForThreads(10000);
  runPinned(here, [&] {
    PinnedWork onHere(oneProcessor(here));
    PinnedWork onThere(oneProcessor(there));
    ASSERT_TRUE(onHere.start());
    ASSERT_TRUE(onThere.start());
    (isOtherLast ? onHere : onThere).release();
    (isOtherLast ? onThere : onHere).release();
    PinnedWork first(oneProcessor(here));
    PinnedWork second(oneProcessor(here));
    ASSERT_TRUE(first.start());
    ASSERT_TRUE(second.start());
    isRight = pthread_equal(first.id, onThere.id) && pthread_equal(second.id, onHere.id);
  });
  return isRight;
}

TEST(StartThread, AThreadThatWaitsOnAnotherProcessorIsStartedFirst) {
  const std::vector<int> processors = allowedProcessors();
  // With one processor alone the one that ended last is started first.
  const bool isOne = processors.size() == 1;
  for (const bool isOtherLast : {false, true}) {
    // Threads wait for 20 ms, and whether they do so already isn't known, so what comes too early or late is repeated.
    bool isRight = false;
    for (int i = 0; i < 1000 && !isRight; ++i) {
      isRight = isOtherProcessorFirst(processors.front(), processors.back(), isOtherLast || isOne);
    }
    EXPECT_TRUE(isRight) << isOtherLast;
  }
}

// Two threads that end on a processor that isn't the caller's, if there is another, and wait for work.
class TwoWaiting {
 public:
  explicit TwoWaiting(const std::vector<int>& processors) : _processors(processors) {}

  // Calls a function that may start them.
  template <class Function>
  void run(Function function) {
    waitForThreads(10000);
    runPinned(_processors.front(), [&] {
      PinnedWork first(oneProcessor(_processors.back()));
      PinnedWork second(oneProcessor(_processors.back()));
      ASSERT_TRUE(first.start());
      ASSERT_TRUE(second.start());
      older = first.id;
      newer = second.id;
      first.release();
      second.release();
      cpu_set_t all;
      CPU_ZERO(&all);
      for (const int processor : _processors) CPU_SET(processor, &all);
      ASSERT_EQ(pthread_setaffinity_np(pthread_self(), sizeof all, &all), 0);
      function();
    });
  }

  pthread_t older{}, newer{};  // in the order in which they ended

 private:
  const std::vector<int>& _processors;
};

// One more is started than there are processors.
// \return whether the first one is one of the two, and the last one the other.
bool isOneLeftUntilAllProcessorsAreBusy(const std::vector<int>& processors) {
  bool isRight = false;
  TwoWaiting waiting(processors);
  waiting.run([&] {
    std::vector<std::unique_ptr<PinnedWork>> works;
    for (std::size_t i = 0; i <= processors.size(); ++i) {
      works.push_back(std::make_unique<PinnedWork>(oneProcessor(processors.back())));
      ASSERT_TRUE(works.back()->start());
    }
    isRight = pthread_equal(works.front()->id, waiting.newer) && pthread_equal(works.back()->id, waiting.older);
  });
  return isRight;
}

TEST(StartThread, ThreadsDoNotWaitForEachOtherWhereAProcessorIsFree) {
  const std::vector<int> processors = allowedProcessors();
  bool isRight = false;
  for (int i = 0; i < 1000 && !isRight; ++i) isRight = isOneLeftUntilAllProcessorsAreBusy(processors);
  EXPECT_TRUE(isRight);
}

// As above, but there is no memory for another thread. \return whether both of the two are started.
bool areBothStartedWithoutMemory(const std::vector<int>& processors) {
  bool isRight = false;
  TwoWaiting waiting(processors);
  waiting.run([&] {
    PinnedWork first(oneProcessor(processors.back()));
    PinnedWork second(oneProcessor(processors.back()));
    const FailingAllocations failing;
    ASSERT_TRUE(first.start());
    const auto isHere = [&] { return sched_getcpu() == processors.front(); };
    isRight = isHere() && second.start() && isHere() && pthread_equal(first.id, waiting.newer) &&
              pthread_equal(second.id, waiting.older);
  });
  return isRight;
}

TEST(StartThread, AnyThreadThatWaitsIsStartedWhereNoneCanBeMade) {
  const std::vector<int> processors = allowedProcessors();
  bool isRight = false;
  for (int i = 0; i < 1000 && !isRight; ++i) isRight = areBothStartedWithoutMemory(processors);
  EXPECT_TRUE(isRight);
}

TEST(StartThread, AStackIsMadeForTheThreadThatAsksForIt) {
  const pthread_t waiting = threadOf(0);
  std::this_thread::sleep_for(std::chrono::milliseconds(1));
  EXPECT_FALSE(pthread_equal(waiting, threadOf(1U << 20)));
}

TEST(StartThread, ThreadsThatWaitForWorkAreEnded) {
  threadOf(0);
  const TimeCounter time;
  EXPECT_TRUE(waitForThreads(10000));
  EXPECT_LT(time.getRunningTimeInSeconds(), 5);
  EXPECT_TRUE(waitForThreads(0));
}

TEST(StartThread, WithoutAFunctionThereIsNoThread) {
  const ThreadHandle handle = StartThread(nullptr, 0, nullptr);
  EXPECT_FALSE(handle.valid);
  EXPECT_EQ(handle.thread, 0U);
}

TEST(StartThread, AnExceptionAtTheEndOfAThreadIsReported) {
  static Gate gate;
  VXErrorOutput.reset();
  VXErrorOutput.sendMessagesToCerr(false);
  static std::atomic<VXErrorCode> code{0};
  VXErrorOutput.addMessageCB(
      [](void*, const VXMessage* message) {
        code = message->errorCode;
        gate.pass();
      },
      nullptr, VX_FATAL);
  EXPECT_TRUE(StartThread([](void*) { throw 5; }, 0, nullptr).valid);
  gate.waitFor(1);
  EXPECT_EQ(code, VX_UNKNOWN_EXCEPTION);
  VXErrorOutput.destroy();
  VXErrorOutput.reset();
}

TEST(StartThread, AThreadMayEndItself) {
  static Gate gate;
  EXPECT_TRUE(StartThread(
                  [](void*) {
                    gate.pass();
                    pthread_exit(nullptr);
                  },
                  0, nullptr)
                  .valid);
  gate.waitFor(1);
  EXPECT_TRUE(waitForThreads(10000));
}

TEST(WaitForThreads, WaitsForTheEndOfAllButTheCaller) {
  EXPECT_TRUE(waitForThreads(10000));
  struct Stage {
    std::atomic<bool> mayEnd{false};
    std::atomic<bool> hasWaited{false};
    Gate gate;
  };
  static Stage stage;
  StartThread([](void*) { stage.mayEnd.wait(false); }, 0, nullptr);
  EXPECT_FALSE(waitForThreads(5));
  stage.mayEnd = true;
  stage.mayEnd.notify_all();
  EXPECT_TRUE(waitForThreads(10000));
  StartThread(
      [](void*) {
        stage.hasWaited = waitForThreads(10000);
        stage.gate.pass();
      },
      0, nullptr);
  stage.gate.waitFor(1);
  EXPECT_TRUE(stage.hasWaited);
}

TEST(WaitForThreads, AForkedProcessHasNone) {
  static std::atomic<bool> mayEnd{false};
  StartThread([](void*) { mayEnd.wait(false); }, 0, nullptr);
  const pid_t child = fork();
  if (child == 0) _exit(waitForThreads(10) ? 0 : 1);
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_FALSE(waitForThreads(10));
  mayEnd = true;
  mayEnd.notify_all();
  EXPECT_TRUE(waitForThreads(10000));
}

// Whether another thread could take the mutex now.
bool isFree(Mutex& mutex) {
  bool isFreeNow = false;
  std::thread([&]() VX_NO_THREAD_SAFETY_ANALYSIS {
    isFreeNow = mutex.tryLock();
    if (isFreeNow) mutex.unlock();
  }).join();
  return isFreeNow;
}

TEST(Mutex, IsRecursiveAndExcludesOtherThreads) {
  Mutex mutex;
  {
    const MutexLock outer(mutex);
    EXPECT_FALSE(isFree(mutex));
    EXPECT_TRUE(mutex.tryLock());
    mutex.unlock();
    EXPECT_FALSE(isFree(mutex));
  }
  EXPECT_TRUE(isFree(mutex));
}

TEST(Mutex, GuardsACounterOfManyThreads) {
  Mutex mutex;
  int counter = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int n = 0; n < 1000; ++n) {
        const MutexLock lock(mutex);
        ++counter;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(counter, 4000);
}

class MultithreadingMutexTest : public ::testing::Test {
 protected:
  void TearDown() override { _VXSetMultithreadingActive(0); }
  Mutex mutex;
};

TEST_F(MultithreadingMutexTest, LocksOnlyWhileMultithreadingIsActive) {
  mutex.lockWhileMultithreading();
  EXPECT_TRUE(isFree(mutex));
  mutex.unlockWhileMultithreading();
  _VXSetMultithreadingActive(1);
  mutex.lockWhileMultithreading();
  EXPECT_FALSE(isFree(mutex));
  mutex.unlockWhileMultithreading();
  EXPECT_TRUE(isFree(mutex));
}

TEST_F(MultithreadingMutexTest, AChangeBetweenThePairLeavesTheMutexLocked) VX_NO_THREAD_SAFETY_ANALYSIS {
  _VXSetMultithreadingActive(1);
  mutex.lockWhileMultithreading();
  _VXSetMultithreadingActive(0);
  mutex.unlockWhileMultithreading();
  EXPECT_FALSE(isFree(mutex));
  mutex.unlock();
}

TEST_F(MultithreadingMutexTest, TheScopedLockAsksOnce) {
  _VXSetMultithreadingActive(1);
  {
    const MultithreadingLock lock(mutex);
    EXPECT_FALSE(isFree(mutex));
    _VXSetMultithreadingActive(0);
  }
  EXPECT_TRUE(isFree(mutex));
  {
    const MultithreadingLock lock(mutex);
    EXPECT_TRUE(isFree(mutex));
  }
}

TEST(TimeCounter, CountsFromItsStart) {
  TimeCounter counter;
  std::this_thread::sleep_for(std::chrono::milliseconds(5));
  const long double before = counter.getRunningTimeInSeconds();
  EXPECT_GE(before, 0.005L);
  TimeCounter copy = counter;
  counter.reset();
  EXPECT_GE(copy.getRunningTimeInSeconds(), before);
  EXPECT_LT(counter.getRunningTimeInSeconds(), copy.getRunningTimeInSeconds());
}

TEST(SystemInfo, ThereIsAProcessor) { EXPECT_GE(SystemInfo::getNumVirtualProcessors(), 1U); }

}  // namespace
}  // namespace vx::test
