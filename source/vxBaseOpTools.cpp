#include "vxBaseOpTools.h"

#include "vxDataTypes.h"
#include "vxErrorOutput.h"
#include "vxGuards.h"
#include "vxPageDivision.h"
#include "vxTraceBuffer.h"
#include "vxTruncate.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace vx {

namespace {

constexpr std::size_t numDims = Vector::size();
constexpr VXint64 maxInt64 = std::numeric_limits<VXint64>::max();

constexpr VXint64 minPageVolume = 1024;     // voxels
constexpr VXint64 smallPageBytes = 32768;   // up to this size pages rather grow than shrink
constexpr double toleratedWaste = 0.1;      // share of the image
constexpr VXint64 manyPages = 16777216;     // above this the count is an error
constexpr VXint64 minPagesPerDoubling = 4;  // a page doubles freely while so many of it fit the image
constexpr Vector doublingLimits(1024, 1024, 32, 4, 4, 4);

// \param value above 0. \param step above 0. \return the nearest multiple that isn't below the value; the greatest
// within 64 bits, which is below it, where that one is beyond them.
VXint64 roundUpToMultiple(VXint64 value, VXint64 step) {
  const VXint64 remainder = value % step;
  if (remainder == 0) return value;
  const VXint64 below = value - remainder;
  return below > maxInt64 - step ? below : below + step;
}

// Makes the conditions of one dimension consistent: 0 < step <= min <= max, both multiples of the step.
void NormalizePageCond(VXint64& step, VXint64& min, VXint64 page, VXint64 img, VXint64& max) {
  if (step <= 0) step = 1;
  min = min <= 0 ? step : roundUpToMultiple(min, step);
  if (max <= 0) {
    max = roundUpToMultiple(std::max({min, img, page}), step);
  } else {
    max = max < min ? min : max - max % step;
  }
}

// The valid extent that is nearest to the one wished for.
VXint64 GetValidPageSize(VXint64 page, VXint64 step, VXint64 min, VXint64 max, VXint64 preferred, VXint64 img) {
  if (min >= max) return min;
  VXint64 candidate = page;
  if (img != 0) {
    const bool isPreferred = preferred != 0 && page == preferred && page > 1;
    if (isPreferred || page > img) candidate = img;
  }
  checkFatal(step != 0);
  const auto isValid = [&](VXint64 ext) { return ext >= min && ext <= max && ext % step == 0; };
  if (isValid(candidate)) return candidate;
  if (isValid(page)) return page;
  if (candidate < min) return min;
  if (candidate > max) return max;
  const double nearest = static_cast<double>(candidate) / static_cast<double>(step) + 0.5;
  // Above 2 to the power 53 the quotient may be rounded past the limits of 64 bits.
  return step * std::min(truncateTo<VXint64>(nearest), maxInt64 / step);
}

// The share of the image by which pages overhang it: ((ext - 1) * img mod ext) / img.
// The product doesn't fit 64 bits, but modulo ext it is -img; the sign of the image cancels out. An image without
// extent has no share: as 0 / 0 it compares as no waste.
double getOverhang(VXint64 ext, VXint64 img) {
  if (img == 0) return std::numeric_limits<double>::quiet_NaN();
  const VXuint64 size = img < 0 ? VXuint64(0) - static_cast<VXuint64>(img) : static_cast<VXuint64>(img);
  const VXuint64 pageSize = static_cast<VXuint64>(ext);
  const VXuint64 remainder = size % pageSize;
  return static_cast<double>(remainder == 0 ? 0 : pageSize - remainder) / static_cast<double>(size);
}

// \return how many tries of a walk from `current` need the same number of pages, if no limit ends the walk before.
VXint64 getRunLength(VXint64 current, VXint64 step, VXint64 img, VXint64 direction) {
  const VXint64 numPages = (img - 1) / current + 1;
  if (direction == -1) return (current - ((img - 1) / numPages + 1)) / step + 1;
  return numPages == 1 ? maxInt64 : ((img - 1) / (numPages - 1) - current) / step + 1;
}

// Walks from *page in one direction, by steps within the limits, until the overhang is tolerated. *page takes the
// first extent with the least overhang. Returns that overhang, or max / img if there is none below that.
//
// The walk may be 2 to the power 62 tries long, so tries are taken by runs, with the result of taking each: as long as
// n pages cover the image, the overhang is (n * ext - img) / img, which rises with the extent, and doesn't cease to
// when it is rounded to a double. So upward nothing in a run is better than its first try, and downward nothing is
// better than its last; the try that is kept is then the first that is as good, or is tolerated. Runs are few: an
// overhang is below ext / img, so from n - 1 = 1 / tolerance pages on the first try of a run ends the walk.
double GetBestPageSize1(VXint64* page, VXint64 step, VXint64 min, VXint64 max, VXint64 img, double tolerance,
                        VXint64 direction) {
  checkFatal(step != 0);
  checkFatal(img != 0);
  VXint64 current = *page;
  double best = static_cast<double>(max) / static_cast<double>(img);
  VXint64 numTries = (direction == -1 ? current - min : max - current) / step + 1;
  // A negative image has a negative best, and no try.
  while (numTries > 0 && tolerance < best) {
    checkFatal(current != 0);
    const VXint64 numInRun = std::min(numTries, getRunLength(current, step, img, direction));
    const auto getExt = [&](VXint64 i) { return current + i * step * direction; };
    VXint64 last = direction == -1 ? numInRun - 1 : 0;
    const double least = getOverhang(getExt(last), img);
    if (least < best) {
      const double wanted = std::max(least, tolerance);
      for (VXint64 first = 0; first < last;) {
        const VXint64 middle = first + (last - first) / 2;
        if (getOverhang(getExt(middle), img) <= wanted) {
          last = middle;
        } else {
          first = middle + 1;
        }
      }
      *page = getExt(last);
      best = getOverhang(*page, img);
    }
    numTries -= numInRun;
    if (numTries > 0) current = getExt(numInRun);
  }
  return best;
}

// The better extent of the walks in both directions. The given direction wins unless the other halves the overhang.
VXint64 GetBestPageSize(VXint64 page, VXint64 step, VXint64 min, VXint64 max, VXint64 img, double tolerance,
                        VXint64 direction) {
  VXint64 a = page;
  const double errorA = GetBestPageSize1(&a, step, min, max, img, tolerance, direction);
  if (errorA <= tolerance) return a;
  VXint64 b = page;
  const double errorB = GetBestPageSize1(&b, step, min, max, img, tolerance, -direction);
  return errorA * 0.5 <= errorB ? a : b;
}

// \return the dimension with the largest component, the first on a tie. \param excluded a dimension to leave out.
std::size_t findLargest(const Vector& v, std::size_t excluded = numDims) {
  std::size_t largest = excluded == 0 ? 1 : 0;
  for (std::size_t i = largest + 1; i < numDims; ++i) {
    if (i != excluded && v[i] > v[largest]) largest = i;
  }
  return largest;
}

// Raises the minimum in the two dimensions with the largest start extent where it allows pages of few voxels. The
// maximum makes way where the caller stated none.
void raiseSmallMinimum(const Vector& page, const Vector& step, Vector& min, Vector& max, const Vector& statedMax) {
  VXint64 minVolume = saturatingProduct(min);
  if (minVolume >= minPageVolume) return;
  const auto getMissing = [&] { return static_cast<double>(minPageVolume) / static_cast<double>(minVolume); };
  const auto raise = [&](std::size_t i, double factor) {
    VXint64 raised = roundUpToMultiple(truncateTo<VXint64>(std::ceil(static_cast<double>(min[i]) * factor)), step[i]);
    if (raised > max[i]) {
      if (statedMax[i] <= 0) {
        max[i] = raised;
      } else {
        raised = max[i];
      }
    }
    minVolume = minVolume / min[i] * raised;
    min[i] = raised;
  };
  const std::size_t i0 = findLargest(page);
  raise(i0, std::sqrt(getMissing()));
  raise(findLargest(page, i0), getMissing());
}

// Improves the extents of the listed dimensions where the pages together overhang the image by too much.
void reduceWaste(Vector& result, const std::array<bool, numDims>& isListed, int dataType, const Vector& step,
                 const Vector& min, const Vector& max, const Vector& img) {
  std::array<double, numDims> overhang{};
  double total = 1.0;
  for (std::size_t i = 0; i < numDims; ++i) {
    overhang[i] = getOverhang(result[i], img[i]);
    total *= 1.0 + overhang[i];
  }
  if (!(total - 1.0 > toleratedWaste)) return;
  const VXint64 bytes = saturatingMultiply(VXSizeOf(dataType), saturatingProduct(result));
  const VXint64 direction = bytes <= smallPageBytes ? 1 : -1;
  const double tolerance = toleratedWaste / static_cast<double>(std::count(isListed.begin(), isListed.end(), true));
  for (std::size_t i = 0; i < numDims; ++i) {
    if (isListed[i] && tolerance < overhang[i]) {
      result[i] = GetBestPageSize(result[i], step[i], min[i], max[i], img[i], tolerance, direction);
    }
  }
}

// Doubles extents until few enough pages are left. \return the number of pages, too many if no extent lowers it.
VXint64 limitPages(Vector& result, const Vector& img) {
  for (;;) {
    const Vector numPages = ceilQuotient(img, result);
    const VXint64 product = saturatingProduct(numPages);
    if (product <= BaseOpTools::MAX_NUM_PAGES_PER_IMAGE) return product;
    std::size_t chosen = 0;
    while (chosen < numDims &&
           (result[chosen] >= doublingLimits[chosen] || minPagesPerDoubling * result[chosen] > img[chosen])) {
      ++chosen;
    }
    if (chosen == numDims) {
      chosen = findLargest(numPages);
      // Only an image with negative extents comes here, since a product of positive counts has a factor above 1: one
      // page stays one however often its extent doubles, and so does the choice of its dimension.
      if (numPages[chosen] == 1 || result[chosen] == maxInt64) return product;
    }
    result[chosen] = saturatingMultiply(result[chosen], 2);
  }
}

}  // namespace

