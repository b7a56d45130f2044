#include "MessageRecorder.h"
#include "SubImgReference.h"
#include "TestAllocator.h"

#include "vxTSubImg.h"
#include "vxTypeInfos.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace vx::test {
namespace {

const std::vector<Message> none;

const Message missingData = {
    VX_ERROR, VX_BAD_POINTER, "TSubImg::copySubImg()",
    "Valid data pointers in source and target subimage required forsubimage copying, thus call is ignored."};

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

class TSubImgTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { ASSERT_EQ(VXInitializeTypes(), 1); }
  void TearDown() override { EXPECT_EQ(recorder.take(), none); }
  MessageRecorder recorder;
};

SubImgBox line(VXint64 first, VXint64 last) {
  return SubImgBox(Position(first, 0, 0, 0, 0, 0), Position(last, 0, 0, 0, 0, 0));
}

SubImgBox plane(VXint64 x1, VXint64 y1, VXint64 x2, VXint64 y2) {
  return SubImgBox(Position(x1, y1, 0, 0, 0, 0), Position(x2, y2, 0, 0, 0, 0));
}

// A line of voxels of one type, from x = 0 on.
template <class T>
struct Line {
  explicit Line(std::vector<T> values, VXDataType type)
      : voxels(std::move(values)),
        view(SubImg(line(0, static_cast<VXint64>(voxels.size()) - 1), type, voxels.data())) {}
  std::vector<T> voxels;
  TSubImg<T> view;
};

// The view ----------------------------------------------------------------------------------------------------------

template <class T>
struct Probe : TSubImg<T> {
  using TSubImg<T>::TSubImg;
  using TSubImg<T>::_sizeOfT;
  using TSubImg<T>::_typedData;
  using TSubImg<T>::_originData;
  using TSubImg<T>::_cursor;
};

TEST_F(TSubImgTest, ByDefaultIsEmpty) {
  const Probe<VXint32> view;
  EXPECT_EQ(view._sizeOfT, 1);
  EXPECT_EQ(view._typedData, nullptr);
  EXPECT_EQ(view._originData, nullptr);
  EXPECT_EQ(view._cursor, nullptr);
}

TEST_F(TSubImgTest, MembersLieInTheirOrder) {
  const Probe<VXint32> view;
  const std::vector<const void*> members = {&view._sizeOfT, &view._typedData, &view._originData, &view._cursor};
  for (std::size_t i = 1; i < members.size(); ++i) EXPECT_LT(members[i - 1], members[i]) << i;
  EXPECT_EQ(sizeof view._sizeOfT, 8U);
}

TEST_F(TSubImgTest, ViewsTheVoxelsOfABlock) {
  std::vector<VXint32> voxels(200);
  const SubImg block(SubImgBox(Position(-1, 2, 0, 0, 0, 0), Position(3, 5, 1, 1, 1, 0)), VXint32Type, &voxels[100]);
  Probe<VXint32> view(block);
  EXPECT_EQ(view.getBox(), block.getBox());
  EXPECT_EQ(view.getStride(), block.getStride());
  EXPECT_EQ(view.getDataType(), VXint32Type);
  EXPECT_EQ(view.getData(), &voxels[100]);
  EXPECT_EQ(view._sizeOfT, 4);
  EXPECT_EQ(view._typedData, &voxels[100]);
  EXPECT_EQ(view._cursor, &voxels[100]);
  EXPECT_EQ(view._originData, &voxels[100] + 1 - 2 * 5);
  view.setData(&voxels[110]);
  EXPECT_EQ(view._typedData, &voxels[110]);
  EXPECT_EQ(view._originData, &voxels[110] + 1 - 2 * 5);
  view.setBox(line(4, 7));
  EXPECT_EQ(view._originData, &voxels[106]);
  view.setImgExt(Position(2, 0, 1, 1, 1, 1));
  EXPECT_EQ(view._originData, &voxels[106] + 2) << "from the lower corner, y = -1, of a box turned round";
}

TEST_F(TSubImgTest, ReportsATypeThatDoesNotFit) {
  std::vector<VXint32> voxels(4);
  const TSubImg<float> view(SubImg(line(0, 3), VXint32Type, voxels.data()));
  EXPECT_EQ(recorder.take(), std::vector<Message>({{VX_FATAL, VX_BAD_DATA_TYPE, "TSubImg::TSubImg()",
                                                    "Mismatch of data type between argument and template typename."}}));
  EXPECT_EQ(view.getDataType(), VXint32Type);
  EXPECT_EQ(view.getData(), voxels.data());
  const TSubImg<float> empty(SubImg(line(0, 3), VXint32Type));
  EXPECT_EQ(recorder.take(), none) << "no data, no mismatch";
}

