#include "TestTypes.h"
#include "TypesInC.h"

#include "vxDataTypes.h"
#include "vxTypeInfos.h"

#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace vx::test {
namespace {

// What the queries answered when the process began, before the library's own start-up.
struct BeforeStartUp {
  VXint32 numTypes, isValid, isStandard, isSigned, areInitialized;
  VXuint32 size, registeredSize, physicalSize, numComponents;
  VXDataType physicalType, equivalent, rangeOrder, byName, boolType, promoted;
  double min, max;
  bool hasName, hasBoolName16, hasRecord, hasStructInfo;
} before;

__attribute__((constructor(101))) void queryBeforeStartUp() {
  before.numTypes = VXNumDataTypes();
  before.isValid = VXIsValidType(0);
  before.isStandard = VXIsStandardType(0);
  before.isSigned = VXIsSigned(0);
  before.areInitialized = VXAreTypesInitialized();
  before.size = VXSizeOf(0);
  before.registeredSize = VXSizeOfRegisteredType(0);
  before.physicalSize = VXSizeOfPhysicalType(19);
  before.numComponents = VXTypeGetNumComponents(0);
  before.physicalType = VXGetPhysicalDataType(0);
  before.equivalent = VXGetRangeAndPrecisionEquivalent(0);
  before.rangeOrder = VXRangeOrder(0);
  before.byName = VXDataTypeFromName("int8");
  before.boolType = VXGetVXDataTypeForCharCode('b');
  before.promoted = VXPromotedType(0, 1);
  before.min = VXDataTypeMin(0);
  before.max = VXDataTypeMax(0);
  before.hasName = *VXNameFromDataType(0) != '\0';
  before.hasBoolName16 = std::strcmp(VXGetVXDataTypeNameForCharCode('b'), "unsigned int16") == 0;
  before.hasRecord = VXGetTypeInfosForDataType(0) != nullptr;
  before.hasStructInfo = *VXTypeGetStructInfoString(0) != '\0';
}

TEST(DataTypesTest, EveryNumberIsInvalidBeforeStartUp) {
  EXPECT_EQ(before.numTypes, 0);
  EXPECT_EQ(before.isValid, 0);
  EXPECT_EQ(before.isSigned, 0);
  EXPECT_EQ(before.areInitialized, 0);
  EXPECT_EQ(before.size, 0u);
  EXPECT_EQ(before.registeredSize, 0u);
  EXPECT_EQ(before.numComponents, 0u);
  EXPECT_EQ(before.physicalType, -1);
  EXPECT_EQ(before.equivalent, -1);
  EXPECT_EQ(before.rangeOrder, -1);
  EXPECT_EQ(before.byName, -1);
  EXPECT_EQ(before.promoted, -1);
  EXPECT_EQ(before.min, 0);
  EXPECT_EQ(before.max, 0);
  EXPECT_FALSE(before.hasName);
  EXPECT_FALSE(before.hasRecord);
  EXPECT_FALSE(before.hasStructInfo);
}

TEST(DataTypesTest, WhatNeedsNoTableWorksBeforeStartUp) {
  EXPECT_EQ(before.isStandard, 1);
  EXPECT_EQ(before.physicalSize, 512u);
  EXPECT_EQ(before.boolType, 3);
  EXPECT_TRUE(before.hasBoolName16);
}

class StandardTypesTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { ASSERT_EQ(VXInitializeTypes(), 1); }
};

struct StandardRow {
  VXDataType number;
  const char* name;
  VXuint32 bytes;
  int isSigned, isInteger, isFloat;
  const char* code;
  double min, max;
};

