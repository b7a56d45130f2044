/// \file vxVoxelLoops.h
/// The loops over a run of voxels for every voxel type: those of the processor for standard types, plain loops over the
/// operations of the slots for carriers.

#ifndef VX_VOXEL_LOOPS_H
#define VX_VOXEL_LOOPS_H

#include "vxRowKernels.h"
#include "vxTruncate.h"
#include "vxVoxelTypes.h"

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace vx {

/// Loops that write voxels of one type and read those of another.
struct ConversionLoops {
  ConvertRun convert;              ///< Casts voxels.
  ConvertScaledRun convertScaled;  ///< Maps voxels and casts the results.
};

namespace voxelLoops {

// Voxels are read and written as bytes, since a block may lie at any address.
template <class T>
StoredVoxel<T> load(const unsigned char* voxels, std::size_t i) {
  StoredVoxel<T> voxel;
  std::memcpy(&voxel, voxels + i * sizeof voxel, sizeof voxel);
  return voxel;
}

template <class T>
void store(unsigned char* voxels, std::size_t i, const StoredVoxel<T>& voxel) {
  std::memcpy(voxels + i * sizeof voxel, &voxel, sizeof voxel);
}

// A voxel or a mapped value as a voxel of T.
template <class T, class Value>
StoredVoxel<T> cast(const Value& value) {
  if constexpr (std::is_floating_point_v<Value> && std::is_integral_v<T>) {
    return truncateTo<T>(value);
  } else {
    return static_cast<StoredVoxel<T>>(value);
  }
}

template <class T, class IN>
void convert(const void* in, void* out, std::size_t n) {
  const auto* const from = static_cast<const unsigned char*>(in);
  auto* const to = static_cast<unsigned char*>(out);
  for (std::size_t i = 0; i < n; ++i) store<T>(to, i, cast<T>(load<IN>(from, i)));
}

template <class T, class IN>
void convertScaled(const void* in, void* out, std::size_t n, double scale, double shift) {
  const auto* const from = static_cast<const unsigned char*>(in);
  auto* const to = static_cast<unsigned char*>(out);
  for (std::size_t i = 0; i < n; ++i) {
    if constexpr (isStandardVoxel<IN>) {
      store<T>(to, i, cast<T>(static_cast<double>(load<IN>(from, i)) * scale + shift));
    } else {
      store<T>(to, i, cast<T>(load<IN>(from, i) * scale + shift));
    }
  }
}

// Copies as bytes, then maps in place by the operations of the output.
template <class T>
void copyAndMap(const void* in, void* out, std::size_t n, double scale, double shift) {
  if (in != out) std::memmove(out, in, n * sizeof(T));
  convertScaled<T, T>(out, out, n, scale, shift);
}

template <class T>
void fill(void* out, std::size_t n, const void* value) {
  auto* const to = static_cast<unsigned char*>(out);
  const auto voxel = load<T>(static_cast<const unsigned char*>(value), 0);
  for (std::size_t i = 0; i < n; ++i) store<T>(to, i, voxel);
}

template <class T>
void minMax(const void* in, std::size_t n, void* minInOut, void* maxInOut) {
  const auto* const from = static_cast<const unsigned char*>(in);
  auto& minimum = *static_cast<T*>(minInOut);
  auto& maximum = *static_cast<T*>(maxInOut);
  for (std::size_t i = 0; i < n; ++i) {
    const T voxel = load<T>(from, i);
    if (voxel < minimum) minimum = voxel;
    if (maximum < voxel) maximum = voxel;
  }
}

template <class T>
bool isOneValued(const void* in, std::size_t n, const void* value) {
  const auto* const from = static_cast<const unsigned char*>(in);
  const auto& first = *static_cast<const T*>(value);
  for (std::size_t i = 0; i < n; ++i) {
    if (!(load<T>(from, i) == first)) return false;
  }
  return true;
}

}  // namespace voxelLoops

/// \return the loops that write `T` and read `IN`.
template <class T, class IN>
ConversionLoops conversionLoops() {
  if constexpr (isStandardVoxel<T> && isStandardVoxel<IN>) {
    const RowKernels& kernels = rowKernels();
    return {kernels.convert[slotOf<T>][slotOf<IN>], kernels.convertScaled[slotOf<T>][slotOf<IN>]};
  } else {
    return {&voxelLoops::convert<T, IN>, &voxelLoops::convertScaled<T, IN>};
  }
}

/// \return the loop that maps voxels of one type, stored as `T`, to voxels of the same type.
template <class T>
ConvertScaledRun mappingLoop() {
  if constexpr (isStandardVoxel<T>) {
    return rowKernels().convertScaled[slotOf<T>][slotOf<T>];
  } else {
    return &voxelLoops::copyAndMap<T>;
  }
}

/// \return the loop that sets voxels.
template <class T>
FillRun fillLoop() {
  if constexpr (isStandardVoxel<T>) {
    return rowKernels().fill[slotOf<T>];
  } else {
    return &voxelLoops::fill<T>;
  }
}

/// \return the loop that extends a range by voxels; the limits are objects of the voxel's type.
template <class T>
MinMaxRun minMaxLoop() {
  if constexpr (isStandardVoxel<T>) {
    return rowKernels().minMax[slotOf<T>];
  } else {
    return &voxelLoops::minMax<T>;
  }
}

/// \return the loop that compares voxels with one.
template <class T>
IsOneValuedRun isOneValuedLoop() {
  if constexpr (isStandardVoxel<T>) {
    return rowKernels().isOneValued[slotOf<T>];
  } else {
    return &voxelLoops::isOneValued<T>;
  }
}

}  // namespace vx

#endif
