// Median: replaces each voxel by the middle value of its surroundings, which takes spots away and keeps edges.
//
// Input 0: the image. Output 0: the medians, in the input's voxel type, which must be a standard one.
//
// Field      Type    Default      Meaning
// size       vector  3 3 3 1 1 1  extent of the surroundings in voxels, odd, at most 100000 voxels in all
// border     enum    clamp        what stands past the border: clamp: the nearest voxel of the image. fill: fillValue
// fillValue  double  0            value past the border, rounded and limited to the range of the type
//
// Boxes of 3 x 3 and 3 x 3 x 3 in space have loops of their own. Other surroundings of up to 65535 voxels of 8 to 32
// bits are searched bit by bit, for many voxels of a row at once; for floats this takes a copy of the page's input.
// What is left is sorted voxel by voxel. Where the surroundings hold NaN, the result is one of their voxels.

#include "vxModuleKernels.h"
#include "vxModuleTools.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace vx::modules {

namespace {

constexpr VXint64 largestSearchedSize = 65535;  // what a lane of 16 bits counts
constexpr VXint64 shortestSearchedRow = 8;      // shorter ones are no vectors, and sorting is faster

template <class T>
MemoryPtr<T> allocateOrThrow(std::size_t numBytes) {
  MemoryPtr<T> memory(static_cast<T*>(VXAlloc(numBytes, VX_RETURN_NULL)));
  if (!memory) throw static_cast<int>(VX_NO_MEMORY);
  return memory;
}

}  // namespace

class Median : public StandardModule {
 public:
  Median() : StandardModule(1, 1) {
    fields().addVector("size", &_size);
    addEnum("border", borderItems, &_border);
    fields().addDouble("fillValue", &_fillValue);
    setThreadSupport(THREAD_SUPPORTED);
  }

  VX_CLASS_HEADER(Median)

  void calcOutImageProps(int outIndex) override;
  SubImgBox calcInSubImageBox(int /*inIndex*/, const SubImgBox& box, int /*outIndex*/) override {
    return grow(getValidBox(box), _radius);
  }
  using StandardModule::calcOutSubImage;
  void calcOutSubImage(SubImg* outSubImg, int outIndex, SubImg* inSubImgs) override;

 private:
  void sortSlices(const SubImg& out, const SubImg& in) const;
  void searchWindows(const SubImg& out, const SubImg& in) const;
  void searchFloats(const SubImg& out, const SubImg& in) const;
  template <class T>
  void selectEach(const SubImg& out, const SubImg& in) const;

  Vector _size{3, 3, 3, 1, 1, 1};
  int _border = clampBorder;
  double _fillValue = 0;
  Vector _radius;
};

VX_MODULE_SOURCE(Median)

void Median::calcOutImageProps(int /*outIndex*/) {
  PagedImg& image = *getOutImg(0);
  if (!VXIsStandardType(image.getDataType()))
    return invalidate("The voxels of the input have no order.", VX_BAD_DATA_TYPE);
  if (!isValidEnum("border", _border, std::size(borderItems))) return;
  constexpr VXint64 largestSize = 100000;
  VXint64 numVoxels = 1;
  for (std::size_t d = 0; d < Vector::size(); ++d) {
    const bool isGood = _size[d] >= 1 && _size[d] <= largestSize && _size[d] % 2 == 1;
    if (isGood) numVoxels *= _size[d];
    if (!isGood || numVoxels > largestSize) {
      return invalidate("Field size: each component must be odd and at least 1, and their product at most 100000.");
    }
    _radius[d] = _size[d] / 2;
  }
  const Vector pageExt = chooseMarginPageExt(image.getImgExt(), _radius, 128 * 1024);
  if (!isUsableExtent(pageExt + 2 * _radius, VXuint64{1} << 35))
    return invalidate("The surroundings are too large for the image.");
  image.setPageExt(pageExt);
  if (_border == fillBorder) {
    image.setMinVoxelValue(std::min<double>(image.getMinVoxelValue(), _fillValue));
    image.setMaxVoxelValue(std::max<double>(image.getMaxVoxelValue(), _fillValue));
  }
}

