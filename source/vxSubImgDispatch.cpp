// The operations of a block on its voxels: from the type that is known at run time to the typed loops.

#include "vxErrorOutput.h"
#include "vxMemory.h"
#include "vxTSubImg.h"
#include "vxTraceBuffer.h"
#include "vxTruncate.h"
#include "vxTypeInfos.h"
#include "vxVoxelBlock.h"
#include "vxVoxelTypes.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace vx {

namespace {

// Calls operation(view) with the typed view of a block that suits its type, with the type in its slots.
template <class Operation>
void dispatch(const SubImg& block, const CallLabel& label, Operation&& operation) {
  const TypePush push(block.getDataType());
  const bool isExecuted = visitOutputType(push.getSlot(), [&](auto tag) {
    TSubImg<typename decltype(tag)::Type> view(block);
    operation(view);
  });
  if (!isExecuted) report(VX_FATAL, label, VX_BAD_DATA_TYPE, "Type case not executed.");
}

// The same for a block that is read while another one is in its slots.
template <class Operation>
void dispatchInput(const SubImg& block, const CallLabel& label, Operation&& operation) {
  const InputTypePush push(block.getDataType());
  const bool isExecuted = visitInputType(push.getSlot(), [&](auto tag) {
    const TSubImg<typename decltype(tag)::Type> view(block);
    operation(view);
  });
  if (!isExecuted) {
    reportComposed(VX_FATAL, label, VX_BAD_DATA_TYPE, [&] {
      return "Type case not executed, case type " + std::to_string(push.getSlot()) + " does not exist.";
    });
  }
}

// A number as a voxel: truncated and wrapped for integers, by the type's own operation for carriers.
template <class T>
StoredVoxel<T> voxelFrom(VXldouble value) {
  if constexpr (isStandardVoxel<T>) {
    return truncateTo<StoredVoxel<T>>(value);
  } else {
    return T(value);
  }
}

// A voxel that the caller gives as bytes. A carrier has room for more than the type's own bytes.
template <class T>
StoredVoxel<T> voxelFrom(const VXuint8* bytes) {
  StoredVoxel<T> voxel;
  if constexpr (isStandardVoxel<T>) {
    std::memcpy(&voxel, bytes, sizeof voxel);
  } else {
    std::memset(voxel.data(), 0, sizeof voxel);
    std::memcpy(voxel.data(), bytes, std::min<std::size_t>(sizeof voxel, VXTypeInfosTable[slotOf<T>].typeSize));
  }
  return voxel;
}

}  // namespace

void SubImg::copySubImage(const SubImg& inImg, const ScaleShiftData& scaleShift) {
  const TraceFrame trace("source/vxSubImg:SubImg::copySubImage()");
  dispatch(*this, "SubImg::copySubImage", [&](auto& out) {
    dispatchInput(inImg, "_copySubImage##DTYPE", [&](const auto& in) { out.copySubImg(in, scaleShift); });
  });
}

void SubImg::fillSubImg(VXldouble value) {
  const TraceFrame trace("source/vxSubImg:SubImg::fillSubImg()");
  dispatch(*this, "SubImg::fillSubImg", [=]<class T>(TSubImg<T>& view) { view.fillSubImg(voxelFrom<T>(value)); });
}

void SubImg::fillSubImgWithTypeData(const VXuint8* value) {
  const TraceFrame trace("source/vxSubImg:SubImg::fillSubImgWithTypeData()");
  if (!value) return;
  dispatch(*this, "SubImg::fillSubImgWithTypeData",
           [=]<class T>(TSubImg<T>& view) { view.fillSubImg(voxelFrom<T>(value)); });
}

void SubImg::fillBordersWithLDoubleValue(const SubImgBox& box, VXldouble value) {
  const TraceFrame trace("source/vxSubImg:SubImg::fillBordersWithLDoubleValue()");
  dispatch(*this, "SubImg::fillBordersWithLDoubleValue",
           [&]<class T>(TSubImg<T>& view) { view.fillBordersWithFillValue(box, voxelFrom<T>(value)); });
}

void SubImg::fillBordersWithTypeData(const SubImgBox& box, const VXuint8* value) {
  const TraceFrame trace("source/vxSubImg:SubImg::fillBordersWithTypeData()");
  if (!value) return;
  dispatch(*this, "SubImg::fillBordersWithTypeData",
           [&]<class T>(TSubImg<T>& view) { view.fillBordersWithFillValue(box, voxelFrom<T>(value)); });
}

void SubImg::fillBordersWithInputValues(const SubImgBox& box, const SubImg& inputSubImg) {
  const TraceFrame trace("source/vxSubImg:SubImg::fillBordersWithInputValues()");
  dispatch(*this, "SubImg::fillBordersWithInputValues", [&](auto& out) {
    dispatchInput(inputSubImg, "_fillBWIV##ODTYPE", [&](const auto& in) { out.fillBordersWithInputValues(box, in); });
  });
}

void SubImg::fillBordersWithClampedInputValues(SubImgBox box) {
  const TraceFrame trace("source/vxSubImg:SubImg::fillBordersWithClampedInputValues()");
  dispatch(*this, "SubImg::fillBordersWithClampedInputValues",
           [&](auto& view) { view.fillBordersWithClampedInputValues(box); });
}

bool SubImg::isOneValued() const {
  const TraceFrame trace("source/vxSubImg:SubImg::isOneValued()");
  bool result = false;
  dispatch(*this, "SubImg::isOneValued", [&](const auto& view) { result = view.isOneValued(); });
  return result;
}

VXint64 SubImg::calcMinMax(VXldouble& minValue, VXldouble& maxValue, const SubImgBox* validBox) const {
  const TraceFrame trace("source/vxSubImg:SubImg::calcMinMax()");
  VXint64 numVoxels = 0;
  dispatch(*this, "SubImg::calcMinMax", [&]<class T>(const TSubImg<T>& view) {
    StoredVoxel<T> smallest = StoredVoxel<T>();
    StoredVoxel<T> largest = StoredVoxel<T>();
    numVoxels = view.calcMinMax(smallest, largest, validBox);
    minValue = static_cast<VXldouble>(smallest);
    maxValue = static_cast<VXldouble>(largest);
  });
  return numVoxels;
}

std::ostream& operator<<(std::ostream& s, const SubImg& fc) {
  const TraceFrame trace("source/vxSubImg:operator<<(SubImg)");
  const SubImgBox box = fc.getBox();
  s << "SubImg: box=" << box << ", type=" << VXNameFromDataType(fc.getDataType()) << ", data=" << fc.getData() << '\n';
  dispatch(fc, "operator<<(ostream& s, const VX_NAMESPACE::SubImg &fc)", [&]<class T>(const TSubImg<T>& view) {
    if (!view.getData()) return;
    const auto getText = VXTypeInfosTable[slotOf<T>].getStringValue;
    const auto* voxel = static_cast<const unsigned char*>(view.getData());
    const VXint64 lineLen = box.getExt().x;
    walkLines(box, [&](const TVector<VXint64>& position) {
      s << position << ':';
      for (VXint64 i = 0; i < lineLen; ++i, voxel += sizeof(StoredVoxel<T>)) {
        const MemoryPtr<char> text(getText(voxel));
        s << ' ' << (text ? text.get() : "");
      }
      s << '\n';
    });
  });
  return s;
}

}  // namespace vx
