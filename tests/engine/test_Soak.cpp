// Random tiles for as long as one likes, on a chain of ten modules with a small cache: some fail, some modules change
// in between. Each tile is compared, and memory, threads and open files must not grow. VX_SOAK_TILES=500000 is the long
// run; VX_SOAK_SEED another order.

#include "MessageRecorder.h"
#include "TestModules.h"

#include "vxHost.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace vx::test {
namespace {

// What a sanitizer keeps of freed memory isn't the library's.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool measuresMemory = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool measuresMemory = false;
#else
constexpr bool measuresMemory = true;
#endif
#else
constexpr bool measuresMemory = true;
#endif

constexpr VXuint64 limitKB = 8192;
// Blocks that are kept, page objects, what the C library keeps of its heap, and the stacks of threads come on top.
constexpr VXint64 boundKB = limitKB + 16384;  // of what the process takes above its start
constexpr std::size_t numModules = 10;

long fromEnvironment(const char* name, long fallback) {
  const char* const text = std::getenv(name);
  return text ? std::strtol(text, nullptr, 10) : fallback;
}

VXint64 statusOf(const std::string& key) {
  std::ifstream status("/proc/self/status");
  std::string word;
  while (status >> word) {
    VXint64 value = 0;
    if (word == key && status >> value) return value;
  }
  return 0;
}

long numOpenFiles() {
  const std::filesystem::directory_iterator files("/proc/self/fd");
  return std::distance(begin(files), end(files));
}

class Chain {
 public:
  Chain() {
    // Not a SourceModule, whose own blocks leave holes in the heap of the C library.
    modules.push_back(std::make_unique<TestModule>(0, 1));
    modules[0]->threaded();
    modules[0]->onCalcOutImageProps = [](PagedImg& outImg, int) {
      outImg.setImgExt(extent);
      outImg.setPageExt(pageExtent);
      outImg.setDataType(VXuint16Type);
    };
    modules[0]->onCalcOutSubImage = [](SubImg& out, int, SubImg*, ThreadInfo&) {
      setVoxels<VXuint16>(out, sourceValue);
    };
    for (std::size_t i = 0; i < numModules; ++i) {
      auto module = std::make_unique<TestModule>(1, 1);
      module->connect(0, *modules.back());
      modules.back()->getOutField(0)->attachField(module->getInField(0), 0);
      module->getInField(0)->attachField(module->getOutField(0), 0);
      module->threaded();
      module->onCalcOutSubImage = [this, i](SubImg& out, int, SubImg* in, ThreadInfo&) {
        if (i == failing) throw 7;
        const auto* from = static_cast<const VXuint16*>(in[0].getData());
        auto* to = static_cast<VXuint16*>(out.getData());
        const auto n = static_cast<std::size_t>(out.getBox().getNumVoxels());
        for (std::size_t k = 0; k < n; ++k) to[k] = static_cast<VXuint16>(from[k] + added[i]);
      };
      modules.push_back(std::move(module));
    }
    host.getCache().setMaxCacheSizeKB(limitKB);
  }

  // Lets a module add another number: its pages, and those behind it, are out of date.
  void change(std::size_t module, unsigned number) {
    added[module] = number;
    modules[module + 1]->getOutField(0)->notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
  }

  // The voxel at the end.
  VXuint16 valueAt(const TVector<VXint64>& position) const {
    auto value = static_cast<VXuint64>(sourceValue(position));
    for (const unsigned number : added) value += number;
    return static_cast<VXuint16>(value);
  }

  static const TVector<VXint64> extent;
  static const TVector<VXint64> pageExtent;
  std::vector<std::unique_ptr<TestModule>> modules;
  std::array<unsigned, numModules> added{};
  std::size_t failing = numModules;  // the module that fails now, if any
  Host host;
};

const TVector<VXint64> Chain::extent(300, 260, 60, 1, 1, 1);
const TVector<VXint64> Chain::pageExtent(64, 64, 1, 1, 1, 1);

class Tiles {
 public:
  explicit Tiles(unsigned seed) : _random(seed) {}

