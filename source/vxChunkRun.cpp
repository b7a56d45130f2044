#include "vxChunkRun.h"

#include "vxThread.h"

#include <thread>

namespace vx {

ChunkRun::~ChunkRun() {
  requesterEnds();
  waitForWorkers();
  const MultithreadingLock lock(_mutex);
  _numErrors = _counters.numErrors();
}

void ChunkRun::startWorker(void (*entry)(void*), ThreadDataClass** chunk) {
  // Without the mutex: a worker that begins meanwhile would have to sleep for it.
  ThreadDataClass& firstRecord = **chunk;
  firstRecord._threadHandle = StartThread(entry, 0, chunk);
  firstRecord._hasHandle.store(true, std::memory_order_release);
  if (!firstRecord._threadHandle.valid) return;
  const MutexLock lock(_mutex);
  _counters.threadStarted();
}

void ChunkRun::allWorkersStarted() {
  const MutexLock lock(_mutex);
  if (_counters.allThreadsStarted()) _changed.notify_all();
}

void ChunkRun::requesterEnds() {
  if (!_isThreaded) return;
  const MutexLock lock(_mutex);
  if (_counters.requesterEnds()) _changed.notify_all();
}

bool ChunkRun::haveAllWorkersEnded() {
  if (!_isThreaded) return true;
  const MutexLock lock(_mutex);
  return _counters.haveAllThreadsEnded();
}

void ChunkRun::waitForWorkers() {
  if (!_isThreaded) return;
  const MutexLock lock(_mutex);
  while (!_counters.haveAllThreadsEnded()) _changed.wait(_mutex);
}

void ChunkRun::rethrow() const {
  const MultithreadingLock lock(_mutex);
  if (_exception) std::rethrow_exception(_exception);
}

ChunkRun::Worker::Worker(ChunkRun& run, const ThreadDataClass& firstRecord) : _run(run), _isWorker(false) {
  if (!run._isThreaded) return;
  // The requesting thread is between two instructions, unless it lost its processor.
  while (!firstRecord._hasHandle.load(std::memory_order_acquire)) std::this_thread::yield();
  _isWorker = firstRecord._threadHandle.valid;
  if (!_isWorker) return;
  const MutexLock lock(run._mutex);
  run._counters.threadBegins();
}

ChunkRun::Worker::~Worker() {
  if (!_isWorker) return;
  // Signalled under the lock: once it is given back, the run and its host may be gone.
  const MutexLock lock(_run._mutex);
  if (_run._counters.threadEnds()) _run._changed.notify_all();
}

void ChunkRun::_wait(ChunkCounters::Barrier& (ChunkCounters::*which)() noexcept) {
  if (!_isThreaded || !_isSerialized) return;
  const MutexLock lock(_mutex);
  ChunkCounters::Barrier& barrier = (_counters.*which)();
  const VXuint32 numOpenings = barrier.numOpenings;
  if (_counters.arrive(barrier)) _changed.notify_all();
  while (!ChunkCounters::hasOpened(barrier, numOpenings)) _changed.wait(_mutex);
}

void ChunkRun::countError() {
  const MultithreadingLock lock(_mutex);
  _counters.countError();
}

void ChunkRun::keepException(ThreadDataClass* const* chunk) {
  const MutexLock lock(_mutex);
  if (_exceptionChunk && _exceptionChunk < chunk) return;
  _exceptionChunk = chunk;
  _exception = std::current_exception();
}

}  // namespace vx
