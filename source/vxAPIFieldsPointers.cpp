// Fields that hold pointers, through the C interface.

#include "vxAPI.h"
#include "vxAPIFrame.h"
#include "vxBase.h"
#include "vxDicomTagListField.h"
#include "vxPointerFields.h"
#include "vxTraceBuffer.h"

namespace {

using vx::Base;
using vx::BaseField;
using vx::callFramed;
using vx::CallLabel;
using vx::checkedObject;
using vx::DicomTagList;
using vx::DicomTagListField;
using vx::Field;
using vx::PointerField;
using vx::SoNode;
using vx::SoNodeField;
using vx::TraceFrame;

constexpr char getRefused[] = "Returning NULL pointer.";
constexpr char setRefused[] = "Ignoring call.";

// What a field of a class holds; null for a bad field.
template <class PointerFieldClass, class Pointer>
Pointer getPointer(Field* field, const CallLabel& label, Pointer (PointerFieldClass::*getter)() const) {
  auto* const pointerField = checkedObject<PointerFieldClass>(field, label, getRefused);
  return pointerField ? (pointerField->*getter)() : nullptr;
}

template <class PointerFieldClass, class Pointer>
void setPointer(Field* field, Pointer pointer, const CallLabel& label, void (PointerFieldClass::*setter)(Pointer)) {
  if (auto* const pointerField = checkedObject<PointerFieldClass>(field, label, setRefused)) {
    (pointerField->*setter)(pointer);
  }
}

Base* _VXBaseFieldGetPtr(Field* field) {
  const TraceFrame trace("source/vxAPI:_VXBaseFieldGetPtr()");
  return getPointer(field, "vxAPI: VXBaseFieldGetPtr", &BaseField::getBaseValue);
}

void _VXBaseFieldSetPtr(Field* field, Base* ptr) {
  const TraceFrame trace("source/vxAPI:_VXBaseFieldSetPtr()");
  setPointer(field, ptr, "vxAPI: VXBaseFieldSetPtr", &BaseField::setBaseValue);
}

SoNode* _VXSoNodeFieldGetPtr(Field* field) {
  const TraceFrame trace("source/vxAPI:_VXSoNodeFieldGetPtr()");
  return getPointer(field, "vxAPI: VXSoNodeFieldGetPtr", &SoNodeField::getSoNodeValue);
}

void _VXSoNodeFieldSetPtr(Field* field, SoNode* ptr) {
  const TraceFrame trace("source/vxAPI:_VXSoNodeFieldSetPtr()");
  setPointer(field, ptr, "vxAPI: VXSoNodeFieldSetPtr", &SoNodeField::setSoNodeValue);
}

void* _VXPointerFieldGetPtr(Field* field) {
  const TraceFrame trace("source/vxAPI:_VXPointerFieldGetPtr()");
  return getPointer(field, "vxAPI: VXPointerFieldGetPtr", &PointerField::getPointerValue);
}

void _VXPointerFieldSetPtr(Field* field, void* ptr) {
  const TraceFrame trace("source/vxAPI:_VXPointerFieldSetPtr()");
  setPointer(field, ptr, "vxAPI: VXPointerFieldSetPtr", &PointerField::setPointerValue);
}

DicomTagList* _VXDicomTagListFieldGetPtr(Field* field) {
  const TraceFrame trace("source/vxAPI:_VXDicomTagListFieldGetPtr()");
  return getPointer(field, "vxAPI: VXDicomTagListFieldGetPtr", &DicomTagListField::getDicomTagListValue);
}

void _VXDicomTagListFieldSetPtr(Field* field, DicomTagList* ptr) {
  const TraceFrame trace("source/vxAPI:_VXDicomTagListFieldSetPtr()");
  setPointer(field, ptr, "vxAPI: VXDicomTagListFieldSetPtr", &DicomTagListField::setDicomTagListValue);
}

// State of the object in a field

Base* objectOf(Field* baseField, const CallLabel& label, const char* reason) {
  auto* const field = checkedObject<BaseField>(baseField, label, reason);
  return field ? field->getBaseValue() : nullptr;
}

char* _VXBaseFieldGetPersistentState(Field* baseField) {
  const TraceFrame trace("source/vxAPI:_VXBaseFieldGetPersistentState()");
  const Base* const object = objectOf(baseField, "vxAPI: VXBaseFieldGetPersistentState", getRefused);
  return object ? object->getPersistentState() : nullptr;
}

void _VXBaseFieldSetPersistentState(Field* baseField, const char* state) {
  const TraceFrame trace("source/vxAPI:_VXBaseFieldSetPersistentState()");
  Base* const object = objectOf(baseField, "vxAPI: VXBaseFieldSetPersistentState", setRefused);
  if (object && vx::checkArgument(state != nullptr, "VXBaseFieldSetPersistentState",
                                  "Invalid state pointer passed. Ignoring call.")) {
    object->setPersistentState(state);
  }
}

void _VXBaseFieldClearPersistentState(Field* baseField, char* state) {
  const TraceFrame trace("source/vxAPI:_VXBaseFieldClearPersistentState()");
  const Base* const object = objectOf(baseField, "vxAPI: VXBaseFieldClearPersistentState", setRefused);
  if (object && state) object->clearPersistentState(state);
}

}  // namespace