  // Requests one tile. Its messages are those of its failure.
  void next(Chain& chain) {
    if (_below(200) == 0) chain.change(_below(numModules), _below(1000));
    const bool mustFail = _below(50) == 0;
    if (mustFail) chain.failing = _below(numModules);
    chain.host.setMaxNumThreads(static_cast<VXuint32>(1 + _below(3)));

    SubImgBox box{TVector<VXint64>(), TVector<VXint64>()};
    for (std::size_t d = 0; d < 3; ++d) {
      const auto ext = static_cast<unsigned>(Chain::extent[d]);
      box.v1[d] = _below(ext);
      box.v2[d] = std::min<VXint64>(box.v1[d] + _below(d < 2 ? 100 : 3), ext - 1);
    }
    _tile.assign(static_cast<std::size_t>(box.getNumVoxels()), 0);
    void* data = _tile.data();
    const MessageRecorder messages;
    const int result = chain.host.getTile(*chain.modules.back(), 0, box, VXuint16Type, &data, ScaleShiftData());
    chain.failing = numModules;
    if (result == 0) {
      _compare(chain, box);
      return;
    }
    ASSERT_TRUE(mustFail);
    ASSERT_EQ(result, 7);
    ++numFailed;
    // Pages of the failed groups stay as they are until the page lists are cleared.
    chain.change(0, chain.added[0]);
    chain.modules[0]->getOutField(0)->notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
  }

  long numFailed = 0;

 private:
  unsigned _below(std::size_t number) { return static_cast<unsigned>(_random() % number); }

  void _compare(const Chain& chain, const SubImgBox& box) const {
    std::size_t k = 0;
    for (VXint64 z = box.v1.z; z <= box.v2.z; ++z) {
      for (VXint64 y = box.v1.y; y <= box.v2.y; ++y) {
        for (VXint64 x = box.v1.x; x <= box.v2.x; ++x, ++k) {
          ASSERT_EQ(_tile[k], chain.valueAt({x, y, z, 0, 0, 0})) << x << ' ' << y << ' ' << z;
        }
      }
    }
  }

  std::mt19937 _random;
  std::vector<VXuint16> _tile;
};

TEST(SoakTest, MemoryThreadsAndFilesStayBounded) {
  registerTestModules();
  const long numTiles = fromEnvironment("VX_SOAK_TILES", 1000);
  const auto seed = static_cast<unsigned>(fromEnvironment("VX_SOAK_SEED", 1));
  RecordProperty("seed", static_cast<int>(seed));
  const VXint64 startKB = statusOf("VmRSS:");
  const long filesAtStart = numOpenFiles();
  Chain chain;
  Tiles tiles(seed);
  VXint64 mostKB = 0;
  VXint64 kbAtHalf = 0;
  VXint64 mostThreads = 0;
  for (long i = 0; i < numTiles; ++i) {
    tiles.next(chain);
    ASSERT_FALSE(HasFatalFailure()) << "tile " << i << ", seed " << seed;
    if (i % 1000 != 999 && i != numTiles - 1) continue;
    mostKB = std::max(mostKB, statusOf("VmRSS:") - startKB);
    mostThreads = std::max(mostThreads, statusOf("Threads:"));
    if (i < numTiles / 2) kbAtHalf = mostKB;
    ASSERT_LE(chain.host.getCache().getCurrentCacheSizeKB(), limitKB);
  }
  EXPECT_GT(tiles.numFailed, numTiles / 200);
  EXPECT_EQ(numOpenFiles(), filesAtStart);
  EXPECT_LE(mostThreads, 20);  // those that are kept among them
  if (measuresMemory) {
    EXPECT_LE(mostKB, boundKB);
    // All pages were made, and all sizes taken, in the first half of a long run.
    if (numTiles >= 100000) {
      EXPECT_LE(mostKB, kbAtHalf + 2048);
    }
  }
  std::printf("%ld tiles, %ld of them failed; at most %lld KB above the start, %lld in the first half\n", numTiles,
              tiles.numFailed, mostKB, kbAtHalf);
}

}  // namespace
}  // namespace vx::test
