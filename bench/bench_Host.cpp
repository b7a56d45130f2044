// What a request costs, beside its limit in the same run: a memcpy(), or the hand-written loop that does the work of
// the whole network at once. Ratios are times of the limit, 1 being as fast; memory is in MB. A floor is what a ratio
// must not exceed.

#include "hostModules.h"
#include "pagedLoops.h"
#include "ratioTable.h"

#include "vxCachedBuffer.h"
#include "vxHost.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <fstream>
#include <malloc.h>
#include <memory>
#include <new>
#include <random>
#include <string>

namespace {

using namespace vx;
using namespace vx::bench;

using Work = std::function<void()>;

const TVector<VXint64> imageExt(512, 512, 256, 1, 1, 1);
constexpr std::size_t numImageVoxels = std::size_t(512) * 512 * 256;
constexpr int largeTurns = 7;

SubImgBox boxOf(const TVector<VXint64>& ext) { return SubImgBox(TVector<VXint64>(), ext - TVector<VXint64>(1)); }

// Results -------------------------------------------------------------------------------------------------------------

struct Result {
  std::string name;
  double seconds;
  double value;
  double floor;  // 0 for none
  bool isLeast;  // whether the value must reach the floor, not stay below it
};
std::vector<Result> results;

void conclude(benchmark::State& state, const std::string& name, double seconds, double value, double floor,
              bool isLeast = false) {
  state.SetIterationTime(seconds);
  state.counters["value"] = value;
  if (floor > 0) state.counters["floor"] = floor;
  results.push_back({name, seconds, value, floor, isLeast});
}

void printResults() {
  std::printf("\n%-80s %10s %8s %8s\n", "", "ms", "measured", "floor");
  for (const Result& result : results) {
    std::printf("%-80s %10.4f %8.2f", result.name.c_str(), result.seconds * 1000, result.value);
    if (result.floor > 0) {
      const bool isMet = result.isLeast ? result.value >= result.floor : result.value <= result.floor;
      std::printf(" %8.2f%s", result.floor, isMet ? "" : "  missed");
    }
    std::printf("\n");
  }
}

// Ends the program where a measurement would be of something else.
void require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "%s\n", what);
  std::exit(1);
}

// Networks ------------------------------------------------------------------------------------------------------------

// Voxels at the start of a line of the caches.
template <class T>
struct AlignedAllocator {
  using value_type = T;
  AlignedAllocator() = default;
  template <class Other>
  AlignedAllocator(const AlignedAllocator<Other>&) {}
  T* allocate(std::size_t n) { return static_cast<T*>(::operator new(n * sizeof(T), std::align_val_t(64))); }
  void deallocate(T* memory, std::size_t) { ::operator delete(memory, std::align_val_t(64)); }
  friend bool operator==(const AlignedAllocator&, const AlignedAllocator&) { return true; }
};
template <class T>
using Array = std::vector<T, AlignedAllocator<T>>;

// The image and a second one, and a tile as large as floats of it need, all touched before.
struct Volume {
  Volume() : voxels(numImageVoxels), others(numImageVoxels), tile(numImageVoxels), copy(numImageVoxels) {
    for (std::size_t i = 0; i < numImageVoxels; ++i) {
      voxels[i] = static_cast<std::uint16_t>(i * 7 + (i >> 9));
      others[i] = static_cast<std::uint16_t>(i * 3 + (i >> 11));
    }
  }
  Array<std::uint16_t> voxels;
  Array<std::uint16_t> others;
  Array<float> tile;
  Array<float> copy;
};

Volume& volume() {
  static Volume theVolume;
  return theVolume;
}

struct Network {
  std::deque<std::unique_ptr<BaseOp>> modules;
  Host host;

  Network() { host.setMaxNumThreads(1); }

  template <class Module, class... Arguments>
  Module& add(Arguments&&... arguments) {
    modules.push_back(std::make_unique<Module>(std::forward<Arguments>(arguments)...));
    return static_cast<Module&>(*modules.back());
  }
  BaseOp& end() { return *modules.back(); }

  // A tile of the last module.
  void getTile(const SubImgBox& box, VXDataType dataType, void* data,
               const ScaleShiftData& scaleShift = ScaleShiftData()) {
    require(host.getTile(end(), 0, box, dataType, &data, scaleShift) == 0, "The request failed.");
  }
  // Forgets all pages, but keeps the memory that they had.
  void dropPages() {
    const VXuint64 limit = host.getCache().getMaxCacheSizeKB();
    host.getCache().setMaxCacheSizeKB(0);
    host.getCache().flushCache();
    host.getCache().setMaxCacheSizeKB(limit);
  }
};

