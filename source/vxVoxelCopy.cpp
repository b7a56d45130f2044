#include "vxVoxelCopy.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace vx {

bool isNeutral(const ScaleShiftData& scaleShift) {
  constexpr double epsilon = std::numeric_limits<double>::epsilon();
  return std::abs(scaleShift.scale - 1.0) < epsilon && std::abs(scaleShift.shift - 0.0) < epsilon;
}

SubImgBox boxToCopy(const VoxelBlock& out, const VoxelBlock& in) {
  const SubImgBox box = SubImgBox::intersect(out.box, in.box);
  if (box.isEmpty()) return SubImgBox();
  if (!out.data || !in.data) {
    report(VX_ERROR, "TSubImg::copySubImg()", VX_BAD_POINTER,
           "Valid data pointers in source and target subimage required forsubimage copying, thus call is ignored.");
    return SubImgBox();
  }
  return box;
}

void copyVoxels(const SubImgBox& box, const VoxelBlock& out, const VoxelBlock& in) {
  walkRuns(box, out, in, [&](unsigned char* to, const unsigned char* from, std::size_t numVoxels) {
    std::memmove(to, from, numVoxels * static_cast<std::size_t>(out.voxelSize));
  });
}

void convertVoxels(const SubImgBox& box, const VoxelBlock& out, const VoxelBlock& in, ConvertRun convert) {
  walkRuns(box, out, in,
           [=](unsigned char* to, const unsigned char* from, std::size_t numVoxels) { convert(from, to, numVoxels); });
}

void convertVoxels(const SubImgBox& box, const VoxelBlock& out, const VoxelBlock& in, ConvertScaledRun convert,
                   const ScaleShiftData& scaleShift) {
  walkRuns(box, out, in, [=](unsigned char* to, const unsigned char* from, std::size_t numVoxels) {
    convert(from, to, numVoxels, scaleShift.scale, scaleShift.shift);
  });
}

}  // namespace vx
