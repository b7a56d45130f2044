/// \file partFile.h
/// A file that gets its name when it is complete.

#ifndef VXTILE_PART_FILE_H
#define VXTILE_PART_FILE_H

#include "failure.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <unistd.h>

namespace vxtile {

/// The name of a file beside the one that is meant, which is removed unless it becomes that one.
class PartFile {
 public:
  explicit PartFile(const std::string& path) : _path(path), _partPath(path + ".part-" + std::to_string(::getpid())) {}
  ~PartFile() {
    if (!_isComplete) std::remove(_partPath.c_str());
  }
  PartFile(const PartFile&) = delete;
  PartFile& operator=(const PartFile&) = delete;

  /// \return the path to write to.
  const std::string& partPath() const { return _partPath; }
  /// Puts the written file in the place of the one that is meant. \throw Failure
  void complete() {
    if (std::rename(_partPath.c_str(), _path.c_str()) != 0) fail();
    _isComplete = true;
  }
  /// \throw Failure with the reason of the system.
  [[noreturn]] void fail() const {
    const int reason = errno;
    throw Failure(ExitCode::file, _path + ": " + (reason != 0 ? std::strerror(reason) : "the file can't be written"));
  }

 private:
  std::string _path;
  std::string _partPath;
  bool _isComplete = false;
};

}  // namespace vxtile

#endif
