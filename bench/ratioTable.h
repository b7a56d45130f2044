/// \file ratioTable.h
/// Timing of a loop beside its limit, and the summary of such ratios.

#ifndef VX_RATIO_TABLE_H
#define VX_RATIO_TABLE_H

#include <benchmark/benchmark.h>
#include <functional>
#include <string>
#include <vector>

namespace vx::bench {

/// What time is measured: the calling thread's time on a processor, which leaves a neighbour's work on the machine out,
/// or all the time that goes by, where work is done on several threads.
enum class TimeKind { Processor, Elapsed };

/// Best times of some pieces of work, in seconds a call. They take turns, so that all see the same machine.
/// \param calls calls that are timed together, chosen so that a turn takes long against the clock's step.
std::vector<double> bestTimes(const std::vector<std::function<void()>>& works, int turns, int calls,
                              TimeKind kind = TimeKind::Processor);

/// Ratios limit / measured by title, output type and input type, gathered over a run; 1 is as fast as the limit.
class RatioTables {
 public:
  void add(const std::string& title, int outType, int inType, double ratio);

  /// Prints one table a title, then least ratio, median and the pairs below 0.8.
  void print() const;

 private:
  struct Entry {
    std::string title;
    int outType;
    int inType;
    double ratio;
  };
  std::vector<Entry> _entries;
};

}  // namespace vx::bench

#endif
