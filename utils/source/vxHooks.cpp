// The two hooks of a host application, stored for whoever asks.

#include "vxUtilsAPI.h"

namespace {

VXApplicationProperties applicationProperties = {};
VXEventFilterApplicationHookCB eventFilter = nullptr;
void* eventFilterUserData = nullptr;

}  // namespace

VXApplicationProperties* VXGetApplicationPropertiesHook(void) {
  VXApplicationProperties& hook = applicationProperties;
  const bool isSet =
      hook.getStringCB || hook.getInt32CB || hook.getDoubleCB || hook.getBoolCB || hook.applicationUsrData;
  return isSet ? &hook : nullptr;
}

void VXSetApplicationPropertiesHook(const VXApplicationProperties* properties) {
  applicationProperties = properties ? *properties : VXApplicationProperties{};
}

VXEventFilterApplicationHookCB VXGetEventFilterApplicationHookCB(void) { return eventFilter; }

void* VXGetEventFilterApplicationHookCBUserData(void) { return eventFilterUserData; }

void VXSetEventFilterApplicationHook(VXEventFilterApplicationHookCB callback, void* userData) {
  eventFilter = callback;
  eventFilterUserData = userData;
}
