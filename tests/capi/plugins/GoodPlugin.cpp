// A module library in order: a module that doubles each voxel.

#include "vxModule.h"

namespace vx::test {

class PluginDouble : public BaseOp {
 public:
  PluginDouble() : BaseOp(1, 1) {}
  VX_CLASS_HEADER(PluginDouble)

  void calcInSubImageProps(int /*inIndex*/, InSubImageProps& props, int /*outIndex*/) override {
    props.scaleShiftData.scale = 2;
  }
};
VX_CLASS_SOURCE(PluginDouble, "BaseOp")

}  // namespace vx::test

VX_MODULE_LIBRARY(vx::test::PluginDouble);
