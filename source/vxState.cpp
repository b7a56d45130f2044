#include "vxState.h"

#include "vxBaseOp.h"
#include "vxField.h"
#include "vxGuards.h"
#include "vxHost.h"
#include "vxInitSystemVX.h"
#include "vxTraceBuffer.h"

#include <algorithm>
#include <ostream>

namespace vx {

// Start-up uses it before other static objects are made.
constinit std::vector<StateBuffer*> State::_stateStack;

namespace {

constexpr std::size_t initialRoom = 10;

// A pushed host that goes again unless the push is completed.
class PushedHost {
 public:
  PushedHost() { Host::pushDefaultHost(); }
  ~PushedHost() {
    if (!_isKept) Host::popDefaultHost();
  }
  PushedHost(const PushedHost&) = delete;
  PushedHost& operator=(const PushedHost&) = delete;

  void keep() noexcept { _isKept = true; }

 private:
  bool _isKept = false;
};

}  // namespace

State::State(const State& /*other*/) {
  report(VX_FATAL, "State::State(const State &)", VX_MISUSED_INTERFACE,
         "Invalid use of copy constructor of State, not copying anything.");
}

State& State::operator=(const State& /*other*/) {
  report(VX_FATAL, "State& State::operator=(const State &)", VX_MISUSED_INTERFACE,
         "Invalid use of assignment operator of State, not assigning anything.");
  return *this;
}

// Stack ---------------------------------------------------------------------------------------------------------------

int State::_init() {
  const TraceFrame trace("source/vxState:State::_init()");
  _stateStack.reserve(initialRoom);
  return VX_RESULT_OK;
}

int State::_destroy() {
  const TraceFrame trace("source/vxState:State::_destroy()");
  return _stateStack.empty() ? VX_RESULT_OK : VX_STACK_NOT_EMPTY;
}

int State::pushState(bool readEnvVars) {
  const TraceFrame trace("source/vxState:State::pushState()");
  StateBuffer* const buffer = _getVXStateAndReset();
  if (!buffer) return VX_MISUSED_INTERFACE;
  _stateStack.push_back(buffer);
  if (readEnvVars) setVXEnvironment();
  return VX_RESULT_OK;
}

int State::popState() {
  const TraceFrame trace("source/vxState:State::popState()");
  if (_stateStack.empty()) return VX_EMPTY_STACK;
  StateBuffer* buffer = _stateStack.back();
  _stateStack.pop_back();
  if (!buffer) return VX_BAD_INTERNAL_POINTER;
  return _restoreVXState(buffer) ? VX_RESULT_OK : VX_UNKNOWN_EXCEPTION;
}

// Saving --------------------------------------------------------------------------------------------------------------

void State::_save(StateBuffer& buffer) {
  buffer._notify = VXNotify;
  buffer._errorOutput = VXErrorOutput;
  PushedHost host;
  buffer._exceptionHandling = VXIsExceptionHandlingEnabled();
  buffer._enableNotificationsCounter = Field::enableNotificationsCounterState();
  if (BaseOp::_instantiatedModules) buffer._instantiatedModules = *BaseOp::_instantiatedModules;
  if (const VXApplicationProperties* const properties = VXGetApplicationPropertiesHook()) {
    buffer._applicationProperties = *properties;
  }
  buffer._eventFilterApplicationHook = VXGetEventFilterApplicationHookCB();
  buffer._eventFilterApplicationHookUsrData = VXGetEventFilterApplicationHookCBUserData();
  // Room for the buffer, while all of this can still be undone.
  if (_stateStack.size() == _stateStack.capacity()) _stateStack.reserve(2 * _stateStack.size() + initialRoom);
  host.keep();
  VXNotify.reset();
  VXErrorOutput.reset();
}

StateBuffer* State::_getVXStateAndReset() {
  const TraceFrame trace("source/vxState:State::_getVXStateAndReset()");
  auto* buffer = guardedNew<StateBuffer>(SourcePosition());
  if (!buffer) return nullptr;
  try {
    _save(*buffer);
  } catch (...) {
    guardedDelete(buffer);
    VXPrintAndNotifyFatal(__FILE__, __LINE__, VX_BAD_POINTER);
  }
  return buffer;
}

// Restoring -----------------------------------------------------------------------------------------------------------

void State::_restore(const StateBuffer& buffer) {
  VXSetEventFilterApplicationHook(buffer._eventFilterApplicationHook, buffer._eventFilterApplicationHookUsrData);
  VXSetApplicationPropertiesHook(&buffer._applicationProperties);
  if (std::vector<BaseOp*>* const modules = BaseOp::_instantiatedModules) {
    // What is no longer in the list was deleted meanwhile. The saved ones that are still there keep their order, and
    // there are no more of them than before, so that no memory is needed.
    std::erase_if(*modules, [&buffer](const BaseOp* module) {
      return std::find(buffer._instantiatedModules.begin(), buffer._instantiatedModules.end(), module) ==
             buffer._instantiatedModules.end();
    });
  }
  Field::enableNotificationsCounterState() = buffer._enableNotificationsCounter;
  VXEnableExceptionHandling(buffer._exceptionHandling);
  Host::popDefaultHost();
  VXErrorOutput = buffer._errorOutput;
  VXNotify = buffer._notify;
}

bool State::_restoreVXState(StateBuffer*& buffer) {
  const TraceFrame trace("source/vxState:State::_restoreVXState()");
  if (!buffer) return true;
  bool isRestored = true;
  try {
    _restore(*buffer);
  } catch (...) {
    isRestored = false;
  }
  guardedDelete(buffer);
  return isRestored;
}

// Printing ------------------------------------------------------------------------------------------------------------

std::ostream& operator<<(std::ostream& stream, const StateBuffer& buffer) {
  const auto asPointer = [](auto* function) { return reinterpret_cast<const void*>(function); };
  const VXApplicationProperties& properties = buffer._applicationProperties;
  stream << "VXNotify                                        = " << buffer._notify << '\n'
         << "VXErrorOutput                                   = " << buffer._errorOutput << '\n'
         << "VXIsExceptionHandlingEnabled                    = " << buffer._exceptionHandling << '\n'
         << "Field::enableNotificationsCounterState          = " << buffer._enableNotificationsCounter << '\n'
         << "applicationPropertyCallbacks.getStringCB        = " << asPointer(properties.getStringCB) << '\n'
         << "applicationPropertyCallbacks.getInt32CB         = " << asPointer(properties.getInt32CB) << '\n'
         << "applicationPropertyCallbacks.getDoubleCB        = " << asPointer(properties.getDoubleCB) << '\n'
         << "applicationPropertyCallbacks.getBoolCB          = " << asPointer(properties.getBoolCB) << '\n'
         << "applicationPropertyCallbacks.applicationUsrData = " << properties.applicationUsrData << '\n'
         << "eventFilterApplicationHook                      = " << asPointer(buffer._eventFilterApplicationHook)
         << '\n'
         << "eventFilterApplicationHookUsrData               = " << buffer._eventFilterApplicationHookUsrData << '\n'
         << "BaseOp::_instantiatedModules                    = " << buffer._instantiatedModules.size() << '\n';
  for (std::size_t i = 0; i < buffer._instantiatedModules.size(); ++i) {
    const BaseOp* const module = buffer._instantiatedModules[i];
    stream << "BaseOp::_instantiatedModules[" << i << "] = ";
    // Only what stands in the list of live modules can be asked.
    if (module && BaseOp::findBaseOpIndex(*module) >= 0) {
      stream << module->whoAmI(true);
    } else {
      stream << "<noValidModule>";
    }
    stream << '\n';
  }
  return stream;
}

}  // namespace vx
