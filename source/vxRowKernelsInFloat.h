/// \file vxRowKernelsInFloat.h
/// Mapping of long runs of 16-bit voxels in single precision, where that gives the same bits as double precision.
/// A part of vxRowKernelsImpl.h, on the same conditions.
///
/// Twice as many voxels fit a vector, and the conversions from and to integers, which limit the speed in double, are
/// cheaper. Whether the results are the same can't be told from scale and shift: both are rounded, as are product and
/// sum, and truncation turns the least difference into a whole number. But there are only 65536 inputs, so a long run
/// affords to try them all. Mappings by plain fractions, such as 0.5 v + 3 or 255 v / 4095, mostly pass; of any scales
/// around 1 / 256 two of three do, of larger ones few.

#ifndef VX_ROW_KERNELS_IN_FLOAT_H
#define VX_ROW_KERNELS_IN_FLOAT_H

#include "vxRowKernels.h"
#include "vxRowKernelsConversion.h"

#include <limits>

namespace vx {
namespace {

/// Runs of so many voxels pay for the trial, which takes as long as about 120,000 voxels in double.
constexpr std::size_t inFloatLength = std::size_t(1) << 20;

/// Voxels that are tried at a time.
constexpr int trialLength = 1024;

/// True if runs of these types are worth a trial.
template <class Out, class In>
constexpr bool mayMapInFloat() {
  constexpr bool areIntegers = std::is_integral_v<In> && std::is_integral_v<Out>;
  return mapsFasterInFloat && areIntegers && sizeof(In) == 2 && sizeof(Out) == 1;
}

/// Maps as mapInCache() does, in single precision.
template <class Out, class In>
[[gnu::noinline]] void mapInFloat(const void* in, void* out, std::size_t n, double scale, double shift) {
  const FloatLanes scales = FloatLanes::all(static_cast<float>(scale));
  const FloatLanes shifts = FloatLanes::all(static_cast<float>(shift));
  forEachGroup<Out, In, FloatLanes::size>(in, out, n, [=](const Byte* from, Byte* to) {
    FloatLanes::load(from, In()).times(scales).plus(shifts).store(to, Out());
  });
}

/// True if all voxels of a type have the same results in single as in double precision. Ends at the first that differ.
template <class Out, class In>
bool isExactInFloat(double scale, double shift) {
  // C++ leaves open what becomes of numbers that exceed float.
  constexpr double limit = std::numeric_limits<float>::max();
  if (!(scale >= -limit && scale <= limit && shift >= -limit && shift <= limit)) return false;
  constexpr int lowest = std::numeric_limits<In>::min();
  constexpr int highest = std::numeric_limits<In>::max();
  for (int first = lowest; first < highest; first += trialLength) {
    In voxels[trialLength];
    Out inDouble[trialLength];
    Out inFloat[trialLength];
    for (int i = 0; i < trialLength; ++i) voxels[i] = static_cast<In>(first + i);
    mapInCache<Out, In>(voxels, inDouble, trialLength, scale, shift);
    mapInFloat<Out, In>(voxels, inFloat, trialLength, scale, shift);
    int differences = 0;
    for (int i = 0; i < trialLength; ++i) differences |= inDouble[i] ^ inFloat[i];
    if (differences != 0) return false;
  }
  return true;
}

/// The loop in single precision, or null where it is not worth a trial or didn't pass.
/// \param n length of the whole run, which the loop may get in parts.
template <class Out, class In>
ConvertScaledRun mappingInFloat(std::size_t n, double scale, double shift) {
  if constexpr (mayMapInFloat<Out, In>()) {
    if (n >= inFloatLength && isExactInFloat<Out, In>(scale, shift)) return &mapInFloat<Out, In>;
  }
  return nullptr;
}

}  // namespace
}  // namespace vx

#endif
