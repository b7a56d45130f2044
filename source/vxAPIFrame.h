// The frame of the C interface: what turns exceptions and bad arguments into a message and a defined result. Each
// guard stands here once; an entry of the interface is one call of the exception frame.

#ifndef VX_API_FRAME_H
#define VX_API_FRAME_H

#include "vxErrorOutput.h"
#include "vxRuntimeType.h"
#include "vxTypeOrNull.h"

#include <atomic>
#include <cstddef>
#include <string>
#include <type_traits>
#include <utility>

namespace vx {

class Field;

// Results of a call after a caught exception -------------------------------------------------------------------------

/// What a function gives after an exception, and the words by which the report says so.
template <class Result>
struct ExceptionResult {
  const char* words;
  Result value;
};
template <>
struct ExceptionResult<void> {
  const char* words;
};

/// Function that returns an error code.
inline constexpr ExceptionResult<VXErrorCode> returnsErrorCode{"Returning VX_UNKNOWN_EXCEPTION.", VX_UNKNOWN_EXCEPTION};
/// Function that returns nothing.
inline constexpr ExceptionResult<void> returnsNothing{"Returning VX_EMPTY_PARAM."};
/// Function that returns a pointer.
inline constexpr ExceptionResult<std::nullptr_t> returnsPointer{"Returning NULL.", nullptr};
/// Function that returns a number.
inline constexpr ExceptionResult<int> returnsNumber{"Returning 0.", 0};
/// Function that returns a text.
inline constexpr ExceptionResult<const char*> returnsText{"Returning \"\".", ""};
/// Function that returns a truth value which may be unknown.
inline constexpr ExceptionResult<int> returnsMinusOne{"Returning -1.", -1};
/// The description of an exception of unknown kind, looked up when it is needed: entries are called before static
/// objects are made.
struct UnknownExceptionText {
  operator const char*() const noexcept { return VXGetErrorCodeDescription(VX_UNKNOWN_EXCEPTION); }
};
/// Function that returns the text of a state.
inline constexpr ExceptionResult<UnknownExceptionText> returnsStateText{
    "Returning VXGetErrorCodeDescription(VX_UNKNOWN_EXCEPTION).", {}};

// Exception frame ----------------------------------------------------------------------------------------------------

/// Reports an exception that arrived at the exception frame. \param words how the function answers.
inline void reportCaughtException(const CallLabel& label, const char* words) noexcept {
  reportComposed(VX_FATAL, label, VX_UNKNOWN_EXCEPTION, [words] {
    return std::string("Standard exception checking detected a fatal execution error in this function.") + words;
  });
}

/// Calls a worker for an entry of the C interface. While exception handling is enabled, everything that the worker
/// throws is reported as fatal, and the entry gives the result that its kind of function has for that. While it is
/// disabled, exceptions pass to the host.
/// \param label "vxAPI:" and the worker's name with its argument names. \param onException one of the kinds above.
/// \param worker,arguments the call.
template <class OnException, class Worker, class... Arguments>
auto callFramed(const CallLabel& label, const ExceptionResult<OnException>& onException, Worker&& worker,
                Arguments&&... arguments) -> std::invoke_result_t<Worker, Arguments...> {
  using Result = std::invoke_result_t<Worker, Arguments...>;
  if (!VXIsExceptionHandlingEnabled()) return std::forward<Worker>(worker)(std::forward<Arguments>(arguments)...);
  try {
    return std::forward<Worker>(worker)(std::forward<Arguments>(arguments)...);
  } catch (...) {
    reportCaughtException(label, onException.words);
    if constexpr (!std::is_void_v<Result>) return static_cast<Result>(onException.value);
  }
}

/// Calls a worker of an entry that has no exception switch. Whatever the worker throws gives `onException` with no
/// report here.
template <class Result, class Worker>
Result callSilently(Result onException, Worker&& worker) noexcept {
  try {
    return std::forward<Worker>(worker)();
  } catch (...) {
    return onException;
  }
}

// Arguments ----------------------------------------------------------------------------------------------------------

/// \return whether a text is missing: a null pointer, or nothing in front of the terminator.
inline bool isEmptyText(const char* text) noexcept { return !text || *text == '\0'; }

/// Plain argument check. \return `isValid`; otherwise the refusal is reported as an error with ::VX_BAD_PARAMETER.
inline bool checkArgument(bool isValid, const CallLabel& label, const char* reason) noexcept {
  if (!isValid) report(VX_ERROR, label, VX_BAD_PARAMETER, reason);
  return isValid;
}

// Object check -------------------------------------------------------------------------------------------------------

/// \return a class's name for the text of a refusal, "BadType" without a type.
inline const char* typeNameOf(const RuntimeType* type) noexcept { return type ? type->getName() : "BadType"; }

/// Checks a handle in three stages: null, class not registered, wrong class. It can't see a dangling pointer.
/// \tparam Required the class that the object must have or be derived from.
/// \param handle the object, of any class with run-time type functions. \param reason the function's own text.
/// \return whether the object may be used; otherwise the refusal has been reported.
template <class Required, class Handle>
bool checkObject(Handle* handle, const CallLabel& label, const char* reason) {
  if (!handle) {
    report(VX_ERROR, label, VX_BAD_FIELD, reason);
    return false;
  }
  const RuntimeType* const type = handle->getTypeId();
  if (!type) {
    reportComposed(VX_ERROR, label, VX_OBJECT_NOT_INITIALIZED, [reason] {
      return std::string(reason) +
             " The field seems to be uninitialized, maybeclass::initClass() code is not called on code "
             "initialization.";
    });
    return false;
  }
  const RuntimeType* const required = Required::getClassTypeId();
  if (type->isDerivedFrom(required)) return true;
  if constexpr (std::is_same_v<Required, Field>) {
    report(VX_ERROR, label, VX_BAD_FIELD, reason, handle, type);
  } else {
    reportComposed(
        VX_ERROR, label, VX_BAD_OBJECT_TYPE,
        [=] {
          return std::string(reason) + " The field must be initialized an it should be of type " +
                 typeNameOf(required) + " (or derived from it), but it seems to be of type " + handle->getTypeIdName() +
                 ".";
        },
        handle, type);
  }
  return false;
}

/// As the object check, and gives the object as what it is required to be. A class that only names the required one as
/// its parent, without being derived from it, is refused with ::VX_BAD_PARAMETER.
/// \return the object; null after a refusal, which has been reported.
template <class Required, class Handle>
Required* checkedObject(Handle* handle, const CallLabel& label, const char* reason) {
  if (!checkObject<Required>(handle, label, reason)) return nullptr;
  Required* const object = dynamic_cast<Required*>(handle);
  if (!object) report(VX_ERROR, label, VX_BAD_PARAMETER, reason, handle, handle->getTypeId());
  return object;
}

// Calculations -------------------------------------------------------------------------------------------------------

/// Check of a call that would free what is being calculated. \return whether no calculation runs on the default host;
/// otherwise the refusal is reported as an error. \param code of the report.
bool checkNotProcessing(const CallLabel& label, VXErrorCode code = VX_MISUSED_INTERFACE);

// Recursion guard ----------------------------------------------------------------------------------------------------

/// Set while a guarded operation runs; one flag for all of them.
extern std::atomic<unsigned char> _vxAPIRecursionFlag;

/// Runs an operation that may call module code, unless one runs already.
/// The flag is cleared on the normal path only: an exception that passes leaves it set, and from then on every guarded
/// operation is refused until the process ends.
/// \param text what the refusal says. \param operation gives an error code.
/// \return the operation's result; ::VX_RECURSION_STOPPED after a refusal, which is reported as an error.
template <class Operation>
VXErrorCode withRecursionGuard(const CallLabel& label, const char* text, Operation&& operation) {
  if (_vxAPIRecursionFlag.exchange(1) != 0) {
    report(VX_ERROR, label, VX_RECURSION_STOPPED, text);
    return VX_RECURSION_STOPPED;
  }
  const VXErrorCode result = std::forward<Operation>(operation)();
  _vxAPIRecursionFlag.store(0);
  return result;
}

// Module-call guard --------------------------------------------------------------------------------------------------

/// Calls module code directly. Whatever it throws is reported as fatal with the module as handled object, and the
/// caller goes on. A thrown `char*` or `std::string` is shown as the error text, with code 0; an `int` is the code;
/// everything else has ::VX_UNKNOWN_EXCEPTION.
/// \param module the module. \param reason the text of the report.
/// \param makeLabel gives the function label; called after a failure only. \param call the call.
template <class Module, class MakeLabel, class Call>
void guardModuleCall(const Module* module, const char* reason, MakeLabel&& makeLabel, Call&& call,
                     const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
  const auto reportCode = [&](VXErrorCode code) {
    withComposedLabel(makeLabel, file, line, [&](const CallLabel& label) {
      report(VX_FATAL, label, code, reason, module, typeOrNull(module));
    });
  };
  const auto reportOwnText = [&](const char* text) {
    withComposedLabel(makeLabel, file, line, [&](const CallLabel& label) {
      reportText(VX_FATAL, label, text ? text : VXGetErrorCodeDescription(VX_UNKNOWN_EXCEPTION), reason, module,
                 typeOrNull(module));
    });
  };
  try {
    std::forward<Call>(call)();
  } catch (char* text) {  // a literal is a `const char*` and none of these
    reportOwnText(text);
  } catch (const std::string& text) {
    reportOwnText(text.c_str());
  } catch (int code) {
    reportCode(code);
  } catch (...) {
    reportCode(VX_UNKNOWN_EXCEPTION);
  }
}

/// Makes or deletes a module. While exception handling is enabled, whatever that throws is reported as fatal, an `int`
/// as its code, everything else as ::VX_UNKNOWN_EXCEPTION.
/// \param reason the text of the report. \param makeLabel gives the function label; called after a failure only.
/// \param call the call. \return whether the call returned.
template <class MakeLabel, class Call>
bool guardModuleLife(const char* reason, MakeLabel&& makeLabel, Call&& call, const char* file = __builtin_FILE(),
                     int line = __builtin_LINE()) {
  const auto reportCode = [&](VXErrorCode code) {
    withComposedLabel(makeLabel, file, line, [&](const CallLabel& label) { report(VX_FATAL, label, code, reason); });
    return false;
  };
  if (!VXIsExceptionHandlingEnabled()) {
    std::forward<Call>(call)();
    return true;
  }
  try {
    std::forward<Call>(call)();
    return true;
  } catch (int code) {
    return reportCode(code);
  } catch (...) {
    return reportCode(VX_UNKNOWN_EXCEPTION);
  }
}

}  // namespace vx

#endif
