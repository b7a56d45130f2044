#include "MessageRecorder.h"
#include "TestTypes.h"

#include "vxMemory.h"
#include "vxTypeInfos.h"

#include <clocale>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace vx::test {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double maxDouble = std::numeric_limits<double>::max();

std::string take(char* text) {
  EXPECT_NE(text, nullptr);
  const MemoryPtr<char> owner(text);
  return text ? text : "";
}

// A type of packed components that is not registered.
class PackedType {
 public:
  explicit PackedType(std::string codes) : _codes(std::move(codes)) {
    _infos.numComponents = static_cast<VXuint32>(_codes.size());
    _infos.structInfoString = _codes.c_str();
    _infos.dataType = -1;
    for (std::size_t i = 0; i < _codes.size(); ++i) {
      _infos.componentOffsets[i] = _infos.typeSize;
      _infos.typeSize += VXTypeComponentSize(_codes[i]);
    }
    _infos.physicalSize = _infos.typeSize;
  }
  PackedType(const PackedType&) = delete;
  PackedType& operator=(const PackedType&) = delete;
  VXTypeInfos* operator&() { return &_infos; }
  VXTypeInfos* operator->() { return &_infos; }

 private:
  std::string _codes;
  VXTypeInfos _infos = {};
};

template <class T>
std::string textOf(char code, T value, int numDigits = -1) {
  PackedType type(std::string(1, code));
  EXPECT_EQ(sizeof value, type->typeSize);
  return take(_VXTypeComponentsToString(&type, &value, numDigits));
}

TEST(TypeTextTest, EachCodeHasItsFormat) {
  EXPECT_EQ(textOf<VXuint8>('b', 7), "1");
  EXPECT_EQ(textOf<VXuint8>('b', 0), "0");
  EXPECT_EQ(textOf<VXuint8>('c', 255), "255");
  EXPECT_EQ(textOf<VXint8>('C', -128), "-128");
  EXPECT_EQ(textOf<VXuint16>('s', 65535), "65535");
  EXPECT_EQ(textOf<VXint16>('S', -32768), "-32768");
  EXPECT_EQ(textOf<VXuint32>('i', 4294967295U), "4294967295");
  EXPECT_EQ(textOf<VXint32>('I', std::numeric_limits<VXint32>::min()), "-2147483648");
  EXPECT_EQ(textOf<VXuint32>('l', 4294967295U), "4294967295");
  EXPECT_EQ(textOf<VXint32>('L', -1), "-1");
  EXPECT_EQ(textOf<VXint64>('6', std::numeric_limits<VXint64>::min()), "-9223372036854775808");
  EXPECT_EQ(textOf<float>('f', 0.1F), "0.1");
  EXPECT_EQ(textOf<float>('f', 1234567.0F), "1.23457e+06");
  EXPECT_EQ(textOf<double>('d', 0.1), "0.1");
  EXPECT_EQ(textOf<double>('d', 1.0 / 3), "0.333333333333333");
  EXPECT_EQ(textOf<double>('D', 1e300), "1e+300");
  EXPECT_EQ(textOf<double>('d', infinity), "inf");
  EXPECT_EQ(textOf<double>('d', -infinity), "-inf");
  EXPECT_EQ(textOf<double>('d', -0.0), "-0");
  PackedType unknown("?");
  EXPECT_EQ(take(VXTypeComponentsToString(&unknown, "")), "");
}

TEST(TypeTextTest, FixedNotationHasAtMostTheDigitsOfItsType) {
  EXPECT_EQ(textOf<float>('f', 1.5F, 9), "1.500000");
  EXPECT_EQ(textOf<float>('f', 1.5F, 2), "1.50");
  EXPECT_EQ(textOf<float>('f', 2.5F, 0), "2");
  EXPECT_EQ(textOf<double>('d', 1.5, 20), "1.500000000000000");
  EXPECT_EQ(textOf<double>('D', -1.25, 1), "-1.2");
  EXPECT_EQ(textOf<double>('d', maxDouble, 15).size(), 325u);
  EXPECT_EQ(textOf<VXint32>('I', 12, 3), "12") << "integers have no digits behind a point";
  const float value = 1.5F;
  EXPECT_EQ(take(VXTypeComponentsToStringLimited(VXGetTypeInfosForDataType(VXfloatType), &value, 9)), "1.500000");
}

TEST(TypeTextTest, ComponentsAreSeparatedByOneBlank) {
  ASSERT_TRUE(registerTestTypes());
  const Mixed voxel = {-3, 0.25F, {1, 2, 255}};
  EXPECT_EQ(take(VXTypeComponentsToString(VXGetTypeInfosForDataType(mixedType()), &voxel)), "-3 0.25 1 2 255");
  EXPECT_EQ(take(VXTypeComponentsToStringLimited(VXGetTypeInfosForDataType(mixedType()), &voxel, 1)), "-3 0.2 1 2 255");
}

