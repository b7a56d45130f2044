/// \file vxVec5.h
/// The vector of five floating point components.

#ifndef VX_VEC5_H
#define VX_VEC5_H

#include "vxVecBase.h"

namespace vx {

/// Vector of five components. All that it can do is in TvecBase.
template <class DT>
class Tvec5 : public TvecBase<Tvec5<DT>, DT, 5> {
 public:
  using TvecBase<Tvec5<DT>, DT, 5>::TvecBase;
};

/// The instance in use.
using vec5 = Tvec5<double>;

}  // namespace vx

#endif
