// The loops over runs of voxels, each beside its limit in the same run: memcpy() or a plain loop that is compiled for
// this processor. The counter `ratio` is the limit's time by the library's: 1 is as fast as the limit.

#include "ratioTable.h"
#include "referenceLoops.h"

#include "vxStdTypeInfos.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

using namespace vx;
using namespace vx::bench;

constexpr std::size_t pageVoxels = 128 * 128;
constexpr std::size_t volumeVoxels = std::size_t(64) << 20;

constexpr std::size_t typeSizes[] = {
#define VX_TYPE_SIZE(T, number) sizeof(StoredVoxel<T>),
    VX_FOR_EACH_STANDARD_TYPE(VX_TYPE_SIZE)
#undef VX_TYPE_SIZE
};

RatioTables tables;

/// Memory at 64 bytes that has been touched.
struct Block {
  explicit Block(std::size_t size) : bytes(static_cast<unsigned char*>(std::aligned_alloc(64, (size + 63) / 64 * 64))) {
    if (bytes == nullptr) std::abort();
    std::memset(bytes, 0, size);
  }
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;
  ~Block() { std::free(bytes); }
  unsigned char* bytes;
};

/// Voxels with the values 0 to 99, which all types hold.
template <class T>
void setValues(void* run, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) static_cast<T*>(run)[i] = static_cast<T>(i * 7 % 100);
}

constexpr void (*setValuesOf[])(void*, std::size_t) = {
#define VX_SET_VALUES(T, number) &setValues<StoredVoxel<T>>,
    VX_FOR_EACH_STANDARD_TYPE(VX_SET_VALUES)
#undef VX_SET_VALUES
};

/// How long to measure: turns of all loops, and calls a turn.
struct Effort {
  explicit Effort(std::size_t n) : turns(n > pageVoxels ? 7 : 60), calls(n > pageVoxels ? 1 : 8) {}
  int turns;
  int calls;
};

void conclude(benchmark::State& state, const std::string& title, int outType, int inType, double limit, double time,
              std::size_t n, std::size_t bytes) {
  state.SetIterationTime(time);
  state.counters["ratio"] = limit / time;
  state.counters["voxels_per_second"] = static_cast<double>(n) / time;
  state.counters["bytes_per_second"] = static_cast<double>(bytes) / time;
  tables.add(title, outType, inType, limit / time);
}

constexpr double scale = 0.5;
constexpr double shift = 3;

void convertBeside(benchmark::State& state, int outType, int inType, bool scaled, std::size_t n) {
  const std::size_t inBytes = n * typeSizes[inType];
  const std::size_t outBytes = n * typeSizes[outType];
  // Room for a copy of as many bytes in all, half of them read and half of them written, none of them twice.
  const std::size_t copyBytes = (inBytes + outBytes) / 2;
  Block in(std::max(inBytes, copyBytes));
  Block out(std::max(outBytes, copyBytes));
  setValuesOf[inType](in.bytes, n);
  const RowKernels& kernels = rowKernels();
  const RowKernels& reference = referenceLoops();
  const auto run = [&](const RowKernels& loops) {
    if (scaled) {
      loops.convertScaled[outType][inType](in.bytes, out.bytes, n, scale, shift);
    } else {
      loops.convert[outType][inType](in.bytes, out.bytes, n);
    }
    benchmark::ClobberMemory();
  };
  const bool large = n > pageVoxels;
  const Effort effort(n);
  const std::string form = scaled ? "scaled" : "plain";
  for (auto _ : state) {
    std::vector<std::function<void()>> works = {[&] { run(kernels); }, [&] { run(reference); }};
    if (large) {
      works.push_back([&] {
        std::memcpy(out.bytes, in.bytes, copyBytes);
        benchmark::ClobberMemory();
      });
    }
    const auto best = bestTimes(works, effort.turns, effort.calls);
    conclude(state, (large ? "64 Mi voxels, " : "page in cache, ") + form + ", by the reference loop", outType, inType,
             best[1], best[0], n, inBytes + outBytes);
    if (large) {
      state.counters["of_copy"] = best[2] / best[0];
      tables.add("64 Mi voxels, " + form + ", by a copy of as many bytes", outType, inType, best[2] / best[0]);
    }
  }
}

