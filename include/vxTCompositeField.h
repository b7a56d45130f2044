/// \file vxTCompositeField.h
/// What the fields of several floating point numbers share: their text form.

#ifndef VX_T_COMPOSITE_FIELD_H
#define VX_T_COMPOSITE_FIELD_H

#include "vxStringConversion.h"
#include "vxTValueField.h"
#include "vxTraceBuffer.h"

#include <string>

namespace vx {

/// Base of the fields of floating point vectors, matrices and boxes.
///
/// Their text is all numbers in one line, each with up to 15 significant digits, separated by one blank. On reading any
/// white space separates; numbers from the first one on that can't be read become 0, and what follows the last one is
/// ignored. \tparam T type of the value, one that StringConversion knows.
template <class T>
class VX_EXPORT TCompositeField : public TValueField<T> {
 public:
  /// Sets the value from a text and notifies. Any text is taken.
  void setStringValue(const std::string& value) override {
    const TraceFrame trace("source/vxFields:TCompositeField::setStringValue()");
    T numbers;
    StringConversion::readFromString(value, numbers);
    this->_setValue(numbers);
  }

  /// \return the value as text.
  std::string getStringValue() const override {
    const TraceFrame trace("source/vxFields:TCompositeField::getStringValue()");
    return StringConversion::writeToStdString(this->_getValue());
  }

 protected:
  using TValueField<T>::TValueField;
};

}  // namespace vx

#endif
