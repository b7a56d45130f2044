/// \file vxStdTypeArithmetic.h
/// Arithmetic of the standard types, defined for every operand but an integer divisor of 0.

#ifndef VX_STD_TYPE_ARITHMETIC_H
#define VX_STD_TYPE_ARITHMETIC_H

#include "vxGuards.h"
#include "vxStdTypeInfos.h"
#include "vxTruncate.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace vx::stdTypes {

/// Reads the voxel of a standard type from any address.
template <class T>
StoredVoxel<T> load(const unsigned char* voxel) {
  StoredVoxel<T> value;
  std::memcpy(&value, voxel, sizeof value);
  return value;
}

/// Casts a number: of an integer the low bytes stay, a floating point number is truncated.
template <class To, class From>
constexpr To castTo(From value) {
  if constexpr (std::is_floating_point_v<From>) {
    return truncateTo<To>(value);
  } else {
    return static_cast<To>(value);
  }
}

/// Casts a number to a standard type and writes it to any address.
template <class T, class From>
void store(From value, unsigned char* result) {
  const auto voxel = castTo<StoredVoxel<T>>(value);
  std::memcpy(result, &voxel, sizeof voxel);
}

/// The type in which C computes with an `A` and a `B`.
template <class A, class B>
using Common = decltype(A() + B());

/// Computes in the common type of the operands. Integers go through the unsigned type of that width, so they wrap.
template <class A, class B, class Function>
constexpr Common<A, B> computeWrapped(A a, B b, Function function) {
  using C = Common<A, B>;
  if constexpr (std::is_integral_v<C>) {
    using Unsigned = std::make_unsigned_t<C>;
    return static_cast<C>(function(static_cast<Unsigned>(a), static_cast<Unsigned>(b)));
  } else {
    return function(static_cast<C>(a), static_cast<C>(b));
  }
}

// Operations on two numbers ------------------------------------------------------------------------------------------

struct Product {
  template <class A, class B>
  static constexpr auto apply(A a, B b) {
    return computeWrapped(a, b, [](auto x, auto y) { return x * y; });
  }
};

struct Sum {
  template <class A, class B>
  static constexpr auto apply(A a, B b) {
    return computeWrapped(a, b, [](auto x, auto y) { return x + y; });
  }
};

struct Difference {
  template <class A, class B>
  static constexpr auto apply(A a, B b) {
    return computeWrapped(a, b, [](auto x, auto y) { return x - y; });
  }
};

struct Quotient {
  template <class A, class B>
  static constexpr Common<A, B> apply(A a, B b) {
    using C = Common<A, B>;
    const auto dividend = static_cast<C>(a);
    const auto divisor = static_cast<C>(b);
    if constexpr (std::is_integral_v<C> && std::is_signed_v<C>) {
      // The minimum by -1 doesn't fit, and traps on some processors.
      if (divisor == -1) return Difference::apply(C{0}, dividend);
    }
    return dividend / divisor;
  }
};

/// The quotient by an integer, with the maximum of the voxel's type in place of a division by 0.
struct QuotientOrMaximum {
  template <class A>
  static constexpr Common<A, int> apply(A a, int divisor) {
    return divisor == 0 ? Common<A, int>{std::numeric_limits<A>::max()} : Quotient::apply(a, divisor);
  }
};

/// The quotient by a floating point number that is not nearly 0; another is fatal.
struct CheckedQuotient {
  template <class A>
  static double apply(A a, double divisor) {
    checkFatal(!(std::fabs(divisor) < 1e-06));
    return static_cast<double>(a) / divisor;
  }
};

struct Power {
  template <class A, class B>
  static double apply(A base, B exponent) {
    return std::pow(static_cast<double>(base), static_cast<double>(exponent));
  }
};

/// A power by squaring and multiplying.
struct PowerOfInt {
  template <class A>
  static constexpr double apply(A base, int exponent) {
    auto factor = static_cast<double>(base);
    double power = 1;
    const auto bits = static_cast<unsigned int>(exponent);
    for (unsigned int rest = exponent < 0 ? 0U - bits : bits; rest != 0; rest >>= 1U) {
      if (rest & 1U) power *= factor;
      factor *= factor;
    }
    return exponent < 0 ? 1 / power : power;
  }
};

// Bits ---------------------------------------------------------------------------------------------------------------

struct BitAnd {
  template <class A, class B>
  static constexpr auto apply(A a, B b) {
    return computeWrapped(a, b, [](auto x, auto y) { return x & y; });
  }
};

struct BitOr {
  template <class A, class B>
  static constexpr auto apply(A a, B b) {
    return computeWrapped(a, b, [](auto x, auto y) { return x | y; });
  }
};

struct BitXor {
  template <class A, class B>
  static constexpr auto apply(A a, B b) {
    return computeWrapped(a, b, [](auto x, auto y) { return x ^ y; });
  }
};

/// Shifts an `int` to the left by the low five bits of a distance.
constexpr int shiftedLeft(int value, int distance) {
  return static_cast<int>(static_cast<unsigned int>(value) << (static_cast<unsigned int>(distance) & 31U));
}

/// Shifts an `int` to the right, with its sign, by the low five bits of a distance.
constexpr int shiftedRight(int value, int distance) { return value >> (static_cast<unsigned int>(distance) & 31U); }

// Comparisons --------------------------------------------------------------------------------------------------------

/// Whether a number of the floating point type `S` counts as 0.
template <class S, class Value>
bool isNearlyZero(Value value) {
  return std::fabs(value) < static_cast<Value>(std::numeric_limits<S>::min());
}

/// A number as an operand of a comparison in the type `S`: cast to an integer `S`, as it is for another one.
template <class S, class Number>
constexpr auto operand(Number number) {
  if constexpr (std::is_integral_v<S>) {
    return castTo<S>(number);
  } else {
    return number;
  }
}

struct Equal {
  template <class S, class A, class B>
  static bool apply(A a, B b) {
    if constexpr (std::is_integral_v<S>) {
      return a == b;
    } else {
      return isNearlyZero<S>(Difference::apply(a, b));
    }
  }
};

struct Smaller {
  template <class S, class A, class B>
  static bool apply(A a, B b) {
    return static_cast<Common<A, B>>(a) < static_cast<Common<A, B>>(b);
  }
};

struct Greater {
  template <class S, class A, class B>
  static bool apply(A a, B b) {
    return Smaller::apply<S>(b, a);
  }
};

/// Compares two numbers, at least one of them a voxel of the type `S`.
template <class Comparison, class S, class A, class B>
short compare(A a, B b) {
  return static_cast<short>(Comparison::template apply<S>(operand<S>(a), operand<S>(b)));
}

}  // namespace vx::stdTypes

#endif
