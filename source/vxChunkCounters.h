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
/// Workers that copy their pages into a tile do so when all pages are calculated and none has failed: they arrive at
/// one more barrier. Who has failed ends without arriving, and the requesting thread, if it has chunks, ends instead.
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
  /// \param copiesIntoTile whether workers copy their pages into a tile.
  ChunkCounters(VXint32 numChunks, bool serializeInputCopies, bool copiesIntoTile) noexcept
      : _numThreadsToWaitFor(numChunks), _isRequesterAwaited(serializeInputCopies || copiesIntoTile) {}

  /// A thread was started for a chunk.
  void threadStarted() noexcept { ++_numStartedThreads; }

  /// No more threads will be started. Chunks without a thread are left to the requesting thread, which the others wait
  /// for like for one worker with all of them as one chunk.
  [[nodiscard]] bool allThreadsStarted() noexcept {
    const bool areChunksLeft = _numStartedThreads < _numThreadsToWaitFor;
    _numThreadsToWaitFor = _numStartedThreads;
    _isRequesterInRounds = areChunksLeft && _isRequesterAwaited;
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
  /// The barrier for those that have calculated all of their pages.
  Barrier& afterCalculation() noexcept { return _barrierAfterCalculation; }

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
  void countError() noexcept {
    ++_numThreadErrors;
    _hasFailed = true;
  }
  /// A chunk has ended with an exception.
  void chunkFails() noexcept { _hasFailed = true; }
  /// \return whether a page or a chunk has failed.
  bool hasFailed() const noexcept { return _hasFailed; }
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
    const bool calculated = _openIfAllArrived(_barrierAfterCalculation);
    return before || after || calculated;
  }

  VXint32 _numThreadsToWaitFor;       // chunks that are calculated by a worker
  VXint32 _numStartedThreads = 0;     // workers that were started
  VXint32 _numActiveThreads = 0;      // workers between their start and their end
  VXint32 _numFinishedThreads = 0;    // workers that have ended
  VXint32 _numThreadErrors = 0;       // failures in this run
  bool _hasFailed = false;            // whether anything has failed
  bool _isRequesterAwaited;           // whether the barriers wait for the requesting thread, if it has chunks
  bool _isRequesterInRounds = false;  // whether it has some
  Barrier _barrierBeforeCopy;
  Barrier _barrierAfterCopy;
  Barrier _barrierAfterCalculation;
};

}  // namespace vx

#endif
