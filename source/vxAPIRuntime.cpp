// Run-time types through the C interface.

#include "vxAPI.h"
#include "vxAPIFrame.h"
#include "vxBase.h"
#include "vxRuntime.h"
#include "vxTraceBuffer.h"

namespace {

using vx::Base;
using vx::callFramed;
using vx::CallLabel;
using vx::checkArgument;
using vx::isEmptyText;
using vx::Runtime;
using vx::RuntimeType;
using vx::TraceFrame;

bool checkType(bool isValid, const CallLabel& label) {
  return checkArgument(isValid, label, "Invalid type pointer passed. Ignoring call and returning NULL.");
}

// Walk over the types

const RuntimeType* _VXRuntimeGetFirstModuleType() {
  const TraceFrame trace("source/vxAPI:_VXRuntimeGetFirstModuleType()");
  return Runtime::getFirstEntry();
}

const RuntimeType* _VXRuntimeGetNextModuleType() {
  const TraceFrame trace("source/vxAPI:_VXRuntimeGetNextModuleType()");
  return Runtime::getNextEntry();
}

// Types

const RuntimeType* _VXTypeFromName(const char* name) {
  const TraceFrame trace("source/vxAPI:_VXTypeFromName()");
  return checkType(!isEmptyText(name), "vxAPI: VXTypeFromName") ? Runtime::fromName(name) : nullptr;
}

const char* _VXTypeGetName(const RuntimeType* type) {
  const TraceFrame trace("source/vxAPI:_VXTypeGetName()");
  return checkType(type != nullptr, "vxAPI: VXTypeGetName") ? type->getName() : nullptr;
}

const char* _VXTypeGetDllName(const RuntimeType* type) {
  const TraceFrame trace("source/vxAPI:_VXTypeGetDllName()");
  return checkType(type != nullptr, "vxAPI: VXTypeGetDllName") ? type->getDllName() : nullptr;
}

const char* _VXTypeGetParentName(const RuntimeType* type) {
  const TraceFrame trace("source/vxAPI:_VXTypeGetParentName()");
  return checkType(type != nullptr, "vxAPI: VXTypeGetParentName") ? type->getParentName() : nullptr;
}

const RuntimeType* _VXTypeGetParentType(const RuntimeType* type) {
  const TraceFrame trace("source/vxAPI:_VXTypeGetParentType()");
  return checkType(type != nullptr, "vxAPI: VXTypeGetParentType") ? type->getParent() : nullptr;
}

int _VXTypeIsAbstract(const RuntimeType* type) {
  const TraceFrame trace("source/vxAPI:_VXTypeIsAbstract()");
  if (!checkArgument(type != nullptr, "vxAPI: VXTypeIsAbstract",
                     "Invalid type pointer passed. Ignoring call and returning -1.")) {
    return -1;
  }
  return type->isAbstract() ? 1 : 0;
}

int _VXTypeIsDerivedFrom(const RuntimeType* type, const char* parent) {
  const TraceFrame trace("source/vxAPI:_VXTypeIsDerivedFrom()");
  return type && parent && type->isDerivedFrom(Runtime::fromName(parent)) ? 1 : 0;
}

// Objects

const RuntimeType* _VXBaseGetTypeObject(Base* base) {
  const TraceFrame trace("source/vxAPI:_VXBaseGetTypeObject()");
  return checkType(base != nullptr, "vxAPI: VXBaseGetTypeObject") ? base->getTypeId() : nullptr;
}

// The type of an object for the functions that give a name; null after a refusal.
const RuntimeType* typeOf(Base* base, const CallLabel& label) {
  if (!checkArgument(base != nullptr, label, "Invalid base pointer passed. Returning NULL.")) return nullptr;
  const RuntimeType* const type = base->getTypeId();
  checkArgument(type != nullptr, label,
                "Invalid or bad base object passed, maybe it's not initalized. Returning NULL.");
  return type;
}

const char* _VXBaseGetType(Base* base) {
  const TraceFrame trace("source/vxAPI:_VXBaseGetType()");
  const RuntimeType* const type = typeOf(base, "vxAPI: VXBaseGetType");
  return type ? type->getName() : nullptr;
}

const char* _VXBaseGetParentType(Base* base) {
  const TraceFrame trace("source/vxAPI:_VXBaseGetParentType()");
  const RuntimeType* const type = typeOf(base, "vxAPI: VXBaseGetParentType");
  return type ? type->getParentName() : nullptr;
}

int _VXBaseIsDerivedFrom(Base* base, const char* superClassName) {
  const TraceFrame trace("source/vxAPI:_VXBaseIsDerivedFrom()");
  const CallLabel label("vxAPI: VXBaseIsDerivedFrom");
  if (!checkArgument(base != nullptr, label, "Invalid base pointer passed. Returning 0.")) return 0;
  if (!checkArgument(!isEmptyText(superClassName), label, "Invalid superClassName passed. Returning 0.")) return 0;
  const RuntimeType* const type = base->getTypeId();
  const RuntimeType* const superClass = Runtime::fromName(superClassName);
  if (!checkArgument(type && superClass, label,
                     "Invalid or bad base object or superclass name passed, maybe both or one of them are not "
                     "initalized. Returning 0 (=false).")) {
    return 0;
  }
  return type->isDerivedFrom(superClass) ? 1 : 0;
}

}  // namespace

