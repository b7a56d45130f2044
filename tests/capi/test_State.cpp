#include "CAPIFixture.h"

#include "vxHost.h"
#include "vxNotify.h"
#include "vxState.h"

#include <cstdlib>
#include <sstream>
#include <type_traits>

namespace vx {

// What the tests reach of the state stack's inside.
struct StateAccess {
  static std::vector<StateBuffer*>& stack() { return State::_stateStack; }
  static int destroy() { return State::_destroy(); }
  static int init() { return State::_init(); }
  static bool restore(StateBuffer*& buffer) { return State::_restoreVXState(buffer); }
  static void copy() {
    const State state;
    State other(state);
    other = state;
  }
};

namespace test {
namespace {

class StateTest : public CAPITest {
 protected:
  void TearDown() override {
    while (!StateAccess::stack().empty()) VXPopState();
    VXSetApplicationPropertiesHook(nullptr);
    VXSetEventFilterApplicationHook(nullptr, nullptr);
    CAPITest::TearDown();
  }
};

TEST_F(StateTest, AStateIsMadeOfTheseInThisOrder) {
  StateBuffer buffer;
  EXPECT_TRUE((std::is_same_v<decltype(buffer._notify), Notify>));
  EXPECT_TRUE((std::is_same_v<decltype(buffer._errorOutput), ErrorOutput>));
  EXPECT_TRUE((std::is_same_v<decltype(buffer._exceptionHandling), int>));
  EXPECT_TRUE((std::is_same_v<decltype(buffer._enableNotificationsCounter), long long>));
  const void* const members[] = {&buffer._notify,
                                 &buffer._errorOutput,
                                 &buffer._exceptionHandling,
                                 &buffer._enableNotificationsCounter,
                                 &buffer._instantiatedModules,
                                 &buffer._applicationProperties,
                                 &buffer._eventFilterApplicationHook,
                                 &buffer._eventFilterApplicationHookUsrData};
  for (std::size_t i = 1; i < std::size(members); ++i) EXPECT_LT(members[i - 1], members[i]) << i;
}

TEST_F(StateTest, APopWithoutAPushTellsOfTheEmptyStack) {
  EXPECT_EQ(VXPopState(), 44);
  EXPECT_EQ(State::popState(), 44);
  expectSilence();
}

TEST_F(StateTest, ANullEntryIsRemovedAndTold) {
  StateAccess::stack().push_back(nullptr);
  EXPECT_EQ(StateAccess::destroy(), 46);
  EXPECT_EQ(VXPopState(), 42);
  EXPECT_EQ(VXPopState(), 44);
  EXPECT_EQ(StateAccess::destroy(), 0);
  StateBuffer* none = nullptr;
  EXPECT_TRUE(StateAccess::restore(none));
}

TEST_F(StateTest, StartUpMakesRoomForTenStates) {
  EXPECT_EQ(StateAccess::init(), 0);
  EXPECT_GE(StateAccess::stack().capacity(), 10U);
}

TEST_F(StateTest, APushGivesNewMessagesNotificationAndHost) {
  Host& host = Host::getDefaultHost();
  VXErrorOutput.setMessageFilter(0x2);
  VXErrorOutput.sendMessagesToCout(true);
  VXErrorOutput.setFullDebuggingOn(true);
  int notified = 0;
  const VXCallbackHandle handle =
      VXAddNotifyCB([](void* userData, unsigned int, void*, void*) { ++*static_cast<int*>(userData); }, &notified, ~0U);
  VXCacheSetMaxSizeKB(77);
  notified = 0;

  ASSERT_EQ(VXPushState(0), 0);
  EXPECT_NE(&Host::getDefaultHost(), &host);
  EXPECT_EQ(VXCacheGetMaxSizeKB(), 50000U);
  EXPECT_EQ(VXErrorOutput.getMessageFilter(), ErrorOutput::defaultMessageFilter);
  EXPECT_FALSE(VXErrorOutput.areMessagesSentToCout());
  EXPECT_TRUE(VXErrorOutput.areMessagesSentToCerr());
  EXPECT_FALSE(VXErrorOutput.isFullDebuggingOn());
  VXClearCache();
  EXPECT_EQ(notified, 0) << "no callback is registered any more";

  ASSERT_EQ(VXPopState(), 0);
  EXPECT_EQ(&Host::getDefaultHost(), &host);
  EXPECT_EQ(VXCacheGetMaxSizeKB(), 77U);
  EXPECT_EQ(VXErrorOutput.getMessageFilter(), 0x2U);
  EXPECT_TRUE(VXErrorOutput.areMessagesSentToCout());
  EXPECT_FALSE(VXErrorOutput.areMessagesSentToCerr());
  EXPECT_TRUE(VXErrorOutput.isFullDebuggingOn());
  VXClearCache();
  EXPECT_EQ(notified, 1);
  VXRemoveNotifyCB(handle);
  VXErrorOutput.setFullDebuggingOn(false);
  VXErrorOutput.sendMessagesToCout(false);
  VXCacheSetMaxSizeKB(50000);
  VXFieldGetName(nullptr);
  EXPECT_EQ(messages.take().size(), 1U) << "the message callback is back";
}

TEST_F(StateTest, APushKeepsTheRestAndAPopRestoresIt) {
  const VXApplicationProperties properties = {
      [](void*, const char*) -> const char* { return "text"; }, [](void*, const char*) { return 1; },
      [](void*, const char*) { return 2.0; }, [](void*, const char*) { return 0; }, this};
  const VXEventFilterApplicationHookCB filter = [](void*, void*) { return 0; };
  VXSetApplicationPropertiesHook(&properties);
  VXSetEventFilterApplicationHook(filter, &messages);
  VXEnableExceptionHandling(0);
  VXint64& counter = Field::enableNotificationsCounterState();
  counter = 0x123456789LL;

  ASSERT_EQ(VXPushState(0), 0);
  EXPECT_EQ(VXIsExceptionHandlingEnabled(), 0);
  EXPECT_EQ(counter, 0x123456789LL);
  EXPECT_EQ(VXGetApplicationPropertiesHook()->applicationUsrData, this);
  EXPECT_EQ(VXGetEventFilterApplicationHookCB(), filter);
  VXEnableExceptionHandling(1);
  counter = -2;
  VXSetApplicationPropertiesHook(nullptr);
  VXSetEventFilterApplicationHook(nullptr, nullptr);

  ASSERT_EQ(VXPopState(), 0);
  EXPECT_EQ(VXIsExceptionHandlingEnabled(), 0);
  EXPECT_EQ(counter, 0x123456789LL) << "all 64 bits";
  counter = 1;
  ASSERT_NE(VXGetApplicationPropertiesHook(), nullptr);
  EXPECT_EQ(VXGetApplicationPropertiesHook()->getStringCB, properties.getStringCB);
  EXPECT_EQ(VXGetApplicationPropertiesHook()->getInt32CB, properties.getInt32CB);
  EXPECT_EQ(VXGetApplicationPropertiesHook()->getDoubleCB, properties.getDoubleCB);
  EXPECT_EQ(VXGetApplicationPropertiesHook()->getBoolCB, properties.getBoolCB);
  EXPECT_EQ(VXGetApplicationPropertiesHook()->applicationUsrData, this);
  EXPECT_EQ(VXGetEventFilterApplicationHookCB(), filter);
  EXPECT_EQ(VXGetEventFilterApplicationHookCBUserData(), &messages);
}

TEST_F(StateTest, HooksThatWereNotSetAreNotSetAfterAPop) {
  ASSERT_EQ(VXPushState(0), 0);
  const VXApplicationProperties properties = {nullptr, nullptr, nullptr, nullptr, this};
  VXSetApplicationPropertiesHook(&properties);
  ASSERT_EQ(VXPopState(), 0);
  EXPECT_EQ(VXGetApplicationPropertiesHook(), nullptr);
}

TEST_F(StateTest, StatesNest) {
  Host& first = Host::getDefaultHost();
  VXErrorOutput.setMessageFilter(1);
  VXPushState(0);
  Host& second = Host::getDefaultHost();
  VXErrorOutput.setMessageFilter(2);
  VXPushState(0);
  VXErrorOutput.setMessageFilter(4);
  EXPECT_EQ(VXPopState(), 0);
  EXPECT_EQ(VXErrorOutput.getMessageFilter(), 2U);
  EXPECT_EQ(&Host::getDefaultHost(), &second);
  EXPECT_EQ(VXPopState(), 0);
  EXPECT_EQ(VXErrorOutput.getMessageFilter(), 1U);
  EXPECT_EQ(&Host::getDefaultHost(), &first);
  EXPECT_EQ(VXPopState(), 44);
}

TEST_F(StateTest, MoreStatesThanThereIsRoomForAtFirst) {
  for (int i = 0; i < 25; ++i) EXPECT_EQ(VXPushState(0), 0);
  for (int i = 0; i < 25; ++i) EXPECT_EQ(VXPopState(), 0);
  EXPECT_EQ(VXPopState(), 44);
}

TEST_F(StateTest, TheEnvironmentIsReadAfterTheReset) {
  setenv("VX_MESSAGE_FILTER", "6", 1);
  setenv("VX_SUPPRESS_VXTYPEEXTENSION_LOAD", "1", 1);
  VXErrorOutput.setMessageFilter(1);
  VXPushState(0);
  EXPECT_EQ(VXErrorOutput.getMessageFilter(), ErrorOutput::defaultMessageFilter);
  VXPopState();
  VXPushState(1);
  EXPECT_EQ(VXErrorOutput.getMessageFilter(), 6U);
  VXPopState();
  VXPushState(-1);
  EXPECT_EQ(VXErrorOutput.getMessageFilter(), 6U);
  VXPopState();
  EXPECT_EQ(VXErrorOutput.getMessageFilter(), 1U);
  unsetenv("VX_MESSAGE_FILTER");
  unsetenv("VX_SUPPRESS_VXTYPEEXTENSION_LOAD");
}

TEST_F(StateTest, NoThreadsInTheEnvironmentCountAsOne) {
  setenv("VX_NUM_THREADS", "0", 1);
  setenv("VX_SUPPRESS_VXTYPEEXTENSION_LOAD", "1", 1);
  VXPushState(1);
  EXPECT_EQ(Host::getDefaultHost().getMaxNumThreads(), 0U);
  EXPECT_EQ(VXGetMaxNumThreads(), 1);
  VXPopState();
  unsetenv("VX_NUM_THREADS");
  unsetenv("VX_SUPPRESS_VXTYPEEXTENSION_LOAD");
}

TEST_F(StateTest, APopBearsANotificationThatThrows) {
  Host& host = Host::getDefaultHost();
  VXPushState(0);
  VXErrorOutput.sendMessagesToCerr(false);
  VXAddNotifyCB([](void*, unsigned int, void*, void*) { throw 3; }, nullptr, ~0U);
  const VXErrorCode code = VXPopState();
  EXPECT_TRUE(code == 0 || code == 1) << code;
  EXPECT_EQ(&Host::getDefaultHost(), &host);
  EXPECT_EQ(VXPopState(), 44);
  VXClearCache();
  EXPECT_EQ(VXErrorOutput.getMessageFilter(), 0xFFU) << "the recorder's filter is back";
}

TEST_F(StateTest, AModuleOfAPushedStateLeavesTheListAndLivesOn) {
  const ModulePtr before = makeModule("RampModule");
  const VXint64 count = BaseOp::getNumBaseOps();
  VXPushState(0);
  EXPECT_EQ(BaseOp::getNumBaseOps(), count) << "the list is kept";
  const ModulePtr between = makeModule("RampModule");
  EXPECT_EQ(BaseOp::getNumBaseOps(), count + 1);
  VXPopState();
  EXPECT_EQ(BaseOp::getNumBaseOps(), count);
  EXPECT_EQ(BaseOp::findBaseOpIndex(*between), -1);
  EXPECT_GE(BaseOp::findBaseOpIndex(*before), 0);
  EXPECT_STREQ(VXBaseGetType(between.get()), "RampModule");
}

TEST_F(StateTest, AModuleThatIsDeletedBetweenDoesNotComeBack) {
  ModulePtr before = makeModule("RampModule");
  const ModulePtr stays = makeModule("RampModule");
  const VXint64 count = BaseOp::getNumBaseOps();
  VXPushState(0);
  VXPushState(0);
  before.reset();
  VXPopState();
  EXPECT_EQ(BaseOp::getNumBaseOps(), count - 1);
  VXPopState();
  EXPECT_EQ(BaseOp::getNumBaseOps(), count - 1);
  EXPECT_GE(BaseOp::findBaseOpIndex(*stays), 0);
}

TEST_F(StateTest, AStateIsPrintedOneValueALine) {
  ModulePtr gone = makeModule("PassModule");
  const ModulePtr module = makeModule("RampModule");
  VXModuleSetFieldValue(module.get(), "instanceName", "mine");
  StateBuffer buffer;
  buffer._exceptionHandling = 1;
  buffer._enableNotificationsCounter = -3;
  buffer._instantiatedModules = {module.get(), gone.get(), nullptr};
  gone.reset();
  std::ostringstream stream;
  stream << buffer;
  std::ostringstream expected;
  expected << "VXNotify                                        = " << buffer._notify
           << "\nVXErrorOutput                                   = " << buffer._errorOutput
           << "\nVXIsExceptionHandlingEnabled                    = 1"
              "\nField::enableNotificationsCounterState          = -3"
              "\napplicationPropertyCallbacks.getStringCB        = 0"
              "\napplicationPropertyCallbacks.getInt32CB         = 0"
              "\napplicationPropertyCallbacks.getDoubleCB        = 0"
              "\napplicationPropertyCallbacks.getBoolCB          = 0"
              "\napplicationPropertyCallbacks.applicationUsrData = 0"
              "\neventFilterApplicationHook                      = 0"
              "\neventFilterApplicationHookUsrData               = 0"
              "\nBaseOp::_instantiatedModules                    = 3"
              "\nBaseOp::_instantiatedModules[0] = RampModule(mine)"
              "\nBaseOp::_instantiatedModules[1] = <noValidModule>"
              "\nBaseOp::_instantiatedModules[2] = <noValidModule>\n";
  EXPECT_EQ(stream.str(), expected.str());
}

TEST_F(StateTest, CopiesAreForbidden) {
  StateAccess::copy();
  expectMessages(
      {{VX_FATAL, 14, "State::State(const State &)", "Invalid use of copy constructor of State, not copying anything."},
       {VX_FATAL, 14, "State& State::operator=(const State &)",
        "Invalid use of assignment operator of State, not assigning anything."}});
}

}  // namespace
}  // namespace test
}  // namespace vx
