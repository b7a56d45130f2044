/// \file vxTSubImg.h
/// A block of voxels of a type that is known at compile time: all loops over voxels.

#ifndef VX_T_SUB_IMG_H
#define VX_T_SUB_IMG_H

#include "vxCarrierTypes.h"
#include "vxStdTypeInfos.h"
#include "vxSubImg.h"

namespace vx {

struct VoxelBlock;

/// What the operations on borders know of a box in a block, all along x: the voxels in front of the box and behind it.
struct FillAreaParams {
  VXint64 fullLineLen;       ///< Voxels of a line of the block.
  VXint64 leftStart;         ///< First position in front of the box.
  VXint64 leftEnd;           ///< Last position in front of the box.
  VXint64 leftLen;           ///< Voxels in front of the box; 0 if there are none.
  VXint64 rightStart;        ///< First position behind the box.
  VXint64 rightLen;          ///< Voxels behind the box; 0 if there are none.
  VXint64 fullLineNumBytes;  ///< Bytes of a line of the block.
  VXint64 leftNumBytes;      ///< Bytes in front of the box.
  VXint64 rightNumBytes;     ///< Bytes behind the box.
};

/// A block of voxels as typed code sees it, a view that shares the voxels of the block it is made from.
///
/// `T` is one of the ten standard types, where `long double` stands for type 8 and works on ::VXldouble; or a carrier
/// of registered voxels: those of the slots 10 to 19 are written and read, those of 30 to 39 are for reading only. All
/// of these are compiled in the library. Loops on carriers call the operations of the type in their slot, one or few
/// calls a voxel; loops on standard types run over contiguous memory with the vector width of the processor.
///
/// The operations that write push and pop the type themselves. What they may report and throw is told with each; in
/// every case types are popped. An object serves one thread.
template <class T>
class VX_EXPORT TSubImg : public SubImg {
 public:
  /// What a voxel is in memory.
  using Voxel = StoredVoxel<T>;

  /// An empty block without memory.
  TSubImg() = default;
  /// A view of region, type and voxels of a block. A block with data of a type that isn't stored as `T` is reported as
  /// fatal with ::VX_BAD_DATA_TYPE; the view then reads the memory as `T` all the same.
  // NOLINTNEXTLINE(google-explicit-constructor)
  TSubImg(const SubImg& subImg);
  /// A copy is a view of the same voxels.
  TSubImg(const TSubImg& other) = default;
  /// \copydoc TSubImg(const TSubImg&)
  TSubImg& operator=(const TSubImg& other) = default;
  ~TSubImg() override;

  /// \copydoc SubImg::setImgExt()
  void setImgExt(const TVector<VXint64>& imgExt) override;

  /// Stores the pointer to the first voxel and what follows from it. \param data may be null.
  void setData(void* data) override;

  /// \return the first voxel, or null.
  Voxel* getTypedData() const { return _typedData; }

  /// Copies and converts what the two blocks have in common. Without data in one of them reports an error,
  /// ::VX_BAD_POINTER, and changes nothing; nothing in common is no error.
  template <class IN>
  void copySubImg(const TSubImg<IN>& inImg);
  /// Copies, converts and maps what the two blocks have in common: (`T`)(v * scale + shift).
  /// \copydetails copySubImg(const TSubImg<IN>&)
  template <class IN>
  void copySubImg(const TSubImg<IN>& inImg, const ScaleShiftData& scaleShift);

  /// Sets all voxels. \throw int ::VX_BAD_POINTER, reported as fatal, without data.
  void fillSubImg(Voxel value);

  /// Sets all voxels outside a box. \param box need not lie within the block and may be empty. \param value the voxel.
  /// \throw std::bad_alloc without memory for one line. \throw int ::VX_BAD_POINTER, reported as fatal, without data.
  void fillBordersWithFillValue(const SubImgBox& box, Voxel value);
  /// Copies voxels from another block to all positions outside a box; signed and unsigned integers of one width are
  /// copied bit by bit. \param box as for fillBordersWithFillValue(). \param input must cover these positions.
  /// \throw int ::VX_BAD_POINTER, reported as fatal, without data in one of the blocks.
  template <class IN>
  void fillBordersWithInputValues(const SubImgBox& box, const TSubImg<IN>& input);
  /// Sets each voxel outside a box to the nearest one within the box. \param box cut to the block first.
  /// \throw int ::VX_BAD_POINTER, reported as fatal, without data.
  void fillBordersWithClampedInputValues(SubImgBox box);

  /// Finds the range of voxels by `<`.
  /// \param minValue,maxValue take the range, 0 if there are no voxels. \param validBox null takes the whole block.
  /// \return number of voxels that were looked at.
  /// \throw int ::VX_BAD_POINTER, reported as fatal, without data.
  VXint64 calcMinMax(Voxel& minValue, Voxel& maxValue, const SubImgBox* validBox = nullptr) const;

  /// \return whether all voxels are equal by `==`; false for an empty block and without data.
  bool isOneValued() const;

  /// \param box any box. \return the runs of a line of this block in front of the box and behind it. Where the box
  /// reaches past an edge of the block, the length on that side is 0.
  FillAreaParams _calcFillAreaParams(const SubImgBox& box) const;

 protected:
  template <class>
  friend class TSubImg;

  /// \return the block for loops that don't know the type.
  VoxelBlock _getBlock() const;
  /// Notes where an operation on borders ended; null leaves the cursor.
  void _moveCursor(void* end);

  VXint64 _sizeOfT = 1;          ///< Bytes of a voxel.
  Voxel* _typedData = nullptr;   ///< First voxel, or null.
  Voxel* _originData = nullptr;  ///< Where the voxel at image position 0 is or would be.
  Voxel* _cursor = nullptr;      ///< Where an operation on borders ended.
};

#define VX_DECLARE_STANDARD_SUB_IMG(T, number) extern template class TSubImg<T>;
#define VX_DECLARE_CARRIER_SUB_IMG(size, outputId, inputId)      \
  extern template class TSubImg<VXTCarrierType<size, outputId>>; \
  extern template class TSubImg<VXTCarrierType<size, inputId>>;
VX_FOR_EACH_STANDARD_TYPE(VX_DECLARE_STANDARD_SUB_IMG)
VX_FOR_EACH_CARRIER_SIZE(VX_DECLARE_CARRIER_SUB_IMG)
#undef VX_DECLARE_STANDARD_SUB_IMG
#undef VX_DECLARE_CARRIER_SUB_IMG

}  // namespace vx

#endif
