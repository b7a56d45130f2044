// Boxes cut into pieces: together they are the box, in the order of the file, and no page is needed twice without need.

#include "image.h"

#include <gtest/gtest.h>
#include <numeric>
#include <random>

namespace vxtile {
namespace {

// Positions of a box in the order of a file.
std::vector<Extent> positionsOf(const Box& box, const CutRules& rules) {
  std::vector<Extent> positions;
  Extent p = box.first;
  for (;;) {
    positions.push_back(p);
    std::size_t i = 0;
    for (; i < numAxes; ++i) {
      const std::size_t axis = rules.order[i];
      if (++p[axis] < box.first[axis] + box.extent[axis]) break;
      p[axis] = box.first[axis];
    }
    if (i == numAxes) return positions;
  }
}

TEST(VxtilePieces, AreTheBoxInTheOrderOfTheFile) {
  std::mt19937 random(7);
  const auto pick = [&](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
  for (int round = 0; round < 500; ++round) {
    Box box;
    Extent pageExtent;
    for (std::size_t i = 0; i < numAxes; ++i) {
      box.first[i] = pick(0, 5);
      box.extent[i] = pick(1, 5);
      pageExtent[i] = pick(1, 4);
    }
    CutRules rules;
    std::shuffle(rules.order.begin(), rules.order.end(), random);
    rules.firstCut = static_cast<std::size_t>(pick(0, 2));
    const std::vector<Box> pieces = cutBox(box, pageExtent, 2, static_cast<std::size_t>(pick(1, 4000)), rules);
    std::vector<Extent> positions;
    for (const Box& piece : pieces) {
      const std::vector<Extent> part = positionsOf(piece, rules);
      ASSERT_EQ(part.size(), piece.numVoxels());
      positions.insert(positions.end(), part.begin(), part.end());
    }
    ASSERT_EQ(positions, positionsOf(box, rules)) << round;
  }
}

TEST(VxtilePieces, EndBetweenPages) {
  const Box box{{0, 0, 1, 0, 0, 0}, {10, 10, 30, 1, 1, 1}};
  std::vector<int> ends;
  for (const Box& piece : cutBox(box, {8, 8, 4, 1, 1, 1}, 1, 1000, {}))
    ends.push_back(piece.first[2] + piece.extent[2]);
  EXPECT_EQ(ends, (std::vector<int>{8, 16, 24, 31}));
}

TEST(VxtilePieces, AreAsThickAsAPageOrAPartOfItWithinLimits) {
  const Box box{{}, {10, 10, 30, 1, 1, 1}};
  const auto thicknesses = [&](int pageThickness, std::size_t pieceBytes) {
    std::vector<int> result;
    for (const Box& piece : cutBox(box, {8, 8, pageThickness, 1, 1, 1}, 1, pieceBytes, {})) {
      result.push_back(piece.extent[2]);
    }
    return result;
  };
  EXPECT_EQ(thicknesses(10, 250), (std::vector<int>{10, 10, 10})) << "four times the size is allowed";
  EXPECT_EQ(thicknesses(10, 249), (std::vector<int>{5, 5, 5, 5, 5, 5}));
  EXPECT_EQ(thicknesses(30, 250), (std::vector<int>{10, 10, 10}));
}

TEST(VxtilePieces, OneIsEnoughForASmallBox) {
  const Box box{{1, 2, 3, 0, 0, 0}, {4, 5, 6, 2, 2, 2}};
  const std::vector<Box> pieces = cutBox(box, {8, 8, 1, 1, 1, 1}, 8, 1 << 20, {});
  ASSERT_EQ(pieces.size(), 1U);
  EXPECT_EQ(pieces[0].first, box.first);
  EXPECT_EQ(pieces[0].extent, box.extent);
}

TEST(VxtilePieces, ComeBackwardOnDemand) {
  CutRules rules;
  rules.firstCut = rules.lastCut = 1;
  rules.isBackward = true;
  std::vector<int> firsts;
  for (const Box& piece : cutBox({{}, {10, 5, 1, 1, 1, 1}}, {8, 1, 1, 1, 1, 1}, 1, 20, rules)) {
    firsts.push_back(piece.first[1]);
  }
  EXPECT_EQ(firsts, (std::vector<int>{4, 2, 0}));
}

TEST(VxtileBox, IsThePartOfTheImageThatIsMeant) {
  BoxRequest request;
  request[2] = Interval{3, 5};
  const Box box = boxOf(request, {10, 20, 30, 1, 2, 1}, "m.output0");
  EXPECT_EQ(box.first, (Extent{0, 0, 3, 0, 0, 0}));
  EXPECT_EQ(box.extent, (Extent{10, 20, 3, 1, 2, 1}));
  EXPECT_EQ(box.text(), "x 0:9, y 0:19, z 3:5, t 0:1");
  EXPECT_EQ((Box{{}, {1, 1, 1, 1, 1, 1}}.text()), "one voxel");
  EXPECT_EQ((Box{{0, 4, 0, 0, 0, 0}, {1, 1, 1, 1, 1, 1}}.text()), "y 4");
}

TEST(VxtileBox, PastTheImageIsRefused) {
  for (const Interval interval : {Interval{-1, 3}, Interval{0, 30}, Interval{1LL << 40, 1LL << 40}}) {
    BoxRequest request;
    request[2] = interval;
    try {
      boxOf(request, {10, 20, 30, 1, 1, 1}, "m.output0");
      FAIL();
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.code(), ExitCode::network);
      EXPECT_EQ(std::string(failure.what()), "m.output0: the box z " + std::to_string(interval.first) + ":" +
                                                 std::to_string(interval.last) +
                                                 " reaches past the image, which has z 0:29");
    }
  }
}

TEST(VxtileBox, HugeSizesDontWrapAround) {
  const int most = 2147483647;
  EXPECT_EQ((Box{{}, {most, most, most, most, 1, 1}}.numVoxels()), std::numeric_limits<std::size_t>::max());
  EXPECT_GT(cutBox({{}, {most, 3, 1, 1, 1, 1}}, {128, 128, 1, 1, 1, 1}, 8, 1 << 26, {}).size(), 100U);
}

}  // namespace
}  // namespace vxtile
