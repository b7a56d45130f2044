// Whole images, slice after slice, with what a slice needs in the processor's cache. The loops over rows are those of
// the modules, compiled for this processor: what differs is all that pages, requests and conversions cost.

#include "imageLoops.h"

#define VX_MODULE_KERNELS nativeKernels
#include "vxModuleKernelsImpl.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace vx::bench {

namespace {

const modules::ModuleKernels& kernels = modules::nativeKernels;

// A row with its first and last voxels repeated.
template <class T>
void pad(const T* row, std::size_t number, std::size_t margin, T* out) {
  std::fill_n(out, margin, row[0]);
  std::copy_n(row, number, out + margin);
  std::fill_n(out + margin + number, margin, row[number - 1]);
}

struct Shape {
  std::size_t x, y, z;
  explicit Shape(const TVector<VXint64>& extent)
      : x(static_cast<std::size_t>(extent.x)),
        y(static_cast<std::size_t>(extent.y)),
        z(static_cast<std::size_t>(extent.z)) {}
  std::size_t row(std::size_t rowY, std::size_t rowZ) const { return (rowZ * y + rowY) * x; }
};

std::size_t clampIndex(std::size_t index, std::size_t margin, std::size_t number) {
  return index < margin ? 0 : std::min(index - margin, number - 1);
}

}  // namespace

void boxMean27(const VXint16* in, VXint16* out, const TVector<VXint64>& extent) {
  const Shape s(extent);
  std::vector<VXint32> slice(s.x * s.y);
  std::vector<VXint32> line(s.x + 2);
  std::vector<VXint32> sums(s.x);
  const auto addSlice = [&](std::size_t add, const VXint16* subtract) {
    kernels.moveSums[VXint16Type](in + s.row(0, add), subtract, slice.data(), s.x * s.y);
  };
  addSlice(0, nullptr);
  addSlice(0, nullptr);
  addSlice(std::min<std::size_t>(1, s.z - 1), nullptr);
  for (std::size_t z = 0; z < s.z; ++z) {
    if (z > 0) addSlice(std::min(z + 1, s.z - 1), in + s.row(0, z < 2 ? 0 : z - 2));
    std::fill(line.begin(), line.end(), 0);
    const auto lineOf = [&](std::size_t y) { return slice.data() + y * s.x; };
    kernels.moveSumsOfSums(lineOf(0), nullptr, line.data() + 1, s.x);
    kernels.moveSumsOfSums(lineOf(0), nullptr, line.data() + 1, s.x);
    for (std::size_t y = 0; y < s.y; ++y) {
      const VXint32* const old = y == 0 ? nullptr : lineOf(y < 2 ? 0 : y - 2);
      kernels.moveSumsOfSums(lineOf(std::min(y + 1, s.y - 1)), old, line.data() + 1, s.x);
      line[0] = line[1];
      line[s.x + 1] = line[s.x];
      kernels.sumAlong(line.data(), 3, sums.data(), s.x);
      kernels.storeMean[VXint16Type](sums.data(), 27, out + s.row(y, z), s.x);
    }
  }
}

void median27(const VXint16* in, VXint16* out, const TVector<VXint64>& extent) {
  const Shape s(extent);
  const std::size_t lineLen = s.x + 64;
  std::vector<VXint16> slices(3 * s.y * lineLen);
  std::vector<VXint16> lines(9 * lineLen);
  const auto rankedLine = [&](std::size_t rank, std::size_t y) { return &slices[(rank * s.y + y) * lineLen]; };
  for (std::size_t z = 0; z < s.z; ++z) {
    for (std::size_t y = 0; y < s.y; ++y) {
      const void* rows[3];
      void* sorted[3];
      for (std::size_t k = 0; k < 3; ++k) {
        rows[k] = in + s.row(y, clampIndex(z + k, 1, s.z));
        sorted[k] = rankedLine(k, y) + 1;
      }
      kernels.sortThree[VXint16Type](rows, sorted, s.x);
      for (std::size_t k = 0; k < 3; ++k) {
        VXint16* const line = rankedLine(k, y);
        line[0] = line[1];
        line[s.x + 1] = line[s.x];
      }
    }
    void* ranked[9];
    for (std::size_t i = 0; i < 9; ++i) ranked[i] = &lines[i * lineLen];
    for (std::size_t y = 0; y < s.y; ++y) {
      for (std::size_t rank = 0; rank < 3; ++rank) {
        const void* rows[3];
        for (std::size_t k = 0; k < 3; ++k) rows[k] = rankedLine(rank, clampIndex(y + k, 1, s.y));
        kernels.sortThree[VXint16Type](rows, ranked + 3 * rank, s.x + 2);
      }
      kernels.median27[VXint16Type](ranked, out + s.row(y, z), s.x);
    }
  }
}

void gauss2(const VXuint16* in, float* out, const TVector<VXint64>& extent) {
  constexpr std::size_t radius = 6;
  const Shape s(extent);
  float weights[radius + 1];
  double sum = 0;
  for (std::size_t k = 0; k <= radius; ++k) sum += (k == 0 ? 1 : 2) * std::exp(-static_cast<double>(k * k) / 8);
  for (std::size_t k = 0; k <= radius; ++k)
    weights[k] = static_cast<float>(std::exp(-static_cast<double>(k * k) / 8) / sum);
  std::vector<float> slice(s.x * s.y);
  std::vector<float> line(s.x);
  std::vector<float> padded(s.x + 2 * radius);
  const void* rows[2 * radius + 1];
  for (std::size_t z = 0; z < s.z; ++z) {
    for (std::size_t y = 0; y < s.y; ++y) {
      for (std::size_t k = 0; k <= 2 * radius; ++k) rows[k] = in + s.row(y, clampIndex(z + k, radius, s.z));
      kernels.combineFloat[VXuint16Type](rows, weights, radius, &slice[y * s.x], s.x);
    }
    for (std::size_t y = 0; y < s.y; ++y) {
      for (std::size_t k = 0; k <= 2 * radius; ++k) rows[k] = &slice[clampIndex(y + k, radius, s.y) * s.x];
      kernels.combineFloat[VXfloatType](rows, weights, radius, line.data(), s.x);
      pad(line.data(), s.x, radius, padded.data());
      for (std::size_t k = 0; k <= 2 * radius; ++k) rows[k] = &padded[k];
      kernels.combineFloat[VXfloatType](rows, weights, radius, out + s.row(y, z), s.x);
    }
  }
}

}  // namespace vx::bench
