#include "MessageRecorder.h"

#include "vxSubImgBox.h"
#include "vxSubImgBoxf.h"

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

const V low(1, 2, 3, 4, 5, 6);
const V high(10, 20, 30, 40, 50, 60);

TEST(SubImgBoxTest, IsAPlainValueOfTwoCorners) {
  EXPECT_TRUE(std::is_trivially_copyable_v<SubImgBox> && std::is_standard_layout_v<SubImgBox>);
  EXPECT_EQ(sizeof(SubImgBox), 2 * sizeof(V));
  EXPECT_EQ(offsetof(SubImgBox, v1), 0U);
}

TEST(SubImgBoxTest, DefaultIsEmptyInAllComponents) {
  const SubImgBox box;
  EXPECT_EQ(box.v1, V(0, 0, 0, 0, 0, 0));
  EXPECT_EQ(box.v2, V(-1, -1, -1, -1, -1, -1));
  EXPECT_TRUE(box.isEmpty());
  EXPECT_EQ(box.getNumVoxels(), 0);
  EXPECT_EQ(box.getExt(), V(0));
}

TEST(SubImgBoxTest, EqualCornersHoldOneVoxel) {
  const SubImgBox box(low, low);
  EXPECT_FALSE(box.isEmpty());
  EXPECT_EQ(box.getExt(), V(1));
  EXPECT_EQ(box.getNumVoxels(), 1);
}

TEST(SubImgBoxTest, OneCrossedComponentMakesItEmpty) {
  for (std::size_t i = 0; i < 6; ++i) {
    SubImgBox box(low, high);
    EXPECT_FALSE(box.isEmpty());
    box.v1[i] = 5;
    box.v2[i] = 4;
    EXPECT_TRUE(box.isEmpty()) << i;
    EXPECT_EQ(box.getExt(), V(0)) << i;
    EXPECT_EQ(box.getNumVoxels(), 0) << i;
  }
}

TEST(SubImgBoxTest, ExtentCountsBothCorners) {
  const SubImgBox box(low, high);
  EXPECT_EQ(box.getExt(), V(10, 19, 28, 37, 46, 55));
  EXPECT_EQ(box.getNumVoxels(), VXint64{10} * 19 * 28 * 37 * 46 * 55);
}

TEST(SubImgBoxTest, NumberOfVoxelsWrapsAndTheCheckedOneRefuses) {
  const V end((VXint64{1} << 20) - 1, (VXint64{1} << 20) - 1, (VXint64{1} << 20) - 1, 15, 0, 0);
  const SubImgBox box(V(0), end);
  EXPECT_EQ(box.getNumVoxels(), 0);
  VXuint64 numVoxels = 7;
  EXPECT_FALSE(box.getNumVoxelsChecked(numVoxels));
  EXPECT_EQ(numVoxels, 0U);
  const SubImgBox half(V(0), V(end.x, end.y, end.z, 7, 0, 0));
  EXPECT_EQ(half.getNumVoxels(), minInt64);
  EXPECT_TRUE(half.getNumVoxelsChecked(numVoxels));
  EXPECT_EQ(numVoxels, VXuint64{1} << 63);
}

TEST(SubImgBoxTest, CheckedNumberOfVoxelsAgreesInRange) {
  VXuint64 numVoxels = 7;
  EXPECT_TRUE(SubImgBox().getNumVoxelsChecked(numVoxels));
  EXPECT_EQ(numVoxels, 0U);
  const SubImgBox box(low, high);
  EXPECT_TRUE(box.getNumVoxelsChecked(numVoxels));
  EXPECT_EQ(numVoxels, VXuint64(box.getNumVoxels()));
}

TEST(SubImgBoxTest, WholeRangeOfCoordinatesIsDefined) {
  const SubImgBox box{V(minInt64), V(maxInt64)};
  EXPECT_FALSE(box.isEmpty());
  EXPECT_EQ(box.getExt(), V(0));
  VXuint64 numVoxels = 7;
  EXPECT_FALSE(box.getNumVoxelsChecked(numVoxels));
  EXPECT_EQ(numVoxels, 0U);
}

TEST(SubImgBoxTest, IntersectionTakesTheInnerCorners) {
  const SubImgBox a(V(0, 5, 0, 5, 0, 5), V(9, 14, 9, 14, 9, 14));
  const SubImgBox b(V(5, 0, 5, 0, 5, 0), V(14, 9, 14, 9, 14, 9));
  EXPECT_EQ(SubImgBox::intersect(a, b), SubImgBox(V(5), V(9)));
  EXPECT_EQ(SubImgBox::intersect(b, a), SubImgBox(V(5), V(9)));
}

