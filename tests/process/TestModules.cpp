// A library that brings one class, as module libraries do: registered at load, removed by an unload through VX.

#include "vxAPI.h"
#include "vxBase.h"

namespace vx::test {

class LoadedClass : public Base {
 public:
  VX_CLASS_HEADER(LoadedClass)
};
VX_CLASS_SOURCE(LoadedClass, "Base")

namespace {

__attribute__((constructor)) void attach() { LoadedClass::initClass(nullptr, nullptr); }

__attribute__((destructor)) void detach() {
  if (VXIsCurrentlyUnloadingLibrary()) Runtime::destroyType("LoadedClass");
}

}  // namespace

}  // namespace vx::test
