#include "image.h"

#include <algorithm>
#include <limits>

namespace vxtile {

namespace {

// A module that fails has told why already; the state of the image says so in its own words, if it has any.
[[noreturn]] void failInvalid(VXField* output, const std::string& name, VXErrorCode code) {
  const std::string state = textOrEmpty(VXGetImageStateString(output));
  throw Failure(ExitCode::calculation, name + ": there is no valid image (code " + std::to_string(code) + ", " +
                                           VXGetErrorCodeDescription(code) + ")" + (state.empty() ? "" : ": " + state));
}

std::size_t multiplied(std::size_t a, std::size_t b) {
  return b != 0 && a > std::numeric_limits<std::size_t>::max() / b ? std::numeric_limits<std::size_t>::max() : a * b;
}

// The end of a piece: between two pages if there is such a place, behind `first`.
int pieceEnd(int first, std::size_t thickness, int pageExtent, int end) {
  if (thickness >= static_cast<std::size_t>(end - first)) return end;
  const int last = first + static_cast<int>(thickness);
  const int aligned = last - last % pageExtent;
  return aligned > first ? aligned : last;
}

}  // namespace

ImageInfo readImageInfo(VXField* output, const std::string& name) {
  ImageInfo info;
  const auto check = [&](VXErrorCode code) {
    if (code != VX_RESULT_OK) failInvalid(output, name, code);
  };
  Extent& e = info.extent;
  Extent& p = info.pageExtent;
  int size = 0;
  check(VXImageGetSize6D(output, &e[0], &e[1], &e[2], &e[3], &e[4], &e[5]));
  check(VXImageGetPageSize6D(output, &p[0], &p[1], &p[2], &p[3], &p[4], &p[5]));
  check(VXImageGetType(output, &info.type, &size));
  check(VXImageGetMinValue(output, &info.minimum));
  check(VXImageGetMaxValue(output, &info.maximum));
  check(VXImageGetVoxelToWorldMatrix(output, info.toWorld.data()));
  if (std::any_of(e.begin(), e.end(), [](int length) { return length < 1; })) {
    throw Failure(ExitCode::calculation, name + ": the image is too large for this interface");
  }
  return info;
}

std::size_t Box::numVoxels() const {
  std::size_t number = 1;
  for (const int length : extent) number = multiplied(number, static_cast<std::size_t>(length));
  return number;
}

std::string Box::text() const {
  std::string text;
  for (std::size_t i = 0; i < numAxes; ++i) {
    if (first[i] == 0 && extent[i] == 1) continue;
    text += (text.empty() ? "" : ", ") + std::string(1, axisLetters[i]) + " " + std::to_string(first[i]);
    if (extent[i] > 1) text += ":" + std::to_string(first[i] + extent[i] - 1);
  }
  return text.empty() ? "one voxel" : text;
}

Box boxOf(const BoxRequest& request, const Extent& imageExtent, const std::string& name) {
  Box box{{}, imageExtent};
  for (std::size_t i = 0; i < numAxes; ++i) {
    if (!request[i]) continue;
    const auto [first, last] = *request[i];
    if (first < 0 || last >= imageExtent[i]) {
      throw Failure(ExitCode::network, name + ": the box " + axisLetters[i] + " " + std::to_string(first) + ":" +
                                           std::to_string(last) + " reaches past the image, which has " +
                                           axisLetters[i] + " 0:" + std::to_string(imageExtent[i] - 1));
    }
    box.first[i] = static_cast<int>(first);
    box.extent[i] = static_cast<int>(last - first + 1);
  }
  return box;
}

std::vector<Box> cutBox(const Box& box, const Extent& pageExtent, std::size_t voxelBytes, std::size_t pieceBytes,
                        const CutRules& rules) {
  // All axes in front of the cut fit into one piece, all behind it have extent 1 there.
  std::size_t cut = 0;
  std::size_t sliceBytes = voxelBytes;
  while (cut < rules.lastCut) {
    const std::size_t larger = multiplied(sliceBytes, static_cast<std::size_t>(box.extent[rules.order[cut]]));
    if (cut >= rules.firstCut && larger > pieceBytes) break;
    sliceBytes = larger;
    ++cut;
  }
  const std::size_t axis = rules.order[cut];
  const int page = std::max(pageExtent[axis], 1);
  std::size_t thickness = std::max<std::size_t>(pieceBytes / sliceBytes, 1);
  // A piece thinner than a page needs that page again, which may have gone meanwhile. So it is larger, within limits:
  // as thick as a page, or else half of it, a third, and so on.
  const auto pageThickness = static_cast<std::size_t>(page);
  const std::size_t numParts = (multiplied(sliceBytes, pageThickness) - 1) / multiplied(pieceBytes, 4) + 1;
  thickness = std::max(thickness, pageThickness / numParts);

  std::vector<Box> pieces;
  Box piece = box;
  for (std::size_t i = cut + 1; i < numAxes; ++i) piece.extent[rules.order[i]] = 1;
  const auto next = [&] {
    // Counts up the axes behind the cut, the fastest first.
    for (std::size_t i = cut + 1; i < numAxes; ++i) {
      const std::size_t a = rules.order[i];
      if (++piece.first[a] < box.first[a] + box.extent[a]) return true;
      piece.first[a] = box.first[a];
    }
    return false;
  };
  const int end = box.first[axis] + box.extent[axis];
  do {
    for (int first = box.first[axis]; first < end; first += piece.extent[axis]) {
      piece.first[axis] = first;
      piece.extent[axis] = pieceEnd(first, thickness, page, end) - first;
      pieces.push_back(piece);
    }
    piece.first[axis] = box.first[axis];
  } while (next());
  if (rules.isBackward) std::reverse(pieces.begin(), pieces.end());
  return pieces;
}

}  // namespace vxtile
