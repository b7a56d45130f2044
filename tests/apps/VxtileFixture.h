// Runs vxtile in a folder of its own and reads what it leaves there.

#ifndef VX_TESTS_VXTILE_FIXTURE_H
#define VX_TESTS_VXTILE_FIXTURE_H

#include <filesystem>
#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <vector>

namespace vx::test {

/// What a program left behind.
struct Outcome {
  int code = -1;
  std::string out;
  std::string err;
  friend std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
    return stream << "code " << outcome.code << "\nout: " << outcome.out << "\nerr: " << outcome.err;
  }
};

/// A decoded picture; 16-bit channels are in the byte order of the machine.
struct Picture {
  unsigned width = 0;
  unsigned height = 0;
  int bits = 0;
  int channels = 0;
  std::string pixels;
};

class VxtileTest : public ::testing::Test {
 protected:
  VxtileTest();
  ~VxtileTest() override;

  /// Runs vxtile in the folder and waits for its end.
  Outcome run(const std::vector<std::string>& arguments, const std::string& input = {}) const;
  /// Runs it on a network, which comes from standard input: `run - ARGUMENTS`.
  Outcome runNetwork(const std::string& network, std::vector<std::string> arguments = {}) const;
  /// Starts it and returns at once. \return its process.
  int start(const std::vector<std::string>& arguments, const std::string& input) const;
  /// Waits for a started one.
  Outcome finish(int process) const;

  std::string path(const std::string& file) const { return (folder / file).string(); }
  void write(const std::string& file, const std::string& text) const;
  std::string read(const std::string& file) const;
  /// Reads a file that is compressed by gzip, or isn't.
  std::string readGz(const std::string& file) const;
  Picture readPicture(const std::string& file) const;
  /// The names of the files in the folder, without those of the fixture.
  std::vector<std::string> files() const;

  std::filesystem::path folder;
};

/// A network of one TestPattern. \param fields what follows the brace of its fields. \param rest what follows the
/// modules.
std::string patternNetwork(const std::string& fields, const std::string& rest = {});

/// Voxel values as the bytes of a type.
template <class T>
std::string bytesOf(const std::vector<T>& values) {
  return std::string(reinterpret_cast<const char*>(values.data()), values.size() * sizeof(T));
}

}  // namespace vx::test

#endif