enum class Road { Straight, PassThrough, ReadOnly, Bypassed, InPlace };

void addRoad(Network& network, Road road) {
  BaseOp& source = network.add<MemorySource>(imageExt, volume().voxels.data());
  if (road == Road::Straight) return;
  PassThrough& module = network.add<PassThrough>(source);
  module.setInputsReadOnly(road == Road::ReadOnly);
  if (road == Road::Bypassed) module.setBypass(0, 0);
  if (road == Road::InPlace) module.setOutImgInplace(0, 0);
}

// How the modules of a chain have their inputs: copied for them, in the memory of their output, or where they are.
enum class Inputs { Copied, InPlace, ReadOnly };

// The five point modules, at the end of two images.
void addChain(Network& network, BaseOp& a, BaseOp& b, Inputs inputs) {
  const auto point = [](void (*loop)(const float*, float*, std::size_t)) {
    return [loop](SubImg* blocks, float* out, std::size_t n) { loop(voxelsOf<float>(blocks[0]), out, n); };
  };
  BaseOp& scaled = network.add<PointModule>(std::initializer_list<BaseOp*>{&a}, point(&subtractAndScale));
  BaseOp& sum = network.add<PointModule>(std::initializer_list<BaseOp*>{&scaled, &b},
                                         [](SubImg* blocks, float* out, std::size_t n) {
                                           bench::add(voxelsOf<float>(blocks[0]), voxelsOf<float>(blocks[1]), out, n);
                                         });
  BaseOp& positive = network.add<PointModule>(std::initializer_list<BaseOp*>{&sum}, point(&absolute));
  BaseOp& cleared = network.add<PointModule>(std::initializer_list<BaseOp*>{&positive}, point(&clearBelow));
  network.add<PointModule>(std::initializer_list<BaseOp*>{&cleared}, point(&scaleDown));
  for (BaseOp* const module : {&scaled, &sum, &positive, &cleared, &network.end()}) {
    module->setInputsReadOnly(inputs == Inputs::ReadOnly);
    if (inputs == Inputs::InPlace) module->setOutImgInplace(0, 0);
  }
}

// 1. to 3.: whole images ----------------------------------------------------------------------------------------------

// A request on one thread, beside its limit; the tile must hold the same afterwards.
void besideLimit(benchmark::State& state, const std::string& name, const Work& request, const Work& limit,
                 std::size_t numBytes, double floor) {
  const auto best = bestTimes({limit, request}, largeTurns, 1);
  require(std::memcmp(volume().tile.data(), volume().copy.data(), numBytes) == 0, "Wrong voxels.");
  conclude(state, name, best[1], best[1] / best[0], floor);
}

// The same request on two threads beside one.
void besideOneThread(benchmark::State& state, const std::string& name, const std::function<void(Network&)>& request,
                     Network& one, Network& two, double floor) {
  two.host.setMaxNumThreads(2);
  const auto best = bestTimes({[&] { request(one); }, [&] { request(two); }}, largeTurns, 1, TimeKind::Elapsed);
  conclude(state, name, best[1], best[0] / best[1], floor, true);
}

// The limit of an image that isn't changed.
Work plainCopy() {
  return [&v = volume()] {
    std::memcpy(v.copy.data(), v.voxels.data(), numImageVoxels * sizeof v.voxels[0]);
    benchmark::ClobberMemory();
  };
}

void wholeImage(benchmark::State& state, const std::string& name, Road road, bool isMapped, int numThreads,
                double floor) {
  Volume& v = volume();
  Network one;
  Network two;
  addRoad(one, road);
  addRoad(two, road);
  const ScaleShiftData mapping(0.5, 3);
  const auto request = [&](Network& network) {
    if (isMapped) {
      network.getTile(boxOf(imageExt), VXfloatType, v.tile.data(), mapping);
    } else {
      network.getTile(boxOf(imageExt), VXuint16Type, v.tile.data());
    }
  };
  const Work mappingLoop = [&] {
    convertAndMap(v.voxels.data(), v.copy.data(), numImageVoxels, mapping.scale, mapping.shift);
    benchmark::ClobberMemory();
  };
  const Work limit = isMapped ? mappingLoop : plainCopy();
  for (auto _ : state) {
    if (numThreads == 1) {
      besideLimit(
          state, name, [&] { request(one); }, limit, numImageVoxels * (isMapped ? 4 : 2), floor);
    }
    if (numThreads == 2) besideOneThread(state, name, request, one, two, floor);
  }
}