TEST_F(TSubImgTest, BothEightByteFloatingPointTypesFitEither) {
  std::vector<double> voxels(4);
  for (const VXDataType type : {VXdoubleType, VXldoubleType}) {
    const TSubImg<double> view(SubImg(line(0, 3), type, voxels.data()));
    const TSubImg<long double> longView(SubImg(line(0, 3), type, voxels.data()));
  }
}

// Copies ------------------------------------------------------------------------------------------------------------

TEST_F(TSubImgTest, ACopyTruncates) {
  Line<float> in({2.9F, -2.9F, 0.5F, -0.99F}, VXfloatType);
  Line<VXint32> out({7, 7, 7, 7}, VXint32Type);
  out.view.copySubImg(in.view);
  EXPECT_EQ(out.voxels, (std::vector<VXint32>{2, -2, 0, 0}));
}

TEST_F(TSubImgTest, AMappedCopyTruncatesAfterTheShift) {
  Line<float> in({1.2F, 1.7F, 300.0F, -1.6F}, VXfloatType);
  Line<VXuint8> out({7, 7, 7, 7}, VXuint8Type);
  out.view.copySubImg(in.view, ScaleShiftData(1, 0.5));
  EXPECT_EQ(out.voxels, (std::vector<VXuint8>{1, 2, 44, 255}));
}

TEST_F(TSubImgTest, AMappedCopyWrapsAtTheWidthOfTheType) {
  Line<double> in({300, -1, 65537.9, -32769, 4294967297.0}, VXdoubleType);
  Line<VXint16> narrow({0, 0, 0, 0, 0}, VXint16Type);
  narrow.view.copySubImg(in.view, ScaleShiftData(1, 0.25));
  EXPECT_EQ(narrow.voxels, (std::vector<VXint16>{300, 0, 2, -32768, 0}));
  Line<VXuint32> wide({0, 0, 0, 0, 0}, VXuint32Type);
  wide.view.copySubImg(in.view, ScaleShiftData(1, -0.5));
  EXPECT_EQ(wide.voxels, (std::vector<VXuint32>{299, 4294967295U, 65537, 4294934527U, 0}));
}

TEST_F(TSubImgTest, ANearlyNeutralMappingIsNone) {
  // As double the value would lose its last bit.
  const VXint64 value = (VXint64{1} << 60) + 1;
  Line<VXint64> in({value}, VXint64Type), out({0}, VXint64Type);
  for (const ScaleShiftData mapping : {ScaleShiftData(1, 0), ScaleShiftData(1 + 1e-17, 0), ScaleShiftData(1, 1e-16),
                                       ScaleShiftData(1 - 1.2e-16, -2.2e-16)}) {
    out.voxels[0] = 0;
    out.view.copySubImg(in.view, mapping);
    EXPECT_EQ(out.voxels[0], value) << mapping;
  }
  out.view.copySubImg(in.view, ScaleShiftData(1, 2.3e-16));
  EXPECT_EQ(out.voxels[0], value - 1) << "a mapping";
  out.view.copySubImg(in.view, ScaleShiftData(1 + 2.3e-16, 0));
  EXPECT_NE(out.voxels[0], value);
}

TEST_F(TSubImgTest, AMappedCopyOfOneTypeTakesItsOwnRounding) {
  Line<VXint16> in({1, 2, -3, 100}, VXint16Type), out({0, 0, 0, 0}, VXint16Type);
  out.view.copySubImg(in.view, ScaleShiftData(0.5, 0.25));
  EXPECT_EQ(out.voxels, (std::vector<VXint16>{0, 1, -1, 50}));
  // In place.
  in.view.copySubImg(in.view, ScaleShiftData(2, 1));
  EXPECT_EQ(in.voxels, (std::vector<VXint16>{3, 5, -5, 201}));
}

TEST_F(TSubImgTest, NanMapsToNothingThatIsNeutral) {
  Line<VXint16> in({1, 2}, VXint16Type), out({5, 5}, VXint16Type);
  out.view.copySubImg(in.view, ScaleShiftData(nan, 0));
  EXPECT_EQ(out.voxels, (std::vector<VXint16>{0, 0}));
}

