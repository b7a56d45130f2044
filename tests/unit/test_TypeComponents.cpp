#include "MessageRecorder.h"
#include "TestTypes.h"

#include "vxTypeInfos.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace vx::test {
namespace {

constexpr char allCodes[] = "bcCsSiIlLfdD6";
constexpr double infinity = std::numeric_limits<double>::infinity();

// A component in a block of exactly its size, at the end of the block, so that a checker finds any byte too much.
class Block {
 public:
  explicit Block(char code, std::size_t offset = 0)
      : _offset(offset), _size(offset + VXTypeComponentSize(code)), _bytes(new unsigned char[_size]()) {}
  unsigned char* address() { return _bytes.get() + _offset; }
  template <class T>
  void set(T value) {
    ASSERT_EQ(sizeof value, _size - _offset);
    std::memcpy(address(), &value, sizeof value);
  }

 private:
  std::size_t _offset, _size;
  std::unique_ptr<unsigned char[]> _bytes;
};

TEST(TypeComponentsTest, EveryCodeStaysWithinItsBytesAtAnyAddress) {
  for (const char* code = allCodes; *code; ++code) {
    for (const std::size_t offset : {0U, 1U, 3U}) {
      Block block(*code, offset), result(*code, offset);
      VXTypeSetDoubleComponent(*code, 1, block.address());
      EXPECT_EQ(VXTypeGetDoubleComponent(*code, block.address()), 1) << *code;
      EXPECT_EQ(VXTypeGetIntComponent(*code, block.address()), 1) << *code;
      VXTypeSetIntComponent(*code, 0, block.address());
      EXPECT_EQ(VXTypeGetIntComponent(*code, block.address()), 0) << *code;
      VXTypeSetIntComponent(*code, 1, block.address());
      VXTypeShiftLeftComponent(*code, block.address(), 1, result.address());
      EXPECT_EQ(VXTypeGetIntComponent(*code, result.address()), *code == 'b' ? 0 : 2) << *code;
      VXTypeShiftLeftComponent(*code, block.address(), 0, result.address());
      EXPECT_EQ(VXTypeGetIntComponent(*code, result.address()), 1) << *code;
    }
  }
}

TEST(TypeComponentsTest, NumbersAreCastAsTheirCodeSays) {
  const struct {
    char code;
    double set, get;
  } rows[] = {
      {'b', 0.5, 1},
      {'b', 0, 0},
      {'b', -3, 1},
      {'c', 300, 44},
      {'c', -1, 255},
      {'C', 200, -56},
      {'C', -2.9, -2},
      {'s', -1, 65535},
      {'S', 40000, -25536},
      {'i', -1, 4294967295.0},
      {'l', 4294967295.0, 4294967295.0},
      {'I', 1e10, -2147483648.0},
      {'L', -2147483648.0, -2147483648.0},
      {'f', 0.1, 0.1F},
      {'d', 0.1, 0.1},
      {'D', 0.1, 0.1},
      {'6', 1e15, 1e15},
      {'6', 1e30, -9223372036854775808.0},
      {'c', NAN, 0},
      {'I', infinity, -2147483648.0},
      {'d', -infinity, -infinity},
  };
  for (const auto& row : rows) {
    Block block(row.code);
    VXTypeSetDoubleComponent(row.code, row.set, block.address());
    EXPECT_EQ(VXTypeGetDoubleComponent(row.code, block.address()), row.get) << row.code << " " << row.set;
  }
}

TEST(TypeComponentsTest, IntegersKeepTheirLowBytes) {
  const struct {
    char code;
    int set, get;
  } rows[] = {{'b', 256, 1}, {'c', 257, 1}, {'C', 128, -128}, {'s', -1, 65535}, {'S', 32768, -32768},
              {'i', -1, -1}, {'I', -5, -5}, {'l', -5, -5},    {'L', -5, -5},    {'f', -5, -5},
              {'d', 7, 7},   {'D', 7, 7},   {'6', -7, -7}};
  for (const auto& row : rows) {
    Block block(row.code);
    VXTypeSetIntComponent(row.code, row.set, block.address());
    EXPECT_EQ(VXTypeGetIntComponent(row.code, block.address()), row.get) << row.code;
  }
  Block wide('6');
  wide.set(VXint64{0x1'0000'0005});
  EXPECT_EQ(VXTypeGetIntComponent('6', wide.address()), 5);
  Block real('d');
  real.set(-2.9);
  EXPECT_EQ(VXTypeGetIntComponent('d', real.address()), -2);
  real.set(1e10);
  EXPECT_EQ(VXTypeGetIntComponent('d', real.address()), std::numeric_limits<int>::min());
  Block truth('b');
  truth.set(VXuint8{7});
  EXPECT_EQ(VXTypeGetIntComponent('b', truth.address()), 1);
  EXPECT_EQ(VXTypeGetDoubleComponent('b', truth.address()), 1);
}

TEST(TypeComponentsTest, UnknownCodesAndNullReadAsZeroAndWriteNothing) {
  unsigned char bytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  EXPECT_EQ(VXTypeGetDoubleComponent('x', bytes), 0);
  EXPECT_EQ(VXTypeGetIntComponent('x', bytes), 0);
  VXTypeSetDoubleComponent('x', 9, bytes);
  VXTypeSetIntComponent('x', 9, bytes);
  VXTypeShiftLeftComponent('x', bytes, 1, bytes);
  for (int i = 0; i < 8; ++i) EXPECT_EQ(bytes[i], i + 1);
  EXPECT_EQ(VXTypeGetDoubleComponent('d', nullptr), 0);
  EXPECT_EQ(VXTypeGetIntComponent('d', nullptr), 0);
  VXTypeSetDoubleComponent('d', 9, nullptr);
  VXTypeSetIntComponent('d', 9, nullptr);
  VXTypeShiftLeftComponent('c', nullptr, 1, bytes);
  VXTypeShiftLeftComponent('c', bytes, 1, nullptr);
  EXPECT_EQ(bytes[0], 1);
}

template <class T>
T shifted(char code, T value, int n) {
  T result{};
  VXTypeShiftLeftComponent(code, &value, n, &result);
  return result;
}

TEST(TypeComponentsTest, IntegersShiftAtTheirOwnWidth) {
  EXPECT_EQ(shifted<VXuint8>('c', 0x81, 1), 0x02);
  EXPECT_EQ(shifted<VXuint8>('c', 0x81, 8), 0);
  EXPECT_EQ(shifted<VXuint8>('c', 0x81, 32), 0x81) << "31 is the mask of the distance";
  EXPECT_EQ(shifted<VXuint8>('c', 0x81, -1), 0x40);
  EXPECT_EQ(shifted<VXint8>('C', -128, -1), -64) << "with the sign";
  EXPECT_EQ(shifted<VXint8>('C', -128, -31), -1);
  EXPECT_EQ(shifted<VXint16>('S', 0x4000, 1), -32768);
  EXPECT_EQ(shifted<VXuint16>('s', 0x8001, -15), 1);
  EXPECT_EQ(shifted<VXint32>('I', 1, 31), std::numeric_limits<VXint32>::min());
  EXPECT_EQ(shifted<VXint32>('L', std::numeric_limits<VXint32>::min(), -31), -1);
  EXPECT_EQ(shifted<VXuint32>('i', 0x80000000U, -31), 1U);
  EXPECT_EQ(shifted<VXuint32>('l', 3, 31), 0x80000000U);
  EXPECT_EQ(shifted<VXint64>('6', 1, 40), 1LL << 40);
  EXPECT_EQ(shifted<VXint64>('6', -1, -40), -1);
  EXPECT_EQ(shifted<VXint64>('6', 1, 63), std::numeric_limits<VXint64>::min());
  EXPECT_EQ(shifted<VXint32>('I', 5, std::numeric_limits<int>::min()), 5);
}

TEST(TypeComponentsTest, FloatingPointShiftsByPowersOfTwoAndTruthsAreLost) {
  EXPECT_EQ(shifted<float>('f', 1.5F, 3), 12.0F);
  EXPECT_EQ(shifted<float>('f', 1.5F, -1), 0.75F);
  EXPECT_EQ(shifted<double>('d', -1.5, 40), -1.5 * 1099511627776.0);
  EXPECT_EQ(shifted<double>('D', 3, -2), 0.75);
  EXPECT_EQ(shifted<double>('d', 1, 2000), infinity);
  EXPECT_EQ(shifted<double>('d', 1, std::numeric_limits<int>::min()), 0);
  EXPECT_EQ(shifted<VXuint8>('b', 1, 1), 0);
  EXPECT_EQ(shifted<VXuint8>('b', 1, -1), 0);
  EXPECT_EQ(shifted<VXuint8>('b', 1, 0), 1);
}

TEST(TypeComponentsTest, AllComponentsOfAVoxelAreSetAndShifted) {
  ASSERT_TRUE(registerTestTypes());
  const VXTypeInfos* const infos = VXGetTypeInfosForDataType(mixedType());
  Mixed voxel = {};
  VXTypeSetAllDoubleComponents(infos, 2.5, &voxel);
  EXPECT_EQ(voxel.id, 2);
  EXPECT_EQ(voxel.weight, 2.5F);
  EXPECT_EQ(voxel.rgb[2], 2);
  VXTypeSetAllIntComponents(infos, -1, &voxel);
  EXPECT_EQ(voxel.id, -1);
  EXPECT_EQ(voxel.weight, -1.0F);
  EXPECT_EQ(voxel.rgb[0], 255);

  Mixed result = {};
  VXTypeShiftComponentsLeft(infos, &voxel, 1, &result);
  EXPECT_EQ(result.id, -2);
  EXPECT_EQ(result.weight, -2.0F);
  EXPECT_EQ(result.rgb[1], 254);
  VXTypeShiftComponentsLeft(infos, &result, -1, &result);
  EXPECT_EQ(result.rgb[1], 127) << "in place";

  VXTypeSetAllDoubleComponents(nullptr, 1, &voxel);
  VXTypeSetAllDoubleComponents(infos, 1, nullptr);
  VXTypeSetAllIntComponents(nullptr, 1, &voxel);
  VXTypeSetAllIntComponents(infos, 1, nullptr);
  VXTypeShiftComponentsLeft(infos, nullptr, 1, &result);
  VXTypeShiftComponentsLeft(infos, &voxel, 1, nullptr);
  EXPECT_EQ(voxel.id, -1);
}

TEST(TypeComponentsTest, AShiftWithoutARecordIsReported) {
  MessageRecorder recorder;
  unsigned char byte = 1;
  VXTypeShiftComponentsLeft(nullptr, &byte, 1, &byte);
  EXPECT_EQ(byte, 1);
  EXPECT_EQ(recorder.take(), (std::vector<Message>{{VX_ERROR, VX_BAD_POINTER, "VXTypeShiftComponentsLeft",
                                                    "Invalid infos passed; ignoring call."}}));
}

// Byte order ---------------------------------------------------------------------------------------------------------

TEST(TypeByteOrderTest, EachComponentOfEachVoxelIsSwappedAndPaddingStays) {
  ASSERT_TRUE(registerTestTypes());
  const VXTypeInfos* const infos = VXGetTypeInfosForDataType(mixedType());
  unsigned char source[24], result[24];
  for (unsigned char i = 0; i < 24; ++i) source[i] = i;
  std::memset(result, 0xEE, sizeof result);
  VXTypeToggleEndianType(infos, source, result, 2);
  const unsigned char expected[24] = {1,  0,  0xEE, 0xEE, 7,  6,  5,  4,  8,  9,  10, 0xEE,
                                      13, 12, 0xEE, 0xEE, 19, 18, 17, 16, 20, 21, 22, 0xEE};
  EXPECT_EQ(std::memcmp(result, expected, sizeof expected), 0);
  VXTypeToggleEndianType(infos, source, source, 2);
  EXPECT_EQ(source[0], 1);
  EXPECT_EQ(source[3], 3);
  EXPECT_EQ(source[19], 16);
}

TEST(TypeByteOrderTest, ConvertsOnlyFromTheOtherOrder) {
  const VXTypeInfos* const infos = VXGetTypeInfosForDataType(VXint16Type);
  ASSERT_NE(infos, nullptr);
  const VXint16 value = 0x0102;
  VXint16 little = value, big = value;
  VXTypeConvertToLittleEndian(infos, &little, &little, 1);
  VXTypeConvertToBigEndian(infos, &big, &big, 1);
  unsigned char bytes[2];
  std::memcpy(bytes, &little, 2);
  EXPECT_EQ(bytes[0], 2);
  std::memcpy(bytes, &big, 2);
  EXPECT_EQ(bytes[0], 1);
}

TEST(TypeByteOrderTest, AnUnknownCodeEndsTheWorkOnEachVoxel) {
  MessageRecorder recorder;
  VXTypeInfos infos = {};
  infos.numComponents = 3;
  infos.typeSize = 5;
  infos.structInfoString = "s?s";
  infos.componentOffsets[1] = 2;
  infos.componentOffsets[2] = 3;
  unsigned char bytes[10] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
  VXTypeToggleEndianType(&infos, bytes, bytes, 2);
  const unsigned char expected[10] = {1, 0, 2, 3, 4, 6, 5, 7, 8, 9};
  EXPECT_EQ(std::memcmp(bytes, expected, sizeof expected), 0);
  const Message message = {VX_ERROR, VX_BAD_PARAMETER, "VXTypeToggleEndianType: invalid component in structInfoString",
                           "Not changing rest of type instance."};
  EXPECT_EQ(recorder.take(), (std::vector<Message>{message, message}));
}

TEST(TypeByteOrderTest, NullDoesNothing) {
  const VXTypeInfos* const infos = VXGetTypeInfosForDataType(VXint16Type);
  VXint16 value = 1;
  VXTypeToggleEndianType(nullptr, &value, &value, 1);
  VXTypeToggleEndianType(infos, nullptr, &value, 1);
  VXTypeToggleEndianType(infos, &value, nullptr, 1);
  VXTypeToggleEndianType(infos, &value, &value, 0);
  EXPECT_EQ(value, 1);
}

}  // namespace
}  // namespace vx::test