TEST(TypeTextTest, NullArgumentsGiveNullFromTheWorkerAndAnEmptyTextElsewhere) {
  PackedType type("c");
  EXPECT_EQ(_VXTypeComponentsToString(nullptr, "", -1), nullptr);
  EXPECT_EQ(_VXTypeComponentsToString(&type, nullptr, -1), nullptr);
  EXPECT_EQ(take(VXTypeComponentsToString(nullptr, "")), "");
  EXPECT_EQ(take(VXTypeComponentsToStringLimited(&type, nullptr, 3)), "");
}

TEST(TypeTextTest, TheWidestVoxelIsCutOffAtItsLimit) {
  PackedType type(std::string(512, 'd'));
  const std::vector<double> voxel(512, -maxDouble);
  const std::string component = textOf('d', -maxDouble, 15);
  std::string expected = component;
  for (int i = 1; i < 512; ++i) expected += " " + component;
  ASSERT_GT(expected.size(), 23040u);
  EXPECT_EQ(take(_VXTypeComponentsToString(&type, voxel.data(), 15)), expected.substr(0, 23040));
}

TEST(TypeTextTest, VoxelValuesTellWhetherTheirTypeIsKnown) {
  ASSERT_TRUE(registerTestTypes());
  VXErrorCode code = 99;
  const Complex voxel = {1.5F, -2};
  EXPECT_EQ(take(VXGetVoxelValueAsString(&voxel, complexType(), &code)), "1.5 -2");
  EXPECT_EQ(code, 0);
  EXPECT_EQ(take(VXGetVoxelValueAsStringLimited(&voxel, complexType(), &code, 2)), "1.50 -2.00");
  EXPECT_EQ(take(VXGetVoxelValueAsString(&voxel, -1, &code)), "");
  EXPECT_EQ(code, VX_BAD_DATA_TYPE);
  EXPECT_EQ(take(VXGetVoxelValueAsStringLimited(&voxel, -1, nullptr, 2)), "");
  EXPECT_EQ(take(VXGetVoxelValueAsString(nullptr, complexType(), &code)), "");
  EXPECT_EQ(code, 0);
}

// Reading ------------------------------------------------------------------------------------------------------------

template <class T>
T readAs(char code, const char* text, int expectedResult = 1) {
  PackedType type(std::string(1, code));
  // Exactly as large as the component, so that a checker finds a byte too much.
  const std::unique_ptr<unsigned char[]> voxel(new unsigned char[type->typeSize]());
  const T initial = 99;
  EXPECT_EQ(VXTypeComponentsFromString(&type, text, &initial, voxel.get()), expectedResult) << text;
  T value;
  EXPECT_EQ(sizeof value, type->typeSize);
  std::memcpy(&value, voxel.get(), sizeof value);
  return value;
}

TEST(TypeReadTest, IntegersInAnyBaseKeepTheirLowBytes) {
  EXPECT_EQ(readAs<VXint8>('C', "-5"), -5);
  EXPECT_EQ(readAs<VXint8>('C', "0x10"), 16);
  EXPECT_EQ(readAs<VXint8>('C', "010"), 8);
  EXPECT_EQ(readAs<VXint8>('C', "200"), -56);
  EXPECT_EQ(readAs<VXuint8>('c', "300"), 44);
  EXPECT_EQ(readAs<VXuint8>('c', "-1"), 255);
  EXPECT_EQ(readAs<VXuint8>('b', "17"), 1);
  EXPECT_EQ(readAs<VXuint8>('b', "0"), 0);
  EXPECT_EQ(readAs<VXuint8>('b', "256"), 1);
  EXPECT_EQ(readAs<VXint16>('S', " \t+7"), 7);
  EXPECT_EQ(readAs<VXuint16>('s', "0XfFfF"), 65535);
  EXPECT_EQ(readAs<VXint32>('I', "-2147483648"), std::numeric_limits<VXint32>::min());
  EXPECT_EQ(readAs<VXint32>('I', "99999999999"), std::numeric_limits<VXint32>::max());
  EXPECT_EQ(readAs<VXint32>('I', "-99999999999999999999999"), std::numeric_limits<VXint32>::min());
  EXPECT_EQ(readAs<VXint32>('L', "-0x10"), -16);
  EXPECT_EQ(readAs<VXuint32>('i', "4294967295"), 4294967295U);
  EXPECT_EQ(readAs<VXuint32>('l', "99999999999"), 4294967295U);
  EXPECT_EQ(readAs<VXuint32>('l', "-2"), 4294967294U);
  EXPECT_EQ(readAs<VXint32>('I', "0x"), 0) << "the number 0, with an x behind it";
  EXPECT_EQ(readAs<VXint64>('6', "-9223372036854775808"), std::numeric_limits<VXint64>::min());
  EXPECT_EQ(readAs<VXint64>('6', "010"), 10) << "decimal";
}

