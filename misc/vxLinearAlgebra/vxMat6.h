/// \file vxMat6.h
/// The matrix of six by six floating point components.

#ifndef VX_MAT6_H
#define VX_MAT6_H

#include "vxMatBase.h"
#include "vxVec6.h"

namespace vx {

/// Matrix of six rows of six components. All that it can do is in TmatBase.
template <class DT>
class Tmat6 : public TmatBase<Tmat6<DT>, Tvec6<DT>> {
 public:
  using TmatBase<Tmat6<DT>, Tvec6<DT>>::TmatBase;
};

/// The instance in use.
using mat6 = Tmat6<double>;

}  // namespace vx

#endif
