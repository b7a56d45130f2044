// What the cache costs a page: a hit, an entry with an eviction, a flush, a clear; and what its memory costs, fresh
// from the system or kept warm.

#include "vxCachedBuffer.h"
#include "vxUtilsAPI.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <sys/mman.h>
#include <vector>

namespace {

using namespace vx;

constexpr VXuint64 KB = 1024;
constexpr VXuint64 MB = KB * KB;

void countBytes(benchmark::State& state, VXuint64 bytes) {
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(bytes));
}

// Memory
// ---------------------------------------------------------------------------------------------------------------

/// Copies a page into memory that the system has just handed out, and into memory that was in use before.
void copyIntoPage(benchmark::State& state, bool isFresh) {
  const auto size = static_cast<std::size_t>(state.range(0));
  const std::vector<char> source(size, 1);
  const auto map = [&] { return mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0); };
  void* page = map();
  std::memcpy(page, source.data(), size);
  for (auto _ : state) {
    if (isFresh) {
      state.PauseTiming();
      munmap(page, size);
      page = map();
      state.ResumeTiming();
    }
    std::memcpy(page, source.data(), size);
    benchmark::ClobberMemory();
  }
  munmap(page, size);
  countBytes(state, size);
}

/// A group of pages of 2 MB in all is allocated, written and given back, without a cache.
void allocateGroup(benchmark::State& state) {
  const auto size = static_cast<VXuint64>(state.range(0));
  const std::vector<char> source(size, 1);
  std::vector<void*> pages(2 * MB / size);
  for (auto _ : state) {
    for (void*& page : pages) {
      page = VXAlloc(size, VX_RETURN_NULL);
      std::memcpy(page, source.data(), size);
    }
    for (void* const page : pages) VXFree(page);
  }
  countBytes(state, size * pages.size());
}

// Cache
// ----------------------------------------------------------------------------------------------------------------

/// The same group as pages of a cache that drops what isn't locked.
void insertAndEvictGroup(benchmark::State& state) {
  const auto size = static_cast<VXuint64>(state.range(0));
  const std::vector<char> source(size, 1);
  Cache cache;
  cache.setMaxCacheSizeKB(0);
  std::vector<CachedBuffer> pages(2 * MB / size);
  for (auto _ : state) {
    for (CachedBuffer& page : pages) {
      page.init(cache, 9, size, nullptr);
      page.lock();
      std::memcpy(page.getData(), source.data(), size);
    }
    for (CachedBuffer& page : pages) page.unlock();
    cache.flushCache();
  }
  countBytes(state, size * pages.size());
}

/// One page comes and the oldest goes, its contents left alone: what the cache itself costs.
void insertAndEvict(benchmark::State& state) {
  constexpr VXuint64 size = 4 * KB;
  constexpr std::size_t numKept = 256;
  Cache cache;
  cache.setMaxCacheSizeKB(numKept * size / KB);
  std::vector<CachedBuffer> pages(numKept + 1);
  std::size_t next = 0;
  for (auto _ : state) {
    pages[next].init(cache, 9, size, nullptr);
    cache.flushCache();
    next = next + 1 == pages.size() ? 0 : next + 1;
  }
}

/// A cached page is locked for a copy and unlocked again.
void hit(benchmark::State& state) {
  Cache cache;
  CachedBuffer page;
  page.init(cache, 9, 4 * KB, nullptr);
  for (auto _ : state) {
    page.lock();
    benchmark::DoNotOptimize(page.getData());
    page.unlock();
  }
}

/// The least that a hit can cost: the mutex twice and the time once.
void hitLimit(benchmark::State& state) {
  std::recursive_mutex mutex;
  TimeCounter time;
  for (auto _ : state) {
    mutex.lock();
    time.reset();
    mutex.unlock();
    mutex.lock();
    benchmark::DoNotOptimize(time);
    mutex.unlock();
  }
}

/// A worker tells what its page cost, each time another cost.
void updatePriority(benchmark::State& state) {
  Cache cache;
  CachedBuffer page;
  page.init(cache, 9, 4 * KB, nullptr);
  double seconds = 0.001;
  for (auto _ : state) {
    page.updatePriority(seconds, 262144);
    seconds = 0.101 - seconds;
  }
}

/// A cache with many pages, of 64 bytes each so that memory isn't what is measured.
struct FullCache {
  explicit FullCache(std::size_t numPages) : pages(numPages) { fill(); }
  void fill() {
    VXuint64 priority = 0;
    for (CachedBuffer& page : pages) page.init(cache, priority++ % Cache::numPriorities, 64, nullptr);
  }
  Cache cache;
  std::vector<CachedBuffer> pages;
};

/// A flush that finds the cache below its limit.
void flushBelowLimit(benchmark::State& state) {
  FullCache full(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) full.cache.flushCache();
}

/// All pages go at once.
void clear(benchmark::State& state, bool byFlush) {
  FullCache full(static_cast<std::size_t>(state.range(0)));
  if (byFlush) full.cache.setMaxCacheSizeKB(0);
  for (auto _ : state) {
    if (byFlush) {
      full.cache.flushCache();
    } else {
      full.cache.clearCache();
    }
    state.PauseTiming();
    full.fill();
    state.ResumeTiming();
  }
  state.counters["per_page"] = benchmark::Counter(
      static_cast<double>(state.range(0)), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

/// The figures that a host may show all the time.
void figures(benchmark::State& state) {
  FullCache full(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(full.cache.getFigures());
}

constexpr int manyPages = 100000;

void pageSizes(benchmark::internal::Benchmark* bench) {
  for (const VXuint64 size : {4 * KB, 16 * KB, 64 * KB, 256 * KB, MB}) bench->Arg(static_cast<int64_t>(size));
}

BENCHMARK_CAPTURE(copyIntoPage, fresh, true)->Apply(pageSizes);
BENCHMARK_CAPTURE(copyIntoPage, touched, false)->Apply(pageSizes);
BENCHMARK(allocateGroup)->Apply(pageSizes);
BENCHMARK(insertAndEvictGroup)->Apply(pageSizes);
BENCHMARK(insertAndEvict);
BENCHMARK(hit);
BENCHMARK(hitLimit);
BENCHMARK(updatePriority);
BENCHMARK(flushBelowLimit)->Arg(manyPages);
BENCHMARK(figures)->Arg(manyPages);
BENCHMARK_CAPTURE(clear, clearCache, false)->Arg(manyPages)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(clear, flushCache, true)->Arg(manyPages)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
