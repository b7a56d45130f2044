// Numbers, bytes and pointers: reading that doesn't depend on the host's locale, and byte order. The descriptions of
// the error codes stand here too, since they are a table of numbers.

#include "vxErrorOutput.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <string>

namespace {

// As isspace() in the C locale.
const char* skipWhiteSpace(const char* text) {
  while (*text == ' ' || (*text >= '\t' && *text <= '\r')) ++text;
  return text;
}

// Digits of an unsigned number, with the limits of its type.
struct Digits {
  VXuint64 value = 0;
  const char* end = nullptr;  // null: no digit was found
  bool isTooLarge = false;
};

Digits readDigits(const char* text, int base = 10) {
  Digits digits;
  const auto [end, error] = std::from_chars(text, text + std::strlen(text), digits.value, base);
  if (error == std::errc::invalid_argument) return digits;
  digits.end = end;
  digits.isTooLarge = error == std::errc::result_out_of_range;
  return digits;
}

struct SignedDigits : Digits {
  bool isNegative = false;
};

SignedDigits readNumber(const char* text) {
  SignedDigits number;
  if (!text) return number;
  text = skipWhiteSpace(text);
  number.isNegative = *text == '-';
  if (*text == '-' || *text == '+') ++text;
  static_cast<Digits&>(number) = readDigits(text);
  return number;
}

}  // namespace

int VXint64Scan(const char* text, VXint64* value) {
  if (!value) return 0;
  *value = 0;
  const SignedDigits number = readNumber(text);
  if (!number.end) return 0;
  constexpr VXuint64 largest = std::numeric_limits<VXint64>::max();
  const VXuint64 limit = number.isNegative ? largest + 1 : largest;
  const VXuint64 magnitude = number.isTooLarge ? limit : std::min(number.value, limit);
  *value = static_cast<VXint64>(number.isNegative ? 0 - magnitude : magnitude);
  return 1;
}

int VXuint64Scan(const char* text, VXuint64* value) {
  if (!value) return 0;
  *value = 0;
  const SignedDigits number = readNumber(text);
  if (!number.end) return 0;
  if (number.isTooLarge) {
    *value = std::numeric_limits<VXuint64>::max();
  } else {
    *value = number.isNegative ? 0 - number.value : number.value;
  }
  return 1;
}

void* VXStringToPtr(const char* text, int reportErrors, const char* functionName) {
  if (!text) return nullptr;
  const char* begin = skipWhiteSpace(text);
  Digits digits;
  if (std::strncmp(begin, "NULL", 4) == 0) {
    digits.end = begin + 4;
  } else if (begin[0] == '0' && (begin[1] == 'x' || begin[1] == 'X')) {
    digits = readDigits(begin + 2, 16);
  } else {
    digits = readDigits(begin);
  }
  const bool isPointer = digits.end && !digits.isTooLarge && *skipWhiteSpace(digits.end) == '\0';
  if (isPointer) return reinterpret_cast<void*>(static_cast<std::uintptr_t>(digits.value));
  if (reportErrors) {
    vx::reportComposed(VX_ERROR, functionName ? functionName : "VXStringToPtr()", VX_BAD_PARAMETER,
                       [text] { return "The text '" + std::string(text) + "' is not a pointer. Using NULL."; });
  }
  return nullptr;
}

void VXSwapBytes(void* data, size_t numBytes, size_t elementSize) {
  if (!data || elementSize < 2) return;
  auto* element = static_cast<unsigned char*>(data);
  for (size_t n = numBytes / elementSize; n > 0; --n, element += elementSize) {
    std::reverse(element, element + elementSize);
  }
}

int VXIsLittleEndian(void) {
  const VXuint16 one = 1;
  unsigned char firstByte;
  std::memcpy(&firstByte, &one, 1);
  return firstByte;
}

const char* VXGetErrorCodeDescription(VXErrorCode code) {
  switch (code) {
#define VX_DESCRIBE_ERROR_CODE(name, value, description) \
  case value:                                            \
    return description;
    VX_FOR_EACH_ERROR_CODE(VX_DESCRIBE_ERROR_CODE)
#undef VX_DESCRIBE_ERROR_CODE
    default:
      return "Unknown error code.";
  }
}
