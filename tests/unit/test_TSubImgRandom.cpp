// Random blocks in six dimensions, of all pairs of standard types, against a reference that goes voxel by voxel.

#include "MessageRecorder.h"
#include "SubImgReference.h"

#include "vxTypeInfos.h"

#include <gtest/gtest.h>
#include <string>

namespace vx::test {
namespace {

constexpr int numRounds = 12;

class RandomSubImgTest : public ::testing::TestWithParam<int> {
 protected:
  static void SetUpTestSuite() { ASSERT_EQ(VXInitializeTypes(), 1); }
  void TearDown() override { EXPECT_EQ(recorder.take(), std::vector<Message>()); }

  // Calls test(outType, inType) for all pairs of standard types.
  template <class Test>
  void forAllPairs(Test test) {
    for (VXDataType out = 0; out < 10; ++out) {
      for (VXDataType in = 0; in < 10; ++in) {
        SCOPED_TRACE("type " + std::to_string(in) + " into type " + std::to_string(out));
        test(out, in);
        if (HasFatalFailure()) return;
      }
    }
  }

  RandomBlocks random{static_cast<unsigned int>(GetParam())};
  MessageRecorder recorder;
};

void expectSame(const TestBlock& block, const TestBlock& expected) {
  ASSERT_EQ(block.img.getBox(), expected.img.getBox());
  forEachPosition(block.img.getBox(), [&](const Position& p) {
    ASSERT_EQ(std::memcmp(block.at(p), expected.at(p), VXSizeOf(block.img.getDataType())), 0) << "at " << p;
  });
  ASSERT_TRUE(block.bytes() == expected.bytes()) << "beside the block";
}

TEST_P(RandomSubImgTest, CopiesWriteTheCommonVoxelsOnly) {
  forAllPairs([&](VXDataType outType, VXDataType inType) {
    const SubImgBox box = random.box();
    TestBlock in(random.boxNear(box), inType);
    random.fill(in);
    TestBlock out(box, outType), expected(box, outType);
    forEachPosition(SubImgBox::intersect(box, in.img.getBox()),
                    [&](const Position& p) { writeVoxel(outType, readVoxel(inType, in.at(p)), expected.at(p)); });
    out.img.copySubImage(in.img, ScaleShiftData());
    expectSame(out, expected);
  });
}

TEST_P(RandomSubImgTest, ScaledCopiesMapTheCommonVoxelsOnly) {
  const ScaleShiftData mappings[] = {{1, 0.5}, {-2.75, 3}, {1.0 / 3, -0.1}, {1e-3, 1e10}, {0, 77}};
  const ScaleShiftData mapping = mappings[random.number(0, 4)];
  forAllPairs([&](VXDataType outType, VXDataType inType) {
    const SubImgBox box = random.box();
    TestBlock in(random.boxNear(box), inType);
    random.fill(in);
    TestBlock out(box, outType), expected(box, outType);
    forEachPosition(SubImgBox::intersect(box, in.img.getBox()), [&](const Position& p) {
      writeVoxel(outType, mapped(readVoxel(inType, in.at(p)), mapping.scale, mapping.shift), expected.at(p));
    });
    out.img.copySubImage(in.img, mapping);
    expectSame(out, expected);
  });
}

TEST_P(RandomSubImgTest, BordersTakeTheVoxelsOfAnotherBlock) {
  forAllPairs([&](VXDataType outType, VXDataType inType) {
    const SubImgBox box = random.box();
    const SubImgBox hole = random.boxNear(box);
    TestBlock in(SubImgBox(box.v1 - Position(random.number(0, 1)), box.v2 + Position(random.number(0, 1))), inType);
    random.fill(in);
    TestBlock out(box, outType), expected(box, outType);
    const bool isRaw = outType == inType || (outType < 6 && inType < 6 && outType / 2 == inType / 2);
    forEachPosition(box, [&](const Position& p) {
      if (contains(hole, p)) return;
      if (isRaw) {
        std::memcpy(expected.at(p), in.at(p), VXSizeOf(outType));
      } else {
        writeVoxel(outType, readVoxel(inType, in.at(p)), expected.at(p));
      }
    });
    out.img.fillBordersWithInputValues(hole, in.img);
    expectSame(out, expected);
  });
}

TEST_P(RandomSubImgTest, FillsReachEveryVoxelOutsideTheHole) {
  for (VXDataType type = 0; type < 10; ++type) {
    SCOPED_TRACE("type " + std::to_string(type));
    const SubImgBox box = random.box();
    const SubImgBox hole = random.boxNear(box);
    const double value = static_cast<double>(random.number(-100000, 100000)) / 8;
    TestBlock out(box, type), expected(box, type);
    random.fill(out);
    expected.copyBytesOf(out);
    forEachPosition(box, [&](const Position& p) {
      if (!contains(hole, p)) writeVoxel(type, {true, 0, value}, expected.at(p));
    });
    out.img.fillBordersWithLDoubleValue(hole, value);
    expectSame(out, expected);

    unsigned char voxel[8];
    writeVoxel(type, {true, 0, value / 2}, voxel);
    forEachPosition(box, [&](const Position& p) {
      if (!contains(hole, p)) std::memcpy(expected.at(p), voxel, VXSizeOf(type));
    });
    out.img.fillBordersWithTypeData(hole, voxel);
    expectSame(out, expected);

    forEachPosition(box, [&](const Position& p) { writeVoxel(type, {true, 0, value}, expected.at(p)); });
    out.img.fillSubImg(value);
    expectSame(out, expected);
  }
}

TEST_P(RandomSubImgTest, ClampedBordersTakeTheNearestVoxelOfTheHole) {
  for (VXDataType type = 0; type < 10; ++type) {
    SCOPED_TRACE("type " + std::to_string(type));
    for (int i = 0; i < 6; ++i) {
      const SubImgBox box = random.box();
      const SubImgBox hole = random.boxNear(box);
      TestBlock out(box, type), expected(box, type);
      random.fill(out);
      expected.copyBytesOf(out);
      const SubImgBox inner = SubImgBox::intersect(box, hole);
      if (!inner.isEmpty()) {
        forEachPosition(
            box, [&](const Position& p) { std::memcpy(expected.at(p), out.at(inner.clamp(p)), VXSizeOf(type)); });
      }
      out.img.fillBordersWithClampedInputValues(hole);
      expectSame(out, expected);
    }
  }
}

TEST_P(RandomSubImgTest, TheRangeIsThatOfTheValidBox) {
  for (VXDataType type = 0; type < 10; ++type) {
    SCOPED_TRACE("type " + std::to_string(type));
    const SubImgBox box = random.box();
    TestBlock block(box, type);
    random.fill(block);
    const SubImgBox wanted = random.boxNear(box);
    for (const SubImgBox* const validBox : {static_cast<const SubImgBox*>(nullptr), &wanted}) {
      const SubImgBox scanned = validBox ? SubImgBox::intersect(box, *validBox) : box;
      VXint64 count = 0;
      Value smallest = {false, 0, 0}, largest = {false, 0, 0};
      forEachPosition(scanned, [&](const Position& p) {
        const Value v = readVoxel(type, block.at(p));
        const auto isLess = [](const Value& a, const Value& b) {
          return a.isFloat ? a.real < b.real : a.whole < b.whole;
        };
        if (count++ == 0) smallest = largest = v;
        if (isLess(v, smallest)) smallest = v;
        if (isLess(largest, v)) largest = v;
      });
      VXldouble minValue = -1, maxValue = -1;
      EXPECT_EQ(block.img.calcMinMax(minValue, maxValue, validBox), count);
      EXPECT_EQ(std::memcmp(&minValue, &smallest.real, 8), 0) << minValue << " is not " << smallest.real;
      EXPECT_EQ(std::memcmp(&maxValue, &largest.real, 8), 0) << maxValue << " is not " << largest.real;
    }
  }
}

TEST_P(RandomSubImgTest, OneOtherVoxelIsFound) {
  for (VXDataType type = 0; type < 10; ++type) {
    SCOPED_TRACE("type " + std::to_string(type));
    const SubImgBox box = random.box();
    TestBlock block(box, type);
    block.img.fillSubImg(42);
    EXPECT_TRUE(block.img.isOneValued());
    Position p;
    for (std::size_t d = 0; d < 6; ++d) p[d] = random.number(box.v1[d], box.v2[d]);
    writeVoxel(type, {true, 0, 43}, block.at(p));
    EXPECT_EQ(block.img.isOneValued(), box.getNumVoxels() == 1) << "at " << p;
  }
}

TEST_P(RandomSubImgTest, TheFirstDifferenceIsFoundInMemoryOrder) {
  for (VXDataType type = 0; type < 10; ++type) {
    SCOPED_TRACE("type " + std::to_string(type));
    const SubImgBox box = random.box();
    TestBlock a(box, type), b(random.boxNear(box), type);
    random.fill(a);
    random.fill(b);
    const SubImgBox common = SubImgBox::intersect(box, b.img.getBox());
    forEachPosition(common, [&](const Position& p) { std::memcpy(b.at(p), a.at(p), VXSizeOf(type)); });
    Position expected(-1);
    if (!common.isEmpty() && random.number(0, 3) > 0) {
      for (std::size_t d = 0; d < 6; ++d) expected[d] = random.number(common.v1[d], common.v2[d]);
      const auto flip = [](unsigned char& byte) { byte = static_cast<unsigned char>(~byte); };
      flip(b.at(expected)[VXSizeOf(type) - 1]);
      // One more, behind the first.
      if (expected != common.v2) flip(b.at(common.v2)[0]);
    }
    bool isSame = false;
    Position difference;
    a.img.compare(b.img, nullptr, nullptr, nullptr, nullptr, &isSame, &difference);
    EXPECT_EQ(isSame, expected == Position(-1) || common.isEmpty());
    EXPECT_EQ(difference, expected);
  }
}

INSTANTIATE_TEST_SUITE_P(Rounds, RandomSubImgTest, ::testing::Range(1, numRounds + 1));

}  // namespace
}  // namespace vx::test
