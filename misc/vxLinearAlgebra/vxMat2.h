/// \file vxMat2.h
/// The matrix of two by two floating point components.

#ifndef VX_MAT2_H
#define VX_MAT2_H

#include "vxMatBase.h"
#include "vxVec2.h"

namespace vx {

/// Matrix of two rows of two components. All that it can do is in TmatBase.
template <class DT>
class Tmat2 : public TmatBase<Tmat2<DT>, Tvec2<DT>> {
 public:
  using TmatBase<Tmat2<DT>, Tvec2<DT>>::TmatBase;
};

/// The instance in use.
using mat2 = Tmat2<double>;

}  // namespace vx

#endif
