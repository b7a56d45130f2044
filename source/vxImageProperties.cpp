#include "vxImageProperties.h"

#include "vxDataTypes.h"
#include "vxErrorOutput.h"

#include <cmath>
#include <limits>

namespace vx {

VX_CLASS_SOURCE(ImageProperties, "NULL")

ImageProperties::ImageProperties(const TVector<VXint64>& imgExt, VXDataType dataType, long double minVoxelValue,
                                 long double maxVoxelValue)
    : _dataType(dataType),
      _imgExt(imgExt),
      _minVoxelValue(static_cast<VXldouble>(minVoxelValue)),
      _maxVoxelValue(static_cast<VXldouble>(maxVoxelValue)) {}

ImageProperties::~ImageProperties() = default;

void ImageProperties::setImgExt(const TVector<VXint64>& imgExt) { _imgExt = imgExt; }

void ImageProperties::setDataType(int dataType) {
  if (VXIsValidType(dataType)) {
    _dataType = dataType;
  } else {
    _dataType = VXuint8Type;
    report(VX_FATAL, "vxImageProperties::setDataType", VX_BAD_PARAMETER, "Continuing with VXuint8 type.");
  }
}

bool ImageProperties::isUpToDate() const { return _isUpToDate; }

void ImageProperties::setUpToDate() { _isUpToDate = true; }

void ImageProperties::setOutOfDate() { _isUpToDate = false; }

void ImageProperties::setImgProps(const ImageProperties& other) {
  _dataType = other._dataType;
  _imgExt = other._imgExt;
  _minVoxelValue = other._minVoxelValue;
  _maxVoxelValue = other._maxVoxelValue;
}

bool ImageProperties::operator==(const ImageProperties& other) const {
  const auto isSameValue = [](VXldouble a, VXldouble b) {
    return std::abs(a - b) < std::numeric_limits<double>::min();
  };
  return _dataType == other._dataType && _imgExt == other._imgExt &&
         isSameValue(_minVoxelValue, other._minVoxelValue) && isSameValue(_maxVoxelValue, other._maxVoxelValue) &&
         _isUpToDate == other._isUpToDate;
}

}  // namespace vx
