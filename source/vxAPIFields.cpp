// Values of fields through the C interface.

#include "vxAPI.h"
#include "vxAPIFrame.h"
#include "vxFields.h"
#include "vxTraceBuffer.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <string>

namespace {

using vx::callFramed;
using vx::CallLabel;
using vx::checkArgument;
using vx::checkedObject;
using vx::checkObject;
using vx::DoubleField;
using vx::EnumField;
using vx::Field;
using vx::FloatField;
using vx::IntField;
using vx::TraceFrame;

constexpr char textRefused[] = "Invalid field pointer or type. Returning NULL.";
constexpr char setRefused[] = "Invalid field pointer or type. Ignoring call.";
constexpr char getRefused[] = "Invalid field pointer or type. Returning 0.";

// Name and class

const char* _VXFieldGetName(Field* field) {
  const TraceFrame trace("source/vxAPI:_VXFieldGetName()");
  return checkObject<Field>(field, "vxAPI: VXFieldGetName", textRefused) ? field->getName().c_str() : nullptr;
}

const char* _VXFieldGetType(Field* field) {
  const TraceFrame trace("source/vxAPI:_VXFieldGetType()");
  return checkObject<Field>(field, "vxAPI: VXFieldGetType", textRefused) ? field->getTypeIdName() : nullptr;
}

// Values as text

void _VXFieldSetValue(Field* field, const char* value) {
  const TraceFrame trace("source/vxAPI:_VXFieldSetValue()");
  if (checkObject<Field>(field, "vxAPI: VXFieldSetValue", setRefused) &&
      checkArgument(value != nullptr, "VXFieldSetValue", "Invalid value pointer passed. Ignoring call.")) {
    field->setStringValue(value);
  }
}

int _VXFieldGetValueSize(Field* field) {
  const TraceFrame trace("source/vxAPI:_VXFieldGetValueSize()");
  if (!checkObject<Field>(field, "vxAPI: VXFieldGetValueSize", getRefused)) return 0;
  return static_cast<int>(std::min<VXint64>(field->getCStringValueSize(), INT_MAX - 1));
}

int _VXFieldGetValue(Field* field, char* value, int size) {
  const TraceFrame trace("source/vxAPI:_VXFieldGetValue()");
  const CallLabel label("VXFieldGetValue");
  if (!checkArgument(value != nullptr, label, "Invalid value pointer passed. Ignoring call.")) return 0;
  if (!checkObject<Field>(field, "vxAPI: VXFieldGetValue", getRefused)) return 0;
  if (!checkArgument(size >= 0, label, "Invalid size passed. Ignoring call.")) return 0;
  const std::string text = field->getStringValue();
  std::strncpy(value, text.c_str(), static_cast<std::size_t>(size));
  return static_cast<int>(std::min<std::size_t>(text.size(), INT_MAX - 1)) + 1;
}

void _VXFieldTouch(Field* field) {
  const TraceFrame trace("source/vxAPI:_VXFieldTouch()");
  if (checkObject<Field>(field, "vxAPI: VXFieldTouch", setRefused)) {
    field->notifyAttachments(vx::FieldSensor::VX_FULL_NOTIFICATION);
  }
}

// Numbers

void _VXFieldSetFloatValue(Field* field, float value) {
  const TraceFrame trace("source/vxAPI:_VXFieldSetFloatValue()");
  if (auto* const numberField = checkedObject<FloatField>(field, "vxAPI: VXFieldSetFloatValue",
                                                          "Float field pointer is invalid. Ignoring call")) {
    numberField->setFloatValue(value);
  }
}

float _VXFieldGetFloatValue(Field* field) {
  const TraceFrame trace("source/vxAPI:_VXFieldGetFloatValue()");
  auto* const numberField =
      checkedObject<FloatField>(field, "vxAPI: VXFieldGetFloatValue", "Float field pointer is invalid. Returning 0.");
  return numberField ? numberField->getFloatValue() : 0.0F;
}

void _VXFieldSetDoubleValue(Field* field, double value) {
  const TraceFrame trace("source/vxAPI:_VXFieldSetDoubleValue()");
  if (auto* const numberField = checkedObject<DoubleField>(field, "vxAPI: VXFieldSetDoubleValue",
                                                           "Double field pointer is invalid. Ignoring call.")) {
    numberField->setDoubleValue(value);
  }
}

double _VXFieldGetDoubleValue(Field* field) {
  const TraceFrame trace("source/vxAPI:_VXFieldGetDoubleValue()");
  auto* const numberField = checkedObject<DoubleField>(field, "vxAPI: VXFieldGetDoubleValue",
                                                       "Double field pointer is invalid. Returning 0.");
  return numberField ? numberField->getDoubleValue() : 0.0;
}

void _VXFieldSetIntValue64(Field* field, VXint64 value) {
  const TraceFrame trace("source/vxAPI:_VXFieldSetIntValue64()");
  if (auto* const numberField = checkedObject<IntField>(field, "vxAPI: VXFieldSetIntValue64",
                                                        "Integer field pointer is invalid. Ignoring call.")) {
    numberField->setIntValue(value);
  }
}

VXint64 _VXFieldGetIntValue64(Field* field) {
  const TraceFrame trace("source/vxAPI:_VXFieldGetIntValue64()");
  auto* const numberField =
      checkedObject<IntField>(field, "vxAPI: VXFieldGetIntValue64", "Integer field pointer is invalid. Returning 0.");
  return numberField ? numberField->getIntValue() : 0;
}

int _VXFieldGetIntValue(Field* field) {
  const TraceFrame trace("source/vxAPI:_VXFieldGetIntValue()");
  return static_cast<int>(VXFieldGetIntValue64(field));
}

// Choices

constexpr char enumSetRefused[] = "Enum field pointer is invalid. Ignoring call.";
constexpr char enumGetRefused[] = "Enum field pointer is invalid. Returning 0.";

int _VXFieldGetEnumValue(Field* field) {
  const TraceFrame trace("source/vxAPI:_VXFieldGetEnumValue()");
  auto* const enumField = checkedObject<EnumField>(field, "vxAPI: VXFieldGetEnumValue", enumGetRefused);
  return enumField ? enumField->getEnumValue() : 0;
}

void _VXFieldSetEnumValue(Field* field, int val) {
  const TraceFrame trace("source/vxAPI:_VXFieldSetEnumValue()");
  const CallLabel label("vxAPI: VXFieldSetEnumValue");
  auto* const enumField = checkedObject<EnumField>(field, label, enumSetRefused);
  if (!enumField) return;
  if (val < 0 || static_cast<unsigned int>(val) >= enumField->getEnumNum()) {
    vx::report(VX_ERROR, label, VX_BAD_INDEX, "Enum index is out of range [0, 2^32-1] and therefore. Call is ignored.");
    return;
  }
  enumField->setEnumValue(val);
}

int _VXFieldGetNumEnums(Field* field) {
  const TraceFrame trace("source/vxAPI:_VXFieldGetNumEnums()");
  auto* const enumField = checkedObject<EnumField>(field, "vxAPI: VXFieldGetNumEnums", enumGetRefused);
  return enumField ? static_cast<int>(enumField->getEnumNum()) : 0;
}

const char* _VXFieldGetEnumName(Field* field, int i, int* value) {
  const TraceFrame trace("source/vxAPI:_VXFieldGetEnumName()");
  if (value) *value = -1;
  auto* const enumField =
      checkedObject<EnumField>(field, "vxAPI: VXFieldGetEnumName",
                               "Enum field pointer is invalid. *valud is set to -1 and empty string is returned.");
  if (!enumField) return "";
  if (!checkArgument(value != nullptr, "VXFieldGetEnumName",
                     "Invalid value pointer passed. Ignoring call and returning an empty string.")) {
    return "";
  }
  *value = i;
  return enumField->getItemText(static_cast<unsigned int>(i));
}

}  // namespace

