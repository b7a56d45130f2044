// The road of a tile, first station: the request. It is cut into groups of pages; each group is calculated, copied into
// the tile, and let go.

#include "vxBaseOp.h"
#include "vxCacheState.h"
#include "vxCachedBuffer.h"
#include "vxDataTypes.h"
#include "vxGuards.h"
#include "vxHost.h"
#include "vxPageBytes.h"
#include "vxPagedImg.h"
#include "vxProcessingGuards.h"
#include "vxRequestLevels.h"
#include "vxTraceBuffer.h"

#include <algorithm>

namespace vx {

namespace {

// A group is made smaller as long as its pages take more memory than this and it has this many for each thread.
constexpr VXuint64 groupBytes = 2097152;
constexpr VXuint64 groupPagesPerThread = 8;

VXuint64 chooseGroupSize(VXuint64 numPages, VXuint64 pageBytes, VXuint64 maxNumThreads) {
  const auto isLarge = [&](VXuint64 group) {
    VXuint64 bytes = 0;
    return !multiplySizes(group, pageBytes, bytes) || bytes > groupBytes;
  };
  VXuint64 group = numPages;
  while (group >= groupPagesPerThread && group >= groupPagesPerThread * maxNumThreads && isLarge(group)) group /= 2;
  return group;
}

// The ids of one group; all of them are a group as they are.
const std::vector<VXint64>& groupOf(const std::vector<VXint64>& ids, std::size_t first, std::size_t groupSize,
                                    std::vector<VXint64>& memory) {
  if (groupSize == ids.size()) return ids;
  const auto begin = ids.begin() + static_cast<std::ptrdiff_t>(first);
  withMemory(
      [&] { memory.assign(begin, begin + static_cast<std::ptrdiff_t>(std::min(groupSize, ids.size() - first))); });
  return memory;
}

bool isOutput(const BaseOp& op, VXint64 outIndex) { return outIndex >= 0 && outIndex < op.getOutputNum(); }
bool isInput(const BaseOp& op, VXint64 inIndex) { return inIndex >= 0 && inIndex < op.getInputNum(); }

// Gives the locks of a group back, whether the copy into the tile succeeds or not.
class GroupLocks {
 public:
  GroupLocks(const PagedImg& outImg, const std::vector<VXint64>& ids) : _outImg(outImg), _ids(ids) {}
  ~GroupLocks() {
    for (auto id = _ids.rbegin(); id != _ids.rend(); ++id) {
      CachedBuffer* const page = _outImg.getPage(*id, PagedImg::OWN_OR_BYPASSED_PAGE);
      if (page && page->getCache()) page->unlock();
    }
  }
  GroupLocks(const GroupLocks&) = delete;
  GroupLocks& operator=(const GroupLocks&) = delete;

 private:
  const PagedImg& _outImg;
  const std::vector<VXint64>& _ids;
};

// Keeps a buffer from being dropped, for the length of a scope.
class BufferLock {
 public:
  explicit BufferLock(CachedBuffer& buffer) : _buffer(buffer) { _buffer.lock(); }
  ~BufferLock() { _buffer.unlock(); }
  BufferLock(const BufferLock&) = delete;
  BufferLock& operator=(const BufferLock&) = delete;

 private:
  CachedBuffer& _buffer;
};

// What becomes of a failure at one of the places that make a result of it.
struct FailurePlace {
  const char* name;       // in front of the name of the module, where an error code was thrown
  VXErrorCode otherCode;  // the result of everything else that is thrown
  const char* otherReason;
  const char* caller;  // behind the name of the module, where everything else was thrown
};

constexpr FailurePlace tileIntoBuffer{"Host::getTile() on module ", VX_UNKNOWN_EXCEPTION, "Ignoring function call.",
                                      " called by Host::getTile()"};
constexpr FailurePlace tileCore{"Host::_getTileCore( ) on module ", VX_UNINITIALIZED_RESULT,
                                "Returning uninitialized memory.", " called by Host::_getTileCore()"};
constexpr FailurePlace allPages{"Host::processAllPages( ) on module ", VX_UNINITIALIZED_RESULT,
                                "Returning uninitialized memory.", " called by Host::_getTileCore()"};
constexpr FailurePlace groupOfPages{"Host::_processPagesHelper() on module ", VX_UNKNOWN_EXCEPTION,
                                    "Ignoring function call.", " called by Host::getTile()"};

// \return what `body` returns, or the code of its failure, which has been reported.
template <class Body>
int resultOf(const FailurePlace& place, const BaseOp& op, Body&& body) {
  int result = VX_RESULT_OK;
  guardProcessing([&] { result = body(); },
                  [&](int code) {
                    reportThrownCode(code, place.name, op);
                    result = failureCode(code);
                  },
                  [&] {
                    reportUnknownException(place.otherCode, place.otherReason, "Module ", op, place.caller);
                    result = place.otherCode;
                  });
  return result;
}

// A request has failures of its own; one inside another leaves those of the outer one alone.
class ErrorCountScope {
 public:
  explicit ErrorCountScope(VXint32& numErrors) : _numErrors(numErrors), _former(std::exchange(numErrors, 0)) {}
  ~ErrorCountScope() { _numErrors = _former; }
  ErrorCountScope(const ErrorCountScope&) = delete;
  ErrorCountScope& operator=(const ErrorCountScope&) = delete;

