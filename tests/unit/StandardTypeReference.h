// What the standard types should compute, worked out from exact 128-bit integers and modulo arithmetic.

#ifndef VX_TESTS_STANDARD_TYPE_REFERENCE_H
#define VX_TESTS_STANDARD_TYPE_REFERENCE_H

#include "vxStdTypeInfos.h"

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <initializer_list>
#include <limits>
#include <ostream>
#include <type_traits>
#include <vector>

namespace vx::test {

__extension__ typedef __int128 Exact;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

/// Two to the power of a number of bits.
constexpr Exact twoTo(unsigned int bits) { return Exact{1} << bits; }

/// The number of the integer type `S` that is equal to an exact one modulo its width.
template <class S>
S lowBytes(Exact value) {
  const Exact modulus = twoTo(8 * sizeof(S));
  Exact rest = value % modulus;
  if (rest < 0) rest += modulus;
  if (std::is_signed_v<S> && rest >= modulus / 2) rest -= modulus;
  return static_cast<S>(rest);
}

/// The cast of a floating point number to `S`.
template <class S>
S truncated(double value) {
  if constexpr (std::is_floating_point_v<S>) {
    return static_cast<S>(value);
  } else {
    const bool isShort = sizeof(S) < 4 || std::is_same_v<S, int>;
    const double limit = isShort ? 2147483648.0 : 9223372036854775808.0;
    const double whole = std::trunc(value);
    if (std::isnan(value) || whole < -limit || whole >= limit) return lowBytes<S>(-static_cast<Exact>(limit));
    return lowBytes<S>(static_cast<Exact>(whole));
  }
}

/// A number that is cast to `S`, whatever its type is.
template <class S, class Number>
S castNumber(Number number) {
  if constexpr (std::is_integral_v<S> && std::is_integral_v<Number>) {
    return lowBytes<S>(number);
  } else if constexpr (std::is_floating_point_v<Number>) {
    return truncated<S>(static_cast<double>(number));
  } else {
    return static_cast<S>(number);
  }
}

/// Voxels of `S` at the limits of the type and of what its operations tell apart.
template <class S>
std::vector<S> interestingVoxels() {
  std::vector<S> voxels = {std::numeric_limits<S>::lowest(), std::numeric_limits<S>::max(), 0, 1, 2, 3, 5, 31, 33, 100};
  // One by one: gcc 12 takes the insertion of a list for an access behind the end.
  const auto add = [&voxels](std::initializer_list<S> more) {
    for (const S voxel : more) voxels.push_back(voxel);
  };
  if constexpr (std::is_signed_v<S>) {
    add({S(-1), S(-2), S(-100)});
  } else {
    add({S(200)});
  }
  if constexpr (std::is_floating_point_v<S>) {
    using Limits = std::numeric_limits<S>;
    add({S(-0.0), S(0.5), S(2.9), S(-2.9), S(300.7), S(1e10), Limits::min(), -Limits::min(), Limits::denorm_min(),
         Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN()});
  }
  return voxels;
}

/// Integer operands.
inline const std::vector<int> interestingInts = {0,   1,   -1,  2,   -2,  7,     31,      32,
                                                 127, 128, 255, 256, 300, 65536, INT_MAX, INT_MIN};

/// Floating point operands.
inline const std::vector<double> interestingDoubles = {
    0.0,   -0.0,   1.0,   -1.0,    0.5,          2.9,          -2.9,          200.0,
    300.0, -300.0, 1e-05, 65536.5, 2147483647.0, 2147483648.0, -2147483649.0, 4294967296.0,
    1e20,  -1e20,  1e300, DBL_MIN, infinity,     -infinity,    notANumber};

/// Equal bit by bit, but that one NaN is as good as another.
template <class S>
bool isSame(S a, S b) {
  if (a != a) return b != b;
  return std::memcmp(&a, &b, sizeof a) == 0;
}

template <class S>
struct Printed {
  S value;
  friend std::ostream& operator<<(std::ostream& stream, Printed printed) { return stream << +printed.value; }
};

/// Checks the bytes in front of a voxel and behind it.
inline void expectUntouched(const unsigned char* bytes, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) EXPECT_EQ(bytes[i], 0x5A) << "a byte beside the voxel was written";
}

/// A voxel at an odd address, between bytes that nobody may touch.
template <class S>
class GuardedVoxel {
 public:
  GuardedVoxel() { std::memset(_bytes, 0x5A, sizeof _bytes); }
  explicit GuardedVoxel(S value) : GuardedVoxel() { std::memcpy(data(), &value, sizeof value); }
  unsigned char* data() { return _bytes + 7; }
  S value() const {
    S value;
    std::memcpy(&value, _bytes + 7, sizeof value);
    expectUntouched(_bytes, 7);
    expectUntouched(_bytes + 7 + sizeof value, 16);
    return value;
  }

 private:
  unsigned char _bytes[7 + sizeof(S) + 16];
};

}  // namespace vx::test

#endif