TEST(TypeReadTest, FloatingPointAsTheCLibraryReadsIt) {
  EXPECT_EQ(readAs<double>('d', "1.5"), 1.5);
  EXPECT_EQ(readAs<double>('d', "+.5e1"), 5);
  EXPECT_EQ(readAs<double>('D', "-2.e-1"), -0.2);
  EXPECT_EQ(readAs<double>('d', "0x1.8p1"), 3);
  EXPECT_EQ(readAs<double>('d', "-0x.8"), -0.5);
  EXPECT_EQ(readAs<double>('d', "0x"), 0);
  EXPECT_EQ(readAs<double>('d', "inf"), infinity);
  EXPECT_EQ(readAs<double>('d', "-INFINITY"), -infinity);
  EXPECT_TRUE(std::isnan(readAs<double>('d', "nan")));
  EXPECT_EQ(readAs<double>('d', "1e400"), infinity);
  EXPECT_EQ(readAs<double>('d', "-123456e99999999999999999999"), -infinity);
  EXPECT_EQ(readAs<double>('d', "1e-400"), 0);
  EXPECT_EQ(readAs<double>('d', "0.00001e-99999999999999999999"), 0);
  EXPECT_EQ(readAs<double>('d', ("1" + std::string(400, '0')).c_str()), infinity);
  EXPECT_EQ(readAs<double>('d', ("0." + std::string(400, '0') + "1").c_str()), 0);
  EXPECT_EQ(readAs<double>('d', "5e-324"), 5e-324);
  EXPECT_EQ(readAs<float>('f', "0.1"), 0.1F);
  EXPECT_EQ(readAs<float>('f', "1e300"), std::numeric_limits<float>::infinity());
}

TEST(TypeReadTest, ATextThatIsNoNumberTakesTheDefault) {
  for (const char* text : {"", "   ", "x", "-", "--5", "+-5", "- 5", "."}) {
    EXPECT_EQ(readAs<double>('d', text, 0), 99) << text;
    EXPECT_EQ(readAs<VXint32>('I', text, 0), 99) << text;
    EXPECT_EQ(readAs<VXuint32>('i', text, 0), 99U) << text;
    EXPECT_EQ(readAs<VXint64>('6', text, 0), 99) << text;
    EXPECT_EQ(readAs<VXuint8>('b', text, 0), 99) << text;
  }
  PackedType unknown("?");
  unsigned char byte = 5;
  EXPECT_EQ(VXTypeComponentsFromString(&unknown, "1", &byte, &byte), 0) << "an unknown code is a failed read";
}

TEST(TypeReadTest, AfterAFailureAllComponentsComeFromTheDefault) {
  PackedType type("II");
  const VXint32 initial[2] = {-1, -2};
  VXint32 result[2] = {0, 0};
  EXPECT_EQ(VXTypeComponentsFromString(&type, "1 x", initial, result), 0);
  EXPECT_EQ(result[0], 1);
  EXPECT_EQ(result[1], -2);
  EXPECT_EQ(VXTypeComponentsFromString(&type, "x 5", initial, result), 0);
  EXPECT_EQ(result[0], -1);
  EXPECT_EQ(result[1], -2);
  EXPECT_EQ(VXTypeComponentsFromString(&type, " 3   4 and more", initial, result), 1);
  EXPECT_EQ(result[0], 3);
  EXPECT_EQ(result[1], 4);
  EXPECT_EQ(VXTypeComponentsFromString(&type, "7", initial, result), 0);
  EXPECT_EQ(result[0], 7);
  EXPECT_EQ(result[1], -2);
}

TEST(TypeReadTest, WithoutADefaultAFailedComponentStaysAndTheResultIsGood) {
  PackedType type("II");
  VXint32 result[2] = {10, 20};
  EXPECT_EQ(VXTypeComponentsFromString(&type, "1 x", nullptr, result), 1);
  EXPECT_EQ(result[0], 1);
  EXPECT_EQ(result[1], 20);
}

TEST(TypeReadTest, BadArgumentsWriteNothing) {
  PackedType type("I");
  PackedType empty("");
  VXint32 result = 3;
  EXPECT_EQ(VXTypeComponentsFromString(nullptr, "1", nullptr, &result), 0);
  EXPECT_EQ(VXTypeComponentsFromString(&type, nullptr, nullptr, &result), 0);
  EXPECT_EQ(VXTypeComponentsFromString(&type, "1", nullptr, nullptr), 0);
  EXPECT_EQ(VXTypeComponentsFromString(&empty, "1", nullptr, &result), 0);
  EXPECT_EQ(result, 3);
}

