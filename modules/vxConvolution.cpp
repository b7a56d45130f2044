// Convolution: makes an image smooth, by the mean of a box or by a Gaussian.
//
// Input 0: the image. Output 0: for each voxel the weighted mean of its surroundings, in all six dimensions.
//
// Field       Type    Default      Meaning
// kernel      enum    box          box: the mean of the voxels of a box. Gauss: a Gaussian
// size        vector  3 3 3 1 1 1  extent of the box in voxels, odd
// sigma       vec6    1 1 1 0 0 0  standard deviations of the Gaussian in voxels; 0 leaves a dimension as it is. The
//                                  kernel ends at three sigma and sums up to 1
// border      enum    clamp        what stands past the border: clamp: the nearest voxel of the image. fill: fillValue
// fillValue   double  0            value past the border, rounded and limited to the range of the input's type
// outputType  enum    automatic    voxel type; automatic is the input's for the box. For the Gaussian it is float, or
//                                  double where the input has 32 bits and more, other than float
//
// The box is exact for integers: the sum of up to 32 bits, then the quotient rounded to the nearest, halves to the even
// number. The Gaussian is calculated in single precision for float and integers of up to 16 bits, else in double
// precision. Results are limited to the range of the output's type.

#include "vxModuleKernels.h"
#include "vxModuleTools.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace vx::modules {

namespace {

enum Kernel : int { boxKernel, gaussKernel };
constexpr const char* kernelItems[] = {"box", "Gauss"};
constexpr VXint64 largestRadius = 1000;

// Weights from the middle outward, for each dimension.
template <class W>
using Weights = std::array<std::vector<W>, Vector::size()>;

template <class W>
std::size_t radiusOf(const std::vector<W>& weights) {
  return weights.size() - 1;
}

// A block of numbers with a margin around what is wanted of it.
struct Block {
  const unsigned char* data;
  std::size_t voxelSize;
  Vector extent;

  const unsigned char* at(const Vector& offset) const {
    return data + static_cast<std::size_t>(dot(offset, extent.getStrides())) * voxelSize;
  }
};

template <class W>
CombineRows<W> combineFrom(VXDataType type) {
  if constexpr (std::is_same_v<W, float>) {
    return moduleKernels().combineFloat[type];
  } else {
    return moduleKernels().combineDouble;
  }
}

template <class W>
constexpr VXDataType typeOf = std::is_same_v<W, float> ? VXfloatType : VXdoubleType;

// Convolves along one dimension; the result is smaller by the margin of that dimension.
template <class W>
std::vector<W> convolveAlong(const Block& in, std::size_t d, const std::vector<W>& weights, CombineRows<W> combine) {
  const std::size_t radius = radiusOf(weights);
  Vector extent = in.extent;
  extent[d] -= 2 * static_cast<VXint64>(radius);
  std::vector<W> result(static_cast<std::size_t>(extent.getProduct()));
  std::vector<const void*> rows(2 * radius + 1);
  W* out = result.data();
  forEachRow(SubImgBox(Vector(0), extent - Vector(1)), [&](Vector offset) {
    for (const void*& row : rows) {
      row = in.at(offset);
      ++offset[d];
    }
    combine(rows.data(), weights.data(), radius, out, static_cast<std::size_t>(extent.x));
    out += extent.x;
  });
  return result;
}

// Convolves a volume along z, y and x, with no more than a slice between.
// \param rowAt rowAt(y, z) where the values of a row go. \param finishRow finishRow(y, z, values) has them then
template <class W, class RowAt, class FinishRow>
void convolveVolume(const Block& in, const Vector& offset, const Weights<W>& weights, CombineRows<W> combine,
                    RowAt&& rowAt, FinishRow&& finishRow) {
  const CombineRows<W> combineSums = combineFrom<W>(typeOf<W>);
  const std::size_t radii[] = {radiusOf(weights[0]), radiusOf(weights[1]), radiusOf(weights[2])};
  const auto lineLen = static_cast<std::size_t>(in.extent.x);
  const std::size_t number = lineLen - 2 * radii[0];
  const auto numLines = static_cast<std::size_t>(in.extent.y);
  const auto numSlices = static_cast<std::size_t>(in.extent.z) - 2 * radii[2];
  std::vector<W> slice(lineLen * numLines);
  std::vector<W> line(lineLen);
  std::vector<const void*> rows(2 * std::max({radii[0], radii[1], radii[2]}) + 1);
  for (std::size_t z = 0; z < numSlices; ++z) {
    for (std::size_t y = 0; y < numLines; ++y) {
      Vector place = offset;
      place.y = static_cast<VXint64>(y);
      for (std::size_t k = 0; k <= 2 * radii[2]; ++k) {
        place.z = static_cast<VXint64>(z + k);
        rows[k] = in.at(place);
      }
      combine(rows.data(), weights[2].data(), radii[2], &slice[y * lineLen], lineLen);
    }
    for (std::size_t y = 0; y + 2 * radii[1] < numLines; ++y) {
      for (std::size_t k = 0; k <= 2 * radii[1]; ++k) rows[k] = &slice[(y + k) * lineLen];
      combineSums(rows.data(), weights[1].data(), radii[1], line.data(), lineLen);
      for (std::size_t k = 0; k <= 2 * radii[0]; ++k) rows[k] = &line[k];
      W* const values = rowAt(static_cast<VXint64>(y), static_cast<VXint64>(z));
      combineSums(rows.data(), weights[0].data(), radii[0], values, number);
      finishRow(static_cast<VXint64>(y), static_cast<VXint64>(z), values);
    }
  }
}

}  // namespace

