// Convolution, Median and GradientMagnitude against the same formula on the whole image.

#include "ModuleFixture.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vx::test {
namespace {

// The smaller images are one page or a bit more, the larger ones have several pages in several dimensions.
const Vector smallExtent(13, 7, 5, 2, 2, 3);
const Vector flatExtent(37, 29, 1, 1, 1, 1);
const Vector largeExtent(261, 40, 20, 1, 1, 1);

class NeighbourhoodTest : public ModuleFixture {
 protected:
  enum Border { clamp, fill };

  static double voxelAt(const Image& in, const Vector& p, Border border, double fillValue) {
    return border == clamp || in.contains(p) ? in.clamped(p) : fillValue;
  }
  template <class F>
  static void forEachNeighbour(const Vector& p, const Vector& radius, F&& f) {
    forEachPosition(2 * radius + Vector(1), [&](const Vector& offset) { f(p + offset - radius, offset - radius); });
  }
  static Image boxMean(const Image& in, const Vector& size, Border border, double fillValue, VXDataType type) {
    Image out(in.extent, type);
    forEachPosition(in.extent, [&](const Vector& p) {
      double sum = 0;
      forEachNeighbour(p, size / 2, [&](const Vector& q, const Vector&) { sum += voxelAt(in, q, border, fillValue); });
      out.at(p) = stored(sum / static_cast<double>(size.getProduct()), type);
    });
    return out;
  }
  static Image median(const Image& in, const Vector& size, Border border, double fillValue) {
    Image out(in.extent, in.dataType);
    std::vector<double> values;
    forEachPosition(in.extent, [&](const Vector& p) {
      values.clear();
      forEachNeighbour(p, size / 2,
                       [&](const Vector& q, const Vector&) { values.push_back(voxelAt(in, q, border, fillValue)); });
      std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2), values.end());
      out.at(p) = values[values.size() / 2];
    });
    return out;
  }
  // One dimension after the other, in double precision.
  static Image gauss(Image in, const double (&sigmas)[6], Border border, double fillValue) {
    for (std::size_t d = 0; d < 6; ++d) {
      const auto radius = static_cast<VXint64>(std::ceil(3 * sigmas[d]));
      std::vector<double> weights;
      double sum = 0;
      for (VXint64 k = -radius; k <= radius; ++k) {
        weights.push_back(k == 0 ? 1 : std::exp(-0.5 * static_cast<double>(k * k) / (sigmas[d] * sigmas[d])));
        sum += weights.back();
      }
      Image out(in.extent, VXdoubleType);
      forEachPosition(in.extent, [&](const Vector& p) {
        for (VXint64 k = -radius; k <= radius; ++k) {
          Vector q = p;
          q[d] += k;
          out.at(p) += weights[static_cast<std::size_t>(k + radius)] / sum * voxelAt(in, q, border, fillValue);
        }
      });
      in = out;
    }
    return in;
  }
  void useSetting(const Setting& setting, ImageSource& source, const Image& image) {
    Host::getDefaultHost().setMaxNumThreads(setting.numThreads);
    source.show(image, setting.pageExt);
  }
};

// Box -----------------------------------------------------------------------------------------------------------------

TEST_F(NeighbourhoodTest, BoxMeansOfAllTypesAreExact) {
  const auto op = make("Convolution");
  for (const VXDataType type : allTypes) {
    for (const Vector& extent : {smallExtent, flatExtent, Vector(1), Vector(3, 1, 2, 1, 1, 1)}) {
      const Image image = randomImage(extent, type, 21);
      ImageSource source(image, settings[0].pageExt);
      connect(*op, 0, source);
      const Image expected = boxMean(image, {3, 3, 3, 1, 1, 1}, clamp, 0, type);
      // Sums of large floating point numbers depend on their order.
      const double tolerance = VXIsFloatType(type) ? 1e-6 : 0;
      for (const Setting& setting : settings) {
        useSetting(setting, source, image);
        expectEqual(tile(*op), expected, std::string(VXNameFromDataType(type)) + " " + text(extent), tolerance);
      }
    }
  }
}

