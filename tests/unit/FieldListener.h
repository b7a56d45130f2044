// Hears of the notifications of a field.

#ifndef VX_TESTS_FIELD_LISTENER_H
#define VX_TESTS_FIELD_LISTENER_H

#include "vxField.h"

#include <utility>
#include <vector>

namespace vx::test {

/// Keeps the strength of each notification of one field while it lives.
class FieldListener {
 public:
  explicit FieldListener(Field& field) : _sensor(&FieldListener::_hear, this) { _sensor.attachField(&field); }
  FieldListener(const FieldListener&) = delete;
  FieldListener& operator=(const FieldListener&) = delete;

  /// The strengths since the last call, in their order.
  std::vector<int> take() { return std::exchange(_strengths, {}); }

 private:
  static void _hear(void* userData, void* sensor) {
    static_cast<FieldListener*>(userData)->_strengths.push_back(
        static_cast<FieldSensor*>(sensor)->getNotificationStrength());
  }

  FieldSensor _sensor;
  std::vector<int> _strengths;
};

}  // namespace vx::test

#endif
