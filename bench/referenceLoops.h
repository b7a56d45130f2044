/// \file referenceLoops.h
/// Plain loops over runs of voxels: what a user would write for one pair of types. They are the limit that the
/// library's loops are measured against.

#ifndef VX_REFERENCE_LOOPS_H
#define VX_REFERENCE_LOOPS_H

#include "../source/vxRowKernels.h"

namespace vx::bench {

/// The plain loops in the form of the library's table. Values must be in the range of the output type.
const RowKernels& referenceLoops();

}  // namespace vx::bench

#endif
