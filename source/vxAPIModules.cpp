// Modules and their fields through the C interface.

#include "vxAPI.h"
#include "vxAPIFrame.h"
#include "vxBaseOp.h"
#include "vxRuntime.h"
#include "vxTraceBuffer.h"

#include <cstdio>
#include <string>

namespace {

using vx::BaseOp;
using vx::callFramed;
using vx::CallLabel;
using vx::checkArgument;
using vx::Field;
using vx::isEmptyText;
using vx::RuntimeType;
using vx::TraceFrame;

// Life of a module

// An instance of a class that can be made by name; null for an abstract class.
BaseOp* createInstance(const RuntimeType& type) {
  return type.isAbstract() ? nullptr : static_cast<BaseOp*>(type.getCreateCB()());
}

BaseOp* _VXCreateModuleFromName(const char* className) {
  const TraceFrame trace("source/vxAPI:_VXCreateModuleFromName()");
  if (!checkArgument(!isEmptyText(className), "vxAPI: VXCreateModuleFromName",
                     "Invalid className passed. Returning NULL.")) {
    return nullptr;
  }
  const RuntimeType* const type = vx::Runtime::fromName(className);
  if (!type) return nullptr;
  BaseOp* module = nullptr;
  vx::guardModuleLife(
      "Continuing after module creation failure.",
      [className] { return "vxAPI: Creation of module '" + std::string(className) + "' failed."; },
      [&] { module = createInstance(*type); });
  return module;
}

BaseOp* _VXCreateModuleFromType(const RuntimeType* type) {
  const TraceFrame trace("source/vxAPI:_VXCreateModuleFromType()");
  if (!checkArgument(type != nullptr, "vxAPI: VXCreateModuleFromType",
                     "Invalid type pointer passed. Ignoring call and returning NULL.")) {
    return nullptr;
  }
  return createInstance(*type);
}

std::string deletionLabel(const BaseOp* baseOp) {
  char text[199];
  std::snprintf(text, sizeof text, "vxAPI: Deleting the module at address %p failed.",
                static_cast<const void*>(baseOp));
  return text;
}

void _VXDeleteModule(BaseOp* baseOp) {
  const TraceFrame trace("source/vxAPI:_VXDeleteModule()");
  const CallLabel label("vxAPI: VXDeleteModule");
  if (!checkArgument(baseOp != nullptr, label, "Invalid baseOp pointer passed. Ignoring call.")) return;
  if (!vx::checkNotProcessing(label)) return;
  // The list tells whether this is a module at all: whatever can be made by name may come here.
  if (BaseOp::findBaseOpIndex(*baseOp) >= 0 && baseOp->getHandleNotificationEntryCounter() != 0) {
    vx::report(VX_ERROR, label, VX_MISUSED_INTERFACE,
               "A module can't be deleted while it handles a notification. Ignoring call.");
    return;
  }
  vx::guardModuleLife(
      "Continuing after module deletion failure.", [baseOp] { return deletionLabel(baseOp); },
      [baseOp] { delete baseOp; });
}

// Fields of a module

bool checkModule(const BaseOp* baseOp, const CallLabel& label) {
  return checkArgument(baseOp != nullptr, label, "Invalid baseOp pointer passed. Ignoring call.");
}

Field* _VXModuleGetField(BaseOp* baseOp, const char* name) {
  const TraceFrame trace("source/vxAPI:_VXModuleGetField()");
  const CallLabel label("vxAPI: VXModuleGetField");
  if (!checkArgument(baseOp != nullptr, label, "Invalid baseOp pointer passed. Returning NULL.")) return nullptr;
  if (!checkArgument(!isEmptyText(name), label, "Invalid name string passed. Returning NULL.")) return nullptr;
  return baseOp->getFieldContainer()->getField(name);
}

int _VXModuleGetNumFields(BaseOp* baseOp) {
  const TraceFrame trace("source/vxAPI:_VXModuleGetNumFields()");
  if (!checkArgument(baseOp != nullptr, "vxAPI: VXModuleGetNumFields", "Invalid baseOp pointer passed. Returning 0.")) {
    return 0;
  }
  return static_cast<int>(baseOp->getFieldContainer()->getSize());
}

Field* _VXModuleGetIndexedField(BaseOp* baseOp, int n) {
  const TraceFrame trace("source/vxAPI:_VXModuleGetIndexedField()");
  if (!checkArgument(baseOp != nullptr, "vxAPI: VXModuleGetIndexedField",
                     "Invalid baseOp pointer passed. Returning NULL.")) {
    return nullptr;
  }
  return baseOp->getFieldContainer()->getField(n);
}

void _VXModuleSetFieldValue(BaseOp* baseOp, const char* fieldName, const char* value) {
  const TraceFrame trace("source/vxAPI:_VXModuleSetFieldValue()");
  const CallLabel label("vxAPI: VXModuleSetFieldValue");
  if (checkModule(baseOp, label) &&
      checkArgument(!isEmptyText(fieldName), label, "Invalid fieldName string passed. Ignoring call.") &&
      checkArgument(value != nullptr, label, "Invalid value string passed. Ignoring call.")) {
    baseOp->getFieldContainer()->setValue(std::string(fieldName), std::string(value));
  }
}

// Calls an operation of a module on its attachments.
void callOnAttachments(BaseOp* baseOp, const char* operationLabel, const char* reason, void (BaseOp::*operation)()) {
  vx::guardModuleCall(
      baseOp, reason, [=] { return operationLabel + baseOp->whoAmI(true); }, [=] { (baseOp->*operation)(); });
}

void _VXBeginLoadFields(BaseOp* baseOp) {
  const TraceFrame trace("source/vxAPI:_VXBeginLoadFields()");
  if (!checkModule(baseOp, "vxAPI: VXBeginLoadFields")) return;
  callOnAttachments(baseOp, "BaseOp::deactivateAttachments() of module ",
                    "Continuing after broken deactivateAttachments call.", &BaseOp::deactivateAttachments);
}

void _VXEndLoadFields(BaseOp* baseOp) {
  const TraceFrame trace("source/vxAPI:_VXEndLoadFields()");
  if (!checkModule(baseOp, "vxAPI: VXEndLoadFields")) return;
  callOnAttachments(baseOp, "BaseOp::activateAttachments() of module ",
                    "Continuing after broken activateAttachments call.", &BaseOp::activateAttachments);
}

void _VXBeginSaveFields(BaseOp* baseOp) {
  const TraceFrame trace("source/vxAPI:_VXBeginSaveFields()");
  if (checkModule(baseOp, "vxAPI: VXBeginSaveFields")) baseOp->beginSaveFields();
}

void _VXEndSaveFields(BaseOp* baseOp) {
  const TraceFrame trace("source/vxAPI:_VXEndSaveFields()");
  if (checkModule(baseOp, "vxAPI: VXEndSaveFields")) baseOp->endSaveFields();
}

}  // namespace

