/// \file vxVec8.h
/// The vector of eight floating point components.

#ifndef VX_VEC8_H
#define VX_VEC8_H

#include "vxVecBase.h"

namespace vx {

/// Vector of eight components. All that it can do is in TvecBase.
template <class DT>
class Tvec8 : public TvecBase<Tvec8<DT>, DT, 8> {
 public:
  using TvecBase<Tvec8<DT>, DT, 8>::TvecBase;
};

/// The instance in use.
using vec8 = Tvec8<double>;

}  // namespace vx

#endif
