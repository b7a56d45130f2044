/// \file vxMat5.h
/// The matrix of five by five floating point components.

#ifndef VX_MAT5_H
#define VX_MAT5_H

#include "vxMatBase.h"
#include "vxVec5.h"

namespace vx {

/// Matrix of five rows of five components. All that it can do is in TmatBase.
template <class DT>
class Tmat5 : public TmatBase<Tmat5<DT>, Tvec5<DT>> {
 public:
  using TmatBase<Tmat5<DT>, Tvec5<DT>>::TmatBase;
};

/// The instance in use.
using mat5 = Tmat5<double>;

}  // namespace vx

#endif
