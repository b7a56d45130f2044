#include "vxMutex.h"

namespace vx {

// The analysis can't follow a lock that depends on a flag, nor look into the standard mutex.

void Mutex::lock() VX_NO_THREAD_SAFETY_ANALYSIS { _mutex.lock(); }

bool Mutex::tryLock() VX_NO_THREAD_SAFETY_ANALYSIS { return _mutex.try_lock(); }

void Mutex::unlock() VX_NO_THREAD_SAFETY_ANALYSIS { _mutex.unlock(); }

void Mutex::lockWhileMultithreading() VX_NO_THREAD_SAFETY_ANALYSIS {
  if (VXIsMultithreadingActive()) _mutex.lock();
}

void Mutex::unlockWhileMultithreading() VX_NO_THREAD_SAFETY_ANALYSIS {
  if (VXIsMultithreadingActive()) _mutex.unlock();
}

MultithreadingLock::MultithreadingLock(Mutex& mutex) VX_NO_THREAD_SAFETY_ANALYSIS
    : _locked(VXIsMultithreadingActive() ? &mutex : nullptr) {
  if (_locked) _locked->lock();
}

MultithreadingLock::~MultithreadingLock() VX_NO_THREAD_SAFETY_ANALYSIS {
  if (_locked) _locked->unlock();
}

}  // namespace vx
