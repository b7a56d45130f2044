// The work record of one page.

#ifndef VX_THREAD_DATA_CLASS_H
#define VX_THREAD_DATA_CLASS_H

#include "vxScaleShiftData.h"
#include "vxSubImg.h"
#include "vxThread.h"

#include <atomic>
#include <vector>

namespace vx {

class BaseOp;
class CachedBuffer;
class ChunkRun;
class Host;
class MemoryImg;
class PagedImg;

/// What one page needs from one input.
struct InputPageData {
  PagedImg* _inImg = nullptr;
  bool _inTileCaching = false;          // the input is served through the memory image of its image
  ScaleShiftData _scaleShiftData;       // wanted by the module
  bool _useMemoryImg = false;           // the memory image already holds exactly the region
  bool _useInplace = false;             // the region is delivered in the memory of the output page
  VXDataType _dataType = -1;            // wanted by the module
  std::vector<VXint64> _pageIDs;        // pages of the input, locked for this page
  bool _copyInThread = false;           // the copy into the input block is left to whoever calculates the page
  MemoryImg* _readMemoryImg = nullptr;  // kept as it is until the page is calculated

  /// Begins a page.
  void reset();
  /// Keeps a memory image as it is until release().
  void readMemoryImg(MemoryImg& memoryImg);
  /// Unlocks the pages, the last one first, and forgets them, and gives the memory image free.
  void release();
};

/// All that is needed to calculate one page, from the request of its inputs to the call of the module.
///
/// The requesting thread fills it; then one thread, a worker or the requesting one, calculates the page, and the
/// requesting thread reads the outcome. A record is used again for other pages and keeps its memory.
class ThreadDataClass {
 public:
  ThreadDataClass() = default;
  /// See assign().
  ThreadDataClass(BaseOp* op, PagedImg* outImg, VXint64 outIndex, SubImg* outSubImg, CachedBuffer* outPage,
                  Host* host) {
    assign(op, outImg, outIndex, outSubImg, outPage, host);
  }

  /// Begins a page. \throw int ::VX_NO_MEMORY, after a fatal report, without memory for the inputs.
  void assign(BaseOp* op, PagedImg* outImg, VXint64 outIndex, SubImg* outSubImg, CachedBuffer* outPage, Host* host);

  /// Gives the inputs free: their pages are unlocked.
  void releaseInputs();

  BaseOp* _op = nullptr;
  PagedImg* _outImg = nullptr;
  VXint64 _outIndex = -1;        // -1 where pages are walked through without output
  SubImg* _outSubImg = nullptr;  // describes the output page
  CachedBuffer* _outPage = nullptr;
  Host* _host = nullptr;
  VXint64 _numInputs = 0;
  std::vector<InputPageData> _inputData;  // one for each input
  std::vector<SubImg> _inSubImgs;         // one for each input, as calcOutSubImage() receives them
  ThreadHandle _threadHandle;             // of the chunk, valid in its first record if a worker was started
  std::atomic<bool> _hasHandle{false};    // whether the handle is there; its own worker may be earlier
  VXint32 _numPagesInChunk = 0;           // valid in the first record of a chunk
  VXint32 _errorCode = 0;                 // 0, or what was caught when the page was calculated
  bool _isCalculated = false;             // the module has calculated the page
  ChunkRun* _run = nullptr;               // the run that the record is part of
};

}  // namespace vx

#endif
