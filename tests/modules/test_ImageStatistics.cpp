#include "ModuleFixture.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <sstream>

namespace vx::test {
namespace {

const Vector extent(23, 11, 5, 2, 3, 2);

class ImageStatisticsTest : public ModuleFixture {
 protected:
  static double number(BaseOp& op, const char* field) {
    const std::string value = get(op, field);
    double result = std::numeric_limits<double>::quiet_NaN();
    std::from_chars(value.data(), value.data() + value.size(), result);
    return result;
  }
  static std::vector<VXint64> bins(BaseOp& op) {
    std::istringstream stream(get(op, "histogram"));
    std::vector<VXint64> result;
    for (VXint64 bin = 0; stream >> bin;) result.push_back(bin);
    return result;
  }
  static void expectEmpty(BaseOp& op) {
    for (const char* field : {"count", "minimum", "maximum", "mean", "deviation", "histogram"})
      EXPECT_EQ(get(op, field), "") << field;
  }
};

TEST_F(ImageStatisticsTest, ResultsAreThoseOfTheWholeImageForAllTypesPagesAndThreads) {
  const auto op = make("ImageStatistics");
  EXPECT_EQ(op->getOutputNum(), 0);
  EXPECT_EQ(get(*op, "status"), "not calculated");
  for (const VXDataType type : allTypes) {
    const Image image = randomImage(extent, type, 71);
    double low = image.values[0], high = low, sum = 0, squares = 0;
    for (const double v : image.values) {
      low = std::min(low, v);
      high = std::max(high, v);
      sum += v;
    }
    const auto count = static_cast<double>(image.values.size());
    for (const double v : image.values) squares += (v - sum / count) * (v - sum / count);
    set(*op, "numBins", "10");
    std::vector<VXint64> expected(10);
    for (const double v : image.values)
      ++expected[std::min<std::size_t>(static_cast<std::size_t>((v - low) / (high - low) * 10), 9)];
    ImageSource source(image, settings[0].pageExt);
    connect(*op, 0, source);
    for (const Setting& setting : settings) {
      Host::getDefaultHost().setMaxNumThreads(setting.numThreads);
      source.show(image, setting.pageExt);
      set(*op, "update", "");
      EXPECT_EQ(get(*op, "status"), "ok");
      EXPECT_EQ(get(*op, "count"), std::to_string(image.values.size()));
      EXPECT_EQ(number(*op, "minimum"), low);
      EXPECT_EQ(number(*op, "maximum"), high);
      EXPECT_NEAR(number(*op, "mean"), sum / count, (high - low) * 1e-12);
      EXPECT_NEAR(number(*op, "deviation"), std::sqrt(squares / count), (high - low) * 1e-12);
      EXPECT_EQ(bins(*op), expected) << VXNameFromDataType(type);
    }
  }
}

TEST_F(ImageStatisticsTest, ThreadsDontChangeABit) {
  const Image image = randomImage({100, 90, 20, 1, 1, 1}, VXdoubleType, 72);
  ImageSource source(image, {16, 8, 2, 1, 1, 1});
  const auto op = make("ImageStatistics");
  connect(*op, 0, source);
  std::string first;
  for (const unsigned numThreads : {1U, 4U, 3U}) {
    Host::getDefaultHost().setMaxNumThreads(numThreads);
    set(*op, "update", "");
    const std::string results = get(*op, "mean") + " " + get(*op, "deviation");
    if (first.empty()) first = results;
    EXPECT_EQ(results, first);
  }
}

TEST_F(ImageStatisticsTest, ARangeSelectsTheBins) {
  Image image({6, 1, 1, 1, 1, 1}, VXfloatType);
  image.values = {-1, 0, 0.5, 1, 2, 3};
  ImageSource source(image, {6, 1, 1, 1, 1, 1});
  const auto op = make("ImageStatistics");
  connect(*op, 0, source);
  set(*op, "numBins", "2");
  set(*op, "rangeMin", "0");
  set(*op, "rangeMax", "2");
  set(*op, "update", "");
  EXPECT_EQ(get(*op, "histogram"), "2 2");
  EXPECT_EQ(get(*op, "minimum"), "-1");
  EXPECT_EQ(get(*op, "maximum"), "3");
  set(*op, "numBins", "0");
  set(*op, "update", "");
  EXPECT_EQ(get(*op, "histogram"), "");
  EXPECT_EQ(get(*op, "status"), "ok");
}

TEST_F(ImageStatisticsTest, NaNIsPassedOver) {
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  Image image({4, 1, 1, 1, 1, 1}, VXfloatType);
  image.values = {nan, 2, nan, 4};
  ImageSource source(image, {4, 1, 1, 1, 1, 1});
  const auto op = make("ImageStatistics");
  connect(*op, 0, source);
  set(*op, "numBins", "2");
  set(*op, "update", "");
  EXPECT_EQ(get(*op, "count"), "2");
  EXPECT_EQ(get(*op, "mean"), "3");
  EXPECT_EQ(get(*op, "deviation"), "1");
  EXPECT_EQ(get(*op, "histogram"), "1 1");
  image.values = {nan, nan, nan, nan};
  source.show(image, {4, 1, 1, 1, 1, 1});
  set(*op, "update", "");
  EXPECT_EQ(get(*op, "status"), "ok");
  EXPECT_EQ(get(*op, "count"), "0");
  EXPECT_EQ(get(*op, "mean"), "");
  EXPECT_EQ(get(*op, "histogram"), "0 0");
}

TEST_F(ImageStatisticsTest, FailuresAreSaidInTheStatus) {
  const auto op = make("ImageStatistics");
  set(*op, "update", "");
  EXPECT_EQ(get(*op, "status"), VXGetErrorCodeDescription(VX_IMAGE_NOT_CALCULATED));
  expectEmpty(*op);
  ImageSource source(randomImage({4, 4, 1, 1, 1, 1}, VXuint8Type, 1), {4, 4, 1, 1, 1, 1});
  connect(*op, 0, source);
  set(*op, "update", "");
  EXPECT_EQ(get(*op, "count"), "16");
  for (const char* numBins : {"-1", "65537"}) {
    set(*op, "numBins", numBins);
    set(*op, "update", "");
    EXPECT_EQ(get(*op, "status"), "Field numBins: must be from 0 to 65536.");
    expectEmpty(*op);
  }
  set(*op, "numBins", "4");
  source.failsOnPages = true;
  source.show(randomImage({4, 4, 1, 1, 1, 1}, VXuint8Type, 1), {4, 4, 1, 1, 1, 1});
  set(*op, "update", "");
  EXPECT_EQ(get(*op, "status"), VXGetErrorCodeDescription(VX_BAD_FIELD));
  expectEmpty(*op);
  EXPECT_FALSE(messages.take().empty());
}

}  // namespace
}  // namespace vx::test