const VXRuntimeType* VXRuntimeGetFirstModuleType(void) {
  return callFramed("vxAPI:_VXRuntimeGetFirstModuleType()", vx::returnsPointer, _VXRuntimeGetFirstModuleType);
}

const VXRuntimeType* VXRuntimeGetNextModuleType(void) {
  return callFramed("vxAPI:_VXRuntimeGetNextModuleType()", vx::returnsPointer, _VXRuntimeGetNextModuleType);
}

const VXRuntimeType* VXTypeFromName(const char* name) {
  return callFramed("vxAPI:_VXTypeFromName(name)", vx::returnsPointer, _VXTypeFromName, name);
}

const char* VXTypeGetName(const VXRuntimeType* type) {
  return callFramed("vxAPI:_VXTypeGetName(type)", vx::returnsText, _VXTypeGetName, type);
}

const char* VXTypeGetDllName(const VXRuntimeType* type) {
  return callFramed("vxAPI:_VXTypeGetDllName(type)", vx::returnsText, _VXTypeGetDllName, type);
}

const char* VXTypeGetParentName(const VXRuntimeType* type) {
  return callFramed("vxAPI:_VXTypeGetParentName(type)", vx::returnsText, _VXTypeGetParentName, type);
}

const VXRuntimeType* VXTypeGetParentType(const VXRuntimeType* type) {
  return callFramed("vxAPI:_VXTypeGetParentType(type)", vx::returnsPointer, _VXTypeGetParentType, type);
}

int VXTypeIsAbstract(const VXRuntimeType* type) {
  return callFramed("vxAPI:_VXTypeIsAbstract(type)", vx::returnsMinusOne, _VXTypeIsAbstract, type);
}

int VXTypeIsDerivedFrom(const VXRuntimeType* type, const char* parent) {
  return callFramed("vxAPI:_VXTypeIsDerivedFrom(type, parent)", vx::returnsNumber, _VXTypeIsDerivedFrom, type, parent);
}

const VXRuntimeType* VXBaseGetTypeObject(VXBase* base) {
  return callFramed("vxAPI:_VXBaseGetTypeObject(base)", vx::returnsPointer, _VXBaseGetTypeObject, base);
}

const char* VXBaseGetType(VXBase* base) {
  return callFramed("vxAPI:_VXBaseGetType(base)", vx::returnsText, _VXBaseGetType, base);
}

const char* VXBaseGetParentType(VXBase* base) {
  return callFramed("vxAPI:_VXBaseGetParentType(base)", vx::returnsText, _VXBaseGetParentType, base);
}

int VXBaseIsDerivedFrom(VXBase* base, const char* superClassName) {
  return callFramed("vxAPI:_VXBaseIsDerivedFrom(base, superClassName)", vx::returnsNumber, _VXBaseIsDerivedFrom, base,
                    superClassName);
}
