// The loops over rows of all instruction sets: against plain formulas, and bit by bit against each other.

#include "vxModuleKernels.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

namespace vx::modules {
namespace {

template <int number>
struct Voxel;
#define VX_VOXEL(number, T) \
  template <>               \
  struct Voxel<number> {    \
    using Type = T;         \
  };
VX_VOXEL(0, signed char)
VX_VOXEL(1, VXuint8)
VX_VOXEL(2, VXint16)
VX_VOXEL(3, VXuint16)
VX_VOXEL(4, VXint32)
VX_VOXEL(5, VXuint32)
VX_VOXEL(6, float)
VX_VOXEL(7, double)
VX_VOXEL(8, double)
VX_VOXEL(9, VXint64)

template <class F, int... numbers>
void forEachType(F&& f, std::integer_sequence<int, numbers...>) {
  (f(std::integral_constant<int, numbers>()), ...);
}
template <class F>
void forEachType(F&& f) {
  forEachType(f, std::make_integer_sequence<int, numTypes>());
}

// What this processor can run, the plainest first.
std::vector<const ModuleKernels*> versions() {
  std::vector<const ModuleKernels*> result = {&moduleKernelsBaseline};
#ifdef VX_HAS_X86_MODULE_KERNELS
  if (__builtin_cpu_supports("avx2")) result.push_back(&moduleKernelsAvx2);
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
      __builtin_cpu_supports("avx512vl")) {
    result.push_back(&moduleKernelsAvx512);
  }
#endif
  return result;
}

// Lengths around those of vectors.
const std::size_t lengths[] = {0, 1, 2, 3, 7, 8, 15, 16, 17, 31, 32, 33, 63, 64, 65, 100, 129, 260};

template <class T>
std::vector<T> randomRow(std::size_t number, unsigned seed) {
  std::mt19937_64 random(seed);
  std::vector<T> row(number);
  for (T& voxel : row) {
    if constexpr (std::is_floating_point_v<T>) {
      voxel = static_cast<T>(static_cast<double>(random() % 2001) - 1000) / T(8);
    } else {
      voxel = static_cast<T>(random());
    }
  }
  return row;
}

// The documented rounding, with the rounding of the standard library.
template <class T, class F>
T rounded(F value) {
  if constexpr (std::is_floating_point_v<T>) {
    return static_cast<T>(value);
  } else {
    if (std::isnan(value)) return 0;
    const F whole = std::nearbyint(value);
    if (whole < static_cast<F>(std::numeric_limits<T>::min())) return std::numeric_limits<T>::min();
    if (whole >= std::ldexp(F(1), std::numeric_limits<T>::digits)) return std::numeric_limits<T>::max();
    return static_cast<T>(whole);
  }
}

template <class F>
std::vector<F> edgeValues() {
  using Limits = std::numeric_limits<F>;
  std::vector<F> values = {
      0, Limits::quiet_NaN(), Limits::infinity(), Limits::max(), Limits::min(), Limits::denorm_min()};
  for (int bit = 0; bit <= 64; ++bit) {
    const F power = std::ldexp(F(1), bit);
    for (const F offset : {F(-1.5), F(-1), F(-0.5), F(0), F(0.25), F(0.5), F(0.75), F(1), F(1.5)})
      values.push_back(power + offset);
    values.push_back(std::nextafter(power, F(0)));
    values.push_back(std::nextafter(power, Limits::max()));
  }
  values.push_back(std::nextafter(F(0.5), F(0)));
  const std::size_t number = values.size();
  for (std::size_t i = 0; i < number; ++i) values.push_back(-values[i]);
  return values;
}

template <class F, class GetTable>
void expectRounding(GetTable getTable) {
  const std::vector<F> values = edgeValues<F>();
  for (const ModuleKernels* version : versions()) {
    forEachType([&](auto number) {
      using T = typename Voxel<number.value>::Type;
      for (std::size_t start : {std::size_t{0}, std::size_t{1}, values.size() - 3}) {
        std::vector<T> out(values.size());
        getTable(*version)[number.value](values.data() + start, out.data(), values.size() - start);
        for (std::size_t i = 0; i + start < values.size(); ++i) {
          const T expected = rounded<T>(values[i + start]);
          const bool isSame = out[i] == expected || (out[i] != out[i] && expected != expected);
          ASSERT_TRUE(isSame) << "type " << number.value << " value " << values[i + start] << " gives " << +out[i];
        }
      }
    });
  }
}

TEST(ModuleKernelsTest, NumbersAreRoundedToEvenAndLimited) {
  expectRounding<double>([](const ModuleKernels& k) -> auto& { return k.storeDouble; });
  expectRounding<float>([](const ModuleKernels& k) -> auto& { return k.storeFloat; });
}

template <class In, class W>
void expectSums(CombineRows<W> combine) {
  for (const std::size_t radius : std::initializer_list<std::size_t>{0, 1, 2, 6}) {
    std::vector<W> weights;
    for (std::size_t k = 0; k <= radius; ++k) weights.push_back(W(1) / static_cast<W>(k + 3));
    for (const std::size_t number : lengths) {
      std::vector<std::vector<In>> rows;
      std::vector<const void*> pointers;
      for (unsigned k = 0; k <= 2 * radius; ++k) rows.push_back(randomRow<In>(number + 1, k));
      for (const auto& row : rows) pointers.push_back(row.data() + 1);
      std::vector<W> out(number + 1, W(-7));
      combine(pointers.data(), weights.data(), radius, out.data(), number);
      for (std::size_t i = 0; i < number; ++i) {
        W sum = static_cast<W>(rows[radius][i + 1]) * weights[0];
        for (std::size_t k = 1; k <= radius; ++k) {
          sum += (static_cast<W>(rows[radius - k][i + 1]) + static_cast<W>(rows[radius + k][i + 1])) * weights[k];
        }
        ASSERT_EQ(out[i], sum) << number << " " << i;
      }
      ASSERT_EQ(out[number], W(-7));
    }
  }
}

TEST(ModuleKernelsTest, WeightedSumsHaveOneOrderInAllVersions) {
  for (const ModuleKernels* version : versions()) {
    expectSums<signed char, float>(version->combineFloat[0]);
    expectSums<VXuint8, float>(version->combineFloat[1]);
    expectSums<VXint16, float>(version->combineFloat[2]);
    expectSums<VXuint16, float>(version->combineFloat[3]);
    expectSums<float, float>(version->combineFloat[6]);
    expectSums<double, double>(version->combineDouble);
    for (const int type : {4, 5, 7, 8, 9}) EXPECT_EQ(version->combineFloat[type], nullptr);
  }
}

TEST(ModuleKernelsTest, SumsMoveAndMeansAreExact) {
  for (const ModuleKernels* version : versions()) {
    for (const std::size_t number : lengths) {
      const auto add = randomRow<VXuint16>(number, 1);
      const auto subtract = randomRow<VXuint16>(number, 2);
      std::vector<VXint32> sums = randomRow<VXint32>(number, 3);
      for (VXint32& sum : sums) sum /= 64;
      std::vector<VXint32> expected = sums;
      version->moveSums[VXuint16Type](add.data(), subtract.data(), sums.data(), number);
      version->moveSums[VXuint16Type](add.data(), nullptr, sums.data(), number);
      for (std::size_t i = 0; i < number; ++i) expected[i] += 2 * add[i] - subtract[i];
      ASSERT_EQ(sums, expected);
      for (const std::size_t size : std::initializer_list<std::size_t>{1, 3, 5, 7, 9}) {
        if (number < size) continue;
        std::vector<VXint32> along(number - size + 1);
        version->sumAlong(add.empty() ? nullptr : sums.data(), size, along.data(), along.size());
        for (std::size_t i = 0; i < along.size(); ++i) {
          VXint64 sum = 0;
          for (std::size_t k = 0; k < size; ++k) sum += sums[i + k];
          ASSERT_EQ(along[i], static_cast<VXint32>(sum));
        }
      }
    }
    for (const VXint32 count : {1, 3, 9, 15, 27, 45, 63, 75, 125, 343}) {
      std::vector<VXint32> sums;
      for (const VXint32 mean : {-32768, -1000, -1, 0, 1, 127, 255, 1000, 32767, 65534}) {
        for (VXint32 rest = 0; rest <= count; ++rest) sums.push_back(mean * count + rest);
      }
      forEachType([&](auto number) {
        using T = typename Voxel<number.value>::Type;
        std::vector<T> out(sums.size());
        version->storeMean[number.value](sums.data(), count, out.data(), sums.size());
        for (std::size_t i = 0; i < sums.size(); ++i) {
          ASSERT_EQ(out[i], rounded<T>(static_cast<double>(sums[i]) / count)) << sums[i] << " / " << count;
        }
      });
    }
  }
}

TEST(ModuleKernelsTest, MediansAreThoseOfSortedWindows) {
  for (const ModuleKernels* version : versions()) {
    forEachType([&](auto type) {
      using T = typename Voxel<type.value>::Type;
      for (const std::size_t number : lengths) {
        // Nine rows, three by three; each triple is sorted, then the triples of one rank.
        std::vector<std::vector<T>> rows;
        for (unsigned k = 0; k < 9; ++k) rows.push_back(randomRow<T>(number + 2, k + 10));
        const std::vector<std::vector<T>> original = rows;
        const auto sortRows = [&](std::size_t a, std::size_t b, std::size_t c) {
          std::vector<T> sorted[3] = {rows[a], rows[b], rows[c]};
          const void* in[] = {rows[a].data(), rows[b].data(), rows[c].data()};
          void* out[] = {sorted[0].data(), sorted[1].data(), sorted[2].data()};
          version->sortThree[type.value](in, out, number + 2);
          for (std::size_t i = 0; i < number + 2; ++i) {
            T values[] = {rows[a][i], rows[b][i], rows[c][i]};
            std::sort(values, values + 3);
            ASSERT_TRUE(sorted[0][i] == values[0] && sorted[1][i] == values[1] && sorted[2][i] == values[2]);
          }
          rows[a] = sorted[0];
          rows[b] = sorted[1];
          rows[c] = sorted[2];
        };
        const auto expectMedians = [&](const std::vector<T>& out, std::size_t numRows) {
          for (std::size_t i = 0; i < number; ++i) {
            std::vector<T> window;
            for (std::size_t k = 0; k < numRows; ++k) window.insert(window.end(), &original[k][i], &original[k][i] + 3);
            std::sort(window.begin(), window.end());
            ASSERT_EQ(out[i], window[window.size() / 2]) << "type " << type.value << " at " << i;
          }
        };
        std::vector<T> out(number);
        const void* pointers[9];
        sortRows(0, 1, 2);
        for (std::size_t k = 0; k < 3; ++k) pointers[k] = rows[k].data();
        version->median9[type.value](pointers, out.data(), number);
        expectMedians(out, 3);
        sortRows(3, 4, 5);
        sortRows(6, 7, 8);
        for (std::size_t k = 0; k < 3; ++k) sortRows(k, k + 3, k + 6);
        for (std::size_t k = 0; k < 9; ++k) pointers[k] = rows[k].data();
        version->median27[type.value](pointers, out.data(), number);
        expectMedians(out, 9);
      }
    });
  }
}

// Rows of all numbers of a type, of few neighbouring ones, of its smallest and greatest number, and of one number.
template <class T>
std::vector<T> windowRow(std::size_t number, unsigned seed, int kind) {
  using Limits = std::numeric_limits<T>;
  std::vector<T> row = randomRow<T>(number, seed);
  for (T& voxel : row) {
    if (kind == 1) voxel = static_cast<T>(Limits::max() / 3 + (voxel & 7));
    if (kind == 2) voxel = (voxel & 1) != 0 ? Limits::max() : Limits::min();
    if (kind == 3) voxel = Limits::min();
  }
  return row;
}

struct WindowSize {
  std::size_t numRows, width;
};

template <class T>
void expectMediansOfWindows(const ModuleKernels& version, int type, const WindowSize& size, std::size_t number,
                            int kind) {
  std::vector<std::vector<T>> rows;
  std::vector<const void*> pointers;
  for (std::size_t k = 0; k < size.numRows; ++k) {
    rows.push_back(windowRow<T>(number + size.width - 1, static_cast<unsigned>(k), kind));
    pointers.push_back(rows.back().data());
  }
  std::vector<T> out(number + 1, T(77));
  version.medianOfWindows[type](pointers.data(), size.numRows, size.width, out.data(), number);
  std::vector<T> window;
  for (std::size_t i = 0; i < number; ++i) {
    window.clear();
    for (const std::vector<T>& row : rows) window.insert(window.end(), &row[i], &row[i] + size.width);
    std::nth_element(window.begin(), window.begin() + static_cast<std::ptrdiff_t>(window.size() / 2), window.end());
    ASSERT_EQ(out[i], window[window.size() / 2]) << "type " << type << " at " << i << " of " << number << ", window "
                                                 << size.numRows << " x " << size.width << ", kind " << kind;
  }
  ASSERT_EQ(out[number], T(77));
}

TEST(ModuleKernelsTest, MediansOfWindowsAreThoseOfSortedWindows) {
  for (const ModuleKernels* version : versions()) {
    forEachType([&](auto type) {
      using T = typename Voxel<type.value>::Type;
      ASSERT_EQ(version->medianOfWindows[type.value] != nullptr, std::is_integral_v<T> && sizeof(T) <= 4);
      if constexpr (std::is_integral_v<T> && sizeof(T) <= 4) {
        for (const WindowSize& size :
             {WindowSize{1, 1}, WindowSize{1, 3}, WindowSize{5, 1}, WindowSize{5, 5}, WindowSize{33, 9}}) {
          for (const std::size_t number : lengths) {
            for (const int kind : {0, 1, 2, 3}) expectMediansOfWindows<T>(*version, type.value, size, number, kind);
          }
        }
      }
    });
  }
}

// Of 65535 voxels one is not the smallest number, one is not the greatest, and half of them less one or two are not.
TEST(ModuleKernelsTest, MediansOfTheLargestWindows) {
  constexpr std::size_t numRows = 5;
  constexpr std::size_t width = 13107;
  constexpr std::size_t number = 33;
  for (const ModuleKernels* version : versions()) {
    forEachType([&](auto type) {
      using T = typename Voxel<type.value>::Type;
      if constexpr (std::is_integral_v<T> && sizeof(T) <= 2) {  // which are counted in 16 bits
        using Limits = std::numeric_limits<T>;
        // The first numSmall voxels of each row's period are the smallest number, so each window has 5 times as many.
        const auto medians = [&](std::size_t numSmall, std::size_t numMore) {
          std::vector<std::vector<T>> rows(numRows, std::vector<T>(number + width - 1));
          std::vector<const void*> pointers;
          for (std::size_t k = 0; k < numRows; ++k) {
            const std::size_t numOfRow = numSmall + (k < numMore ? 1 : 0);
            for (std::size_t i = 0; i < rows[k].size(); ++i) {
              rows[k][i] = i % width < numOfRow ? Limits::min() : Limits::max();
            }
            pointers.push_back(rows[k].data());
          }
          std::vector<T> out(number);
          version->medianOfWindows[type.value](pointers.data(), numRows, width, out.data(), number);
          return out;
        };
        ASSERT_EQ(medians(width - 1, numRows - 1), std::vector<T>(number, Limits::min()));
        ASSERT_EQ(medians(0, 1), std::vector<T>(number, Limits::max()));
        ASSERT_EQ(medians(6553, 2), std::vector<T>(number, Limits::max()));  // 32767 are small
        ASSERT_EQ(medians(6553, 3), std::vector<T>(number, Limits::min()));  // 32768 are
      }
    });
  }
}

TEST(ModuleKernelsTest, TheProcessorsVersionIsChosen) {
  EXPECT_EQ(&moduleKernels(), versions().back());
  EXPECT_EQ(getStoreRow<double>(-1), nullptr);
  EXPECT_EQ(getStoreRow<float>(10), nullptr);
}

}  // namespace
}  // namespace vx::modules
