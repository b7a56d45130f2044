/// \file vxVec9.h
/// The vector of nine floating point components.

#ifndef VX_VEC9_H
#define VX_VEC9_H

#include "vxVecBase.h"

namespace vx {

/// Vector of nine components. All that it can do is in TvecBase.
template <class DT>
class Tvec9 : public TvecBase<Tvec9<DT>, DT, 9> {
 public:
  using TvecBase<Tvec9<DT>, DT, 9>::TvecBase;
};

/// The instance in use.
using vec9 = Tvec9<double>;

}  // namespace vx

#endif
