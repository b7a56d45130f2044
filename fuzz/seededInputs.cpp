#include "seededInputs.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>

namespace vx::fuzz {

namespace {

constexpr std::size_t maxSize = 4096;

// Numbers at the ends of their types, as text and, for whoever reads bytes, as bytes.
constexpr std::string_view numberTexts[] = {"0",
                                            "-1",
                                            "1",
                                            "0.5",
                                            "2147483647",
                                            "-2147483649",
                                            "4294967296",
                                            "9223372036854775807",
                                            "-9223372036854775808",
                                            "18446744073709551615",
                                            "99999999999999999999",
                                            "1e38",
                                            "1e308",
                                            "-1e309",
                                            "1e-320",
                                            "nan",
                                            "-inf",
                                            "0x1p3",
                                            "08",
                                            "+7",
                                            ".",
                                            "-",
                                            "1e999999999999999999999"};
constexpr std::int64_t numbers[] = {0,          1,         -1,        127,       -128,       255,           256,
                                    32767,      -32768,    65535,     65536,     2147483647, -2147483648LL, 4294967295,
                                    4294967296, 1LL << 40, 1LL << 62, INT64_MAX, INT64_MIN};

bool isNumberCharacter(std::uint8_t c) { return std::isdigit(c) || c == '-' || c == '.'; }

}  // namespace

bool readFile(const std::string& path, Bytes& bytes) {
  std::ifstream stream(path, std::ios::binary);
  bytes.assign(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
  return stream.good() || stream.eof();
}

std::vector<Bytes> readFolder(const std::string& path) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(path)) {
    if (entry.is_regular_file()) names.push_back(entry.path().string());
  }
  std::sort(names.begin(), names.end());
  std::vector<Bytes> inputs;
  for (const std::string& name : names) readFile(name, inputs.emplace_back());
  return inputs;
}

SeededInputs::SeededInputs(std::uint64_t seed, std::vector<Bytes> corpus) : _seed(seed), _corpus(std::move(corpus)) {}

Bytes SeededInputs::make(std::uint64_t run) {
  if (run < _corpus.size()) return _corpus[run];
  std::seed_seq numbersOfRun{_seed, _seed >> 32, run, run >> 32};
  _random.seed(numbersOfRun);
  if (_corpus.empty() || _draw(8) == 0) return _makeFromNothing();
  Bytes bytes = _corpus[_draw(_corpus.size())];
  for (std::size_t left = 1 + _draw(8); left > 0; --left) _change(bytes);
  if (bytes.size() > maxSize && _draw(4) != 0) bytes.resize(maxSize);
  return bytes;
}

Bytes SeededInputs::_makeFromNothing() {
  Bytes bytes(_draw(_draw(4) == 0 ? maxSize : 64));
  for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(_random());
  return bytes;
}

void SeededInputs::_insert(Bytes& bytes, const std::uint8_t* begin, std::size_t num) {
  const Bytes part(begin, begin + num);  // it may be one of the bytes themselves
  const auto position = bytes.begin() + static_cast<std::ptrdiff_t>(_draw(bytes.size() + 1));
  bytes.insert(position, part.begin(), part.end());
}

void SeededInputs::_replaceNumber(Bytes& bytes) {
  auto begin = std::find_if(bytes.begin() + static_cast<std::ptrdiff_t>(_draw(bytes.size() + 1)), bytes.end(),
                            isNumberCharacter);
  const auto end = std::find_if_not(begin, bytes.end(), isNumberCharacter);
  begin = bytes.erase(begin, end);
  const std::string_view text = numberTexts[_draw(std::size(numberTexts))];
  bytes.insert(begin, text.begin(), text.end());
}

void SeededInputs::_change(Bytes& bytes) {
  const std::size_t position = _draw(bytes.size());
  const std::size_t num = _draw(std::min<std::size_t>(bytes.size() - position, 32) + 1);
  const auto at = bytes.begin() + static_cast<std::ptrdiff_t>(position);
  switch (_draw(8)) {
    case 0:
      if (!bytes.empty()) *at = static_cast<std::uint8_t>(*at ^ (1U << _draw(8)));
      break;
    case 1:
      if (!bytes.empty()) *at = static_cast<std::uint8_t>(_random());
      break;
    case 2: {
      const std::int64_t number = numbers[_draw(std::size(numbers))];
      const auto* const first = reinterpret_cast<const std::uint8_t*>(&number);
      const std::size_t width = std::min<std::size_t>(bytes.size() - position, std::size_t{1} << _draw(4));
      std::copy_n(first, width, at);
      break;
    }
    case 3:
      bytes.erase(at, at + static_cast<std::ptrdiff_t>(num));
      break;
    case 4:
      _insert(bytes, bytes.data() + position, num);
      break;
    case 5: {
      const Bytes& other = _corpus[_draw(_corpus.size())];
      const std::size_t begin = _draw(other.size());
      _insert(bytes, other.data() + begin, _draw(other.size() - begin + 1));
      break;
    }
    case 6:
      if (_draw(4) == 0) bytes.resize(position);
      break;
    default:
      _replaceNumber(bytes);
      break;
  }
}

}  // namespace vx::fuzz