TEST_F(NeighbourhoodTest, BoxMeansOfSeveralPagesAreExact) {
  const Image image = randomImage(largeExtent, VXint16Type, 22);
  ImageSource source(image, settings[2].pageExt);
  const auto op = make("Convolution");
  connect(*op, 0, source);
  const Image expected = boxMean(image, {3, 3, 3, 1, 1, 1}, clamp, 0, VXint16Type);
  for (const unsigned numThreads : {1U, 4U}) {
    Host::getDefaultHost().setMaxNumThreads(numThreads);
    set(*op, "border", "clamp");
    expectEqual(tile(*op), expected, "threads");
    EXPECT_GT(op->getOutImg(0)->getNumPages(), 1);
  }
  const SubImgBox part({100, 30, 10, 0, 0, 0}, {170, 39, 19, 0, 0, 0});
  const Image result = tile(*op, part, VXint16Type);
  forEachPosition(result.extent, [&](const Vector& p) { ASSERT_EQ(result.at(p), expected.at(p + part.v1)) << p; });
}

TEST_F(NeighbourhoodTest, BoxSizesBordersAndOutputTypes) {
  const auto op = make("Convolution");
  for (const VXDataType type : {VXuint8Type, VXint16Type, VXuint16Type, VXint32Type}) {
    const Image image = randomImage(smallExtent, type, 23);
    ImageSource source(image, settings[1].pageExt);
    connect(*op, 0, source);
    for (const Vector& size :
         {Vector(1), Vector(5, 1, 1, 1, 1, 1), Vector(1, 7, 3, 1, 1, 1), Vector(9, 5, 1, 1, 1, 1),
          Vector(1, 1, 5, 3, 1, 3), Vector(3, 1, 1, 1, 3, 1), Vector(15, 9, 1, 1, 1, 1), Vector(3, 3, 11, 1, 1, 1)}) {
      set(*op, "size", text(size));
      for (const Border border : {clamp, fill}) {
        set(*op, "border", border == clamp ? "clamp" : "fill");
        set(*op, "fillValue", "100");
        set(*op, "outputType", "automatic");
        expectEqual(tile(*op), boxMean(image, size, border, 100, type),
                    std::string(VXNameFromDataType(type)) + " size " + text(size));
        set(*op, "outputType", "double");
        expectEqual(tile(*op), boxMean(image, size, border, 100, VXdoubleType), "to double, size " + text(size));
      }
    }
  }
}

TEST_F(NeighbourhoodTest, BoxResultsAreLimitedToTheOutputType) {
  const Image image = randomImage(flatExtent, VXint16Type, 24);
  ImageSource source(image, settings[0].pageExt);
  const auto op = make("Convolution");
  connect(*op, 0, source);
  for (const VXDataType type : allTypes) {
    set(*op, "outputType", VXNameFromDataType(type));
    expectEqual(tile(*op), boxMean(image, {3, 3, 3, 1, 1, 1}, clamp, 0, type), VXNameFromDataType(type));
  }
}

TEST_F(NeighbourhoodTest, AFillValueIsLimitedToTheInputType) {
  const Image image = randomImage({5, 4, 1, 1, 1, 1}, VXuint8Type, 25);
  ImageSource source(image, settings[0].pageExt);
  const auto op = make("Convolution");
  connect(*op, 0, source);
  set(*op, "border", "fill");
  set(*op, "fillValue", "1000");
  expectEqual(tile(*op), boxMean(image, {3, 3, 3, 1, 1, 1}, fill, 255, VXuint8Type), "fill");
}

// Gauss ---------------------------------------------------------------------------------------------------------------

