#include "CAPIFixture.h"

#include "vxErrorOutput.h"

#include <cstdio>
#include <stdexcept>

namespace vx::test {
namespace {

class CAPIModulesTest : public CAPITest {};

TEST_F(CAPIModulesTest, AModuleIsMadeByNameAndDeleted) {
  const VXint64 before = BaseOp::getNumBaseOps();
  BaseOp* const module = VXCreateModuleFromName("RampModule");
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(BaseOp::getNumBaseOps(), before + 1);
  EXPECT_STREQ(VXBaseGetType(module), "RampModule");
  VXDeleteModule(module);
  EXPECT_EQ(BaseOp::getNumBaseOps(), before);
  expectSilence();
}

TEST_F(CAPIModulesTest, AModuleIsMadeByType) {
  const ModulePtr module(VXCreateModuleFromType(VXTypeFromName("PassModule")));
  ASSERT_NE(module, nullptr);
  EXPECT_STREQ(VXBaseGetType(module.get()), "PassModule");
  expectSilence();
}

TEST_F(CAPIModulesTest, AnAbstractOrUnknownClassGivesNullWithoutAMessage) {
  EXPECT_EQ(VXCreateModuleFromName("BaseOp"), nullptr);
  EXPECT_EQ(VXCreateModuleFromName("NoSuchClass"), nullptr);
  EXPECT_EQ(VXCreateModuleFromType(VXTypeFromName("BaseOp")), nullptr);
  expectSilence();
}

TEST_F(CAPIModulesTest, AConstructorThatThrowsIsReported) {
  EXPECT_EQ(VXCreateModuleFromName("CodeThrower"), nullptr);
  expectMessages(
      {{VX_FATAL, 7, "vxAPI: Creation of module 'CodeThrower' failed.", "Continuing after module creation failure."}});
  EXPECT_EQ(VXCreateModuleFromName("TextThrower"), nullptr);
  expectMessages(
      {{VX_FATAL, 1, "vxAPI: Creation of module 'TextThrower' failed.", "Continuing after module creation failure."}});
  EXPECT_EQ(VXCreateModuleFromType(VXTypeFromName("CodeThrower")), nullptr);
  expectMessages({{VX_FATAL, 1, "vxAPI:_VXCreateModuleFromType(type)", frameReason("Returning NULL.")}});
}

TEST_F(CAPIModulesTest, WithoutExceptionHandlingWhatAConstructorThrowsReachesTheHost) {
  VXEnableExceptionHandling(0);
  EXPECT_THROW(VXCreateModuleFromName("CodeThrower"), int);
  EXPECT_THROW(VXCreateModuleFromType(VXTypeFromName("TextThrower")), std::string);
  const ModulePtr module = makeModule("RampModule");
  EXPECT_NE(module, nullptr);
  expectSilence();
}

TEST_F(CAPIModulesTest, FieldsAreFoundByNameAndIndex) {
  const ModulePtr module = makeModule("RampModule");
  EXPECT_EQ(VXModuleGetNumFields(module.get()), 6);
  Field* const offset = VXModuleGetField(module.get(), "offset");
  ASSERT_NE(offset, nullptr);
  EXPECT_EQ(VXModuleGetIndexedField(module.get(), 4), offset);
  EXPECT_STREQ(VXFieldGetName(VXModuleGetIndexedField(module.get(), 0)), "output0");
  expectSilence();
}

TEST_F(CAPIModulesTest, AnUnknownFieldGivesNullAndAWarning) {
  const ModulePtr module = makeModule("RampModule");
  EXPECT_EQ(VXModuleGetField(module.get(), "missing"), nullptr);
  expectMessages({{VX_WARNING, 7, "FieldContainer::getField()", "Bad field name!"}});
  EXPECT_EQ(VXModuleGetIndexedField(module.get(), 6), nullptr);
  EXPECT_EQ(VXModuleGetIndexedField(module.get(), -1), nullptr);
  expectMessages({{VX_WARNING, 26, "FieldContainer::getField()", "Bad field index!"},
                  {VX_WARNING, 26, "FieldContainer::getField()", "Bad field index!"}});
}

TEST_F(CAPIModulesTest, AFieldIsSetThroughItsModule) {
  const ModulePtr module = makeModule("RampModule");
  VXModuleSetFieldValue(module.get(), "offset", "42");
  EXPECT_EQ(VXFieldGetIntValue(VXModuleGetField(module.get(), "offset")), 42);
  VXModuleSetFieldValue(module.get(), "instanceName", "");
  expectSilence();
  VXModuleSetFieldValue(module.get(), "missing", "42");
  expectMessages({{VX_WARNING, 26, "FieldContainer::setValue()", "Bad field name, value not set!"}});
}

TEST_F(CAPIModulesTest, LoadingKeepsFieldsFromNotifying) {
  const ModulePtr module = makeModule("PassModule");
  int count = 0;
  VXFieldSensor* const sensor =
      VXCreateFieldSensor(&count, [](void* userData, void*) { ++*static_cast<int*>(userData); });
  Field* const field = VXModuleGetField(module.get(), "instanceName");
  VXFieldSensorAttach(sensor, field);
  VXBeginLoadFields(module.get());
  VXFieldSetValue(field, "a");
  EXPECT_EQ(count, 0);
  VXEndLoadFields(module.get());
  EXPECT_EQ(count, 0) << "dropped, not kept";
  VXFieldSetValue(field, "b");
  EXPECT_EQ(count, 1);
  VXDeleteFieldSensor(sensor);
  EXPECT_EQ(moduleLog, "deactivateAttachments activateAttachments ");
  expectSilence();
}

TEST_F(CAPIModulesTest, SavingCallsTheModule) {
  const ModulePtr module = makeModule("PassModule");
  VXBeginSaveFields(module.get());
  VXEndSaveFields(module.get());
  EXPECT_EQ(moduleLog, "beginSaveFields endSaveFields ");
  expectSilence();
}

// What is thrown, and the code that the report of the module-call guard has.
struct Throw {
  void (*run)(const std::string& place);
  VXErrorCode code;
  const char* errorText;
};
const Throw thrown[] = {
    {[](const std::string&) {
       static char text[] = "own text";
       throw static_cast<char*>(text);
     },
     0, "own text"},
    {[](const std::string&) { throw static_cast<char*>(nullptr); }, 0, VXGetErrorCodeDescription(1)},
    {[](const std::string&) { throw std::string("own string"); }, 0, "own string"},
    {[](const std::string&) { throw 13; }, 13, nullptr},
    {[](const std::string&) { throw std::runtime_error("x"); }, 1, nullptr},
};

TEST_F(CAPIModulesTest, AModuleThatFailsToLoadIsReportedAndTheCallGoesOn) {
  const ModulePtr module = makeModule("PassModule");
  VXModuleSetFieldValue(module.get(), "instanceName", "mine");
  for (const int enabled : {1, 0}) {
    VXEnableExceptionHandling(enabled);
    for (const Throw& failure : thrown) {
      modulePlace = failure.run;
      VXBeginLoadFields(module.get());
      VXEndLoadFields(module.get());
      const Messages taken = messages.take();
      EXPECT_EQ(taken, (Messages{{VX_FATAL, failure.code, "BaseOp::deactivateAttachments() of module PassModule(mine)",
                                  "Continuing after broken deactivateAttachments call."},
                                 {VX_FATAL, failure.code, "BaseOp::activateAttachments() of module PassModule(mine)",
                                  "Continuing after broken activateAttachments call."}}));
      for (const Message& message : taken) {
        EXPECT_EQ(message.errorText, failure.errorText ? failure.errorText : VXGetErrorCodeDescription(failure.code));
        EXPECT_EQ(message.handledObject, module.get());
        EXPECT_EQ(message.handledObjectType, PassModule::getClassTypeId());
      }
    }
  }
}

TEST_F(CAPIModulesTest, AModuleThatFailsToSaveEndsInTheFrame) {
  const ModulePtr module = makeModule("PassModule");
  modulePlace = [](const std::string&) { throw 13; };
  VXBeginSaveFields(module.get());
  VXEndSaveFields(module.get());
  expectMessages({{VX_FATAL, 1, "vxAPI:_VXBeginSaveFields(baseOp)", frameReason("Returning VX_EMPTY_PARAM.")},
                  {VX_FATAL, 1, "vxAPI:_VXEndSaveFields(baseOp)", frameReason("Returning VX_EMPTY_PARAM.")}});
  VXEnableExceptionHandling(0);
  EXPECT_THROW(VXBeginSaveFields(module.get()), int);
}

TEST_F(CAPIModulesTest, AModuleThatHandlesANotificationIsNotDeleted) {
  const ModulePtr module = makeModule("PassModule");
  modulePlace = [&](const std::string& place) {
    if (place == "handleNotification") VXDeleteModule(module.get());
  };
  VXFieldTouch(VXModuleGetField(module.get(), "instanceName"));
  expectRefusal(14, "vxAPI: VXDeleteModule",
                "A module can't be deleted while it handles a notification. Ignoring call.");
  EXPECT_STREQ(VXBaseGetType(module.get()), "PassModule");
}

TEST_F(CAPIModulesTest, ASensorOutlivesItsModule) {
  ModulePtr module = makeModule("PassModule");
  VXFieldSensor* const sensor = VXCreateFieldSensor(nullptr, [](void*, void*) {});
  VXFieldSensorAttach(sensor, VXModuleGetField(module.get(), "instanceName"));
  module.reset();
  EXPECT_EQ(VXFieldSensorGetField(sensor), nullptr);
  VXDeleteFieldSensor(sensor);
  expectSilence();
}

}  // namespace
}  // namespace vx::test
