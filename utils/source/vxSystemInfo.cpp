#include "vxSystemInfo.h"

#include <algorithm>
#include <thread>

namespace vx {

VXuint32 SystemInfo::getNumVirtualProcessors() noexcept { return std::max(1U, std::thread::hardware_concurrency()); }

}  // namespace vx
