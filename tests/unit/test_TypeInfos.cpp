#include "MessageRecorder.h"
#include "TestTypes.h"

#include "vxMemory.h"
#include "vxTypeInfos.h"

#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

namespace vx::test {
namespace {

using Words = std::vector<VXuint32>;

Words wordsOf(const VXTypePropBits& bits) { return Words(bits.words, bits.words + 4); }

// The operations in record order.
const std::vector<std::string> operationNames = {"getStringValue",
                                                 "setStringValue",
                                                 "setToMinimum",
                                                 "setToMaximum",
                                                 "setToDefault",
                                                 "copy",
                                                 "castToBool",
                                                 "castToInt",
                                                 "castToDouble",
                                                 "castToOtherType",
                                                 "castFromBool",
                                                 "castFromInt",
                                                 "castFromDouble",
                                                 "castFromOtherType",
                                                 "binaryAndInt",
                                                 "binaryOrInt",
                                                 "binaryXorInt",
                                                 "binaryIntAnd",
                                                 "binaryIntOr",
                                                 "binaryIntXor",
                                                 "binaryAnd",
                                                 "binaryOr",
                                                 "binaryXor",
                                                 "shiftLeft",
                                                 "shiftRight",
                                                 "shiftIntLeft",
                                                 "shiftIntRight",
                                                 "isEqualToInt",
                                                 "isEqualToDouble",
                                                 "isIntEqualTo",
                                                 "isDoubleEqualTo",
                                                 "isEqualToType",
                                                 "isEqualToOtherType",
                                                 "isSmallerThanInt",
                                                 "isSmallerThanDouble",
                                                 "isIntSmallerThan",
                                                 "isDoubleSmallerThan",
                                                 "isSmallerThanType",
                                                 "isSmallerThanOtherType",
                                                 "isGreaterThanInt",
                                                 "isGreaterThanDouble",
                                                 "isIntGreaterThan",
                                                 "isDoubleGreaterThan",
                                                 "isGreaterThanType",
                                                 "isGreaterThanOtherType",
                                                 "invert",
                                                 "negate",
                                                 "normalize",
                                                 "multWithInt",
                                                 "multWithDouble",
                                                 "multIntWith",
                                                 "multDoubleWith",
                                                 "multWithType",
                                                 "multWithOtherType",
                                                 "divByInt",
                                                 "divByDouble",
                                                 "divIntBy",
                                                 "divDoubleBy",
                                                 "divByType",
                                                 "divByOtherType",
                                                 "plusInt",
                                                 "plusDouble",
                                                 "intPlus",
                                                 "doublePlus",
                                                 "plusType",
                                                 "plusOtherType",
                                                 "minusInt",
                                                 "minusDouble",
                                                 "intMinus",
                                                 "doubleMinus",
                                                 "minusType",
                                                 "minusOtherType",
                                                 "powerOfInt",
                                                 "powerOfDouble",
                                                 "powerIntOf",
                                                 "powerDoubleOf",
                                                 "powerOfType",
                                                 "powerOfOtherType",
                                                 "sinOfType",
                                                 "cosOfType",
                                                 "tanOfType",
                                                 "asinOfType",
                                                 "acosOfType",
                                                 "atanOfType",
                                                 "sinhOfType",
                                                 "coshOfType",
                                                 "tanhOfType",
                                                 "expOfType",
                                                 "logOfType",
                                                 "sqrtOfType"};

TEST(TypeInfosLayoutTest, TheOperationsStandInTheirOrderWithoutGaps) {
  ASSERT_EQ(operationNames.size(), 90u);
  std::size_t index = 0;
#define VX_CHECK_MEMBER(member, ...)                                                                            \
  EXPECT_EQ(operationNames[index], #member);                                                                    \
  EXPECT_EQ(offsetof(VXTypeInfos, member), offsetof(VXTypeInfos, getStringValue) + index * sizeof(void (*)())); \
  ++index;
  VX_FOR_EACH_TYPE_OPERATION(VX_CHECK_MEMBER, VX_CHECK_MEMBER)
#undef VX_CHECK_MEMBER
  EXPECT_EQ(index, 90u);
}

TEST(TypeInfosLayoutTest, TheOtherMembersStandInTheirOrder) {
  static_assert(std::is_standard_layout_v<VXTypeInfos> && std::is_trivially_copyable_v<VXTypeInfos>);
  const std::size_t offsets[] = {offsetof(VXTypeInfos, numComponents),
                                 offsetof(VXTypeInfos, typeSize),
                                 offsetof(VXTypeInfos, physicalType),
                                 offsetof(VXTypeInfos, physicalSize),
                                 offsetof(VXTypeInfos, name),
                                 offsetof(VXTypeInfos, rangeAndPrecisionEquivalent),
                                 offsetof(VXTypeInfos, typeMinDbl),
                                 offsetof(VXTypeInfos, typeMaxDbl),
                                 offsetof(VXTypeInfos, typeMinPtr),
                                 offsetof(VXTypeInfos, typeMaxPtr),
                                 offsetof(VXTypeInfos, typeDefaultPtr),
                                 offsetof(VXTypeInfos, numGoodCastTos),
                                 offsetof(VXTypeInfos, goodCastTos),
                                 offsetof(VXTypeInfos, componentOffsets),
                                 offsetof(VXTypeInfos, structInfoString),
                                 offsetof(VXTypeInfos, dataType),
                                 offsetof(VXTypeInfos, propertyBits),
                                 offsetof(VXTypeInfos, getStringValue)};
  for (std::size_t i = 1; i < std::size(offsets); ++i) EXPECT_LT(offsets[i - 1], offsets[i]) << i;
  EXPECT_EQ(sizeof(VXTypeInfos::componentOffsets), 512 * sizeof(VXuint32));
  EXPECT_EQ(sizeof(VXTypePropBits), 16u);
}

TEST(TypePropertiesTest, EachOperationHasItsWordAndBit) {
  // First operation, word, first bit, number of operations in record order.
  const struct {
    const char* first;
    std::size_t word;
    unsigned int bit;
    std::size_t count;
  } runs[] = {{"getStringValue", 3, 0, 2}, {"setToMinimum", 3, 8, 21}, {"shiftLeft", 2, 0, 2},
              {"isEqualToInt", 1, 0, 18},  {"invert", 2, 2, 3},        {"multWithInt", 1, 18, 14},
              {"intPlus", 0, 0, 28}};
  const std::vector<std::pair<std::string, Words>> constants = {
#define VX_CONSTANT(member, Name, ...) {#member, wordsOf(VXTypeHas##Name)},
#define VX_NO_CONSTANT(member, ...)
      VX_FOR_EACH_TYPE_OPERATION(VX_CONSTANT, VX_NO_CONSTANT)
#undef VX_CONSTANT
#undef VX_NO_CONSTANT
  };
  std::size_t index = 0;
  for (const auto& run : runs) {
    ASSERT_LT(index, constants.size());
    EXPECT_EQ(constants[index].first, run.first);
    for (std::size_t i = 0; i < run.count; ++i, ++index) {
      ASSERT_LT(index, constants.size());
      Words expected = {0, 0, 0, 0};
      expected[run.word] = 1U << (run.bit + i);
      EXPECT_EQ(constants[index].second, expected) << constants[index].first;
    }
  }
  EXPECT_EQ(index, 88u);
  EXPECT_EQ(constants.size(), 88u);
}

TEST(TypePropertiesTest, SomeConstantsByTheirNames) {
  EXPECT_EQ(wordsOf(VXTypeHasGetStringValue), (Words{0, 0, 0, 0x00000001}));
  EXPECT_EQ(wordsOf(VXTypeHasCastToDouble), (Words{0, 0, 0, 0x00004000}));
  EXPECT_EQ(wordsOf(VXTypeHasBinaryXor), (Words{0, 0, 0, 0x10000000}));
  EXPECT_EQ(wordsOf(VXTypeHasNormalize), (Words{0, 0, 0x00000010, 0}));
  EXPECT_EQ(wordsOf(VXTypeHasPlusDouble), (Words{0, 0x80000000, 0, 0}));
  EXPECT_EQ(wordsOf(VXTypeHasIntPlus), (Words{0x00000001, 0, 0, 0}));
  EXPECT_EQ(wordsOf(VXTypeHasSqrtOfType), (Words{0x08000000, 0, 0, 0}));
}

TEST(TypePropertiesTest, KindsAndSetsHaveTheirWords) {
  EXPECT_EQ(wordsOf(VXTypeIsSignedType), (Words{0, 0, 0, 0x10}));
  EXPECT_EQ(wordsOf(VXTypeIsFloatingPointType), (Words{0, 0, 0, 0x20}));
  EXPECT_EQ(wordsOf(VXTypeIsIntegerType), (Words{0, 0, 0, 0x40}));
  EXPECT_EQ(wordsOf(VXTypeIsBasicType), (Words{0, 0, 0, 0x80}));
  EXPECT_EQ(wordsOf(VXTypeHasNoProperties), (Words{0, 0, 0, 0}));
  EXPECT_EQ(wordsOf(VXTypeOnlyStandardTypes), (Words{0x0000ffff, 0xffffffff, 0x0000001f, 0x1fffff83}));
  EXPECT_EQ(wordsOf(VXTypeFullyOperational), (Words{0x0000ffff, 0xffffffff, 0x0000001f, 0x1fffff03}));
  EXPECT_EQ(wordsOf(VXTypeMinimumOperational), (Words{0x00000000, 0x00f0f000, 0x00000000, 0x000ff003}));
}

TEST(TypePropertiesTest, CombineWordByWord) {
  const VXTypePropBits a = {{0xF0F0F0F0, 0x0000FFFF, 1, 0}};
  const VXTypePropBits b = {{0xFF00FF00, 0x00FF00FF, 2, 8}};
  EXPECT_EQ(wordsOf(VXTypePropBitsOr(a, b)), (Words{0xFFF0FFF0, 0x00FFFFFF, 3, 8}));
  EXPECT_EQ(wordsOf(VXTypePropBitsAnd(a, b)), (Words{0xF000F000, 0x000000FF, 0, 0}));
  EXPECT_EQ(wordsOf(VXTypePropBitsXor(a, b)), (Words{0x0FF00FF0, 0x00FFFF00, 3, 8}));
  EXPECT_EQ(VXTypePropBitsTest(a, VXTypeHasNoProperties), 1);
  EXPECT_EQ(VXTypePropBitsTest(a, a), 1);
  EXPECT_EQ(VXTypePropBitsTest(a, b), 0);
  EXPECT_EQ(VXTypePropBitsTest(VXTypePropBitsOr(a, b), b), 1);
  EXPECT_EQ(VXTypePropBitsTest(VXTypeOnlyStandardTypes, VXTypeFullyOperational), 1);
  EXPECT_EQ(VXTypePropBitsTest(VXTypeFullyOperational, VXTypeOnlyStandardTypes), 0);
  for (std::size_t word = 0; word < 4; ++word) {
    VXTypePropBits oneWord = {};
    oneWord.words[word] = 1;
    EXPECT_EQ(VXTypePropBitsTest(VXTypeHasNoProperties, oneWord), 0) << word;
  }
}

// Filling a record ---------------------------------------------------------------------------------------------------

// Arguments of VXTypeInfosInit() that are good; a test spoils one of them.
struct InitArguments {
  VXTypeInfos infos = {};
  VXTypeInfos* target = &infos;
  VXuint64 size = 8;
  const char* name = "a type";
  std::string codes = "ff";
  const char* codesPtr = nullptr;
  bool isCodesNull = false;
  int isBasic = 0;
  VXDataType equivalent = VXfloatType;
  unsigned char voxel[1024] = {};
  const unsigned char* addresses[520];
  bool hasAddresses = true;

  InitArguments() {
    for (std::size_t i = 0; i < std::size(addresses); ++i) addresses[i] = voxel + 4 * (i % 2);
  }
  int init() {
    return VXTypeInfosInit(target, size, name, -1.5, 2.5, voxel, voxel + 8, voxel + 16,
                           isCodesNull ? nullptr : codes.c_str(), isBasic, equivalent,
                           hasAddresses ? addresses : nullptr, 0, nullptr);
  }
};

class TypeInfosInitTest : public ::testing::Test {
 protected:
  InitArguments arguments;
  MessageRecorder recorder;
};

TEST_F(TypeInfosInitTest, StoresTheFields) {
  VXTypeSetDefaultFunctionPointers(&arguments.infos);
  arguments.infos.dataType = 5;
  ASSERT_EQ(arguments.init(), 1);
  const VXTypeInfos& infos = arguments.infos;
  EXPECT_EQ(infos.numComponents, 2u);
  EXPECT_EQ(infos.typeSize, 8u);
  EXPECT_EQ(infos.physicalType, 11);
  EXPECT_EQ(infos.physicalSize, 8u);
  EXPECT_STREQ(infos.name, "a type");
  EXPECT_EQ(infos.rangeAndPrecisionEquivalent, VXfloatType);
  EXPECT_EQ(infos.typeMinDbl, -1.5);
  EXPECT_EQ(infos.typeMaxDbl, 2.5);
  EXPECT_EQ(infos.typeMinPtr, arguments.voxel);
  EXPECT_EQ(infos.typeMaxPtr, arguments.voxel + 8);
  EXPECT_EQ(infos.typeDefaultPtr, arguments.voxel + 16);
  EXPECT_EQ(infos.numGoodCastTos, 0u);
  EXPECT_EQ(infos.componentOffsets[0], 0u);
  EXPECT_EQ(infos.componentOffsets[1], 4u);
  EXPECT_EQ(infos.dataType, -1);
  EXPECT_EQ(wordsOf(infos.propertyBits), (Words{0, 0, 0, 0x30})) << "signed, floating point, no operation";
  EXPECT_TRUE(recorder.take().empty());
}

TEST_F(TypeInfosInitTest, RefusesBadArgumentsSilently) {
  arguments.target = nullptr;
  EXPECT_EQ(arguments.init(), 0);
  arguments = InitArguments();
  arguments.name = nullptr;
  EXPECT_EQ(arguments.init(), 0);
  arguments.name = "";
  EXPECT_EQ(arguments.init(), 0);
  const std::string longName(257, 'n');
  arguments.name = longName.c_str();
  EXPECT_EQ(arguments.init(), 0);
  arguments.target = &arguments.infos;
  arguments.name = longName.c_str() + 1;
  EXPECT_EQ(arguments.init(), 1) << "256 characters";

  arguments.codes = "";
  EXPECT_EQ(arguments.init(), 0);
  arguments.isCodesNull = true;
  EXPECT_EQ(arguments.init(), 0);
  arguments.isCodesNull = false;
  arguments.codes = std::string(513, 'c');
  EXPECT_EQ(arguments.init(), 0);
  arguments.codes = std::string(512, 'c');
  EXPECT_EQ(arguments.init(), 1);

  for (const VXDataType equivalent : {-1, 10, 11}) {
    arguments.equivalent = equivalent;
    EXPECT_EQ(arguments.init(), 0) << equivalent;
  }
  arguments.equivalent = 9;
  EXPECT_EQ(arguments.init(), 1);
  for (const VXuint64 size : {VXuint64{0}, VXuint64{513}, ~VXuint64{0}}) {
    arguments.size = size;
    EXPECT_EQ(arguments.init(), 0) << size;
  }
  EXPECT_TRUE(recorder.take().empty());
}

TEST_F(TypeInfosInitTest, ReportsMissingComponentAddresses) {
  arguments.hasAddresses = false;
  EXPECT_EQ(arguments.init(), 0);
  EXPECT_EQ(recorder.take(),
            (std::vector<Message>{{VX_FATAL, VX_BAD_POINTER, "VXTypeInfosInit",
                                   "Could not determine component addresses. Not registering types."}}));
  arguments.name = "";
  EXPECT_EQ(arguments.init(), 0);
  EXPECT_TRUE(recorder.take().empty()) << "the other arguments are tested first";
}

TEST_F(TypeInfosInitTest, ABasicTypeIsStoredInTheStandardTypeOfItsComponents) {
  const struct {
    const char* codes;
    VXuint64 size;
    VXDataType expected;
  } rows[] = {
      {"c", 1, 1},   {"s", 2, 3},  {"i", 4, 5},  {"l", 4, 5},   {"b", 1, 1},  {"i", 8, -1}, {"c", 3, -1}, {"C", 1, 0},
      {"S", 2, 2},   {"I", 4, 4},  {"L", 4, 4},  {"6", 8, 9},   {"I", 8, -1}, {"6", 4, -1}, {"6", 1, 0},  {"f", 4, 6},
      {"f", 8, 7},   {"d", 8, 7},  {"D", 8, 8},  {"D", 4, 6},   {"d", 2, -1}, {"ff", 8, 7}, {"cc", 2, 3}, {"Cf", 4, 6},
      {"cf", 4, -1}, {"?", 4, -1}, {"I", 0, -1}, {"f", 16, -1}, {"6D", 8, 8}, {"6d", 8, 7},
  };
  arguments.isBasic = 1;
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.codes) + " " + std::to_string(row.size));
    arguments.codes = row.codes;
    arguments.size = row.size;
    EXPECT_EQ(arguments.init(), row.expected >= 0 ? 1 : 0);
    if (row.expected >= 0) {
      EXPECT_EQ(arguments.infos.physicalType, row.expected);
      EXPECT_EQ(arguments.infos.physicalSize, VXSizeOfPhysicalType(row.expected));
      EXPECT_EQ(VXTypePropBitsTest(arguments.infos.propertyBits, VXTypeIsBasicType), 1);
    }
  }
  EXPECT_TRUE(recorder.take().empty());
}

