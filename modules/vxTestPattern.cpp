// TestPattern: an image that is calculated from nothing, of any extent, for tests and demonstrations.
//
// Output 0: the pattern. Nothing is stored, so the image may be of any size.
//
// Field        Type    Default            Meaning
// pattern      enum    ramp               what the image shows, see below
// extent       vector  256 256 128 1 1 1  voxels in x y z c t u, each at least 1
// pageExtent   vector  128 128 4 1 1 1    voxels of a page, each at least 1; cut to the extent
// dataType     type    unsigned int8      a standard voxel type
// minValue     double  0                  value of the lowest voxel
// maxValue     double  255                value of the highest voxel, not below minValue
// cellSize     int     16                 edge of a cell of the checkerboard, at least 1, in voxels
// seed         int     0                  another number gives other noise
// voxelSize    vec3    1 1 1              edge lengths of a voxel, above 0, in mm; the world matrix is a scaling
//
// Patterns: `constant` is minValue. `index` counts voxels in memory order from minValue and begins anew after maxValue.
// `ramp` rises from the first voxel (minValue) to the last one (maxValue) of the image. `checkerboard` has minValue in
// the cell at the origin and changes from cell to cell, in all dimensions. `ball` is maxValue within a radius of two
// fifths of the smallest extent above 1 of x, y and z around the centre. `rings` is a cosine of the squared distance
// from the centre, so that frequency rises outward. `noise` is equally distributed.
//
// Values are calculated in double precision, rounded and limited to the range of the type.

#include "vxModuleTools.h"

#include <algorithm>
#include <cmath>

namespace vx::modules {

namespace {

enum Pattern : int {
  constantPattern,
  indexPattern,
  rampPattern,
  checkerboardPattern,
  ballPattern,
  ringsPattern,
  noisePattern
};
constexpr const char* patternItems[] = {"constant", "index", "ramp", "checkerboard", "ball", "rings", "noise"};

// A number from 0 to below 1 for each seed and voxel.
double noiseAt(VXuint64 seed, VXuint64 index) {
  VXuint64 bits = index + seed * 0x9E3779B97F4A7C15ULL;  // splitmix64
  bits += 0x9E3779B97F4A7C15ULL;
  bits = (bits ^ (bits >> 30)) * 0xBF58476D1CE4E5B9ULL;
  bits = (bits ^ (bits >> 27)) * 0x94D049BB133111EBULL;
  return static_cast<double>((bits ^ (bits >> 31)) >> 11) * 0x1p-53;
}

}  // namespace

class TestPattern : public StandardModule {
 public:
  TestPattern() : StandardModule(0, 1) {
    addEnum("pattern", patternItems, &_pattern);
    fields().addVector("extent", &_extent);
    fields().addVector("pageExtent", &_pageExtent);
    fields().addVXDataType("dataType", &_dataType);
    fields().addDouble("minValue", &_minValue);
    fields().addDouble("maxValue", &_maxValue);
    fields().addInt("cellSize", &_cellSize);
    fields().addInt("seed", &_seed);
    fields().addVec3f("voxelSize", &_voxelSize);
    setThreadSupport(THREAD_SUPPORTED);
  }

  VX_CLASS_HEADER(TestPattern)

  void calcOutImageProps(int outIndex) override;
  using StandardModule::calcOutSubImage;
  void calcOutSubImage(SubImg* outSubImg, int outIndex, SubImg* inSubImgs) override;

 private:
  void calcRow(const Vector& position, double* values, std::size_t number) const;

