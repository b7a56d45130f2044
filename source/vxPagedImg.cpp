#include "vxPagedImg.h"

#include "vxBaseOpTools.h"
#include "vxErrorOutput.h"
#include "vxGuards.h"
#include "vxPageDivision.h"
#include "vxTraceBuffer.h"

#include <limits>
#include <new>
#include <utility>

namespace vx {

VX_CLASS_SOURCE(PagedImg, "MedicalImageProperties")

namespace {

constexpr TVector<VXint64> defaultPageExt(128, 128, 1, 1, 1, 1);

}  // namespace

PagedImg::PagedImg(BaseOp* op, VXint64 outIndex)
    : _op(op),
      _outIndex(outIndex),
      _pageExt(defaultPageExt),
      _stateInfoString(VXGetErrorCodeDescription(VX_IMAGE_NOT_CALCULATED)),
      _stateInfoErrorCode(VX_IMAGE_NOT_CALCULATED) {}

PagedImg::PagedImg(const PagedImg& /*other*/) : PagedImg(nullptr, -1) {
  report(VX_FATAL, "PagedImg::PagedImg(const PagedImg&)", VX_MISUSED_INTERFACE,
         "Usage of copy constructor of PagedImg is senseless.");
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): nothing is assigned
PagedImg& PagedImg::operator=(const PagedImg& /*other*/) {
  report(VX_FATAL, "PagedImg::operator=(const PagedImg&)", VX_MISUSED_INTERFACE,
         "Usage of assignent operator of PagedImg is senseless.");
  return *this;
}

PagedImg::~PagedImg() {
  const TraceFrame trace("source/vxPagedImg:PagedImg::~PagedImg()");
  clearPageListAndMemoryImg();
  _deletePageList();
}

// Extents -------------------------------------------------------------------------------------------------------------

void PagedImg::setImgExt(const TVector<VXint64>& imgExt) {
  const TraceFrame trace("source/vxPagedImg:PagedImg::setImgExt()");
  MedicalImageProperties::setImgExt(imgExt);
  _updateAll();
}

void PagedImg::setImgExt(const SubImgBox& box) { setImgExt(box.getExt()); }

void PagedImg::setPageExt(const TVector<VXint64>& pageExt) {
  const TraceFrame trace("source/vxPagedImg:PagedImg::setPageExt()");
  const TVector<VXint64> one(1);
  if (TVector<VXint64>::compMin(pageExt, one) == one) {
    _pageExt = pageExt;
  } else {
    report(VX_FATAL, "PagedImg::setPageExt()", VX_BAD_PARAMETER,
           "Page extents must be >0 in each dimension! Continuing with 128x128x1x1x1x1.");
    _pageExt = defaultPageExt;
  }
  _updateAll();
}

void PagedImg::setImgProps(const PagedImg& other) {
  const TraceFrame trace("source/vxPagedImg:PagedImg::setImgProps()");
  MedicalImageProperties::setImgProps(other);
  setPageExt(other._pageExt);
}

void PagedImg::_updateAll() {
  const TraceFrame trace("source/vxPagedImg:PagedImg::_updateAll()");
  clearPageListAndMemoryImg();
  TVector<VXint64> pagesPerDim = ceilQuotient(_imgExt, _pageExt);
  VXint64 numPages = saturatingProduct(pagesPerDim);
  if (numPages > BaseOpTools::MAX_NUM_PAGES_PER_IMAGE) {
    report(VX_WARNING, "PagedImg::_updateAll()", VX_BAD_PARAMETER,
           "The specified page extent causes that too many pages for this image would be created. Therefore the page "
           "extent is going to be optimized to avoid too many pages.");
    TVector<VXint64> pageExt(64, 64, 1, 1, 1, 1);
    BaseOpTools::adaptPageExt(pageExt, _dataType, _imgExt, TVector<VXint64>(), TVector<VXint64>(32, 32, 1, 1, 1, 1),
                              TVector<VXint64>(), TVector<VXint64>(256, 256, 1, 1, 1, 1));
    _pageExt = pageExt;
    pagesPerDim = ceilQuotient(_imgExt, _pageExt);
    numPages = saturatingProduct(pagesPerDim);
  }
  _pagesPerDim = pagesPerDim;
  _pageStride = pagesPerDim.getStrides();
  _reallocPages(numPages < 0 ? -numPages : numPages);
}

void PagedImg::_reallocPages(VXint64 count) {
  clearPageList();
  if (count == _numPages) return;  // all entries are null
  _deletePageList();
  constexpr VXint64 maxCount = std::numeric_limits<std::ptrdiff_t>::max() / static_cast<VXint64>(sizeof(void*));
  if (count <= maxCount) _pages = new (std::nothrow) CachedBuffer*[static_cast<std::size_t>(count)]();
  if (!_pages) {
    report(VX_FATAL, "PagedImg::_reallocPages", VX_NO_MEMORY, "Returning without valid page list");
    throw static_cast<int>(VX_NO_MEMORY);
  }
  _numPages = count;
}

void PagedImg::_deletePageList() {
  clearPageList();
  _numPages = 0;
  delete[] std::exchange(_pages, nullptr);
  _noPagesCalculated = true;
}

// State ---------------------------------------------------------------------------------------------------------------

void PagedImg::setStateInfo(const std::string& text, int code) {
  _stateInfoString = text;
  _stateInfoErrorCode = code;
}

void PagedImg::setStateInfoErrorCode(int code) { setStateInfo(VXGetErrorCodeDescription(code), code); }

const std::string& PagedImg::getStateInfoString() const { return _stateInfoString; }

int PagedImg::getStateInfoErrorCode() const { return _stateInfoErrorCode; }

}  // namespace vx
