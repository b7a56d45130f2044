/// \file vxVoxelBlock.h
/// Walks over the rows of blocks of voxels, whatever their type.

#ifndef VX_VOXEL_BLOCK_H
#define VX_VOXEL_BLOCK_H

#include "vxGuards.h"
#include "vxSubImgBox.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace vx {

/// Where the voxels of a block are: all that a loop needs that doesn't know their type.
struct VoxelBlock {
  SubImgBox box;            ///< Region in image coordinates.
  TVector<VXint64> stride;  ///< Distances between neighbours, in voxels.
  VXuint64 voxelSize;       ///< Bytes of a voxel.
  unsigned char* data;      ///< First voxel, or null.
  unsigned char* origin;    ///< Where the voxel at position 0 is or would be.
  VXDataType dataType;      ///< Type of the voxels.

  /// \return a pointer moved by a number of voxels, also to where no memory is.
  static unsigned char* move(const void* pointer, VXint64 numVoxels, VXuint64 voxelSize) noexcept {
    return reinterpret_cast<unsigned char*>(reinterpret_cast<std::uintptr_t>(pointer) +
                                            static_cast<VXuint64>(numVoxels) * voxelSize);
  }
  /// \return the voxel at a position in image coordinates, which must lie in the box.
  unsigned char* at(const TVector<VXint64>& position) const noexcept {
    return move(origin, TVector<VXint64>::dot(position, stride), voxelSize);
  }
  /// Fatal check that there is memory, before voxels are touched.
  void checkData() const { checkFatal(data != nullptr); }
};

/// Calls `rowOp(a, b, numVoxels)` for the runs of a box in two blocks, in memory order.
///
/// Runs are as long as both blocks allow: rows, planes and so on that follow each other in memory are one run.
/// \param box region within both blocks; nothing happens if it is empty.
/// \param rowOp takes the first voxel of a run in either block and the length; may return false to stop.
/// \return false if it was stopped. \throw int ::VX_BAD_POINTER, reported as fatal, without data.
template <class RowOp>
bool walkRuns(const SubImgBox& box, const VoxelBlock& a, const VoxelBlock& b, RowOp&& rowOp) {
  if (box.isEmpty()) return true;
  a.checkData();
  b.checkData();

  struct Dimension {
    VXint64 count, index;
    VXuint64 stepA, stepB;  // bytes
  };
  Dimension dimensions[6];
  std::size_t numDimensions = 0;
  const TVector<VXint64> ext = box.getExt();
  VXint64 run = ext.x;
  for (std::size_t d = 1; d < ext.size(); ++d) {
    if (ext[d] == 1) continue;
    if (numDimensions == 0 && a.stride[d] == run && b.stride[d] == run) {
      run = wrapMultiply(run, ext[d]);
    } else {
      dimensions[numDimensions++] = {ext[d], 0, static_cast<VXuint64>(a.stride[d]) * a.voxelSize,
                                     static_cast<VXuint64>(b.stride[d]) * b.voxelSize};
    }
  }

  auto rowA = reinterpret_cast<std::uintptr_t>(a.at(box.v1));
  auto rowB = reinterpret_cast<std::uintptr_t>(b.at(box.v1));
  for (;;) {
    auto* const pointerA = reinterpret_cast<unsigned char*>(rowA);
    auto* const pointerB = reinterpret_cast<unsigned char*>(rowB);
    if constexpr (std::is_same_v<decltype(rowOp(pointerA, pointerB, std::size_t{})), bool>) {
      if (!rowOp(pointerA, pointerB, static_cast<std::size_t>(run))) return false;
    } else {
      rowOp(pointerA, pointerB, static_cast<std::size_t>(run));
    }
    // On to the next run: the lowest dimension that isn't at its end moves, those below it start again.
    std::size_t d = 0;
    for (; d < numDimensions; ++d) {
      Dimension& dimension = dimensions[d];
      rowA += dimension.stepA;
      rowB += dimension.stepB;
      if (++dimension.index < dimension.count) break;
      rowA -= dimension.stepA * static_cast<VXuint64>(dimension.count);
      rowB -= dimension.stepB * static_cast<VXuint64>(dimension.count);
      dimension.index = 0;
    }
    if (d == numDimensions) return true;
  }
}

/// walkRuns() on one block: calls `rowOp(voxels, numVoxels)`.
template <class RowOp>
bool walkRuns(const SubImgBox& box, const VoxelBlock& block, RowOp&& rowOp) {
  return walkRuns(box, block, block, [&](unsigned char* voxels, unsigned char*, std::size_t numVoxels) {
    return rowOp(voxels, numVoxels);
  });
}

/// Calls `lineOp(position)` for the first position of each line along x of a box, in memory order.
/// \param lineOp may return false to stop. \return false if it was stopped.
template <class LineOp>
bool walkLines(const SubImgBox& box, LineOp&& lineOp) {
  if (box.isEmpty()) return true;
  TVector<VXint64> position = box.v1;
  for (;;) {
    if constexpr (std::is_same_v<decltype(lineOp(position)), bool>) {
      if (!lineOp(static_cast<const TVector<VXint64>&>(position))) return false;
    } else {
      lineOp(static_cast<const TVector<VXint64>&>(position));
    }
    std::size_t d = 1;
    for (; d < position.size(); ++d) {
      if (position[d] < box.v2[d]) {
        ++position[d];
        break;
      }
      position[d] = box.v1[d];
    }
    if (d == position.size()) return true;
  }
}

}  // namespace vx

#endif
