#include "MessageRecorder.h"
#include "SlotOf.h"

#include "vxBaseOp.h"
#include "vxDataTypes.h"
#include "vxMemoryImg.h"
#include "vxPagedImg.h"

#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>

namespace vx::test {
namespace {

using Messages = std::vector<Message>;
using Vector = TVector<VXint64>;

constexpr VXint64 farAway = 0x7FFFFFFFFFFFFFFF;

const Message noMemory{VX_FATAL, 2, "MemoryImg::update", "Continuing. Returning empty memory image"};

// An image of 10 voxels of type int16 whose values are their positions.
class RampOp : public BaseOp {
 public:
  RampOp() : BaseOp(0, 1) {}
  void calcOutImageProps(int outIndex) override {
    getOutImg(outIndex)->setImgExt(Vector(10, 1, 1, 1, 1, 1));
    getOutImg(outIndex)->setPageExt(Vector(4, 1, 1, 1, 1, 1));
    getOutImg(outIndex)->setDataType(VXint16Type);
  }
  using BaseOp::calcOutSubImage;
  void calcOutSubImage(SubImg* outSubImg, int /*outIndex*/, SubImg* /*inSubImgs*/) override {
    if (failure != 0) throw failure;
    const SubImgBox box = outSubImg->getBox();
    for (VXint64 x = box.v1.x; x <= box.v2.x; ++x) {
      static_cast<VXint16*>(outSubImg->getData())[x - box.v1.x] = static_cast<VXint16>(x);
    }
  }

  int failure = 0;
};

class MemoryImgTest : public ::testing::Test {
 protected:
  static SubImgBox boxOf(VXint64 numVoxels) { return SubImgBox(Vector(), Vector(numVoxels - 1, 0, 0, 0, 0, 0)); }

