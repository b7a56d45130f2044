/// \file vxMat3.h
/// The matrix of three by three floating point components.

#ifndef VX_MAT3_H
#define VX_MAT3_H

#include "vxMatBase.h"
#include "vxVec3.h"

namespace vx {

/// Matrix of three rows of three components. All that it can do is in TmatBase.
template <class DT>
class Tmat3 : public TmatBase<Tmat3<DT>, Tvec3<DT>> {
 public:
  using TmatBase<Tmat3<DT>, Tvec3<DT>>::TmatBase;
};

/// The instance in use.
using mat3 = Tmat3<double>;

}  // namespace vx

#endif
