#include "CAPIFixture.h"

#include "vxPagedImg.h"

namespace vx::test {
namespace {

constexpr char inReason[] = "Invalid inField pointer or type. Returning 0.";
constexpr char outReason[] = "Invalid outField pointer or type. Returning 0.";

class CAPIConnectionsTest : public CAPITest {
 protected:
  static InputConnector& inputOf(const ModulePtr& module) { return module->getInField(0)->getInputConnectorValue(); }
  static OutputConnector& outputOf(const ModulePtr& module) {
    return module->getOutField(0)->getOutputConnectorValue();
  }

  ModulePtr source = makeModule("RampModule");
  ModulePtr other = makeModule("RampModule");
  ModulePtr stage = makeModule("PassModule");
  Field* out = VXModuleGetField(source.get(), "output0");
  Field* otherOut = VXModuleGetField(other.get(), "output0");
  Field* in = VXModuleGetField(stage.get(), "input0");
};

TEST_F(CAPIConnectionsTest, ImageFieldsAreLinkedAndAttached) {
  EXPECT_EQ(VXFieldConnectFrom(in, out), 1);
  EXPECT_EQ(inputOf(stage).getLink(), &outputOf(source));
  EXPECT_EQ(inputOf(stage).isValidConnection(), 1);
  ASSERT_EQ(out->getNumDestinationFields(), 1U);
  EXPECT_EQ(out->getDestinationField(0), in);
  ASSERT_EQ(in->getNumSourceFields(), 1U);
  EXPECT_EQ(in->getSourceField(0), out);
  expectSilence();
}

TEST_F(CAPIConnectionsTest, ConnectingNotifiesNobody) {
  stage->getOutImg(0)->setUpToDate();
  int count = 0;
  modulePlace = [&count](const std::string& place) { count += place == "handleNotification"; };
  VXFieldConnectFrom(in, out);
  VXFieldDisconnect(in);
  VXImageFieldConnectFromNoNotify(in, out);
  EXPECT_EQ(count, 0);
  EXPECT_TRUE(stage->getOutImg(0)->isUpToDate());
}

TEST_F(CAPIConnectionsTest, AChangeUpstreamReachesTheModuleDownstream) {
  VXFieldConnectFrom(in, out);
  std::string log;
  modulePlace = [&log](const std::string& place) { log += place + ' '; };
  for (BaseOp* const module : {source.get(), stage.get()}) module->getOutImg(0)->setUpToDate();
  VXFieldSetValue(VXModuleGetField(source.get(), "offset"), "5");
  EXPECT_FALSE(source->getOutImg(0)->isUpToDate());
  EXPECT_FALSE(stage->getOutImg(0)->isUpToDate());
  EXPECT_NE(log.find("handleNotification"), std::string::npos);

  VXFieldDisconnect(in);
  stage->getOutImg(0)->setUpToDate();
  VXFieldTouch(out);
  EXPECT_TRUE(stage->getOutImg(0)->isUpToDate()) << "nothing comes through any more";
  expectSilence();
}

TEST_F(CAPIConnectionsTest, AnInputThatMovesLeavesLinkAndAttachment) {
  VXFieldConnectFrom(in, out);
  EXPECT_EQ(VXFieldConnectFrom(in, otherOut), 1);
  EXPECT_EQ(inputOf(stage).getLink(), &outputOf(other));
  EXPECT_EQ(outputOf(source).getLinkNum(), 0);
  EXPECT_EQ(out->getNumDestinationFields(), 0U);
  ASSERT_EQ(in->getNumSourceFields(), 1U);
  EXPECT_EQ(in->getSourceField(0), otherOut);
  stage->getOutImg(0)->setUpToDate();
  VXFieldTouch(out);
  EXPECT_TRUE(stage->getOutImg(0)->isUpToDate());
  VXFieldTouch(otherOut);
  EXPECT_FALSE(stage->getOutImg(0)->isUpToDate());
  expectSilence();
}

TEST_F(CAPIConnectionsTest, AnInputThatMovesKeepsItsOtherSources) {
  Field* const name = VXModuleGetField(other.get(), "instanceName");
  VXFieldConnectFrom(in, out);
  EXPECT_EQ(VXFieldConnectFrom(in, name), 1) << "no image connection";
  EXPECT_EQ(inputOf(stage).getLink(), &outputOf(source));
  VXFieldConnectFrom(in, otherOut);
  ASSERT_EQ(in->getNumSourceFields(), 2U);
  EXPECT_EQ(in->getSourceField(0), name);
  EXPECT_EQ(in->getSourceField(1), otherOut);
}

TEST_F(CAPIConnectionsTest, AnInputThatMovesKeepsTheAttachmentOfAnOutputThatItIsNotLinkedTo) {
  VXFieldConnectFrom(in, out);
  EXPECT_EQ(VXImageFieldConnectFromNoNotify(in, otherOut), 1) << "the link alone moves";
  ASSERT_EQ(in->getNumSourceFields(), 1U);
  EXPECT_EQ(in->getSourceField(0), out);
  EXPECT_EQ(VXFieldConnectFrom(in, otherOut), 1);
  EXPECT_EQ(inputOf(stage).getLink(), &outputOf(other));
  ASSERT_EQ(in->getNumSourceFields(), 2U);
  EXPECT_EQ(in->getSourceField(0), out);
  EXPECT_EQ(in->getSourceField(1), otherOut);
  expectSilence();
}

TEST_F(CAPIConnectionsTest, ConnectingTwiceLeavesOneConnection) {
  VXFieldConnectFrom(in, out);
  EXPECT_EQ(VXFieldConnectFrom(in, out), 1);
  EXPECT_EQ(outputOf(source).getLinkNum(), 1);
  EXPECT_EQ(out->getNumDestinationFields(), 1U);
  EXPECT_EQ(in->getNumSourceFields(), 1U);
}

TEST_F(CAPIConnectionsTest, DisconnectingTakesLinkAndAttachmentsAway) {
  VXFieldConnectFrom(in, out);
  VXFieldDisconnect(in);
  EXPECT_EQ(inputOf(stage).getLink(), nullptr);
  EXPECT_EQ(outputOf(source).getLinkNum(), 0);
  EXPECT_EQ(out->getNumDestinationFields(), 0U);
  EXPECT_EQ(in->getNumSourceFields(), 0U);
  VXFieldDisconnect(in);
  expectSilence();
}

TEST_F(CAPIConnectionsTest, OtherFieldsHandTheirValueOn) {
  Field* const name = VXModuleGetField(source.get(), "instanceName");
  Field* const target = VXModuleGetField(stage.get(), "instanceName");
  VXFieldSetValue(name, "now");
  EXPECT_EQ(VXFieldConnectFrom(target, name), 1);
  EXPECT_EQ(target->getStringValue(), "now");
  VXFieldSetValue(name, "later");
  EXPECT_EQ(target->getStringValue(), "later");
  VXFieldDisconnect(target);
  VXFieldSetValue(name, "too late");
  EXPECT_EQ(target->getStringValue(), "later");
  expectSilence();
}

TEST_F(CAPIConnectionsTest, ConnectingWithoutNotificationMakesTheLinkAlone) {
  EXPECT_EQ(VXImageFieldConnectFromNoNotify(in, out), 1);
  EXPECT_EQ(inputOf(stage).getLink(), &outputOf(source));
  EXPECT_EQ(out->getNumDestinationFields(), 0U);
  EXPECT_EQ(in->getNumSourceFields(), 0U);
  VXFieldDisconnect(in);
  EXPECT_EQ(inputOf(stage).getLink(), nullptr);
  expectSilence();
}

TEST_F(CAPIConnectionsTest, AModuleOfEitherSideMayGoFirst) {
  VXFieldConnectFrom(in, out);
  source.reset();
  EXPECT_EQ(inputOf(stage).getLink(), nullptr);
  EXPECT_EQ(in->getNumSourceFields(), 0U);
  VXFieldConnectFrom(in, otherOut);
  stage.reset();
  EXPECT_EQ(outputOf(other).getLinkNum(), 0);
  EXPECT_EQ(otherOut->getNumDestinationFields(), 0U);
  expectSilence();
}

TEST_F(CAPIConnectionsTest, BadFieldsAreRefused) {
  constexpr char label[] = "vxAPI: VXImageFieldConnectFromNoNotify";
  EXPECT_EQ(VXImageFieldConnectFromNoNotify(nullptr, out), 0);
  expectRefusal(7, label, inReason);
  EXPECT_EQ(VXImageFieldConnectFromNoNotify(in, nullptr), 0);
  expectRefusal(7, label, outReason);
  EXPECT_EQ(VXImageFieldConnectFromNoNotify(out, out), 0);
  expectRefusal(29, label,
                std::string(inReason) +
                    " The field must be initialized an it should be of type InputConnectorField (or derived from it), "
                    "but it seems to be of type OutputConnectorField.");
  EXPECT_EQ(VXImageFieldConnectFromNoNotify(in, in), 0);
  expectRefusal(29, label,
                std::string(outReason) +
                    " The field must be initialized an it should be of type OutputConnectorField (or derived from it), "
                    "but it seems to be of type InputConnectorField.");
  EXPECT_EQ(VXFieldConnectFrom(nullptr, out), 0);
  expectRefusal(7, "vxAPI: VXFieldConnectFrom", inReason);
  EXPECT_EQ(VXFieldConnectFrom(in, nullptr), 0);
  expectRefusal(7, "vxAPI: VXFieldConnectFrom", outReason);
  VXFieldDisconnect(nullptr);
  expectRefusal(7, "vxAPI: VXFieldDisconnect", "Invalid inField pointer or type. Ignoring call.");
  EXPECT_EQ(inputOf(stage).getLink(), nullptr);
}

// Sensors

class CAPISensorsTest : public CAPIConnectionsTest {
 protected:
  struct Log {
    int count = 0;
    void* sensor = nullptr;
  };
  static void listen(void* userData, void* sensor) {
    Log& log = *static_cast<Log*>(userData);
    ++log.count;
    log.sensor = sensor;
  }
  Field* name = VXModuleGetField(source.get(), "instanceName");
  Field* otherName = VXModuleGetField(other.get(), "instanceName");
  Log log;
};

TEST_F(CAPISensorsTest, ASensorHearsOfItsFieldWithUserDataAndItself) {
  VXFieldSensor* const sensor = VXCreateFieldSensor(&log, listen);
  EXPECT_EQ(VXFieldSensorGetField(sensor), nullptr);
  VXFieldSensorAttach(sensor, name);
  EXPECT_EQ(VXFieldSensorGetField(sensor), name);
  VXFieldSetValue(name, "a");
  EXPECT_EQ(log.count, 1);
  EXPECT_EQ(log.sensor, sensor);
  VXFieldSensorAttach(sensor, otherName);
  VXFieldSetValue(name, "b");
  EXPECT_EQ(log.count, 1) << "it left that field";
  VXFieldSetValue(otherName, "b");
  EXPECT_EQ(log.count, 2);
  VXFieldSensorDetach(sensor);
  EXPECT_EQ(VXFieldSensorGetField(sensor), nullptr);
  VXFieldSensorDetach(sensor);
  VXFieldSetValue(otherName, "c");
  EXPECT_EQ(log.count, 2);
  VXDeleteFieldSensor(sensor);
  expectSilence();
}

TEST_F(CAPISensorsTest, ASensorThatIsDeletedHearsNothing) {
  VXFieldSensor* const sensor = VXCreateFieldSensor(&log, listen);
  VXFieldSensorAttach(sensor, name);
  VXDeleteFieldSensor(sensor);
  VXFieldSetValue(name, "a");
  EXPECT_EQ(log.count, 0);
  expectSilence();
}

TEST_F(CAPISensorsTest, ASensorWithoutACallbackIsReportedAndMade) {
  VXFieldSensor* const sensor = VXCreateFieldSensor(&log, nullptr);
  ASSERT_NE(sensor, nullptr);
  expectRefusal(2, "vxAPI: VXCreateFieldSensor", "Invalid callback pointer passed. Creating sensor without callback.");
  VXDeleteFieldSensor(sensor);
  expectSilence();
}

TEST_F(CAPISensorsTest, ACallbackCannotDeleteItsOwnSensor) {
  VXFieldSensor* const sensor =
      VXCreateFieldSensor(nullptr, [](void*, void* self) { VXDeleteFieldSensor(static_cast<VXFieldSensor*>(self)); });
  VXFieldSensorAttach(sensor, name);
  VXFieldTouch(name);
  expectRefusal(14, "vxAPI: VXDeleteFieldSensor", "A sensor can't be deleted by its own callback. Ignoring call.");
  EXPECT_EQ(VXFieldSensorGetField(sensor), name);
  VXDeleteFieldSensor(sensor);
  expectSilence();
}

TEST_F(CAPISensorsTest, BadArgumentsAreRefused) {
  VXFieldSensor* const sensor = VXCreateFieldSensor(&log, listen);
  VXDeleteFieldSensor(nullptr);
  expectRefusal(19, "vxAPI: VXDeleteFieldSensor", "Invalid sensor pointer passed to be deleted. Ignoring call.");
  EXPECT_EQ(VXFieldSensorGetField(nullptr), nullptr);
  expectRefusal(19, "vxAPI: VXFieldSensorGetField", "Invalid sensor pointer passed to be deleted. Returning NULL.");
  constexpr char reason[] = "Invalid sensor or field pointer passed. Ignoring call.";
  VXFieldSensorAttach(nullptr, name);
  expectRefusal(19, "vxAPI: VXFieldSensorAttach", reason);
  VXFieldSensorAttach(sensor, nullptr);
  expectRefusal(19, "vxAPI: VXFieldSensorAttach", reason);
  UnregisteredField unregistered;
  VXFieldSensorAttach(sensor, &unregistered);
  expectRefusal(39, "vxAPI: VXFieldSensorAttach",
                std::string(reason) +
                    " The field seems to be uninitialized, maybeclass::initClass() code is not called on code "
                    "initialization.");
  VXFieldSensorDetach(nullptr);
  expectRefusal(19, "vxAPI: VXFieldSensorDetach", reason);
  EXPECT_EQ(VXFieldSensorGetField(sensor), nullptr);
  VXDeleteFieldSensor(sensor);
}

TEST_F(CAPISensorsTest, ASensorThatThrowsEndsInTheFrame) {
  VXFieldSensor* const sensor = VXCreateFieldSensor(nullptr, [](void*, void*) { throw 3; });
  VXFieldSensorAttach(sensor, name);
  VXFieldTouch(name);
  const Messages taken = messages.take();
  ASSERT_FALSE(taken.empty());
  EXPECT_EQ(taken.back(),
            (Message{VX_FATAL, 1, "vxAPI:_VXFieldTouch(field)", frameReason("Returning VX_EMPTY_PARAM.")}));
  VXDeleteFieldSensor(sensor);
}

}  // namespace
}  // namespace vx::test
