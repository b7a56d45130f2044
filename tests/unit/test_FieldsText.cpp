// The text form of each class of fields, entry by entry, whatever the text.

#include "FieldListener.h"
#include "MessageRecorder.h"

#include "vxFields.h"

#include <clocale>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace vx::test {
namespace {

using Strengths = std::vector<int>;
using Messages = std::vector<Message>;

std::string repeat(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += (i ? " " : "") + text;
  return all;
}

struct Reading {
  std::string text;     // what is set
  std::string written;  // what the field says then
  int code = 0;         // code of the one message, 0 for none
};

// Sets each text and expects the text that is read back, one notification and at most one message, of this label.
void expectReadings(Field& field, const std::vector<Reading>& readings, const std::string& label = "") {
  FieldListener listener(field);
  MessageRecorder recorder;
  for (const Reading& reading : readings) {
    SCOPED_TRACE("text '" + reading.text + "'");
    field.setStringValue(reading.text);
    EXPECT_EQ(field.getStringValue(), reading.written);
    EXPECT_EQ(listener.take(), Strengths{2});
    const Messages messages = recorder.take();
    ASSERT_EQ(messages.size(), reading.code == 0 ? 0U : 1U);
    if (reading.code == 0) continue;
    EXPECT_EQ(messages[0].type, VX_ERROR);
    EXPECT_EQ(messages[0].code, reading.code);
    EXPECT_EQ(messages[0].function, label);
  }
}

template <class F>
void expectReadingsOf(const std::vector<Reading>& readings, const std::string& label = "") {
  F field("field");
  expectReadings(field, readings, label);
}

const std::vector<Reading> truthReadings = {
    {"TRUE", "TRUE"},   {"FALSE", "FALSE"}, {"true", "TRUE"}, {"tRuE", "TRUE"}, {"1", "TRUE"},    {"2", "TRUE"},
    {"-1", "TRUE"},     {" 7x", "TRUE"},    {"yes", "FALSE"}, {"", "FALSE"},    {"0", "FALSE"},   {"0.5", "FALSE"},
    {"TRUE ", "FALSE"}, {" TRUE", "FALSE"}, {"TRU", "FALSE"}, {"on", "FALSE"},  {"4RUE", "TRUE"},
};

TEST(FieldsTextTest, TruthValues) {
  expectReadingsOf<BoolField>(truthReadings);
  expectReadingsOf<ToggleField>(truthReadings);
  ToggleField toggle("field");
  toggle.setStringValue("2");
  EXPECT_EQ(toggle.getIntValue(), 1);
}

TEST(FieldsTextTest, TruthValuesComeBackExactly) {
  for (const bool value : {false, true}) {
    BoolField field("field");
    field.setBoolValue(value);
    BoolField copy("copy");
    copy.setStringValue(field.getStringValue());
    EXPECT_EQ(copy.getBoolValue(), value);
  }
}

TEST(FieldsTextTest, IntegersAreWrittenWholeAndReadAs32Bits) {
  expectReadingsOf<IntField>({{"17", "17"},
                              {"-3", "-3"},
                              {"+4", "4"},
                              {" \t5", "5"},
                              {"12abc", "12"},
                              {"1.9", "1"},
                              {"", "0"},
                              {"abc", "0"},
                              {"0x10", "0"},
                              {"2147483647", "2147483647"},
                              {"-2147483648", "-2147483648"},
                              {"5000000000", "705032704"}});
  IntField field("field");
  field.setIntValue(5000000000LL);
  EXPECT_EQ(field.getStringValue(), "5000000000");
  field.setStringValue(field.getStringValue());
  EXPECT_NE(field.getIntValue(), 5000000000LL);
}

const std::vector<Reading> floatReadings = {
    {"1.5", "1.5"}, {"-0.25", "-0.25"}, {"1e3x", "1000"},  {" 2 3", "2"},  {"", "0"},
    {"abc", "0"},   {"1,5", "1"},       {"1e20", "1e+20"}, {"nan", "nan"}, {"0x10", "16"},
};

TEST(FieldsTextTest, FloatsHaveSixDigits) {
  expectReadingsOf<FloatField>(floatReadings);
  expectReadingsOf<FloatField>(
      {{"0.123456789", "0.123457"}, {"1234567", "1.23457e+06"}, {"1e99", "3.40282e+38"}, {"-inf", "-3.40282e+38"}});
}

TEST(FieldsTextTest, TextsPassTheFilterOfProgress) {
  expectReadingsOf<ProgressField>(floatReadings);
  expectReadingsOf<ProgressField>({{"0.5", "0.5"}, {"0.51", "0.51"}, {"0.51", "0.51"}});
}

const std::vector<Reading> doubleReadings = {
    {"0.1234567890123456789", "0.123456789012346"},
    {"1e999", "1.79769313486232e+308"},
    {"-inf", "-1.79769313486232e+308"},
    {"100000000000000000000", "1e+20"},
};

TEST(FieldsTextTest, DoublesHaveFifteenDigits) {
  expectReadingsOf<DoubleField>(floatReadings);
  expectReadingsOf<DoubleField>(doubleReadings);
  expectReadingsOf<LongDoubleField>(floatReadings);
  expectReadingsOf<LongDoubleField>(doubleReadings);
}

TEST(FieldsTextTest, StringsAreKeptAsTheyAre) {
  expectReadingsOf<StringField>({{"some text", "some text"},
                                 {"", ""},
                                 {" \n\t\"'<>", " \n\t\"'<>"},
                                 {std::string("a\0b", 3), std::string("a\0b", 3)}});
}

TEST(FieldsTextTest, NotifyFieldIgnoresTexts) {
  expectReadingsOf<NotifyField>({{"some text", ""}, {"", ""}, {"1", ""}});
}

TEST(FieldsTextTest, PointersAreNumbers) {
  expectReadingsOf<PointerField>({{"4096", "4096"},
                                  {"NULL", "NULL"},
                                  {"0", "NULL"},
                                  {"0x10", "16"},
                                  {"18446744073709551615", "18446744073709551615"},
                                  {"", "NULL", VX_BAD_PARAMETER},
                                  {"12abc", "NULL", VX_BAD_PARAMETER},
                                  {"99999999999999999999", "NULL", VX_BAD_PARAMETER},
                                  {"%n%n%s", "NULL", VX_BAD_PARAMETER}},
                                 "PointerField::setStringValue()");
}

const std::vector<Reading> pointerReadings = {
    {"4096", "4096"},
    {"NULL", "0"},
    {"0", "0"},
    {"1", "1"},
    {"0x10", "16"},
    {"18446744073709551615", "18446744073709551615"},
    {"", "0", VX_BAD_PARAMETER},
    {"12abc", "0", VX_BAD_PARAMETER},
    {"hopeless", "0", VX_BAD_PARAMETER},
};

TEST(FieldsTextTest, HostileAddressesAreStoredAndNotFollowed) {
  expectReadingsOf<BaseField>(pointerReadings, "BaseField::setStringValue()");
  expectReadingsOf<SoNodeField>(pointerReadings, "SoNodeField::setStringValue()");
}

TEST(FieldsTextTest, TagListsWriteTheAddressOfTheirHolder) {
  DicomTagList* list = nullptr;
  DicomTagListField field("field", &list);
  const std::string address = std::to_string(reinterpret_cast<std::uintptr_t>(&list));
  expectReadings(
      field,
      {{"NULL", address}, {"0", address}, {"", address, VX_BAD_PARAMETER}, {"hopeless", address, VX_BAD_PARAMETER}},
      "DicomTagListField::setStringValue()");
  EXPECT_EQ(list, nullptr);
}

// Numbers from the first one on that can't be read are 0.
template <class F>
void expectNumbers(int count) {
  SCOPED_TRACE(count);
  const auto ending = [count](const std::string& begin, int used) {
    return count > used ? begin + " " + repeat("0", count - used) : begin;
  };
  expectReadingsOf<F>({{repeat("1.25", count), repeat("1.25", count)},
                       {repeat("-3", count) + " 99 x", repeat("-3", count)},
                       {"1 2", ending("1 2", 2)},
                       {"1\n\t2", ending("1 2", 2)},
                       {"1 x 3", ending("1", 1)},
                       {"1,5 2", ending("1", 1)},
                       {"", repeat("0", count)},
                       {"abc", repeat("0", count)},
                       {"0.1234567890123456789 1e300", ending("0.123456789012346 1e+300", 2)}});
}

TEST(FieldsTextTest, CompositesReadUpToTheFirstBadNumber) {
  expectNumbers<Vec2fField>(2);
  expectNumbers<Vec3fField>(3);
  expectNumbers<ColorField>(3);
  expectNumbers<Vec4fField>(4);
  expectNumbers<Vec6fField>(6);
  expectNumbers<MatrixField>(16);
  expectNumbers<SubImgBoxfField>(12);
}

TEST(FieldsTextTest, CompositesKeepTheOrderOfTheirNumbers) {
  const std::string digits = "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16";
  MatrixField matrix("field");
  matrix.setStringValue(digits);
  EXPECT_EQ(matrix.getMatrixValue(), Tmat4<double>(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16));
  EXPECT_EQ(matrix.getStringValue(), digits);
  SubImgBoxfField boxf("field");
  boxf.setStringValue(digits);
  EXPECT_EQ(boxf.getSubImgBoxfValue(), SubImgBoxf(Tvec6<double>(1, 2, 3, 4, 5, 6), Tvec6<double>(7, 8, 9, 10, 11, 12)));
  SubImgBoxField box("field");
  box.setStringValue(digits);
  EXPECT_EQ(box.getSubImgBoxValue(),
            SubImgBox(TVector<VXint64>(1, 2, 3, 4, 5, 6), TVector<VXint64>(7, 8, 9, 10, 11, 12)));
  EXPECT_EQ(box.getStringValue(), "1 2 3 4 5 6 7 8 9 10 11 12");
}

TEST(FieldsTextTest, IntegerCompositesRoundHalvesUpward) {
  expectReadingsOf<VectorField>({{"1 2 3 4 5 6", "1 2 3 4 5 6"},
                                 {"1.5 2.4", "2 2 0 0 0 0"},
                                 {"-1.5 -1.6 -0.5", "-1 -2 0 0 0 0"},
                                 {"", "0 0 0 0 0 0"},
                                 {"abc", "0 0 0 0 0 0"},
                                 {"7 8x 9", "7 8 0 0 0 0"},
                                 {"1 2 3 4 5 6 7", "1 2 3 4 5 6"},
                                 {"9007199254740993", "9007199254740992 0 0 0 0 0"},
                                 {"1e30 -1e30 nan", repeat("-9223372036854775808", 3) + " 0 0 0"}});
  expectReadingsOf<SubImgBoxField>({{"0 0 0 0 0 0 9 9 9 0 0 0", "0 0 0 0 0 0 9 9 9 0 0 0"},
                                    {"1.5 2.4 0 0 0 0 -1.5", "2 2 0 0 0 0 -1 0 0 0 0 0"},
                                    {"", repeat("0", 12)},
                                    {"abc", repeat("0", 12)}});
  VectorField field("field");
  field.setVectorValue(TVector<VXint64>(-9223372036854775807LL - 1));
  EXPECT_EQ(field.getStringValue(), repeat("-9223372036854775808", 6));
}

TEST(FieldsTextTest, VoxelTypesAreNames) {
  expectReadingsOf<VXDataTypeField>({{"int8", "int8"},
                                     {"unsigned int16", "unsigned int16"},
                                     {"double", "double"},
                                     {"long double", "long double"},
                                     {"int64", "int64"},
                                     {"", "int8", VX_BAD_DATA_TYPE},
                                     {"INT16", "int8", VX_BAD_DATA_TYPE},
                                     {"7", "int8", VX_BAD_DATA_TYPE}},
                                    "VXDataTypeField::setStringValue");
  VXDataTypeField field("field");
  MessageRecorder recorder;
  field.setStringValue("no such type");
  EXPECT_EQ(recorder.take(),
            (Messages{{VX_ERROR, VX_BAD_DATA_TYPE, "VXDataTypeField::setStringValue", "Using VXint8Type instead"}}));
  EXPECT_EQ(field.getVXDataTypeValue(), VXint8Type);
  field.setVXDataTypeValue(-1);
  EXPECT_EQ(field.getStringValue(), "");
}

TEST(FieldsTextTest, OwnValuesStartWithTheirDefaults) {
  const auto expectDefault = [](const Field& field, const std::string& text) {
    EXPECT_EQ(field.getStringValue(), text) << field.getTypeIdName();
  };
  expectDefault(BoolField("f"), "FALSE");
  expectDefault(IntField("f"), "0");
  expectDefault(ToggleField("f"), "FALSE");
  expectDefault(EnumField("f", std::vector<std::string>{"a", "b"}), "a");
  expectDefault(FloatField("f"), "0");
  expectDefault(ProgressField("f"), "0");
  expectDefault(DoubleField("f"), "0");
  expectDefault(LongDoubleField("f"), "0");
  expectDefault(StringField("f"), "");
  expectDefault(NotifyField("f"), "");
  expectDefault(PointerField("f"), "NULL");
  expectDefault(BaseField("f"), "0");
  expectDefault(SoNodeField("f"), "0");
  expectDefault(Vec2fField("f"), repeat("0", 2));
  expectDefault(Vec3fField("f"), repeat("0", 3));
  expectDefault(Vec4fField("f"), repeat("0", 4));
  expectDefault(Vec6fField("f"), repeat("0", 6));
  expectDefault(ColorField("f"), repeat("0", 3));
  expectDefault(MatrixField("f"), "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1");
  expectDefault(VectorField("f"), repeat("0", 6));
  expectDefault(SubImgBoxField("f"), repeat("0", 6) + " " + repeat("-1", 6));
  expectDefault(SubImgBoxfField("f"), repeat("0", 6) + " " + repeat("-1", 6));
  expectDefault(VXDataTypeField("f"), "unsigned int8");
  expectDefault(UniversalTypeField("f"), "");
  EXPECT_EQ(DicomTagListField("f").getDicomTagListValue(), nullptr);
}

TEST(FieldsTextTest, TheHostsLocaleDoesNotMatter) {
  const std::string before = std::setlocale(LC_ALL, nullptr);
  ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr) << "the locale de_DE.UTF-8 is missing";
  expectReadingsOf<FloatField>(floatReadings);
  expectReadingsOf<DoubleField>(doubleReadings);
  expectReadingsOf<LongDoubleField>(floatReadings);
  expectNumbers<Vec3fField>(3);
  expectNumbers<MatrixField>(16);
  expectReadingsOf<VectorField>({{"1.5 2,4", "2 2 0 0 0 0"}});
  UniversalTypeField universal("field", VXdoubleType);
  expectReadings(universal, {{"1.5", "1.5"}});
  std::setlocale(LC_ALL, before.c_str());
}

}  // namespace
}  // namespace vx::test
