#include "vxThread.h"

#include "vxUtilsAPI.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cxxabi.h>
#include <memory>
#include <mutex>
#include <new>
#include <pthread.h>
#include <sched.h>
#include <thread>
#include <unistd.h>

namespace vx {

namespace {

// A thread that was started and has not been joined yet. Having done its work, it stays for a while to be started
// again, which takes a fraction of the time: a run on threads is often followed by the next one.
struct Thread {
  void (*entry)(void*);  // null while it waits for work
  void* argument;
  bool isKept;  // whether it may wait for more
  pthread_t id{};
  std::atomic<bool> hasReturned{false};
  Thread* next = nullptr;
  Thread* nextIdle = nullptr;
  int processor = -1;  // where it came to the end of its work last
  std::condition_variable wake{};
};

constexpr std::chrono::milliseconds idleTime(20);
constexpr int maxNumIdle = 16;

constinit std::mutex threadsMutex;  // guards the lists, and the work of idle threads; a leaf
constinit Thread* firstThread = nullptr;
constinit Thread* firstIdle = nullptr;
constinit int numIdle = 0;
constinit std::atomic<pid_t> threadsOwner{0};  // the process that the list is of: a fork copies it without the threads

bool ownsThreads() { return threadsOwner.load() == getpid(); }

void own() {
  const std::lock_guard lock(threadsMutex);
  firstThread = nullptr;
  firstIdle = nullptr;
  numIdle = 0;
  threadsOwner.store(getpid());
}

// Takes a thread out of those that wait for work, if it is one. Called with the mutex held.
void removeIdle(const Thread* thread) {
  for (Thread** link = &firstIdle; *link; link = &(*link)->nextIdle) {
    if (*link != thread) continue;
    *link = thread->nextIdle;
    --numIdle;
    return;
  }
}

// Waits for work. \return whether some came.
bool waitForWork(Thread& thread) {
  std::unique_lock lock(threadsMutex);
  if (!thread.isKept || numIdle >= maxNumIdle) return false;
  thread.entry = nullptr;
  thread.processor = sched_getcpu();
  thread.nextIdle = firstIdle;
  firstIdle = &thread;
  ++numIdle;
  thread.wake.wait_for(lock, idleTime, [&thread] { return thread.entry || !thread.isKept; });
  if (thread.entry) return true;
  removeIdle(&thread);
  return false;
}

// \return how many of the threads that work meet a condition. Called with the mutex held.
template <class Condition>
unsigned countWorking(Condition condition) {
  unsigned number = 0;
  for (const Thread* thread = firstThread; thread; thread = thread->next) {
    if (thread->entry && !thread->hasReturned.load() && condition(*thread)) ++number;
  }
  return number;
}

// \return whether one of the threads that work was last on a processor, where it most likely is again.
bool isLikelyTaken(int processor) {
  return countWorking([processor](const Thread& thread) { return thread.processor == processor; }) > 0;
}

// \return how many processors a thread that is made now may run on.
unsigned countProcessors() {
  cpu_set_t processors;
  if (sched_getaffinity(0, sizeof processors, &processors) != 0) return std::thread::hardware_concurrency();
  return static_cast<unsigned>(CPU_COUNT(&processors));
}

// Chooses the thread that gets work. The system tends to wake a thread where it was last, and leaves it there behind
// another one for longer than most runs take. So the choice is a thread that was on a processor of its own, at last one
// that was on the processor of the caller, who most likely waits for the work soon. If all of them would be behind
// others, a new one is made, which the system places anew, unless there are as many that work as processors. Called
// with the mutex held. \return null if a new thread is to be made.
Thread* chooseIdle() {
  if (!firstIdle) return nullptr;
  const int callersProcessor = sched_getcpu();
  Thread* ofCallersProcessor = nullptr;
  for (Thread* thread = firstIdle; thread; thread = thread->nextIdle) {
    if (isLikelyTaken(thread->processor)) continue;
    if (thread->processor != callersProcessor) return thread;
    if (!ofCallersProcessor) ofCallersProcessor = thread;
  }
  if (ofCallersProcessor) return ofCallersProcessor;
  return countWorking([](const Thread&) { return true; }) < countProcessors() ? nullptr : firstIdle;
}

// Gives work to a thread that waits for some. \param choose which one; null for none.
// \return whether there is one that gets it.
bool startIdle(Thread* (*choose)(), void (*entry)(void*), void* argument) {
  const std::lock_guard lock(threadsMutex);
  Thread* const thread = choose();
  if (!thread) return false;
  removeIdle(thread);
  thread->entry = entry;
  thread->argument = argument;
  thread->wake.notify_one();
  return true;
}

void endIdle() {
  const std::lock_guard lock(threadsMutex);
  for (Thread* thread = firstIdle; thread; thread = thread->nextIdle) {
    thread->isKept = false;
    thread->wake.notify_one();
  }
}

// The runtime hands out a null reference for pthread_exit(), which the sanitizer takes amiss.
__attribute__((no_sanitize("null"))) void* runThread(void* data) {
  auto& thread = *static_cast<Thread*>(data);
  try {
    do {
      thread.entry(thread.argument);
    } while (waitForWork(thread));
  } catch (abi::__forced_unwind&) {  // pthread_exit(), which must pass
    thread.hasReturned.store(true);
    throw;
  } catch (...) {
    VXPrintAndNotifyFatal(__FILE__, __LINE__, VX_UNKNOWN_EXCEPTION);
  }
  thread.hasReturned.store(true);
  return nullptr;
}

void enlist(Thread* thread) {
  const std::lock_guard lock(threadsMutex);
  thread->next = firstThread;
  firstThread = thread;
}

// Takes a thread that has come to its end out of the list; null if there is none.
Thread* takeReturned() {
  const std::lock_guard lock(threadsMutex);
  for (Thread** link = &firstThread; *link; link = &(*link)->next) {
    Thread* const thread = *link;
    if (!thread->hasReturned.load()) continue;
    *link = thread->next;
    return thread;
  }
  return nullptr;
}

// Waits for the last instructions of the threads that have come to their end.
void joinReturned() {
  while (Thread* const thread = takeReturned()) {
    pthread_join(thread->id, nullptr);
    delete thread;
  }
}

bool isOnlyThisThreadRunning() {
  const std::lock_guard lock(threadsMutex);
  return !firstThread || (!firstThread->next && pthread_equal(firstThread->id, pthread_self()));
}

// The attributes of a thread, given back at the end of the scope.
class ThreadAttributes {
 public:
  ThreadAttributes() : _isValid(pthread_attr_init(&_attributes) == 0) {}
  ~ThreadAttributes() {
    if (_isValid) pthread_attr_destroy(&_attributes);
  }
  ThreadAttributes(const ThreadAttributes&) = delete;
  ThreadAttributes& operator=(const ThreadAttributes&) = delete;

