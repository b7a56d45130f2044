// Projection: reduces an axis of an image to one voxel.
//
// Input 0: the image. Output 0: the maximum, the minimum or the mean along the axis, whose extent is 1.
//
// Field       Type  Default    Meaning
// axis        enum  z          x, y, z, c, t or u
// mode        enum  maximum    maximum, minimum, mean
// outputType  enum  automatic  voxel type; automatic is that of the input
//
// The input is requested in slabs of about a megabyte while a page is calculated, so that an axis of any length needs
// little memory. Values are calculated in double precision, in the order of the axis, rounded and limited to the range
// of the output's type. NaN is passed over by maximum and minimum unless it comes first. The world matrix stays that of
// the input: the result lies in its first layer.

#include "vxModuleTools.h"

#include <algorithm>

namespace vx::modules {

namespace {

constexpr const char* axisItems[] = {"x", "y", "z", "c", "t", "u"};
enum Mode : int { maximumMode, minimumMode, meanMode };
constexpr const char* modeItems[] = {"maximum", "minimum", "mean"};
constexpr VXint64 slabVoxels = 128 * 1024;

template <int mode>
void accumulate(double& result, double value) {
  if constexpr (mode == maximumMode) {
    result = value > result ? value : result;
  } else if constexpr (mode == minimumMode) {
    result = value < result ? value : result;
  } else {
    result += value;
  }
}

}  // namespace

class Projection : public StandardModule {
 public:
  Projection() : StandardModule(1, 1) {
    addEnum("axis", axisItems, &_axis);
    addEnum("mode", modeItems, &_mode);
    addOutputType();
  }

  VX_CLASS_HEADER(Projection)

  void calcOutImageProps(int outIndex) override;
  SubImgBox calcInSubImageBox(int /*inIndex*/, const SubImgBox& /*box*/, int /*outIndex*/) override {
    return SubImgBox();
  }
  using StandardModule::calcOutSubImage;
  void calcOutSubImage(SubImg* outSubImg, int outIndex, SubImg* inSubImgs) override;

 private:
  template <int mode>
  void reduce(const SubImg& slab, std::vector<double>& results, const SubImgBox& page, bool isFirst) const;
  void requestSlab(SubImg& slab);

  int _axis = 2;
  int _mode = maximumMode;
};

VX_MODULE_SOURCE(Projection)

void Projection::calcOutImageProps(int /*outIndex*/) {
  if (!isValidEnum("axis", _axis, std::size(axisItems)) || !isValidEnum("mode", _mode, std::size(modeItems))) return;
  PagedImg& image = *getOutImg(0);
  Vector extent = image.getImgExt();
  Vector pageExt = image.getPageExt();
  const auto axis = static_cast<std::size_t>(_axis);
  extent[axis] = 1;
  pageExt[axis] = 1;
  setExtents(image, extent, pageExt);
  image.setDataType(getOutputType(image.getDataType()));
  if (_axis == 3) image.getCDimInfos().clear();
  if (_axis == 4) image.getTDimInfos().clear();
  if (_axis == 5) image.getUDimInfos().clear();
}

void Projection::requestSlab(SubImg& slab) {
  if (shouldTerminate()) throw static_cast<int>(VX_PAGE_CALCULATION_FAILED);
  void* data = slab.getData();
  const int error = BaseOp::getTile(getInOp(0, true), getInOpIndex(0, true), slab.getBox(), slab.getDataType(), &data);
  if (error != VX_RESULT_OK) throw error;
}

void Projection::calcOutSubImage(SubImg* outSubImg, int /*outIndex*/, SubImg* /*inSubImgs*/) {
  const SubImgBox box = getValidBox(outSubImg->getBox());
  const auto axis = static_cast<std::size_t>(_axis);
  const VXint64 length = getInImg(0, true)->getImgExt()[axis];
  const VXint64 numResults = box.getNumVoxels();
  if (numResults <= 0) return;
  const VXint64 thickness = std::clamp<VXint64>(slabVoxels / numResults, 1, length);
  std::vector<double> results(static_cast<std::size_t>(numResults));
  std::vector<double> voxels(static_cast<std::size_t>(numResults * thickness));
  for (VXint64 first = 0; first < length; first += thickness) {
    SubImgBox slabBox = box;
    slabBox.v1[axis] = first;
    slabBox.v2[axis] = std::min(first + thickness, length) - 1;
    SubImg slab(slabBox, VXdoubleType, voxels.data());
    requestSlab(slab);
    switch (_mode) {
      case maximumMode:
        reduce<maximumMode>(slab, results, box, first == 0);
        break;
      case minimumMode:
        reduce<minimumMode>(slab, results, box, first == 0);
        break;
      default:
        reduce<meanMode>(slab, results, box, first == 0);
    }
  }
  const SubImg block(box, VXdoubleType, results.data());
  const double divisor = _mode == meanMode ? static_cast<double>(length) : 1.0;
  writeRows(*outSubImg, box, [&](const Vector& position, double* values, std::size_t number) {
    const double* const row = voxelAt<double>(block, position);
    for (std::size_t i = 0; i < number; ++i) values[i] = row[i] / divisor;
  });
}

template <int mode>
void Projection::reduce(const SubImg& slab, std::vector<double>& results, const SubImgBox& page, bool isFirst) const {
  const SubImg block(page, VXdoubleType, results.data());
  const VXint64 number = slab.getImgExt().x;
  const auto axis = static_cast<std::size_t>(_axis);
  forEachRow(slab.getBox(), [&](const Vector& position) {
    const double* const in = voxelAt<double>(slab, position);
    Vector target = position;
    target[axis] = 0;
    double* const out = voxelAt<double>(block, target);
    const bool isFirstLayer = isFirst && position[axis] == 0;
    if (_axis == 0) {
      if (isFirstLayer) *out = in[0];
      for (VXint64 i = isFirstLayer ? 1 : 0; i < number; ++i) accumulate<mode>(*out, in[i]);
    } else if (isFirstLayer) {
      std::copy(in, in + number, out);
    } else {
      for (VXint64 i = 0; i < number; ++i) accumulate<mode>(out[i], in[i]);
    }
  });
}

}  // namespace vx::modules
