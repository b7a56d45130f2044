// SubImage, Reformat, Resample, Projection and Switch against the same formula on the whole image.

#include "ModuleFixture.h"

#include <algorithm>
#include <cmath>

namespace vx::test {
namespace {

const Vector extent(19, 11, 6, 3, 2, 2);

class GeometryTest : public ModuleFixture {
 protected:
  void useSetting(const Setting& setting, ImageSource& source, const Image& image) {
    Host::getDefaultHost().setMaxNumThreads(setting.numThreads);
    source.show(image, setting.pageExt);
  }
  static Tmat4<double> skewMatrix() {
    return Tmat4<double>(0.5, 0.25, 0, 10, 0, 2, 0.5, -20, -0.75, 0, 3, 30, 0, 0, 0, 1);
  }
  static void expectSameWorld(const PagedImg& out, const Vector& p, const Vector& q) {
    const auto toTvec = [](const Vector& v) {
      return Tvec3<double>(static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z));
    };
    Tvec3<double> world;
    out.transformToWorldCoord(toTvec(p), world);
    const Tvec3<double> in = toTvec(q);
    const Tmat4<double> m = skewMatrix();
    for (std::size_t i = 0; i < 3; ++i)
      EXPECT_NEAR(world[i], m[i][0] * in[0] + m[i][1] * in[1] + m[i][2] * in[2] + m[i][3], 1e-9);
  }
};

std::string boxText(const SubImgBox& box) { return text(box.v1) + " " + text(box.v2); }

// SubImage ------------------------------------------------------------------------------------------------------------

TEST_F(GeometryTest, SubImageCropsAndExtends) {
  const auto op = make("SubImage");
  const SubImgBox boxes[] = {{Vector(0), extent - Vector(1)},
                             {{3, 2, 1, 1, 0, 1}, {10, 9, 4, 1, 1, 1}},
                             {{-4, -3, -2, -1, -1, -1}, {22, 12, 7, 3, 2, 2}},
                             {{5, -20, 0, 0, 0, 0}, {8, 3, 30, 0, 0, 0}},
                             {{100, 100, 0, 0, 0, 0}, {120, 104, 3, 0, 0, 0}},
                             {{18, 10, 5, 2, 1, 1}, {18, 10, 5, 2, 1, 1}}};
  for (const VXDataType type : allTypes) {
    const Image image = randomImage(extent, type, 61);
    ImageSource source(image, settings[0].pageExt);
    source.toWorldMatrix = skewMatrix();
    connect(*op, 0, source);
    for (const SubImgBox& box : boxes) {
      set(*op, "box", boxText(box));
      set(*op, "fillValue", "300.5");
      const double fill = stored(300.5, type);
      Image expected(box.getExt(), type);
      forEachPosition(expected.extent, [&](const Vector& p) {
        expected.at(p) = image.contains(p + box.v1) ? image.at(p + box.v1) : fill;
      });
      for (const Setting& setting : settings) {
        useSetting(setting, source, image);
        expectEqual(tile(*op), expected, std::string(VXNameFromDataType(type)) + " " + boxText(box));
      }
      EXPECT_EQ(op->getOutImg(0)->getDataType(), type);
      expectSameWorld(*op->getOutImg(0), {1, 2, 3, 0, 0, 0}, Vector(1, 2, 3, 0, 0, 0) + box.v1);
    }
  }
}

TEST_F(GeometryTest, AnEmptyBoxTakesTheWholeImage) {
  const Image image = randomImage(extent, VXint16Type, 62);
  ImageSource source(image, settings[1].pageExt);
  const auto op = make("SubImage");
  connect(*op, 0, source);
  expectEqual(tile(*op), image, "whole");
  EXPECT_EQ(op->getOutImg(0)->getMaxVoxelValue(), 255);
}

TEST_F(GeometryTest, BadBoxesAreSaidInTheState) {
  ImageSource source(Image({4, 4, 1, 1, 1, 1}, VXdoubleType), settings[0].pageExt);
  const auto op = make("SubImage");
  connect(*op, 0, source);
  set(*op, "box", "-9e18 0 0 0 0 0 9e18 0 0 0 0 0");
  expectInvalid(*op, VX_BAD_PARAMETER, "Field box: a corner is too far away.");
  set(*op, "box", "0 0 0 0 0 0 1e12 1e12 0 0 0 0");
  expectInvalid(*op, VX_BAD_PARAMETER,
                "Field box: no image of 1000000000001 1000000000001 1 1 1 1 voxels can be made.");
}

// Reformat ------------------------------------------------------------------------------------------------------------

TEST_F(GeometryTest, ReformatExchangesAxes) {
  const auto op = make("Reformat");
  const std::string letters = "xyzctu";
  for (const VXDataType type : allTypes) {
    const Image image = randomImage(extent, type, 63);
    ImageSource source(image, settings[0].pageExt);
    source.toWorldMatrix = skewMatrix();
    connect(*op, 0, source);
    for (const std::string axes : {"xyzctu", "yxzctu", "zyxctu", "zxy", "cxyztu", "utczyx", "xuyczt", ""}) {
      set(*op, "axes", axes);
      Vector outExtent;
      std::size_t inAxis[6];
      for (std::size_t d = 0; d < 6; ++d) {
        inAxis[d] = d < axes.size() ? letters.find(axes[d]) : d;
        outExtent[d] = extent[inAxis[d]];
      }
      Image expected(outExtent, type);
      Vector example(1, 2, 1, 1, 1, 0);
      Vector exampleIn;
      for (std::size_t d = 0; d < 6; ++d) exampleIn[inAxis[d]] = std::min(example[d], outExtent[d] - 1);
      forEachPosition(outExtent, [&](const Vector& p) {
        Vector q;
        for (std::size_t d = 0; d < 6; ++d) q[inAxis[d]] = p[d];
        expected.at(p) = image.at(q);
      });
      for (const Setting& setting : settings) {
        useSetting(setting, source, image);
        expectEqual(tile(*op), expected, axes);
      }
      const bool isSpatial = inAxis[0] < 3 && inAxis[1] < 3 && inAxis[2] < 3;
      if (isSpatial) expectSameWorld(*op->getOutImg(0), example, exampleIn);
    }
  }
}

TEST_F(GeometryTest, BadAxesAreSaidInTheState) {
  ImageSource source(Image({4, 4, 1, 1, 1, 1}, VXuint8Type), settings[0].pageExt);
  const auto op = make("Reformat");
  connect(*op, 0, source);
  for (const std::string axes : {"xx", "z", "xyzctux", "XYZ", "xyzct ", "q"}) {
    set(*op, "axes", axes);
    expectInvalid(*op, VX_BAD_PARAMETER, "Field axes: \"" + axes + "\" is no order of the letters xyzctu.");
  }
}

// Resample ------------------------------------------------------------------------------------------------------------

TEST_F(GeometryTest, ResampleTakesNearestVoxelsAndInterpolates) {
  const auto op = make("Resample");
  const double inSizes[] = {0.5, 4, 2};
  const Tvec3<double> sizes[] = {{0.5, 4, 2}, {0.25, 2, 1}, {1, 8, 4}, {0.3, 0, 5}, {0.77, 3.1, 0.9}, {100, 100, 100}};
  for (const VXDataType type : allTypes) {
    const Image image = randomImage(extent, type, 64);
    ImageSource source(image, settings[0].pageExt);
    source.toWorldMatrix = Tmat4<double>(0.5, 0, 0, 3, 0, 0, 2, 3, 0, -4, 0, 3, 0, 0, 0, 1);
    connect(*op, 0, source);
    for (const Tvec3<double>& size : sizes) {
      set(*op, "voxelSize", std::to_string(size[0]) + " " + std::to_string(size[1]) + " " + std::to_string(size[2]));
      Vector outExtent = extent;
      double ratio[3];
      for (std::size_t d = 0; d < 3; ++d) {
        ratio[d] = size[d] == 0 ? 1 : size[d] / inSizes[d];
        outExtent[d] = std::max<VXint64>(std::llround(static_cast<double>(extent[d]) / ratio[d]), 1);
      }
      for (const bool isNearest : {true, false}) {
        set(*op, "interpolation", isNearest ? "nearest" : "trilinear");
        Image expected(outExtent, type);
        forEachPosition(outExtent, [&](const Vector& p) {
          double place[3];
          Vector q = p;
          for (std::size_t d = 0; d < 3; ++d) {
            const double middle = (static_cast<double>(p[d]) + 0.5) * ratio[d];
            place[d] = std::clamp(middle - 0.5, 0.0, static_cast<double>(extent[d] - 1));
            q[d] =
                std::clamp<VXint64>(static_cast<VXint64>(std::floor(isNearest ? middle : place[d])), 0, extent[d] - 1);
          }
          if (isNearest) {
            expected.at(p) = image.at(q);
            return;
          }
          double sum = 0;
          for (int corner = 0; corner < 8; ++corner) {
            Vector r = q;
            double weight = 1;
            for (std::size_t d = 0; d < 3; ++d) {
              const double share = place[d] - static_cast<double>(q[d]);
              const bool isSecond = (corner >> d & 1) != 0;
              weight *= isSecond ? share : 1 - share;
              if (isSecond) r[d] = std::min(q[d] + 1, extent[d] - 1);
            }
            sum += weight * image.at(r);
          }
          expected.at(p) = sum;
        });
        const double largest = VXIsFloatType(type) ? 1000 : std::max(-VXDataTypeMin(type), VXDataTypeMax(type));
        for (const Setting& setting : settings) {
          useSetting(setting, source, image);
          Image result = tile(*op);
          // Sums in another order may fall on the other side of a half.
          const double tolerance = isNearest ? 0 : VXIsFloatType(type) ? 1e-3 : std::max(0.5 + 1e-6, largest * 1e-12);
          ASSERT_EQ(result.extent, outExtent);
          for (std::size_t i = 0; i < result.values.size(); ++i) {
            ASSERT_LE(std::fabs(result.values[i] - expected.values[i]), tolerance)
                << VXNameFromDataType(type) << " " << i;
            if (!isNearest && !VXIsFloatType(type)) {
              ASSERT_EQ(result.values[i], std::nearbyint(result.values[i]));
            }
          }
        }
        EXPECT_EQ(op->getOutImg(0)->getDataType(), type);
        // The centre of the outer border's voxel: outer borders coincide.
        const PagedImg& out = *op->getOutImg(0);
        Tvec3<double> corner;
        out.transformToWorldCoord(Tvec3<double>(-0.5, -0.5, -0.5), corner);
        EXPECT_NEAR(corner[0], 3 - 0.25, 1e-9);
        EXPECT_NEAR(corner[1], 3 - 1, 1e-9);
        EXPECT_NEAR(corner[2], 3 + 2, 1e-9);
        for (std::size_t d = 0; d < 3; ++d)
          EXPECT_NEAR(op->getOutImg(0)->getVoxelSize()[d], size[d] == 0 ? inSizes[d] : size[d], 1e-5);
      }
    }
  }
}

TEST_F(GeometryTest, BadVoxelSizesAreSaidInTheState) {
  ImageSource source(Image({4, 4, 1, 1, 1, 1}, VXuint8Type), settings[0].pageExt);
  const auto op = make("Resample");
  connect(*op, 0, source);
  for (const char* size : {"-1 1 1", "nan 1 1", "1 inf 1"}) {
    set(*op, "voxelSize", size);
    expectInvalid(*op, VX_BAD_PARAMETER, "Field voxelSize: no component may be below 0.");
  }
  for (const char* size : {"1e-300 1 1", "1e-12 1 1", "1e-10 1e-10 1e-10"}) {
    set(*op, "voxelSize", size);
    expectInvalid(*op, VX_BAD_PARAMETER, "Field voxelSize: the image would become too large.");
  }
}

// Projection ----------------------------------------------------------------------------------------------------------

TEST_F(GeometryTest, ProjectionReducesEachAxis) {
  const auto op = make("Projection");
  const char* const names[] = {"x", "y", "z", "c", "t", "u"};
  for (const VXDataType type : allTypes) {
    const Image image = randomImage(extent, type, 65);
    ImageSource source(image, settings[0].pageExt);
    connect(*op, 0, source);
    for (std::size_t axis = 0; axis < 6; ++axis) {
      set(*op, "axis", names[axis]);
      Vector outExtent = extent;
      outExtent[axis] = 1;
      Image maximum(outExtent, type), minimum(outExtent, type), mean(outExtent, type);
      forEachPosition(outExtent, [&](Vector p) {
        const Vector q = p;
        double low = image.at(p), high = low, sum = 0;
        for (p[axis] = 0; p[axis] < extent[axis]; ++p[axis]) {
          low = std::min(low, image.at(p));
          high = std::max(high, image.at(p));
          sum += image.at(p);
        }
        maximum.at(q) = high;
        minimum.at(q) = low;
        mean.at(q) = stored(sum / static_cast<double>(extent[axis]), type);
      });
      for (const Setting& setting : settings) {
        useSetting(setting, source, image);
        const std::string what = std::string(names[axis]) + " " + VXNameFromDataType(type);
        set(*op, "mode", "maximum");
        expectEqual(tile(*op), maximum, what);
        set(*op, "mode", "minimum");
        expectEqual(tile(*op), minimum, what);
        set(*op, "mode", "mean");
        expectEqual(tile(*op), mean, what);
      }
    }
  }
}

TEST_F(GeometryTest, ALongAxisIsProjectedInSlabs) {
  const Vector longExtent(70, 60, 200, 1, 1, 1);
  const Image image = randomImage(longExtent, VXint16Type, 66);
  ImageSource source(image, {32, 32, 3, 1, 1, 1});
  const auto op = make("Projection");
  connect(*op, 0, source);
  Image expected({70, 60, 1, 1, 1, 1}, VXint16Type);
  forEachPosition(expected.extent, [&](Vector p) {
    double high = -1e9;
    const Vector q = p;
    for (p.z = 0; p.z < 200; ++p.z) high = std::max(high, image.at(p));
    expected.at(q) = high;
  });
  expectEqual(tile(*op), expected, "slabs");
  source.failsOnPages = true;
  source.show(image, {32, 32, 3, 1, 1, 1});
  void* data = nullptr;
  updated(*op);
  EXPECT_EQ(BaseOp::getTile(op.get(), 0, SubImgBox(Vector(0), {69, 59, 0, 0, 0, 0}), VXint16Type, &data), VX_BAD_FIELD);
  BaseOp::freeTile(data);
  EXPECT_FALSE(messages.take().empty());
}

// Switch --------------------------------------------------------------------------------------------------------------

TEST_F(GeometryTest, SwitchPassesTheSelectedImageOn) {
  const Image first = randomImage(extent, VXint16Type, 67);
  const Image second = randomImage({5, 6, 7, 1, 1, 1}, VXfloatType, 68);
  ImageSource firstSource(first, settings[1].pageExt);
  ImageSource secondSource(second, {4, 4, 4, 1, 1, 1});
  secondSource.toWorldMatrix = skewMatrix();
  const auto op = make("Switch");
  connect(*op, 1, firstSource);
  connect(*op, 3, secondSource);
  set(*op, "selected", "1");
  expectEqual(tile(*op), first, "first");
  EXPECT_EQ(op->getOutImg(0)->getPageExt(), settings[1].pageExt);
  EXPECT_EQ(op->getBypass(0), 1);
  set(*op, "selected", "3");
  expectEqual(tile(*op), second, "second");
  EXPECT_EQ(op->getOutImg(0)->getDataType(), VXfloatType);
  expectSameWorld(*op->getOutImg(0), {1, 2, 3, 0, 0, 0}, {1, 2, 3, 0, 0, 0});
  // Behind another module the pages are copied.
  const auto behind = make("ScaleShift");
  connect(*behind, 0, *op);
  expectEqual(tile(*behind), second, "behind");
  set(*op, "selected", "1");
  expectEqual(tile(*behind), first, "behind");
}

TEST_F(GeometryTest, SwitchCaresForTheSelectedInputOnly) {
  const Image image = randomImage(extent, VXint16Type, 69);
  ImageSource source(image, settings[1].pageExt);
  ImageSource broken(image, settings[1].pageExt);
  broken.isBroken = true;
  const auto op = make("Switch");
  connect(*op, 0, broken);
  connect(*op, 2, source);
  set(*op, "selected", "2");
  expectEqual(tile(*op), image, "good");
  set(*op, "selected", "0");
  EXPECT_EQ(BaseOp::updateImageProps(op.get(), 0), VX_IMAGE_NOT_CALCULATED);
  set(*op, "selected", "1");
  EXPECT_EQ(BaseOp::updateImageProps(op.get(), 0), VX_OPEN_NETWORK);
  for (const char* selected : {"4", "-1"}) {
    set(*op, "selected", selected);
    expectInvalid(*op, VX_BAD_PARAMETER, std::string("Field selected: there is no input ") + selected + ".");
  }
}

}  // namespace
}  // namespace vx::test
