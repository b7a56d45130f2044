/// \file vxColorField.h
/// The field of a colour.

#ifndef VX_COLOR_FIELD_H
#define VX_COLOR_FIELD_H

#include "vxVecFields.h"

#include <string>

namespace vx {

/// A colour: red, green and blue, each from 0 to 1. Components beyond that are stored as they are.
class VX_EXPORT ColorField : public Vec3fField {
 public:
  /// \param name name of the field. \param value the caller's variable; null for an own value, black at first.
  explicit ColorField(const std::string& name = std::string(), Tvec3<double>* value = nullptr)
      : Vec3fField(name, value) {}

  /// Stores a colour and notifies.
  void setColorValue(float r, float g, float b) { setVec3fValue(Tvec3<double>(r, g, b)); }
  /// Reads the colour, rounded to single precision. \param r,g,b take the components.
  void getColorValue(float& r, float& g, float& b) const;

  /// Stores a packed colour and notifies. \param packed red in the low byte, then green and blue; the top byte is
  /// ignored. 255 is full intensity.
  void setPackedColorValue(unsigned int packed);
  /// \return the packed colour with a top byte of 255. Components are limited to 0 and 1 and truncated; NaN counts
  /// as 0.
  unsigned int getPackedColorValue() const;

  VX_CLASS_HEADER(ColorField)
};

}  // namespace vx

#endif
