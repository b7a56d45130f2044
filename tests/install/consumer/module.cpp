// A module library with one module: an image whose voxels are x + 10 y + offset.

#include <vxModule.h>

class Greeter : public vx::BaseOp {
 public:
  Greeter() : BaseOp(0, 1), _offset(getFieldContainer()->addInt("offset")) {}
  VX_CLASS_HEADER(Greeter)

  void calcOutImageProps(int outIndex) override {
    getOutImg(outIndex)->setImgExt(vx::TVector<VXint64>(8, 4, 1, 1, 1, 1));
    getOutImg(outIndex)->setPageExt(vx::TVector<VXint64>(4, 4, 1, 1, 1, 1));
    getOutImg(outIndex)->setDataType(VXint32Type);
  }
  void calcOutSubImage(vx::SubImg* outSubImg, int /*outIndex*/, vx::SubImg* /*inSubImgs*/) override {
    const vx::SubImgBox box = outSubImg->getBox();
    auto* voxel = static_cast<VXint32*>(outSubImg->getData());
    for (VXint64 y = box.v1.y; y <= box.v2.y; ++y) {
      for (VXint64 x = box.v1.x; x <= box.v2.x; ++x) {
        *voxel++ = static_cast<VXint32>(x + 10 * y + _offset->getIntValue());
      }
    }
  }
  void handleNotification(vx::Field* field) override {
    if (field == _offset) getOutField(0)->notifyAttachments(vx::FieldSensor::VX_FULL_NOTIFICATION);
  }

 private:
  vx::IntField* _offset;
};
VX_CLASS_SOURCE(Greeter, "BaseOp")

VX_MODULE_LIBRARY(Greeter);
