/// \file vxVec10.h
/// The vector of ten floating point components.

#ifndef VX_VEC10_H
#define VX_VEC10_H

#include "vxVecBase.h"

namespace vx {

/// Vector of ten components. All that it can do is in TvecBase.
template <class DT>
class Tvec10 : public TvecBase<Tvec10<DT>, DT, 10> {
 public:
  using TvecBase<Tvec10<DT>, DT, 10>::TvecBase;
};

/// The instance in use.
using vec10 = Tvec10<double>;

}  // namespace vx

#endif
