/// \file vxVec6.h
/// The vector of six floating point components.

#ifndef VX_VEC6_H
#define VX_VEC6_H

#include "vxVecBase.h"

namespace vx {

/// Vector of six components. All that it can do is in TvecBase.
template <class DT>
class Tvec6 : public TvecBase<Tvec6<DT>, DT, 6> {
 public:
  using TvecBase<Tvec6<DT>, DT, 6>::TvecBase;
};

/// The instance in use.
using vec6 = Tvec6<double>;

}  // namespace vx

#endif