void BaseOpTools::adaptPageExt(TVector<VXint64>& pageExt, int dataType, const TVector<VXint64>& imgExt,
                               const TVector<VXint64>& preferredExt, const TVector<VXint64>& stepExt,
                               const TVector<VXint64>& minExt, const TVector<VXint64>& maxExt) {
  const TraceFrame trace("source/vxBaseOpTools:BaseOpTools::adaptPageExt()");
  // pageExt is written last: it may be one of the other vectors.
  Vector step = stepExt;
  Vector min = minExt;
  Vector max = maxExt;
  for (std::size_t i = 0; i < numDims; ++i) NormalizePageCond(step[i], min[i], pageExt[i], imgExt[i], max[i]);
  raiseSmallMinimum(pageExt, step, min, max, maxExt);

  Vector result;
  std::array<bool, numDims> isListed{};
  for (std::size_t i = 0; i < numDims; ++i) {
    result[i] = GetValidPageSize(pageExt[i], step[i], min[i], max[i], preferredExt[i], imgExt[i]);
    isListed[i] = min[i] < max[i] && imgExt[i] % result[i] != 0;
  }
  if (std::find(isListed.begin(), isListed.end(), true) != isListed.end()) {
    reduceWaste(result, isListed, dataType, step, min, max, imgExt);
  }

  const VXint64 numPages = limitPages(result, imgExt);
  if (numPages > manyPages) {
    report(VX_ERROR, "BaseOp::adaptPageExt", VX_BAD_PARAMETER,
           "Cannot determine adequate page extent for image since image is too large. Therefor probably memory "
           "problems will occur.");
  } else if (numPages > MAX_NUM_PAGES_PER_IMAGE) {
    report(VX_WARNING, "BaseOp::adaptPageExt", VX_BAD_PARAMETER,
           "Number of pages becomes very large since image is too large. Therefor memory problems might occur.");
  }
  pageExt = result;
}

}  // namespace vx
