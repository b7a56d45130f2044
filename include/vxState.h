/// \file vxState.h
/// The stack of global library states.

#ifndef VX_STATE_H
#define VX_STATE_H

#include "vxErrorOutput.h"
#include "vxNotify.h"
#include "vxTypes.h"
#include "vxUtilsAPI.h"

#include <iosfwd>
#include <vector>

namespace vx {

class BaseOp;

/// One saved state of the library. It owns nothing but copies of settings; the modules that it lists may be gone.
struct VX_EXPORT StateBuffer {
  Notify _notify;                                    ///< Notification callbacks, shared with the original.
  ErrorOutput _errorOutput;                          ///< Filter, streams and message callbacks.
  int _exceptionHandling = 0;                        ///< What VXIsExceptionHandlingEnabled() gave.
  long long _enableNotificationsCounter = 0;         ///< The counter of Field::enableNotifications().
  std::vector<BaseOp*> _instantiatedModules;         ///< The list of modules.
  VXApplicationProperties _applicationProperties{};  ///< Application properties; all null without any.
  VXEventFilterApplicationHookCB _eventFilterApplicationHook = nullptr;  ///< The event filter, or null.
  void* _eventFilterApplicationHookUsrData = nullptr;                    ///< Its user data.
};

/// Writes the settings, one a line, and then a line for each module, by its name as far as it still lives.
VX_EXPORT std::ostream& operator<<(std::ostream& stream, const StateBuffer& buffer);

/// Saves the global settings of the library on a stack and restores them, so that a part of an application can work
/// with a clean library and hand back what it found.
///
/// A push keeps exception handling, notifications of fields, the list of modules and the hooks as they are, gives
/// messages and notification their defaults, and makes a new default host, and with that a new cache and no callbacks.
/// A pop restores all of them. Images that were calculated under the host of a push lose their pages at its pop and
/// calculate them anew when they are asked for. A module that was made since the push lives on but leaves the list of
/// modules, and one that was deleted since does not come back there.
///
/// No function locks: push and pop belong to the main thread while nothing is calculated. Nothing throws but what the
/// reading of the environment does.
class VX_EXPORT State {
 public:
  /// Saves the state. \param readEnvVars whether the environment is read afterwards, see setVXEnvironment().
  /// \return 0, or ::VX_MISUSED_INTERFACE, after a fatal report and with nothing changed, if it could not be saved.
  static int pushState(bool readEnvVars);

  /// Restores the state that was saved last.
  /// \return 0; ::VX_EMPTY_STACK without one; ::VX_BAD_INTERNAL_POINTER for a null entry; ::VX_UNKNOWN_EXCEPTION if a
  ///         part could not be restored.
  static int popState();

 protected:
  /// Makes room for the first states, at start-up. \return 0.
  static int _init();

  /// Looks whether all states were restored, at shutdown; it frees nothing. \return 0, or ::VX_STACK_NOT_EMPTY.
  static int _destroy();

 private:
  friend struct StateAccess;

  State() = default;
  // Both only report that they aren't supported.
  State(const State& other);
  State& operator=(const State& other);

  // Saves the state and resets it. Gives the buffer, or null after a fatal report.
  static StateBuffer* _getVXStateAndReset();
  // Restores a state and deletes the buffer, which becomes null. A null one is a success.
  static bool _restoreVXState(StateBuffer*& buffer);

  static void _save(StateBuffer& buffer);
  static void _restore(const StateBuffer& buffer);

  static std::vector<StateBuffer*> _stateStack;
};

}  // namespace vx

#endif
