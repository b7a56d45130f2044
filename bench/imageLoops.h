/// \file imageLoops.h
/// Filters of whole images in one loop each, for the processor that runs them: the limits of the standard modules.

#ifndef VX_IMAGE_LOOPS_H
#define VX_IMAGE_LOOPS_H

#include "vxVector.h"

namespace vx::bench {

/// The mean of 3 x 3 x 3 voxels, rounded; past the border stands the nearest voxel.
void boxMean27(const VXint16* in, VXint16* out, const TVector<VXint64>& extent);
/// The median of 3 x 3 x 3 voxels.
void median27(const VXint16* in, VXint16* out, const TVector<VXint64>& extent);
/// The Gaussian of sigma 2, up to three sigma, dimension after dimension.
void gauss2(const VXuint16* in, float* out, const TVector<VXint64>& extent);

}  // namespace vx::bench

#endif
