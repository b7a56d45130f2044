/// \file vxVec64.h
/// The vector of sixty-four floating point components.

#ifndef VX_VEC64_H
#define VX_VEC64_H

#include "vxVecBase.h"

namespace vx {

/// Vector of sixty-four components. All that it can do is in TvecBase.
template <class DT>
class Tvec64 : public TvecBase<Tvec64<DT>, DT, 64> {
 public:
  using TvecBase<Tvec64<DT>, DT, 64>::TvecBase;
};

/// The instance in use.
using vec64 = Tvec64<double>;

}  // namespace vx

#endif
