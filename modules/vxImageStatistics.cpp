// ImageStatistics: counts and measures the voxels of an image.
//
// Input 0: the image. There is no output: results are fields, calculated when `update` is triggered.
//
// Field      Type    Default         Meaning
// update     notify                  calculates the results
// numBins    int     256             bins of the histogram, 0 to 65536; 0 for none
// rangeMin   double  0               lower limit of the first bin
// rangeMax   double  0               upper limit of the last bin, which belongs to it; unless it is above rangeMin,
//                                    the histogram runs from the minimum to the maximum, which takes a second walk
// status     string  not calculated  "ok", or why the results are empty
// count      string                  number of voxels that aren't NaN; NaN is passed over by all results
// minimum    string                  smallest value
// maximum    string                  greatest value
// mean       string                  mean value
// deviation  string                  standard deviation of the voxels, divided by their number
// histogram  string                  number of voxels in each bin, separated by blanks
//
// Values are read as double precision numbers. Results don't depend on the number of threads.

#include "vxModuleTools.h"

#include <algorithm>
#include <cmath>
#include <mutex>

namespace vx::modules {

namespace {

// Results of some voxels. Squares are those of the distances from the mean, so that large means do no harm.
struct Moments {
  VXint64 count = 0;
  double minimum = 0;
  double maximum = 0;
  double mean = 0;
  double squares = 0;

  void add(const Moments& other) {
    if (other.count == 0) return;
    if (count == 0) {
      *this = other;
      return;
    }
    const auto number = static_cast<double>(count);
    const auto otherNumber = static_cast<double>(other.count);
    const double distance = other.mean - mean;
    count += other.count;
    minimum = std::min(minimum, other.minimum);
    maximum = std::max(maximum, other.maximum);
    mean += distance * (otherNumber / (number + otherNumber));
    squares += other.squares + distance * distance * (number * otherNumber / (number + otherNumber));
  }
};

struct PageMoments {
  Vector position;
  Moments moments;
};

bool isBefore(const PageMoments& a, const PageMoments& b) {
  for (std::size_t d = Vector::size(); d-- > 0;) {
    if (a.position[d] != b.position[d]) return a.position[d] < b.position[d];
  }
  return false;
}

}  // namespace

class ImageStatistics : public StandardModule {
 public:
  ImageStatistics() : StandardModule(1, 0) {
    _update = fields().addNotify("update");
    fields().addInt("numBins", &_numBins);
    fields().addDouble("rangeMin", &_rangeMin);
    fields().addDouble("rangeMax", &_rangeMax);
    for (const char* name : {"status", "count", "minimum", "maximum", "mean", "deviation", "histogram"})
      fields().addString(name);
    fields().setValue("status", "not calculated");
    setThreadSupport(THREAD_SUPPORTED);
  }

  VX_CLASS_HEADER(ImageStatistics)

  SubImgBox calcInSubImageBox(int inIndex, const SubImgBox& box, int /*outIndex*/) override {
    return SubImgBox::intersect(box, getInImg(inIndex, true)->getBoxFromImgExt());
  }
  void calcInSubImageProps(int /*inIndex*/, InSubImageProps& props, int /*outIndex*/) override {
    props.dataType = VXdoubleType;
  }
  using StandardModule::calcOutSubImage;
  void calcOutSubImage(SubImg* outSubImg, int outIndex, SubImg* inSubImgs) override;
  void handleNotification(Field* field) override {
    if (field == _update) update();
  }

 private:
  void update();
  std::string calculate();
  void measure(const SubImg& block);
  void countBins(const SubImg& block);

  NotifyField* _update = nullptr;
  VXint64 _numBins = 256;
  double _rangeMin = 0;
  double _rangeMax = 0;

