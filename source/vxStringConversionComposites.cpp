// The text form of vectors, matrices and boxes: their numbers in one line.

#include "vxCLocale.h"
#include "vxStringConversion.h"
#include "vxTraceBuffer.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace vx {

namespace {

// The largest vector has 64 components.
constexpr std::size_t maxNumNumbers = 64;

// Scan formats for maxNumNumbers numbers. A format for fewer of them is the end of such a text.
struct ScanFormat {
  static constexpr std::size_t itemLength = 5;
  char text[maxNumNumbers * itemLength + 1] = {};

  // itemText has itemLength characters, white space among them, which stands for any white space or none.
  explicit constexpr ScanFormat(const char* itemText) {
    for (std::size_t i = 0; i < maxNumNumbers * itemLength; ++i) text[i] = itemText[i % itemLength];
  }
  constexpr const char* forNumbers(std::size_t num) const { return text + (maxNumNumbers - num) * itemLength; }
};

constexpr ScanFormat doubleFormat(" %lf ");
constexpr ScanFormat integerFormat(" %lld");

// One scan for all sizes: the arguments behind those that the format names are left alone.
template <class Number, std::size_t... I>
int scan(const char* text, const char* format, Number* values, std::index_sequence<I...>) {
  return std::sscanf(text, format, (values + I)...);
}

template <class Number>
bool scanNumbers(const std::string& text, const ScanFormat& format, Number* values, std::size_t num) {
  const CLocaleScope cLocale;
  Number numbers[maxNumNumbers] = {};
  const int numRead = scan(text.c_str(), format.forNumbers(num), numbers, std::make_index_sequence<maxNumNumbers>());
  std::copy_n(numbers, num, values);
  return numRead == static_cast<int>(num);
}

}  // namespace

const std::string& StringConversion::_delimiter() {
  static const std::string blank(" ");
  return blank;
}

bool StringConversion::_scanNumbers(const std::string& text, double* values, std::size_t num) {
  const TraceFrame trace("source/vxStringConversion:StringConversion::readFromString()");
  return scanNumbers(text, doubleFormat, values, num);
}

bool StringConversion::_scanNumbers(const std::string& text, VXint64* values, std::size_t num) {
  const TraceFrame trace("source/vxStringConversion:StringConversion::readFromString()");
  return scanNumbers(text, integerFormat, values, num);
}

template <class Number>
std::string StringConversion::_join(const Number* values, std::size_t num) {
  const TraceFrame trace("source/vxStringConversion:StringConversion::writeToStdString()");
  std::string text = writeToStdString(values[0]);
  for (std::size_t i = 1; i < num; ++i) text += _delimiter() + writeToStdString(values[i]);
  return text;
}

std::string StringConversion::_VXwriteVecToStdString(const double* vec, std::size_t DIM) { return _join(vec, DIM); }

bool StringConversion::readFromString(const std::string& text, TVector<VXint64>& value) {
  VXint64 numbers[6];
  const bool isComplete = _scanNumbers(text, numbers, 6);
  value = TVector<VXint64>(6, numbers, 0);
  return isComplete;
}

bool StringConversion::readFromString(const std::string& text, TSubImgBox<VXint64>& value) {
  VXint64 numbers[12];
  const bool isComplete = _scanNumbers(text, numbers, 12);
  value = TSubImgBox<VXint64>(TVector<VXint64>(6, numbers, 0), TVector<VXint64>(6, numbers + 6, 0));
  return isComplete;
}

bool StringConversion::readFromString(const std::string& text, SubImgBoxf& value) {
  double numbers[12];
  const bool isComplete = _scanNumbers(text, numbers, 12);
  value = SubImgBoxf(Tvec6<double>(numbers), Tvec6<double>(numbers + 6));
  return isComplete;
}

std::string StringConversion::writeToStdString(const TVector<VXint64>& value) {
  VXint64 numbers[6];
  value.copy(6, numbers);
  return _join(numbers, 6);
}

std::string StringConversion::writeToStdString(const TSubImgBox<VXint64>& value) {
  return writeToStdString(value.v1) + _delimiter() + writeToStdString(value.v2);
}

std::string StringConversion::writeToStdString(const SubImgBoxf& value) {
  return writeToStdString(value.v1) + _delimiter() + writeToStdString(value.v2);
}

}  // namespace vx
