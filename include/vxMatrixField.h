/// \file vxMatrixField.h
/// The field of a matrix.

#ifndef VX_MATRIX_FIELD_H
#define VX_MATRIX_FIELD_H

#include "vxTCompositeField.h"

#include <string>

namespace vx {

/// A matrix of four by four numbers in double precision; its text holds them row by row.
class VX_EXPORT MatrixField : public TCompositeField<Tmat4<double>> {
 public:
  /// \param name name of the field. \param value the caller's variable; null for an own value, the identity at first.
  explicit MatrixField(const std::string& name = std::string(), Tmat4<double>* value = nullptr)
      : TCompositeField(name, value, Tmat4<double>::getIdentity()) {}

  /// Stores a matrix and notifies.
  void setMatrixValue(const Tmat4<double>& value) { _setValue(value); }
  /// \return the matrix, which lives as long as the variable that holds it.
  const Tmat4<double>& getMatrixValue() const { return _getValue(); }

  VX_CLASS_HEADER(MatrixField)
};

}  // namespace vx

#endif
