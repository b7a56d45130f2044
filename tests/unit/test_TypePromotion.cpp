#include "TestTypes.h"

#include "vxDataTypes.h"
#include "vxTypeInfos.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

namespace vx::test {
namespace {

class TypePromotionTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    ASSERT_EQ(VXInitializeTypes(), 1);
    ASSERT_TRUE(registerTestTypes());
  }
};

TEST_F(TypePromotionTest, RanksFollowTheRangeTable) {
  constexpr VXint32 ranks[10] = {1, 1, 2, 2, 3, 3, 5, 6, 7, 4};
  for (VXDataType type = 0; type < 10; ++type) EXPECT_EQ(VXRangeOrder(type), ranks[type]) << type;
  EXPECT_EQ(VXRangeOrder(-1), -1);
  EXPECT_EQ(VXRangeOrder(VXNumDataTypes()), -1);
}

TEST_F(TypePromotionTest, StandardTypesListTheirGoodCasts) {
  const std::vector<std::string> lists[10] = {
      {"int16", "int32", "float", "double", "long double", "int64"},
      {"int16", "unsigned int16", "int32", "unsigned int32", "float", "double", "long double", "int64"},
      {"int32", "float", "double", "long double", "int64"},
      {"int32", "unsigned int32", "float", "double", "long double", "int64"},
      {"float", "double", "long double", "int64"},
      {"float", "double", "long double", "int64"},
      {"double", "long double"},
      {"long double"},
      {},
      {"float", "double", "long double"},
  };
  for (VXDataType type = 0; type < 10; ++type) {
    const VXTypeInfos* const infos = VXGetTypeInfosForDataType(type);
    ASSERT_NE(infos, nullptr);
    const std::vector<std::string> casts(infos->goodCastTos, infos->goodCastTos + infos->numGoodCastTos);
    EXPECT_EQ(casts, lists[type]) << infos->name;
  }
}

TEST_F(TypePromotionTest, HoldsFollowsItsTable) {
  constexpr int holds[10][10] = {
      {1, 0, 0, 0, 0, 0, 0, 0, 0, 0}, {0, 1, 0, 0, 0, 0, 0, 0, 0, 0}, {1, 1, 1, 0, 0, 0, 0, 0, 0, 0},
      {0, 1, 0, 1, 0, 0, 0, 0, 0, 0}, {1, 1, 1, 1, 1, 0, 0, 0, 0, 0}, {0, 1, 0, 1, 0, 1, 0, 0, 0, 0},
      {1, 1, 1, 1, 1, 1, 1, 0, 0, 1}, {1, 1, 1, 1, 1, 1, 1, 1, 0, 1}, {1, 1, 1, 1, 1, 1, 1, 1, 1, 1},
      {1, 1, 1, 1, 1, 1, 0, 0, 0, 1},
  };
  for (VXDataType holder = 0; holder < 10; ++holder) {
    for (VXDataType held = 0; held < 10; ++held) {
      EXPECT_EQ(VXHolds(holder, held), holds[holder][held])
          << VXNameFromDataType(holder) << " holds " << VXNameFromDataType(held);
    }
  }
}

TEST_F(TypePromotionTest, ANumberHoldsItselfEvenIfInvalid) {
  EXPECT_EQ(VXHolds(-1, -1), 1);
  EXPECT_EQ(VXHolds(1000000, 1000000), 1);
  EXPECT_EQ(VXHolds(-1, VXint8Type), 0);
  EXPECT_EQ(VXHolds(VXldoubleType, -1), 0);
}

TEST_F(TypePromotionTest, ARegisteredTypeIsHeldByWhatItsAuthorListsOnly) {
  EXPECT_EQ(VXHolds(VXdoubleType, vector3Type()), 1) << "a standard type by name";
  EXPECT_EQ(VXHolds(VXldoubleType, vector3Type()), 0);
  EXPECT_EQ(VXHolds(vector3Type(), complexType()), 1) << "a registered type by name";
  EXPECT_EQ(VXHolds(complexType(), vector3Type()), 0);
  for (VXDataType standard = 0; standard < 10; ++standard) EXPECT_EQ(VXHolds(vector3Type(), standard), 0) << standard;
}

