#include "CAPIFixture.h"

#include "vxDicomTagList.h"

#include <climits>
#include <cstring>

namespace vx::test {
namespace {

class CAPIFieldsTest : public CAPITest {
 protected:
  Field* field(const char* name) { return VXModuleGetField(module.get(), name); }
  std::string valueOf(Field* anyField) {
    std::string text(static_cast<std::size_t>(VXFieldGetValueSize(anyField)), '?');
    VXFieldGetValue(anyField, text.data(), static_cast<int>(text.size()));
    return text;
  }

  // Runs a call on fields that are not of its class, and expects the three refusals and the code of each message.
  template <class Call>
  void expectObjectCheck(const char* label, const char* className, const std::string& reason, Call call) {
    call(static_cast<Field*>(nullptr));
    expectRefusal(7, label, reason);
    UnregisteredField unregistered;
    call(&unregistered);
    expectRefusal(39, label,
                  reason +
                      " The field seems to be uninitialized, maybeclass::initClass() code is not called on code "
                      "initialization.");
    if (!className) return;
    call(field("BoolField"));
    expectRefusal(29, label,
                  reason + " The field must be initialized an it should be of type " + className +
                      " (or derived from it), but it seems to be of type BoolField.");
  }

  ModulePtr module = makeModule("FieldsModule");
};

TEST_F(CAPIFieldsTest, AFieldTellsNameAndClass) {
  EXPECT_STREQ(VXFieldGetName(field("IntField")), "IntField");
  EXPECT_STREQ(VXFieldGetType(field("IntField")), "IntField");
  EXPECT_STREQ(VXFieldGetName(field("input0")), "input0");
  EXPECT_STREQ(VXFieldGetType(field("input0")), "InputConnectorField");
  expectSilence();
  constexpr char reason[] = "Invalid field pointer or type. Returning NULL.";
  expectObjectCheck("vxAPI: VXFieldGetName", nullptr, reason,
                    [](Field* bad) { EXPECT_EQ(VXFieldGetName(bad), nullptr); });
  expectObjectCheck("vxAPI: VXFieldGetType", nullptr, reason,
                    [](Field* bad) { EXPECT_EQ(VXFieldGetType(bad), nullptr); });
}

TEST_F(CAPIFieldsTest, AValueIsSetAsText) {
  VXFieldSetValue(field("IntField"), "-17");
  EXPECT_EQ(valueOf(field("IntField")), "-17");
  VXFieldSetValue(field("StringField"), "");
  EXPECT_EQ(VXFieldGetValueSize(field("StringField")), 0);
  expectSilence();
  VXFieldSetValue(field("IntField"), nullptr);
  expectRefusal(19, "VXFieldSetValue", "Invalid value pointer passed. Ignoring call.");
  EXPECT_EQ(valueOf(field("IntField")), "-17");
  expectObjectCheck("vxAPI: VXFieldSetValue", nullptr, "Invalid field pointer or type. Ignoring call.",
                    [](Field* bad) { VXFieldSetValue(bad, "1"); });
}

TEST_F(CAPIFieldsTest, AValueIsCopiedAsStrncpyDoes) {
  VXFieldSetValue(field("StringField"), "four");
  char buffer[8];
  struct Case {
    int size;
    const char* expected;
  };
  // Tildes are what was in the buffer.
  for (const Case& c :
       {Case{0, "~~~~~~~~"}, Case{3, "fou~~~~~"}, Case{4, "four~~~~"}, Case{5, "four\0~~~"}, Case{8, "four\0\0\0\0"}}) {
    std::memset(buffer, '~', sizeof buffer);
    EXPECT_EQ(VXFieldGetValue(field("StringField"), buffer, c.size), 5) << "the full length plus 1";
    EXPECT_EQ(std::memcmp(buffer, c.expected, sizeof buffer), 0) << c.size;
  }
  EXPECT_EQ(VXFieldGetValueSize(field("StringField")), 4);
  expectSilence();
}

TEST_F(CAPIFieldsTest, ABadBufferIsRefused) {
  VXFieldSetValue(field("StringField"), "four");
  char buffer[2] = {'~', '~'};
  EXPECT_EQ(VXFieldGetValue(field("StringField"), nullptr, 2), 0);
  expectRefusal(19, "VXFieldGetValue", "Invalid value pointer passed. Ignoring call.");
  for (const int size : {-1, INT_MIN}) {
    EXPECT_EQ(VXFieldGetValue(field("StringField"), buffer, size), 0);
    expectRefusal(19, "VXFieldGetValue", "Invalid size passed. Ignoring call.");
  }
  constexpr char reason[] = "Invalid field pointer or type. Returning 0.";
  expectObjectCheck("vxAPI: VXFieldGetValue", nullptr, reason,
                    [&](Field* bad) { EXPECT_EQ(VXFieldGetValue(bad, buffer, 2), 0); });
  expectObjectCheck("vxAPI: VXFieldGetValueSize", nullptr, reason,
                    [](Field* bad) { EXPECT_EQ(VXFieldGetValueSize(bad), 0); });
  EXPECT_EQ(buffer[0], '~');
}

TEST_F(CAPIFieldsTest, FloatsAreSetAndGot) {
  for (const char* const name : {"FloatField", "ProgressField"}) {
    VXFieldSetFloatValue(field(name), 0.5F);
    EXPECT_EQ(VXFieldGetFloatValue(field(name)), 0.5F);
  }
  expectSilence();
  expectObjectCheck("vxAPI: VXFieldSetFloatValue", "FloatField", "Float field pointer is invalid. Ignoring call",
                    [](Field* bad) { VXFieldSetFloatValue(bad, 1); });
  expectObjectCheck("vxAPI: VXFieldGetFloatValue", "FloatField", "Float field pointer is invalid. Returning 0.",
                    [](Field* bad) { EXPECT_EQ(VXFieldGetFloatValue(bad), 0.0F); });
}

TEST_F(CAPIFieldsTest, AFieldThatOnlyCountsAsAFloatFieldIsRefused) {
  Field* const universal = field("UniversalTypeField");
  ASSERT_EQ(VXTypeIsDerivedFrom(universal->getTypeId(), "FloatField"), 1);
  const std::string before = valueOf(universal);
  VXFieldSetFloatValue(universal, 1.5F);
  expectRefusal(19, "vxAPI: VXFieldSetFloatValue", "Float field pointer is invalid. Ignoring call");
  EXPECT_EQ(VXFieldGetFloatValue(universal), 0.0F);
  expectRefusal(19, "vxAPI: VXFieldGetFloatValue", "Float field pointer is invalid. Returning 0.");
  EXPECT_EQ(valueOf(universal), before);
}

TEST_F(CAPIFieldsTest, DoublesAreSetAndGot) {
  VXFieldSetDoubleValue(field("DoubleField"), 1e-300);
  EXPECT_EQ(VXFieldGetDoubleValue(field("DoubleField")), 1e-300);
  expectSilence();
  expectObjectCheck("vxAPI: VXFieldSetDoubleValue", "DoubleField", "Double field pointer is invalid. Ignoring call.",
                    [](Field* bad) { VXFieldSetDoubleValue(bad, 1); });
  expectObjectCheck("vxAPI: VXFieldGetDoubleValue", "DoubleField", "Double field pointer is invalid. Returning 0.",
                    [](Field* bad) { EXPECT_EQ(VXFieldGetDoubleValue(bad), 0.0); });
}

TEST_F(CAPIFieldsTest, IntegersAreSetAndGotIn64And32Bits) {
  Field* const integer = field("IntField");
  VXFieldSetIntValue64(integer, 0x123456789abcdef0LL);
  EXPECT_EQ(VXFieldGetIntValue64(integer), 0x123456789abcdef0LL);
  EXPECT_EQ(VXFieldGetIntValue(integer), static_cast<int>(0x9abcdef0U)) << "the low 32 bits";
  VXFieldSetIntValue(integer, -3);
  EXPECT_EQ(VXFieldGetIntValue64(integer), -3) << "widened by sign";
  expectSilence();
  expectObjectCheck("vxAPI: VXFieldSetIntValue64", "IntField", "Integer field pointer is invalid. Ignoring call.",
                    [](Field* bad) { VXFieldSetIntValue64(bad, 1); });
  expectObjectCheck("vxAPI: VXFieldSetIntValue64", "IntField", "Integer field pointer is invalid. Ignoring call.",
                    [](Field* bad) { VXFieldSetIntValue(bad, 1); });
  expectObjectCheck("vxAPI: VXFieldGetIntValue64", "IntField", "Integer field pointer is invalid. Returning 0.",
                    [](Field* bad) { EXPECT_EQ(VXFieldGetIntValue64(bad), 0); });
  expectObjectCheck("vxAPI: VXFieldGetIntValue64", "IntField", "Integer field pointer is invalid. Returning 0.",
                    [](Field* bad) { EXPECT_EQ(VXFieldGetIntValue(bad), 0); });
}

TEST_F(CAPIFieldsTest, ItemsOfAChoiceAreSetByIndex) {
  Field* const choice = field("EnumField");
  EXPECT_EQ(VXFieldGetNumEnums(choice), 3);
  VXFieldSetEnumValue(choice, 2);
  EXPECT_EQ(VXFieldGetEnumValue(choice), 2);
  int value = 0;
  const char* const name = VXFieldGetEnumName(choice, 1, &value);
  EXPECT_STREQ(name, "green");
  EXPECT_EQ(value, 1);
  EXPECT_EQ(VXFieldGetEnumName(choice, 1, &value), name) << "the field's own text";
  expectSilence();
}

TEST_F(CAPIFieldsTest, AnIndexOutOfRangeIsRefused) {
  Field* const choice = field("EnumField");
  VXFieldSetEnumValue(choice, 1);
  for (const int bad : {-1, 3, INT_MIN, INT_MAX}) {
    VXFieldSetEnumValue(choice, bad);
    expectRefusal(26, "vxAPI: VXFieldSetEnumValue",
                  "Enum index is out of range [0, 2^32-1] and therefore. Call is ignored.");
    EXPECT_EQ(VXFieldGetEnumValue(choice), 1);
  }
}

TEST_F(CAPIFieldsTest, TheNameOfAnItemOutOfRangeEndsInTheFrame) {
  for (const int bad : {-1, 3, INT_MIN, INT_MAX}) {
    int value = 0;
    EXPECT_STREQ(VXFieldGetEnumName(field("EnumField"), bad, &value), "");
    EXPECT_EQ(value, bad);
    const Messages taken = messages.take();
    ASSERT_EQ(taken.size(), 2U);
    EXPECT_EQ(taken[0].type, VX_FATAL);
    EXPECT_EQ(taken[0].code, VX_BAD_POINTER);
    EXPECT_EQ(taken[1],
              (Message{VX_FATAL, 1, "vxAPI:_VXFieldGetEnumName(field, i, value)", frameReason("Returning \"\".")}));
  }
}

TEST_F(CAPIFieldsTest, BadFieldsAreRefusedAsChoices) {
  constexpr char getReason[] = "Enum field pointer is invalid. Returning 0.";
  expectObjectCheck("vxAPI: VXFieldGetEnumValue", "EnumField", getReason,
                    [](Field* bad) { EXPECT_EQ(VXFieldGetEnumValue(bad), 0); });
  expectObjectCheck("vxAPI: VXFieldGetNumEnums", "EnumField", getReason,
                    [](Field* bad) { EXPECT_EQ(VXFieldGetNumEnums(bad), 0); });
  expectObjectCheck("vxAPI: VXFieldSetEnumValue", "EnumField", "Enum field pointer is invalid. Ignoring call.",
                    [](Field* bad) { VXFieldSetEnumValue(bad, 0); });
  constexpr char nameReason[] = "Enum field pointer is invalid. *valud is set to -1 and empty string is returned.";
  expectObjectCheck("vxAPI: VXFieldGetEnumName", "EnumField", nameReason, [](Field* bad) {
    int value = 7;
    EXPECT_STREQ(VXFieldGetEnumName(bad, 0, &value), "");
    EXPECT_EQ(value, -1);
  });
  EXPECT_STREQ(VXFieldGetEnumName(nullptr, 0, nullptr), "");
  expectRefusal(7, "vxAPI: VXFieldGetEnumName", nameReason);
  EXPECT_STREQ(VXFieldGetEnumName(field("EnumField"), 0, nullptr), "");
  expectRefusal(19, "VXFieldGetEnumName", "Invalid value pointer passed. Ignoring call and returning an empty string.");
}

TEST_F(CAPIFieldsTest, ATouchNotifiesInFullStrength) {
  int strength = -1;
  VXFieldSensor* const sensor = VXCreateFieldSensor(&strength, [](void* userData, void* sender) {
    *static_cast<int*>(userData) = static_cast<VXFieldSensor*>(sender)->getNotificationStrength();
  });
  VXFieldSensorAttach(sensor, field("StringField"));
  VXFieldTouch(field("StringField"));
  EXPECT_EQ(strength, 2);
  VXDeleteFieldSensor(sensor);
  expectSilence();
  expectObjectCheck("vxAPI: VXFieldTouch", nullptr, "Invalid field pointer or type. Ignoring call.",
                    [](Field* bad) { VXFieldTouch(bad); });
}

// Pointers

class CountedList : public DicomTagList {
 public:
  void ref() override { ++count; }
  void unref() override { --count; }
  int count = 0;
};

TEST_F(CAPIFieldsTest, PointersAreSetAndGot) {
  int target = 0;
  VXPointerFieldSetPtr(field("PointerField"), &target);
  EXPECT_EQ(VXPointerFieldGetPtr(field("PointerField")), &target);
  VXBaseFieldSetPtr(field("BaseField"), module.get());
  EXPECT_EQ(VXBaseFieldGetPtr(field("BaseField")), module.get());
  auto* const node = reinterpret_cast<SoNode*>(&target);
  VXSoNodeFieldSetPtr(field("SoNodeField"), node);
  EXPECT_EQ(VXSoNodeFieldGetPtr(field("SoNodeField")), node);
  CountedList list;
  VXDicomTagListFieldSetPtr(field("DicomTagListField"), &list);
  EXPECT_EQ(VXDicomTagListFieldGetPtr(field("DicomTagListField")), &list);
  EXPECT_EQ(list.count, 1);
  VXDicomTagListFieldSetPtr(field("DicomTagListField"), nullptr);
  EXPECT_EQ(list.count, 0);
  EXPECT_EQ(VXDicomTagListFieldGetPtr(field("DicomTagListField")), nullptr);
  expectSilence();
}

TEST_F(CAPIFieldsTest, BadPointerFieldsAreRefused) {
  constexpr char getReason[] = "Returning NULL pointer.";
  constexpr char setReason[] = "Ignoring call.";
  expectObjectCheck("vxAPI: VXPointerFieldGetPtr", "PointerField", getReason,
                    [](Field* bad) { EXPECT_EQ(VXPointerFieldGetPtr(bad), nullptr); });
  expectObjectCheck("vxAPI: VXPointerFieldSetPtr", "PointerField", setReason,
                    [](Field* bad) { VXPointerFieldSetPtr(bad, nullptr); });
  expectObjectCheck("vxAPI: VXBaseFieldGetPtr", "BaseField", getReason,
                    [](Field* bad) { EXPECT_EQ(VXBaseFieldGetPtr(bad), nullptr); });
  expectObjectCheck("vxAPI: VXBaseFieldSetPtr", "BaseField", setReason,
                    [](Field* bad) { VXBaseFieldSetPtr(bad, nullptr); });
  expectObjectCheck("vxAPI: VXSoNodeFieldGetPtr", "SoNodeField", getReason,
                    [](Field* bad) { EXPECT_EQ(VXSoNodeFieldGetPtr(bad), nullptr); });
  expectObjectCheck("vxAPI: VXSoNodeFieldSetPtr", "SoNodeField", setReason,
                    [](Field* bad) { VXSoNodeFieldSetPtr(bad, nullptr); });
  expectObjectCheck("vxAPI: VXDicomTagListFieldGetPtr", "DicomTagListField", getReason,
                    [](Field* bad) { EXPECT_EQ(VXDicomTagListFieldGetPtr(bad), nullptr); });
  expectObjectCheck("vxAPI: VXDicomTagListFieldSetPtr", "DicomTagListField", setReason,
                    [](Field* bad) { VXDicomTagListFieldSetPtr(bad, nullptr); });
}

// States of objects

class Persistent : public Base {
 public:
  char* getPersistentState() const override { return VXStrDup(state.c_str(), VX_RETURN_NULL); }
  void setPersistentState(const char* newState) override { state = newState; }
  void clearPersistentState(char* text) const override {
    ++numCleared;
    Base::clearPersistentState(text);
  }
  std::string state = "first";
  mutable int numCleared = 0;
};

TEST_F(CAPIFieldsTest, TheStateOfTheObjectInAFieldIsReached) {
  Field* const base = field("BaseField");
  Persistent object;
  VXBaseFieldSetPtr(base, &object);
  char* const state = VXBaseFieldGetPersistentState(base);
  EXPECT_STREQ(state, "first");
  VXBaseFieldClearPersistentState(base, state);
  EXPECT_EQ(object.numCleared, 1);
  VXBaseFieldClearPersistentState(base, nullptr);
  EXPECT_EQ(object.numCleared, 1);
  VXBaseFieldSetPersistentState(base, "second");
  EXPECT_EQ(object.state, "second");
  expectSilence();
  VXBaseFieldSetPersistentState(base, nullptr);
  expectRefusal(19, "VXBaseFieldSetPersistentState", "Invalid state pointer passed. Ignoring call.");
  EXPECT_EQ(object.state, "second");
}

TEST_F(CAPIFieldsTest, AFieldWithoutAnObjectHasNoState) {
  Field* const base = field("BaseField");
  char text[] = "text";
  EXPECT_EQ(VXBaseFieldGetPersistentState(base), nullptr);
  VXBaseFieldSetPersistentState(base, text);
  VXBaseFieldClearPersistentState(base, text);
  expectSilence();
  expectObjectCheck("vxAPI: VXBaseFieldGetPersistentState", "BaseField", "Returning NULL pointer.",
                    [](Field* bad) { EXPECT_EQ(VXBaseFieldGetPersistentState(bad), nullptr); });
  expectObjectCheck("vxAPI: VXBaseFieldSetPersistentState", "BaseField", "Ignoring call.",
                    [](Field* bad) { VXBaseFieldSetPersistentState(bad, "state"); });
  expectObjectCheck("vxAPI: VXBaseFieldClearPersistentState", "BaseField", "Ignoring call.",
                    [&](Field* bad) { VXBaseFieldClearPersistentState(bad, text); });
}

}  // namespace
}  // namespace vx::test
