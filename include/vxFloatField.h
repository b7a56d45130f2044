/// \file vxFloatField.h
/// Fields of a number in single precision: FloatField and ProgressField.

#ifndef VX_FLOAT_FIELD_H
#define VX_FLOAT_FIELD_H

#include "vxTNumberField.h"

#include <string>

namespace vx {

/// A floating point number in single precision.
///
/// Its text has up to 6 significant digits. A text without a number is 0.
class VX_EXPORT FloatField : public TNumberField<float> {
 public:
  /// \param name name of the field. \param value the caller's variable; null for an own value, 0 at first.
  explicit FloatField(const std::string& name = std::string(), float* value = nullptr) : TNumberField(name, value) {}

  void setStringValue(const std::string& value) override;
  std::string getStringValue() const override;

  /// Limits a number to the range, stores it and notifies. NaN is stored as it is.
  void setFloatValue(float value) { _setNumber(value); }
  /// \return the value.
  float getFloatValue() const { return _getValueOrReport("FloatField::getFloatValue", "0"); }

  /// Sets the lower bound of later values.
  void setFloatMinValue(float value) { _minValue = value; }
  /// \return the lower bound, at first minus the largest finite number.
  float getFloatMinValue() const { return _minValue; }
  /// Sets the upper bound of later values.
  void setFloatMaxValue(float value) { _maxValue = value; }
  /// \return the upper bound, at first the largest finite number.
  float getFloatMaxValue() const { return _maxValue; }

  VX_CLASS_HEADER(FloatField)
};

/// How far something has got, from 0 to 1. Small steps aren't worth telling and are dropped.
///
/// It doesn't limit values to 0 and 1 by itself. Texts pass without that filter.
class VX_EXPORT ProgressField : public FloatField {
 public:
  /// \param name name of the field. \param value the caller's variable; null for an own value, 0 at first.
  explicit ProgressField(const std::string& name = std::string(), float* value = nullptr) : FloatField(name, value) {}

  /// As FloatField::setFloatValue(), if the step is greater than the update difference, or the value is 0 or 1 and new.
  /// Any other call has no effect at all: the value isn't stored either.
  void setFloatValue(float value);

  /// Sets the step up to which values are dropped, at first 0.02. Neither tested nor notified.
  void setUpdateDifference(float difference) { _updateDifference = difference; }

  VX_CLASS_HEADER(ProgressField)

 protected:
  float _updateDifference = 0.02F;  ///< Steps must be greater than this.
};

}  // namespace vx

#endif