TEST_F(TypePromotionTest, PromotedTypeFollowsItsTable) {
  constexpr VXDataType promoted[10][10] = {
      {0, 2, 2, 4, 4, 6, 6, 7, 8, 9}, {2, 1, 2, 3, 4, 5, 6, 7, 8, 9}, {2, 2, 2, 4, 4, 6, 6, 7, 8, 9},
      {4, 3, 4, 3, 4, 5, 6, 7, 8, 9}, {4, 4, 4, 4, 4, 6, 6, 7, 8, 9}, {6, 5, 6, 5, 6, 5, 6, 7, 8, 9},
      {6, 6, 6, 6, 6, 6, 6, 7, 8, 6}, {7, 7, 7, 7, 7, 7, 7, 7, 8, 7}, {8, 8, 8, 8, 8, 8, 8, 8, 8, 8},
      {9, 9, 9, 9, 9, 9, 6, 7, 8, 9},
  };
  for (VXDataType first = 0; first < 10; ++first) {
    for (VXDataType second = 0; second < 10; ++second) {
      EXPECT_EQ(VXPromotedType(first, second), promoted[first][second])
          << VXNameFromDataType(first) << ", " << VXNameFromDataType(second);
    }
  }
}

TEST_F(TypePromotionTest, PromotedTypeOfAnInvalidNumberIsTheOther) {
  EXPECT_EQ(VXPromotedType(-1, VXint8Type), VXint8Type);
  EXPECT_EQ(VXPromotedType(VXint8Type, VXNumDataTypes()), VXint8Type);
  EXPECT_EQ(VXPromotedType(-1, -1), -1);
  EXPECT_EQ(VXPromotedType(-1, 1000000), -1);
}

TEST_F(TypePromotionTest, PromotedTypeSearchesStandardTypesBeforeRegisteredOnes) {
  // Both list "test vector3" alone.
  EXPECT_EQ(VXPromotedType(complexType(), mixedType()), vector3Type());
  // Both list "double"; the first is held by nothing else.
  EXPECT_EQ(VXPromotedType(vector3Type(), largeType()), VXdoubleType);
  EXPECT_EQ(VXPromotedType(vector3Type(), VXdoubleType), VXdoubleType);
  // float is the smallest that holds both.
  EXPECT_EQ(VXPromotedType(largeType(), VXint8Type), VXfloatType);
  EXPECT_EQ(VXPromotedType(mixedType(), VXint8Type), -1);
}

TEST_F(TypePromotionTest, PromotedPrecisionTakesFloatThenRankThenTheFirst) {
  constexpr VXint32 ranks[10] = {1, 1, 2, 2, 3, 3, 5, 6, 7, 4};
  const auto isFloat = [](VXDataType type) { return type >= 6 && type <= 8; };
  for (VXDataType first = 0; first < 10; ++first) {
    for (VXDataType second = 0; second < 10; ++second) {
      VXDataType expected = ranks[first] < ranks[second] ? second : first;
      if (isFloat(first) != isFloat(second)) expected = isFloat(first) ? first : second;
      EXPECT_EQ(VXPromotedPrecision(first, second), expected) << first << ", " << second;
    }
  }
  EXPECT_EQ(VXPromotedPrecision(VXint8Type, VXuint8Type), VXint8Type);
  EXPECT_EQ(VXPromotedPrecision(VXuint8Type, VXint8Type), VXuint8Type);
  EXPECT_EQ(VXPromotedPrecision(VXint64Type, VXfloatType), VXfloatType);
  EXPECT_EQ(VXPromotedPrecision(-1, VXint8Type), VXint8Type);
  EXPECT_EQ(VXPromotedPrecision(VXint8Type, -1), VXint8Type);
  EXPECT_EQ(VXPromotedPrecision(-1, -2), -1);
  EXPECT_EQ(VXPromotedPrecision(-2, -1), -2);
}

