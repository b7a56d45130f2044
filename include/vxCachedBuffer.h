/// \file vxCachedBuffer.h
/// One block of memory that a cache keeps account of.

#ifndef VX_CACHED_BUFFER_H
#define VX_CACHED_BUFFER_H

#include "vxCache.h"
#include "vxTimeCounter.h"

namespace vx {

/// A block of memory known to a cache: a page of an image, or a tile handed out by a tile request.
///
/// A buffer is either not initialised, without memory and in no list of a cache, or initialised, with memory and in
/// exactly one list. The cache takes the memory of an unlocked buffer away whenever it needs it, which makes the buffer
/// not initialised again; the object stays and can be used anew. A tile in a buffer is therefore good until the next
/// flush unless it is locked.
///
/// The functions lock the cache and may be called from any thread while nobody calls init() or deletes the buffer. A
/// buffer may end after its cache: it has no memory then and counts as one without a cache.
class VX_EXPORT CachedBuffer {
 public:
  /// Makes a buffer without memory and without a cache.
  CachedBuffer();
  /// Not supported: reports as fatal with ::VX_MISUSED_INTERFACE and makes a buffer as CachedBuffer().
  CachedBuffer(const CachedBuffer& other);
  /// Not supported: reports as fatal with ::VX_MISUSED_INTERFACE and changes nothing.
  CachedBuffer& operator=(const CachedBuffer& other);
  /// As clear(), also for a buffer without a cache.
  ~CachedBuffer();

  /// Gives the buffer memory and puts it, unlocked, at the end of a list of the cache. No other thread may use the
  /// buffer meanwhile.
  ///
  /// A buffer that was initialised leaves its place first, also in another cache. Without `data` it keeps its block if
  /// the size is the same, contents included, otherwise the block is freed and a new one is allocated, with undefined
  /// contents. In another cache it may be another block with the same contents. Given `data`, the former block is
  /// neither used nor freed any more, which is reported as an error with
  /// ::VX_MISUSED_INTERFACE.
  /// \param cache the cache, which may end before the buffer.
  /// \param priority 0, the first to go, to 9; above counts as 9.
  /// \param size bytes.
  /// \param data null, or a block from VXAlloc() of at least `size` bytes, which the buffer owns after success and
  ///        gives back with VXFree().
  /// \throw int ::VX_NO_MEMORY without memory: the buffer is not initialised then, and `data` is still the caller's.
  /// \throw int ::VX_BAD_INTERNAL_POINTER for a null reference, nothing changed.
  void init(Cache& cache, VXuint64 priority, VXuint64 size, void* data);

  /// Keeps the buffer from being dropped by a flush, until unlock() is called as often. On a buffer that isn't
  /// initialised it reports an error with ::VX_MISUSED_INTERFACE and changes nothing.
  /// \throw int ::VX_BAD_POINTER, reported as fatal, for a buffer without a cache.
  void lock();
  /// Takes back one lock(). A buffer that isn't locked stays as it is. \throw int as lock().
  void unlock();

  /// Frees the memory, also of a locked buffer, and leaves the cache. A buffer that isn't initialised stays as it is.
  /// The address that getData() gives stays, but is invalid. \throw int as lock().
  void clear();

  /// Moves the buffer to the end of the list of another priority, in constant time. With the priority it has, and on a
  /// buffer that isn't initialised, nothing happens.
  /// \param priority above 9 counts as 9. \throw int as lock().
  void setPriority(VXuint64 priority);

  /// Sets the priority by the measured cost of the contents: by the time spent, or the time for 262144 voxels at that
  /// speed if that is longer. Below 0.002 seconds gives 0, from 3 seconds on 9.
  /// \param seconds time of the calculation. \param voxels their number, not their bytes. \throw int as lock().
  void updatePriority(double seconds, VXint64 voxels);

  /// \return the cache; null before init() and after the end of the cache.
  Cache* getCache() const noexcept;
  /// \return the memory; invalid if the buffer isn't initialised.
  void* getData() const noexcept { return _data; }
  /// \return bytes; 0 if the buffer isn't initialised.
  VXuint64 getSize() const noexcept { return _size; }
  /// \return -1 not initialised, 0 unlocked, above 0 how often it is locked.
  VXint64 getLockCount() const noexcept { return _lockCount.load(std::memory_order_relaxed); }
  /// \return how often the buffer was locked since it became initialised.
  VXint64 getTotalLockCount() const noexcept { return _totalLockCount; }
  /// \return the priority; 0 if the buffer isn't initialised.
  VXuint64 getPriority() const noexcept { return _priority.load(std::memory_order_relaxed); }
  /// \return whether the buffer has memory and stands in a list of its cache.
  bool isInitialized() const noexcept { return getLockCount() >= 0; }
  /// \return whether a flush leaves the buffer alone.
  bool isLocked() const noexcept { return getLockCount() > 0; }
  /// \return the time of the last init().
  const TimeCounter& getCreationTime() const noexcept { return _creationTime; }
  /// \return the time of the last lock() or init().
  const TimeCounter& getLastLockTime() const noexcept { return _lastLockTime; }
  /// \return the place in the cache, empty if the buffer isn't initialised.
  CachedBufferPosition getListPosition() const noexcept { return _listPosition; }

  /// Writes cache, priority, size and address, and the bytes of an initialised buffer in hexadecimal, 32 a row.
  friend VX_EXPORT std::ostream& operator<<(std::ostream& stream, const CachedBuffer& buffer);

 protected:
  // All is guarded by the mutex of the cache; what is atomic may be read without it.
  Cache* _cache = nullptr;              ///< The owning cache, which may have ended.
  void* _data = nullptr;                ///< The memory; not owned unless initialised.
  VXuint64 _size = 0;                   ///< Bytes.
  std::atomic<VXint64> _lockCount{-1};  ///< -1 not initialised, 0 unlocked, above 0 locked.
  VXint64 _totalLockCount = 0;          ///< Number of locks since the buffer became initialised.
  TimeCounter _creationTime;            ///< Restarted by init().
  TimeCounter _lastLockTime;            ///< Restarted by init() and lock().
  std::atomic<VXuint64> _priority{0};   ///< The list in which the buffer stands.
  CachedBufferPosition _listPosition;   ///< Its place there.

 private:
  friend class Cache;

  friend class PagedImg;

  void _init(Cache& cache, VXuint64 priority, VXuint64 size, void* data, bool isLocked);
  CacheState& _requireCacheState() const;
  void _lock(CacheState& state) noexcept;
  bool _leaveCache() noexcept;
  void _leaveLockedCache() noexcept;
  void _freeBlock() noexcept;
  void _reset() noexcept;
  void _clearInitialized() noexcept;

  VXuint32 _listIndex = 0;                  // the list where the buffer really is; kept by the cache
  bool _isBlockOwn = false;                 // whether `_data` was allocated here, with exactly `_size` bytes
  std::shared_ptr<CacheState> _cacheState;  // of `_cache`; lives on when that ends
};

}  // namespace vx

#endif
