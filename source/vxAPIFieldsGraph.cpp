// Connections of fields, and sensors, through the C interface.

#include "vxAPI.h"
#include "vxAPIFrame.h"
#include "vxConnectorFields.h"
#include "vxFieldSensor.h"
#include "vxGuards.h"
#include "vxTraceBuffer.h"

namespace {

using vx::callFramed;
using vx::CallLabel;
using vx::checkArgument;
using vx::checkedObject;
using vx::checkObject;
using vx::Field;
using vx::FieldSensor;
using vx::InputConnectorField;
using vx::OutputConnector;
using vx::OutputConnectorField;
using vx::TraceFrame;

constexpr char inFieldRefused[] = "Invalid inField pointer or type. Returning 0.";
constexpr char outFieldRefused[] = "Invalid outField pointer or type. Returning 0.";

// Connections

int _VXImageFieldConnectFromNoNotify(Field* inField, Field* outField) {
  const TraceFrame trace("source/vxAPI:_VXImageFieldConnectFromNoNotify()");
  const CallLabel label("vxAPI: VXImageFieldConnectFromNoNotify");
  auto* const input = checkedObject<InputConnectorField>(inField, label, inFieldRefused);
  if (!input) return 0;
  auto* const output = checkedObject<OutputConnectorField>(outField, label, outFieldRefused);
  if (!output) return 0;
  input->getInputConnectorValue().connect(output->getOutputConnectorValue());
  return 1;
}

// Takes the link of an input away, and with it the attachment of the output's field.
void unlink(InputConnectorField& input) {
  const OutputConnector* const link = input.getInputConnectorValue().getLink();
  input.getInputConnectorValue().disconnect();
  for (unsigned int i = input.getNumSourceFields(); link && i-- > 0;) {
    auto* const source = dynamic_cast<OutputConnectorField*>(input.getSourceField(i));
    if (source && &source->getOutputConnectorValue() == link) source->detachField(&input, 0);
  }
}

// An input that is being linked: without memory for both, it has neither link nor attachment.
class Linking {
 public:
  explicit Linking(InputConnectorField& input) : _input(&input) { unlink(input); }
  ~Linking() {
    if (_input) unlink(*_input);
  }
  Linking(const Linking&) = delete;
  Linking& operator=(const Linking&) = delete;

  void keep() noexcept { _input = nullptr; }

