/// \file vxVecFields.h
/// Fields of floating point vectors: Vec2fField, Vec3fField, Vec4fField and Vec6fField.

#ifndef VX_VEC_FIELDS_H
#define VX_VEC_FIELDS_H

#include "vxTCompositeField.h"

#include <string>

namespace vx {

/// A vector of two numbers in double precision, whatever the letter f in the name says.
class VX_EXPORT Vec2fField : public TCompositeField<Tvec2<double>> {
 public:
  /// \param name name of the field. \param value the caller's variable; null for an own value, zeros at first.
  explicit Vec2fField(const std::string& name = std::string(), Tvec2<double>* value = nullptr)
      : TCompositeField(name, value) {}

  /// Stores a vector and notifies.
  void setVec2fValue(const Tvec2<double>& value) { _setValue(value); }
  /// \return the vector, which lives as long as the variable that holds it.
  const Tvec2<double>& getVec2fValue() const { return _getValue(); }

  VX_CLASS_HEADER(Vec2fField)
};

/// A vector of three numbers in double precision, whatever the letter f in the name says.
class VX_EXPORT Vec3fField : public TCompositeField<Tvec3<double>> {
 public:
  /// \param name name of the field. \param value the caller's variable; null for an own value, zeros at first.
  explicit Vec3fField(const std::string& name = std::string(), Tvec3<double>* value = nullptr)
      : TCompositeField(name, value) {}

  /// Stores a vector and notifies.
  void setVec3fValue(const Tvec3<double>& value) { _setValue(value); }
  /// \return the vector, which lives as long as the variable that holds it.
  const Tvec3<double>& getVec3fValue() const { return _getValue(); }

  VX_CLASS_HEADER(Vec3fField)
};

/// A vector of four numbers in double precision, whatever the letter f in the name says.
class VX_EXPORT Vec4fField : public TCompositeField<Tvec4<double>> {
 public:
  /// \param name name of the field. \param value the caller's variable; null for an own value, zeros at first.
  explicit Vec4fField(const std::string& name = std::string(), Tvec4<double>* value = nullptr)
      : TCompositeField(name, value) {}

  /// Stores a vector and notifies.
  void setVec4fValue(const Tvec4<double>& value) { _setValue(value); }
  /// \return the vector, which lives as long as the variable that holds it.
  const Tvec4<double>& getVec4fValue() const { return _getValue(); }

  VX_CLASS_HEADER(Vec4fField)
};

/// A vector of six numbers in double precision, whatever the letter f in the name says.
class VX_EXPORT Vec6fField : public TCompositeField<Tvec6<double>> {
 public:
  /// \param name name of the field. \param value the caller's variable; null for an own value, zeros at first.
  explicit Vec6fField(const std::string& name = std::string(), Tvec6<double>* value = nullptr)
      : TCompositeField(name, value) {}

  /// Stores a vector and notifies.
  void setVec6fValue(const Tvec6<double>& value) { _setValue(value); }
  /// \return the vector, which lives as long as the variable that holds it.
  const Tvec6<double>& getVec6fValue() const { return _getValue(); }

  VX_CLASS_HEADER(Vec6fField)
};

}  // namespace vx

#endif
