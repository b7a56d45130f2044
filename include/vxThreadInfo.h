/// \file vxThreadInfo.h
/// What a module may know of the thread that calculates a page.

#ifndef VX_THREAD_INFO_H
#define VX_THREAD_INFO_H

#include "vxThread.h"
#include "vxTypes.h"

namespace vx {

/// The run of pages that one thread calculates, and where it stands. A plain record, one for each thread; it lives as
/// long as that run.
struct ThreadInfo {
  VXint32 numPages = 0;                 ///< Pages of the thread's chunk.
  VXint32 pageIndex = 0;                ///< Position of the current page in the chunk, from 0.
  bool isMultithreadingActive = false;  ///< Whether chunks run on threads of their own.
  ThreadHandle threadHandle;            ///< The thread; invalid if the requesting thread itself calculates.
};

}  // namespace vx

#endif
