#include "vxTruncate.h"

#include <gtest/gtest.h>
#include <limits>

namespace vx {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr VXint64 minInt64 = std::numeric_limits<VXint64>::min();

// It is good at compile time, so none of it is undefined.
static_assert(truncateTo<VXuint8>(300.0) == 44);
static_assert(truncateTo<VXint32>(nan) == std::numeric_limits<VXint32>::min());

TEST(TruncateTest, GoesTowardZero) {
  EXPECT_EQ(truncateTo<VXint32>(2.9), 2);
  EXPECT_EQ(truncateTo<VXint32>(-2.9), -2);
  EXPECT_EQ(truncateTo<VXint8>(-0.9), 0);
  EXPECT_EQ(truncateTo<VXuint8>(1.7), 1);
  EXPECT_EQ(truncateTo<VXint64>(-9007199254740993.0), -9007199254740992);
}

TEST(TruncateTest, KeepsTheLowBytesOfTheIntermediate) {
  EXPECT_EQ(truncateTo<VXuint8>(300.0), 44);
  EXPECT_EQ(truncateTo<VXint8>(300.0), 44);
  EXPECT_EQ(truncateTo<VXint8>(200.0), -56);
  EXPECT_EQ(truncateTo<VXuint8>(-1.0), 255);
  EXPECT_EQ(truncateTo<VXuint16>(-1.0), 65535);
  EXPECT_EQ(truncateTo<VXint16>(65535.0), -1);
  EXPECT_EQ(truncateTo<VXuint32>(-1.0), 4294967295U);
  EXPECT_EQ(truncateTo<VXuint32>(4294967296.0 + 5), 5U);
  EXPECT_EQ(truncateTo<VXuint32>(4294967295.0), 4294967295U);
}

TEST(TruncateTest, BeyondTheIntermediateItIsTheMinimum) {
  for (const double value : {nan, infinity, -infinity, 1e300, -1e300, 2147483648.0, -2147483649.0}) {
    EXPECT_EQ(truncateTo<VXint32>(value), std::numeric_limits<VXint32>::min()) << value;
    EXPECT_EQ(truncateTo<VXint16>(value), 0) << value;
    EXPECT_EQ(truncateTo<VXuint16>(value), 0) << value;
    EXPECT_EQ(truncateTo<VXint8>(value), 0) << value;
    EXPECT_EQ(truncateTo<VXuint8>(value), 0) << value;
  }
  for (const double value : {nan, infinity, -infinity, 1e300, 9223372036854775808.0, -9223372036854777856.0}) {
    EXPECT_EQ(truncateTo<VXint64>(value), minInt64) << value;
    EXPECT_EQ(truncateTo<VXuint32>(value), 0U) << value;
  }
}

TEST(TruncateTest, TheLimitsOfTheIntermediateAreInRange) {
  EXPECT_EQ(truncateTo<VXint32>(2147483647.9), 2147483647);
  EXPECT_EQ(truncateTo<VXint32>(-2147483648.9), std::numeric_limits<VXint32>::min());
  EXPECT_EQ(truncateTo<VXint16>(2147483647.0), -1);
  EXPECT_EQ(truncateTo<VXint64>(9223372036854774784.0), 9223372036854774784);
  EXPECT_EQ(truncateTo<VXint64>(-9223372036854775808.0), minInt64);
}

TEST(TruncateTest, FloatingPointIsRounded) {
  EXPECT_EQ(truncateTo<float>(0.1), 0.1F);
  EXPECT_EQ(truncateTo<double>(0.1), 0.1);
}

}  // namespace
}  // namespace vx
