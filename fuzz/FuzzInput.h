// Takes the bytes of a fuzz target's input apart.

#ifndef VX_FUZZ_INPUT_H
#define VX_FUZZ_INPUT_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>

namespace vx::fuzz {

/// Reads values from the front of an input. Where the input has ended, values are 0 and texts are empty, so that each
/// input is a complete one.
class FuzzInput {
 public:
  FuzzInput(const std::uint8_t* data, std::size_t size) : _data(data), _size(size) {}

  /// \return the number of bytes that are left.
  std::size_t size() const { return _size; }
  bool isEmpty() const { return _size == 0; }

  /// \return an integer of all its bits.
  template <class Integer>
  Integer take() {
    static_assert(std::is_integral_v<Integer>);
    Integer value = 0;
    const std::size_t num = std::min(sizeof value, _size);
    if (num > 0) std::memcpy(&value, _data, num);
    _skip(num);
    return value;
  }

  bool takeBool() { return (take<std::uint8_t>() & 1U) != 0; }

  /// \return a number from `first` to `last`, both of them included. It takes no more bytes than the range needs.
  template <class Integer>
  Integer takeInRange(Integer first, Integer last) {
    const auto range = static_cast<std::uint64_t>(last) - static_cast<std::uint64_t>(first);
    std::uint64_t value = 0;
    if (range > std::numeric_limits<std::uint32_t>::max()) {
      value = take<std::uint64_t>();
    } else if (range > std::numeric_limits<std::uint16_t>::max()) {
      value = take<std::uint32_t>();
    } else if (range > std::numeric_limits<std::uint8_t>::max()) {
      value = take<std::uint16_t>();
    } else if (range > 0) {
      value = take<std::uint8_t>();
    }
    if (range != std::numeric_limits<std::uint64_t>::max()) value %= range + 1;
    return static_cast<Integer>(static_cast<std::uint64_t>(first) + value);
  }

  /// \return one of a list of values.
  template <class Value, std::size_t N>
  const Value& pick(const Value (&values)[N]) {
    return values[takeInRange<std::size_t>(0, N - 1)];
  }

  /// \return any 64-bit number; small ones and those near the limits of number types more often than others.
  long long takeNumber() {
    constexpr std::array<long long, 12> limits = {0,
                                                  127,
                                                  255,
                                                  32767,
                                                  65535,
                                                  2147483647,
                                                  4294967295,
                                                  1LL << 40,
                                                  1LL << 62,
                                                  std::numeric_limits<long long>::max(),
                                                  std::numeric_limits<long long>::min(),
                                                  3037000500};
    const auto kind = take<std::uint8_t>();
    if (kind < 128) return kind % 16 - 4;
    if (kind < 192) return take<std::int8_t>();
    if (kind < 224) {
      const auto limit = static_cast<unsigned long long>(limits[kind % limits.size()]);
      const auto near = static_cast<unsigned long long>(take<std::int8_t>() / 32);
      return static_cast<long long>(kind & 1U ? limit + near : near - limit);
    }
    return take<long long>();
  }

  /// \return a text of at most `maxLength` characters, which may hold null characters. Its length stands in front of
  /// it.
  std::string takeText(std::size_t maxLength) {
    return std::string(takeBytes(std::min(maxLength, takeInRange<std::size_t>(0, 255))));
  }

  /// \return the next bytes, or fewer at the end of the input.
  std::string_view takeBytes(std::size_t num) {
    num = std::min(num, _size);
    const std::string_view bytes(reinterpret_cast<const char*>(_data), num);
    _skip(num);
    return bytes;
  }

  /// \return all bytes that are left.
  std::string_view takeRest() { return takeBytes(_size); }

 private:
  void _skip(std::size_t num) {
    if (num > 0) _data += num;
    _size -= num;
  }

  const std::uint8_t* _data;
  std::size_t _size;
};

}  // namespace vx::fuzz

#endif