TEST(TypeReadTest, TextAndVoxelMakeEachOther) {
  ASSERT_TRUE(registerTestTypes());
  const VXTypeInfos* const infos = VXGetTypeInfosForDataType(mixedType());
  const Mixed voxel = {-300, 0.125F, {0, 128, 255}};
  const std::string text = take(VXTypeComponentsToString(infos, &voxel));
  Mixed result = {};
  ASSERT_EQ(VXTypeComponentsFromString(infos, text.c_str(), infos->typeDefaultPtr, &result), 1);
  EXPECT_EQ(result.id, -300);
  EXPECT_EQ(result.weight, 0.125F);
  EXPECT_EQ(std::memcmp(result.rgb, voxel.rgb, 3), 0);
}

TEST(TypeReadTest, TheLocaleOfTheHostDoesNotMatter) {
  const std::string before = std::setlocale(LC_ALL, nullptr);
  ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr) << "scripts/setup makes this locale";
  EXPECT_EQ(textOf<double>('d', 1.5), "1.5");
  EXPECT_EQ(textOf<float>('f', 1.5F, 2), "1.50");
  EXPECT_EQ(readAs<double>('d', "1.5"), 1.5);
  EXPECT_EQ(readAs<float>('f', "1,5"), 1.0F);
  std::setlocale(LC_ALL, before.c_str());
}

TEST(TypeReadTest, ValuesOfATextAreGivenAsNumbers) {
  PackedType type("cfI");
  double values[3] = {9, 9, 9};
  EXPECT_EQ(VXTypeGetDataValuesFromString(&type, "300 1.5 -2", values, 3), 3u);
  EXPECT_EQ(values[0], 44);
  EXPECT_EQ(values[1], 1.5);
  EXPECT_EQ(values[2], -2);
  EXPECT_EQ(VXTypeGetDataValuesFromString(&type, "1 2 3", values, 2), 2u);
  EXPECT_EQ(VXTypeGetDataValuesFromString(&type, "1 x", values, 3), 1u);
  EXPECT_EQ(VXTypeGetDataValuesFromString(nullptr, "1", values, 3), 0u);
  EXPECT_EQ(VXTypeGetDataValuesFromString(&type, nullptr, values, 3), 0u);
  EXPECT_EQ(VXTypeGetDataValuesFromString(&type, "1", nullptr, 3), 0u);
}

TEST(TypeReadTest, AStreamGivesComponentByComponent) {
  PackedType type("II");
  const VXint32 initial[2] = {-1, -2};
  const auto* const defaultVoxel = reinterpret_cast<const unsigned char*>(initial);
  VXint32 result[2] = {0, 0};
  auto* const voxel = reinterpret_cast<unsigned char*>(result);
  std::istringstream stream("5 0x10 next");
  EXPECT_EQ(VXTypeComponentsFromStream(&type, stream, defaultVoxel, voxel), 2u);
  EXPECT_EQ(result[0], 5);
  EXPECT_EQ(result[1], 16);
  std::string next;
  stream >> next;
  EXPECT_EQ(next, "next");

  std::istringstream broken("x 6");
  EXPECT_EQ(VXTypeComponentsFromStream(&type, broken, defaultVoxel, voxel), 0u);
  EXPECT_EQ(result[0], -1);
  EXPECT_EQ(result[1], -2);
  std::istringstream shorter("8");
  EXPECT_EQ(VXTypeComponentsFromStream(&type, shorter, defaultVoxel, voxel), 1u);
  EXPECT_EQ(result[0], 8);
  EXPECT_EQ(result[1], -2);
  EXPECT_EQ(VXTypeComponentsFromStream(nullptr, stream, defaultVoxel, voxel), 0u);

  type->typeDefaultPtr = defaultVoxel;
  std::istringstream empty("");
  EXPECT_EQ(VXTypeComponentsFromStream(&type, empty, nullptr, voxel), 0u);
  EXPECT_EQ(result[0], -1) << "the type's own default";
}

TEST(TypeReadTest, AStreamWithoutAnyDefaultIsReported) {
  MessageRecorder recorder;
  PackedType type("I");
  VXint32 result = 3;
  std::istringstream stream("5");
  EXPECT_EQ(VXTypeComponentsFromStream(&type, stream, nullptr, reinterpret_cast<unsigned char*>(&result)), 0u);
  EXPECT_EQ(result, 3);
  EXPECT_EQ(recorder.take(), (std::vector<Message>{{VX_ERROR, VX_NO_DEFAULT_VALUE, "VXTypeComponentsFromStream",
                                                    "Could not determine default value from infos, ignoring call."}}));
}

}  // namespace
}  // namespace vx::test
