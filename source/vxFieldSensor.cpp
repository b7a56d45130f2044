#include "vxFieldSensor.h"

#include "vxAttachGuards.h"
#include "vxField.h"
#include "vxGuards.h"
#include "vxTraceBuffer.h"

namespace vx {

FieldSensor::FieldSensor(Callback sensorCallback, void* userData)
    : _field(nullptr), _callback(sensorCallback), _userData(userData), _strength(VX_NO_NOTIFICATION) {}

FieldSensor::~FieldSensor() { detachField(); }

void FieldSensor::attachField(Field* field) {
  const TraceFrame trace("source/vxFieldSensor:FieldSensor::attachField()");
  if (attachGuards.sensorAttachesField || !field) return;
  const AttachGuardScope guard(attachGuards.sensorAttachesField);
  if (_field) _field->detachFieldSensor(this);
  _field = field;
  try {
    field->attachFieldSensor(this);
  } catch (...) {
    _field = nullptr;  // the field doesn't know this sensor, so it would not tell it of its end
    throw;
  }
}

void FieldSensor::detachField() {
  const TraceFrame trace("source/vxFieldSensor:FieldSensor::detachField()");
  if (attachGuards.sensorDetachesField || !_field) return;
  const AttachGuardScope guard(attachGuards.sensorDetachesField);
  _field->detachFieldSensor(this);
  _field = nullptr;
}

void FieldSensor::callback(Strength strength) {
  const TraceFrame trace("source/vxFieldSensor:FieldSensor::callback()");
  // Back to none also when the callback throws.
  struct Delivery {
    explicit Delivery(Strength& sensorStrength) : target(sensorStrength) {}
    ~Delivery() { target = VX_NO_NOTIFICATION; }
    Delivery(const Delivery&) = delete;
    Delivery& operator=(const Delivery&) = delete;
    Strength& target;
  };
  const Delivery delivery(_strength);
  _strength = strength;
  checkFatal(_callback != nullptr);
  _callback(_userData, this);
}

}  // namespace vx
