// The counters of the threads that calculate the chunks of one run, and all of their changes. Nothing here locks, waits
// or signals, so that a test can try every order of the changes: the run does that around each call.

#ifndef VX_CHUNK_COUNTERS_H
#define VX_CHUNK_COUNTERS_H

#include "vxTypes.h"

namespace vx {

/// What the threads of one run know of each other. A chunk is a number of pages in a row, calculated one after the
/// other by one thread: a worker, or the requesting thread for chunks whose thread could not be started.
///
/// While copies of inputs are serialised, a page is a round of all who still have pages: nobody copies before all have
/// arrived at the barrier before the copy, and nobody calculates before all have arrived at the one after it. Who has
/// no page left isn't waited for. A barrier counts its openings: who waits does so for the opening after his arrival,
/// so that a slow one who hasn't looked yet can't take an arrival at the next round for his own, or erase it.
///
/// All functions are called with the mutex of the run held. Those that return a bool say whether others may now go on,
/// and must be told.
class ChunkCounters {
 public:
  /// Where threads wait for each other.
  struct Barrier {
    VXint32 numArrived = -1;   ///< Who has arrived since the last opening; -1 while nobody has.
    VXuint32 numOpenings = 0;  ///< Wraps.
  };

  /// \param numChunks one worker is to be waited for each; 0 if no thread is started at all.
  /// \param serializeInputCopies whether copies of inputs take place in rounds.
  ChunkCounters(VXint32 numChunks, bool serializeInputCopies) noexcept
      : _numThreadsToWaitFor(numChunks), _serializeInputCopies(serializeInputCopies) {}

  /// A thread was started for a chunk.
  void threadStarted() noexcept { ++_numStartedThreads; }

  /// No more threads will be started. Chunks without a thread are left to the requesting thread, which takes part in
  /// the rounds with all of them as one chunk.
  [[nodiscard]] bool allThreadsStarted() noexcept {
    const bool areChunksLeft = _numStartedThreads < _numThreadsToWaitFor;
    _numThreadsToWaitFor = _numStartedThreads;
    _isRequesterInRounds = areChunksLeft && _serializeInputCopies;
    return _openWhereAllArrived();
  }
  /// The requesting thread has no page left.
  [[nodiscard]] bool requesterEnds() noexcept {
    _isRequesterInRounds = false;
    return _openWhereAllArrived();
  }

  /// A worker begins.
  void threadBegins() noexcept { ++_numActiveThreads; }
  /// A worker has no page left. It must not use the run from here on.
  [[nodiscard]] bool threadEnds() noexcept {
    --_numActiveThreads;
    ++_numFinishedThreads;
    return _openWhereAllArrived() || haveAllThreadsEnded();
  }
  /// \return whether the requesting thread may go on.
  bool haveAllThreadsEnded() const noexcept { return _numFinishedThreads >= _numThreadsToWaitFor; }

  /// The barriers, for those that have pages left.
  Barrier& beforeCopy() noexcept { return _barrierBeforeCopy; }
  /// \copydoc beforeCopy()
  Barrier& afterCopy() noexcept { return _barrierAfterCopy; }

  /// Arrives at a barrier; whether to go on tells hasOpened() with the number of openings before the call.
  [[nodiscard]] bool arrive(Barrier& barrier) noexcept {
    barrier.numArrived = barrier.numArrived < 0 ? 1 : barrier.numArrived + 1;
    return _openIfAllArrived(barrier);
  }
  /// \return whether the barrier has opened since it had a number of openings.
  static bool hasOpened(const Barrier& barrier, VXuint32 numOpenings) noexcept {
    return barrier.numOpenings != numOpenings;
  }

  /// A page has failed.
  void countError() noexcept { ++_numThreadErrors; }
  /// \return the number of failures.
  VXint32 numErrors() const noexcept { return _numThreadErrors; }
  /// \return workers between their start and their end.
  VXint32 numActiveThreads() const noexcept { return _numActiveThreads; }

 private:
  bool _openIfAllArrived(Barrier& barrier) noexcept {
    const VXint32 numExpected = _numThreadsToWaitFor - _numFinishedThreads + (_isRequesterInRounds ? 1 : 0);
    if (barrier.numArrived < 0 || barrier.numArrived < numExpected) return false;
    barrier.numArrived = -1;
    ++barrier.numOpenings;
    return true;
  }
  bool _openWhereAllArrived() noexcept {
    const bool before = _openIfAllArrived(_barrierBeforeCopy);
    const bool after = _openIfAllArrived(_barrierAfterCopy);
    return before || after;
  }

  VXint32 _numThreadsToWaitFor;       // chunks that are calculated by a worker
  VXint32 _numStartedThreads = 0;     // workers that were started
  VXint32 _numActiveThreads = 0;      // workers between their start and their end
  VXint32 _numFinishedThreads = 0;    // workers that have ended
  VXint32 _numThreadErrors = 0;       // failures in this run
  bool _serializeInputCopies;         // input copies must not run in parallel
  bool _isRequesterInRounds = false;  // whether the barriers wait for the requesting thread too
  Barrier _barrierBeforeCopy;
  Barrier _barrierAfterCopy;
};

}  // namespace vx

#endif
