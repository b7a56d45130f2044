// NIfTI-1 files. Dimensions 1 to 3 of the file are x, y and z, 4 is t, 5 is c, 6 is u. Voxels keep their order along
// each axis, and the world matrix says where they are.

#include "partFile.h"
#include "writer.h"

#include <cmath>
#include <cstring>
#include <nifti/nifti1.h>
#include <nifti/znzlib.h>

namespace vxtile {

namespace {

constexpr std::array<std::size_t, numAxes> fileOrder{0, 1, 2, 4, 3, 5};  // x y z t c u

struct NiftiType {
  VXDataType type;
  short code;
};
constexpr NiftiType niftiTypes[] = {{VXint8Type, NIFTI_TYPE_INT8},       {VXuint8Type, NIFTI_TYPE_UINT8},
                                    {VXint16Type, NIFTI_TYPE_INT16},     {VXuint16Type, NIFTI_TYPE_UINT16},
                                    {VXint32Type, NIFTI_TYPE_INT32},     {VXuint32Type, NIFTI_TYPE_UINT32},
                                    {VXfloatType, NIFTI_TYPE_FLOAT32},   {VXdoubleType, NIFTI_TYPE_FLOAT64},
                                    {VXldoubleType, NIFTI_TYPE_FLOAT64}, {VXint64Type, NIFTI_TYPE_INT64}};

short niftiTypeOf(const Volume& volume) {
  for (const NiftiType& entry : niftiTypes) {
    if (entry.type == volume.type) return entry.code;
  }
  throw Failure(ExitCode::network,
                volume.name + ": a .nii file can't hold voxels of type \"" + VXNameFromDataType(volume.type) + "\"");
}

nifti_1_header makeHeader(const Volume& volume) {
  nifti_1_header header = {};
  header.sizeof_hdr = static_cast<int>(sizeof header);
  header.regular = 'r';
  header.datatype = niftiTypeOf(volume);
  header.bitpix = static_cast<short>(8 * VXSizeOf(volume.type));
  header.dim[0] = 3;
  for (std::size_t i = 0; i < 7; ++i) header.dim[i + 1] = 1;
  for (std::size_t i = 0; i < numAxes; ++i) {
    const int length = volume.box.extent[fileOrder[i]];
    if (length > 32767) {
      throw Failure(ExitCode::network, volume.name + ": a .nii file holds at most 32767 voxels along an axis, not " +
                                           std::to_string(length));
    }
    header.dim[i + 1] = static_cast<short>(length);
    if (length > 1 && i + 1 > static_cast<std::size_t>(header.dim[0])) header.dim[0] = static_cast<short>(i + 1);
  }
  // The first voxel of the file is the first one of the box.
  float* const rows[3] = {header.srow_x, header.srow_y, header.srow_z};
  for (std::size_t row = 0; row < 3; ++row) {
    const float* const m = &volume.toWorld[4 * row];
    double shift = static_cast<double>(m[3]);
    for (std::size_t i = 0; i < 3; ++i) {
      rows[row][i] = m[i];
      shift += static_cast<double>(m[i]) * volume.box.first[i];
    }
    rows[row][3] = static_cast<float>(shift);
  }
  for (std::size_t i = 0; i < 3; ++i) {
    header.pixdim[i + 1] = std::hypot(rows[0][i], rows[1][i], rows[2][i]);
  }
  for (std::size_t i = 4; i < 8; ++i) header.pixdim[i] = 1;
  header.pixdim[0] = 1;
  header.vox_offset = 352;
  header.xyzt_units = NIFTI_UNITS_MM;
  header.sform_code = NIFTI_XFORM_ALIGNED_ANAT;
  std::memcpy(header.magic, "n+1", 4);
  return header;
}

class NiftiWriter : public Writer {
 public:
  NiftiWriter(const std::string& path, const Volume& volume, bool isCompressed)
      : _volume(volume), _part(path), _voxelBytes(VXSizeOf(volume.type)) {
    const nifti_1_header header = makeHeader(volume);
    _file = znzopen(_part.partPath().c_str(), "wb", isCompressed ? 1 : 0);
    if (znz_isnull(_file)) _part.fail();
    const char noExtension[4] = {};
    put(&header, sizeof header);
    put(noExtension, sizeof noExtension);
  }
  ~NiftiWriter() override {
    if (!znz_isnull(_file)) Xznzclose(&_file);
  }
  NiftiWriter(const NiftiWriter&) = delete;
  NiftiWriter& operator=(const NiftiWriter&) = delete;

  CutRules cutRules() const override {
    CutRules rules;
    rules.order = fileOrder;
    // A tile has c in front of t, the file behind it: a piece may extend along one of them only.
    if (_volume.box.extent[3] > 1 && _volume.box.extent[4] > 1) rules.lastCut = 3;
    return rules;
  }

  void write(const Box& piece, const unsigned char* voxels) override { put(voxels, piece.numVoxels() * _voxelBytes); }

  void finish() override {
    if (Xznzclose(&_file) != 0) _part.fail();
    _part.complete();
  }

 private:
  void put(const void* data, std::size_t bytes) {
    errno = 0;
    if (znzwrite(data, 1, bytes, _file) != bytes) _part.fail();
  }

  Volume _volume;
  PartFile _part;
  std::size_t _voxelBytes;
  znzFile _file = nullptr;
};

}  // namespace

std::unique_ptr<Writer> makeNiftiWriter(const std::string& path, const Volume& volume, bool isCompressed) {
  return std::make_unique<NiftiWriter>(path, volume, isCompressed);
}

}  // namespace vxtile
