// Boxes and positions from inputs, and the same in 128 bits.

#ifndef VX_FUZZ_BOXES_H
#define VX_FUZZ_BOXES_H

#include "FuzzInput.h"

#include "vxSubImgBox.h"

#include <sstream>
#include <string>

namespace vx::fuzz {

__extension__ using Wide = __int128;

inline TVector<VXint64> takeVector(FuzzInput& input) {
  TVector<VXint64> vector;
  for (std::size_t i = 0; i < vector.size(); ++i) vector[i] = input.takeNumber();
  return vector;
}

/// An extent of few voxels.
inline TVector<VXint64> takeSmallExtent(FuzzInput& input) {
  TVector<VXint64> extent;
  for (std::size_t i = 0; i < extent.size(); ++i) extent[i] = input.takeInRange<VXint64>(1, i < 2 ? 5 : 2);
  return extent;
}

/// Corners that are apart by any numbers, or by few.
inline SubImgBox takeBox(FuzzInput& input) {
  const TVector<VXint64> v1 = takeVector(input);
  const TVector<VXint64> v2 = takeVector(input);
  return SubImgBox(v1, input.takeBool() ? v1 + v2 : v2);
}

inline TVector<VXint64> makeVector(const Wide (&numbers)[6]) {
  TVector<VXint64> vector;
  // Cast to fewer bits, a number wraps.
  for (std::size_t i = 0; i < vector.size(); ++i) vector[i] = static_cast<VXint64>(numbers[i]);
  return vector;
}

template <class Value>
std::string print(const Value& value) {
  std::ostringstream text;
  text << value;
  return text.str();
}

}  // namespace vx::fuzz

#endif