class Convolution : public StandardModule {
 public:
  Convolution() : StandardModule(1, 1) {
    addEnum("kernel", kernelItems, &_kernel);
    fields().addVector("size", &_size);
    fields().addVec6f("sigma", &_sigma);
    addEnum("border", borderItems, &_border);
    fields().addDouble("fillValue", &_fillValue);
    addOutputType();
    setThreadSupport(THREAD_SUPPORTED);
  }

  VX_CLASS_HEADER(Convolution)

  void calcOutImageProps(int outIndex) override;
  SubImgBox calcInSubImageBox(int /*inIndex*/, const SubImgBox& box, int /*outIndex*/) override {
    return grow(getValidBox(box), _radius);
  }
  void calcInSubImageProps(int /*inIndex*/, InSubImageProps& props, int /*outIndex*/) override {
    props.dataType = _inType;
  }
  using StandardModule::calcOutSubImage;
  void calcOutSubImage(SubImg* outSubImg, int outIndex, SubImg* inSubImgs) override;

 private:
  bool setBox();
  bool setGauss();
  void chooseWorkType(VXDataType inType);
  template <class W>
  void convolve(const SubImg& out, const SubImg& in, const Weights<W>& weights) const;
  void sumBoxes(const SubImg& out, const SubImg& in) const;

  int _kernel = boxKernel;
  Vector _size{3, 3, 3, 1, 1, 1};
  Tvec6<double> _sigma{1, 1, 1, 0, 0, 0};
  int _border = clampBorder;
  double _fillValue = 0;

  // From the fields, for the calculation.
  Vector _radius;
  VXDataType _inType = VXfloatType;    // in which the input is requested
  VXDataType _workType = VXfloatType;  // in which sums are calculated: int32, float or double
  Weights<double> _weights;
  Weights<float> _floatWeights;
  double _divisor = 1;
};

VX_MODULE_SOURCE(Convolution)

bool Convolution::setBox() {
  _divisor = 1;
  for (std::size_t d = 0; d < Vector::size(); ++d) {
    if (_size[d] < 1 || _size[d] % 2 == 0 || _size[d] > 2 * largestRadius + 1) {
      invalidate("Field size: each component must be odd, from 1 to 2001.");
      return false;
    }
    _radius[d] = _size[d] / 2;
    _weights[d].assign(static_cast<std::size_t>(_radius[d]) + 1, 1.0);
    _divisor *= static_cast<double>(_size[d]);
  }
  return true;
}

