#include "CacheFixture.h"
#include "SlotOf.h"

#include "vxRuntime.h"

#include <memory>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <type_traits>

namespace vx::test {
namespace {

using Codes = std::vector<unsigned int>;

constexpr unsigned int cleared = 0x80001;
constexpr unsigned int levelChanged = 0x80002;
constexpr unsigned int flushed = 0x80004;
constexpr unsigned int limitChanged = 0x80008;

// Members as a derived class sees them.
struct OpenCache : Cache {
  using Cache::_cacheMutex;
  using Cache::_currentCacheSize;
  using Cache::_maxCacheSizeKB;
  using Cache::_memoryOptimizationLevel;
  using Cache::_priorityLists;
};

class CacheTest : public CacheFixture {
 protected:
  // Buffers a, b and c in their order in the list of one priority.
  void initAll(VXuint64 priority, VXuint64 size) {
    for (CachedBuffer* const buffer : {&a, &b, &c}) buffer->init(cache, priority, size, nullptr);
  }
  void checkAll() { check({&a, &b, &c}); }

  CachedBuffer a;
  CachedBuffer b;
  CachedBuffer c;
};

TEST_F(CacheTest, StartsEmptyWithTheDefaultLimit) {
  const OpenCache fresh;
  for (const CachedBufferList& list : fresh.getCacheTable()) EXPECT_TRUE(list.empty());
  EXPECT_EQ(std::size(fresh.getCacheTable()), 10U);
  EXPECT_EQ(fresh._currentCacheSize, 0U);
  EXPECT_EQ(fresh._maxCacheSizeKB, 50000U);
  EXPECT_EQ(fresh._memoryOptimizationLevel, 0U);
  EXPECT_EQ(cache.getCurrentCacheSizeKB(), 0U);
  EXPECT_EQ(cache.getMaxCacheSizeKB(), 50000U);
  EXPECT_EQ(cache.getMemoryOptimizationLevel(), 0U);
  const CacheFigures figures = cache.getFigures();
  EXPECT_EQ(figures.limit, 50000 * KB);
  EXPECT_EQ(figures.held, 0U);
  EXPECT_EQ(figures.locked, 0U);
  EXPECT_EQ(figures.peak, 0U);
  EXPECT_EQ(figures.warm, 0U);
  EXPECT_TRUE(notifications.take().empty());
}

TEST_F(CacheTest, FollowsThePatternOfRuntimeTypes) {
  Cache::initClass(nullptr, nullptr);  // once more, if the start-up did it
  EXPECT_STREQ(cache.getTypeIdName(), "Cache");
  ASSERT_NE(Cache::getClassTypeId(), nullptr);
  EXPECT_EQ(Cache::getClassTypeId(), Runtime::fromName("Cache"));
  EXPECT_EQ(cache.getTypeId(), Cache::getClassTypeId());
  EXPECT_STREQ(Cache::getClassTypeId()->getParentName(), "No parent");
  const long before = cache.typeInstanceCounter();
  const std::unique_ptr<Cache> made(static_cast<Cache*>(Cache::createCB()));
  EXPECT_EQ(cache.typeInstanceCounter(), before + 1);
  EXPECT_EQ(made->getMaxCacheSizeKB(), 50000U);
  EXPECT_TRUE(std::has_virtual_destructor_v<Cache>);
}

#ifdef VX_TESTS_SLOTS_ARE_KNOWN
TEST_F(CacheTest, TheVirtualFunctionsHaveTheirSlots) {
  EXPECT_EQ(slotOf(&Cache::getTypeId), 2U) << "the destructor takes two";
  EXPECT_EQ(slotOf(&Cache::getTypeIdName), 3U);
  EXPECT_EQ(slotOf(&Cache::typeInstanceCounter), 4U);
}
#endif

TEST_F(CacheTest, CopyConstructionIsReportedAndMakesAnEmptyCache) {
  a.init(cache, 3, 2 * KB, nullptr);
  cache.setMaxCacheSizeKB(7);
  const Cache copy(cache);
  EXPECT_EQ(messages.take(), (std::vector<Message>{{VX_FATAL, 14, "Cache::Cache(const Cache &)",
                                                    "Usage of copy constructor of Cache is not supported."}}));
  EXPECT_EQ(copy.getCurrentCacheSizeKB(), 0U);
  EXPECT_EQ(copy.getMaxCacheSizeKB(), 50000U);
  expectInvariants(copy, {});
  checkAll();
}

TEST_F(CacheTest, AssignmentIsReportedAndChangesNothing) {
  Cache other;
  a.init(cache, 3, 2 * KB, nullptr);
  cache.setMaxCacheSizeKB(7);
  EXPECT_EQ(&(cache = other), &cache);
  EXPECT_EQ(messages.take(), (std::vector<Message>{{VX_FATAL, 14, "Cache& Cache::operator=(const Cache &)",
                                                    "Usage of assignment operator of Cache is not supported."}}));
  EXPECT_EQ(cache.getMaxCacheSizeKB(), 7U);
  EXPECT_EQ(cache.getCurrentCacheSizeKB(), 2U);
  checkAll();
}

TEST_F(CacheTest, TheLevelIsClampedAndOnlyAChangeIsNotified) {
  cache.setMemoryOptimizationLevel(25);
  EXPECT_EQ(cache.getMemoryOptimizationLevel(), 10U);
  EXPECT_EQ(notifications.take(), Codes{levelChanged});
  cache.setMemoryOptimizationLevel(25);
  cache.setMemoryOptimizationLevel(10);
  cache.setMemoryOptimizationLevel(hugeSize);
  EXPECT_TRUE(notifications.take().empty());
  cache.setMemoryOptimizationLevel(9);
  EXPECT_EQ(cache.getMemoryOptimizationLevel(), 9U);
  EXPECT_EQ(notifications.take(), Codes{levelChanged});
}

TEST_F(CacheTest, OnlyAChangeOfTheLimitIsNotified) {
  cache.setMaxCacheSizeKB(50000);
  EXPECT_TRUE(notifications.take().empty());
  cache.setMaxCacheSizeKB(0);
  EXPECT_EQ(cache.getMaxCacheSizeKB(), 0U);
  cache.setMaxCacheSizeKB(hugeSize);
  EXPECT_EQ(cache.getMaxCacheSizeKB(), hugeSize);
  EXPECT_EQ(notifications.take(), (Codes{limitChanged, limitChanged}));
}

TEST_F(CacheTest, ALowerLimitDropsNothingBeforeTheNextFlush) {
  initAll(0, KB);
  cache.setMaxCacheSizeKB(0);
  cache.setMemoryOptimizationLevel(10);
  EXPECT_EQ(cache.getCurrentCacheSizeKB(), 3U);
  checkAll();
}

TEST_F(CacheTest, TheSizeInKBIsRoundedDown) {
  a.init(cache, 0, 1023, nullptr);
  EXPECT_EQ(cache.getCurrentCacheSizeKB(), 0U);
  b.init(cache, 9, 1, nullptr);
  EXPECT_EQ(cache.getCurrentCacheSizeKB(), 1U);
  c.init(cache, 0, 1023, nullptr);
  EXPECT_EQ(cache.getCurrentCacheSizeKB(), 1U);
}

TEST_F(CacheTest, BuffersAreAppendedToTheListOfTheirPriority) {
  a.init(cache, 4, KB, nullptr);
  b.init(cache, 4, KB, nullptr);
  c.init(cache, 99, KB, nullptr);
  EXPECT_EQ(buffersOf(cache, 4), (Buffers{&a, &b}));
  EXPECT_EQ(buffersOf(cache, 9), (Buffers{&c}));
  checkAll();
}

TEST_F(CacheTest, BuffersCanBeAddedMovedAndRemovedByHand) {
  CachedBuffer bare;
  const CachedBufferPosition first = cache.addBuffer(2, &bare);
  EXPECT_EQ(*first, &bare);
  EXPECT_EQ(buffersOf(cache, 2), Buffers{&bare});
  EXPECT_TRUE(std::next(first) == cache.getCacheTable()[2].end());
  cache.changePriorityList(first, 77);
  EXPECT_EQ(buffersOf(cache, 9), Buffers{&bare});
  EXPECT_EQ(cache.getCacheTable()[2].size(), 0U);
  EXPECT_EQ(cache.getCacheTable()[9].size(), 1U);
  EXPECT_EQ(bare.getPriority(), 0U);  // the caller's to store
  EXPECT_TRUE(bare.getListPosition() == first);
  cache.changePriorityList(first, 0);  // equals the stored priority
  EXPECT_EQ(buffersOf(cache, 9), Buffers{&bare});
  cache.removeBuffer(hugeSize, first);
  EXPECT_TRUE(cache.getCacheTable()[9].empty());
  EXPECT_TRUE(messages.take().empty());
}

TEST_F(CacheTest, AMovedBufferIsTakenOutOfTheListWhereItStands) {
  a.init(cache, 2, KB, nullptr);
  cache.changePriorityList(a.getListPosition(), 5);
  EXPECT_EQ(a.getPriority(), 2U);
  a.clear();
  for (const CachedBufferList& list : cache.getCacheTable()) EXPECT_EQ(list.size(), 0U);
  checkAll();
}

TEST_F(CacheTest, MovingAllocatesNoNodeAndKeepsThePosition) {
  a.init(cache, 2, KB, nullptr);
  const CachedBufferPosition position = a.getListPosition();
  cache.changePriorityList(position, 5);
  EXPECT_TRUE(a.getListPosition() == position);
  EXPECT_EQ(&*position, &cache.getCacheTable()[5].front());
}

TEST_F(CacheTest, APlaceWithoutABufferIsFatal) {
  EXPECT_EQ(thrownCode([&] { cache.addBuffer(0, nullptr); }), 41);
  EXPECT_EQ(thrownCode([&] { cache.removeBuffer(0, CachedBufferPosition()); }), 41);
  EXPECT_EQ(thrownCode([&] { cache.changePriorityList(CachedBufferPosition(), 3); }), 41);
  CachedBuffer bare;
  const CachedBufferPosition position = cache.addBuffer(0, &bare);
  *position = nullptr;
  EXPECT_EQ(thrownCode([&] { cache.removeBuffer(0, position); }), 41);
  EXPECT_EQ(thrownCode([&] { cache.changePriorityList(position, 1); }), 41);
  cache.setMaxCacheSizeKB(0);
  EXPECT_EQ(thrownCode([&] { cache.flushCache(); }), 41);
  EXPECT_EQ(messages.take(), std::vector<Message>(6, fatalMessage(41)));
  // The lock was given back, and the cache can be used.
  cache.clearCache();
  EXPECT_EQ(notifications.take(), (Codes{limitChanged, cleared}));
  EXPECT_TRUE(cache.getCacheTable()[0].empty());
}

TEST_F(CacheTest, TheEndOfAListHoldsNothingToRemove) {
  initAll(0, KB);
  OpenCache open;
  CachedBuffer only;
  only.init(open, 0, KB, nullptr);
  const MutexLock lock(open._cacheMutex);
  open.removeBuffer(0, open._priorityLists[0].end());
  open.removeBuffer(8, open._priorityLists[8].end());
  expectInvariants(open, {&only});
  EXPECT_TRUE(messages.take().empty());
}

TEST_F(CacheTest, FlushBelowTheLimitKeepsEverything) {
  initAll(0, KB);
  cache.setMaxCacheSizeKB(4);
  notifications.take();
  cache.flushCache();
  EXPECT_EQ(notifications.take(), Codes{flushed});
  EXPECT_EQ(buffersOf(cache, 0), (Buffers{&a, &b, &c}));
  expectFlushed(cache);
  checkAll();
}

TEST_F(CacheTest, FlushAtTheLimitDropsTheOldestOnly) {
  initAll(0, KB);
  cache.setMaxCacheSizeKB(3);  // a size that equals the limit is not below it
  cache.flushCache();
  EXPECT_EQ(buffersOf(cache, 0), (Buffers{&b, &c}));
  checkAll();
}

TEST_F(CacheTest, FlushDropsCheapPrioritiesBeforeOldPages) {
  a.init(cache, 7, KB, nullptr);
  b.init(cache, 0, KB, nullptr);
  c.init(cache, 3, KB, nullptr);
  cache.setMaxCacheSizeKB(3);
  cache.flushCache();
  EXPECT_FALSE(b.isInitialized());
  cache.setMaxCacheSizeKB(2);
  cache.flushCache();
  EXPECT_FALSE(c.isInitialized());
  EXPECT_TRUE(a.isInitialized());
  checkAll();
}

TEST_F(CacheTest, FlushKeepsLockedPages) {
  initAll(0, KB);
  a.lock();
  c.lock();
  c.lock();
  c.unlock();
  cache.setMaxCacheSizeKB(0);
  cache.setMemoryOptimizationLevel(10);
  cache.flushCache();
  EXPECT_EQ(buffersOf(cache, 0), (Buffers{&a, &c}));
  expectFlushed(cache);
  checkAll();
  EXPECT_EQ(cache.getFigures().locked, 2 * KB);
}

TEST_F(CacheTest, WithLimitZeroAFlushDropsEveryUnlockedBuffer) {
  CachedBuffer empty;
  empty.init(cache, 9, 0, nullptr);
  initAll(9, KB);
  cache.setMaxCacheSizeKB(0);
  notifications.take();
  cache.flushCache();
  EXPECT_EQ(notifications.take(), Codes{flushed});
  EXPECT_EQ(cache.getCurrentCacheSizeKB(), 0U);
  EXPECT_FALSE(empty.isInitialized());
  check({&a, &b, &c, &empty});
}

TEST_F(CacheTest, TheLevelDropsLowerPrioritiesWhateverTheSize) {
  for (VXuint64 level = 0; level <= 10; ++level) {
    std::vector<CachedBuffer> pages(10);
    Buffers all;
    for (VXuint64 priority = 0; priority < 10; ++priority) {
      pages[priority].init(cache, priority, KB, nullptr);
      all.push_back(&pages[priority]);
    }
    cache.setMemoryOptimizationLevel(level);
    cache.flushCache();
    for (VXuint64 priority = 0; priority < 10; ++priority) {
      EXPECT_EQ(pages[priority].isInitialized(), priority >= level) << "level " << level << " priority " << priority;
    }
    expectFlushed(cache);
    check(all);
  }
}

TEST_F(CacheTest, ClearDropsLockedPagesToo) {
  initAll(5, KB);
  b.lock();
  notifications.take();
  cache.clearCache();
  EXPECT_EQ(notifications.take(), Codes{cleared});
  EXPECT_FALSE(b.isInitialized());
  EXPECT_EQ(cache.getCurrentCacheSizeKB(), 0U);
  EXPECT_EQ(cache.getFigures().locked, 0U);
  EXPECT_EQ(cache.getFigures().warm, 0U);
  checkAll();
  b.unlock();  // leaves -1
  checkAll();
  cache.clearCache();
  EXPECT_EQ(notifications.take(), Codes{cleared});
}

TEST_F(CacheTest, ClearForgetsBuffersThatWereAddedByHand) {
  CachedBuffer bare;
  cache.addBuffer(3, &bare);
  cache.addBuffer(3, &bare);
  a.init(cache, 3, KB, nullptr);
  cache.clearCache();
  EXPECT_TRUE(cache.getCacheTable()[3].empty());
  EXPECT_EQ(bare.getLockCount(), -1);
  EXPECT_TRUE(messages.take().empty());
  checkAll();
}

TEST_F(CacheTest, SizesNearTheGreatestNumberDoNotWrap) {
  a.init(cache, 1, hugeSize, VXAlloc(16, VX_RETURN_NULL));
  b.init(cache, 2, hugeSize - 1, VXAlloc(16, VX_RETURN_NULL));
  c.init(cache, 3, 2 * KB, nullptr);
  EXPECT_EQ(cache.getCurrentCacheSizeKB(), hugeSize / KB);
  EXPECT_EQ(cache.getFigures().held, hugeSize);
  a.lock();
  b.lock();
  EXPECT_EQ(cache.getFigures().locked, hugeSize);
  a.unlock();
  EXPECT_EQ(cache.getFigures().locked, hugeSize - 1);
  cache.flushCache();
  EXPECT_FALSE(a.isInitialized());
  EXPECT_TRUE(b.isInitialized());
  EXPECT_FALSE(c.isInitialized());
  b.clear();
  EXPECT_EQ(cache.getFigures().held, 0U);
  EXPECT_EQ(cache.getFigures().peak, hugeSize);
  c.init(cache, 3, 2 * KB, nullptr);
  checkAll();
}

TEST_F(CacheTest, LimitsNearTheGreatestNumberAreNoLimit) {
  initAll(0, KB);
  for (const VXuint64 limit : {hugeSize, 1ULL << 63, 1ULL << 54, (1ULL << 54) + 1, hugeSize / KB}) {
    cache.setMaxCacheSizeKB(limit);
    EXPECT_EQ(cache.getMaxCacheSizeKB(), limit);
    EXPECT_EQ(cache.getFigures().limit, limit > hugeSize / KB ? hugeSize : limit * KB);
    cache.flushCache();
    EXPECT_EQ(buffersOf(cache, 0), (Buffers{&a, &b, &c})) << limit;
  }
}

TEST_F(CacheTest, FiguresTellTheMemoryApart) {
  cache.setMaxCacheSizeKB(10);
  a.init(cache, 1, 4 * KB, nullptr);
  b.init(cache, 2, 8 * KB, nullptr);
  a.lock();
  CacheFigures figures = cache.getFigures();
  EXPECT_EQ(figures.limit, 10 * KB);
  EXPECT_EQ(figures.held, 12 * KB);
  EXPECT_EQ(figures.locked, 4 * KB);
  EXPECT_EQ(figures.peak, 12 * KB);
  EXPECT_EQ(figures.warm, 0U);
  cache.flushCache();
  figures = cache.getFigures();
  EXPECT_EQ(figures.held, 4 * KB);
  EXPECT_EQ(figures.locked, 4 * KB);
  EXPECT_EQ(figures.peak, 12 * KB);
  EXPECT_EQ(figures.warm, 8 * KB);
}

TEST_F(CacheTest, WhatAFlushFreesComesBack) {
  initAll(0, 64 * KB);
  const std::vector<void*> blocks{c.getData(), b.getData(), a.getData()};
  cache.setMaxCacheSizeKB(0);
  cache.flushCache();
  EXPECT_EQ(cache.getFigures().warm, 3 * 64 * KB);
  initAll(0, 64 * KB);
  EXPECT_EQ((std::vector<void*>{a.getData(), b.getData(), c.getData()}), blocks);
  EXPECT_EQ(cache.getFigures().warm, 0U);
  checkAll();
}

TEST_F(CacheTest, FreeBlocksAreBoundedAndGoWithClear) {
  const VXuint64 size = Cache::maxWarmBytes / 2;
  initAll(0, size);
  cache.setMaxCacheSizeKB(0);
  cache.flushCache();
  EXPECT_EQ(cache.getFigures().warm, Cache::maxWarmBytes);
  a.init(cache, 0, Cache::maxWarmBytes + 1, nullptr);
  cache.flushCache();
  EXPECT_EQ(cache.getFigures().warm, Cache::maxWarmBytes);
  cache.clearCache();
  EXPECT_EQ(cache.getFigures().warm, 0U);
}

TEST_F(CacheTest, FreeBlocksFillWhatBuffersLeaveOfTheLimit) {
  constexpr VXuint64 MB = 1024 * KB;
  const auto dropAll = [this] {
    for (CachedBuffer* const buffer : {&a, &b, &c}) buffer->clear();
  };
  cache.setMaxCacheSizeKB(10 * 1024);
  initAll(0, 6 * MB);
  dropAll();
  EXPECT_EQ(cache.getFigures().warm, 18 * MB);
  a.init(cache, 0, 5 * MB, nullptr);  // which none of them is for
  EXPECT_EQ(cache.getFigures().warm, 12 * MB);
  a.clear();
  EXPECT_EQ(cache.getFigures().warm, 17 * MB);
  cache.setMaxCacheSizeKB(0);
  cache.flushCache();
  EXPECT_EQ(cache.getFigures().warm, 5 * MB);
  cache.setMaxCacheSizeKB(10 * 1024);
  initAll(0, 6 * MB);
  dropAll();
  a.init(cache, 0, 6 * MB, VXAlloc(6 * MB, VX_RETURN_NULL));
  cache.flushCache();
  EXPECT_EQ(cache.getFigures().warm, 12 * MB);
  a.clear();
  cache.setMaxCacheSizeKB(1024 * 1024);
  for (int i = 0; i < 2; ++i) {
    initAll(0, (30 + static_cast<VXuint64>(i)) * MB);
    dropAll();
  }
  EXPECT_EQ(cache.getFigures().warm, 62 * MB);
}

TEST_F(CacheTest, FlushAndClearNotifyAfterTheWorkAndBeforeTheyUnlock) {
  struct Listener {
    OpenCache cache;
    CachedBuffer page;
    int numCalls = 0;
  } listener;
  const VXCallbackHandle handle = VXNotify.addNotifyCB(
      [](void* userData, unsigned int code, void*, void*) {
        Listener& self = *static_cast<Listener*>(userData);
        if (code != flushed && code != cleared) return;
        ++self.numCalls;
        EXPECT_FALSE(self.page.isInitialized());
        std::thread([&] {
          EXPECT_FALSE(self.cache._cacheMutex.tryLock());
          EXPECT_EQ(self.cache.getCurrentCacheSizeKB(), 0U);  // needs no lock
          EXPECT_EQ(self.cache.getMaxCacheSizeKB(), 0U);
          EXPECT_EQ(self.cache.getMemoryOptimizationLevel(), 0U);
        }).join();
        self.page.init(self.cache, 0, KB, nullptr);
      },
      &listener, 0x8ffff);
  listener.cache.setMaxCacheSizeKB(0);
  for (const bool isFlush : {true, false}) {
    listener.page.init(listener.cache, 0, KB, nullptr);
    if (isFlush) {
      listener.cache.flushCache();
    } else {
      listener.cache.clearCache();
    }
    std::thread([&] {
      const bool isFree = listener.cache._cacheMutex.tryLock();
      EXPECT_TRUE(isFree);
      if (isFree) listener.cache._cacheMutex.unlock();
    }).join();
    expectInvariants(listener.cache, {&listener.page});
  }
  VXNotify.removeNotifyCB(handle);
  EXPECT_EQ(listener.numCalls, 2);
}

TEST_F(CacheTest, AThrowingCallbackLeavesTheCacheUnlocked) {
  const VXCallbackHandle handle = VXNotify.addNotifyCB(
      [](void*, unsigned int, void*, void*) { throw std::runtime_error("host"); }, nullptr, 0x8ffff);
  initAll(0, KB);
  EXPECT_THROW(cache.setMaxCacheSizeKB(0), std::runtime_error);
  EXPECT_THROW(cache.setMemoryOptimizationLevel(1), std::runtime_error);
  EXPECT_THROW(cache.flushCache(), std::runtime_error);
  EXPECT_THROW(cache.clearCache(), std::runtime_error);
  VXNotify.removeNotifyCB(handle);
  std::thread([&] { cache.flushCache(); }).join();
  EXPECT_EQ(cache.getMaxCacheSizeKB(), 0U);
  checkAll();
}

TEST_F(CacheTest, BuffersOutliveTheirCache) {
  auto gone = std::make_unique<Cache>();
  a.init(*gone, 1, KB, nullptr);
  b.init(*gone, 2, KB, nullptr);
  b.clear();
  c.init(*gone, 3, KB, VXAlloc(KB, VX_RETURN_NULL));
  c.lock();
  notifications.take();
  gone.reset();
  EXPECT_TRUE(notifications.take().empty());
  for (CachedBuffer* const buffer : {&a, &b, &c}) {
    EXPECT_FALSE(buffer->isInitialized());
    EXPECT_EQ(buffer->getCache(), nullptr);
    EXPECT_EQ(thrownCode([&] { buffer->lock(); }), 41);
    EXPECT_EQ(thrownCode([&] { buffer->unlock(); }), 41);
    EXPECT_EQ(thrownCode([&] { buffer->clear(); }), 41);
    EXPECT_EQ(thrownCode([&] { buffer->setPriority(3); }), 41);
    EXPECT_EQ(thrownCode([&] { buffer->updatePriority(1, 1); }), 41);
  }
  EXPECT_EQ(messages.take(), std::vector<Message>(15, fatalMessage(41)));
  c.init(cache, 3, KB, nullptr);
  checkAll();
}

TEST_F(CacheTest, PrintsSizeLevelListsAndLocks) {
  a.init(cache, 0, 1 * KB, nullptr);
  b.init(cache, 0, 2 * KB, nullptr);
  c.init(cache, 9, 1023, nullptr);
  b.lock();
  cache.setMemoryOptimizationLevel(4);
  std::ostringstream stream;
  stream << std::hex << cache << 255;
  EXPECT_EQ(stream.str(),
            "Used cache size in KB = 3\n"
            "VX_MEM_OPT_LEVEL      = 4\n"
            "Num pages in priority lists:\n"
            "0:2,  1:0,  2:0,  3:0,  4:0,  5:0,  6:0,  7:0,  8:0,  9:1,  \n"
            "Page locking state:\n"
            "0:UL\n1:\n2:\n3:\n4:\n5:\n6:\n7:\n8:\n9:U\n"
            "ff");
}

}  // namespace
}  // namespace vx::test
