/// \file vxErrorOutput.h
/// The message channel: filter, streams and message callbacks, and the short forms by which the library reports.

#ifndef VX_ERROR_OUTPUT_H
#define VX_ERROR_OUTPUT_H

#include "vxCallbackList.h"

#include <atomic>
#include <iosfwd>
#include <string>
#include <utility>

namespace vx {

class RuntimeType;
class State;

/// Receives all messages of the library, filters them, prints them and hands them to the callbacks.
///
/// Use the one object vx::VXErrorOutput. All functions are safe from any thread. Defaults: warnings, errors and fatal
/// messages, to the error stream. One message is one line on a stream: level, code with its description, function,
/// reason, file and line; control characters in texts are shown as escapes.
class VX_EXPORT ErrorOutput {
 public:
  /// Filter at start: warnings, errors and fatal messages.
  static constexpr unsigned int defaultMessageFilter = VX_WARNING | VX_ERROR | VX_FATAL;

  constexpr ErrorOutput() noexcept = default;
  /// A copy has the same settings and shares the callbacks.
  ErrorOutput(const ErrorOutput& other);
  ~ErrorOutput();

  /// Sends a message: if its level passes the filter, it is printed on the streams that are on and handed to the
  /// callbacks. A nested message, sent by a callback, is treated alike, but doesn't reach that callback again.
  /// An exception of a callback, or std::bad_alloc, passes on; one of a stream doesn't.
  /// \param type level. \param prefix library, "VX". \param functionLead "Function=". \param functionName label.
  /// \param errorCode code of the failure. \param reason what was wrong and what happens now.
  /// \param file,line position of the report. \param handledObject,handledObjectType what it is about, or null.
  void printAndNotify(VXMessageType type, const std::string& prefix, const std::string& functionLead,
                      const std::string& functionName, int errorCode, const std::string& reason,
                      const std::string& file, int line, const void* handledObject,
                      const RuntimeType* handledObjectType) const;

  /// The same for a failure with a text of its own, which stands where the description of the code stands.
  /// \param type,prefix,functionLead,functionName,reason,file,line,handledObject,handledObjectType as above.
  /// \param errorText the text. \param errorCode 0 where an exception carried the text.
  void printAndNotify(VXMessageType type, const std::string& prefix, const std::string& functionLead,
                      const std::string& functionName, const std::string& errorText, const std::string& reason,
                      const std::string& file, int line, const void* handledObject,
                      const RuntimeType* handledObjectType, int errorCode) const;

  /// Sends a message that is complete already. It allocates nothing. \param message all texts set.
  void send(const VXMessage& message) const;

  /// Sets which levels are shown: a mask of ::VXMessageType.
  void setMessageFilter(unsigned int filter) noexcept { _messageFilter.store(filter, std::memory_order_relaxed); }
  /// \return which levels are shown.
  unsigned int getMessageFilter() const noexcept { return _messageFilter.load(std::memory_order_relaxed); }

  /// Lets debug messages pass whatever the filter says (true), or leaves them to the filter (false).
  void setFullDebuggingOn(bool on) noexcept { _fullDebugging.store(on, std::memory_order_relaxed); }
  /// \return whether all debug messages pass.
  bool isFullDebuggingOn() const noexcept { return _fullDebugging.load(std::memory_order_relaxed); }

  /// Switches printing to the standard output on or off.
  void sendMessagesToCout(bool on) noexcept { _isCoutOn.store(on, std::memory_order_relaxed); }
  /// Switches printing to the error stream on or off.
  void sendMessagesToCerr(bool on) noexcept { _isCerrOn.store(on, std::memory_order_relaxed); }
  /// \return whether messages go to the standard output.
  bool areMessagesSentToCout() const noexcept { return _isCoutOn.load(std::memory_order_relaxed); }
  /// \return whether messages go to the error stream.
  bool areMessagesSentToCerr() const noexcept { return _isCerrOn.load(std::memory_order_relaxed); }

  /// Registers a callback, see VXAddMessageCB(). \return its handle, 0 for a null callback.
  VXCallbackHandle addMessageCB(VXMessageCB callback, void* userData, unsigned int levelMask);
  /// Removes a callback, see VXRemoveMessageCB(). \return whether the handle named one.
  bool removeMessageCB(VXCallbackHandle handle);

  /// Back to the defaults, with no callbacks. Callbacks live on in copies of this object.
  void reset();

