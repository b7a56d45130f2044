// Reformat: exchanges the axes of an image.
//
// Input 0: the image, of any voxel type. Output 0: the same voxels in another order.
//
// Field  Type    Default  Meaning
// axes   string  xyzctu   for each dimension of the output, in the order x y z c t u, the letter of that dimension of
//                         the input that it shows. Each letter stands once. Letters at the end that stay where they
//                         are may be left out: yx exchanges x and y
//
// Columns of the world matrix go with their axes, so that each voxel stays where it is in the world. A spatial
// dimension of the output that shows c, t or u takes the column of a spatial dimension that is gone.

#include "vxModuleTools.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace vx::modules {

namespace {

using Axes = std::array<std::size_t, Vector::size()>;
constexpr char axisLetters[] = "xyzctu";

// \return whether the text is a permutation, completed by the dimensions behind it.
bool readAxes(const std::string& text, Axes& axes) {
  if (text.size() > axes.size()) return false;
  std::array<bool, Vector::size()> isUsed{};
  for (std::size_t d = 0; d < axes.size(); ++d) {
    const char letter = d < text.size() ? text[d] : axisLetters[d];
    const char* const found = letter != '\0' ? std::strchr(axisLetters, letter) : nullptr;
    if (!found) return false;
    axes[d] = static_cast<std::size_t>(found - axisLetters);
    if (isUsed[axes[d]]) return false;
    isUsed[axes[d]] = true;
  }
  return true;
}

Vector permute(const Vector& in, const Axes& axes) {
  Vector out;
  for (std::size_t d = 0; d < axes.size(); ++d) out[d] = in[axes[d]];
  return out;
}

// Copies a row whose voxels lie apart. \tparam Voxel an integer of the size of a voxel.
template <class Voxel>
void gather(const unsigned char* in, VXint64 stride, unsigned char* out, VXint64 number) {
  const auto* const voxels = reinterpret_cast<const Voxel*>(in);
  auto* const result = reinterpret_cast<Voxel*>(out);
  for (VXint64 i = 0; i < number; ++i) result[i] = voxels[i * stride];
}

void gatherAny(const unsigned char* in, VXint64 stride, unsigned char* out, VXint64 number, std::size_t size) {
  switch (size) {
    case 1:
      return gather<VXuint8>(in, stride, out, number);
    case 2:
      return gather<VXuint16>(in, stride, out, number);
    case 4:
      return gather<VXuint32>(in, stride, out, number);
    case 8:
      return gather<VXuint64>(in, stride, out, number);
    default:
      for (VXint64 i = 0; i < number; ++i, in += stride * static_cast<VXint64>(size), out += size)
        std::memcpy(out, in, size);
  }
}

}  // namespace

class Reformat : public StandardModule {
 public:
  Reformat() : StandardModule(1, 1) {
    fields().addString("axes")->setStringValue(axisLetters);
    setVoxelDataTypeSupport(EXPLICIT_TYPES);
    setThreadSupport(THREAD_SUPPORTED);
  }

  VX_CLASS_HEADER(Reformat)

  void calcOutImageProps(int outIndex) override;
  SubImgBox calcInSubImageBox(int inIndex, const SubImgBox& box, int outIndex) override;
  using StandardModule::calcOutSubImage;
  void calcOutSubImage(SubImg* outSubImg, int outIndex, SubImg* inSubImgs) override;

 private:
  Axes _axes{0, 1, 2, 3, 4, 5};
  Axes _inverse{0, 1, 2, 3, 4, 5};
};

VX_MODULE_SOURCE(Reformat)

void Reformat::calcOutImageProps(int /*outIndex*/) {
  const std::string text = fields().getValue("axes");
  if (!readAxes(text, _axes)) return invalidate("Field axes: \"" + text + "\" is no order of the letters xyzctu.");
  for (std::size_t d = 0; d < _axes.size(); ++d) _inverse[_axes[d]] = d;

  PagedImg& image = *getOutImg(0);
  const PagedImg& in = *getInImg(0, true);
  setExtents(image, permute(in.getImgExt(), _axes), permute(in.getPageExt(), _axes));
  std::array<bool, 3> isFree{true, true, true};
  for (std::size_t d = 0; d < 3; ++d) {
    if (_axes[d] < 3) isFree[_axes[d]] = false;
  }
  Tmat4<double> mapping = Tmat4<double>(0.0);
  mapping[3][3] = 1;
  for (std::size_t d = 0; d < 3; ++d) {
    std::size_t column = _axes[d];
    if (column >= 3) {
      column = static_cast<std::size_t>(std::find(isFree.begin(), isFree.end(), true) - isFree.begin());
      isFree[column] = false;
    }
    mapping[column][d] = 1;
  }
  appendVoxelMapping(image, mapping);
  // Texts and times belong to positions in c, t and u, and only to these.
  if (_axes[3] != 3) image.getCDimInfos().clear();
  if (_axes[4] != 4) image.getTDimInfos().clear();
  if (_axes[5] != 5) image.getUDimInfos().clear();
}

SubImgBox Reformat::calcInSubImageBox(int /*inIndex*/, const SubImgBox& box, int /*outIndex*/) {
  const SubImgBox valid = getValidBox(box);
  return SubImgBox(permute(valid.v1, _inverse), permute(valid.v2, _inverse));
}

void Reformat::calcOutSubImage(SubImg* outSubImg, int /*outIndex*/, SubImg* inSubImgs) {
  const SubImgBox box = getValidBox(outSubImg->getBox());
  const std::size_t size = outSubImg->getDataTypeSize();
  const VXint64 stride = inSubImgs[0].getStride()[_axes[0]];
  forEachRow(box, [&](const Vector& position) {
    gatherAny(bytesAt(inSubImgs[0], permute(position, _inverse)), stride, bytesAt(*outSubImg, position), box.getExt().x,
              size);
  });
}

}  // namespace vx::modules
