/// \file vxTimeCounter.h
/// A stop watch.

#ifndef VX_TIME_COUNTER_H
#define VX_TIME_COUNTER_H

#include <chrono>

namespace vx {

/// Measures time from its construction or last reset, by a clock that is never set back. A plain value.
class TimeCounter {
 public:
  /// Starts the watch.
  TimeCounter() noexcept : _start(std::chrono::steady_clock::now()) {}

  /// Starts the watch anew.
  void reset() noexcept { _start = std::chrono::steady_clock::now(); }

  /// \return the time since the start in seconds.
  long double getRunningTimeInSeconds() const noexcept {
    return std::chrono::duration<long double>(std::chrono::steady_clock::now() - _start).count();
  }

 private:
  std::chrono::steady_clock::time_point _start;
};

}  // namespace vx

#endif
