#include "MessageRecorder.h"

#include "vxBase.h"
#include "vxStringConversion.h"
#include "vxUtilsAPI.h"

#include <clocale>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>
#include <sys/resource.h>
#include <vector>

namespace vx::test {
namespace {

constexpr long maxLong = std::numeric_limits<long>::max();
constexpr long minLong = std::numeric_limits<long>::min();
constexpr unsigned long maxUnsignedLong = std::numeric_limits<unsigned long>::max();
constexpr VXint64 maxInt64 = std::numeric_limits<VXint64>::max();
constexpr VXint64 minInt64 = std::numeric_limits<VXint64>::min();
constexpr VXuint64 maxUint64 = std::numeric_limits<VXuint64>::max();
constexpr double infinity = std::numeric_limits<double>::infinity();

template <class T>
std::string written(const T& value) {
  return StringConversion::writeToStdString(value);
}

// One line of a table: a text, the value that it gives and the result.
template <class T>
struct Reading {
  const char* text;
  T value;
  bool isRead = true;
};

template <class T>
void expectReadings(std::initializer_list<Reading<T>> table) {
  for (const Reading<T>& line : table) {
    T value = T(77);
    EXPECT_EQ(StringConversion::readFromString(line.text, value), line.isRead) << '"' << line.text << '"';
    EXPECT_EQ(value, line.value) << '"' << line.text << '"';
  }
}

template <class Vec>
Vec countingVector() {
  Vec vec;
  for (std::size_t i = 0; i < Vec::size(); ++i) vec[i] = static_cast<double>(i) + 0.5;
  return vec;
}

template <class Mat>
Mat countingMatrix() {
  Mat mat;
  for (std::size_t i = 0; i < Mat::size() * Mat::size(); ++i) {
    mat[i / Mat::size()][i % Mat::size()] = static_cast<double>(i) - 3.25;
  }
  return mat;
}

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

TEST(StringConversionTest, IntegersAreWrittenAsPlainDigits) {
  EXPECT_EQ(written('A'), "65");
  EXPECT_EQ(written(char(-128)), "-128");
  EXPECT_EQ(written(static_cast<unsigned char>(255)), "255");
  EXPECT_EQ(written(short(-32768)), "-32768");
  EXPECT_EQ(written(static_cast<unsigned short>(65535)), "65535");
  EXPECT_EQ(written(std::numeric_limits<int>::min()), "-2147483648");
  EXPECT_EQ(written(4294967295U), "4294967295");
  EXPECT_EQ(written(minLong), "-9223372036854775808");
  EXPECT_EQ(written(maxUnsignedLong), "18446744073709551615");
  EXPECT_EQ(written(minInt64), "-9223372036854775808");
  EXPECT_EQ(written(maxInt64), "9223372036854775807");
  EXPECT_EQ(written(maxUint64), "18446744073709551615");
  EXPECT_EQ(written(0), "0");
}

TEST(StringConversionTest, FloatingPointHasSixOrFifteenDigitsWithoutTrailingZeros) {
  EXPECT_EQ(written(1.0), "1");
  EXPECT_EQ(written(-0.0), "-0");
  EXPECT_EQ(written(0.1F), "0.1");
  EXPECT_EQ(written(1.F / 3), "0.333333");
  EXPECT_EQ(written(1234567.F), "1.23457e+06");
  EXPECT_EQ(written(1. / 3), "0.333333333333333");
  EXPECT_EQ(written(2. / 3), "0.666666666666667");
  EXPECT_EQ(written(123456789012345.), "123456789012345");
  EXPECT_EQ(written(1234567890123456.), "1.23456789012346e+15");
  EXPECT_EQ(written(0.0001), "0.0001");
  EXPECT_EQ(written(0.00001), "1e-05");
  EXPECT_EQ(written(std::numeric_limits<double>::max()), "1.79769313486232e+308");
  EXPECT_EQ(written(std::numeric_limits<double>::denorm_min()), "4.94065645841247e-324");
  EXPECT_EQ(written(1.L / 3), "0.333333333333333");
  EXPECT_EQ(written(infinity), "inf");
  EXPECT_EQ(written(-infinity), "-inf");
  EXPECT_EQ(written(std::numeric_limits<double>::quiet_NaN()), "nan");
  EXPECT_EQ(StringConversion::_doubleToString(1.L / 3, 3), "0.333");
  // The buffer of 1023 characters takes all 751 digits of the smallest double, but cuts longer texts off.
  const std::string longest = StringConversion::_doubleToString(std::ldexp(1.L, -1074), 5000);
  ASSERT_EQ(longest.size(), 757U);
  EXPECT_EQ(longest.substr(752), "e-324");
  EXPECT_EQ(StringConversion::_doubleToString(std::numeric_limits<long double>::max(), 5000).size(), 1022U);
}

TEST(StringConversionTest, AnIntIsReadFromAnyText) {
  expectReadings<int>({{"5", 5},
                       {" \t\n-7 8", -7},
                       {"+12abc", 12},
                       {"3.9", 3},
                       {"", 0},
                       {"no number", 0},
                       {"-", 0},
                       {"4294967298", 2},
                       {"99999999999999999999", -1},
                       {"0x10", 0}});
}

TEST(StringConversionTest, ALongTellsWhetherThereWasANumber) {
  expectReadings<long>({{"5", 5},
                        {" \t\n-7 8", -7},
                        {"12abc", 12},
                        {"3.9", 3},
                        {"010", 10},
                        {"", 0, false},
                        {"no number", 0, false},
                        {"-", 0, false},
                        {"- 5", 0, false},
                        {"99999999999999999999", maxLong},
                        {"-99999999999999999999", minLong}});
  expectReadings<unsigned long>({{"5", 5UL},
                                 {"-1", maxUnsignedLong},
                                 {"99999999999999999999", maxUnsignedLong},
                                 {"", 0UL, false},
                                 {"x1", 0UL, false}});
}

TEST(StringConversionTest, NarrowIntegersTakeTheLowBitsOfTheLongForm) {
  expectReadings<char>({{"65", 'A'}, {"A", 0, false}, {"-1", -1}, {"257", 1}, {"200", static_cast<char>(-56)}});
  expectReadings<unsigned char>({{"255", 255}, {"256", 0}, {"-1", 255}, {"", 0, false}});
  expectReadings<short>({{"-32768", -32768}, {"32768", -32768}, {"65537", 1}, {"?", 0, false}});
  expectReadings<unsigned short>({{"65535", 65535}, {"65536", 0}, {"-1", 65535}, {" ", 0, false}});
  expectReadings<unsigned int>(
      {{"4294967295", 4294967295U}, {"4294967296", 0U}, {"-1", 4294967295U}, {".", 0U, false}});
}

TEST(StringConversionTest, SixtyFourBitIntegersTellWhetherThereWasANumber) {
  expectReadings<VXint64>({{"9223372036854775807", maxInt64},
                           {"-9223372036854775808", minInt64},
                           {" 12 13", 12},
                           {"", 0, false},
                           {"abc", 0, false}});
  expectReadings<VXuint64>({{"18446744073709551615", maxUint64}, {" 12 13", 12}, {"", 0, false}, {"abc", 0, false}});
}

TEST(StringConversionTest, FloatingPointTellsWhetherThereWasANumber) {
  expectReadings<float>(
      {{"0.1", 0.1F}, {"1e300", std::numeric_limits<float>::infinity()}, {"", 0, false}, {"x", 0, false}});
  expectReadings<double>({{"0.1", 0.1},
                          {" -2.5e3 7", -2500},
                          {"1,5", 1},
                          {"1e", 1},
                          {"0x1p4", 16},
                          {"inf", infinity},
                          {"-1e999", -infinity},
                          {".", 0, false},
                          {"", 0, false},
                          {"number", 0, false}});
  expectReadings<long double>({{"0.1", 0.1L}, {"1,5", 1}, {"-2.5 3", -2.5L}, {"", 0, false}, {"x", 0, false}});
  double nan = 0;
  EXPECT_TRUE(StringConversion::readFromString("nan", nan));
  EXPECT_TRUE(std::isnan(nan));
}

TEST(StringConversionTest, AVectorKeepsTheComponentsBeforeTheFirstBadOne) {
  using vec = Tvec3<double>;
  const Reading<vec> table[] = {{"", vec(0, 0, 0), false},
                                {"1 2", vec(1, 2, 0), false},
                                {"1 2 3", vec(1, 2, 3)},
                                {"1 2 3 4", vec(1, 2, 3)},
                                {" \t1.5\n-2e1\r\n3junk", vec(1.5, -20, 3)},
                                {"x 2 3", vec(0, 0, 0), false},
                                {"1 x 3", vec(1, 0, 0), false},
                                {"1,2,3", vec(1, 0, 0), false},
                                {"1-2+3", vec(1, -2, 3)}};
  for (const Reading<vec>& line : table) {
    vec value(9, 9, 9);
    EXPECT_EQ(StringConversion::readFromString(line.text, value), line.isRead) << line.text;
    EXPECT_EQ(value, line.value) << line.text;
  }
}

template <class Vec>
class StringConversionVectorTest : public ::testing::Test {};
using Vectors =
    ::testing::Types<Tvec2<double>, Tvec3<double>, Tvec4<double>, Tvec5<double>, Tvec6<double>, Tvec7<double>,
                     Tvec8<double>, Tvec9<double>, Tvec10<double>, Tvec16<double>, Tvec32<double>, Tvec64<double>>;
TYPED_TEST_SUITE(StringConversionVectorTest, Vectors);

TYPED_TEST(StringConversionVectorTest, WritesAllComponentsAndReadsEachPartOfThem) {
  const auto vec = countingVector<TypeParam>();
  std::vector<std::string> words;
  for (std::size_t i = 0; i < TypeParam::size(); ++i) words.push_back(std::to_string(i) + ".5");
  EXPECT_EQ(written(vec), joined(words));

  for (std::size_t num = 0; num <= TypeParam::size(); ++num) {
    TypeParam expected;
    for (std::size_t i = 0; i < num; ++i) expected[i] = vec[i];
    TypeParam read(-1.);
    const std::string text = joined({words.begin(), words.begin() + static_cast<std::ptrdiff_t>(num)});
    EXPECT_EQ(StringConversion::readFromString(text, read), num == TypeParam::size());
    EXPECT_EQ(read, expected);
  }
}

template <class Mat>
class StringConversionMatrixTest : public ::testing::Test {};
using Matrices = ::testing::Types<Tmat2<double>, Tmat3<double>, Tmat4<double>, Tmat5<double>, Tmat6<double>>;
TYPED_TEST_SUITE(StringConversionMatrixTest, Matrices);

TYPED_TEST(StringConversionMatrixTest, WritesRowByRowAndReadsEachPart) {
  constexpr std::size_t size = TypeParam::size();
  const auto mat = countingMatrix<TypeParam>();
  std::vector<std::string> words;
  for (std::size_t i = 0; i < size * size; ++i) words.push_back(written(static_cast<double>(i) - 3.25));
  EXPECT_EQ(written(mat), joined(words));

  for (std::size_t num = 0; num <= size * size; ++num) {
    TypeParam expected;
    for (std::size_t i = 0; i < num; ++i) expected[i / size][i % size] = mat[i / size][i % size];
    TypeParam read(-1.);
    const std::string text = joined({words.begin(), words.begin() + static_cast<std::ptrdiff_t>(num)});
    EXPECT_EQ(StringConversion::readFromString(text, read), num == size * size);
    EXPECT_EQ(read, expected);
  }
}

TEST(StringConversionTest, AnIdentityIsSixteenNumbers) {
  EXPECT_EQ(written(Tmat4<double>::getIdentity()), "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1");
}

TEST(StringConversionTest, AnIntegerVectorKeepsTheComponentsBeforeTheFirstBadOne) {
  using ivec = TVector<VXint64>;
  EXPECT_EQ(written(ivec(1, 2, 3, 4, 5, 6)), "1 2 3 4 5 6");
  EXPECT_EQ(written(ivec(minInt64, maxInt64, 0, -1, 0, 7)), "-9223372036854775808 9223372036854775807 0 -1 0 7");
  const Reading<ivec> table[] = {
      {"1 2 3 4 5 6", ivec(1, 2, 3, 4, 5, 6)},
      {"1\t2\n3 4 5 6 7", ivec(1, 2, 3, 4, 5, 6)},
      {"-9223372036854775808 9223372036854775807 0 -1 0 7", ivec(minInt64, maxInt64, 0, -1, 0, 7)},
      {"1 2 3 4 5", ivec(1, 2, 3, 4, 5, 0), false},
      {"1 2.5 3 4 5 6", ivec(1, 2, 0, 0, 0, 0), false},
      {"", ivec(), false},
      {"(1,2,3,4,5,6)", ivec(), false}};
  for (const Reading<ivec>& line : table) {
    ivec value(9);
    EXPECT_EQ(StringConversion::readFromString(line.text, value), line.isRead) << line.text;
    EXPECT_EQ(value, line.value) << line.text;
  }
}

TEST(StringConversionTest, ABoxIsItsLowerAndItsUpperCorner) {
  using ivec = TVector<VXint64>;
  const TSubImgBox<VXint64> box(ivec(1, 2, 3, 4, 5, 6), ivec(-7, 8, 9, 10, 11, 12));
  EXPECT_EQ(written(box), "1 2 3 4 5 6 -7 8 9 10 11 12");
  EXPECT_EQ(written(TSubImgBox<VXint64>()), "0 0 0 0 0 0 -1 -1 -1 -1 -1 -1");
  TSubImgBox<VXint64> read;
  EXPECT_TRUE(StringConversion::readFromString("1 2 3 4 5 6 -7 8 9 10 11 12", read));
  EXPECT_EQ(read, box);
  EXPECT_FALSE(StringConversion::readFromString("1 2 3 4 5 6 -7 8", read));
  EXPECT_EQ(read, TSubImgBox<VXint64>(ivec(1, 2, 3, 4, 5, 6), ivec(-7, 8, 0, 0, 0, 0)));
  EXPECT_FALSE(StringConversion::readFromString("", read));
  EXPECT_EQ(read, TSubImgBox<VXint64>(ivec(), ivec()));
}

TEST(StringConversionTest, AFloatingPointBoxIsItsLowerAndItsUpperCorner) {
  const SubImgBoxf box(Tvec6<double>(0.5, 1, 2, 3, 4, 5), Tvec6<double>(6, 7, 8, 9, 10, -1e20));
  EXPECT_EQ(written(box), "0.5 1 2 3 4 5 6 7 8 9 10 -1e+20");
  SubImgBoxf read;
  EXPECT_TRUE(StringConversion::readFromString("0.5 1 2 3 4 5 6 7 8 9 10 -1e+20", read));
  EXPECT_EQ(read, box);
  EXPECT_FALSE(StringConversion::readFromString("0.5 1 2 3 4 5 6 7 8 9 10", read));
  EXPECT_EQ(read, SubImgBoxf(Tvec6<double>(0.5, 1, 2, 3, 4, 5), Tvec6<double>(6, 7, 8, 9, 10, 0)));
}

// Round trips over random values, to the number of digits that a text holds.

template <class Real, class Bits>
Real randomReal(std::mt19937_64& random) {
  for (;;) {
    const auto bits = static_cast<Bits>(random());
    Real value;
    static_assert(sizeof value == sizeof bits);
    std::memcpy(&value, &bits, sizeof value);
    if (std::isnormal(value)) return value;
  }
}

template <class Integer>
void expectExactRoundTrips(std::mt19937_64& random) {
  for (int i = 0; i < 5000; ++i) {
    const auto value = static_cast<Integer>(random() >> (random() % 64));
    Integer read = 0;
    ASSERT_TRUE(StringConversion::readFromString(written(value), read));
    ASSERT_EQ(read, value);
  }
}

TEST(StringConversionTest, IntegersComeBackExactly) {
  std::mt19937_64 random(1);
  expectExactRoundTrips<char>(random);
  expectExactRoundTrips<unsigned char>(random);
  expectExactRoundTrips<short>(random);
  expectExactRoundTrips<unsigned short>(random);
  expectExactRoundTrips<int>(random);
  expectExactRoundTrips<unsigned int>(random);
  expectExactRoundTrips<long>(random);
  expectExactRoundTrips<unsigned long>(random);
  expectExactRoundTrips<VXint64>(random);
  expectExactRoundTrips<VXuint64>(random);
}

TEST(StringConversionTest, RealsComeBackToTheirDigits) {
  std::mt19937_64 random(2);
  for (int i = 0; i < 20000; ++i) {
    const double value = randomReal<double, VXuint64>(random);
    double read = 0;
    ASSERT_TRUE(StringConversion::readFromString(written(value), read));
    // The largest double rounds up beyond its range.
    if (std::isfinite(read)) {
      ASSERT_LE(std::abs(read - value), std::abs(value) * 5.01e-15) << value;
    }
    ASSERT_EQ(written(read), written(value));

    const float single = randomReal<float, VXuint32>(random);
    float readSingle = 0;
    ASSERT_TRUE(StringConversion::readFromString(written(single), readSingle));
    if (std::isfinite(readSingle)) {
      ASSERT_LE(std::abs(readSingle - single), std::abs(single) * 5.1e-6F) << single;
    }

    long double wide = 0;
    ASSERT_TRUE(StringConversion::readFromString(written(static_cast<long double>(value) / 3), wide));
    ASSERT_LE(std::abs(wide - static_cast<long double>(value) / 3), std::abs(static_cast<long double>(value)) * 2e-15L);
  }
}

TEST(StringConversionTest, CompositesComeBackToTheirDigits) {
  std::mt19937_64 random(3);
  for (int i = 0; i < 2000; ++i) {
    Tvec16<double> vec;
    for (double& component : vec) component = randomReal<double, VXuint64>(random);
    const std::string text = written(vec);
    Tvec16<double> read;
    ASSERT_TRUE(StringConversion::readFromString(text, read));
    ASSERT_EQ(written(read), text);

    TVector<VXint64> corner;
    for (std::size_t k = 0; k < corner.size(); ++k) corner[k] = static_cast<VXint64>(random());
    const TSubImgBox<VXint64> box(corner, -corner);
    TSubImgBox<VXint64> readBox;
    ASSERT_TRUE(StringConversion::readFromString(written(box), readBox));
    ASSERT_EQ(readBox, box);
  }
}

TEST(StringConversionTest, MutatedTextsAreReadToTheFirstBadNumber) {
  std::mt19937_64 random(4);
  const std::string alphabet = " \t\n0123456789+-.eExXpPinfa,\\%\xff";
  for (int i = 0; i < 20000; ++i) {
    std::string text = "1.5 -2 3e5 4 0x5 6 7 8 9 10 11 12";
    for (std::size_t changes = random() % 6; changes > 0; --changes) {
      text[random() % text.size()] = alphabet[random() % alphabet.size()];
    }
    text.resize(random() % (text.size() + 1));

    SubImgBoxf box;
    Tvec6<double> vec;
    const bool isBoxRead = StringConversion::readFromString(text, box);
    const bool isVecRead = StringConversion::readFromString(text, vec);
    ASSERT_TRUE(isVecRead || !isBoxRead) << text;
    for (std::size_t k = 0; k < 6; ++k) {
      ASSERT_TRUE(vec[k] == box.v1[k] || (std::isnan(vec[k]) && std::isnan(box.v1[k]))) << text;
    }
    TVector<VXint64> position;
    TSubImgBox<VXint64> region;
    StringConversion::readFromString(text, position);
    StringConversion::readFromString(text, region);
    ASSERT_EQ(position, region.v1) << text;
    long integer = 0;
    const bool isInteger = StringConversion::readFromString(text, integer);
    ASSERT_EQ(integer, position.x) << text;
    ASSERT_TRUE(isInteger || integer == 0) << text;
  }
}

TEST(StringConversionTest, ATextEndsAtItsFirstNullCharacter) {
  Tvec2<double> vec;
  EXPECT_FALSE(StringConversion::readFromString(std::string("1\0 2", 4), vec));
  EXPECT_EQ(vec, Tvec2<double>(1, 0));
}

TEST(StringConversionTest, TheHostsLocaleDoesNotMatter) {
  const std::string before = std::setlocale(LC_ALL, nullptr);
  ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr) << "the locale de_DE.UTF-8 is missing";
  EXPECT_EQ(written(1.5F), "1.5");
  EXPECT_EQ(written(1.5), "1.5");
  EXPECT_EQ(written(1.5L), "1.5");
  EXPECT_EQ(written(1234567LL), "1234567");
  EXPECT_EQ(written(Tvec2<double>(1.5, -2.25)), "1.5 -2.25");
  expectReadings<float>({{"1.5", 1.5F}, {"2,5", 2}});
  expectReadings<double>({{"1.5", 1.5}, {"2,5", 2}});
  expectReadings<long double>({{"1.5", 1.5L}, {"2,5", 2}});
  Tmat2<double> mat;
  EXPECT_TRUE(StringConversion::readFromString("1.5 2.5 3.5 4.5", mat));
  EXPECT_EQ(mat, Tmat2<double>(1.5, 2.5, 3.5, 4.5));
  EXPECT_STREQ(std::localeconv()->decimal_point, ",");
  std::setlocale(LC_ALL, before.c_str());
}

// An object whose state is a text; it counts the texts that it has given out.
class Note : public Base {
 public:
  char* getPersistentState() const override {
    if (!hasState) return nullptr;
    ++numTextsOut;
    return StringConversion::newString(state);
  }
  void setPersistentState(const char* text) override { state = text; }
  void clearPersistentState(char* text) const override {
    if (text) --numTextsOut;
    StringConversion::deleteString(text);
  }

