#include "vxCachedBuffer.h"

#include "vxCacheState.h"
#include "vxGuards.h"
#include "vxTraceBuffer.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <new>
#include <optional>
#include <ostream>
#include <string>

namespace vx {

namespace {

// Seconds from which on a page is dearer than the priority before.
constexpr double priorityThresholds[] = {0.002, 0.004, 0.01, 0.04, 0.1, 0.25, 0.5, 1.0, 3.0};
static_assert(std::size(priorityThresholds) == Cache::numPriorities - 1);
// The voxels of a page that the thresholds are meant for.
constexpr double voxelsOfMeasure = 262144.0;

const TimeCounter& anyTime() {
  static const TimeCounter time;
  return time;
}

VXuint64 clampPriority(VXuint64 priority) { return std::min(priority, Cache::numPriorities - 1); }

// The address of a reference; null where the caller's own pointer was. The compiler would take it for certain that a
// reference is none, and must not.
Cache* addressOf(Cache& cache) {
  Cache* volatile address = &cache;
  return address;
}

}  // namespace

// The watches are started by init(); to read the clock for them before that would be for nothing.
CachedBuffer::CachedBuffer() : _creationTime(anyTime()), _lastLockTime(anyTime()) {}

CachedBuffer::CachedBuffer(const CachedBuffer& /*other*/) {
  report(VX_FATAL, "CachedBuffer::CachedBuffer(const CachedBuffer &)", VX_MISUSED_INTERFACE,
         "Usage of copy constructor of CachedBuffer is not supported.");
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): nothing is assigned
CachedBuffer& CachedBuffer::operator=(const CachedBuffer& /*other*/) {
  report(VX_FATAL, "CachedBuffer& CachedBuffer::operator=(const CachedBuffer &)", VX_MISUSED_INTERFACE,
         "Usage of assignment operator of CachedBuffer is not supported.");
  return *this;
}

CachedBuffer::~CachedBuffer() {
  if (!_cacheState) return;
  const MutexLock lock(_cacheState->mutex);
  // A cache that has ended took the memory with it.
  if (isInitialized()) _clearInitialized();
}

// The state behind `_cache`, to be locked by the caller, who then asks whether the cache is still there.
CacheState& CachedBuffer::_requireCacheState() const {
  checkFatal(_cache != nullptr);
  return *_cacheState;
}

// Takes the buffer out of its list. It isn't initialised any more, but still owns its block. Returns whether there is
// one.
bool CachedBuffer::_leaveCache() noexcept {
  if (!_cacheState) return false;
  const MutexLock lock(_cacheState->mutex);
  if (!isInitialized()) return false;
  _leaveLockedCache();
  return true;
}

// The same for an initialised buffer, with the mutex held.
void CachedBuffer::_leaveLockedCache() noexcept {
  if (isLocked()) _cacheState->locked.subtract(_size);
  _cacheState->cache.load(std::memory_order_relaxed)->_remove(_listPosition);
  _lockCount.store(-1, std::memory_order_relaxed);
  _listPosition = CachedBufferPosition();
}

void CachedBuffer::_freeBlock() noexcept {
  if (_isBlockOwn) {
    _cacheState->free(_data, _size);
  } else {
    // Only the caller of init() knows how large the block really is.
    VXFree(_data);
  }
}

void CachedBuffer::_reset() noexcept {
  _size = 0;
  _lockCount.store(-1, std::memory_order_relaxed);
  _totalLockCount = 0;
  _priority.store(0, std::memory_order_relaxed);
  _listPosition = CachedBufferPosition();
}

void CachedBuffer::_clearInitialized() noexcept {
  _leaveLockedCache();
  _freeBlock();
  _reset();
}

namespace {

// A block that is part of the slabs of another cache, which takes it back at the end of the scope.
class FormerBlock {
 public:
  FormerBlock() = default;
  ~FormerBlock() {
    if (!_state) return;
    const MutexLock lock(_state->mutex);
    _state->free(_data, _size);
  }
  FormerBlock(const FormerBlock&) = delete;
  FormerBlock& operator=(const FormerBlock&) = delete;

  // \param state of the cache that allocated the block; nothing is taken if it is no part of a slab.
  void take(const std::shared_ptr<CacheState>& state, void* data, VXuint64 size) noexcept {
    const MutexLock lock(state->mutex);
    if (!state->slabs.contains(data)) return;
    _state = state;
    _data = data;
    _size = size;
  }
  void leak() noexcept { _state.reset(); }
  void copyTo(void* data) const noexcept { std::memcpy(data, _data, static_cast<std::size_t>(_size)); }

  explicit operator bool() const noexcept { return _state != nullptr; }

