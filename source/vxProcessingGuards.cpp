#include "vxProcessingGuards.h"

#include "vxMutex.h"
#include "vxTypeOrNull.h"

namespace vx {

namespace {

// Held for the length of a request from inside a calculation on several threads. No other lock of the library is held
// when it is taken.
constinit Mutex nestedRequestMutex;

thread_local bool isInsideThreads = false;

// Sends a report about a module whose label was put together.
void reportOfModule(VXMessageType type, const CallLabel& label, VXErrorCode code, const char* reason, const BaseOp& op,
                    ReportedModule module) {
  if (module == ReportedModule::object) {
    report(type, label, code, reason, &op, typeOrNull(&op));
  } else {
    report(type, label, code, reason);
  }
}

}  // namespace

void reportThrownCode(int code, const char* place, const BaseOp& op, ReportedModule module, SourcePosition position) {
  withComposedLabel([&] { return place + op.whoAmI(true); }, position.file, position.line,
                    [&](const CallLabel& label) {
                      reportOfModule(VX_ERROR, label, code,
                                     "Controlled but still undesired exception caught - continuing operation. "
                                     "Some processed image data may be invalid",
                                     op, module);
                    });
}

void reportUnknownException(VXErrorCode code, const char* reason, const char* before, const BaseOp& op,
                            const char* after, ReportedModule module, SourcePosition position) {
  withComposedLabel([&] { return before + op.whoAmI(true) + after; }, position.file, position.line,
                    [&](const CallLabel& label) { reportOfModule(VX_FATAL, label, code, reason, op, module); });
}

NestedRequestScope::NestedRequestScope() VX_NO_THREAD_SAFETY_ANALYSIS : _isNested(isInsideThreads) {
  if (_isNested) nestedRequestMutex.lock();
}

NestedRequestScope::~NestedRequestScope() VX_NO_THREAD_SAFETY_ANALYSIS {
  if (_isNested) nestedRequestMutex.unlock();
}

bool NestedRequestScope::isInsideThreadedRun() noexcept { return isInsideThreads; }

NestedRequestScope::Chunk::Chunk(bool isThreaded) noexcept : _wasInside(isInsideThreads) {
  isInsideThreads = isInsideThreads || isThreaded;
}

NestedRequestScope::Chunk::~Chunk() { isInsideThreads = _wasInside; }

}  // namespace vx
