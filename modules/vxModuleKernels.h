/// \file vxModuleKernels.h
/// Loops over rows of voxels that modules with neighbourhoods consist of, in one version for each instruction set.

#ifndef VX_MODULE_KERNELS_H
#define VX_MODULE_KERNELS_H

#include "vxRowStore.h"

#include <cstddef>

namespace vx::modules {

/// Number of standard voxel types; tables by type have that many entries, null where there is no such loop.
inline constexpr int numTypes = 10;

/// out[i] = sum over k of weights[|k|] * rows[k][i] for k from -radius to radius. \param rows 2 * radius + 1 rows; the
/// one in the middle belongs to weights[0]. Sums of two voxels of an integer type are exact.
template <class W>
using CombineRows = void (*)(const void* const* rows, const W* weights, std::size_t radius, W* out, std::size_t number);

/// All loops. Every version gives the same bits.
struct ModuleKernels {
  StoreRow<double> storeDouble[numTypes];     ///< Rounds and limits numbers, by output type.
  StoreRow<float> storeFloat[numTypes];       ///< The same from single precision.
  CombineRows<float> combineFloat[numTypes];  ///< Weighted sums in single precision, of 8 and 16 bits and float.
  CombineRows<double> combineDouble;          ///< Weighted sums in double precision, of double.
  /// sums[i] += add[i] - subtract[i], of 8 and 16 bits; `subtract` may be null.
  void (*moveSums[numTypes])(const void* add, const void* subtract, VXint32* sums, std::size_t number);
  /// The same of sums.
  void (*moveSumsOfSums)(const VXint32* add, const VXint32* subtract, VXint32* sums, std::size_t number);
  /// out[i] = in[i] + ... + in[i + size - 1]
  void (*sumAlong)(const VXint32* in, std::size_t size, VXint32* out, std::size_t number);
  /// Rounds sums[i] / count exactly, halves to even, by output type. Floating point results are the quotient itself.
  void (*storeMean[numTypes])(const VXint32* sums, VXint32 count, void* out, std::size_t number);
  /// Sorts the voxels of three rows at each position: `in` is three rows, `out` those of the smallest, middle and
  /// greatest values.
  void (*sortThree[numTypes])(const void* const* in, void* const* out, std::size_t number);
  /// The median of 9 voxels: three sorted rows, each read at i, i + 1 and i + 2.
  void (*median9[numTypes])(const void* const* rows, void* out, std::size_t number);
  /// The median of 27 voxels: nine rows, sorted by the first and the second index, each read at i, i + 1 and i + 2.
  void (*median27[numTypes])(const void* const* rows, void* out, std::size_t number);
  /// The median of windows of an odd number of voxels, at most 65535: `numRows` rows, each read from i to
  /// i + width - 1. Of integers of 8 to 32 bits.
  void (*medianOfWindows[numTypes])(const void* const* rows, std::size_t numRows, std::size_t width, void* out,
                                    std::size_t number);
};

/// \return the loops for the processor.
const ModuleKernels& moduleKernels();

/// The versions, made if the compiler can.
extern const ModuleKernels moduleKernelsBaseline;
extern const ModuleKernels moduleKernelsAvx2;
extern const ModuleKernels moduleKernelsAvx512;

}  // namespace vx::modules

#endif
