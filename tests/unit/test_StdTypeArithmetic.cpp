// The arithmetic of the standard types, each operation over all ten types.

#include "MessageRecorder.h"
#include "StandardTypeFixture.h"

#include <cfloat>
#include <climits>
#include <cmath>
#include <tuple>

namespace {

using namespace vx::test;

template <class T>
class StdTypeArithmeticTest : public StandardTypeFixture<T> {};
TYPED_TEST_SUITE(StdTypeArithmeticTest, StandardTypes);

TYPED_TEST(StdTypeArithmeticTest, BitOperationsWorkAtTheWidthOfAnIntegerAndOnTheWholeNumberOtherwise) {
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

TYPED_TEST(StdTypeArithmeticTest, VoxelsShift) {
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

TYPED_TEST(StdTypeArithmeticTest, IntsShiftByTheLowFiveBitsOfTheVoxel) {
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

TYPED_TEST(StdTypeArithmeticTest, InvertNegateNormalize) {
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

TYPED_TEST(StdTypeArithmeticTest, SumsDifferencesAndProductsWrap) {
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

TYPED_TEST(StdTypeArithmeticTest, Quotients) {
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

TYPED_TEST(StdTypeArithmeticTest, DivisionByNearlyZeroIsFatal) {
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

TYPED_TEST(StdTypeArithmeticTest, Powers) {
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

TYPED_TEST(StdTypeArithmeticTest, FunctionsOfTheCLibrary) {
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

}  // namespace
