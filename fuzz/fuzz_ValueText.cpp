// The text of values: any text is read without harm, integers exactly as documented, and what was written comes back.

#include "FuzzCheck.h"
#include "FuzzInput.h"

#include "vxStringConversion.h"
#include "vxUtilsAPI.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

using namespace vx;

namespace {

__extension__ using Wide = __int128;

bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

struct Reading {
  bool isNumber = false;
  bool isNegative = false;
  Wide magnitude = 0;  // no more than 2 to the power 64
  const char* end = nullptr;
};

// White space, a sign, digits: the number in 128 bits.
Reading readDecimal(const char* text) {
  while (isSpace(*text)) ++text;
  Reading reading;
  reading.isNegative = *text == '-';
  if (*text == '-' || *text == '+') ++text;
  for (; *text >= '0' && *text <= '9'; ++text) {
    reading.isNumber = true;
    reading.magnitude = std::min(reading.magnitude * 10 + (*text - '0'), Wide{1} << 64);
  }
  reading.end = text;
  return reading;
}

// The number limited to signed 64 bits; 0 if there is none.
VXint64 signedValue(const Reading& reading) {
  const Wide value = reading.isNegative ? -reading.magnitude : reading.magnitude;
  const Wide lowest = std::numeric_limits<VXint64>::min();
  const Wide highest = std::numeric_limits<VXint64>::max();
  return static_cast<VXint64>(std::min(std::max(value, lowest), highest));
}

// The number limited to unsigned 64 bits, around which a minus sign wraps it.
VXuint64 unsignedValue(const Reading& reading) {
  const Wide highest = std::numeric_limits<VXuint64>::max();
  if (reading.magnitude > highest) return std::numeric_limits<VXuint64>::max();
  const auto magnitude = static_cast<VXuint64>(reading.magnitude);
  return reading.isNegative ? 0 - magnitude : magnitude;
}

template <class Integer>
void checkInteger(const std::string& text, const Reading& reading) {
  auto value = static_cast<Integer>(77);
  const bool isRead = StringConversion::readFromString(text, value);
  fuzz::require(isRead == (reading.isNumber || std::is_same_v<Integer, int>), "an integer is read where there is one");
  const auto shouldBe = std::is_signed_v<Integer> ? static_cast<Integer>(signedValue(reading))
                                                  : static_cast<Integer>(unsignedValue(reading));
  const auto print = [](Integer number) { return StringConversion::writeToStdString(number); };
  fuzz::requireEqual(value, shouldBe, "an integer is limited to its type's range", print);
  Integer back = 0;
  fuzz::require(StringConversion::readFromString(print(value), back), "a written integer is read");
  fuzz::requireEqual(back, value, "a written integer comes back", print);
}

// Writes the value, reads it and writes it again. The text of the largest doubles rounds up to an infinity.
template <class Value>
void checkThatTheTextComesBack(const Value& value) {
  const std::string text = StringConversion::writeToStdString(value);
  if (text.find("e+308") != std::string::npos) return;
  Value back;
  fuzz::require(StringConversion::readFromString(text, back), "a written value is read whole");
  fuzz::requireEqual(StringConversion::writeToStdString(back), text, "the text of a value comes back", fuzz::quote);
}

template <class Float>
void checkFloat(const std::string& text) {
  Float value = 77;
  const bool isRead = StringConversion::readFromString(text, value);
  fuzz::require(isRead || value == 0, "a number that isn't there is 0");
  checkThatTheTextComesBack(value);
}

bool isSame(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

// A vector of fewer numbers is the beginning of the longest one.
template <class Vector>
void checkVector(const std::string& text, const Tvec64<double>& all, std::size_t numRead) {
  Vector vector;
  const bool isComplete = StringConversion::readFromString(text, vector);
  fuzz::require(isComplete == (numRead >= Vector::size()), "a vector tells whether it is complete");
  for (std::size_t i = 0; i < Vector::size(); ++i) {
    fuzz::require(isSame(vector[i], all[i]), "a vector has the components that are read");
  }
  checkThatTheTextComesBack(vector);
}

template <class Matrix>
void checkMatrix(const std::string& text, const Tvec64<double>& all, std::size_t dimension) {
  Matrix matrix;
  StringConversion::readFromString(text, matrix);
  for (std::size_t i = 0; i < dimension * dimension; ++i) {
    fuzz::require(isSame(matrix[i / dimension][i % dimension], all[i]), "a matrix has its rows one after the other");
  }
  checkThatTheTextComesBack(matrix);
}

// How many numbers a text begins with, as the shortest vector tells that is not complete any more. A number that isn't
// read is 0, so the components alone don't tell.
template <class... LongestFirst>
std::size_t countNumbers(const std::string& text) {
  std::size_t numNumbers = 0;
  const auto reads = [&](auto vector) {
    if (!StringConversion::readFromString(text, vector)) return false;
    numNumbers = vector.size();
    return true;
  };
  (void)(reads(LongestFirst()) || ...);
  return numNumbers;
}

void checkComposites(const std::string& text) {
  Tvec64<double> all;
  StringConversion::readFromString(text, all);
  const std::size_t numRead =
      countNumbers<Tvec64<double>, Tvec32<double>, Tvec16<double>, Tvec10<double>, Tvec9<double>, Tvec8<double>,
                   Tvec7<double>, Tvec6<double>, Tvec5<double>, Tvec4<double>, Tvec3<double>, Tvec2<double>>(text);
  checkVector<Tvec2<double>>(text, all, numRead);
  checkVector<Tvec3<double>>(text, all, numRead);
  checkVector<Tvec4<double>>(text, all, numRead);
  checkVector<Tvec5<double>>(text, all, numRead);
  checkVector<Tvec6<double>>(text, all, numRead);
  checkVector<Tvec7<double>>(text, all, numRead);
  checkVector<Tvec8<double>>(text, all, numRead);
  checkVector<Tvec9<double>>(text, all, numRead);
  checkVector<Tvec10<double>>(text, all, numRead);
  checkVector<Tvec16<double>>(text, all, numRead);
  checkVector<Tvec32<double>>(text, all, numRead);
  checkMatrix<Tmat2<double>>(text, all, 2);
  checkMatrix<Tmat3<double>>(text, all, 3);
  checkMatrix<Tmat4<double>>(text, all, 4);
  checkMatrix<Tmat5<double>>(text, all, 5);
  checkMatrix<Tmat6<double>>(text, all, 6);
  SubImgBoxf boxf;
  StringConversion::readFromString(text, boxf);
  for (std::size_t i = 0; i < 12; ++i) {
    fuzz::require(isSame((i < 6 ? boxf.v1 : boxf.v2)[i % 6], all[i]), "a box has its corners one after the other");
  }
  checkThatTheTextComesBack(boxf);
}

void checkIntegerComposites(const std::string& text) {
  VXint64 numbers[12] = {};
  std::size_t numRead = 0;
  for (const char* rest = text.c_str(); numRead < 12; ++numRead) {
    const Reading reading = readDecimal(rest);
    if (!reading.isNumber) break;
    numbers[numRead] = signedValue(reading);
    rest = reading.end;
  }
  TVector<VXint64> vector(77);
  fuzz::require(StringConversion::readFromString(text, vector) == (numRead >= 6), "a position tells if it is complete");
  fuzz::require(vector == TVector<VXint64>(6, numbers, 0), "a position has the numbers of the text");
  SubImgBox box;
  fuzz::require(StringConversion::readFromString(text, box) == (numRead >= 12), "a box tells if it is complete");
  fuzz::require(box == SubImgBox(TVector<VXint64>(6, numbers, 0), TVector<VXint64>(6, numbers + 6, 0)),
                "a box has the numbers of the text");
  checkThatTheTextComesBack(vector);
  checkThatTheTextComesBack(box);
}

void checkTexts(const std::string& text) {
  char* const copy = StringConversion::newString(text);
  fuzz::require(std::string(copy) == text.c_str(), "a copy of a text is the text up to its null character");
  StringConversion::deleteString(copy);
  for (const VXint64 start :
       {VXint64{0}, VXint64{3}, std::numeric_limits<VXint64>::min(), std::numeric_limits<VXint64>::max()}) {
    VXint64 position = std::max(VXint64{0}, start);
    const auto length = static_cast<VXint64>(text.size());
    while (position < length && text[static_cast<std::size_t>(position)] == ' ') ++position;
    fuzz::require(StringConversion::getFirstNonSpacePos(text, start) == std::min(position, length),
                  "the first character that is no blank is found");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  const Reading reading = readDecimal(text.c_str());
  checkInteger<char>(text, reading);
  checkInteger<unsigned char>(text, reading);
  checkInteger<short>(text, reading);
  checkInteger<unsigned short>(text, reading);
  checkInteger<int>(text, reading);
  checkInteger<unsigned int>(text, reading);
  checkInteger<long>(text, reading);
  checkInteger<unsigned long>(text, reading);
  checkInteger<VXint64>(text, reading);
  checkInteger<VXuint64>(text, reading);
  checkFloat<float>(text);
  checkFloat<double>(text);
  checkFloat<long double>(text);
  checkComposites(text);
  checkIntegerComposites(text);
  checkTexts(text);
  return 0;
}
