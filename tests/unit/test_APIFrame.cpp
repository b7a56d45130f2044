#include "MessageRecorder.h"

#include "vxAPIFrame.h"
#include "vxAPIImages.h"
#include "vxBase.h"
#include "vxField.h"
#include "vxTraceBuffer.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <vector>

namespace vx {

namespace test {
namespace {

using Messages = std::vector<Message>;

// A field of no registered class of its own: it counts as a Field.
class PlainField : public Field {
 public:
  void setStringValue(const std::string& /*value*/) override {}
  std::string getStringValue() const override { return {}; }
};

class OutputField : public PlainField {
 public:
  VX_CLASS_HEADER(OutputField)
};
VX_CLASS_SOURCE(OutputField, "Field")

class Unregistered : public PlainField {
 public:
  VX_CLASS_HEADER(Unregistered)
};
VX_CLASS_SOURCE(Unregistered, "Field")

class Other : public Base {
 public:
  VX_CLASS_HEADER(Other)
};
VX_CLASS_SOURCE(Other, "Base")

class APIFrameTest : public ::testing::Test {
 protected:
  void SetUp() override {
    OutputField::initClass("Frame", nullptr);
    Other::initClass("Frame", nullptr);
  }
  void TearDown() override {
    Runtime::destroyRuntimeTypesOfDll("Frame");
    VXEnableExceptionHandling(1);
    _vxAPIRecursionFlag = 0;
  }
  MessageRecorder messages;
};

int addWorker(int a, int* b) {
  const TraceFrame trace("source/vxAPI:_VXAdd()");
  if (!b) throw std::runtime_error("no b");
  return a + *b;
}

constexpr char frameText[] = "Standard exception checking detected a fatal execution error in this function.";

TEST_F(APIFrameTest, TheResultOfTheWorkerPasses) {
  int b = 2;
  for (const int enabled : {0, 1}) {
    VXEnableExceptionHandling(enabled);
    EXPECT_EQ(callFramed("vxAPI:_VXAdd(a, b)", returnsErrorCode, addWorker, 40, &b), 42);
  }
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(APIFrameTest, EachKindOfFunctionHasItsOwnResultAndWordsAfterAnException) {
  const auto thrower = [](auto value) {
    using Result = decltype(value);
    return []() -> Result { throw 5; };
  };
  EXPECT_EQ(callFramed("vxAPI:_VXA()", returnsErrorCode, thrower(0)), 1);
  callFramed("vxAPI:_VXB()", returnsNothing, [] { throw std::string("x"); });
  EXPECT_EQ(callFramed("vxAPI:_VXC()", returnsPointer, thrower(&messages)), nullptr);
  EXPECT_EQ(callFramed("vxAPI:_VXD()", returnsNumber, thrower(7ULL)), 0U);
  EXPECT_EQ(callFramed("vxAPI:_VXD2()", returnsNumber, thrower(7.5)), 0.0);
  EXPECT_STREQ(callFramed("vxAPI:_VXE()", returnsText, thrower(static_cast<const char*>("text"))), "");
  EXPECT_EQ(callFramed("vxAPI:_VXTypeIsAbstract(type)", returnsMinusOne, thrower(0)), -1);
  EXPECT_STREQ(
      callFramed("vxAPI:_VXGetImageStateString(outField)", returnsStateText, thrower(static_cast<const char*>("text"))),
      VXGetErrorCodeDescription(1));
  const std::string text(frameText);
  EXPECT_EQ(messages.take(), (Messages{{VX_FATAL, 1, "vxAPI:_VXA()", text + "Returning VX_UNKNOWN_EXCEPTION."},
                                       {VX_FATAL, 1, "vxAPI:_VXB()", text + "Returning VX_EMPTY_PARAM."},
                                       {VX_FATAL, 1, "vxAPI:_VXC()", text + "Returning NULL."},
                                       {VX_FATAL, 1, "vxAPI:_VXD()", text + "Returning 0."},
                                       {VX_FATAL, 1, "vxAPI:_VXD2()", text + "Returning 0."},
                                       {VX_FATAL, 1, "vxAPI:_VXE()", text + "Returning \"\"."},
                                       {VX_FATAL, 1, "vxAPI:_VXTypeIsAbstract(type)", text + "Returning -1."},
                                       {VX_FATAL, 1, "vxAPI:_VXGetImageStateString(outField)",
                                        text + "Returning VXGetErrorCodeDescription(VX_UNKNOWN_EXCEPTION)."}}));
}

TEST_F(APIFrameTest, AnExceptionUnwindsTheTraceAndItsListStillShowsWhereItCameFrom) {
  const unsigned short top = VXGlobalTraceBuffer._stackTop;
  EXPECT_EQ(callFramed("vxAPI:_VXAdd(a, b)", returnsErrorCode, addWorker, 40, nullptr), VX_UNKNOWN_EXCEPTION);
  EXPECT_EQ(VXGlobalTraceBuffer._stackTop, top);
  EXPECT_EQ(VXGlobalTraceBuffer._stack[top], nullptr);
  const auto last = static_cast<unsigned short>(VXGlobalTraceBuffer._listIndex - 1);
  EXPECT_STREQ(VXGlobalTraceBuffer._list[last], "source/vxAPI:_VXAdd()");
}

TEST_F(APIFrameTest, WithoutExceptionHandlingTheExceptionReachesTheHost) {
  VXEnableExceptionHandling(0);
  EXPECT_THROW(callFramed("vxAPI:_VXAdd(a, b)", returnsErrorCode, addWorker, 40, nullptr), std::runtime_error);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(APIFrameTest, ASilentCallGivesItsResultWithoutAReport) {
  EXPECT_EQ(callSilently(3, []() -> int { throw 5; }), 3);
  EXPECT_EQ(callSilently(3, [] { return 4; }), 4);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(APIFrameTest, APlainArgumentCheckReportsBadParameter) {
  EXPECT_TRUE(checkArgument(true, "vxAPI: VXSomething", "Invalid name passed."));
  EXPECT_FALSE(checkArgument(!isEmptyText(""), "vxAPI: VXSomething", "Invalid name passed."));
  EXPECT_EQ(messages.take(), (Messages{{VX_ERROR, VX_BAD_PARAMETER, "vxAPI: VXSomething", "Invalid name passed."}}));
  EXPECT_TRUE(isEmptyText(nullptr));
  EXPECT_FALSE(isEmptyText(" "));
}

TEST_F(APIFrameTest, TheObjectCheckRefusesNull) {
  EXPECT_FALSE(checkObject<OutputField>(static_cast<Field*>(nullptr), "vxAPI: _VXGetOutputParams", "R."));
  const auto taken = messages.take();
  EXPECT_EQ(taken, (Messages{{VX_ERROR, 7, "vxAPI: _VXGetOutputParams", "R."}}));
  EXPECT_EQ(taken.at(0).handledObject, nullptr);
  EXPECT_EQ(taken.at(0).handledObjectType, nullptr);
}

TEST_F(APIFrameTest, TheObjectCheckRefusesAClassThatIsNotRegistered) {
  Unregistered field;
  EXPECT_FALSE(checkObject<OutputField>(&field, "label", "R."));
  const auto taken = messages.take();
  EXPECT_EQ(taken, (Messages{{VX_ERROR, 39, "label",
                              "R. The field seems to be uninitialized, maybeclass::initClass() code is not called on "
                              "code initialization."}}));
  EXPECT_EQ(taken.at(0).handledObject, nullptr);
}

TEST_F(APIFrameTest, TheObjectCheckRefusesAWrongClassByNamingBoth) {
  PlainField field;
  EXPECT_FALSE(checkObject<OutputField>(&field, "label", "R."));
  const auto taken = messages.take();
  EXPECT_EQ(taken, (Messages{{VX_ERROR, 29, "label",
                              "R. The field must be initialized an it should be of type OutputField (or derived from "
                              "it), but it seems to be of type Field."}}));
  EXPECT_EQ(taken.at(0).handledObject, &field);
  EXPECT_EQ(taken.at(0).handledObjectType, Field::getClassTypeId());
}

TEST_F(APIFrameTest, TheObjectCheckNamesARequiredClassThatIsNotRegisteredBadType) {
  PlainField field;
  EXPECT_FALSE(checkObject<Unregistered>(&field, "label", "R."));
  EXPECT_EQ(messages.take().at(0).reason,
            "R. The field must be initialized an it should be of type BadType (or derived from it), but it seems to be "
            "of type Field.");
}

TEST_F(APIFrameTest, TheObjectCheckForAnyFieldReportsABadField) {
  Other other;
  EXPECT_FALSE(checkObject<Field>(&other, "label", "R."));
  const auto taken = messages.take();
  EXPECT_EQ(taken, (Messages{{VX_ERROR, 7, "label", "R."}}));
  EXPECT_EQ(taken.at(0).handledObject, &other);
  EXPECT_EQ(taken.at(0).handledObjectType, Other::getClassTypeId());
}

TEST_F(APIFrameTest, TheObjectCheckPassesTheClassAndItsDescendants) {
  OutputField field;
  EXPECT_TRUE(checkObject<OutputField>(&field, "label", "R."));
  EXPECT_TRUE(checkObject<Field>(static_cast<Field*>(&field), "label", "R."));
  Other other;
  EXPECT_TRUE(checkObject<Base>(static_cast<Base*>(&other), "label", "R."));
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(APIFrameTest, AFieldThatIsNoOutputHasNoImage) {
  constexpr char reason[] = "Invalid outField pointer or type. Setting img to NULL and Returning BAD_FIELD.";
  PagedImg* img = reinterpret_cast<PagedImg*>(this);
  EXPECT_EQ(_VXGetPagedImg(nullptr, &img), VX_BAD_FIELD);
  EXPECT_EQ(img, nullptr);
  OutputField field;
  img = reinterpret_cast<PagedImg*>(this);
  EXPECT_EQ(_VXGetPagedImg(&field, &img), VX_BAD_FIELD);
  EXPECT_EQ(img, nullptr);
  EXPECT_EQ(messages.take(),
            (Messages{{VX_ERROR, 7, "vxAPI: _VXGetPagedImg", reason},
                      {VX_ERROR, 29, "vxAPI: _VXGetPagedImg",
                       std::string(reason) + " The field must be initialized an it should be of type "
                                             "OutputConnectorField (or derived from it), but it seems to be of type "
                                             "OutputField."}}));
}

TEST_F(APIFrameTest, TheRecursionGuardRefusesANestedOperation) {
  const auto nested = [] {
    EXPECT_EQ(withRecursionGuard("inner", "Terminating/breaking recursion.", [] { return 5; }), VX_RECURSION_STOPPED);
    return 3;
  };
  EXPECT_EQ(withRecursionGuard("outer", "Terminating/breaking recursion.", nested), 3);
  EXPECT_EQ(messages.take(), (Messages{{VX_ERROR, 22, "inner", "Terminating/breaking recursion."}}));
  EXPECT_EQ(withRecursionGuard("again", "text", [] { return 0; }), 0) << "the flag was cleared";
}

TEST_F(APIFrameTest, AnExceptionInAGuardedOperationLeavesTheFlagSet) {
  EXPECT_THROW(withRecursionGuard("outer", "text", []() -> int { throw 5; }), int);
  EXPECT_EQ(withRecursionGuard("later", "Terminating/breaking recursion. Not mapping coordinates.", [] { return 0; }),
            VX_RECURSION_STOPPED);
  EXPECT_EQ(messages.take(),
            (Messages{{VX_ERROR, 22, "later", "Terminating/breaking recursion. Not mapping coordinates."}}));
}

// A module whose type may not be asked for.
class Module : public Base {
 public:
  bool isBroken = false;
  const RuntimeType* getTypeId() const override {
    if (isBroken) throw 1;
    return Other::getClassTypeId();
  }
  const char* getTypeIdName() const override { return "Module"; }
  long& typeInstanceCounter() override { return Other::getClassTypeId()->instanceCounter(); }
};

class ModuleCallGuardTest : public APIFrameTest {
 protected:
  template <class Thrown>
  Message reportOf(Thrown thrown) {
    guardModuleCall(
        &module, "Continuing after broken deactivateAttachments call.",
        [] { return std::string("BaseOp::deactivateAttachments() of module ") + "M"; }, [&thrown] { throw thrown; });
    const auto taken = messages.take();
    EXPECT_EQ(taken.size(), 1U);
    return taken.empty() ? Message{} : taken[0];
  }
  void expectReport(const Message& message, VXErrorCode code, const std::string& errorText) {
    EXPECT_EQ(message, (Message{VX_FATAL, code, "BaseOp::deactivateAttachments() of module M",
                                "Continuing after broken deactivateAttachments call."}));
    EXPECT_EQ(message.errorText, errorText);
    EXPECT_EQ(message.handledObject, &module);
    EXPECT_EQ(message.handledObjectType, Other::getClassTypeId());
  }
  Module module;
};

TEST_F(ModuleCallGuardTest, AThrownTextIsShown) {
  char text[] = "a text";
  expectReport(reportOf(static_cast<char*>(text)), 0, "a text");
  expectReport(reportOf(static_cast<char*>(nullptr)), 0, VXGetErrorCodeDescription(1));
  expectReport(reportOf(std::string("a string")), 0, "a string");
}

TEST_F(ModuleCallGuardTest, AThrownCodeIsShown) {
  expectReport(reportOf(7), 7, VXGetErrorCodeDescription(7));
  expectReport(reportOf(0), 0, VXGetErrorCodeDescription(0));
}

TEST_F(ModuleCallGuardTest, AnythingElseIsAnUnknownException) {
  expectReport(reportOf(std::runtime_error("x")), 1, VXGetErrorCodeDescription(1));
  expectReport(reportOf(2.5), 1, VXGetErrorCodeDescription(1));
  expectReport(reportOf(static_cast<const char*>("a literal")), 1, VXGetErrorCodeDescription(1));
}

TEST_F(ModuleCallGuardTest, ATypeThatCannotBeAskedIsNull) {
  module.isBroken = true;
  EXPECT_EQ(reportOf(7).handledObjectType, nullptr);
}

TEST_F(ModuleCallGuardTest, ALabelThatCannotBeMadeEndsInAFatalMessage) {
  guardModuleCall(
      &module, "reason", []() -> std::string { throw 1; }, [] { throw 7; });
  const auto taken = messages.take();
  ASSERT_EQ(taken.size(), 1U);
  EXPECT_EQ(taken[0].type, VX_FATAL);
  EXPECT_EQ(taken[0].code, VX_UNKNOWN_EXCEPTION);
  EXPECT_EQ(taken[0].file, "tests/unit/test_APIFrame.cpp");
}

TEST_F(ModuleCallGuardTest, ACallThatReturnsIsLeftAlone) {
  bool isCalled = false;
  guardModuleCall(
      &module, "reason", [] { return std::string(); }, [&] { isCalled = true; });
  EXPECT_TRUE(isCalled);
  EXPECT_EQ(messages.take(), Messages{});
}

// An object that fails when it goes, as a module can't: destructors of run-time typed classes don't throw.
class Stubborn {
 public:
  explicit Stubborn(void (*failure)()) : _failure(failure) {}
  ~Stubborn() noexcept(false) { _failure(); }

 private:
  void (*_failure)();
};

class ModuleLifeGuardTest : public APIFrameTest {
 protected:
  static bool isDeleted(Stubborn* object) {
    return guardModuleLife(
        "Continuing after module deletion failure.", [] { return std::string("the label"); }, [=] { delete object; });
  }
};

TEST_F(ModuleLifeGuardTest, WhatIsThrownIsReportedAsFatal) {
  EXPECT_FALSE(isDeleted(new Stubborn([] { throw 9; })));
  EXPECT_FALSE(isDeleted(new Stubborn([] { throw std::string("text"); })));
  EXPECT_EQ(messages.take(), (Messages{{VX_FATAL, 9, "the label", "Continuing after module deletion failure."},
                                       {VX_FATAL, 1, "the label", "Continuing after module deletion failure."}}));
}

TEST_F(ModuleLifeGuardTest, WithoutExceptionHandlingItPasses) {
  VXEnableExceptionHandling(0);
  EXPECT_THROW(isDeleted(new Stubborn([] { throw 9; })), int);
  EXPECT_TRUE(isDeleted(new Stubborn([] {})));
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(ModuleLifeGuardTest, ACallThatReturnsIsLeftAlone) {
  EXPECT_TRUE(isDeleted(new Stubborn([] {})));
  EXPECT_EQ(messages.take(), Messages{});
}

}  // namespace
}  // namespace test
}  // namespace vx
