// Fields and sensors that note who calls them, and in which order.

#ifndef VX_TESTS_RECORDING_FIELD_H
#define VX_TESTS_RECORDING_FIELD_H

#include "vxField.h"

#include <functional>
#include <string>
#include <vector>

namespace vx::test {

/// What was called: "a=text" for a setter, "a+2" for a touch of strength 2, "s(2)" for a sensor.
using CallLog = std::vector<std::string>;

/// A field whose value is its text.
class RecordingField : public Field {
 public:
  RecordingField(const std::string& name, CallLog& callLog) : Field(name), log(&callLog) {}

  void setStringValue(const std::string& text) override {
    log->push_back(_name + "=" + text);
    if (onSet) onSet();
    value = text;
    notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
  }
  std::string getStringValue() const override { return value; }
  void notifyAttachments(FieldSensor::Strength strength) override {
    log->push_back(_name + "+" + std::to_string(strength));
    Field::notifyAttachments(strength);
  }

  std::vector<std::string> destinations() const { return namesOf(_destinations); }
  std::vector<std::string> sources() const { return namesOf(_sources); }

  using Field::_classType;
  using Field::_copyValueFlags;
  using Field::_destinations;
  using Field::_enableNotifications;
  using Field::_isActive;
  using Field::_isNotifying;
  using Field::_ownsValue;
  using Field::_sensors;
  using Field::_sources;
  using Field::_touchOriginFlags;
  using Field::attachSourceField;
  using Field::detachSourceField;

  std::string value;
  std::function<void()> onSet;
  CallLog* log;

 private:
  static std::vector<std::string> namesOf(const std::vector<Field*>& fields) {
    std::vector<std::string> names;
    for (const Field* field : fields) names.push_back(field->getName());
    return names;
  }
};

/// A sensor with a name and an action.
class RecordingSensor : public FieldSensor {
 public:
  RecordingSensor(std::string sensorName, CallLog& callLog)
      : FieldSensor(&RecordingSensor::_called, this), name(std::move(sensorName)), log(&callLog) {}
  RecordingSensor(const RecordingSensor&) = delete;
  RecordingSensor& operator=(const RecordingSensor&) = delete;

  using FieldSensor::_callback;
  using FieldSensor::_field;
  using FieldSensor::_strength;
  using FieldSensor::_userData;

  std::string name;
  std::function<void()> action;
  CallLog* log;

 private:
  static void _called(void* userData, void* sensor) {
    auto& self = *static_cast<RecordingSensor*>(userData);
    const auto strength = static_cast<FieldSensor*>(sensor)->getNotificationStrength();
    self.log->push_back(self.name + "(" + std::to_string(strength) + ")");
    if (self.action) self.action();
  }
};

constexpr auto weak = FieldSensor::VX_WEAK_NOTIFICATION;
constexpr auto full = FieldSensor::VX_FULL_NOTIFICATION;

}  // namespace vx::test

#endif
