// Boxes, positions and lists of pages for any 64-bit numbers, against 128-bit arithmetic.

#include "FuzzBoxes.h"
#include "FuzzCheck.h"

#include "vxPagedImg.h"

#include <algorithm>
#include <vector>

using namespace vx;
using fuzz::print;
using fuzz::require;
using fuzz::requireEqual;
using fuzz::Wide;

namespace {

constexpr Wide limit64 = Wide{1} << 64;
constexpr Wide maxNumPages = 20000;  // more of them aren't listed here

bool isEmpty(const SubImgBox& box) {
  for (std::size_t i = 0; i < 6; ++i) {
    if (box.v1[i] > box.v2[i]) return true;
  }
  return false;
}

// The number of voxels, or 2 to the power 64 if it is that or more.
Wide countVoxels(const SubImgBox& box) {
  if (isEmpty(box)) return 0;
  Wide product = 1;
  for (std::size_t i = 0; i < 6; ++i) {
    const Wide extent = Wide{box.v2[i]} - box.v1[i] + 1;
    // No extent is 0, so a product that is too large stays so.
    if (extent >= limit64 || product > (limit64 - 1) / extent) return limit64;
    product *= extent;
  }
  return product;
}

void checkExtent(const SubImgBox& box) {
  require(box.isEmpty() == isEmpty(box), "a box is empty if its corners cross");
  Wide extents[6] = {};
  VXuint64 product = 1;
  for (std::size_t i = 0; i < 6 && !isEmpty(box); ++i) extents[i] = Wide{box.v2[i]} - box.v1[i] + 1;
  for (const Wide extent : extents) product *= static_cast<VXuint64>(extent);
  requireEqual(box.getExt(), fuzz::makeVector(extents), "an extent wraps", print<Vector>);
  requireEqual(box.getNumVoxels(), static_cast<VXint64>(product), "a number of voxels wraps", print<VXint64>);
  const Wide numVoxels = countVoxels(box);
  VXuint64 checked = 77;
  require(box.getNumVoxelsChecked(checked) == (numVoxels < limit64), "a number of voxels beyond 64 bits is refused");
  requireEqual(checked, static_cast<VXuint64>(numVoxels < limit64 ? numVoxels : 0), "the number of voxels",
               print<VXuint64>);
}

bool contains(const SubImgBox& box, const Vector& position) {
  for (std::size_t i = 0; i < 6; ++i) {
    if (position[i] < box.v1[i] || position[i] > box.v2[i]) return false;
  }
  return true;
}

void checkOverlap(const SubImgBox& a, const SubImgBox& b, const Vector& position) {
  const SubImgBox both = SubImgBox::intersect(a, b);
  require(both == SubImgBox::intersect(b, a), "an overlap has no order");
  require(contains(both, position) == (contains(a, position) && contains(b, position)),
          "an overlap has what both have");
  for (const SubImgBox* const box : {&a, &b}) {
    for (const Vector* const corner : {&box->v1, &box->v2}) {
      require(contains(both, *corner) == (contains(a, *corner) && contains(b, *corner)),
              "an overlap has common corners");
    }
  }
  const Vector nearest = a.clamp(position);
  if (!isEmpty(a)) require(contains(a, nearest), "a position is moved into the box");
  if (contains(a, position)) require(nearest == position, "a position in the box stays");
  Vector corners[8];
  a.get3DCorners(corners);
  for (std::size_t i = 1; i < 8 && !isEmpty(a); ++i) {
    for (std::size_t k = 0; k < 3; ++k) {
      require(corners[i][k] == (i >> (2 - k) & 1U ? a.v2[k] : a.v1[k]), "corners are in their order");
    }
  }
}

void checkArithmetic(const Vector& a, const Vector& b) {
  Wide sums[6], differences[6], products[6], quotients[6];
  bool hasZero = false;
  Wide dot = 0;
  for (std::size_t i = 0; i < 6; ++i) {
    sums[i] = Wide{a[i]} + b[i];
    differences[i] = Wide{a[i]} - b[i];
    products[i] = Wide{a[i]} * b[i];
    hasZero = hasZero || b[i] == 0;
    quotients[i] = b[i] == 0 ? 0 : Wide{a[i]} / b[i];
    dot = (dot + products[i]) % limit64;
  }
  requireEqual(a + b, fuzz::makeVector(sums), "a sum wraps", print<Vector>);
  requireEqual(a - b, fuzz::makeVector(differences), "a difference wraps", print<Vector>);
  requireEqual(a * b, fuzz::makeVector(products), "a product wraps", print<Vector>);
  requireEqual(Vector::dot(a, b), static_cast<VXint64>(dot), "an inner product wraps", print<VXint64>);
  Vector quotient(77);
  bool isRefused = false;
  try {
    quotient = a / b;
  } catch (int code) {
    isRefused = code == VX_BAD_POINTER;
  }
  require(isRefused == hasZero, "a division by 0 is refused, and no other one");
  if (!hasZero) requireEqual(quotient, fuzz::makeVector(quotients), "a quotient is truncated", print<Vector>);
}

// An index and the position of it in an extent are the same, as long as nothing wraps.
void checkIndices(const Vector& extent, const Vector& position) {
  Wide numVoxels = 1;
  for (std::size_t i = 0; i < 6; ++i) {
    if (extent[i] <= 0) return;
    if (numVoxels > std::numeric_limits<VXint64>::max() / extent[i]) return;
    numVoxels *= extent[i];
  }
  const Vector inside = SubImgBox(Vector(), extent - Vector(1)).clamp(position);
  const Vector strides = extent.getStrides();
  const VXint64 index = Vector::dot(inside, strides);
  require(index >= 0 && index < numVoxels, "an index is below the number of voxels");
  requireEqual(strides.getVectorPosition(index), inside, "an index is that of one position", print<Vector>);
}

// The pages in the order of the list, by four loops fewer than dimensions.
std::vector<VXint64> listPages(const Wide (&first)[6], const Wide (&last)[6], const Vector& strides) {
  std::vector<VXint64> ids;
  Wide page[6];
  std::copy_n(first, 6, page);
  for (;;) {
    Wide id = 0;
    for (std::size_t i = 0; i < 6; ++i) id = (id + page[i] * strides[i]) % limit64;
    ids.push_back(static_cast<VXint64>(id));
    std::size_t i = 0;
    while (i < 6 && page[i] == last[i]) {
      page[i] = first[i];
      ++i;
    }
    if (i == 6) return ids;
    ++page[i];
  }
}

void checkPageIDs(const SubImgBox& box, const Vector& imgExt, const Vector& pageExt) {
  Wide first[6], last[6];
  Wide numPages = 1;
  bool isOutside = false;
  bool isExact = true;
  for (std::size_t i = 0; i < 6; ++i) {
    if (pageExt[i] <= 0) return;
    const Wide lower = std::max<Wide>(box.v1[i], 0);
    const Wide upper = std::min<Wide>(box.v2[i], Wide{imgExt[i]} - 1);
    isOutside = isOutside || lower > upper;
    first[i] = lower / pageExt[i];
    last[i] = upper / pageExt[i];
    // Grids are counted in single precision, which takes the quotients of numbers up to here for what they are.
    isExact = isExact && imgExt[i] <= (1 << 23);
    if (!isOutside) numPages = std::min(numPages * (last[i] - first[i] + 1), limit64);
  }
  std::vector<VXint64> ids{77};
  if (!isOutside && numPages > maxNumPages) return;
  PagedImg::getPageIDs(ids, box, imgExt, pageExt);
  require(!isOutside || ids.empty(), "a region outside the image has no pages");
  if (isOutside) return;
  require(Wide{ids.size()} == numPages, "a region has all its pages");
  Vector grid;
  for (std::size_t i = 0; i < 6; ++i) {
    grid[i] = isExact ? static_cast<VXint64>((Wide{imgExt[i]} + pageExt[i] - 1) / pageExt[i]) : 1;
  }
  if (!isExact) return;
  require(ids == listPages(first, last, grid.getStrides()), "the pages are those of the region, in their order");
}

bool reachesBeyond64Bits(const Vector& corner, const Vector& extent) {
  for (std::size_t i = 0; i < 6; ++i) {
    if (Wide{corner[i]} + extent[i] - 1 > std::numeric_limits<VXint64>::max()) return true;
  }
  return false;
}

void checkPagedImage(const Vector& imgExt, const Vector& pageExt, const SubImgBox& box) {
  // The table of pages is as long as there are pages, which the most negative extents drive to any number.
  Wide numPages = 1;
  for (std::size_t i = 0; i < 6; ++i) {
    const Wide divisor = std::max<Wide>(pageExt[i], 1);
    const Wide count = (std::max<Wide>(imgExt[i], -Wide{imgExt[i]}) + divisor - 1) / divisor;
    if (imgExt[i] < 0 || count == 0) return;
    numPages = std::min(numPages * count, limit64);
  }
  PagedImg image;
  image.setPageExt(pageExt);
  image.setImgExt(imgExt);
  require(image.getNumPages() >= 0 && image.getNumPages() <= 524288, "an image has no more pages than it may");
  if (numPages <= 524288 && Vector::compMin(pageExt, Vector(1)) == Vector(1)) {
    // Whatever the extent is, the pages of the whole image are those of its table.
    std::vector<VXint64> ids;
    if (image.getNumPages() <= maxNumPages) {
      image.getPageIDs(ids, SubImgBox(Vector(), imgExt - Vector(1)));
      require(static_cast<VXint64>(ids.size()) >= image.getNumPages() || image.getNumPages() == 0,
              "the whole image has all pages");
      image.getPageIDs(ids, box);
      for (const VXint64 id : ids) image.isValidPage(id);
    }
  }
  for (const VXint64 id : {VXint64{0}, image.getNumPages() - 1, image.getNumPages(), box.v1.x}) {
    const SubImgBox page = image.getPageBox(id);
    const bool isPage = id >= 0 && id < image.getNumPages();
    require(isPage || page.isEmpty(), "what is no page has no box");
    // The last page may reach beyond 64 bits, and its box then wraps.
    require(!isPage || !page.isEmpty() || reachesBeyond64Bits(page.v1, image.getPageExt()), "a page has a box");
    image.removePage(id, true);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::silenceMessages();
  fuzz::FuzzInput input(data, size);
  const SubImgBox a = fuzz::takeBox(input);
  const SubImgBox b = fuzz::takeBox(input);
  const Vector extent = fuzz::takeVector(input);
  const Vector position = fuzz::takeVector(input);
  checkExtent(a);
  checkExtent(b);
  checkOverlap(a, b, position);
  checkArithmetic(a.v1, position);
  checkArithmetic(extent, a.v2);
  checkIndices(extent, position);
  checkPageIDs(a, extent, position);
  checkPageIDs(b, a.v2, extent);
  checkPagedImage(extent, position, a);
  return 0;
}
