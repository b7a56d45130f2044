#include "hostLoops.h"

#include <algorithm>
#include <cmath>

namespace vx::bench {

void subtractAndScale(const float* in, float* out, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) out[i] = (in[i] - 100.0F) * 1.5F;
}

void add(const float* a, const float* b, float* out, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) out[i] = a[i] + b[i];
}

void absolute(const float* in, float* out, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) out[i] = std::fabs(in[i]);
}

void clearBelow(const float* in, float* out, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) out[i] = in[i] < 50.0F ? 0.0F : in[i];
}

void scaleDown(const float* in, float* out, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) out[i] = in[i] * 0.25F;
}

void fusedChain(const std::uint16_t* __restrict__ a, const std::uint16_t* __restrict__ b, float* __restrict__ out,
                std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) {
    const float value = std::fabs((static_cast<float>(a[i]) - 100.0F) * 1.5F + static_cast<float>(b[i]));
    out[i] = (value < 50.0F ? 0.0F : value) * 0.25F;
  }
}

void convertAndMap(const std::uint16_t* __restrict__ in, float* __restrict__ out, std::size_t n, double scale,
                   double shift) {
  for (std::size_t i = 0; i < n; ++i) out[i] = static_cast<float>(static_cast<double>(in[i]) * scale + shift);
}

void synthesize(std::int64_t x, std::int64_t y, std::uint8_t* out, std::size_t n) {
  const auto firstX = static_cast<std::uint32_t>(x);
  const std::uint32_t row = static_cast<std::uint32_t>(y) * 7U;
  for (std::size_t i = 0; i < n; ++i) {
    const std::uint32_t column = firstX + static_cast<std::uint32_t>(i);
    out[i] = static_cast<std::uint8_t>((column * 3U + row) ^ (column >> 5));
  }
}

void mean3x3(const std::uint8_t* const rows[3], std::uint8_t* __restrict__ out, std::size_t n) {
  const std::uint8_t* const above = rows[0];
  const std::uint8_t* const here = rows[1];
  const std::uint8_t* const below = rows[2];
  for (std::size_t i = 0; i < n; ++i) {
    const unsigned total = static_cast<unsigned>(above[i]) + above[i + 1] + above[i + 2] + here[i] + here[i + 1] +
                           here[i + 2] + below[i] + below[i + 1] + below[i + 2];
    // A ninth, exactly for sums of nine voxels.
    out[i] = static_cast<std::uint8_t>(static_cast<std::uint16_t>(total) * 7282U >> 16);
  }
}

std::uint64_t sum(const std::uint8_t* in, std::size_t n) {
  std::uint64_t result = 0;
  constexpr std::size_t part = 1 << 16;  // whose sum fits 32 bits
  for (std::size_t first = 0; first < n; first += part) {
    const std::size_t end = std::min(n, first + part);
    std::uint32_t partSum = 0;
    for (std::size_t i = first; i < end; ++i) partSum += in[i];
    result += partSum;
  }
  return result;
}

std::uint64_t fusedMeanSum(std::int64_t extent, std::int64_t firstRow, std::int64_t numRows, std::uint8_t* memory) {
  const auto n = static_cast<std::size_t>(extent);
  const std::size_t stride = n + 2;
  const auto rowOf = [&](std::int64_t y) { return memory + static_cast<std::size_t>((y + 3) % 3) * stride; };
  const auto make = [&](std::int64_t y) {
    std::uint8_t* const row = rowOf(y);
    synthesize(0, std::clamp<std::int64_t>(y, 0, extent - 1), row + 1, n);
    row[0] = row[1];
    row[n + 1] = row[n];
  };
  std::uint8_t* const means = memory + 3 * stride;
  std::uint64_t result = 0;
  make(firstRow - 1);
  make(firstRow);
  for (std::int64_t y = firstRow; y < firstRow + numRows; ++y) {
    make(y + 1);
    const std::uint8_t* const rows[3] = {rowOf(y - 1), rowOf(y), rowOf(y + 1)};
    mean3x3(rows, means, n);
    result += sum(means, n);
  }
  return result;
}

}  // namespace vx::bench
