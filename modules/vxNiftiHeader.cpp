#include "vxNiftiHeader.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <nifti/nifti1.h>

namespace vx::modules {

namespace {

// Where the two versions of the header keep a value, and how.
struct Offsets {
  std::size_t magic, dataType, bitsPerVoxel, dim, pixdim, voxelOffset, slope, intercept, calMax, calMin, qformCode,
      sformCode, quaternion, qoffset, srow, units;
};
constexpr Offsets offsets1 = {344, 70, 72, 40, 76, 108, 112, 116, 124, 128, 252, 254, 256, 268, 280, 123};
constexpr Offsets offsets2 = {4, 12, 14, 16, 104, 168, 176, 184, 192, 200, 344, 348, 352, 376, 400, 500};

// Reads numbers of the header in its byte order.
class Fields {
 public:
  Fields(const unsigned char* bytes, bool isSecond, bool isSwapped)
      : _bytes(bytes), _offsets(isSecond ? offsets2 : offsets1), _isSecond(isSecond), _isSwapped(isSwapped) {}

  const Offsets& offsets() const { return _offsets; }
  bool isSecond() const { return _isSecond; }
  const char* magic() const { return reinterpret_cast<const char*>(_bytes) + _offsets.magic; }

  template <class T>
  T get(std::size_t offset) const {
    unsigned char raw[sizeof(T)];
    std::copy_n(_bytes + offset, sizeof(T), raw);
    if (_isSwapped) std::reverse(raw, raw + sizeof(T));
    return std::bit_cast<T>(raw);
  }
  // A number that is single precision in the first version and double precision in the second.
  double real(std::size_t offset, std::size_t index = 0) const {
    return _isSecond ? get<double>(offset + 8 * index) : static_cast<double>(get<float>(offset + 4 * index));
  }
  VXint64 dim(std::size_t index) const {
    return _isSecond ? get<VXint64>(_offsets.dim + 8 * index) : get<VXint16>(_offsets.dim + 2 * index);
  }
  VXint32 code(std::size_t offset) const { return _isSecond ? get<VXint32>(offset) : get<VXint16>(offset); }
  VXint32 units() const { return _isSecond ? get<VXint32>(_offsets.units) : _bytes[_offsets.units]; }
  double voxelOffset() const {
    return _isSecond ? static_cast<double>(get<VXint64>(_offsets.voxelOffset))
                     : static_cast<double>(get<float>(_offsets.voxelOffset));
  }