TEST_F(NeighbourhoodTest, GaussianOfAllTypesAndBorders) {
  const auto op = make("Convolution");
  set(*op, "kernel", "Gauss");
  const double sigmas[2][6] = {{1, 1, 1, 0, 0, 0}, {0.5, 2, 0, 0.7, 1, 0.3}};
  for (const VXDataType type : allTypes) {
    const Image image = randomImage(smallExtent, type, 31);
    ImageSource source(image, settings[0].pageExt);
    connect(*op, 0, source);
    const bool isNarrow = type <= VXuint16Type || type == VXfloatType;
    const VXDataType outType = isNarrow ? VXfloatType : VXdoubleType;
    for (const auto& sigma : sigmas) {
      std::string sigmaText;
      for (const double value : sigma) sigmaText += std::to_string(value) + " ";
      set(*op, "sigma", sigmaText);
      for (const Border border : {clamp, fill}) {
        set(*op, "border", border == clamp ? "clamp" : "fill");
        set(*op, "fillValue", "20");
        const Image expected = gauss(image, sigma, border, 20);
        const double largest = VXIsFloatType(type) ? 1000 : std::max(-VXDataTypeMin(type), VXDataTypeMax(type));
        for (const Setting& setting : settings) {
          useSetting(setting, source, image);
          Image result = tile(*op);
          EXPECT_EQ(op->getOutImg(0)->getDataType(), outType);
          // Differences count against the range of the type.
          Image scaled = expected;
          for (double& v : result.values) v /= largest;
          for (double& v : scaled.values) v /= largest;
          expectEqual(result, scaled, std::string(VXNameFromDataType(type)) + " " + sigmaText, isNarrow ? 1e-6 : 1e-13);
        }
      }
    }
  }
}

TEST_F(NeighbourhoodTest, GaussianOfSeveralPages) {
  const Image image = randomImage(largeExtent, VXuint16Type, 32);
  ImageSource source(image, settings[2].pageExt);
  const auto op = make("Convolution");
  connect(*op, 0, source);
  set(*op, "kernel", "Gauss");
  set(*op, "sigma", "2 2 2 0 0 0");
  const Image expected = gauss(image, {2, 2, 2, 0, 0, 0}, clamp, 0);
  Image first;
  for (const unsigned numThreads : {1U, 4U}) {
    Host::getDefaultHost().setMaxNumThreads(numThreads);
    set(*op, "border", "clamp");
    const Image result = tile(*op);
    expectEqual(result, expected, "threads", 2e-6);
    if (numThreads == 1) first = result;
    EXPECT_EQ(result.values, first.values);
  }
  EXPECT_GT(op->getOutImg(0)->getNumPages(), 1);
}

TEST_F(NeighbourhoodTest, AConstantImageStaysAsItIs) {
  const Image image = makeImage(smallExtent, VXuint8Type, [](const Vector&) { return 200.0; });
  ImageSource source(image, settings[0].pageExt);
  const auto op = make("Convolution");
  connect(*op, 0, source);
  expectEqual(tile(*op), image, "box");
  set(*op, "kernel", "Gauss");
  set(*op, "outputType", "unsigned int8");
  expectEqual(tile(*op), image, "Gauss");
}

TEST_F(NeighbourhoodTest, BadKernelsAreSaidInTheState) {
  ImageSource source(Image({4, 4, 1, 1, 1, 1}, VXuint8Type), settings[0].pageExt);
  const auto op = make("Convolution");
  connect(*op, 0, source);
  const std::string sizeText = "Field size: each component must be odd, from 1 to 2001.";
  for (const char* size : {"2 3 3 1 1 1", "0 3 3 1 1 1", "-1 3 3 1 1 1", "2003 1 1 1 1 1", "9e18 1 1 1 1 1"}) {
    set(*op, "size", size);
    expectInvalid(*op, VX_BAD_PARAMETER, sizeText);
  }
  set(*op, "size", "2001 2001 2001 1 1 1");
  expectInvalid(*op, VX_BAD_PARAMETER, "The kernel is too large for the image.");
  set(*op, "kernel", "Gauss");
  const std::string sigmaText = "Field sigma: each component must be from 0 to 333.";
  for (const char* sigma : {"-1 0 0 0 0 0", "nan 0 0 0 0 0", "334 0 0 0 0 0", "inf 0 0 0 0 0"}) {
    set(*op, "sigma", sigma);
    expectInvalid(*op, VX_BAD_PARAMETER, sigmaText);
  }
  set(*op, "sigma", "1 1 0 0 0 0");
  updated(*op);
  static_cast<EnumField*>(op->getFieldContainer()->getField("border"))->setEnumValue(2);
  expectInvalid(*op, VX_BAD_PARAMETER, "Field border: there is no item 2.");
}

