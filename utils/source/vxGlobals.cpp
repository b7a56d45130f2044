// The global objects of the base layer. All of them are constant-initialised, so they are good before any static
// object is made, and none is destroyed, so they are good until the process ends.

#include "vxErrorOutput.h"
#include "vxNotify.h"
#include "vxTraceBuffer.h"

#include <atomic>

extern "C" {
int VXAlwaysFalse = 0;
int VXAlwaysTrue = 1;
}

namespace vx {

namespace {

template <class T>
union Immortal {
  constexpr Immortal() : object() {}
  ~Immortal() {}
  T object;
};

constinit Immortal<ErrorOutput> errorOutput;
constinit Immortal<Notify> notification;

}  // namespace

constinit ErrorOutput& VXErrorOutput = errorOutput.object;
constinit Notify& VXNotify = notification.object;
constinit TraceBuffer<unsigned short> VXGlobalTraceBuffer = {};

namespace {

constinit std::atomic<int> exceptionHandling{1};
constinit std::atomic<int> multithreadingActive{0};

// What the immortal objects hold is given back when the library goes; calls that come later find nothing registered.
__attribute__((destructor(101))) void releaseCallbacks() {
  VXErrorOutput.reset();
  VXNotify.reset();
}

}  // namespace

}  // namespace vx

void VXEnableExceptionHandling(int enable) { vx::exceptionHandling.store(enable ? 1 : 0, std::memory_order_relaxed); }
int VXIsExceptionHandlingEnabled(void) { return vx::exceptionHandling.load(std::memory_order_relaxed); }

int VXIsMultithreadingActive(void) { return vx::multithreadingActive.load(std::memory_order_acquire); }
void _VXSetMultithreadingActive(int active) {
  vx::multithreadingActive.store(active ? 1 : 0, std::memory_order_release);
}
