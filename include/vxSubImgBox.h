/// \file vxSubImgBox.h
/// The box of voxels by which every region of an image is told.

#ifndef VX_SUB_IMG_BOX_H
#define VX_SUB_IMG_BOX_H

#include "vxMemory.h"
#include "vxVector.h"

#include <cstddef>
#include <ostream>

namespace vx {

/// A box in voxel coordinates, in all six dimensions, both corners inclusive.
///
/// A plain value with no invariant: a box whose `v1` is above `v2` in any component is empty, which is an ordinary
/// value and flows through all operations. Nothing here fails, allocates or is undefined for any corners; arithmetic
/// wraps around. Functions may be called from any thread on different objects.
template <class intT>
class TSubImgBox {
 public:
  TVector<intT> v1;  ///< Corner of the lowest coordinates, inclusive.
  TVector<intT> v2;  ///< Corner of the highest coordinates, inclusive.

  /// A box that is empty in all components: from 0 to -1.
  constexpr TSubImgBox() noexcept : v1(0), v2(-1) {}
  /// \param newV1,newV2 the corners, taken as they are.
  constexpr TSubImgBox(const TVector<intT>& newV1, const TVector<intT>& newV2) noexcept : v1(newV1), v2(newV2) {}

  /// \return whether `v1` is above `v2` in at least one component, so that the box holds no voxel.
  constexpr bool isEmpty() const noexcept {
    return v1.x > v2.x || v1.y > v2.y || v1.z > v2.z || v1.c > v2.c || v1.t > v2.t || v1.u > v2.u;
  }

  /// \return the voxels along each dimension; 0 in all of them if the box is empty.
  constexpr TVector<intT> getExt() const noexcept { return isEmpty() ? TVector<intT>() : v2 - v1 + TVector<intT>(1); }

  /// \return the number of voxels, wrapped where it exceeds the type. See getNumVoxelsChecked() for allocations.
  constexpr intT getNumVoxels() const noexcept { return getExt().getProduct(); }

  /// The number of voxels for sizes that lead to an allocation.
  /// \param numVoxels takes the number; 0 if it doesn't fit. \return whether it fits 64 bits.
  constexpr bool getNumVoxelsChecked(VXuint64& numVoxels) const noexcept {
    numVoxels = 0;
    if (isEmpty()) return true;
    VXuint64 product = 1;
    for (std::size_t i = 0; i < v1.size(); ++i) {
      // The unsigned difference is exact, and 1 more may be 2 to the power 64.
      const VXuint64 last = static_cast<VXuint64>(v2[i]) - static_cast<VXuint64>(v1[i]);
      if (last == ~VXuint64{0} || !multiplySizes(product, last + 1, product)) return false;
    }
    numVoxels = product;
    return true;
  }

  /// \return the overlap of two boxes: the greater of the lower corners and the smaller of the upper ones. It is empty
  /// if there is no overlap; which of its corners cross then is as computed.
  static constexpr TSubImgBox intersect(const TSubImgBox& box1, const TSubImgBox& box2) noexcept {
    return TSubImgBox(compMax(box1.v1, box2.v1), compMin(box1.v2, box2.v2));
  }

  /// \return the position moved into the box; where the box is empty in a component, `v1` there.
  constexpr TVector<intT> clamp(const TVector<intT>& position) const noexcept {
    return compMax(compMin(position, v2), v1);
  }

  /// The corners of the box in space.
  /// \param corners takes eight positions, z changing fastest and x slowest; not null. Corner 0 is `v1` as it is, the
  /// others are 0 in c, t and u. All are 0 for an empty box.
  constexpr void get3DCorners(TVector<intT>* corners) const {
    for (unsigned int i = 0; i < 8; ++i) {
      corners[i] = isEmpty()
                       ? TVector<intT>()
                       : TVector<intT>((i & 4U) ? v2.x : v1.x, (i & 2U) ? v2.y : v1.y, (i & 1U) ? v2.z : v1.z, 0, 0, 0);
    }
    if (!isEmpty()) corners[0] = v1;
  }

  /// Compares the corners; two empty boxes with different corners differ.
  friend constexpr bool operator==(const TSubImgBox& a, const TSubImgBox& b) noexcept {
    return a.v1 == b.v1 && a.v2 == b.v2;
  }
  friend constexpr bool operator!=(const TSubImgBox& a, const TSubImgBox& b) noexcept { return !(a == b); }

  /// Writes "(v1=(x,y,z,c,t,u), v2=(x,y,z,c,t,u))".
  friend std::ostream& operator<<(std::ostream& stream, const TSubImgBox& box) {
    return stream << "(v1=" << box.v1 << ", v2=" << box.v2 << ')';
  }
};

/// The instance in use.
using SubImgBox = TSubImgBox<VXint64>;

}  // namespace vx

#endif
