/// \file vxIntField.h
/// The field of an integer.

#ifndef VX_INT_FIELD_H
#define VX_INT_FIELD_H

#include "vxTNumberField.h"

#include <string>

namespace vx {

/// A signed 64-bit integer.
///
/// Its text is decimal. Reading goes through a 32-bit number: what a longer text says keeps its low 32 bits only, so
/// that values beyond that range are written whole and don't come back. A text without a number is 0.
class VX_EXPORT IntField : public TNumberField<VXint64> {
 public:
  /// \param name name of the field. \param value the caller's variable; null for an own value, 0 at first.
  explicit IntField(const std::string& name = std::string(), VXint64* value = nullptr) : TNumberField(name, value) {}

  void setStringValue(const std::string& value) override;
  std::string getStringValue() const override;

  /// Limits a number to the range, stores it and notifies.
  void setIntValue(VXint64 value) { _setNumber(value); }
  /// \return the value.
  VXint64 getIntValue() const { return _getValueOrReport("IntField::getIntValue", "0"); }

  /// Sets the lower bound of later values.
  void setIntMinValue(VXint64 value) { _minValue = value; }
  /// \return the lower bound, at first that of the type.
  VXint64 getIntMinValue() const { return _minValue; }
  /// Sets the upper bound of later values.
  void setIntMaxValue(VXint64 value) { _maxValue = value; }
  /// \return the upper bound, at first that of the type.
  VXint64 getIntMaxValue() const { return _maxValue; }

  VX_CLASS_HEADER(IntField)
};

}  // namespace vx

#endif
