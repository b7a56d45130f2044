/// \file vxTSubImgImpl.h
/// The members of TSubImg, for the sources that instantiate them.

#ifndef VX_T_SUB_IMG_IMPL_H
#define VX_T_SUB_IMG_IMPL_H

#include "vxErrorOutput.h"
#include "vxTSubImg.h"
#include "vxTypeInfos.h"
#include "vxVoxelBlock.h"
#include "vxVoxelBorders.h"
#include "vxVoxelCopy.h"
#include "vxVoxelLoops.h"
#include "vxVoxelTypes.h"

#include <algorithm>

namespace vx {

/// \return whether voxels of a type are stored as `T`.
template <class T>
bool isStoredAs(VXDataType dataType) {
  if (isStandardVoxel<T> && dataType == slotOf<T>) return true;
  const VXDataType physicalType = VXGetPhysicalDataType(dataType);
  const auto formatOf = [](VXDataType type) { return type == VXldoubleType ? VXDataType{VXdoubleType} : type; };
  return physicalType >= 0 && formatOf(physicalType) == formatOf(physicalTypeOf<T>);
}

/// \return whether voxels of the second type become voxels of the first by copying their bits: those of one type, and
/// signed and unsigned integers of one width.
inline bool areCopiedBitByBit(VXDataType a, VXDataType b) {
  // The types 0 to 5 are pairs of a signed and an unsigned type.
  return a == b || (a >= 0 && b >= 0 && a < 6 && b < 6 && a / 2 == b / 2);
}

template <class T>
TSubImg<T>::TSubImg(const SubImg& subImg) : _sizeOfT(sizeof(Voxel)) {
  _dataType = subImg.getDataType();
  _dataTypeSize = VXSizeOf(_dataType);
  _position = subImg.getPosition();
  _imgExt = subImg.getImgExt();
  _stride = subImg.getStride();
  TSubImg::setData(subImg.getData());
  if (_data && !isStoredAs<T>(_dataType)) {
    report(VX_FATAL, "TSubImg::TSubImg()", VX_BAD_DATA_TYPE,
           "Mismatch of data type between argument and template typename.");
  }
}

template <class T>
TSubImg<T>::~TSubImg() = default;

template <class T>
void TSubImg<T>::setImgExt(const TVector<VXint64>& imgExt) {
  SubImg::setImgExt(imgExt);
  // The origin follows from the box.
  TSubImg::setData(_data);
}

template <class T>
void TSubImg<T>::setData(void* data) {
  _data = data;
  _typedData = static_cast<Voxel*>(data);
  _cursor = _typedData;
  const SubImgBox box = getBox();
  const TVector<VXint64> lowest = TVector<VXint64>::compMin(box.v1, box.v2);
  const VXint64 index = TVector<VXint64>::dot(lowest, _stride);
  void* const origin = VoxelBlock::move(data, wrapSubtract(VXint64{0}, index), static_cast<VXuint64>(_sizeOfT));
  _originData = static_cast<Voxel*>(origin);
}

template <class T>
VoxelBlock TSubImg<T>::_getBlock() const {
  const auto bytes = [](Voxel* voxels) { return static_cast<unsigned char*>(static_cast<void*>(voxels)); };
  return {getBox(), _stride, static_cast<VXuint64>(_sizeOfT), bytes(_typedData), bytes(_originData), _dataType};
}

template <class T>
template <class IN>
void TSubImg<T>::copySubImg(const TSubImg<IN>& inImg) {
  const VoxelBlock out = _getBlock();
  const VoxelBlock in = inImg._getBlock();
  if (!areBothFilled(out, in)) return;
  const SubImgBox box = boxToCopy(out, in);
  if (box.isEmpty()) return;
  if (out.dataType == in.dataType) {
    copyVoxels(box, out, in);
  } else {
    const TypePush push(out.dataType, 0, in.dataType, isInputCarrier<IN>);
    convertVoxels(box, out, in, conversionLoops<T, IN>().convert);
  }
}

template <class T>
template <class IN>
void TSubImg<T>::copySubImg(const TSubImg<IN>& inImg, const ScaleShiftData& scaleShift) {
  if (isNeutral(scaleShift)) {
    copySubImg(inImg);
    return;
  }
  const VoxelBlock out = _getBlock();
  const VoxelBlock in = inImg._getBlock();
  if (!areBothFilled(out, in)) return;
  const TypePush push(out.dataType, 0, in.dataType, isInputCarrier<IN>);
  const ConvertScaledRun loop = out.dataType == in.dataType ? mappingLoop<T>() : conversionLoops<T, IN>().convertScaled;
  convertVoxels(boxToCopy(out, in), out, in, loop, scaleShift);
}

template <class T>
void TSubImg<T>::fillSubImg(Voxel value) {
  const TypePush push(_dataType);
  const VoxelBlock block = _getBlock();
  block.checkData();
  fillLoop<T>()(block.data, static_cast<std::size_t>(std::max(VXint64{0}, block.box.getNumVoxels())), &value);
}

template <class T>
FillAreaParams TSubImg<T>::_calcFillAreaParams(const SubImgBox& box) const {
  return calcFillArea(getBox(), box, VXSizeOf(_dataType));
}

template <class T>
void TSubImg<T>::fillBordersWithFillValue(const SubImgBox& box, Voxel value) {
  const TypePush push(_dataType);
  _moveCursor(fillBorders(_getBlock(), box, fillLoop<T>(), &value));
}

template <class T>
template <class IN>
void TSubImg<T>::fillBordersWithInputValues(const SubImgBox& box, const TSubImg<IN>& input) {
  const VoxelBlock in = input._getBlock();
  const TypePush push(_dataType, 0, in.dataType, isInputCarrier<IN>);
  const bool isRaw = areCopiedBitByBit(_dataType, in.dataType);
  _moveCursor(copyBorders(_getBlock(), box, in, isRaw ? nullptr : conversionLoops<T, IN>().convert));
}

template <class T>
void TSubImg<T>::fillBordersWithClampedInputValues(SubImgBox box) {
  const VoxelBlock block = _getBlock();
  box = SubImgBox::intersect(block.box, box);
  if (box.isEmpty()) return;
  const TypePush push(_dataType);
  _moveCursor(clampBorders(block, box, fillLoop<T>()));
}

template <class T>
VXint64 TSubImg<T>::calcMinMax(Voxel& minValue, Voxel& maxValue, const SubImgBox* validBox) const {
  const VoxelBlock block = _getBlock();
  const SubImgBox box = validBox ? SubImgBox::intersect(block.box, *validBox) : block.box;
  const VXint64 numVoxels = box.getNumVoxels();
  if (numVoxels == 0) {
    minValue = maxValue = Voxel(0);
    return 0;
  }
  const TypePush push(_dataType);
  block.checkData();
  Voxel smallest = voxelLoops::load<T>(block.at(box.v1), 0);
  Voxel largest = smallest;
  const MinMaxRun loop = minMaxLoop<T>();
  walkRuns(box, block, [&](const unsigned char* voxels, std::size_t n) { loop(voxels, n, &smallest, &largest); });
  minValue = smallest;
  maxValue = largest;
  return numVoxels;
}

template <class T>
bool TSubImg<T>::isOneValued() const {
  const VoxelBlock block = _getBlock();
  if (!block.data || block.box.isEmpty()) return false;
  const TypePush push(_dataType);
  const Voxel first = voxelLoops::load<T>(block.at(block.box.v1), 0);
  const IsOneValuedRun loop = isOneValuedLoop<T>();
  return walkRuns(block.box, block,
                  [&](const unsigned char* voxels, std::size_t n) { return loop(voxels, n, &first); });
}

template <class T>
void TSubImg<T>::_moveCursor(void* end) {
  if (end) _cursor = static_cast<Voxel*>(end);
}

}  // namespace vx

#endif