constexpr StandardRow standardRows[] = {
    {0, "int8", 1, 1, 1, 0, "C", -128, 127},
    {1, "unsigned int8", 1, 0, 1, 0, "c", 0, 255},
    {2, "int16", 2, 1, 1, 0, "S", -32768, 32767},
    {3, "unsigned int16", 2, 0, 1, 0, "s", 0, 65535},
    {4, "int32", 4, 1, 1, 0, "I", -2147483648.0, 2147483647},
    {5, "unsigned int32", 4, 0, 1, 0, "i", 0, 4294967295.0},
    {6, "float", 4, 1, 0, 1, "f", -3.4028234663852886e+38, 3.4028234663852886e+38},
    {7, "double", 8, 1, 0, 1, "d", -1.7976931348623157e+308, 1.7976931348623157e+308},
    {8, "long double", 8, 1, 0, 1, "D", -1.7976931348623157e+308, 1.7976931348623157e+308},
    {9, "int64", 8, 1, 1, 0, "6", -9223372036854775808.0, 9223372036854775808.0},
};

TEST_F(StandardTypesTest, HaveTheirNumberNameSizeKindAndRange) {
  static_assert(VXint8Type == 0 && VXuint8Type == 1 && VXint16Type == 2 && VXuint16Type == 3 && VXint32Type == 4 &&
                VXuint32Type == 5 && VXfloatType == 6 && VXdoubleType == 7 && VXldoubleType == 8 && VXint64Type == 9);
  ASSERT_GE(VXNumDataTypes(), 10);
  for (const StandardRow& row : standardRows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(VXIsValidType(row.number), 1);
    EXPECT_EQ(VXIsStandardType(row.number), 1);
    EXPECT_STREQ(VXNameFromDataType(row.number), row.name);
    EXPECT_STREQ(VXDataTypeNames()[row.number], row.name);
    EXPECT_EQ(VXDataTypeFromName(row.name), row.number);
    EXPECT_EQ(VXSizeOf(row.number), row.bytes);
    EXPECT_EQ(VXSizeOfRegisteredType(row.number), row.bytes);
    EXPECT_EQ(VXSizeOfPhysicalType(row.number), row.bytes);
    EXPECT_EQ(VXGetPhysicalDataType(row.number), row.number);
    EXPECT_EQ(VXIsSigned(row.number), row.isSigned);
    EXPECT_EQ(VXIsIntType(row.number), row.isInteger);
    EXPECT_EQ(VXIsFloatType(row.number), row.isFloat);
    EXPECT_EQ(VXDataTypeMin(row.number), row.min);
    EXPECT_EQ(VXDataTypeMax(row.number), row.max);
    EXPECT_EQ(VXGetRangeAndPrecisionEquivalent(row.number), row.number);
    EXPECT_STREQ(VXTypeGetStructInfoString(row.number), row.code);
    EXPECT_EQ(VXTypeGetNumComponents(row.number), 1u);
    EXPECT_EQ(VXGetVXDataTypeForCharCode(row.code[0]), row.number);
    double value = -1;
    std::memcpy(&value, "\1\1\1\1\1\1\1\1", 8);
    std::memcpy(&value, VXGetTypeInfosForDataType(row.number)->typeDefaultPtr, row.bytes);
    EXPECT_EQ(std::memcmp(&value, "\0\0\0\0\0\0\0\0", row.bytes), 0) << "the default value is 0";
  }
}

TEST_F(StandardTypesTest, AnInvalidNumberGetsTheNeutralValues) {
  const VXDataType invalid[] = {-1, -2, std::numeric_limits<VXDataType>::min(), VXNumDataTypes(),
                                std::numeric_limits<VXDataType>::max()};
  for (const VXDataType number : invalid) {
    SCOPED_TRACE(number);
    EXPECT_EQ(VXIsValidType(number), 0);
    EXPECT_EQ(VXIsStandardType(number), 0);
    EXPECT_STREQ(VXNameFromDataType(number), "");
    EXPECT_EQ(VXDataTypeMin(number), 0);
    EXPECT_EQ(VXDataTypeMax(number), 0);
    EXPECT_EQ(VXSizeOf(number), 0u);
    EXPECT_EQ(VXSizeOfRegisteredType(number), 0u);
    EXPECT_EQ(VXGetPhysicalDataType(number), -1);
    EXPECT_EQ(VXIsSigned(number), 0);
    EXPECT_EQ(VXIsIntType(number), 0);
    EXPECT_EQ(VXIsFloatType(number), 0);
    EXPECT_EQ(VXGetTypeInfosForDataType(number), nullptr);
    EXPECT_EQ(VXTypeInfosAtIdx(number), nullptr);
    EXPECT_EQ(VXTypeGetNumComponents(number), 0u);
    EXPECT_STREQ(VXTypeGetStructInfoString(number), "");
  }
}

