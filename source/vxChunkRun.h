// One run: the chunks of a group of pages, and the workers that calculate them.

#ifndef VX_CHUNK_RUN_H
#define VX_CHUNK_RUN_H

#include "vxChunkCounters.h"
#include "vxMutex.h"
#include "vxThreadDataClass.h"

#include <condition_variable>
#include <exception>

namespace vx {

/// Starts the workers of a run, lets them wait for each other, and waits for their end.
///
/// It lives on the stack of the requesting thread and doesn't end before its workers do. All that the workers share is
/// guarded by the mutex; whoever waits sleeps on the condition.
class ChunkRun {
 public:
  /// \param mutex,changed of the host. \param numErrors takes the number of failures: 0 now, all of them at the end.
  /// \param numWorkers one for each chunk; 0 if the requesting thread calculates them.
  /// \param serializeInputCopies whether input copies take place in rounds.
  ChunkRun(Mutex& mutex, std::condition_variable_any& changed, VXint32& numErrors, VXint32 numWorkers,
           bool serializeInputCopies)
      : _mutex(mutex),
        _changed(changed),
        _numErrors(numErrors),
        _isThreaded(numWorkers > 0),
        _isSerialized(serializeInputCopies),
        _counters(numWorkers, serializeInputCopies) {
    _numErrors = 0;
  }
  /// Waits for the end of all workers.
  ~ChunkRun();
  ChunkRun(const ChunkRun&) = delete;
  ChunkRun& operator=(const ChunkRun&) = delete;

  /// \return whether workers are started.
  bool isThreaded() const noexcept { return _isThreaded; }

  /// \name The requesting thread
  ///@{
  /// Starts a worker. Whether that went well says the thread handle of the first record.
  /// \param entry what it runs. \param chunk the first record of the chunk.
  void startWorker(void (*entry)(void*), ThreadDataClass** chunk);
  /// No more workers are started: the chunks without one are left to this thread.
  void allWorkersStarted();
  /// This thread has no chunk left.
  void requesterEnds();
  /// \return whether all workers have ended.
  bool haveAllWorkersEnded();
  /// Sleeps until all workers have ended.
  void waitForWorkers();
  /// Throws what left a worker, of several that of the first chunk. All workers have ended.
  void rethrow() const;
  ///@}

  /// \name Whoever calculates a chunk
  ///@{
  /// Is a worker for the length of a scope, unless the requesting thread calculates the chunk. After its end a worker
  /// must not use the run, nor any record.
  class Worker {
   public:
    Worker(ChunkRun& run, const ThreadDataClass& firstRecord);
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    /// \return whether this is a worker's thread.
    explicit operator bool() const noexcept { return _isWorker; }

   private:
    ChunkRun& _run;
    bool _isWorker;
  };

  /// Waits until all are about to copy inputs, where copies take place in rounds.
  void waitBeforeCopy() { _wait(&ChunkCounters::beforeCopy); }
  /// Waits until all have copied inputs, where copies take place in rounds.
  void waitAfterCopy() { _wait(&ChunkCounters::afterCopy); }

  /// \return the mutex to be held while copying inputs; null if none.
  Mutex* copyMutex() noexcept { return _isSerialized ? &_mutex : nullptr; }
  /// Counts a page that failed.
  void countError();
  /// Keeps the exception being handled for the requesting thread. \param chunk the chunk that it left.
  void keepException(ThreadDataClass* const* chunk);
  ///@}

 private:
  void _wait(ChunkCounters::Barrier& (ChunkCounters::*which)() noexcept);

  Mutex& _mutex;
  std::condition_variable_any& _changed;
  VXint32& _numErrors;  // used by the requesting thread
  const bool _isThreaded;
  const bool _isSerialized;
  ChunkCounters _counters VX_GUARDED_BY(_mutex);
  std::exception_ptr _exception VX_GUARDED_BY(_mutex);
  ThreadDataClass* const* _exceptionChunk VX_GUARDED_BY(_mutex) = nullptr;
};

}  // namespace vx

#endif