bool Convolution::setGauss() {
  _divisor = 1;
  for (std::size_t d = 0; d < Vector::size(); ++d) {
    if (!(_sigma[d] >= 0) || _sigma[d] * 3 > static_cast<double>(largestRadius)) {
      invalidate("Field sigma: each component must be from 0 to 333.");
      return false;
    }
    _radius[d] = static_cast<VXint64>(std::ceil(3 * _sigma[d]));
    _weights[d].assign(static_cast<std::size_t>(_radius[d]) + 1, 1.0);
    double sum = 1;
    for (std::size_t k = 1; k < _weights[d].size(); ++k) {
      const double distance = static_cast<double>(k) / _sigma[d];
      _weights[d][k] = std::exp(-0.5 * distance * distance);
      sum += 2 * _weights[d][k];
    }
    for (double& weight : _weights[d]) weight /= sum;
  }
  return true;
}

void Convolution::chooseWorkType(VXDataType inType) {
  const bool isSmallInteger = inType <= VXuint16Type;
  const bool isSpatial = _radius.c == 0 && _radius.t == 0 && _radius.u == 0;
  if (_kernel == gaussKernel) {
    _workType = isSmallInteger || inType == VXfloatType ? VXfloatType : VXdoubleType;
  } else {
    _workType = isSmallInteger && isSpatial && _divisor * 65536 < 0x1p31 ? VXint32Type : VXdoubleType;
  }
  _inType = _workType == VXdoubleType ? VXdoubleType : inType;
  for (std::size_t d = 0; d < Vector::size(); ++d) {
    _floatWeights[d].clear();
    for (const double weight : _weights[d]) _floatWeights[d].push_back(static_cast<float>(weight));
  }
}

void Convolution::calcOutImageProps(int /*outIndex*/) {
  if (!isValidEnum("kernel", _kernel, std::size(kernelItems)) ||
      !isValidEnum("border", _border, std::size(borderItems)))
    return;
  if (_kernel == boxKernel ? !setBox() : !setGauss()) return;
  PagedImg& image = *getOutImg(0);
  const VXDataType inType = VXGetRangeAndPrecisionEquivalent(image.getDataType());
  chooseWorkType(inType);
  const bool isGauss = _kernel == gaussKernel;
  image.setDataType(getOutputType(!isGauss ? inType : _workType == VXfloatType ? VXfloatType : VXdoubleType));
  const Vector extent = image.getImgExt();
  const Vector pageExt = chooseMarginPageExt(extent, _radius, isGauss ? 256 * 1024 : 128 * 1024);
  if (!isUsableExtent(pageExt + 2 * _radius, VXuint64{1} << 35))
    return invalidate("The kernel is too large for the image.");
  image.setPageExt(pageExt);
  if (_border == fillBorder) {
    image.setMinVoxelValue(std::min<double>(image.getMinVoxelValue(), _fillValue));
    image.setMaxVoxelValue(std::max<double>(image.getMaxVoxelValue(), _fillValue));
  }
}

void Convolution::calcOutSubImage(SubImg* outSubImg, int /*outIndex*/, SubImg* inSubImgs) {
  if (inSubImgs[0].getBox().isEmpty()) return;
  extendBorders(inSubImgs[0], getOutImg(0)->getBoxFromImgExt(), _border, _fillValue);
  switch (_workType) {
    case VXint32Type:
      return sumBoxes(*outSubImg, inSubImgs[0]);
    case VXfloatType:
      return convolve(*outSubImg, inSubImgs[0], _floatWeights);
    default:
      return convolve(*outSubImg, inSubImgs[0], _weights);
  }
}

