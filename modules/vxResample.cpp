// Resample: shows an image with voxels of another size.
//
// Input 0: the image. Output 0: the same region of the world with voxels of the new size, in the input's voxel type; c,
// t and u pass through. The outer borders of both images coincide as far as whole voxels permit, and the world matrix
// says exactly where the new voxels are.
//
// Field          Type  Default    Meaning
// voxelSize      vec3  1 1 1      new edge lengths in world units; 0 keeps that of the input
// interpolation  enum  trilinear  nearest: the voxel whose centre is nearest. trilinear: between the centres of eight
//                                 voxels, calculated in double precision, rounded; the border is continued outward
//
// Nothing is smoothed: make an image smooth before its voxels become much larger.

#include "vxModuleTools.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vx::modules {

namespace {

enum Interpolation : int { nearestInterpolation, trilinearInterpolation };
constexpr const char* interpolationItems[] = {"nearest", "trilinear"};

// Where a voxel of the output lies between two of the input, along one dimension.
struct Sample {
  VXint64 first;
  VXint64 second;
  double share;  // of the second
};

}  // namespace

class Resample : public StandardModule {
 public:
  Resample() : StandardModule(1, 1) {
    fields().addVec3f("voxelSize", &_voxelSize);
    addEnum("interpolation", interpolationItems, &_interpolation);
    setVoxelDataTypeSupport(EXPLICIT_TYPES);
    setThreadSupport(THREAD_SUPPORTED);
  }

  VX_CLASS_HEADER(Resample)

  void calcOutImageProps(int outIndex) override;
  SubImgBox calcInSubImageBox(int inIndex, const SubImgBox& box, int outIndex) override;
  void calcInSubImageProps(int /*inIndex*/, InSubImageProps& props, int /*outIndex*/) override {
    if (_interpolation == trilinearInterpolation) props.dataType = VXdoubleType;
  }
  using StandardModule::calcOutSubImage;
  void calcOutSubImage(SubImg* outSubImg, int /*outIndex*/, SubImg* inSubImgs) override {
    if (_interpolation == trilinearInterpolation) {
      interpolate(*outSubImg, inSubImgs[0]);
    } else {
      pick(*outSubImg, inSubImgs[0]);
    }
  }

 private:
  Sample getSample(std::size_t d, VXint64 position) const;
  void interpolate(const SubImg& out, const SubImg& in) const;
  void pick(const SubImg& out, const SubImg& in) const;

  Tvec3<double> _voxelSize{1, 1, 1};
  int _interpolation = trilinearInterpolation;
  Vector _inExtent;
  double _ratio[3] = {1, 1, 1};  // voxels of the input in one of the output
};

VX_MODULE_SOURCE(Resample)

void Resample::calcOutImageProps(int /*outIndex*/) {
  if (!isValidEnum("interpolation", _interpolation, std::size(interpolationItems))) return;
  PagedImg& image = *getOutImg(0);
  if (_interpolation == trilinearInterpolation && !VXIsStandardType(image.getDataType())) {
    return invalidate("Field interpolation: voxels of this type can't be interpolated.", VX_BAD_DATA_TYPE);
  }
  _inExtent = image.getImgExt();
  Vector extent = _inExtent;
  const Tvec3<double> inSize = image.getVoxelSize();
  Tmat4<double> mapping = Tmat4<double>::getIdentity();
  for (std::size_t d = 0; d < 3; ++d) {
    if (!(_voxelSize[d] >= 0) || !std::isfinite(_voxelSize[d]))
      return invalidate("Field voxelSize: no component may be below 0.");
    _ratio[d] = 1;
    const double size = std::fabs(inSize[d]);
    if (_voxelSize[d] == 0 || size == 0 || _voxelSize[d] == size) continue;
    const double length = static_cast<double>(_inExtent[d]) * (size / _voxelSize[d]);
    if (!(length < 0x1p40)) return invalidate("Field voxelSize: the image would become too large.");
    extent[d] = std::max(std::llround(length), 1LL);
    _ratio[d] = _voxelSize[d] / size;
    if (!std::isfinite(_ratio[d])) return invalidate("Field voxelSize: no component may be as large.");
    mapping[d][d] = _ratio[d];
    mapping[d][3] = (_ratio[d] - 1) / 2;
  }
  if (!isUsableExtent(extent)) return invalidate("Field voxelSize: the image would become too large.");
  // A page needs about as many voxels of the input as it has itself, or more by the ratio.
  Vector pageExt = compMin(image.getPageExt(), extent);
  for (std::size_t d = 3; d-- > 0;) {
    for (double share = _ratio[d]; share > 2 && pageExt[d] > 8; share /= 2) pageExt[d] = (pageExt[d] + 1) / 2;
  }
  setExtents(image, extent, pageExt);
  appendVoxelMapping(image, mapping);
}

