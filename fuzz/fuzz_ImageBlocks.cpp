// Blocks of voxels anywhere in the space of 64-bit coordinates: what copies, fills and comparisons do to each voxel,
// told by its coordinates in 128 bits.

#include "FuzzBoxes.h"
#include "FuzzCheck.h"

#include "vxSubImg.h"

#include <algorithm>
#include <limits>
#include <vector>

using namespace vx;
using fuzz::print;
using fuzz::require;
using fuzz::requireEqual;
using fuzz::Wide;

namespace {

using Voxels = std::vector<VXint32>;

// A block with memory of its very size, whose voxels are the numbers from `first` on.
class Block {
 public:
  Block(const SubImgBox& box, VXint32 first) : _voxels(static_cast<std::size_t>(box.getNumVoxels())) {
    for (VXint32& voxel : _voxels) voxel = first++;
    subImg = SubImg(box, VXint32Type, _voxels.data());
  }
  const Voxels& getVoxels() const { return _voxels; }
  // Changes a voxel without moving any.
  void set(std::size_t index, VXint32 value) { _voxels[index] = value; }

  SubImg subImg;

 private:
  Voxels _voxels;
};

bool contains(const SubImgBox& box, const Vector& position) {
  for (std::size_t i = 0; i < 6; ++i) {
    if (position[i] < box.v1[i] || position[i] > box.v2[i]) return false;
  }
  return true;
}

// The position of a voxel in a block, x fastest.
std::size_t indexOf(const SubImgBox& box, const Vector& position) {
  std::size_t index = 0;
  for (std::size_t i = 6; i-- > 0;) {
    const Wide extent = Wide{box.v2[i]} - box.v1[i] + 1;
    index = index * static_cast<std::size_t>(extent) + static_cast<std::size_t>(Wide{position[i]} - box.v1[i]);
  }
  return index;
}

// Calls f(position, index) for each voxel of a box, in memory order.
template <class F>
void forEachVoxel(const SubImgBox& box, F f) {
  Vector position = box.v1;
  for (std::size_t index = 0;; ++index) {
    f(static_cast<const Vector&>(position), index);
    std::size_t i = 0;
    while (i < 6 && position[i] == box.v2[i]) {
      position[i] = box.v1[i];
      ++i;
    }
    if (i == 6) return;
    ++position[i];
  }
}

void requireVoxels(const Block& block, const Voxels& shouldBe, const char* what) {
  for (std::size_t i = 0; i < shouldBe.size(); ++i)
    requireEqual(block.getVoxels()[i], shouldBe[i], what, print<VXint32>);
}

// A box of few voxels whose corner is anywhere, or near another corner.
SubImgBox takeBlockBox(fuzz::FuzzInput& input, const Vector& near) {
  const Vector extent = fuzz::takeSmallExtent(input);
  const bool isNear = input.take<VXuint8>() % 8 != 0;
  SubImgBox box;
  for (std::size_t i = 0; i < 6; ++i) {
    const Wide wish = isNear ? Wide{near[i]} + input.takeInRange<VXint64>(0, 4) - 2 : Wide{input.takeNumber()};
    const Wide lowest = std::numeric_limits<VXint64>::min();
    const Wide highest = Wide{std::numeric_limits<VXint64>::max()} - extent[i] + 1;
    box.v1[i] = static_cast<VXint64>(std::min(std::max(wish, lowest), highest));
    box.v2[i] = box.v1[i] + (extent[i] - 1);
  }
  return box;
}

void checkCopy(const SubImgBox& to, const SubImgBox& from) {
  Block target(to, 1000);
  const Block source(from, 1);
  Voxels shouldBe = target.getVoxels();
  forEachVoxel(to, [&](const Vector& p, std::size_t index) {
    if (contains(from, p)) shouldBe[index] = source.getVoxels()[indexOf(from, p)];
  });
  target.subImg.copySubImage(source.subImg);
  requireVoxels(target, shouldBe, "a copy has the common voxels");
  forEachVoxel(to, [&](const Vector& p, std::size_t index) {
    if (contains(from, p)) shouldBe[index] = 2 * source.getVoxels()[indexOf(from, p)] + 5;
  });
  target.subImg.copySubImage(source.subImg, ScaleShiftData(2, 5));
  requireVoxels(target, shouldBe, "a scaled copy has the common voxels");
}

void checkFills(const SubImgBox& box, const SubImgBox& inside, const SubImgBox& from) {
  Block block(box, 1000);
  Voxels shouldBe = block.getVoxels();
  const auto setOutside = [&](auto valueAt) {
    forEachVoxel(box, [&](const Vector& p, std::size_t index) {
      if (!contains(inside, p)) shouldBe[index] = valueAt(p);
    });
  };
  const SubImgBox common = SubImgBox::intersect(box, inside);
  if (!common.isEmpty()) {
    setOutside([&](const Vector& p) { return block.getVoxels()[indexOf(box, common.clamp(p))]; });
  }
  block.subImg.fillBordersWithClampedInputValues(inside);
  requireVoxels(block, shouldBe, "borders take the nearest voxels");

  setOutside([](const Vector&) { return -7; });
  block.subImg.fillBordersWithLDoubleValue(inside, -7);
  requireVoxels(block, shouldBe, "borders take a number");

  static constexpr VXint32 voxel = 123456789;
  setOutside([](const Vector&) { return voxel; });
  block.subImg.fillBordersWithTypeData(inside, reinterpret_cast<const VXuint8*>(&voxel));
  requireVoxels(block, shouldBe, "borders take a voxel");

  // The other block must have all voxels that are asked for.
  if (!contains(from, box.v1) || !contains(from, box.v2)) return;
  const Block source(from, 1);
  setOutside([&](const Vector& p) { return source.getVoxels()[indexOf(from, p)]; });
  block.subImg.fillBordersWithInputValues(inside, source.subImg);
  requireVoxels(block, shouldBe, "borders take the voxels of another block");
}

void checkRange(const SubImgBox& box, const SubImgBox& valid) {
  const Block block(box, -3);
  VXint64 numVoxels = 0;
  VXint32 least = 0;
  VXint32 greatest = 0;
  forEachVoxel(box, [&](const Vector& p, std::size_t index) {
    if (!contains(valid, p)) return;
    const VXint32 voxel = block.getVoxels()[index];
    least = numVoxels == 0 ? voxel : std::min(least, voxel);
    greatest = numVoxels == 0 ? voxel : std::max(greatest, voxel);
    ++numVoxels;
  });
  VXldouble minValue = 99;
  VXldouble maxValue = 99;
  requireEqual(block.subImg.calcMinMax(minValue, maxValue, &valid), numVoxels, "voxels are counted", print<VXint64>);
  requireEqual(minValue, VXldouble(least), "the least voxel", print<VXldouble>);
  requireEqual(maxValue, VXldouble(greatest), "the greatest voxel", print<VXldouble>);
}

void checkComparison(const SubImgBox& a, const SubImgBox& b, std::size_t changed) {
  Block mine(a, 0);
  Block other(b, 0);
  // Equal by their coordinates, but for one voxel.
  forEachVoxel(a, [&](const Vector& p, std::size_t index) { mine.set(index, static_cast<VXint32>(p.x ^ p.y ^ p.u)); });
  forEachVoxel(b, [&](const Vector& p, std::size_t index) { other.set(index, static_cast<VXint32>(p.x ^ p.y ^ p.u)); });
  other.set(changed % other.getVoxels().size(), 0x55AA55);
  Vector firstShouldBe(-1);
  bool isSame = true;
  forEachVoxel(a, [&](const Vector& p, std::size_t index) {
    if (!isSame || !contains(b, p) || mine.getVoxels()[index] == other.getVoxels()[indexOf(b, p)]) return;
    isSame = false;
    firstShouldBe = p;
  });
  bool sameBox = false, sameType = false, isInside = false, isAround = false, sameContents = false;
  Vector first;
  mine.subImg.compare(other.subImg, &sameBox, &sameType, &isInside, &isAround, &sameContents, &first);
  require(sameBox == (a == b) && sameType, "boxes and types are compared");
  require(isInside == (contains(b, a.v1) && contains(b, a.v2)), "a block is inside of another");
  require(isAround == (contains(a, b.v1) && contains(a, b.v2)), "a block is around another");
  require(sameContents == isSame, "contents are compared");
  requireEqual(first, firstShouldBe, "the first difference", print<Vector>);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::silenceMessages();
  fuzz::FuzzInput input(data, size);
  const SubImgBox a = takeBlockBox(input, fuzz::takeVector(input));
  const SubImgBox b = takeBlockBox(input, a.v1);
  const bool isNear = input.takeBool();
  const SubImgBox any = isNear ? takeBlockBox(input, a.v1) : fuzz::takeBox(input);
  checkCopy(a, b);
  checkFills(a, any, b);
  checkRange(a, any);
  checkComparison(a, b, input.take<VXuint8>());
  return 0;
}
