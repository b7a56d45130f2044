#include "MessageRecorder.h"
#include "SlotOf.h"
#include "TestAllocator.h"

#include "vxDummyOp.h"
#include "vxNotify.h"
#include "vxPagedImg.h"

#include <gtest/gtest.h>
#include <memory>

namespace vx::test {
namespace {

using Messages = std::vector<Message>;
using Vector = TVector<VXint64>;

class DummyOpTest : public ::testing::Test {
 protected:
  MessageRecorder messages;
};

#ifdef VX_TESTS_SLOTS_ARE_KNOWN
TEST_F(DummyOpTest, ItsOwnOperationsStandBehindThoseOfModules) {
  EXPECT_EQ(slotOf(&DummyOp::setOutOfDate), slotOf(&BaseOp::getMarker) + 1);
  EXPECT_EQ(slotOf(&DummyOp::setImgProps), slotOf(&BaseOp::getMarker) + 2);
}
#endif

TEST_F(DummyOpTest, TheClassCanBeMadeByName) {
  const RuntimeType* const type = DummyOp::getClassTypeId();
  ASSERT_NE(type, nullptr);
  EXPECT_STREQ(type->getName(), "DummyOp");
  EXPECT_STREQ(type->getParentName(), "BaseOp");
  EXPECT_FALSE(type->isAbstract());
  const std::unique_ptr<BaseOp> made(static_cast<BaseOp*>(DummyOp::createCB()));
  EXPECT_EQ(made->whoAmI(true), "DummyOp");
  EXPECT_NE(made.get(), DummyOp::getGlobalInstance());
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(DummyOpTest, TheOneInstanceIsTheFirstModule) {
  DummyOp* const dummy = DummyOp::getGlobalInstance();
  ASSERT_NE(dummy, nullptr);
  EXPECT_EQ(DummyOp::getGlobalInstance(), dummy);
  EXPECT_EQ(BaseOp::findBaseOpIndex(*dummy), 0);
  EXPECT_EQ(DummyOp::getGlobalOutImg(), dummy->getOutImg(0));
}

TEST_F(DummyOpTest, TheImageIsOneValidVoxel) {
  DummyOp op;
  EXPECT_EQ(op.getInputNum(), 0);
  EXPECT_EQ(op.getOutputNum(), 1);
  PagedImg& image = *op.getOutImg(0);
  EXPECT_TRUE(image.isUpToDate());
  EXPECT_EQ(image.getStateInfoErrorCode(), 0);
  EXPECT_EQ(image.getImgExt(), Vector(1));
  EXPECT_EQ(image.getPageExt(), Vector(64, 64, 1, 1, 1, 1));
  EXPECT_EQ(image.getDataType(), 1);
  EXPECT_EQ(image.getMinVoxelValue(), 0);
  EXPECT_EQ(image.getMaxVoxelValue(), 1);
  EXPECT_EQ(image.getVoxelSize(), Tvec3<double>(1, 1, 1));
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(DummyOpTest, AnImageThatCanNotBeMadeValidIsReported) {
  // Between the construction of the base and the update, the module is made to require what no type has.
  const auto requireAll = [](void*, unsigned int, void* module, void*) {
    static_cast<BaseOp*>(module)->setVoxelDataTypeSupport(BaseOp::EXPLICIT_TYPES, {{~0U, ~0U, ~0U, ~0U}});
  };
  const VXCallbackHandle handle = VXNotify.addNotifyCB(requireAll, nullptr, 0x200002);
  const DummyOp op;
  VXNotify.removeNotifyCB(handle);
  EXPECT_EQ(
      messages.take(),
      (Messages{{VX_FATAL, 20, "DummyOp::DummyOp:", "Could not make image valid. Continuing with invalid one."}}));
  EXPECT_FALSE(op.getOutImg(0)->isUpToDate());
  EXPECT_EQ(op.getOutImg(0)->getStateInfoErrorCode(), 28);
}

TEST_F(DummyOpTest, AnUpdateRestoresTheProperties) {
  DummyOp op;
  PagedImg& image = *op.getOutImg(0);
  image.setImgExt(Vector(9));
  image.setPageExt(Vector(9));
  image.setDataType(VXfloatType);
  image.setMinVoxelValue(-5);
  image.setMaxVoxelValue(5);
  image.setVoxelSize(2, 3, 4);
  image.getCDimInfos().emplace_back("red");
  image.getTDimInfos().emplace_back();
  image.getUDimInfos().emplace_back("u");
  op.calcOutImageProps(0);
  EXPECT_EQ(image.getImgExt(), Vector(1));
  EXPECT_EQ(image.getPageExt(), Vector(64, 64, 1, 1, 1, 1));
  EXPECT_EQ(image.getDataType(), 1);
  EXPECT_EQ(image.getMinVoxelValue(), 0);
  EXPECT_EQ(image.getMaxVoxelValue(), 1);
  EXPECT_EQ(image.getVoxelSize(), Tvec3<double>(1, 1, 1));
  EXPECT_TRUE(image.getCDimInfos().empty());
  EXPECT_TRUE(image.getTDimInfos().empty());
  EXPECT_TRUE(image.getUDimInfos().empty());
}

TEST_F(DummyOpTest, NoInputIsEverNeeded) {
  DummyOp op;
  const SubImgBox box = op.calcInSubImageBox(0, SubImgBox(Vector(0), Vector(9)), 0);
  EXPECT_EQ(box, SubImgBox(Vector(0), Vector(-1)));
}

TEST_F(DummyOpTest, PagesAreFilledWithZeros) {
  DummyOp op;
  VXuint8 voxels[] = {1, 2, 3, 4};
  SubImg page(SubImgBox(Vector(0), Vector(1, 1, 0, 0, 0, 0)), VXuint8Type, voxels);
  ThreadInfo threadInfo;
  op.calcOutSubImage(&page, 0, nullptr, threadInfo);
  for (const VXuint8 voxel : voxels) EXPECT_EQ(voxel, 0);
  EXPECT_EQ(messages.take(), Messages{});
  try {
    op.calcOutSubImage(nullptr, 0, nullptr);
    ADD_FAILURE() << "no exception";
  } catch (int code) {
    EXPECT_EQ(code, 41);
  }
  EXPECT_EQ(messages.take().size(), 1U);
}

TEST_F(DummyOpTest, ATileIsZeroWhereTheVoxelLies) {
  VXint16 voxels[] = {7, 7, 7, 7};
  void* data = voxels;
  const SubImgBox box(Vector(-1, -1, 0, 0, 0, 0), Vector(0, 0, 0, 0, 0, 0));
  EXPECT_EQ(BaseOp::getTile(DummyOp::getGlobalInstance(), 0, box, VXint16Type, &data), 0);
  EXPECT_EQ(voxels[3], 0);
  EXPECT_EQ(voxels[0], 7);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(DummyOpTest, TheImageCanNotBeChangedThroughTheModule) {
  DummyOp op;
  op.setOutOfDate();
  EXPECT_EQ(messages.take(), (Messages{{VX_FATAL, 14, "DummyOp::setOutOfDate:",
                                        "Cannot invalidate dummy image. Continuing with unchanged one."}}));
  PagedImg other;
  other.setImgExt(Vector(5));
  op.setImgProps(other);
  EXPECT_EQ(messages.take(), (Messages{{VX_FATAL, 14, "DummyOp::setImgProps:",
                                        "Cannot set properties of dummy image. Continuing with unchanged one."}}));
  EXPECT_TRUE(op.getOutImg(0)->isUpToDate());
  EXPECT_EQ(op.getOutImg(0)->getImgExt(), Vector(1));
}

TEST_F(DummyOpTest, CopiesOnlyReport) {
  const DummyOp op;
  DummyOp copy(op);
  EXPECT_EQ(messages.take(), (Messages{{VX_FATAL, 14, "DummyOp::DummyOp(const DummyOp &)",
                                        "Copy constructor of DummyOp is not implemented."}}));
  copy = op;
  EXPECT_EQ(messages.take(), (Messages{{VX_FATAL, 14, "DummyOp&DummyOp::operator=(const DummyOp &)",
                                        "Assignment operator of DummyOp is not implemented."}}));
}

TEST_F(DummyOpTest, TheOneInstanceGoesAndComesAgain) {
  const VXint64 before = BaseOp::getNumBaseOps();
  DummyOp::destroyDummyOp();
  EXPECT_EQ(BaseOp::getNumBaseOps(), before - 1);
  DummyOp::destroyDummyOp();
  EXPECT_EQ(BaseOp::getNumBaseOps(), before - 1);
  try {
    const FailingAllocations failing;
    DummyOp::getGlobalInstance();
    ADD_FAILURE() << "no exception";
  } catch (int code) {
    EXPECT_EQ(code, 2);
  }
  messages.take();
  EXPECT_NE(DummyOp::getGlobalOutImg(), nullptr);
  EXPECT_EQ(BaseOp::getNumBaseOps(), before);
  EXPECT_EQ(messages.take(), Messages{});
}

}  // namespace
}  // namespace vx::test
