#include "vxCache.h"

#include "vxCacheState.h"
#include "vxCachedBuffer.h"
#include "vxGuards.h"
#include "vxNotify.h"
#include "vxTraceBuffer.h"

#include <iterator>
#include <ostream>
#include <string>

namespace vx {

VX_CLASS_SOURCE(Cache, "NULL")

namespace {

// What a notification says: the bit of the cache and that of the event.
constexpr unsigned int cacheWasCleared = 0x80001;
constexpr unsigned int levelWasChanged = 0x80002;
constexpr unsigned int cacheWasFlushed = 0x80004;
constexpr unsigned int limitWasChanged = 0x80008;

VXuint64 clampPriority(VXuint64 priority) { return std::min(priority, Cache::numPriorities - 1); }

// Asks for what the next flush is going to look at, which was last used before all else in the cache. One step for each
// flush: the place, the buffer there, the head of its block.
void prefetchBuffers(CachedBufferPosition position, CachedBufferPosition end) {
  if (!*position) return;
  __builtin_prefetch((*position)->getData(), 1);
  if (++position == end || !*position) return;
  const auto* const buffer = reinterpret_cast<const char*>(*position);
  __builtin_prefetch(buffer, 1);
  __builtin_prefetch(buffer + sizeof(CachedBuffer) - 1, 1);
  if (++position != end) __builtin_prefetch(&*position, 1);
}

}  // namespace

Cache::Cache() : Cache(std::make_shared<CacheState>()) {}

Cache::Cache(const std::shared_ptr<CacheState>& state) : _cacheMutex(state->mutex), _state(state) {
  _state->cache = this;
}

Cache::Cache(const Cache& /*other*/) : Cache() {
  report(VX_FATAL, "Cache::Cache(const Cache &)", VX_MISUSED_INTERFACE,
         "Usage of copy constructor of Cache is not supported.");
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): nothing is assigned
Cache& Cache::operator=(const Cache& /*other*/) {
  report(VX_FATAL, "Cache& Cache::operator=(const Cache &)", VX_MISUSED_INTERFACE,
         "Usage of assignment operator of Cache is not supported.");
  return *this;
}

Cache::~Cache() {
  const TraceFrame trace("source/vxCache:Cache::~Cache()");
  const MutexLock lock(_cacheMutex);
  _clearBuffers();
  _state->cache = nullptr;
}

VXuint64 Cache::getCurrentCacheSizeKB() const noexcept {
  return _currentCacheSize.load(std::memory_order_relaxed) / bytesPerKB;
}

VXuint64 Cache::getMaxCacheSizeKB() const noexcept { return _maxCacheSizeKB.load(std::memory_order_relaxed); }

void Cache::setMaxCacheSizeKB(VXuint64 sizeKB) {
  if (_maxCacheSizeKB.exchange(sizeKB, std::memory_order_relaxed) != sizeKB) {
    VXNotify.notify(limitWasChanged, nullptr, nullptr);
  }
}

VXuint64 Cache::getMemoryOptimizationLevel() const noexcept {
  return _memoryOptimizationLevel.load(std::memory_order_relaxed);
}

void Cache::setMemoryOptimizationLevel(VXuint64 level) {
  level = std::min(level, maxMemoryOptimizationLevel);
  if (_memoryOptimizationLevel.exchange(level, std::memory_order_relaxed) != level) {
    VXNotify.notify(levelWasChanged, nullptr, nullptr);
  }
}

CachedBufferPosition Cache::addBuffer(VXuint64 priority, CachedBuffer* buffer) {
  const TraceFrame trace("source/vxCache:Cache::addBuffer()");
  const MutexLock lock(_cacheMutex);
  checkFatal(buffer != nullptr);
  return _append(clampPriority(priority), *buffer);
}

void Cache::removeBuffer(VXuint64 priority, CachedBufferPosition position) {
  const TraceFrame trace("source/vxCache:Cache::removeBuffer()");
  const MutexLock lock(_cacheMutex);
  // There is nothing to read at the end of a list.
  if (position == _priorityLists[clampPriority(priority)].end()) return;
  _bufferAt(position);
  _remove(position);
}

void Cache::changePriorityList(CachedBufferPosition position, VXuint64 newPriority) {
  const TraceFrame trace("source/vxCache:Cache::changePriorityList()");
  const MutexLock lock(_cacheMutex);
  newPriority = clampPriority(newPriority);
  if (_bufferAt(position).getPriority() != newPriority) _move(position, newPriority);
}

CachedBufferPosition Cache::_append(VXuint64 priority, CachedBuffer& buffer) VX_NO_THREAD_SAFETY_ANALYSIS {
  CachedBufferList& list = _priorityLists[priority];
  if (_sparePlaces.empty()) {
    list.push_back(&buffer);
  } else {
    _sparePlaces.front() = &buffer;
    list.splice(list.end(), _sparePlaces, _sparePlaces.begin());
  }
  buffer._listIndex = static_cast<VXuint32>(priority);
  _state->hold(buffer._size);
  _updateSize();
  return std::prev(list.end());
}

void Cache::_remove(CachedBufferPosition position) noexcept VX_NO_THREAD_SAFETY_ANALYSIS {
  const CachedBuffer& buffer = **position;
  _state->held.subtract(buffer._size);
  _updateSize();
  CachedBufferList& list = _priorityLists[buffer._listIndex];
  if (_sparePlaces.size() < _maxSparePlaces) {
    *position = nullptr;
    _sparePlaces.splice(_sparePlaces.begin(), list, position);
  } else {
    list.erase(position);
  }
}

void Cache::_move(CachedBufferPosition position, VXuint64 newPriority) noexcept VX_NO_THREAD_SAFETY_ANALYSIS {
  CachedBuffer& buffer = **position;
  CachedBufferList& list = _priorityLists[newPriority];
  list.splice(list.end(), _priorityLists[buffer._listIndex], position);
  buffer._listIndex = static_cast<VXuint32>(newPriority);
  buffer._listPosition = position;
}

CachedBuffer& Cache::_bufferAt(CachedBufferPosition position) {
  checkFatal(position != CachedBufferPosition());
  checkFatal(*position != nullptr);
  return **position;
}

void Cache::_updateSize() noexcept { _currentCacheSize.store(_state->held.getBytes(), std::memory_order_relaxed); }

void Cache::flushCache() {
  const TraceFrame trace("source/vxCache:Cache::flushCache()");
  const MutexLock lock(_cacheMutex);
  _dropBuffers();
  if (_state->numRequests.load(std::memory_order_relaxed) == 0) _state->requestPeak = 0;
  _state->boundWarmBlocks(0);  // also where nothing was dropped: the limit may be a lower one
  VXNotify.notify(cacheWasFlushed, nullptr, nullptr);
}

void Cache::_dropBuffers() {
  const VXuint64 limit = limitInBytes(getMaxCacheSizeKB());
  const VXuint64 level = getMemoryOptimizationLevel();
  bool hasDropped = false;
  for (VXuint64 priority = 0; priority < numPriorities; ++priority) {
    CachedBufferList& list = _priorityLists[priority];
    for (CachedBufferPosition next = list.begin(); next != list.end();) {
      const CachedBufferPosition position = next++;
      if (_state->held.getBytes() < limit && level <= priority) {
        if (hasDropped) prefetchBuffers(position, list.end());
        return;
      }
      CachedBuffer& buffer = _bufferAt(position);
      if (!buffer.isInitialized() || buffer.isLocked()) continue;
      buffer._clearInitialized();
      hasDropped = true;
    }
  }
}

void* Cache::_takeBlock(VXuint64 size) noexcept {
  const MutexLock lock(_cacheMutex);
  return _state->allocate(size);
}

void Cache::_putBlock(void* block, VXuint64 size) noexcept {
  const MutexLock lock(_cacheMutex);
  _state->free(block, size);
}

void Cache::clearCache() {
  const TraceFrame trace("source/vxCache:Cache::clearCache()");
  const MutexLock lock(_cacheMutex);
  _clearBuffers();
  VXNotify.notify(cacheWasCleared, nullptr, nullptr);
}

void Cache::_clearBuffers() noexcept {
  for (CachedBufferList& list : _priorityLists) {
    while (!list.empty()) {
      CachedBuffer* const buffer = list.front();
      // One that was added past init() has no place of its own to leave.
      if (buffer && buffer->isInitialized() && buffer->_listPosition == list.begin()) {
        buffer->_clearInitialized();
      } else {
        list.pop_front();
      }
    }
  }
  _sparePlaces.clear();
  _state->held.reset();
  _state->locked.reset();
  _state->warmBlocks.clear();
  _updateSize();
}

CacheFigures Cache::getFigures() const {
  const MutexLock lock(_cacheMutex);
  CacheFigures figures;
  figures.limit = limitInBytes(getMaxCacheSizeKB());
  figures.held = _state->held.getBytes();
  figures.locked = _state->locked.getBytes();
  figures.peak = _state->peak;
  figures.warm = _state->warmBlocks.getBytes();
  return figures;
}

std::ostream& operator<<(std::ostream& stream, const Cache& cache) {
  // Put together first, so that the cache isn't locked while a stream is slow.
  std::string text = "Used cache size in KB = ";
  {
    const MutexLock lock(cache._cacheMutex);
    text += std::to_string(cache.getCurrentCacheSizeKB());
    text += "\nVX_MEM_OPT_LEVEL      = " + std::to_string(cache.getMemoryOptimizationLevel());
    text += "\nNum pages in priority lists:\n";
    for (VXuint64 priority = 0; priority < Cache::numPriorities; ++priority) {
      text += std::to_string(priority) + ":" + std::to_string(cache._priorityLists[priority].size()) + ",  ";
    }
    text += "\nPage locking state:\n";
    for (VXuint64 priority = 0; priority < Cache::numPriorities; ++priority) {
      text += std::to_string(priority) + ":";
      for (const CachedBuffer* const buffer : cache._priorityLists[priority]) text += buffer->isLocked() ? 'L' : 'U';
      text += '\n';
    }
  }
  return stream << text;
}

}  // namespace vx
