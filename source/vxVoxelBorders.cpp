#include "vxVoxelBorders.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

namespace vx {

namespace {

// Whether a whole line along x lies outside a box.
bool isLineOutside(const TVector<VXint64>& position, const SubImgBox& box) {
  for (std::size_t d = 1; d < position.size(); ++d) {
    if (position[d] < box.v1[d] || position[d] > box.v2[d]) return true;
  }
  return false;
}

TVector<VXint64> withX(TVector<VXint64> position, VXint64 x) {
  position.x = x;
  return position;
}

// Calls writeRun(position, voxels, numVoxels) for the runs of a block outside a box.
template <class WriteRun>
unsigned char* walkBorders(const VoxelBlock& block, const SubImgBox& hole, WriteRun&& writeRun) {
  const FillAreaParams area = calcFillArea(block.box, hole, 1);
  unsigned char* end = nullptr;
  const auto write = [&](const TVector<VXint64>& position, VXint64 numVoxels) {
    block.checkData();
    unsigned char* const voxels = block.at(position);
    writeRun(position, voxels, static_cast<std::size_t>(numVoxels));
    end = VoxelBlock::move(voxels, numVoxels, block.voxelSize);
  };
  walkLines(block.box, [&](const TVector<VXint64>& line) {
    if (isLineOutside(line, hole)) {
      write(line, area.fullLineLen);
    } else {
      if (area.leftLen > 0) write(withX(line, area.leftStart), area.leftLen);
      if (area.rightLen > 0) write(withX(line, area.rightStart), area.rightLen);
    }
  });
  return end;
}

}  // namespace

FillAreaParams calcFillArea(const SubImgBox& block, const SubImgBox& hole, VXint64 voxelSize) {
  const auto numVoxels = [](VXint64 first, VXint64 last) {
    return last < first ? 0 : wrapAdd(wrapSubtract(last, first), VXint64{1});
  };
  FillAreaParams area;
  area.fullLineLen = wrapAdd(wrapSubtract(block.v2.x, block.v1.x), VXint64{1});
  area.leftStart = block.v1.x;
  // The neighbours of the box are only asked for where they exist: the box may reach to the limits of the numbers.
  area.leftEnd = hole.v1.x > block.v2.x ? block.v2.x : wrapSubtract(hole.v1.x, VXint64{1});
  area.leftLen = hole.v1.x > block.v1.x ? numVoxels(area.leftStart, area.leftEnd) : 0;
  area.rightStart = hole.v2.x < block.v1.x ? block.v1.x : wrapAdd(hole.v2.x, VXint64{1});
  area.rightLen = hole.v2.x < block.v2.x ? numVoxels(area.rightStart, block.v2.x) : 0;
  area.fullLineNumBytes = wrapMultiply(area.fullLineLen, voxelSize);
  area.leftNumBytes = wrapMultiply(area.leftLen, voxelSize);
  area.rightNumBytes = wrapMultiply(area.rightLen, voxelSize);
  return area;
}

unsigned char* fillBorders(const VoxelBlock& block, const SubImgBox& hole, FillRun fill, const void* value) {
  if (block.box.isEmpty()) return nullptr;
  // One prepared line, of which every run is a copy.
  const auto lineLen = static_cast<std::size_t>(block.box.getExt().x);
  VXuint64 numBytes = 0;
  if (!multiplySizes(lineLen, block.voxelSize, numBytes)) throw std::bad_alloc();
  std::vector<unsigned char> line;
  if (numBytes > line.max_size()) throw std::bad_alloc();
  line.resize(static_cast<std::size_t>(numBytes));
  fill(line.data(), lineLen, value);
  return walkBorders(block, hole, [&](const TVector<VXint64>&, unsigned char* voxels, std::size_t numVoxels) {
    std::memcpy(voxels, line.data(), numVoxels * static_cast<std::size_t>(block.voxelSize));
  });
}

unsigned char* copyBorders(const VoxelBlock& block, const SubImgBox& hole, const VoxelBlock& in, ConvertRun convert) {
  return walkBorders(block, hole, [&](const TVector<VXint64>& position, unsigned char* voxels, std::size_t numVoxels) {
    in.checkData();
    const unsigned char* const from = in.at(position);
    if (convert) {
      convert(from, voxels, numVoxels);
    } else {
      std::memmove(voxels, from, numVoxels * static_cast<std::size_t>(block.voxelSize));
    }
  });
}

unsigned char* clampBorders(const VoxelBlock& block, const SubImgBox& hole, FillRun fill) {
  const FillAreaParams area = calcFillArea(block.box, hole, 1);
  const auto leftLen = static_cast<std::size_t>(area.leftLen);
  const auto rightLen = static_cast<std::size_t>(area.rightLen);
  const auto middleLen = static_cast<std::size_t>(area.fullLineLen - area.leftLen - area.rightLen);
  const auto voxelSize = static_cast<std::size_t>(block.voxelSize);
  unsigned char* end = nullptr;
  walkLines(block.box, [&](const TVector<VXint64>& line) {
    block.checkData();
    // A line outside the hole is the nearest line of the hole, extended as that one is.
    unsigned char* const middle = block.at(withX(line, hole.v1.x));
    const unsigned char* const nearest = block.at(hole.clamp(line));
    unsigned char* const left = block.at(line);
    if (leftLen > 0) fill(left, leftLen, nearest);
    if (middle != nearest) std::memcpy(middle, nearest, middleLen * voxelSize);
    if (rightLen > 0) fill(middle + middleLen * voxelSize, rightLen, nearest + (middleLen - 1) * voxelSize);
    if (leftLen > 0 || rightLen > 0 || middle != nearest)
      end = left + static_cast<std::size_t>(area.fullLineLen) * voxelSize;
  });
  return end;
}

}  // namespace vx
