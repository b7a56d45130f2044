#include "referenceLoops.h"

#include "vxStdTypeInfos.h"

namespace vx::bench {
namespace {

template <class Out, class In>
void convert(const void* in, void* out, std::size_t n) {
  const auto* from = static_cast<const In*>(in);
  auto* to = static_cast<Out*>(out);
  for (std::size_t i = 0; i < n; ++i) to[i] = static_cast<Out>(from[i]);
}

template <class Out, class In>
void convertScaled(const void* in, void* out, std::size_t n, double scale, double shift) {
  const auto* from = static_cast<const In*>(in);
  auto* to = static_cast<Out*>(out);
  for (std::size_t i = 0; i < n; ++i) to[i] = static_cast<Out>(static_cast<double>(from[i]) * scale + shift);
}

template <class T>
void minMax(const void* in, std::size_t n, void* minInOut, void* maxInOut) {
  const auto* voxel = static_cast<const T*>(in);
  T minValue = *static_cast<T*>(minInOut);
  T maxValue = *static_cast<T*>(maxInOut);
  for (std::size_t i = 0; i < n; ++i) {
    if (voxel[i] < minValue) minValue = voxel[i];
    if (maxValue < voxel[i]) maxValue = voxel[i];
  }
  *static_cast<T*>(minInOut) = minValue;
  *static_cast<T*>(maxInOut) = maxValue;
}

template <class T>
bool isOneValued(const void* in, std::size_t n, const void* value) {
  const auto* voxel = static_cast<const T*>(in);
  const T wanted = *static_cast<const T*>(value);
  for (std::size_t i = 0; i < n; ++i) {
    if (!(voxel[i] == wanted)) return false;
  }
  return true;
}

template <class T>
void fill(void* out, std::size_t n, const void* value) {
  auto* to = static_cast<T*>(out);
  const T wanted = *static_cast<const T*>(value);
  for (std::size_t i = 0; i < n; ++i) to[i] = wanted;
}

template <class Out>
void enterType(RowKernels& loops, VXDataType type) {
#define VX_ENTER_PAIR(In, number)                               \
  loops.convert[type][number] = &convert<Out, StoredVoxel<In>>; \
  loops.convertScaled[type][number] = &convertScaled<Out, StoredVoxel<In>>;
  VX_FOR_EACH_STANDARD_TYPE(VX_ENTER_PAIR)
#undef VX_ENTER_PAIR
  loops.minMax[type] = &minMax<Out>;
  loops.isOneValued[type] = &isOneValued<Out>;
  loops.fill[type] = &fill<Out>;
}

}  // namespace

const RowKernels& referenceLoops() {
  static const RowKernels loops = [] {
    RowKernels result{};
#define VX_ENTER_TYPE(T, number) enterType<StoredVoxel<T>>(result, number);
    VX_FOR_EACH_STANDARD_TYPE(VX_ENTER_TYPE)
#undef VX_ENTER_TYPE
    return result;
  }();
  return loops;
}

}  // namespace vx::bench