TEST(SubImgBoxTest, IntersectionWithoutOverlapKeepsTheComputedCorners) {
  const SubImgBox a(V(0), V(9));
  SubImgBox b = a;
  b.v1.x = 20;
  b.v2.x = 29;
  const SubImgBox box = SubImgBox::intersect(a, b);
  EXPECT_EQ(box.v1, V(20, 0, 0, 0, 0, 0));
  EXPECT_EQ(box.v2, V(9));
  EXPECT_TRUE(box.isEmpty());
  EXPECT_EQ(SubImgBox::intersect(SubImgBox(), SubImgBox(V(-5), V(5))), SubImgBox(V(0), V(-1)));
}

TEST(SubImgBoxTest, ClampMovesAPositionIntoTheBox) {
  const SubImgBox box(low, high);
  EXPECT_EQ(box.clamp(V(0)), low);
  EXPECT_EQ(box.clamp(V(100)), high);
  EXPECT_EQ(box.clamp(V(1, 20, 15, 3, 51, 7)), V(1, 20, 15, 4, 50, 7));
}

TEST(SubImgBoxTest, ClampOnAnEmptyBoxGivesTheLowerCornerWhereItIsCrossed) {
  const SubImgBox box(V(5, 0, 0, 0, 0, 0), V(4, 9, 9, 9, 9, 9));
  EXPECT_EQ(box.clamp(V(0)).x, 5);
  EXPECT_EQ(box.clamp(V(100)), V(5, 9, 9, 9, 9, 9));
}

TEST(SubImgBoxTest, CornersRunWithZFastestAndOnlyTheFirstKeepsTheOtherDimensions) {
  const V expected[8] = {V(1, 2, 3, 4, 5, 6),  V(1, 2, 30, 0, 0, 0),  V(1, 20, 3, 0, 0, 0),  V(1, 20, 30, 0, 0, 0),
                         V(10, 2, 3, 0, 0, 0), V(10, 2, 30, 0, 0, 0), V(10, 20, 3, 0, 0, 0), V(10, 20, 30, 0, 0, 0)};
  V corners[8];
  SubImgBox(low, high).get3DCorners(corners);
  for (int i = 0; i < 8; ++i) EXPECT_EQ(corners[i], expected[i]) << i;
}

TEST(SubImgBoxTest, CornersOfAnEmptyBoxAreZero) {
  V corners[8];
  for (V& corner : corners) corner = V(9);
  SubImgBox(V(5), V(4)).get3DCorners(corners);
  for (const V& corner : corners) EXPECT_EQ(corner, V(0));
}

TEST(SubImgBoxTest, ComparisonSeesBothCornersOfEmptyBoxesToo) {
  EXPECT_TRUE(SubImgBox(low, high) == SubImgBox(low, high));
  EXPECT_TRUE(SubImgBox(low, high) != SubImgBox(low, low));
  EXPECT_TRUE(SubImgBox(low, high) != SubImgBox(high, high));
  EXPECT_FALSE(SubImgBox() == SubImgBox(V(1), V(0)));
}

TEST(SubImgBoxTest, IsWrittenWithBothCorners) {
  std::ostringstream stream;
  stream << SubImgBox();
  EXPECT_EQ(stream.str(), "(v1=(0,0,0,0,0,0), v2=(-1,-1,-1,-1,-1,-1))");
}

// Floating point box -------------------------------------------------------------------------------------------------

TEST(SubImgBoxfTest, DefaultReachesFromZeroToMinusOne) {
  const SubImgBoxf box;
  EXPECT_EQ(box.v1, vec6(0, 0, 0, 0, 0, 0));
  EXPECT_EQ(box.v2, vec6(-1, -1, -1, -1, -1, -1));
}

TEST(SubImgBoxfTest, UpperCornerIsTheFirstBeyondTheVoxels) {
  const SubImgBoxf box(SubImgBox(low, high));
  EXPECT_EQ(box.v1, vec6(1, 2, 3, 4, 5, 6));
  EXPECT_EQ(box.v2, vec6(11, 21, 31, 41, 51, 61));
  EXPECT_EQ(SubImgBoxf(SubImgBox(V(3), V(3))), SubImgBoxf(vec6(3.), vec6(4.)));
}

TEST(SubImgBoxfTest, EmptyBoxIsConvertedTheSameWay) {
  EXPECT_EQ(SubImgBoxf(SubImgBox()), SubImgBoxf(vec6(0.), vec6(0.)));
  EXPECT_EQ(SubImgBoxf(SubImgBox(V(9), V(2))), SubImgBoxf(vec6(9.), vec6(3.)));
}

