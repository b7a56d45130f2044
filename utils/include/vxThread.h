/// \file vxThread.h
/// Starting of threads.

#ifndef VX_THREAD_H
#define VX_THREAD_H

#include "vxTypes.h"

#include <cstdint>

namespace vx {

/// Tells whether a thread was started, and which. A plain value.
struct ThreadHandle {
  bool valid = false;         ///< Whether the thread was started.
  std::uintptr_t thread = 0;  ///< A number of its own for each start in the process, 0 for none.
};

/// Starts a thread, which no caller joins: whoever needs its end lets it signal that. The library that holds `entry`
/// must wait by waitForThreads() when it is unloaded, since a thread that has given its signal still runs some code.
/// An exception that reaches the end of the thread is reported as fatal with ::VX_UNKNOWN_EXCEPTION, and the thread
/// ends.
/// A thread that has done its work is kept for 20 milliseconds and may run what is started next, so values that are
/// local to a thread may be found as they were left.
/// \param entry what the thread runs; null gives an invalid handle.
/// \param stackSize in bytes, raised to the platform's minimum, for a thread that isn't kept; 0 for the platform's
///        default.
/// \param argument passed to `entry`.
/// \return a handle; its flag is false if no thread could be started, and then `entry` doesn't run.
VX_EXPORT ThreadHandle StartThread(void (*entry)(void*), unsigned int stackSize, void* argument);

/// Milliseconds that a library waits for threads when it is unloaded.
constexpr unsigned int unloadWait = 1000;

/// Waits until no thread of StartThread() but the calling one runs any code.
/// \param milliseconds at most. \return whether all threads have ended.
VX_EXPORT bool waitForThreads(unsigned int milliseconds);

}  // namespace vx

#endif
