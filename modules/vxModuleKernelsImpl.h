// The loops of vxModuleKernels.h, compiled once for each instruction set under the name VX_MODULE_KERNELS. All is in an
// unnamed namespace and nothing of the standard library is called, so that no version's code serves another's.

#include "vxModuleKernels.h"

namespace vx::modules {

namespace {

#if defined(__AVX512F__)
constexpr int vectorBytes = 64;
#elif defined(__AVX2__)
constexpr int vectorBytes = 32;
#else
constexpr int vectorBytes = 16;
#endif

// Vectors ------------------------------------------------------------------------------------------------------------

template <class T, int lanes>
struct VectorOf {
  typedef T Type __attribute__((vector_size(sizeof(T) * lanes)));
};
template <class T, int lanes>
using Lanes = typename VectorOf<T, lanes>::Type;

template <class V, class T>
inline __attribute__((always_inline)) V load(const T* from) {
  V v;
  __builtin_memcpy(&v, from, sizeof v);
  return v;
}
template <class V, class T>
inline __attribute__((always_inline)) void store(T* to, const V& v) {
  __builtin_memcpy(to, &v, sizeof v);
}

// Calls f(i, width) for runs of `lanes` elements, the last of which overlaps its predecessor, or for single elements.
template <int lanes, class Whole, class Single>
inline __attribute__((always_inline)) void forRuns(std::size_t number, const Whole& whole, const Single& single) {
  constexpr std::size_t width = lanes;
  if (number < width) {
    for (std::size_t i = 0; i < number; ++i) single(i);
    return;
  }
  std::size_t i = 0;
  for (; i + width <= number; i += width) whole(i);
  if (i < number) whole(number - width);
}

// Results to voxels ---------------------------------------------------------------------------------------------------

template <class T, class F>
void storeRow(const F* values, void* voxels, std::size_t number) {
  T* const out = static_cast<T*>(voxels);
  for (std::size_t i = 0; i < number; ++i) out[i] = saturateTo<T>(values[i]);
}

template <class T>
void storeMean(const VXint32* sums, VXint32 count, void* voxels, std::size_t number) {
  T* const out = static_cast<T*>(voxels);
  // The quotient of an odd count is never a half, but at least half a share of it away: single precision suffices for
  // sums of few voxels of 16 bits.
  if (!std::is_floating_point_v<T> && count <= 63 && count % 2 == 1) {
    const float factor = 1.0F / static_cast<float>(count);
    for (std::size_t i = 0; i < number; ++i) out[i] = saturateTo<T>(static_cast<float>(sums[i]) * factor);
  } else {
    const double divisor = count;
    for (std::size_t i = 0; i < number; ++i) out[i] = saturateTo<T>(static_cast<double>(sums[i]) / divisor);
  }
}

// Sums ----------------------------------------------------------------------------------------------------------------

// The type in which two voxels are added.
template <class In, class W>
using PairType = std::conditional_t<std::is_floating_point_v<In>, W, VXint32>;

// Vectors that are added from all rows at a time, so that rows are looked up once for them.
template <class In, class W, std::size_t numVectors>
inline __attribute__((always_inline)) void combineVectors(const In* const* middle, const W* weights, std::size_t radius,
                                                          W* out, std::size_t start) {
  constexpr int lanes = vectorBytes / static_cast<int>(sizeof(W));
  constexpr std::size_t step = lanes;
  using InVector = Lanes<In, lanes>;
  using PairVector = Lanes<PairType<In, W>, lanes>;
  using Result = Lanes<W, lanes>;
  Result sums[numVectors];
  for (std::size_t j = 0; j < numVectors; ++j) {
    const PairVector values = __builtin_convertvector(load<InVector>(*middle + start + j * step), PairVector);
    sums[j] = __builtin_convertvector(values, Result) * weights[0];
  }
  for (std::size_t k = 1; k <= radius; ++k) {
    const In* const before = middle[-static_cast<std::ptrdiff_t>(k)] + start;
    const In* const behind = middle[k] + start;
    const W weight = weights[k];
    for (std::size_t j = 0; j < numVectors; ++j) {
      const PairVector pair = __builtin_convertvector(load<InVector>(before + j * step), PairVector) +
                              __builtin_convertvector(load<InVector>(behind + j * step), PairVector);
      sums[j] += __builtin_convertvector(pair, Result) * weight;
    }
  }
  for (std::size_t j = 0; j < numVectors; ++j) store(out + start + j * step, sums[j]);
}

template <class In, class W>
void combineRows(const void* const* rowPointers, const W* weights, std::size_t radius, W* out, std::size_t number) {
  using Pair = PairType<In, W>;
  constexpr std::size_t lanes = static_cast<std::size_t>(vectorBytes) / sizeof(W);
  const In* const* const middle = reinterpret_cast<const In* const*>(rowPointers) + radius;
  if (number < lanes) {
    for (std::size_t i = 0; i < number; ++i) {
      W sum = static_cast<W>(static_cast<Pair>((*middle)[i])) * weights[0];
      for (std::size_t k = 1; k <= radius; ++k) {
        const Pair pair = static_cast<Pair>(static_cast<Pair>(middle[-static_cast<std::ptrdiff_t>(k)][i]) +
                                            static_cast<Pair>(middle[k][i]));
        sum += static_cast<W>(pair) * weights[k];
      }
      out[i] = sum;
    }
    return;
  }
  std::size_t i = 0;
  for (; i + 4 * lanes <= number; i += 4 * lanes) combineVectors<In, W, 4>(middle, weights, radius, out, i);
  for (; i + lanes <= number; i += lanes) combineVectors<In, W, 1>(middle, weights, radius, out, i);
  if (i < number) combineVectors<In, W, 1>(middle, weights, radius, out, number - lanes);
}

template <class In>
void moveSums(const void* add, const void* subtract, VXint32* sums, std::size_t number) {
  const In* const more = static_cast<const In*>(add);
  const In* const less = static_cast<const In*>(subtract);
  if (less) {
    for (std::size_t i = 0; i < number; ++i) sums[i] += static_cast<VXint32>(more[i]) - static_cast<VXint32>(less[i]);
  } else {
    for (std::size_t i = 0; i < number; ++i) sums[i] += static_cast<VXint32>(more[i]);
  }
}

void moveSumsOfSums(const VXint32* add, const VXint32* subtract, VXint32* sums, std::size_t number) {
  moveSums<VXint32>(add, subtract, sums, number);
}

void sumAlong(const VXint32* in, std::size_t size, VXint32* out, std::size_t number) {
  if (size == 3) {
    for (std::size_t i = 0; i < number; ++i) out[i] = in[i] + in[i + 1] + in[i + 2];
  } else if (size == 5) {
    for (std::size_t i = 0; i < number; ++i) out[i] = in[i] + in[i + 1] + in[i + 2] + in[i + 3] + in[i + 4];
  } else {
    VXint32 sum = 0;
    for (std::size_t i = 0; i + 1 < size; ++i) sum += in[i];
    for (std::size_t i = 0; i < number; ++i) {
      sum += in[i + size - 1];
      out[i] = sum;
      sum -= in[i];
    }
  }
}

// Medians -------------------------------------------------------------------------------------------------------------

template <class V>
inline __attribute__((always_inline)) V lower(const V& a, const V& b) {
  return b < a ? b : a;
}
template <class V>
inline __attribute__((always_inline)) V upper(const V& a, const V& b) {
  return b < a ? a : b;
}
template <class V>
inline __attribute__((always_inline)) void order(V& a, V& b) {
  const V low = lower(a, b);
  b = upper(a, b);
  a = low;
}
template <class V>
inline __attribute__((always_inline)) void orderThree(V& a, V& b, V& c) {
  order(a, b);
  order(b, c);
  order(a, b);
}

template <class T>
void sortThree(const void* const* in, void* const* out, std::size_t number) {
  constexpr int lanes = vectorBytes / static_cast<int>(sizeof(T));
  const T* const* const rows = reinterpret_cast<const T* const*>(in);
  T* const* const results = reinterpret_cast<T* const*>(out);
  const auto sortAt = [&](auto example, std::size_t i) {
    using V = decltype(example);
    V a = load<V>(rows[0] + i);
    V b = load<V>(rows[1] + i);
    V c = load<V>(rows[2] + i);
    orderThree(a, b, c);
    store(results[0] + i, a);
    store(results[1] + i, b);
    store(results[2] + i, c);
  };
  forRuns<lanes>(
      number, [&](std::size_t i) { sortAt(Lanes<T, lanes>(), i); }, [&](std::size_t i) { sortAt(T(), i); });
}

template <class V, class T>
inline __attribute__((always_inline)) V medianOf9(const T* const* rows, std::size_t i) {
  // Columns are sorted: the median is that of the greatest low, the middle middle and the smallest high value.
  const V low = upper(upper(load<V>(rows[0] + i), load<V>(rows[0] + i + 1)), load<V>(rows[0] + i + 2));
  const V high = lower(lower(load<V>(rows[2] + i), load<V>(rows[2] + i + 1)), load<V>(rows[2] + i + 2));
  V a = load<V>(rows[1] + i);
  V b = load<V>(rows[1] + i + 1);
  const V c = load<V>(rows[1] + i + 2);
  order(a, b);
  const V middle = lower(upper(a, c), b);
  V first = low;
  V second = middle;
  order(first, second);
  return lower(upper(first, high), second);
}

#include "vxMedianNetwork.h"

template <class T>
void median9(const void* const* rowPointers, void* out, std::size_t number) {
  constexpr int lanes = vectorBytes / static_cast<int>(sizeof(T));
  using V = Lanes<T, lanes>;
  const T* const* const rows = reinterpret_cast<const T* const*>(rowPointers);
  T* const result = static_cast<T*>(out);
  forRuns<lanes>(
      number, [&](std::size_t i) { store(result + i, medianOf9<V>(rows, i)); },
      [&](std::size_t i) { result[i] = medianOf9<T>(rows, i); });
}

template <class T>
void median27(const void* const* rowPointers, void* out, std::size_t number) {
  constexpr int lanes = vectorBytes / static_cast<int>(sizeof(T));
  using V = Lanes<T, lanes>;
  const T* const* const rows = reinterpret_cast<const T* const*>(rowPointers);
  T* const result = static_cast<T*>(out);
  forRuns<lanes>(
      number, [&](std::size_t i) { store(result + i, medianOf27<V>(rows, i)); },
      [&](std::size_t i) { result[i] = medianOf27<T>(rows, i); });
}

#include "vxMedianSearch.h"

}  // namespace

#define VX_BY_TYPE(f)                                                                                          \
  {                                                                                                            \
    &f<signed char>, &f<VXuint8>, &f<VXint16>, &f<VXuint16>, &f<VXint32>, &f<VXuint32>, &f<float>, &f<double>, \
        &f<double>, &f<VXint64>                                                                                \
  }
#define VX_BY_TYPE_FROM(f, F)                                                                             \
  {                                                                                                       \
    &f<signed char, F>, &f<VXuint8, F>, &f<VXint16, F>, &f<VXuint16, F>, &f<VXint32, F>, &f<VXuint32, F>, \
        &f<float, F>, &f<double, F>, &f<double, F>, &f<VXint64, F>                                        \
  }

extern const ModuleKernels VX_MODULE_KERNELS = {
    VX_BY_TYPE_FROM(storeRow, double),
    VX_BY_TYPE_FROM(storeRow, float),
    {&combineRows<signed char, float>, &combineRows<VXuint8, float>, &combineRows<VXint16, float>,
     &combineRows<VXuint16, float>, nullptr, nullptr, &combineRows<float, float>, nullptr, nullptr, nullptr},
    &combineRows<double, double>,
    {&moveSums<signed char>, &moveSums<VXuint8>, &moveSums<VXint16>, &moveSums<VXuint16>, nullptr, nullptr, nullptr,
     nullptr, nullptr, nullptr},
    &moveSumsOfSums,
    &sumAlong,
    VX_BY_TYPE(storeMean),
    VX_BY_TYPE(sortThree),
    VX_BY_TYPE(median9),
    VX_BY_TYPE(median27),
    {&medianOfWindows<signed char>, &medianOfWindows<VXuint8>, &medianOfWindows<VXint16>, &medianOfWindows<VXuint16>,
     &medianOfWindows<VXint32>, &medianOfWindows<VXuint32>, nullptr, nullptr, nullptr, nullptr}};

}  // namespace vx::modules
