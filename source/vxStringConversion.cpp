// The text form of numbers. The composites and the C texts stand in sources of their own.

#include "vxStringConversion.h"

#include "vxCLocale.h"
#include "vxUtilsAPI.h"

#include <cstdio>
#include <cstdlib>

namespace vx {

namespace {

constexpr int floatDigits = 6;
constexpr int doubleDigits = 15;

// Reads by a function of the strtol family, whose end tells whether there was a number.
template <class Number, class Value, class Convert>
bool readBy(Convert convert, const std::string& text, Value& value) {
  const CLocaleScope cLocale;
  char* end = nullptr;
  const Number number = convert(text.c_str(), &end);
  value = static_cast<Value>(number);
  return end != text.c_str();
}

template <class Value>
bool readLong(const std::string& text, Value& value) {
  return readBy<long>([](const char* begin, char** end) { return std::strtol(begin, end, 10); }, text, value);
}

template <class Value>
bool readUnsignedLong(const std::string& text, Value& value) {
  return readBy<unsigned long>([](const char* begin, char** end) { return std::strtoul(begin, end, 10); }, text, value);
}

template <class Value>
bool readDouble(const std::string& text, Value& value) {
  return readBy<double>([](const char* begin, char** end) { return std::strtod(begin, end); }, text, value);
}

template <class Integer>
std::string writeInteger(const char* format, Integer value) {
  char text[127];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

}  // namespace

bool StringConversion::readFromString(const std::string& text, char& value) { return readLong(text, value); }
bool StringConversion::readFromString(const std::string& text, short& value) { return readLong(text, value); }
bool StringConversion::readFromString(const std::string& text, long& value) { return readLong(text, value); }

bool StringConversion::readFromString(const std::string& text, unsigned char& value) {
  return readUnsignedLong(text, value);
}
bool StringConversion::readFromString(const std::string& text, unsigned short& value) {
  return readUnsignedLong(text, value);
}
bool StringConversion::readFromString(const std::string& text, unsigned int& value) {
  return readUnsignedLong(text, value);
}
bool StringConversion::readFromString(const std::string& text, unsigned long& value) {
  return readUnsignedLong(text, value);
}

// As atoi(), which can't tell a text without a number; strtol() is defined for numbers beyond the range as well.
bool StringConversion::readFromString(const std::string& text, int& value) {
  readLong(text, value);
  return true;
}

bool StringConversion::readFromString(const std::string& text, VXint64& value) {
  return VXint64Scan(text.c_str(), &value) != 0;
}
bool StringConversion::readFromString(const std::string& text, VXuint64& value) {
  return VXuint64Scan(text.c_str(), &value) != 0;
}

bool StringConversion::readFromString(const std::string& text, float& value) { return readDouble(text, value); }
bool StringConversion::readFromString(const std::string& text, double& value) { return readDouble(text, value); }

bool StringConversion::readFromString(const std::string& text, long double& value) {
  const CLocaleScope cLocale;
  value = 0;
  return std::sscanf(text.c_str(), "%Lf", &value) == 1;
}

std::string StringConversion::writeToStdString(char value) { return writeToStdString(VXint64{value}); }
std::string StringConversion::writeToStdString(unsigned char value) { return writeToStdString(VXint64{value}); }
std::string StringConversion::writeToStdString(short value) { return writeToStdString(VXint64{value}); }
std::string StringConversion::writeToStdString(unsigned short value) { return writeToStdString(VXint64{value}); }
std::string StringConversion::writeToStdString(int value) { return writeToStdString(VXint64{value}); }
std::string StringConversion::writeToStdString(unsigned int value) { return writeToStdString(VXint64{value}); }
std::string StringConversion::writeToStdString(long value) { return writeToStdString(VXint64{value}); }
std::string StringConversion::writeToStdString(unsigned long value) { return writeToStdString(VXuint64{value}); }
std::string StringConversion::writeToStdString(VXint64 value) { return writeInteger("%lld", value); }
std::string StringConversion::writeToStdString(VXuint64 value) { return writeInteger("%llu", value); }

std::string StringConversion::writeToStdString(float value) { return _doubleToString(value, floatDigits); }
std::string StringConversion::writeToStdString(double value) { return _doubleToString(value, doubleDigits); }
std::string StringConversion::writeToStdString(long double value) { return _doubleToString(value, doubleDigits); }

std::string StringConversion::_doubleToString(long double val, int numDigits) {
  const CLocaleScope cLocale;
  char text[1023];
  std::snprintf(text, sizeof text, "%.*Lg", numDigits, val);
  return text;
}

}  // namespace vx
