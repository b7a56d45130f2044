/// \file vxNumberText.h
/// Numbers as text and back, as the C library does it in the C locale, whatever locale the host has set.

#ifndef VX_NUMBER_TEXT_H
#define VX_NUMBER_TEXT_H

#include "vxTypes.h"

namespace vx {

/// \return the first character that is no white space.
const char* skipWhiteSpace(const char* text) noexcept;

/// Reads a number as `strtol` with base 0 and a 32-bit `long` does: "0x10" is 16, "010" is 8, and a number beyond
/// the range becomes the nearest limit.
/// \param value unchanged if there is no number. \return what stands behind the number, null if there is none.
const char* readInt32(const char* text, VXint32& value) noexcept;

/// Reads a number as `strtoul` with base 0 and a 32-bit `long` does: a minus sign wraps the number around.
/// \copydetails readInt32
const char* readUint32(const char* text, VXuint32& value) noexcept;

/// Reads a decimal number, limited to 64 bits.
/// \copydetails readInt32
const char* readInt64(const char* text, VXint64& value) noexcept;

/// Reads a number as `strtod` does, hexadecimal ones, infinities and NaN among them.
/// \copydetails readInt32
const char* readDouble(const char* text, double& value) noexcept;

/// A number as text, in room of its own.
class NumberText {
 public:
  /// As "%d", "%u", "%lld".
  explicit NumberText(VXint64 value) noexcept;
  /// As "%.*g". \param precision significant digits, 0 to 15.
  static NumberText general(double value, int precision) noexcept { return NumberText(value, precision, false); }
  /// As "%.*f". \param precision digits behind the point, 0 to 15.
  static NumberText fixed(double value, int precision) noexcept { return NumberText(value, precision, true); }

  const char* begin() const noexcept { return _text; }
  const char* end() const noexcept { return _end; }

 private:
  NumberText(double value, int precision, bool isFixed) noexcept;

  // The largest double has 309 digits in front of the point.
  char _text[352];
  const char* _end;
};

}  // namespace vx

#endif
