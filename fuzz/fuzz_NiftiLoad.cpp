// NIfTI files through the module NiftiLoad: any file is loaded, or makes the image invalid with a reason; and what is
// promised when the image is made valid can be calculated.

#include "FuzzCheck.h"

#include "vxAPI.h"
#include "vxModule.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

using namespace vx;
using fuzz::require;

namespace {

constexpr VXint64 maxNumVoxels = 100000;

// A folder for the files of one process.
class Folder {
 public:
  Folder() {
    const char* const root = std::getenv("TMPDIR");
    _path = std::string(root ? root : "/tmp") + "/vx-fuzz-XXXXXX";
    require(mkdtemp(_path.data()) != nullptr, "no folder for files");
  }
  ~Folder() {
    for (const char* const name : {"/image.hdr", "/image.img"}) unlink((_path + name).c_str());
    rmdir(_path.c_str());
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  // Writes a file anew. \return its path.
  std::string write(const char* name, const std::uint8_t* data, std::size_t size) const {
    const std::string path = _path + name;
    // Some systems write a file that is cut and written again through to the disk.
    unlink(path.c_str());
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    require(file >= 0 && ::write(file, data, size) == static_cast<ssize_t>(size), "no file");
    close(file);
    return path;
  }

 private:
  std::string _path;
};

// Header and voxels apart, where the header says so.
std::string writeFiles(const std::uint8_t* data, std::size_t size) {
  static const Folder folder;
  constexpr std::size_t headerSize = 348;
  const bool areApart = size >= headerSize && std::memcmp(data + 344, "ni1", 4) == 0;
  const std::size_t numInHeader = areApart ? headerSize : size;
  folder.write("/image.img", data + numInHeader, size - numInHeader);
  return folder.write("/image.hdr", data, numInHeader);
}

std::unique_ptr<BaseOp> makeModule() {
  static const bool isLoaded = VXLoadLibrary(VX_STANDARD_MODULES) == 1;
  require(isLoaded, "the standard modules can't be loaded");
  const RuntimeType* const type = Runtime::fromName("NiftiLoad");
  return std::unique_ptr<BaseOp>(static_cast<BaseOp*>(static_cast<Base*>(type->getCreateCB()())));
}

// A box of the image that isn't too large, at its far corner.
SubImgBox chooseBox(const TVector<VXint64>& extent) {
  SubImgBox box(TVector<VXint64>(), extent - TVector<VXint64>(1));
  VXint64 room = maxNumVoxels;
  for (std::size_t i = 0; i < extent.size(); ++i) {
    const VXint64 length = std::min(extent[i], room);
    box.v1[i] = box.v2[i] - length + 1;
    room = std::max<VXint64>(1, room / length);
  }
  return box;
}

std::vector<unsigned char> calculate(BaseOp& op, const SubImgBox& box) {
  const VXDataType type = op.getOutImg(0)->getDataType();
  void* tile = nullptr;
  const int code = BaseOp::getTile(&op, 0, box, type, &tile);
  if (code != VX_RESULT_OK) fuzz::fail("a valid image can't be calculated: " + std::to_string(code));
  const auto* const bytes = static_cast<const unsigned char*>(tile);
  std::vector<unsigned char> voxels(bytes, bytes + static_cast<std::size_t>(box.getNumVoxels()) * VXSizeOf(type));
  BaseOp::freeTile(tile);
  return voxels;
}

void checkImage(BaseOp& op) {
  const PagedImg& image = *op.getOutImg(0);
  const TVector<VXint64> extent = image.getImgExt();
  for (std::size_t i = 0; i < extent.size(); ++i) require(extent[i] > 0, "a valid image has voxels");
  require(VXIsStandardType(image.getDataType()), "a file has a standard type");
  const Tmat4<double>& matrix = *image.getToWorldMatrix();
  for (std::size_t i = 0; i < 4; ++i) {
    for (std::size_t j = 0; j < 4; ++j) require(std::isfinite(matrix[i][j]), "a world matrix is finite");
  }
  const SubImgBox box = chooseBox(extent);
  const std::vector<unsigned char> voxels = calculate(op, box);
  Host::getDefaultHost().getCache().clearCache();
  require(calculate(op, box) == voxels, "voxels that are read again are the same");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::silenceMessages();
  const std::string path = writeFiles(data, size);
  // A file that keeps its size and its time would count as unchanged.
  const std::unique_ptr<BaseOp> op = makeModule();
  op->getFieldContainer()->setValue("memoryLimit", "16");
  op->getFieldContainer()->setValue("filename", path);
  const int code = BaseOp::updateImageProps(op.get(), 0);
  if (code == VX_RESULT_OK) {
    checkImage(*op);
  } else {
    require(!op->getOutImg(0)->isUpToDate() && !op->getOutImg(0)->getStateInfoString().empty(),
            "an invalid image says why");
  }
  return 0;
}
