// Stands in front of vx::StartThread(): lets chosen starts fail. The test that includes this wraps the function by the
// linker.

#ifndef VX_TESTS_THREAD_STARTS_H
#define VX_TESTS_THREAD_STARTS_H

#include "vxThread.h"

#include <set>
#include <utility>

namespace vx::test {

/// The starts of threads while it lives.
class ThreadStarts {
 public:
  /// \param missing numbers of the starts that fail, from 0.
  explicit ThreadStarts(std::set<int> missing = {}) : _missing(std::move(missing)) { _current = this; }
  ~ThreadStarts() { _current = nullptr; }
  ThreadStarts(const ThreadStarts&) = delete;
  ThreadStarts& operator=(const ThreadStarts&) = delete;

  int numStarts = 0;  ///< Calls so far.

  /// \return whether the next start fails.
  static bool isNextMissing() { return _current && _current->_missing.count(_current->numStarts++) != 0; }

 private:
  std::set<int> _missing;
  static inline ThreadStarts* _current = nullptr;
};

// The names by which the linker knows the wrapped function.
ThreadHandle startForReal(void (*entry)(void*), unsigned int stackSize,
                          void* argument) __asm__("__real__ZN2vx11StartThreadEPFvPvEjS0_");
ThreadHandle startIfNotMissing(void (*entry)(void*), unsigned int stackSize,
                               void* argument) __asm__("__wrap__ZN2vx11StartThreadEPFvPvEjS0_");

__attribute__((used)) inline ThreadHandle startIfNotMissing(void (*entry)(void*), unsigned int stackSize,
                                                            void* argument) {
  return ThreadStarts::isNextMissing() ? ThreadHandle() : startForReal(entry, stackSize, argument);
}

}  // namespace vx::test

#endif
