#include "vxSubImg.h"

#include "vxDataTypes.h"
#include "vxErrorOutput.h"
#include "vxGuards.h"
#include "vxMemory.h"
#include "vxTraceBuffer.h"
#include "vxVoxelBlock.h"

#include <cstring>

namespace vx {

VX_CLASS_SOURCE(SubImg, "ImageProperties")

// Strides and size are those of an extent of 0 and a type of one byte.
SubImg::SubImg() : _stride(1, 0, 0, 0, 0, 0), _dataTypeSize(1) {}

SubImg::SubImg(const SubImgBox& box, VXDataType dataType, void* data) : _data(data), _dataTypeSize(VXSizeOf(dataType)) {
  _dataType = dataType;
  _position = box.v1;
  SubImg::setImgExt(box.v2 - box.v1 + TVector<VXint64>(1));
}

SubImg::~SubImg() = default;

void SubImg::setImgExt(const TVector<VXint64>& imgExt) {
  _imgExt = imgExt;
  _stride = _imgExt.getStrides();
}

void SubImg::setDataType(int dataType) {
  ImageProperties::setDataType(dataType);
  _dataTypeSize = VXSizeOf(_dataType);
}

void SubImg::setData(void* data) { _data = data; }

void SubImg::setImgProps(const ImageProperties& other) {
  ImageProperties::setImgProps(other);
  _dataTypeSize = VXSizeOf(_dataType);
  setImgExt(other.getImgExt());
}

void SubImg::setBox(const SubImgBox& box) {
  _position = box.v1;
  setImgExt(box.v2 - box.v1 + TVector<VXint64>(1));
}

void SubImg::allocate(VXMemoryErrorHandling handling) {
  const TraceFrame trace("source/vxSubImg:SubImg::allocate()");
  if (!VXIsValidType(_dataType)) {
    report(VX_ERROR, "SubImg::allocate()", VX_BAD_DATA_TYPE,
           "The subimage has an invalid data type. The call is ignored (data pointer is not set and no data is "
           "allocated).");
    return;
  }
  VXuint64 numVoxels = 0;
  VXuint64 numBytes = 0;
  if (!getBox().getNumVoxelsChecked(numVoxels) || !multiplySizes(numVoxels, VXSizeOf(_dataType), numBytes)) {
    numBytes = ~VXuint64{0};  // no allocator has that much
  }
  setData(VXAlloc(numBytes, handling));
}

void SubImg::free() {
  const TraceFrame trace("source/vxSubImg:SubImg::free()");
  VXFree(_data);
  setData(nullptr);
}

void SubImg::compare(const SubImg& other, bool* sameBox, bool* sameDataType, bool* thisInsideOther,
                     bool* otherInsideThis, bool* sameContents, TVector<VXint64>* firstDifference) const {
  const TraceFrame trace("source/vxSubImg:SubImg::compare()");
  const SubImgBox box = getBox();
  const SubImgBox otherBox = other.getBox();
  const SubImgBox intersection = SubImgBox::intersect(box, otherBox);
  const bool areBoxesSame = box == otherBox;
  const bool areTypesSame = _dataType == other._dataType;
  if (sameBox) *sameBox = areBoxesSame;
  if (sameDataType) *sameDataType = areTypesSame;
  if (thisInsideOther) *thisInsideOther = areBoxesSame || intersection == box;
  if (otherInsideThis) *otherInsideThis = areBoxesSame || intersection == otherBox;
  if (sameContents) *sameContents = false;
  if (firstDifference) *firstDifference = TVector<VXint64>(-1);

  if ((!sameContents && !firstDifference) || !areTypesSame || !VXIsValidType(_dataType) || !_data || !other._data) {
    return;
  }
  const std::size_t voxelSize = _dataTypeSize;
  const auto lineOf = [&](const SubImg& block, const TVector<VXint64>& position) {
    return VoxelBlock::move(block._data, TVector<VXint64>::dot(position - block._position, block._stride), voxelSize);
  };
  const auto lineLen = static_cast<std::size_t>(intersection.getExt().x);
  const bool isSame = walkLines(intersection, [&](const TVector<VXint64>& position) {
    const unsigned char* const a = lineOf(*this, position);
    const unsigned char* const b = lineOf(other, position);
    if (std::memcmp(a, b, lineLen * voxelSize) == 0) return true;
    std::size_t i = 0;
    while (std::memcmp(a + i * voxelSize, b + i * voxelSize, voxelSize) == 0) ++i;
    if (firstDifference) {
      *firstDifference = position;
      firstDifference->x += static_cast<VXint64>(i);
    }
    return false;
  });
  if (sameContents) *sameContents = isSame;
}

VXint64 SubImg::coordToIndex(VXint64 x, VXint64 y, VXint64 z, VXint64 c, VXint64 t, VXint64 u,
                             const TVector<VXint64>& ext) {
  VXint64 index = u;
  index = wrapAdd(wrapMultiply(index, ext.t), t);
  index = wrapAdd(wrapMultiply(index, ext.c), c);
  index = wrapAdd(wrapMultiply(index, ext.z), z);
  index = wrapAdd(wrapMultiply(index, ext.y), y);
  return wrapAdd(wrapMultiply(index, ext.x), x);
}

VXint64 SubImg::coordToIndex(const TVector<VXint64>& position, const TVector<VXint64>& ext) {
  return coordToIndex(position.x, position.y, position.z, position.c, position.t, position.u, ext);
}

TVector<VXint64> SubImg::indexToCoord(VXint64 index, const TVector<VXint64>& ext) {
  const TraceFrame trace("source/vxSubImg:SubImg::indexToCoord()");
  TVector<VXint64> position;
  VXint64 stride = ext.getStrides().u;
  for (std::size_t d = ext.size() - 1; d > 0; --d) {
    // The first stride is 0 if a component is; a later one also where their product had wrapped.
    checkFatal(stride != 0);
    position[d] = wrapDivide(index, stride);
    index = wrapSubtract(index, wrapMultiply(position[d], stride));
    stride = wrapDivide(stride, ext[d - 1]);
  }
  position.x = index;
  return position;
}

}  // namespace vx