 private:
  InputConnectorField* _input;
};

// Links an input to an output, so that a change of the output touches the input.
void link(InputConnectorField& input, OutputConnectorField& output) {
  Linking linking(input);
  input.getInputConnectorValue().connect(output.getOutputConnectorValue());
  output.attachField(&input, 0);
  linking.keep();
}

int _VXFieldConnectFrom(Field* inField, Field* outField) {
  const TraceFrame trace("source/vxAPI:_VXFieldConnectFrom()");
  const CallLabel label("vxAPI: VXFieldConnectFrom");
  if (!checkObject<Field>(inField, label, inFieldRefused)) return 0;
  if (!checkObject<Field>(outField, label, outFieldRefused)) return 0;
  auto* const input = dynamic_cast<InputConnectorField*>(inField);
  auto* const output = dynamic_cast<OutputConnectorField*>(outField);
  if (input && output) {
    link(*input, *output);
  } else {
    outField->attachField(inField, 1);
  }
  return 1;
}

void _VXFieldDisconnect(Field* inField) {
  const TraceFrame trace("source/vxAPI:_VXFieldDisconnect()");
  if (!checkObject<Field>(inField, "vxAPI: VXFieldDisconnect", "Invalid inField pointer or type. Ignoring call.")) {
    return;
  }
  if (auto* const input = dynamic_cast<InputConnectorField*>(inField)) input->getInputConnectorValue().disconnect();
  inField->detachSourceFields();
}

// Sensors

FieldSensor* _VXCreateFieldSensor(void* userData, VXFieldSensorCB callback) {
  const TraceFrame trace("source/vxAPI:_VXCreateFieldSensor()");
  const CallLabel label("vxAPI: VXCreateFieldSensor");
  if (!callback) {
    vx::report(VX_ERROR, label, VX_NO_MEMORY, "Invalid callback pointer passed. Creating sensor without callback.");
  }
  auto* const sensor = new (std::nothrow) FieldSensor(callback, userData);
  if (!sensor) {
    vx::report(
        VX_FATAL, label, VX_NO_MEMORY,
        "Sensor creation failed. Maybe the system ran out ofmemory. Returning NULL instead of a sensor pointer.");
  }
  return sensor;
}

void _VXDeleteFieldSensor(FieldSensor* sensor) {
  const TraceFrame trace("source/vxAPI:_VXDeleteFieldSensor()");
  const CallLabel label("vxAPI: VXDeleteFieldSensor");
  if (!checkArgument(sensor != nullptr, label, "Invalid sensor pointer passed to be deleted. Ignoring call.")) return;
  if (sensor->getNotificationStrength() != FieldSensor::VX_NO_NOTIFICATION) {
    vx::report(VX_ERROR, label, VX_MISUSED_INTERFACE, "A sensor can't be deleted by its own callback. Ignoring call.");
    return;
  }
  delete sensor;
}

Field* _VXFieldSensorGetField(FieldSensor* sensor) {
  const TraceFrame trace("source/vxAPI:_VXFieldSensorGetField()");
  return checkArgument(sensor != nullptr, "vxAPI: VXFieldSensorGetField",
                       "Invalid sensor pointer passed to be deleted. Returning NULL.")
             ? sensor->getField()
             : nullptr;
}

constexpr char attachRefused[] = "Invalid sensor or field pointer passed. Ignoring call.";

void _VXFieldSensorAttach(FieldSensor* sensor, Field* field) {
  const TraceFrame trace("source/vxAPI:_VXFieldSensorAttach()");
  const CallLabel label("vxAPI: VXFieldSensorAttach");
  if (checkArgument(sensor && field, label, attachRefused) && checkObject<Field>(field, label, attachRefused)) {
    sensor->attachField(field);
  }
}

void _VXFieldSensorDetach(FieldSensor* sensor) {
  const TraceFrame trace("source/vxAPI:_VXFieldSensorDetach()");
  if (checkArgument(sensor != nullptr, "vxAPI: VXFieldSensorDetach", attachRefused)) sensor->detachField();
}

}  // namespace

int VXImageFieldConnectFromNoNotify(VXField* inField, VXField* outField) {
  return callFramed("vxAPI:_VXImageFieldConnectFromNoNotify(inField, outField)", vx::returnsNumber,
                    _VXImageFieldConnectFromNoNotify, inField, outField);
}

int VXFieldConnectFrom(VXField* inField, VXField* outField) {
  return callFramed("vxAPI:_VXFieldConnectFrom(inField, outField)", vx::returnsNumber, _VXFieldConnectFrom, inField,
                    outField);
}

void VXFieldDisconnect(VXField* inField) {
  callFramed("vxAPI:_VXFieldDisconnect(inField)", vx::returnsNothing, _VXFieldDisconnect, inField);
}

VXFieldSensor* VXCreateFieldSensor(void* userData, VXFieldSensorCB callback) {
  return callFramed("vxAPI:_VXCreateFieldSensor(userData, callback)", vx::returnsPointer, _VXCreateFieldSensor,
                    userData, callback);
}

void VXDeleteFieldSensor(VXFieldSensor* sensor) {
  callFramed("vxAPI:_VXDeleteFieldSensor(sensor)", vx::returnsNothing, _VXDeleteFieldSensor, sensor);
}

VXField* VXFieldSensorGetField(VXFieldSensor* sensor) {
  return callFramed("vxAPI:_VXFieldSensorGetField(sensor)", vx::returnsPointer, _VXFieldSensorGetField, sensor);
}

void VXFieldSensorAttach(VXFieldSensor* sensor, VXField* field) {
  callFramed("vxAPI:_VXFieldSensorAttach(sensor, field)", vx::returnsNothing, _VXFieldSensorAttach, sensor, field);
}

void VXFieldSensorDetach(VXFieldSensor* sensor) {
  callFramed("vxAPI:_VXFieldSensorDetach(sensor)", vx::returnsNothing, _VXFieldSensorDetach, sensor);
}
