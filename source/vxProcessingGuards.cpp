#include "vxProcessingGuards.h"

#include "vxMutex.h"

namespace vx {

namespace {

// Held for the length of a request from inside a calculation on several threads. No other lock of the library is held
// when it is taken.
constinit Mutex nestedRequestMutex;

thread_local bool isInsideThreads = false;

}  // namespace

void reportThrownCode(int code, const char* place, const BaseOp& op, SourcePosition position) {
  withComposedLabel([&] { return place + op.whoAmI(true); }, position.file, position.line,
                    [&](const CallLabel& label) {
                      report(VX_ERROR, label, code,
                             "Controlled but still undesired exception caught - continuing operation. "
                             "Some processed image data may be invalid");
                    });
}

void reportUnknownException(VXErrorCode code, const char* reason, const char* before, const BaseOp& op,
                            const char* after, SourcePosition position) {
  withComposedLabel([&] { return before + op.whoAmI(true) + after; }, position.file, position.line,
                    [&](const CallLabel& label) { report(VX_FATAL, label, code, reason); });
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
