// The fixture of the tests that run each operation of the standard types over all ten types and the operands at which
// types differ.

#ifndef VX_TESTS_STANDARD_TYPE_FIXTURE_H
#define VX_TESTS_STANDARD_TYPE_FIXTURE_H

#include "StandardTypeReference.h"

#include "vxStdTypeInfos.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace vx::test {

template <class T>
class StandardTypeFixture : public testing::Test {
 public:
  using Voxel = vx::StoredVoxel<T>;
  using StdInfos = VXTStdTypeInfos<T>;
  static constexpr bool isInteger = std::is_integral_v<Voxel>;

  static void SetUpTestSuite() { ASSERT_EQ(VXInitializeTypes(), 1); }

  static const VXTypeInfos& record() { return *StdInfos::_myInfos; }

  // What C computes from a voxel and an int or another voxel, for operations where integers wrap.
  template <class Operand, class Function>
  static Voxel computed(Voxel v, Operand x, Function function) {
    if constexpr (isInteger) {
      return lowBytes<Voxel>(function(Exact{v}, Exact{x}));
    } else {
      return function(v, static_cast<Voxel>(x));
    }
  }

  // Quotient of integers in the type in which C divides an Voxel and an int.
  static Exact asDivided(Exact number) {
    return std::is_same_v<Voxel, unsigned int> ? Exact{lowBytes<unsigned int>(number)} : number;
  }
  static Voxel quotient(Exact dividend, Exact divisor) {
    if constexpr (isInteger) {
      return lowBytes<Voxel>(asDivided(dividend) / asDivided(divisor));
    } else {
      return 0;
    }
  }

  // Runs an operation and checks what it writes, into memory of its own and over its operand.
  static void expectResult(Voxel expected, Voxel operand,
                           const std::function<void(const unsigned char*, unsigned char*)>& operation,
                           const std::string& what) {
    GuardedVoxel<Voxel> voxel(operand);
    GuardedVoxel<Voxel> result;
    operation(voxel.data(), result.data());
    expectSame(result.value(), expected, operand, what);
    expectSame(voxel.value(), operand, operand, what + " on its operand");
    operation(voxel.data(), voxel.data());
    expectSame(voxel.value(), expected, operand, what + " over its operand");
  }

  static void expectSame(Voxel result, Voxel expected, Voxel operand, const std::string& what) {
    if (isSame(result, expected)) return;
    ADD_FAILURE() << what << " on " << Printed<Voxel>{operand} << " gives " << Printed<Voxel>{result} << " in place of "
                  << Printed<Voxel>{expected};
  }

  static void testUnary(VXTypeUnaryOp operation, const char* name, const std::function<Voxel(Voxel)>& expected) {
    for (const Voxel v : interestingVoxels<Voxel>()) {
      expectResult(
          expected(v), v, [&](auto* voxel, auto* result) { operation(voxel, result); }, name);
    }
  }

  static void testTypeInt(VXTypeTypeIntOp operation, const char* name, const std::function<Voxel(Voxel, int)>& expected,
                          const std::vector<int>& numbers = interestingInts) {
    for (const Voxel v : interestingVoxels<Voxel>()) {
      for (const int x : numbers) {
        expectResult(
            expected(v, x), v, [&](auto* voxel, auto* result) { operation(voxel, x, result); },
            name + (" with " + std::to_string(x)));
      }
    }
  }

  static void testIntType(VXTypeIntTypeOp operation, const char* name, const std::function<Voxel(int, Voxel)>& expected,
                          bool skipZero = false) {
    for (const Voxel v : interestingVoxels<Voxel>()) {
      if (skipZero && v == 0) continue;
      for (const int x : interestingInts) {
        expectResult(
            expected(x, v), v, [&](auto* voxel, auto* result) { operation(x, voxel, result); },
            name + (" of " + std::to_string(x)));
      }
    }
  }

  static void testTypeDouble(VXTypeTypeDoubleOp operation, const char* name,
                             const std::function<double(double, double)>& expected, double smallest = 0) {
    for (const Voxel v : interestingVoxels<Voxel>()) {
      for (const double x : interestingDoubles) {
        if (std::fabs(x) < smallest) continue;
        expectResult(
            truncated<Voxel>(expected(static_cast<double>(v), x)), v,
            [&](auto* voxel, auto* result) { operation(voxel, x, result); }, name + (" with " + std::to_string(x)));
      }
    }
  }

  static void testDoubleType(VXTypeDoubleTypeOp operation, const char* name,
                             const std::function<double(double, double)>& expected) {
    for (const Voxel v : interestingVoxels<Voxel>()) {
      for (const double x : interestingDoubles) {
        expectResult(
            truncated<Voxel>(expected(x, static_cast<double>(v))), v,
            [&](auto* voxel, auto* result) { operation(x, voxel, result); }, name + (" of " + std::to_string(x)));
      }
    }
  }

  static void testTypeType(VXTypeTypeTypeOp operation, const char* name,
                           const std::function<Voxel(Voxel, Voxel)>& expected, bool skipZero = false) {
    for (const Voxel b : interestingVoxels<Voxel>()) {
      if (skipZero && b == 0) continue;
      GuardedVoxel<Voxel> second(b);
      for (const Voxel a : interestingVoxels<Voxel>()) {
        expectResult(
            expected(a, b), a, [&](auto* voxel, auto* result) { operation(voxel, second.data(), result); }, name);
        GuardedVoxel<Voxel> first(a);
        GuardedVoxel<Voxel> target(b);
        operation(first.data(), target.data(), target.data());
        expectSame(target.value(), expected(a, b), a, name + std::string(" over the second operand"));
      }
    }
  }

  // How a voxel and a number compare.
  template <class A, class B>
  static bool isEqual(A a, B b) {
    if constexpr (isInteger) {
      return castNumber<Voxel>(a) == castNumber<Voxel>(b);
    } else {
      using Common = decltype(a + b);
      return std::fabs(static_cast<Common>(a) - static_cast<Common>(b)) <
             (std::is_same_v<Voxel, float> ? 1.1754944e-38F : 2.2250738585072014e-308);
    }
  }
  template <class A, class B>
  static bool isSmaller(A a, B b) {
    if constexpr (isInteger) {
      return castNumber<Voxel>(a) < castNumber<Voxel>(b);
    } else {
      using Common = decltype(a + b);
      return static_cast<Common>(a) < static_cast<Common>(b);
    }
  }
};

using StandardTypes =
    testing::Types<char, unsigned char, short, unsigned short, int, unsigned int, float, double, long double, VXint64>;
}  // namespace vx::test

#endif
