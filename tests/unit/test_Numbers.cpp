#include "MessageRecorder.h"

#include "vxUtilsAPI.h"

#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

namespace vx::test {
namespace {

using Messages = std::vector<Message>;
constexpr VXint64 smallest = std::numeric_limits<VXint64>::min();
constexpr VXint64 largest = std::numeric_limits<VXint64>::max();

TEST(VXint64Scan, ReadsADecimalNumberInFrontOfTheText) {
  struct Row {
    const char* text;
    int isRead;
    VXint64 value;
  };
  const Row rows[] = {{"0", 1, 0},
                      {"42", 1, 42},
                      {"-42", 1, -42},
                      {"+42", 1, 42},
                      {" \t\n\v\f\r7", 1, 7},
                      {"12abc", 1, 12},
                      {"1.5", 1, 1},
                      {"0x10", 1, 0},
                      {"010", 1, 10},
                      {"9223372036854775807", 1, largest},
                      {"-9223372036854775808", 1, smallest},
                      {"9223372036854775808", 1, largest},
                      {"-9223372036854775809", 1, smallest},
                      {"99999999999999999999999999", 1, largest},
                      {"-99999999999999999999999999", 1, smallest},
                      {"", 0, 0},
                      {"   ", 0, 0},
                      {"-", 0, 0},
                      {"+-1", 0, 0},
                      {"--1", 0, 0},
                      {"abc", 0, 0},
                      {"- 1", 0, 0}};
  for (const Row& row : rows) {
    VXint64 value = 77;
    EXPECT_EQ(VXint64Scan(row.text, &value), row.isRead) << row.text;
    EXPECT_EQ(value, row.value) << row.text;
  }
  VXint64 value = 77;
  EXPECT_EQ(VXint64Scan(nullptr, &value), 0);
  EXPECT_EQ(value, 0);
  EXPECT_EQ(VXint64Scan("1", nullptr), 0);
}

TEST(VXuint64Scan, ReadsADecimalNumberInFrontOfTheText) {
  struct Row {
    const char* text;
    int isRead;
    VXuint64 value;
  };
  const Row rows[] = {{"0", 1, 0},
                      {"18446744073709551615", 1, ~0ULL},
                      {"18446744073709551616", 1, ~0ULL},
                      {" +5 6", 1, 5},
                      {"-1", 1, ~0ULL},
                      {"-18446744073709551616", 1, ~0ULL},
                      {"", 0, 0},
                      {"x", 0, 0},
                      {"-", 0, 0}};
  for (const Row& row : rows) {
    VXuint64 value = 77;
    EXPECT_EQ(VXuint64Scan(row.text, &value), row.isRead) << row.text;
    EXPECT_EQ(value, row.value) << row.text;
  }
  VXuint64 value = 77;
  EXPECT_EQ(VXuint64Scan(nullptr, &value), 0);
  EXPECT_EQ(value, 0);
  EXPECT_EQ(VXuint64Scan("1", nullptr), 0);
}

TEST(VXStringToPtr, ReadsWhatFieldsWrite) {
  const auto pointer = [](std::uintptr_t value) { return reinterpret_cast<void*>(value); };
  MessageRecorder messages;
  EXPECT_EQ(VXStringToPtr("NULL"), nullptr);
  EXPECT_EQ(VXStringToPtr("0", 1, "f()"), nullptr);
  EXPECT_EQ(VXStringToPtr("4660", 1, "f()"), pointer(0x1234));
  EXPECT_EQ(VXStringToPtr(" 0x1234 \n", 1, "f()"), pointer(0x1234));
  EXPECT_EQ(VXStringToPtr("0XabCD", 1, "f()"), pointer(0xabcd));
  EXPECT_EQ(VXStringToPtr("18446744073709551615", 1, "f()"), pointer(~std::uintptr_t{0}));
  EXPECT_EQ(VXStringToPtr(nullptr, 1, "f()"), nullptr);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST(VXStringToPtr, ReportsHostileTextWhenAskedTo) {
  MessageRecorder messages;
  for (const char* text : {"", "abc", "12x", "0x", "0xg", "-1", "+1", "18446744073709551616", "NULLx", "null", "1 2"}) {
    EXPECT_EQ(VXStringToPtr(text), nullptr) << text;
    EXPECT_EQ(messages.take(), Messages{}) << text;
    EXPECT_EQ(VXStringToPtr(text, 1, "PointerField::setStringValue()"), nullptr) << text;
    EXPECT_EQ(messages.take(), (Messages{{VX_ERROR, VX_BAD_PARAMETER, "PointerField::setStringValue()",
                                          "The text '" + std::string(text) + "' is not a pointer. Using NULL."}}));
  }
  EXPECT_EQ(VXStringToPtr("x", 1), nullptr);
  EXPECT_EQ(messages.take().at(0).function, "VXStringToPtr()");
}

TEST(VXSwapBytes, ReversesEachElementAndLeavesTheRest) {
  using Bytes = std::array<unsigned char, 7>;
  const auto swapped = [](size_t elementSize) {
    Bytes bytes{1, 2, 3, 4, 5, 6, 7};
    VXSwapBytes(bytes.data(), bytes.size(), elementSize);
    return bytes;
  };
  EXPECT_EQ(swapped(0), (Bytes{1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(swapped(1), (Bytes{1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(swapped(2), (Bytes{2, 1, 4, 3, 6, 5, 7}));
  EXPECT_EQ(swapped(3), (Bytes{3, 2, 1, 6, 5, 4, 7}));
  EXPECT_EQ(swapped(7), (Bytes{7, 6, 5, 4, 3, 2, 1}));
  EXPECT_EQ(swapped(8), (Bytes{1, 2, 3, 4, 5, 6, 7}));
  VXSwapBytes(nullptr, 8, 2);
}

TEST(VXIsLittleEndian, SaysHowThisMachineStoresNumbers) {
  EXPECT_EQ(VXIsLittleEndian(), __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? 1 : 0);
}

TEST(LinkChecks, TheClassesFitOneReleaseOnly) {
  MessageRecorder messages;
  EXPECT_NE(VXCheckCPPAPILinkCompatibility(1, 8, 68, 23, "1.8.68.23.87", "VXinit"), 0);
  EXPECT_NE(VXCheckCPPAPILinkCompatibility(1, 8, 68, 99, nullptr, nullptr), 0);
  EXPECT_EQ(messages.take(), Messages{});
  EXPECT_EQ(VXCheckCPPAPILinkCompatibility(1, 8, 67, 0, "1.8.67.0", "initOther"), 0);
  EXPECT_EQ(messages.take(),
            (Messages{{VX_ERROR, VX_BAD_PARAMETER, "VXCheckCPPAPILinkCompatibility()",
                       "The library started by 'initOther' was compiled for version 1.8.67.0 ('1.8.67.0'), which does "
                       "not fit version 1.8.68 of the base layer."}}));
  EXPECT_EQ(VXCheckCPPAPILinkCompatibility(2, 8, 68, 23, nullptr, nullptr), 0);
  EXPECT_EQ(VXCheckCPPAPILinkCompatibility(1, 9, 68, 23, nullptr, nullptr), 0);
}

TEST(LinkChecks, TheCInterfaceFitsCallersOfTheSameMajorVersionThatAreNotNewer) {
  struct Row {
    int major, minor, release;
    int fits;
  };
  for (const Row& row :
       {Row{1, 8, 68, 1}, Row{1, 8, 67, 1}, Row{1, 8, 0, 1}, Row{1, 7, 99, 1}, Row{1, 0, 0, 1}, Row{1, 8, 69, 0},
        Row{1, 9, 0, 0}, Row{2, 0, 0, 0}, Row{0, 8, 68, 0}, Row{1, -1, 0, 0}, Row{1, 8, -1, 0}, Row{-1, -1, -1, 0}}) {
    EXPECT_EQ(VXIsCAPILinkCompatible(row.major, row.minor, row.release), row.fits)
        << row.major << "." << row.minor << "." << row.release;
  }
}

TEST(Hooks, AreThereAsSoonAsOneOfThemIsSet) {
  const auto text = [](void*, const char*) -> const char* { return "text"; };
  const auto flag = [](void*, const char*) { return 1; };
  const auto number = [](void*, const char*) { return 2.5; };
  int application = 0;
  const VXApplicationProperties hooks[] = {{text, nullptr, nullptr, nullptr, nullptr},
                                           {nullptr, flag, nullptr, nullptr, nullptr},
                                           {nullptr, nullptr, number, nullptr, nullptr},
                                           {nullptr, nullptr, nullptr, flag, nullptr},
                                           {nullptr, nullptr, nullptr, nullptr, &application}};
  for (const VXApplicationProperties& hook : hooks) {
    VXSetApplicationPropertiesHook(&hook);
    const VXApplicationProperties* const stored = VXGetApplicationPropertiesHook();
    ASSERT_NE(stored, nullptr);
    EXPECT_EQ(stored->getStringCB, hook.getStringCB);
    EXPECT_EQ(stored->getInt32CB, hook.getInt32CB);
    EXPECT_EQ(stored->getDoubleCB, hook.getDoubleCB);
    EXPECT_EQ(stored->getBoolCB, hook.getBoolCB);
    EXPECT_EQ(stored->applicationUsrData, hook.applicationUsrData);
  }
  VXSetApplicationPropertiesHook(nullptr);
}

TEST(Hooks, AreStoredAndHandedOut) {
  EXPECT_EQ(VXGetApplicationPropertiesHook(), nullptr);
  int application = 0;
  VXApplicationProperties properties{};
  properties.getInt32CB = [](void*, const char*) { return 5; };
  properties.applicationUsrData = &application;
  VXSetApplicationPropertiesHook(&properties);
  properties.applicationUsrData = nullptr;  // a copy was stored
  const VXApplicationProperties* stored = VXGetApplicationPropertiesHook();
  ASSERT_NE(stored, nullptr);
  EXPECT_EQ(stored->applicationUsrData, &application);
  EXPECT_EQ(stored->getStringCB, nullptr);
  EXPECT_EQ(stored->getInt32CB(nullptr, "name"), 5);
  VXSetApplicationPropertiesHook(nullptr);
  EXPECT_EQ(VXGetApplicationPropertiesHook(), nullptr);
  // What is saved where there is no hook comes back as none.
  const VXApplicationProperties none{};
  VXSetApplicationPropertiesHook(&none);
  EXPECT_EQ(VXGetApplicationPropertiesHook(), nullptr);

  static_assert(sizeof(VXApplicationProperties) == 5 * sizeof(void*));
  const VXEventFilterApplicationHookCB filter = [](void*, void*) { return 1; };
  VXSetEventFilterApplicationHook(filter, &application);
  EXPECT_EQ(VXGetEventFilterApplicationHookCB(), filter);
  EXPECT_EQ(VXGetEventFilterApplicationHookCBUserData(), &application);
  VXSetEventFilterApplicationHook(nullptr, nullptr);
  EXPECT_EQ(VXGetEventFilterApplicationHookCB(), nullptr);
  EXPECT_EQ(VXGetEventFilterApplicationHookCBUserData(), nullptr);
}

TEST(Switches, HoldWhatWasSet) {
  EXPECT_EQ(VXIsExceptionHandlingEnabled(), 1);
  VXEnableExceptionHandling(0);
  EXPECT_EQ(VXIsExceptionHandlingEnabled(), 0);
  VXEnableExceptionHandling(7);
  EXPECT_EQ(VXIsExceptionHandlingEnabled(), 1);
  EXPECT_EQ(VXIsMultithreadingActive(), 0);
  _VXSetMultithreadingActive(1);
  EXPECT_EQ(VXIsMultithreadingActive(), 1);
  _VXSetMultithreadingActive(0);
  EXPECT_EQ(VXIsMultithreadingActive(), 0);
  EXPECT_EQ(VXAlwaysFalse, 0);
  EXPECT_NE(VXAlwaysTrue, 0);
}

}  // namespace
}  // namespace vx::test
