/// \file vxRowStore.h
/// From calculated numbers to voxels: rounding and limiting, for single numbers and for rows.

#ifndef VX_ROW_STORE_H
#define VX_ROW_STORE_H

#include "vxTypes.h"

#include <cstddef>
#include <limits>
#include <type_traits>

namespace vx::modules {

/// Converts a calculated number to a voxel. For an integer type it is rounded to the nearest integer, halves to the
/// even one, then limited to the range of the type; NaN is 0. Written without branches, for vectors.
template <class T, class F>
__attribute__((always_inline)) inline T saturateTo(F value) noexcept {
  if constexpr (std::is_floating_point_v<T>) {
    return static_cast<T>(value);
  } else {
    using Limits = std::numeric_limits<T>;
    constexpr int mantissa = std::numeric_limits<F>::digits;
    // Numbers of this size have no fraction: adding and subtracting it rounds smaller ones of the same sign.
    constexpr F whole = static_cast<F>(1ULL << (mantissa - 1));
    constexpr F low = static_cast<F>(Limits::min());
    constexpr F top = static_cast<F>(1ULL << (Limits::digits - 1)) * F(2);  // the first number above the range
    constexpr F last = Limits::digits < mantissa ? top - F(1) : top * (F(1) - std::numeric_limits<F>::epsilon() / F(2));
    F rounded = value;
    if constexpr (Limits::digits + 2 < mantissa) {
      rounded = value < low ? low : value;
      rounded = rounded > last ? last : rounded;
      rounded = (rounded + F(1.5) * whole) - F(1.5) * whole;
    } else {
      const F signedWhole = value < F(0) ? -whole : whole;
      rounded = value > -whole && value < whole ? (value + signedWhole) - signedWhole : value;
    }
    F inside = rounded >= low ? rounded : low;
    inside = inside <= last ? inside : last;
    T result;
    if constexpr (sizeof(T) < 4) {
      result = static_cast<T>(static_cast<VXint32>(inside));
    } else {
      result = static_cast<T>(inside);
    }
    if constexpr (Limits::digits >= mantissa) result = rounded >= top ? Limits::max() : result;
    return value == value ? result : T(0);
  }
}

/// Converts a row of numbers of type `F` to voxels of one type.
template <class F>
using StoreRow = void (*)(const F* values, void* voxels, std::size_t number);

/// \return the function for a standard type, null for any other. `F` is float or double.
template <class F>
StoreRow<F> getStoreRow(VXDataType dataType);

}  // namespace vx::modules

#endif