const char* VXFieldGetName(VXField* field) {
  return callFramed("vxAPI:_VXFieldGetName(field)", vx::returnsText, _VXFieldGetName, field);
}

const char* VXFieldGetType(VXField* field) {
  return callFramed("vxAPI:_VXFieldGetType(field)", vx::returnsText, _VXFieldGetType, field);
}

void VXFieldSetValue(VXField* field, const char* value) {
  callFramed("vxAPI:_VXFieldSetValue(field, value)", vx::returnsNothing, _VXFieldSetValue, field, value);
}

int VXFieldGetValueSize(VXField* field) {
  return callFramed("vxAPI:_VXFieldGetValueSize(field)", vx::returnsNumber, _VXFieldGetValueSize, field);
}

int VXFieldGetValue(VXField* field, char* value, int size) {
  return callFramed("vxAPI:_VXFieldGetValue(field, value, size)", vx::returnsNumber, _VXFieldGetValue, field, value,
                    size);
}

void VXFieldTouch(VXField* field) {
  callFramed("vxAPI:_VXFieldTouch(field)", vx::returnsNothing, _VXFieldTouch, field);
}

void VXFieldSetFloatValue(VXField* field, float value) {
  callFramed("vxAPI:_VXFieldSetFloatValue(field, value)", vx::returnsNothing, _VXFieldSetFloatValue, field, value);
}

float VXFieldGetFloatValue(VXField* field) {
  return callFramed("vxAPI:_VXFieldGetFloatValue(field)", vx::returnsNumber, _VXFieldGetFloatValue, field);
}

void VXFieldSetDoubleValue(VXField* field, double value) {
  callFramed("vxAPI:_VXFieldSetDoubleValue(field, value)", vx::returnsNothing, _VXFieldSetDoubleValue, field, value);
}

double VXFieldGetDoubleValue(VXField* field) {
  return callFramed("vxAPI:_VXFieldGetDoubleValue(field)", vx::returnsNumber, _VXFieldGetDoubleValue, field);
}

void VXFieldSetIntValue64(VXField* field, VXint64 value) {
  callFramed("vxAPI:_VXFieldSetIntValue64(field, value)", vx::returnsNothing, _VXFieldSetIntValue64, field, value);
}

VXint64 VXFieldGetIntValue64(VXField* field) {
  return callFramed("vxAPI:_VXFieldGetIntValue64(field)", vx::returnsNumber, _VXFieldGetIntValue64, field);
}

void VXFieldSetIntValue(VXField* field, int value) { VXFieldSetIntValue64(field, value); }

int VXFieldGetIntValue(VXField* field) {
  return callFramed("vxAPI:_VXFieldGetIntValue(field)", vx::returnsNumber, _VXFieldGetIntValue, field);
}

int VXFieldGetEnumValue(VXField* field) {
  return callFramed("vxAPI:_VXFieldGetEnumValue(field)", vx::returnsNumber, _VXFieldGetEnumValue, field);
}

void VXFieldSetEnumValue(VXField* field, int val) {
  callFramed("vxAPI:_VXFieldSetEnumValue(field, val)", vx::returnsNothing, _VXFieldSetEnumValue, field, val);
}

int VXFieldGetNumEnums(VXField* field) {
  return callFramed("vxAPI:_VXFieldGetNumEnums(field)", vx::returnsNumber, _VXFieldGetNumEnums, field);
}

const char* VXFieldGetEnumName(VXField* field, int i, int* value) {
  return callFramed("vxAPI:_VXFieldGetEnumName(field, i, value)", vx::returnsText, _VXFieldGetEnumName, field, i,
                    value);
}
