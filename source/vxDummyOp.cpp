#include "vxDummyOp.h"

#include "vxErrorOutput.h"
#include "vxGuards.h"
#include "vxPagedImg.h"
#include "vxTraceBuffer.h"

namespace vx {

VX_CLASS_SOURCE(DummyOp, "BaseOp")

DummyOp::DummyOp() : BaseOp(0, 1) {
  const TraceFrame trace("source/vxDummyOp:DummyOp::DummyOp()");
  if (BaseOp::updateImageProps(this, 0) != VX_RESULT_OK) {
    report(VX_FATAL, "DummyOp::DummyOp:", VX_IMAGE_INVALID, "Could not make image valid. Continuing with invalid one.");
  }
}

DummyOp::DummyOp(const DummyOp& /*other*/) : DummyOp() {
  report(VX_FATAL, "DummyOp::DummyOp(const DummyOp &)", VX_MISUSED_INTERFACE,
         "Copy constructor of DummyOp is not implemented.");
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): nothing is assigned
DummyOp& DummyOp::operator=(const DummyOp& /*other*/) {
  report(VX_FATAL, "DummyOp&DummyOp::operator=(const DummyOp &)", VX_MISUSED_INTERFACE,
         "Assignment operator of DummyOp is not implemented.");
  return *this;
}

DummyOp::~DummyOp() = default;

// The image -----------------------------------------------------------------------------------------------------------

void DummyOp::calcOutImageProps(int outIndex) {
  const TraceFrame trace("source/vxDummyOp:DummyOp::calcOutImageProps()");
  PagedImg* const image = getOutImg(outIndex);
  checkFatal(image != nullptr);
  image->setImgExt(TVector<VXint64>(1));
  image->setPageExt(TVector<VXint64>(64, 64, 1, 1, 1, 1));
  image->setDataType(VXuint8Type);
  image->setMinVoxelValue(0);
  image->setMaxVoxelValue(1);
  image->setVoxelSize(1, 1, 1);
  image->getCDimInfos().clear();
  image->getTDimInfos().clear();
  image->getUDimInfos().clear();
  image->getImagePropertyContainer().clear();
}

SubImgBox DummyOp::calcInSubImageBox(int /*inIndex*/, const SubImgBox& /*outSubImgBox*/, int /*outIndex*/) {
  return SubImgBox(TVector<VXint64>(0), TVector<VXint64>(-1));
}

void DummyOp::calcOutSubImage(SubImg* outSubImg, int /*outIndex*/, SubImg* /*inSubImgs*/) {
  const TraceFrame trace("source/vxDummyOp:DummyOp::calcOutSubImage()");
  checkFatal(outSubImg != nullptr);
  outSubImg->fillSubImg(0);
}

void DummyOp::setOutOfDate() {
  report(VX_FATAL, "DummyOp::setOutOfDate:", VX_MISUSED_INTERFACE,
         "Cannot invalidate dummy image. Continuing with unchanged one.");
}

void DummyOp::setImgProps(const PagedImg& /*image*/) {
  report(VX_FATAL, "DummyOp::setImgProps:", VX_MISUSED_INTERFACE,
         "Cannot set properties of dummy image. Continuing with unchanged one.");
}

// The one instance ----------------------------------------------------------------------------------------------------

DummyOp* DummyOp::_dummyOpManager(bool destroy) {
  const TraceFrame trace("source/vxDummyOp:DummyOp::_dummyOpManager()");
  static constinit DummyOp* instance = nullptr;  // never destroyed by itself, since modules may outlive static objects
  if (destroy) {
    guardedDelete(instance);
  } else if (!instance) {
    instance = guardedNew<DummyOp>(SourcePosition());
    if (!instance) throw static_cast<int>(VX_NO_MEMORY);
  }
  return instance;
}

DummyOp* DummyOp::getGlobalInstance() { return _dummyOpManager(false); }

PagedImg* DummyOp::getGlobalOutImg() { return getGlobalInstance()->getOutImg(0); }

void DummyOp::destroyDummyOp() { _dummyOpManager(true); }

}  // namespace vx
