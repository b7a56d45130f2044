/// \file vxRowKernels.h
/// Loops over runs of voxels of the standard types, in versions for the processor's vector width.

#ifndef VX_ROW_KERNELS_H
#define VX_ROW_KERNELS_H

#include <cstddef>

namespace vx {

/// Number of standard types: both indices of the tables below are type numbers, 0 to 9.
inline constexpr int numRowKernelTypes = 10;

/// Converts a run of voxels. The input is converted as by a C cast: integers wrap, floating point numbers are truncated
/// to integers as vx::truncateTo() tells, numbers are rounded to the nearest floating point number.
/// \param in  first of `n` voxels of the input type.
/// \param out first of `n` voxels of the output type. The runs must not overlap, but those of one type may be one run
///            or overlap in any way (the conversion of a type to itself is a memory move).
/// \param n   number of voxels, 0 included.
using ConvertRun = void (*)(const void* in, void* out, std::size_t n);

/// Converts a run of voxels with the mapping `v * scale + shift`, computed in 8-byte floating point: the product is
/// rounded, then the sum is, then the result is converted to the output type as by ::ConvertRun.
/// \param in, out, n as for ::ConvertRun; voxels of one format may be mapped in place (`in == out`), no other overlap.
using ConvertScaledRun = void (*)(const void* in, void* out, std::size_t n, double scale, double shift);

/// Extends a range by a run of voxels, in the order of memory: a voxel that is less than the minimum replaces it, and
/// one that the maximum is less than replaces that. So NaN voxels never enter, a NaN as first limit stays, and of
/// zeros with different signs the first stays.
/// \param in  first of `n` voxels.
/// \param minInOut, maxInOut one voxel each, not in the run; set them to the first voxel before the first run.
using MinMaxRun = void (*)(const void* in, std::size_t n, void* minInOut, void* maxInOut);

/// True if all voxels of a run equal `*value` by `==`: -0.0 equals 0.0, and NaN equals nothing. True for 0 voxels.
using IsOneValuedRun = bool (*)(const void* in, std::size_t n, const void* value);

/// Sets all voxels of a run to the bits of `*value`, which is not in the run.
using FillRun = void (*)(void* out, std::size_t n, const void* value);

/// One version of all loops. Pointers need no alignment at all. Long double (type 8) is double (type 7).
/// A long run of contiguous memory is best handed over in one call: results that exceed the caches bypass them.
/// Thread-safe, no errors, no allocation.
struct RowKernels {
  ConvertRun convert[numRowKernelTypes][numRowKernelTypes];              ///< By output type, then input type.
  ConvertScaledRun convertScaled[numRowKernelTypes][numRowKernelTypes];  ///< By output type, then input type.
  MinMaxRun minMax[numRowKernelTypes];                                   ///< By type.
  IsOneValuedRun isOneValued[numRowKernelTypes];                         ///< By type.
  FillRun fill[numRowKernelTypes];                                       ///< By type.
};

/// The instruction sets that versions exist for. On other processors than x86 only `Baseline` is supported.
enum class InstructionSet { Baseline, Avx2, Avx512 };

/// True if this processor and its system run that version.
bool isSupported(InstructionSet set);

/// One version, for tests and benchmarks; the baseline where the set is not supported.
const RowKernels& rowKernelsFor(InstructionSet set);

/// The version for this processor, chosen on the first call. All versions give the same bits.
const RowKernels& rowKernels();

}  // namespace vx

#endif