  /// Removes the callbacks. Messages are printed as before.
  void destroy();

  /// Writes the settings on one line.
  friend VX_EXPORT std::ostream& operator<<(std::ostream& stream, const ErrorOutput& errorOutput);

 protected:
  friend class State;
  /// Copies the settings whole; both objects then share the callbacks.
  ErrorOutput& operator=(const ErrorOutput& other);

 private:
  std::atomic<unsigned int> _messageFilter{defaultMessageFilter};
  std::atomic<bool> _fullDebugging{false};
  std::atomic<bool> _isCoutOn{false};
  std::atomic<bool> _isCerrOn{true};
  CallbackList _callbacks;  // synchronises itself
};

/// The message channel of the process. It is good for its whole life, also in the destructors of other objects.
VX_EXPORT extern ErrorOutput& VXErrorOutput;

/// A function label with the position of its call; made from the label text alone.
/// The label must outlive the call that it is given to.
struct CallLabel {
  const char* text;  ///< The label.
  const char* file;  ///< Source file.
  int line;          ///< Line in it.
  /// \param label a literal. \param sourceFile,sourceLine the position, that of the call unless it is given.
  // NOLINTNEXTLINE(google-explicit-constructor): a literal is a label
  constexpr CallLabel(const char* label, const char* sourceFile = __builtin_FILE(), int sourceLine = __builtin_LINE())
      : text(label), file(sourceFile), line(sourceLine) {}
  /// The same for a label that was composed.
  // NOLINTNEXTLINE(google-explicit-constructor)
  CallLabel(const std::string& label, const char* sourceFile = __builtin_FILE(), int sourceLine = __builtin_LINE())
      : text(label.c_str()), file(sourceFile), line(sourceLine) {}
};

/// Reports a message of the library: prefix "VX", lead "Function=". It never throws: where the report itself fails,
/// VXPrintAndNotifyFatal() with ::VX_UNKNOWN_EXCEPTION takes its place.
/// \param type level. \param label function, with its position. \param code error code. \param reason the text.
/// \param handledObject,handledObjectType what the message is about, or null.
VX_EXPORT void report(VXMessageType type, const CallLabel& label, VXErrorCode code, const char* reason,
                      const void* handledObject = nullptr, const RuntimeType* handledObjectType = nullptr) noexcept;
/// The same with a text that was composed. \param type,label,code,reason,handledObject,handledObjectType as above.
VX_EXPORT void report(VXMessageType type, const CallLabel& label, VXErrorCode code, const std::string& reason,
                      const void* handledObject = nullptr, const RuntimeType* handledObjectType = nullptr) noexcept;

/// Reports a failure with a text of its own, otherwise as report().
/// \param type,label,reason,handledObject,handledObjectType as for report().
/// \param errorText the text of the failure. \param code 0 where there is nothing but the text.
VX_EXPORT void reportText(VXMessageType type, const CallLabel& label, const char* errorText, const char* reason,
                          const void* handledObject = nullptr, const RuntimeType* handledObjectType = nullptr,
                          VXErrorCode code = VX_RESULT_OK) noexcept;

/// As report(), for a reason that is put together when it is needed: also a failure of that ends in a report.
/// \param type,label,code,handledObject,handledObjectType as for report(). \param makeReason gives the text.
template <class MakeReason>
void reportComposed(VXMessageType type, const CallLabel& label, VXErrorCode code, MakeReason&& makeReason,
                    const void* handledObject = nullptr, const RuntimeType* handledObjectType = nullptr) noexcept {
  try {
    const std::string reason = std::forward<MakeReason>(makeReason)();
    report(type, label, code, reason.c_str(), handledObject, handledObjectType);
  } catch (...) {
    VXPrintAndNotifyFatal(label.file, label.line, VX_UNKNOWN_EXCEPTION);
  }
}

/// Calls a report with a label that is put together when it is needed: also a failure of that ends in a report.
/// \param makeLabel gives the text. \param file,line position of the report. \param send takes the label.
template <class MakeLabel, class Send>
void withComposedLabel(MakeLabel&& makeLabel, const char* file, int line, Send&& send) noexcept {
  try {
    const std::string label = std::forward<MakeLabel>(makeLabel)();
    std::forward<Send>(send)(CallLabel(label, file, line));
  } catch (...) {
    VXPrintAndNotifyFatal(file, line, VX_UNKNOWN_EXCEPTION);
  }
}

}  // namespace vx

#endif
