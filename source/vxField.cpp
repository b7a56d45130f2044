#include "vxField.h"

#include "vxGuards.h"
#include "vxTraceBuffer.h"

#include <algorithm>
#include <cstring>
#include <ostream>

namespace vx {

constinit VXint64 Field::_enableNotifications = 1;

VX_ABSTRACT_CLASS_SOURCE(Field, "NULL")

Field::Field(const std::string& name) : _name(name) {}

Field::~Field() {
  const TraceFrame trace("source/vxField:Field::~Field()");
  // By name, since the parts of subclasses are gone.
  Field::detachFieldSensors();
  Field::detachAllFields();
}

VXint64 Field::isValidValue() { return 1; }

bool Field::hasReferencedValue() const { return !_ownsValue; }

VXint64 Field::getCStringValueSize() const { return static_cast<VXint64>(getStringValue().size()); }

void Field::copyCStringValue(char* dest, VXint64 size) const {
  const TraceFrame trace("source/vxField:Field::copyCStringValue()");
  if (size < 1) return;
  checkFatal(dest != nullptr);
  const std::string value = getStringValue();
  const auto room = static_cast<std::size_t>(size);
  const std::size_t length = std::min(std::strlen(value.c_str()), room);
  std::memcpy(dest, value.c_str(), length);
  std::memset(dest + length, 0, room - length);
}

VXint64& Field::enableNotificationsCounterState() noexcept { return _enableNotifications; }

void Field::notifyAttachedSensors(FieldSensor::Strength strength) {
  const TraceFrame trace("source/vxField:Field::notifyAttachedSensors()");
  _notify(strength, false);
}

void Field::notifyAttachments(FieldSensor::Strength strength) {
  const TraceFrame trace("source/vxField:Field::notifyAttachments()");
  _notify(strength, true);
}

void Field::_notify(FieldSensor::Strength strength, bool areDestinationsTold) {
  if (_isNotifying || !_isActive || _enableNotifications == 0) return;
  _isNotifying = true;
  guardedBlock([&] {
    for (std::size_t i = 0; i < _sensors.size(); ++i) _sensors[i]->callback(strength);
    for (std::size_t i = 0; areDestinationsTold && i < _destinations.size(); ++i) {
      if (_copyValueFlags[i] != 0) {
        _destinations[i]->setStringValue(getStringValue());
      } else {
        _destinations[i]->notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
      }
    }
  });
  _isNotifying = false;
}

void Field::deactivateAttachments() { _isActive = false; }

void Field::activateAttachments() { _isActive = true; }

VXint64 Field::isActiveAttachments() { return _isActive ? 1 : 0; }

std::ostream& operator<<(std::ostream& stream, const Field& field) {
  return stream << field.getName() << " : " << field.getStringValue();
}

}  // namespace vx
