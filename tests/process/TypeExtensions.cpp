// Stands for the optional library of further voxel types: it says that it was loaded, and under which name.

#include "vxBase.h"

#include <cstdio>

namespace vx::test {

class ExtensionClass : public Base {
 public:
  VX_ABSTRACT_CLASS_HEADER(ExtensionClass)
};
VX_ABSTRACT_CLASS_SOURCE(ExtensionClass, "Base")

namespace {

__attribute__((constructor)) void attach() {
  ExtensionClass::initClass(nullptr, nullptr);
  std::printf("extensions loaded as %s\n", ExtensionClass::getClassTypeId()->getDllName());
  std::fflush(stdout);
}

}  // namespace

}  // namespace vx::test
