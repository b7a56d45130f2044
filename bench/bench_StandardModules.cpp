// The standard modules with neighbourhoods beside the best loops over whole images that we know how to write: the input
// in memory, the result in memory. The ratio is the time of the module by that of the loop. What two threads gain in a
// loop is what they could gain in a module at most.

#include "imageLoops.h"

#include "vxModule.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace vx;
using Vector = TVector<VXint64>;

/// Shows an image that is in memory.
class MemorySource : public BaseOp {
 public:
  MemorySource(const Vector& extent, VXDataType type, void* data)
      : BaseOp(0, 1), _image(SubImgBox(Vector(0), extent - Vector(1)), type, data) {
    setThreadSupport(THREAD_SUPPORTED);
  }
  VX_ABSTRACT_CLASS_HEADER(MemorySource)

  void calcOutImageProps(int) override {
    getOutImg(0)->setImgExt(_image.getImgExt());
    getOutImg(0)->setPageExt(compMin(Vector(128, 128, 4, 1, 1, 1), _image.getImgExt()));
    getOutImg(0)->setDataType(_image.getDataType());
  }
  using BaseOp::calcOutSubImage;
  void calcOutSubImage(SubImg* out, int, SubImg*) override { out->copySubImage(_image); }

 private:
  SubImg _image;
};
VX_ABSTRACT_CLASS_SOURCE(MemorySource, "BaseOp")

std::unique_ptr<BaseOp> makeModule(const char* name) {
  const RuntimeType* const type = Runtime::fromName(name);
  if (!type) {
    std::fprintf(stderr, "no module %s\n", name);
    std::exit(1);
  }
  return std::unique_ptr<BaseOp>(static_cast<BaseOp*>(static_cast<Base*>(type->getCreateCB()())));
}

template <class T>
std::vector<T> makeVoxels(const Vector& extent) {
  std::vector<T> voxels(static_cast<std::size_t>(extent.getProduct()));
  unsigned state = 1;
  for (T& voxel : voxels) {
    state = state * 1664525U + 1013904223U;
    voxel = static_cast<T>(state >> 18);
  }
  return voxels;
}

template <class In, class Out>
struct Workload {
  Vector extent;
  std::vector<In> in;
  std::vector<Out> out;
  explicit Workload(const Vector& ext)
      : extent(ext), in(makeVoxels<In>(ext)), out(static_cast<std::size_t>(ext.getProduct())) {}
};

/// Requests the whole image of a module again and again. The pages of the source stay, those of the module go.
template <class In, class Out>
void runModule(benchmark::State& state, Workload<In, Out>& work, VXDataType inType, VXDataType outType,
               const char* name, const std::vector<std::pair<const char*, const char*>>& fields) {
  Host::getDefaultHost().setMaxNumThreads(static_cast<VXuint32>(state.range(0)));
  MemorySource source(work.extent, inType, work.in.data());
  const auto op = makeModule(name);
  for (const auto& [field, value] : fields) op->getFieldContainer()->setValue(field, value);
  op->connectInput(0, source, 0);
  void* data = work.out.data();
  const SubImgBox box(Vector(0), work.extent - Vector(1));
  for (auto _ : state) {
    op->clearOutImg(0);
    if (BaseOp::getTile(op.get(), 0, box, outType, &data) != 0) state.SkipWithError("failed");
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * work.extent.getProduct());
}

const Vector mediumExtent(256, 256, 128, 1, 1, 1);
const Vector largeExtent(512, 512, 256, 1, 1, 1);

Workload<VXint16, VXint16>& mediumWork() {
  static Workload<VXint16, VXint16> work(mediumExtent);
  return work;
}
Workload<VXint16, float>& mediumFloatWork() {
  static Workload<VXint16, float> work(mediumExtent);
  return work;
}
Workload<VXuint16, float>& largeWork() {
  static Workload<VXuint16, float> work(largeExtent);
  return work;
}

/// Runs a loop over the image, which is cut across z into as many images as there are threads.
template <class Work, class Loop>
void runLoop(benchmark::State& state, Work& work, Loop loop) {
  const auto numThreads = static_cast<VXint64>(state.range(0));
  Vector extent = work.extent;
  extent.z /= numThreads;
  const auto runPart = [&](VXint64 part) {
    const auto first = static_cast<std::size_t>(part * extent.getProduct());
    loop(work.in.data() + first, work.out.data() + first, extent);
  };
  for (auto _ : state) {
    std::vector<std::thread> threads;
    for (VXint64 part = 1; part < numThreads; ++part) threads.emplace_back(runPart, part);
    runPart(0);
    for (std::thread& thread : threads) thread.join();
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * work.extent.getProduct());
}

void boxLoop(benchmark::State& state) { runLoop(state, mediumWork(), bench::boxMean27); }
void medianLoop(benchmark::State& state) { runLoop(state, mediumWork(), bench::median27); }
void gaussLoop(benchmark::State& state) { runLoop(state, largeWork(), bench::gauss2); }

void boxModule(benchmark::State& state) { runModule(state, mediumWork(), VXint16Type, VXint16Type, "Convolution", {}); }
void medianModule(benchmark::State& state) { runModule(state, mediumWork(), VXint16Type, VXint16Type, "Median", {}); }
void gaussModule(benchmark::State& state) {
  runModule(state, largeWork(), VXuint16Type, VXfloatType, "Convolution",
            {{"kernel", "Gauss"}, {"sigma", "2 2 2 0 0 0"}});
}
void median125Module(benchmark::State& state) {
  runModule(state, mediumWork(), VXint16Type, VXint16Type, "Median", {{"size", "5 5 5 1 1 1"}});
}
void gauss5Module(benchmark::State& state) {
  runModule(state, mediumFloatWork(), VXint16Type, VXfloatType, "Convolution",
            {{"kernel", "Gauss"}, {"sigma", "5 5 5 0 0 0"}});
}
void gradientModule(benchmark::State& state) {
  runModule(state, mediumFloatWork(), VXint16Type, VXfloatType, "GradientMagnitude", {});
}
void passModule(benchmark::State& state) { runModule(state, mediumWork(), VXint16Type, VXint16Type, "SubImage", {}); }

/// Registers a piece of work on one thread and on two.
void registerOnThreads(const char* name, void (*work)(benchmark::State&)) {
  benchmark::RegisterBenchmark(name, work)
      ->ArgName("threads")
      ->Arg(1)
      ->Arg(2)
      ->UseRealTime()
      ->Unit(benchmark::kMillisecond);
}

void registerAll() {
  registerOnThreads("BoxMean3x3x3/loop", boxLoop);
  registerOnThreads("BoxMean3x3x3/module", boxModule);
  registerOnThreads("Median3x3x3/loop", medianLoop);
  registerOnThreads("Median3x3x3/module", medianModule);
  registerOnThreads("GaussSigma2/loop", gaussLoop);
  registerOnThreads("GaussSigma2/module", gaussModule);
  registerOnThreads("GradientMagnitude/module", gradientModule);
  registerOnThreads("Median5x5x5/module", median125Module);
  registerOnThreads("GaussSigma5/module", gauss5Module);
  registerOnThreads("SubImage/module", passModule);
}

}  // namespace

int main(int argc, char** argv) {
  MemorySource::initClass(nullptr, nullptr);
  if (VXLoadLibrary(VX_STANDARD_MODULES) != 1) return 1;
  benchmark::Initialize(&argc, argv);
  registerAll();
  benchmark::RunSpecifiedBenchmarks();
}
