// ScaleShift: maps the values of an image linearly.
//
// Input 0: the image. Output 0: value * scale + shift of each voxel.
//
// Field       Type    Default    Meaning
// scale       double  1          factor
// shift       double  0          added after the multiplication
// outputType  enum    automatic  voxel type; automatic is that of the input
//
// Values are calculated in double precision, rounded and limited to the range of the output's type. int64 voxels are
// exact up to 2 to the power 53.

#include "vxModuleTools.h"

#include <algorithm>
#include <cmath>

namespace vx::modules {

class ScaleShift : public StandardModule {
 public:
  ScaleShift() : StandardModule(1, 1) {
    fields().addDouble("scale", &_scale);
    fields().addDouble("shift", &_shift);
    addOutputType();
    setThreadSupport(THREAD_SUPPORTED);
  }

  VX_CLASS_HEADER(ScaleShift)

  void calcOutImageProps(int /*outIndex*/) override {
    if (!std::isfinite(_scale) || !std::isfinite(_shift)) return invalidate("Fields scale and shift: must be finite.");
    PagedImg& image = *getOutImg(0);
    const double first = image.getMinVoxelValue() * _scale + _shift;
    const double second = image.getMaxVoxelValue() * _scale + _shift;
    image.setDataType(getOutputType(image.getDataType()));
    const double lowest = VXDataTypeMin(image.getDataType());
    const double highest = VXDataTypeMax(image.getDataType());
    image.setMinVoxelValue(std::clamp(std::min(first, second), lowest, highest));
    image.setMaxVoxelValue(std::clamp(std::max(first, second), lowest, highest));
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
      for (std::size_t i = 0; i < number; ++i) values[i] = in[i] * _scale + _shift;
    });
  }

 private:
  double _scale = 1;
  double _shift = 0;
};

VX_MODULE_SOURCE(ScaleShift)

}  // namespace vx::modules