  MessageRecorder messages;
  MemoryImg image;
};

#ifdef VX_TESTS_SLOTS_ARE_KNOWN
TEST_F(MemoryImgTest, TheVirtualFunctionsHaveTheirSlots) {
  EXPECT_EQ(slotOf(&MemoryImg::getTypeId), 2U) << "the destructor takes two";
  EXPECT_EQ(slotOf(&MemoryImg::getTypeIdName), 3U);
  EXPECT_EQ(slotOf(&MemoryImg::typeInstanceCounter), 4U);
}
#endif

TEST_F(MemoryImgTest, TheClassIsARootThatCanBeMadeByName) {
  const RuntimeType* const type = MemoryImg::getClassTypeId();
  ASSERT_NE(type, nullptr);
  EXPECT_STREQ(type->getName(), "MemoryImg");
  EXPECT_EQ(type->getParent(), nullptr);
  EXPECT_FALSE(type->isAbstract());
  const std::unique_ptr<MemoryImg> made(static_cast<MemoryImg*>(MemoryImg::createCB()));
  EXPECT_FALSE(made->isValid());
}

TEST_F(MemoryImgTest, AMemoryImageStartsEmpty) {
  EXPECT_FALSE(image.isValid());
  EXPECT_FALSE(image.getManualControl());
  EXPECT_EQ(image.getSubImg().getData(), nullptr);
  EXPECT_TRUE(image.getSubImg().getBox().isEmpty());
  EXPECT_EQ(image.getMemoryImgSize(), 0U);
}

TEST_F(MemoryImgTest, WithoutAModuleAnUpdateOnlyProvidesMemory) {
  image.setValid(true);
  EXPECT_EQ(image.update(nullptr, 0, boxOf(10), VXint16Type), 5);
  EXPECT_FALSE(image.isValid());
  EXPECT_NE(image.getSubImg().getData(), nullptr);
  EXPECT_EQ(image.getSubImg().getBox(), boxOf(10));
  EXPECT_EQ(image.getSubImg().getDataType(), VXint16Type);
  EXPECT_EQ(image.getMemoryImgSize(), 20U);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(MemoryImgTest, MemoryOfTheSameSizeStaysAsItIs) {
  image.update(nullptr, 0, boxOf(8), VXuint8Type);
  void* const data = image.getSubImg().getData();
  std::memset(data, 42, 8);
  const SubImgBox elsewhere(Vector(5), Vector(6, 6, 5, 5, 5, 5));
  image.update(nullptr, 0, elsewhere, VXint16Type);
  EXPECT_EQ(image.getSubImg().getData(), data);
  EXPECT_EQ(image.getSubImg().getBox(), elsewhere);
  EXPECT_EQ(image.getSubImg().getDataType(), VXint16Type);
  EXPECT_EQ(static_cast<unsigned char*>(data)[7], 42);
}

TEST_F(MemoryImgTest, AnUpdateMayNameTheBoxOfTheImageItself) {
  image.update(nullptr, 0, boxOf(8), VXuint8Type);
  const SubImgBox box = image.getSubImg().getBox();
  image.update(nullptr, 0, image.getSubImg().getBox(), VXdoubleType);
  EXPECT_EQ(image.getSubImg().getBox(), box);
  EXPECT_EQ(image.getMemoryImgSize(), 64U);
}

TEST_F(MemoryImgTest, ABoxWithoutVoxelsFreesTheMemory) {
  RampOp op;
  ASSERT_EQ(image.update(&op, 0, boxOf(10), VXint16Type), 0);
  EXPECT_EQ(image.update(&op, 0, SubImgBox(), VXint16Type), 5);
  EXPECT_FALSE(image.isValid());
  EXPECT_EQ(image.getSubImg().getData(), nullptr);
  EXPECT_EQ(image.getMemoryImgSize(), 0U);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(MemoryImgTest, AnInvalidTypeHasNoVoxels) {
  image.update(nullptr, 0, boxOf(10), VXuint8Type);
  EXPECT_EQ(image.update(nullptr, 0, boxOf(10), -1), 5);
  EXPECT_EQ(image.getSubImg().getData(), nullptr);
  EXPECT_EQ(messages.take().size(), 1U) << "the block refuses the type";
  EXPECT_EQ(image.update(nullptr, 0, boxOf(10), VXuint8Type), 5);
  EXPECT_NE(image.getSubImg().getData(), nullptr) << "the same region as a type with voxels";
  EXPECT_EQ(image.getMemoryImgSize(), 10U);
}

TEST_F(MemoryImgTest, ARegionThatIsTooLargeIsMissingMemory) {
  for (const SubImgBox& box :
       {boxOf(farAway), SubImgBox(Vector(0), Vector(farAway)),
        SubImgBox(Vector(0), Vector(0xFFFFFFFFLL, 0xFFFFFFFFLL, 0, 0, 0, 0)),
        SubImgBox(Vector(-farAway - 1), Vector(farAway)),
        // As wrapped products these are 0 bytes.
        boxOf(VXint64{1} << 61), SubImgBox(Vector(0), Vector((1LL << 32) - 1, (1LL << 32) - 1, 0, 0, 0, 0))}) {
    image.update(nullptr, 0, boxOf(10), VXuint8Type);
    image.setValid(true);
    EXPECT_EQ(image.update(nullptr, 0, box, VXdoubleType), 2) << box;
    EXPECT_EQ(messages.take(), Messages{noMemory});
    EXPECT_FALSE(image.isValid());
    EXPECT_EQ(image.getSubImg().getData(), nullptr);
    EXPECT_TRUE(image.getSubImg().getBox().isEmpty());
    EXPECT_EQ(image.getMemoryImgSize(), 0U);
  }
  EXPECT_EQ(image.update(nullptr, 0, boxOf(10), VXuint8Type), 5);
  EXPECT_NE(image.getSubImg().getData(), nullptr) << "all is well again";
}

TEST_F(MemoryImgTest, WithAModuleTheMemoryIsFilled) {
  RampOp op;
  ASSERT_EQ(image.update(&op, 0, SubImgBox(Vector(2, 0, 0, 0, 0, 0), Vector(8, 0, 0, 0, 0, 0)), VXfloatType), 0);
  EXPECT_TRUE(image.isValid());
  for (int i = 0; i < 7; ++i) EXPECT_EQ(static_cast<float*>(image.getSubImg().getData())[i], i + 2);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(MemoryImgTest, AModuleThatFailsLeavesTheImageInvalid) {
  RampOp op;
  ASSERT_EQ(image.update(&op, 0, boxOf(10), VXint16Type), 0);
  op.clearOutImg(0);
  op.failure = 7;
  EXPECT_EQ(image.update(&op, 0, boxOf(10), VXint16Type), 7);
  EXPECT_FALSE(image.isValid());
  EXPECT_EQ(image.getMemoryImgSize(), 20U);
  EXPECT_EQ(image.update(&op, 1, boxOf(10), VXint16Type), 6) << "a bad output";
  EXPECT_FALSE(image.isValid());
}

TEST_F(MemoryImgTest, ClearingFreesTheMemoryUnlessItIsControlled) {
  image.update(nullptr, 0, boxOf(10), VXint16Type);
  image.setValid(true);
  image.setManualControl(true);
  image.clearMemoryImg();
  EXPECT_TRUE(image.isValid());
  EXPECT_EQ(image.getMemoryImgSize(), 20U);
  image.setManualControl(false);
  image.clearMemoryImg();
  EXPECT_FALSE(image.isValid());
  EXPECT_EQ(image.getSubImg().getData(), nullptr);
  EXPECT_TRUE(image.getSubImg().getBox().isEmpty());
  EXPECT_EQ(image.getSubImg().getDataType(), VXuint8Type);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(MemoryImgTest, ControlledMemoryGoesWithTheImage) {
  MemoryImg other;
  other.update(nullptr, 0, boxOf(10), VXint16Type);
  other.setManualControl(true);  // the leak check tells
}

TEST_F(MemoryImgTest, TheStateHasAText) {
  char expected[600];
  std::snprintf(expected, sizeof expected,
                "[this=%p, Datatype=unsigned int8, Valid=0, SubImg.isValid=0, SubImg.isUpToDate()=0, ManualControl=0, "
                "Box=(v1=(0,0,0,0,0,0), v2=(-1,-1,-1,-1,-1,-1)), dataPtr=%p]",
                static_cast<void*>(&image), static_cast<void*>(nullptr));
  EXPECT_EQ(image.getAsString(), expected);

  image.update(nullptr, 0, SubImgBox(Vector(-5000000000LL, 2, 3, 4, 5, 6), Vector(-4999999999LL, 2, 3, 4, 5, 6)),
               VXint16Type);
  image.setValid(true);
  image.setManualControl(true);
  image.getSubImg().setUpToDate();
  std::snprintf(expected, sizeof expected,
                "[this=%p, Datatype=int16, Valid=1, SubImg.isValid=1, SubImg.isUpToDate()=1, ManualControl=1, "
                "Box=(v1=(-5000000000,2,3,4,5,6), v2=(-4999999999,2,3,4,5,6)), dataPtr=%p]",
                static_cast<void*>(&image), image.getSubImg().getData());
  EXPECT_EQ(image.getAsString(), expected);
}

TEST_F(MemoryImgTest, TheTextIsCutAt499Characters) {
  image.getSubImg().setBox(SubImgBox(Vector(-farAway), Vector(-farAway)));
  EXPECT_LE(image.getAsString().size(), 499U);
}

}  // namespace
}  // namespace vx::test