  // A walk through the pages; workers add to the results under the mutex.
  bool _areBinsCounted = false;
  double _low = 0;
  double _high = 0;
  std::mutex _mutex;
  std::vector<PageMoments> _pages;
  std::vector<VXint64> _bins;
};

VX_MODULE_SOURCE(ImageStatistics)

void ImageStatistics::calcOutSubImage(SubImg* /*outSubImg*/, int /*outIndex*/, SubImg* inSubImgs) {
  if (inSubImgs[0].getBox().isEmpty()) return;
  if (_areBinsCounted) {
    countBins(inSubImgs[0]);
  } else {
    measure(inSubImgs[0]);
  }
}

void ImageStatistics::measure(const SubImg& block) {
  const auto* const voxels = static_cast<const double*>(block.getData());
  const VXint64 number = block.getBox().getNumVoxels();
  PageMoments page{block.getPosition(), {}};
  Moments& moments = page.moments;
  double sum = 0;
  for (VXint64 i = 0; i < number; ++i) {
    const double value = voxels[i];
    if (value != value) continue;
    if (moments.count == 0 || value < moments.minimum) moments.minimum = value;
    if (moments.count == 0 || value > moments.maximum) moments.maximum = value;
    ++moments.count;
    sum += value;
  }
  if (moments.count == 0) return;
  moments.mean = sum / static_cast<double>(moments.count);
  for (VXint64 i = 0; i < number; ++i) {
    const double distance = voxels[i] - moments.mean;
    if (voxels[i] == voxels[i]) moments.squares += distance * distance;
  }
  const std::lock_guard<std::mutex> lock(_mutex);
  _pages.push_back(page);
}

void ImageStatistics::countBins(const SubImg& block) {
  const auto* const voxels = static_cast<const double*>(block.getData());
  const VXint64 number = block.getBox().getNumVoxels();
  std::vector<VXint64> bins(_bins.size());
  const auto numBins = static_cast<double>(bins.size());
  const double range = _high - _low;
  for (VXint64 i = 0; i < number; ++i) {
    if (!(voxels[i] >= _low && voxels[i] <= _high)) continue;
    const double place = range > 0 ? (voxels[i] - _low) / range * numBins : 0.0;
    ++bins[std::min(static_cast<std::size_t>(place), bins.size() - 1)];
  }
  const std::lock_guard<std::mutex> lock(_mutex);
  for (std::size_t i = 0; i < bins.size(); ++i) _bins[i] += bins[i];
}

void ImageStatistics::update() {
  _pages.clear();
  _bins.clear();
  const std::string error = calculate();
  std::sort(_pages.begin(), _pages.end(), isBefore);
  Moments all;
  for (const PageMoments& page : _pages) all.add(page.moments);
  const bool isGood = error.empty();
  const bool hasValues = isGood && all.count > 0;
  std::string histogram;
  for (const VXint64 bin : _bins) histogram += (histogram.empty() ? "" : " ") + std::to_string(bin);
  fields().setValue("count", isGood ? std::to_string(all.count) : std::string());
  fields().setValue("minimum", hasValues ? numberText(all.minimum) : std::string());
  fields().setValue("maximum", hasValues ? numberText(all.maximum) : std::string());
  fields().setValue("mean", hasValues ? numberText(all.mean) : std::string());
  fields().setValue("deviation",
                    hasValues ? numberText(std::sqrt(all.squares / static_cast<double>(all.count))) : std::string());
  fields().setValue("histogram", isGood ? histogram : std::string());
  fields().setValue("status", isGood ? std::string("ok") : error);
}

std::string ImageStatistics::calculate() {
  if (_numBins < 0 || _numBins > 65536) return "Field numBins: must be from 0 to 65536.";
  const auto walk = [this](bool areBinsCounted) {
    _areBinsCounted = areBinsCounted;
    return processAllPages(-1, 0, SubImgBox());
  };
  const auto text = [](int error) { return std::string(VXGetErrorCodeDescription(error)); };
  if (const int error = walk(false)) return text(error);
  if (_numBins == 0) return {};
  _low = _rangeMin;
  _high = _rangeMax;
  if (!(_low < _high)) {
    Moments all;
    for (const PageMoments& page : _pages) all.add(page.moments);
    _low = all.minimum;
    _high = all.maximum;
  }
  if (!std::isfinite(_high - _low)) return {};  // no bins for infinite values
  _bins.assign(static_cast<std::size_t>(_numBins), 0);
  if (const int error = walk(true)) return text(error);
  return {};
}

}  // namespace vx::modules
