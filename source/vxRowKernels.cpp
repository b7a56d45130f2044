// The choice among the versions of the loops over runs of voxels.

#include "vxRowKernels.h"

namespace vx {

extern const RowKernels rowKernelsBaseline;
#if VX_HAS_X86_ROW_KERNELS
extern const RowKernels rowKernelsAvx2;
extern const RowKernels rowKernelsAvx512;
#endif

bool isSupported(InstructionSet set) {
#if VX_HAS_X86_ROW_KERNELS
  // Asked before constructors have run, too, so the processor's features may not have been read yet.
  __builtin_cpu_init();
  switch (set) {
    case InstructionSet::Baseline:
      return true;
    case InstructionSet::Avx2:
      return __builtin_cpu_supports("avx2");
    case InstructionSet::Avx512:
      return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
             __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl");
  }
  return false;
#else
  return set == InstructionSet::Baseline;
#endif
}

const RowKernels& rowKernelsFor(InstructionSet set) {
#if VX_HAS_X86_ROW_KERNELS
  if (set == InstructionSet::Avx512 && isSupported(set)) return rowKernelsAvx512;
  if (set == InstructionSet::Avx2 && isSupported(set)) return rowKernelsAvx2;
#else
  static_cast<void>(set);
#endif
  return rowKernelsBaseline;
}

const RowKernels& rowKernels() {
  static const RowKernels& chosen = rowKernelsFor(isSupported(InstructionSet::Avx512) ? InstructionSet::Avx512
                                                  : isSupported(InstructionSet::Avx2) ? InstructionSet::Avx2
                                                                                      : InstructionSet::Baseline);
  return chosen;
}

}  // namespace vx
