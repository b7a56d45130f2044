#include "vxErrorOutput.h"

#include "vxErrorOutputFormat.h"

#include <algorithm>
#include <cstring>
#include <iostream>
#include <mutex>
#include <ostream>

namespace vx {

namespace {

// Guards the two streams, whose host may have unsynchronised them. Recursive, since a stream buffer of the host may
// send messages itself.
std::recursive_mutex& streamMutex() {
  static std::recursive_mutex mutex;
  return mutex;
}

// Gathers a line, so that the unbuffered error stream takes it whole and other processes don't write in between.
class LineBuffer {
 public:
  explicit LineBuffer(std::ostream& stream) : _stream(stream) {}

  static void write(void* buffer, const char* text, std::size_t length) {
    static_cast<LineBuffer*>(buffer)->_write(text, length);
  }

  void flush() {
    _stream.write(_text, static_cast<std::streamsize>(_length));
    _stream.flush();
    _length = 0;
  }

 private:
  void _write(const char* text, std::size_t length) {
    while (length > 0) {
      if (_length == sizeof _text) flush();
      const std::size_t part = std::min(length, sizeof _text - _length);
      std::memcpy(_text + _length, text, part);
      _length += part;
      text += part;
      length -= part;
    }
  }

  std::ostream& _stream;
  char _text[1024];
  std::size_t _length = 0;
};

void printTo(std::ostream& stream, const VXMessage& message) noexcept {
  try {
    LineBuffer line(stream);
    formatMessageLine(message, &LineBuffer::write, &line);
    line.flush();
  } catch (...) {
    // The host has its stream throw; the callbacks are to be told all the same.
  }
}

void print(const VXMessage& message, bool toCout, bool toCerr) {
  // The start-up reports before the static objects of this library are made.
  static const std::ios_base::Init streamsAreReady;
  const std::lock_guard lock(streamMutex());
  if (toCout) printTo(std::cout, message);
  if (toCerr) printTo(std::cerr, message);
}

void invokeMessageCB(CallbackList::Function function, void* userData, const void* event) {
  reinterpret_cast<VXMessageCB>(function)(userData, static_cast<const VXMessage*>(event));
}

const char* orEmpty(const char* text) { return text ? text : ""; }

// What all reports of the library share. The flag is 0, so nothing is thrown; it only keeps the guard in the code.
template <class Send>
void reportWith(const CallLabel& label, Send&& send) noexcept {
  try {
    try {
      if (VXAlwaysFalse) throw int{VX_UNKNOWN_EXCEPTION};
    } catch (int) {
    }
    send();
  } catch (...) {
    VXPrintAndNotifyFatal(label.file, label.line, VX_UNKNOWN_EXCEPTION);
  }
}

}  // namespace

ErrorOutput::ErrorOutput(const ErrorOutput& other)
    : _messageFilter(other.getMessageFilter()),
      _fullDebugging(other.isFullDebuggingOn()),
      _isCoutOn(other.areMessagesSentToCout()),
      _isCerrOn(other.areMessagesSentToCerr()),
      _callbacks(other._callbacks) {}

ErrorOutput::~ErrorOutput() = default;

ErrorOutput& ErrorOutput::operator=(const ErrorOutput& other) {
  setMessageFilter(other.getMessageFilter());
  setFullDebuggingOn(other.isFullDebuggingOn());
  sendMessagesToCout(other.areMessagesSentToCout());
  sendMessagesToCerr(other.areMessagesSentToCerr());
  _callbacks = other._callbacks;
  return *this;
}

void ErrorOutput::printAndNotify(VXMessageType type, const std::string& prefix, const std::string& functionLead,
                                 const std::string& functionName, int errorCode, const std::string& reason,
                                 const std::string& file, int line, const void* handledObject,
                                 const RuntimeType* handledObjectType) const {
  send({type, errorCode, prefix.c_str(), functionLead.c_str(), functionName.c_str(),
        VXGetErrorCodeDescription(errorCode), reason.c_str(), file.c_str(), line, handledObject, handledObjectType});
}

void ErrorOutput::printAndNotify(VXMessageType type, const std::string& prefix, const std::string& functionLead,
                                 const std::string& functionName, const std::string& errorText,
                                 const std::string& reason, const std::string& file, int line,
                                 const void* handledObject, const RuntimeType* handledObjectType, int errorCode) const {
  send({type, errorCode, prefix.c_str(), functionLead.c_str(), functionName.c_str(), errorText.c_str(), reason.c_str(),
        file.c_str(), line, handledObject, handledObjectType});
}

void ErrorOutput::send(const VXMessage& message) const {
  const auto type = static_cast<unsigned int>(message.type);
  const bool passesAsDebug = (type & VX_DEBUG) != 0 && isFullDebuggingOn();
  if ((type & getMessageFilter()) == 0 && !passesAsDebug) return;
  const bool toCout = areMessagesSentToCout();
  const bool toCerr = areMessagesSentToCerr();
  if (toCout || toCerr) print(message, toCout, toCerr);
  _callbacks.call(type, CallbackList::Match::anyBit, CallbackList::Reentry::skipped, &invokeMessageCB, &message);
}

VXCallbackHandle ErrorOutput::addMessageCB(VXMessageCB callback, void* userData, unsigned int levelMask) {
  if (!callback) return 0;
  return _callbacks.add(reinterpret_cast<CallbackList::Function>(callback), userData, levelMask);
}

bool ErrorOutput::removeMessageCB(VXCallbackHandle handle) { return _callbacks.remove(handle); }

void ErrorOutput::reset() {
  setMessageFilter(defaultMessageFilter);
  setFullDebuggingOn(false);
  sendMessagesToCout(false);
  sendMessagesToCerr(true);
  _callbacks.release();
}

void ErrorOutput::destroy() { _callbacks.clear(); }

std::ostream& operator<<(std::ostream& stream, const ErrorOutput& errorOutput) {
  return stream << "ErrorOutput(messageFilter=" << std::to_string(errorOutput.getMessageFilter())
                << ", fullDebugging=" << (errorOutput.isFullDebuggingOn() ? "on" : "off")
                << ", cout=" << (errorOutput.areMessagesSentToCout() ? "on" : "off")
                << ", cerr=" << (errorOutput.areMessagesSentToCerr() ? "on" : "off")
                << ", numCallbacks=" << std::to_string(errorOutput._callbacks.size()) << ")";
}

void report(VXMessageType type, const CallLabel& label, VXErrorCode code, const std::string& reason,
            const void* handledObject, const RuntimeType* handledObjectType) noexcept {
  report(type, label, code, reason.c_str(), handledObject, handledObjectType);
}

void report(VXMessageType type, const CallLabel& label, VXErrorCode code, const char* reason, const void* handledObject,
            const RuntimeType* handledObjectType) noexcept {
  reportWith(label, [&] {
    VXErrorOutput.printAndNotify(type, "VX", "Function=", orEmpty(label.text), code, orEmpty(reason),
                                 orEmpty(label.file), label.line, handledObject, handledObjectType);
  });
}

void reportText(VXMessageType type, const CallLabel& label, const char* errorText, const char* reason,
                const void* handledObject, const RuntimeType* handledObjectType, VXErrorCode code) noexcept {
  reportWith(label, [&] {
    VXErrorOutput.printAndNotify(type, "VX", "Function=", orEmpty(label.text), std::string(orEmpty(errorText)),
                                 orEmpty(reason), orEmpty(label.file), label.line, handledObject, handledObjectType,
                                 code);
  });
}

}  // namespace vx

void VXPrintAndNotifyFatal(const char* file, int line, VXErrorCode errorCode) {
  try {
    vx::VXErrorOutput.send({VX_FATAL, errorCode, "VX", "Function=", "VXPrintAndNotifyFatal()",
                            VXGetErrorCodeDescription(errorCode), "A guarded block was left by a failure.",
                            vx::orEmpty(file), line, nullptr, nullptr});
  } catch (...) {
    // A callback of the host failed while it was told of a failure; there is nobody left to tell.
  }
}

VXCallbackHandle VXAddMessageCB(VXMessageCB callback, void* userData, unsigned int levelMask) {
  try {
    return vx::VXErrorOutput.addMessageCB(callback, userData, levelMask);
  } catch (...) {
    VXPrintAndNotifyFatal(__FILE__, __LINE__, VX_NO_MEMORY);
    return 0;
  }
}

int VXRemoveMessageCB(VXCallbackHandle handle) { return vx::VXErrorOutput.removeMessageCB(handle) ? 1 : 0; }