TEST_F(TSubImgTest, WithoutDataNothingIsCopied) {
  Line<VXint16> filled({1, 2, 3, 4}, VXint16Type);
  TSubImg<VXint16> sameBox(SubImg(line(0, 3), VXint16Type));
  TSubImg<VXint16> otherBox(SubImg(line(2, 9), VXint16Type));
  TSubImg<float> otherType(SubImg(line(0, 3), VXfloatType));
  const auto expectError = [&] { EXPECT_EQ(recorder.take(), std::vector<Message>({missingData})); };
  for (const ScaleShiftData mapping : {ScaleShiftData(), ScaleShiftData(2, 1)}) {
    filled.view.copySubImg(sameBox, mapping);
    expectError();
    filled.view.copySubImg(otherBox, mapping);
    expectError();
    filled.view.copySubImg(otherType, mapping);
    expectError();
    sameBox.copySubImg(filled.view, mapping);
    expectError();
    otherType.copySubImg(filled.view, mapping);
    expectError();
  }
  EXPECT_EQ(filled.voxels, (std::vector<VXint16>{1, 2, 3, 4}));
}

TEST_F(TSubImgTest, NothingInCommonIsNoError) {
  TSubImg<VXint16> a(SubImg(line(0, 3), VXint16Type)), b(SubImg(line(4, 7), VXint16Type)), empty;
  TSubImg<float> c(SubImg(line(4, 7), VXfloatType));
  for (const ScaleShiftData mapping : {ScaleShiftData(), ScaleShiftData(2, 1)}) {
    a.copySubImg(b, mapping);
    a.copySubImg(c, mapping);
    a.copySubImg(empty, mapping);
    empty.copySubImg(a, mapping);
    empty.copySubImg(empty, mapping);
  }
}

// Borders -----------------------------------------------------------------------------------------------------------

TEST_F(TSubImgTest, KnowsTheRunsBesideAHole) {
  std::vector<VXint16> voxels(10);
  const TSubImg<VXint16> view(SubImg(line(10, 19), VXint16Type, voxels.data()));
  const auto expectRuns = [&](VXint64 v1, VXint64 v2, VXint64 leftLen, VXint64 rightStart, VXint64 rightLen) {
    SCOPED_TRACE(std::to_string(v1) + " to " + std::to_string(v2));
    const FillAreaParams area = view._calcFillAreaParams(line(v1, v2));
    EXPECT_EQ(area.fullLineLen, 10);
    EXPECT_EQ(area.fullLineNumBytes, 20);
    EXPECT_EQ(area.leftStart, 10);
    EXPECT_EQ(area.leftEnd, std::min<VXint64>(19, v1 - 1));
    EXPECT_EQ(area.leftLen, leftLen);
    EXPECT_EQ(area.leftNumBytes, 2 * leftLen);
    EXPECT_EQ(area.rightStart, rightStart);
    EXPECT_EQ(area.rightLen, rightLen);
    EXPECT_EQ(area.rightNumBytes, 2 * rightLen);
  };
  expectRuns(12, 14, 2, 15, 5);
  expectRuns(10, 19, 0, 20, 0);
  expectRuns(5, 12, 0, 13, 7);
  expectRuns(15, 25, 5, 26, 0);
  expectRuns(0, 5, 0, 10, 10);
  expectRuns(30, 35, 10, 36, 0);
  expectRuns(15, 13, 5, 14, 6);
}

TEST_F(TSubImgTest, AHoleMayReachToTheLimitsOfTheNumbers) {
  const VXint64 least = std::numeric_limits<VXint64>::min(), most = std::numeric_limits<VXint64>::max();
  Line<VXint16> block({1, 2, 3}, VXint16Type);
  block.view.fillBordersWithFillValue(SubImgBox(Position(least), Position(most)), 9);
  EXPECT_EQ(block.voxels, (std::vector<VXint16>{1, 2, 3}));
  block.view.fillBordersWithFillValue(SubImgBox(Position(least), Position(1, most, most, most, most, most)), 9);
  EXPECT_EQ(block.voxels, (std::vector<VXint16>{1, 2, 9}));
}

TEST_F(TSubImgTest, AHoleOfTheWholeBlockLeavesAllVoxels) {
  Line<VXint16> block({1, 2, 3}, VXint16Type);
  block.view.fillBordersWithFillValue(block.view.getBox(), 9);
  EXPECT_EQ(block.voxels, (std::vector<VXint16>{1, 2, 3}));
}

TEST_F(TSubImgTest, AnEmptyHoleLeavesNoVoxel) {
  Line<VXint16> block({1, 2, 3}, VXint16Type);
  block.view.fillBordersWithFillValue(SubImgBox(), 9);
  EXPECT_EQ(block.voxels, (std::vector<VXint16>{9, 9, 9}));
}