// Median --------------------------------------------------------------------------------------------------------------

TEST_F(NeighbourhoodTest, MediansOfAllTypesSizesAndBorders) {
  const auto op = make("Median");
  for (const VXDataType type : allTypes) {
    for (const Vector& extent : {smallExtent, flatExtent, Vector(1), Vector(70, 3, 2, 1, 1, 1)}) {
      const Image image = randomImage(extent, type, 41);
      ImageSource source(image, settings[0].pageExt);
      connect(*op, 0, source);
      for (const Vector& size :
           {Vector(3, 3, 3, 1, 1, 1), Vector(3, 3, 1, 1, 1, 1), Vector(5, 1, 1, 3, 1, 1), Vector(1)}) {
        set(*op, "size", text(size));
        for (const Border border : {clamp, fill}) {
          set(*op, "border", border == clamp ? "clamp" : "fill");
          set(*op, "fillValue", "50");
          const Image expected = median(image, size, border, 50);
          useSetting(settings[border == clamp ? 1 : 2], source, image);
          expectEqual(tile(*op), expected,
                      std::string(VXNameFromDataType(type)) + " size " + text(size) + " image " + text(extent));
          EXPECT_EQ(op->getOutImg(0)->getDataType(), type);
        }
      }
    }
  }
}

TEST_F(NeighbourhoodTest, MediansOfFewValuesAndSeveralPages) {
  // Of two values, each median tells how many of the 27 voxels are high: all decisions of the selection are taken.
  const Image random = randomImage(largeExtent, VXfloatType, 42);
  const Image image =
      makeImage(largeExtent, VXint16Type, [&](const Vector& p) { return random.at(p) > 0 ? 1.0 : 0.0; });
  ImageSource source(image, settings[2].pageExt);
  const auto op = make("Median");
  connect(*op, 0, source);
  const Image expected = median(image, {3, 3, 3, 1, 1, 1}, clamp, 0);
  for (const unsigned numThreads : {1U, 4U}) {
    Host::getDefaultHost().setMaxNumThreads(numThreads);
    set(*op, "border", "clamp");
    expectEqual(tile(*op), expected, "threads");
    EXPECT_GT(op->getOutImg(0)->getNumPages(), 1);
  }
}

// On both sides of the largest windows and the shortest rows that are searched for all voxels of a row at once.
TEST_F(NeighbourhoodTest, MediansOfLargeWindows) {
  const auto op = make("Median");
  for (const VXDataType type : {VXuint16Type, VXfloatType, VXint64Type}) {
    for (const VXint64 extentX : {7, 8}) {
      Image image = randomImage(Vector(extentX, 1, 1, 1, 1, 1), type, 44);
      // Nearly all voxels of a window are below one of them.
      std::fill(image.values.begin() + 1, image.values.end(), image.values.front());
      image.values[4] += 1;
      ImageSource source(image, settings[0].pageExt);
      connect(*op, 0, source);
      for (const Vector& size : {Vector(255, 257, 1, 1, 1, 1), Vector(257, 257, 1, 1, 1, 1)}) {
        set(*op, "size", text(size));
        expectEqual(tile(*op), median(image, size, clamp, 0),
                    std::string(VXNameFromDataType(type)) + " size " + text(size) + " x " + std::to_string(extentX));
      }
    }
  }
}

