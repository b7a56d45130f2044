/// \file vxMutex.h
/// The mutex of the library, its scoped locks, and the attributes of clang's thread safety analysis.

#ifndef VX_MUTEX_H
#define VX_MUTEX_H

#include "vxUtilsAPI.h"

#include <mutex>

#if defined(__clang__)
#define VX_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define VX_THREAD_ATTRIBUTE(x)
#endif
/// The class is a lock.
#define VX_CAPABILITY(name) VX_THREAD_ATTRIBUTE(capability(name))
/// The class holds a lock for its life.
#define VX_SCOPED_CAPABILITY VX_THREAD_ATTRIBUTE(scoped_lockable)
/// The member is used only while the mutex is held.
#define VX_GUARDED_BY(mutex) VX_THREAD_ATTRIBUTE(guarded_by(mutex))
/// What the member points to is used only while the mutex is held.
#define VX_PT_GUARDED_BY(mutex) VX_THREAD_ATTRIBUTE(pt_guarded_by(mutex))
/// The function is called with the mutex held.
#define VX_REQUIRES(...) VX_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
/// The function is called without the mutex.
#define VX_EXCLUDES(...) VX_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
/// The function takes the mutex.
#define VX_ACQUIRE(...) VX_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
/// The function takes the mutex if it returns the value.
#define VX_TRY_ACQUIRE(...) VX_THREAD_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
/// The function gives the mutex back.
#define VX_RELEASE(...) VX_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
/// The analysis leaves the function out.
#define VX_NO_THREAD_SAFETY_ANALYSIS VX_THREAD_ATTRIBUTE(no_thread_safety_analysis)

namespace vx {

/// A recursive mutex: the thread that holds it may take it again, and gives it back as often.
class VX_EXPORT VX_CAPABILITY("mutex") Mutex {
 public:
  Mutex() = default;
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

  /// Takes the mutex, waiting for it if need be.
  void lock() VX_ACQUIRE();
  /// Takes the mutex if it is free or held by this thread. \return whether it was taken.
  bool tryLock() VX_TRY_ACQUIRE(true);
  /// Gives the mutex back. Only by the thread that holds it.
  void unlock() VX_RELEASE();

  /// As lock() while VXIsMultithreadingActive(), else nothing.
  void lockWhileMultithreading() VX_ACQUIRE();
  /// As unlock() while VXIsMultithreadingActive(), else nothing. It must see the same answer as the call before it:
  /// a change between the two leaves the mutex locked, or unlocks what isn't.
  void unlockWhileMultithreading() VX_RELEASE();

 private:
  std::recursive_mutex _mutex;
};

/// Holds a mutex for the life of a scope.
class VX_SCOPED_CAPABILITY MutexLock {
 public:
  /// Takes the mutex, waiting for it if need be. \param mutex which must outlive the lock.
  explicit MutexLock(Mutex& mutex) VX_ACQUIRE(mutex) : _mutex(mutex) { _mutex.lock(); }
  ~MutexLock() VX_RELEASE() { _mutex.unlock(); }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  Mutex& _mutex;
};

/// Holds a mutex for the life of a scope if multi-threading is active when the scope begins.
/// The answer is asked once, so the pair always matches.
class VX_EXPORT VX_SCOPED_CAPABILITY MultithreadingLock {
 public:
  /// Takes the mutex while VXIsMultithreadingActive(). \param mutex which must outlive the lock.
  explicit MultithreadingLock(Mutex& mutex) VX_ACQUIRE(mutex);
  ~MultithreadingLock() VX_RELEASE();
  MultithreadingLock(const MultithreadingLock&) = delete;
  MultithreadingLock& operator=(const MultithreadingLock&) = delete;

 private:
  Mutex* _locked;
};

}  // namespace vx

#endif