void copyBeside(benchmark::State& state, int type, std::size_t n) {
  const std::size_t bytes = n * typeSizes[type];
  Block in(bytes);
  Block out(bytes);
  const Effort effort(n);
  for (auto _ : state) {
    const auto best = bestTimes({[&] {
                                   rowKernels().convert[type][type](in.bytes, out.bytes, n);
                                   benchmark::ClobberMemory();
                                 },
                                 [&] {
                                   std::memcpy(out.bytes, in.bytes, bytes);
                                   benchmark::ClobberMemory();
                                 }},
                                effort.turns, effort.calls);
    conclude(state, n > pageVoxels ? "same type, 256 MiB, by memcpy" : "same type, page in cache, by memcpy", type,
             type, best[1], best[0], n, 2 * bytes);
  }
}

void rangeBeside(benchmark::State& state, int type, std::size_t n) {
  Block in(n * typeSizes[type]);
  setValuesOf[type](in.bytes, n);
  alignas(8) unsigned char limits[2][8] = {};
  const auto run = [&](const RowKernels& loops) {
    loops.minMax[type](in.bytes, n, limits[0], limits[1]);
    benchmark::ClobberMemory();
  };
  const Effort effort(n);
  for (auto _ : state) {
    const auto best =
        bestTimes({[&] { run(rowKernels()); }, [&] { run(referenceLoops()); }}, effort.turns, effort.calls);
    conclude(state, "minimum and maximum", type, type, best[1], best[0], n, n * typeSizes[type]);
  }
}

void oneValueBeside(benchmark::State& state, int type, std::size_t n) {
  Block in(n * typeSizes[type]);
  const auto run = [&](const RowKernels& loops) {
    benchmark::DoNotOptimize(loops.isOneValued[type](in.bytes, n, in.bytes));
    benchmark::ClobberMemory();
  };
  const Effort effort(n);
  for (auto _ : state) {
    const auto best =
        bestTimes({[&] { run(rowKernels()); }, [&] { run(referenceLoops()); }}, effort.turns, effort.calls);
    conclude(state, "one value", type, type, best[1], best[0], n, n * typeSizes[type]);
  }
}

void fillBeside(benchmark::State& state, int type, std::size_t n) {
  Block out(n * typeSizes[type]);
  alignas(8) unsigned char value[8];
  setValuesOf[type](value, 1);
  const auto run = [&](const RowKernels& loops) {
    loops.fill[type](out.bytes, n, value);
    benchmark::ClobberMemory();
  };
  const Effort effort(n);
  for (auto _ : state) {
    const auto best =
        bestTimes({[&] { run(rowKernels()); }, [&] { run(referenceLoops()); }}, effort.turns, effort.calls);
    conclude(state, "fill", type, type, best[1], best[0], n, n * typeSizes[type]);
  }
}

const char* nameOf(int type) {
  static constexpr const char* names[] = {
#define VX_TYPE_NAME(T, number) #T,
      VX_FOR_EACH_STANDARD_TYPE(VX_TYPE_NAME)
#undef VX_TYPE_NAME
  };
  return names[type];
}

template <class Function, class... Arguments>
void registerOnce(const std::string& name, Function function, Arguments... arguments) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) { function(state, arguments...); })
      ->Iterations(1)
      ->UseManualTime()
      ->Unit(benchmark::kMicrosecond);
}

void registerAll() {
  for (int type = 0; type < numRowKernelTypes; ++type) {
    const std::string name = nameOf(type);
    registerOnce("CopyPage/" + name, copyBeside, type, pageVoxels);
    registerOnce("CopyVolume/" + name, copyBeside, type, (std::size_t(256) << 20) / typeSizes[type]);
    registerOnce("MinMaxPage/" + name, rangeBeside, type, pageVoxels);
    registerOnce("IsOneValuedPage/" + name, oneValueBeside, type, pageVoxels);
    registerOnce("FillPage/" + name, fillBeside, type, pageVoxels);
  }
  for (const std::size_t n : {pageVoxels, volumeVoxels}) {
    const std::string size = n == pageVoxels ? "Page" : "Volume";
    for (const bool scaled : {false, true}) {
      for (int out = 0; out < numRowKernelTypes; ++out) {
        for (int in = 0; in < numRowKernelTypes; ++in) {
          registerOnce((scaled ? "ConvertScaled" : "Convert") + size + "/" + nameOf(in) + " to " + nameOf(out),
                       convertBeside, out, in, scaled, n);
        }
      }
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  registerAll();
  benchmark::RunSpecifiedBenchmarks();
  tables.print();
  return 0;
}
