// Module libraries that must not be loaded: what is wrong with each is chosen by a definition.

#include "vxModule.h"

#include <stdexcept>

namespace vx::test {

class PluginBroken : public BaseOp {
 public:
  PluginBroken() : BaseOp(0, 0) {}
  VX_CLASS_HEADER(PluginBroken)
};
VX_CLASS_SOURCE(PluginBroken, "BaseOp")

#if defined(VX_PLUGIN_LACKS_SYMBOL)
void missingEverywhere();
void callMissing() { missingEverywhere(); }
#endif

namespace {

#if defined(VX_PLUGIN_THROWS_IN_START)
// A static object, which the library's own start doesn't guard.
struct Thrower {
  Thrower() {
    PluginBroken::initClass(nullptr, nullptr);
    throw VX_PLUGIN_THROWS_IN_START;
  }
};
const Thrower thrower;
#endif

__attribute__((constructor)) void attach() {
  const auto registerAll = [] {
    PluginBroken::initClass(nullptr, nullptr);
#if defined(VX_PLUGIN_THROWS_IN_REGISTRATION)
    throw std::runtime_error("registration");
#endif
#if defined(VX_PLUGIN_THROWS_A_NUMBER)
    throw 7;
#endif
  };
#if defined(VX_PLUGIN_IS_INCOMPATIBLE)
  attachModuleLibrary(1, 7, 0, 0, "1.7.0.0", registerAll);
#else
  attachModuleLibrary(VX_CPP_API_VERSION, registerAll);
#endif
}

}  // namespace

}  // namespace vx::test
