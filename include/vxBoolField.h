/// \file vxBoolField.h
/// Fields of truth values: BoolField and ToggleField.

#ifndef VX_BOOL_FIELD_H
#define VX_BOOL_FIELD_H

#include "vxTValueField.h"

#include <string>

namespace vx {

/// A truth value.
///
/// Its text is "TRUE" or "FALSE". A text is read as true if it is "TRUE", upper or lower case, or begins with a
/// decimal number other than 0, and as false otherwise.
class VX_EXPORT BoolField : public TValueField<bool> {
 public:
  /// \param name name of the field. \param value the caller's variable; null for an own value, false at first.
  explicit BoolField(const std::string& name = std::string(), bool* value = nullptr) : TValueField(name, value) {}

  void setStringValue(const std::string& value) override;
  std::string getStringValue() const override;

  /// Sets the value and notifies.
  void setBoolValue(bool value) { _setValue(value); }
  /// \return the value.
  bool getBoolValue() const { return _getValueOrReport("BoolField::getBoolValue", "false"); }
  /// \return the value.
  bool isOn() const { return getBoolValue(); }
  /// Negates the value and notifies.
  void switch_Value() { _setValue(!_getValue()); }

  VX_CLASS_HEADER(BoolField)
};

/// A truth value that is held in an `int`: any number other than 0 is true.
///
/// Its text is that of a BoolField.
class VX_EXPORT ToggleField : public TValueField<int> {
 public:
  /// \param name name of the field. \param value the caller's variable; null for an own value, 0 at first.
  explicit ToggleField(const std::string& name = std::string(), int* value = nullptr) : TValueField(name, value) {}

  void setStringValue(const std::string& value) override;
  std::string getStringValue() const override;

  /// Stores any number as it is and notifies.
  void setIntValue(int value) { _setValue(value); }
  /// \return 1 for any number other than 0, else 0.
  int getIntValue() const { return _getValueOrReport("ToggleField::getIntValue", "0") != 0 ? 1 : 0; }
  /// Stores 1 or 0 and notifies.
  void setToggleValue(bool value) { setIntValue(value ? 1 : 0); }
  /// \return whether the value isn't 0.
  bool isOn() const { return _getValueOrReport("ToggleField::isOn", "false") != 0; }
  /// Stores 1 if the value is 0, else 0, and notifies.
  void switch_Value() { setIntValue(_getValue() == 0 ? 1 : 0); }

  VX_CLASS_HEADER(ToggleField)
};

}  // namespace vx

#endif
