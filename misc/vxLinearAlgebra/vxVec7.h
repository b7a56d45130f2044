/// \file vxVec7.h
/// The vector of seven floating point components.

#ifndef VX_VEC7_H
#define VX_VEC7_H

#include "vxVecBase.h"

namespace vx {

/// Vector of seven components. All that it can do is in TvecBase.
template <class DT>
class Tvec7 : public TvecBase<Tvec7<DT>, DT, 7> {
 public:
  using TvecBase<Tvec7<DT>, DT, 7>::TvecBase;
};

/// The instance in use.
using vec7 = Tvec7<double>;

}  // namespace vx

#endif
