// What a cache shares with its buffers, so that they may end in either order.

#ifndef VX_CACHE_STATE_H
#define VX_CACHE_STATE_H

#include "vxBlockSlabs.h"
#include "vxCache.h"
#include "vxWarmBlocks.h"

#include <algorithm>

namespace vx {

constexpr VXuint64 bytesPerKB = 1024;

// \return bytes; the greatest number where they don't fit 64 bits.
inline VXuint64 limitInBytes(VXuint64 sizeKB) noexcept {
  return sizeKB > ~0ULL / bytesPerKB ? ~0ULL : sizeKB * bytesPerKB;
}

// An exact sum of sizes, also of such that don't fit 64 bits together: what was added can be subtracted again.
class ByteSum {
 public:
  void add(VXuint64 size) noexcept {
    _low += size;
    if (_low < size) ++_high;
  }
  // Ends at 0 where less was added before.
  void subtract(VXuint64 size) noexcept {
    if (_low < size && _high-- == 0) {
      reset();
      return;
    }
    _low -= size;
  }
  void reset() noexcept { _low = _high = 0; }
  // The sum, or the greatest number where it is greater.
  VXuint64 getBytes() const noexcept { return _high ? ~0ULL : _low; }

 private:
  VXuint64 _low = 0;
  VXuint64 _high = 0;
};

// Lives as long as the cache or a buffer that was ever given to it. The mutex guards all members but the
// atomic ones; `cache` is changed with it held.
struct CacheState {
  Mutex mutex;
  std::atomic<Cache*> cache{nullptr};  // null after the end of the cache
  ByteSum held;                        // bytes of all buffers in the lists
  ByteSum locked;                      // those of them that are locked
  VXuint64 peak = 0;                   // the greatest `held` so far
  VXuint64 requestPeak = 0;            // that of the requests that are served now, if any
  BlockSlabs slabs;
  WarmBlocks warmBlocks{slabs, Cache::maxWarmBytes};
  std::atomic<VXuint32> numRequests{0};  // how many are served now; synchronises itself

  // A block of that size; null without memory. What is kept in free blocks gives way to it.
  void* allocate(VXuint64 size) noexcept {
    if (void* const warm = warmBlocks.take(size)) return warm;
    boundWarmBlocks(size);
    void* const block = slabs.allocate(size);
    if (block || warmBlocks.getBytes() == 0) return block;
    warmBlocks.clear();
    return slabs.allocate(size);
  }

  // Takes back a block from allocate().
  void free(void* block, VXuint64 size) noexcept {
    boundWarmBlocks(0);
    warmBlocks.put(block, size);
  }

  // A buffer of that size is in a list now.
  void hold(VXuint64 size) noexcept {
    held.add(size);
    const VXuint64 bytes = held.getBytes();
    peak = std::max(peak, bytes);
    if (numRequests.load(std::memory_order_relaxed) > 0) requestPeak = std::max(requestPeak, bytes);
  }

  // Free blocks may fill what buffers leave of the limit, since memory that was given back has to be had again for the
  // next pages. A request holds more than the limit, group by group: until its end they may fill that as well, so that
  // the pages that one group had go to the next one. \param newBytes that buffers are about to hold.
  void boundWarmBlocks(VXuint64 newBytes) noexcept {
    const Cache* const owner = cache.load(std::memory_order_relaxed);
    const VXuint64 limit = owner ? limitInBytes(owner->getMaxCacheSizeKB()) : 0;
    const VXuint64 used = held.getBytes();
    const VXuint64 most = std::max(limit, requestPeak);
    const VXuint64 room = used < most ? most - used : 0;
    warmBlocks.setBound(Cache::maxWarmBytes + std::min(room - std::min(room, newBytes), Cache::maxWarmBytesInLimit));
  }
};

// A tile request, for the length of a scope. The flush behind it ends what the bound of free blocks was for it.
class CacheRequest {
 public:
  explicit CacheRequest(Cache& cache) noexcept : _state(*cache._state) { ++_state.numRequests; }
  ~CacheRequest() { --_state.numRequests; }
  CacheRequest(const CacheRequest&) = delete;
  CacheRequest& operator=(const CacheRequest&) = delete;

 private:
  CacheState& _state;
};

}  // namespace vx

#endif
