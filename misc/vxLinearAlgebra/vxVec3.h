/// \file vxVec3.h
/// The vector of three floating point components: points and directions in space.

#ifndef VX_VEC3_H
#define VX_VEC3_H

#include "vxErrorOutput.h"
#include "vxVec4.h"

#include <limits>

namespace vx {

/// Vector of three components. What it shares with the other sizes is in TvecBase.
template <class DT>
class Tvec3 : public TvecBase<Tvec3<DT>, DT, 3> {
 public:
  using TvecBase<Tvec3<DT>, DT, 3>::TvecBase;

  /// Takes a homogeneous vector.
  /// \param v the vector. \param normalizeV false: its first three components as they are. True: these divided by the
  /// fourth; where that is 0 (smaller than the smallest normal `double`), an error with ::VX_BAD_PARAMETER is reported
  /// and all components are 0.
  constexpr Tvec3(const Tvec4<DT>& v, const bool normalizeV) {
    if (!normalizeV) {
      _assignScaled(v, DT(1));
    } else if ((v[3] < DT(0) ? -v[3] : v[3]) < std::numeric_limits<double>::min()) {
      report(VX_ERROR, "Tvec3::Tvec3(const Tvec4<DT>& v, const bool normalizeV)", VX_BAD_PARAMETER,
             "Normalization with zero fourth component of homogeneous vector performed. Leaving vector unchanged.");
    } else {
      _assignScaled(v, DT(1) / v[3]);
    }
  }

  /// \return the cross product of this vector and another.
  constexpr Tvec3 cross(const Tvec3& other) const noexcept {
    const Tvec3& a = *this;
    return Tvec3(a[1] * other[2] - a[2] * other[1], a[2] * other[0] - a[0] * other[2],
                 a[0] * other[1] - a[1] * other[0]);
  }

 private:
  constexpr void _assignScaled(const Tvec4<DT>& v, DT factor) noexcept {
    for (std::size_t i = 0; i < 3; ++i) (*this)[i] = v[i] * factor;
  }
};

/// \return the cross product of two vectors.
template <class DT>
constexpr Tvec3<DT> cross(const Tvec3<DT>& a, const Tvec3<DT>& b) noexcept {
  return a.cross(b);
}

/// The instance in use.
using vec3 = Tvec3<double>;

}  // namespace vx

#endif
