// What a copy of a small block costs above the loop over its voxels, which is the part that no user can save.

#include "ratioTable.h"

#include "vxRowKernels.h"
#include "vxStdTypeInfos.h"
#include "vxSubImg.h"

#include <string>
#include <vector>

namespace {

using namespace vx;
using namespace vx::bench;

constexpr VXint64 edge = 16;
constexpr std::size_t numVoxels = edge * edge;
constexpr double nanoseconds = 1e9;

/// A page of 16 x 16 voxels that has been touched.
struct Page {
  explicit Page(VXDataType dataType)
      : bytes(numVoxels * VXSizeOf(dataType)),
        block(SubImgBox(Vector(0), Vector(edge - 1, edge - 1, 0, 0, 0, 0)), dataType, bytes.data()) {}
  std::vector<unsigned char> bytes;
  SubImg block;
};

/// Copies a page whole, as the engine copies pages: `overhead_ns` is the time of the copy above that of the loop.
void smallBlock(benchmark::State& state, VXDataType outType, VXDataType inType, ScaleShiftData mapping) {
  const Page in(inType);
  Page out(outType);
  const RowKernels& kernels = rowKernels();
  const bool isMapped = mapping != ScaleShiftData();
  std::vector<double> times;
  for (auto _ : state) {
    times = bestTimes({[&] { out.block.copySubImage(in.block, mapping); },
                       [&] {
                         if (isMapped) {
                           kernels.convertScaled[outType][inType](in.bytes.data(), out.bytes.data(), numVoxels,
                                                                  mapping.scale, mapping.shift);
                         } else {
                           kernels.convert[outType][inType](in.bytes.data(), out.bytes.data(), numVoxels);
                         }
                       }},
                      60, 1000);
  }
  state.counters["copy_ns"] = times[0] * nanoseconds;
  state.counters["loop_ns"] = times[1] * nanoseconds;
  state.counters["overhead_ns"] = (times[0] - times[1]) * nanoseconds;
}

void registerSmallBlocks() {
  for (const VXDataType inType : {VXuint8Type, VXuint16Type, VXfloatType, VXdoubleType}) {
    for (const VXDataType outType : {VXuint8Type, VXuint16Type, VXfloatType, VXdoubleType}) {
      for (const bool isMapped : {false, true}) {
        const std::string name = std::string(isMapped ? "SmallBlockScaled/" : "SmallBlock/") +
                                 VXNameFromDataType(inType) + " to " + VXNameFromDataType(outType);
        const ScaleShiftData mapping = isMapped ? ScaleShiftData(0.5, 3) : ScaleShiftData();
        benchmark::RegisterBenchmark(name.c_str(), smallBlock, outType, inType, mapping)->Iterations(1);
      }
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  registerSmallBlocks();
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