// The limit of the five point modules.
Work fusedLoop() {
  return [&v = volume()] {
    fusedChain(v.voxels.data(), v.others.data(), v.copy.data(), numImageVoxels);
    benchmark::ClobberMemory();
  };
}

// Five point modules.
void chain(benchmark::State& state, const std::string& name, Inputs inputs, VXuint64 cacheKB, int numThreads,
           double floor) {
  Volume& v = volume();
  Network one;
  Network two;
  for (Network* const network : {&one, &two}) {
    if (cacheKB != 0) network->host.getCache().setMaxCacheSizeKB(cacheKB);
    BaseOp& a = network->add<MemorySource>(imageExt, v.voxels.data());
    BaseOp& b = network->add<MemorySource>(imageExt, v.others.data());
    addChain(*network, a, b, inputs);
  }
  const auto request = [&](Network& network) { network.getTile(boxOf(imageExt), VXfloatType, v.tile.data()); };
  for (auto _ : state) {
    if (numThreads == 1) {
      besideLimit(
          state, name, [&] { request(one); }, fusedLoop(), numImageVoxels * 4, floor);
    }
    if (numThreads == 2) besideOneThread(state, name, request, one, two, floor);
  }
}

// The same page by page without an engine, beside the limits of above: what more a network takes is the host's part.

void imageByHand(benchmark::State& state, const std::string& name, int numCopies) {
  Volume& v = volume();
  PageRing ring(std::size_t(50000) * 1024);
  auto* const tile = reinterpret_cast<std::uint16_t*>(v.tile.data());
  const Work pages = [&] { copyByPages(v.voxels.data(), tile, numCopies, ring); };
  for (auto _ : state) besideLimit(state, name, pages, plainCopy(), numImageVoxels * 2, 0);
}

void chainByHand(benchmark::State& state, const std::string& name, VXuint64 cacheKB) {
  Volume& v = volume();
  PageRing ring(static_cast<std::size_t>(cacheKB) * 1024);
  const Work pages = [&] { chainByPages(v.voxels.data(), v.others.data(), v.tile.data(), ring); };
  for (auto _ : state) besideLimit(state, name, pages, fusedLoop(), numImageVoxels * 4, 0);
}

// 4.: small tiles -----------------------------------------------------------------------------------------------------

constexpr VXint64 tileSide = 64;
constexpr int numPassThroughs = 10;
constexpr int smallTurns = 60;
constexpr int smallCalls = 200;

// Microseconds of a cached tile at a random place above its copy.
void cachedTile(benchmark::State& state, const std::string& name, int numModules) {
  const TVector<VXint64> ext(512, 512, 32, 1, 1, 1);
  Network network;
  network.host.getCache().setMaxCacheSizeKB(500000);  // so that the end is cached
  network.add<MemorySource>(ext, volume().voxels.data());
  for (int i = 0; i < numModules; ++i) network.add<PassThrough>(network.end());
  network.getTile(boxOf(ext), VXuint16Type, volume().tile.data());
  std::vector<std::uint16_t> tile(tileSide * tileSide);
  std::mt19937 random(1);
  const auto nextBox = [&] {
    const auto below = [&](VXint64 n) { return static_cast<VXint64>(random() % static_cast<unsigned>(n)); };
    const TVector<VXint64> first(below(ext.x - tileSide), below(ext.y - tileSide), below(ext.z), 0, 0, 0);
    return SubImgBox(first, first + TVector<VXint64>(tileSide, tileSide, 1, 1, 1, 1) - TVector<VXint64>(1));
  };
  const Work copy = [&] {
    const SubImgBox box = nextBox();
    const std::uint16_t* from = volume().voxels.data() + (box.v1.z * ext.y + box.v1.y) * ext.x + box.v1.x;
    for (VXint64 y = 0; y < tileSide; ++y) {
      std::memcpy(&tile[static_cast<std::size_t>(y * tileSide)], from + y * ext.x, tileSide * 2);
    }
    benchmark::ClobberMemory();
  };
  for (auto _ : state) {
    const auto best =
        bestTimes({copy, [&] { network.getTile(nextBox(), VXuint16Type, tile.data()); }}, smallTurns, smallCalls);
    conclude(state, name, best[1], (best[1] - best[0]) * 1e6, 1.5);
  }
}

