/// \file vxCache.h
/// The account of all page memory of a host.

#ifndef VX_CACHE_H
#define VX_CACHE_H

#include "vxMutex.h"
#include "vxRuntime.h"
#include "vxTypes.h"

#include <atomic>
#include <iosfwd>
#include <list>
#include <memory>

namespace vx {

class CachedBuffer;
class CacheRequest;
class InputBuffers;
struct CacheState;

/// Buffers of one priority, oldest first.
typedef std::list<CachedBuffer*> CachedBufferList;
/// The place of a buffer in its list. A default one is empty: it names no place.
typedef CachedBufferList::iterator CachedBufferPosition;

/// Memory of a cache in bytes, all taken at one moment. Sums that don't fit 64 bits are given as the greatest number.
struct CacheFigures {
  VXuint64 limit = 0;   ///< What the cache may hold.
  VXuint64 held = 0;    ///< What the buffers of the cache hold now.
  VXuint64 locked = 0;  ///< What is locked of that, and so stays in a flush.
  VXuint64 peak = 0;    ///< The most that the buffers ever held at once.
  VXuint64 warm = 0;    ///< Free blocks that are kept for the next pages, beside `held`; see Cache.
};

/// Keeps account of all page memory of one host, and drops pages when memory runs over a limit.
///
/// Each CachedBuffer that has memory stands in one of ten lists, which is its priority: the greater, the dearer it was
/// to calculate. A flush drops the cheap ones first, within a priority the oldest first, and never a locked one. The
/// cache owns no buffer, only the decision when its memory goes: buffers belong to their images or to the caller of a
/// tile request.
///
/// A cache may end before its buffers. What they hold is freed then; they count as buffers without a cache from there
/// on and can be given to another one.
///
/// Blocks that are freed may be kept for new ones of the same size, because the system hands out fresh memory slowly:
/// what buffers leave of the limit, up to #maxWarmBytesInLimit, and #maxWarmBytes more, until clearCache() or the end
/// of the cache. After a flush the cache thus takes no more than its limit or the locked buffers, whichever is greater,
/// and #maxWarmBytes. While a request is served, what the buffers held at once meanwhile counts instead of the limit
/// where that is more.
///
/// All functions are safe from any thread but for getCacheTable(). flushCache() and clearCache() send their
/// notification while they still hold the lock: a callback may use the cache, but must not wait for another thread that
/// locks it. The functions that tell size, limit and level take no lock. What a callback throws passes on, after the
/// work is done and the lock given back.
class VX_EXPORT Cache {
 public:
  /// Number of priorities, from 0, the cheapest, to 9.
  static constexpr VXuint64 numPriorities = 10;
  /// The greatest memory optimization level.
  static constexpr VXuint64 maxMemoryOptimizationLevel = 10;
  /// Bytes that a cache keeps at most in free blocks beyond its limit.
  static constexpr VXuint64 maxWarmBytes = 8ULL << 20;
  /// Bytes that a cache keeps at most in free blocks within its limit.
  static constexpr VXuint64 maxWarmBytesInLimit = 56ULL << 20;

  /// Makes an empty cache with a limit of 50000 KB and level 0. \throw std::bad_alloc without memory.
  Cache();
  /// Not supported: reports as fatal with ::VX_MISUSED_INTERFACE and makes an empty cache.
  Cache(const Cache& other);
  /// Not supported: reports as fatal with ::VX_MISUSED_INTERFACE and changes nothing.
  Cache& operator=(const Cache& other);
  /// Frees the memory of all buffers, also of locked ones. It sends no notification.
  virtual ~Cache();

  VX_ROOT_CLASS_HEADER(Cache)

  /// \return what the buffers hold, in KB of 1024 bytes, rounded down.
  VXuint64 getCurrentCacheSizeKB() const noexcept;

  /// \return the limit in KB.
  VXuint64 getMaxCacheSizeKB() const noexcept;
  /// Sets the limit. What is above it goes in the next flush. A change sends the notification 0x80008.
  /// \param sizeKB limit in KB; one of 2^54 and above is no limit.
  void setMaxCacheSizeKB(VXuint64 sizeKB);

  /// \return the memory optimization level.
  VXuint64 getMemoryOptimizationLevel() const noexcept;
  /// Sets below which priority a flush drops also buffers that fit. A change sends the notification 0x80002.
  /// \param level 0 keeps all that fits, 10 keeps none; a greater one counts as 10.
  void setMemoryOptimizationLevel(VXuint64 level);

