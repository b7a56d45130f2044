// The road of a tile, fourth station: the chunks. The records of a group are cut into chunks, one for each thread; a
// chunk is calculated page by page, with the input copies that were left to it.

#include "vxBaseOp.h"
#include "vxCachedBuffer.h"
#include "vxChunkRun.h"
#include "vxDataTypes.h"
#include "vxGuards.h"
#include "vxHost.h"
#include "vxMemory.h"
#include "vxPageBytes.h"
#include "vxPageGroup.h"
#include "vxPagedImg.h"
#include "vxProcessingGuards.h"
#include "vxTraceBuffer.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

namespace vx {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds progressInterval(300);

}  // namespace

// The memory of the input blocks of one chunk; it goes from page to page and only grows. At the end it goes where the
// cache keeps blocks for new pages: a chunk of few pages would spend more time on fresh memory than on its copies.
class InputBuffers {
 public:
  explicit InputBuffers(Cache& cache) : _cache(cache) {}
  ~InputBuffers() {
    for (const Buffer& buffer : _buffers) _free(buffer);
  }
  InputBuffers(const InputBuffers&) = delete;
  InputBuffers& operator=(const InputBuffers&) = delete;

  // \return whether there is enough memory for an input. `data` takes it, null if nothing was ever asked for.
  bool provide(std::size_t inIndex, std::size_t numInputs, VXuint64 bytes, void*& data) noexcept {
    try {
      if (_buffers.size() < numInputs) _buffers.resize(numInputs);
    } catch (...) {
      VXPrintAndNotifyFatal(__FILE__, __LINE__, VX_NO_MEMORY);
      return false;
    }
    Buffer& buffer = _buffers[inIndex];
    if (bytes > buffer.size) {
      _free(std::exchange(buffer, Buffer()));
      void* memory = _cache._takeBlock(bytes);
      if (!memory) memory = Memory::allocateMemory(bytes, VX_FATAL_MEMORY_ERROR);  // which tells of it
      if (!memory) return false;
      buffer = {memory, bytes};
    }
    data = buffer.memory;
    return true;
  }

 private:
  struct Buffer {
    void* memory = nullptr;
    VXuint64 size = 0;
  };

  void _free(const Buffer& buffer) noexcept {
    if (buffer.memory) _cache._putBlock(buffer.memory, buffer.size);
  }

  Cache& _cache;
  std::vector<Buffer> _buffers;
};

namespace {

// The calculation of one chunk, on whatever thread. A failure ends the chunk after its page.
class Chunk {
 public:
  Chunk(ChunkRun& run, ThreadDataClass* const* records)
      : _run(run), _records(records), _buffers(records[0]->_host->getCache()) {
    _threadInfo.numPages = records[0]->_numPagesInChunk;
    _threadInfo.isMultithreadingActive = VXIsMultithreadingActive() != 0;
    _threadInfo.threadHandle = records[0]->_threadHandle;
  }

  void calcPages() {
    for (VXint32 i = 0; i < _threadInfo.numPages && _error == VX_RESULT_OK; ++i) {
      _threadInfo.pageIndex = i;
      ThreadDataClass* const record = _records[i];
      checkFatal(record && (record->_numInputs <= 0 || !record->_inputData.empty()));
      _calcPage(*record);
    }
  }

 private:
  void _calcPage(ThreadDataClass& record) {
    _run.waitBeforeCopy();
    const Clock::time_point start = Clock::now();
    if (_threadInfo.pageIndex == 0) _progressStart = start;
    _copyInputs(record);
    _run.waitAfterCopy();
    if (_error == VX_RESULT_OK) _callModule(record);
    const Clock::time_point end = Clock::now();
    record._outPage->updatePriority(std::chrono::duration<double>(end - start).count(),
                                    std::max<VXint64>(record._outSubImg->getBox().getNumVoxels(), 0));
    _showProgress(*record._op, end);
  }

  void _copyInputs(ThreadDataClass& record) {
    for (std::size_t i = 0; i < record._inputData.size() && _error == VX_RESULT_OK; ++i) {
      const InputPageData& input = record._inputData[i];
      if (input._copyInThread) _copyInput(record, input, i);
    }
  }

  void _copyInput(ThreadDataClass& record, const InputPageData& input, std::size_t inIndex) {
    SubImg& block = record._inSubImgs[inIndex];
    void* data = block.getData();  // that of the output page, in place
    if (!data && !_buffers.provide(inIndex, record._inputData.size(),
                                   numBytesOrTooMany(input._dataType, block.getBox()), data)) {
      _fail(record, VX_NO_MEMORY);
      return;
    }
    block.setData(data);
    std::optional<MultithreadingLock> lock;
    if (Mutex* const mutex = _run.copyMutex()) lock.emplace(*mutex);
    input._inImg->copyPages(input._pageIDs, &block, input._scaleShiftData, PagedImg::OWN_OR_BYPASSED_PAGE);
  }

