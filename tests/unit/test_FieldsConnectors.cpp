// Fields of image connectors.

#include "FieldListener.h"
#include "FieldsEngineStandIn.h"
#include "MessageRecorder.h"

#include "vxFields.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace vx::test {
namespace {

using Strengths = std::vector<int>;
using Messages = std::vector<Message>;

class ConnectorFieldsTest : public ::testing::Test {
 protected:
  std::string takeLog() { return std::exchange(FieldsEngineStandIn::log, {}); }

  FieldsEngineStandIn engine;
};

std::string addressOf(const void* object) { return std::to_string(reinterpret_cast<std::uintptr_t>(object)); }

TEST_F(ConnectorFieldsTest, FieldsMakeAndDestroyTheirConnectors) {
  {
    InputConnectorField input("in", engine.module(), 3);
    OutputConnectorField output("out", engine.module(), 5);
    EXPECT_EQ(input.getName(), "in");
    EXPECT_EQ(input.getInputConnectorValue().getIndex(), 3);
    EXPECT_EQ(&input.getInputConnectorValue().getOp(), engine.module());
    EXPECT_EQ(output.getOutputConnectorValue().getIndex(), 5);
    EXPECT_EQ(&output.getOutputConnectorValue().getOp(), engine.module());
    EXPECT_FALSE(input.hasReferencedValue());
    EXPECT_FALSE(output.hasReferencedValue());
    EXPECT_EQ(input.isValidValue(), 1);
    EXPECT_EQ(output.isValidValue(), 1);
    input.getInputConnectorValue().connect(output.getOutputConnectorValue());
    EXPECT_EQ(takeLog(), "new 5 ");
  }
  EXPECT_EQ(takeLog(), "delete 5 ");
}

TEST_F(ConnectorFieldsTest, TextIsTheAddressAndIsIgnoredWhenSet) {
  InputConnectorField input("in", engine.module(), 0);
  OutputConnectorField output("out", engine.module(), 0);
  FieldListener inputListener(input), outputListener(output);
  const std::string inputText = addressOf(&input.getInputConnectorValue());
  const std::string outputText = addressOf(&output.getOutputConnectorValue());
  takeLog();
  for (const char* const text : {"", "4096", "hopeless", "NULL"}) {
    input.setStringValue(text);
    output.setStringValue(text);
    EXPECT_EQ(input.getStringValue(), inputText);
    EXPECT_EQ(output.getStringValue(), outputText);
    EXPECT_EQ(inputListener.take(), Strengths{2});
    EXPECT_EQ(outputListener.take(), Strengths{2});
    EXPECT_EQ(takeLog(), "clear 0 ");
  }
}

TEST_F(ConnectorFieldsTest, WeakTouchLeavesTheImageAndTellsDownstreamInFull) {
  OutputConnectorField output("out", engine.module(), 1);
  InputConnectorField input("in", engine.module(), 0);
  output.attachField(&input, 0);
  FieldListener outputListener(output), inputListener(input);
  takeLog();
  output.notifyAttachments(FieldSensor::VX_WEAK_NOTIFICATION);
  EXPECT_EQ(takeLog(), "");
  EXPECT_EQ(outputListener.take(), Strengths{1});
  EXPECT_EQ(inputListener.take(), Strengths{2});
  output.notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
  EXPECT_EQ(takeLog(), "clear 1 ");
  EXPECT_EQ(outputListener.take(), Strengths{2});
  EXPECT_EQ(inputListener.take(), Strengths{2});
  output.notifyAttachments(FieldSensor::VX_NO_NOTIFICATION);
  EXPECT_EQ(takeLog(), "clear 1 ") << "any strength but the weak one";
}

TEST_F(ConnectorFieldsTest, InvalidatesBeforeAnybodyHearsAndAlsoWhenSwitchedOff) {
  OutputConnectorField output("out", engine.module(), 1);
  takeLog();
  FieldSensor sensor([](void*, void*) { FieldsEngineStandIn::log += "heard "; }, nullptr);
  sensor.attachField(&output);
  output.notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
  EXPECT_EQ(takeLog(), "clear 1 heard ");
  output.deactivateAttachments();
  output.notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
  EXPECT_EQ(takeLog(), "clear 1 ");
}

TEST_F(ConnectorFieldsTest, TouchDuringProcessingIsRefused) {
  OutputConnectorField output("out", engine.module(), 1);
  InputConnectorField input("in", engine.module(), 1);
  FieldListener outputListener(output), inputListener(input);
  takeLog();
  MessageRecorder recorder;
  const Message refused = {
      VX_ERROR, VX_MISUSED_INTERFACE, "OutputConnectorField::notifyAttachments",
      "Notification of an output connector field is not allowed during image processing since that implicitly "
      "invalidates the VX cache and the processed data of the output image in that field. So the call will be ignored. "
      "This error is typically caused by getOutImage()->notifyAttachment() calls in calc*-methods of modules derived "
      "from BaseOp."};
  FieldsEngineStandIn::processing = 1;
  output.notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
  EXPECT_EQ(recorder.take(), Messages{refused});
  output.notifyAttachments(FieldSensor::VX_WEAK_NOTIFICATION);
  output.setStringValue("");
  EXPECT_EQ(recorder.take(), (Messages{refused, refused}));
  EXPECT_EQ(outputListener.take(), Strengths{});
  EXPECT_EQ(takeLog(), "");
  input.setStringValue("");
  EXPECT_EQ(inputListener.take(), Strengths{2});
  EXPECT_EQ(recorder.take(), Messages{});
}

TEST_F(ConnectorFieldsTest, MissingModuleIsFatal) {
  MessageRecorder recorder;
  EXPECT_THROW(InputConnectorField("in", nullptr, 0), int);
  EXPECT_THROW(OutputConnectorField("out", nullptr, 0), int);
  const Messages messages = recorder.take();
  ASSERT_EQ(messages.size(), 2U);
  for (const Message& message : messages) {
    EXPECT_EQ(message.type, VX_FATAL);
    EXPECT_EQ(message.code, VX_BAD_POINTER);
  }
}

// Shows the connector pointer.
class OpenOutputField : public OutputConnectorField {
 public:
  using OutputConnectorField::_valuePtr;
  using OutputConnectorField::OutputConnectorField;
};

TEST_F(ConnectorFieldsTest, MissingConnectorIsInvalidAndFatal) {
  OpenOutputField output("out", engine.module(), 0);
  OutputConnector* const connector = std::exchange(output._valuePtr, nullptr);
  EXPECT_EQ(output.isValidValue(), 0);
  {
    const MessageRecorder silence;
    EXPECT_THROW(static_cast<void>(output.getStringValue()), int);
    EXPECT_THROW(output.getOutputConnectorValue(), int);
  }
  output._valuePtr = connector;
}

TEST_F(ConnectorFieldsTest, FailureOfTheImageLeavesNoField) {
  FieldsEngineStandIn::failure = [] { throw std::runtime_error("no image"); };
  MessageRecorder recorder;
  EXPECT_THROW(OutputConnectorField("out", engine.module(), 0), std::runtime_error);
  Messages messages = recorder.take();
  ASSERT_FALSE(messages.empty());
  EXPECT_EQ(messages.back().code, VX_CONSTRUCTOR_FAILED);
  FieldsEngineStandIn::failure = [] { throw std::bad_alloc(); };
  EXPECT_THROW(OutputConnectorField("out", engine.module(), 0), int);
  messages = recorder.take();
  ASSERT_FALSE(messages.empty());
  EXPECT_EQ(messages.back().code, VX_NO_MEMORY);
  EXPECT_EQ(takeLog(), "");
}

}  // namespace
}  // namespace vx::test