TEST_F(TypeInfosInitTest, TakesComponentAddressesOfAnyPointerType) {
  struct {
    short a;
    short b;
  } voxel = {};
  short* shorts[] = {&voxel.a, &voxel.b};
  const void* voids[] = {&voxel.a, &voxel.b};
  VXTypeInfos infos = {};
  ASSERT_EQ(VXTypeInfosInit(&infos, 4, "t", 0, 1, &voxel, &voxel, &voxel, "SS", 0, 2, shorts, 0, nullptr), 1);
  EXPECT_EQ(infos.componentOffsets[1], 2u);
  infos.componentOffsets[1] = 0;
  ASSERT_EQ(VXTypeInfosInit(&infos, 4, "t", 0, 1, &voxel, &voxel, &voxel, "SS", 0, 2, voids, 0, nullptr), 1);
  EXPECT_EQ(infos.componentOffsets[1], 2u);
}

// Defaults -----------------------------------------------------------------------------------------------------------

// Calls an operation with zeros; returns whether the result is empty.
template <class Result, class... Args>
bool callWithZeros(Result (*operation)(Args...)) {
  if constexpr (std::is_void_v<Result>) {
    operation(Args{}...);
    return true;
  } else if constexpr (std::is_same_v<Result, char*>) {
    const MemoryPtr<char> text(operation(Args{}...));
    return text && !*text;
  } else {
    return operation(Args{}...) == 0;
  }
}

