#include "vxScaleShiftData.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <sstream>
#include <type_traits>

namespace vx::test {
namespace {

ScaleShiftData fromRanges(double minIn, double maxIn, double minOut, double maxOut) {
  ScaleShiftData data(7, 7);
  data.setFromMinMaxToMinMax(minIn, maxIn, minOut, maxOut);
  return data;
}

TEST(ScaleShiftTest, IsAPlainValueOfScaleAndShift) {
  EXPECT_TRUE(std::is_standard_layout_v<ScaleShiftData> && std::is_trivially_copyable_v<ScaleShiftData>);
  EXPECT_EQ(offsetof(ScaleShiftData, scale), 0U);
  EXPECT_EQ(offsetof(ScaleShiftData, shift), 8U);
  EXPECT_EQ(sizeof(ScaleShiftData), 16U);
}

TEST(ScaleShiftTest, DefaultLeavesValuesAsTheyAre) {
  const ScaleShiftData data;
  EXPECT_EQ(data.scale, 1.);
  EXPECT_EQ(data.shift, 0.);
}

TEST(ScaleShiftTest, RangesAreMappedToEachOther) {
  EXPECT_EQ(fromRanges(0, 255, 0, 1), ScaleShiftData(1. / 255, 0));
  EXPECT_EQ(fromRanges(-1024, 3072, 0, 4096), ScaleShiftData(1, 1024));
  EXPECT_EQ(fromRanges(10, 20, 100, 105), ScaleShiftData(.5, 95));
  EXPECT_EQ(fromRanges(10, 20, 3, 3), ScaleShiftData(0, 3));
}

TEST(ScaleShiftTest, LimitsMayStandInEitherOrder) {
  EXPECT_EQ(fromRanges(255, 0, 1, 0), fromRanges(0, 255, 0, 1));
  EXPECT_EQ(fromRanges(255, 0, 0, 1), fromRanges(0, 255, 0, 1));
  EXPECT_EQ(fromRanges(0, 255, 1, 0), fromRanges(0, 255, 0, 1));
}

TEST(ScaleShiftTest, SingleInputValueIsMappedToTheLowerLimitAtUnitScale) {
  EXPECT_EQ(fromRanges(7, 7, 2, 9), ScaleShiftData(1, -5));
  EXPECT_EQ(fromRanges(7, 7, 9, 2), ScaleShiftData(1, -5));
}

TEST(ScaleShiftTest, ComparisonSeesBothFields) {
  EXPECT_TRUE(ScaleShiftData(1, 2) == ScaleShiftData(1, 2));
  EXPECT_TRUE(ScaleShiftData(1, 2) != ScaleShiftData(1, 3));
  EXPECT_TRUE(ScaleShiftData(1, 2) != ScaleShiftData(2, 2));
}

TEST(ScaleShiftTest, IsWrittenWithBothFields) {
  std::ostringstream stream;
  stream << ScaleShiftData(2, -1);
  EXPECT_EQ(stream.str(), "(scale=2, shift=-1)");
}

}  // namespace
}  // namespace vx::test