TEST_F(TSubImgTest, TheCursorStaysWhereBordersEnded) {
  std::vector<VXint16> voxels = {1, 2, 3};
  Probe<VXint16> view(SubImg(line(0, 2), VXint16Type, voxels.data()));
  view.fillBordersWithFillValue(line(0, 2), 9);
  EXPECT_EQ(view._cursor, voxels.data()) << "nothing was written";
  view.fillBordersWithFillValue(line(1, 2), 9);
  EXPECT_EQ(view._cursor, voxels.data() + 1);
  view.fillBordersWithInputValues(line(0, 1), TSubImg<VXint16>(view));
  EXPECT_EQ(view._cursor, voxels.data() + 3);
  view.setData(voxels.data());
  view.fillBordersWithClampedInputValues(line(1, 1));
  EXPECT_EQ(view._cursor, voxels.data() + 3);
}

TEST_F(TSubImgTest, ALineWithoutMemoryIsAnException) {
  Line<VXint16> block({1, 2, 3}, VXint16Type);
  {
    const FailingAllocations noMemory;
    EXPECT_THROW(block.view.fillBordersWithFillValue(SubImgBox(), 9), std::bad_alloc);
  }
  EXPECT_EQ(block.voxels, (std::vector<VXint16>{1, 2, 3}));
}

TEST_F(TSubImgTest, BordersFromIntegersOfOneWidthAreBits) {
  Line<VXint16> in({-1, 2, -3}, VXint16Type);
  Line<VXuint16> out({7, 7, 7}, VXuint16Type);
  out.view.fillBordersWithInputValues(line(1, 1), in.view);
  EXPECT_EQ(out.voxels, (std::vector<VXuint16>{65535, 7, 65533}));
  EXPECT_EQ(in.voxels, (std::vector<VXint16>{-1, 2, -3}));
}

TEST_F(TSubImgTest, BordersFromOtherTypesAreCast) {
  Line<float> in({-1.9F, 2, 3.9F}, VXfloatType);
  Line<VXint8> out({7, 7, 7}, VXint8Type);
  out.view.fillBordersWithInputValues(line(1, 1), in.view);
  EXPECT_EQ(out.voxels, (std::vector<VXint8>{-1, 7, 3}));
}

TEST_F(TSubImgTest, ClampedBordersExtendTheCorners) {
  std::vector<VXint32> voxels = {0, 0, 0, 0, 0,  //
                                 0, 1, 2, 3, 0,  //
                                 0, 4, 5, 6, 0,  //
                                 0, 0, 0, 0, 0};
  TSubImg<VXint32> view(SubImg(plane(0, 0, 4, 3), VXint32Type, voxels.data()));
  view.fillBordersWithClampedInputValues(plane(1, 1, 3, 2));
  EXPECT_EQ(voxels, (std::vector<VXint32>{1, 1, 2, 3, 3,  //
                                          1, 1, 2, 3, 3,  //
                                          4, 4, 5, 6, 6,  //
                                          4, 4, 5, 6, 6}));
}

TEST_F(TSubImgTest, AClampedBoxThatMissesTheBlockChangesNothing) {
  Line<VXint16> block({1, 2, 3}, VXint16Type);
  block.view.fillBordersWithClampedInputValues(line(3, 5));
  block.view.fillBordersWithClampedInputValues(SubImgBox());
  EXPECT_EQ(block.voxels, (std::vector<VXint16>{1, 2, 3}));
}

TEST_F(TSubImgTest, AClampedBoxIsCutToTheBlock) {
  Line<VXint16> block({1, 2, 3, 4}, VXint16Type);
  block.view.fillBordersWithClampedInputValues(line(2, 90));
  EXPECT_EQ(block.voxels, (std::vector<VXint16>{3, 3, 3, 4}));
}

// Range and single value --------------------------------------------------------------------------------------------

TEST_F(TSubImgTest, AValidBoxOutsideTheBlockHasNoRange) {
  Line<VXint16> block({5, 6, 7}, VXint16Type);
  VXint16 smallest = 1, largest = 2;
  const SubImgBox outside = line(3, 9);
  EXPECT_EQ(block.view.calcMinMax(smallest, largest, &outside), 0);
  EXPECT_EQ(smallest, 0);
  EXPECT_EQ(largest, 0);
  TSubImg<VXint16> empty;
  smallest = largest = 1;
  EXPECT_EQ(empty.calcMinMax(smallest, largest, nullptr), 0);
  EXPECT_EQ(smallest, 0);
  EXPECT_EQ(largest, 0);
}

