// Fields of truth values and numbers.

#include "vxBoolField.h"
#include "vxDoubleField.h"
#include "vxFloatField.h"
#include "vxIntField.h"
#include "vxStringConversion.h"
#include "vxTraceBuffer.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace vx {

VX_CLASS_SOURCE(BoolField, "Field")
VX_CLASS_SOURCE(ToggleField, "Field")
VX_CLASS_SOURCE(IntField, "Field")
VX_CLASS_SOURCE(FloatField, "Field")
VX_CLASS_SOURCE(ProgressField, "FloatField")
VX_CLASS_SOURCE(DoubleField, "Field")
VX_CLASS_SOURCE(LongDoubleField, "Field")

namespace {

constexpr std::string_view trueText = "TRUE";
constexpr std::string_view falseText = "FALSE";

// Reads a number as far as there is one; 0 where there is none.
template <class Number>
Number readNumber(const std::string& text) {
  Number number = 0;
  StringConversion::readFromString(text, number);
  return number;
}

// Letters of ASCII only, so that no locale has a say.
bool isEqualIgnoringCase(char upper, char letter) {
  return letter == upper || letter == static_cast<char>(upper - 'A' + 'a');
}

bool readBool(const std::string& text) {
  return std::equal(trueText.begin(), trueText.end(), text.begin(), text.end(), isEqualIgnoringCase) ||
         readNumber<int>(text) != 0;
}

std::string writeBool(bool value) { return std::string(value ? trueText : falseText); }

}  // namespace

void BoolField::setStringValue(const std::string& value) {
  const TraceFrame trace("source/vxFields:BoolField::setStringValue()");
  setBoolValue(readBool(value));
}

std::string BoolField::getStringValue() const {
  const TraceFrame trace("source/vxFields:BoolField::getStringValue()");
  return writeBool(_getValue());
}

void ToggleField::setStringValue(const std::string& value) {
  const TraceFrame trace("source/vxFields:ToggleField::setStringValue()");
  setToggleValue(readBool(value));
}

std::string ToggleField::getStringValue() const {
  const TraceFrame trace("source/vxFields:ToggleField::getStringValue()");
  return writeBool(_getValue() != 0);
}

void IntField::setStringValue(const std::string& value) {
  const TraceFrame trace("source/vxFields:IntField::setStringValue()");
  setIntValue(readNumber<int>(value));
}

std::string IntField::getStringValue() const {
  const TraceFrame trace("source/vxFields:IntField::getStringValue()");
  return StringConversion::writeToStdString(_getValue());
}

void FloatField::setStringValue(const std::string& value) {
  const TraceFrame trace("source/vxFields:FloatField::setStringValue()");
  setFloatValue(readNumber<float>(value));
}

std::string FloatField::getStringValue() const {
  const TraceFrame trace("source/vxFields:FloatField::getStringValue()");
  return StringConversion::writeToStdString(_getValue());
}

void ProgressField::setFloatValue(float value) {
  const TraceFrame trace("source/vxFields:ProgressField::setFloatValue()");
  constexpr float eps = 1.1920929e-07F;
  const float step = std::abs(_getValue() - value);
  const bool isEnd = std::abs(value) <= eps || std::abs(value - 1) <= eps;
  // The second test also passes where the value so far is NaN.
  if (step > _updateDifference || (isEnd && !(step < eps))) FloatField::setFloatValue(value);
}

void DoubleField::setStringValue(const std::string& value) {
  const TraceFrame trace("source/vxFields:DoubleField::setStringValue()");
  setDoubleValue(readNumber<double>(value));
}

std::string DoubleField::getStringValue() const {
  const TraceFrame trace("source/vxFields:DoubleField::getStringValue()");
  return StringConversion::writeToStdString(_getValue());
}

void LongDoubleField::setLongDoubleValue(long double value) {
  const TraceFrame trace("source/vxFields:LongDoubleField::setLongDoubleValue()");
  _value = limitToRange(value, _minValue, _maxValue);
  notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
}

void LongDoubleField::setStringValue(const std::string& value) {
  const TraceFrame trace("source/vxFields:LongDoubleField::setStringValue()");
  setLongDoubleValue(readNumber<long double>(value));
}

std::string LongDoubleField::getStringValue() const {
  const TraceFrame trace("source/vxFields:LongDoubleField::getStringValue()");
  return StringConversion::writeToStdString(_value);
}

}  // namespace vx
