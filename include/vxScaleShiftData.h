/// \file vxScaleShiftData.h
/// The linear mapping of voxel values that a copy of voxels applies.

#ifndef VX_SCALE_SHIFT_DATA_H
#define VX_SCALE_SHIFT_DATA_H

#include "vxTypes.h"

#include <ostream>

namespace vx {

/// Output value = input value * scale + shift. A plain value.
template <class DT>
class TScaleShiftData {
 public:
  DT scale;  ///< The factor.
  DT shift;  ///< Added after the multiplication.

  /// Leaves values as they are: scale 1, shift 0.
  constexpr TScaleShiftData() noexcept : scale(1), shift(0) {}
  /// \param newScale,newShift the mapping.
  constexpr TScaleShiftData(DT newScale, DT newShift) noexcept : scale(newScale), shift(newShift) {}

  /// Maps one range of values to another.
  /// \param minIn,maxIn the range of the input. \param minOut,maxOut the range of the output. The limits of each may be
  /// given in either order. An input range of a single value is mapped to the lower limit of the output, at scale 1.
  constexpr void setFromMinMaxToMinMax(DT minIn, DT maxIn, DT minOut, DT maxOut) noexcept {
    _sort(minOut, maxOut);
    _sort(minIn, maxIn);
    if (maxIn - minIn <= DT(0)) {
      scale = DT(1);
      shift = minOut - minIn;
    } else {
      scale = (maxOut - minOut) / (maxIn - minIn);
      shift = minOut - scale * minIn;
    }
  }

  friend constexpr bool operator==(const TScaleShiftData& a, const TScaleShiftData& b) noexcept {
    return a.scale == b.scale && a.shift == b.shift;
  }
  friend constexpr bool operator!=(const TScaleShiftData& a, const TScaleShiftData& b) noexcept { return !(a == b); }

  /// Writes "(scale=..., shift=...)".
  friend std::ostream& operator<<(std::ostream& stream, const TScaleShiftData& data) {
    return stream << "(scale=" << data.scale << ", shift=" << data.shift << ')';
  }

 private:
  static constexpr void _sort(DT& low, DT& high) noexcept {
    if (!(high < low)) return;
    const DT former = low;
    low = high;
    high = former;
  }
};

/// The instance in use.
using ScaleShiftData = TScaleShiftData<VXldouble>;

}  // namespace vx

#endif
