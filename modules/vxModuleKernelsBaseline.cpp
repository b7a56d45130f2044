#define VX_MODULE_KERNELS moduleKernelsBaseline
#include "vxModuleKernelsImpl.h"
