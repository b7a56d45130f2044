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
class PinnedWork {
 public:
  explicit PinnedWork(int processor) { CPU_SET(processor, &_state->processors); }
  ~PinnedWork() { release(); }
  PinnedWork(const PinnedWork&) = delete;
  PinnedWork& operator=(const PinnedWork&) = delete;

  // \return whether a thread began with it; it has moved then.
  bool start() {
    _state->self = _state;
    const auto run = [](void* data) {
      const std::shared_ptr<State> state = std::move(static_cast<State*>(data)->self);
      state->id = pthread_self();
      pthread_setaffinity_np(pthread_self(), sizeof state->processors, &state->processors);
      state->begun.pass();
      state->released.waitFor(1);
      state->ended.pass();
    };
    _isStarted = StartThread(run, 0, _state.get()).valid;
    _isStarted ? _state->begun.waitFor(1) : _state->self.reset();
    return _isStarted;
  }
  void release() {
    if (!_isStarted) return;
    _isStarted = false;
    _state->released.pass();
    _state->ended.waitFor(1);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));  // until it waits for work
  }

  // The thread that works on it.
  pthread_t id() const { return _state->id; }

 private:
  // Outlives the last thread's way out.
  struct State {
    cpu_set_t processors{};
    std::atomic<pthread_t> id{};
    Gate begun, released, ended;
    std::shared_ptr<State> self;
  };

  std::shared_ptr<State> _state = std::make_shared<State>();
  bool _isStarted = false;
};

// The caller's processor and another one, the same one twice if there is no other.
struct TwoProcessors {
  int here = -1;
  int there = -1;

  TwoProcessors() {
    cpu_set_t all;
    EXPECT_EQ(sched_getaffinity(0, sizeof all, &all), 0);
    for (int i = 0; i < CPU_SETSIZE; ++i) {
      if (!CPU_ISSET(i, &all)) continue;
      if (here < 0) here = i;
      there = i;
    }
  }

  // \return how many they are.
  std::size_t number() const { return here == there ? 1 : 2; }

  // Calls a function in a thread for itself, so that where it runs is of no consequence for other tests; at first on
  // the first processor.
  template <class Function>
  void run(Function function) const {
    std::thread([&] {
      setAffinity({here});
      setAffinity({here, there});
      function();
    }).join();
  }

 private:
  static void setAffinity(const std::vector<int>& processors) {
    cpu_set_t set;
    CPU_ZERO(&set);
    for (const int processor : processors) CPU_SET(processor, &set);
    EXPECT_EQ(pthread_setaffinity_np(pthread_self(), sizeof set, &set), 0);
  }
};

// Threads wait for 20 ms, whether they do so already isn't known, and a thread may be moved: a try that comes to
// another end is repeated.
template <class Try>
bool isRightSoon(Try isRight) {
  for (int i = 0; i < 100; ++i) {
    waitForThreads(10000);
    if (isRight()) return true;
  }
  return false;
}

TEST(StartThread, AThreadThatWaitsOnAnotherProcessorIsStartedFirst) {
  const TwoProcessors processors;
  for (const bool isOtherLast : {false, true}) {
    EXPECT_TRUE(isRightSoon([&] {
      bool isRight = false;
      processors.run([&] {
        PinnedWork onHere(processors.here);
        PinnedWork onThere(processors.there);
        if (!onHere.start() || !onThere.start()) return;
        (isOtherLast ? onHere : onThere).release();
        (isOtherLast ? onThere : onHere).release();
        PinnedWork first(processors.there);
        PinnedWork second(processors.there);
        if (!first.start() || !second.start()) return;
        // With one processor alone, the one that ended last is started first.
        const bool isOtherFirst = isOtherLast || processors.number() == 2;
        isRight = pthread_equal(first.id(), (isOtherFirst ? onThere : onHere).id()) &&
                  pthread_equal(second.id(), (isOtherFirst ? onHere : onThere).id());
      });
      return isRight;
    })) << isOtherLast;
  }
}

// Two threads end on one processor and wait for work.
struct TwoWaiting {
  pthread_t older{}, newer{};

  // \return whether they do.
  bool start(int processor) {
    PinnedWork first(processor);
    PinnedWork second(processor);
    if (!first.start() || !second.start()) return false;
    older = first.id();
    newer = second.id();
    first.release();
    second.release();
    return true;
  }
};

// More threads are started than there are processors: of the two that wait, one is left until all are busy.
TEST(StartThread, ThreadsDoNotWaitForEachOtherWhereAProcessorIsFree) {
  const TwoProcessors processors;
  for (const int processor : {processors.here, processors.there}) {
    EXPECT_TRUE(isRightSoon([&] {
      bool isRight = false;
      processors.run([&] {
        TwoWaiting waiting;
        if (!waiting.start(processor)) return;
        std::vector<std::unique_ptr<PinnedWork>> works;
        for (std::size_t i = 0; i <= processors.number(); ++i) {
          works.push_back(std::make_unique<PinnedWork>(processors.there));
          if (!works.back()->start()) return;
        }
        isRight = pthread_equal(works.front()->id(), waiting.newer) && pthread_equal(works.back()->id(), waiting.older);
      });
      return isRight;
    })) << processor;
  }
}

TEST(StartThread, AnyThreadThatWaitsIsStartedWhereNoneCanBeMade) {
  const TwoProcessors processors;
  EXPECT_TRUE(isRightSoon([&] {
    bool isRight = false;
    processors.run([&] {
      TwoWaiting waiting;
      if (!waiting.start(processors.there)) return;
      PinnedWork first(processors.there);
      PinnedWork second(processors.there);
      const FailingAllocations failing;
      isRight = first.start() && second.start() && pthread_equal(first.id(), waiting.newer) &&
                pthread_equal(second.id(), waiting.older);
    });
    return isRight;
  }));
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
