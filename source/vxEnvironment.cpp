#include "vxEnvironment.h"

#include <cstdlib>

namespace vx {

const char* environmentText(const char* name) noexcept {
#if defined(__GLIBC__)
  return secure_getenv(name);
#else
  return std::getenv(name);
#endif
}

}  // namespace vx
