#include "vxNotify.h"

#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <thread>
#include <tuple>
#include <vector>

namespace vx::test {
namespace {

using Event = std::tuple<unsigned int, void*, void*>;

// Keeps the events that reach it.
struct Listener {
  std::vector<Event> events;
  static void listen(void* userData, unsigned int code, void* arg1, void* arg2) {
    static_cast<Listener*>(userData)->events.emplace_back(code, arg1, arg2);
  }
};

class NotifyTest : public ::testing::Test {
 protected:
  void TearDown() override { VXNotify.removeAllNotifyCBs(); }
};

TEST_F(NotifyTest, EveryCallbackGetsCodeAndArgumentsInOrderOfRegistration) {
  static std::vector<int> order;
  order.clear();
  int a = 0;
  int b = 0;
  Listener listener;
  VXNotify.addNotifyCB([](void*, unsigned int, void*, void*) { order.push_back(1); }, nullptr, ~0U);
  VXNotify.addNotifyCB(&Listener::listen, &listener, ~0U);
  VXNotify.addNotifyCB([](void*, unsigned int, void*, void*) { order.push_back(2); }, nullptr, ~0U);
  VXNotify.notify(0x200001, &a, &b);
  VXNotify.notify(0x80001, nullptr, nullptr);
  EXPECT_EQ(order, (std::vector<int>{1, 2, 1, 2}));
  EXPECT_EQ(listener.events, (std::vector<Event>{{0x200001U, &a, &b}, {0x80001U, nullptr, nullptr}}));
}

TEST_F(NotifyTest, AMaskSelectsOneCodeOrAClassOfCodes) {
  Listener one;
  Listener cache;
  VXNotify.addNotifyCB(&Listener::listen, &one, 0x80002);
  VXNotify.addNotifyCB(&Listener::listen, &cache, 0x8ffff);
  for (const unsigned int code : {0x80001U, 0x80002U, 0x80004U, 0x80008U, 0x100001U, 0x100002U, 0x200002U}) {
    VXNotify.notify(code, nullptr, nullptr);
  }
  EXPECT_EQ(one.events, (std::vector<Event>{{0x80002U, nullptr, nullptr}}));
  EXPECT_EQ(cache.events.size(), 4U);
}

TEST_F(NotifyTest, TheCInterfaceAddsAndRemoves) {
  Listener listener;
  const VXCallbackHandle handle = VXAddNotifyCB(&Listener::listen, &listener, ~0U);
  ASSERT_NE(handle, 0U);
  VXNotify.notify(1, nullptr, nullptr);
  EXPECT_EQ(VXRemoveNotifyCB(handle), 1);
  EXPECT_EQ(VXRemoveNotifyCB(handle), 0);
  VXNotify.notify(1, nullptr, nullptr);
  EXPECT_EQ(listener.events.size(), 1U);
  EXPECT_EQ(VXAddNotifyCB(nullptr, nullptr, ~0U), 0U);
}

TEST_F(NotifyTest, ACallbackMayRemoveItselfAndNotifyAgain) {
  struct Once {
    VXCallbackHandle handle = 0;
    int numCalls = 0;
  } once;
  once.handle = VXNotify.addNotifyCB(
      [](void* userData, unsigned int code, void*, void*) {
        auto& self = *static_cast<Once*>(userData);
        ++self.numCalls;
        if (code == 1) VXNotify.notify(2, nullptr, nullptr);
        if (code == 2) {
          EXPECT_TRUE(VXNotify.removeNotifyCB(self.handle));
        }
      },
      &once, ~0U);
  VXNotify.notify(1, nullptr, nullptr);
  VXNotify.notify(1, nullptr, nullptr);
  EXPECT_EQ(once.numCalls, 2);
}

TEST_F(NotifyTest, AllAreRemovedTogetherAndResetSparesTheCopies) {
  Listener listener;
  VXNotify.addNotifyCB(&Listener::listen, &listener, ~0U);
  Notify copy(VXNotify);
  VXNotify.reset();
  VXNotify.notify(1, nullptr, nullptr);
  EXPECT_EQ(listener.events.size(), 0U);
  copy.notify(1, nullptr, nullptr);
  EXPECT_EQ(listener.events.size(), 1U);
  VXNotify = copy;
  VXNotify.notify(2, nullptr, nullptr);
  EXPECT_EQ(listener.events.size(), 2U);
  VXNotify.removeAllNotifyCBs();
  VXNotify.notify(3, nullptr, nullptr);
  copy.notify(3, nullptr, nullptr);
  EXPECT_EQ(listener.events.size(), 2U) << "a removed callback is silent in all copies";
}

TEST_F(NotifyTest, StreamOutputShowsTheNumberOfCallbacks) {
  Listener listener;
  VXNotify.addNotifyCB(&Listener::listen, &listener, ~0U);
  std::ostringstream text;
  text << VXNotify;
  EXPECT_EQ(text.str(), "Notify(numCallbacks=1)");
}

TEST_F(NotifyTest, ThreadsNotifyWhileOthersRegister) {
  std::thread notifier([] {
    for (int i = 0; i < 2000; ++i) VXNotify.notify(1, nullptr, nullptr);
  });
  for (int i = 0; i < 200; ++i) {
    auto numCalls = std::make_unique<int>(0);  // freed at once: a call that came later would be seen
    const VXCallbackHandle handle = VXNotify.addNotifyCB(
        [](void* userData, unsigned int, void*, void*) { ++*static_cast<int*>(userData); }, numCalls.get(), ~0U);
    EXPECT_TRUE(VXNotify.removeNotifyCB(handle));
  }
  notifier.join();
}

}  // namespace
}  // namespace vx::test
