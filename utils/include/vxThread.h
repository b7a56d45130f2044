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
  std::uintptr_t thread = 0;  ///< A number of its own for each thread of the process, 0 for none.
};

/// Starts a thread, which nobody joins: whoever needs its end lets it signal that.
/// An exception that reaches the end of the thread is reported as fatal with ::VX_UNKNOWN_EXCEPTION, and the thread
/// ends.
/// \param entry what the thread runs; null gives an invalid handle.
/// \param stackSize in bytes, raised to the platform's minimum; 0 for the platform's default.
/// \param argument passed to `entry`.
/// \return a handle; its flag is false if no thread could be started, and then `entry` doesn't run.
VX_EXPORT ThreadHandle StartThread(void (*entry)(void*), unsigned int stackSize, void* argument);

}  // namespace vx

#endif