 private:
  std::shared_ptr<CacheState> _state;
  void* _data = nullptr;
  VXuint64 _size = 0;
};

}  // namespace

void CachedBuffer::init(Cache& cache, VXuint64 priority, VXuint64 size, void* data) {
  _init(cache, priority, size, data, false);
}

// A buffer that begins locked spares the second visit to the cache.
void CachedBuffer::_init(Cache& cache, VXuint64 priority, VXuint64 size, void* data, bool isLocked) {
  const TraceFrame trace("source/vxCachedBuffer:CachedBuffer::init()");
  if (!addressOf(cache)) throw static_cast<int>(VX_BAD_INTERNAL_POINTER);

  bool hasBlock = false;
  FormerBlock former;
  if (_cacheState != cache._state) {
    // Another cache is left before this one is locked: two locks at once might wait for each other.
    hasBlock = _leaveCache();
    if (hasBlock && _isBlockOwn) former.take(_cacheState, _data, _size);
    _cacheState = cache._state;
  }
  const MutexLock lock(_cacheState->mutex);
  _cache = &cache;
  if (isInitialized()) {
    _leaveLockedCache();
    hasBlock = true;
  }
  _priority.store(clampPriority(priority), std::memory_order_relaxed);

  if (data) {
    if (hasBlock) {
      report(VX_ERROR, "CachedBuffer::init()", VX_MISUSED_INTERFACE,
             "Badly implemented case: Buffer is illegally initialized. Probably a memory leak remains.");
    }
    former.leak();
    _data = data;
    _isBlockOwn = false;
  } else if (!hasBlock || _size != size || former) {
    if (hasBlock && !former) _freeBlock();
    _data = _cacheState->allocate(size);
    if (!_data) {
      _reset();
      throw static_cast<int>(VX_NO_MEMORY);
    }
    if (former && _size == size) former.copyTo(_data);
    _isBlockOwn = true;
  }

  _size = size;
  try {
    _listPosition = cache._append(getPriority(), *this);
  } catch (const std::bad_alloc&) {
    if (!data) _freeBlock();
    _data = nullptr;
    _reset();
    throw static_cast<int>(VX_NO_MEMORY);
  }
  _lockCount.store(0, std::memory_order_relaxed);
  _creationTime.reset();
  _lastLockTime = _creationTime;
  if (isLocked) _lock(*_cacheState);
}

// Counts a lock of an initialised buffer; when, is for the caller to note.
void CachedBuffer::_lock(CacheState& state) noexcept {
  const VXint64 lockCount = getLockCount();
  if (lockCount == 0) state.locked.add(_size);
  _lockCount.store(lockCount + 1, std::memory_order_relaxed);
  ++_totalLockCount;
}

void CachedBuffer::lock() {
  CacheState& state = _requireCacheState();
  const MutexLock lock(state.mutex);
  checkFatal(state.cache.load(std::memory_order_relaxed) != nullptr);
  if (!isInitialized()) {
    report(VX_ERROR, "CachedBuffer::lock()", VX_MISUSED_INTERFACE, "Buffer is not initialized and cannot be locked.");
    return;
  }
  _lock(state);
  _lastLockTime.reset();
}

void CachedBuffer::unlock() {
  CacheState& state = _requireCacheState();
  const MutexLock lock(state.mutex);
  checkFatal(state.cache.load(std::memory_order_relaxed) != nullptr);
  const VXint64 lockCount = getLockCount();
  if (lockCount <= 0) return;
  if (lockCount == 1) state.locked.subtract(_size);
  _lockCount.store(lockCount - 1, std::memory_order_relaxed);
}

void CachedBuffer::clear() {
  const TraceFrame trace("source/vxCachedBuffer:CachedBuffer::clear()");
  CacheState& state = _requireCacheState();
  const MutexLock lock(state.mutex);
  checkFatal(state.cache.load(std::memory_order_relaxed) != nullptr);
  if (isInitialized()) _clearInitialized();
}

void CachedBuffer::setPriority(VXuint64 priority) {
  CacheState& state = _requireCacheState();
  priority = clampPriority(priority);
  if (getPriority() == priority) return;
  const MutexLock lock(state.mutex);
  checkFatal(state.cache.load(std::memory_order_relaxed) != nullptr);
  if (!isInitialized()) return;
  state.cache.load(std::memory_order_relaxed)->_move(_listPosition, priority);
  _priority.store(priority, std::memory_order_relaxed);
}

void CachedBuffer::updatePriority(double seconds, VXint64 voxels) {
  const TraceFrame trace("source/vxCachedBuffer:CachedBuffer::updatePriority()");
  const double normalized = seconds * voxelsOfMeasure / std::fabs(static_cast<double>(voxels) + 1.0);
  VXuint64 priority = 0;
  for (const double threshold : priorityThresholds) {
    if (normalized >= threshold || seconds >= threshold) ++priority;
  }
  setPriority(priority);
}

Cache* CachedBuffer::getCache() const noexcept {
  return _cacheState ? _cacheState->cache.load(std::memory_order_relaxed) : nullptr;
}

// Printed form --------------------------------------------------------------------------------------------------------

namespace {

constexpr VXuint64 bytesPerRow = 32;

std::string addressText(const void* address) {
  char text[32];
  std::snprintf(text, sizeof text, "0x%llx", static_cast<VXuint64>(reinterpret_cast<std::uintptr_t>(address)));
  return text;
}

// One row at a time, since the text of a large block is three times its size.
void dump(std::ostream& stream, const unsigned char* data, VXuint64 size) {
  for (VXuint64 row = 0; row < size; row += bytesPerRow) {
    char text[16 + 3 * bytesPerRow + 2];
    char* end = text + std::snprintf(text, sizeof text, "%5llX:", row);
    const VXuint64 numBytes = std::min(bytesPerRow, size - row);
    for (VXuint64 i = 0; i < numBytes; ++i) end += std::snprintf(end, 4, "%2X ", data[row + i]);
    *end++ = '\n';
    stream.write(text, end - text);
  }
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const CachedBuffer& buffer) {
  const TraceFrame trace("source/vxCachedBuffer:operator<<()");
  std::optional<MutexLock> lock;
  if (buffer._cacheState) lock.emplace(buffer._cacheState->mutex);
  stream << "Cache    : " + addressText(buffer.getCache()) + "\nPriority : " + std::to_string(buffer.getPriority()) +
                "\nSize     : " + std::to_string(buffer._size) + "\nMemaddr  : " + addressText(buffer._data) + "\n";
  if (buffer.isInitialized()) dump(stream, static_cast<const unsigned char*>(buffer._data), buffer._size);
  return stream;
}

}  // namespace vx
