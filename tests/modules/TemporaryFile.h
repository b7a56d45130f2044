// Files of a test: they are gone when it ends.

#ifndef VX_TESTS_TEMPORARY_FILE_H
#define VX_TESTS_TEMPORARY_FILE_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace vx::test {

using Bytes = std::vector<unsigned char>;

/// A folder of its own.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "vx-test-XXXXXX").string();
    _path = mkdtemp(pattern.data()) ? pattern : ".";
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    if (_path != ".") std::filesystem::remove_all(_path, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string path(const std::string& name) const { return _path + "/" + name; }
  /// Writes a file. \return its path.
  std::string write(const std::string& name, const Bytes& bytes) const {
    std::ofstream file(path(name), std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return path(name);
  }

 private:
  std::string _path;
};

/// Appends the bytes of a number. \param isBig whether the high byte comes first.
template <class T>
void append(Bytes& bytes, T value, bool isBig = false) {
  unsigned char raw[sizeof(T)];
  __builtin_memcpy(raw, &value, sizeof raw);
  for (std::size_t i = 0; i < sizeof raw; ++i) bytes.push_back(raw[isBig ? sizeof raw - 1 - i : i]);
}

/// Appends a voxel.
inline void appendVoxel(Bytes& bytes, double value, int type, bool isBig = false) {
  switch (type) {
    case 0:
      return append(bytes, static_cast<signed char>(value), isBig);
    case 1:
      return append(bytes, static_cast<unsigned char>(value), isBig);
    case 2:
      return append(bytes, static_cast<short>(value), isBig);
    case 3:
      return append(bytes, static_cast<unsigned short>(value), isBig);
    case 4:
      return append(bytes, static_cast<int>(value), isBig);
    case 5:
      return append(bytes, static_cast<unsigned>(value), isBig);
    case 6:
      return append(bytes, static_cast<float>(value), isBig);
    case 9:
      return append(bytes, static_cast<long long>(value), isBig);
    default:
      return append(bytes, value, isBig);
  }
}

}  // namespace vx::test

#endif
