#include "MessageRecorder.h"

#include "vxBaseOpTools.h"
#include "vxDataTypes.h"
#include "vxPageDivision.h"
#include "vxTypeInfos.h"

#include <gtest/gtest.h>
#include <limits>
#include <type_traits>
#include <vector>

namespace vx::test {
namespace {

using Messages = std::vector<Message>;
using V = TVector<VXint64>;

constexpr VXint64 maxInt64 = std::numeric_limits<VXint64>::max();
constexpr VXint64 minInt64 = std::numeric_limits<VXint64>::min();
constexpr VXint64 twoTo20 = VXint64(1) << 20;
constexpr int uint8Type = 1;
constexpr int floatType = 4;

static_assert(std::is_same_v<decltype(&BaseOpTools::adaptPageExt),
                             void (*)(V&, int, const V&, const V&, const V&, const V&, const V&)>);
static_assert(std::is_same_v<decltype(BaseOpTools::MAX_NUM_PAGES_PER_IMAGE), const VXint64>);
static_assert(BaseOpTools::MAX_NUM_PAGES_PER_IMAGE == 524288);

// The wishes of a call; the names stand beside the values where they are given.
struct Wishes {
  V start = V(1);
  V img = V(1);
  V preferred = V(0);
  V step = V(1);
  V min = V(0);
  V max = V(0);
  int dataType = uint8Type;

  V adapt() const {
    V pageExt = start;
    BaseOpTools::adaptPageExt(pageExt, dataType, img, preferred, step, min, max);
    return pageExt;
  }
};

// Extents of a plane.
V plane(VXint64 x, VXint64 y) { return V(x, y, 1, 1, 1, 1); }

class BaseOpToolsTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { ASSERT_EQ(VXInitializeTypes(), 1); }
  void SetUp() override {
    ASSERT_EQ(VXSizeOf(uint8Type), 1U);
    ASSERT_EQ(VXSizeOf(floatType), 4U);
  }
  void TearDown() override { EXPECT_EQ(recorder.take(), Messages()); }

