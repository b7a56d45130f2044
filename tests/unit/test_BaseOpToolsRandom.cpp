// Random page extents, against the plain choice of PlainPageExt.h, and long walks against closed forms.

#include "MessageRecorder.h"
#include "PlainPageExt.h"

#include "vxBaseOpTools.h"
#include "vxTypeInfos.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <iostream>
#include <iterator>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace vx::test {
namespace {

using V = Vector;

constexpr VXint64 maxInt64 = std::numeric_limits<VXint64>::max();
constexpr VXint64 minInt64 = std::numeric_limits<VXint64>::min();

class RandomArguments {
 public:
  explicit RandomArguments(unsigned int seed) : _engine(seed) {}

  VXint64 draw(VXint64 low, VXint64 high) { return std::uniform_int_distribution<VXint64>(low, high)(_engine); }
  bool isOneOf(VXint64 n) { return draw(1, n) == 1; }

  PageExtArguments drawArguments() {
    PageExtArguments arguments;
    arguments.dataType = static_cast<int>(isOneOf(20) ? draw(-2, 2000) : draw(0, 9));
    const bool isExtreme = isOneOf(4);
    for (std::size_t i = 0; i < 6; ++i) {
      isExtreme ? _drawExtreme(arguments, i) : _drawOrdinary(arguments, i);
    }
    return arguments;
  }

 private:
  // Extents as images have them, with a wish here and there.
  void _drawOrdinary(PageExtArguments& arguments, std::size_t i) {
    const bool isPlane = i < 2;
    const bool isFlat = !isPlane && isOneOf(2);
    arguments.img[i] = isFlat ? 1 : draw(1, isPlane ? 3000 : 40);
    arguments.page[i] = isOneOf(3) ? VXint64(1) << draw(0, isPlane ? 9 : 4) : draw(1, isPlane ? 600 : 20);
    arguments.preferred[i] = isOneOf(4) ? arguments.page[i] : isOneOf(4) ? draw(0, 100) : 0;
    arguments.step[i] = isOneOf(2) ? 1 : draw(0, isPlane ? 64 : 4);
    arguments.min[i] = isOneOf(2) ? 0 : draw(0, isPlane ? 200 : 4);
    arguments.max[i] = isOneOf(2) ? 0 : draw(0, isPlane ? 1000 : 20);
  }

  void _drawExtreme(PageExtArguments& arguments, std::size_t i) {
    arguments.img[i] = _drawExtremeNumber();
    arguments.page[i] = _drawExtremeNumber();
    arguments.preferred[i] = isOneOf(2) ? arguments.page[i] : _drawExtremeNumber();
    arguments.step[i] = _drawExtremeNumber();
    arguments.min[i] = _drawExtremeNumber();
    arguments.max[i] = _drawExtremeNumber();
  }

  VXint64 _drawExtremeNumber() {
    static constexpr VXint64 extremes[] = {
        1,  2,     VXint64(1) << 20,    VXint64(1) << 31, VXint64(1) << 62, maxInt64, minInt64,
        -1, -1000, -(VXint64(1) << 62), 1000000007,       0xFFFFFFFF,       1024};
    if (isOneOf(3)) return 0;
    if (isOneOf(2)) return draw(1, 3000);
    VXint64 number = extremes[draw(0, std::ssize(extremes) - 1)];
    if (isOneOf(4)) number = VXint64(1) << draw(0, 62);
    if (isOneOf(3) && number > minInt64 + 3 && number < maxInt64 - 3) number += draw(-3, 3);
    return number;
  }

  std::mt19937 _engine;
};

V adapt(const PageExtArguments& arguments) {
  V page = arguments.page;
  BaseOpTools::adaptPageExt(page, arguments.dataType, arguments.img, arguments.preferred, arguments.step, arguments.min,
                            arguments.max);
  return page;
}

std::string describe(const PageExtArguments& arguments) {
  std::ostringstream text;
  text << "page " << arguments.page << " type " << arguments.dataType << " img " << arguments.img << " preferred "
       << arguments.preferred << " step " << arguments.step << " min " << arguments.min << " max " << arguments.max;
  return text.str();
}

class RandomPageExtTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { ASSERT_EQ(VXInitializeTypes(), 1); }

  MessageRecorder recorder;
};