 private:
  const unsigned char* _bytes;
  const Offsets& _offsets;
  bool _isSecond;
  bool _isSwapped;
};

struct NiftiType {
  VXint32 number;
  VXDataType dataType;
  VXint64 numComponents;  // that stand side by side
};
constexpr NiftiType niftiTypes[] = {
    {DT_UINT8, VXuint8Type, 1},      {DT_INT8, VXint8Type, 1},     {DT_INT16, VXint16Type, 1},
    {DT_UINT16, VXuint16Type, 1},    {DT_INT32, VXint32Type, 1},   {DT_UINT32, VXuint32Type, 1},
    {DT_INT64, VXint64Type, 1},      {DT_FLOAT32, VXfloatType, 1}, {DT_FLOAT64, VXdoubleType, 1},
    {DT_RGB24, VXuint8Type, 3},      {DT_RGBA32, VXuint8Type, 4},  {DT_COMPLEX64, VXfloatType, 2},
    {DT_COMPLEX128, VXdoubleType, 2}};

std::string readDims(const Fields& in, const NiftiType& type, VoxelLayout& layout) {
  const VXint64 numDims = in.dim(0);
  if (numDims < 1 || numDims > 7) return "its header has " + std::to_string(numDims) + " dimensions.";
  std::array<VXint64, 8> dim{};
  dim.fill(1);
  for (std::size_t i = 1; i <= static_cast<std::size_t>(numDims); ++i) {
    dim[i] = in.dim(i);
    if (dim[i] < 1) return "its dimension " + std::to_string(i) + " is " + std::to_string(dim[i]) + '.';
  }
  if (dim[7] != 1) return "images of seven dimensions aren't supported.";
  if (type.numComponents > 1 && dim[5] > 1) return "vectors of colours or complex numbers aren't supported.";
  // In the file t comes before the components of dimension 5.
  const VXuint64 componentSize = VXSizeOf(type.dataType);
  VXuint64 strides[7] = {0, componentSize * static_cast<VXuint64>(type.numComponents)};
  VXuint64 total = 0;
  for (std::size_t i = 1; i <= 6; ++i) {
    VXuint64 next = 0;
    if (!multiplySizes(strides[i], static_cast<VXuint64>(dim[i]), next) || next >= VXuint64{1} << 62)
      return "its image is too large.";
    if (i < 6) strides[i + 1] = next;
    total = next;
  }
  if (total == 0) return "its image is too large.";
  const auto stride = [&](std::size_t i) { return static_cast<VXint64>(strides[i]); };
  layout.extent = Vector(dim[1], dim[2], dim[3], type.numComponents > 1 ? type.numComponents : dim[5], dim[4], dim[6]);
  layout.stride =
      Vector(stride(1), stride(2), stride(3), type.numComponents > 1 ? static_cast<VXint64>(componentSize) : stride(5),
             stride(4), stride(6));
  return {};
}

std::string readOffset(const Fields& in, NiftiHeader& header) {
  const double offset = in.voxelOffset();
  const double least = header.areVoxelsApart ? 0 : in.isSecond() ? 540 : 348;
  if (offset == 0 && !header.areVoxelsApart) {
    header.layout.offset = in.isSecond() ? 544 : 352;
    return {};
  }
  if (!(offset >= least && offset < 0x1p62)) return "its voxels begin at " + numberText(offset) + '.';
  header.layout.offset = static_cast<VXuint64>(offset);
  return {};
}

bool isUsable(const Tmat4<double>& matrix) {
  for (std::size_t i = 0; i < 4; ++i) {
    for (std::size_t j = 0; j < 4; ++j) {
      if (!std::isfinite(static_cast<float>(matrix[i][j]))) return false;
    }
  }
  bool isInvertible = false;
  static_cast<void>(matrix.inverse(&isInvertible));
  return isInvertible;
}

Tmat4<double> readSform(const Fields& in) {
  Tmat4<double> matrix = Tmat4<double>::getIdentity();
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 4; ++j) matrix[i][j] = in.real(in.offsets().srow, 4 * i + j);
  }
  return matrix;
}

// Edge lengths; what makes no sense is 1.
std::array<double, 3> readSizes(const Fields& in) {
  std::array<double, 3> sizes{};
  for (std::size_t i = 0; i < 3; ++i) {
    const double size = std::fabs(in.real(in.offsets().pixdim, i + 1));
    sizes[i] = size > 0 && std::isfinite(static_cast<float>(size)) ? size : 1;
  }
  return sizes;
}

Tmat4<double> readQform(const Fields& in) {
  double b = in.real(in.offsets().quaternion, 0);
  double c = in.real(in.offsets().quaternion, 1);
  double d = in.real(in.offsets().quaternion, 2);
  double a = 1 - (b * b + c * c + d * d);
  if (a < 1e-7) {
    const double length = std::sqrt(b * b + c * c + d * d);
    a = 0;
    b /= length;
    c /= length;
    d /= length;
  } else {
    a = std::sqrt(a);
  }
  const std::array<double, 3> sizes = readSizes(in);
  const double zSize = in.real(in.offsets().pixdim, 0) < 0 ? -sizes[2] : sizes[2];
  return Tmat4<double>((a * a + b * b - c * c - d * d) * sizes[0], 2 * (b * c - a * d) * sizes[1],
                       2 * (b * d + a * c) * zSize, in.real(in.offsets().qoffset, 0), 2 * (b * c + a * d) * sizes[0],
                       (a * a + c * c - b * b - d * d) * sizes[1], 2 * (c * d - a * b) * zSize,
                       in.real(in.offsets().qoffset, 1), 2 * (b * d - a * c) * sizes[0], 2 * (c * d + a * b) * sizes[1],
                       (a * a + d * d - c * c - b * b) * zSize, in.real(in.offsets().qoffset, 2), 0.0, 0.0, 0.0, 1.0);
}

