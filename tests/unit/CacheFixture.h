// What the tests of the cache and of its buffers share: recorded notifications and the check of all invariants.

#ifndef VX_TESTS_CACHE_FIXTURE_H
#define VX_TESTS_CACHE_FIXTURE_H

#include "MessageRecorder.h"

#include "vxCachedBuffer.h"
#include "vxNotify.h"

#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <vector>

namespace vx::test {

constexpr VXuint64 KB = 1024;
constexpr VXuint64 hugeSize = ~0ULL;

/// Keeps the codes of the cache's notifications while it lives, and tests that they carry nothing else.
class NotificationRecorder {
 public:
  NotificationRecorder() : _handle(VXNotify.addNotifyCB(&NotificationRecorder::_record, this, 0x8ffff)) {}
  ~NotificationRecorder() { VXNotify.removeNotifyCB(_handle); }
  NotificationRecorder(const NotificationRecorder&) = delete;
  NotificationRecorder& operator=(const NotificationRecorder&) = delete;

  /// The codes since the last call.
  std::vector<unsigned int> take() {
    const std::lock_guard lock(_mutex);
    return std::exchange(_codes, {});
  }

 private:
  static void _record(void* userData, unsigned int code, void* arg1, void* arg2) {
    EXPECT_EQ(arg1, nullptr);
    EXPECT_EQ(arg2, nullptr);
    auto& recorder = *static_cast<NotificationRecorder*>(userData);
    const std::lock_guard lock(recorder._mutex);
    recorder._codes.push_back(code);
  }

  std::mutex _mutex;
  std::vector<unsigned int> _codes;
  VXCallbackHandle _handle;
};

using Buffers = std::vector<const CachedBuffer*>;

/// Tests what always holds for a cache and all buffers that were given to it.
inline void expectInvariants(const Cache& cache, const Buffers& buffers) {
  std::map<const CachedBuffer*, int> places;
  VXuint64 held = 0;
  VXuint64 locked = 0;
  for (VXuint64 priority = 0; priority < Cache::numPriorities; ++priority) {
    const CachedBufferList& list = cache.getCacheTable()[priority];
    std::size_t length = 0;
    for (auto position = list.begin(); position != list.end(); ++position, ++length) {
      const CachedBuffer& buffer = **position;
      ++places[&buffer];
      ASSERT_EQ(buffer.getPriority(), priority);
      ASSERT_TRUE(CachedBufferList::const_iterator(buffer.getListPosition()) == position);
      ASSERT_EQ(buffer.getCache(), &cache);
      ASSERT_NE(buffer.getData(), nullptr);
      held += buffer.getSize();
      if (buffer.isLocked()) locked += buffer.getSize();
    }
    ASSERT_EQ(list.size(), length);
  }
  std::size_t numInitialized = 0;
  for (const CachedBuffer* const buffer : buffers) {
    const auto place = places.find(buffer);
    if (place == places.end()) {
      ASSERT_EQ(buffer->getLockCount(), -1);
      ASSERT_EQ(buffer->getSize(), 0U);
      ASSERT_EQ(buffer->getTotalLockCount(), 0);
      ASSERT_EQ(buffer->getPriority(), 0U);
      ASSERT_TRUE(buffer->getListPosition() == CachedBufferPosition());
    } else {
      ASSERT_EQ(place->second, 1);
      ASSERT_GE(buffer->getLockCount(), 0);
      ASSERT_GE(buffer->getTotalLockCount(), buffer->getLockCount());
      ++numInitialized;
    }
  }
  ASSERT_EQ(numInitialized, places.size()) << "a list holds a buffer that nobody knows";
  const CacheFigures figures = cache.getFigures();
  ASSERT_EQ(figures.held, held);
  ASSERT_EQ(figures.locked, locked);
  ASSERT_GE(figures.peak, held);
  ASSERT_LE(figures.warm, Cache::maxWarmBytes);
  ASSERT_EQ(cache.getCurrentCacheSizeKB(), held / KB);
}

/// Tests what holds for a cache right after a flush.
inline void expectFlushed(const Cache& cache) {
  const CacheFigures figures = cache.getFigures();
  for (VXuint64 priority = 0; priority < Cache::numPriorities; ++priority) {
    if (figures.held < figures.limit && priority >= cache.getMemoryOptimizationLevel()) continue;
    for (const CachedBuffer* const buffer : cache.getCacheTable()[priority]) ASSERT_TRUE(buffer->isLocked());
  }
}

/// The buffers of one list, oldest first.
inline Buffers buffersOf(const Cache& cache, VXuint64 priority) {
  const CachedBufferList& list = cache.getCacheTable()[priority];
  return Buffers(list.begin(), list.end());
}

/// The message of a fatal check.
inline Message fatalMessage(VXErrorCode code) {
  return {VX_FATAL, code, "VXPrintAndNotifyFatal()", "A guarded block was left by a failure."};
}

/// Calls a function that is to throw an integer. \return the integer, 0 if nothing was thrown.
template <class Call>
int thrownCode(Call&& call) {
  try {
    call();
  } catch (int code) {
    return code;
  }
  return 0;
}

/// Base of the fixtures: a cache, with all messages and notifications recorded.
class CacheFixture : public ::testing::Test {
 protected:
  void check(const Buffers& buffers) { expectInvariants(cache, buffers); }

  MessageRecorder messages;
  NotificationRecorder notifications;
  Cache cache;
};

}  // namespace vx::test

#endif
