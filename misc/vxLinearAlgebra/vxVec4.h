/// \file vxVec4.h
/// The vector of four floating point components.

#ifndef VX_VEC4_H
#define VX_VEC4_H

#include "vxVecBase.h"

namespace vx {

/// Vector of four components. All that it can do is in TvecBase.
template <class DT>
class Tvec4 : public TvecBase<Tvec4<DT>, DT, 4> {
 public:
  using TvecBase<Tvec4<DT>, DT, 4>::TvecBase;
};

/// The instance in use.
using vec4 = Tvec4<double>;

}  // namespace vx

#endif
