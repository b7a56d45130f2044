/// \file vxStringField.h
/// The field of a text.

#ifndef VX_STRING_FIELD_H
#define VX_STRING_FIELD_H

#include "vxField.h"

#include <string>

namespace vx {

/// A text of any characters, held in the field itself.
class VX_EXPORT StringField : public Field {
 public:
  /// \param name name of the field. The text is empty at first.
  explicit StringField(const std::string& name = std::string()) : Field(name) {}

  /// Stores a text unchanged and notifies.
  void setStringValue(const std::string& value) override;
  /// \return the text.
  std::string getStringValue() const override;
  /// \return false.
  bool hasReferencedValue() const override;

  VX_CLASS_HEADER(StringField)

 protected:
  std::string _value;  ///< The text.
};

}  // namespace vx

#endif
