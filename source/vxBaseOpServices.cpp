// What modules ask of the default host.

#include "vxBaseOp.h"
#include "vxBaseOpTools.h"
#include "vxHost.h"
#include "vxMemory.h"
#include "vxPagedImg.h"
#include "vxTraceBuffer.h"

namespace vx {

int BaseOp::processAllPages(int outIndex, int inIndex, SubImgBox box) {
  const TraceFrame trace("source/vxBaseOp:BaseOp::processAllPages()");
  return Host::getDefaultHost().processAllPages(*this, outIndex, inIndex, box);
}

int BaseOp::getTile(BaseOp* op, VXint64 outIndex, const SubImgBox& box, int dataType, void** data,
                    const ScaleShiftData& scaleShift) {
  const TraceFrame trace("source/vxBaseOp:BaseOp::getTile()");
  if (!op) return VX_BAD_MODULE_POINTER;
  return Host::getDefaultHost().getTile(*op, outIndex, box, dataType, data, scaleShift);
}

int BaseOp::getTile(BaseOp* op, VXint64 outIndex, SubImg& subImg, const ScaleShiftData& scaleShift) {
  const TraceFrame trace("source/vxBaseOp:BaseOp::getTile()");
  if (!op) return VX_BAD_MODULE_POINTER;
  return Host::getDefaultHost().getTile(*op, outIndex, subImg, scaleShift);
}

int BaseOp::getTile(BaseOp* op, VXint64 outIndex, const SubImgBox& box, int dataType, CachedBuffer& cachedBuffer,
                    const ScaleShiftData& scaleShift) {
  const TraceFrame trace("source/vxBaseOp:BaseOp::getTile()");
  if (!op) return VX_BAD_MODULE_POINTER;
  return Host::getDefaultHost().getTile(*op, outIndex, box, dataType, cachedBuffer, scaleShift);
}

void BaseOp::freeTile(void* data) { Host::getDefaultHost().freeTile(data); }

int BaseOp::updateImageProps(BaseOp* op, VXint64 outIndex) {
  const TraceFrame trace("source/vxBaseOp:BaseOp::updateImageProps()");
  if (!op) return VX_BAD_MODULE_POINTER;
  return Host::getDefaultHost().updateImageProps(*op, outIndex);
}

void BaseOp::updateProgress(const char* info1, const char* info2) {
  Host::getDefaultHost().updateProgress(info1, info2);
}

bool BaseOp::shouldTerminate() { return Host::getDefaultHost().shouldTerminate(); }

Field* BaseOp::getPressedNotifyField() { return Host::getDefaultHost().getPressedNotifyField(); }

std::string BaseOp::getVoxelValueAsString(BaseOp& op, VXint64 outIndex, const TVector<VXint64>& position,
                                          int* errorCode, const std::string& errorResult) {
  const TraceFrame trace("source/vxBaseOp:BaseOp::getVoxelValueAsString()");
  int ignoredCode = 0;
  int& code = errorCode ? *errorCode : ignoredCode;
  const PagedImg* const image = op.getOutImg(outIndex);
  if (!image) {
    code = VX_BAD_OUTPUT_INDEX;
    return errorResult;
  }
  const SubImgBox voxel(position, position);
  if (SubImgBox::intersect(voxel, image->getBoxFromImgExt()) != voxel) {
    code = VX_BAD_PAGE_ID;
    return std::string();
  }
  // The request may bring the image up to date, and its type may change by that; the tile keeps this one.
  const VXDataType dataType = image->getDataType();
  void* data = nullptr;
  code = getTile(&op, outIndex, voxel, dataType, &data);
  const MemoryPtr<void> tile(data);
  if (code != VX_RESULT_OK || !tile) return errorResult;
  const MemoryPtr<char> text(VXGetVoxelValueAsString(tile.get(), dataType));
  return text ? std::string(text.get()) : errorResult;
}

void BaseOp::adaptPageExt(TVector<VXint64>& pageExt, int dataType, const TVector<VXint64>& imgExt,
                          const TVector<VXint64>& preferredExt, const TVector<VXint64>& stepExt,
                          const TVector<VXint64>& minExt, const TVector<VXint64>& maxExt) {
  BaseOpTools::adaptPageExt(pageExt, dataType, imgExt, preferredExt, stepExt, minExt, maxExt);
}

}  // namespace vx
