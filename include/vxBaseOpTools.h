/// \file vxBaseOpTools.h
/// The choice of the extent of the pages that an image is cut into.

#ifndef VX_BASE_OP_TOOLS_H
#define VX_BASE_OP_TOOLS_H

#include "vxVector.h"

namespace vx {

/// Chooses page extents from wishes and limits.
///
/// All of it is static. Its functions may be called from any thread.
class VX_EXPORT BaseOpTools {
 public:
  /// More pages than this one image shall not have.
  static constexpr VXint64 MAX_NUM_PAGES_PER_IMAGE = 524288;

  /// Chooses the page extent of an image, in voxels along x, y, z, c, t, u.
  ///
  /// In this order of importance the choice keeps to the limits, avoids pages of less than 1024 voxels, wastes little
  /// memory in pages that overhang the image (at most a tenth is aimed at), and stays at or below
  /// #MAX_NUM_PAGES_PER_IMAGE, for which it goes beyond `maxExt` and leaves the multiples of `stepExt`. Any values may
  /// be passed; in each vector a component that is 0 or negative states no wish for its dimension. A limit that has no
  /// multiple of the step above it within 64 bits is rounded down instead of up.
  ///
  /// An image with a negative extent may keep too many pages, of which a warning (above 524288) or an error (above
  /// 16777216) with code ::VX_BAD_PARAMETER tells: no page extent lowers the count.
  /// \param[in,out] pageExt the extent to start from; takes the result, which is above 0 in each dimension. It may be
  ///        one of the other vectors too.
  /// \param dataType voxel type, whose size decides whether pages rather grow or shrink; they grow for an invalid one.
  /// \param imgExt extent of the image.
  /// \param preferredExt where `pageExt` starts from a preferred extent above 1, the whole image is tried as extent.
  /// \param stepExt the page extent shall be a multiple of it; 1 if it isn't positive.
  /// \param minExt the smallest extent, rounded up to a multiple of the step; the step if it isn't positive.
  /// \param maxExt the greatest extent, rounded down to a multiple of the step, but never below the smallest; the
  ///        greatest of the smallest, `imgExt` and `pageExt` if it isn't positive.
  /// \throw int ::VX_BAD_POINTER after a fatal report if a division by 0 would come up. `pageExt` is unchanged then.
  ///
  /// It costs microseconds, however large the extents are.
  static void adaptPageExt(TVector<VXint64>& pageExt, int dataType, const TVector<VXint64>& imgExt,
                           const TVector<VXint64>& preferredExt, const TVector<VXint64>& stepExt,
                           const TVector<VXint64>& minExt, const TVector<VXint64>& maxExt);
};

}  // namespace vx

#endif
