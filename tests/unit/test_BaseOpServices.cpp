#include "MessageRecorder.h"

#include "vxBaseOp.h"
#include "vxBaseOpTools.h"
#include "vxCachedBuffer.h"
#include "vxDataTypes.h"
#include "vxHost.h"
#include "vxMemory.h"
#include "vxPagedImg.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <type_traits>

namespace vx::test {
namespace {

using Messages = std::vector<Message>;
using Vector = TVector<VXint64>;

// An image of 6 x 4 voxels of type int16 whose value is x + 10 * y.
class RampOp : public BaseOp {
 public:
  RampOp() : BaseOp(0, 1) {}
  void calcOutImageProps(int outIndex) override {
    getOutImg(outIndex)->setImgExt(Vector(6, 4, 1, 1, 1, 1));
    getOutImg(outIndex)->setPageExt(Vector(4, 4, 1, 1, 1, 1));
    getOutImg(outIndex)->setDataType(VXint16Type);
  }
  using BaseOp::calcOutSubImage;
  void calcOutSubImage(SubImg* outSubImg, int /*outIndex*/, SubImg* /*inSubImgs*/) override {
    if (failure != 0) throw failure;
    ++numPages;
    const SubImgBox box = outSubImg->getBox();
    auto* voxel = static_cast<VXint16*>(outSubImg->getData());
    for (VXint64 y = box.v1.y; y <= box.v2.y; ++y) {
      for (VXint64 x = box.v1.x; x <= box.v2.x; ++x) *voxel++ = static_cast<VXint16>(x + 10 * y);
    }
  }

  int failure = 0;
  int numPages = 0;
};

// Passes its inputs on, and notes what is asked of it.
class CollectingOp : public BaseOp {
 public:
  CollectingOp() : BaseOp(1, 0) {}
  using BaseOp::calcOutSubImage;
  void calcOutSubImage(SubImg* /*outSubImg*/, int outIndex, SubImg* inSubImgs) override {
    calls.emplace_back(outIndex, inSubImgs[0].getBox());
  }
  std::vector<std::pair<int, SubImgBox>> calls;
};

class BaseOpServicesTest : public ::testing::Test {
 protected:
  void TearDown() override {
    Host::getDefaultHost().setProgressCB(nullptr, nullptr);
    Host::getDefaultHost().setBreakCheckCB(nullptr, nullptr);
  }

