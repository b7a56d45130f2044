// The guards of image processing: what becomes of exceptions of modules and of memory that is missing, and what a
// request puts back in order.

#ifndef VX_PROCESSING_GUARDS_H
#define VX_PROCESSING_GUARDS_H

#include "vxBaseOp.h"
#include "vxErrorOutput.h"
#include "vxField.h"
#include "vxGuards.h"
#include "vxHost.h"

#include <exception>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>

namespace vx {

/// Runs module code, or a part of the engine that runs it. A thrown error code is always caught; everything else while
/// exception handling is enabled.
/// \param body what to run. \param onCode takes the code. \param onOther called after everything else. Either may
/// throw the exception on.
template <class Body, class OnCode, class OnOther>
void guardProcessing(Body&& body, OnCode&& onCode, OnOther&& onOther) {
  try {
    std::forward<Body>(body)();
  } catch (int code) {
    std::forward<OnCode>(onCode)(code);
  } catch (...) {
    if (!VXIsExceptionHandlingEnabled()) throw;
    std::forward<OnOther>(onOther)();
  }
}

/// \return the code that a caller gets for a thrown one: a thrown 0 is no success.
inline int failureCode(int thrownCode) noexcept { return thrownCode != 0 ? thrownCode : VX_UNKNOWN_EXCEPTION; }

/// Whether a report hands over the module that it is about, with its type, beside its name.
enum class ReportedModule { name, object };

/// Reports a thrown error code. \param place where it was caught, in front of the name of the module.
void reportThrownCode(int code, const char* place, const BaseOp& op, ReportedModule module = ReportedModule::name,
                      SourcePosition position = SourcePosition());

/// Reports an exception that is no error code, as fatal. \param before,after what stands around the name of the module.
void reportUnknownException(VXErrorCode code, const char* reason, const char* before, const BaseOp& op,
                            const char* after, ReportedModule module = ReportedModule::name,
                            SourcePosition position = SourcePosition());

/// Runs something that allocates for the engine itself. \throw int ::VX_NO_MEMORY, after a fatal report, without
/// memory.
template <class Body>
decltype(auto) withMemory(Body&& body, SourcePosition position = SourcePosition()) {
  try {
    return std::forward<Body>(body)();
  } catch (const std::bad_alloc&) {
    throwFatal(VX_NO_MEMORY, position);
  } catch (const std::length_error&) {
    throwFatal(VX_NO_MEMORY, position);
  }
}

/// Keeps fields from notifying and marks the host as processing, for the length of a scope.
class ProcessingScope {
 public:
  explicit ProcessingScope(Host& host) : _host(host) {
    Field::disableNotifications();
    _host._setProcessingActive();
  }
  ~ProcessingScope() {
    _host._unsetProcessingActive();
    Field::enableNotifications();
  }
  ProcessingScope(const ProcessingScope&) = delete;
  ProcessingScope& operator=(const ProcessingScope&) = delete;

 private:
  Host& _host;
};

/// Marks a module while a walk is in it. The marker is taken back on every path.
class MarkerScope {
 public:
  explicit MarkerScope(BaseOp& op) : _op(op) { _op.setMarker(1); }
  ~MarkerScope() {
    try {
      _op.setMarker(0);
    } catch (...) {
      VXPrintAndNotifyFatal(__FILE__, __LINE__, VX_UNKNOWN_EXCEPTION);
    }
  }
  MarkerScope(const MarkerScope&) = delete;
  MarkerScope& operator=(const MarkerScope&) = delete;

 private:
  BaseOp& _op;
};

/// Tells requests that come from inside a calculation on several threads from others, and lets them in one by one.
///
/// While chunks run on workers, the thread that requested them waits or calculates a chunk itself, and the rest of the
/// network stands still. A module that requests a tile then gets it: calculated on its own thread, with counters of its
/// own, while other modules that do the same wait.
class NestedRequestScope {
 public:
  NestedRequestScope();
  ~NestedRequestScope();
  NestedRequestScope(const NestedRequestScope&) = delete;
  NestedRequestScope& operator=(const NestedRequestScope&) = delete;

  /// \return whether this thread calculates a chunk while others may do the same.
  static bool isInsideThreadedRun() noexcept;

  /// Marks this thread as calculating a chunk, or as calling out while others do, for the length of a scope.
  class Chunk {
   public:
    explicit Chunk(bool isThreaded) noexcept;
    ~Chunk();
    Chunk(const Chunk&) = delete;
    Chunk& operator=(const Chunk&) = delete;

   private:
    bool _wasInside;
  };

 private:
  bool _isNested;
};

}  // namespace vx

#endif