 private:
  VXint32& _numErrors;
  VXint32 _former;
};

}  // namespace

// Requests ------------------------------------------------------------------------------------------------------------

int Host::getTile(BaseOp& op, VXint64 outIndex, SubImgBox box, int dataType, void** data,
                  const ScaleShiftData& scaleShift) {
  const TraceFrame trace("source/vxHost:Host::getTile()");
  if (!isOutput(op, outIndex)) return VX_BAD_OUTPUT_INDEX;
  checkFatal(data != nullptr);
  if (!*data) *data = VXAlloc(numBytesOrTooMany(dataType, box), VX_FATAL_MEMORY_ERROR);
  if (!*data) return VX_NO_MEMORY;
  return _getTileCore(op, outIndex, box, dataType, *data, scaleShift);
}

int Host::getTile(BaseOp& op, VXint64 outIndex, SubImg& subImg, const ScaleShiftData& scaleShift) {
  const TraceFrame trace("source/vxHost:Host::getTile()");
  if (!isOutput(op, outIndex)) return VX_BAD_OUTPUT_INDEX;
  const SubImgBox box = subImg.getBox();
  void* data = subImg.getData();
  const VXDataType dataType = subImg.getDataType();
  if (const int code = updateImageProps(op, outIndex)) return code;
  const PagedImg* const outImg = op.getOutImg(outIndex);
  if (!outImg) return VX_UNKNOWN_EXCEPTION;
  subImg.setImgProps(*outImg);
  subImg.setBox(box);
  subImg.setDataType(dataType);
  const bool isAllocatedHere = !data;
  const int result = getTile(op, outIndex, box, dataType, &data, scaleShift);
  if (isAllocatedHere) subImg.setData(data);
  return result;
}

int Host::getTile(BaseOp& op, VXint64 outIndex, SubImgBox box, int dataType, CachedBuffer& buffer,
                  const ScaleShiftData& scaleShift) {
  const TraceFrame trace("source/vxHost:Host::getTile()");
  if (!isOutput(op, outIndex)) return VX_BAD_OUTPUT_INDEX;
  return resultOf(tileIntoBuffer, op, [&] {
    buffer.init(_cache, 0, numBytesChecked(dataType, box), nullptr);
    const BufferLock lock(buffer);  // the request flushes the cache
    return _getTileCore(op, outIndex, box, dataType, buffer.getData(), scaleShift);
  });
}

void Host::freeTile(void* data) {
  const TraceFrame trace("source/vxHost:Host::freeTile()");
  VXFree(data);
}

int Host::_getTileCore(BaseOp& op, VXint64 outIndex, const SubImgBox& box, int dataType, void* data,
                       const ScaleShiftData& scaleShift) {
  const TraceFrame trace("source/vxHost:Host::_getTileCore()");
  if (!isOutput(op, outIndex)) return VX_BAD_OUTPUT_INDEX;
  PagedImg* const outImg = op.getOutImg(outIndex);
  if (!outImg) return VX_UNKNOWN_EXCEPTION;
  return resultOf(tileCore, op,
                  [&] { return _processPagesHelper(op, outIndex, box, dataType, data, scaleShift, false, *outImg); });
}

int Host::processAllPages(BaseOp& op, VXint64 outIndex, VXint64 inIndex, SubImgBox box) {
  const TraceFrame trace("source/vxHost:Host::processAllPages()");
  if (outIndex != -1 && !isOutput(op, outIndex)) return VX_BAD_OUTPUT_INDEX;
  if (outIndex == -1 ? !isInput(op, inIndex) : inIndex != -1) return VX_BAD_INPUT_INDEX;
  const NestedRequestScope nested;
  const VXint64 numInputs = op.getInputNum();
  for (VXint64 i = 0; i < numInputs; ++i) {
    if (!op.getUpdatedInImg(i, false)) return op.getInOp(i, false) ? VX_OPEN_INPUT : VX_IMAGE_NOT_CALCULATED;
  }
  if (outIndex >= 0) {
    if (const int code = updateImageProps(op, outIndex)) return code;
  }
  return resultOf(allPages, op, [&]() -> int {
    PagedImg walkedThrough = withMemory([] { return PagedImg(nullptr, -1); });
    if (outIndex == -1) walkedThrough.setImgProps(*op.getInImg(inIndex, false));
    PagedImg* const img = outIndex == -1 ? &walkedThrough : op.getOutImg(outIndex);
    if (!img) return VX_UNKNOWN_EXCEPTION;
    img->clearPageListAndMemoryImg();
    return _processPagesHelper(op, outIndex, box.isEmpty() ? img->getBoxFromImgExt() : box, VXuint8Type, nullptr,
                               ScaleShiftData(), true, *img);
  });
}

// Groups --------------------------------------------------------------------------------------------------------------

int Host::_processPagesHelper(BaseOp& op, VXint64 outIndex, const SubImgBox& box, int dataType, void* data,
                              const ScaleShiftData& scaleShift, bool isProcessAllPages, PagedImg& outImg) {
  const TraceFrame trace("source/vxHost:Host::_processPagesHelper()");
  const NestedRequestScope nested;
  if (!isProcessAllPages) {
    if (const int code = updateImageProps(op, outIndex)) return code;
    numBytesChecked(dataType, box);  // no memory of the caller is as large as a tile whose size isn't representable
  }
  SubImg tile(box, dataType, data);
  int result = VX_RESULT_OK;
  try {
    const CacheRequest request(_cache);
    result = _processGroups(op, outIndex, tile, scaleShift, isProcessAllPages, outImg);
  } catch (...) {
    _cache.flushCache();
    throw;
  }
  _cache.flushCache();
  return result;
}

int Host::_processGroups(BaseOp& op, VXint64 outIndex, SubImg& tile, const ScaleShiftData& scaleShift,
                         bool isProcessAllPages, PagedImg& outImg) {
  const ErrorCountScope errors(_numThreadErrors);
  const RequestLevels::Scope level(*_levels);
  std::vector<VXint64>& ids = level->ids;
  withMemory([&] { outImg.getPageIDs(ids, tile.getBox()); });
  const VXuint64 pageBytes = numBytesOrTooMany(outImg.getDataType(), boxOfExt(outImg.getPageExt()));

  const ProcessingScope processing(*this);
  if (!ids.empty() && outImg.areNoPagesCalculated()) {
    op.notifyFirstCalcOutSubImage(static_cast<int>(outIndex), isProcessAllPages);
  }
  const auto groupSize = static_cast<std::size_t>(chooseGroupSize(ids.size(), pageBytes, _maxNumThreads));
  int result = VX_RESULT_OK;
  for (std::size_t first = 0; first < ids.size() && result == VX_RESULT_OK; first += groupSize) {
    const std::vector<VXint64>& group = groupOf(ids, first, groupSize, level->idsOfGroup);
    result = _processGroup(op, outIndex, group, tile, scaleShift, isProcessAllPages, outImg);
  }
  return result;
}

int Host::_processGroup(BaseOp& op, VXint64 outIndex, const std::vector<VXint64>& ids, SubImg& tile,
                        const ScaleShiftData& scaleShift, bool isProcessAllPages, PagedImg& outImg) {
  const int result = resultOf(groupOfPages, op, [&]() -> int {
    _calcPages(op, outImg, outIndex, ids, 0, outIndex < 0);
    return VX_RESULT_OK;
  });
  if (result == VX_RESULT_OK && !isProcessAllPages) {
    const GroupLocks locks(outImg, ids);
    outImg.copyPages(ids, &tile, scaleShift, PagedImg::OWN_OR_BYPASSED_PAGE);
  }
  return result;
}

}  // namespace vx
