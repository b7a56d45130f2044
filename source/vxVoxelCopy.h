/// \file vxVoxelCopy.h
/// Copies between blocks of voxels, with the loops for their types as arguments.

#ifndef VX_VOXEL_COPY_H
#define VX_VOXEL_COPY_H

#include "vxRowKernels.h"
#include "vxScaleShiftData.h"
#include "vxVoxelBlock.h"

namespace vx {

/// Whether a mapping changes nothing by more than the precision of its numbers.
bool isNeutral(const ScaleShiftData& scaleShift);

/// Tests that both blocks hold voxels, which an empty one doesn't.
inline bool areBothFilled(const VoxelBlock& a, const VoxelBlock& b) { return !a.box.isEmpty() && !b.box.isEmpty(); }

/// The common voxels of two blocks, if they can be copied.
/// \return empty if there are none, and after the report of missing data.
SubImgBox boxToCopy(const VoxelBlock& out, const VoxelBlock& in);

/// Copies voxels of one type as memory. \param box region within both blocks, may be empty.
void copyVoxels(const SubImgBox& box, const VoxelBlock& out, const VoxelBlock& in);

/// Converts voxels. \param box region within both blocks, may be empty.
void convertVoxels(const SubImgBox& box, const VoxelBlock& out, const VoxelBlock& in, ConvertRun convert);

/// Maps and converts voxels. \param box region within both blocks, may be empty.
void convertVoxels(const SubImgBox& box, const VoxelBlock& out, const VoxelBlock& in, ConvertScaledRun convert,
                   const ScaleShiftData& scaleShift);

}  // namespace vx

#endif
