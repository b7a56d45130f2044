/// \file vxVXDataTypeField.h
/// The field of a voxel type.

#ifndef VX_VX_DATA_TYPE_FIELD_H
#define VX_VX_DATA_TYPE_FIELD_H

#include "vxTValueField.h"

#include <string>

namespace vx {

/// The number of a voxel type; its text is the name of the type.
class VX_EXPORT VXDataTypeField : public TValueField<VXDataType> {
 public:
  /// \param name name of the field. \param value the caller's variable; null for an own value, ::VXuint8Type at first.
  explicit VXDataTypeField(const std::string& name = std::string(), VXDataType* value = nullptr)
      : TValueField(name, value, VXuint8Type) {}

  /// Stores the type of that name and notifies. For an unknown name that is ::VXint8Type, after an error with
  /// ::VX_BAD_DATA_TYPE.
  void setStringValue(const std::string& value) override;
  /// \return the name; empty if the number is that of no type.
  std::string getStringValue() const override;

  /// Stores any number and notifies.
  void setVXDataTypeValue(VXDataType value) { _setValue(value); }
  /// \return the number, which lives as long as the variable that holds it.
  const VXDataType& getVXDataTypeValue() const { return _getValue(); }

  VX_CLASS_HEADER(VXDataTypeField)
};

}  // namespace vx

#endif