// One page after the other through ten modules, each page for the first time, beside ten copies of that page. The
// copies go to memory that was last used as long ago as that of the modules' pages.
void uncachedPage(benchmark::State& state, const std::string& name, bool areReadOnly) {
  Network network;
  network.add<MemorySource>(imageExt, volume().voxels.data());
  for (int i = 0; i < numPassThroughs; ++i) {
    BaseOp& input = network.end();
    network.add<PassThrough>(input).setInputsReadOnly(areReadOnly);
  }
  constexpr std::size_t pageVoxels = 128 * 128;
  std::vector<std::uint16_t> tile(tileSide * tileSide);
  std::size_t nextPage = 0;
  const auto boxOfNextPage = [&] {
    const auto page = static_cast<VXint64>(nextPage);
    nextPage = (nextPage + 1) % (numImageVoxels / pageVoxels);
    const TVector<VXint64> first(page % 4 * 128, page / 4 % 4 * 128, page / 16, 0, 0, 0);
    return SubImgBox(first, first + TVector<VXint64>(tileSide, tileSide, 1, 1, 1, 1) - TVector<VXint64>(1));
  };
  Array<std::uint16_t> pages(1600 * pageVoxels);
  Array<std::uint16_t> hotPages(2 * pageVoxels);
  std::size_t nextCopy = 0;
  const Work coldCopies = [&] {
    for (int i = 0; i < numPassThroughs; ++i) {
      const std::size_t from = nextCopy;
      nextCopy = (nextCopy + 1) % 1600;
      std::memcpy(&pages[nextCopy * pageVoxels], &pages[from * pageVoxels], pageVoxels * 2);
      benchmark::ClobberMemory();
    }
  };
  const Work hotCopies = [&] {
    for (int i = 0; i < numPassThroughs; ++i) {
      const std::size_t from = static_cast<std::size_t>(i) % 2;
      std::memcpy(&hotPages[(1 - from) * pageVoxels], &hotPages[from * pageVoxels], pageVoxels * 2);
      benchmark::ClobberMemory();
    }
  };
  const Work request = [&] { network.getTile(boxOfNextPage(), VXuint16Type, tile.data()); };
  for (auto _ : state) {
    const auto best = bestTimes({coldCopies, hotCopies, request}, 60, 40);
    conclude(state, name + ", by copies within the second cache", best[2], best[2] / best[1], 1.2);
    conclude(state, name + ", by copies to as many places", best[2], best[2] / best[0], 1.2);
  }
}

// 5. and 6.: memory, and an image that is stored nowhere --------------------------------------------------------------

double statusMB(const char* key) {
  std::ifstream status("/proc/self/status");
  std::string word;
  while (status >> word) {
    double kilobytes = 0;
    if (word == key && status >> kilobytes) return kilobytes / 1024;
  }
  return 0;
}

// Megabytes that the process takes at most while something runs, above what it takes at the start.
double peakMBOf(const Work& work) {
  malloc_trim(0);                                 // what was used before isn't there for nothing
  std::ofstream("/proc/self/clear_refs") << "5";  // the peak begins anew
  const double before = statusMB("VmRSS:");
  work();
  return statusMB("VmHWM:") - before;
}

void chainMemory(benchmark::State& state, const std::string& name, const TVector<VXint64>& ext, VXuint64 cacheKB) {
  double sum = 0;
  for (auto _ : state) {
    const double peak = peakMBOf([&] {
      Network network;
      network.host.getCache().setMaxCacheSizeKB(cacheKB);
      const auto row = [](std::int64_t x, std::int64_t y, std::uint16_t* out, std::size_t n) {
        for (std::size_t i = 0; i < n; ++i) {
          out[i] = static_cast<std::uint16_t>(static_cast<std::size_t>(x * 7 + y * 3) + i);
        }
      };
      BaseOp& a = network.add<CalculatedSource<std::uint16_t>>(ext, VXuint16Type, row);
      BaseOp& b = network.add<CalculatedSource<std::uint16_t>>(ext, VXuint16Type, row);
      addChain(network, a, b, Inputs::ReadOnly);
      SumModule& total = network.add<SumModule>(
          network.end(), [](const SubImg& block) { return static_cast<double>(voxelsOf<float>(block)[0]); });
      require(network.host.processAllPages(total, -1, 0, SubImgBox()) == 0, "The walk failed.");
      sum = total.takeSum();
    });
    benchmark::DoNotOptimize(sum);
    conclude(state, name, 1, peak - static_cast<double>(cacheKB) / 1024, 16);
  }
}

