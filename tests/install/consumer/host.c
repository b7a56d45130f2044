/* A host in C: starts the library, loads the module library whose path is its argument, and stops the library. */

#include <stdio.h>
#include <vxAPI.h>

int main(int argc, char** argv) {
  if (!VXInit(VX_C_API_MAJOR_VERSION, VX_C_API_MINOR_VERSION, VX_C_API_RELEASE_VERSION)) return 1;
  if (argc > 1 && !VXLoadLibrary(argv[1])) return 2;
  if (VXIsCAPILinkCompatible(2, 0, 0)) return 3;
  printf("host: %s\n", VXGetErrorCodeDescription(VX_RESULT_OK));
  return VXDestroy() == 1 ? 0 : 4;
}