void Median::calcOutSubImage(SubImg* outSubImg, int /*outIndex*/, SubImg* inSubImgs) {
  SubImg& in = inSubImgs[0];
  if (in.getBox().isEmpty()) return;
  extendBorders(in, getOutImg(0)->getBoxFromImgExt(), _border, _fillValue);
  if (_size == Vector(3, 3, 3, 1, 1, 1) || _size == Vector(3, 3, 1, 1, 1, 1)) return sortSlices(*outSubImg, in);
  if (_size.getProduct() <= largestSearchedSize && getValidBox(outSubImg->getBox()).getExt().x >= shortestSearchedRow) {
    if (in.getDataType() == VXfloatType) return searchFloats(*outSubImg, in);
    if (moduleKernels().medianOfWindows[in.getDataType()]) return searchWindows(*outSubImg, in);
  }
  switch (in.getDataType()) {
#define VX_SELECT_CASE(T, number) \
  case number:                    \
    return selectEach<T>(*outSubImg, in);
    VX_SELECT_CASE(VXint8, VXint8Type)
    VX_SELECT_CASE(VXuint8, VXuint8Type)
    VX_SELECT_CASE(VXint16, VXint16Type)
    VX_SELECT_CASE(VXuint16, VXuint16Type)
    VX_SELECT_CASE(VXint32, VXint32Type)
    VX_SELECT_CASE(VXuint32, VXuint32Type)
    VX_SELECT_CASE(float, VXfloatType)
    VX_SELECT_CASE(double, VXdoubleType)
    VX_SELECT_CASE(double, VXldoubleType)
    VX_SELECT_CASE(VXint64, VXint64Type)
#undef VX_SELECT_CASE
    default:
      throw static_cast<int>(VX_BAD_DATA_TYPE);
  }
}

// Sorts three voxels along z, then along y, each once for all windows that they are in; what is left along x is the
// matter of the loop that selects.
void Median::sortSlices(const SubImg& out, const SubImg& in) const {
  const VXDataType type = in.getDataType();
  const ModuleKernels& kernels = moduleKernels();
  const auto sortThree = kernels.sortThree[type];
  const std::size_t voxelSize = in.getDataTypeSize();
  const SubImgBox box = getValidBox(out.getBox());
  const auto lineLen = static_cast<std::size_t>(in.getImgExt().x);
  const auto number = static_cast<std::size_t>(box.getExt().x);
  const VXint64 numLines = in.getImgExt().y;
  const bool isVolume = _size.z == 3;
  // Lines are aligned for vectors. Of each slice there are three ranks, and of the lines nine.
  const std::size_t lineBytes = (lineLen * voxelSize + 127) / 64 * 64;
  const MemoryPtr<unsigned char> slices =
      allocateOrThrow<unsigned char>(isVolume ? 3 * static_cast<std::size_t>(numLines) * lineBytes : 1);
  const MemoryPtr<unsigned char> lines = allocateOrThrow<unsigned char>(9 * lineBytes);
  const auto rankedLine = [&](VXint64 rank, VXint64 y) {
    return slices.get() + static_cast<std::size_t>(rank * numLines + y) * lineBytes;
  };
  void* ranked[9];
  for (std::size_t i = 0; i < 9; ++i) ranked[i] = lines.get() + i * lineBytes;

  SubImgBox starts = box;
  starts.v2.y = starts.v1.y;
  forEachRow(starts, [&](const Vector& start) {
    if (isVolume) {
      for (VXint64 y = 0; y < numLines; ++y) {
        const void* rows[3];
        void* sorted[3];
        for (VXint64 k = 0; k < 3; ++k) {
          rows[k] = bytesAt(in, start + Vector(-1, y - 1, k - 1, 0, 0, 0));
          sorted[k] = rankedLine(k, y);
        }
        sortThree(rows, sorted, lineLen);
      }
    }
    for (VXint64 y = 0; y + 2 < numLines; ++y) {
      for (VXint64 rank = 0; rank < (isVolume ? 3 : 1); ++rank) {
        const void* rows[3];
        for (VXint64 k = 0; k < 3; ++k) {
          rows[k] = isVolume ? rankedLine(rank, y + k) : bytesAt(in, start + Vector(-1, y + k - 1, 0, 0, 0, 0));
        }
        sortThree(rows, ranked + 3 * rank, lineLen);
      }
      const auto median = isVolume ? kernels.median27[type] : kernels.median9[type];
      median(ranked, bytesAt(out, start + Vector(0, y, 0, 0, 0, 0)), number);
    }
  });
}