TEST_F(StandardTypesTest, NamesAreComparedByteByByte) {
  EXPECT_EQ(VXDataTypeFromName("unsigned int8"), 1);
  EXPECT_EQ(VXDataTypeFromName("Unsigned int8"), -1);
  EXPECT_EQ(VXDataTypeFromName("unsigned int8 "), -1);
  EXPECT_EQ(VXDataTypeFromName("unsigned int"), -1);
  EXPECT_EQ(VXDataTypeFromName(""), -1);
  EXPECT_EQ(VXDataTypeFromName(nullptr), -1);
}

TEST(PhysicalTypesTest, HaveFixedSizes) {
  constexpr VXuint32 sizes[20] = {1, 1, 2, 2, 4, 4, 4, 8, 8, 8, 4, 8, 12, 16, 24, 32, 64, 128, 256, 512};
  for (VXDataType type = 0; type < 20; ++type) EXPECT_EQ(VXSizeOfPhysicalType(type), sizes[type]) << type;
  EXPECT_EQ(VXSizeOfPhysicalType(20), 0u);
  EXPECT_EQ(VXSizeOfPhysicalType(-1), 0u);
  EXPECT_EQ(VXSizeOfPhysicalType(std::numeric_limits<VXDataType>::min()), 0u);
  EXPECT_EQ(VXSizeOfPhysicalType(std::numeric_limits<VXDataType>::max()), 0u);
}

TEST(CarrierTest, IsTheSmallestWithRoom) {
  constexpr VXuint32 thresholds[] = {4, 8, 12, 16, 24, 32, 64, 128, 256, 512};
  EXPECT_EQ(VXGetCarrierTypeForSize(0), -1);
  VXDataType expected = 10;
  for (VXuint32 size = 1; size <= 512; ++size) {
    if (size > thresholds[expected - 10]) ++expected;
    EXPECT_EQ(VXGetCarrierTypeForSize(size), expected) << size;
  }
  EXPECT_EQ(VXGetCarrierTypeForSize(513), -1);
  EXPECT_EQ(VXGetCarrierTypeForSize(~0ULL), -1);
  EXPECT_EQ(VXGetCarrierTypeForSize((1ULL << 32) + 1), -1);
}

struct CodeRow {
  char code;
  const char* cName;
  const char* vxName;
  VXDataType type;
  VXuint32 bytes;
  VXint32 isSigned, isInteger, isFloat, isLong;
};

constexpr CodeRow codeRows[] = {
    {'b', "bool", "unsigned int8", 1, 1, 0, 1, 0, 0}, {'c', "unsigned char", "unsigned int8", 1, 1, 0, 1, 0, 0},
    {'C', "char", "int8", 0, 1, 1, 1, 0, 0},          {'s', "unsigned short", "unsigned int16", 3, 2, 0, 1, 0, 0},
    {'S', "signed short", "int16", 2, 2, 1, 1, 0, 0}, {'i', "unsigned int", "unsigned int32", 5, 4, 0, 1, 0, 0},
    {'I', "signed int", "int32", 4, 4, 1, 1, 0, 0},   {'l', "unsigned long", "unsigned int32", 5, 4, 0, 1, 0, 0},
    {'L', "long", "int32", 4, 4, 1, 1, 0, 0},         {'f', "float", "float", 6, 4, 1, 0, 1, 0},
    {'d', "double", "double", 7, 8, 1, 0, 1, 0},      {'D', "long double", "long double", 8, 8, 1, 0, 1, 1},
    {'6', "int64", "int64", 9, 8, 1, 1, 0, 1},
};

