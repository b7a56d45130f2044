/// \file vxVoxelFile.h
/// Voxels in a file, wherever they lie in it: the common part of the modules that load images.

#ifndef VX_VOXEL_FILE_H
#define VX_VOXEL_FILE_H

#include "vxModuleTools.h"

#include <memory>
#include <string>

namespace vx::modules {

/// A file that is open for reading, or the decompressed contents of one. Any number of threads may read.
class VoxelFile {
 public:
  VoxelFile() = default;
  VoxelFile(const VoxelFile&) = delete;
  VoxelFile& operator=(const VoxelFile&) = delete;
  ~VoxelFile() { close(); }

  /// Opens a file; only a regular file will do. A file that is open already and has not changed stays as it is, and so
  /// does what was decompressed of it.
  /// \return an empty text, or why it failed.
  std::string open(const std::string& path);
  void close();
  bool isOpen() const { return _descriptor >= 0; }
  /// \return bytes of the file, as it was when it was opened.
  VXuint64 getSize() const { return _identity.size; }
  /// \return whether it starts as a file of gzip does.
  bool isCompressed() const { return _isCompressed; }

  /// Reads the start of the contents, decompressed. \return how many bytes there are, up to `number`.
  std::size_t readStart(void* to, std::size_t number) const;
  /// Checks that the contents have a number of bytes; decompresses so many into memory, where they stay.
  /// \param limit most bytes to decompress. \return an empty text, or what is wrong.
  std::string provide(VXuint64 number, VXuint64 limit);
  /// Reads provided bytes. \throw int ::VX_IMAGE_INVALID, after a report, if the file has become shorter.
  void read(VXuint64 offset, void* to, std::size_t number) const;

 private:
  struct Identity {
    VXuint64 device = 0;
    VXuint64 node = 0;
    VXuint64 size = 0;
    long long seconds = 0;
    long long nanoseconds = 0;
    bool operator==(const Identity& other) const {
      return device == other.device && node == other.node && size == other.size && seconds == other.seconds &&
             nanoseconds == other.nanoseconds;
    }
  };
  std::size_t readAt(VXuint64 offset, void* to, std::size_t number) const;

  std::string _path;
  int _descriptor = -1;
  Identity _identity;
  bool _isCompressed = false;
  MemoryPtr<unsigned char> _contents;
  VXuint64 _numContents = 0;
};

/// How the voxels of an image lie in a file.
struct VoxelLayout {
  VXuint64 offset = 0;                ///< Of the first voxel, in bytes.
  Vector extent;                      ///< Voxels in each dimension.
  Vector stride;                      ///< Distances of neighbours, in bytes, none negative.
  VXDataType dataType = VXuint8Type;  ///< Standard type of the voxels.
  bool isSwapped = false;             ///< Whether the byte order isn't that of the processor.

  /// \return bytes from the start of the file to behind the last voxel; 0 if that is beyond 63 bits.
  VXuint64 getEnd() const;
};

/// Reads a box of voxels. \param box within the extent. \param block takes them in the type of the layout.
void readVoxels(const VoxelFile& file, const VoxelLayout& layout, const SubImgBox& box, const SubImg& block);

/// A page extent for files: pages that are short runs of rows.
Vector chooseFilePageExt(const Vector& extent);

}  // namespace vx::modules

#endif