template <class W>
void Convolution::convolve(const SubImg& out, const SubImg& in, const Weights<W>& weights) const {
  const SubImgBox box = getValidBox(out.getBox());
  Block block{static_cast<const unsigned char*>(in.getData()), in.getDataTypeSize(), in.getImgExt()};
  CombineRows<W> combine = combineFrom<W>(_inType);
  std::vector<W> sums;
  for (std::size_t d = Vector::size(); d-- > 3;) {
    if (_radius[d] == 0) continue;
    std::vector<W> next = convolveAlong(block, d, weights[d], combine);
    sums.swap(next);
    block.data = reinterpret_cast<const unsigned char*>(sums.data());
    block.voxelSize = sizeof(W);
    block.extent[d] -= 2 * _radius[d];
    combine = combineFrom<W>(typeOf<W>);
  }
  const StoreRow<W> store = getStoreRow<W>(out.getDataType());
  const auto number = static_cast<std::size_t>(box.getExt().x);
  const W divisor = static_cast<W>(_divisor);
  const bool isDirect = out.getDataType() == typeOf<W>;  // results are voxels as they are
  std::vector<W> buffer(isDirect ? 0 : number);
  Vector last = block.extent - Vector(1);
  last.x = last.y = last.z = 0;
  forEachRow(SubImgBox(Vector(0), last), [&](const Vector& volume) {
    const auto target = [&](VXint64 y, VXint64 z) { return bytesAt(out, box.v1 + volume + Vector(0, y, z, 0, 0, 0)); };
    convolveVolume<W>(
        block, volume, weights, combine,
        [&](VXint64 y, VXint64 z) { return isDirect ? reinterpret_cast<W*>(target(y, z)) : buffer.data(); },
        [&](VXint64 y, VXint64 z, W* values) {
          if (divisor != W(1)) {
            for (std::size_t i = 0; i < number; ++i) values[i] /= divisor;
          }
          if (!isDirect) store(values, target(y, z), number);
        });
  });
}

// The mean of a box of integers: sums along z and y move on with the slice and the line.
void Convolution::sumBoxes(const SubImg& out, const SubImg& in) const {
  const ModuleKernels& kernels = moduleKernels();
  const auto moveSums = kernels.moveSums[_inType];
  const auto storeMean = kernels.storeMean[out.getDataType()];
  const SubImgBox box = getValidBox(out.getBox());
  const Block block{static_cast<const unsigned char*>(in.getData()), in.getDataTypeSize(), in.getImgExt()};
  const auto lineLen = static_cast<std::size_t>(block.extent.x);
  const auto number = static_cast<std::size_t>(box.getExt().x);
  const VXint64 numLines = block.extent.y;
  const auto divisor = static_cast<VXint32>(_divisor);
  std::vector<VXint32> slice;
  std::vector<VXint32> line;
  std::vector<VXint32> sums(number);
  const auto sliceLine = [&](VXint64 y) { return &slice[static_cast<std::size_t>(y) * lineLen]; };

  Vector last = block.extent - Vector(1);
  last.x = last.y = last.z = 0;
  forEachRow(SubImgBox(Vector(0), last), [&](const Vector& volume) {
    slice.assign(lineLen * static_cast<std::size_t>(numLines), 0);
    for (VXint64 z = 0; z < block.extent.z; ++z) {
      for (VXint64 y = 0; y < numLines; ++y) {
        const Vector place = volume + Vector(0, y, z, 0, 0, 0);
        const bool isFull = z >= _size.z;
        moveSums(block.at(place), isFull ? block.at(place - Vector(0, 0, _size.z, 0, 0, 0)) : nullptr, sliceLine(y),
                 lineLen);
      }
      if (z + 1 < _size.z) continue;
      line.assign(lineLen, 0);
      for (VXint64 y = 0; y < numLines; ++y) {
        kernels.moveSumsOfSums(sliceLine(y), y >= _size.y ? sliceLine(y - _size.y) : nullptr, line.data(), lineLen);
        if (y + 1 < _size.y) continue;
        kernels.sumAlong(line.data(), static_cast<std::size_t>(_size.x), sums.data(), number);
        storeMean(sums.data(), divisor,
                  bytesAt(out, box.v1 + volume + Vector(0, y + 1 - _size.y, z + 1 - _size.z, 0, 0, 0)), number);
      }
    }
  });
}

}  // namespace vx::modules
