// Services of the host: callbacks, counters, and the stack of default hosts.

#include "vxHost.h"

#include "vxErrorOutput.h"
#include "vxGuards.h"
#include "vxNotify.h"
#include "vxProcessingGuards.h"
#include "vxRequestLevels.h"
#include "vxTraceBuffer.h"

namespace vx {

namespace {

constexpr unsigned int notifyMaxNumThreads = 0x100001;
constexpr unsigned int notifyBreakCheckCB = 0x100002;
constexpr unsigned int notifyProgressCB = 0x100004;

constexpr std::size_t usualStackDepth = 10;

}  // namespace

VX_CLASS_SOURCE(Host, "NULL")

// Used at the load of the library, before objects with constructors are made.
constinit Host* Host::_defaultHost = nullptr;
constinit std::vector<Host*> Host::_defaultHostStack;

Host::Host() : _levels(std::make_unique<RequestLevels>()) {}

Host::Host(const Host& /*other*/) : Host() {
  report(VX_FATAL, "Host::Host(const Host &)", VX_MISUSED_INTERFACE,
         "Usage of copy constructor of Host is not supported.");
}

Host& Host::operator=(const Host& /*other*/) {
  report(VX_FATAL, "Host& Host::operator=(const Host &)", VX_MISUSED_INTERFACE,
         "Usage of assignment operator of Host is not supported.");
  return *this;
}

Host::~Host() {
  const TraceFrame trace("source/vxHost:Host::~Host()");
  try {
    _cache.clearCache();
  } catch (...) {  // of a notification callback; the cache frees its buffers all the same
    VXPrintAndNotifyFatal(__FILE__, __LINE__, VX_UNKNOWN_EXCEPTION);
  }
}

void Host::setProgressCB(void* userData, ProgressCB cb) {
  const TraceFrame trace("source/vxHost:Host::setProgressCB()");
  _progressCBUserData = userData;
  _progressCB = cb;
  VXNotify.notify(notifyProgressCB, nullptr, nullptr);
}

void Host::updateProgress(const char* info1, const char* info2) const {
  const TraceFrame trace("source/vxHost:Host::updateProgress()");
  if (_progressCB) _progressCB(_progressCBUserData, info1, info2);
}

void Host::setBreakCheckCB(void* userData, BreakCheckCB cb) {
  const TraceFrame trace("source/vxHost:Host::setBreakCheckCB()");
  _breakCheckCBUserData = userData;
  _breakCheckCB = cb;
  VXNotify.notify(notifyBreakCheckCB, nullptr, nullptr);
}

bool Host::shouldTerminate() const {
  const TraceFrame trace("source/vxHost:Host::shouldTerminate()");
  return _breakCheckCB && _breakCheckCB(_breakCheckCBUserData, nullptr) != 0;
}

Field* Host::getPressedNotifyField() const {
  const TraceFrame trace("source/vxHost:Host::getPressedNotifyField()");
  void* field = nullptr;
  if (_breakCheckCB) _breakCheckCB(_breakCheckCBUserData, &field);
  return static_cast<Field*>(field);
}

void Host::setMaxNumThreads(VXuint32 numThreads) {
  const TraceFrame trace("source/vxHost:Host::setMaxNumThreads()");
  if (numThreads == _maxNumThreads) return;
  _maxNumThreads = numThreads;
  VXNotify.notify(notifyMaxNumThreads, nullptr, nullptr);
}

void Host::_setProcessingActive() { _processingActive.fetch_add(1, std::memory_order_relaxed); }

void Host::_unsetProcessingActive() {
  VXuint32 number = _processingActive.load(std::memory_order_relaxed);
  while (number != 0 && !_processingActive.compare_exchange_weak(number, number - 1, std::memory_order_relaxed)) {
  }
}

Host& Host::getDefaultHost() {
  if (!_defaultHost) {
    const TraceFrame trace("source/vxHost:Host::getDefaultHost()");
    withMemory([] { _defaultHostStack.reserve(usualStackDepth); });
    _defaultHost = guardedNew<Host>(SourcePosition());
    if (!_defaultHost) throw int{VX_NO_MEMORY};
  }
  return *_defaultHost;
}

void Host::destroyDefaultHost() {
  const TraceFrame trace("source/vxHost:Host::destroyDefaultHost()");
  guardedDelete(_defaultHost);
}

int Host::pushDefaultHost() {
  const TraceFrame trace("source/vxHost:Host::pushDefaultHost()");
  withMemory([] { _defaultHostStack.reserve(_defaultHostStack.size() + 1); });
  Host* const host = guardedNew<Host>(SourcePosition());
  if (!host) throw int{VX_NO_MEMORY};
  _defaultHostStack.push_back(_defaultHost);
  _defaultHost = host;
  return VX_RESULT_OK;
}

int Host::popDefaultHost() {
  const TraceFrame trace("source/vxHost:Host::popDefaultHost()");
  if (_defaultHostStack.empty()) return VX_EMPTY_STACK;
  Host* const former = _defaultHostStack.back();
  _defaultHostStack.pop_back();
  if (!former) return VX_BAD_INTERNAL_POINTER;
  Host* current = std::exchange(_defaultHost, former);
  guardedDelete(current);
  return VX_RESULT_OK;
}

std::ostream& operator<<(std::ostream& stream, const Host& host) {
  return stream << "host.getProgressCBUserData()   = " << host.getProgressCBUserData() << '\n'
                << "host.getProgressCB()     = " << reinterpret_cast<const void*>(host.getProgressCB()) << '\n'
                << "host.getBreakCheckCBUserData() = " << host.getBreakCheckCBUserData() << '\n'
                << "host.getBreakCheckCB()   = " << reinterpret_cast<const void*>(host.getBreakCheckCB()) << '\n'
                << "host.getMaxNumThreads()  = " << host.getMaxNumThreads() << '\n'
                << "host.isProcessingActive()   = " << host.isProcessingActive() << '\n'
                << "host.getConstCache()     = " << host.getConstCache() << '\n';
}

}  // namespace vx
