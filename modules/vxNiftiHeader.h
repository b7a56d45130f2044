/// \file vxNiftiHeader.h
/// What a NIfTI header says about an image, of either version of the format.

#ifndef VX_NIFTI_HEADER_H
#define VX_NIFTI_HEADER_H

#include "vxVoxelFile.h"

#include <string>

namespace vx::modules {

/// The header in the terms of this library.
struct NiftiHeader {
  VoxelLayout layout;                ///< Where the voxels are; c runs over the components of a voxel and dimension 5.
  bool areVoxelsApart = false;       ///< Whether the voxels stand in a file of their own, beside the header.
  double scale = 1;                  ///< Voxels mean value * scale + shift.
  double shift = 0;                  ///< See `scale`.
  double minimum = 0;                ///< Range for display; none unless `maximum` is above.
  double maximum = 0;                ///< See `minimum`.
  Tmat4<double> toWorldMatrix;       ///< From voxels to mm: x to the right, y to the front, z upward.
  bool isToWorldMatrixKnown = true;  ///< Whether the file says where it is, and not only how large its voxels are.
};

/// Largest header of the format.
inline constexpr std::size_t niftiHeaderSize = 540;

/// Reads a header. \param bytes the first bytes of the file. \param number how many there are.
/// \return an empty text, or what is wrong with it.
std::string readNiftiHeader(const unsigned char* bytes, std::size_t number, NiftiHeader& header);

}  // namespace vx::modules

#endif
