#include "MessageRecorder.h"

#include "vxBaseOp.h"
#include "vxCachedBuffer.h"
#include "vxDummyOp.h"
#include "vxPagedImg.h"

#include <gtest/gtest.h>
#include <memory>

namespace vx::test {
namespace {

using Messages = std::vector<Message>;

// A module that answers as a test says what to do about inputs.
class TestOp : public BaseOp {
 public:
  using BaseOp::BaseOp;

  INPUT_HANDLE handleInput(int inIndex, INPUT_STATE state) const override {
    asked.emplace_back(inIndex, state);
    return answer;
  }
  void calcOutImageProps(int outIndex) override {
    ++numUpdates;
    PagedImg& image = *getOutImg(outIndex);
    image.setImgExt(TVector<VXint64>(4, 3, 1, 1, 1, 1));
    if (isBroken) image.setOutOfDate();
  }

  INPUT_HANDLE answer = INVALIDATE_OUTPUT;
  mutable std::vector<std::pair<int, INPUT_STATE>> asked;
  int numUpdates = 0;
  bool isBroken = false;
};

using Asked = std::vector<std::pair<int, BaseOp::INPUT_STATE>>;

struct InInfos {
  bool valid = false;
  BaseOp* inOp = nullptr;
  PagedImg* inImg = nullptr;
  VXint64 inOpIndex = 99;
  bool operator==(const InInfos& other) const {
    return valid == other.valid && inOp == other.inOp && inImg == other.inImg && inOpIndex == other.inOpIndex;
  }
};

InInfos infosOf(const BaseOp& op, VXint64 inIndex, bool getReal) {
  InInfos infos;
  BaseOp::getInInfos(op, inIndex, getReal, &infos.valid, &infos.inOp, &infos.inImg, &infos.inOpIndex);
  // One by one they say the same.
  EXPECT_EQ(op.getInOp(inIndex, getReal), infos.inOp);
  EXPECT_EQ(op.getInImg(inIndex, getReal), infos.inImg);
  EXPECT_EQ(op.getInOpIndex(inIndex, getReal), infos.inOpIndex);
  return infos;
}

class BaseOpInputsTest : public ::testing::Test {
 protected:
  MessageRecorder messages;
  TestOp source{0, 2};
  TestOp op{2, 1};
  const InInfos placeholder{true, DummyOp::getGlobalInstance(), DummyOp::getGlobalOutImg(), 0};
  const InInfos nothing{false, nullptr, nullptr, -1};

