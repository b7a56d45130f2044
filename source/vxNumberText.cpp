#include "vxNumberText.h"

#include "vxUtilsAPI.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>

namespace vx {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isHexDigit(char c) { return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

// Takes a sign. Returns whether it is a minus.
bool takeSign(const char*& text) {
  const bool isNegative = *text == '-';
  if (*text == '-' || *text == '+') ++text;
  return isNegative;
}

// Whether a hexadecimal number begins here; a "0x" with no digit behind it is the number 0.
bool hasHexPrefix(const char* text) { return text[0] == '0' && (text[1] == 'x' || text[1] == 'X'); }

struct Magnitude {
  const char* end;  // null: no digit was found
  VXuint64 value;   // the largest one if the digits are beyond 64 bits
};

Magnitude readMagnitude(const char* text, int base) {
  Magnitude magnitude = {nullptr, 0};
  const auto [end, error] = std::from_chars(text, text + std::strlen(text), magnitude.value, base);
  if (error == std::errc::invalid_argument) return magnitude;
  magnitude.end = end;
  if (error == std::errc::result_out_of_range) magnitude.value = std::numeric_limits<VXuint64>::max();
  return magnitude;
}

// With the base told by the digits.
Magnitude readMagnitude(const char* text) {
  if (hasHexPrefix(text) && isHexDigit(text[2])) return readMagnitude(text + 2, 16);
  return readMagnitude(text, text[0] == '0' ? 8 : 10);
}

// Which way a number is beyond the range of double: the power of its first digit tells.
bool isTooLarge(const char* text, const char* end, bool isHex) {
  VXint64 power = 0;
  bool isBehindPoint = false;
  bool hasBegun = false;
  for (; text != end; ++text) {
    if (*text == '.') {
      isBehindPoint = true;
    } else if (isHex ? isHexDigit(*text) : isDigit(*text)) {
      hasBegun = hasBegun || *text != '0';
      if (hasBegun && !isBehindPoint) power += isHex ? 4 : 1;
      if (!hasBegun && isBehindPoint) power -= isHex ? 4 : 1;
    } else {
      break;
    }
  }
  VXint64 exponent = 0;
  if (text != end) VXint64Scan(text + 1, &exponent);
  // The exponent may be at its limit.
  return exponent > -power;
}

}  // namespace

const char* skipWhiteSpace(const char* text) noexcept {
  while (*text == ' ' || (*text >= '\t' && *text <= '\r')) ++text;
  return text;
}

const char* readInt32(const char* text, VXint32& value) noexcept {
  text = skipWhiteSpace(text);
  const bool isNegative = takeSign(text);
  const Magnitude magnitude = readMagnitude(text);
  if (!magnitude.end) return nullptr;
  const auto limit = VXint64{std::numeric_limits<VXint32>::max()} + (isNegative ? 1 : 0);
  const auto limited = static_cast<VXint64>(std::min(magnitude.value, static_cast<VXuint64>(limit)));
  value = static_cast<VXint32>(isNegative ? -limited : limited);
  return magnitude.end;
}

const char* readUint32(const char* text, VXuint32& value) noexcept {
  text = skipWhiteSpace(text);
  const bool isNegative = takeSign(text);
  const Magnitude magnitude = readMagnitude(text);
  if (!magnitude.end) return nullptr;
  constexpr VXuint32 largest = std::numeric_limits<VXuint32>::max();
  if (magnitude.value > largest) {
    value = largest;
  } else {
    const auto digits = static_cast<VXuint32>(magnitude.value);
    value = isNegative ? 0U - digits : digits;
  }
  return magnitude.end;
}

const char* readInt64(const char* text, VXint64& value) noexcept {
  VXint64 number;
  if (!VXint64Scan(text, &number)) return nullptr;
  value = number;
  // The scan doesn't tell where the number ends.
  text = skipWhiteSpace(text);
  takeSign(text);
  while (isDigit(*text)) ++text;
  return text;
}

const char* readDouble(const char* text, double& value) noexcept {
  text = skipWhiteSpace(text);
  const bool isNegative = takeSign(text);
  if (*text == '-') return nullptr;  // the one sign is taken
  const bool isHex = hasHexPrefix(text) && (isHexDigit(text[2]) || (text[2] == '.' && isHexDigit(text[3])));
  const char* const digits = isHex ? text + 2 : text;
  double number = 0;
  const auto [end, error] = std::from_chars(digits, digits + std::strlen(digits), number,
                                            isHex ? std::chars_format::hex : std::chars_format::general);
  if (error == std::errc::invalid_argument) return nullptr;
  if (error == std::errc::result_out_of_range) {
    number = isTooLarge(digits, end, isHex) ? std::numeric_limits<double>::infinity() : 0;
  }
  value = isNegative ? -number : number;
  return end;
}

NumberText::NumberText(VXint64 value) noexcept : _end(std::to_chars(_text, _text + sizeof _text, value).ptr) {}

NumberText::NumberText(double value, int precision, bool isFixed) noexcept
    : _end(std::to_chars(_text, _text + sizeof _text, value,
                         isFixed ? std::chars_format::fixed : std::chars_format::general, precision)
               .ptr) {}

}  // namespace vx
