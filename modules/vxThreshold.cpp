// Threshold: tells voxels within a range from the others.
//
// Input 0: the image. Output 0: insideValue where lower <= voxel <= upper, outsideValue elsewhere and for NaN.
//
// Field         Type    Default    Meaning
// lower         double  128        lowest value that is inside
// upper         double  1e308      highest value that is inside
// keepInside    bool    0          whether voxels that are inside keep their values instead of taking insideValue
// insideValue   double  1          value of voxels inside
// outsideValue  double  0          value of voxels outside
// outputType    enum    automatic  voxel type; automatic is the input's if keepInside is set, else unsigned int8
//
// Values are rounded and limited to the range of the output's type.

#include "vxModuleTools.h"

#include <algorithm>
#include <cmath>

namespace vx::modules {

class Threshold : public StandardModule {
 public:
  Threshold() : StandardModule(1, 1) {
    fields().addDouble("lower", &_lower);
    fields().addDouble("upper", &_upper);
    fields().addBool("keepInside", &_keepInside);
    fields().addDouble("insideValue", &_insideValue);
    fields().addDouble("outsideValue", &_outsideValue);
    addOutputType();
    setThreadSupport(THREAD_SUPPORTED);
  }

  VX_CLASS_HEADER(Threshold)

  void calcOutImageProps(int /*outIndex*/) override {
    if (std::isnan(_lower) || std::isnan(_upper)) return invalidate("Fields lower and upper: must be numbers.");
    PagedImg& image = *getOutImg(0);
    image.setDataType(getOutputType(_keepInside ? image.getDataType() : VXuint8Type));
    const double low =
        _keepInside ? std::min(std::max(_lower, image.getMinVoxelValue()), image.getMaxVoxelValue()) : _insideValue;
    const double high =
        _keepInside ? std::max(std::min(_upper, image.getMaxVoxelValue()), image.getMinVoxelValue()) : _insideValue;
    const double lowest = VXDataTypeMin(image.getDataType());
    const double highest = VXDataTypeMax(image.getDataType());
    image.setMinVoxelValue(std::clamp(std::min(low, _outsideValue), lowest, highest));
    image.setMaxVoxelValue(std::clamp(std::max(high, _outsideValue), lowest, highest));
  }

  SubImgBox calcInSubImageBox(int /*inIndex*/, const SubImgBox& box, int /*outIndex*/) override {
    return getValidBox(box);
  }

  void calcInSubImageProps(int /*inIndex*/, InSubImageProps& props, int /*outIndex*/) override {
    props.dataType = VXdoubleType;
  }

  using StandardModule::calcOutSubImage;
  void calcOutSubImage(SubImg* outSubImg, int /*outIndex*/, SubImg* inSubImgs) override {
    writeRows(*outSubImg, inSubImgs[0].getBox(), [&](const Vector& position, double* values, std::size_t number) {
      const double* const in = voxelAt<double>(inSubImgs[0], position);
      for (std::size_t i = 0; i < number; ++i) {
        const double inside = _keepInside ? in[i] : _insideValue;
        values[i] = ((in[i] >= _lower) & (in[i] <= _upper)) ? inside : _outsideValue;
      }
    });
  }

 private:
  double _lower = 128;
  double _upper = 1e308;
  bool _keepInside = false;
  double _insideValue = 1;
  double _outsideValue = 0;
};

VX_MODULE_SOURCE(Threshold)

}  // namespace vx::modules