VXBase* VXBaseFieldGetPtr(VXField* field) {
  return callFramed("vxAPI:_VXBaseFieldGetPtr(field)", vx::returnsPointer, _VXBaseFieldGetPtr, field);
}

void VXBaseFieldSetPtr(VXField* field, VXBase* ptr) {
  callFramed("vxAPI:_VXBaseFieldSetPtr(field, ptr)", vx::returnsNothing, _VXBaseFieldSetPtr, field, ptr);
}

VXSoNode* VXSoNodeFieldGetPtr(VXField* field) {
  return callFramed("vxAPI:_VXSoNodeFieldGetPtr(field)", vx::returnsPointer, _VXSoNodeFieldGetPtr, field);
}

void VXSoNodeFieldSetPtr(VXField* field, VXSoNode* ptr) {
  callFramed("vxAPI:_VXSoNodeFieldSetPtr(field, ptr)", vx::returnsNothing, _VXSoNodeFieldSetPtr, field, ptr);
}

void* VXPointerFieldGetPtr(VXField* field) {
  return callFramed("vxAPI:_VXPointerFieldGetPtr(field)", vx::returnsPointer, _VXPointerFieldGetPtr, field);
}

void VXPointerFieldSetPtr(VXField* field, void* ptr) {
  callFramed("vxAPI:_VXPointerFieldSetPtr(field, ptr)", vx::returnsNothing, _VXPointerFieldSetPtr, field, ptr);
}

VXDicomTagList* VXDicomTagListFieldGetPtr(VXField* field) {
  return callFramed("vxAPI:_VXDicomTagListFieldGetPtr(field)", vx::returnsPointer, _VXDicomTagListFieldGetPtr, field);
}

void VXDicomTagListFieldSetPtr(VXField* field, VXDicomTagList* ptr) {
  callFramed("vxAPI:_VXDicomTagListFieldSetPtr(field, ptr)", vx::returnsNothing, _VXDicomTagListFieldSetPtr, field,
             ptr);
}

char* VXBaseFieldGetPersistentState(VXField* baseField) {
  return callFramed("vxAPI:_VXBaseFieldGetPersistentState(baseField)", vx::returnsPointer,
                    _VXBaseFieldGetPersistentState, baseField);
}

void VXBaseFieldSetPersistentState(VXField* baseField, const char* state) {
  callFramed("vxAPI:_VXBaseFieldSetPersistentState(baseField, state)", vx::returnsNothing,
             _VXBaseFieldSetPersistentState, baseField, state);
}

void VXBaseFieldClearPersistentState(VXField* baseField, char* state) {
  callFramed("vxAPI:_VXBaseFieldClearPersistentState(baseField, state)", vx::returnsNothing,
             _VXBaseFieldClearPersistentState, baseField, state);
}
