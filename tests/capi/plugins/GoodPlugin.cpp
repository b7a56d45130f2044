// A module library in order: an image, and a module that doubles each voxel.

#include "vxModule.h"

namespace vx::test {

/// Voxels x + offset, of type int32.
class PluginRamp : public BaseOp {
 public:
  PluginRamp() : BaseOp(0, 1), _offset(getFieldContainer()->addInt("offset")) {
    if (!_offset) throw int{VX_NO_MEMORY};
  }
  VX_CLASS_HEADER(PluginRamp)

  void calcOutImageProps(int outIndex) override {
    getOutImg(outIndex)->setImgExt(TVector<VXint64>(64, 8, 1, 1, 1, 1));
    getOutImg(outIndex)->setPageExt(TVector<VXint64>(16, 8, 1, 1, 1, 1));
    getOutImg(outIndex)->setDataType(VXint32Type);
  }
  void calcOutSubImage(SubImg* outSubImg, int /*outIndex*/, SubImg* /*inSubImgs*/) override {
    const SubImgBox box = outSubImg->getBox();
    auto* voxel = static_cast<VXint32*>(outSubImg->getData());
    for (VXint64 y = box.v1.y; y <= box.v2.y; ++y) {
      for (VXint64 x = box.v1.x; x <= box.v2.x; ++x) *voxel++ = static_cast<VXint32>(x + _offset->getIntValue());
    }
  }
  void handleNotification(Field* field) override {
    if (field == _offset) getOutField(0)->notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
  }

 private:
  IntField* _offset;
};
VX_CLASS_SOURCE(PluginRamp, "BaseOp")

class PluginDouble : public BaseOp {
 public:
  PluginDouble() : BaseOp(1, 1) {}
  VX_CLASS_HEADER(PluginDouble)

  void calcInSubImageProps(int /*inIndex*/, InSubImageProps& props, int /*outIndex*/) override {
    props.scaleShiftData.scale = 2;
  }
  void handleNotification(Field* field) override {
    if (field == getInField(0)) getOutField(0)->notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
  }
};
VX_CLASS_SOURCE(PluginDouble, "BaseOp")

}  // namespace vx::test

VX_MODULE_LIBRARY(vx::test::PluginRamp, vx::test::PluginDouble);
