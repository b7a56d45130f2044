/* A host in C: loads the module library that its argument names, makes a module, and asks it for a box of voxels. */

#include <stdio.h>
#include <vxAPI.h>

int main(int argc, char** argv) {
  VXBaseOp* module;
  int tile[6];
  void* memory = tile;
  if (!VXInit(VX_C_API_MAJOR_VERSION, VX_C_API_MINOR_VERSION, VX_C_API_RELEASE_VERSION)) return 1;
  if (argc < 2 || !VXLoadLibrary(argv[1])) return 2;
  module = VXCreateModuleFromName("Greeter");
  if (!module) return 3;
  VXModuleSetFieldValue(module, "offset", "100");
  if (VXImageGetTile(VXModuleGetField(module, "output0"), &memory, 3, 1, 0, 3, 2, 1, VXint32Type) != 0) return 4;
  printf("host: %d %d %d / %d %d %d\n", tile[0], tile[1], tile[2], tile[3], tile[4], tile[5]);
  if (tile[0] != 113 || tile[5] != 125) return 5;
  VXDeleteModule(module);
  return VXDestroy() == 1 ? 0 : 6;
}
