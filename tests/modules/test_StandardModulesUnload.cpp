// The module library is unloaded and loaded again, in a process where nothing else holds it.

#include "vxModule.h"

#include <gtest/gtest.h>
#include <memory>

namespace vx::test {
namespace {

std::unique_ptr<BaseOp> makeTestPattern() {
  const RuntimeType* const type = Runtime::fromName("TestPattern");
  return type ? std::unique_ptr<BaseOp>(static_cast<BaseOp*>(static_cast<Base*>(type->getCreateCB()()))) : nullptr;
}

TEST(StandardModulesUnloadTest, ModulesComeAndGoWithTheirLibrary) {
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(Runtime::fromName("TestPattern"), nullptr);
    void* handle = nullptr;
    ASSERT_EQ(VXLoadLibraryWOErrorExt(VX_STANDARD_MODULES, &handle), 0);
    auto op = makeTestPattern();
    ASSERT_NE(op, nullptr);
    op->getFieldContainer()->setValue("minValue", "255");
    void* data = nullptr;
    EXPECT_EQ(BaseOp::getTile(op.get(), 0, SubImgBox(TVector<VXint64>(0), TVector<VXint64>(0)), VXuint8Type, &data), 0);
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(*static_cast<VXuint8*>(data), 255);
    BaseOp::freeTile(data);
    op.reset();
    EXPECT_EQ(VXUnLoadLibrary(VX_STANDARD_MODULES, handle, nullptr, 0), 0);
    EXPECT_EQ(Runtime::fromName("TestPattern"), nullptr);
    EXPECT_EQ(Runtime::fromName("NiftiLoad"), nullptr);
  }
}

}  // namespace
}  // namespace vx::test