TEST(TypeDefaultsTest, ReportAndReturnNothing) {
  VXTypeInfos infos = {};
  VXTypeSetDefaultFunctionPointers(&infos);
  MessageRecorder recorder;
  const std::vector<Message> expected = {{VX_FATAL, VX_MISUSED_INTERFACE,
                                          "_VXTypeInvalidOperation: Invalid type operation called",
                                          "Ignoring call or returning 0."}};
#define VX_CALL(member, Name, signature, word, bit, reported) \
  EXPECT_TRUE(callWithZeros(infos.member)) << #member;        \
  EXPECT_EQ(recorder.take(), expected) << #member;
#define VX_HAS_NONE(member, Name, signature) EXPECT_EQ(infos.member, nullptr) << #member;
  VX_FOR_EACH_TYPE_OPERATION(VX_CALL, VX_HAS_NONE)
#undef VX_CALL
#undef VX_HAS_NONE
}

TEST(TypeDefaultsTest, LeaveShiftsOfNumbersAlone) {
  VXTypeInfos infos = {};
  infos.shiftIntLeft = [](int, const unsigned char*, unsigned char*) {};
  const auto before = infos.shiftIntLeft;
  VXTypeSetDefaultFunctionPointers(&infos);
  EXPECT_EQ(infos.shiftIntLeft, before);
}

