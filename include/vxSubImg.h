/// \file vxSubImg.h
/// A block of voxels in memory, of a type that is known at run time.

#ifndef VX_SUB_IMG_H
#define VX_SUB_IMG_H

#include "vxImageProperties.h"
#include "vxScaleShiftData.h"
#include "vxSubImgBox.h"
#include "vxTypes.h"

#include <ostream>

namespace vx {

/// A box in image coordinates, a voxel type and a pointer to voxels: pages, tiles and cached buffers are passed around
/// as this.
///
/// Voxels lie in memory without gaps, x fastest, then y, z, c, t, u, in the format of the type. The block owns nothing:
/// it neither allocates nor frees on its own, and a copy of it shares the voxels. Whoever calls allocate() calls free()
/// or hands the pointer on.
///
/// The operations on voxels choose the loops for the type once a call. For a registered type they bring its record into
/// the slots of its carrier and take it out again, also on an exception; a type without loops, as an invalid one, is
/// reported as fatal with ::VX_BAD_DATA_TYPE and "Type case not executed.", and no voxel changes. What else may fail is
/// told at TSubImg. A block is used by one thread at a time; the voxel type may be changed at any time and only says
/// how the memory is read.
class VX_EXPORT SubImg : public ImageProperties {
 public:
  /// An empty block at the origin, of type ::VXuint8Type, without memory.
  SubImg();
  /// \param box region in image coordinates. \param dataType voxel type, not tested.
  /// \param data first voxel, or null. It stays with the caller.
  SubImg(const SubImgBox& box, VXDataType dataType, void* data = nullptr);

  /// Copies everything; the voxels are shared.
  SubImg(const SubImg& other) = default;
  /// \copydoc SubImg(const SubImg&)
  SubImg& operator=(const SubImg& other) = default;

  /// Leaves the voxels alone.
  ~SubImg() override;

  /// Sets the extent and with it the strides; the position stays. \param imgExt voxels in each dimension, not tested.
  void setImgExt(const TVector<VXint64>& imgExt) override;
  /// \copydoc ImageProperties::setDataType()
  void setDataType(int dataType) override;

  VX_CLASS_HEADER(SubImg)

  /// Stores the pointer to the first voxel. \param data may be null; it stays with the caller.
  virtual void setData(void* data);

  /// Copies extent, type and range of values; position and data stay.
  void setImgProps(const ImageProperties& other);

  /// \return the region, from the position with the extent; empty if a component of the extent is below 1.
  SubImgBox getBox() const { return SubImgBox(_position, _position + _imgExt - TVector<VXint64>(1)); }
  /// Sets position, extent and strides; the data pointer stays. \param box region in image coordinates, may be empty.
  void setBox(const SubImgBox& box);

  /// \return image coordinates of the first voxel.
  const TVector<VXint64>& getPosition() const { return _position; }
  /// \return distances in voxels between neighbours in each dimension.
  const TVector<VXint64>& getStride() const { return _stride; }
  /// \return bytes of a voxel; 0 for an invalid type.
  VXuint32 getDataTypeSize() const { return _dataTypeSize; }
  /// \return the first voxel, or null for a block without memory. The voxels may be written also through a constant
  /// block, which only fixes where they are.
  void* getData() const { return _data; }

  /// Allocates memory for the block with VXAlloc(); a former pointer is not freed and is lost.
  ///
  /// An invalid type is reported as an error with ::VX_BAD_DATA_TYPE and nothing changes. An empty block asks for 0
  /// bytes. Where memory is missing, or the size in bytes is too large to be told, the data pointer is null.
  /// \param handling what to do if memory is missing.
  void allocate(VXMemoryErrorHandling handling);

  /// Gives the memory back with VXFree() and nulls the data pointer. A block without memory may be freed.
  void free();

  /// Copies and converts what the two blocks have in common; other voxels of this block stay.
  ///
  /// Voxels of one type are copied as memory. Others are converted as by a C cast: numbers wrap or are truncated toward
  /// zero, never rounded, never clamped. A mapping is computed in 8-byte floating point: value * scale, then + shift.
  /// A mapping that changes nothing by more than 2.2e-16 counts as none. Registered types use their own operations.
  /// A block without data is reported as an error with ::VX_BAD_POINTER, and no voxel changes.
  /// \param inImg block to be read; must not overlap this one in memory.
  /// \param scaleShift mapping of the values.
  void copySubImage(const SubImg& inImg, const ScaleShiftData& scaleShift = ScaleShiftData());