void syntheticImage(benchmark::State& state, const std::string& name) {
  constexpr VXint64 side = 65536;
  constexpr VXint64 band = 1024;
  constexpr int numBands = 6;  // of 64
  const TVector<VXint64> ext(side, side, 1, 1, 1, 1);
  std::vector<std::uint8_t> memory(4 * side + 8);
  Network network;
  BaseOp& source = network.add<CalculatedSource<std::uint8_t>>(ext, VXuint8Type, &synthesize);
  BaseOp& mean = network.add<MeanModule>(source);
  SumModule& total = network.add<SumModule>(mean, [](const SubImg& block) {
    return static_cast<double>(bench::sum(voxelsOf<std::uint8_t>(block), numVoxelsOf(block)));
  });
  double expected = 0;
  VXint64 limitRow = 0;
  VXint64 row = 0;
  const Work limit = [&] {
    expected += static_cast<double>(fusedMeanSum(side, limitRow, band, memory.data()));
    limitRow = (limitRow + band) % side;
  };
  const Work walk = [&] {
    const SubImgBox box({0, row, 0, 0, 0, 0}, {side - 1, row + band - 1, 0, 0, 0, 0});
    require(network.host.processAllPages(total, -1, 0, box) == 0, "The walk failed.");
    row = (row + band) % side;
  };
  for (auto _ : state) {
    std::vector<double> best;
    const double peak = peakMBOf([&] { best = bestTimes({limit, walk}, numBands, 1); });
    require(total.takeSum() == expected, "Wrong sum.");
    conclude(state, name + ", by the loop", best[1], best[1] / best[0], 8);
    const double limitMB = static_cast<double>(network.host.getCache().getMaxCacheSizeKB()) / 1024;
    conclude(state, name + ", MB above the cache's limit", best[1], peak - limitMB, 16);
  }
}

// ---------------------------------------------------------------------------------------------------------------------

template <class Function, class... Arguments>
void registerOnce(const std::string& name, Function function, Arguments... arguments) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) { function(state, name, arguments...); })
      ->Iterations(1)
      ->UseManualTime()
      ->Unit(benchmark::kMicrosecond);
}

const std::string twoThreads = ", two threads by one";

void registerAll() {
  struct RoadRow {
    Road road;
    const char* text;
    double floor;
    double floorMapped;
  };
  for (const RoadRow& row :
       {RoadRow{Road::Straight, "straight", 2.6, 2.2}, RoadRow{Road::PassThrough, "pass-through", 4.0, 0},
        RoadRow{Road::ReadOnly, "pass-through, input only read", 4.0, 0}, RoadRow{Road::Bypassed, "bypassed", 2.8, 0},
        RoadRow{Road::InPlace, "in place", 2.8, 0}}) {
    for (const bool isMapped : {false, true}) {
      const std::string name = std::string(isMapped ? "MappedImage/" : "WholeImage/") + row.text;
      registerOnce(name, wholeImage, row.road, isMapped, 1, isMapped ? row.floorMapped : row.floor);
      registerOnce(name + twoThreads, wholeImage, row.road, isMapped, 2, 1.0);
    }
  }
  for (const auto& [inputs, text] : {std::pair(Inputs::Copied, "inputs copied"), std::pair(Inputs::InPlace, "in place"),
                                     std::pair(Inputs::ReadOnly, "inputs only read")}) {
    for (const VXuint64 cacheKB : {VXuint64{0}, VXuint64{8192}}) {
      const std::string name = (cacheKB == 0 ? "Chain/default cache, " : "Chain/8 MB cache, ") + std::string(text);
      registerOnce(name, chain, inputs, cacheKB, 1, cacheKB == 0 ? 6.5 : 4.0);
      registerOnce(name + twoThreads, chain, inputs, cacheKB, 2, cacheKB == 0 ? 1.25 : 1.5);
    }
  }
  registerOnce("WholeImage/by hand, a page for the source", imageByHand, 0);
  registerOnce("WholeImage/by hand, a page for the source and one for a module", imageByHand, 1);
  registerOnce("Chain/default cache, by hand", chainByHand, VXuint64{50000});
  registerOnce("Chain/8 MB cache, by hand", chainByHand, VXuint64{8192});
  registerOnce("CachedTile/straight", cachedTile, 0);
  registerOnce("CachedTile/behind ten modules", cachedTile, numPassThroughs);
  registerOnce("UncachedPage/through ten, inputs copied", uncachedPage, false);
  registerOnce("UncachedPage/through ten, inputs only read", uncachedPage, true);
  registerOnce("ChainMemory/MB above 50000 KB", chainMemory, imageExt, VXuint64{50000});
  registerOnce("ChainMemory/MB above 8 MB", chainMemory, imageExt, VXuint64{8192});
  registerOnce("ChainMemory/MB above 8 MB, image four times as large", chainMemory,
               TVector<VXint64>(512, 512, 1024, 1, 1, 1), VXuint64{8192});
  registerOnce("SyntheticImage", syntheticImage);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  registerAll();
  benchmark::RunSpecifiedBenchmarks();
  printResults();
  return 0;
}
