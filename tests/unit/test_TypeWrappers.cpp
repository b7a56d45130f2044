#include "MessageRecorder.h"
#include "TestTypes.h"

#include "vxTypeInfos.h"

#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace vx::test {
namespace {

constexpr char badSource[] = "Invalid infos or p passed; ignoring call and returning false.";
constexpr char badResult[] = "Invalid infos or q passed; ignoring call and returning false.";
constexpr char badInfos[] = "Invalid infos passed; ignoring call.";
constexpr char badOther[] = "Invalid otherInfos, myInfos, otherData or myData passed; ignoring call.";
constexpr char badEqual[] = "Invalid otherInfos, myInfos, otherData or myData passed; returning 0.";
constexpr char badOrder[] = "Invalid myInfos, myData, otherInfos or otherData passed; returning 0.";

template <class T>
unsigned char* bytes(T& value) {
  return reinterpret_cast<unsigned char*>(&value);
}
template <class T>
const unsigned char* bytes(const T& value) {
  return reinterpret_cast<const unsigned char*>(&value);
}

class TypeWrappersTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(registerTestTypes());
    complex = VXGetTypeInfosForDataType(complexType());
    vector = VXGetTypeInfosForDataType(vector3Type());
    mixed = VXGetTypeInfosForDataType(mixedType());
    large = VXGetTypeInfosForDataType(largeType());
    sparse = VXGetTypeInfosForDataType(sparseType());
  }
  void TearDown() override { EXPECT_EQ(recorder.take(), std::vector<Message>{}); }
  void expectReport(const char* function, const char* reason) {
    EXPECT_EQ(recorder.take(), (std::vector<Message>{{VX_ERROR, VX_BAD_POINTER, function, reason}}));
  }
  const VXTypeInfos *complex, *vector, *mixed, *large, *sparse;
  MessageRecorder recorder;
};

TEST_F(TypeWrappersTest, ATruthIsAnyByteThatIsNotZero) {
  Vector3 voxel = {0, 0, 0};
  EXPECT_EQ(VXTypeCastToBool(vector, bytes(voxel)), 0);
  voxel.z = 1;
  EXPECT_EQ(VXTypeCastToBool(vector, bytes(voxel)), 1);
  EXPECT_EQ(VXTypeCastToBool(nullptr, bytes(voxel)), 0);
  expectReport("VXTypeCastToBool", badSource);
  EXPECT_EQ(VXTypeCastToBool(vector, nullptr), 0);
  expectReport("VXTypeCastToBool", badSource);
}

TEST_F(TypeWrappersTest, ANumberIsTheFirstComponent) {
  const Vector3 voxel = {-2.9, 5, 6};
  EXPECT_EQ(VXTypeCastToInt(vector, bytes(voxel)), -2);
  EXPECT_EQ(VXTypeCastToDouble(vector, bytes(voxel)), -2.9);
  EXPECT_EQ(VXTypeCastToInt(vector, nullptr), 0);
  expectReport("VXTypeCastToInt", badSource);
  EXPECT_EQ(VXTypeCastToDouble(nullptr, bytes(voxel)), 0);
  expectReport("VXTypeCastToDouble", badSource);
}

TEST_F(TypeWrappersTest, ANumberSetsEveryComponent) {
  Mixed voxel = {};
  VXTypeCastFromBool(mixed, 1, bytes(voxel));
  EXPECT_EQ(voxel.id, 1);
  EXPECT_EQ(voxel.rgb[2], 1);
  VXTypeCastFromInt(mixed, 258, bytes(voxel));
  EXPECT_EQ(voxel.id, 258);
  EXPECT_EQ(voxel.weight, 258.0F);
  EXPECT_EQ(voxel.rgb[0], 2);
  VXTypeCastFromDouble(mixed, -1.5, bytes(voxel));
  EXPECT_EQ(voxel.id, -1);
  EXPECT_EQ(voxel.weight, -1.5F);
  EXPECT_EQ(voxel.rgb[1], 255);
  VXTypeCastFromBool(mixed, 1, nullptr);
  expectReport("VXTypeCastFromBool", badResult);
  VXTypeCastFromInt(nullptr, 1, bytes(voxel));
  expectReport("VXTypeCastFromInt", badResult);
  VXTypeCastFromDouble(mixed, 1, nullptr);
  expectReport("VXTypeCastFromDouble", badResult);
}

