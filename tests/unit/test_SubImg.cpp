#include "MessageRecorder.h"
#include "SubImgReference.h"
#include "TestTypes.h"

#include "vxInitSystemVX.h"
#include "vxMemory.h"
#include "vxSubImg.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <sstream>
#include <string>

namespace vx::test {
namespace {

const std::vector<Message> none;

// Shows what a block keeps.
struct Probe : SubImg {
  using SubImg::_data;
  using SubImg::_dataTypeSize;
  using SubImg::_position;
  using SubImg::_stride;
  using SubImg::SubImg;
};

// Virtual functions are found by their position in the table of the class: modules are built against it.
template <class Function>
std::ptrdiff_t slotOf(Function function) {
  std::ptrdiff_t position = 0;
  std::memcpy(&position, &function, sizeof position);
  return (position - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

// Counts the calls of setData().
struct DataProbe : Probe {
  using Probe::Probe;
  void setData(void* data) override {
    ++numCalls;
    Probe::setData(data);
  }
  int numCalls = 0;
};

class SubImgTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { ASSERT_TRUE(registerTestTypes()); }
  void TearDown() override { EXPECT_EQ(recorder.take(), none); }
  MessageRecorder recorder;
};

// A box from a position with an extent.
SubImgBox boxAt(const Position& position, const Position& ext) {
  return SubImgBox(position, position + ext - Position(1));
}

const SubImgBox smallBox = boxAt(Position(1, 2, 3, 4, 5, 6), Position(4, 3, 2, 1, 2, 1));

// The block ---------------------------------------------------------------------------------------------------------

TEST_F(SubImgTest, StartsEmptyWithoutMemory) {
  const Probe block;
  EXPECT_EQ(block.getBox(), SubImgBox());
  EXPECT_TRUE(block.getBox().isEmpty());
  EXPECT_EQ(block.getDataType(), VXuint8Type);
  EXPECT_EQ(block._dataTypeSize, VXSizeOf(VXuint8Type));
  EXPECT_EQ(block._stride, Position(0).getStrides());
  EXPECT_EQ(block._data, nullptr);
  EXPECT_EQ(block._position, Position(0));
}

TEST_F(SubImgTest, MembersLieInTheirOrder) {
  const Probe block;
  const std::vector<const void*> members = {&block._position, &block._data, &block._stride, &block._dataTypeSize};
  for (std::size_t i = 1; i < members.size(); ++i) EXPECT_LT(members[i - 1], members[i]) << i;
  EXPECT_EQ(sizeof block._dataTypeSize, 4U);
}

TEST_F(SubImgTest, VirtualFunctionsKeepTheirOrder) {
  EXPECT_EQ(slotOf(&SubImg::setImgExt), 2);
  EXPECT_EQ(slotOf(&SubImg::setDataType), 3);
  EXPECT_EQ(slotOf(&SubImg::isUpToDate), 4);
  EXPECT_EQ(slotOf(&SubImg::setUpToDate), 5);
  EXPECT_EQ(slotOf(&SubImg::setOutOfDate), 6);
  EXPECT_EQ(slotOf(&SubImg::getTypeId), 7);
  EXPECT_EQ(slotOf(&SubImg::getTypeIdName), 8);
  EXPECT_EQ(slotOf(&SubImg::typeInstanceCounter), 9);
  EXPECT_EQ(slotOf(&SubImg::setData), 10);
}

TEST_F(SubImgTest, DerivesItsBoxFromPositionAndExtent) {
  Probe block;
  block.setBox(smallBox);
  EXPECT_EQ(block._position, Position(1, 2, 3, 4, 5, 6));
  EXPECT_EQ(block.getImgExt(), Position(4, 3, 2, 1, 2, 1));
  EXPECT_EQ(block._stride, Position(1, 4, 12, 24, 24, 48));
  EXPECT_EQ(block.getBox(), smallBox);
  block.setImgExt(Position(2, 2, 2, 2, 2, 2));
  EXPECT_EQ(block.getBox(), boxAt(Position(1, 2, 3, 4, 5, 6), Position(2)));
  EXPECT_EQ(block._stride, Position(1, 2, 4, 8, 16, 32));
  block.setImgExt(Position(2, 2, 0, 2, 2, 2));
  EXPECT_TRUE(block.getBox().isEmpty());
}

TEST_F(SubImgTest, KeepsTheSizeOfItsType) {
  Probe block(smallBox, VXint16Type);
  EXPECT_EQ(block._dataTypeSize, 2U);
  block.setDataType(VXldoubleType);
  EXPECT_EQ(block._dataTypeSize, 8U);
  block.setDataType(mixedType());
  EXPECT_EQ(block._dataTypeSize, 12U);
  ImageProperties properties(Position(5), largeType(), -1, 1);
  block.setImgProps(properties);
  EXPECT_EQ(block._dataTypeSize, 512U);
  EXPECT_EQ(block.getBox(), boxAt(smallBox.v1, Position(5)));
  EXPECT_EQ(block._stride.u, 3125);
}

TEST_F(SubImgTest, SharesItsVoxelsWithACopy) {
  const TestBlock block(smallBox, VXint16Type);
  const SubImg copy = block.img;
  EXPECT_EQ(copy.getData(), block.img.getData());
  EXPECT_EQ(copy.getBox(), smallBox);
  EXPECT_EQ(copy.getDataType(), VXint16Type);
}

TEST_F(SubImgTest, IsARunTimeTypedClassBelowTheImageProperties) {
  initVX();
  ASSERT_NE(SubImg::getClassTypeId(), nullptr);
  EXPECT_EQ(SubImg::getClassTypeId(), Runtime::fromName("SubImg"));
  const SubImg block;
  const ImageProperties& base = block;
  EXPECT_EQ(base.getTypeId(), SubImg::getClassTypeId());
  EXPECT_STREQ(base.getTypeIdName(), "SubImg");
  auto* const made = static_cast<SubImg*>(SubImg::createCB());
  ASSERT_NE(made, nullptr);
  EXPECT_TRUE(made->getBox().isEmpty());
  delete made;
}

// Memory ------------------------------------------------------------------------------------------------------------

TEST_F(SubImgTest, AllocatesAndFreesThroughSetData) {
  DataProbe block(smallBox, VXint32Type);
  block.allocate(VX_RETURN_NULL);
  EXPECT_EQ(block.numCalls, 1);
  ASSERT_NE(block._data, nullptr);
  std::memset(block._data, 1, 48 * 4);
  block.free();
  EXPECT_EQ(block.numCalls, 2);
  EXPECT_EQ(block._data, nullptr);
  block.free();
  EXPECT_EQ(block.numCalls, 3);
  EXPECT_EQ(block._data, nullptr);
}

TEST_F(SubImgTest, KeepsItsDataWhereOnlyBoxOrTypeChange) {
  int memory = 0;
  DataProbe block(smallBox, VXint32Type, &memory);
  block.setBox(boxAt(Position(2), Position(3)));
  block.setImgExt(Position(1));
  block.setDataType(VXint16Type);
  block.setImgProps(ImageProperties(Position(2), VXint8Type, 0, 1));
  EXPECT_EQ(block.numCalls, 0) << "an override of setData() is told of new data only";
  EXPECT_EQ(block._data, &memory);
  EXPECT_EQ(block.getBox(), boxAt(Position(2), Position(2)));
}

TEST_F(SubImgTest, AllocatesNoBytesForAnEmptyBox) {
  SubImg block;
  block.allocate(VX_FATAL_MEMORY_ERROR);
  EXPECT_NE(block.getData(), nullptr) << "the answer of VXAlloc to 0 bytes";
  block.free();
}

TEST_F(SubImgTest, LosesTheFormerPointerOnAllocation) {
  TestBlock block(smallBox, VXuint8Type);
  void* const former = block.img.getData();
  block.img.allocate(VX_RETURN_NULL);
  EXPECT_NE(block.img.getData(), former);
  block.img.free();
}

TEST_F(SubImgTest, RefusesToAllocateAnInvalidType) {
  int memory = 0;
  SubImg block(smallBox, VXNumDataTypes(), &memory);
  block.allocate(VX_FATAL_MEMORY_ERROR);
  EXPECT_EQ(block.getData(), &memory);
  EXPECT_EQ(recorder.take(),
            std::vector<Message>({{VX_ERROR, VX_BAD_DATA_TYPE, "SubImg::allocate()",
                                   "The subimage has an invalid data type. The call is ignored (data pointer is not "
                                   "set and no data is allocated)."}}));
}

TEST_F(SubImgTest, FailsToAllocateWhatIsTooLarge) {
  int memory = 0;
  const VXint64 large = VXint64{1} << 31;
  for (const Position& ext : {Position(large, large, 1, 1, 1, 1),                // more than there is
                              Position(large, large, 2, 1, 1, 1),                // 2 to the power 63 voxels
                              Position(large, large, 4, 1, 1, 1),                // wraps to 0 voxels
                              Position(large, large, 4, 1, 1, 2),                // wraps to 0 voxels
                              Position(large, VXint64{1} << 30, 1, 1, 1, 1)}) {  // wraps to 0 bytes at 8 each
    SubImg block(boxAt(Position(-5), ext), VXint64Type, &memory);
    block.allocate(VX_RETURN_NULL);
    EXPECT_EQ(block.getData(), nullptr) << ext;
    EXPECT_EQ(recorder.take(), none);
    block.setData(&memory);
    block.allocate(VX_FATAL_MEMORY_ERROR);
    EXPECT_EQ(block.getData(), nullptr) << ext;
    const std::vector<Message> messages = recorder.take();
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0].type, VX_FATAL);
    EXPECT_EQ(messages[0].code, VX_NO_MEMORY);
  }
}

// Index and position ------------------------------------------------------------------------------------------------

TEST_F(SubImgTest, IndicesFollowMemoryOrder) {
  const Position ext(4, 3, 2, 5, 2, 3);
  EXPECT_EQ(SubImg::coordToIndex(1, 0, 0, 0, 0, 0, ext), 1);
  EXPECT_EQ(SubImg::coordToIndex(0, 1, 0, 0, 0, 0, ext), 4);
  EXPECT_EQ(SubImg::coordToIndex(0, 0, 1, 0, 0, 0, ext), 12);
  EXPECT_EQ(SubImg::coordToIndex(0, 0, 0, 1, 0, 0, ext), 24);
  EXPECT_EQ(SubImg::coordToIndex(0, 0, 0, 0, 1, 0, ext), 120);
  EXPECT_EQ(SubImg::coordToIndex(0, 0, 0, 0, 0, 1, ext), 240);
  VXint64 index = 0;
  forEachPosition(boxAt(Position(0), ext), [&](const Position& p) {
    ASSERT_EQ(SubImg::coordToIndex(p, ext), index);
    ASSERT_EQ(SubImg::indexToCoord(index, ext), p);
    ++index;
  });
}

TEST_F(SubImgTest, AnExtentOfZeroHasNoPositions) {
  for (std::size_t d = 0; d < 5; ++d) {
    Position ext(3);
    ext[d] = 0;
    EXPECT_THROW(SubImg::indexToCoord(1, ext), int) << ext;
    const std::vector<Message> messages = recorder.take();
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0].type, VX_FATAL);
    EXPECT_EQ(messages[0].code, VX_BAD_POINTER);
  }
  EXPECT_EQ(SubImg::indexToCoord(5, Position(3, 3, 3, 3, 3, 0)), Position(2, 1, 0, 0, 0, 0)) << "u does not enter";
}