// The first of the two transforms that is declared and can be used, else only the edge lengths.
void readWorld(const Fields& in, NiftiHeader& header) {
  header.isToWorldMatrixKnown = true;
  if (in.code(in.offsets().sformCode) > 0 && isUsable(readSform(in))) {
    header.toWorldMatrix = readSform(in);
  } else if (in.code(in.offsets().qformCode) > 0 && isUsable(readQform(in))) {
    header.toWorldMatrix = readQform(in);
  } else {
    const std::array<double, 3> sizes = readSizes(in);
    header.toWorldMatrix = Tmat4<double>::getIdentity();
    for (std::size_t i = 0; i < 3; ++i) header.toWorldMatrix[i][i] = sizes[i];
    header.isToWorldMatrixKnown = false;
  }
  const VXint32 unit = in.units() & 7;
  const double toMillimetres = unit == 1 ? 1000.0 : unit == 3 ? 0.001 : 1.0;
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 4; ++j) header.toWorldMatrix[i][j] *= toMillimetres;
  }
}

}  // namespace

std::string readNiftiHeader(const unsigned char* bytes, std::size_t number, NiftiHeader& header) {
  if (number < 348) return "not a NIfTI file: it has only " + std::to_string(number) + " bytes.";
  VXint32 size = 0;
  std::memcpy(&size, bytes, sizeof size);
  const auto isSize = [&size](VXint32 wanted) {
    return size == wanted || size == static_cast<VXint32>(__builtin_bswap32(static_cast<VXuint32>(wanted)));
  };
  const bool isSecond = isSize(540);
  if (!isSecond && !isSize(348)) return "not a NIfTI file.";
  if (isSecond && number < niftiHeaderSize) return "its header is cut off.";
  const Fields in(bytes, isSecond, size != 348 && size != 540);
  const char version = isSecond ? '2' : '1';
  const char* const magic = in.magic();
  if (magic[0] != 'n' || (magic[1] != '+' && magic[1] != 'i') || magic[2] != version || magic[3] != '\0')
    return "not a NIfTI file.";

  header = NiftiHeader();
  header.areVoxelsApart = magic[1] == 'i';
  header.layout.isSwapped = size != 348 && size != 540;
  const VXint32 number16 = in.get<VXint16>(in.offsets().dataType);
  const auto* const type = std::find_if(std::begin(niftiTypes), std::end(niftiTypes),
                                        [&](const NiftiType& t) { return t.number == number16; });
  if (type == std::end(niftiTypes)) return "its voxel type " + std::to_string(number16) + " isn't supported.";
  header.layout.dataType = type->dataType;
  const auto numBits = static_cast<VXint64>(VXSizeOf(type->dataType)) * 8 * type->numComponents;
  const VXint64 declaredBits = in.get<VXint16>(in.offsets().bitsPerVoxel);
  if (declaredBits != 0 && declaredBits != numBits) {
    return "its voxel type " + std::to_string(number16) + " doesn't have " + std::to_string(declaredBits) + " bits.";
  }
  std::string problem = readDims(in, *type, header.layout);
  if (problem.empty()) problem = readOffset(in, header);
  if (!problem.empty()) return problem;
  if (header.layout.getEnd() == 0) return "its image is too large.";
  readWorld(in, header);

  const double scale = in.real(in.offsets().slope);
  const double shift = in.real(in.offsets().intercept);
  // A slope of 0 means that there is no scaling; colours have none.
  if (scale != 0 && std::isfinite(scale) && std::isfinite(shift) && type->number != DT_RGB24 &&
      type->number != DT_RGBA32) {
    header.scale = scale;
    header.shift = shift;
  }
  header.minimum = in.real(in.offsets().calMin);
  header.maximum = in.real(in.offsets().calMax);
  return {};
}

}  // namespace vx::modules
