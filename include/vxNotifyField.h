/// \file vxNotifyField.h
/// The field without a value.

#ifndef VX_NOTIFY_FIELD_H
#define VX_NOTIFY_FIELD_H

#include "vxField.h"

#include <string>

namespace vx {

/// A field without a value: a trigger.
class VX_EXPORT NotifyField : public Field {
 public:
  /// \param name name of the field.
  explicit NotifyField(const std::string& name = std::string()) : Field(name) {}

  /// Notifies. \param value ignored.
  void setStringValue(const std::string& value) override;
  /// \return an empty text.
  std::string getStringValue() const override;
  /// \return false.
  bool hasReferencedValue() const override;

  /// Notifies.
  void notify() { notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION); }

  VX_CLASS_HEADER(NotifyField)
};

}  // namespace vx

#endif
