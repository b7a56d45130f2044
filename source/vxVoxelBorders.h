/// \file vxVoxelBorders.h
/// Writes the voxels of a block that lie outside a box, with the loops for their type as arguments.

#ifndef VX_VOXEL_BORDERS_H
#define VX_VOXEL_BORDERS_H

#include "vxRowKernels.h"
#include "vxTSubImg.h"
#include "vxVoxelBlock.h"

namespace vx {

/// \return the runs of a line of a block in front of a box and behind it.
/// \param voxelSize bytes of a voxel, for the lengths in bytes.
FillAreaParams calcFillArea(const SubImgBox& block, const SubImgBox& hole, VXint64 voxelSize);

// Each of these returns where it ended, just behind the last voxel written; null if none was.

/// Sets voxels. \param value one voxel. \throw std::bad_alloc without memory for a line.
unsigned char* fillBorders(const VoxelBlock& block, const SubImgBox& hole, FillRun fill, const void* value);

/// Copies voxels from a block that has all positions of the border.
/// \param convert the loop, or null to copy as memory.
unsigned char* copyBorders(const VoxelBlock& block, const SubImgBox& hole, const VoxelBlock& in, ConvertRun convert);

/// Sets each voxel to the nearest one in the hole. \param hole within the block, not empty.
unsigned char* clampBorders(const VoxelBlock& block, const SubImgBox& hole, FillRun fill);

}  // namespace vx

#endif
