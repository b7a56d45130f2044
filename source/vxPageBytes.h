// Sizes of pages and tiles in bytes.

#ifndef VX_PAGE_BYTES_H
#define VX_PAGE_BYTES_H

#include "vxDataTypes.h"
#include "vxGuards.h"
#include "vxMemory.h"
#include "vxSubImgBox.h"

namespace vx {

/// A number of bytes that no allocation grants.
constexpr VXuint64 tooManyBytes = ~VXuint64{0};

/// \return the box from the origin with an extent.
inline SubImgBox boxOfExt(const TVector<VXint64>& ext) {
  return SubImgBox(TVector<VXint64>(), ext - TVector<VXint64>(1));
}

/// \return the bytes of the voxels in a box, 0 for an empty one; #tooManyBytes if they don't fit 64 bits.
inline VXuint64 numBytesOrTooMany(VXDataType dataType, const SubImgBox& box) {
  VXuint64 numVoxels = 0;
  VXuint64 numBytes = 0;
  if (!box.getNumVoxelsChecked(numVoxels) || !multiplySizes(numVoxels, VXSizeOf(dataType), numBytes))
    return tooManyBytes;
  return numBytes;
}

/// The same. \throw int ::VX_NO_MEMORY, after a fatal report, if they don't fit.
inline VXuint64 numBytesChecked(VXDataType dataType, const SubImgBox& box, SourcePosition position = SourcePosition()) {
  const VXuint64 numBytes = numBytesOrTooMany(dataType, box);
  checkFatal(numBytes != tooManyBytes, VX_NO_MEMORY, position);
  return numBytes;
}

}  // namespace vx

#endif