TEST_F(TypePromotionTest, PromotedPrecisionGivesARegisteredTypeByItsEquivalent) {
  EXPECT_EQ(VXPromotedPrecision(vector3Type(), VXfloatType), vector3Type());
  EXPECT_EQ(VXPromotedPrecision(VXint64Type, complexType()), complexType());
  EXPECT_EQ(VXPromotedPrecision(vector3Type(), VXldoubleType), VXldoubleType);
  EXPECT_EQ(VXPromotedPrecision(VXfloatType, complexType()), VXfloatType);
  EXPECT_EQ(VXGetRangeAndPrecisionEquivalent(complexType()), VXfloatType);
  EXPECT_EQ(VXGetRangeAndPrecisionEquivalent(-1), -1);
}

TEST_F(TypePromotionTest, UncorrectedRangeTakesTheFirstTypeThatFits) {
  constexpr double maxInt64 = 9223372036854775808.0;
  const struct {
    double min, max;
    int preferUnsigned;
    VXDataType expected;
  } rows[] = {
      {0, 255, 0, VXuint8Type},
      {0, 100, 1, VXuint8Type},
      {0, 100, 0, VXint8Type},
      {255, 0, 0, VXuint8Type},
      {-1, 100, 1, VXint8Type},
      {-128, 127, 0, VXint8Type},
      {-129, 127, 0, VXint16Type},
      {-129, 127, 1, VXint16Type},
      {0, 256, 0, VXint16Type},
      {0, 256, 1, VXuint16Type},
      {0, 32768, 0, VXuint16Type},
      {-1, 32768, 0, VXint32Type},
      {0, 65536, 0, VXint32Type},
      {0, 65536, 1, VXuint32Type},
      {0, 2147483648.0, 0, VXuint32Type},
      {-1, 2147483648.0, 1, VXint64Type},
      {0, 4294967296.0, 1, VXint64Type},
      {0, 1e18, 0, VXint64Type},
      {0, maxInt64, 0, VXint64Type},
      {0, 2 * maxInt64, 0, VXfloatType},
      {0, 1e30, 0, VXfloatType},
      {0, 1e300, 0, VXdoubleType},
      {0, std::numeric_limits<double>::infinity(), 0, VXldoubleType},
      {0, 0.5, 0, VXfloatType},
      {0, 1, 0, VXfloatType},
      {1, 0, 1, VXfloatType},
      {0, 1.5, 0, VXint8Type},
      {5, 5, 0, VXint8Type},
      {5, 5, 1, VXuint8Type},
      {300, 300, 0, VXint16Type},
      {0, 1e-320, 0, VXint8Type},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(VXGetDataTypeForUncorrectedRange(row.min, row.max, row.preferUnsigned), row.expected)
        << row.min << " to " << row.max << ", " << row.preferUnsigned;
  }
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(VXGetDataTypeForUncorrectedRange(nan, 1, 0), VXldoubleType);
}

TEST_F(TypePromotionTest, CorrectedRangeShowsItsSwapAndItsWidening) {
  double min = 255, max = 0;
  EXPECT_EQ(VXGetDataTypeForRange(&min, &max, 0), VXuint8Type);
  EXPECT_EQ(min, 0);
  EXPECT_EQ(max, 255);

  min = max = 1000;
  EXPECT_EQ(VXGetDataTypeForRange(&min, &max, 0), VXfloatType);
  EXPECT_EQ(min, 1000);
  EXPECT_EQ(max, 1001);

  min = 0;
  max = 100;
  EXPECT_EQ(VXGetDataTypeForRange(&min, &max, 1), VXuint8Type);
  EXPECT_EQ(max, 100);
}

TEST_F(TypePromotionTest, CorrectedRangeWithANullPointerWritesNothing) {
  double value = 7;
  EXPECT_EQ(VXGetDataTypeForRange(nullptr, &value, 0), VXldoubleType);
  EXPECT_EQ(VXGetDataTypeForRange(&value, nullptr, 0), VXldoubleType);
  EXPECT_EQ(VXGetDataTypeForRange(nullptr, nullptr, 0), VXldoubleType);
  EXPECT_EQ(value, 7);
}

}  // namespace
}  // namespace vx::test
