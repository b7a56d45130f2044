// GradientMagnitude: how steeply the values of an image change in space.
//
// Input 0: the image. Output 0: the length of the vector of the derivatives along x, y and z. They are central
// differences, at the border one-sided ones; a dimension of extent 1 adds nothing, and c, t and u pass through.
//
// Field         Type  Default    Meaning
// useVoxelSize  bool  1          whether derivatives are per unit of the world, else per voxel
// outputType    enum  automatic  voxel type; automatic is double for double and long double, else float
//
// Calculated in single precision for integers of up to 16 bits and float, else in double precision; rounded and limited
// to the range of the output's type.

#include "vxModuleTools.h"

#include <algorithm>
#include <cmath>

namespace vx::modules {

class GradientMagnitude : public StandardModule {
 public:
  GradientMagnitude() : StandardModule(1, 1) {
    fields().addBool("useVoxelSize", &_useVoxelSize);
    addOutputType();
    setThreadSupport(THREAD_SUPPORTED);
  }

  VX_CLASS_HEADER(GradientMagnitude)

  void calcOutImageProps(int outIndex) override;
  SubImgBox calcInSubImageBox(int /*inIndex*/, const SubImgBox& box, int /*outIndex*/) override {
    return SubImgBox::intersect(grow(getValidBox(box), Vector(1, 1, 1, 0, 0, 0)), getOutImg(0)->getBoxFromImgExt());
  }
  void calcInSubImageProps(int /*inIndex*/, InSubImageProps& props, int /*outIndex*/) override {
    props.dataType = _workType;
  }
  using StandardModule::calcOutSubImage;
  void calcOutSubImage(SubImg* outSubImg, int /*outIndex*/, SubImg* inSubImgs) override {
    if (_workType == VXfloatType) {
      calculate<float>(*outSubImg, inSubImgs[0]);
    } else {
      calculate<double>(*outSubImg, inSubImgs[0]);
    }
  }

 private:
  template <class W>
  void calculate(const SubImg& out, const SubImg& in) const;

  bool _useVoxelSize = true;
  VXDataType _workType = VXfloatType;
  double _size[3] = {1, 1, 1};
};

VX_MODULE_SOURCE(GradientMagnitude)

void GradientMagnitude::calcOutImageProps(int /*outIndex*/) {
  PagedImg& image = *getOutImg(0);
  const VXDataType type = VXGetRangeAndPrecisionEquivalent(image.getDataType());
  const bool isDouble = type == VXdoubleType || type == VXldoubleType;
  _workType = type <= VXuint16Type || type == VXfloatType ? VXfloatType : VXdoubleType;
  const Vector extent = image.getImgExt();
  const Tvec3<double> voxelSize = image.getVoxelSize();
  double square = 0;
  const double range = image.getMaxVoxelValue() - image.getMinVoxelValue();
  for (std::size_t d = 0; d < 3; ++d) {
    _size[d] = _useVoxelSize && voxelSize[d] != 0 ? std::fabs(voxelSize[d]) : 1.0;
    if (extent[d] > 1) square += range / _size[d] * (range / _size[d]);
  }
  image.setDataType(getOutputType(isDouble ? VXdoubleType : VXfloatType));
  image.setPageExt(chooseMarginPageExt(extent, Vector(1, 1, 1, 0, 0, 0), 128 * 1024));
  image.setMinVoxelValue(0);
  image.setMaxVoxelValue(std::min(std::sqrt(square), VXDataTypeMax(image.getDataType())));
}

template <class W>
void GradientMagnitude::calculate(const SubImg& out, const SubImg& in) const {
  const SubImgBox box = getValidBox(out.getBox());
  if (box.isEmpty()) return;
  const SubImgBox known = in.getBox();
  const auto number = static_cast<std::size_t>(box.getExt().x);
  std::vector<W> values(number);
  const StoreRow<W> store = getStoreRow<W>(out.getDataType());
  const VXint64 lastX = getOutImg(0)->getImgExt().x - 1;
  forEachRow(box, [&](const Vector& position) {
    // The neighbours in y and z, the voxel itself where the image ends; the input block ends there as well.
    const W* rows[2][2];
    W factors[2];
    for (std::size_t d = 1; d < 3; ++d) {
      Vector before = position;
      Vector behind = position;
      before[d] = std::max(position[d] - 1, known.v1[d]);
      behind[d] = std::min(position[d] + 1, known.v2[d]);
      rows[d - 1][0] = voxelAt<W>(in, before);
      rows[d - 1][1] = voxelAt<W>(in, behind);
      const VXint64 distance = behind[d] - before[d];
      factors[d - 1] = distance > 0 ? static_cast<W>(1 / (_size[d] * static_cast<double>(distance))) : W(0);
    }
    const W* const row = voxelAt<W>(in, position);
    const auto finish = [&](std::size_t i, W x) {
      const W y = (rows[0][1][i] - rows[0][0][i]) * factors[0];
      const W z = (rows[1][1][i] - rows[1][0][i]) * factors[1];
      values[i] = std::sqrt(x * x + y * y + z * z);
    };
    const auto isFirst = static_cast<std::size_t>(position.x == 0);
    const auto isLast = static_cast<std::size_t>(box.v2.x == lastX);
    const W half = static_cast<W>(1 / (_size[0] * 2));
    const W full = static_cast<W>(1 / _size[0]);
    for (std::size_t i = isFirst; i + isLast < number; ++i) finish(i, (row[i + 1] - *(row + i - 1)) * half);
    if (lastX == 0) {
      finish(0, W(0));
    } else {
      if (isFirst != 0) finish(0, (row[1] - row[0]) * full);
      if (isLast != 0) finish(number - 1, (row[number - 1] - *(row + number - 1 - 1)) * full);
    }
    store(values.data(), bytesAt(out, position), number);
  });
}

}  // namespace vx::modules
