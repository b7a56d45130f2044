/// \file vxConnectorFields.h
/// Fields of image connectors: InputConnectorField and OutputConnectorField.

#ifndef VX_CONNECTOR_FIELDS_H
#define VX_CONNECTOR_FIELDS_H

#include "vxConnectors.h"
#include "vxTValueField.h"

#include <string>

namespace vx {

/// What the fields of connectors share. The field makes the connector and destroys it.
///
/// The text is the address of the connector; writing one is a touch and changes nothing. \tparam T the connector class.
template <class T>
class VX_EXPORT TConnectorField : public TValueField<T> {
 public:
  /// Notifies. \param value ignored.
  void setStringValue(const std::string& value) override;
  /// \return the address as text.
  std::string getStringValue() const override;
  /// \return 1 if there is a connector, else 0.
  VXint64 isValidValue() override;

 protected:
  /// \param name name of the field. \param op the module, which must outlive the field. \param index number of the
  /// connector in the module. \throw int ::VX_BAD_POINTER after a fatal report for a null module.
  TConnectorField(const std::string& name, BaseOp* op, VXint64 index);
};

extern template class TConnectorField<InputConnector>;
extern template class TConnectorField<OutputConnector>;

/// The field of an image input. It can't be made by the name of its type.
class VX_EXPORT InputConnectorField : public TConnectorField<InputConnector> {
 public:
  /// \param name name of the field. \param op the module, not null; it must outlive the field. \param index number of
  /// the input in the module, not tested.
  InputConnectorField(const std::string& name, BaseOp* op, VXint64 index) : TConnectorField(name, op, index) {}

  /// \return the connector, which lives as long as the field.
  InputConnector& getInputConnectorValue() const { return _getValue(); }

  VX_ABSTRACT_CLASS_HEADER(InputConnectorField)
};

/// The field of an image output. Touching it invalidates the image. It can't be made by the name of its type.
class VX_EXPORT OutputConnectorField : public TConnectorField<OutputConnector> {
 public:
  /// \param name name of the field. \param op the module, not null; it must outlive the field. \param index number of
  /// the output in the module, not tested.
  OutputConnectorField(const std::string& name, BaseOp* op, VXint64 index) : TConnectorField(name, op, index) {}

  /// \return the connector, which lives as long as the field.
  OutputConnector& getOutputConnectorValue() const { return _getValue(); }

  /// Clears the pages of the output's image, declares it out of date and notifies. This happens to the image also when
  /// the field is deactivated or notifications are switched off.
  ///
  /// While the default host processes, the call is reported as an error with ::VX_MISUSED_INTERFACE and ignored.
  /// \param strength FieldSensor::VX_WEAK_NOTIFICATION leaves the image as it is.
  void notifyAttachments(FieldSensor::Strength strength) override;

  VX_ABSTRACT_CLASS_HEADER(OutputConnectorField)
};

}  // namespace vx

#endif
