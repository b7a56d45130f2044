#define VX_MODULE_KERNELS moduleKernelsAvx512
#include "vxModuleKernelsImpl.h"
