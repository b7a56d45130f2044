// Tiles of an image, and how it prints.

#include "vxBaseOp.h"
#include "vxDataTypes.h"
#include "vxErrorOutput.h"
#include "vxPagedImg.h"
#include "vxTraceBuffer.h"

namespace vx {

template <class Request>
int PagedImg::_requestTile(const char* label, const Request& request) const {
  if (_op) return request();
  report(VX_FATAL, label, VX_MISUSED_INTERFACE,
         "Invalid call to PagedImg::getTile although no BaseOp pointer is specified. Not executing getTile call.");
  return VX_MISUSED_INTERFACE;
}

int PagedImg::getTile(const SubImgBox& box, int dataType, void** data, const ScaleShiftData& scaleShift) const {
  const TraceFrame trace("source/vxPagedImg:PagedImg::getTile()");
  return _requestTile("PagedImg::getTile(loc, dataType, data, scaleShiftData)",
                      [&] { return BaseOp::getTile(_op, _outIndex, box, dataType, data, scaleShift); });
}

int PagedImg::getTile(SubImg& subImg, const ScaleShiftData& scaleShift) const {
  const TraceFrame trace("source/vxPagedImg:PagedImg::getTile()");
  return _requestTile("PagedImg::getTile(subImg, scaleShiftData)",
                      [&] { return BaseOp::getTile(_op, _outIndex, subImg, scaleShift); });
}

int PagedImg::getTile(const SubImgBox& box, int dataType, CachedBuffer& cachedBuffer,
                      const ScaleShiftData& scaleShift) const {
  const TraceFrame trace("source/vxPagedImg:PagedImg::getTile()");
  return _requestTile("PagedImg::getTile(loc, dataType, cachedBuffer, scaleShiftData)",
                      [&] { return BaseOp::getTile(_op, _outIndex, box, dataType, cachedBuffer, scaleShift); });
}

void PagedImg::freeTile(void* data) const {
  const TraceFrame trace("source/vxPagedImg:PagedImg::freeTile()");
  if (!_op) {
    report(VX_FATAL, "PagedImg::freeTile(data)", VX_MISUSED_INTERFACE,
           "Invalid call to PagedImg::getTile although no BaseOp pointer is specified. Not executing freeTile call.");
  }
  BaseOp::freeTile(data);
}

// Printing ------------------------------------------------------------------------------------------------------------

void PagedImg::printPageData(VXint64 id, std::ostream& stream) const {
  const TraceFrame trace("source/vxPagedImg:PagedImg::printPageData()");
  stream << _wrapPage(id, OWN_PAGE);
}

void PagedImg::printPages(std::ostream& stream) const {
  const TraceFrame trace("source/vxPagedImg:PagedImg::printPages()");
  stream << "-----------------VALID PAGES----------------------\n";
  // A line end where a row is complete, and another one for each higher dimension that is.
  const VXint64 lineEnds[] = {_pageStride.y, _pageStride.z, _pageStride.c, _pageStride.t, _pageStride.u};
  for (VXint64 id = 0; id < _numPages; ++id) {
    stream << isValidPage(id) << ' ';
    for (const VXint64 numPages : lineEnds) {
      if ((id + 1) % numPages == 0) stream << '\n';
    }
  }
  stream << "^^^^^^^^^^^^^^^^^VALID PAGES^^^^^^^^^^^^^^^^^^^^^^^^\n";
}

std::ostream& operator<<(std::ostream& stream, const PagedImg& image) {
  const TraceFrame trace("source/vxPagedImg:operator<<(PagedImg)");
  const auto line = [&stream](const char* head) -> std::ostream& { return stream << "  " << head << ": "; };
  const Tvec3<double> voxelSize = image.getVoxelSize();
  line("ImgExt       ") << image.getImgExt() << '\n';
  line("PageSetExt   ") << image.getPageExt() << '\n';
  line("PagesPerDim  ") << image.getPagesPerDim() << '\n';
  line("PageStride   ") << image.getPageStride() << '\n';
  line("NumPages     ") << image.getNumPages() << '\n';
  line("OutIndex     ") << image.getOutIndex() << '\n';
  line("InPlaceIndex ") << image.getInplaceIndex() << '\n';
  line("BypassIndex  ") << image.getBypassIndex() << '\n';
  line("Data Type    ") << VXNameFromDataType(image.getDataType()) << '\n';
  line("MinVoxelValue") << image.getMinVoxelValue() << '\n';
  line("MaxVoxelValue") << image.getMaxVoxelValue() << '\n';
  line("VoxelSize    ") << '(' << voxelSize[0] << ',' << voxelSize[1] << ',' << voxelSize[2] << ")\n";
  line("UpToDate     ") << image.isUpToDate() << '\n';
  line("State        ") << image.getStateInfoErrorCode() << ' ' << image.getStateInfoString() << '\n';
  line("MemoryImg    ") << image.getMemoryImg().getAsString() << '\n';
  return stream;
}

}  // namespace vx
