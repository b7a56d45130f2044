// Cache, host, messages and the state stack through the C interface.

#include "vxAPI.h"
#include "vxAPIFrame.h"
#include "vxErrorOutput.h"
#include "vxHost.h"
#include "vxState.h"
#include "vxTraceBuffer.h"

namespace {

using vx::Cache;
using vx::callFramed;
using vx::CallLabel;
using vx::Host;
using vx::State;
using vx::TraceFrame;

Cache& cache() { return Host::getDefaultHost().getCache(); }

// Threads

VXErrorCode _VXSetMaxNumThreads(int numThreads) {
  const TraceFrame trace("source/vxAPI:_VXSetMaxNumThreads()");
  if (numThreads == 0) return VX_BAD_PARAMETER;
  Host::getDefaultHost().setMaxNumThreads(static_cast<VXuint32>(numThreads));
  return VX_RESULT_OK;
}

int _VXGetMaxNumThreads() {
  const TraceFrame trace("source/vxAPI:_VXGetMaxNumThreads()");
  const VXuint32 numThreads = Host::getDefaultHost().getMaxNumThreads();
  return numThreads == 0 ? 1 : static_cast<int>(numThreads);
}

// State

VXErrorCode _VXPushState(int readEnvVars) {
  const TraceFrame trace("source/vxAPI:_VXPushState()");
  return vx::checkNotProcessing("vxAPI: VXPushState") ? State::pushState(readEnvVars != 0) : VX_MISUSED_INTERFACE;
}

VXErrorCode _VXPopState() {
  const TraceFrame trace("source/vxAPI:_VXPopState()");
  return vx::checkNotProcessing("vxAPI: VXPopState") ? State::popState() : VX_MISUSED_INTERFACE;
}

// Cache

VXuint64 _VXCacheGetCurrentSizeKB() {
  const TraceFrame trace("source/vxAPI:_VXCacheGetCurrentSizeKB()");
  return cache().getCurrentCacheSizeKB();
}

VXuint64 _VXCacheGetPeakSizeKB() {
  const TraceFrame trace("source/vxAPI:_VXCacheGetPeakSizeKB()");
  return cache().getFigures().peak / 1024;
}

VXuint64 _VXCacheGetMaxSizeKB() {
  const TraceFrame trace("source/vxAPI:_VXCacheGetMaxSizeKB()");
  return cache().getMaxCacheSizeKB();
}

void _VXCacheSetMaxSizeKB(int size) {
  const TraceFrame trace("source/vxAPI:_VXCacheSetMaxSizeKB()");
  cache().setMaxCacheSizeKB(static_cast<VXuint64>(VXint64{size}));
}

VXuint64 _VXCacheGetMemoryOptLevel() {
  const TraceFrame trace("source/vxAPI:_VXCacheGetMemoryOptLevel()");
  return cache().getMemoryOptimizationLevel();
}

void _VXCacheSetMemoryOptLevel(int level) {
  const TraceFrame trace("source/vxAPI:_VXCacheSetMemoryOptLevel()");
  cache().setMemoryOptimizationLevel(static_cast<VXuint32>(level));
}

void _VXClearCache() {
  const TraceFrame trace("source/vxAPI:_VXClearCache()");
  if (vx::checkNotProcessing("vxAPI: VXClearCache")) cache().clearCache();
}

// Figures

VXuint64 _VXHostGetNumPagesCalculated() {
  const TraceFrame trace("source/vxAPI:_VXHostGetNumPagesCalculated()");
  return Host::getDefaultHost().getNumPagesCalculated();
}

VXuint64 _VXHostGetNumPagesHit() {
  const TraceFrame trace("source/vxAPI:_VXHostGetNumPagesHit()");
  return Host::getDefaultHost().getNumPagesHit();
}

// Callbacks

void _VXHostSetProgressCB(void* userData, VXProgressCB callback) {
  const TraceFrame trace("source/vxAPI:_VXHostSetProgressCB()");
  Host::getDefaultHost().setProgressCB(userData, callback);
}

void _VXHostUpdateProgress(const char* info1, const char* info2) {
  const TraceFrame trace("source/vxAPI:_VXHostUpdateProgress()");
  Host::getDefaultHost().updateProgress(info1, info2);
}

void _VXHostSetBreakCheckCB(void* userData, VXBreakCheckCB callback) {
  const TraceFrame trace("source/vxAPI:_VXHostSetBreakCheckCB()");
  Host::getDefaultHost().setBreakCheckCB(userData, callback);
}

// Messages

void _VXSendMessagesToCout(int on) {
  const TraceFrame trace("source/vxAPI:_VXSendMessagesToCout()");
  vx::VXErrorOutput.sendMessagesToCout(on != 0);
}

void _VXSendMessagesToCerr(int on) {
  const TraceFrame trace("source/vxAPI:_VXSendMessagesToCerr()");
  vx::VXErrorOutput.sendMessagesToCerr(on != 0);
}

int _VXAreMessagesSentToCout() {
  const TraceFrame trace("source/vxAPI:_VXAreMessagesSentToCout()");
  return vx::VXErrorOutput.areMessagesSentToCout() ? 1 : 0;
}

int _VXAreMessagesSentToCerr() {
  const TraceFrame trace("source/vxAPI:_VXAreMessagesSentToCerr()");
  return vx::VXErrorOutput.areMessagesSentToCerr() ? 1 : 0;
}

}  // namespace

