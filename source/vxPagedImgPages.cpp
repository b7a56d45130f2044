// The pages of an image: where they are, which cover a region, how they come and go.

#include "vxBaseOp.h"
#include "vxCachedBuffer.h"
#include "vxDataTypes.h"
#include "vxErrorOutput.h"
#include "vxGuards.h"
#include "vxMemory.h"
#include "vxPageDivision.h"
#include "vxPagedImg.h"
#include "vxTraceBuffer.h"
#include "vxVoxelBlock.h"

#include <memory>
#include <stdexcept>

namespace vx {

// An image whose extents have no exact quotient in single precision may have a page that its table has no place for.
bool PagedImg::_isPageID(VXint64 id) const noexcept { return id >= 0 && id < _numPages; }

CachedBuffer* PagedImg::getPage(VXint64 id, BYPASS_TYPES type) const {
  if (type != BYPASSED_PAGE && _isPageID(id) && _pages[id]) return _pages[id];
  if (type == OWN_PAGE || _bypassIndex < 0 || !_op) return nullptr;
  const PagedImg* const input = _op->getInImg(_bypassIndex, false);
  if (!input || !input->_isPageID(id)) return nullptr;
  CachedBuffer* const page = input->_pages[id];
  return page && page->isInitialized() ? page : nullptr;
}

void* PagedImg::getPageData(VXint64 id, BYPASS_TYPES type) const {
  const CachedBuffer* const page = getPage(id, type);
  checkFatal(page != nullptr);
  return page->isInitialized() ? page->getData() : nullptr;
}

VXint64 PagedImg::isValidPage(VXint64 id) const {
  return _isPageID(id) && _pages[id] && _pages[id]->isInitialized() ? 1 : 0;
}

VXuint32 PagedImg::getPageMemorySize() const {
  if (_noPagesCalculated) return 0;
  VXuint64 size = 0;
  for (VXint64 id = 0; id < _numPages; ++id) {
    if (isValidPage(id)) size += _pages[id]->getSize();
  }
  return static_cast<VXuint32>(size);
}

// Regions -------------------------------------------------------------------------------------------------------------

SubImgBox PagedImg::getPageBox(VXint64 id) const {
  if (!_isPageID(id)) {
    report(VX_FATAL, "PagedImg::getPageBox", VX_BAD_PAGE_ID, "Bad page id. Returning empty box.");
    return SubImgBox();
  }
  const TVector<VXint64> corner = _pageStride.getVectorPosition(id) * _pageExt;
  return SubImgBox(corner, corner + _pageExt - TVector<VXint64>(1));
}

namespace {

SubImgBox regionInImage(const SubImgBox& box, const TVector<VXint64>& imgExt) {
  // One less than the smallest number would be the greatest, and an image without voxels would have them all.
  const TVector<VXint64> ext = TVector<VXint64>::compMax(imgExt, TVector<VXint64>());
  return SubImgBox::intersect(box, SubImgBox(TVector<VXint64>(), ext - TVector<VXint64>(1)));
}

// Appends the pages of a region that isn't empty. Their ids are apart by `strides`.
void listPageIDs(std::vector<VXint64>& ids, const SubImgBox& region, const TVector<VXint64>& pageExt,
                 const TVector<VXint64>& strides) {
  const SubImgBox pages(region.v1 / pageExt, region.v2 / pageExt);
  VXuint64 numPages = 0;
  try {
    if (!pages.getNumVoxelsChecked(numPages)) throw std::length_error("");
    ids.reserve(static_cast<std::size_t>(numPages));
  } catch (const std::length_error&) {
    throw static_cast<int>(VX_NO_MEMORY);
  } catch (const std::bad_alloc&) {
    throw static_cast<int>(VX_NO_MEMORY);
  }
  const VXint64 rowLength = wrapSubtract(pages.v2.x, pages.v1.x);
  walkLines(pages, [&](const TVector<VXint64>& position) {
    const VXint64 first = TVector<VXint64>::dot(position, strides);
    for (VXint64 x = 0; x <= rowLength; ++x) ids.push_back(wrapAdd(first, x));
  });
}

}  // namespace

void PagedImg::getPageIDs(std::vector<VXint64>& ids, const SubImgBox& box) const {
  const TraceFrame trace("source/vxPagedImg:PagedImg::getPageIDs()");
  ids.clear();
  const SubImgBox region = regionInImage(box, _imgExt);
  if (!region.isEmpty()) listPageIDs(ids, region, _pageExt, _pageStride);
}

void PagedImg::getPageIDs(std::vector<VXint64>& ids, const SubImgBox& box, const TVector<VXint64>& imgExt,
                          const TVector<VXint64>& pageExt) {
  const TraceFrame trace("source/vxPagedImg:PagedImg::getPageIDs()");
  ids.clear();
  const SubImgBox region = regionInImage(box, imgExt);
  if (!region.isEmpty()) listPageIDs(ids, region, pageExt, ceilQuotient(imgExt, pageExt).getStrides());
}

// Coming and going ----------------------------------------------------------------------------------------------------

void PagedImg::initPage(Cache& cache, VXint64 id, VXuint64 priority, VXuint64 size, void* data) {
  _initPage(cache, id, priority, size, data, false);
}

CachedBuffer& PagedImg::_initPage(Cache& cache, VXint64 id, VXuint64 priority, VXuint64 size, void* data,
                                  bool isLocked) {
  const TraceFrame trace("source/vxPagedImg:PagedImg::initPage()");
  checkFatal(_isPageID(id), VX_BAD_PAGE_ID);
  if (CachedBuffer* const page = _pages[id]) {
    page->_init(cache, priority, size, data, isLocked);
  } else {
    std::unique_ptr<CachedBuffer> newPage(guardedNew<CachedBuffer>(SourcePosition()));
    if (!newPage) throw static_cast<int>(VX_NO_MEMORY);
    newPage->_init(cache, priority, size, data, isLocked);
    _pages[id] = newPage.release();
  }
  _noPagesCalculated = false;
  return *_pages[id];
}

void PagedImg::removePage(VXint64 id, bool removeAlsoIfLocked) {
  if (!_isPageID(id) || !_pages[id]) return;
  if (_pages[id]->getLockCount() <= 0 || removeAlsoIfLocked) guardedDelete(_pages[id]);
}

void PagedImg::clearPageList() {
  const TraceFrame trace("source/vxPagedImg:PagedImg::clearPageList()");
  // Without a page since the last time, all entries are null.
  if (!_noPagesCalculated) {
    for (VXint64 id = 0; id < _numPages; ++id) removePage(id, true);
  }
  _noPagesCalculated = true;
}

void PagedImg::clearPageListAndMemoryImg() {
  const TraceFrame trace("source/vxPagedImg:PagedImg::clearPageListAndMemoryImg()");
  clearPageList();
  _memoryImg.clearMemoryImg();
}

// Copies --------------------------------------------------------------------------------------------------------------

void PagedImg::copyPages(const std::vector<VXint64>& ids, SubImg* dest, const ScaleShiftData& scaleShift,
                         BYPASS_TYPES type) const {
  const TraceFrame trace("source/vxPagedImg:PagedImg::copyPages()");
  for (const VXint64 id : ids) {
    const SubImg source = _wrapPage(id, type);
    if (!source.getData()) {
      report(VX_FATAL, "PagedImg::copyPages", VX_BAD_PARAMETER,
             "Fatal error in PagedImg::copyPages(): A page to be copied is invalid, maybe a wrong page id has been "
             "passed or we ran out of memory. Trying to continuing without copying that page.");
      continue;
    }
    checkFatal(dest != nullptr);
    dest->copySubImage(source, scaleShift);
  }
}

SubImg PagedImg::_wrapPage(VXint64 id, BYPASS_TYPES type) const {
  const CachedBuffer* const page = getPage(id, type);
  checkFatal(page != nullptr);
  const SubImgBox box = getPageBox(id);
  VXuint64 numVoxels = 0;
  VXuint64 numBytes = 0;
  // The type of the image may have changed since the page got its memory.
  const bool isComplete = page->isInitialized() && box.getNumVoxelsChecked(numVoxels) &&
                          multiplySizes(numVoxels, VXSizeOf(_dataType), numBytes) && page->getSize() >= numBytes;
  return SubImg(box, _dataType, isComplete ? page->getData() : nullptr);
}

}  // namespace vx