  InInfos realInfos(bool valid) { return {valid, &source, source.getOutImg(1), 1}; }
};

// Infos ---------------------------------------------------------------------------------------------------------------

TEST_F(BaseOpInputsTest, AnOpenInputHasNothing) {
  EXPECT_EQ(infosOf(op, 0, true), nothing);
  EXPECT_TRUE(op.asked.empty());
  EXPECT_EQ(infosOf(op, 0, false), nothing);
  EXPECT_EQ(op.asked[0], (Asked::value_type{0, BaseOp::INPUT_NOT_CONNECTED}));
}

TEST_F(BaseOpInputsTest, AnOpenInputMayTakeThePlaceholder) {
  op.answer = BaseOp::USE_PLACEHOLDER;
  EXPECT_EQ(infosOf(op, 0, false), placeholder);
  EXPECT_EQ(op.getInImg(0, false), op.getInImg(0, false));
  EXPECT_EQ(infosOf(op, 0, true), nothing);
  op.answer = static_cast<BaseOp::INPUT_HANDLE>(5);
  EXPECT_EQ(infosOf(op, 1, false), placeholder) << "any other answer";
  EXPECT_EQ(op.asked.back(), (Asked::value_type{1, BaseOp::INPUT_NOT_CONNECTED}));
}

TEST_F(BaseOpInputsTest, AnInvalidImageIsSeenButNotValid) {
  ASSERT_EQ(op.connectInput(1, source, 1), 1);
  EXPECT_EQ(infosOf(op, 1, true), realInfos(true)) << "connected";
  EXPECT_TRUE(op.asked.empty());
  EXPECT_EQ(infosOf(op, 1, false), realInfos(false));
  EXPECT_EQ(op.asked[0], (Asked::value_type{1, BaseOp::INPUT_NOT_VALID}));
}

TEST_F(BaseOpInputsTest, AnInvalidImageMayBeReplacedByThePlaceholder) {
  ASSERT_EQ(op.connectInput(1, source, 1), 1);
  op.answer = BaseOp::USE_PLACEHOLDER;
  EXPECT_EQ(infosOf(op, 1, false), placeholder);
  EXPECT_EQ(infosOf(op, 1, true), realInfos(true));
}

TEST_F(BaseOpInputsTest, AValidImageIsTakenWithoutAsking) {
  ASSERT_EQ(op.connectInput(1, source, 1), 1);
  source.getOutImg(1)->setUpToDate();
  op.answer = BaseOp::USE_PLACEHOLDER;
  EXPECT_EQ(infosOf(op, 1, false), realInfos(true));
  EXPECT_EQ(infosOf(op, 1, true), realInfos(true));
  EXPECT_TRUE(op.asked.empty());
}

TEST_F(BaseOpInputsTest, EachResultMayBeLeftOut) {
  BaseOp::getInInfos(op, 0, true, nullptr, nullptr, nullptr, nullptr);
  BaseOp::getInInfos(&op, 0, false, nullptr, nullptr, nullptr, nullptr);
  VXint64 index = 5;
  BaseOp::getInInfos(&op, 0, true, nullptr, nullptr, nullptr, &index);
  EXPECT_EQ(index, -1);
}

TEST_F(BaseOpInputsTest, AnInputThatIsNotThereIsAFatalError) {
  for (const VXint64 inIndex : {-1, 2}) {
    for (const bool getReal : {false, true}) {
      try {
        op.getInImg(inIndex, getReal);
        ADD_FAILURE() << "no exception";
      } catch (int code) {
        EXPECT_EQ(code, 41);
      }
      const Messages taken = messages.take();
      ASSERT_EQ(taken.size(), 1U);
      EXPECT_EQ(taken[0].type, VX_FATAL);
      EXPECT_EQ(taken[0].code, 41);
    }
  }
}

// Updated images ------------------------------------------------------------------------------------------------------

TEST_F(BaseOpInputsTest, TheImageOfAnInputIsBroughtUpToDate) {
  ASSERT_EQ(op.connectInput(0, source, 1), 1);
  EXPECT_EQ(op.getUpdatedInImg(0, true), source.getOutImg(1));
  EXPECT_EQ(source.numUpdates, 1);
  EXPECT_TRUE(source.getOutImg(1)->isUpToDate());
  EXPECT_EQ(op.getUpdatedInImg(0, false), source.getOutImg(1));
  EXPECT_EQ(op.getNonDummyUpdatedInImg(0), source.getOutImg(1));
  EXPECT_EQ(source.numUpdates, 1);
  EXPECT_TRUE(op.asked.empty());
}

TEST_F(BaseOpInputsTest, AnInputThatIsNotThereHasNoUpdatedImage) {
  for (const VXint64 inIndex : {-1, 2}) {
    EXPECT_EQ(op.getUpdatedInImg(inIndex, true), nullptr);
    EXPECT_EQ(op.getUpdatedInImg(inIndex, false), nullptr);
    EXPECT_EQ(op.getNonDummyUpdatedInImg(static_cast<int>(inIndex)), nullptr);
  }
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(BaseOpInputsTest, AnOpenInputHasAnUpdatedImageIfThePlaceholderStandsIn) {
  EXPECT_EQ(op.getUpdatedInImg(0, true), nullptr);
  EXPECT_EQ(op.getUpdatedInImg(0, false), nullptr);
  op.answer = BaseOp::USE_PLACEHOLDER;
  EXPECT_EQ(op.getUpdatedInImg(0, true), nullptr);
  EXPECT_EQ(op.getUpdatedInImg(0, false), DummyOp::getGlobalOutImg());
  EXPECT_EQ(op.getNonDummyUpdatedInImg(0), nullptr);
}

TEST_F(BaseOpInputsTest, AnImageThatCanNotBeUpdatedIsNone) {
  ASSERT_EQ(op.connectInput(0, source, 0), 1);
  source.isBroken = true;
  EXPECT_EQ(op.getUpdatedInImg(0, true), nullptr);
  EXPECT_EQ(op.getUpdatedInImg(0, false), nullptr);
  EXPECT_EQ(op.asked, (Asked{{0, BaseOp::INPUT_NOT_VALID}}));
  op.answer = BaseOp::USE_PLACEHOLDER;
  EXPECT_EQ(op.getUpdatedInImg(0, false), DummyOp::getGlobalOutImg());
  EXPECT_EQ(op.getNonDummyUpdatedInImg(0), nullptr);
}

TEST_F(BaseOpInputsTest, ThePlaceholderIsMadeValidIfItIsNot) {
  op.answer = BaseOp::USE_PLACEHOLDER;
  DummyOp::getGlobalOutImg()->setOutOfDate();
  EXPECT_EQ(op.getUpdatedInImg(0, false), DummyOp::getGlobalOutImg());
  EXPECT_TRUE(DummyOp::getGlobalOutImg()->isUpToDate());
}

// Connections ---------------------------------------------------------------------------------------------------------

TEST_F(BaseOpInputsTest, ConnectingJoinsConnectorsAndFields) {
  ASSERT_EQ(op.connectInput(1, source, 0), 1);
  InputConnectorField* const inField = op.getInField(1);
  OutputConnectorField* const outField = source.getOutField(0);
  EXPECT_EQ(inField->getInputConnectorValue().getLink(), &outField->getOutputConnectorValue());
  EXPECT_EQ(inField->getInputConnectorValue().isValidConnection(), 1);
  ASSERT_EQ(inField->getNumDestinationFields(), 1U) << "the input's field is the sender";
  EXPECT_EQ(inField->getDestinationField(0), outField);
  EXPECT_EQ(outField->getNumDestinationFields(), 0U);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(BaseOpInputsTest, ConnectingRefusesBadIndices) {
  op.getFieldContainer()->getField("instanceName")->setStringValue("i");
  const std::string label = "BaseOp::connectInput() of module BaseOp(i)";
  for (const VXint64 inIndex : {-1, 2}) {
    EXPECT_EQ(op.connectInput(inIndex, source, 7), 0);
    EXPECT_EQ(messages.take(), (Messages{{VX_ERROR, 11, label, "Invalid index (inIndex), call is ignored!"}}));
  }
  for (const VXint64 outIndex : {-1, 2}) {
    EXPECT_EQ(op.connectInput(0, source, outIndex), 0);
    EXPECT_EQ(messages.take(), (Messages{{VX_ERROR, 6, label, "Invalid index (outIndex), call is ignored!"}}));
  }
  EXPECT_EQ(infosOf(op, 0, true), nothing);
}

TEST_F(BaseOpInputsTest, ModulesGoInAnyOrder) {
  auto upstream = std::make_unique<TestOp>(0, 1);
  auto downstream = std::make_unique<TestOp>(1, 1);
  ASSERT_EQ(downstream->connectInput(0, *upstream, 0), 1);
  upstream.reset();
  EXPECT_EQ(infosOf(*downstream, 0, true), nothing);
  upstream = std::make_unique<TestOp>(0, 1);
  ASSERT_EQ(downstream->connectInput(0, *upstream, 0), 1);
  downstream.reset();
  EXPECT_EQ(upstream->getOutField(0)->getOutputConnectorValue().getLinkNum(), 0);
}

TEST_F(BaseOpInputsTest, ATouchedOutputInvalidatesItsImage) {
  PagedImg& image = *source.getOutImg(0);
  image.setUpToDate();
  source.getOutField(0)->notifyAttachments(FieldSensor::VX_WEAK_NOTIFICATION);
  EXPECT_TRUE(image.isUpToDate());
  source.getOutField(0)->notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
  EXPECT_FALSE(image.isUpToDate());
}

TEST_F(BaseOpInputsTest, AnOutputImageIsClearedAndOutOfDate) {
  PagedImg& image = *source.getOutImg(1);
  image.setUpToDate();
  image.getMemoryImg().update(nullptr, 0, SubImgBox(TVector<VXint64>(0), TVector<VXint64>(0)), VXuint8Type);
  ASSERT_EQ(image.getMemoryImg().getMemoryImgSize(), 1U);
  source.clearOutImg(1);
  EXPECT_FALSE(image.isUpToDate());
  EXPECT_EQ(image.getMemoryImg().getMemoryImgSize(), 0U);
  EXPECT_EQ(messages.take(), Messages{});
  for (const VXint64 outIndex : {-1, 2}) {
    try {
      source.clearOutImg(outIndex);
      ADD_FAILURE() << "no exception";
    } catch (int code) {
      EXPECT_EQ(code, 41);
    }
    EXPECT_EQ(messages.take().size(), 1U);
  }
}

// Services ------------------------------------------------------------------------------------------------------------

TEST_F(BaseOpInputsTest, RequestsWithoutAModuleAreRefused) {
  const SubImgBox box(TVector<VXint64>(0), TVector<VXint64>(0));
  void* data = nullptr;
  EXPECT_EQ(BaseOp::getTile(nullptr, 0, box, VXuint8Type, &data), 5);
  EXPECT_EQ(data, nullptr);
  SubImg block;
  EXPECT_EQ(BaseOp::getTile(nullptr, 0, block), 5);
  CachedBuffer buffer;
  EXPECT_EQ(BaseOp::getTile(nullptr, 0, box, VXuint8Type, buffer), 5);
  EXPECT_EQ(BaseOp::updateImageProps(nullptr, 0), 5);
  EXPECT_EQ(messages.take(), Messages{});
}

}  // namespace
}  // namespace vx::test