  void _callModule(ThreadDataClass& record) {
    BaseOp& op = *record._op;
    guardProcessing(
        [&] {
          SubImg* const inputs = record._inSubImgs.empty() ? nullptr : record._inSubImgs.data();
          op.calcOutSubImage(record._outSubImg, static_cast<int>(record._outIndex), inputs, _threadInfo);
          record._isCalculated = true;
        },
        [&](int code) {
          reportThrownCode(code, "Host::_calcPagesMT( ) on module ", op, ReportedModule::object);
          _fail(record, failureCode(code));
        },
        [&] {
          _error = VX_PAGE_CALCULATION_FAILED;
          reportUnknownException(VX_PAGE_CALCULATION_FAILED, "Continuing with other pages.", "", op,
                                 "::calcOutSubImage()", ReportedModule::object);
          _run.countError();
        });
  }

  void _fail(ThreadDataClass& record, int code) {
    record._errorCode = code;
    _error = code;
    _run.countError();
  }

  void _showProgress(const BaseOp& op, Clock::time_point now) {
    if (VXIsMultithreadingActive() || now - _progressStart <= progressInterval) return;
    Host::getDefaultHost().updateProgress(op.whoAmI(true).c_str(), "calculating");
    _progressStart = Clock::now();
  }

  ChunkRun& _run;
  ThreadDataClass* const* _records;
  ThreadInfo _threadInfo;
  int _error = VX_RESULT_OK;
  Clock::time_point _progressStart;
  InputBuffers _buffers;
};

// Multi-threading ends with a run, also if it was active before; but not with one inside another that goes on.
class MultithreadingEnd {
 public:
  MultithreadingEnd() = default;
  ~MultithreadingEnd() {
    if (!NestedRequestScope::isInsideThreadedRun()) _VXSetMultithreadingActive(0);
  }
  MultithreadingEnd(const MultithreadingEnd&) = delete;
  MultithreadingEnd& operator=(const MultithreadingEnd&) = delete;
};

// Registered types share slots of the type table, where copies on several threads would meet.
bool needsSerializedCopies(const PagedImg& outImg, const ThreadDataClass& firstRecord) {
  if (!VXIsStandardType(outImg.getDataType())) return true;
  return std::any_of(firstRecord._inputData.begin(), firstRecord._inputData.end(),
                     [](const InputPageData& input) { return !VXIsStandardType(input._dataType); });
}

}  // namespace

void Host::_runChunks(PageGroup& group) {
  std::vector<ThreadDataClass*>& records = group.level.records();
  if (records.empty()) return;
  const TraceFrame trace("source/vxHost:Host::_runChunks()");
  const VXuint64 numRecords = records.size();
  const VXuint64 maxNumThreads = NestedRequestScope::isInsideThreadedRun() ? 1 : _maxNumThreads;
  const VXuint64 numChunks = std::clamp<VXuint64>(maxNumThreads, 1, numRecords);
  const bool isThreaded = numChunks > 1 && group.op.getThreadSupport() != BaseOp::NO_THREAD_SUPPORT;

  const MultithreadingEnd end;
  ChunkRun run(_threadStateMutex, _threadStateChanged, _numThreadErrors,
               isThreaded ? static_cast<VXint32>(numChunks) : 0, needsSerializedCopies(group.outImg, *records[0]));
  for (VXuint64 i = 0; i < numChunks; ++i) {
    const VXuint64 first = numRecords / numChunks * i;
    const VXuint64 last = i + 1 == numChunks ? numRecords : numRecords / numChunks * (i + 1);
    ThreadDataClass** const chunk = &records[static_cast<std::size_t>(first)];
    (*chunk)->_numPagesInChunk = static_cast<VXint32>(last - first);
    (*chunk)->_run = &run;
    if (!isThreaded) {
      _calcPagesMT(chunk);
    } else {
      if (!VXIsMultithreadingActive()) _VXSetMultithreadingActive(1);
      run.startWorker(&_calcPagesMT, chunk);
    }
  }
  if (isThreaded) _finishThreads(group, run);
}

// Calculates the chunks that got no thread, and waits for the others.
void Host::_finishThreads(PageGroup& group, ChunkRun& run) {
  std::vector<ThreadDataClass*>& records = group.level.records();
  run.allWorkersStarted();
  for (std::size_t first = 0; first < records.size();) {
    // The worker of a chunk may write to all records but their handles and lengths.
    const auto numPages = static_cast<std::size_t>(records[first]->_numPagesInChunk);
    if (!records[first]->_threadHandle.valid) _calcPagesMT(&records[first]);
    first += numPages;
  }
  run.requesterEnds();
  while (!run.haveAllWorkersEnded()) {
    {
      const NestedRequestScope::Chunk mark(true);  // the application may request a tile while the workers run
      updateProgress(group.op.getTypeIdName(), "calculating");
    }
    run.waitForWorkers();
  }
  run.rethrow();
}

void Host::_calcPagesMT(void* arg) {
  const TraceFrame trace("source/vxHost:Host::_calcPagesMT()");
  auto** const records = static_cast<ThreadDataClass**>(arg);
  checkFatal(records && *records);
  ChunkRun& run = *(*records)->_run;
  const ChunkRun::Worker worker(run, **records);
  const NestedRequestScope::Chunk mark(run.isThreaded());
  try {
    Chunk(run, records).calcPages();
  } catch (...) {
    VXPrintAndNotifyFatal(__FILE__, __LINE__, VX_BAD_POINTER);
    if (!worker) throw;
    run.keepException(records);
  }
}

}  // namespace vx
