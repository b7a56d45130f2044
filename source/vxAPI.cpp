// Start and stop of the library through the C interface.

#include "vxAPI.h"

#include "vxAPIFrame.h"
#include "vxInitSystemVX.h"
#include "vxTraceBuffer.h"

int VXInit(int major, int minor, int release) {
  const vx::TraceFrame trace("source/vxAPI:VXInit()");
  return vx::callSilently(0, [=] {
    const bool isCompatible = VXIsCAPILinkCompatible(major, minor, release) != 0;
    const int isStarted = vx::initVX();
    return isCompatible ? isStarted : 0;
  });
}

int VXDestroy(void) {
  const vx::TraceFrame trace("source/vxAPI:VXDestroy()");
  return vx::callSilently(1, [] {
    if (vx::checkNotProcessing("vxAPI: VXDestroy")) vx::destroyVX();
    return 1;
  });
}
