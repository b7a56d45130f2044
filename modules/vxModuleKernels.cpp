#include "vxModuleKernels.h"

namespace vx::modules {

const ModuleKernels& moduleKernels() {
#ifdef VX_HAS_X86_MODULE_KERNELS
  static const ModuleKernels& best = [&]() -> const ModuleKernels& {
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512vl")) {
      return moduleKernelsAvx512;
    }
    return __builtin_cpu_supports("avx2") ? moduleKernelsAvx2 : moduleKernelsBaseline;
  }();
  return best;
#else
  return moduleKernelsBaseline;
#endif
}

template <>
StoreRow<double> getStoreRow<double>(VXDataType dataType) {
  return dataType >= 0 && dataType < numTypes ? moduleKernels().storeDouble[dataType] : nullptr;
}
template <>
StoreRow<float> getStoreRow<float>(VXDataType dataType) {
  return dataType >= 0 && dataType < numTypes ? moduleKernels().storeFloat[dataType] : nullptr;
}

}  // namespace vx::modules
