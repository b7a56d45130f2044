/// \file vxPointerFields.h
/// Fields of addresses that the field doesn't look behind: PointerField, BaseField and SoNodeField.

#ifndef VX_POINTER_FIELDS_H
#define VX_POINTER_FIELDS_H

#include "vxTValueField.h"

#include <string>

namespace vx {

class Base;
class SoNode;

/// An address, held in the field itself. What it points to isn't owned and never followed.
///
/// Its text is "NULL" or a decimal number. A text that is neither that nor a hexadecimal number is reported as an error
/// with ::VX_BAD_PARAMETER and read as null. hasReferencedValue() says true, although the value lies in the field.
class VX_EXPORT PointerField : public Field {
 public:
  /// \param name name of the field. The address is null at first.
  explicit PointerField(const std::string& name = std::string()) : Field(name) {}

  void setStringValue(const std::string& value) override;
  std::string getStringValue() const override;

  /// Stores an address and notifies.
  void setPointerValue(void* value);
  /// \return the address.
  void* getPointerValue() const { return _value; }

  VX_CLASS_HEADER(PointerField)

 protected:
  void* _value = nullptr;  ///< The address.
};

/// A pointer to an object with run-time type, which isn't owned.
///
/// Its text is the address as a decimal number, "0" for null. Reading is as for a PointerField: the address is only
/// stored, but whoever asks for the object trusts the text.
class VX_EXPORT BaseField : public TValueField<Base*> {
 public:
  /// \param name name of the field. \param value the caller's variable; null for an own value, null at first.
  explicit BaseField(const std::string& name = std::string(), Base** value = nullptr) : TValueField(name, value) {}

  void setStringValue(const std::string& value) override;
  std::string getStringValue() const override;

  /// Stores a pointer and notifies.
  void setBaseValue(Base* value) { _setValue(value); }
  /// \return the pointer.
  Base* getBaseValue() const { return _getValueOrReport("BaseField::getBaseValue", "NULL"); }

  VX_CLASS_HEADER(BaseField)

  /// Lets each source field notify, in order of attachment, with full strength.
  virtual void touchSourceFields();
};

/// A pointer to a node of a scene of the host's, which isn't owned and never followed.
///
/// Its text is that of a BaseField.
class VX_EXPORT SoNodeField : public TValueField<SoNode*> {
 public:
  /// \param name name of the field. \param value the caller's variable; null for an own value, null at first.
  explicit SoNodeField(const std::string& name = std::string(), SoNode** value = nullptr) : TValueField(name, value) {}

  void setStringValue(const std::string& value) override;
  std::string getStringValue() const override;

  /// Stores a pointer and notifies.
  void setSoNodeValue(SoNode* value) { _setValue(value); }
  /// \return the pointer.
  SoNode* getSoNodeValue() const { return _getValueOrReport("SoNodeField::getSoNodeValue", "NULL"); }

  VX_CLASS_HEADER(SoNodeField)
};

}  // namespace vx

#endif