TEST_F(NeighbourhoodTest, MediansOfFloatsNearZeroAndWithoutEnd) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  constexpr double values[] = {-infinity, -1e30, -1, -1e-42, 0, 1e-42, 1, 1e30, infinity};
  const Image random = randomImage(smallExtent, VXuint16Type, 45);
  const Image image =
      makeImage(smallExtent, VXfloatType, [&](const Vector& p) { return values[static_cast<int>(random.at(p)) % 9]; });
  ImageSource source(image, settings[1].pageExt);
  const auto op = make("Median");
  connect(*op, 0, source);
  for (const Vector& size : {Vector(3, 1, 1, 1, 1, 1), Vector(5, 5, 3, 1, 1, 1)}) {
    set(*op, "size", text(size));
    expectEqual(tile(*op), median(image, size, clamp, 0), text(size));
  }
}

// Where the window is a voxel, the block of the input is the memory image of its module.
TEST_F(NeighbourhoodTest, AMedianLeavesTheMemoryImageOfItsInputAlone) {
  const Image image = randomImage(flatExtent, VXfloatType, 46);
  ImageSource source(image, flatExtent);
  const auto op = make("Median");
  connect(*op, 0, source);
  set(*op, "size", "1 1 1 1 1 1");
  updated(*op);
  MemoryImg& memory = source.getOutImg(0)->getMemoryImg();
  memory.update(nullptr, 0, source.getOutImg(0)->getBoxFromImgExt(), VXfloatType);
  auto* const voxels = static_cast<float*>(memory.getSubImg().getData());
  for (std::size_t i = 0; i < image.values.size(); ++i) voxels[i] = -1.5F - static_cast<float>(i);
  memory.setValid(true);
  const std::vector<float> before(voxels, voxels + image.values.size());
  const std::vector<double> medians = tile(*op).values;
  EXPECT_EQ(medians, std::vector<double>(before.begin(), before.end()));
  EXPECT_EQ(std::vector<float>(voxels, voxels + image.values.size()), before);
}

TEST_F(NeighbourhoodTest, AMedianAmongNaNsIsOneOfTheVoxels) {
  Image image = randomImage(flatExtent, VXfloatType, 43);
  for (std::size_t i = 0; i < image.values.size(); i += 3) image.values[i] = std::numeric_limits<double>::quiet_NaN();
  ImageSource source(image, settings[0].pageExt);
  const auto op = make("Median");
  connect(*op, 0, source);
  for (const char* size : {"3 3 3 1 1 1", "5 5 1 1 1 1"}) {
    set(*op, "size", size);
    for (const double value : tile(*op).values) {
      EXPECT_TRUE(std::isnan(value) ||
                  std::find(image.values.begin(), image.values.end(), value) != image.values.end());
    }
  }
}

// Other windows than those of three voxels have an order: NaN is above all numbers, whatever its sign.
TEST_F(NeighbourhoodTest, AMedianTakesNaNForTheGreatestVoxel) {
  constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
  const auto op = make("Median");
  for (const VXDataType type : {VXfloatType, VXdoubleType}) {
    Image image = randomImage(flatExtent, type, 47);
    Image greatest = image;
    for (std::size_t i = 0; i < image.values.size(); i += 3) {
      image.values[i] = i % 2 == 0 ? notANumber : -notANumber;
      greatest.values[i] = 1e9;
    }
    ImageSource source(image, settings[0].pageExt);
    connect(*op, 0, source);
    for (const Vector& size : {Vector(5, 5, 1, 1, 1, 1), Vector(3, 1, 1, 1, 1, 1)}) {
      set(*op, "size", text(size));
      const std::vector<double> expected = median(greatest, size, clamp, 0).values;
      const std::vector<double> medians = tile(*op).values;
      ASSERT_EQ(medians.size(), expected.size());
      for (std::size_t i = 0; i < medians.size(); ++i) {
        if (expected[i] == 1e9) {
          EXPECT_TRUE(std::isnan(medians[i])) << i;
        } else {
          EXPECT_EQ(medians[i], expected[i]) << i;
        }
      }
    }
  }
}

