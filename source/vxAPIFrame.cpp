#include "vxAPIFrame.h"

#include "vxFieldsEngineHooks.h"

namespace vx {

std::atomic<unsigned char> _vxAPIRecursionFlag{0};

bool checkNotProcessing(const CallLabel& label, VXErrorCode code) {
  if (fieldsEngineHooks().isProcessingActive() == 0) return true;
  report(VX_ERROR, label, code,
         "This call would free what is being calculated. It is not allowed during image processing. Ignoring call.");
  return false;
}

}  // namespace vx
