// RawLoad: the voxels of a file without a header.
//
// Output 0: the image. Voxels are read page by page when they are asked for. A file of gzip is decompressed into memory
// once, when the image is made valid.
//
// Field        Type    Default            Meaning
// filename     string                     path of the file
// reload       notify                     looks at the file again
// extent       vector  256 256 128 1 1 1  voxels in x y z c t u, in this order in the file, x fastest
// dataType     type    unsigned int8      a standard voxel type
// offset       int     0                  bytes in front of the first voxel
// byteOrder    enum    little             little: the low byte of a voxel comes first. big: the high byte
// voxelSize    vec3    1 1 1              edge lengths of a voxel, above 0, in mm; the world matrix is a scaling
// memoryLimit  int     4096               largest size of decompressed voxels, in MB
//
// What can't be read makes the image invalid, and its state says why. Bytes behind the last voxel are ignored.

#include "vxVoxelFile.h"

#include <bit>
#include <cmath>

namespace vx::modules {

class RawLoad : public StandardModule {
 public:
  RawLoad() : StandardModule(0, 1) {
    fields().addString("filename");
    fields().addNotify("reload");
    fields().addVector("extent", &_extent);
    fields().addVXDataType("dataType", &_dataType);
    fields().addInt("offset", &_offset);
    addEnum("byteOrder", byteOrderItems, &_byteOrder);
    fields().addVec3f("voxelSize", &_voxelSize);
    fields().addInt("memoryLimit", &_memoryLimit);
    setThreadSupport(THREAD_SUPPORTED);
  }

  VX_CLASS_HEADER(RawLoad)

  void calcOutImageProps(int outIndex) override;
  using StandardModule::calcOutSubImage;
  void calcOutSubImage(SubImg* outSubImg, int /*outIndex*/, SubImg* /*inSubImgs*/) override {
    const SubImgBox box = getValidBox(outSubImg->getBox());
    if (!box.isEmpty()) readVoxels(_file, _layout, box, *outSubImg);
  }

 private:
  static constexpr const char* byteOrderItems[] = {"little", "big"};

  Vector _extent{256, 256, 128, 1, 1, 1};
  VXDataType _dataType = VXuint8Type;
  VXint64 _offset = 0;
  int _byteOrder = 0;
  Tvec3<double> _voxelSize{1, 1, 1};
  VXint64 _memoryLimit = 4096;
  VoxelFile _file;
  VoxelLayout _layout;
};

VX_MODULE_SOURCE(RawLoad)

void RawLoad::calcOutImageProps(int /*outIndex*/) {
  if (!VXIsStandardType(_dataType)) return invalidate("Field dataType: not a standard voxel type.", VX_BAD_DATA_TYPE);
  if (!isValidEnum("byteOrder", _byteOrder, std::size(byteOrderItems))) return;
  if (!isUsableExtent(_extent, VXSizeOf(_dataType)))
    return invalidate("Field extent: no image of " + extentText(_extent) + " voxels can be made.");
  if (_offset < 0 || _offset >= VXint64{1} << 61)
    return invalidate("Field offset: no file has " + std::to_string(_offset) + " bytes in front of voxels.");
  for (std::size_t i = 0; i < 3; ++i) {
    if (!(_voxelSize[i] > 0 && std::isfinite(static_cast<float>(_voxelSize[i]))))
      return invalidate("Field voxelSize: each component must be above 0.");
  }
  const std::string path = fields().getValue("filename");
  std::string problem = _file.open(path);
  if (problem.empty()) {
    _layout = VoxelLayout();
    _layout.offset = static_cast<VXuint64>(_offset);
    _layout.extent = _extent;
    _layout.stride = _extent.getStrides(VXSizeOf(_dataType));
    _layout.dataType = _dataType;
    _layout.isSwapped = (_byteOrder == 1) != (std::endian::native == std::endian::big);
    const VXuint64 end = _layout.getEnd();
    const auto limit = static_cast<VXuint64>(std::max<VXint64>(_memoryLimit, 0)) << 20;
    problem = end == 0 ? std::string("its voxels have no size.") : _file.provide(end, limit);
  }
  if (!problem.empty()) return invalidate("File \"" + path + "\": " + problem, VX_IMAGE_INVALID);

  PagedImg& image = *getOutImg(0);
  image.setDataType(_dataType);
  setExtents(image, _extent, chooseFilePageExt(_extent));
  image.setToWorldMatrixIdentity();
  image.setVoxelSize(_voxelSize);
  image.setMinVoxelValue(VXDataTypeMin(_dataType));
  image.setMaxVoxelValue(VXDataTypeMax(_dataType));
}

}  // namespace vx::modules
