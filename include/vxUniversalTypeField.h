/// \file vxUniversalTypeField.h
/// The field of a voxel.

#ifndef VX_UNIVERSAL_TYPE_FIELD_H
#define VX_UNIVERSAL_TYPE_FIELD_H

#include "vxField.h"

#include <cstddef>
#include <string>

namespace vx {

/// One value of a voxel type that is chosen at run time, standard or registered, held in the field itself.
///
/// The text that was set is kept, so that it is read anew when the type changes. A text may be read in part: what can't
/// be read comes from the default value of the type. The types of the run-time type system count this class among the
/// descendants of FloatField, which it isn't in C++.
class VX_EXPORT UniversalTypeField : public Field {
 public:
  /// Size of the largest value in bytes. A type that needs more is refused.
  static constexpr std::size_t maxTypeSize = 512;

  /// Makes a field that isn't valid yet: the value is all zero bytes and both texts are empty.
  /// \param name name of the field. \param dataType type of the value, -1 for none. One that doesn't fit is reported as
  /// an error with ::VX_BAD_DATA_TYPE and becomes -1.
  explicit UniversalTypeField(const std::string& name = std::string(), VXDataType dataType = -1);

  /// Reads a value of the current type from a text, and notifies.
  void setStringValue(const std::string& value) override;
  /// \return the value as it is written in the current type; empty if there is none.
  std::string getStringValue() const override;
  /// \return 1 if there is a type and a value of it, else 0.
  VXint64 isValidValue() override;

  VX_CLASS_HEADER(UniversalTypeField)

  /// Changes the type, reads the text that was set last in the new type, and notifies.
  /// \param dataType any number; that of no type makes the value invalid. One of a type that doesn't fit is reported as
  /// an error with ::VX_BAD_DATA_TYPE, and the call is ignored.
  virtual void setDataType(VXDataType dataType);
  /// \return the type, -1 for none.
  virtual VXDataType getDataType() const;
  /// Sets the value from a voxel of the current type, and notifies.
  /// \param data VXSizeOf() bytes of the type; none for no type. \throw int ::VX_BAD_POINTER after a fatal report for
  /// null.
  virtual void setUniversalTypeValue(const void* data);
  /// \return a copy of the value, VXSizeOf() bytes of the type, which the caller gives back by VXFree(); null without
  /// memory.
  virtual unsigned char* getUniversalTypeValue() const;
  /// \return the value itself, good until the next change of the field.
  virtual const unsigned char* getShortLivedUniversalTypeValue() const;
  /// \return the value as a number; 0 if there is no type or it has no cast to numbers.
  virtual VXldouble getValueCastToLDouble() const;

 protected:
  /// Reads the value from the text that was set last.
  virtual void _updateIsValidAndTypeDataFromOrigString();
  /// Writes the value as the text of getStringValue().
  virtual void _updateIsValidAndStrValueFromTypeData();

  std::string _origStrValue;                                         ///< The text that was set last.
  std::string _strValue;                                             ///< The value as text.
  VXDataType _dataType;                                              ///< The type, -1 for none.
  VXint64 _isValid = 0;                                              ///< What isValidValue() says.
  alignas(std::max_align_t) unsigned char _typeData[maxTypeSize]{};  ///< The value.
};

}  // namespace vx

#endif
