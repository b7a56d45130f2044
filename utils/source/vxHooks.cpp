// The two hooks of a host application, stored for whoever asks.

#include "vxUtilsAPI.h"

namespace {

VXApplicationProperties applicationProperties;
bool hasApplicationProperties = false;
VXEventFilterApplicationHookCB eventFilter = nullptr;
void* eventFilterUserData = nullptr;

}  // namespace

const VXApplicationProperties* VXGetApplicationPropertiesHook(void) {
  return hasApplicationProperties ? &applicationProperties : nullptr;
}

void VXSetApplicationPropertiesHook(const VXApplicationProperties* properties) {
  hasApplicationProperties = properties != nullptr;
  applicationProperties = properties ? *properties : VXApplicationProperties{};
}

VXEventFilterApplicationHookCB VXGetEventFilterApplicationHookCB(void) { return eventFilter; }

void* VXGetEventFilterApplicationHookCBUserData(void) { return eventFilterUserData; }

void VXSetEventFilterApplicationHook(VXEventFilterApplicationHookCB callback, void* userData) {
  eventFilter = callback;
  eventFilterUserData = userData;
}
