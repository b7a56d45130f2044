/// \file vxMat4.h
/// The matrix of four by four floating point components: transformations of space in homogeneous coordinates.

#ifndef VX_MAT4_H
#define VX_MAT4_H

#include "vxMatBase.h"
#include "vxVec4.h"

namespace vx {

/// Matrix of four rows of four components. What it shares with the other sizes is in TmatBase.
template <class DT>
class Tmat4 : public TmatBase<Tmat4<DT>, Tvec4<DT>> {
  using Base = TmatBase<Tmat4<DT>, Tvec4<DT>>;

 public:
  using Base::Base;

  using Base::setValues;
  /// Takes the components from an array of single precision. \param values 16 values, row after row, not null.
  constexpr void setValues(const float* values) { this->_assign(values); }
  /// The reverse: writes the components to an array that isn't constant, rounded to single precision.
  /// \param values takes 16 values, row after row; not null. To read from such an array, pass it as `const float*`.
  constexpr void setValues(float* values) const {
    for (std::size_t i = 0; i < 16; ++i) values[i] = static_cast<float>((*this)[i / 4][i % 4]);
  }
  /// \copydoc setValues(float*) const
  constexpr void setValues(float* values) { static_cast<const Tmat4&>(*this).setValues(values); }
};

/// The instance in use.
using mat4 = Tmat4<double>;

}  // namespace vx

#endif
