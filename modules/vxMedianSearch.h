// Part of vxModuleKernelsImpl.h: the median of windows of any size, found by halving the range of its values.

// What `number` values of a window row are compared as: vectors of as many lanes, of 16 bits at least, so that a lane
// can count the voxels of a window.
template <class T, int lanes>
struct WindowValues {
  using Number = std::conditional_t<sizeof(T) == 1, VXint16, T>;
  using Vector = Lanes<Number, lanes>;
  using Counts = Lanes<std::make_unsigned_t<Number>, lanes>;
  static inline __attribute__((always_inline)) Vector at(const T* row) {
    return __builtin_convertvector(load<Lanes<T, lanes>>(row), Vector);
  }
  static inline __attribute__((always_inline)) void storeAt(T* row, const Vector& values) {
    store(row, __builtin_convertvector(values, Lanes<T, lanes>));
  }
  static std::make_unsigned_t<Number> greatest(const Counts& counts) {
    std::make_unsigned_t<Number> result = 0;
    for (int i = 0; i < lanes; ++i) result = counts[i] > result ? counts[i] : result;
    return result;
  }
};

// The same of one voxel.
template <class T>
struct WindowValues<T, 1> {
  using Number = std::conditional_t<sizeof(T) == 1, VXint16, T>;
  using Vector = Number;
  using Counts = std::make_unsigned_t<Number>;
  static Vector at(const T* row) { return *row; }
  static void storeAt(T* row, Vector value) { *row = static_cast<T>(value); }
  static Counts greatest(Counts count) { return count; }
};

// Calls f for each place of the windows of `width` voxels in each row.
template <class T, class F>
inline __attribute__((always_inline)) void forWindow(const T* const* rows, std::size_t numRows, std::size_t width,
                                                     std::size_t start, const F& f) {
  for (std::size_t k = 0; k < numRows; ++k) {
    const T* const row = rows[k] + start;
    for (std::size_t x = 0; x < width; ++x) f(row + x);
  }
}

// The medians of numVectors x lanes windows that follow each other. In each window the median is the greatest number
// with no more than half of the voxels below it; its distance from the smallest voxel is put together from the highest
// bit down. So the number of turns is that of the bits in which voxels that are near each other differ.
template <class T, int lanes, std::size_t numVectors>
inline __attribute__((always_inline)) void searchMedians(const T* const* rows, std::size_t numRows, std::size_t width,
                                                         T* out, std::size_t start) {
  using Values = WindowValues<T, lanes>;
  using V = typename Values::Vector;
  using C = typename Values::Counts;
  using Count = std::make_unsigned_t<typename Values::Number>;
  constexpr std::size_t step = lanes;
  V least[numVectors];
  V most[numVectors];
  for (std::size_t j = 0; j < numVectors; ++j) least[j] = most[j] = Values::at(rows[0] + start + j * step);
  forWindow(rows, numRows, width, start, [&](const T* voxels) {
    for (std::size_t j = 0; j < numVectors; ++j) {
      const V values = Values::at(voxels + j * step);
      least[j] = lower(least[j], values);
      most[j] = upper(most[j], values);
    }
  });
  C range[numVectors];
  C distance[numVectors];
  Count greatestRange = 0;
  for (std::size_t j = 0; j < numVectors; ++j) {
    range[j] = (C)most[j] - (C)least[j];
    distance[j] = C{};
    const Count greatest = Values::greatest(range[j]);
    greatestRange = greatest > greatestRange ? greatest : greatestRange;
  }
  const auto half = static_cast<Count>(numRows * width / 2);
  const Count one = 1;
  Count part = 1;
  while (part <= greatestRange / 2) part = static_cast<Count>(part * 2U);
  for (; greatestRange != 0 && part != 0; part = part / 2) {
    V bound[numVectors];
    C numBelow[numVectors];
    for (std::size_t j = 0; j < numVectors; ++j) {
      bound[j] = (V)((C)least[j] + (distance[j] | part));
      numBelow[j] = C{};
    }
    forWindow(rows, numRows, width, start, [&](const T* voxels) {
      for (std::size_t j = 0; j < numVectors; ++j) {
        const C counted = numBelow[j] + one;
        numBelow[j] = Values::at(voxels + j * step) < bound[j] ? counted : numBelow[j];
      }
    });
    for (std::size_t j = 0; j < numVectors; ++j) {
      // Beyond the range a bound may be none: it may have left the numbers of the type.
      const C more = distance[j] | part;
      const C kept = more <= range[j] ? more : distance[j];
      distance[j] = numBelow[j] <= C{} + half ? kept : distance[j];
    }
  }
  for (std::size_t j = 0; j < numVectors; ++j) {
    Values::storeAt(out + start + j * step, (V)((C)least[j] + distance[j]));
  }
}

template <class T>
void medianOfWindows(const void* const* rowPointers, std::size_t numRows, std::size_t width, void* out,
                     std::size_t number) {
  constexpr int numberBytes = static_cast<int>(sizeof(typename WindowValues<T, 1>::Number));
  constexpr int lanes = vectorBytes / numberBytes;
  constexpr std::size_t step = lanes;
  const T* const* const rows = reinterpret_cast<const T* const*>(rowPointers);
  T* const result = static_cast<T*>(out);
  if (number < step) {
    constexpr int fewLanes = 16 / numberBytes;
    forRuns<fewLanes>(
        number, [&](std::size_t i) { searchMedians<T, fewLanes, 1>(rows, numRows, width, result, i); },
        [&](std::size_t i) { searchMedians<T, 1, 1>(rows, numRows, width, result, i); });
    return;
  }
  std::size_t i = 0;
  for (; i + 4 * step <= number; i += 4 * step) searchMedians<T, lanes, 4>(rows, numRows, width, result, i);
  for (; i < number; i += step) {
    searchMedians<T, lanes, 1>(rows, numRows, width, result, i + step <= number ? i : number - step);
  }
}
