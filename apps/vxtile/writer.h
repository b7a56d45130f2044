/// \file writer.h
/// Where the voxels of a request go: a file, in the format of its ending.

#ifndef VXTILE_WRITER_H
#define VXTILE_WRITER_H

#include "image.h"

#include <memory>
#include <string>

namespace vxtile {

/// What a file will hold.
struct Volume {
  Box box;
  VXDataType type = -1;             ///< Voxel type of the pieces.
  std::array<float, 16> toWorld{};  ///< Of the image that the box is cut from.
  Flip flip;
  std::string name;  ///< Of the output, for messages.
};

/// Takes the pieces of a box one after the other. A file appears under its name when it is complete: an older one is
/// kept until then, and what wasn't finished is removed.
class Writer {
 public:
  virtual ~Writer() = default;
  /// \return how the box must be cut for this writer.
  virtual CutRules cutRules() const { return {}; }
  /// Takes one piece, x fastest and u slowest. \throw Failure ExitCode::file
  virtual void write(const Box& piece, const unsigned char* voxels) = 0;
  /// Completes the file. \throw Failure ExitCode::file
  virtual void finish() = 0;
};

/// Formats of files, told by the ending of the name.
enum class Format { none, png, nifti, compressedNifti, raw };
/// \return the format; none for an empty path. \throw Failure ExitCode::usage for an unknown ending.
Format formatOf(const std::string& path);

/// \throw Failure if the format can't hold such a volume (ExitCode::network), or if the file can't be made
/// (ExitCode::file).
std::unique_ptr<Writer> makeWriter(const std::string& path, const Volume& volume);
std::unique_ptr<Writer> makePngWriter(const std::string& path, const Volume& volume);
std::unique_ptr<Writer> makeNiftiWriter(const std::string& path, const Volume& volume, bool isCompressed);
std::unique_ptr<Writer> makeRawWriter(const std::string& path, const Volume& volume);

}  // namespace vxtile

#endif