TEST_F(TypeWrappersTest, BitsAreCombinedByComponent) {
  const Sparse a = {0x0F0F, -1};
  const Sparse b = {0x00FF, 0x1234};
  Sparse result = {};
  VXTypeBinaryAndInt(sparse, bytes(a), 0xFF, bytes(result));
  EXPECT_EQ(result.a, 0x0F);
  EXPECT_EQ(result.b, 0xFF);
  VXTypeBinaryOrInt(sparse, bytes(a), 0xF0, bytes(result));
  EXPECT_EQ(result.a, 0x0FFF);
  VXTypeBinaryXorInt(sparse, bytes(a), 1, bytes(result));
  EXPECT_EQ(result.a, 0x0F0E);
  EXPECT_EQ(result.b, -2);
  VXTypeBinaryAnd(sparse, bytes(a), bytes(b), bytes(result));
  EXPECT_EQ(result.a, 0x000F);
  EXPECT_EQ(result.b, 0x1234);
  VXTypeBinaryOr(sparse, bytes(a), bytes(b), bytes(result));
  EXPECT_EQ(result.a, 0x0FFF);
  VXTypeBinaryXor(sparse, bytes(a), bytes(b), bytes(result));
  EXPECT_EQ(result.a, 0x0FF0);

  Vector3 vectorVoxel = {5.9, -1, 7};
  VXTypeBinaryAndInt(vector, bytes(vectorVoxel), 4, bytes(vectorVoxel));
  EXPECT_EQ(vectorVoxel, (Vector3{4, 4, 4})) << "read as int, in place";
}

TEST_F(TypeWrappersTest, BitsWithoutARecordAreReported) {
  const Sparse a = {1, 2};
  Sparse result = {3, 4};
  const std::vector<std::pair<const char*, std::function<void(const VXTypeInfos*)>>> calls = {
      {"VXTypeBinaryAndInt", [&](const VXTypeInfos* t) { VXTypeBinaryAndInt(t, bytes(a), 1, bytes(result)); }},
      {"VXTypeBinaryOrInt", [&](const VXTypeInfos* t) { VXTypeBinaryOrInt(t, bytes(a), 1, bytes(result)); }},
      {"VXTypeBinaryXorInt", [&](const VXTypeInfos* t) { VXTypeBinaryXorInt(t, bytes(a), 1, bytes(result)); }},
      {"VXTypeBinaryAnd", [&](const VXTypeInfos* t) { VXTypeBinaryAnd(t, bytes(a), bytes(a), bytes(result)); }},
      {"VXTypeBinaryOr", [&](const VXTypeInfos* t) { VXTypeBinaryOr(t, bytes(a), bytes(a), bytes(result)); }},
      {"VXTypeBinaryXor", [&](const VXTypeInfos* t) { VXTypeBinaryXor(t, bytes(a), bytes(a), bytes(result)); }},
  };
  for (const auto& [name, call] : calls) {
    call(nullptr);
    expectReport(name, badInfos);
  }
  VXTypeBinaryAnd(sparse, bytes(a), nullptr, bytes(result));
  expectReport("VXTypeBinaryAnd", badInfos);
  EXPECT_EQ(result.a, 3);
}

TEST_F(TypeWrappersTest, ACastWithinOneTypeCopiesTheBytes) {
  unsigned char source[12], result[12] = {};
  for (unsigned char i = 0; i < 12; ++i) source[i] = i;
  VXTypeCastToOtherType(mixed, source, mixed, result);
  EXPECT_EQ(std::memcmp(source, result, 12), 0) << "padding too";
}

TEST_F(TypeWrappersTest, ACastToAnotherTypeGoesByComponents) {
  const Mixed source = {-3, 2.5F, {9, 10, 11}};
  Vector3 target = {0, 0, 0};
  VXTypeCastToOtherType(mixed, bytes(source), vector, bytes(target));
  EXPECT_EQ(target, (Vector3{-3, 2.5, 9}));
  const Complex complexVoxel = {300.5F, -1};
  target = {7, 7, 7};
  VXTypeCastToOtherType(complex, bytes(complexVoxel), vector, bytes(target));
  EXPECT_EQ(target, (Vector3{300.5, -1, 7})) << "the components beyond stay";
  Mixed narrow = {0, 0, {1, 1, 1}};
  VXTypeCastToOtherType(complex, bytes(complexVoxel), mixed, bytes(narrow));
  EXPECT_EQ(narrow.id, 300);
  EXPECT_EQ(narrow.weight, -1.0F);
  EXPECT_EQ(narrow.rgb[0], 1);
  VXint16 number = 0;
  VXTypeCastToOtherType(complex, bytes(complexVoxel), VXGetTypeInfosForDataType(VXint16Type), bytes(number));
  EXPECT_EQ(number, 300);
}

TEST_F(TypeWrappersTest, ACastTakesNoMoreComponentsThanARecordHas) {
  const std::string codes(2 * VX_MAX_TYPE_COMPONENTS, 'c');
  VXTypeInfos from = {};
  from.dataType = -1;
  from.numComponents = static_cast<VXuint32>(codes.size());
  from.structInfoString = codes.c_str();
  VXTypeInfos to = from;
  for (VXuint32 i = 0; i < VX_MAX_TYPE_COMPONENTS; ++i) from.componentOffsets[i] = to.componentOffsets[i] = i;
  const std::vector<unsigned char> source(VX_MAX_TYPE_COMPONENTS, 7);
  std::vector<unsigned char> result(VX_MAX_TYPE_COMPONENTS);
  VXTypeCastToOtherType(&from, source.data(), &to, result.data());
  EXPECT_EQ(result, source);
}

