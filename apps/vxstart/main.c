/* The smallest host: checks that it fits the library, which its load has started, and stops it. */

#include "vxAPI.h"

#include <stdio.h>

int main(void) {
  if (!VXInit(VX_C_API_MAJOR_VERSION, VX_C_API_MINOR_VERSION, VX_C_API_RELEASE_VERSION)) {
    fprintf(stderr, "vxstart: the library does not fit this program.\n");
    return 1;
  }
  printf("The library is started.\n");
  VXDestroy();
  return 0;
}