  int _pattern = rampPattern;
  Vector _extent{256, 256, 128, 1, 1, 1};
  Vector _pageExtent{128, 128, 4, 1, 1, 1};
  VXDataType _dataType = VXuint8Type;
  double _minValue = 0;
  double _maxValue = 255;
  VXint64 _cellSize = 16;
  VXint64 _seed = 0;
  Tvec3<double> _voxelSize{1, 1, 1};
};

VX_MODULE_SOURCE(TestPattern)

void TestPattern::calcOutImageProps(int /*outIndex*/) {
  if (!isValidEnum("pattern", _pattern, std::size(patternItems))) return;
  if (!isUsableExtent(_extent))
    return invalidate("Field extent: no image of " + extentText(_extent) + " voxels can be made.");
  if (!isUsableExtent(compMin(_pageExtent, _extent)))
    return invalidate("Field pageExtent: each component must be at least 1.");
  if (!VXIsStandardType(_dataType)) return invalidate("Field dataType: not a standard voxel type.", VX_BAD_DATA_TYPE);
  if (!std::isfinite(_minValue) || !std::isfinite(_maxValue) || _minValue > _maxValue) {
    return invalidate("Fields minValue and maxValue: " + numberText(_minValue) + " to " + numberText(_maxValue) +
                      " is no range.");
  }
  if (_cellSize < 1) return invalidate("Field cellSize: must be at least 1.");
  for (std::size_t i = 0; i < 3; ++i) {
    if (!(_voxelSize[i] > 0 && std::isfinite(static_cast<float>(_voxelSize[i]))))
      return invalidate("Field voxelSize: each component must be above 0.");
  }
  PagedImg& image = *getOutImg(0);
  image.setDataType(_dataType);
  setExtents(image, _extent, compMin(_pageExtent, _extent));
  image.setToWorldMatrixIdentity();
  image.setVoxelSize(_voxelSize);
  image.setMinVoxelValue(std::max(_minValue, VXDataTypeMin(_dataType)));
  image.setMaxVoxelValue(std::min(_maxValue, VXDataTypeMax(_dataType)));
}

void TestPattern::calcOutSubImage(SubImg* outSubImg, int /*outIndex*/, SubImg* /*inSubImgs*/) {
  writeRows(*outSubImg, getValidBox(outSubImg->getBox()),
            [this](const Vector& position, double* values, std::size_t number) { calcRow(position, values, number); });
}

void TestPattern::calcRow(const Vector& position, double* values, std::size_t number) const {
  const double range = _maxValue - _minValue;
  const Vector last = _extent - Vector(1);
  const VXint64 firstIndex = dot(position, _extent.getStrides());
  const Vector shape(_extent.x, _extent.y, _extent.z, 1, 1, 1);
  const auto offset = [&](std::size_t d, VXint64 p) {
    return static_cast<double>(p) - 0.5 * static_cast<double>(last[d]);
  };
  switch (_pattern) {
    case indexPattern: {
      const double period = std::floor(range) + 1;
      for (std::size_t i = 0; i < number; ++i) {
        values[i] = _minValue + std::fmod(static_cast<double>(firstIndex + static_cast<VXint64>(i)), period);
      }
      break;
    }
    case rampPattern: {
      double sum = 0;
      double full = 0;
      for (std::size_t d = 0; d < Vector::size(); ++d) {
        sum += static_cast<double>(position[d]);
        full += static_cast<double>(last[d]);
      }
      const double step = full > 0 ? range / full : 0;
      for (std::size_t i = 0; i < number; ++i) values[i] = _minValue + (sum + static_cast<double>(i)) * step;
      break;
    }
    case checkerboardPattern: {
      VXint64 rowCell = 0;
      for (std::size_t d = 1; d < Vector::size(); ++d) rowCell += position[d] / _cellSize;
      for (std::size_t i = 0; i < number; ++i) {
        const VXint64 cell = rowCell + (position.x + static_cast<VXint64>(i)) / _cellSize;
        values[i] = cell % 2 == 0 ? _minValue : _maxValue;
      }
      break;
    }
    case ballPattern:
    case ringsPattern: {
      double smallest = 0;
      double rowSquare = 0;
      for (std::size_t d = 0; d < 3; ++d) {
        const auto length = static_cast<double>(shape[d]);
        if (length > 1 && (smallest == 0 || length < smallest)) smallest = length;
        if (d > 0) rowSquare += offset(d, position[d]) * offset(d, position[d]);
      }
      const double radius = 0.4 * std::max(smallest, 1.0);
      const double frequency = 3.14159265358979323846 / std::max(smallest, 1.0);
      for (std::size_t i = 0; i < number; ++i) {
        const double x = offset(0, position.x + static_cast<VXint64>(i));
        const double square = rowSquare + x * x;
        values[i] = _pattern == ballPattern ? (square <= radius * radius ? _maxValue : _minValue)
                                            : _minValue + range * (0.5 + 0.5 * std::cos(frequency * square));
      }
      break;
    }
    case noisePattern:
      for (std::size_t i = 0; i < number; ++i) {
        values[i] = _minValue + range * noiseAt(static_cast<VXuint64>(_seed), static_cast<VXuint64>(firstIndex) + i);
      }
      break;
    default:
      std::fill(values, values + number, _minValue);
  }
}

}  // namespace vx::modules
