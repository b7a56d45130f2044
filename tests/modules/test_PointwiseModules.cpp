// ScaleShift, Threshold and Arithmetic against the same formula on the whole image.

#include "ModuleFixture.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vx::test {
namespace {

const Vector extent(23, 11, 5, 2, 3, 2);
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

class PointwiseTest : public ModuleFixture {
 protected:
  void useSetting(const Setting& setting, ImageSource& source, const Image& image) {
    Host::getDefaultHost().setMaxNumThreads(setting.numThreads);
    source.show(image, setting.pageExt);
  }
  static Image map(const Image& in, VXDataType type, const std::function<double(double)>& f) {
    Image out(in.extent, type);
    for (std::size_t i = 0; i < in.values.size(); ++i) out.values[i] = stored(f(in.values[i]), type);
    return out;
  }
};

TEST_F(PointwiseTest, ScaleShiftMapsAllTypesToAllTypes) {
  const auto op = make("ScaleShift");
  set(*op, "scale", "-1.5");
  set(*op, "shift", "0.25");
  for (const VXDataType in : allTypes) {
    const Image image = randomImage(extent, in, 7);
    ImageSource source(image, settings[1].pageExt);
    connect(*op, 0, source);
    for (const VXDataType out : allTypes) {
      set(*op, "outputType", VXNameFromDataType(out));
      expectEqual(tile(*op), map(image, out, [](double v) { return v * -1.5 + 0.25; }),
                  std::string(VXNameFromDataType(in)) + " to " + VXNameFromDataType(out));
      EXPECT_EQ(op->getOutImg(0)->getDataType(), out);
    }
    for (const Setting& setting : settings) {
      useSetting(setting, source, image);
      set(*op, "outputType", "automatic");
      expectEqual(tile(*op), map(image, in, [](double v) { return v * -1.5 + 0.25; }), VXNameFromDataType(in));
      EXPECT_EQ(op->getOutImg(0)->getDataType(), in);
    }
  }
}

TEST_F(PointwiseTest, ScaleShiftRoundsHalvesToEvenAndLimits) {
  Image image({14, 1, 1, 1, 1, 1}, VXdoubleType);
  image.values = {0.5,   1.5,    2.5,      -0.5,      -1.5, 0.49999999999999994, 254.5, 255.5,
                  1e300, -1e300, infinity, -infinity, nan,  4503599627370497.5};
  ImageSource source(image, {128, 1, 1, 1, 1, 1});
  const auto op = make("ScaleShift");
  connect(*op, 0, source);
  set(*op, "outputType", "unsigned int8");
  EXPECT_EQ(tile(*op).values, (std::vector<double>{0, 2, 2, 0, 0, 0, 254, 255, 255, 0, 255, 0, 0, 255}));
  set(*op, "outputType", "int64");
  EXPECT_EQ(tile(*op).values,
            (std::vector<double>{0, 2, 2, 0, -2, 0, 254, 256, 0x1p63, -0x1p63, 0x1p63, -0x1p63, 0, 4503599627370498}));
}

TEST_F(PointwiseTest, ScaleShiftMapsTheRangeOfValues) {
  ImageSource source(randomImage({4, 4, 1, 1, 1, 1}, VXuint8Type, 1), {4, 4, 1, 1, 1, 1});
  source.minimum = 10;
  source.maximum = 200;
  const auto op = make("ScaleShift");
  connect(*op, 0, source);
  set(*op, "scale", "-2");
  set(*op, "outputType", "int16");
  EXPECT_EQ(updated(*op).getMinVoxelValue(), -400);
  EXPECT_EQ(updated(*op).getMaxVoxelValue(), -20);
  set(*op, "outputType", "unsigned int8");
  EXPECT_EQ(updated(*op).getMinVoxelValue(), 0);
  EXPECT_EQ(updated(*op).getMaxVoxelValue(), 0);
  set(*op, "scale", "nan");
  expectInvalid(*op, VX_BAD_PARAMETER, "Fields scale and shift: must be finite.");
  set(*op, "scale", "1");
  disconnect(*op, 0);
  EXPECT_EQ(BaseOp::updateImageProps(op.get(), 0), VX_OPEN_NETWORK);
}

TEST_F(PointwiseTest, ThresholdTellsInsideFromOutside) {
  const auto op = make("Threshold");
  for (const VXDataType in : allTypes) {
    const Image image = randomImage(extent, in, 11);
    ImageSource source(image, settings[0].pageExt);
    connect(*op, 0, source);
    set(*op, "lower", "3");
    set(*op, "upper", "100.5");
    for (const Setting& setting : settings) {
      useSetting(setting, source, image);
      set(*op, "keepInside", "0");
      set(*op, "insideValue", "7");
      set(*op, "outsideValue", "2");
      expectEqual(tile(*op), map(image, VXuint8Type, [](double v) { return v >= 3 && v <= 100.5 ? 7 : 2; }),
                  VXNameFromDataType(in));
      EXPECT_EQ(op->getOutImg(0)->getDataType(), VXuint8Type);
      set(*op, "keepInside", "1");
      set(*op, "outsideValue", "-1");
      expectEqual(tile(*op), map(image, in, [](double v) { return v >= 3 && v <= 100.5 ? v : -1; }),
                  VXNameFromDataType(in));
      EXPECT_EQ(op->getOutImg(0)->getDataType(), in);
    }
  }
}

TEST_F(PointwiseTest, ThresholdPutsNaNOutsideAndItsLimitsInside) {
  Image image({5, 1, 1, 1, 1, 1}, VXfloatType);
  image.values = {nan, 1, 2, 3, infinity};
  ImageSource source(image, {5, 1, 1, 1, 1, 1});
  const auto op = make("Threshold");
  connect(*op, 0, source);
  set(*op, "lower", "1");
  set(*op, "upper", "2");
  EXPECT_EQ(tile(*op).values, (std::vector<double>{0, 1, 1, 0, 0}));
  EXPECT_EQ(op->getOutImg(0)->getMaxVoxelValue(), 1);
  set(*op, "lower", "nan");
  expectInvalid(*op, VX_BAD_PARAMETER, "Fields lower and upper: must be numbers.");
}

struct Operation {
  const char* name;
  double (*f)(double, double);
};
const Operation operations[] = {{"add", [](double a, double b) { return a + b; }},
                                {"subtract", [](double a, double b) { return a - b; }},
                                {"multiply", [](double a, double b) { return a * b; }},
                                {"divide", [](double a, double b) { return a / b; }},
                                {"minimum", [](double a, double b) { return std::min(a, b); }},
                                {"maximum", [](double a, double b) { return std::max(a, b); }},
                                {"difference", [](double a, double b) { return std::fabs(a - b); }}};

TEST_F(PointwiseTest, ArithmeticCombinesTwoImagesOfAllTypes) {
  const auto op = make("Arithmetic");
  for (const VXDataType a : allTypes) {
    const Image first = randomImage(extent, a, 3);
    ImageSource firstSource(first, settings[0].pageExt);
    connect(*op, 0, firstSource);
    for (const VXDataType b : {VXuint8Type, VXint16Type, VXfloatType, VXint64Type}) {
      const Image second = randomImage(extent, b, 4);
      ImageSource secondSource(second, {5, 4, 3, 2, 1, 1});
      connect(*op, 1, secondSource);
      for (const Operation& operation : operations) {
        set(*op, "operation", operation.name);
        const VXDataType type = VXPromotedType(a, b);
        Image expected(extent, type);
        for (std::size_t i = 0; i < expected.values.size(); ++i)
          expected.values[i] = stored(operation.f(first.values[i], second.values[i]), type);
        expectEqual(tile(*op), expected,
                    std::string(operation.name) + " " + VXNameFromDataType(a) + " " + VXNameFromDataType(b));
        EXPECT_EQ(op->getOutImg(0)->getDataType(), type);
      }
      disconnect(*op, 1);
    }
  }
}

TEST_F(PointwiseTest, ArithmeticTakesTheConstantForAnOpenInput) {
  const Image image = randomImage(extent, VXint16Type, 5);
  ImageSource source(image, settings[0].pageExt);
  const auto op = make("Arithmetic");
  connect(*op, 0, source);
  set(*op, "constant", "-7.5");
  for (const Setting& setting : settings) {
    useSetting(setting, source, image);
    for (const Operation& operation : operations) {
      set(*op, "operation", operation.name);
      expectEqual(tile(*op), map(image, VXint16Type, [&](double v) { return operation.f(v, -7.5); }), operation.name);
    }
  }
}

TEST_F(PointwiseTest, ArithmeticRepeatsDimensionsOfExtentOne) {
  const Image first = randomImage(extent, VXint32Type, 8);
  ImageSource firstSource(first, settings[1].pageExt);
  const auto op = make("Arithmetic");
  connect(*op, 0, firstSource);
  set(*op, "outputType", "double");
  for (std::size_t d = 0; d < 6; ++d) {
    Vector small = extent;
    small[d] = 1;
    if (d == 5) small = Vector(1);
    const Image second = randomImage(small, VXuint8Type, 9);
    ImageSource secondSource(second, {4, 4, 2, 1, 1, 1});
    connect(*op, 1, secondSource);
    Image expected(extent, VXdoubleType);
    forEachPosition(extent, [&](const Vector& p) { expected.at(p) = first.at(p) + second.clamped(p); });
    expectEqual(tile(*op), expected, "dimension " + std::to_string(d));
    disconnect(*op, 1);
  }
}

TEST_F(PointwiseTest, ArithmeticRefusesExtentsThatDontFitAndBrokenInputs) {
  ImageSource first(randomImage({4, 4, 1, 1, 1, 1}, VXuint8Type, 1), {4, 4, 1, 1, 1, 1});
  ImageSource second(randomImage({4, 3, 1, 1, 1, 1}, VXuint8Type, 1), {4, 4, 1, 1, 1, 1});
  const auto op = make("Arithmetic");
  connect(*op, 0, first);
  connect(*op, 1, second);
  expectInvalid(*op, VX_BAD_PARAMETER, "The extents of the inputs don't fit: 4 4 1 1 1 1 and 4 3 1 1 1 1.");
  second.isBroken = true;
  second.show(Image({4, 4, 1, 1, 1, 1}, VXuint8Type), {4, 4, 1, 1, 1, 1});
  EXPECT_EQ(BaseOp::updateImageProps(op.get(), 0), VX_IMAGE_NOT_CALCULATED);
  static_cast<EnumField*>(op->getFieldContainer()->getField("operation"))->setEnumValue(-1);
  second.isBroken = false;
  second.show(Image({4, 4, 1, 1, 1, 1}, VXuint8Type), {4, 4, 1, 1, 1, 1});
  expectInvalid(*op, VX_BAD_PARAMETER, "Field operation: there is no item -1.");
}

TEST_F(PointwiseTest, ADivisionByZeroIsInfiniteOrTheLimit) {
  Image image({3, 1, 1, 1, 1, 1}, VXint16Type);
  image.values = {5, 0, -5};
  ImageSource source(image, {3, 1, 1, 1, 1, 1});
  const auto op = make("Arithmetic");
  connect(*op, 0, source);
  set(*op, "operation", "divide");
  EXPECT_EQ(tile(*op).values, (std::vector<double>{32767, 0, -32768}));
  set(*op, "outputType", "float");
  const Image result = tile(*op);
  EXPECT_EQ(result.values[0], infinity);
  EXPECT_TRUE(std::isnan(result.values[1]));
  EXPECT_EQ(result.values[2], -infinity);
}

TEST_F(PointwiseTest, AChangeOfAFieldOrAnInputMakesTheOutputNew) {
  const Image image =
      makeImage({3, 1, 1, 1, 1, 1}, VXint16Type, [](const Vector& p) { return static_cast<double>(p.x); });
  ImageSource source(image, {3, 1, 1, 1, 1, 1});
  const auto op = make("ScaleShift");
  connect(*op, 0, source);
  EXPECT_EQ(tile(*op).values, (std::vector<double>{0, 1, 2}));
  set(*op, "instanceName", "other");
  EXPECT_TRUE(op->getOutImg(0)->isUpToDate());
  set(*op, "shift", "5");
  EXPECT_FALSE(op->getOutImg(0)->isUpToDate());
  EXPECT_EQ(tile(*op).values, (std::vector<double>{5, 6, 7}));
  source.show(makeImage({2, 1, 1, 1, 1, 1}, VXuint8Type, [](const Vector&) { return 9.0; }), {3, 1, 1, 1, 1, 1});
  EXPECT_FALSE(op->getOutImg(0)->isUpToDate());
  EXPECT_EQ(tile(*op).values, (std::vector<double>{14, 14}));
}

TEST_F(PointwiseTest, AHostThatWantsToStopIsObeyed) {
  ImageSource source(Image({3, 1, 1, 1, 1, 1}, VXint16Type), {3, 1, 1, 1, 1, 1});
  const auto op = make("ScaleShift");
  connect(*op, 0, source);
  updated(*op);
  Host::getDefaultHost().setBreakCheckCB(nullptr, [](void*, void** field) { return field ? 0 : 1; });
  void* data = nullptr;
  EXPECT_EQ(BaseOp::getTile(op.get(), 0, SubImgBox(Vector(0), Vector(0)), VXint16Type, &data),
            VX_PAGE_CALCULATION_FAILED);
  BaseOp::freeTile(data);
  Host::getDefaultHost().setBreakCheckCB(nullptr, nullptr);
  messages.take();
}

}  // namespace
}  // namespace vx::test
