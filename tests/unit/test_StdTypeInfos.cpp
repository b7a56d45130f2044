// The operations of the standard types, each over all ten types and the operands at which types differ.

#include "MessageRecorder.h"
#include "StandardTypeReference.h"

#include "vxStdTypeInfos.h"
#include "vxUtilsAPI.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace {

using namespace vx::test;

template <class T>
class StdTypeOperationsTest : public testing::Test {
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
  template <class Function>
  static void expectResult(Voxel expected, Voxel operand, Function operation, const std::string& what) {
    GuardedVoxel<Voxel> voxel(operand);
    GuardedVoxel<Voxel> result;
    operation(voxel.data(), result.data());
    EXPECT_TRUE(isSame(result.value(), expected))
        << what << " on " << Printed<Voxel>{operand} << " gives " << Printed<Voxel>{result.value()} << " in place of "
        << Printed<Voxel>{expected};
    EXPECT_TRUE(isSame(voxel.value(), operand)) << what << " changes its operand";
    operation(voxel.data(), voxel.data());
    EXPECT_TRUE(isSame(voxel.value(), expected)) << what << " on " << Printed<Voxel>{operand} << " over the operand";
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
        EXPECT_TRUE(isSame(target.value(), expected(a, b))) << name << " over the second operand";
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
TYPED_TEST_SUITE(StdTypeOperationsTest, StandardTypes);

TYPED_TEST(StdTypeOperationsTest, LimitsAndDefaultAreWritten) {
  using S = typename TestFixture::Voxel;
  using Infos = typename TestFixture::StdInfos;
  const auto written = [](VXTypeSetOp operation) {
    GuardedVoxel<S> voxel(7);
    operation(voxel.data());
    return voxel.value();
  };
  EXPECT_EQ(written(this->record().setToMinimum), std::numeric_limits<S>::lowest());
  EXPECT_EQ(written(this->record().setToMaximum), std::numeric_limits<S>::max());
  EXPECT_EQ(written(this->record().setToDefault), S(0));
  EXPECT_EQ(Infos::_typeMin, static_cast<TypeParam>(std::numeric_limits<S>::lowest()));
  EXPECT_EQ(Infos::_typeMax, static_cast<TypeParam>(std::numeric_limits<S>::max()));
  EXPECT_EQ(Infos::_typeDefault, TypeParam(0));
}

TYPED_TEST(StdTypeOperationsTest, CopyKeepsEveryBit) {
  using S = typename TestFixture::Voxel;
  this->testUnary(this->record().copy, "copy", [](S v) { return v; });
  unsigned char bytes[sizeof(S)];
  unsigned char copy[sizeof(S)] = {};
  std::memset(bytes, 0xFF, sizeof bytes);
  this->record().copy(bytes, copy);
  EXPECT_EQ(std::memcmp(bytes, copy, sizeof bytes), 0);
}

TYPED_TEST(StdTypeOperationsTest, CastsToNumbers) {
  using S = typename TestFixture::Voxel;
  for (const S v : interestingVoxels<S>()) {
    GuardedVoxel<S> voxel(v);
    bool isTrue;
    if constexpr (TestFixture::isInteger) {
      isTrue = v != 0;
    } else {
      isTrue = std::fabs(v) >= (sizeof(S) == 4 ? S(1.1754944e-38) : S(2.2250738585072014e-308));
    }
    EXPECT_EQ(this->record().castToBool(voxel.data()), isTrue ? 1 : 0) << Printed<S>{v};
    EXPECT_EQ(this->record().castToInt(voxel.data()), castNumber<int>(v)) << Printed<S>{v};
    EXPECT_TRUE(isSame(this->record().castToDouble(voxel.data()), static_cast<double>(v))) << Printed<S>{v};
  }
}

TYPED_TEST(StdTypeOperationsTest, CastsFromNumbers) {
  using S = typename TestFixture::Voxel;
  for (const int x : interestingInts) {
    GuardedVoxel<S> voxel;
    this->record().castFromInt(x, voxel.data());
    EXPECT_TRUE(isSame(voxel.value(), castNumber<S>(x))) << x;
    const auto b = static_cast<short>(x);
    this->record().castFromBool(b, voxel.data());
    EXPECT_TRUE(isSame(voxel.value(), castNumber<S>(b))) << b;
  }
  for (const double x : interestingDoubles) {
    GuardedVoxel<S> voxel;
    this->record().castFromDouble(x, voxel.data());
    EXPECT_TRUE(isSame(voxel.value(), truncated<S>(x))) << x;
  }
}

TYPED_TEST(StdTypeOperationsTest, BitOperationsWorkAtTheWidthOfAnIntegerAndOnTheWholeNumberOtherwise) {
  using S = typename TestFixture::Voxel;
  const VXTypeInfos& record = this->record();
  const auto test = [&](auto typeInt, auto intType, auto typeType, auto function) {
    const auto expected = [&](auto a, auto b) {
      if constexpr (TestFixture::isInteger) {
        return lowBytes<S>(function(Exact{a}, Exact{b}));
      } else {
        return static_cast<S>(function(truncated<int>(static_cast<double>(a)), truncated<int>(static_cast<double>(b))));
      }
    };
    this->testTypeInt(typeInt, "bits with int", expected);
    this->testIntType(intType, "bits of int", expected);
    this->testTypeType(typeType, "bits", expected);
  };
  test(record.binaryAndInt, record.binaryIntAnd, record.binaryAnd, [](auto a, auto b) { return a & b; });
  test(record.binaryOrInt, record.binaryIntOr, record.binaryOr, [](auto a, auto b) { return a | b; });
  test(record.binaryXorInt, record.binaryIntXor, record.binaryXor, [](auto a, auto b) { return a ^ b; });
}

TYPED_TEST(StdTypeOperationsTest, VoxelsShift) {
  using S = typename TestFixture::Voxel;
  const auto shifted = [](S v, int n) -> S {  // to the left
    if constexpr (TestFixture::isInteger) {
      if (n >= 0) return lowBytes<S>(Exact{v} * twoTo(static_cast<unsigned int>(n)));
      const Exact power = twoTo(static_cast<unsigned int>(-n));
      return lowBytes<S>((Exact{v} - ((Exact{v} % power) + power) % power) / power);
    } else {
      return static_cast<S>(static_cast<double>(v) * std::pow(2.0, n));
    }
  };
  const std::vector<int> distances = {0, 1, 3, 7, 15, 31, -1, -3, -31};
  this->testTypeInt(this->record().shiftLeft, "shiftLeft", shifted, distances);
  this->testTypeInt(
      this->record().shiftRight, "shiftRight", [&](S v, int n) { return shifted(v, -n); }, distances);
  GuardedVoxel<S> voxel(5);
  this->record().shiftRight(voxel.data(), INT_MIN, voxel.data());
  if (TestFixture::isInteger) {
    EXPECT_EQ(voxel.value(), S(5)) << "low five bits of the distance";
  }
}

TYPED_TEST(StdTypeOperationsTest, IntsShiftByTheLowFiveBitsOfTheVoxel) {
  using S = typename TestFixture::Voxel;
  const auto distance = [](S v) { return static_cast<unsigned int>(lowBytes<unsigned int>(castNumber<int>(v)) % 32); };
  this->testIntType(this->record().shiftIntLeft, "shiftIntLeft",
                    [&](int x, S v) { return castNumber<S>(lowBytes<int>(x * twoTo(distance(v)))); });
  this->testIntType(this->record().shiftIntRight, "shiftIntRight", [&](int x, S v) {
    const Exact power = twoTo(distance(v));
    const Exact below = ((x % power) + power) % power;
    return castNumber<S>(static_cast<int>((x - below) / power));
  });
}

TYPED_TEST(StdTypeOperationsTest, ComparisonsCastTheNumberToAnIntegerTypeFirst) {
  using S = typename TestFixture::Voxel;
  const VXTypeInfos& record = this->record();
  using F = TestFixture;
  for (const S v : interestingVoxels<S>()) {
    GuardedVoxel<S> voxel(v);
    const unsigned char* const p = voxel.data();
    const auto testNumber = [&](auto x, auto equal, auto equalTo, auto smaller, auto smallerThan, auto greater,
                                auto greaterThan) {
      const auto what = [&] { return testing::Message() << Printed<S>{v} << " and " << x; };
      EXPECT_EQ(equal(p, x), F::isEqual(v, x)) << what();
      EXPECT_EQ(equalTo(x, p), F::isEqual(x, v)) << what();
      EXPECT_EQ(smaller(p, x), F::isSmaller(v, x)) << what();
      EXPECT_EQ(smallerThan(x, p), F::isSmaller(x, v)) << what();
      EXPECT_EQ(greater(p, x), F::isSmaller(x, v)) << what();
      EXPECT_EQ(greaterThan(x, p), F::isSmaller(v, x)) << what();
    };
    for (const int x : interestingInts) {
      testNumber(x, record.isEqualToInt, record.isIntEqualTo, record.isSmallerThanInt, record.isIntSmallerThan,
                 record.isGreaterThanInt, record.isIntGreaterThan);
    }
    for (const double x : interestingDoubles) {
      testNumber(x, record.isEqualToDouble, record.isDoubleEqualTo, record.isSmallerThanDouble,
                 record.isDoubleSmallerThan, record.isGreaterThanDouble, record.isDoubleGreaterThan);
    }
    for (const S w : interestingVoxels<S>()) {
      GuardedVoxel<S> second(w);
      EXPECT_EQ(record.isEqualToType(p, second.data()), F::isEqual(v, w));
      EXPECT_EQ(record.isSmallerThanType(p, second.data()), F::isSmaller(v, w));
      EXPECT_EQ(record.isGreaterThanType(p, second.data()), F::isSmaller(w, v));
    }
  }
}

TYPED_TEST(StdTypeOperationsTest, InvertNegateNormalize) {
  using S = typename TestFixture::Voxel;
  this->testUnary(this->record().invert, "invert", [](S v) -> S {
    if constexpr (TestFixture::isInteger) {
      if (v == 0) return std::numeric_limits<S>::max();
      return v == 1 ? S(1) : std::is_signed_v<S> && v == S(-1) ? S(-1) : S(0);
    } else {
      if (std::fabs(v) < std::numeric_limits<S>::min()) return std::numeric_limits<S>::max();
      return 1 / v;
    }
  });
  this->testUnary(this->record().negate, "negate", [](S v) -> S {
    if constexpr (TestFixture::isInteger) {
      return std::is_unsigned_v<S> ? v : lowBytes<S>(-Exact{v});
    } else {
      return -v;
    }
  });
  this->testUnary(this->record().normalize, "normalize", [](S) { return S(1); });
}

TYPED_TEST(StdTypeOperationsTest, SumsDifferencesAndProductsWrap) {
  using S = typename TestFixture::Voxel;
  using F = TestFixture;
  const VXTypeInfos& record = this->record();
  const auto sum = [](auto a, auto b) { return a + b; };
  const auto difference = [](auto a, auto b) { return a - b; };
  const auto reverse = [](auto a, auto b) { return b - a; };
  const auto product = [](auto a, auto b) { return a * b; };

  this->testTypeInt(record.plusInt, "plusInt", [&](S v, int x) { return F::computed(v, x, sum); });
  this->testIntType(record.intPlus, "intPlus", [&](int x, S v) { return F::computed(v, x, sum); });
  this->testTypeDouble(record.plusDouble, "plusDouble", sum);
  this->testDoubleType(record.doublePlus, "doublePlus", sum);
  this->testTypeType(record.plusType, "plusType", [&](S a, S b) { return F::computed(a, b, sum); });

  this->testTypeInt(record.minusInt, "minusInt", [&](S v, int x) { return F::computed(v, x, difference); });
  this->testIntType(record.intMinus, "intMinus", [&](int x, S v) { return F::computed(v, x, reverse); });
  this->testTypeDouble(record.minusDouble, "minusDouble", difference);
  this->testDoubleType(record.doubleMinus, "doubleMinus", difference);
  this->testTypeType(record.minusType, "minusType", [&](S a, S b) { return F::computed(a, b, difference); });

  this->testTypeInt(record.multWithInt, "multWithInt", [&](S v, int x) { return F::computed(v, x, product); });
  this->testIntType(record.multIntWith, "multIntWith", [&](int x, S v) { return F::computed(v, x, product); });
  this->testTypeDouble(record.multWithDouble, "multWithDouble", product);
  this->testDoubleType(record.multDoubleWith, "multDoubleWith", product);
  this->testTypeType(record.multWithType, "multWithType", [&](S a, S b) { return F::computed(a, b, product); });
}

TYPED_TEST(StdTypeOperationsTest, Quotients) {
  using S = typename TestFixture::Voxel;
  using F = TestFixture;
  const VXTypeInfos& record = this->record();
  this->testTypeInt(record.divByInt, "divByInt", [](S v, int x) -> S {
    if (x == 0) return std::numeric_limits<S>::max();
    if constexpr (F::isInteger) {
      return F::quotient(v, x);
    } else {
      return v / static_cast<S>(x);
    }
  });
  this->testIntType(
      record.divIntBy, "divIntBy",
      [](int x, S v) -> S {
        if constexpr (F::isInteger) {
          return F::quotient(x, v);
        } else {
          return static_cast<S>(x) / v;
        }
      },
      F::isInteger);
  this->testTypeType(
      record.divByType, "divByType",
      [](S a, S b) -> S {
        if constexpr (F::isInteger) {
          return lowBytes<S>(Exact{a} / Exact{b});
        } else {
          return a / b;
        }
      },
      F::isInteger);
  const auto quotient = [](double a, double b) { return a / b; };
  this->testTypeDouble(record.divByDouble, "divByDouble", quotient, 1e-06);
  this->testDoubleType(record.divDoubleBy, "divDoubleBy", quotient);
}

TYPED_TEST(StdTypeOperationsTest, DivisionByNearlyZeroIsFatal) {
  using S = typename TestFixture::Voxel;
  for (const double x : {1e-07, -1e-07, 0.0, -0.0, 9.9e-07, DBL_MIN}) {
    MessageRecorder recorder;
    GuardedVoxel<S> voxel(5);
    GuardedVoxel<S> result(3);
    try {
      this->record().divByDouble(voxel.data(), x, result.data());
      ADD_FAILURE() << x;
    } catch (int code) {
      EXPECT_EQ(code, 41);
    }
    EXPECT_EQ(result.value(), S(3));
    const auto messages = recorder.take();
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0].type, VX_FATAL);
    EXPECT_EQ(messages[0].code, VX_BAD_POINTER);
  }
  GuardedVoxel<S> voxel(1);
  this->record().divByDouble(voxel.data(), 1e-06, voxel.data());
  EXPECT_EQ(voxel.value(), truncated<S>(1 / 1e-06));
}

