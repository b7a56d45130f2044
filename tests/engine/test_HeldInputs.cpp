// Inputs that are held whole in one block, where several modules want to hold the same image.

#include "MessageRecorder.h"
#include "NetworkModules.h"

#include "vxHost.h"

#include <cstring>
#include <gtest/gtest.h>

namespace vx::test {
namespace {

class HeldInputsTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(registerNetworkModules());
    Host::pushDefaultHost();
  }
  void TearDown() override { Host::popDefaultHost(); }

  static ModuleParameters parameters(ModuleKind kind, int type) {
    ModuleParameters p;
    p.kind = kind;
    p.type = type;
    p.extent = {64, 4, 1, 1, 1, 1};
    p.holdsInputs = kind != ModuleKind::source;
    p.b = 1;
    return p;
  }

  // Requests the whole image of a module and compares it.
  static void expectImage(NetworkModule& op, const PlainImage& image) {
    void* tile = nullptr;
    ASSERT_EQ(BaseOp::getTile(&op, 0, toSubImgBox(image.box()), toDataType(image.type), &tile), 0);
    EXPECT_EQ(std::memcmp(tile, image.voxels.data(), image.voxels.size()), 0);
    BaseOp::freeTile(tile);
  }
};

TEST_F(HeldInputsTest, ModulesMayHoldOneImageInDifferentTypes) {
  ModuleParameters sourceParameters = parameters(ModuleKind::source, plainUint8);
  sourceParameters.pageExtent = {16, 4, 1, 1, 1, 1};
  const ModuleParameters narrowParameters = parameters(ModuleKind::shift, 2);
  const ModuleParameters wideParameters = parameters(ModuleKind::blend, 7);
  const auto source = makeModule(sourceParameters);
  const auto narrow = makeModule(narrowParameters);
  const auto wide = makeModule(wideParameters);
  connectInput(*narrow, 0, *source, 0);
  // While the input of the second module is requested, the first one already counts on its own.
  connectInput(*wide, 0, *source, 0);
  connectInput(*wide, 1, *narrow, 0);
  const PlainImage sourceImage = calculate(sourceParameters, 0, {});
  const PlainImage narrowImage = calculate(narrowParameters, 0, {&sourceImage});
  const PlainImage wideImage = calculate(wideParameters, 0, {&sourceImage, &narrowImage});
  const MessageRecorder recorder;
  expectImage(*wide, wideImage);
}

}  // namespace
}  // namespace vx::test
