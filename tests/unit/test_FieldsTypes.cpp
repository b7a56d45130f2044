// The classes of fields in the table of run-time types, and the place of their virtual functions.

#include "MessageRecorder.h"

#include "vxFields.h"
#include "vxInitSystemVX.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace vx::test {
namespace {

using Strings = std::vector<std::string>;

struct FieldClass {
  const char* name;
  const char* parent;
  bool isAbstract;
  const RuntimeType* (*getClassTypeId)();
};

// In the order of registration.
const FieldClass fieldClasses[] = {
    {"BoolField", "Field", false, &BoolField::getClassTypeId},
    {"IntField", "Field", false, &IntField::getClassTypeId},
    {"ToggleField", "Field", false, &ToggleField::getClassTypeId},
    {"EnumField", "Field", false, &EnumField::getClassTypeId},
    {"FloatField", "Field", false, &FloatField::getClassTypeId},
    {"DoubleField", "Field", false, &DoubleField::getClassTypeId},
    {"LongDoubleField", "Field", false, &LongDoubleField::getClassTypeId},
    {"StringField", "Field", false, &StringField::getClassTypeId},
    {"NotifyField", "Field", false, &NotifyField::getClassTypeId},
    {"InputConnectorField", "Field", true, &InputConnectorField::getClassTypeId},
    {"OutputConnectorField", "Field", true, &OutputConnectorField::getClassTypeId},
    {"BaseField", "Field", false, &BaseField::getClassTypeId},
    {"SoNodeField", "Field", false, &SoNodeField::getClassTypeId},
    {"PointerField", "Field", false, &PointerField::getClassTypeId},
    {"DicomTagListField", "Field", false, &DicomTagListField::getClassTypeId},
    {"Vec2fField", "Field", false, &Vec2fField::getClassTypeId},
    {"Vec3fField", "Field", false, &Vec3fField::getClassTypeId},
    {"Vec4fField", "Field", false, &Vec4fField::getClassTypeId},
    {"Vec6fField", "Field", false, &Vec6fField::getClassTypeId},
    {"VectorField", "Field", false, &VectorField::getClassTypeId},
    {"SubImgBoxField", "Field", false, &SubImgBoxField::getClassTypeId},
    {"SubImgBoxfField", "Field", false, &SubImgBoxfField::getClassTypeId},
    {"ColorField", "Vec3fField", false, &ColorField::getClassTypeId},
    {"MatrixField", "Field", false, &MatrixField::getClassTypeId},
    {"VXDataTypeField", "Field", false, &VXDataTypeField::getClassTypeId},
    {"ProgressField", "FloatField", false, &ProgressField::getClassTypeId},
    {"UniversalTypeField", "FloatField", false, &UniversalTypeField::getClassTypeId},
};

TEST(FieldsTypesTest, StartUpRegistersTheClassesInOrderBehindField) {
  ASSERT_EQ(std::size(fieldClasses), 27U);
  Strings registered;
  for (const RuntimeType* type = Runtime::getFirstEntry(); type; type = Runtime::getNextEntry()) {
    registered.emplace_back(type->getName());
  }
  const auto field = std::find(registered.begin(), registered.end(), "Field");
  ASSERT_GE(registered.end() - field, 28);
  for (std::size_t i = 0; i < std::size(fieldClasses); ++i) {
    EXPECT_EQ(field[static_cast<std::ptrdiff_t>(i) + 1], fieldClasses[i].name);
  }
}

TEST(FieldsTypesTest, EachClassHasItsNameItsParentAndItsCreator) {
  for (const FieldClass& fieldClass : fieldClasses) {
    SCOPED_TRACE(fieldClass.name);
    const RuntimeType* const type = Runtime::fromName(fieldClass.name);
    ASSERT_NE(type, nullptr);
    EXPECT_EQ(type, fieldClass.getClassTypeId());
    EXPECT_STREQ(type->getParentName(), fieldClass.parent);
    EXPECT_STREQ(type->getDllName(), "VX");
    EXPECT_EQ(type->isAbstract(), fieldClass.isAbstract);
    EXPECT_TRUE(type->isDerivedFrom(Field::getClassTypeId()));
  }
  EXPECT_TRUE(UniversalTypeField::getClassTypeId()->isDerivedFrom(FloatField::getClassTypeId()));
}

TEST(FieldsTypesTest, InstancesAreMadeByNameWithoutNameAndWithOwnValues) {
  for (const FieldClass& fieldClass : fieldClasses) {
    if (fieldClass.isAbstract) continue;
    SCOPED_TRACE(fieldClass.name);
    MessageRecorder recorder;
    const RuntimeType* const type = Runtime::fromName(fieldClass.name);
    const long before = type->instanceCounter();
    {
      const std::unique_ptr<Field> field(static_cast<Field*>(type->getCreateCB()()));
      ASSERT_NE(field, nullptr);
      EXPECT_EQ(field->getName(), "");
      EXPECT_EQ(field->getTypeId(), type);
      EXPECT_STREQ(field->getTypeIdName(), fieldClass.name);
      EXPECT_EQ(field->hasReferencedValue(), std::string(fieldClass.name) == "PointerField");
      EXPECT_EQ(&field->typeInstanceCounter(), &type->instanceCounter());
      EXPECT_EQ(type->instanceCounter(), before + 1);
      static_cast<void>(field->getStringValue());
    }
    EXPECT_EQ(type->instanceCounter(), before);
    EXPECT_TRUE(recorder.take().empty());
  }
}

TEST(FieldsTypesTest, RegisteringAgainChangesNothing) {
  const RuntimeType* const before = Runtime::fromName("MatrixField");
  VXInitFields();
  EXPECT_EQ(Runtime::fromName("MatrixField"), before);
  EXPECT_EQ(MatrixField::getClassTypeId(), before);
}

// A class that is registered by nobody.
class UnknownField : public NotifyField {
 public:
  VX_CLASS_HEADER(UnknownField)
};
VX_CLASS_SOURCE(UnknownField, "NotifyField")

TEST(FieldsTypesTest, ClassesTakeAnotherNameAndCanBeRemoved) {
  EXPECT_EQ(Runtime::fromName("OtherName"), nullptr);
  UnknownField::initClass("Library", "OtherName");
  const RuntimeType* const type = Runtime::fromName("OtherName");
  ASSERT_NE(type, nullptr);
  EXPECT_STREQ(type->getDllName(), "Library");
  EXPECT_STREQ(UnknownField().getTypeIdName(), "OtherName");
  BoolField::destroyClass();
  EXPECT_EQ(Runtime::fromName("BoolField"), nullptr);
}

// Slots --------------------------------------------------------------------------------------------------------------

// Virtual functions are found by their position in the table of the class: modules are built against it.
template <class Function>
std::ptrdiff_t slotOf(Function function) {
  std::ptrdiff_t position = 0;
  std::memcpy(&position, &function, sizeof position);
  return (position - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

// The destructor has two slots, the other functions of Field one each.
constexpr std::ptrdiff_t numFieldSlots = 28;

// A virtual function of a class that derives from F comes next.
template <class F>
class Next : public F {
 public:
  using F::F;
  virtual void next() {}
};

template <class F>
std::ptrdiff_t numSlots() {
  return slotOf(&Next<F>::next);
}

TEST(FieldsTypesTest, OnlyTwoClassesAddVirtualFunctions) {
  const std::ptrdiff_t numbers[] = {
      numSlots<BoolField>(),
      numSlots<IntField>(),
      numSlots<ToggleField>(),
      numSlots<EnumField>(),
      numSlots<FloatField>(),
      numSlots<DoubleField>(),
      numSlots<LongDoubleField>(),
      numSlots<StringField>(),
      numSlots<NotifyField>(),
      numSlots<SoNodeField>(),
      numSlots<PointerField>(),
      numSlots<DicomTagListField>(),
      numSlots<Vec2fField>(),
      numSlots<Vec3fField>(),
      numSlots<Vec4fField>(),
      numSlots<Vec6fField>(),
      numSlots<VectorField>(),
      numSlots<SubImgBoxField>(),
      numSlots<SubImgBoxfField>(),
      numSlots<ColorField>(),
      numSlots<MatrixField>(),
      numSlots<VXDataTypeField>(),
      numSlots<ProgressField>(),
      numSlots<InputConnectorField>(),
      numSlots<OutputConnectorField>(),
  };
  EXPECT_EQ(std::size(numbers), 25U);
  for (const std::ptrdiff_t number : numbers) EXPECT_EQ(number, numFieldSlots);
  EXPECT_EQ(numSlots<BaseField>(), numFieldSlots + 1);
  EXPECT_EQ(slotOf(&BaseField::touchSourceFields), numFieldSlots);
  EXPECT_EQ(numSlots<UniversalTypeField>(), numFieldSlots + 8);
}

class OpenUniversalTypeField : public UniversalTypeField {
 public:
  static std::vector<std::ptrdiff_t> slots() {
    return {slotOf(&OpenUniversalTypeField::setDataType),
            slotOf(&OpenUniversalTypeField::getDataType),
            slotOf(&OpenUniversalTypeField::setUniversalTypeValue),
            slotOf(&OpenUniversalTypeField::getUniversalTypeValue),
            slotOf(&OpenUniversalTypeField::getShortLivedUniversalTypeValue),
            slotOf(&OpenUniversalTypeField::getValueCastToLDouble),
            slotOf(&OpenUniversalTypeField::_updateIsValidAndTypeDataFromOrigString),
            slotOf(&OpenUniversalTypeField::_updateIsValidAndStrValueFromTypeData)};
  }
};

TEST(FieldsTypesTest, FunctionsOfUniversalTypesStandInTheirOrder) {
  const std::vector<std::ptrdiff_t> slots = OpenUniversalTypeField::slots();
  for (std::size_t i = 0; i < slots.size(); ++i) EXPECT_EQ(slots[i], numFieldSlots + static_cast<std::ptrdiff_t>(i));
}

TEST(FieldsTypesTest, OverridesStandWhereFieldHasThem) {
  EXPECT_EQ(slotOf(&BoolField::setStringValue), slotOf(&Field::setStringValue));
  EXPECT_EQ(slotOf(static_cast<std::string (EnumField::*)() const>(&EnumField::getStringValue)),
            slotOf(&Field::getStringValue));
  EXPECT_EQ(slotOf(&OutputConnectorField::notifyAttachments), slotOf(&Field::notifyAttachments));
  EXPECT_EQ(slotOf(&NotifyField::hasReferencedValue), slotOf(&Field::hasReferencedValue));
}

// Setters reach everybody through the virtual functions of a derived class.
class LoggingField : public BaseField {
 public:
  void notifyAttachments(FieldSensor::Strength strength) override {
    log += "notify" + std::to_string(strength) + " ";
    BaseField::notifyAttachments(strength);
  }
  void touchSourceFields() override { log += "touch "; }
  std::string log;
};

TEST(FieldsTypesTest, SettersCallTheNotificationOfADerivedClass) {
  LoggingField field;
  BaseField& base = field;
  base.setBaseValue(nullptr);
  base.setStringValue("0");
  base.touchSourceFields();
  EXPECT_EQ(field.log, "notify2 notify2 touch ");
}

}  // namespace
}  // namespace vx::test
