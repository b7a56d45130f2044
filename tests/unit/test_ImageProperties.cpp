#include "MessageRecorder.h"

#include "vxDataTypes.h"
#include "vxImageProperties.h"

#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace vx::test {
namespace {

using Messages = std::vector<Message>;
using Ext = TVector<VXint64>;

constexpr VXDataType invalidTypes[] = {-1, -2147483647 - 1, 2147483647};

// Shows the members, and where they lie.
class OpenProperties : public ImageProperties {
 public:
  using ImageProperties::_dataType;
  using ImageProperties::_imgExt;
  using ImageProperties::_isUpToDate;
  using ImageProperties::_maxVoxelValue;
  using ImageProperties::_minVoxelValue;
  using ImageProperties::ImageProperties;
};

ImageProperties someProperties() {
  ImageProperties properties(Ext(1, 2, 3, 4, 5, 6), VXint16Type, -3.5L, 7.25L);
  properties.setUpToDate();
  return properties;
}

void expectSomeProperties(const ImageProperties& properties) {
  EXPECT_EQ(properties.getImgExt(), Ext(1, 2, 3, 4, 5, 6));
  EXPECT_EQ(properties.getDataType(), VXint16Type);
  EXPECT_EQ(properties.getMinVoxelValue(), -3.5);
  EXPECT_EQ(properties.getMaxVoxelValue(), 7.25);
}

// Virtual functions are found by their position in the table of the class: modules are built against it.
template <class Function>
std::ptrdiff_t slotOf(Function function) {
  std::ptrdiff_t position = 0;
  std::memcpy(&position, &function, sizeof position);
  return (position - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

TEST(ImagePropertiesTest, DefaultsAreAnEmptyImageOfBytesOutOfDate) {
  const ImageProperties properties;
  EXPECT_EQ(properties.getDataType(), VXuint8Type);
  EXPECT_EQ(properties.getImgExt(), Ext(0));
  EXPECT_EQ(properties.getMinVoxelValue(), 0.0);
  EXPECT_EQ(properties.getMaxVoxelValue(), 0.0);
  EXPECT_FALSE(properties.isUpToDate());
}

TEST(ImagePropertiesTest, ConstructorTakesThePropertiesOutOfDate) {
  const ImageProperties properties(Ext(1, 2, 3, 4, 5, 6), VXint16Type, -3.5L, 7.25L);
  expectSomeProperties(properties);
  EXPECT_FALSE(properties.isUpToDate());
}

TEST(ImagePropertiesTest, ConstructorStoresAnyDataTypeInSilence) {
  MessageRecorder recorder;
  for (const VXDataType type : invalidTypes) {
    EXPECT_EQ(ImageProperties(Ext(), type, 0, 0).getDataType(), type);
  }
  EXPECT_EQ(recorder.take(), Messages());
}

TEST(ImagePropertiesTest, RangeIsHeldAsDouble) {
  static_assert(sizeof(OpenProperties::_minVoxelValue) == 8 && sizeof(OpenProperties::_maxVoxelValue) == 8);
  ImageProperties properties(Ext(), VXuint8Type, 0.1L, 0.7L);
  EXPECT_EQ(properties.getMinVoxelValue(), 0.1);
  EXPECT_EQ(properties.getMaxVoxelValue(), 0.7);
  properties.setMinVoxelValue(5);
  properties.setMaxVoxelValue(-0.3L);
  EXPECT_EQ(properties.getMinVoxelValue(), 5.0);
  EXPECT_EQ(properties.getMaxVoxelValue(), -0.3);
}

TEST(ImagePropertiesTest, MembersLieInTheirOrder) {
  const OpenProperties properties;
  const std::vector<const void*> members = {&properties._dataType, &properties._imgExt, &properties._minVoxelValue,
                                            &properties._maxVoxelValue, &properties._isUpToDate};
  for (std::size_t i = 1; i < members.size(); ++i) EXPECT_LT(members[i - 1], members[i]) << i;
}

TEST(ImagePropertiesTest, VirtualFunctionsKeepTheirOrder) {
  // The destructor takes the first two.
  EXPECT_EQ(slotOf(&ImageProperties::setImgExt), 2);
  EXPECT_EQ(slotOf(&ImageProperties::setDataType), 3);
  EXPECT_EQ(slotOf(&ImageProperties::isUpToDate), 4);
  EXPECT_EQ(slotOf(&ImageProperties::setUpToDate), 5);
  EXPECT_EQ(slotOf(&ImageProperties::setOutOfDate), 6);
  EXPECT_EQ(slotOf(&ImageProperties::getTypeId), 7);
  EXPECT_EQ(slotOf(&ImageProperties::getTypeIdName), 8);
  EXPECT_EQ(slotOf(&ImageProperties::typeInstanceCounter), 9);
}

TEST(ImagePropertiesTest, TheClassIsARegisteredRootThatCanBeMadeByName) {
  const RuntimeType* type = Runtime::fromName("ImageProperties");
  ASSERT_NE(type, nullptr);
  EXPECT_EQ(type, ImageProperties::getClassTypeId());
  EXPECT_EQ(type->getParent(), nullptr);
  EXPECT_STREQ(type->getDllName(), "VX");
  EXPECT_EQ(type->getCreateCB(), &ImageProperties::createCB);

  const std::unique_ptr<ImageProperties> made(static_cast<ImageProperties*>(ImageProperties::createCB()));
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(*made, ImageProperties());
  EXPECT_EQ(made->getTypeId(), type);
  EXPECT_STREQ(made->getTypeIdName(), "ImageProperties");
  EXPECT_EQ(&made->typeInstanceCounter(), &type->instanceCounter());
}

TEST(ImagePropertiesTest, ExtentIsStoredAsItIs) {
  ImageProperties properties;
  properties.setImgExt(Ext(-1, 0, 3, 4, 5, std::numeric_limits<VXint64>::max()));
  EXPECT_EQ(properties.getImgExt(), Ext(-1, 0, 3, 4, 5, std::numeric_limits<VXint64>::max()));
}

TEST(ImagePropertiesTest, BoxOfTheImageStartsAtTheOrigin) {
  EXPECT_EQ(someProperties().getBoxFromImgExt(), SubImgBox(Ext(0), Ext(0, 1, 2, 3, 4, 5)));
  EXPECT_TRUE(ImageProperties().getBoxFromImgExt().isEmpty());
}

TEST(ImagePropertiesTest, EveryStandardTypeIsTaken) {
  MessageRecorder recorder;
  ImageProperties properties;
  for (VXDataType type = VXint8Type; type <= VXint64Type; ++type) {
    properties.setDataType(type);
    EXPECT_EQ(properties.getDataType(), type);
  }
  EXPECT_EQ(recorder.take(), Messages());
}

TEST(ImagePropertiesTest, InvalidTypeLeavesBytesAndIsFatal) {
  MessageRecorder recorder;
  for (const VXDataType type : invalidTypes) {
    ImageProperties properties(Ext(), VXfloatType, 0, 0);
    properties.setDataType(type);
    EXPECT_EQ(properties.getDataType(), VXuint8Type);
    EXPECT_EQ(
        recorder.take(),
        Messages({{VX_FATAL, VX_BAD_PARAMETER, "vxImageProperties::setDataType", "Continuing with VXuint8 type."}}));
  }
}

TEST(ImagePropertiesTest, StateGoesBothWays) {
  ImageProperties properties;
  properties.setUpToDate();
  EXPECT_TRUE(properties.isUpToDate());
  properties.setUpToDate();
  EXPECT_TRUE(properties.isUpToDate());
  properties.setOutOfDate();
  EXPECT_FALSE(properties.isUpToDate());
}

TEST(ImagePropertiesTest, CopiesTakeTheState) {
  const ImageProperties original = someProperties();
  const ImageProperties copy(original);
  expectSomeProperties(copy);
  EXPECT_TRUE(copy.isUpToDate());

  ImageProperties assigned;
  EXPECT_EQ(&(assigned = original), &assigned);
  expectSomeProperties(assigned);
  EXPECT_TRUE(assigned.isUpToDate());

  const ImageProperties& self = assigned;
  assigned = self;
  expectSomeProperties(assigned);
}

TEST(ImagePropertiesTest, SetImgPropsLeavesTheState) {
  ImageProperties outOfDate;
  outOfDate.setImgProps(someProperties());
  expectSomeProperties(outOfDate);
  EXPECT_FALSE(outOfDate.isUpToDate());

  ImageProperties upToDate;
  upToDate.setUpToDate();
  upToDate.setImgProps(ImageProperties(Ext(1, 2, 3, 4, 5, 6), VXint16Type, -3.5L, 7.25L));
  expectSomeProperties(upToDate);
  EXPECT_TRUE(upToDate.isUpToDate());
}

TEST(ImagePropertiesTest, EqualityAsksEveryMember) {
  const ImageProperties reference = someProperties();
  EXPECT_TRUE(reference == someProperties());
  EXPECT_FALSE(reference != someProperties());

  std::vector<ImageProperties> others(5, reference);
  others[0].setDataType(VXuint16Type);
  others[1].setImgExt(Ext(1, 2, 3, 4, 5, 7));
  others[2].setMinVoxelValue(-3.25L);
  others[3].setMaxVoxelValue(7.5L);
  others[4].setOutOfDate();
  for (const ImageProperties& other : others) {
    EXPECT_FALSE(reference == other);
    EXPECT_TRUE(reference != other);
  }
}

TEST(ImagePropertiesTest, BoundsDifferFromTheSmallestNormalNumberOn) {
  constexpr double smallest = 2.2250738585072014e-308;
  ImageProperties a;
  ImageProperties b;
  b.setMinVoxelValue(static_cast<long double>(smallest / 2));
  b.setMaxVoxelValue(static_cast<long double>(-smallest / 2));
  EXPECT_TRUE(a == b);
  b.setMinVoxelValue(static_cast<long double>(smallest));
  EXPECT_FALSE(a == b);
  b.setMinVoxelValue(0);
  b.setMaxVoxelValue(static_cast<long double>(-smallest));
  EXPECT_FALSE(a == b);
}

TEST(ImagePropertiesTest, InfiniteBoundsDifferFromThemselves) {
  ImageProperties properties;
  properties.setMaxVoxelValue(std::numeric_limits<long double>::infinity());
  const ImageProperties& self = properties;
  EXPECT_FALSE(properties == self);
  EXPECT_TRUE(properties != self);
}

}  // namespace
}  // namespace vx::test