  std::string state;
  bool hasState = true;
  mutable int numTextsOut = 0;
};

TEST(StringConversionTest, AnObjectGivesItsStateAndGetsTheTextBack) {
  Note note;
  EXPECT_TRUE(StringConversion::readFromString("two words\nand a line", note));
  EXPECT_EQ(note.state, "two words\nand a line");
  EXPECT_EQ(written(note), "two words\nand a line");
  EXPECT_EQ(note.numTextsOut, 0);
  note.hasState = false;
  EXPECT_EQ(written(note), "");
  EXPECT_EQ(note.numTextsOut, 0);
  EXPECT_TRUE(StringConversion::readFromString("", note));
  EXPECT_EQ(note.state, "");
}

TEST(StringConversionTest, ACTextIsACopyThatGoesBack) {
  const std::string text("a\0b", 3);
  char* copy = StringConversion::newString(text);
  EXPECT_EQ(std::memcmp(copy, "a\0b\0", 4), 0);
  StringConversion::deleteString(copy);
  copy = StringConversion::newString("");
  EXPECT_STREQ(copy, "");
  StringConversion::deleteString(copy);
  StringConversion::deleteString(nullptr);
}

// The sanitizers reserve more address space than any limit leaves.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(StringConversionTest, ACTextWithoutMemoryIsFatal) {
  const std::string text(std::size_t{1} << 28U, 'x');
  MessageRecorder messages;
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_AS, &before), 0);
  const rlimit tight{1, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_AS, &tight), 0);
  int code = 0;
  try {
    StringConversion::deleteString(StringConversion::newString(text));
  } catch (int thrown) {
    code = thrown;
  }
  ASSERT_EQ(setrlimit(RLIMIT_AS, &before), 0);
  EXPECT_EQ(code, VX_NO_MEMORY);
  const auto taken = messages.take();
  ASSERT_EQ(taken.size(), 1U);
  EXPECT_EQ(taken[0].type, VX_FATAL);
  EXPECT_EQ(taken[0].code, VX_NO_MEMORY);
}
#endif

TEST(StringConversionTest, OnlyTheBlankCountsAsSpace) {
  const std::string text = "  a  \tb ";
  const struct {
    VXint64 start;
    VXint64 position;
  } table[] = {{0, 2}, {1, 2}, {2, 2}, {3, 5}, {5, 5}, {6, 6}, {7, 8}, {8, 8}, {-3, 2}, {1000, 8}, {minInt64, 2}};
  for (const auto& line : table) {
    EXPECT_EQ(StringConversion::getFirstNonSpacePos(text, line.start), line.position) << line.start;
  }
  EXPECT_EQ(StringConversion::getFirstNonSpacePos("", 0), 0);
  EXPECT_EQ(StringConversion::getFirstNonSpacePos("   ", 0), 3);
}

}  // namespace
}  // namespace vx::test
