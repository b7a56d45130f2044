/// \file vxVectorField.h
/// The field of a vector of integers.

#ifndef VX_VECTOR_FIELD_H
#define VX_VECTOR_FIELD_H

#include "vxTValueField.h"
#include "vxVector.h"

#include <string>

namespace vx {

/// A position or an extent: six 64-bit integers, x to u.
///
/// Its text is these numbers in decimal form, separated by one blank. On reading they may have fractions, which are
/// rounded to the nearest integer, halves upward; components are exact up to 2 to the power 53, and one beyond 64 bits
/// or NaN becomes the lowest number. Components that can't be read, and those behind them, become 0.
class VX_EXPORT VectorField : public TValueField<TVector<VXint64>> {
 public:
  /// \param name name of the field. \param value the caller's variable; null for an own value, zeros at first.
  explicit VectorField(const std::string& name = std::string(), TVector<VXint64>* value = nullptr)
      : TValueField(name, value) {}

  void setStringValue(const std::string& value) override;
  std::string getStringValue() const override;

  /// Stores a vector and notifies.
  void setVectorValue(const TVector<VXint64>& value) { _setValue(value); }
  /// \return the vector, which lives as long as the variable that holds it.
  const TVector<VXint64>& getVectorValue() const { return _getValue(); }

  VX_CLASS_HEADER(VectorField)
};

}  // namespace vx

#endif