TEST_F(StandardTypesTest, ComponentCodesAreThoseOfTheTableAndNoOther) {
  for (int character = 0; character < 256; ++character) {
    const char code = static_cast<char>(character);
    SCOPED_TRACE(character);
    CodeRow row = {code, "", "", -1, 0, 0, 0, 0, 0};
    int isKnown = 0;
    for (const CodeRow& known : codeRows) {
      if (known.code == code) {
        row = known;
        isKnown = 1;
      }
    }
    EXPECT_STREQ(VXGetCDataTypeNameForCharCode(code), row.cName);
    EXPECT_STREQ(VXGetVXDataTypeNameForCharCode(code), row.vxName);
    EXPECT_EQ(VXGetVXDataTypeForCharCode(code), row.type);
    EXPECT_EQ(VXTypeComponentSize(code), row.bytes);
    VXint32 isSigned = 7, isInteger = 7, isFloat = 7, isLong = 7;
    EXPECT_EQ(VXTypeGetComponentProperties(code, &isSigned, &isInteger, &isFloat, &isLong), isKnown);
    EXPECT_EQ(isSigned, row.isSigned);
    EXPECT_EQ(isInteger, row.isInteger);
    EXPECT_EQ(isFloat, row.isFloat);
    EXPECT_EQ(isLong, row.isLong);
    EXPECT_EQ(VXTypeGetComponentProperties(code, nullptr, nullptr, nullptr, nullptr), isKnown);
  }
}

TEST(RegisteredTypesTest, AreStoredInCarriersAndHaveAKindOnlyIfAllComponentsHaveIt) {
  ASSERT_TRUE(registerTestTypes());
  ASSERT_TRUE(registerTestTypes()) << "a second call changes nothing";
  const struct {
    VXDataType type, physicalType;
    VXuint32 size, physicalSize, numComponents;
    int isSigned, isInteger, isFloat;
  } rows[] = {
      {complexType(), 11, 8, 8, 2, 1, 0, 1}, {vector3Type(), 14, 24, 24, 3, 1, 0, 1},
      {mixedType(), 12, 12, 12, 5, 0, 0, 0}, {largeType(), 19, 512, 512, 128, 0, 1, 0},
      {sparseType(), 10, 4, 4, 2, 1, 1, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(VXNameFromDataType(row.type));
    ASSERT_GE(row.type, 10);
    EXPECT_EQ(VXIsStandardType(row.type), 0);
    EXPECT_EQ(VXGetPhysicalDataType(row.type), row.physicalType);
    EXPECT_EQ(VXSizeOfRegisteredType(row.type), row.size);
    EXPECT_EQ(VXSizeOf(row.type), row.physicalSize);
    EXPECT_EQ(VXTypeGetNumComponents(row.type), row.numComponents);
    EXPECT_EQ(VXIsSigned(row.type), row.isSigned);
    EXPECT_EQ(VXIsIntType(row.type), row.isInteger);
    EXPECT_EQ(VXIsFloatType(row.type), row.isFloat);
    EXPECT_EQ(VXDataTypeFromName(VXNameFromDataType(row.type)), row.type);
    EXPECT_STREQ(VXDataTypeNames()[row.type], VXNameFromDataType(row.type));
  }
}

TEST(RegisteredTypesTest, CanBeMadeInC) {
  ASSERT_EQ(VXInitializeTypes(), 1);
  EXPECT_EQ(vxTestTypesInC(), 0);
}

}  // namespace
}  // namespace vx::test