TYPED_TEST(StdTypeOperationsTest, Powers) {
  using S = typename TestFixture::Voxel;
  const VXTypeInfos& record = this->record();
  this->testTypeInt(record.powerOfInt, "powerOfInt",
                    [](S v, int n) {
                      const auto base = static_cast<double>(v);
                      const double power = n == 0             ? 1.0
                                           : std::abs(n) == 1 ? base
                                           : std::abs(n) == 2 ? base * base
                                                              : base * base * base;
                      return truncated<S>(n < 0 ? 1 / power : power);
                    },
                    {0, 1, 2, 3, -1, -2, -3});
  for (const auto& [base, exponent, power] :
       {std::tuple(0, INT_MIN, infinity), std::tuple(1, INT_MIN, 1.0), std::tuple(0, INT_MAX, 0.0),
        std::tuple(1, INT_MAX, 1.0), std::tuple(2, 30, 1073741824.0), std::tuple(2, 31, 2147483648.0)}) {
    const int n = exponent;
    this->expectResult(
        truncated<S>(power), S(base), [&](auto* voxel, auto* result) { record.powerOfInt(voxel, n, result); },
        "powerOfInt");
  }
  const auto power = [](auto a, auto b) { return std::pow(static_cast<double>(a), static_cast<double>(b)); };
  this->testTypeDouble(record.powerOfDouble, "powerOfDouble", power);
  this->testDoubleType(record.powerDoubleOf, "powerDoubleOf", power);
  this->testIntType(record.powerIntOf, "powerIntOf", [&](int x, S v) { return truncated<S>(power(x, v)); });
  this->testTypeType(record.powerOfType, "powerOfType", [&](S a, S b) { return truncated<S>(power(a, b)); });
}