Sample Resample::getSample(std::size_t d, VXint64 position) const {
  const VXint64 last = _inExtent[d] - 1;
  if (d >= 3) return {position, position, 0};
  const double middle = (static_cast<double>(position) + 0.5) * _ratio[d];
  if (_interpolation == nearestInterpolation) {
    const VXint64 nearest = std::clamp<VXint64>(static_cast<VXint64>(middle), 0, last);
    return {nearest, nearest, 0};
  }
  const double place = std::clamp(middle - 0.5, 0.0, static_cast<double>(last));
  const auto first = static_cast<VXint64>(place);
  return {first, std::min(first + 1, last), place - static_cast<double>(first)};
}

SubImgBox Resample::calcInSubImageBox(int /*inIndex*/, const SubImgBox& box, int /*outIndex*/) {
  const SubImgBox valid = getValidBox(box);
  if (valid.isEmpty()) return valid;
  SubImgBox wanted = valid;
  for (std::size_t d = 0; d < 3; ++d) {
    wanted.v1[d] = getSample(d, valid.v1[d]).first;
    wanted.v2[d] = getSample(d, valid.v2[d]).second;
  }
  return wanted;
}

void Resample::interpolate(const SubImg& out, const SubImg& in) const {
  const SubImgBox box = getValidBox(out.getBox());
  if (box.isEmpty()) return;
  std::vector<Sample> columns;
  for (VXint64 x = box.v1.x; x <= box.v2.x; ++x) columns.push_back(getSample(0, x));
  const VXint64 firstX = in.getPosition().x;
  std::vector<double> line(static_cast<std::size_t>(in.getImgExt().x));
  writeRows(out, box, [&](const Vector& position, double* values, std::size_t number) {
    const Sample y = getSample(1, position.y);
    const Sample z = getSample(2, position.z);
    const auto rowAt = [&](VXint64 rowY, VXint64 rowZ) {
      return voxelAt<double>(in, Vector(firstX, rowY, rowZ, position.c, position.t, position.u));
    };
    const double* const rows[] = {rowAt(y.first, z.first), rowAt(y.second, z.first), rowAt(y.first, z.second),
                                  rowAt(y.second, z.second)};
    // A neighbour without a share doesn't count, even if it is infinite or NaN.
    const auto mix = [](double first, double second, double share) {
      return share == 0 ? first : first + (second - first) * share;
    };
    for (std::size_t i = 0; i < line.size(); ++i) {
      line[i] = mix(mix(rows[0][i], rows[1][i], y.share), mix(rows[2][i], rows[3][i], y.share), z.share);
    }
    for (std::size_t i = 0; i < number; ++i) {
      const Sample& x = columns[i];
      values[i] = mix(line[static_cast<std::size_t>(x.first - firstX)],
                      line[static_cast<std::size_t>(x.second - firstX)], x.share);
    }
  });
}

void Resample::pick(const SubImg& out, const SubImg& in) const {
  const SubImgBox box = getValidBox(out.getBox());
  const std::size_t size = out.getDataTypeSize();
  std::vector<std::size_t> offsets;
  for (VXint64 x = box.v1.x; x <= box.v2.x; ++x)
    offsets.push_back(static_cast<std::size_t>(getSample(0, x).first - in.getPosition().x) * size);
  forEachRow(box, [&](const Vector& position) {
    const Vector source(in.getPosition().x, getSample(1, position.y).first, getSample(2, position.z).first, position.c,
                        position.t, position.u);
    const unsigned char* const row = bytesAt(in, source);
    unsigned char* target = bytesAt(out, position);
    for (const std::size_t offset : offsets) {
      std::memcpy(target, row + offset, size);
      target += size;
    }
  });
}

}  // namespace vx::modules