VXBaseOp* VXCreateModuleFromName(const char* className) {
  return callFramed("vxAPI:_VXCreateModuleFromName(className)", vx::returnsPointer, _VXCreateModuleFromName, className);
}

VXBaseOp* VXCreateModuleFromType(const VXRuntimeType* type) {
  return callFramed("vxAPI:_VXCreateModuleFromType(type)", vx::returnsPointer, _VXCreateModuleFromType, type);
}

void VXDeleteModule(VXBaseOp* baseOp) {
  callFramed("vxAPI:_VXDeleteModule(baseOp)", vx::returnsNothing, _VXDeleteModule, baseOp);
}

VXField* VXModuleGetField(VXBaseOp* baseOp, const char* name) {
  return callFramed("vxAPI:_VXModuleGetField(baseOp, name)", vx::returnsPointer, _VXModuleGetField, baseOp, name);
}

int VXModuleGetNumFields(VXBaseOp* baseOp) {
  return callFramed("vxAPI:_VXModuleGetNumFields(baseOp)", vx::returnsNumber, _VXModuleGetNumFields, baseOp);
}

VXField* VXModuleGetIndexedField(VXBaseOp* baseOp, int n) {
  return callFramed("vxAPI:_VXModuleGetIndexedField(baseOp, n)", vx::returnsPointer, _VXModuleGetIndexedField, baseOp,
                    n);
}

void VXModuleSetFieldValue(VXBaseOp* baseOp, const char* fieldName, const char* value) {
  callFramed("vxAPI:_VXModuleSetFieldValue(baseOp, fieldName, value)", vx::returnsNothing, _VXModuleSetFieldValue,
             baseOp, fieldName, value);
}

void VXBeginLoadFields(VXBaseOp* baseOp) {
  callFramed("vxAPI:_VXBeginLoadFields(baseOp)", vx::returnsNothing, _VXBeginLoadFields, baseOp);
}

void VXEndLoadFields(VXBaseOp* baseOp) {
  callFramed("vxAPI:_VXEndLoadFields(baseOp)", vx::returnsNothing, _VXEndLoadFields, baseOp);
}

void VXBeginSaveFields(VXBaseOp* baseOp) {
  callFramed("vxAPI:_VXBeginSaveFields(baseOp)", vx::returnsNothing, _VXBeginSaveFields, baseOp);
}

void VXEndSaveFields(VXBaseOp* baseOp) {
  callFramed("vxAPI:_VXEndSaveFields(baseOp)", vx::returnsNothing, _VXEndSaveFields, baseOp);
}