  /// Appends a buffer to a list and counts its size. This is for CachedBuffer::init() to call.
  /// \param priority a list; above 9 counts as 9. \param buffer stays with the caller, who removes it before it ends.
  /// \return its place.
  /// \throw int ::VX_BAD_POINTER, reported as fatal, for null. \throw std::bad_alloc without memory, nothing changed.
  CachedBufferPosition addBuffer(VXuint64 priority, CachedBuffer* buffer);

  /// Takes a buffer out of its list and off the account, in constant time. This is for CachedBuffer to call.
  /// \param priority the list in which the buffer stands; above 9 counts as 9.
  /// \param position its place; at the end of the list there is no buffer, and nothing happens.
  /// \throw int ::VX_BAD_POINTER, reported as fatal, for a place without a buffer.
  void removeBuffer(VXuint64 priority, CachedBufferPosition position);

  /// Moves a buffer to the end of another list in constant time and without an allocation, and tells the buffer its
  /// place; the caller then stores the priority. Nothing happens if the buffer has that priority already. This is for
  /// CachedBuffer::setPriority() to call.
  /// \param position place of the buffer. \param newPriority the list to move to; above 9 counts as 9.
  /// \throw int ::VX_BAD_POINTER, reported as fatal, for a place without a buffer.
  void changePriorityList(CachedBufferPosition position, VXuint64 newPriority);

  /// Drops unlocked buffers until the size is below the limit, in ascending order of priority and age. Buffers of a
  /// priority below the memory optimization level go in any case. Sends the notification 0x80004 at its end.
  /// Below the limit it takes constant time, otherwise that of the buffers it looks at.
  void flushCache();

  /// Drops all buffers, also locked ones, and the blocks kept for new ones. Sends the notification 0x80001.
  void clearCache();

  /// \return the lists, by priority. They may be read while no other thread uses the cache.
  const CachedBufferList (&getCacheTable() const noexcept)[numPriorities] { return _priorityLists; }

  /// \return the memory figures, in constant time.
  CacheFigures getFigures() const;

  /// Writes size, level, the lengths of the lists, and which buffers are locked, on several lines.
  friend VX_EXPORT std::ostream& operator<<(std::ostream& stream, const Cache& cache);

 protected:
  /// The buffers by priority.
  CachedBufferList _priorityLists[numPriorities] VX_GUARDED_BY(_cacheMutex);
  std::atomic<VXuint64> _currentCacheSize{0};         ///< Bytes of all buffers; changed with `_cacheMutex` held.
  std::atomic<VXuint64> _maxCacheSizeKB{50000};       ///< The limit; synchronises itself.
  std::atomic<VXuint64> _memoryOptimizationLevel{0};  ///< 0 to 10; synchronises itself.
  /// Guards the lists, the sizes and all buffers of this cache, and lives on with them. No other lock of the library is
  /// taken while it is held, but for those inside messages and notifications.
  Mutex& _cacheMutex;

 private:
  friend class CachedBuffer;
  friend class CacheRequest;
  friend class InputBuffers;

  // What the functions of similar names do, for those who hold the mutex by way of the state. A place that was left is
  // kept for the next buffer, so that most of them come and go without an allocation.
  CachedBufferPosition _append(VXuint64 priority, CachedBuffer& buffer);
  void _remove(CachedBufferPosition position) noexcept;
  void _move(CachedBufferPosition position, VXuint64 newPriority) noexcept;

  // Lends a block as those of buffers, null without memory; and takes it back.
  void* _takeBlock(VXuint64 size) noexcept;
  void _putBlock(void* block, VXuint64 size) noexcept;

  explicit Cache(const std::shared_ptr<CacheState>& state);
  static CachedBuffer& _bufferAt(CachedBufferPosition position);
  void _updateSize() noexcept VX_REQUIRES(_cacheMutex);
  void _dropBuffers() VX_REQUIRES(_cacheMutex);
  void _clearBuffers() noexcept VX_REQUIRES(_cacheMutex);

  static constexpr std::size_t _maxSparePlaces = 256;
  CachedBufferList _sparePlaces VX_GUARDED_BY(_cacheMutex);
  std::shared_ptr<CacheState> _state;  // shared with the buffers; constant after construction
};

}  // namespace vx

#endif
