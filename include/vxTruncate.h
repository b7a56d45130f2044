/// \file vxTruncate.h
/// The one cast from floating point to integer.

#ifndef VX_TRUNCATE_H
#define VX_TRUNCATE_H

#include "vxTypes.h"

#include <limits>
#include <type_traits>

namespace vx {

/// Casts a floating point number to a number of type `T`, the same way on every platform and for every value.
///
/// For an integer `T` the number is truncated toward zero to an intermediate integer, whose low bytes are kept:
/// signed 32-bit for the 8-bit and 16-bit types and VXint32, signed 64-bit for VXuint32 and the 64-bit types. So 300
/// becomes 44 as VXuint8, and -1 becomes 4294967295 as VXuint32. Where the truncated number is outside the
/// intermediate integer, and for NaN, the intermediate is its own minimum, 0x80000000 or 0x8000000000000000: this is 0
/// for all types narrower than the intermediate. For a floating point `T` the number is rounded to `T`.
template <class T>
constexpr T truncateTo(double value) noexcept {
  static_assert(std::is_arithmetic_v<T>, "a number type");
  if constexpr (std::is_floating_point_v<T>) {
    return static_cast<T>(value);
  } else if constexpr (sizeof(T) < 4 || (sizeof(T) == 4 && std::is_signed_v<T>)) {
    const bool fits = value > -2147483649.0 && value < 2147483648.0;
    return static_cast<T>(fits ? static_cast<VXint32>(value) : std::numeric_limits<VXint32>::min());
  } else {
    const bool fits = value >= -9223372036854775808.0 && value < 9223372036854775808.0;
    return static_cast<T>(fits ? static_cast<VXint64>(value) : std::numeric_limits<VXint64>::min());
  }
}

}  // namespace vx

#endif