// Finds each median by counting the voxels below a number, all windows of a row at a time.
// \param out its voxels are taken for such of the input's type.
void Median::searchWindows(const SubImg& out, const SubImg& in) const {
  const auto medianOfWindows = moduleKernels().medianOfWindows[in.getDataType()];
  const SubImgBox box = getValidBox(out.getBox());
  const auto width = static_cast<std::size_t>(_size.x);
  const std::size_t numRows = static_cast<std::size_t>(_size.getProduct()) / width;
  const MemoryPtr<const void*> rows = allocateOrThrow<const void*>(numRows * sizeof(const void*));
  forEachRow(box, [&](const Vector& position) {
    const void** next = rows.get();
    forEachRow(SubImgBox(position - _radius, position + _radius),
               [&](const Vector& row) { *next++ = bytesAt(in, row); });
    medianOfWindows(rows.get(), numRows, width, bytesAt(out, position), static_cast<std::size_t>(box.getExt().x));
  });
}

// The same of floats, as integers of the same order; NaN loses its sign and is above all numbers. The input may be the
// memory image of a module, so it is copied.
void Median::searchFloats(const SubImg& out, const SubImg& in) const {
  constexpr VXint32 allButSign = 0x7fffffff;
  constexpr VXint32 infinity = 0x7f800000;
  // Of floats as integers the negative ones are in the wrong order. The function is its own inverse.
  const auto swapOrder = [](VXint32 bits) { return bits ^ ((bits >> 31) & allButSign); };
  const auto toInteger = [&](VXint32 bits) {
    return (bits & allButSign) > infinity ? bits & allButSign : swapOrder(bits);
  };
  const auto convert = [](const void* from, void* to, VXint64 number, auto&& change) {
    for (VXint64 i = 0; i < number; ++i) {
      VXint32 bits;
      std::memcpy(&bits, static_cast<const VXint32*>(from) + i, sizeof bits);
      bits = change(bits);
      std::memcpy(static_cast<VXint32*>(to) + i, &bits, sizeof bits);
    }
  };
  const VXint64 number = in.getBox().getNumVoxels();
  const MemoryPtr<VXint32> memory = allocateOrThrow<VXint32>(static_cast<std::size_t>(number) * sizeof(VXint32));
  convert(in.getData(), memory.get(), number, toInteger);
  searchWindows(out, SubImg(in.getBox(), VXint32Type, memory.get()));
  const SubImgBox box = getValidBox(out.getBox());
  forEachRow(box, [&](const Vector& row) { convert(bytesAt(out, row), bytesAt(out, row), box.getExt().x, swapOrder); });
}

template <class T>
void Median::selectEach(const SubImg& out, const SubImg& in) const {
  const SubImgBox box = getValidBox(out.getBox());
  std::vector<T> values(static_cast<std::size_t>(_size.getProduct()));
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  // NaN is greater than all numbers, so that there is an order.
  const auto isLess = [](T a, T b) { return a < b || (b != b && a == a); };
  forEachRow(box, [&](const Vector& position) {
    T* const target = voxelAt<T>(out, position);
    for (VXint64 i = 0; i < box.getExt().x; ++i) {
      const Vector center = position + Vector(i, 0, 0, 0, 0, 0);
      T* value = values.data();
      forEachRow(SubImgBox(center - _radius, center + _radius),
                 [&](const Vector& row) { value = std::copy_n(voxelAt<T>(in, row), _size.x, value); });
      std::nth_element(values.begin(), middle, values.end(), isLess);
      target[i] = *middle;
    }
  });
}

}  // namespace vx::modules
