// Inputs for the seeded driver: those of a folder, changed at random.

#ifndef VX_FUZZ_SEEDED_INPUTS_H
#define VX_FUZZ_SEEDED_INPUTS_H

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace vx::fuzz {

using Bytes = std::vector<std::uint8_t>;

/// Reads a file whole. \return false if it can't be read.
bool readFile(const std::string& path, Bytes& bytes);

/// Reads the files of a folder, in the order of their names. \throw std::filesystem::filesystem_error if there is none.
std::vector<Bytes> readFolder(const std::string& path);

/// Makes inputs. The same seed, run and corpus give the same input, whatever was made before.
class SeededInputs {
 public:
  SeededInputs(std::uint64_t seed, std::vector<Bytes> corpus);

  /// \return the input of a run: the first ones are those of the corpus as they are.
  Bytes make(std::uint64_t run);

 private:
  using Random = std::mt19937_64;

  Bytes _makeFromNothing();
  void _change(Bytes& bytes);
  void _insert(Bytes& bytes, const std::uint8_t* begin, std::size_t num);
  void _replaceNumber(Bytes& bytes);
  std::size_t _draw(std::size_t limit) { return limit == 0 ? 0 : static_cast<std::size_t>(_random() % limit); }

  std::uint64_t _seed;
  std::vector<Bytes> _corpus;
  Random _random;
};

}  // namespace vx::fuzz

#endif
