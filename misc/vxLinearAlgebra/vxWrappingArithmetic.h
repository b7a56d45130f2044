/// \file vxWrappingArithmetic.h
/// Arithmetic that has a result for every pair of operands: integers wrap around in two's complement.

#ifndef VX_WRAPPING_ARITHMETIC_H
#define VX_WRAPPING_ARITHMETIC_H

#include <type_traits>

namespace vx {

namespace wrapping {

/// The unsigned type in which a sum or product of T is formed; at least as wide as `int`, since narrower operands
/// would be promoted to a signed type. T itself where it is no integer.
template <class T, bool isInteger = std::is_integral_v<T>>
struct Carrier {
  using Type = T;  ///< The type.
};
/// The case of an integer.
template <class T>
struct Carrier<T, true> {
  /// The type.
  using Type = std::make_unsigned_t<std::common_type_t<T, int>>;
};
/// The type of Carrier.
template <class T>
using CarrierType = typename Carrier<T>::Type;

}  // namespace wrapping

/// \return a + b, wrapped.
template <class T>
constexpr T wrapAdd(T a, T b) noexcept {
  using U = wrapping::CarrierType<T>;
  return static_cast<T>(static_cast<U>(a) + static_cast<U>(b));
}

/// \return a - b, wrapped.
template <class T>
constexpr T wrapSubtract(T a, T b) noexcept {
  using U = wrapping::CarrierType<T>;
  return static_cast<T>(static_cast<U>(a) - static_cast<U>(b));
}

/// \return a * b, wrapped.
template <class T>
constexpr T wrapMultiply(T a, T b) noexcept {
  using U = wrapping::CarrierType<T>;
  return static_cast<T>(static_cast<U>(a) * static_cast<U>(b));
}

/// Truncating division. The minimum divided by -1 wraps to the minimum.
/// \param a the dividend. \param b the divisor, not 0 for integers. \return a / b.
template <class T>
constexpr T wrapDivide(T a, T b) noexcept {
  if constexpr (std::is_integral_v<T> && std::is_signed_v<T>) {
    if (b == T(-1)) return wrapSubtract(T(0), a);
    // Most positions and extents are that small, and a division takes longer than all else around it.
    if (b == T(1)) return a;
    if (a >= T(0) && a < b) return T(0);
  }
  return static_cast<T>(a / b);
}

}  // namespace vx

#endif
