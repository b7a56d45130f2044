// Random use of a cache against a reference that predicts the whole order of eviction.

#include "CacheFixture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <list>
#include <memory>
#include <random>

namespace vx::test {
namespace {

struct ReferencePage {
  const CachedBuffer* buffer;
  VXuint64 size;
  VXint64 locks;
};

// The cache as a person would write it down.
struct ReferenceCache {
  std::array<std::list<ReferencePage>, 10> lists;
  VXuint64 limit = 50000 * KB;
  VXuint64 level = 0;

  VXuint64 held() const {
    VXuint64 sum = 0;
    for (const auto& list : lists) {
      for (const ReferencePage& page : list) sum += page.size;
    }
    return sum;
  }
  ReferencePage* find(const CachedBuffer* buffer) {
    for (auto& list : lists) {
      for (ReferencePage& page : list) {
        if (page.buffer == buffer) return &page;
      }
    }
    return nullptr;
  }
  void remove(const CachedBuffer* buffer) {
    for (auto& list : lists) list.remove_if([&](const ReferencePage& page) { return page.buffer == buffer; });
  }
  void append(std::size_t priority, const ReferencePage& page) {
    lists[std::min<std::size_t>(priority, 9)].push_back(page);
  }
  void move(const CachedBuffer* buffer, std::size_t priority) {
    const ReferencePage* const found = find(buffer);
    if (!found) return;
    for (const ReferencePage& page : lists[std::min<std::size_t>(priority, 9)]) {
      if (&page == found) return;
    }
    const ReferencePage copy = *found;
    remove(buffer);
    append(priority, copy);
  }
  void flush() {
    for (std::size_t priority = 0; priority < 10; ++priority) {
      for (auto page = lists[priority].begin(); page != lists[priority].end();) {
        if (held() < limit && level <= priority) return;
        page = page->locks > 0 ? std::next(page) : lists[priority].erase(page);
      }
    }
  }
  static std::size_t priorityOf(double seconds, VXint64 voxels) {
    const double measured = std::max(seconds, seconds * 262144.0 / std::fabs(static_cast<double>(voxels) + 1.0));
    std::size_t priority = 0;
    for (const double threshold : {0.002, 0.004, 0.01, 0.04, 0.1, 0.25, 0.5, 1.0, 3.0})
      priority += measured >= threshold;
    return priority;
  }
};

class CacheRandomTest : public CacheFixture {
 protected:
  static constexpr std::size_t numPages = 48;

  CacheRandomTest() {
    for (std::unique_ptr<CachedBuffer>& page : pages) page = std::make_unique<CachedBuffer>();
  }

  void step() {
    const std::size_t index = pick(numPages);
    std::unique_ptr<CachedBuffer>& page = pages[index];
    const ReferencePage* const known = reference.find(page.get());
    const std::size_t priority = pick(12);
    const std::size_t operation = pick(1000);
    if (operation < 400) {
      init(*page, priority);
    } else if (operation < 550) {
      if (known) page->lock();
      if (known) ++reference.find(page.get())->locks;
    } else if (operation < 750) {
      if (page->getCache()) page->unlock();
      if (known && known->locks > 0) --reference.find(page.get())->locks;
    } else if (operation < 800) {
      if (page->getCache()) page->clear();
      reference.remove(page.get());
    } else if (operation < 850) {
      if (page->getCache()) page->setPriority(priority);
      reference.move(page.get(), priority);
    } else if (operation < 900) {
      const double seconds = std::pow(10.0, -5.0 + 6.0 * static_cast<double>(pick(1000)) / 1000.0);
      const VXint64 voxels = static_cast<VXint64>(pick(1000000));
      if (page->getCache()) page->updatePriority(seconds, voxels);
      reference.move(page.get(), ReferenceCache::priorityOf(seconds, voxels));
    } else if (operation < 975) {
      cache.flushCache();
      reference.flush();
      expectFlushed(cache);
    } else if (operation < 985) {
      const VXuint64 limit = pick(100);
      cache.setMaxCacheSizeKB(limit);
      reference.limit = limit * KB;
    } else if (operation < 990) {
      reference.level = pick(11);
      cache.setMemoryOptimizationLevel(reference.level);
    } else if (operation < 998) {
      reference.remove(page.get());
      page = std::make_unique<CachedBuffer>();
    } else {
      cache.clearCache();
      for (auto& list : reference.lists) list.clear();
    }
  }

