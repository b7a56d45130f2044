/* The smallest host: checks that it fits the library, which its load has started, shows the voxel types that the
   library knows, and stops it. */

#include "vxAPI.h"
#include "vxDataTypes.h"

#include <stdio.h>

int main(void) {
  VXDataType type;
  if (!VXInit(VX_C_API_MAJOR_VERSION, VX_C_API_MINOR_VERSION, VX_C_API_RELEASE_VERSION)) {
    fprintf(stderr, "vxstart: the library does not fit this program.\n");
    return 1;
  }
  printf("The library is started. Its voxel types:\n\n");
  printf("%6s  %-14s %5s  %24s  %24s\n", "number", "name", "bytes", "minimum", "maximum");
  for (type = 0; type < VXNumDataTypes(); ++type) {
    printf("%6d  %-14s %5u  %24.17g  %24.17g\n", type, VXNameFromDataType(type), VXSizeOf(type), VXDataTypeMin(type),
           VXDataTypeMax(type));
  }
  VXDestroy();
  return 0;
}
