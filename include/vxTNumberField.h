/// \file vxTNumberField.h
/// What the fields of numbers share: a range that values are limited to.

#ifndef VX_T_NUMBER_FIELD_H
#define VX_T_NUMBER_FIELD_H

#include "vxTValueField.h"

#include <limits>
#include <string>

namespace vx {

/// Limits a number to a range: first from below, then from above, so that the upper bound wins where they cross. NaN
/// stays NaN.
template <class T>
constexpr T limitToRange(T value, T minValue, T maxValue) noexcept {
  if (value < minValue) value = minValue;
  if (value > maxValue) value = maxValue;
  return value;
}

/// Base of the fields of numbers. Its range is at first that of all finite numbers; changing a bound neither changes
/// the present value nor notifies. \tparam T type of the number.
template <class T>
class VX_EXPORT TNumberField : public TValueField<T> {
 protected:
  using TValueField<T>::TValueField;

  /// Limits a number to the range, stores it and notifies.
  void _setNumber(T value, SourcePosition position = SourcePosition()) {
    this->_setValue(limitToRange(value, _minValue, _maxValue), position);
  }

  T _minValue = std::numeric_limits<T>::lowest();  ///< Values below become this.
  T _maxValue = std::numeric_limits<T>::max();     ///< Values above become this.
};

}  // namespace vx

#endif
