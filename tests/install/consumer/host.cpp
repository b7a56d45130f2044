// A host in C++: as the one in C, with the classes of the library where they are handy.

#include <iostream>
#include <vector>
#include <vxAPI.h>
#include <vxBaseOp.h>
#include <vxSubImgBox.h>

int main(int argc, char** argv) {
  if (!VXInit(VX_C_API_MAJOR_VERSION, VX_C_API_MINOR_VERSION, VX_C_API_RELEASE_VERSION)) return 1;
  if (argc < 2 || !VXLoadLibrary(argv[1])) return 2;
  vx::BaseOp* const module = VXCreateModuleFromName("Greeter");
  if (!module) return 3;
  VXFieldSetIntValue(VXModuleGetField(module, "offset"), 100);
  const vx::SubImgBox box(vx::TVector<VXint64>(3, 1, 0, 0, 0, 0), vx::TVector<VXint64>(5, 2, 0, 0, 0, 0));
  std::vector<VXint32> tile(static_cast<std::size_t>(box.getNumVoxels()));
  void* memory = tile.data();
  if (VXImageGetTile(module->getOutField(0), &memory, 3, 1, 0, 3, 2, 1, VXint32Type) != 0) return 4;
  std::cout << "host in C++: " << module->getTypeIdName() << " from " << tile.front() << " to " << tile.back() << '\n';
  if (tile.front() != 113 || tile.back() != 125) return 5;
  VXDeleteModule(module);
  return VXDestroy() == 1 ? 0 : 6;
}