  /// Sets all voxels. \param value converted as by a cast, a registered type converts it by `castFromDouble`.
  /// \throw int ::VX_BAD_POINTER, reported as fatal, for a block without data.
  void fillSubImg(VXldouble value);
  /// Sets all voxels to one voxel. \param value a voxel of the block's type at any address; null does nothing.
  /// \throw int ::VX_BAD_POINTER, reported as fatal, for a block without data.
  void fillSubImgWithTypeData(const VXuint8* value);

  /// Sets all voxels of this block outside a box. \param box may reach beyond the block or be empty.
  /// \param value as for fillSubImg().
  void fillBordersWithLDoubleValue(const SubImgBox& box, VXldouble value);
  /// Sets all voxels of this block outside a box. \param box as for fillBordersWithLDoubleValue().
  /// \param value as for fillSubImgWithTypeData().
  void fillBordersWithTypeData(const SubImgBox& box, const VXuint8* value);
  /// Copies voxels from another block to all positions of this block outside a box, converted as by copySubImage()
  /// but for signed and unsigned integers of one width, which are copied bit by bit.
  /// \param box as for fillBordersWithLDoubleValue().
  /// \param inputSubImg must cover all of these positions, which is not tested.
  void fillBordersWithInputValues(const SubImgBox& box, const SubImg& inputSubImg);
  /// Sets all voxels of this block outside a box to the nearest voxel within the box, each dimension by itself.
  /// \param box cut to this block first; if nothing is left of it, no voxel changes.
  void fillBordersWithClampedInputValues(SubImgBox box);

  /// \return whether all voxels are equal by `==`; false for an empty block, without data, and for a first voxel NaN.
  bool isOneValued() const;

  /// Finds the range of the voxels.
  /// \param minValue,maxValue take the range, 0 if there are no voxels. A NaN counts only where it is the first voxel.
  /// \param validBox restricts the search to a box; null takes the whole block.
  /// \return number of voxels that were looked at.
  /// \throw int ::VX_BAD_POINTER, reported as fatal, for a block without data.
  VXint64 calcMinMax(VXldouble& minValue, VXldouble& maxValue, const SubImgBox* validBox = nullptr) const;

  /// Compares two blocks. Each result is written if its pointer is not null.
  /// \param other the other block.
  /// \param sameBox,sameDataType whether these are equal.
  /// \param thisInsideOther,otherInsideThis whether one region contains the other.
  /// \param sameContents whether the bytes of all common voxels are equal, true if there are none; false without
  ///        looking where the types differ or a block has no data.
  /// \param firstDifference the first common position, x fastest, whose voxels differ; -1 in all components if none.
  void compare(const SubImg& other, bool* sameBox = nullptr, bool* sameDataType = nullptr,
               bool* thisInsideOther = nullptr, bool* otherInsideThis = nullptr, bool* sameContents = nullptr,
               TVector<VXint64>* firstDifference = nullptr) const;

  /// \param x,y,z,c,t,u a position relative to the first voxel. \param ext extent of a block.
  /// \return index of the voxel in memory order; wraps where it exceeds 64 bits.
  static VXint64 coordToIndex(VXint64 x, VXint64 y, VXint64 z, VXint64 c, VXint64 t, VXint64 u,
                              const TVector<VXint64>& ext);
  /// The same. \param position relative to the first voxel. \param ext extent of a block. \return the index.
  static VXint64 coordToIndex(const TVector<VXint64>& position, const TVector<VXint64>& ext);
  /// The inverse of coordToIndex().
  /// \throw int ::VX_BAD_POINTER, reported as fatal, if a component of the extent other than u is 0.
  static TVector<VXint64> indexToCoord(VXint64 index, const TVector<VXint64>& ext);

 protected:
  TVector<VXint64> _position;  ///< Image coordinates of the first voxel.
  void* _data = nullptr;       ///< First voxel, or null.
  TVector<VXint64> _stride;    ///< Distances between neighbours, in voxels.
  VXuint32 _dataTypeSize;      ///< Bytes of a voxel.
};

/// Prints a block: region, type, and the voxels row by row, each as the text of its type.
VX_EXPORT std::ostream& operator<<(std::ostream& s, const SubImg& fc);

}  // namespace vx

#endif
