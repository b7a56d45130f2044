// Fields of image connectors.

#include "vxConnectorFields.h"
#include "vxFieldsEngineHooks.h"
#include "vxPointerText.h"
#include "vxTraceBuffer.h"

namespace vx {

VX_ABSTRACT_CLASS_SOURCE(InputConnectorField, "Field")
VX_ABSTRACT_CLASS_SOURCE(OutputConnectorField, "Field")

template <class T>
TConnectorField<T>::TConnectorField(const std::string& name, BaseOp* op, VXint64 index) : TValueField<T>(name) {
  checkFatal(op != nullptr);
  this->_makeOwnValue(*op, index);
}

template <class T>
void TConnectorField<T>::setStringValue(const std::string& /*value*/) {
  const TraceFrame trace("source/vxFields:TConnectorField::setStringValue()");
  this->notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
}

template <class T>
std::string TConnectorField<T>::getStringValue() const {
  const TraceFrame trace("source/vxFields:TConnectorField::getStringValue()");
  return writePointer(&this->_getValue());
}

template <class T>
VXint64 TConnectorField<T>::isValidValue() {
  return this->_valuePtr ? 1 : 0;
}

template class TConnectorField<InputConnector>;
template class TConnectorField<OutputConnector>;

void OutputConnectorField::notifyAttachments(FieldSensor::Strength strength) {
  const TraceFrame trace("source/vxFields:OutputConnectorField::notifyAttachments()");
  const FieldsEngineHooks& engine = fieldsEngineHooks();
  if (engine.isProcessingActive() != 0) {
    report(VX_ERROR, "OutputConnectorField::notifyAttachments", VX_MISUSED_INTERFACE,
           "Notification of an output connector field is not allowed during image processing since that implicitly "
           "invalidates the VX cache and the processed data of the output image in that field. So the call will be "
           "ignored. This error is typically caused by getOutImage()->notifyAttachment() calls in calc*-methods of "
           "modules derived from BaseOp.");
    return;
  }
  if (strength != FieldSensor::VX_WEAK_NOTIFICATION) engine.invalidatePagedImg(_getValue().getPagedImg());
  Field::notifyAttachments(strength);
}

}  // namespace vx