TEST_F(NeighbourhoodTest, BadSizesOfMediansAreSaidInTheState) {
  ImageSource source(Image({4, 4, 1, 1, 1, 1}, VXuint8Type), settings[0].pageExt);
  const auto op = make("Median");
  connect(*op, 0, source);
  for (const char* size : {"2 3 3 1 1 1", "0 1 1 1 1 1", "-3 1 1 1 1 1", "101 101 101 1 1 1", "100001 1 1 1 1 1"}) {
    set(*op, "size", size);
    expectInvalid(*op, VX_BAD_PARAMETER,
                  "Field size: each component must be odd and at least 1, and their product at most 100000.");
  }
}

// Gradient ------------------------------------------------------------------------------------------------------------

TEST_F(NeighbourhoodTest, GradientsOfAllTypes) {
  const auto op = make("GradientMagnitude");
  for (const VXDataType type : allTypes) {
    for (const Vector& extent :
         {smallExtent, flatExtent, Vector(1), Vector(2, 1, 3, 1, 1, 1), Vector(1, 9, 1, 1, 1, 1)}) {
      const Image image = randomImage(extent, type, 51);
      ImageSource source(image, settings[0].pageExt);
      source.toWorldMatrix =
          Tmat4<double>(0.5, 0, 0, 3, 0, 0, 2, 3, 0, -4, 0, 3, 0, 0, 0, 1);  // voxels of 0.5, 4 and 2
      connect(*op, 0, source);
      for (const bool useVoxelSize : {true, false}) {
        set(*op, "useVoxelSize", useVoxelSize ? "1" : "0");
        const double sizes[] = {useVoxelSize ? 0.5 : 1, useVoxelSize ? 4.0 : 1, useVoxelSize ? 2.0 : 1};
        Image expected(extent, VXdoubleType);
        forEachPosition(extent, [&](const Vector& p) {
          double square = 0;
          for (std::size_t d = 0; d < 3; ++d) {
            if (extent[d] == 1) continue;
            Vector before = p;
            Vector behind = p;
            before[d] = std::max<VXint64>(p[d] - 1, 0);
            behind[d] = std::min(p[d] + 1, extent[d] - 1);
            const double slope =
                (image.at(behind) - image.at(before)) / (static_cast<double>(behind[d] - before[d]) * sizes[d]);
            square += slope * slope;
          }
          expected.at(p) = std::sqrt(square);
        });
        for (const Setting& setting : settings) {
          useSetting(setting, source, image);
          const bool isNarrow = type <= VXuint16Type || type == VXfloatType;
          expectEqual(tile(*op), expected, std::string(VXNameFromDataType(type)) + " image " + text(extent),
                      isNarrow || type != VXdoubleType ? 1e-6 : 1e-13);
          EXPECT_EQ(op->getOutImg(0)->getDataType(),
                    type == VXdoubleType || type == VXldoubleType ? VXdoubleType : VXfloatType);
        }
      }
    }
  }
}

TEST_F(NeighbourhoodTest, ARampHasOneGradientUpToItsBordersAndOnAllPages) {
  const Image image = makeImage(largeExtent, VXint16Type,
                                [](const Vector& p) { return static_cast<double>(2 * p.x + 3 * p.y + 6 * p.z); });
  ImageSource source(image, settings[2].pageExt);
  const auto op = make("GradientMagnitude");
  connect(*op, 0, source);
  set(*op, "outputType", "unsigned int8");
  expectEqual(tile(*op), makeImage(largeExtent, VXuint8Type, [](const Vector&) { return 7.0; }), "ramp");
  EXPECT_GT(op->getOutImg(0)->getNumPages(), 1);
}

}  // namespace
}  // namespace vx::test
