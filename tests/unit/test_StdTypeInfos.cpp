// The records of the standard types, their casts, comparisons and texts.

#include "MessageRecorder.h"
#include "StandardTypeFixture.h"

#include "vxUtilsAPI.h"

#include <climits>
#include <cmath>
#include <cstring>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

namespace {

using namespace vx::test;

template <class T>
class StdTypeOperationsTest : public StandardTypeFixture<T> {};
TYPED_TEST_SUITE(StdTypeOperationsTest, StandardTypes);

template <std::size_t count>
void expectComparisons(const short (&results)[count], const bool (&expected)[count], const testing::Message& operands) {
  for (std::size_t i = 0; i < count; ++i)
    EXPECT_EQ(results[i], expected[i] ? 1 : 0) << "comparison " << i << " of " << operands;
}

TYPED_TEST(StdTypeOperationsTest, LimitsAndDefaultAreWritten) {
  using S = typename TestFixture::Voxel;
  using Infos = typename TestFixture::StdInfos;
  const auto written = [](VXTypeSetOp operation) {
    GuardedVoxel<S> voxel(7);
    operation(voxel.data());
    return voxel.value();
  };
  EXPECT_EQ(written(this->record().setToMinimum), std::numeric_limits<S>::lowest());
  EXPECT_EQ(written(this->record().setToMaximum), std::numeric_limits<S>::max());
  EXPECT_EQ(written(this->record().setToDefault), S(0));
  EXPECT_EQ(Infos::_typeMin, static_cast<TypeParam>(std::numeric_limits<S>::lowest()));
  EXPECT_EQ(Infos::_typeMax, static_cast<TypeParam>(std::numeric_limits<S>::max()));
  EXPECT_EQ(Infos::_typeDefault, TypeParam(0));
}

TYPED_TEST(StdTypeOperationsTest, CopyKeepsEveryBit) {
  using S = typename TestFixture::Voxel;
  this->testUnary(this->record().copy, "copy", [](S v) { return v; });
  unsigned char bytes[sizeof(S)];
  unsigned char copy[sizeof(S)] = {};
  std::memset(bytes, 0xFF, sizeof bytes);
  this->record().copy(bytes, copy);
  EXPECT_EQ(std::memcmp(bytes, copy, sizeof bytes), 0);
}

TYPED_TEST(StdTypeOperationsTest, CastsToNumbers) {
  using S = typename TestFixture::Voxel;
  for (const S v : interestingVoxels<S>()) {
    GuardedVoxel<S> voxel(v);
    bool isTrue;
    if constexpr (TestFixture::isInteger) {
      isTrue = v != 0;
    } else {
      isTrue = std::fabs(v) >= (sizeof(S) == 4 ? S(1.1754944e-38) : S(2.2250738585072014e-308));
    }
    EXPECT_EQ(this->record().castToBool(voxel.data()), isTrue ? 1 : 0) << Printed<S>{v};
    EXPECT_EQ(this->record().castToInt(voxel.data()), castNumber<int>(v)) << Printed<S>{v};
    EXPECT_TRUE(isSame(this->record().castToDouble(voxel.data()), static_cast<double>(v))) << Printed<S>{v};
  }
}

TYPED_TEST(StdTypeOperationsTest, CastsFromNumbers) {
  using S = typename TestFixture::Voxel;
  for (const int x : interestingInts) {
    GuardedVoxel<S> voxel;
    this->record().castFromInt(x, voxel.data());
    EXPECT_TRUE(isSame(voxel.value(), castNumber<S>(x))) << x;
    const auto b = static_cast<short>(x);
    this->record().castFromBool(b, voxel.data());
    EXPECT_TRUE(isSame(voxel.value(), castNumber<S>(b))) << b;
  }
  for (const double x : interestingDoubles) {
    GuardedVoxel<S> voxel;
    this->record().castFromDouble(x, voxel.data());
    EXPECT_TRUE(isSame(voxel.value(), truncated<S>(x))) << x;
  }
}

TYPED_TEST(StdTypeOperationsTest, ComparisonsCastTheNumberToAnIntegerTypeFirst) {
  using S = typename TestFixture::Voxel;
  const VXTypeInfos& record = this->record();
  using F = TestFixture;
  for (const S v : interestingVoxels<S>()) {
    GuardedVoxel<S> voxel(v);
    const unsigned char* const p = voxel.data();
    const auto testNumber = [&](auto x, auto equal, auto equalTo, auto smaller, auto smallerThan, auto greater,
                                auto greaterThan) {
      const short results[] = {equal(p, x),       equalTo(x, p), smaller(p, x),
                               smallerThan(x, p), greater(p, x), greaterThan(x, p)};
      const bool expected[] = {F::isEqual(v, x),   F::isEqual(x, v),   F::isSmaller(v, x),
                               F::isSmaller(x, v), F::isSmaller(x, v), F::isSmaller(v, x)};
      expectComparisons(results, expected, testing::Message() << Printed<S>{v} << " and " << x);
    };
    for (const int x : interestingInts) {
      testNumber(x, record.isEqualToInt, record.isIntEqualTo, record.isSmallerThanInt, record.isIntSmallerThan,
                 record.isGreaterThanInt, record.isIntGreaterThan);
    }
    for (const double x : interestingDoubles) {
      testNumber(x, record.isEqualToDouble, record.isDoubleEqualTo, record.isSmallerThanDouble,
                 record.isDoubleSmallerThan, record.isGreaterThanDouble, record.isDoubleGreaterThan);
    }
    for (const S w : interestingVoxels<S>()) {
      GuardedVoxel<S> second(w);
      const unsigned char* const q = second.data();
      const short results[] = {record.isEqualToType(p, q), record.isSmallerThanType(p, q),
                               record.isGreaterThanType(p, q)};
      const bool expected[] = {F::isEqual(v, w), F::isSmaller(v, w), F::isSmaller(w, v)};
      expectComparisons(results, expected, testing::Message() << Printed<S>{v} << " and " << Printed<S>{w});
    }
  }
}

TYPED_TEST(StdTypeOperationsTest, AnotherTypeIsCastToThisOne) {
  using S = typename TestFixture::Voxel;
  const VXTypeInfos& record = this->record();
  const VXTypeInfos* const other = VXGetTypeInfosForDataType(VXdoubleType);
  GuardedVoxel<double> second(2.5);
  const S b = truncated<S>(2.5);
  const auto test = [&](VXTypeOtherTypeOp operation, S expected, const char* name) {
    this->expectResult(
        expected, S(7), [&](auto* voxel, auto* result) { operation(other, second.data(), voxel, result); }, name);
  };
  test(record.plusOtherType, S(7 + b), "plusOtherType");
  test(record.minusOtherType, S(7 - b), "minusOtherType");
  test(record.multWithOtherType, S(7 * b), "multWithOtherType");
  test(record.divByOtherType, S(7 / b), "divByOtherType");
  test(record.powerOfOtherType, truncated<S>(std::pow(7.0, static_cast<double>(b))), "powerOfOtherType");

  GuardedVoxel<S> seven(7);
  EXPECT_EQ(record.isEqualToOtherType(other, second.data(), seven.data()), 0);
  EXPECT_EQ(record.isSmallerThanOtherType(other, second.data(), seven.data()), 0);
  EXPECT_EQ(record.isGreaterThanOtherType(other, second.data(), seven.data()), 1);
  GuardedVoxel<S> same(b);
  EXPECT_EQ(record.isEqualToOtherType(other, second.data(), same.data()), 1);
  GuardedVoxel<S> one(1);
  EXPECT_EQ(record.isSmallerThanOtherType(other, second.data(), one.data()), 1);

  GuardedVoxel<double> asDouble;
  record.castToOtherType(seven.data(), other, asDouble.data());
  EXPECT_EQ(asDouble.value(), 7.0);
  record.castFromOtherType(other, second.data(), seven.data());
  EXPECT_EQ(seven.value(), b);
}

TYPED_TEST(StdTypeOperationsTest, TextsAreWrittenAndReadWithTheDefaultForBadOnes) {
  using S = typename TestFixture::Voxel;
  const VXTypeInfos& record = this->record();
  GuardedVoxel<S> voxel(42);
  char* const text = record.getStringValue(voxel.data());
  EXPECT_STREQ(text, "42");
  VXFree(text);
  record.setStringValue(" 17", voxel.data());
  EXPECT_EQ(voxel.value(), S(17));
  record.setStringValue("x", voxel.data());
  EXPECT_EQ(voxel.value(), S(0));
}

TYPED_TEST(StdTypeOperationsTest, RecordHoldsTheOperationsUnderTheirNames) {
  using Infos = typename TestFixture::StdInfos;
  const VXTypeInfos& record = this->record();
  struct Operation {
    const char* name;
    bool isOwn;
    VXTypePropBits property;
  };
#define VX_LIST(member, Name, signature, word, bit, reported) \
  {#member, record.member == &Infos::VXTYPE_##member, VXTypeHas##Name},
#define VX_LIST_PLAIN(member, Name, signature) \
  {#member, record.member == &Infos::VXTYPE_##member, VXTypeHasNoProperties},
  const Operation operations[] = {VX_FOR_EACH_TYPE_OPERATION(VX_LIST, VX_LIST_PLAIN)};
#undef VX_LIST
#undef VX_LIST_PLAIN
  EXPECT_EQ(std::size(operations), 90U);
  for (const Operation& operation : operations) {
    EXPECT_TRUE(operation.isOwn) << operation.name;
    EXPECT_EQ(VXTypePropBitsTest(record.propertyBits, operation.property), 1) << operation.name;
  }
  EXPECT_EQ(VXTypePropBitsTest(record.propertyBits, VXTypeOnlyStandardTypes), 1);
}

// Records ------------------------------------------------------------------------------------------------------------

// Opens the protected members without making an object, which would be one too many.
template <class T>
struct Opened : VXTStdTypeInfos<T> {
  static VXDataType equivalent() { return Opened::_rangeAndPrecisionEquiv(T(0)); }
  static std::vector<std::string> goodCasts() {
    VXuint64 count = 77;
    const char** names = nullptr;
    Opened::_getGoodCastTos(T(0), count, names);
    return {names, names + count};
  }
};

template <class T>
void expectRecord(VXDataType number, const char* name, const char* code, VXuint32 size, double smallest, double largest,
                  bool isSigned, const std::vector<std::string>& goodCasts) {
  SCOPED_TRACE(name);
  using Infos = VXTStdTypeInfos<T>;
  ASSERT_NE(Infos::_myInfos, nullptr);
  const VXTypeInfos& record = *Infos::_myInfos;
  EXPECT_EQ(VXTypeInfosAtIdx(number), Infos::_myInfos);
  EXPECT_EQ(Infos::_numInstances, 1);
  EXPECT_STREQ(Infos::typeName(nullptr), name);
  EXPECT_STREQ(Infos::_typeInfoString, code);
  EXPECT_EQ(Opened<T>::equivalent(), number);
  EXPECT_EQ(Opened<T>::goodCasts(), goodCasts);

  EXPECT_EQ(record.numComponents, 1U);
  EXPECT_EQ(record.typeSize, size);
  EXPECT_EQ(record.physicalType, number);
  EXPECT_EQ(record.physicalSize, size);
  EXPECT_STREQ(record.name, name);
  EXPECT_EQ(record.rangeAndPrecisionEquivalent, number);
  EXPECT_EQ(record.typeMinDbl, smallest);
  EXPECT_EQ(record.typeMaxDbl, largest);
  EXPECT_EQ(record.castToDouble(record.typeMinPtr), smallest);
  EXPECT_EQ(record.castToDouble(record.typeMaxPtr), largest);
  EXPECT_EQ(record.castToDouble(record.typeDefaultPtr), 0.0);
  EXPECT_EQ(std::vector<std::string>(record.goodCastTos, record.goodCastTos + record.numGoodCastTos), goodCasts);
  EXPECT_EQ(record.componentOffsets[0], 0U);
  EXPECT_STREQ(record.structInfoString, code);
  EXPECT_EQ(record.dataType, number);
  const bool isFloat = number >= VXfloatType && number <= VXldoubleType;
  EXPECT_EQ(VXTypePropBitsTest(record.propertyBits, VXTypeIsSignedType), isSigned);
  EXPECT_EQ(VXTypePropBitsTest(record.propertyBits, VXTypeIsFloatingPointType), isFloat);
  EXPECT_EQ(VXTypePropBitsTest(record.propertyBits, VXTypeIsIntegerType), !isFloat);
  EXPECT_EQ(VXTypePropBitsTest(record.propertyBits, VXTypeIsBasicType), 1);
  EXPECT_EQ(std::memcmp(&VXTypeInfosTable[number], &record, sizeof record), 0) << "slot of the type";
}

TEST(StdTypeInfosTest, RecordsDescribeTheTenTypes) {
  ASSERT_EQ(VXInitializeTypes(), 1);
  expectRecord<char>(0, "int8", "C", 1, -128, 127, true, {"int16", "int32", "float", "double", "long double", "int64"});
  expectRecord<unsigned char>(
      1, "unsigned int8", "c", 1, 0, 255, false,
      {"int16", "unsigned int16", "int32", "unsigned int32", "float", "double", "long double", "int64"});
  expectRecord<short>(2, "int16", "S", 2, -32768, 32767, true, {"int32", "float", "double", "long double", "int64"});
  expectRecord<unsigned short>(3, "unsigned int16", "s", 2, 0, 65535, false,
                               {"int32", "unsigned int32", "float", "double", "long double", "int64"});
  expectRecord<int>(4, "int32", "I", 4, -2147483648.0, 2147483647.0, true, {"float", "double", "long double", "int64"});
  expectRecord<unsigned int>(5, "unsigned int32", "i", 4, 0, 4294967295.0, false,
                             {"float", "double", "long double", "int64"});
  expectRecord<float>(6, "float", "f", 4, -3.4028234663852886e+38, 3.4028234663852886e+38, true,
                      {"double", "long double"});
  expectRecord<double>(7, "double", "d", 8, -1.7976931348623157e+308, 1.7976931348623157e+308, true, {"long double"});
  expectRecord<long double>(8, "long double", "D", 8, -1.7976931348623157e+308, 1.7976931348623157e+308, true, {});
  expectRecord<VXint64>(9, "int64", "6", 8, -9223372036854775808.0, 9223372036854775808.0, true,
                        {"float", "double", "long double"});
}

TEST(StdTypeInfosTest, SecondStartChangesNothing) {
  ASSERT_EQ(VXInitializeTypes(), 1);
  MessageRecorder recorder;
  const VXTypeInfos* const record = VXTStdTypeInfos<short>::_myInfos;
  const VXint32 numTypes = VXNumDataTypes();
  EXPECT_EQ(VXInitializeTypes(), 1);
  EXPECT_EQ(VXAreTypesInitialized(), 1);
  EXPECT_EQ(VXNumDataTypes(), numTypes);
  EXPECT_EQ(VXTStdTypeInfos<short>::_myInfos, record);
  EXPECT_EQ(VXTStdTypeInfos<short>::_numInstances, 1);
  EXPECT_TRUE(recorder.take().empty());
}

TEST(StdTypeInfosTest, SecondObjectIsFatalAndTheFirstRecordStays) {
  ASSERT_EQ(VXInitializeTypes(), 1);
  VXTypeInfos* const record = VXTStdTypeInfos<long double>::_myInfos;
  const VXTypeInfos before = *record;
  MessageRecorder recorder;
  {
    const VXTStdTypeInfos<long double> second;
    static_cast<void>(second);
  }
  EXPECT_EQ(recorder.take(), (std::vector<Message>{{VX_FATAL, VX_MISUSED_INTERFACE, "VXTStdTypeInfos",
                                                    "Too many instances of VXTStdTypeInfos created."}}));
  EXPECT_EQ(VXTStdTypeInfos<long double>::_myInfos, record);
  EXPECT_EQ(VXTStdTypeInfos<long double>::_numInstances, 1);
  EXPECT_EQ(std::memcmp(record, &before, sizeof before), 0);
}

// Values that are easy to get wrong ----------------------------------------------------------------------------------

template <class S>
S resultOf(const std::function<void(unsigned char*, unsigned char*)>& operation, S operand) {
  GuardedVoxel<S> voxel(operand);
  GuardedVoxel<S> result;
  operation(voxel.data(), result.data());
  return result.value();
}

TEST(StdTypeInfosTest, EdgeCases) {
  ASSERT_EQ(VXInitializeTypes(), 1);
  using Uchar = VXTStdTypeInfos<unsigned char>;
  EXPECT_EQ(resultOf<double>(VXTStdTypeInfos<double>::VXTYPE_normalize, 0), 1.0);
  EXPECT_EQ(resultOf<unsigned char>(Uchar::VXTYPE_negate, 5), 5);
  EXPECT_EQ(resultOf<unsigned char>(Uchar::VXTYPE_invert, 0), 255);
  EXPECT_EQ(resultOf<unsigned char>(Uchar::VXTYPE_invert, 1), 1);
  EXPECT_EQ(resultOf<unsigned char>(Uchar::VXTYPE_invert, 2), 0);
  EXPECT_EQ(resultOf<char>([](auto* v, auto* r) { VXTStdTypeInfos<char>::VXTYPE_divByInt(v, 0, r); }, 5), 127);
  EXPECT_EQ(resultOf<double>([](auto* v, auto* r) { VXTStdTypeInfos<double>::VXTYPE_powerOfInt(v, -2, r); }, 2), 0.25);
  EXPECT_EQ(resultOf<int>([](auto* v, auto* r) { VXTStdTypeInfos<int>::VXTYPE_divByInt(v, -1, r); }, INT_MIN), INT_MIN);
  GuardedVoxel<unsigned char> two(2);
  EXPECT_EQ(Uchar::VXTYPE_isEqualToDouble(two.data(), 2.9), 1);
  GuardedVoxel<unsigned char> twoHundred(200);
  EXPECT_EQ(Uchar::VXTYPE_isSmallerThanDouble(twoHundred.data(), 300.0), 0);
  GuardedVoxel<VXint64> large(4294967296);
  EXPECT_EQ(VXTStdTypeInfos<VXint64>::VXTYPE_castToInt(large.data()), 0);
}

}  // namespace