  MessageRecorder messages;
  RampOp op;
  const SubImgBox box{Vector(3, 1, 0, 0, 0, 0), Vector(5, 2, 0, 0, 0, 0)};
};

TEST_F(BaseOpServicesTest, RecordsForModulesHaveTheirMembersInOrder) {
  static_assert(std::is_standard_layout_v<ThreadInfo> && std::is_standard_layout_v<InSubImageProps>);
  EXPECT_EQ(offsetof(ThreadInfo, numPages), 0U);
  EXPECT_LT(offsetof(ThreadInfo, numPages), offsetof(ThreadInfo, pageIndex));
  EXPECT_LT(offsetof(ThreadInfo, pageIndex), offsetof(ThreadInfo, isMultithreadingActive));
  EXPECT_LT(offsetof(ThreadInfo, isMultithreadingActive), offsetof(ThreadInfo, threadHandle));
  EXPECT_EQ(offsetof(InSubImageProps, dataType), 0U);
  EXPECT_LT(offsetof(InSubImageProps, dataType), offsetof(InSubImageProps, inTileCaching));
  EXPECT_LT(offsetof(InSubImageProps, inTileCaching), offsetof(InSubImageProps, scaleShiftData));
}

// Tiles ---------------------------------------------------------------------------------------------------------------

TEST_F(BaseOpServicesTest, ATileIsAllocatedAndFreed) {
  void* data = nullptr;
  ASSERT_EQ(BaseOp::getTile(&op, 0, box, VXfloatType, &data, ScaleShiftData(2, 1)), 0);
  const float expected[] = {27, 29, 31, 47, 49, 51};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(static_cast<float*>(data)[i], expected[i]) << i;
  BaseOp::freeTile(data);
  BaseOp::freeTile(nullptr);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(BaseOpServicesTest, ATileGoesIntoABlock) {
  VXint16 voxels[6] = {};
  SubImg block(box, VXint16Type, voxels);
  ASSERT_EQ(BaseOp::getTile(&op, 0, block), 0);
  const VXint16 expected[] = {13, 14, 15, 23, 24, 25};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(voxels[i], expected[i]) << i;
}

TEST_F(BaseOpServicesTest, ATileGoesIntoABuffer) {
  CachedBuffer buffer;
  ASSERT_EQ(BaseOp::getTile(&op, 0, box, VXuint8Type, buffer), 0);
  ASSERT_EQ(buffer.getSize(), 6U);
  EXPECT_EQ(static_cast<VXuint8*>(buffer.getData())[5], 25);
}

TEST_F(BaseOpServicesTest, AnImageForwardsItsTiles) {
  const PagedImg& image = *op.getOutImg(0);
  void* data = nullptr;
  ASSERT_EQ(image.getTile(box, VXint16Type, &data, ScaleShiftData(1, 100)), 0);
  EXPECT_EQ(static_cast<VXint16*>(data)[0], 113);
  SubImg block(box, VXint16Type, data);
  ASSERT_EQ(image.getTile(block, ScaleShiftData(-1, 0)), 0);
  EXPECT_EQ(static_cast<VXint16*>(data)[0], -13);
  image.freeTile(data);
  CachedBuffer buffer;
  ASSERT_EQ(image.getTile(box, VXint16Type, buffer, ScaleShiftData()), 0);
  EXPECT_EQ(static_cast<VXint16*>(buffer.getData())[0], 13);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(BaseOpServicesTest, AnImageIsBroughtUpToDate) {
  EXPECT_FALSE(op.getOutImg(0)->isUpToDate());
  EXPECT_EQ(BaseOp::updateImageProps(&op, 0), 0);
  EXPECT_TRUE(op.getOutImg(0)->isUpToDate());
  EXPECT_EQ(BaseOp::updateImageProps(&op, 1), 6);
}

TEST_F(BaseOpServicesTest, AllPagesOfAnInputAreWalkedThrough) {
  CollectingOp collector;
  collector.connectInput(0, op, 0);
  ASSERT_EQ(collector.processAllPages(-1, 0, SubImgBox()), 0);
  ASSERT_EQ(collector.calls.size(), 2U);
  EXPECT_EQ(collector.calls[0].first, -1);
  EXPECT_EQ(collector.calls[1].second, op.getOutImg(0)->getPageBox(1));
  EXPECT_EQ(collector.processAllPages(-1, -1, SubImgBox()), 11);
  EXPECT_EQ(collector.processAllPages(0, -1, SubImgBox()), 6);
}

TEST_F(BaseOpServicesTest, APageExtentIsChosenByTheTools) {
  Vector chosen(128, 128, 1, 1, 1, 1);
  Vector expected = chosen;
  const Vector imgExt(1000, 900, 30, 1, 1, 1);
  BaseOp::adaptPageExt(chosen, VXint16Type, imgExt, Vector(), Vector(8), Vector(), Vector());
  BaseOpTools::adaptPageExt(expected, VXint16Type, imgExt, Vector(), Vector(8), Vector(), Vector());
  EXPECT_EQ(chosen, expected);
}

// Application ---------------------------------------------------------------------------------------------------------

TEST_F(BaseOpServicesTest, TheApplicationIsAskedAndTold) {
  BaseOp::updateProgress("nobody", "listens");
  EXPECT_FALSE(BaseOp::shouldTerminate());
  EXPECT_EQ(BaseOp::getPressedNotifyField(), nullptr);

  std::string told;
  Host::getDefaultHost().setProgressCB(&told, [](void* userData, const char* a, const char* b) {
    *static_cast<std::string*>(userData) = std::string(a) + b;
  });
  BaseOp::updateProgress("half ", "done");
  EXPECT_EQ(told, "half done");

  NotifyField* const button = op.getFieldContainer()->addNotify("stop");
  Host::getDefaultHost().setBreakCheckCB(button, [](void* userData, void** field) {
    if (!field) return 1;
    *field = static_cast<Field*>(static_cast<NotifyField*>(userData));
    return 0;
  });
  EXPECT_TRUE(BaseOp::shouldTerminate());
  EXPECT_EQ(BaseOp::getPressedNotifyField(), button);
}

// Voxels as text ------------------------------------------------------------------------------------------------------

class BaseOpVoxelTextTest : public BaseOpServicesTest {
 protected:
  std::string textAt(const Vector& position, VXint64 outIndex = 0) {
    code = 99;
    return BaseOp::getVoxelValueAsString(op, outIndex, position, &code, "none");
  }

  int code = 99;
};

TEST_F(BaseOpVoxelTextTest, AVoxelHasItsText) {
  ASSERT_EQ(BaseOp::updateImageProps(&op, 0), 0);
  EXPECT_EQ(textAt(Vector(5, 3, 0, 0, 0, 0)), "35");
  EXPECT_EQ(code, 0);
  EXPECT_EQ(BaseOp::getVoxelValueAsString(op, 0, Vector(0), nullptr, "none"), "0");
  EXPECT_EQ(op.numPages, 2) << "a page for each voxel";
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(BaseOpVoxelTextTest, ABadOutputGivesTheErrorText) {
  for (const VXint64 outIndex : {-1, 1}) {
    EXPECT_EQ(textAt(Vector(0), outIndex), "none");
    EXPECT_EQ(code, 6);
  }
  EXPECT_EQ(BaseOp::getVoxelValueAsString(op, 1, Vector(0), nullptr, "none"), "none");
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(BaseOpVoxelTextTest, APositionOutsideTheImageGivesAnEmptyText) {
  EXPECT_EQ(textAt(Vector(0)), "") << "an image without extent";
  EXPECT_EQ(code, 27);
  ASSERT_EQ(BaseOp::updateImageProps(&op, 0), 0);
  for (const Vector& position :
       {Vector(-1, 0, 0, 0, 0, 0), Vector(6, 0, 0, 0, 0, 0), Vector(0, 4, 0, 0, 0, 0), Vector(0, 0, 0, 0, 0, 1)}) {
    EXPECT_EQ(textAt(position), "");
    EXPECT_EQ(code, 27);
  }
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(BaseOpVoxelTextTest, AFailedTileGivesTheErrorText) {
  ASSERT_EQ(BaseOp::updateImageProps(&op, 0), 0);
  op.failure = 7;
  EXPECT_EQ(textAt(Vector(0)), "none");
  EXPECT_EQ(code, 7);
}

}  // namespace
}  // namespace vx::test
