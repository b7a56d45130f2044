#include "HostFixture.h"
#include "TestAllocator.h"

#include "vxConnectorFields.h"
#include "vxConnectors.h"

#include <stdexcept>

namespace vx::test {
namespace {

// No call sets a bypass to an input that isn't there. The explicit instantiation may name the private member.
struct BypassIndex {
  using Member = VXint64 PagedImg::*;
  friend Member bypassIndexOf(BypassIndex);
};
template <BypassIndex::Member member>
struct BypassIndexOf {
  friend BypassIndex::Member bypassIndexOf(BypassIndex) { return member; }
};
template struct BypassIndexOf<&PagedImg::_bypassIndex>;

class HostPropertiesTest : public HostFixture {
 protected:
  SourceModule source{ext(50, 40), ext(16, 16), VXuint16Type};
  TestModule module{1, 1};
};

TEST_F(HostPropertiesTest, RefusesAnOutputThatIsNotThere) {
  EXPECT_EQ(host.updateImageProps(module, -1), 6);
  EXPECT_EQ(host.updateImageProps(module, 1), 6);
}

TEST_F(HostPropertiesTest, CopiesTheFirstInputAndAsksEachModuleOnce) {
  module.connect(0, source);
  EXPECT_EQ(host.updateImageProps(module, 0), 0);
  EXPECT_TRUE(module.img().isUpToDate());
  EXPECT_EQ(module.img().getStateInfoErrorCode(), 0);
  EXPECT_EQ(module.img().getImgExt(), ext(50, 40));
  EXPECT_EQ(module.img().getPageExt(), ext(16, 16));
  EXPECT_EQ(module.img().getDataType(), VXuint16Type);
  EXPECT_EQ(host.updateImageProps(module, 0), 0);
  EXPECT_EQ(module.numPropertyCalls, 1);
  EXPECT_EQ(source.numPropertyCalls, 1);
}

TEST_F(HostPropertiesTest, RunsWithoutNotificationsAndAsProcessing) {
  VXint64 enabled = -1;
  VXuint32 processing = 0;
  module.connect(0, source);
  module.onCalcOutImageProps = [&](PagedImg&, int) {
    enabled = Field::isEnabledNotifications();
    processing = host.isProcessingActive();
  };
  EXPECT_EQ(host.updateImageProps(module, 0), 0);
  EXPECT_EQ(enabled, 0);
  EXPECT_EQ(processing, 1U);
}

TEST_F(HostPropertiesTest, ClearsThePagesOfWhatItUpdates) {
  module.connect(0, source);
  tile(module, boxOf(0, 0, 15, 15));
  EXPECT_EQ(module.img().isValidPage(0), 1);
  module.img().setOutOfDate();
  EXPECT_EQ(host.updateImageProps(module, 0), 0);
  EXPECT_EQ(module.img().isValidPage(0), 0);
}

TEST_F(HostPropertiesTest, AModuleThatFeedsTwoInputsIsNoCycle) {
  TestModule sum(2, 1);
  module.connect(0, source);
  sum.connect(0, module).connect(1, module);
  EXPECT_EQ(host.updateImageProps(sum, 0), 0);
  EXPECT_EQ(module.numPropertyCalls, 1);
  EXPECT_EQ(sum.getMarker(), 0);
  EXPECT_EQ(module.getMarker(), 0);
}

TEST_F(HostPropertiesTest, AModuleConnectedToItselfIsACycle) {
  module.connect(0, module);
  EXPECT_EQ(host.updateImageProps(module, 0), 4);
  EXPECT_EQ(module.img().getStateInfoErrorCode(), 4);
  EXPECT_EQ(module.img().getStateInfoString(), VXGetErrorCodeDescription(4));
  EXPECT_FALSE(module.img().isUpToDate());
  EXPECT_EQ(module.getMarker(), 0);
  module.connect(0, source);
  EXPECT_EQ(host.updateImageProps(module, 0), 0);
}

TEST_F(HostPropertiesTest, ACycleMayBeOpenedByThePlaceholder) {
  module.connect(0, module);
  module.onHandleInput = [](int, BaseOp::INPUT_STATE state) {
    EXPECT_EQ(state, BaseOp::INPUT_NOT_VALID);
    return BaseOp::USE_PLACEHOLDER;
  };
  EXPECT_EQ(host.updateImageProps(module, 0), 0);
  EXPECT_EQ(module.img().getStateInfoErrorCode(), 0);
  EXPECT_EQ(module.img().getImgExt(), ext(1, 1));
}

// What is wrong with the input that it fails at counts, and not a cycle that the module has dealt with.
TEST_F(HostPropertiesTest, AnOpenInputBesideACycleThatWasOpenedIsAnOpenInput) {
  TestModule both(2, 1);
  both.connect(0, both);
  both.onHandleInput = [](int inIndex, BaseOp::INPUT_STATE) {
    return inIndex == 0 ? BaseOp::USE_PLACEHOLDER : BaseOp::INVALIDATE_OUTPUT;
  };
  EXPECT_EQ(host.updateImageProps(both, 0), 3);
  EXPECT_EQ(both.img().getStateInfoErrorCode(), 3);
}

TEST_F(HostPropertiesTest, ACycleIsForgottenWhenItIsOpened) {
  module.connect(0, module);
  EXPECT_EQ(host.updateImageProps(module, 0), 4);
  module.getInField(0)->getInputConnectorValue().disconnect();
  EXPECT_EQ(host.updateImageProps(module, 0), 3);
}

TEST_F(HostPropertiesTest, AModuleBehindACycleHasAnInvalidInput) {
  TestModule other(1, 1);
  TestModule behind(1, 1);
  module.connect(0, other);
  other.connect(0, module);
  behind.connect(0, module);
  EXPECT_EQ(host.updateImageProps(behind, 0), 10);
  EXPECT_EQ(module.img().getStateInfoErrorCode(), 4);
  EXPECT_EQ(behind.img().getStateInfoErrorCode(), 10);
}

TEST_F(HostPropertiesTest, AnOpenInputInvalidatesTheOutput) {
  EXPECT_EQ(host.updateImageProps(module, 0), 3);
  EXPECT_EQ(module.img().getStateInfoErrorCode(), 3);
  EXPECT_FALSE(module.img().isUpToDate());
  EXPECT_EQ(module.numPropertyCalls, 0);
  EXPECT_EQ(module.getMarker(), 0);
}

TEST_F(HostPropertiesTest, TheModuleMayTakeThePlaceholderForAnOpenInput) {
  module.onHandleInput = [](int, BaseOp::INPUT_STATE state) {
    EXPECT_EQ(state, BaseOp::INPUT_NOT_CONNECTED);
    return BaseOp::USE_PLACEHOLDER;
  };
  EXPECT_EQ(host.updateImageProps(module, 0), 0);
  EXPECT_EQ(module.img().getImgExt(), ext(1, 1));
  EXPECT_EQ(module.img().getPageExt(), ext(64, 64));
  EXPECT_EQ(module.img().getDataType(), VXuint8Type);
  EXPECT_EQ(tile(module, boxOf(0, 0, 1, 0)), (std::vector<VXint64>{0, 0}));
}

TEST_F(HostPropertiesTest, AnInvalidInputInvalidatesTheOutput) {
  source.onCalcOutImageProps = [](PagedImg&, int) { throw 7; };
  module.connect(0, source);
  EXPECT_EQ(host.updateImageProps(module, 0), 10);
  EXPECT_EQ(module.img().getStateInfoErrorCode(), 10);
  EXPECT_EQ(source.img().getStateInfoErrorCode(), 7);
  EXPECT_EQ(
      messages.take(),
      (std::vector<Message>{{VX_ERROR, 7, "Host::_updateImageProps( ) on module TestModule", controlledException}}));
}

TEST_F(HostPropertiesTest, TheModuleMayTakeThePlaceholderForAnInvalidInput) {
  source.onCalcOutImageProps = [](PagedImg& img, int) { img.setOutOfDate(); };
  module.connect(0, source);
  module.onHandleInput = [](int, BaseOp::INPUT_STATE state) {
    EXPECT_EQ(state, BaseOp::INPUT_NOT_VALID);
    return BaseOp::USE_PLACEHOLDER;
  };
  EXPECT_EQ(host.updateImageProps(module, 0), 0);
  EXPECT_EQ(module.img().getImgExt(), ext(1, 1));
}

TEST_F(HostPropertiesTest, AModuleThatInvalidatesItsImageGivesItsCode) {
  source.onCalcOutImageProps = [](PagedImg& img, int) { img.setOutOfDate(); };
  EXPECT_EQ(host.updateImageProps(source, 0), 10);
  source.onCalcOutImageProps = [](PagedImg& img, int) {
    img.setOutOfDate();
    img.setStateInfo("no file", 1234);
  };
  EXPECT_EQ(host.updateImageProps(source, 0), 1234);
  EXPECT_EQ(source.img().getStateInfoString(), "no file");
}

TEST_F(HostPropertiesTest, AThrownCodeOfZeroIsNoSuccess) {
  source.onCalcOutImageProps = [](PagedImg&, int) { throw 0; };
  EXPECT_EQ(host.updateImageProps(source, 0), 10);
  EXPECT_FALSE(source.img().isUpToDate());
  EXPECT_EQ(
      messages.take(),
      (std::vector<Message>{{VX_ERROR, 0, "Host::_updateImageProps( ) on module TestModule", controlledException}}));
}

TEST_F(HostPropertiesTest, AnUnknownExceptionIsCaughtWhileExceptionHandlingIsOn) {
  source.named("scan").onCalcOutImageProps = [](PagedImg&, int) { throw std::runtime_error("text"); };
  EXPECT_EQ(host.updateImageProps(source, 0), 17);
  EXPECT_EQ(source.img().getStateInfoErrorCode(), 17);
  EXPECT_EQ(messages.take(), (std::vector<Message>{{VX_FATAL, 17, "TestModule(scan)::calcOutImageProps()", ""}}));
  const ExceptionHandling off(false);
  EXPECT_THROW(host.updateImageProps(source, 0), std::runtime_error);
  expectRest();
}

TEST_F(HostPropertiesTest, AnErrorCodeIsCaughtWhileExceptionHandlingIsOff) {
  const ExceptionHandling off(false);
  source.onCalcOutImageProps = [](PagedImg&, int) { throw -1; };
  EXPECT_EQ(host.updateImageProps(source, 0), -1);
  EXPECT_EQ(
      messages.take(),
      (std::vector<Message>{{VX_ERROR, -1, "Host::_updateImageProps( ) on module TestModule", controlledException}}));
}

TEST_F(HostPropertiesTest, OperationsWithoutAGuardLetExceptionsPassAndTheCountersComeBack) {
  module.connect(0, source);
  module.onCalcInSubImageProps = [](int, InSubImageProps&, int) { throw 7; };
  EXPECT_THROW(host.updateImageProps(module, 0), int);
  expectRest();
  EXPECT_EQ(module.getMarker(), 0);
  EXPECT_FALSE(module.img().isUpToDate());
  TestModule open(1, 1);
  open.onHandleInput = [](int, BaseOp::INPUT_STATE) -> BaseOp::INPUT_HANDLE { throw OtherException(); };
  EXPECT_THROW(host.updateImageProps(open, 0), OtherException);
  expectRest();
  EXPECT_EQ(open.getMarker(), 0);
}

TEST_F(HostPropertiesTest, AnExtentBelowOneIsInvalid) {
  for (const VXint64 size : {VXint64{0}, VXint64{-5}}) {
    source.onCalcOutImageProps = [size](PagedImg& img, int) { img.setImgExt(ext(10, 10, 1, size)); };
    EXPECT_EQ(host.updateImageProps(source, 0), 21);
    EXPECT_EQ(source.img().getStateInfoErrorCode(), 21);
    EXPECT_FALSE(source.img().isUpToDate());
  }
}

TEST_F(HostPropertiesTest, ATypeWithoutTheRequiredOperationsIsInvalid) {
  source.setVoxelDataTypeSupport(BaseOp::EXPLICIT_TYPES, VXTypePropBits{{~0U, ~0U, ~0U, ~0U}});
  EXPECT_EQ(host.updateImageProps(source, 0), 28);
  EXPECT_EQ(source.img().getStateInfoErrorCode(), 28);
}

TEST_F(HostPropertiesTest, AnInputOfATypeThatIsNoneIsInvalid) {
  module.connect(0, source);
  VXDataType preset = -1;
  module.onCalcInSubImageProps = [&](int, InSubImageProps& props, int) {
    preset = props.dataType;
    EXPECT_FALSE(props.inTileCaching);
    EXPECT_EQ(props.scaleShiftData, ScaleShiftData());
    props.dataType = 4711;
  };
  EXPECT_EQ(host.updateImageProps(module, 0), 28);
  EXPECT_EQ(preset, VXuint16Type);
}

TEST_F(HostPropertiesTest, ABypassOfAnInputThatIsNotThereIsRefused) {
  module.connect(0, source);
  module.img().*bypassIndexOf(BypassIndex()) = 1;
  EXPECT_EQ(host.updateImageProps(module, 0), 14);
  EXPECT_FALSE(module.img().isUpToDate());
  EXPECT_EQ(module.img().getStateInfoErrorCode(), 14);
  EXPECT_EQ(module.img().getStateInfoString(), "Module uses an invalid bypass index.");
  EXPECT_EQ(messages.take(),
            (std::vector<Message>{
                {VX_ERROR, 14, "TestModule::calcOutImageProps()",
                 "Host::_updateImageProps() has detected that bypass mode was used with an invalid input connector "
                 "index. The output image has been invalidated."}}));
}

TEST_F(HostPropertiesTest, ABypassOfAnInputWithTheSamePagesIsFine) {
  module.connect(0, source).setBypass(0, 0);
  EXPECT_EQ(host.updateImageProps(module, 0), 0);
}

TEST_F(HostPropertiesTest, ABypassOfAnInputWithOtherPagesIsRefused) {
  module.connect(0, source).named("m").setBypass(0, 0);
  const std::vector<Message> expected = {
      {VX_ERROR, 14, "TestModule(m)::calcOutImageProps()",
       "Host::_updateImageProps() has detected that bypass mode was used incorrectly in combination with type, page or "
       "image extent changes. The output image has been invalidated."}};
  const std::vector<std::function<void(PagedImg&)>> changes = {[](PagedImg& img) { img.setPageExt(ext(32, 32)); },
                                                               [](PagedImg& img) { img.setImgExt(ext(49, 40)); },
                                                               [](PagedImg& img) { img.setDataType(VXint16Type); }};
  for (const auto& change : changes) {
    module.onCalcOutImageProps = [&](PagedImg& img, int) { change(img); };
    EXPECT_EQ(host.updateImageProps(module, 0), 14);
    EXPECT_FALSE(module.img().isUpToDate());
    EXPECT_EQ(module.img().getStateInfoErrorCode(), 14);
    EXPECT_EQ(module.img().getStateInfoString(), "Module uses bypassing mode incorrectly.");
    EXPECT_EQ(messages.take(), expected);
  }
}

TEST_F(HostPropertiesTest, MissingMemoryForTheTableOfPagesIsAnErrorCode) {
  module.connect(0, source);
  EXPECT_EQ(host.updateImageProps(source, 0), 0);
  bool isDone = false;
  for (long n = 0; !isDone && n < 100; ++n) {
    module.img().setOutOfDate();
    int result = -1;
    try {
      const FailingAllocations failing(n);
      result = host.updateImageProps(module, 0);
    } catch (int thrown) {
      result = thrown;
    } catch (const std::bad_alloc&) {
      result = 2;  // of texts of the state
    }
    isDone = result == 0;
    if (!isDone) {
      EXPECT_FALSE(module.img().isUpToDate());
    }
    messages.take();
    expectRest();
  }
  EXPECT_TRUE(isDone);
  EXPECT_EQ(host.updateImageProps(module, 0), 0);
}

}  // namespace
}  // namespace vx::test