TEST(SubImgBoxfTest, AdditionIsDoneInIntegers) {
  const VXint64 big = (VXint64{1} << 53) + 1;
  EXPECT_EQ(SubImgBoxf(SubImgBox(V(0), V(big))).v2, vec6(9007199254740994.));
  EXPECT_EQ(SubImgBoxf(SubImgBox(V(0), V(maxInt64))).v2, vec6(-9223372036854775808.));
}

TEST(SubImgBoxfTest, CorrectSortsEachComponent) {
  SubImgBoxf box(vec6(1, 20, 3, 40, 5, 6), vec6(10, 2, 30, 4, 50, 6));
  box.correct();
  EXPECT_EQ(box, SubImgBoxf(vec6(1, 2, 3, 4, 5, 6), vec6(10, 20, 30, 40, 50, 6)));
  box.correct();
  EXPECT_EQ(box, SubImgBoxf(vec6(1, 2, 3, 4, 5, 6), vec6(10, 20, 30, 40, 50, 6)));
}

TEST(SubImgBoxfTest, TransformedBoxTreatsTheUpperCornerAsInclusive) {
  const SubImgBoxf box = SubImgBoxf::calcAATransformedBox(SubImgBox(low, high), mat4::getIdentity());
  EXPECT_EQ(box, SubImgBoxf(vec6(1, 2, 3, 4, 5, 6), vec6(10, 20, 30, 40, 50, 60)));
}

TEST(SubImgBoxfTest, TransformedBoxIsAlignedWithTheAxes) {
  // x and y change places, x is mirrored, and all is moved and divided by 2.
  const mat4 matrix(0, -1, 0, 100, 1, 0, 0, 0, 0, 0, 1, 10, 0, 0, 0, 2);
  const SubImgBoxf box = SubImgBoxf::calcAATransformedBox(SubImgBox(low, high), matrix);
  EXPECT_EQ(box, SubImgBoxf(vec6(40, .5, 6.5, 4, 5, 6), vec6(49, 5, 20, 40, 50, 60)));
}

TEST(SubImgBoxfTest, TransformedEmptyBoxIsTheDefault) {
  EXPECT_EQ(SubImgBoxf::calcAATransformedBox(SubImgBox(V(9), V(9, 9, 9, 9, 9, 8)), mat4::getIdentity()), SubImgBoxf());
}

TEST(SubImgBoxfTest, CoordinatesBeyondSinglePrecisionAreNotTaken) {
  const SubImgBoxf box = SubImgBoxf::calcAATransformedBox(SubImgBox(V(1), V(2)),
                                                          mat4(1e39, 0, 0, 0, 0, -1e39, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1));
  constexpr double limit = 3.4028234663852886e+38;
  EXPECT_EQ(box.v1, vec6(limit, -2e39, 1, 1, 1, 1));
  EXPECT_EQ(box.v2, vec6(2e39, -limit, 2, 2, 2, 2));
}

TEST(SubImgBoxfTest, CoordinatesThatAreNoNumbersAreNotTaken) {
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  const SubImgBoxf box =
      SubImgBoxf::calcAATransformedBox(SubImgBox(V(1), V(2)), mat4(nan, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1));
  constexpr double limit = 3.4028234663852886e+38;
  EXPECT_EQ(box.v1, vec6(limit, 1, 1, 1, 1, 1));
  EXPECT_EQ(box.v2, vec6(-limit, 2, 2, 2, 2, 2));
}

TEST(SubImgBoxfTest, CornerAtInfinityIsReportedAndCountsAsTheOrigin) {
  MessageRecorder recorder;
  const mat4 matrix(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0);
  const SubImgBoxf box = SubImgBoxf::calcAATransformedBox(SubImgBox(V(1), V(2)), matrix);
  EXPECT_EQ(box, SubImgBoxf(vec6(0, 0, 0, 1, 1, 1), vec6(0, 0, 0, 2, 2, 2)));
  const Messages messages = recorder.take();
  ASSERT_EQ(messages.size(), 8U);
  for (const Message& message : messages) EXPECT_EQ(message.code, VX_BAD_PARAMETER);
}

TEST(SubImgBoxfTest, IsWrittenWithBothCorners) {
  std::ostringstream stream;
  stream << SubImgBoxf(vec6(.5), vec6(2.));
  EXPECT_EQ(stream.str(), "(v1=(0.5,0.5,0.5,0.5,0.5,0.5), v2=(2,2,2,2,2,2))");
}

}  // namespace
}  // namespace vx::test
