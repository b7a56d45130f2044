// Part of vxModuleKernelsImpl.h: the median of 27 voxels of which three by three by three are sorted.

// Takes the smallest and the greatest of the first `number` values out: they go to the front and to the end.
template <int number, class V>
inline __attribute__((always_inline)) void moveExtremes(V* values) {
  // Sorted pairs first, then the smallest among the low ones and the greatest among the high ones.
  for (int i = 0; i < number / 2; ++i) order(values[i], values[number - 1 - i]);
  if constexpr (number % 2 == 1) {
    order(values[0], values[number / 2]);
  }
  for (int i = 1; i < number / 2; ++i) order(values[0], values[i]);
  for (int i = (number + 1) / 2 - (number % 2); i < number - 1; ++i) order(values[i], values[number - 1]);
}

// The median of an odd number of values: half of them and two more hold it, so that the extremes of these can go, and
// one more value comes in for them.
template <int number, class V>
inline __attribute__((always_inline)) V selectMedian(V* values, const V* rest) {
  if constexpr (number == 3) {
    orderThree(values[0], values[1], values[2]);
    return values[1];
  } else {
    moveExtremes<number>(values);
    values[0] = rest[0];
    return selectMedian<number - 1>(values, rest + 1);
  }
}

template <class V, class T>
inline __attribute__((always_inline)) V medianOf27(const T* const* rows, std::size_t i) {
  V values[19];
  int number = 0;
  for (int z = 0; z < 3; ++z) {
    for (int y = 0; y < 3; ++y) {
      const T* const row = rows[3 * z + y] + i;
      V a = load<V>(row);
      V b = load<V>(row + 1);
      V c = load<V>(row + 2);
      orderThree(a, b, c);
      // With a rank of 1 to 3 in each direction, a value has at least the product of the ranks at or below it; where
      // that is more than 14, or as many are above, it isn't the median.
      const V ranked[3] = {a, b, c};
      for (int x = 0; x < 3; ++x) {
        const int below = (z + 1) * (y + 1) * (x + 1);
        const int above = (3 - z) * (3 - y) * (3 - x);
        if (below <= 14 && above <= 14) values[number++] = ranked[x];
      }
    }
  }
  return selectMedian<11>(values, values + 11);
}
