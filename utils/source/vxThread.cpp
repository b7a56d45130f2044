#include "vxThread.h"

#include "vxUtilsAPI.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <new>
#include <pthread.h>
#include <unistd.h>

namespace vx {

namespace {

struct ThreadStart {
  void (*entry)(void*);
  void* argument;
};

void* runThread(void* data) {
  const ThreadStart start = *std::unique_ptr<ThreadStart>(static_cast<ThreadStart*>(data));
  try {
    start.entry(start.argument);
  } catch (...) {
    VXPrintAndNotifyFatal(__FILE__, __LINE__, VX_UNKNOWN_EXCEPTION);
  }
  return nullptr;
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

  bool setDetached() { return _isValid && pthread_attr_setdetachstate(&_attributes, PTHREAD_CREATE_DETACHED) == 0; }

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

}  // namespace

ThreadHandle StartThread(void (*entry)(void*), unsigned int stackSize, void* argument) {
  if (!entry) return {};
  ThreadAttributes attributes;
  if (!attributes.setDetached()) return {};
  if (stackSize != 0 && !attributes.setStackSize(stackSize)) return {};
  std::unique_ptr<ThreadStart> start(new (std::nothrow) ThreadStart{entry, argument});
  if (!start) return {};
  pthread_t thread;
  if (pthread_create(&thread, attributes.get(), &runThread, start.get()) != 0) return {};
  static_cast<void>(start.release());  // the thread's now
  return {true, ++lastThread};
}

}  // namespace vx