VXErrorCode VXSetMaxNumThreads(int numThreads) {
  return callFramed("vxAPI:_VXSetMaxNumThreads(numThreads)", vx::returnsErrorCode, _VXSetMaxNumThreads, numThreads);
}

int VXGetMaxNumThreads(void) {
  return callFramed("vxAPI:_VXGetMaxNumThreads()", vx::returnsNumber, _VXGetMaxNumThreads);
}

VXErrorCode VXPushState(int readEnvVars) {
  return callFramed("vxAPI:_VXPushState(readEnvVars)", vx::returnsErrorCode, _VXPushState, readEnvVars);
}

VXErrorCode VXPopState(void) { return callFramed("vxAPI:_VXPopState()", vx::returnsErrorCode, _VXPopState); }

VXuint64 VXCacheGetCurrentSizeKB(void) {
  return callFramed("vxAPI:_VXCacheGetCurrentSizeKB()", vx::returnsNumber, _VXCacheGetCurrentSizeKB);
}

VXuint64 VXCacheGetPeakSizeKB(void) {
  return callFramed("vxAPI:_VXCacheGetPeakSizeKB()", vx::returnsNumber, _VXCacheGetPeakSizeKB);
}

VXuint64 VXCacheGetMaxSizeKB(void) {
  return callFramed("vxAPI:_VXCacheGetMaxSizeKB()", vx::returnsNumber, _VXCacheGetMaxSizeKB);
}

void VXCacheSetMaxSizeKB(int size) {
  callFramed("vxAPI:_VXCacheSetMaxSizeKB(size)", vx::returnsNothing, _VXCacheSetMaxSizeKB, size);
}

VXuint64 VXCacheGetMemoryOptLevel(void) {
  return callFramed("vxAPI:_VXCacheGetMemoryOptLevel()", vx::returnsNumber, _VXCacheGetMemoryOptLevel);
}

void VXCacheSetMemoryOptLevel(int level) {
  callFramed("vxAPI:_VXCacheSetMemoryOptLevel(level)", vx::returnsNothing, _VXCacheSetMemoryOptLevel, level);
}

void VXClearCache(void) { callFramed("vxAPI:_VXClearCache()", vx::returnsNothing, _VXClearCache); }

VXuint64 VXHostGetNumPagesCalculated(void) {
  return callFramed("vxAPI:_VXHostGetNumPagesCalculated()", vx::returnsNumber, _VXHostGetNumPagesCalculated);
}

VXuint64 VXHostGetNumPagesHit(void) {
  return callFramed("vxAPI:_VXHostGetNumPagesHit()", vx::returnsNumber, _VXHostGetNumPagesHit);
}

void VXHostSetProgressCB(void* userData, VXProgressCB callback) {
  callFramed("vxAPI:_VXHostSetProgressCB(userData, callback)", vx::returnsNothing, _VXHostSetProgressCB, userData,
             callback);
}

void VXHostUpdateProgress(const char* info1, const char* info2) {
  callFramed("vxAPI:_VXHostUpdateProgress(info1, info2)", vx::returnsNothing, _VXHostUpdateProgress, info1, info2);
}

void VXHostSetBreakCheckCB(void* userData, VXBreakCheckCB callback) {
  callFramed("vxAPI:_VXHostSetBreakCheckCB(userData, callback)", vx::returnsNothing, _VXHostSetBreakCheckCB, userData,
             callback);
}

void VXSendMessagesToCout(int on) {
  callFramed("vxAPI:_VXSendMessagesToCout(on)", vx::returnsNothing, _VXSendMessagesToCout, on);
}

void VXSendMessagesToCerr(int on) {
  callFramed("vxAPI:_VXSendMessagesToCerr(on)", vx::returnsNothing, _VXSendMessagesToCerr, on);
}

int VXAreMessagesSentToCout(void) {
  return callFramed("vxAPI:_VXAreMessagesSentToCout()", vx::returnsNumber, _VXAreMessagesSentToCout);
}

int VXAreMessagesSentToCerr(void) {
  return callFramed("vxAPI:_VXAreMessagesSentToCerr()", vx::returnsNumber, _VXAreMessagesSentToCerr);
}
