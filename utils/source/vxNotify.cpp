#include "vxNotify.h"

#include <ostream>
#include <string>

namespace vx {

namespace {

struct Notification {
  unsigned int code;
  void* arg1;
  void* arg2;
};

void invokeNotifyCB(CallbackList::Function function, void* userData, const void* event) {
  const auto& notification = *static_cast<const Notification*>(event);
  reinterpret_cast<VXNotifyCB>(function)(userData, notification.code, notification.arg1, notification.arg2);
}

}  // namespace

Notify::~Notify() = default;

void Notify::notify(unsigned int code, void* arg1, void* arg2) const {
  const Notification notification{code, arg1, arg2};
  _callbacks.call(code, CallbackList::Match::allBits, CallbackList::Reentry::allowed, &invokeNotifyCB, &notification);
}

VXCallbackHandle Notify::addNotifyCB(VXNotifyCB callback, void* userData, unsigned int codeMask) {
  if (!callback) return 0;
  return _callbacks.add(reinterpret_cast<CallbackList::Function>(callback), userData, codeMask);
}

bool Notify::removeNotifyCB(VXCallbackHandle handle) { return _callbacks.remove(handle); }

void Notify::removeAllNotifyCBs() { _callbacks.clear(); }

void Notify::reset() { _callbacks.release(); }

std::ostream& operator<<(std::ostream& stream, const Notify& notify) {
  return stream << "Notify(numCallbacks=" << std::to_string(notify._callbacks.size()) << ")";
}

}  // namespace vx

VXCallbackHandle VXAddNotifyCB(VXNotifyCB callback, void* userData, unsigned int codeMask) {
  try {
    return vx::VXNotify.addNotifyCB(callback, userData, codeMask);
  } catch (...) {
    VXPrintAndNotifyFatal(__FILE__, __LINE__, VX_NO_MEMORY);
    return 0;
  }
}

int VXRemoveNotifyCB(VXCallbackHandle handle) { return vx::VXNotify.removeNotifyCB(handle) ? 1 : 0; }
