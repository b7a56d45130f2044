// Stands in front of vx::StartThread(): lets chosen starts fail. The test that includes this wraps the function by the
// linker.

#ifndef VX_TESTS_THREAD_STARTS_H
#define VX_TESTS_THREAD_STARTS_H

#include "vxThread.h"

#include <set>

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

}  // namespace vx::test

extern "C" {
vx::ThreadHandle __real__ZN2vx11StartThreadEPFvPvEjS0_(void (*entry)(void*), unsigned int stackSize, void* argument);
vx::ThreadHandle __wrap__ZN2vx11StartThreadEPFvPvEjS0_(void (*entry)(void*), unsigned int stackSize, void* argument) {
  if (vx::test::ThreadStarts::isNextMissing()) return {};
  return __real__ZN2vx11StartThreadEPFvPvEjS0_(entry, stackSize, argument);
}
}

#endif
