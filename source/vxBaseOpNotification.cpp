// How the change of a field reaches its module.

#include "vxBaseOp.h"
#include "vxErrorOutput.h"
#include "vxGuards.h"
#include "vxNotify.h"
#include "vxTraceBuffer.h"

namespace vx {

namespace {

constexpr unsigned int notificationFinished = 0x200001;

// Counts while it lives, also where an exception leaves.
class Entered {
 public:
  Entered(VXint64& moduleCounter, VXint64& globalDepth) : _moduleCounter(moduleCounter), _globalDepth(globalDepth) {
    ++_moduleCounter;
    ++_globalDepth;
  }
  ~Entered() {
    --_moduleCounter;
    --_globalDepth;
  }
  Entered(const Entered&) = delete;
  Entered& operator=(const Entered&) = delete;

 private:
  VXint64& _moduleCounter;
  VXint64& _globalDepth;
};

void reportHandleNotification(const BaseOp& op, VXMessageType type, VXErrorCode code, const char* reason) {
  withComposedLabel([&op] { return "BaseOp::handleNotification() of module " + op.whoAmI(true); }, __FILE__, __LINE__,
                    [&](const CallLabel& label) { report(type, label, code, reason); });
}

}  // namespace

void BaseOp::handleSensorNotification(void* op, void* sensor) {
  const TraceFrame trace("source/vxBaseOp:BaseOp::handleSensorNotification()");
  if (!op) return;
  checkFatal(sensor != nullptr);
  BaseOp& module = *static_cast<BaseOp*>(op);
  if (!module._recursiveHandleNotificationsPermitted && module._handleNotificationEntryCounter != 0) return;

  const Entered entered(module._handleNotificationEntryCounter, _globalHandleNotificationDepth);
  Field* const field = static_cast<FieldSensor*>(sensor)->getField();
  const auto tellThatItIsFinished = [&module, field] {
    if (_globalHandleNotificationDepth == 1) VXNotify.notify(notificationFinished, &module, field);
  };
  try {
    if (module.isHandleNotificationOn()) module._guardedHandleNotification(field);
  } catch (...) {
    // Left alone while exception handling is off; listeners hear of the end all the same.
    tellThatItIsFinished();
    throw;
  }
  tellThatItIsFinished();
}

void BaseOp::_guardedHandleNotification(Field* field) {
  constexpr char afterFailure[] = "Continuing after broken handleNotification call.";
  if (!VXIsExceptionHandlingEnabled()) {
    try {
      handleNotification(field);
    } catch (int code) {
      reportHandleNotification(*this, VX_ERROR, code,
                               "Controlled but undesired exception caught - continuing operation.");
    }
    return;
  }
  try {
    handleNotification(field);
  } catch (int code) {
    reportHandleNotification(*this, VX_FATAL, code, afterFailure);
  } catch (...) {
    reportHandleNotification(*this, VX_FATAL, VX_UNKNOWN_EXCEPTION, afterFailure);
  }
}

}  // namespace vx
