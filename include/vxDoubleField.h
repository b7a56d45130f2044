/// \file vxDoubleField.h
/// Fields of a number in double precision: DoubleField and LongDoubleField.

#ifndef VX_DOUBLE_FIELD_H
#define VX_DOUBLE_FIELD_H

#include "vxTNumberField.h"

#include <limits>
#include <string>

namespace vx {

/// A floating point number in double precision.
///
/// Its text has up to 15 significant digits. A text without a number is 0.
class VX_EXPORT DoubleField : public TNumberField<double> {
 public:
  /// \param name name of the field. \param value the caller's variable; null for an own value, 0 at first.
  explicit DoubleField(const std::string& name = std::string(), double* value = nullptr) : TNumberField(name, value) {}

  void setStringValue(const std::string& value) override;
  std::string getStringValue() const override;

  /// Limits a number to the range, stores it and notifies. NaN is stored as it is.
  void setDoubleValue(double value) { _setNumber(value); }
  /// \return the value.
  double getDoubleValue() const { return _getValueOrReport("DoubleField::getDoubleValue", "0"); }

  /// Sets the lower bound of later values.
  void setDoubleMinValue(double value) { _minValue = value; }
  /// \return the lower bound, at first minus the largest finite number.
  double getDoubleMinValue() const { return _minValue; }
  /// Sets the upper bound of later values.
  void setDoubleMaxValue(double value) { _maxValue = value; }
  /// \return the upper bound, at first the largest finite number.
  double getDoubleMaxValue() const { return _maxValue; }

  VX_CLASS_HEADER(DoubleField)
};

/// A `long double`, held in the field itself. Its text and its first bounds are those of double precision.
class VX_EXPORT LongDoubleField : public Field {
 public:
  /// \param name name of the field. The value is 0 at first.
  explicit LongDoubleField(const std::string& name = std::string()) : Field(name) { _ownsValue = true; }

  void setStringValue(const std::string& value) override;
  std::string getStringValue() const override;

  /// Limits a number to the range, stores it and notifies. NaN is stored as it is.
  void setLongDoubleValue(long double value);
  /// \return the value.
  long double getLongDoubleValue() const { return _value; }

  /// Sets the lower bound of later values.
  void setLongDoubleMinValue(long double value) { _minValue = value; }
  /// \return the lower bound, at first minus the largest finite `double`.
  long double getLongDoubleMinValue() const { return _minValue; }
  /// Sets the upper bound of later values.
  void setLongDoubleMaxValue(long double value) { _maxValue = value; }
  /// \return the upper bound, at first the largest finite `double`.
  long double getLongDoubleMaxValue() const { return _maxValue; }

  VX_CLASS_HEADER(LongDoubleField)

 protected:
  long double _value = 0;                                         ///< The value.
  long double _minValue = std::numeric_limits<double>::lowest();  ///< Values below become this.
  long double _maxValue = std::numeric_limits<double>::max();     ///< Values above become this.
};

}  // namespace vx

#endif
