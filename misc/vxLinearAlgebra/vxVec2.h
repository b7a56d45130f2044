/// \file vxVec2.h
/// The vector of two floating point components.

#ifndef VX_VEC2_H
#define VX_VEC2_H

#include "vxVecBase.h"

namespace vx {

/// Vector of two components. All that it can do is in TvecBase.
template <class DT>
class Tvec2 : public TvecBase<Tvec2<DT>, DT, 2> {
 public:
  using TvecBase<Tvec2<DT>, DT, 2>::TvecBase;
};

/// The instance in use.
using vec2 = Tvec2<double>;

}  // namespace vx

#endif
