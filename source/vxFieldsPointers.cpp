// Fields of addresses.

#include "vxBase.h"
#include "vxDicomTagList.h"
#include "vxDicomTagListField.h"
#include "vxPointerFields.h"
#include "vxPointerText.h"
#include "vxTraceBuffer.h"

namespace vx {

VX_CLASS_SOURCE(PointerField, "Field")
VX_CLASS_SOURCE(BaseField, "Field")
VX_CLASS_SOURCE(SoNodeField, "Field")
VX_CLASS_SOURCE(DicomTagListField, "Field")

void PointerField::setPointerValue(void* value) {
  const TraceFrame trace("source/vxFields:PointerField::setPointerValue()");
  _value = value;
  notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
}

void PointerField::setStringValue(const std::string& value) {
  const TraceFrame trace("source/vxFields:PointerField::setStringValue()");
  setPointerValue(readPointer<void>(value, "PointerField::setStringValue()"));
}

std::string PointerField::getStringValue() const {
  const TraceFrame trace("source/vxFields:PointerField::getStringValue()");
  return _value ? writePointer(_value) : "NULL";
}

void BaseField::setStringValue(const std::string& value) {
  const TraceFrame trace("source/vxFields:BaseField::setStringValue()");
  setBaseValue(readPointer<Base>(value, "BaseField::setStringValue()"));
}

std::string BaseField::getStringValue() const {
  const TraceFrame trace("source/vxFields:BaseField::getStringValue()");
  return writePointer(_getValue());
}

void BaseField::touchSourceFields() {
  const TraceFrame trace("source/vxFields:BaseField::touchSourceFields()");
  // Whoever hears of it may change the sources.
  for (unsigned int i = 0; i < getNumSourceFields(); ++i) {
    getSourceField(i)->notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
  }
}

void SoNodeField::setStringValue(const std::string& value) {
  const TraceFrame trace("source/vxFields:SoNodeField::setStringValue()");
  setSoNodeValue(readPointer<SoNode>(value, "SoNodeField::setStringValue()"));
}

std::string SoNodeField::getStringValue() const {
  const TraceFrame trace("source/vxFields:SoNodeField::getStringValue()");
  return writePointer(_getValue());
}

DicomTagListField::~DicomTagListField() {
  const TraceFrame trace("source/vxFields:DicomTagListField::~DicomTagListField()");
  try {
    if (_valuePtr && *_valuePtr) (*_valuePtr)->unref();
  } catch (...) {
    VXPrintAndNotifyFatal(__FILE__, __LINE__, VX_DESTRUCTOR_FAILED);
  }
}

void DicomTagListField::setStringValue(const std::string& value) {
  const TraceFrame trace("source/vxFields:DicomTagListField::setStringValue()");
  setDicomTagListValue(readPointer<DicomTagList>(value, "DicomTagListField::setStringValue()"));
}

// The address of the holder, as it has always been; what reads it back takes it for a list.
std::string DicomTagListField::getStringValue() const {
  const TraceFrame trace("source/vxFields:DicomTagListField::getStringValue()");
  return writePointer(&_getValue());
}

VXint64 DicomTagListField::isValidValue() { return _valuePtr && *_valuePtr ? 1 : 0; }

void DicomTagListField::setDicomTagListValue(DicomTagList* list) {
  const TraceFrame trace("source/vxFields:DicomTagListField::setDicomTagListValue()");
  DicomTagList*& held = _getValue();
  // The new one first: it may be the one that is held.
  if (list) list->ref();
  if (held) held->unref();
  _setValue(list);
}

}  // namespace vx
