// Fields of a text, of the name of a voxel type, and of nothing.

#include "vxDataTypes.h"
#include "vxNotifyField.h"
#include "vxStringField.h"
#include "vxTraceBuffer.h"
#include "vxVXDataTypeField.h"

namespace vx {

VX_CLASS_SOURCE(StringField, "Field")
VX_CLASS_SOURCE(NotifyField, "Field")
VX_CLASS_SOURCE(VXDataTypeField, "Field")

void StringField::setStringValue(const std::string& value) {
  const TraceFrame trace("source/vxFields:StringField::setStringValue()");
  _value = value;
  notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
}

std::string StringField::getStringValue() const { return _value; }

bool StringField::hasReferencedValue() const { return false; }

void NotifyField::setStringValue(const std::string& /*value*/) {
  const TraceFrame trace("source/vxFields:NotifyField::setStringValue()");
  notify();
}

std::string NotifyField::getStringValue() const { return std::string(); }

bool NotifyField::hasReferencedValue() const { return false; }

void VXDataTypeField::setStringValue(const std::string& value) {
  const TraceFrame trace("source/vxFields:VXDataTypeField::setStringValue()");
  _getValue();  // a field without a value has nothing to say of the text
  VXDataType type = VXDataTypeFromName(value.c_str());
  if (type < 0) {
    report(VX_ERROR, "VXDataTypeField::setStringValue", VX_BAD_DATA_TYPE, "Using VXint8Type instead");
    type = VXint8Type;
  }
  setVXDataTypeValue(type);
}

std::string VXDataTypeField::getStringValue() const {
  const TraceFrame trace("source/vxFields:VXDataTypeField::getStringValue()");
  if (!_valuePtr) {
    reportBrokenValuePtr("VXDataTypeField::getStringValue", "\"\"");
    return std::string();
  }
  return VXNameFromDataType(*_valuePtr);
}

}  // namespace vx