  // The first and the last bytes of each block tell its page: two pages in one block would be seen.
  void init(CachedBuffer& page, std::size_t priority) {
    static const VXuint64 sizes[] = {16, 1000, 1024, 2048, 2048, 5000, 8192, 0};
    const VXuint64 size = sizes[pick(std::size(sizes))];
    const bool takesBlock = !page.isInitialized() && pick(4) == 0;
    page.init(cache, priority, size, takesBlock ? VXAlloc(size, VX_RETURN_NULL) : nullptr);
    reference.remove(&page);
    reference.append(priority, {&page, size, 0});
    stamp(page);
  }

  static void stamp(const CachedBuffer& page) {
    const void* const address = &page;
    if (page.getSize() == 0) return;
    std::memcpy(page.getData(), &address, sizeof address);
    std::memcpy(lastBytes(page), &address, sizeof address);
  }
  static bool isStamped(const CachedBuffer& page) {
    const void* const address = &page;
    return page.getSize() == 0 || (std::memcmp(page.getData(), &address, sizeof address) == 0 &&
                                   std::memcmp(lastBytes(page), &address, sizeof address) == 0);
  }
  static char* lastBytes(const CachedBuffer& page) {
    return static_cast<char*>(page.getData()) + page.getSize() - sizeof(void*);
  }

  void compare() {
    Buffers all;
    for (const auto& page : pages) all.push_back(page.get());
    ASSERT_NO_FATAL_FAILURE(check(all));
    for (std::size_t priority = 0; priority < 10; ++priority) {
      auto expected = reference.lists[priority].begin();
      ASSERT_EQ(cache.getCacheTable()[priority].size(), reference.lists[priority].size());
      for (const CachedBuffer* const page : cache.getCacheTable()[priority]) {
        ASSERT_EQ(page, expected->buffer);
        ASSERT_EQ(page->getSize(), expected->size);
        ASSERT_EQ(page->getLockCount(), expected->locks);
        ASSERT_TRUE(isStamped(*page));
        ++expected;
      }
    }
  }

  std::size_t pick(std::size_t number) { return random() % number; }

  std::mt19937 random{20};
  ReferenceCache reference;
  std::array<std::unique_ptr<CachedBuffer>, numPages> pages;
};

TEST_F(CacheRandomTest, EveryStepGoesAsTheReferenceHasIt) {
  for (int number = 0; number < 100000; ++number) {
    step();
    compare();
    if (HasFailure()) FAIL() << "in step " << number;
  }
  EXPECT_TRUE(messages.take().empty());
}

TEST_F(CacheRandomTest, PagesGoOneByOneInTheOrderOfTheReference) {
  cache.setMemoryOptimizationLevel(0);
  for (int round = 0; round < 20; ++round) {
    cache.setMaxCacheSizeKB(1000);
    reference.limit = 1000 * KB;
    for (int number = 0; number < 500; ++number) {
      init(*pages[pick(numPages)], pick(10));
      CachedBuffer& moved = *pages[pick(numPages)];
      if (moved.getCache()) {
        const std::size_t priority = pick(10);
        moved.setPriority(priority);
        reference.move(&moved, priority);
      }
    }
    for (VXuint64 limit = reference.held() / KB + 2; limit-- > 0;) {
      cache.setMaxCacheSizeKB(limit);
      reference.limit = limit * KB;
      cache.flushCache();
      reference.flush();
      compare();
      if (HasFailure()) FAIL() << "in round " << round << " at " << limit << " KB";
    }
    EXPECT_EQ(reference.held(), 0U);
  }
}

}  // namespace
}  // namespace vx::test
