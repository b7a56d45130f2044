// The field of a voxel.

#include "FieldListener.h"
#include "MessageRecorder.h"
#include "TestTypes.h"

#include "vxDataTypes.h"
#include "vxUniversalTypeField.h"
#include "vxUtilsAPI.h"

#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace vx::test {
namespace {

using Strengths = std::vector<int>;
using Messages = std::vector<Message>;

// Shows the members.
class OpenField : public UniversalTypeField {
 public:
  using UniversalTypeField::_origStrValue;
  using UniversalTypeField::_typeData;
  using UniversalTypeField::UniversalTypeField;
};

template <class T>
T valueOf(const UniversalTypeField& field) {
  T value;
  std::memcpy(&value, field.getShortLivedUniversalTypeValue(), sizeof value);
  return value;
}

TEST(UniversalTypeFieldTest, StartsInvalidWithZeroBytes) {
  for (const VXDataType type : {-1, int{VXint16Type}, 12345}) {
    OpenField field("f", type);
    EXPECT_EQ(field.getName(), "f");
    EXPECT_EQ(field.getDataType(), type);
    EXPECT_EQ(field.isValidValue(), 0);
    EXPECT_EQ(field.getStringValue(), "");
    static_assert(sizeof field._typeData == 512);
    for (const unsigned char byte : field._typeData) EXPECT_EQ(byte, 0);
    EXPECT_EQ(field.getValueCastToLDouble(), 0);
  }
}

TEST(UniversalTypeFieldTest, IsInvalidUntilTypeAndTextAreSet) {
  UniversalTypeField field("f");
  FieldListener listener(field);
  field.setStringValue("17");
  EXPECT_EQ(field.isValidValue(), 0);
  EXPECT_EQ(field.getStringValue(), "");
  field.setDataType(VXint16Type);
  EXPECT_EQ(field.isValidValue(), 1);
  EXPECT_EQ(field.getStringValue(), "17");
  EXPECT_EQ(valueOf<VXint16>(field), 17);
  EXPECT_EQ(field.getValueCastToLDouble(), 17);
  field.setDataType(-1);
  EXPECT_EQ(field.isValidValue(), 0);
  EXPECT_EQ(field.getStringValue(), "");
  EXPECT_EQ(listener.take(), (Strengths{2, 2, 2}));
}

TEST(UniversalTypeFieldTest, TextIsReadAnewInAnotherType) {
  OpenField field("f", VXint32Type);
  field.setStringValue("3.75 and more");
  EXPECT_EQ(field.getStringValue(), "3");
  EXPECT_EQ(field._origStrValue, "3.75 and more");
  field.setDataType(VXdoubleType);
  EXPECT_EQ(field.getStringValue(), "3.75");
  EXPECT_EQ(valueOf<double>(field), 3.75);
  field.setDataType(VXuint8Type);
  EXPECT_EQ(field.getStringValue(), "3");
}

TEST(UniversalTypeFieldTest, UnreadableTextIsTheDefaultOfTheType) {
  UniversalTypeField field("f", VXfloatType);
  field.setStringValue("2.5");
  field.setStringValue("hopeless");
  EXPECT_EQ(field.getStringValue(), "0");
  EXPECT_EQ(field.isValidValue(), 1);
  field.setStringValue("");
  EXPECT_EQ(field.getStringValue(), "0");
}

TEST(UniversalTypeFieldTest, ValuesAreCopiedInAndOut) {
  OpenField field("f", VXdoubleType);
  FieldListener listener(field);
  const double value = -0.125;
  field.setUniversalTypeValue(&value);
  EXPECT_EQ(listener.take(), Strengths{2});
  EXPECT_EQ(field.getStringValue(), "-0.125");
  EXPECT_EQ(field._origStrValue, "-0.125");
  EXPECT_EQ(field.isValidValue(), 1);
  EXPECT_EQ(field.getValueCastToLDouble(), -0.125);
  const std::unique_ptr<unsigned char, void (*)(void*)> copy(field.getUniversalTypeValue(), &VXFree);
  ASSERT_NE(copy, nullptr);
  EXPECT_NE(copy.get(), field.getShortLivedUniversalTypeValue());
  EXPECT_EQ(std::memcmp(copy.get(), &value, sizeof value), 0);
  EXPECT_EQ(field.getShortLivedUniversalTypeValue(), field._typeData);
  field.setUniversalTypeValue(field.getShortLivedUniversalTypeValue());
  EXPECT_EQ(valueOf<double>(field), value);
}

TEST(UniversalTypeFieldTest, MissingDataIsFatal) {
  UniversalTypeField field("f", VXdoubleType);
  FieldListener listener(field);
  MessageRecorder recorder;
  EXPECT_THROW(field.setUniversalTypeValue(nullptr), int);
  const Messages messages = recorder.take();
  ASSERT_EQ(messages.size(), 1U);
  EXPECT_EQ(messages[0].type, VX_FATAL);
  EXPECT_EQ(messages[0].code, VX_BAD_POINTER);
  EXPECT_EQ(listener.take(), Strengths{});
}

TEST(UniversalTypeFieldTest, RegisteredTypesUpToTheRoomAreHeld) {
  ASSERT_TRUE(registerTestTypes());
  UniversalTypeField field("f", vector3Type());
  field.setStringValue("1 2.5 -3");
  EXPECT_EQ(field.getStringValue(), "1 2.5 -3");
  EXPECT_EQ(valueOf<Vector3>(field), (Vector3{1, 2.5, -3}));
  field.setDataType(largeType());
  std::string numbers;
  Large large;
  for (VXuint32 i = 0; i < 128; ++i) {
    numbers += (i ? " " : "") + std::to_string(i * 1000003);
    large.values[i] = i * 1000003;
  }
  field.setStringValue(numbers);
  EXPECT_EQ(field.getStringValue(), numbers);
  const Large stored = valueOf<Large>(field);
  EXPECT_EQ(std::memcmp(&stored, &large, sizeof large), 0);
  field.setDataType(sparseType());
  field.setStringValue("4 5");
  EXPECT_EQ(field.getStringValue(), "4 5");
  EXPECT_EQ(field.getValueCastToLDouble(), 0);
}

// Registers a copy of the record of double under another name. What doesn't fit is written into it afterwards, since
// the library's own functions don't make such records.
VXTypeInfos& registerRecord(const char* name) {
  static std::vector<std::unique_ptr<VXTypeInfos>> records;
  records.push_back(std::make_unique<VXTypeInfos>(*VXGetTypeInfosForDataType(VXdoubleType)));
  VXTypeInfos& record = *records.back();
  record.name = name;
  record.dataType = -1;
  EXPECT_EQ(VXRegisterTypeInfos(&record), 1);
  return record;
}

VXDataType registerHugeType() {
  VXTypeInfos& record = registerRecord("test huge");
  record.typeSize = 513;
  record.physicalSize = 513;
  return record.dataType;
}

// It fits by its size and has a component that ends behind the room.
VXDataType registerFarType() {
  VXTypeInfos& record = registerRecord("test far");
  record.componentOffsets[0] = 505;
  return record.dataType;
}

TEST(UniversalTypeFieldTest, TypesThatDoNotFitAreRefused) {
  for (const VXDataType type : {registerHugeType(), registerFarType()}) {
    ASSERT_GE(type, 10);
    UniversalTypeField field("f", VXint16Type);
    field.setStringValue("17");
    FieldListener listener(field);
    MessageRecorder recorder;
    field.setDataType(type);
    EXPECT_EQ(recorder.take(), (Messages{{VX_ERROR, VX_BAD_DATA_TYPE, "UniversalTypeField::setDataType()",
                                          "The data type is too large for this field, call is ignored!"}}));
    EXPECT_EQ(field.getDataType(), VXint16Type);
    EXPECT_EQ(field.getStringValue(), "17");
    EXPECT_EQ(listener.take(), Strengths{});
    UniversalTypeField another("f", type);
    EXPECT_EQ(recorder.take(), (Messages{{VX_ERROR, VX_BAD_DATA_TYPE, "UniversalTypeField::UniversalTypeField()",
                                          "The data type is too large for this field, using -1 instead."}}));
    EXPECT_EQ(another.getDataType(), -1);
  }
}

}  // namespace
}  // namespace vx::test
