#include "vxVoxelFile.h"

#include "vxErrorOutput.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <nifti/znzlib.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace vx::modules {

namespace {

std::string systemText(int error) { return std::generic_category().message(error); }

// A file of gzip from its start. Reading from it never moves the descriptor that other threads read from.
class Decompressor {
 public:
  explicit Decompressor(const std::string& path) : _file(znzopen(path.c_str(), "rb", 1)) {}
  Decompressor(const Decompressor&) = delete;
  Decompressor& operator=(const Decompressor&) = delete;
  ~Decompressor() {
    if (_file) znzclose(_file);
  }
  // \return how many bytes there were.
  std::size_t read(unsigned char* to, std::size_t number) {
    if (!_file) return 0;
    const std::size_t result = znzread(to, 1, number, _file);
    if (result <= number) return result;
    _isDamaged = true;  // which is told by a huge number
    return 0;
  }
  bool isDamaged() const { return _isDamaged; }

 private:
  znzFile _file;
  bool _isDamaged = false;
};

}  // namespace

std::string VoxelFile::open(const std::string& path) {
  if (path.empty()) {
    close();
    return "no file is named.";
  }
  // Not to be held up by a pipe that nobody writes to.
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) {
    const std::string text = systemText(errno);
    close();
    return text + '.';
  }
  struct stat status = {};
  if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
    ::close(descriptor);
    close();
    return "not a regular file.";
  }
  const Identity identity{status.st_dev, status.st_ino, static_cast<VXuint64>(status.st_size), status.st_mtim.tv_sec,
                          status.st_mtim.tv_nsec};
  if (isOpen() && path == _path && identity == _identity) {
    ::close(descriptor);
    return {};
  }
  close();
  _path = path;
  _descriptor = descriptor;
  _identity = identity;
  unsigned char start[2] = {};
  _isCompressed = readAt(0, start, sizeof start) == sizeof start && start[0] == 0x1f && start[1] == 0x8b;
  return {};
}

void VoxelFile::close() {
  if (_descriptor >= 0) ::close(_descriptor);
  _descriptor = -1;
  _identity = Identity();
  _isCompressed = false;
  _contents.reset();
  _numContents = 0;
}

std::size_t VoxelFile::readAt(VXuint64 offset, void* to, std::size_t number) const {
  std::size_t done = 0;
  while (done < number) {
    const ssize_t part =
        ::pread(_descriptor, static_cast<char*>(to) + done, number - done, static_cast<off_t>(offset + done));
    if (part < 0 && errno == EINTR) continue;
    if (part <= 0) break;
    done += static_cast<std::size_t>(part);
  }
  return done;
}

std::size_t VoxelFile::readStart(void* to, std::size_t number) const {
  if (!_isCompressed) return readAt(0, to, number);
  return Decompressor(_path).read(static_cast<unsigned char*>(to), number);
}

std::string VoxelFile::provide(VXuint64 number, VXuint64 limit) {
  const auto tooShort = [number](VXuint64 size) {
    return "the voxels need " + std::to_string(number) + " bytes and the file has " + std::to_string(size) + '.';
  };
  if (!_isCompressed) return number <= getSize() ? std::string() : tooShort(getSize());
  if (_numContents >= number) return {};
  // Deflate doesn't shrink by more than 1032.
  if (number / 1100 > getSize())
    return "the voxels need " + std::to_string(number) + " bytes, and the file can't hold as many.";
  if (number > limit) return "the voxels need " + std::to_string(number) + " bytes of memory, more than memoryLimit.";
  _numContents = 0;
  _contents.reset(static_cast<unsigned char*>(VXAlloc(number, VX_RETURN_NULL)));
  if (!_contents) return "no memory for " + std::to_string(number) + " bytes.";
  Decompressor in(_path);
  constexpr VXuint64 portion = 1 << 20;
  VXuint64 done = 0;
  while (done < number) {
    const std::size_t part =
        in.read(_contents.get() + done, static_cast<std::size_t>(std::min(number - done, portion)));
    if (part == 0) break;
    done += part;
  }
  // The checksum stands at the end; what follows the voxels is read on to it, unless that is long.
  unsigned char rest[4096];
  for (int i = 0; i < 256 && done == number && in.read(rest, sizeof rest) > 0; ++i) continue;
  if (done < number || in.isDamaged()) {
    _contents.reset();
    return in.isDamaged() ? std::string("its compressed data is damaged.") : tooShort(done);
  }
  _numContents = number;
  return {};
}

void VoxelFile::read(VXuint64 offset, void* to, std::size_t number) const {
  if (_isCompressed) {
    if (offset + number > _numContents) throw static_cast<int>(VX_IMAGE_INVALID);
    std::memcpy(to, _contents.get() + offset, number);
  } else if (readAt(offset, to, number) != number) {
    report(VX_ERROR, "VoxelFile::read()", VX_IMAGE_INVALID, "The file has become shorter since its header was read.");
    throw static_cast<int>(VX_IMAGE_INVALID);
  }
}

// Voxels --------------------------------------------------------------------------------------------------------------

VXuint64 VoxelLayout::getEnd() const {
  VXuint64 end = offset;
  const auto add = [&end](VXuint64 number) {
    if (end == 0 && number == 0) return true;
    if (number >= (VXuint64{1} << 62) || end >= (VXuint64{1} << 62)) return false;
    end += number;
    return true;
  };
  for (std::size_t d = 0; d < Vector::size(); ++d) {
    VXuint64 length = 0;
    if (extent[d] < 1 || stride[d] < 0) return 0;
    if (!multiplySizes(static_cast<VXuint64>(extent[d] - 1), static_cast<VXuint64>(stride[d]), length) || !add(length))
      return 0;
  }
  return add(VXSizeOf(dataType)) && end < VXuint64{1} << 62 ? end : 0;
}

void readVoxels(const VoxelFile& file, const VoxelLayout& layout, const SubImgBox& box, const SubImg& block) {
  const std::size_t size = VXSizeOf(layout.dataType);
  const auto number = static_cast<std::size_t>(box.getExt().x);
  const auto step = static_cast<std::size_t>(layout.stride.x);
  const std::size_t span = (number - 1) * step + size;
  std::vector<unsigned char> apart(step == size ? 0 : span);
  forEachRow(box, [&](const Vector& position) {
    unsigned char* const row = bytesAt(block, position);
    const VXuint64 offset = layout.offset + static_cast<VXuint64>(dot(position, layout.stride));
    if (apart.empty()) {
      file.read(offset, row, span);
    } else {
      file.read(offset, apart.data(), span);
      for (std::size_t i = 0; i < number; ++i) std::memcpy(row + i * size, &apart[i * step], size);
    }
    if (!layout.isSwapped || size == 1) return;
    for (std::size_t i = 0; i < number; ++i) std::reverse(row + i * size, row + (i + 1) * size);
  });
}

Vector chooseFilePageExt(const Vector& extent) { return compMin(extent, Vector(128, 128, 4, 1, 1, 1)); }

}  // namespace vx::modules
