#include "vxAPIFrame.h"

namespace vx {

std::atomic<unsigned char> _vxAPIRecursionFlag{0};

}  // namespace vx
