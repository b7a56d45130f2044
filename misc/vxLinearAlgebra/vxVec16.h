/// \file vxVec16.h
/// The vector of sixteen floating point components.

#ifndef VX_VEC16_H
#define VX_VEC16_H

#include "vxVecBase.h"

namespace vx {

/// Vector of sixteen components. All that it can do is in TvecBase.
template <class DT>
class Tvec16 : public TvecBase<Tvec16<DT>, DT, 16> {
 public:
  using TvecBase<Tvec16<DT>, DT, 16>::TvecBase;
};

/// The instance in use.
using vec16 = Tvec16<double>;

}  // namespace vx

#endif
