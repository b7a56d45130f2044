// The field of a choice.

#include "FieldListener.h"
#include "MessageRecorder.h"

#include "vxEnumField.h"

#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace vx {

// Reaches the constructor that nobody is to call.
struct EnumFieldAccess {
  static std::unique_ptr<EnumField> make(const std::string& name) {
    return std::unique_ptr<EnumField>(new EnumField(name));
  }
};

}  // namespace vx

namespace vx::test {
namespace {

using Strengths = std::vector<int>;
using Messages = std::vector<Message>;
using Items = std::vector<std::string>;

constexpr char setter[] = "EnumField::setStringValue()";

Messages warning(const std::string& reason, const std::string& label = setter) {
  return {{VX_WARNING, VX_BAD_PARAMETER, label, reason}};
}

const Messages badValue = warning("Bad field value, call is ignored!");

struct Choice {
  std::string text;
  int value;  // -1: the text is refused
  Messages messages;
};

TEST(EnumFieldTest, ReadsItemsWithAndWithoutIndex) {
  EnumField field("f", Items{"a", "b", "c", "x:y", "4", ""});
  FieldListener listener(field);
  MessageRecorder recorder;
  const std::vector<Choice> choices = {
      {"b", 1, {}},
      {"1:b", 1, {}},
      {"7:b", 1, warning("Value b moved from 7 to 1")},
      {"0:c", 2, warning("Value c moved from 0 to 2")},
      {"2:x", 2, warning("Value x not found, using index 2")},
      {"0:no such item", 0, warning("Value no such item not found, using index 0")},
      {"9:x", -1, badValue},
      {"6:x", -1, badValue},
      {"x", -1, badValue},
      {"3", -1, badValue},
      {"B", -1, badValue},
      {" b", -1, badValue},
      {"b ", -1, badValue},
      {"2 :x", -1, badValue},
      {"2147483648:x", -1, badValue},
      {"2147483648:b", 1, {}},
      {"99999999999999999999999:b", 1, {}},
      {"-1:b", 1, {}},
      {"-1:x", -1, badValue},
      {"+2:x", 2, warning("Value x not found, using index 2")},
      {" 2:x", 2, warning("Value x not found, using index 2")},
      {"2:2:x", 2, warning("Value 2:x not found, using index 2")},
      {"x:y", 3, {}},
      {"3:x:y", 3, {}},
      {"4", 4, {}},
      {"", 5, {}},
      {"1:", 5, warning("Value  moved from 1 to 5")},
      {":", -1, badValue},
  };
  for (const Choice& choice : choices) {
    SCOPED_TRACE(choice.text);
    field.setEnumValue(77);
    listener.take();
    field.setStringValue(choice.text);
    EXPECT_EQ(field.getEnumValue(), choice.value < 0 ? 77 : choice.value);
    EXPECT_EQ(listener.take(), choice.value < 0 ? Strengths{} : Strengths{2});
    EXPECT_EQ(recorder.take(), choice.messages);
  }
}

TEST(EnumFieldTest, FirstOfEqualItemsIsChosen) {
  EnumField field("f", Items{"a", "b", "b"});
  MessageRecorder recorder;
  field.setStringValue("2:b");
  EXPECT_EQ(field.getEnumValue(), 1);
  EXPECT_EQ(recorder.take(), warning("Value b moved from 2 to 1"));
}

TEST(EnumFieldTest, DefaultTakesThePlaceOfAnUnknownItemSilently) {
  EnumField field("f", Items{"a", "b", "c"});
  FieldListener listener(field);
  MessageRecorder recorder;
  field.setStringValueDefaulted("b", 0);
  EXPECT_EQ(field.getEnumValue(), 1);
  field.setStringValueDefaulted("x", 2);
  EXPECT_EQ(field.getEnumValue(), 2);
  field.setStringValueDefaulted("1:x", 0);
  EXPECT_EQ(field.getEnumValue(), 0);
  EXPECT_EQ(listener.take(), (Strengths{2, 2, 2}));
  EXPECT_EQ(recorder.take(), Messages{});
  field.setStringValueDefaulted("7:b", 0);
  EXPECT_EQ(field.getEnumValue(), 1);
  EXPECT_EQ(listener.take(), Strengths{2});
  EXPECT_EQ(recorder.take(), warning("Value b moved from 7 to 1"));
  for (const int bad : {-1, 3, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    field.setStringValueDefaulted("2:x", bad);
    EXPECT_EQ(field.getEnumValue(), 1);
    EXPECT_EQ(listener.take(), Strengths{});
    EXPECT_EQ(recorder.take(), warning("Bad default item, call is ignored!", "EnumField::setStringValueDefaulted()"));
  }
}

TEST(EnumFieldTest, IndexOutOfRangeIsStoredAndWritesTheFirstItem) {
  EnumField field("f", Items{"a", "b", "c"});
  MessageRecorder recorder;
  EXPECT_EQ(field.isValidValue(), 1);
  for (const int bad : {99, 3, -1, std::numeric_limits<int>::min()}) {
    field.setEnumValue(bad);
    EXPECT_EQ(field.getEnumValue(), bad);
    EXPECT_EQ(field.getStringValue(), "a");
    EXPECT_EQ(field.isValidValue(), 0);
  }
  field.setEnumValue(2);
  EXPECT_EQ(field.getStringValue(), "c");
  EXPECT_EQ(field.isValidValue(), 1);
  EXPECT_EQ(recorder.take(), Messages{});
}

TEST(EnumFieldTest, ItemsAreCopiedByEachConstructor) {
  int value = 1;
  char first[] = "a";
  const char* const texts[] = {first, "b", nullptr};
  const EnumField fromTexts("f", texts, 3, &value);
  first[0] = 'z';
  EXPECT_TRUE(fromTexts.hasReferencedValue());
  EXPECT_EQ(fromTexts.getEnumNum(), 3U);
  EXPECT_EQ(fromTexts.getStringValue(), "b");
  EXPECT_EQ(fromTexts.getStringValue(0), "a");
  EXPECT_EQ(fromTexts.getStringValue(2), "");
  Items strings = {"c", "d"};
  const EnumField fromStrings("f", strings.data(), 2, nullptr);
  const EnumField fromVector("f", strings);
  strings[0] = "z";
  for (const EnumField* field : {&fromStrings, &fromVector}) {
    EXPECT_FALSE(field->hasReferencedValue());
    EXPECT_EQ(field->getEnumNum(), 2U);
    EXPECT_EQ(field->getEnumValue(), 0);
    EXPECT_EQ(field->getStringValue(), "c");
    EXPECT_EQ(field->getStringValue(1), "d");
  }
}

void expectFatal(const std::function<void()>& call) {
  MessageRecorder recorder;
  EXPECT_THROW(
      {
        try {
          call();
        } catch (int code) {
          EXPECT_EQ(code, VX_BAD_POINTER);
          throw;
        }
      },
      int);
  const Messages messages = recorder.take();
  ASSERT_EQ(messages.size(), 1U);
  EXPECT_EQ(messages[0].type, VX_FATAL);
  EXPECT_EQ(messages[0].code, VX_BAD_POINTER);
}

TEST(EnumFieldTest, MissingItemsAreFatal) {
  const EnumField field("f", Items{"a"});
  expectFatal([&] { static_cast<void>(field.getStringValue(1)); });
  expectFatal([&] { static_cast<void>(field.getStringValue(2147483647U)); });
  expectFatal([&] { static_cast<void>(field.getStringValue(4294967295U)); });
  const char* const texts[] = {"a"};
  const std::string strings[] = {"a"};
  expectFatal([&] { const EnumField tooMany("f", texts, 2147483648U, nullptr); });
  expectFatal([&] { const EnumField tooMany("f", strings, 2147483648U, nullptr); });
  expectFatal([&] { const EnumField none("f", static_cast<const char* const*>(nullptr), 1, nullptr); });
  expectFatal([&] { const EnumField none("f", static_cast<const std::string*>(nullptr), 1, nullptr); });
}

TEST(EnumFieldTest, WithoutItemsItIsEmptyAndInvalid) {
  EnumField field("f", Items{});
  MessageRecorder recorder;
  EXPECT_EQ(field.getEnumNum(), 0U);
  EXPECT_EQ(field.getStringValue(), "");
  EXPECT_EQ(field.isValidValue(), 0);
  EXPECT_EQ(recorder.take(), Messages{});
  field.setStringValue("0:a");
  EXPECT_EQ(recorder.take(), badValue);
}

TEST(EnumFieldTest, NameAloneIsRefused) {
  MessageRecorder recorder;
  const std::unique_ptr<EnumField> field = EnumFieldAccess::make("f");
  EXPECT_EQ(recorder.take(), (Messages{{VX_FATAL, VX_MISUSED_INTERFACE, "EnumField::EnumField( )",
                                        "Default constructor of EnumField must not be called."}}));
  EXPECT_EQ(field->getEnumNum(), 0U);
  EXPECT_EQ(field->isValidValue(), 0);
  EXPECT_TRUE(field->hasReferencedValue());
  expectFatal([&] { field->setEnumValue(0); });
}

}  // namespace
}  // namespace vx::test