  bool isValid() const { return _isValid; }

  bool setStackSize(std::size_t size) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const auto smallest = static_cast<std::size_t>(sysconf(_SC_THREAD_STACK_MIN));
    return pthread_attr_setstacksize(&_attributes, (std::max(size, smallest) + page - 1) / page * page) == 0;
  }

  const pthread_attr_t* get() const { return &_attributes; }

 private:
  pthread_attr_t _attributes;
  bool _isValid;
};

std::atomic<std::uintptr_t> lastThread{0};

bool startNew(void (*entry)(void*), unsigned int stackSize, void* argument) {
  ThreadAttributes attributes;
  if (!attributes.isValid()) return false;
  if (stackSize != 0 && !attributes.setStackSize(stackSize)) return false;
  std::unique_ptr<Thread> thread(new (std::nothrow) Thread{entry, argument, stackSize == 0});
  if (!thread) return false;
  if (pthread_create(&thread->id, attributes.get(), &runThread, thread.get()) != 0) return false;
  enlist(thread.release());
  return true;
}

}  // namespace

ThreadHandle StartThread(void (*entry)(void*), unsigned int stackSize, void* argument) {
  if (!entry) return {};
  ownsThreads() ? joinReturned() : own();
  const bool mayBeIdle = stackSize == 0;  // what is asked of the stack, a thread has from its beginning
  const bool isStarted = (mayBeIdle && startIdle(&chooseIdle, entry, argument)) ||
                         startNew(entry, stackSize, argument) ||
                         (mayBeIdle && startIdle([] { return firstIdle; }, entry, argument));
  return isStarted ? ThreadHandle{true, ++lastThread} : ThreadHandle{};
}

bool waitForThreads(unsigned int milliseconds) {
  if (!ownsThreads()) return true;
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  for (;;) {
    endIdle();
    joinReturned();
    if (isOnlyThisThreadRunning()) return true;
    if (std::chrono::steady_clock::now() >= end) return false;
    std::this_thread::sleep_for(std::chrono::microseconds(100));
  }
}

namespace {

// The code that the threads run is about to go. One that doesn't end must not keep the process from ending.
__attribute__((destructor)) void waitAtUnload() { waitForThreads(unloadWait); }

}  // namespace

}  // namespace vx
