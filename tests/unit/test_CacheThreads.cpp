// The cache and its buffers under several threads; of most use with the thread sanitizer.

#include "CacheFixture.h"

#include <atomic>
#include <functional>
#include <memory>
#include <sstream>
#include <thread>

namespace vx::test {
namespace {

constexpr int numThreads = 4;
constexpr int numRounds = 2000;

void runThreads(const std::function<void(int)>& work) {
  std::vector<std::thread> threads;
  for (int index = 0; index < numThreads; ++index) threads.emplace_back(work, index);
  for (std::thread& thread : threads) thread.join();
}

class CacheThreadsTest : public CacheFixture {};

TEST_F(CacheThreadsTest, PagesAreLockedAndMovedByAllThreads) {
  std::vector<CachedBuffer> pages(8);
  Buffers all;
  for (CachedBuffer& page : pages) {
    page.init(cache, 9, KB, nullptr);
    page.lock();
    all.push_back(&page);
  }
  cache.setMaxCacheSizeKB(0);
  runThreads([&](int index) {
    for (int round = 0; round < numRounds; ++round) {
      CachedBuffer& page = pages[static_cast<std::size_t>(index + round) % pages.size()];
      page.lock();
      page.updatePriority(0.001 * (round % 10), 1000);
      page.setPriority(static_cast<VXuint64>(index));
      EXPECT_GE(page.getLockCount(), 2);
      page.unlock();
      if (round % 100 == 0) cache.flushCache();
    }
  });
  check(all);
  for (const CachedBuffer& page : pages) {
    EXPECT_EQ(page.getLockCount(), 1);
    EXPECT_EQ(page.getTotalLockCount(), 1 + numThreads * numRounds / 8);
  }
  EXPECT_TRUE(messages.take().empty());
}

TEST_F(CacheThreadsTest, EachThreadMakesAndDropsPages) {
  cache.setMaxCacheSizeKB(16);
  std::vector<std::unique_ptr<CachedBuffer>> kept(numThreads);
  runThreads([&](int index) {
    std::unique_ptr<CachedBuffer>& page = kept[static_cast<std::size_t>(index)];
    for (int round = 0; round < numRounds; ++round) {
      if (round % 7 == 0) page = std::make_unique<CachedBuffer>();
      page->init(cache, static_cast<VXuint64>(round % 10), (1 + static_cast<VXuint64>(round % 3)) * 2 * KB, nullptr);
      page->lock();
      if (page->isInitialized()) std::memset(page->getData(), index, 2 * KB);
      if (round % 5 == 0) cache.flushCache();
      page->unlock();
      if (round % 5 == 1) cache.setMemoryOptimizationLevel(static_cast<VXuint64>(round % 10));
      const VXuint64 sizeKB = cache.getCurrentCacheSizeKB();
      const CacheFigures figures = cache.getFigures();
      EXPECT_LE(figures.locked, figures.held);
      EXPECT_LE(figures.held, figures.peak);
      EXPECT_LE(sizeKB, figures.peak / KB);
      if (round % 500 == 0) {
        std::ostringstream stream;
        stream << cache;
      }
    }
  });
  Buffers all;
  for (const auto& page : kept) all.push_back(page.get());
  check(all);
}

TEST_F(CacheThreadsTest, CacheAndBuffersEndAtTheSameTime) {
  for (int round = 0; round < 200; ++round) {
    auto gone = std::make_unique<Cache>();
    std::vector<std::unique_ptr<CachedBuffer>> pages(numThreads - 1);
    for (std::unique_ptr<CachedBuffer>& page : pages) {
      page = std::make_unique<CachedBuffer>();
      page->init(*gone, 0, KB, nullptr);
    }
    std::atomic<int> numReady{0};
    runThreads([&](int index) {
      ++numReady;
      while (numReady < numThreads) std::this_thread::yield();
      if (index < numThreads - 1) {
        pages[static_cast<std::size_t>(index)].reset();
      } else {
        gone.reset();
      }
    });
  }
  EXPECT_TRUE(messages.take().empty());
}

TEST_F(CacheThreadsTest, PagesMoveBetweenCachesInBothDirections) {
  Cache other;
  runThreads([&](int index) {
    CachedBuffer page;
    for (int round = 0; round < numRounds; ++round) {
      page.init((index + round) % 2 ? cache : other, 3, static_cast<VXuint64>(round % 3 + 1) * KB, nullptr);
    }
  });
  EXPECT_EQ(cache.getFigures().held, 0U);
  EXPECT_EQ(other.getFigures().held, 0U);
}

}  // namespace
}  // namespace vx::test
