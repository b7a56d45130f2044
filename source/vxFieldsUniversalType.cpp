// The field of a voxel.

#include "vxDataTypes.h"
#include "vxGuards.h"
#include "vxTraceBuffer.h"
#include "vxTypeInfos.h"
#include "vxUniversalTypeField.h"
#include "vxUtilsAPI.h"

#include <cstring>

namespace vx {

VX_CLASS_SOURCE(UniversalTypeField, "FloatField")

namespace {

// Whether all that the library and the operations of a type touch lies within the field's memory.
bool fits(const VXTypeInfos& infos) {
  constexpr std::size_t room = UniversalTypeField::maxTypeSize;
  if (infos.typeSize > room || infos.physicalSize > room || infos.numComponents > room) return false;
  for (VXuint32 i = 0; i < infos.numComponents; ++i) {
    const std::size_t size = VXTypeComponentSize(infos.structInfoString[i]);
    if (size > room || infos.componentOffsets[i] > room - size) return false;
  }
  return true;
}

// A record that doesn't fit counts as none.
const VXTypeInfos* findFittingTypeInfos(VXDataType dataType) {
  const VXTypeInfos* const infos = VXGetTypeInfosForDataType(dataType);
  return infos && fits(*infos) ? infos : nullptr;
}

std::size_t sizeOfFittingType(VXDataType dataType) { return findFittingTypeInfos(dataType) ? VXSizeOf(dataType) : 0; }

// Whether a field must not take a type, with the report of that.
bool isRefused(VXDataType dataType, const CallLabel& label, const char* reason) {
  const VXTypeInfos* const infos = VXGetTypeInfosForDataType(dataType);
  if (!infos || fits(*infos)) return false;
  report(VX_ERROR, label, VX_BAD_DATA_TYPE, reason);
  return true;
}

}  // namespace

UniversalTypeField::UniversalTypeField(const std::string& name, VXDataType dataType)
    : Field(name),
      _dataType(isRefused(dataType, "UniversalTypeField::UniversalTypeField()",
                          "The data type is too large for this field, using -1 instead.")
                    ? -1
                    : dataType) {
  _ownsValue = true;
}

void UniversalTypeField::_updateIsValidAndTypeDataFromOrigString() {
  const TraceFrame trace("source/vxFields:UniversalTypeField::_updateIsValidAndTypeDataFromOrigString()");
  const VXTypeInfos* const infos = findFittingTypeInfos(_dataType);
  _isValid =
      VXTypeComponentsFromString(infos, _origStrValue.c_str(), infos ? infos->typeDefaultPtr : nullptr, _typeData);
}

void UniversalTypeField::_updateIsValidAndStrValueFromTypeData() {
  const TraceFrame trace("source/vxFields:UniversalTypeField::_updateIsValidAndStrValueFromTypeData()");
  struct Text {
    char* text;
    ~Text() { VXFree(text); }
  };
  const Text written{VXTypeComponentsToString(findFittingTypeInfos(_dataType), _typeData)};
  _strValue = written.text ? written.text : "";
  _isValid = _strValue.empty() ? 0 : 1;
}

void UniversalTypeField::setStringValue(const std::string& value) {
  const TraceFrame trace("source/vxFields:UniversalTypeField::setStringValue()");
  _origStrValue = value;
  _updateIsValidAndTypeDataFromOrigString();
  _updateIsValidAndStrValueFromTypeData();
  notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
}

std::string UniversalTypeField::getStringValue() const { return _strValue; }

VXint64 UniversalTypeField::isValidValue() { return _isValid; }

void UniversalTypeField::setDataType(VXDataType dataType) {
  const TraceFrame trace("source/vxFields:UniversalTypeField::setDataType()");
  if (isRefused(dataType, "UniversalTypeField::setDataType()",
                "The data type is too large for this field, call is ignored!")) {
    return;
  }
  _dataType = dataType;
  _updateIsValidAndTypeDataFromOrigString();
  _updateIsValidAndStrValueFromTypeData();
  notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
}

VXDataType UniversalTypeField::getDataType() const { return _dataType; }

void UniversalTypeField::setUniversalTypeValue(const void* data) {
  const TraceFrame trace("source/vxFields:UniversalTypeField::setUniversalTypeValue()");
  checkFatal(data != nullptr);
  // The data may be the field's own, from getShortLivedUniversalTypeValue().
  std::memmove(_typeData, data, sizeOfFittingType(_dataType));
  _updateIsValidAndStrValueFromTypeData();
  _origStrValue = _strValue;
  notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
}

unsigned char* UniversalTypeField::getUniversalTypeValue() const {
  const TraceFrame trace("source/vxFields:UniversalTypeField::getUniversalTypeValue()");
  return static_cast<unsigned char*>(VXMemDup(_typeData, sizeOfFittingType(_dataType), VX_RETURN_NULL));
}

const unsigned char* UniversalTypeField::getShortLivedUniversalTypeValue() const { return _typeData; }

VXldouble UniversalTypeField::getValueCastToLDouble() const {
  const TraceFrame trace("source/vxFields:UniversalTypeField::getValueCastToLDouble()");
  return VXGetVoxelValueAsDouble(_typeData, findFittingTypeInfos(_dataType) ? _dataType : -1);
}

}  // namespace vx
