/// \file vxRowKernelsConversion.h
/// Conversion and mapping of voxels in vectors. A part of vxRowKernelsImpl.h, on the same conditions.

#ifndef VX_ROW_KERNELS_CONVERSION_H
#define VX_ROW_KERNELS_CONVERSION_H

#include "vxTypes.h"

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace vx {
namespace {

// Voxels in memory ---------------------------------------------------------------------------------------------------

/// A voxel at any address, whatever its neighbours are accessed as.
template <class T>
struct [[gnu::packed, gnu::may_alias]] Voxel {
  T value;
};

template <class T>
const Voxel<T>* voxels(const void* run) {
  return static_cast<const Voxel<T>*>(run);
}

template <class T>
Voxel<T>* voxels(void* run) {
  return static_cast<Voxel<T>*>(run);
}

using Byte = unsigned char;

/// An unsigned integer of the size of a voxel.
template <std::size_t size>
using BitsOfSize =
    std::conditional_t<size == 1, VXuint8,
                       std::conditional_t<size == 2, VXuint16, std::conditional_t<size == 4, VXuint32, VXuint64>>>;

// Conversion ---------------------------------------------------------------------------------------------------------

/// Works on a run in groups as wide as a type of lanes; the last group is completed in a buffer.
template <class Out, class In, int groupSize, class Group>
inline __attribute__((always_inline)) void forEachGroup(const void* in, void* out, std::size_t n, Group group) {
  auto inBytes = static_cast<const Byte*>(in);
  auto outBytes = static_cast<Byte*>(out);
  const std::size_t numGroups = n / groupSize;
  for (std::size_t i = 0; i < numGroups; ++i) {
    group(inBytes, outBytes);
    inBytes += groupSize * sizeof(In);
    outBytes += groupSize * sizeof(Out);
  }
  const std::size_t rest = n % groupSize;
  if (rest != 0) {
    Byte inRest[groupSize * sizeof(In)] = {};
    Byte outRest[groupSize * sizeof(Out)];
    std::memcpy(inRest, inBytes, rest * sizeof(In));
    group(inRest, outRest);
    std::memcpy(outBytes, outRest, rest * sizeof(Out));
  }
}

/// Loads four lanes that lie one after the other, together where the processor gains by that.
template <class In, class AnyLanes>
inline __attribute__((always_inline)) void loadFour(const Byte* in, AnyLanes (&lanes)[4]) {
  if constexpr (requires { AnyLanes::loadFour(in, lanes, In()); }) {
    AnyLanes::loadFour(in, lanes, In());
  } else {
    for (std::size_t i = 0; i < 4; ++i) lanes[i] = AnyLanes::load(in + i * AnyLanes::size * sizeof(In), In());
  }
}

/// Converts a run by way of lanes of double, which `map` maps.
template <class Out, class In, class Map>
inline __attribute__((always_inline)) void convertInLanes(const void* in, void* out, std::size_t n, Map map) {
  auto inBytes = static_cast<const Byte*>(in);
  auto outBytes = static_cast<Byte*>(out);
  constexpr std::size_t inStep = Lanes::size * sizeof(In);
  constexpr std::size_t outStep = Lanes::size * sizeof(Out);
  // Four at a time, so that one need not wait for the other.
  for (; n >= 4 * Lanes::size; n -= 4 * Lanes::size) {
    Lanes lanes[4];
    loadFour<In>(inBytes, lanes);
    for (Lanes& mapped : lanes) mapped = map(mapped);
    for (std::size_t i = 0; i < 4; ++i) lanes[i].store(outBytes + i * outStep, Out());
    inBytes += 4 * inStep;
    outBytes += 4 * outStep;
  }
  forEachGroup<Out, In, Lanes::size>(
      inBytes, outBytes, n, [=](const Byte* from, Byte* to) { map(Lanes::load(from, In())).store(to, Out()); });
}

template <class Out, class In>
[[gnu::noinline]] void convertInCache(const void* in, void* out, std::size_t n) {
  if constexpr (std::is_floating_point_v<In> && std::is_integral_v<Out>) {
    // The intermediate integer of truncateTo(): 32 bits are enough for all but these.
    constexpr bool needs64Bits = std::is_same_v<Out, VXuint32> || std::is_same_v<Out, VXint64>;
    if constexpr (std::is_same_v<In, VXfloat> && (!needs64Bits || FloatLanes::has64Bits)) {
      forEachGroup<Out, In, FloatLanes::size>(
          in, out, n, [](const Byte* from, Byte* to) { FloatLanes::load(from).store(to, Out()); });
    } else {
      forEachGroup<Out, In, Lanes::size>(in, out, n,
                                         [](const Byte* from, Byte* to) { Lanes::load(from, In()).store(to, Out()); });
    }
  } else {
    const auto* __restrict from = voxels<In>(in);
    auto* __restrict to = voxels<Out>(out);
    for (std::size_t i = 0; i < n; ++i) to[i].value = static_cast<Out>(from[i].value);
  }
}

/// No promise is made to the compiler that the runs don't overlap: one run may be mapped in place.
template <class Out, class In>
[[gnu::noinline]] void mapInCache(const void* in, void* out, std::size_t n, double scale, double shift) {
  const Lanes scales = Lanes::all(scale);
  const Lanes shifts = Lanes::all(shift);
  convertInLanes<Out, In>(in, out, n, [=](Lanes lanes) { return lanes.times(scales).plus(shifts); });
}

/// Runs of 8-bit voxels from this size on are mapped by a table of all results, where the processor has such lookups.
constexpr std::size_t lookUpLength = 1024;

template <class Out, class In>
void convertScaledInCache(const void* in, void* out, std::size_t n, double scale, double shift) {
  if constexpr (sizeof(In) == 1 && std::is_integral_v<Out> && sizeof(Out) <= 2) {
    if (n >= lookUpLength && canLookUp()) {
      Byte allVoxels[256];
      for (int i = 0; i < 256; ++i) allVoxels[i] = static_cast<Byte>(i);
      BitsOfSize<sizeof(Out)> results[256];
      mapInCache<Out, In>(allVoxels, results, 256, scale, shift);
      lookUp(results, static_cast<const Byte*>(in), static_cast<Byte*>(out), n);
      return;
    }
  }
  mapInCache<Out, In>(in, out, n, scale, shift);
}

}  // namespace
}  // namespace vx

#endif
