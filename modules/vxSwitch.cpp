// Switch: passes one of four images on, without a copy.
//
// Inputs 0 to 3: images of any voxel type; those that are not selected may be open or invalid.
// Output 0: the selected image. Its pages are those of the input.
//
// Field     Type  Default  Meaning
// selected  int   0        number of the input, 0 to 3

#include "vxModuleTools.h"

namespace vx::modules {

class Switch : public StandardModule {
 public:
  Switch() : StandardModule(numImages, 1) {
    fields().addInt("selected", &_selected);
    setVoxelDataTypeSupport(EXPLICIT_TYPES);
    setThreadSupport(THREAD_SUPPORTED);
  }

  VX_CLASS_HEADER(Switch)

  INPUT_HANDLE handleInput(int inIndex, INPUT_STATE /*state*/) const override {
    return inIndex == _selected ? INVALIDATE_OUTPUT : USE_PLACEHOLDER;
  }

  void calcOutImageProps(int /*outIndex*/) override {
    setBypass(0, -1);
    unsetOutImgInplace(0);
    if (_selected < 0 || _selected >= numImages)
      return invalidate("Field selected: there is no input " + std::to_string(_selected) + '.');
    getOutImg(0)->setImgProps(*getInImg(_selected, true));
    setBypass(0, _selected);
    setOutImgInplace(0, _selected);
  }

  SubImgBox calcInSubImageBox(int inIndex, const SubImgBox& box, int /*outIndex*/) override {
    return inIndex == _selected ? box : SubImgBox();
  }

  using StandardModule::calcOutSubImage;
  void calcOutSubImage(SubImg* outSubImg, int /*outIndex*/, SubImg* inSubImgs) override {
    const SubImg& in = inSubImgs[_selected];
    if (in.getData() != outSubImg->getData()) outSubImg->copySubImage(in);
  }

 private:
  static constexpr int numImages = 4;
  VXint64 _selected = 0;
};

VX_MODULE_SOURCE(Switch)

}  // namespace vx::modules