TEST_F(TypeWrappersTest, RecordsThatAreNotRegisteredAreNotTakenForOneType) {
  VXTypeInfos a = *complex, b = *vector;
  a.dataType = b.dataType = -1;
  const Complex source = {1, 2};
  Vector3 target = {7, 7, 7};
  VXTypeCastToOtherType(&a, bytes(source), &b, bytes(target));
  EXPECT_EQ(target, (Vector3{1, 2, 7}));
}

TEST_F(TypeWrappersTest, CastsReportNullPointers) {
  Vector3 voxel = {1, 2, 3};
  VXTypeCastToOtherType(nullptr, bytes(voxel), vector, bytes(voxel));
  expectReport("VXTypeCastToOtherType", badOther);
  VXTypeCastToOtherType(vector, nullptr, vector, bytes(voxel));
  expectReport("VXTypeCastToOtherType", badOther);
  VXTypeCastToOtherType(vector, bytes(voxel), nullptr, bytes(voxel));
  expectReport("VXTypeCastToOtherType", badOther);
  VXTypeCastToOtherType(vector, bytes(voxel), vector, nullptr);
  expectReport("VXTypeCastToOtherType", badOther);
}

TEST_F(TypeWrappersTest, ComparisonsConvertTheOtherVoxelToMyType) {
  const Vector3 mine = {1.5, -2, 0};
  Complex other = {1.5F, -2};
  EXPECT_EQ(VXTypeIsEqualToOtherType(vector, bytes(mine), complex, bytes(other)), 1);
  EXPECT_EQ(VXTypeIsEqualToOtherType(vector, complex, bytes(other), bytes(mine)), 1) << "in the record's order";
  EXPECT_EQ(VXTypeIsSmallerThanOtherType(vector, bytes(mine), complex, bytes(other)), 0);
  other.re = 2;
  EXPECT_EQ(VXTypeIsEqualToOtherType(vector, bytes(mine), complex, bytes(other)), 0);
  EXPECT_EQ(VXTypeIsSmallerThanOtherType(vector, bytes(mine), complex, bytes(other)), 1);
  EXPECT_EQ(VXTypeIsGreaterThanOtherType(vector, bytes(mine), complex, bytes(other)), 0);
  other.re = 1;
  EXPECT_EQ(VXTypeIsGreaterThanOtherType(vector, bytes(mine), complex, bytes(other)), 1);
  EXPECT_EQ(VXTypeIsGreaterThanOtherType(vector, complex, bytes(other), bytes(mine)), 1);
  EXPECT_EQ(vector->isEqualToOtherType(complex, bytes(other), bytes(mine)), 0) << "through the record";
}

TEST_F(TypeWrappersTest, ComparisonsReportNullPointers) {
  const Vector3 voxel = {1, 2, 3};
  const unsigned char* const none = nullptr;
  EXPECT_EQ(VXTypeIsEqualToOtherType(vector, bytes(voxel), vector, none), 0);
  expectReport("VXTypeIsEqualToOtherType", badEqual);
  EXPECT_EQ(VXTypeIsSmallerThanOtherType(vector, none, vector, bytes(voxel)), 0);
  expectReport("VXTypeIsSmallerThanOtherType", badOrder);
  const VXTypeInfos* const noInfos = nullptr;
  EXPECT_EQ(VXTypeIsGreaterThanOtherType(noInfos, bytes(voxel), vector, bytes(voxel)), 0);
  expectReport("VXTypeIsGreaterThanOtherType", badOrder);
  EXPECT_EQ(VXTypeIsEqualToOtherType(nullptr, nullptr, nullptr, nullptr), 0);
  expectReport("VXTypeIsEqualToOtherType", badEqual);
  EXPECT_EQ(VXTypeIsSmallerThanOtherType(vector, nullptr, nullptr, nullptr), 0);
  expectReport("VXTypeIsSmallerThanOtherType", badOrder);
}

TEST_F(TypeWrappersTest, ArithmeticCastsTheOtherVoxelAndUsesMyOperation) {
  const Vector3 mine = {1, 2, 3};
  const Complex other = {10, 20};
  Vector3 result = {0, 0, 5};
  VXTypeAddOtherType(vector, bytes(mine), complex, bytes(other), bytes(result));
  EXPECT_EQ(result, (Vector3{11, 22, 8}));
  result = {0, 0, 0};
  VXTypeMultWithOtherType(vector, bytes(mine), complex, bytes(other), bytes(result));
  EXPECT_EQ(result, (Vector3{10, 40, 0}));
  result = {0, 0, 0};
  vector->plusOtherType(complex, bytes(other), bytes(mine), bytes(result));
  EXPECT_EQ(result, (Vector3{11, 22, 3})) << "through the record";
}