  MessageRecorder recorder;
};

// Wishes made consistent. The images are multiples of all that may come out, so that no waste moves the extent.

TEST_F(BaseOpToolsTest, TheMinimumIsRoundedUpToTheStep) {
  EXPECT_EQ((Wishes{.start = plane(1, 1), .img = plane(960, 960), .step = plane(32, 48), .min = plane(33, 49)}.adapt()),
            plane(64, 96));
}

TEST_F(BaseOpToolsTest, TheMaximumIsRoundedDownToTheStep) {
  EXPECT_EQ(
      (Wishes{.start = plane(900, 900), .img = plane(960, 960), .step = plane(32, 48), .max = plane(100, 191)}.adapt()),
      plane(96, 144));
}

TEST_F(BaseOpToolsTest, AMaximumBelowTheMinimumGivesWay) {
  EXPECT_EQ((Wishes{.start = plane(900, 1),
                    .img = plane(960, 960),
                    .step = plane(32, 32),
                    .min = plane(65, 60),
                    .max = plane(64, 20)}
                 .adapt()),
            plane(96, 64));
}

TEST_F(BaseOpToolsTest, AStepThatIsNotPositiveIsOne) {
  EXPECT_EQ((Wishes{.start = plane(75, 75), .img = plane(150, 150), .step = V(0, -5, 0, -1, minInt64, 0)}.adapt()),
            plane(75, 75));
}

TEST_F(BaseOpToolsTest, WithoutAMaximumTheImageAndTheStartAreAllowed) {
  EXPECT_EQ((Wishes{.start = plane(1000, 1), .img = plane(1000, 1000), .preferred = plane(0, 0)}.adapt()),
            plane(1000, 32));
  // 127 isn't a multiple of 32, but the start is.
  EXPECT_EQ(
      (Wishes{.start = plane(128, 100), .img = plane(127, 100), .step = plane(32, 1), .min = plane(32, 32)}.adapt()),
      plane(128, 100));
}

// Small pages.

TEST_F(BaseOpToolsTest, TheMinimumVolumeIsRaisedWithoutWishes) {
  Wishes wishes{.start = plane(128, 128), .img = plane(1000, 1000)};
  EXPECT_EQ(wishes.adapt(), plane(128, 128));
  wishes.start = plane(1, 1);
  EXPECT_EQ(wishes.adapt(), plane(32, 32));
  wishes.start = plane(8, 16);
  EXPECT_EQ(wishes.adapt(), plane(32, 32));
}

TEST_F(BaseOpToolsTest, AVolumeOf1024IsNotRaised) {
  Wishes wishes{.start = plane(1, 1), .img = plane(1024, 1024), .min = plane(256, 4)};
  EXPECT_EQ(wishes.adapt(), plane(256, 4));
  // 256 * 3 is: 256 * sqrt(1024 / 768) is 295.6, and 3 * 1024 / (3 * 296) is 3.459.
  wishes = {.start = plane(1, 1), .img = plane(296, 4), .min = plane(256, 3)};
  EXPECT_EQ(wishes.adapt(), plane(296, 4));
}

TEST_F(BaseOpToolsTest, TheTwoLargestStartExtentsAreRaised) {
  const V img(8);
  EXPECT_EQ((Wishes{.start = V(1, 1, 3, 1, 2, 1), .img = img}.adapt()), V(1, 1, 32, 1, 32, 1));
  EXPECT_EQ((Wishes{.start = V(1, 1, 2, 1, 3, 1), .img = img}.adapt()), V(1, 1, 32, 1, 32, 1));
  // The first two on a tie, and the first one beside another largest.
  EXPECT_EQ((Wishes{.start = V(1), .img = img}.adapt()), V(32, 32, 1, 1, 1, 1));
  EXPECT_EQ((Wishes{.start = V(1, 2, 2, 2, 1, 1), .img = img}.adapt()), V(1, 32, 32, 2, 1, 1));
  EXPECT_EQ((Wishes{.start = V(1, 1, 1, 1, 1, 2), .img = img}.adapt()), V(32, 1, 1, 1, 1, 32));
}

TEST_F(BaseOpToolsTest, ARaisedMinimumIsAMultipleOfTheStep) {
  // ceil(5 * sqrt(1024 / 35)) = 28 becomes 30; ceil(7 * 1024 / 210) = 35.
  EXPECT_EQ((Wishes{.start = plane(1, 1), .img = plane(210, 210), .step = plane(5, 7)}.adapt()), plane(30, 35));
}

TEST_F(BaseOpToolsTest, AStatedMaximumCapsTheRaise) {
  EXPECT_EQ((Wishes{.start = plane(1, 1), .img = plane(64, 64), .max = plane(8, 8)}.adapt()), plane(8, 8));
  // What one dimension lacks, the other makes up for.
  EXPECT_EQ((Wishes{.start = plane(1, 1), .img = plane(1024, 1024), .max = plane(8, 1000)}.adapt()), plane(8, 128));
}

TEST_F(BaseOpToolsTest, AnUnstatedMaximumIsRaised) {
  EXPECT_EQ((Wishes{.start = plane(1, 1), .img = plane(4, 4)}.adapt()), plane(32, 32));
  EXPECT_EQ((Wishes{.start = plane(1, 1), .img = plane(4, 4), .max = plane(0, -1)}.adapt()), plane(32, 32));
}

TEST_F(BaseOpToolsTest, TheSecondMinimumMayFall) {
  // ceil(100 * sqrt(1024 / 1000)) becomes 200, and ceil(10 * 1024 / 2000) is 6.
  EXPECT_EQ(
      (Wishes{.start = plane(101, 6), .img = plane(400, 600), .step = plane(100, 1), .min = plane(100, 10)}.adapt()),
      plane(200, 6));
}

// The valid extent.

TEST_F(BaseOpToolsTest, EqualLimitsFixTheExtent) {
  EXPECT_EQ((Wishes{.start = plane(70, 70),
                    .img = plane(1000, 64),
                    .min = plane(300, 64),
                    .max = plane(300, 64),
                    .dataType = floatType}
                 .adapt()),
            plane(300, 64));
}

TEST_F(BaseOpToolsTest, AStartAboveTheImageIsCutToIt) {
  EXPECT_EQ(
      (Wishes{.start = plane(128, 128), .img = plane(100, 96), .step = plane(1, 32), .min = plane(32, 32)}.adapt()),
      plane(100, 96));
  // Not where the image is no multiple of the step; and to the minimum where the image is smaller.
  EXPECT_EQ(
      (Wishes{.start = plane(128, 128), .img = plane(127, 96), .step = plane(32, 32), .min = plane(0, 128)}.adapt()),
      plane(128, 128));
}

TEST_F(BaseOpToolsTest, APreferredStartTakesTheImage) {
  const V img = plane(1000, 500);
  EXPECT_EQ((Wishes{.start = plane(64, 50), .img = img, .preferred = plane(64, 51)}.adapt()), plane(1000, 50));
  // Nothing above the maximum; the start itself is valid.
  EXPECT_EQ((Wishes{.start = plane(50, 50), .img = img, .preferred = plane(50, 0), .max = plane(999, 0)}.adapt()),
            plane(50, 50));
  // 1 is no preference.
  EXPECT_EQ((Wishes{.start = V(50, 50, 1, 1, 1, 1), .img = V(1000, 500, 7, 1, 1, 1), .preferred = V(0, 0, 1, 0, 0, 0)}
                 .adapt()),
            V(50, 50, 1, 1, 1, 1));
  EXPECT_EQ((Wishes{.start = V(50, 50, 2, 1, 1, 1), .img = V(1000, 500, 7, 1, 1, 1), .preferred = V(0, 0, 2, 0, 0, 0)}
                 .adapt()),
            V(50, 50, 7, 1, 1, 1));
}

TEST_F(BaseOpToolsTest, OtherStartsGoToTheNearestMultiple) {
  const auto adaptX = [](VXint64 x) {
    return Wishes{.start = plane(x, 64),
                  .img = plane(320 * 64, 64),
                  .step = plane(32, 1),
                  .min = plane(32, 64),
                  .max = plane(320, 64)}
        .adapt()
        .x;
  };
  EXPECT_EQ(adaptX(79), 64);
  EXPECT_EQ(adaptX(80), 96);  // halves go up
  EXPECT_EQ(adaptX(143), 128);
  EXPECT_EQ(adaptX(321), 320);
  EXPECT_EQ(adaptX(-1), 32);
}

// Waste.

TEST_F(BaseOpToolsTest, ExactMultiplesAreKept) {
  EXPECT_EQ((Wishes{.start = V(100, 50, 3, 2, 1, 1), .img = V(1000, 500, 9, 4, 5, 6)}.adapt()), V(100, 50, 3, 2, 1, 1));
}

TEST_F(BaseOpToolsTest, ATenthMayBeWasted) {
  // 10 pages of 110 overhang 1001 by 99; those of 111 overhang 1002 by 108, and then less is aimed at.
  EXPECT_EQ((Wishes{.start = plane(110, 500), .img = plane(1001, 500), .dataType = floatType}.adapt()),
            plane(110, 500));
  EXPECT_EQ((Wishes{.start = plane(111, 500), .img = plane(1002, 500), .dataType = floatType}.adapt()),
            plane(110, 500));
  EXPECT_EQ((Wishes{.start = plane(128, 128), .img = plane(1000, 1000)}.adapt()), plane(128, 128));
}

TEST_F(BaseOpToolsTest, SmallPagesGrow) {
  // 32 * 64 bytes. 3 pages of 32 overhang 65 by 31, 2 pages of 33 by 1.
  EXPECT_EQ((Wishes{.start = plane(32, 64), .img = plane(65, 64)}.adapt()), plane(33, 64));
  // 19 in pages of 10 overhangs by 1 of 19; 8 rows of 1024 bytes.
  EXPECT_EQ(
      (Wishes{.start = plane(8, 1024), .img = plane(19, 1024), .min = plane(6, 1024), .max = plane(12, 1024)}.adapt()),
      plane(10, 1024));
}

TEST_F(BaseOpToolsTest, LargePagesShrink) {
  // 2 pages of 165 overhang 300 by a tenth, and no more is aimed at.
  EXPECT_EQ((Wishes{.start = plane(256, 256), .img = plane(300, 256), .dataType = floatType}.adapt()), plane(165, 256));
  // By steps of 16, 160 is the first below.
  EXPECT_EQ(
      (Wishes{.start = plane(256, 256), .img = plane(300, 256), .step = plane(16, 1), .dataType = floatType}.adapt()),
      plane(160, 256));
}

TEST_F(BaseOpToolsTest, PagesOf32768BytesAreSmall) {
  const Wishes wishes{.start = plane(128, 256), .img = plane(200, 256)};
  EXPECT_EQ(wishes.adapt(), plane(200, 256));
  Wishes larger = wishes;
  larger.start = plane(129, 256);
  EXPECT_EQ(larger.adapt(), plane(110, 256));
  Wishes ofFloats = wishes;
  ofFloats.dataType = floatType;
  EXPECT_EQ(ofFloats.adapt(), plane(110, 256));
}

TEST_F(BaseOpToolsTest, PagesOfAnInvalidTypeGrow) {
  for (const int dataType : {-1, -2, 1000000}) {
    EXPECT_EQ((Wishes{.start = plane(256, 256), .img = plane(300, 256), .dataType = dataType}.adapt()),
              plane(300, 256));
  }
}

TEST_F(BaseOpToolsTest, TheOtherDirectionWinsByMoreThanHalf) {
  // 8 * 8192 bytes, so down first: 7 overhangs 19 by 2. Up, 10 overhangs by 1.
  Wishes wishes{.start = plane(8, 8192), .img = plane(19, 8192), .min = plane(6, 8192), .max = plane(12, 8192)};
  EXPECT_EQ(wishes.adapt(), plane(7, 8192));
  // With 8 alone on the way down it overhangs by 5.
  wishes.min.x = 8;
  EXPECT_EQ(wishes.adapt(), plane(10, 8192));
  // With 8 alone in both directions it stays.
  wishes.max.x = 9;
  EXPECT_EQ(wishes.adapt(), plane(8, 8192));
}

TEST_F(BaseOpToolsTest, EachDimensionHasItsShareOfTheTenth) {
  // Alone, 11 * 19 = 209 is within a tenth of 200, and it is with a dimension that overhangs by nothing.
  const V min = plane(16, 64);
  EXPECT_EQ((Wishes{.start = plane(19, 2048), .img = plane(200, 2048), .min = min}.adapt()), plane(19, 2048));
  // Beside 256 of 300, x wastes less than its half of the tenth, and y is to waste no more than that.
  EXPECT_EQ((Wishes{.start = plane(19, 256), .img = plane(200, 300), .min = min, .dataType = floatType}.adapt()),
            plane(19, 300));
  EXPECT_EQ((Wishes{.start = plane(38, 256), .img = plane(200, 300), .min = min, .dataType = floatType}.adapt()),
            plane(35, 157));
}

TEST_F(BaseOpToolsTest, FixedDimensionsAreNotImproved) {
  // y overhangs by nearly half, but its limits are equal.
  EXPECT_EQ((Wishes{.start = plane(256, 256),
                    .img = plane(300, 257),
                    .min = plane(0, 256),
                    .max = plane(0, 256),
                    .dataType = floatType}
                 .adapt()),
            plane(165, 256));
}

TEST_F(BaseOpToolsTest, AnEmptyImageIsNotImproved) {
  EXPECT_EQ((Wishes{.start = plane(256, 256), .img = V(300, 300, 0, 1, 1, 1), .dataType = floatType}.adapt()),
            plane(256, 256));
  EXPECT_EQ((Wishes{.start = plane(256, 256), .img = V(0), .dataType = floatType}.adapt()), plane(256, 256));
  EXPECT_EQ((Wishes{.start = V(0), .img = V(0), .step = V(0), .dataType = -1}.adapt()), plane(32, 32));
}

// The number of pages.

TEST_F(BaseOpToolsTest, ALargeImageWithATinyStartHasFewEnoughPages) {
  const Wishes wishes{.start = plane(1, 1), .img = plane(twoTo20, twoTo20), .max = V(1)};
  EXPECT_EQ(wishes.adapt(), plane(2048, 1024));
  EXPECT_EQ(saturatingProduct(ceilQuotient(wishes.img, wishes.adapt())), BaseOpTools::MAX_NUM_PAGES_PER_IMAGE);
}

TEST_F(BaseOpToolsTest, DoublingStopsAtAQuarterOfTheImage) {
  // x to 32, since 4 * 32 is above 100; then y.
  EXPECT_EQ((Wishes{.start = V(16, 1, 1, 1, 1, 1),
                    .img = plane(100, VXint64(1) << 40),
                    .min = V(16, 1, 1, 1, 1, 1),
                    .max = V(16, 1, 1, 1, 1, 1)}
                 .adapt()),
            plane(32, VXint64(1) << 23));
  EXPECT_EQ((Wishes{.start = V(16, 1, 1, 1, 1, 1),
                    .img = plane(64, VXint64(1) << 40),
                    .min = V(16, 1, 1, 1, 1, 1),
                    .max = V(16, 1, 1, 1, 1, 1)}
                 .adapt()),
            plane(32, VXint64(1) << 22));
}

TEST_F(BaseOpToolsTest, DoublingHasALimitInEachDimension) {
  const V one(1);
  EXPECT_EQ((Wishes{.img = V(1, 1, twoTo20, twoTo20, twoTo20, twoTo20), .max = one}.adapt()),
            V(1, 1, 65536, 32768, 32768, 32768));
  // 2 to the power 30 pages: x to 1024 and y to 2 is enough.
  EXPECT_EQ((Wishes{.img = V(4096, 4096, 64, 1, 1, 1), .max = one}.adapt()), V(1024, 2, 1, 1, 1, 1));
  EXPECT_EQ((Wishes{.img = V(4096, 4096, 128, 64, 64, 64), .max = one}.adapt()), V(1024, 1024, 32, 4, 4, 2));
}

TEST_F(BaseOpToolsTest, DoublingKeepsNoWish) {
  EXPECT_EQ(
      (Wishes{.start = plane(9, 9), .img = plane(9 * twoTo20, 9), .step = plane(9, 9), .max = plane(9, 9)}.adapt()),
      plane(18, 9));
}

TEST_F(BaseOpToolsTest, PagesAreCountedInSinglePrecision) {
  const auto adaptX = [](VXint64 x) {
    return Wishes{.start = plane(1024, 1), .img = plane(x, 1), .min = plane(1024, 1), .max = plane(1024, 1)}.adapt().x;
  };
  EXPECT_EQ(adaptX(524288 * 1024), 1024);
  EXPECT_EQ(adaptX(524288 * 1024 + 32), 1024);
  EXPECT_EQ(adaptX(524288 * 1024 + 33), 2048);
}

TEST_F(BaseOpToolsTest, NoCountWraps) {
  // 2 to the power 66 pages.
  EXPECT_EQ((Wishes{.start = V(1), .img = V(2048), .max = V(1)}.adapt()), V(1024, 1024, 128, 128, 128, 64));
  const V result = Wishes{.start = V(1), .img = V(maxInt64), .max = V(1)}.adapt();
  const VXint64 numPages = saturatingProduct(ceilQuotient(V(maxInt64), result));
  EXPECT_LE(numPages, 524288);
  EXPECT_GT(numPages, 524288 / 4);
}

TEST_F(BaseOpToolsTest, ANegativeImageEndsInAMessage) {
  Wishes wishes{.start = plane(1, 1), .img = plane(-twoTo20, -twoTo20)};
  EXPECT_EQ(wishes.adapt(), plane(32, 32));
  EXPECT_EQ(recorder.take(),
            Messages({{VX_ERROR, VX_BAD_PARAMETER, "BaseOp::adaptPageExt",
                       "Cannot determine adequate page extent for image since image is too large. Therefor probably "
                       "memory problems will occur."}}));
  const Messages warning{{VX_WARNING, VX_BAD_PARAMETER, "BaseOp::adaptPageExt",
                          "Number of pages becomes very large since image is too large. Therefor memory problems "
                          "might occur."}};
  // 4096 * 4096 pages is the last warning; one more in y is beyond.
  wishes.img = plane(-32 * 4096, -32 * 4096);
  EXPECT_EQ(wishes.adapt(), plane(32, 32));
  EXPECT_EQ(recorder.take(), warning);
  wishes.img = plane(-32 * 4096, -32 * 4097);
  EXPECT_EQ(wishes.adapt(), plane(32, 32));
  EXPECT_EQ(recorder.take().at(0).type, VX_ERROR);
  // 1024 * 512 is none.
  wishes.img = plane(-32 * 1024, -32 * 512);
  EXPECT_EQ(wishes.adapt(), plane(32, 32));
  EXPECT_EQ(recorder.take(), Messages());
  wishes.img = plane(-32 * 1024, -32 * 513);
  EXPECT_EQ(wishes.adapt(), plane(32, 32));
  EXPECT_EQ(recorder.take(), warning);
  // An odd number of negative extents has a negative count.
  wishes.img = plane(-twoTo20, twoTo20);
  EXPECT_EQ(wishes.adapt(), plane(32, 32));
}

// Arguments.

TEST_F(BaseOpToolsTest, OneVectorMayStandForAllArguments) {
  V v = plane(100, 100);
  BaseOpTools::adaptPageExt(v, uint8Type, v, v, v, v, v);
  EXPECT_EQ(v, plane(100, 100));
  const V img = plane(1000, 1000);
  V page = plane(7, 7);
  BaseOpTools::adaptPageExt(page, uint8Type, img, V(0), page, V(0), V(0));
  EXPECT_EQ(page, (Wishes{.start = plane(7, 7), .img = img, .step = plane(7, 7)}.adapt()));
}

TEST_F(BaseOpToolsTest, MultiplesBeyond64BitsAreRoundedDown) {
  const VXint64 step = (VXint64(1) << 62) + 1;
  EXPECT_EQ((Wishes{.start = plane(maxInt64, 1),
                    .img = plane(maxInt64, 1),
                    .step = plane(step, 1),
                    .min = plane(maxInt64, 1),
                    .max = plane(maxInt64, 1)}
                 .adapt()),
            plane(step, 1));
  EXPECT_EQ((Wishes{.step = plane(1000, 1), .min = plane(maxInt64, 1)}.adapt().x), maxInt64 / 1000 * 1000);
  // As double, the quotient is rounded to one multiple more than fits.
  EXPECT_EQ((Wishes{.start = plane(maxInt64 - 2, 1), .img = V(0), .step = plane(2, 1)}.adapt().x), maxInt64 - 1);
}

TEST_F(BaseOpToolsTest, AnyArgumentGivesAnExtent) {
  const VXint64 values[] = {minInt64, -1, 0, 1, twoTo20, maxInt64};
  for (const VXint64 start : values) {
    for (const VXint64 img : values) {
      for (const VXint64 step : values) {
        for (const VXint64 min : values) {
          for (const VXint64 max : values) {
            const V result = Wishes{.start = V(start),
                                    .img = V(img),
                                    .preferred = V(start),
                                    .step = V(step),
                                    .min = V(min),
                                    .max = V(max)}
                                 .adapt();
            ASSERT_GT(result.x, 0);
            ASSERT_GT(result.u, 0);
          }
        }
      }
    }
  }
  recorder.take();
}

// Products and quotients.

TEST(PageDivisionTest, ProductsSaturate) {
  EXPECT_EQ(saturatingProduct(V(1, 2, 3, 4, 5, 6)), 720);
  EXPECT_EQ(saturatingProduct(V(-1, 2, 3, 4, 5, 6)), -720);
  EXPECT_EQ(saturatingProduct(V(-1, 2, 3, 4, 5, -6)), 720);
  EXPECT_EQ(saturatingProduct(V(2048)), maxInt64);
  EXPECT_EQ(saturatingProduct(V(-2048)), maxInt64);
  EXPECT_EQ(saturatingProduct(V(2048, 2048, 2048, 2048, 2048, -2048)), -maxInt64);
  EXPECT_EQ(saturatingProduct(V(maxInt64, maxInt64, -1, 1, 1, 1)), -maxInt64);
  EXPECT_EQ(saturatingProduct(V(maxInt64, maxInt64, maxInt64, maxInt64, 7, 0)), 0);
  EXPECT_EQ(saturatingProduct(V(VXint64(1) << 31, VXint64(1) << 31, 1, 1, 1, 1)), VXint64(1) << 62);
  EXPECT_EQ(saturatingProduct(V(minInt64, 1, 1, 1, 1, 1)), -maxInt64);
  EXPECT_EQ(saturatingProduct(V(minInt64, -1, 1, 1, 1, 1)), maxInt64);
}

TEST(PageDivisionTest, QuotientsAreThoseOfSinglePrecision) {
  EXPECT_EQ(ceilQuotient(V(200, 200, 1, 0, -1, -129), V(128, 128, 1, 128, 128, 128)), V(2, 2, 1, 0, 0, -1));
  EXPECT_EQ(ceilQuotient(V(16777217, 16777216, 1, 1, 1, 1), V(1)), V(16777216, 16777216, 1, 1, 1, 1));
}

TEST(PageDivisionTest, AQuotientBeyond64BitsIsTheirMaximum) {
  EXPECT_EQ(ceilQuotient(V(maxInt64, minInt64, maxInt64, minInt64, 1, 1), V(1, -1, -1, 1, 1, 1)),
            V(maxInt64, maxInt64, minInt64, minInt64, 1, 1));
}

TEST(PageDivisionTest, AZeroPageExtentIsFatal) {
  MessageRecorder recorder;
  int thrown = 0;
  try {
    (void)ceilQuotient(V(1), V(1, 1, 1, 1, 1, 0));
  } catch (int code) {
    thrown = code;
  }
  EXPECT_EQ(thrown, VX_BAD_POINTER);
  const Messages messages = recorder.take();
  ASSERT_EQ(messages.size(), 1U);
  EXPECT_EQ(messages[0].type, VX_FATAL);
  EXPECT_EQ(messages[0].code, VX_BAD_POINTER);
}

}  // namespace
}  // namespace vx::test
