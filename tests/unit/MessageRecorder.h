// Records the messages of the library while it lives.

#ifndef VX_TESTS_MESSAGE_RECORDER_H
#define VX_TESTS_MESSAGE_RECORDER_H

#include "vxErrorOutput.h"

#include <mutex>
#include <ostream>
#include <string>
#include <vector>

namespace vx::test {

/// What one message said. The position of a message is left out of comparisons.
struct Message {
  VXMessageType type = 0;
  VXErrorCode code = 0;
  std::string function;
  std::string reason;
  std::string errorText = {};
  std::string prefix = "VX";
  std::string functionLead = "Function=";
  std::string file = {};
  int line = 0;
  const void* handledObject = nullptr;
  const void* handledObjectType = nullptr;

  bool operator==(const Message& other) const {
    return type == other.type && code == other.code && function == other.function && reason == other.reason;
  }
  friend std::ostream& operator<<(std::ostream& stream, const Message& message) {
    return stream << "{type " << message.type << ", code " << message.code << ", '" << message.function << "', '"
                  << message.reason << "'}";
  }
};

/// Takes all messages, of every level, and keeps them from the streams.
class MessageRecorder {
 public:
  MessageRecorder()
      : _filter(VXErrorOutput.getMessageFilter()),
        _isCoutOn(VXErrorOutput.areMessagesSentToCout()),
        _isCerrOn(VXErrorOutput.areMessagesSentToCerr()) {
    VXErrorOutput.setMessageFilter(0xFF);
    VXErrorOutput.sendMessagesToCout(false);
    VXErrorOutput.sendMessagesToCerr(false);
    _handle = VXErrorOutput.addMessageCB(&MessageRecorder::_record, this, ~0U);
  }
  ~MessageRecorder() {
    pause();
    VXErrorOutput.setMessageFilter(_filter);
    VXErrorOutput.sendMessagesToCout(_isCoutOn);
    VXErrorOutput.sendMessagesToCerr(_isCerrOn);
  }
  MessageRecorder(const MessageRecorder&) = delete;
  MessageRecorder& operator=(const MessageRecorder&) = delete;

  /// Records no more.
  void pause() { VXErrorOutput.removeMessageCB(_handle); }

  /// The messages since the last call, in their order.
  std::vector<Message> take() {
    const std::lock_guard lock(_mutex);
    return std::exchange(_messages, {});
  }

 private:
  static void _record(void* userData, const VXMessage* message) {
    auto& recorder = *static_cast<MessageRecorder*>(userData);
    const std::lock_guard lock(recorder._mutex);
    recorder._messages.push_back({message->type, message->errorCode, message->functionName, message->reason,
                                  message->errorText, message->prefix, message->functionLead, message->file,
                                  message->line, message->handledObject, message->handledObjectType});
  }

  unsigned int _filter;
  bool _isCoutOn;
  bool _isCerrOn;
  VXCallbackHandle _handle = 0;
  std::mutex _mutex;
  std::vector<Message> _messages;
};

}  // namespace vx::test

#endif