TEST_F(TSubImgTest, ANanIsInTheRangeOnlyAsFirstVoxel) {
  float smallest = 0, largest = 0;
  const auto NaN = static_cast<float>(nan);
  Line<float> later({2, NaN, -3, 5}, VXfloatType);
  EXPECT_EQ(later.view.calcMinMax(smallest, largest, nullptr), 4);
  EXPECT_EQ(smallest, -3);
  EXPECT_EQ(largest, 5);
  Line<float> first({NaN, 2, -3, 5}, VXfloatType);
  EXPECT_EQ(first.view.calcMinMax(smallest, largest, nullptr), 4);
  EXPECT_TRUE(std::isnan(smallest));
  EXPECT_TRUE(std::isnan(largest));
  const SubImgBox rest = line(1, 7);
  EXPECT_EQ(first.view.calcMinMax(smallest, largest, &rest), 3);
  EXPECT_EQ(smallest, -3);
  EXPECT_EQ(largest, 5);
}

TEST_F(TSubImgTest, WholeNumbersKeepAllTheirBitsInTheRange) {
  const VXint64 most = std::numeric_limits<VXint64>::max();
  Line<VXint64> block({most - 1, most, -most}, VXint64Type);
  VXint64 smallest = 0, largest = 0;
  EXPECT_EQ(block.view.calcMinMax(smallest, largest, nullptr), 3);
  EXPECT_EQ(smallest, -most);
  EXPECT_EQ(largest, most);
}

TEST_F(TSubImgTest, ASingleVoxelIsOneValue) {
  EXPECT_TRUE(Line<VXint16>({5}, VXint16Type).view.isOneValued());
  EXPECT_TRUE(Line<float>({0.0F, -0.0F, 0.0F}, VXfloatType).view.isOneValued());
  EXPECT_FALSE(Line<float>({0.0F, 0.0F, 1.0F}, VXfloatType).view.isOneValued());
  EXPECT_FALSE(Line<double>({nan}, VXdoubleType).view.isOneValued());
  EXPECT_FALSE(TSubImg<VXint16>().isOneValued());
  int memory = 0;
  EXPECT_FALSE(TSubImg<VXint32>(SubImg(SubImgBox(), VXint32Type, &memory)).isOneValued());
}

// Rows of a block that exceeds the caches go another way. Neither a border nor what lies beside the rows is touched.
TEST_F(TSubImgTest, RowsOfALargeBlockAreCopiedConvertedAndMapped) {
  const SubImgBox large({0, 0, 0, 0, 0, 0}, {1023, 1023, 8, 0, 0, 0});
  const SubImgBox part({37, 5, 1, 0, 0, 0}, {37 + 200, 9, 7, 0, 0, 0});
  std::vector<VXuint16> copied(1024 * 1024 * 9, 9);
  std::vector<float> converted(1024 * 1024 * 9, 9.0F);
  std::vector<float> mapped(1024 * 1024 * 9, 9.0F);
  std::vector<VXuint16> from(201 * 5 * 7);
  for (std::size_t i = 0; i < from.size(); ++i) from[i] = static_cast<VXuint16>(i * 31);
  const SubImg in(part, VXuint16Type, from.data());
  SubImg(large, VXuint16Type, copied.data()).copySubImage(in);
  SubImg(large, VXfloatType, converted.data()).copySubImage(in);
  SubImg(large, VXfloatType, mapped.data()).copySubImage(in, ScaleShiftData(2, -1));
  std::size_t i = 0;
  std::size_t numWrong = 0;
  for (VXint64 z = 0; z < 9; ++z) {
    for (VXint64 y = 0; y < 1024; ++y) {
      for (VXint64 x = 0; x < 1024; ++x, ++i) {
        const bool isInside = x >= 37 && x <= 237 && y >= 5 && y <= 9 && z >= 1 && z <= 7;
        const VXuint16 value = isInside ? from[static_cast<std::size_t>(((z - 1) * 5 + y - 5) * 201 + x - 37)] : 9;
        numWrong += copied[i] != value || converted[i] != static_cast<float>(value) ||
                    mapped[i] != (isInside ? static_cast<float>(value) * 2 - 1 : 9.0F);
      }
    }
  }
  EXPECT_EQ(numWrong, 0U);
}

}  // namespace
}  // namespace vx::test
