#include "CAPIFixture.h"

namespace vx::test {
namespace {

class CAPITypesTest : public CAPITest {
 protected:
  const RuntimeType* type = VXTypeFromName("RampModule");
};

TEST_F(CAPITypesTest, AllRegisteredTypesAreWalkedOver) {
  bool isModuleSeen = false;
  bool isFieldSeen = false;
  int count = 0;
  for (auto* entry = VXRuntimeGetFirstModuleType(); entry; entry = VXRuntimeGetNextModuleType()) {
    isModuleSeen = isModuleSeen || entry == type;
    isFieldSeen = isFieldSeen || std::string(VXTypeGetName(entry)) == "BoolField";
    ++count;
  }
  EXPECT_TRUE(isModuleSeen);
  EXPECT_TRUE(isFieldSeen);
  EXPECT_GT(count, 40);
  EXPECT_EQ(VXRuntimeGetNextModuleType(), nullptr) << "at the end";
  expectSilence();
}

TEST_F(CAPITypesTest, ATypeTellsItsNames) {
  ASSERT_NE(type, nullptr);
  EXPECT_STREQ(VXTypeGetName(type), "RampModule");
  EXPECT_STREQ(VXTypeGetDllName(type), "CAPITest");
  EXPECT_STREQ(VXTypeGetParentName(type), "BaseOp");
  EXPECT_EQ(VXTypeGetParentType(type), VXTypeFromName("BaseOp"));
  EXPECT_STREQ(VXTypeGetParentName(VXTypeFromName("Base")), "No parent");
  EXPECT_EQ(VXTypeGetParentType(VXTypeFromName("Base")), nullptr);
  EXPECT_EQ(VXTypeFromName("NoSuchClass"), nullptr);
  expectSilence();
}

TEST_F(CAPITypesTest, ATypeTellsWhetherItIsAbstract) {
  EXPECT_EQ(VXTypeIsAbstract(type), 0);
  EXPECT_EQ(VXTypeIsAbstract(VXTypeFromName("BaseOp")), 1);
  expectSilence();
  EXPECT_EQ(VXTypeIsAbstract(nullptr), -1);
  expectRefusal(19, "vxAPI: VXTypeIsAbstract", "Invalid type pointer passed. Ignoring call and returning -1.");
}

TEST_F(CAPITypesTest, NullsAndUnknownNamesAreDerivedFromNothingSilently) {
  EXPECT_EQ(VXTypeIsDerivedFrom(type, "RampModule"), 1);
  EXPECT_EQ(VXTypeIsDerivedFrom(type, "BaseOp"), 1);
  EXPECT_EQ(VXTypeIsDerivedFrom(type, "Base"), 1);
  EXPECT_EQ(VXTypeIsDerivedFrom(type, "PassModule"), 0);
  EXPECT_EQ(VXTypeIsDerivedFrom(type, "NoSuchClass"), 0);
  EXPECT_EQ(VXTypeIsDerivedFrom(type, ""), 0);
  EXPECT_EQ(VXTypeIsDerivedFrom(type, nullptr), 0);
  EXPECT_EQ(VXTypeIsDerivedFrom(nullptr, "BaseOp"), 0);
  EXPECT_EQ(VXTypeIsDerivedFrom(nullptr, nullptr), 0);
  expectSilence();
}

TEST_F(CAPITypesTest, AnObjectTellsItsType) {
  RampModule module;
  EXPECT_EQ(VXBaseGetTypeObject(&module), type);
  EXPECT_STREQ(VXBaseGetType(&module), "RampModule");
  EXPECT_STREQ(VXBaseGetParentType(&module), "BaseOp");
  EXPECT_EQ(VXBaseIsDerivedFrom(&module, "BaseOp"), 1);
  EXPECT_EQ(VXBaseIsDerivedFrom(&module, "PassModule"), 0);
  expectSilence();
}

TEST_F(CAPITypesTest, AnObjectOfAnUnregisteredClassIsRefused) {
  UnregisteredModule module;
  EXPECT_EQ(VXBaseGetTypeObject(&module), nullptr);
  expectSilence();
  constexpr char reason[] = "Invalid or bad base object passed, maybe it's not initalized. Returning NULL.";
  EXPECT_EQ(VXBaseGetType(&module), nullptr);
  expectRefusal(19, "vxAPI: VXBaseGetType", reason);
  EXPECT_EQ(VXBaseGetParentType(&module), nullptr);
  expectRefusal(19, "vxAPI: VXBaseGetParentType", reason);
  constexpr char derivedReason[] =
      "Invalid or bad base object or superclass name passed, maybe both or one of them are not initalized. Returning 0 "
      "(=false).";
  EXPECT_EQ(VXBaseIsDerivedFrom(&module, "BaseOp"), 0);
  expectRefusal(19, "vxAPI: VXBaseIsDerivedFrom", derivedReason);
  RampModule ramp;
  EXPECT_EQ(VXBaseIsDerivedFrom(&ramp, "NoSuchClass"), 0);
  expectRefusal(19, "vxAPI: VXBaseIsDerivedFrom", derivedReason);
}

}  // namespace
}  // namespace vx::test
