#include "vxModuleTools.h"

#include <algorithm>
#include <charconv>

namespace vx::modules {

namespace {

constexpr const char* outputTypeItems[] = {"automatic",      "int8",        "unsigned int8",  "int16",
                                           "unsigned int16", "int32",       "unsigned int32", "float",
                                           "double",         "long double", "int64"};

}  // namespace

std::string numberText(double value) {
  char text[64];
  const auto end = std::to_chars(text, text + sizeof text, value);
  return std::string(text, end.ptr);
}

std::string extentText(const Vector& extent) {
  std::string text = std::to_string(extent.x);
  for (std::size_t d = 1; d < Vector::size(); ++d) text += ' ' + std::to_string(extent[d]);
  return text;
}

// Base class ----------------------------------------------------------------------------------------------------------

void StandardModule::addOutputType() { addEnum("outputType", outputTypeItems, &_outputType); }

VXDataType StandardModule::getOutputType(VXDataType automatic) const {
  const VXDataType chosen = _outputType - 1;  // the items follow the numbers of the types
  return VXIsStandardType(chosen) ? chosen : VXGetRangeAndPrecisionEquivalent(automatic);
}

void StandardModule::invalidate(const std::string& text, VXErrorCode code, int outIndex) {
  PagedImg& image = *getOutImg(outIndex);
  image.setOutOfDate();
  image.setStateInfo(text, code);
}

bool StandardModule::isValidEnum(const char* name, int value, int numItems) {
  if (value >= 0 && value < numItems) return true;
  invalidate(std::string("Field ") + name + ": there is no item " + std::to_string(value) + ".");
  return false;
}

void StandardModule::calcOutSubImage(SubImg* outSubImg, int outIndex, SubImg* inSubImgs, ThreadInfo& /*threadInfo*/) {
  if (shouldTerminate()) throw static_cast<int>(VX_PAGE_CALCULATION_FAILED);
  calcOutSubImage(outSubImg, outIndex, inSubImgs);
}

void StandardModule::handleNotification(Field* field) {
  if (field != fields().getField("instanceName")) touchOutputs();
}

void StandardModule::touchOutputs() {
  for (VXint64 i = 0; i < getOutputNum(); ++i) getOutField(i)->notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
}

// Voxels --------------------------------------------------------------------------------------------------------------

void fillOutside(SubImg& block, const SubImgBox& box, double value) {
  if (!VXIsStandardType(block.getDataType())) {
    block.fillBordersWithLDoubleValue(box, value);
    return;
  }
  alignas(8) unsigned char voxel[8];
  getStoreRow<double>(block.getDataType())(&value, voxel, 1);
  block.fillBordersWithTypeData(box, voxel);
}

void extendBorders(SubImg& block, const SubImgBox& image, int border, double fillValue) {
  const SubImgBox box = block.getBox();
  if (box.isEmpty() || SubImgBox::intersect(box, image) == box) return;
  if (border == fillBorder) {
    fillOutside(block, image, fillValue);
  } else {
    block.fillBordersWithClampedInputValues(image);
  }
}

SubImgBox grow(const SubImgBox& box, const Vector& margin) {
  return box.isEmpty() ? box : SubImgBox(box.v1 - margin, box.v2 + margin);
}

// Image properties ----------------------------------------------------------------------------------------------------

Vector chooseMarginPageExt(const Vector& imgExt, const Vector& margin, VXint64 maxVoxels) {
  Vector ext = compMin(imgExt, Vector(128, 8, 1, 1, 1, 1));
  while (ext.getProduct() * 2 <= maxVoxels) {
    // The dimension that loses most to its margins grows; without margins, x and then y.
    std::size_t best = Vector::size();
    double bestShare = -1;
    for (std::size_t d = 0; d < Vector::size(); ++d) {
      if (ext[d] >= imgExt[d]) continue;
      const double share = static_cast<double>(margin[d]) / static_cast<double>(ext[d]);
      if (share > bestShare) {
        best = d;
        bestShare = share;
      }
    }
    if (best == Vector::size()) break;
    ext[best] = std::min(ext[best] * 2, imgExt[best]);
  }
  for (std::size_t d = 0; d < Vector::size(); ++d) {
    const VXint64 numPages = (imgExt[d] + ext[d] - 1) / ext[d];
    ext[d] = (imgExt[d] + numPages - 1) / numPages;
  }
  return ext;
}

void setExtents(PagedImg& image, const Vector& imgExt, const Vector& pageExt) {
  image.setImgExt(Vector(1));
  image.setPageExt(pageExt);
  image.setImgExt(imgExt);
}

void appendVoxelMapping(PagedImg& image, const Tmat4<double>& mapping) {
  const Tmat4<double> matrix = *image.getToWorldMatrix() * mapping;
  image.setToWorldMatrix(&matrix);
}

bool isUsableExtent(const Vector& extent, VXuint64 voxelSize) {
  VXuint64 product = voxelSize;
  for (std::size_t d = 0; d < Vector::size(); ++d) {
    if (extent[d] < 1 || !multiplySizes(product, static_cast<VXuint64>(extent[d]), product)) return false;
  }
  return product < VXuint64{1} << 62;
}

}  // namespace vx::modules
