// SubImage: cuts a box out of an image, or extends the image where the box reaches past it.
//
// Input 0: the image, of any voxel type. Output 0: the box, whose first voxel is the new origin. The world matrix is
// moved along, so that each voxel stays where it is in the world.
//
// Field      Type    Default  Meaning
// box        box     empty    corners in voxels of the input, both inclusive: x y z c t u, then the second corner. An
//                             empty box takes the whole image
// fillValue  double  0        value of voxels that the input doesn't have, rounded and limited to the range of the type

#include "vxModuleTools.h"

#include <algorithm>
#include <cmath>

namespace vx::modules {

class SubImage : public StandardModule {
 public:
  SubImage() : StandardModule(1, 1) {
    fields().addSubImgBox("box", &_box);
    fields().addDouble("fillValue", &_fillValue);
    setVoxelDataTypeSupport(EXPLICIT_TYPES);
    setThreadSupport(THREAD_SUPPORTED);
  }

  VX_CLASS_HEADER(SubImage)

  void calcOutImageProps(int outIndex) override;
  SubImgBox calcInSubImageBox(int inIndex, const SubImgBox& box, int outIndex) override;
  using StandardModule::calcOutSubImage;
  void calcOutSubImage(SubImg* outSubImg, int outIndex, SubImg* inSubImgs) override;

 private:
  SubImgBox _box;
  double _fillValue = 0;
  Vector _origin;  // of the output, in voxels of the input
  SubImgBox _input;
};

VX_MODULE_SOURCE(SubImage)

void SubImage::calcOutImageProps(int /*outIndex*/) {
  PagedImg& image = *getOutImg(0);
  _input = image.getBoxFromImgExt();
  const SubImgBox box = _box.isEmpty() ? _input : _box;
  constexpr VXint64 farthest = VXint64{1} << 40;  // positions stay exact in the matrix, and sums of them in range
  for (std::size_t d = 0; d < Vector::size(); ++d) {
    if (box.v1[d] < -farthest || box.v2[d] > farthest) return invalidate("Field box: a corner is too far away.");
  }
  const Vector extent = box.getExt();
  if (!isUsableExtent(extent, VXSizeOf(image.getDataType())))
    return invalidate("Field box: no image of " + extentText(extent) + " voxels can be made.");
  _origin = box.v1;
  setExtents(image, extent, compMin(image.getPageExt(), extent));
  Tmat4<double> shift = Tmat4<double>::getIdentity();
  for (std::size_t i = 0; i < 3; ++i) shift[i][3] = static_cast<double>(box.v1[i]);
  appendVoxelMapping(image, shift);
  if (SubImgBox::intersect(box, _input) != box) {
    const double fill = std::clamp(_fillValue, VXDataTypeMin(image.getDataType()), VXDataTypeMax(image.getDataType()));
    image.setMinVoxelValue(std::min<double>(image.getMinVoxelValue(), fill));
    image.setMaxVoxelValue(std::max<double>(image.getMaxVoxelValue(), fill));
  }
}

SubImgBox SubImage::calcInSubImageBox(int /*inIndex*/, const SubImgBox& box, int /*outIndex*/) {
  const SubImgBox valid = getValidBox(box);
  return SubImgBox::intersect(SubImgBox(valid.v1 + _origin, valid.v2 + _origin), _input);
}

void SubImage::calcOutSubImage(SubImg* outSubImg, int /*outIndex*/, SubImg* inSubImgs) {
  SubImgBox box = inSubImgs[0].getBox();
  if (box.isEmpty()) {
    box = SubImgBox();
  } else {
    box = SubImgBox(box.v1 - _origin, box.v2 - _origin);
    outSubImg->copySubImage(SubImg(box, inSubImgs[0].getDataType(), inSubImgs[0].getData()));
  }
  const SubImgBox page = outSubImg->getBox();
  // The default box lies in front of some pages and not within; an empty one outside of all is needed.
  if (box.isEmpty()) box = SubImgBox(page.v1 - Vector(2), page.v1 - Vector(2));
  if (SubImgBox::intersect(page, box) != page) fillOutside(*outSubImg, box, _fillValue);
}

}  // namespace vx::modules