TYPED_TEST(StdTypeOperationsTest, FunctionsOfTheCLibrary) {
  using S = typename TestFixture::Voxel;
  const VXTypeInfos& record = this->record();
  const std::tuple<VXTypeUnaryOp, double (*)(double), const char*> functions[] = {
      {record.sinOfType, &::sin, "sin"},    {record.cosOfType, &::cos, "cos"},    {record.tanOfType, &::tan, "tan"},
      {record.asinOfType, &::asin, "asin"}, {record.acosOfType, &::acos, "acos"}, {record.atanOfType, &::atan, "atan"},
      {record.sinhOfType, &::sinh, "sinh"}, {record.coshOfType, &::cosh, "cosh"}, {record.tanhOfType, &::tanh, "tanh"},
      {record.expOfType, &::exp, "exp"},    {record.logOfType, &::log, "log"},    {record.sqrtOfType, &::sqrt, "sqrt"}};
  for (const auto& [operation, function, name] : functions) {
    const auto computed = function;
    this->testUnary(operation, name, [computed](S v) { return truncated<S>(computed(static_cast<double>(v))); });
  }
}

TYPED_TEST(StdTypeOperationsTest, AnotherTypeIsCastToThisOne) {
  using S = typename TestFixture::Voxel;
  const VXTypeInfos& record = this->record();
  const VXTypeInfos* const other = VXGetTypeInfosForDataType(VXdoubleType);
  GuardedVoxel<double> second(2.5);
  const S b = truncated<S>(2.5);
  const auto test = [&](VXTypeOtherTypeOp operation, S expected, const char* name) {
    this->expectResult(
        expected, S(7), [&](auto* voxel, auto* result) { operation(other, second.data(), voxel, result); }, name);
  };
  test(record.plusOtherType, S(7 + b), "plusOtherType");
  test(record.minusOtherType, S(7 - b), "minusOtherType");
  test(record.multWithOtherType, S(7 * b), "multWithOtherType");
  test(record.divByOtherType, S(7 / b), "divByOtherType");
  test(record.powerOfOtherType, truncated<S>(std::pow(7.0, static_cast<double>(b))), "powerOfOtherType");

  GuardedVoxel<S> seven(7);
  EXPECT_EQ(record.isEqualToOtherType(other, second.data(), seven.data()), 0);
  EXPECT_EQ(record.isSmallerThanOtherType(other, second.data(), seven.data()), 0);
  EXPECT_EQ(record.isGreaterThanOtherType(other, second.data(), seven.data()), 1);
  GuardedVoxel<S> same(b);
  EXPECT_EQ(record.isEqualToOtherType(other, second.data(), same.data()), 1);
  GuardedVoxel<S> one(1);
  EXPECT_EQ(record.isSmallerThanOtherType(other, second.data(), one.data()), 1);

  GuardedVoxel<double> asDouble;
  record.castToOtherType(seven.data(), other, asDouble.data());
  EXPECT_EQ(asDouble.value(), 7.0);
  record.castFromOtherType(other, second.data(), seven.data());
  EXPECT_EQ(seven.value(), b);
}

