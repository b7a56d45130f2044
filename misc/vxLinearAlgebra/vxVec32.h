/// \file vxVec32.h
/// The vector of thirty-two floating point components.

#ifndef VX_VEC32_H
#define VX_VEC32_H

#include "vxVecBase.h"

namespace vx {

/// Vector of thirty-two components. All that it can do is in TvecBase.
template <class DT>
class Tvec32 : public TvecBase<Tvec32<DT>, DT, 32> {
 public:
  using TvecBase<Tvec32<DT>, DT, 32>::TvecBase;
};

/// The instance in use.
using vec32 = Tvec32<double>;

}  // namespace vx

#endif
