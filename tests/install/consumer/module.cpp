// A module library without modules: it is loaded and uses the base layer.

#include <vxRuntime.h>

namespace {

[[maybe_unused]] const bool isLoaded = vx::Runtime::fromName("Base") != nullptr;

}  // namespace
