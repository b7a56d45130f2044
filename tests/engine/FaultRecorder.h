// Hears what the library says without an allocation of its own.

#ifndef VX_TESTS_FAULT_RECORDER_H
#define VX_TESTS_FAULT_RECORDER_H

#include "FailingAllocator.h"

#include "vxErrorOutput.h"

#include <atomic>

namespace vx::test {

/// Counts warnings, errors and fatal messages of all threads while it lives, and keeps them from the streams. One lives
/// at a time.
class FaultRecorder {
 public:
  FaultRecorder() : _handle(listen()) { _numMessages = _numFailedGroups = 0; }
  ~FaultRecorder() {
    VXErrorOutput.removeMessageCB(_handle);
    VXErrorOutput.sendMessagesToCerr(true);
  }
  FaultRecorder(const FaultRecorder&) = delete;
  FaultRecorder& operator=(const FaultRecorder&) = delete;

  /// Listens to the message channel, also to one that has forgotten its settings until it gets them back.
  static VXCallbackHandle listen() {
    const UnaffectedAllocations unaffected;
    VXErrorOutput.sendMessagesToCerr(false);
    return VXErrorOutput.addMessageCB(&FaultRecorder::_hear, nullptr, VX_WARNING | VX_ERROR | VX_FATAL);
  }

  /// \return the number of messages since the last call.
  static int take() { return _numMessages.exchange(0); }
  /// \return the number of groups of pages that were told to have failed since the last call.
  static int takeFailedGroups() { return _numFailedGroups.exchange(0); }

 private:
  static void _hear(void* /*userData*/, const VXMessage* message) {
    ++_numMessages;
    if (message->type == VX_FATAL && message->errorCode == VX_BAD_POINTER) ++_numFailedGroups;
  }

  static inline std::atomic<int> _numMessages{0};
  static inline std::atomic<int> _numFailedGroups{0};

  VXCallbackHandle _handle;
};

}  // namespace vx::test

#endif
