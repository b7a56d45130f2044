// Fields of vectors, colours, matrices and boxes.

#include "vxColorField.h"
#include "vxMatrixField.h"
#include "vxStringConversion.h"
#include "vxSubImgBoxFields.h"
#include "vxTraceBuffer.h"
#include "vxTruncate.h"
#include "vxVecFields.h"
#include "vxVectorField.h"

#include <cmath>

namespace vx {

VX_CLASS_SOURCE(Vec2fField, "Field")
VX_CLASS_SOURCE(Vec3fField, "Field")
VX_CLASS_SOURCE(Vec4fField, "Field")
VX_CLASS_SOURCE(Vec6fField, "Field")
VX_CLASS_SOURCE(ColorField, "Vec3fField")
VX_CLASS_SOURCE(MatrixField, "Field")
VX_CLASS_SOURCE(VectorField, "Field")
VX_CLASS_SOURCE(SubImgBoxField, "Field")
VX_CLASS_SOURCE(SubImgBoxfField, "Field")

namespace {

constexpr double maxPackedComponent = 255.0;

double unpackComponent(unsigned int packed, unsigned int shift) {
  return ((packed >> shift) & 255U) / maxPackedComponent;
}

unsigned int packComponent(double component, unsigned int shift) {
  if (!(component > 0)) component = 0;  // NaN as well
  if (component > 1) component = 1;
  return static_cast<unsigned int>(component * 255.999) << shift;
}

TVector<VXint64> roundToVector(const Tvec6<double>& numbers) {
  TVector<VXint64> rounded;
  for (std::size_t i = 0; i < rounded.size(); ++i) rounded[i] = truncateTo<VXint64>(std::floor(numbers[i] + 0.5));
  return rounded;
}

}  // namespace

void ColorField::getColorValue(float& r, float& g, float& b) const {
  const Tvec3<double>& color = getVec3fValue();
  r = static_cast<float>(color[0]);
  g = static_cast<float>(color[1]);
  b = static_cast<float>(color[2]);
}

void ColorField::setPackedColorValue(unsigned int packed) {
  const TraceFrame trace("source/vxFields:ColorField::setPackedColorValue()");
  setVec3fValue(Tvec3<double>(unpackComponent(packed, 0), unpackComponent(packed, 8), unpackComponent(packed, 16)));
}

unsigned int ColorField::getPackedColorValue() const {
  const Tvec3<double>& color = getVec3fValue();
  return (0xffU << 24) | packComponent(color[2], 16) | packComponent(color[1], 8) | packComponent(color[0], 0);
}

void VectorField::setStringValue(const std::string& value) {
  const TraceFrame trace("source/vxFields:VectorField::setStringValue()");
  Tvec6<double> numbers;
  StringConversion::readFromString(value, numbers);
  setVectorValue(roundToVector(numbers));
}

std::string VectorField::getStringValue() const {
  const TraceFrame trace("source/vxFields:VectorField::getStringValue()");
  return StringConversion::writeToStdString(_getValue());
}

void SubImgBoxField::setStringValue(const std::string& value) {
  const TraceFrame trace("source/vxFields:SubImgBoxField::setStringValue()");
  SubImgBoxf numbers;
  StringConversion::readFromString(value, numbers);
  setSubImgBoxValue(TSubImgBox<VXint64>(roundToVector(numbers.v1), roundToVector(numbers.v2)));
}

std::string SubImgBoxField::getStringValue() const {
  const TraceFrame trace("source/vxFields:SubImgBoxField::getStringValue()");
  return StringConversion::writeToStdString(_getValue());
}

}  // namespace vx
