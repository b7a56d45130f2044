// NiftiLoad: an image from a NIfTI file, of version 1 or 2: .nii, .nii.gz, or .hdr with .img beside it.
//
// Output 0: the image. Its dimensions are x y z of the file, t from dimension 4, c from dimension 5 or the components
// of colours (3 or 4) and complex numbers (2), u from dimension 6. Voxels are in the order of the file, in its voxel
// type; nothing is ever flipped. The world matrix is the file's sform, or its qform if there is no usable sform, in mm:
// world x is to the right, y to the front, z upward. Where the file has neither, the matrix holds the voxel size only
// and counts as invalid.
//
// Field         Type    Default  Meaning
// filename      string           path of the .nii, .nii.gz, .hdr or .hdr.gz file; of .img too if its .hdr is beside it
// reload        notify           looks at the file again
// applyScaling  bool    1        whether voxels are scaled and shifted as the file says. Where that changes them, the
//                                voxel type is float, or double for types of 32 bits and more other than float
// memoryLimit   int     4096     largest size of decompressed voxels, in MB
//
// The header is read when the image is made valid, voxels page by page when they are asked for. A file of gzip has no
// places to begin in the middle: it is decompressed into memory once, when the image is made valid, so that a damaged
// one is known before a page is promised; the memory is kept until another file takes its place.
//
// What can't be read makes the image invalid, and its state says why: a file that is missing, isn't NIfTI, is shorter
// than its header says, or has dimensions or a voxel type that make no sense or aren't supported.

#include "vxNiftiHeader.h"

#include <algorithm>

namespace vx::modules {

namespace {

// Replaces the end of a path, before a ".gz". \return an empty text if the path doesn't end so.
std::string withEnding(const std::string& path, const std::string& ending, const std::string& newEnding) {
  std::string stem = path;
  std::string compression;
  if (stem.size() > 3 && stem.compare(stem.size() - 3, 3, ".gz") == 0) {
    compression = ".gz";
    stem.resize(stem.size() - 3);
  }
  if (stem.size() < ending.size() || stem.compare(stem.size() - ending.size(), ending.size(), ending) != 0) return {};
  return stem.substr(0, stem.size() - ending.size()) + newEnding + compression;
}

// The path with ".gz" added or taken away.
std::string otherCompression(const std::string& path) {
  return path.size() > 3 && path.compare(path.size() - 3, 3, ".gz") == 0 ? path.substr(0, path.size() - 3)
                                                                         : path + ".gz";
}

}  // namespace

class NiftiLoad : public StandardModule {
 public:
  NiftiLoad() : StandardModule(0, 1) {
    fields().addString("filename");
    fields().addNotify("reload");
    fields().addBool("applyScaling", &_applyScaling);
    fields().addInt("memoryLimit", &_memoryLimit);
    setThreadSupport(THREAD_SUPPORTED);
  }

  VX_CLASS_HEADER(NiftiLoad)

  void calcOutImageProps(int outIndex) override;
  using StandardModule::calcOutSubImage;
  void calcOutSubImage(SubImg* outSubImg, int outIndex, SubImg* inSubImgs) override;

 private:
  std::string load(std::string path);
  std::string findVoxels(const std::string& path);
  bool isScaled() const { return _applyScaling && (_header.scale != 1 || _header.shift != 0); }

  bool _applyScaling = true;
  VXint64 _memoryLimit = 4096;
  VoxelFile _file;
  NiftiHeader _header;
};

VX_MODULE_SOURCE(NiftiLoad)

// \return an empty text, or what is wrong with the file.
std::string NiftiLoad::load(std::string path) {
  if (const std::string headerPath = withEnding(path, ".img", ".hdr"); !headerPath.empty()) path = headerPath;
  if (std::string problem = _file.open(path); !problem.empty()) return problem;
  unsigned char bytes[niftiHeaderSize] = {};
  const std::size_t number = _file.readStart(bytes, sizeof bytes);
  if (std::string problem = readNiftiHeader(bytes, number, _header); !problem.empty()) return problem;
  if (_header.areVoxelsApart) {
    if (std::string problem = findVoxels(path); !problem.empty()) return problem;
  }
  return _file.provide(_header.layout.getEnd(), static_cast<VXuint64>(std::max<VXint64>(_memoryLimit, 0)) << 20);
}

std::string NiftiLoad::findVoxels(const std::string& path) {
  const std::string voxelPath = withEnding(path, ".hdr", ".img");
  if (voxelPath.empty()) return "its voxels are in another file, and its name doesn't end in .hdr.";
  const std::string problem = _file.open(voxelPath);
  if (problem.empty() || _file.open(otherCompression(voxelPath)).empty()) return {};
  return "its voxels in \"" + voxelPath + "\": " + problem;
}

void NiftiLoad::calcOutImageProps(int /*outIndex*/) {
  const std::string path = fields().getValue("filename");
  if (const std::string problem = load(path); !problem.empty())
    return invalidate("File \"" + path + "\": " + problem, VX_IMAGE_INVALID);

  PagedImg& image = *getOutImg(0);
  const VXDataType type = _header.layout.dataType;
  const bool isNarrow = type <= VXuint16Type || type == VXfloatType;
  image.setDataType(!isScaled() ? type : isNarrow ? VXfloatType : VXdoubleType);
  setExtents(image, _header.layout.extent, chooseFilePageExt(_header.layout.extent));
  image.setToWorldMatrix(&_header.toWorldMatrix);
  image.setToWorldMatrixValid(_header.isToWorldMatrixKnown);
  // Without a range in the file: what voxels can be.
  double low = VXDataTypeMin(type);
  double high = VXDataTypeMax(type);
  if (isScaled()) {
    low = low * _header.scale + _header.shift;
    high = high * _header.scale + _header.shift;
  }
  const bool hasRange = _header.maximum > _header.minimum;
  image.setMinVoxelValue(
      std::max(hasRange ? _header.minimum : std::min(low, high), VXDataTypeMin(image.getDataType())));
  image.setMaxVoxelValue(
      std::min(hasRange ? _header.maximum : std::max(low, high), VXDataTypeMax(image.getDataType())));
}

void NiftiLoad::calcOutSubImage(SubImg* outSubImg, int /*outIndex*/, SubImg* /*inSubImgs*/) {
  const SubImgBox box = getValidBox(outSubImg->getBox());
  if (box.isEmpty()) return;
  if (!isScaled()) return readVoxels(_file, _header.layout, box, *outSubImg);
  MemoryPtr<void> memory(
      VXAlloc(static_cast<VXuint64>(box.getNumVoxels()) * VXSizeOf(_header.layout.dataType), VX_RETURN_NULL));
  if (!memory) throw static_cast<int>(VX_NO_MEMORY);
  const SubImg block(box, _header.layout.dataType, memory.get());
  readVoxels(_file, _header.layout, box, block);
  outSubImg->copySubImage(block, ScaleShiftData(_header.scale, _header.shift));
}

}  // namespace vx::modules