TEST_F(SubImgTest, IndicesOfWrappedExtentsAreDefined) {
  const VXint64 least = std::numeric_limits<VXint64>::min();
  EXPECT_EQ(SubImg::coordToIndex(Position(least), Position(3)), SubImg::coordToIndex(Position(least), Position(3)));
  // 3 times this number wraps to 1, which leaves nothing for the strides below.
  EXPECT_THROW(SubImg::indexToCoord(7, Position(3, 1, 1, 1, -6148914691236517205, 1)), int);
  recorder.take();
}

// Comparison --------------------------------------------------------------------------------------------------------

struct Comparison {
  bool sameBox = false, sameDataType = false, thisInsideOther = false, otherInsideThis = false, sameContents = false;
  Position firstDifference;
  Comparison(const SubImg& a, const SubImg& b) {
    a.compare(b, &sameBox, &sameDataType, &thisInsideOther, &otherInsideThis, &sameContents, &firstDifference);
  }
  std::string flags() const {
    std::string text;
    for (const bool flag : {sameBox, sameDataType, thisInsideOther, otherInsideThis, sameContents}) {
      text += flag ? '1' : '0';
    }
    return text;
  }
};

TEST_F(SubImgTest, ComparesWithNothingAskedFor) {
  const TestBlock a(smallBox, VXint16Type);
  a.img.compare(SubImg(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
}

TEST_F(SubImgTest, EqualBlocksAreEqualInAll) {
  TestBlock a(smallBox, VXfloatType), b(smallBox, VXfloatType);
  a.img.fillSubImg(std::numeric_limits<double>::quiet_NaN());
  b.img.fillSubImg(std::numeric_limits<double>::quiet_NaN());
  const Comparison result(a.img, b.img);
  EXPECT_EQ(result.flags(), "11111") << "bytes count, also those of NaN";
  EXPECT_EQ(result.firstDifference, Position(-1));
}

TEST_F(SubImgTest, ZerosOfDifferentSignsDiffer) {
  TestBlock a(smallBox, VXdoubleType), b(smallBox, VXdoubleType);
  a.img.fillSubImg(0.0);
  b.img.fillSubImg(0.0);
  const Position p(2, 3, 4, 4, 6, 6);
  b.set(p, -0.0);
  const Comparison result(a.img, b.img);
  EXPECT_EQ(result.flags(), "11110");
  EXPECT_EQ(result.firstDifference, p);
}

TEST_F(SubImgTest, TellsWhichBlockLiesInTheOther) {
  TestBlock outer(boxAt(Position(0), Position(5, 5, 5, 5, 7, 7)), VXuint8Type);
  TestBlock inner(boxAt(Position(1), Position(2)), VXuint8Type);
  EXPECT_EQ(Comparison(inner.img, outer.img).flags(), "01101");
  EXPECT_EQ(Comparison(outer.img, inner.img).flags(), "01011");
}

TEST_F(SubImgTest, BlocksWithoutOverlapHaveTheSameContents) {
  TestBlock a(boxAt(Position(0), Position(2)), VXuint8Type), b(boxAt(Position(10), Position(2)), VXuint8Type);
  const Comparison result(a.img, b.img);
  EXPECT_EQ(result.flags(), "01001");
  EXPECT_EQ(result.firstDifference, Position(-1));
}

TEST_F(SubImgTest, BlocksOfDifferentTypesAreNotRead) {
  TestBlock a(smallBox, VXuint8Type);
  SubImg b(smallBox, VXint8Type, reinterpret_cast<void*>(8));  // an address that can't be read
  const Comparison result(a.img, b);
  EXPECT_EQ(result.flags(), "10110");
  EXPECT_EQ(result.firstDifference, Position(-1));
}

TEST_F(SubImgTest, BlocksWithoutDataOrOfInvalidTypeAreNotRead) {
  TestBlock a(smallBox, VXuint8Type);
  EXPECT_EQ(Comparison(a.img, SubImg(smallBox, VXuint8Type)).flags(), "11110");
  EXPECT_EQ(Comparison(SubImg(smallBox, VXuint8Type), a.img).flags(), "11110");
  const SubImg invalid(smallBox, -1, a.img.getData());
  EXPECT_EQ(Comparison(invalid, invalid).flags(), "11110");
}

// Types that have no loops ------------------------------------------------------------------------------------------

TEST_F(SubImgTest, AnInvalidTypeIsReportedUnderTheNameOfTheFunction) {
  unsigned char memory[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  SubImg block(boxAt(Position(0), Position(8, 1, 1, 1, 1, 1)), -1, memory);
  const auto expectReport = [&](const char* function) {
    EXPECT_EQ(recorder.take(),
              std::vector<Message>({{VX_FATAL, VX_BAD_DATA_TYPE, function, "Type case not executed."}}));
  };
  VXldouble minValue = 3, maxValue = 4;
  block.copySubImage(block, ScaleShiftData(2, 1));
  expectReport("SubImg::copySubImage");
  block.fillSubImg(1);
  expectReport("SubImg::fillSubImg");
  block.fillSubImgWithTypeData(memory);
  expectReport("SubImg::fillSubImgWithTypeData");
  block.fillBordersWithLDoubleValue(SubImgBox(), 1);
  expectReport("SubImg::fillBordersWithLDoubleValue");
  block.fillBordersWithTypeData(SubImgBox(), memory);
  expectReport("SubImg::fillBordersWithTypeData");
  block.fillBordersWithInputValues(SubImgBox(), block);
  expectReport("SubImg::fillBordersWithInputValues");
  block.fillBordersWithClampedInputValues(block.getBox());
  expectReport("SubImg::fillBordersWithClampedInputValues");
  EXPECT_FALSE(block.isOneValued());
  expectReport("SubImg::isOneValued");
  EXPECT_EQ(block.calcMinMax(minValue, maxValue, nullptr), 0);
  expectReport("SubImg::calcMinMax");
  EXPECT_EQ(minValue, 3);
  EXPECT_EQ(maxValue, 4);
  std::ostringstream stream;
  stream << block;
  expectReport("operator<<(ostream& s, const VX_NAMESPACE::SubImg &fc)");
  for (unsigned char i = 0; i < 8; ++i) EXPECT_EQ(memory[i], i + 1);
}

TEST_F(SubImgTest, AnInvalidInputTypeIsReportedWithItsNumber) {
  TestBlock out(smallBox, VXint16Type), expected(smallBox, VXint16Type);
  const SubImg in(smallBox, -1, out.img.getData());
  out.img.copySubImage(in, ScaleShiftData());
  EXPECT_EQ(recorder.take(), std::vector<Message>({{VX_FATAL, VX_BAD_DATA_TYPE, "_copySubImage##DTYPE",
                                                    "Type case not executed, case type -1 does not exist."}}));
  out.img.fillBordersWithInputValues(SubImgBox(), in);
  EXPECT_EQ(recorder.take(), std::vector<Message>({{VX_FATAL, VX_BAD_DATA_TYPE, "_fillBWIV##ODTYPE",
                                                    "Type case not executed, case type -1 does not exist."}}));
  EXPECT_TRUE(out.bytes() == expected.bytes());
}

// Fills -------------------------------------------------------------------------------------------------------------

TEST_F(SubImgTest, AValueIsCutAndWrappedNotClamped) {
  TestBlock block(smallBox, VXuint8Type);
  block.img.fillSubImg(300.7);
  forEachPosition(smallBox, [&](const Position& p) { ASSERT_EQ(block.get<VXuint8>(p), 44); });
  block.img.fillSubImg(-1.9);
  EXPECT_EQ(block.get<VXuint8>(smallBox.v2), 255);
  TestBlock wide(smallBox, VXuint32Type);
  wide.img.fillSubImg(-1);
  EXPECT_EQ(wide.get<VXuint32>(smallBox.v2), 4294967295U);
}

TEST_F(SubImgTest, ANullVoxelFillsNothing) {
  TestBlock block(smallBox, VXint32Type), expected(smallBox, VXint32Type);
  block.img.fillSubImgWithTypeData(nullptr);
  block.img.fillBordersWithTypeData(SubImgBox(), nullptr);
  EXPECT_TRUE(block.bytes() == expected.bytes());
  SubImg(smallBox, -1).fillSubImgWithTypeData(nullptr);
}

TEST_F(SubImgTest, AVoxelIsTakenFromAnyAddress) {
  TestBlock block(smallBox, VXint32Type);
  const VXuint8 bytes[] = {0, 1, 2, 3, 4};
  block.img.fillSubImgWithTypeData(bytes + 1);
  forEachPosition(smallBox, [&](const Position& p) { ASSERT_EQ(block.get<VXint32>(p), 0x04030201); });
}

TEST_F(SubImgTest, MissingDataIsFatal) {
  VXldouble minValue = 0, maxValue = 0;
  const auto expectFatal = [&] {
    const std::vector<Message> messages = recorder.take();
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0].type, VX_FATAL);
    EXPECT_EQ(messages[0].code, VX_BAD_POINTER);
  };
  TestBlock filled(smallBox, VXint16Type);
  for (const VXDataType type : {VXDataType{VXint16Type}, complexType()}) {
    SubImg block(smallBox, type);
    EXPECT_THROW(block.fillSubImg(1), int);
    expectFatal();
    EXPECT_THROW(block.calcMinMax(minValue, maxValue, nullptr), int);
    expectFatal();
    const SubImgBox part(smallBox.v2, smallBox.v2);
    EXPECT_THROW(block.calcMinMax(minValue, maxValue, &part), int);
    expectFatal();
    EXPECT_THROW(block.fillBordersWithLDoubleValue(part, 1), int);
    expectFatal();
    EXPECT_THROW(block.fillBordersWithInputValues(part, filled.img), int);
    expectFatal();
    EXPECT_THROW(filled.img.fillBordersWithInputValues(part, block), int);
    expectFatal();
    EXPECT_THROW(block.fillBordersWithClampedInputValues(part), int);
    expectFatal();
    EXPECT_FALSE(block.isOneValued());
  }
}

TEST_F(SubImgTest, AnEmptyBlockWithoutDataCantBeFilled) {
  SubImg block;
  EXPECT_THROW(block.fillSubImg(1), int);
  EXPECT_EQ(recorder.take().size(), 1U);
}

TEST_F(SubImgTest, ANegativeNumberOfVoxelsFillsNothing) {
  TestBlock block(smallBox, VXint32Type), expected(smallBox, VXint32Type);
  SubImg negative(boxAt(Position(0), Position(-1, 4, 2, 1, 1, 1)), VXint32Type, block.img.getData());
  negative.fillSubImg(7);
  EXPECT_TRUE(block.bytes() == expected.bytes());
}

// Text --------------------------------------------------------------------------------------------------------------

TEST_F(SubImgTest, PrintsBoxTypeAndVoxels) {
  TestBlock block(boxAt(Position(3, 0, 0, 0, 0, 0), Position(2, 2, 1, 1, 1, 1)), VXint16Type);
  block.img.fillSubImg(-7);
  block.set(Position(4, 1, 0, 0, 0, 0), VXint16{12});
  std::ostringstream stream;
  stream << block.img;
  const std::string text = stream.str();
  EXPECT_NE(text.find("(v1=(3,0,0,0,0,0), v2=(4,1,0,0,0,0))"), std::string::npos) << text;
  EXPECT_NE(text.find("int16"), std::string::npos) << text;
  EXPECT_NE(text.find("(3,0,0,0,0,0): -7 -7\n(3,1,0,0,0,0): -7 12\n"), std::string::npos) << text;
}

TEST_F(SubImgTest, PrintsABlockWithoutMemory) {
  std::ostringstream stream;
  stream << SubImg(smallBox, complexType());
  EXPECT_NE(stream.str().find("test complex"), std::string::npos);
}

}  // namespace
}  // namespace vx::test