TEST_F(RandomPageExtTest, EqualsThePlainChoice) {
  constexpr int numRounds = 100000;
  constexpr Wide maxTries = 50000;
  RandomArguments random(62);
  int numCompared = 0, numTooLong = 0, numEndless = 0, numWalks = 0, numMoves = 0;
  for (int round = 0; round < numRounds && !HasFailure(); ++round) {
    const PageExtArguments arguments = random.drawArguments();
    SCOPED_TRACE("round " + std::to_string(round) + ": " + describe(arguments));
    const V result = adapt(arguments);
    for (std::size_t i = 0; i < 6; ++i) ASSERT_GT(result[i], 0);
    const std::vector<Message> messages = recorder.take();
    try {
      const PlainPageExt plain(arguments, maxTries);
      numWalks += plain.getNumWalks();
      numMoves += plain.getNumMoves();
      if (plain.isEndless()) {
        // Nothing but the extents that were doubled without end may differ.
        for (std::size_t i = 0; i < 6; ++i) {
          if (plain.countPages(i) != 1) {
            EXPECT_EQ(result[i], plain.getResult()[i]);
          }
        }
        ASSERT_EQ(messages.size(), 1U);
        EXPECT_EQ(messages[0].type, plain.getNumPages() > 16777216 ? VX_ERROR : VX_WARNING);
        ++numEndless;
      } else {
        EXPECT_EQ(result, plain.getResult());
        EXPECT_EQ(messages, std::vector<Message>());
        ++numCompared;
      }
    } catch (WalkTooLong) {
      ++numTooLong;
    }
  }
  // The comparison is worth something only while most rounds reach its end, and walks are among them.
  EXPECT_GT(numCompared, numRounds * 9 / 10);
  EXPECT_GT(numMoves, numRounds / 10);
  RecordProperty("compared", numCompared);
  std::cout << numCompared << " compared, " << numTooLong << " with walks too long, " << numEndless
            << " that double without end, " << numWalks << " walks, " << numMoves << " moves\n";
}

// One dimension with a walk by steps of 1 or more; the others are 1. The minimum leaves nothing to raise.
struct LongWalk {
  VXint64 img, page, min, max;
  VXint64 step = 1;

  VXint64 adaptX() const {
    PageExtArguments arguments;
    arguments.page = V(page, 1, 1, 1, 1, 1);
    arguments.img = V(img, 1, 1, 1, 1, 1);
    arguments.step = V(step, 1, 1, 1, 1, 1);
    arguments.min = V(min, 1, 1, 1, 1, 1);
    arguments.max = V(max, 1, 1, 1, 1, 1);
    const V result = adapt(arguments);
    EXPECT_EQ(result, V(result.x, 1, 1, 1, 1, 1));
    return result.x;
  }
};

VXint64 divideUp(VXint64 a, VXint64 b) { return (a - 1) / b + 1; }

double overhang(VXint64 ext, VXint64 img) {
  return static_cast<double>(Wide(divideUp(img, ext)) * ext - img) / static_cast<double>(img);
}

TEST_F(RandomPageExtTest, LongWalksDownEndWhereATenthIsWasted) {
  RandomArguments random(1);
  for (int round = 0; round < 20000; ++round) {
    const VXint64 img = random.draw(VXint64(1) << 30, VXint64(1) << 50);
    const VXint64 page = random.draw(img / 9, img);
    const VXint64 numPages = divideUp(img, page);
    // n pages cover the image from img / n on, and waste a tenth at 1.1 img / n.
    const VXint64 expected = std::min(page, img / 10 * 11 / numPages);
    const LongWalk walk{img, page, 1024, 0};
    ASSERT_NEAR(static_cast<double>(walk.adaptX()), static_cast<double>(expected), 11) << img << ' ' << page;
    ASSERT_LE(overhang(walk.adaptX(), img), 0.1);
    if (walk.adaptX() < page) {
      ASSERT_GT(overhang(walk.adaptX() + 1, img), 0.1) << img << ' ' << page;
    }
  }
}

TEST_F(RandomPageExtTest, LongWalksUpEndAtTheNextFit) {
  RandomArguments random(2);
  for (int round = 0; round < 20000; ++round) {
    const VXint64 img = random.draw(VXint64(1) << 40, VXint64(1) << 61);
    const VXint64 step = VXint64(1) << random.draw(0, 20);
    const VXint64 page = divideUp(random.draw(img / 9, img - step), step) * step;
    const VXint64 numPages = divideUp(img, page);
    // The minimum leaves no other way. One page less is enough from this multiple of the step on.
    const VXint64 next = numPages == 1 ? page : divideUp(divideUp(img, numPages - 1), step) * step;
    const LongWalk walk{img, page, page, 0, step};
    ASSERT_EQ(walk.adaptX(), overhang(page, img) > 0.1 ? next : page) << img << ' ' << page << ' ' << step;
  }
}

TEST_F(RandomPageExtTest, AWalkOfAllExtentsEnds) {
  constexpr VXint64 huge = VXint64(1) << 62;
  // The maximum keeps the walk up from the one extent that would do; down, three pages take its place.
  EXPECT_NEAR(static_cast<double>((LongWalk{huge, huge - 1, 1024, huge - 1}.adaptX())), 0.55 * huge, 2048);
  EXPECT_EQ((LongWalk{huge, huge / 2 + huge / 4, huge / 2 + huge / 4, huge}.adaptX()), huge);
  // Nothing is better than the start, neither up nor down.
  EXPECT_EQ((LongWalk{huge, huge / 2 + huge / 4, huge / 2 + huge / 4, huge - 1}.adaptX()), huge / 2 + huge / 4);
  // Down to the image, of which a page is cut to nothing larger.
  EXPECT_EQ((LongWalk{1025, huge, 1024, maxInt64}.adaptX()), 1025);
  EXPECT_EQ((LongWalk{maxInt64, maxInt64, 1, maxInt64}.adaptX()), maxInt64);
  EXPECT_EQ((LongWalk{maxInt64 - 1, maxInt64, maxInt64 - 1, maxInt64}.adaptX()), maxInt64 - 1);
}

}  // namespace
}  // namespace vx::test
