/// \file vxSubImgBoxf.h
/// The box with floating point corners, for world coordinates.

#ifndef VX_SUB_IMG_BOXF_H
#define VX_SUB_IMG_BOXF_H

#include "vxMat4.h"
#include "vxSubImgBox.h"
#include "vxVec6.h"

#include <iosfwd>

namespace vx {

/// A box in six dimensions x, y, z, c, t, u with floating point corners, the upper one exclusive as a rule.
///
/// A plain value with no invariant; only correct() sorts the corners. Functions may be called from any thread on
/// different objects.
class VX_EXPORT SubImgBoxf {
 public:
  Tvec6<double> v1;  ///< Corner of the lowest coordinates.
  Tvec6<double> v2;  ///< Corner of the highest coordinates; the first ones beyond a box of voxels.

  /// From 0 to -1 in all components.
  constexpr SubImgBoxf() noexcept : v1(0.), v2(-1.) {}
  /// \param newV1,newV2 the corners, taken as they are.
  constexpr SubImgBoxf(const Tvec6<double>& newV1, const Tvec6<double>& newV2) noexcept : v1(newV1), v2(newV2) {}
  /// The space that voxels fill: from `v1` to `v2` + 1. An empty box is converted the same way.
  /// \param box the voxels; coordinates above 2 to the power 53 are rounded.
  // NOLINTNEXTLINE(google-explicit-constructor): a box of voxels is such a box
  constexpr SubImgBoxf(const TSubImgBox<VXint64>& box) noexcept {
    const TVector<VXint64> end = box.v2 + TVector<VXint64>(1);
    for (std::size_t i = 0; i < v1.size(); ++i) {
      v1[i] = static_cast<double>(box.v1[i]);
      v2[i] = static_cast<double>(end[i]);
    }
  }

  /// Sorts the corners: in each component `v1` takes the smaller value and `v2` the larger.
  void correct() noexcept;

  /// The axis-aligned box around the transformed spatial corners of a box of voxels.
  ///
  /// The voxel positions of the corners themselves are transformed, so that `v2` counts as inclusive here, unlike in
  /// the constructor; c, t and u are taken over. The search for the smallest and largest coordinate starts at the
  /// limits of `float`: what is beyond them, or not a number, doesn't count. A corner whose fourth homogeneous
  /// component is 0 is reported as an error and counts as the origin. \param box the voxels. \param matrix the
  /// transformation. \return the box; the default one if `box` is empty.
  static SubImgBoxf calcAATransformedBox(const TSubImgBox<VXint64>& box, const Tmat4<double>& matrix);

  friend constexpr bool operator==(const SubImgBoxf& a, const SubImgBoxf& b) noexcept {
    return a.v1 == b.v1 && a.v2 == b.v2;
  }
  friend constexpr bool operator!=(const SubImgBoxf& a, const SubImgBoxf& b) noexcept { return !(a == b); }

  /// Writes "(v1=(x,y,z,c,t,u), v2=(x,y,z,c,t,u))".
  friend VX_EXPORT std::ostream& operator<<(std::ostream& stream, const SubImgBoxf& box);
};

}  // namespace vx

#endif
