// A module library as its authors write it: a module that adds 1 to each voxel, and an engine that counts touches.

#include "vxModule.h"

namespace vx::test {

class AddOne : public BaseOp {
 public:
  AddOne() : BaseOp(1, 1) {}

  VX_CLASS_HEADER(AddOne)

  void calcInSubImageProps(int /*inIndex*/, InSubImageProps& props, int /*outIndex*/) override {
    props.scaleShiftData.shift = 1;
  }
};
VX_CLASS_SOURCE(AddOne, "BaseOp")

class TouchCounter : public Engine {
 public:
  TouchCounter() : _count(getFieldContainer()->addInt("count")) { getFieldContainer()->addNotify("touch"); }

  VX_CLASS_HEADER(TouchCounter)

  void handleNotification(Field* field) override {
    if (field->getName() == "touch") _count->setIntValue(_count->getIntValue() + 1);
  }

 private:
  IntField* _count;
};
VX_CLASS_SOURCE(TouchCounter, "Engine")

}  // namespace vx::test

VX_MODULE_LIBRARY(vx::test::AddOne, vx::test::TouchCounter);
