#define VX_MODULE_KERNELS moduleKernelsAvx2
#include "vxModuleKernelsImpl.h"