TEST_F(TypeWrappersTest, TheResultMayBeMyVoxel) {
  Vector3 mine = {1, 2, 3};
  const Complex other = {10, 20};
  VXTypeAddOtherType(vector, bytes(mine), complex, bytes(other), bytes(mine));
  EXPECT_EQ(mine, (Vector3{11, 22, 6})) << "a component that the other type lacks is its own operand";
}

TEST_F(TypeWrappersTest, TheResultMayBeTheOtherVoxel) {
  const Vector3 mine = {1, 2, 3};
  const Complex other = {10, 20};
  Vector3 voxel = {0, 0, 30};
  std::memcpy(&voxel, &other, sizeof other);
  VXTypeAddOtherType(vector, bytes(mine), complex, bytes(voxel), bytes(voxel));
  EXPECT_EQ(voxel, (Vector3{11, 22, 33})) << "wider components than those that are read";

  std::memcpy(&voxel, &other, sizeof other);
  VXTypeCastToOtherType(complex, bytes(voxel), vector, bytes(voxel));
  EXPECT_EQ(voxel, (Vector3{10, 20, 33}));
  VXTypeCastToOtherType(vector, bytes(voxel), complex, bytes(voxel));
  Complex back;
  std::memcpy(&back, &voxel, sizeof back);
  EXPECT_EQ(back, other);
}

TEST_F(TypeWrappersTest, AnOperationThatMyTypeLeavesOutIsReportedByItsDefault) {
  const Sparse mine = {1, 2};
  const Complex other = {10, 20};
  Sparse result = {};
  const Message invalid = {VX_FATAL, VX_MISUSED_INTERFACE, "_VXTypeInvalidOperation: Invalid type operation called",
                           "Ignoring call or returning 0."};
  VXTypeDivByOtherType(sparse, bytes(mine), complex, bytes(other), bytes(result));
  EXPECT_EQ(recorder.take(), std::vector<Message>{invalid});
  EXPECT_EQ(result.a, 10) << "the cast was done";
  VXTypeSubtractOtherType(sparse, bytes(mine), complex, bytes(other), bytes(result));
  EXPECT_EQ(recorder.take(), std::vector<Message>{invalid});
  VXTypePowerOfOtherType(sparse, bytes(mine), complex, bytes(other), bytes(result));
  EXPECT_EQ(recorder.take(), std::vector<Message>{invalid});
  EXPECT_EQ(VXTypeIsEqualToOtherType(sparse, bytes(mine), complex, bytes(other)), 0);
  EXPECT_EQ(recorder.take(), std::vector<Message>{invalid});
}

TEST_F(TypeWrappersTest, ArithmeticReportsNullPointers) {
  const Vector3 a = {1, 2, 3};
  Vector3 result = {7, 7, 7};
  const VXTypeInfos* const none = nullptr;
  VXTypeMultWithOtherType(vector, bytes(a), none, bytes(a), bytes(result));
  expectReport("VXTypeMultWithOtherType", badOther);
  VXTypeDivByOtherType(none, bytes(a), vector, bytes(a), bytes(result));
  expectReport("VXTypeDivByOtherType", badOther);
  VXTypeAddOtherType(vector, bytes(a), vector, static_cast<const unsigned char*>(nullptr), bytes(result));
  expectReport("VXTypeAddOtherType", badOther);
  VXTypeSubtractOtherType(vector, static_cast<const unsigned char*>(nullptr), vector, bytes(a), bytes(result));
  expectReport("VXTypeSubtractOtherType", badOther);
  VXTypePowerOfOtherType(vector, bytes(a), vector, bytes(a), nullptr);
  expectReport("VXTypePowerOfOtherType", badOther);
  VXTypeAddOtherType(nullptr, nullptr, nullptr, nullptr, nullptr);
  expectReport("VXTypeAddOtherType", badOther);
  EXPECT_EQ(result, (Vector3{7, 7, 7}));
}

TEST_F(TypeWrappersTest, TheLargestTypeWorksAsTheOthersDo) {
  Large a = {}, b = {}, result = {};
  for (VXuint32 i = 0; i < 128; ++i) {
    a.values[i] = i;
    b.values[i] = 1000;
  }
  VXTypeAddOtherType(large, bytes(a), large, bytes(b), bytes(a));
  EXPECT_EQ(a.values[0], 1000u);
  EXPECT_EQ(a.values[127], 1127u);
  large->multWithDouble(bytes(a), 2, bytes(result));
  EXPECT_EQ(result.values[127], 2254u);
}

}  // namespace
}  // namespace vx::test
