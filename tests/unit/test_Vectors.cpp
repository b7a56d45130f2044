#include "MessageRecorder.h"

#include "vxLinearAlgebraTools.h"
#include "vxVec10.h"
#include "vxVec16.h"
#include "vxVec2.h"
#include "vxVec3.h"
#include "vxVec32.h"
#include "vxVec4.h"
#include "vxVec5.h"
#include "vxVec6.h"
#include "vxVec64.h"
#include "vxVec7.h"
#include "vxVec8.h"
#include "vxVec9.h"
#include "vxVector.h"

#include <gtest/gtest.h>
#include <limits>
#include <sstream>
#include <type_traits>
#include <vector>

namespace vx::test {
namespace {

using Messages = std::vector<Message>;
using V = TVector<VXint64>;

constexpr VXint64 maxInt64 = std::numeric_limits<VXint64>::max();
constexpr VXint64 minInt64 = std::numeric_limits<VXint64>::min();

// Runs what must end in a fatal check: one fatal message from the header, and its code thrown.
template <class Block>
void expectFatalBadPointer(Block block) {
  MessageRecorder recorder;
  int thrown = 0;
  try {
    block();
  } catch (int code) {
    thrown = code;
  }
  EXPECT_EQ(thrown, 41);
  const Messages messages = recorder.take();
  ASSERT_EQ(messages.size(), 1U);
  EXPECT_EQ(messages[0].type, VX_FATAL);
  EXPECT_EQ(messages[0].code, 41);
  EXPECT_NE(messages[0].file.find("vxVector.h"), std::string::npos) << messages[0].file;
}

// The six-component integer vector ---------------------------------------------------------------------------------

static_assert(std::is_trivially_copyable_v<V> && std::is_standard_layout_v<V> && sizeof(V) == 6 * sizeof(VXint64));
static_assert(V() == V(0, 0, 0, 0, 0, 0));
static_assert(V(1, 2, 3, 4, 5, 6) + V(1) == V(2, 3, 4, 5, 6, 7));
static_assert(V(7, 6, 5, 4, 3, 2).getStrides() == V(1, 7, 42, 210, 840, 2520));

TEST(VectorTest, ComponentsAreNamedStoredAndIndexedFromXToU) {
  V v(1, 2, 3, 4, 5, 6);
  EXPECT_EQ(v.x, 1);
  EXPECT_EQ(v.y, 2);
  EXPECT_EQ(v.z, 3);
  EXPECT_EQ(v.c, 4);
  EXPECT_EQ(v.t, 5);
  EXPECT_EQ(v.u, 6);
  EXPECT_EQ(offsetof(V, x), 0U);
  EXPECT_EQ(offsetof(V, y), 8U);
  EXPECT_EQ(offsetof(V, z), 16U);
  EXPECT_EQ(offsetof(V, c), 24U);
  EXPECT_EQ(offsetof(V, t), 32U);
  EXPECT_EQ(offsetof(V, u), 40U);
  for (std::size_t i = 0; i < v.size(); ++i) EXPECT_EQ(v[i], VXint64(i) + 1);
  v[3] = 40;
  EXPECT_EQ(v, V(1, 2, 3, 40, 5, 6));
}

TEST(VectorTest, ArrayConstructorFillsWhatTheArrayLacksWithTheDefault) {
  const VXint64 values[] = {1, 2, 3, 4, 5, 6, 7};
  EXPECT_EQ(V(0, values, 9), V(9, 9, 9, 9, 9, 9));
  EXPECT_EQ(V(-3, values, 9), V(9, 9, 9, 9, 9, 9));
  EXPECT_EQ(V(2, values, 9), V(1, 2, 9, 9, 9, 9));
  EXPECT_EQ(V(6, values, 9), V(1, 2, 3, 4, 5, 6));
  EXPECT_EQ(V(maxInt64, values, 9), V(1, 2, 3, 4, 5, 6));
}

TEST(VectorTest, CopyWritesTheFirstComponentsAndNoMore) {
  const V v(1, 2, 3, 4, 5, 6);
  VXint64 values[8] = {0, 0, 0, 0, 0, 0, 0, 0};
  v.copy(0, values);
  v.copy(-1, values);
  EXPECT_EQ(values[0], 0);
  v.copy(2, values);
  EXPECT_EQ(V(6, values, 0), V(1, 2, 0, 0, 0, 0));
  v.copy(100, values);
  EXPECT_EQ(V(6, values, 0), v);
  EXPECT_EQ(values[6], 0);
}

TEST(VectorTest, NullArraysAreFatalEvenForNoComponents) {
  expectFatalBadPointer([] { V(0, nullptr, 1); });
  expectFatalBadPointer([] { V(3, nullptr, 1); });
  expectFatalBadPointer([] { V().copy(0, nullptr); });
  expectFatalBadPointer([] { V().copy(6, nullptr); });
}

TEST(VectorTest, ArithmeticWorksOnEachComponent) {
  const V a(1, -2, 3, -4, 5, -6);
  const V b(10, 20, 30, 40, 50, 60);
  EXPECT_EQ(a + b, V(11, 18, 33, 36, 55, 54));
  EXPECT_EQ(a - b, V(-9, -22, -27, -44, -45, -66));
  EXPECT_EQ(a * b, V(10, -40, 90, -160, 250, -360));
  EXPECT_EQ(a * 3, V(3, -6, 9, -12, 15, -18));
  EXPECT_EQ(3 * a, a * 3);
  EXPECT_EQ(-a, V(-1, 2, -3, 4, -5, 6));
  EXPECT_EQ(dot(a, b), 10 - 40 + 90 - 160 + 250 - 360);
  EXPECT_EQ(compMin(a, -a), V(-1, -2, -3, -4, -5, -6));
  EXPECT_EQ(compMax(a, -a), V(1, 2, 3, 4, 5, 6));
  EXPECT_EQ(V(2, 3, 4, 5, 6, 7).getProduct(), 5040);
  EXPECT_TRUE(a != b);
  for (std::size_t i = 0; i < 6; ++i) {
    V other = a;
    other[i] += 1;
    EXPECT_FALSE(a == other) << i;
  }
}

TEST(VectorTest, ArithmeticWrapsAround) {
  EXPECT_EQ(V(maxInt64) + V(1), V(minInt64));
  EXPECT_EQ(V(minInt64) - V(1), V(maxInt64));
  EXPECT_EQ(V(maxInt64) * V(2), V(-2));
  EXPECT_EQ(-V(minInt64), V(minInt64));
  EXPECT_EQ(V(minInt64) / V(-1), V(minInt64));
  EXPECT_EQ(V(VXint64{1} << 32).getProduct(), 0);
  EXPECT_EQ(dot(V(maxInt64), V(1)), -6);
}

TEST(VectorTest, DivisionTruncates) {
  EXPECT_EQ(V(7, -7, 7, -7, 0, 6) / V(2, 2, -2, -2, 5, 7), V(3, -3, -3, 3, 0, 0));
  V v(100);
  v /= V(1, 2, 3, 4, 5, 6);
  EXPECT_EQ(v, V(100, 50, 33, 25, 20, 16));
  EXPECT_EQ(v / 10, V(10, 5, 3, 2, 2, 1));
}

TEST(VectorTest, ZeroDivisorIsFatalBeforeAnyComponentChanges) {
  for (std::size_t i = 0; i < 6; ++i) {
    V divisor(2);
    divisor[i] = 0;
    V v(100);
    expectFatalBadPointer([&] { v /= divisor; });
    EXPECT_EQ(v, V(100));
    expectFatalBadPointer([&] { (void)(v / divisor); });
    expectFatalBadPointer([&] { (void)divCeil(v, divisor); });
    expectFatalBadPointer([&] { (void)divisor.getVectorPosition(1); });
  }
}

TEST(VectorTest, StridesAreTheRunningProductWithoutU) {
  EXPECT_EQ(V(3, 5, 7, 11, 13, 17).getStrides(1), V(1, 3, 15, 105, 1155, 15015));
  EXPECT_EQ(V(3, 5, 7, 11, 13, 17).getStrides(2), V(2, 6, 30, 210, 2310, 30030));
  EXPECT_EQ(V(3, 0, 7, 11, 13, 17).getStrides(), V(1, 3, 0, 0, 0, 0));
}

TEST(VectorTest, LinearIndexIsTakenApartFromTheHighestDimension) {
  const V strides = V(3, 5, 7, 11, 13, 17).getStrides();
  for (const V& position : {V(0), V(2, 4, 6, 10, 12, 16), V(1, 0, 5, 3, 0, 2), V(0, 0, 0, 0, 0, 40)}) {
    EXPECT_EQ(strides.getVectorPosition(dot(position, strides)), position);
  }
  EXPECT_EQ(V(2, 10, 100, 1000, 10000, 100000).getVectorPosition(654329), V(4, 2, 3, 4, 5, 6));
  EXPECT_EQ(V(-1).getVectorPosition(minInt64), V(0, 0, 0, 0, 0, minInt64));
}

TEST(VectorTest, CeilingDivisionCountsPages) {
  EXPECT_EQ(divCeil(V(0, 1, 127, 128, 129, 1000), V(128)), V(0, 1, 1, 1, 2, 8));
  EXPECT_EQ(divCeil(V(-1, -127, -129, 7, -7, 7), V(128, 128, 128, -2, -2, 7)), V(0, 0, -1, -3, 4, 1));
}

TEST(VectorTest, CeilingDivisionPassesThroughSinglePrecision) {
  EXPECT_EQ(divCeil(V(16777217, 16777216, 16777219, 1, 33554435, 16777217), V(1, 1, 1, 1, 2, 16777216)),
            V(16777216, 16777216, 16777220, 1, 16777218, 1));
  EXPECT_EQ(divCeil(V(minInt64), V(1)), V(minInt64));
}

#if __LDBL_MANT_DIG__ >= 64
TEST(VectorTest, CeilingDivisionRoundsTheExtendedQuotientOnce) {
  // Just above the middle of two numbers of single precision; by way of a double it would become the middle itself,
  // and be rounded down.
  const VXint64 quotient = (VXint64{1} << 62) + (VXint64{1} << 38) + 1;
  EXPECT_EQ(divCeil(V(quotient), V(1)), V((VXint64{1} << 62) + (VXint64{1} << 39)));
}
#endif

TEST(VectorTest, CeilingDivisionBeyondTheRangeGivesTheMinimum) {
  EXPECT_EQ(divCeil(V(maxInt64), V(1)), V(minInt64));
  EXPECT_EQ(divCeil(V(minInt64), V(-1)), V(minInt64));
}

TEST(VectorTest, IsWrittenInParentheses) {
  std::ostringstream stream;
  stream << V(1, -2, 3, 4, 5, 6);
  EXPECT_EQ(stream.str(), "(1,-2,3,4,5,6)");
}

// Floating point vectors of all sizes --------------------------------------------------------------------------------

template <class Vec>
class VecTest : public ::testing::Test {};
using AllVecs =
    ::testing::Types<Tvec2<double>, Tvec3<double>, Tvec4<double>, Tvec5<double>, Tvec6<double>, Tvec7<double>,
                     Tvec8<double>, Tvec9<double>, Tvec10<double>, Tvec16<double>, Tvec32<double>, Tvec64<double>>;
TYPED_TEST_SUITE(VecTest, AllVecs);

TEST(VecSizeTest, SizesAreThoseOfTheNames) {
  EXPECT_EQ(sizeof(Tvec2<double>), 2 * sizeof(double));
  EXPECT_EQ(sizeof(Tvec3<double>), 3 * sizeof(double));
  EXPECT_EQ(sizeof(Tvec4<double>), 4 * sizeof(double));
  EXPECT_EQ(sizeof(Tvec5<double>), 5 * sizeof(double));
  EXPECT_EQ(sizeof(Tvec6<double>), 6 * sizeof(double));
  EXPECT_EQ(sizeof(Tvec7<double>), 7 * sizeof(double));
  EXPECT_EQ(sizeof(Tvec8<double>), 8 * sizeof(double));
  EXPECT_EQ(sizeof(Tvec9<double>), 9 * sizeof(double));
  EXPECT_EQ(sizeof(Tvec10<double>), 10 * sizeof(double));
  EXPECT_EQ(sizeof(Tvec16<double>), 16 * sizeof(double));
  EXPECT_EQ(sizeof(Tvec32<double>), 32 * sizeof(double));
  EXPECT_EQ(sizeof(Tvec64<double>), 64 * sizeof(double));
}

// (first, first + 1, first + 2, ...)
template <class Vec>
Vec count(double first) {
  Vec v;
  for (std::size_t i = 0; i < v.size(); ++i) v[i] = first + double(i);
  return v;
}

TYPED_TEST(VecTest, IsAPlainContiguousValueOfZeros) {
  EXPECT_TRUE(std::is_trivially_copyable_v<TypeParam> && std::is_standard_layout_v<TypeParam>);
  const TypeParam v;
  for (std::size_t i = 0; i < v.size(); ++i) EXPECT_EQ(v[i], 0.);
  EXPECT_EQ(&v[v.size() - 1] - &v[0], std::ptrdiff_t(v.size()) - 1);
  EXPECT_EQ(static_cast<const void*>(&v), static_cast<const void*>(v.data()));
}

TYPED_TEST(VecTest, ArithmeticWorksOnEachComponent) {
  const TypeParam a = count<TypeParam>(1.);
  const TypeParam b = count<TypeParam>(-3.);
  const TypeParam one(1.);
  double sum = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    EXPECT_EQ((a + b)[i], a[i] + b[i]);
    EXPECT_EQ((a - b)[i], 4.);
    EXPECT_EQ((a * 2)[i], 2 * a[i]);
    EXPECT_EQ((2 * a)[i], 2 * a[i]);
    EXPECT_EQ((a / 3)[i], a[i] / 3);
    EXPECT_EQ((-a)[i], -a[i]);
    EXPECT_EQ(compMin(a, b)[i], b[i]);
    EXPECT_EQ(compMax(a, b)[i], a[i]);
    sum += a[i] * b[i];
  }
  EXPECT_EQ(dot(a, b), sum);
  EXPECT_EQ(a * b, sum);
  EXPECT_EQ(one.lengthSquared(), double(one.size()));
  EXPECT_EQ(one.length(), std::sqrt(double(one.size())));
  EXPECT_DOUBLE_EQ(a.normalized().length(), 1.);
  EXPECT_EQ(TypeParam().normalized(), TypeParam());
}

TYPED_TEST(VecTest, ComparisonSeesEveryComponent) {
  const TypeParam a = count<TypeParam>(1.);
  EXPECT_TRUE(a == count<TypeParam>(1.));
  for (std::size_t i = 0; i < a.size(); ++i) {
    TypeParam other = a;
    other[i] = std::nextafter(other[i], 100.);
    EXPECT_TRUE(a != other) << i;
    EXPECT_FALSE(a == other) << i;
  }
}

TYPED_TEST(VecTest, IsMadeFromAnArray) {
  const TypeParam a = count<TypeParam>(5.);
  EXPECT_EQ(TypeParam(a.data()), a);
}

TEST(Vec3Test, CrossProductIsRightHanded) {
  EXPECT_EQ(cross(vec3(1, 0, 0), vec3(0, 1, 0)), vec3(0, 0, 1));
  EXPECT_EQ(vec3(1, 2, 3).cross(vec3(4, 5, 6)), vec3(-3, 6, -3));
  static_assert(vec3(1, 2, 3).cross(vec3(4, 5, 6)) == vec3(-3, 6, -3));
}

TEST(Vec3Test, HomogeneousVectorWithoutNormalizationDropsTheFourthComponent) {
  EXPECT_EQ(vec3(vec4(1, 2, 3, 0), false), vec3(1, 2, 3));
  EXPECT_EQ(vec3(vec4(1, 2, 3, 2), false), vec3(1, 2, 3));
}

TEST(Vec3Test, NormalizationMultipliesByTheReciprocal) {
  MessageRecorder recorder;
  EXPECT_EQ(vec3(vec4(1, 2, 3, 2), true), vec3(.5, 1, 1.5));
  EXPECT_EQ(vec3(vec4(5, -7, 9, 49), true), vec3(5 * (1. / 49), -7 * (1. / 49), 9 * (1. / 49)));
  EXPECT_NE(49 * (1. / 49), 1.);
  EXPECT_EQ(vec3(vec4(49, 0, 0, 49), true)[0], 49 * (1. / 49));
  EXPECT_EQ(vec3(vec4(1e-300, 0, 0, 2.2250738585072014e-308), true)[0], 1e-300 * (1 / 2.2250738585072014e-308));
  EXPECT_EQ(recorder.take(), Messages{});
}

TEST(Vec3Test, NormalizationWithZeroFourthComponentReportsAndLeavesZeros) {
  for (double w : {0., -0., 1e-310, -2.2250738585072009e-308}) {
    MessageRecorder recorder;
    EXPECT_EQ(vec3(vec4(1, 2, 3, w), true), vec3(0, 0, 0)) << w;
    const Message expected{
        VX_ERROR, 19, "Tvec3::Tvec3(const Tvec4<DT>& v, const bool normalizeV)",
        "Normalization with zero fourth component of homogeneous vector performed. Leaving vector unchanged."};
    EXPECT_EQ(recorder.take(), Messages{expected});
  }
}

TEST(Vec3Test, IsWrittenInParentheses) {
  std::ostringstream stream;
  stream << vec3(1, -2.5, 3);
  EXPECT_EQ(stream.str(), "(1,-2.5,3)");
}

}  // namespace
}  // namespace vx::test