TEST(TypeDefaultsTest, IgnoreNull) {
  VXTypeSetDefaultFunctionPointers(nullptr);
  VXTypeCorrectPropertyBits(nullptr);
}

TEST(TypeDefaultsTest, EachOperationThatDiffersSetsItsOwnBitAlone) {
  VXTypeInfos infos = {};
  infos.propertyBits = {{~0U, ~0U, ~0U, ~0U}};
  VXTypeSetDefaultFunctionPointers(&infos);
  VXTypeCorrectPropertyBits(&infos);
  EXPECT_EQ(wordsOf(infos.propertyBits), (Words{0, 0, 0, 0xF0})) << "the kind of type stays";
#define VX_CHANGE(member, Name, signature, word, bit, reported)                                                       \
  {                                                                                                                   \
    const auto before = infos.member;                                                                                 \
    infos.member = nullptr;                                                                                           \
    VXTypeCorrectPropertyBits(&infos);                                                                                \
    EXPECT_EQ(wordsOf(infos.propertyBits), wordsOf(VXTypePropBitsOr(VXTypeHas##Name, {{0, 0, 0, 0xF0}}))) << #member; \
    infos.member = before;                                                                                            \
  }
#define VX_NO_CHANGE(member, Name, signature)
  VX_FOR_EACH_TYPE_OPERATION(VX_CHANGE, VX_NO_CHANGE)
#undef VX_CHANGE
#undef VX_NO_CHANGE
}

// Registration -------------------------------------------------------------------------------------------------------

TEST(TypeRegistrationTest, GivesTheNextNumberOnce) {
  ASSERT_EQ(VXInitializeTypes(), 1);
  static InitArguments arguments;
  arguments.name = "registered once";
  VXTypeSetDefaultFunctionPointers(&arguments.infos);
  ASSERT_EQ(arguments.init(), 1);
  EXPECT_EQ(VXIsRegisteredTypeInfos(&arguments.infos), 0);
  const VXint32 numTypes = VXNumDataTypes();
  EXPECT_EQ(VXGetNumRegisteredTypeInfos(), numTypes);
  EXPECT_EQ(VXRegisterTypeInfos(&arguments.infos), 1);
  EXPECT_EQ(arguments.infos.dataType, numTypes);
  EXPECT_EQ(VXNumDataTypes(), numTypes + 1);
  EXPECT_EQ(VXGetNumRegisteredTypeInfos(), numTypes + 1);
  EXPECT_EQ(VXIsRegisteredTypeInfos(&arguments.infos), 1);
  EXPECT_EQ(VXGetTypeInfosForDataType(numTypes), &arguments.infos);
  EXPECT_EQ(VXTypeInfosAtIdx(numTypes), &arguments.infos);
  EXPECT_STREQ(VXNameFromDataType(numTypes), "registered once");
  EXPECT_STREQ(VXTypeGetStructInfoString(numTypes), "ff");

  EXPECT_EQ(VXRegisterTypeInfos(&arguments.infos), 0) << "a second time";
  EXPECT_EQ(VXNumDataTypes(), numTypes + 1);
}

TEST(TypeRegistrationTest, RefusesNullAndNoName) {
  const VXint32 numTypes = VXNumDataTypes();
  VXTypeInfos infos = {};
  EXPECT_EQ(VXRegisterTypeInfos(nullptr), 0);
  EXPECT_EQ(VXRegisterTypeInfos(&infos), 0);
  infos.name = "";
  EXPECT_EQ(VXRegisterTypeInfos(&infos), 0);
  EXPECT_EQ(VXIsRegisteredTypeInfos(&infos), 0);
  EXPECT_EQ(VXIsRegisteredTypeInfos(nullptr), 0);
  EXPECT_EQ(VXNumDataTypes(), numTypes);
}

TEST(TypeRegistrationTest, NeedsNoMoreThanAName) {
  static VXTypeInfos named = {};
  named.name = "no more than a name";
  named.numComponents = 1;
  static VXTypeInfos withoutSize = named;
  withoutSize.structInfoString = "d";
  EXPECT_EQ(VXRegisterTypeInfos(&named), 1);
  EXPECT_EQ(VXRegisterTypeInfos(&withoutSize), 1);
  EXPECT_EQ(VXSizeOf(withoutSize.dataType), 0U);
}

TEST(TypeRegistrationTest, OfTwoTypesWithOneNameTheFirstIsFound) {
  static InitArguments first, second;
  first.name = second.name = "a shared name";
  ASSERT_EQ(first.init() & second.init(), 1);
  ASSERT_EQ(VXRegisterTypeInfos(&first.infos) & VXRegisterTypeInfos(&second.infos), 1);
  EXPECT_EQ(VXDataTypeFromName("a shared name"), first.infos.dataType);
}

TEST(TypeRegistrationTest, TheArraysGrowBeyondWhatIsReserved) {
  static std::vector<InitArguments> many(2100);
  const VXint32 numTypes = VXNumDataTypes();
  for (InitArguments& arguments : many) {
    arguments.target = &arguments.infos;
    arguments.name = "one of many";
    ASSERT_EQ(arguments.init(), 1);
  }
  for (InitArguments& arguments : many) ASSERT_EQ(VXRegisterTypeInfos(&arguments.infos), 1);
  EXPECT_EQ(VXNumDataTypes(), numTypes + 2100);
  EXPECT_EQ(VXGetTypeInfosForDataType(numTypes + 2099), &many[2099].infos);
  EXPECT_STREQ(VXDataTypeNames()[numTypes + 2099], "one of many");
  EXPECT_STREQ(VXNameFromDataType(0), "int8");
}

#ifndef NDEBUG
TEST(TypeRegistrationDeathTest, ARecordThatLiesAboutItsSizesIsFoundInDebugBuilds) {
  static InitArguments arguments;
  arguments.size = 4;
  ASSERT_EQ(arguments.init(), 1);
  EXPECT_DEATH(VXRegisterTypeInfos(&arguments.infos), "areSizesConsistent");
}
#endif

TEST(TypeStartUpTest, RunsOnceAndFillsTheStandardSlots) {
  ASSERT_EQ(VXInitializeTypes(), 1);
  EXPECT_EQ(VXAreTypesInitialized(), 1);
  const VXint32 numTypes = VXNumDataTypes();
  EXPECT_EQ(VXInitializeTypes(), 1);
  EXPECT_EQ(VXNumDataTypes(), numTypes);
  for (VXDataType slot = 0; slot < 10; ++slot) {
    EXPECT_EQ(std::memcmp(&VXTypeInfosTable[slot], VXGetTypeInfosForDataType(slot), sizeof(VXTypeInfos)), 0) << slot;
    EXPECT_EQ(VXTypeInfosTable[slot].dataType, slot);
  }
  for (VXint32 slot = 10; slot < 40; ++slot) EXPECT_EQ(VXTypeInfosTable[slot].dataType, -1) << slot;
}

TEST(TypeStartUpTest, ShutdownLeavesTheTypes) {
  ASSERT_EQ(VXInitializeTypes(), 1);
  VXDestroyTypes();
  EXPECT_EQ(VXAreTypesInitialized(), 1);
  EXPECT_STREQ(VXNameFromDataType(VXint64Type), "int64");
}

// What follows from a record -----------------------------------------------------------------------------------------

TEST(BestScalarTypeTest, PromotesOverAllComponents) {
  ASSERT_EQ(VXInitializeTypes(), 1);
  const struct {
    const char* chars;
    int noInt64, noLongDouble;
    VXDataType expected;
  } rows[] = {
      {nullptr, 0, 0, -1}, {"", 0, 0, -1},  {"f", 0, 0, 6},    {"?", 0, 0, -1}, {"cC", 0, 0, 2},
      {"Sfccc", 0, 0, 6},  {"iI", 0, 0, 6}, {"c?f", 0, 0, -1}, {"cc", 0, 0, 1}, {"6", 0, 0, 9},
      {"6", 1, 0, 7},      {"D", 0, 0, 8},  {"D", 0, 1, 7},    {"6f", 0, 0, 6}, {"dD", 1, 0, 8},
      {"dD", 0, 1, 7},     {"I6", 1, 1, 7}, {"b", 0, 0, 1},    {"?f", 0, 0, 6},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(VXTypeGetBestScalarTypeForTypeComponentChars(row.chars, row.noInt64, row.noLongDouble), row.expected)
        << (row.chars ? row.chars : "null") << row.noInt64 << row.noLongDouble;
  }
  ASSERT_TRUE(registerTestTypes());
  EXPECT_EQ(VXTypeGetBestScalarTypeForTypeComponents(mixedType(), 0, 0), VXfloatType);
  EXPECT_EQ(VXTypeGetBestScalarTypeForTypeComponents(VXint64Type, 1, 0), VXdoubleType);
  EXPECT_EQ(VXTypeGetBestScalarTypeForTypeComponents(-1, 0, 0), -1);
}

TEST(VoxelBufferTest, HasThePhysicalSize) {
  ASSERT_TRUE(registerTestTypes());
  unsigned char* const buffer = VXTypeInfosCreateBuffer(VXGetTypeInfosForDataType(largeType()));
  ASSERT_NE(buffer, nullptr);
  std::memset(buffer, 1, 512);
  VXTypeInfosRemoveBuffer(buffer);
  VXTypeInfosRemoveBuffer(nullptr);
  EXPECT_EQ(VXTypeInfosCreateBuffer(nullptr), nullptr);
}

TEST(VoxelBufferTest, SetsEachVoxelToTheDefault) {
  ASSERT_TRUE(registerTestTypes());
  const Vector3 value = {1, 2, 3};
  const MemoryPtr<unsigned char> voxels(VXAllocateVoxelBuffer(vector3Type(), 5, &value));
  ASSERT_TRUE(voxels);
  for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(std::memcmp(voxels.get() + 24 * i, &value, 24), 0) << i;
  const MemoryPtr<unsigned char> plain(VXAllocateVoxelBuffer(VXint16Type, 3, nullptr));
  EXPECT_TRUE(plain);
  EXPECT_EQ(VXAllocateVoxelBuffer(-1, 1, nullptr), nullptr);
  EXPECT_EQ(VXAllocateVoxelBuffer(vector3Type(), ~0ULL / 8, &value), nullptr) << "a size beyond 64 bits";
}

TEST(VoxelBufferTest, ReadsNoMoreOfTheDefaultThanItsAuthorDeclared) {
  static InitArguments arguments;
  arguments.name = "nine bytes";
  arguments.codes = "c";
  arguments.size = 9;
  ASSERT_EQ(arguments.init(), 1);
  ASSERT_EQ(VXRegisterTypeInfos(&arguments.infos), 1);
  const MemoryPtr<unsigned char> value(static_cast<unsigned char*>(VXMemDup("123456789", 9, VX_RETURN_NULL)));
  const MemoryPtr<unsigned char> voxels(VXAllocateVoxelBuffer(arguments.infos.dataType, 2, value.get()));
  ASSERT_TRUE(voxels);
  EXPECT_EQ(std::memcmp(voxels.get(),
                        "123456789\0\0\0"
                        "123456789\0\0\0",
                        24),
            0);
}

TEST(VoxelValueTest, IsReadThroughTheTypesCast) {
  ASSERT_TRUE(registerTestTypes());
  VXErrorCode code = 99;
  const VXint16 number = -300;
  EXPECT_EQ(VXGetVoxelValueAsDouble(&number, VXint16Type, &code), -300);
  EXPECT_EQ(code, 0);
  const VXint64 big = 1LL << 40;
  EXPECT_EQ(VXGetVoxelValueAsDouble(&big, VXint64Type), 1099511627776.0);
  const Vector3 vector = {2.5, 3, 4};
  EXPECT_EQ(VXGetVoxelValueAsDouble(&vector, vector3Type(), &code), 2.5);
  EXPECT_EQ(code, 0);
  const Sparse sparse = {5, 6};
  EXPECT_EQ(VXGetVoxelValueAsDouble(&sparse, sparseType(), &code), 0);
  EXPECT_EQ(code, VX_BAD_DATA_TYPE) << "the cast is left out";
  code = 0;
  EXPECT_EQ(VXGetVoxelValueAsDouble(&sparse, -1, &code), 0);
  EXPECT_EQ(code, VX_BAD_DATA_TYPE);
  EXPECT_EQ(VXGetVoxelValueAsDouble(&sparse, -1, nullptr), 0);
  EXPECT_EQ(VXGetVoxelValueAsDouble(nullptr, VXint16Type, &code), 0);
  EXPECT_EQ(code, VX_BAD_POINTER);
}

}  // namespace
}  // namespace vx::test
