#include "ModuleFixture.h"

#include <cmath>
#include <set>

namespace vx::test {
namespace {

class TestPatternTest : public ModuleFixture {
 protected:
  // The pattern as its documentation tells it.
  static double valueAt(const std::string& pattern, const Vector& extent, const Vector& p, double low, double high) {
    const double range = high - low;
    const auto index = static_cast<double>(dot(p, extent.getStrides()));
    double sum = 0, full = 0, square = 0, smallest = 0;
    VXint64 cells = 0;
    for (std::size_t d = 0; d < 6; ++d) {
      sum += static_cast<double>(p[d]);
      full += static_cast<double>(extent[d] - 1);
      cells += p[d] / 3;
      if (d > 2) continue;
      const double offset = static_cast<double>(p[d]) - 0.5 * static_cast<double>(extent[d] - 1);
      square += offset * offset;
      const auto length = static_cast<double>(extent[d]);
      if (length > 1 && (smallest == 0 || length < smallest)) smallest = length;
    }
    if (pattern == "constant") return low;
    if (pattern == "index") return low + std::fmod(index, range + 1);
    if (pattern == "ramp") return low + sum * (range / full);
    if (pattern == "checkerboard") return cells % 2 == 0 ? low : high;
    if (pattern == "ball") return square <= 0.16 * smallest * smallest ? high : low;
    return low + range * (0.5 + 0.5 * std::cos(3.14159265358979323846 / smallest * square));
  }
};

TEST_F(TestPatternTest, AllPatternsAreAsDocumentedInSixDimensions) {
  const Vector extent(13, 7, 5, 2, 3, 2);
  const auto op = make("TestPattern");
  set(*op, "extent", text(extent));
  set(*op, "cellSize", "3");
  set(*op, "minValue", "-20");
  set(*op, "maxValue", "100");
  for (const VXDataType type : allTypes) {
    set(*op, "dataType", VXNameFromDataType(type));
    for (const char* pattern : {"constant", "index", "ramp", "checkerboard", "ball", "rings"}) {
      set(*op, "pattern", pattern);
      for (const Setting& setting : settings) {
        set(*op, "pageExtent", text(setting.pageExt));
        Host::getDefaultHost().setMaxNumThreads(setting.numThreads);
        Image expected(extent, type);
        forEachPosition(extent,
                        [&](const Vector& p) { expected.at(p) = stored(valueAt(pattern, extent, p, -20, 100), type); });
        expectEqual(tile(*op), expected, std::string(pattern) + " " + VXNameFromDataType(type),
                    VXIsFloatType(type) ? 1e-6 : 0);
      }
    }
  }
}

TEST_F(TestPatternTest, NoiseFillsTheRangeAndDependsOnTheSeedOnly) {
  const auto op = make("TestPattern");
  set(*op, "pattern", "noise");
  set(*op, "extent", "64 64 4 1 1 1");
  set(*op, "dataType", "double");
  set(*op, "minValue", "10");
  set(*op, "maxValue", "12");
  const Image first = tile(*op);
  double sum = 0;
  std::set<double> values;
  for (const double value : first.values) {
    ASSERT_GE(value, 10);
    ASSERT_LT(value, 12);
    sum += value;
    values.insert(value);
  }
  EXPECT_NEAR(sum / static_cast<double>(first.values.size()), 11, 0.02);
  EXPECT_EQ(values.size(), first.values.size());
  set(*op, "pageExtent", "5 3 2 1 1 1");
  expectEqual(tile(*op), first, "other pages");
  set(*op, "seed", "1");
  EXPECT_NE(tile(*op).values, first.values);
}

TEST_F(TestPatternTest, PropertiesAreThoseOfTheFields) {
  const auto op = make("TestPattern");
  set(*op, "extent", "20 30 40 2 3 4");
  set(*op, "pageExtent", "64 8 1 1 1 1");
  set(*op, "dataType", "int16");
  set(*op, "minValue", "-5");
  set(*op, "maxValue", "99");
  set(*op, "voxelSize", "0.5 2 3");
  const PagedImg& image = updated(*op);
  EXPECT_EQ(image.getImgExt(), Vector(20, 30, 40, 2, 3, 4));
  EXPECT_EQ(image.getPageExt(), Vector(20, 8, 1, 1, 1, 1));
  EXPECT_EQ(image.getDataType(), VXint16Type);
  EXPECT_EQ(image.getMinVoxelValue(), -5);
  EXPECT_EQ(image.getMaxVoxelValue(), 99);
  EXPECT_EQ(image.getVoxelSize(), Tvec3<double>(0.5, 2, 3));
  EXPECT_EQ((*image.getToWorldMatrix())[1][1], 2);
}

TEST_F(TestPatternTest, AHugeImageCostsNothingButItsTiles) {
  const auto op = make("TestPattern");
  set(*op, "extent", "20000 10000 1000 1 2 10");
  set(*op, "pattern", "checkerboard");
  set(*op, "cellSize", "1");
  updated(*op);
  EXPECT_EQ(messages.take().size(), 1U);  // the page extent is adapted to so many voxels
  const SubImgBox box({19998, 9999, 500, 0, 1, 9}, {19999, 9999, 500, 0, 1, 9});
  EXPECT_EQ(tile(*op, box, VXuint8Type).values, (std::vector<double>{255, 0}));
}

TEST_F(TestPatternTest, BadFieldsAreSaidInTheState) {
  struct Row {
    const char* field;
    const char* value;
    const char* good;
    int code;
    const char* state;
  };
  const Row rows[] = {
      {"extent", "0 1 1 1 1 1", "4 4 1 1 1 1", VX_BAD_PARAMETER,
       "Field extent: no image of 0 1 1 1 1 1 voxels can be made."},
      {"extent", "4 -2 1 1 1 1", "4 4 1 1 1 1", VX_BAD_PARAMETER,
       "Field extent: no image of 4 -2 1 1 1 1 voxels can be made."},
      {"extent", "9e15 9e15 1 1 1 1", "4 4 1 1 1 1", VX_BAD_PARAMETER,
       "Field extent: no image of 9000000000000000 9000000000000000 1 1 1 1 voxels can be made."},
      {"pageExtent", "0 1 1 1 1 1", "4 4 1 1 1 1", VX_BAD_PARAMETER,
       "Field pageExtent: each component must be at least 1."},
      {"minValue", "1000", "0", VX_BAD_PARAMETER, "Fields minValue and maxValue: 1000 to 255 is no range."},
      {"cellSize", "0", "1", VX_BAD_PARAMETER, "Field cellSize: must be at least 1."},
      {"voxelSize", "1 0 1", "1 1 1", VX_BAD_PARAMETER, "Field voxelSize: each component must be above 0."},
  };
  const auto op = make("TestPattern");
  for (const Row& row : rows) {
    set(*op, row.field, row.value);
    expectInvalid(*op, row.code, row.state);
    set(*op, row.field, row.good);
    updated(*op);
  }
  static_cast<EnumField*>(op->getFieldContainer()->getField("pattern"))->setEnumValue(77);
  expectInvalid(*op, VX_BAD_PARAMETER, "Field pattern: there is no item 77.");
  set(*op, "pattern", "ramp");
  static_cast<VXDataTypeField*>(op->getFieldContainer()->getField("dataType"))->setVXDataTypeValue(-1);
  expectInvalid(*op, VX_BAD_DATA_TYPE, "Field dataType: not a standard voxel type.");
}

}  // namespace
}  // namespace vx::test