TYPED_TEST(StdTypeOperationsTest, TextsAreWrittenAndReadWithTheDefaultForBadOnes) {
  using S = typename TestFixture::Voxel;
  const VXTypeInfos& record = this->record();
  GuardedVoxel<S> voxel(42);
  char* const text = record.getStringValue(voxel.data());
  EXPECT_STREQ(text, "42");
  VXFree(text);
  record.setStringValue(" 17", voxel.data());
  EXPECT_EQ(voxel.value(), S(17));
  record.setStringValue("x", voxel.data());
  EXPECT_EQ(voxel.value(), S(0));
}

TYPED_TEST(StdTypeOperationsTest, RecordHoldsTheOperationsUnderTheirNames) {
  using Infos = typename TestFixture::StdInfos;
  int numOperations = 0;
#define VX_CHECK(member, ...)                                           \
  EXPECT_EQ(this->record().member, &Infos::VXTYPE_##member) << #member; \
  ++numOperations;
#define VX_CHECK_WITH_PROPERTY(member, Name, signature, word, bit, reported) \
  VX_CHECK(member, Name)                                                     \
  EXPECT_EQ(VXTypePropBitsTest(this->record().propertyBits, VXTypeHas##Name), 1) << #member;
  VX_FOR_EACH_TYPE_OPERATION(VX_CHECK_WITH_PROPERTY, VX_CHECK)
#undef VX_CHECK
#undef VX_CHECK_WITH_PROPERTY
  EXPECT_EQ(numOperations, 90);
  EXPECT_EQ(VXTypePropBitsTest(this->record().propertyBits, VXTypeOnlyStandardTypes), 1);
}

// Records ------------------------------------------------------------------------------------------------------------

// Opens the protected members without making an object, which would be one too many.
template <class T>
struct Opened : VXTStdTypeInfos<T> {
  static VXDataType equivalent() { return Opened::_rangeAndPrecisionEquiv(T(0)); }
  static std::vector<std::string> goodCasts() {
    VXuint64 count = 77;
    const char** names = nullptr;
    Opened::_getGoodCastTos(T(0), count, names);
    return {names, names + count};
  }
};

template <class T>
void expectRecord(VXDataType number, const char* name, const char* code, VXuint32 size, double smallest, double largest,
                  bool isSigned, const std::vector<std::string>& goodCasts) {
  SCOPED_TRACE(name);
  using Infos = VXTStdTypeInfos<T>;
  ASSERT_NE(Infos::_myInfos, nullptr);
  const VXTypeInfos& record = *Infos::_myInfos;
  EXPECT_EQ(VXTypeInfosAtIdx(number), Infos::_myInfos);
  EXPECT_EQ(Infos::_numInstances, 1);
  EXPECT_STREQ(Infos::typeName(nullptr), name);
  EXPECT_STREQ(Infos::_typeInfoString, code);
  EXPECT_EQ(Opened<T>::equivalent(), number);
  EXPECT_EQ(Opened<T>::goodCasts(), goodCasts);

  EXPECT_EQ(record.numComponents, 1U);
  EXPECT_EQ(record.typeSize, size);
  EXPECT_EQ(record.physicalType, number);
  EXPECT_EQ(record.physicalSize, size);
  EXPECT_STREQ(record.name, name);
  EXPECT_EQ(record.rangeAndPrecisionEquivalent, number);
  EXPECT_EQ(record.typeMinDbl, smallest);
  EXPECT_EQ(record.typeMaxDbl, largest);
  EXPECT_EQ(record.castToDouble(record.typeMinPtr), smallest);
  EXPECT_EQ(record.castToDouble(record.typeMaxPtr), largest);
  EXPECT_EQ(record.castToDouble(record.typeDefaultPtr), 0.0);
  EXPECT_EQ(std::vector<std::string>(record.goodCastTos, record.goodCastTos + record.numGoodCastTos), goodCasts);
  EXPECT_EQ(record.componentOffsets[0], 0U);
  EXPECT_STREQ(record.structInfoString, code);
  EXPECT_EQ(record.dataType, number);
  const bool isFloat = number >= VXfloatType && number <= VXldoubleType;
  EXPECT_EQ(VXTypePropBitsTest(record.propertyBits, VXTypeIsSignedType), isSigned);
  EXPECT_EQ(VXTypePropBitsTest(record.propertyBits, VXTypeIsFloatingPointType), isFloat);
  EXPECT_EQ(VXTypePropBitsTest(record.propertyBits, VXTypeIsIntegerType), !isFloat);
  EXPECT_EQ(VXTypePropBitsTest(record.propertyBits, VXTypeIsBasicType), 1);
  EXPECT_EQ(std::memcmp(&VXTypeInfosTable[number], &record, sizeof record), 0) << "slot of the type";
}

TEST(StdTypeInfosTest, RecordsDescribeTheTenTypes) {
  ASSERT_EQ(VXInitializeTypes(), 1);
  expectRecord<char>(0, "int8", "C", 1, -128, 127, true, {"int16", "int32", "float", "double", "long double", "int64"});
  expectRecord<unsigned char>(
      1, "unsigned int8", "c", 1, 0, 255, false,
      {"int16", "unsigned int16", "int32", "unsigned int32", "float", "double", "long double", "int64"});
  expectRecord<short>(2, "int16", "S", 2, -32768, 32767, true, {"int32", "float", "double", "long double", "int64"});
  expectRecord<unsigned short>(3, "unsigned int16", "s", 2, 0, 65535, false,
                               {"int32", "unsigned int32", "float", "double", "long double", "int64"});
  expectRecord<int>(4, "int32", "I", 4, -2147483648.0, 2147483647.0, true, {"float", "double", "long double", "int64"});
  expectRecord<unsigned int>(5, "unsigned int32", "i", 4, 0, 4294967295.0, false,
                             {"float", "double", "long double", "int64"});
  expectRecord<float>(6, "float", "f", 4, -3.4028234663852886e+38, 3.4028234663852886e+38, true,
                      {"double", "long double"});
  expectRecord<double>(7, "double", "d", 8, -1.7976931348623157e+308, 1.7976931348623157e+308, true, {"long double"});
  expectRecord<long double>(8, "long double", "D", 8, -1.7976931348623157e+308, 1.7976931348623157e+308, true, {});
  expectRecord<VXint64>(9, "int64", "6", 8, -9223372036854775808.0, 9223372036854775808.0, true,
                        {"float", "double", "long double"});
}

TEST(StdTypeInfosTest, SecondStartChangesNothing) {
  ASSERT_EQ(VXInitializeTypes(), 1);
  MessageRecorder recorder;
  const VXTypeInfos* const record = VXTStdTypeInfos<short>::_myInfos;
  const VXint32 numTypes = VXNumDataTypes();
  EXPECT_EQ(VXInitializeTypes(), 1);
  EXPECT_EQ(VXAreTypesInitialized(), 1);
  EXPECT_EQ(VXNumDataTypes(), numTypes);
  EXPECT_EQ(VXTStdTypeInfos<short>::_myInfos, record);
  EXPECT_EQ(VXTStdTypeInfos<short>::_numInstances, 1);
  EXPECT_TRUE(recorder.take().empty());
}

TEST(StdTypeInfosTest, SecondObjectIsFatalAndTheFirstRecordStays) {
  ASSERT_EQ(VXInitializeTypes(), 1);
  VXTypeInfos* const record = VXTStdTypeInfos<long double>::_myInfos;
  const VXTypeInfos before = *record;
  MessageRecorder recorder;
  {
    const VXTStdTypeInfos<long double> second;
    static_cast<void>(second);
  }
  EXPECT_EQ(recorder.take(), (std::vector<Message>{{VX_FATAL, VX_MISUSED_INTERFACE, "VXTStdTypeInfos",
                                                    "Too many instances of VXTStdTypeInfos created."}}));
  EXPECT_EQ(VXTStdTypeInfos<long double>::_myInfos, record);
  EXPECT_EQ(VXTStdTypeInfos<long double>::_numInstances, 1);
  EXPECT_EQ(std::memcmp(record, &before, sizeof before), 0);
}

// Values that are easy to get wrong ----------------------------------------------------------------------------------

template <class S>
S resultOf(const std::function<void(unsigned char*, unsigned char*)>& operation, S operand) {
  GuardedVoxel<S> voxel(operand);
  GuardedVoxel<S> result;
  operation(voxel.data(), result.data());
  return result.value();
}

TEST(StdTypeInfosTest, EdgeCases) {
  ASSERT_EQ(VXInitializeTypes(), 1);
  using Uchar = VXTStdTypeInfos<unsigned char>;
  EXPECT_EQ(resultOf<double>(VXTStdTypeInfos<double>::VXTYPE_normalize, 0), 1.0);
  EXPECT_EQ(resultOf<unsigned char>(Uchar::VXTYPE_negate, 5), 5);
  EXPECT_EQ(resultOf<unsigned char>(Uchar::VXTYPE_invert, 0), 255);
  EXPECT_EQ(resultOf<unsigned char>(Uchar::VXTYPE_invert, 1), 1);
  EXPECT_EQ(resultOf<unsigned char>(Uchar::VXTYPE_invert, 2), 0);
  EXPECT_EQ(resultOf<char>([](auto* v, auto* r) { VXTStdTypeInfos<char>::VXTYPE_divByInt(v, 0, r); }, 5), 127);
  EXPECT_EQ(resultOf<double>([](auto* v, auto* r) { VXTStdTypeInfos<double>::VXTYPE_powerOfInt(v, -2, r); }, 2), 0.25);
  EXPECT_EQ(resultOf<int>([](auto* v, auto* r) { VXTStdTypeInfos<int>::VXTYPE_divByInt(v, -1, r); }, INT_MIN), INT_MIN);
  GuardedVoxel<unsigned char> two(2);
  EXPECT_EQ(Uchar::VXTYPE_isEqualToDouble(two.data(), 2.9), 1);
  GuardedVoxel<unsigned char> twoHundred(200);
  EXPECT_EQ(Uchar::VXTYPE_isSmallerThanDouble(twoHundred.data(), 300.0), 0);
  GuardedVoxel<VXint64> large(4294967296);
  EXPECT_EQ(VXTStdTypeInfos<VXint64>::VXTYPE_castToInt(large.data()), 0);
}

}  // namespace
