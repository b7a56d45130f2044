// The typed accessors of the classes of fields: ownership, ranges, notification, and what a broken pointer does.

#include "FieldListener.h"
#include "MessageRecorder.h"
#include "TestAllocator.h"

#include "vxBase.h"
#include "vxDicomTagList.h"
#include "vxFields.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace vx::test {
namespace {

using Strengths = std::vector<int>;
using Messages = std::vector<Message>;

// Shows the value pointer.
template <class F>
class Open : public F {
 public:
  using F::_valuePtr;
  using F::F;
};

// Ownership ----------------------------------------------------------------------------------------------------------

// A field with a variable of the caller's and one with a value of its own.
template <class F, class T>
void expectReference(T value) {
  T variable = value;
  {
    Open<F> field("named", &variable);
    EXPECT_EQ(field.getName(), "named");
    EXPECT_TRUE(field.hasReferencedValue());
    EXPECT_EQ(field._valuePtr, &variable);
    EXPECT_EQ(variable, value);
  }
  EXPECT_EQ(variable, value);
  const Open<F> own("own", nullptr);
  EXPECT_FALSE(own.hasReferencedValue());
  EXPECT_NE(own._valuePtr, nullptr);
}

TEST(FieldsValuesTest, CallersVariableIsReferencedAndKeepsItsValue) {
  expectReference<BoolField>(true);
  expectReference<IntField, VXint64>(5);
  expectReference<ToggleField>(7);
  expectReference<FloatField>(2.5F);
  expectReference<ProgressField>(0.5F);
  expectReference<DoubleField>(2.5);
  expectReference<BaseField, Base*>(nullptr);
  expectReference<SoNodeField>(reinterpret_cast<SoNode*>(16));
  expectReference<DicomTagListField, DicomTagList*>(nullptr);
  expectReference<Vec2fField>(Tvec2<double>(1, 2));
  expectReference<Vec3fField>(Tvec3<double>(1, 2, 3));
  expectReference<Vec4fField>(Tvec4<double>(1, 2, 3, 4));
  expectReference<Vec6fField>(Tvec6<double>(1, 2, 3, 4, 5, 6));
  expectReference<ColorField>(Tvec3<double>(1, 2, 3));
  expectReference<MatrixField>(Tmat4<double>());
  expectReference<VectorField>(TVector<VXint64>(3));
  expectReference<SubImgBoxField>(SubImgBox(TVector<VXint64>(1), TVector<VXint64>(2)));
  expectReference<SubImgBoxfField>(SubImgBoxf(Tvec6<double>(1.0), Tvec6<double>(2.0)));
  expectReference<VXDataTypeField>(VXDataType{VXfloatType});
}

TEST(FieldsValuesTest, FieldsThatHoldTheirValueSayWhetherItIsReferenced) {
  EXPECT_FALSE(StringField("f").hasReferencedValue());
  EXPECT_FALSE(NotifyField("f").hasReferencedValue());
  EXPECT_FALSE(LongDoubleField("f").hasReferencedValue());
  EXPECT_FALSE(UniversalTypeField("f", VXint8Type).hasReferencedValue());
  EXPECT_TRUE(PointerField("f").hasReferencedValue());
}

TEST(FieldsValuesTest, ChangesReachTheCallersVariable) {
  double variable = 1;
  DoubleField field("f", &variable);
  field.setDoubleValue(2);
  EXPECT_EQ(variable, 2);
  variable = 3;
  EXPECT_EQ(field.getDoubleValue(), 3);
}

TEST(FieldsValuesTest, ValuesCannotBeCopied) {
  EXPECT_FALSE(std::is_copy_constructible_v<IntField>);
  EXPECT_FALSE(std::is_copy_assignable_v<MatrixField>);
}

TEST(FieldsValuesTest, MissingMemoryIsFatal) {
  const std::string name = "f";
  const char* const items[] = {"a text that is too long for any short form of a string", "b"};
  MessageRecorder recorder;
  int codes = 0;
  const auto expectFailures = [&](const std::function<void()>& make) {
    recorder.pause();
    for (long first = 0; first < 50; ++first) {
      try {
        const FailingAllocations failing(first);
        make();
        return first;
      } catch (int code) {
        EXPECT_EQ(code, VX_NO_MEMORY);
        ++codes;
      } catch (const std::bad_alloc&) {
        ADD_FAILURE() << "not reported";
      }
    }
    return 50L;
  };
  EXPECT_EQ(expectFailures([&] { const IntField field(name); }), 1);
  EXPECT_EQ(expectFailures([&] { const MatrixField field(name); }), 1);
  EXPECT_GT(expectFailures([&] { const EnumField field(name, items, 2); }), 1);
  EXPECT_GT(codes, 2);
}

// Notification -------------------------------------------------------------------------------------------------------

// Each setter is called twice with the same value: a field doesn't compare.
template <class F>
void expectNotifying(F& field, const std::function<void(F&)>& set) {
  FieldListener listener(field);
  set(field);
  set(field);
  EXPECT_EQ(listener.take(), (Strengths{2, 2})) << field.getTypeIdName();
}

template <class F>
void expectNotifyingOf(const std::function<void(F&)>& set) {
  F field("field");
  expectNotifying(field, set);
}

TEST(FieldsValuesTest, EverySetterNotifiesWithFullStrengthWhetherOrNotTheValueChanges) {
  const MessageRecorder silence;
  expectNotifyingOf<BoolField>([](BoolField& f) { f.setBoolValue(true); });
  expectNotifyingOf<BoolField>([](BoolField& f) { f.switch_Value(); });
  expectNotifyingOf<IntField>([](IntField& f) { f.setIntValue(3); });
  expectNotifyingOf<ToggleField>([](ToggleField& f) { f.setIntValue(3); });
  expectNotifyingOf<ToggleField>([](ToggleField& f) { f.setToggleValue(true); });
  expectNotifyingOf<ToggleField>([](ToggleField& f) { f.switch_Value(); });
  expectNotifyingOf<FloatField>([](FloatField& f) { f.setFloatValue(3); });
  expectNotifyingOf<DoubleField>([](DoubleField& f) { f.setDoubleValue(3); });
  expectNotifyingOf<LongDoubleField>([](LongDoubleField& f) { f.setLongDoubleValue(3); });
  expectNotifyingOf<NotifyField>([](NotifyField& f) { f.notify(); });
  expectNotifyingOf<PointerField>([](PointerField& f) { f.setPointerValue(&f); });
  expectNotifyingOf<BaseField>([](BaseField& f) { f.setBaseValue(nullptr); });
  expectNotifyingOf<SoNodeField>([](SoNodeField& f) { f.setSoNodeValue(nullptr); });
  expectNotifyingOf<DicomTagListField>([](DicomTagListField& f) { f.setDicomTagListValue(nullptr); });
  expectNotifyingOf<Vec2fField>([](Vec2fField& f) { f.setVec2fValue(Tvec2<double>(1, 2)); });
  expectNotifyingOf<Vec3fField>([](Vec3fField& f) { f.setVec3fValue(Tvec3<double>(1, 2, 3)); });
  expectNotifyingOf<Vec4fField>([](Vec4fField& f) { f.setVec4fValue(Tvec4<double>(1, 2, 3, 4)); });
  expectNotifyingOf<Vec6fField>([](Vec6fField& f) { f.setVec6fValue(Tvec6<double>(1, 2, 3, 4, 5, 6)); });
  expectNotifyingOf<ColorField>([](ColorField& f) { f.setColorValue(1, 0, 0); });
  expectNotifyingOf<ColorField>([](ColorField& f) { f.setPackedColorValue(7); });
  expectNotifyingOf<MatrixField>([](MatrixField& f) { f.setMatrixValue(Tmat4<double>()); });
  expectNotifyingOf<VectorField>([](VectorField& f) { f.setVectorValue(TVector<VXint64>(2)); });
  expectNotifyingOf<SubImgBoxField>([](SubImgBoxField& f) { f.setSubImgBoxValue(SubImgBox()); });
  expectNotifyingOf<SubImgBoxfField>([](SubImgBoxfField& f) { f.setSubImgBoxfValue(SubImgBoxf()); });
  expectNotifyingOf<VXDataTypeField>([](VXDataTypeField& f) { f.setVXDataTypeValue(77); });
  EnumField choice("field", std::vector<std::string>{"a", "b"});
  expectNotifying<EnumField>(choice, [](EnumField& f) { f.setEnumValue(1); });
  expectNotifying<EnumField>(choice, [](EnumField& f) { f.setStringValueDefaulted("b", 0); });
  expectNotifying<EnumField>(choice, [](EnumField& f) { f.setStringValueDefaulted("x", 0); });
}

TEST(FieldsValuesTest, BoundsNeitherNotifyNorChangeTheValue) {
  IntField integer("f");
  FloatField single("f");
  DoubleField real("f");
  LongDoubleField wide("f");
  FieldListener listeners[] = {FieldListener(integer), FieldListener(single), FieldListener(real), FieldListener(wide)};
  integer.setIntMinValue(5);
  integer.setIntMaxValue(9);
  single.setFloatMinValue(5);
  single.setFloatMaxValue(9);
  real.setDoubleMinValue(5);
  real.setDoubleMaxValue(9);
  wide.setLongDoubleMinValue(5);
  wide.setLongDoubleMaxValue(9);
  for (FieldListener& listener : listeners) EXPECT_EQ(listener.take(), Strengths{});
  EXPECT_EQ(integer.getIntValue(), 0);
  EXPECT_EQ(single.getFloatValue(), 0);
  EXPECT_EQ(real.getDoubleValue(), 0);
  EXPECT_EQ(wide.getLongDoubleValue(), 0);
  EXPECT_EQ(integer.getIntMinValue(), 5);
  EXPECT_EQ(integer.getIntMaxValue(), 9);
  EXPECT_EQ(single.getFloatMinValue(), 5);
  EXPECT_EQ(single.getFloatMaxValue(), 9);
  EXPECT_EQ(real.getDoubleMinValue(), 5);
  EXPECT_EQ(real.getDoubleMaxValue(), 9);
  EXPECT_EQ(wide.getLongDoubleMinValue(), 5);
  EXPECT_EQ(wide.getLongDoubleMaxValue(), 9);
}

TEST(FieldsValuesTest, BoundsStartAtTheLimits) {
  EXPECT_EQ(IntField("f").getIntMinValue(), std::numeric_limits<VXint64>::min());
  EXPECT_EQ(IntField("f").getIntMaxValue(), std::numeric_limits<VXint64>::max());
  EXPECT_EQ(FloatField("f").getFloatMinValue(), std::numeric_limits<float>::lowest());
  EXPECT_EQ(FloatField("f").getFloatMaxValue(), std::numeric_limits<float>::max());
  EXPECT_EQ(DoubleField("f").getDoubleMinValue(), std::numeric_limits<double>::lowest());
  EXPECT_EQ(DoubleField("f").getDoubleMaxValue(), std::numeric_limits<double>::max());
  EXPECT_EQ(LongDoubleField("f").getLongDoubleMinValue(), std::numeric_limits<double>::lowest());
  EXPECT_EQ(LongDoubleField("f").getLongDoubleMaxValue(), std::numeric_limits<double>::max());
}

TEST(FieldsValuesTest, ValuesAreLimitedToTheRangeAndTheUpperBoundWins) {
  IntField integer("f");
  integer.setIntMinValue(-5);
  integer.setIntMaxValue(9);
  integer.setIntValue(-6);
  EXPECT_EQ(integer.getIntValue(), -5);
  integer.setIntValue(10);
  EXPECT_EQ(integer.getIntValue(), 9);
  integer.setStringValue("100");
  EXPECT_EQ(integer.getIntValue(), 9);
  integer.setIntMinValue(20);
  integer.setIntValue(15);
  EXPECT_EQ(integer.getIntValue(), 9);

  LongDoubleField wide("f");
  wide.setLongDoubleMinValue(2);
  wide.setLongDoubleMaxValue(1);
  wide.setLongDoubleValue(0);
  EXPECT_EQ(wide.getLongDoubleValue(), 1);

  FloatField single("f");
  single.setFloatMaxValue(1);
  single.setFloatValue(std::nanf(""));
  EXPECT_TRUE(std::isnan(single.getFloatValue()));
  DoubleField real("f");
  real.setDoubleMinValue(1);
  real.setDoubleValue(std::nan(""));
  EXPECT_TRUE(std::isnan(real.getDoubleValue()));
}

// Truth values, progress, colours ------------------------------------------------------------------------------------

TEST(FieldsValuesTest, ToggleKeepsTheNumberAndGivesOneOrZero) {
  int variable = 0;
  ToggleField field("f", &variable);
  field.setIntValue(-7);
  EXPECT_EQ(variable, -7);
  EXPECT_EQ(field.getIntValue(), 1);
  EXPECT_TRUE(field.isOn());
  field.switch_Value();
  EXPECT_EQ(variable, 0);
  EXPECT_FALSE(field.isOn());
  field.switch_Value();
  EXPECT_EQ(variable, 1);
  field.setToggleValue(false);
  EXPECT_EQ(variable, 0);
  BoolField flag("f");
  flag.switch_Value();
  EXPECT_TRUE(flag.isOn());
  flag.switch_Value();
  EXPECT_FALSE(flag.getBoolValue());
}

TEST(FieldsValuesTest, ProgressDropsSmallStepsButForTheEnds) {
  ProgressField field("f");
  field.setStringValue("0.5");
  FieldListener listener(field);
  const auto expectStep = [&](float value, float stored, bool isTold) {
    field.setFloatValue(value);
    EXPECT_EQ(field.getFloatValue(), stored) << value;
    EXPECT_EQ(listener.take(), isTold ? Strengths{2} : Strengths{}) << value;
  };
  expectStep(0.51F, 0.5F, false);
  expectStep(0.49F, 0.5F, false);
  expectStep(0.53F, 0.53F, true);
  expectStep(0.53F, 0.53F, false);
  expectStep(0.99F, 0.99F, true);
  expectStep(1.0F, 1.0F, true);
  expectStep(1.0F, 1.0F, false);
  expectStep(0.99F, 1.0F, false);
  expectStep(0.01F, 0.01F, true);
  expectStep(0.0F, 0.0F, true);
  expectStep(0.0F, 0.0F, false);
  field.setUpdateDifference(0.25F);
  expectStep(0.25F, 0.0F, false);
  expectStep(0.26F, 0.26F, true);
  field.setFloatMaxValue(0.75F);
  expectStep(1.0F, 0.75F, true);
  field.setStringValue("0.74");
  EXPECT_EQ(field.getFloatValue(), 0.74F);
  EXPECT_EQ(listener.take(), Strengths{2});
}

TEST(FieldsValuesTest, ProgressTakesTheEndsFromAStepOfOneEpsilon) {
  constexpr float eps = 1.1920929e-07F;
  float value = 1 - eps;
  ProgressField field("f", &value);
  FieldListener listener(field);
  field.setFloatValue(1.0F);
  EXPECT_EQ(value, 1.0F) << "a step of eps";
  EXPECT_EQ(listener.take(), Strengths{2});
  field.setFloatValue(1 - eps / 2);
  EXPECT_EQ(value, 1.0F) << "a smaller one";
  value = 0.99F;
  field.setFloatValue(1 - eps / 2);
  EXPECT_EQ(value, 1 - eps / 2) << "an end within eps of 1";
  value = 0.01F;
  field.setFloatValue(-eps / 2);
  EXPECT_EQ(value, -eps / 2) << "an end within eps of 0";
  value = 0.01F;
  field.setFloatValue(3 * eps);
  EXPECT_EQ(value, 0.01F) << "no end";
  EXPECT_EQ(listener.take(), (Strengths{2, 2}));
}

TEST(FieldsValuesTest, ColorsArePackedWithFullAlpha) {
  ColorField field("f");
  field.setColorValue(1, 0, 0);
  EXPECT_EQ(field.getPackedColorValue(), 0xff0000ffU);
  field.setPackedColorValue(0x12804020U);
  EXPECT_EQ(field.getVec3fValue(), Tvec3<double>(0x20 / 255.0, 0x40 / 255.0, 0x80 / 255.0));
  EXPECT_EQ(field.getPackedColorValue(), 0xff804020U);
  field.setVec3fValue(Tvec3<double>(-3, 0.5, 17));
  EXPECT_EQ(field.getPackedColorValue(), 0xffff7f00U);
  field.setVec3fValue(Tvec3<double>(std::nan(""), std::numeric_limits<double>::infinity(), 0.999));
  EXPECT_EQ(field.getPackedColorValue(), 0xffffff00U);
  field.setVec3fValue(Tvec3<double>(255 / 256.0, 0.9965, 1.5 / 255.999));
  EXPECT_EQ(field.getPackedColorValue(), 0xff01fffeU) << "truncated multiples of 1 / 255.999";
  float r = 0, g = 0, b = 0;
  field.setColorValue(0.1F, 0.2F, 0.3F);
  field.getColorValue(r, g, b);
  EXPECT_EQ(r, 0.1F);
  EXPECT_EQ(g, 0.2F);
  EXPECT_EQ(b, 0.3F);
  EXPECT_EQ(field.getVec3fValue(), Tvec3<double>(0.1F, 0.2F, 0.3F));
}

// Pointers -----------------------------------------------------------------------------------------------------------

TEST(FieldsValuesTest, PointersAreKept) {
  int object = 0;
  PointerField pointer("f");
  pointer.setPointerValue(&object);
  EXPECT_EQ(pointer.getPointerValue(), &object);
  PointerField copy("f");
  copy.setStringValue(pointer.getStringValue());
  EXPECT_EQ(copy.getPointerValue(), &object);
  Base base;
  BaseField baseField("f");
  baseField.setBaseValue(&base);
  BaseField baseCopy("f");
  baseCopy.setStringValue(baseField.getStringValue());
  EXPECT_EQ(baseCopy.getBaseValue(), &base);
}

TEST(FieldsValuesTest, BaseFieldTouchesItsSourcesInOrder) {
  std::string order;
  struct Source {
    Source(const char* name, std::string& log) : field(name), sensor(&Source::hear, this), order(log) {
      sensor.attachField(&field);
    }
    static void hear(void* source, void* sensor) {
      auto& self = *static_cast<Source*>(source);
      self.order += self.field.getName() + std::to_string(static_cast<FieldSensor*>(sensor)->getNotificationStrength());
    }
    IntField field;
    FieldSensor sensor;
    std::string& order;
  };
  Source a("a", order), b("b", order);
  BaseField base("base");
  base.touchSourceFields();
  b.field.attachField(&base, 0);
  a.field.attachField(&base, 0);
  FieldListener listener(base);
  base.touchSourceFields();
  EXPECT_EQ(order, "b2a2");
  EXPECT_EQ(listener.take(), (Strengths{2, 2}));
}

// A tag list that writes down what is called.
class LoggingTagList : public DicomTagList {
 public:
  LoggingTagList(const char* name, std::string& log) : _name(name), _log(log) {}
  void ref() override { _log += "+" + _name; }
  void unref() override {
    _log += "-" + _name;
    if (throws) throw 7;
  }
  bool throws = false;

 private:
  std::string _name;
  std::string& _log;
};

TEST(FieldsValuesTest, TagListsAreCountedNewBeforeOld) {
  std::string log;
  LoggingTagList a("a", log), b("b", log);
  {
    DicomTagListField field("f");
    EXPECT_EQ(field.isValidValue(), 0);
    field.setDicomTagListValue(&a);
    EXPECT_EQ(field.isValidValue(), 1);
    field.setDicomTagListValue(&a);
    field.setDicomTagListValue(&b);
    EXPECT_EQ(field.getDicomTagListValue(), &b);
    field.setDicomTagListValue(nullptr);
    field.setDicomTagListValue(&a);
  }
  EXPECT_EQ(log, "+a+a-a+b-a-b+a-a");
  log.clear();
  DicomTagList* variable = &b;
  { const DicomTagListField field("f", &variable); }
  EXPECT_EQ(log, "-b");
}

TEST(FieldsValuesTest, TagListThatThrowsIsReportedWhenItsFieldGoes) {
  std::string log;
  LoggingTagList list("a", log);
  list.throws = true;
  MessageRecorder recorder;
  {
    DicomTagListField field("f");
    field.setDicomTagListValue(&list);
  }
  const Messages messages = recorder.take();
  ASSERT_EQ(messages.size(), 1U);
  EXPECT_EQ(messages[0].type, VX_FATAL);
  EXPECT_EQ(messages[0].code, VX_DESTRUCTOR_FAILED);
}

// Broken value pointers ----------------------------------------------------------------------------------------------

// A field whose value pointer is taken away and given back in the end.
template <class F>
class Broken : public Open<F> {
 public:
  template <class... Args>
  explicit Broken(Args&&... args) : Open<F>("field", std::forward<Args>(args)...), _value(this->_valuePtr) {
    this->_valuePtr = nullptr;
  }
  ~Broken() override { this->_valuePtr = _value; }

 private:
  decltype(Open<F>::_valuePtr) _value;
};

Messages broken(const std::string& label, const std::string& returned) {
  return {{VX_FATAL, VX_BAD_INTERNAL_POINTER, label, "_valuePtr is incorrectly set, returning " + returned}};
}

TEST(FieldsValuesTest, GettersOfBrokenFieldsReportAndReturnNothing) {
  MessageRecorder recorder;
  EXPECT_FALSE(Broken<BoolField>().getBoolValue());
  EXPECT_EQ(recorder.take(), broken("BoolField::getBoolValue", "false"));
  EXPECT_FALSE(Broken<ToggleField>().isOn());
  EXPECT_EQ(recorder.take(), broken("ToggleField::isOn", "false"));
  EXPECT_EQ(Broken<IntField>().getIntValue(), 0);
  EXPECT_EQ(recorder.take(), broken("IntField::getIntValue", "0"));
  EXPECT_EQ(Broken<ToggleField>().getIntValue(), 0);
  EXPECT_EQ(recorder.take(), broken("ToggleField::getIntValue", "0"));
  EXPECT_EQ(Broken<EnumField>(std::vector<std::string>{"a"}).getEnumValue(), 0);
  EXPECT_EQ(recorder.take(), broken("EnumField::getEnumValue", "0"));
  EXPECT_EQ(Broken<FloatField>().getFloatValue(), 0);
  EXPECT_EQ(recorder.take(), broken("FloatField::getFloatValue", "0"));
  EXPECT_EQ(Broken<DoubleField>().getDoubleValue(), 0);
  EXPECT_EQ(recorder.take(), broken("DoubleField::getDoubleValue", "0"));
  EXPECT_EQ(Broken<BaseField>().getBaseValue(), nullptr);
  EXPECT_EQ(recorder.take(), broken("BaseField::getBaseValue", "NULL"));
  EXPECT_EQ(Broken<SoNodeField>().getSoNodeValue(), nullptr);
  EXPECT_EQ(recorder.take(), broken("SoNodeField::getSoNodeValue", "NULL"));
  EXPECT_EQ(Broken<DicomTagListField>().getDicomTagListValue(), nullptr);
  EXPECT_EQ(recorder.take(), broken("DicomTagListField::getDicomTagListValue", "NULL"));
  EXPECT_EQ(Broken<VXDataTypeField>().getStringValue(), "");
  EXPECT_EQ(recorder.take(), broken("VXDataTypeField::getStringValue", "\"\""));
  EXPECT_EQ(Broken<DicomTagListField>().isValidValue(), 0);
  EXPECT_EQ(Broken<EnumField>(std::vector<std::string>{"a"}).isValidValue(), 0);
  EXPECT_EQ(recorder.take(), Messages{});
}

// Fatal: reported once, and code 41 thrown.
void expectFatal(const std::string& what, const std::function<void()>& call) {
  MessageRecorder recorder;
  int code = 0;
  try {
    call();
  } catch (int thrown) {
    code = thrown;
  }
  EXPECT_EQ(code, VX_BAD_POINTER) << what;
  const Messages messages = recorder.take();
  ASSERT_EQ(messages.size(), 1U) << what;
  EXPECT_EQ(messages[0].type, VX_FATAL) << what;
  EXPECT_EQ(messages[0].code, VX_BAD_POINTER) << what;
}

template <class F>
void expectFatalTexts(F&& field, bool isReadingFatal = true) {
  FieldListener listener(field);
  for (const char* const text : {"1", "", "hopeless"}) {
    if (std::is_base_of_v<DicomTagListField, std::decay_t<F>> && text[0] == '1') continue;
    const MessageRecorder silence;
    EXPECT_THROW(field.setStringValue(text), int) << field.getTypeIdName();
  }
  if (isReadingFatal) expectFatal(field.getTypeIdName(), [&] { static_cast<void>(field.getStringValue()); });
  EXPECT_EQ(listener.take(), Strengths{});
}

TEST(FieldsValuesTest, TextsOfBrokenFieldsAreFatal) {
  expectFatalTexts(Broken<BoolField>());
  expectFatalTexts(Broken<ToggleField>());
  expectFatalTexts(Broken<IntField>());
  expectFatalTexts(Broken<EnumField>(std::vector<std::string>{"a"}));
  expectFatalTexts(Broken<FloatField>());
  expectFatalTexts(Broken<ProgressField>());
  expectFatalTexts(Broken<DoubleField>());
  expectFatalTexts(Broken<BaseField>());
  expectFatalTexts(Broken<SoNodeField>());
  expectFatalTexts(Broken<DicomTagListField>());
  expectFatalTexts(Broken<Vec2fField>());
  expectFatalTexts(Broken<Vec3fField>());
  expectFatalTexts(Broken<Vec4fField>());
  expectFatalTexts(Broken<Vec6fField>());
  expectFatalTexts(Broken<ColorField>());
  expectFatalTexts(Broken<MatrixField>());
  expectFatalTexts(Broken<VectorField>());
  expectFatalTexts(Broken<SubImgBoxField>());
  expectFatalTexts(Broken<SubImgBoxfField>());
  expectFatalTexts(Broken<VXDataTypeField>(), false);
}

#define EXPECT_FATAL(call) expectFatal(#call, [] { static_cast<void>(call); })

TEST(FieldsValuesTest, SettersAndReferencesOfBrokenFieldsAreFatal) {
  EXPECT_FATAL(Broken<BoolField>().setBoolValue(true));
  EXPECT_FATAL(Broken<BoolField>().switch_Value());
  EXPECT_FATAL(Broken<ToggleField>().setIntValue(1));
  EXPECT_FATAL(Broken<ToggleField>().setToggleValue(true));
  EXPECT_FATAL(Broken<ToggleField>().switch_Value());
  EXPECT_FATAL(Broken<IntField>().setIntValue(1));
  EXPECT_FATAL(Broken<EnumField>(std::vector<std::string>{"a"}).setEnumValue(1));
  EXPECT_FATAL(Broken<EnumField>(std::vector<std::string>{"a"}).setStringValueDefaulted("x", 9));
  EXPECT_FATAL(Broken<FloatField>().setFloatValue(1));
  EXPECT_FATAL(Broken<ProgressField>().setFloatValue(1));
  EXPECT_FATAL(Broken<DoubleField>().setDoubleValue(1));
  EXPECT_FATAL(Broken<BaseField>().setBaseValue(nullptr));
  EXPECT_FATAL(Broken<SoNodeField>().setSoNodeValue(nullptr));
  EXPECT_FATAL(Broken<DicomTagListField>().setDicomTagListValue(nullptr));
  EXPECT_FATAL(Broken<Vec2fField>().setVec2fValue({}));
  EXPECT_FATAL(Broken<Vec3fField>().setVec3fValue({}));
  EXPECT_FATAL(Broken<Vec4fField>().setVec4fValue({}));
  EXPECT_FATAL(Broken<Vec6fField>().setVec6fValue({}));
  EXPECT_FATAL(Broken<ColorField>().setColorValue(1, 1, 1));
  EXPECT_FATAL(Broken<ColorField>().setPackedColorValue(1));
  EXPECT_FATAL(Broken<ColorField>().getPackedColorValue());
  EXPECT_FATAL(Broken<MatrixField>().setMatrixValue({}));
  EXPECT_FATAL(Broken<VectorField>().setVectorValue({}));
  EXPECT_FATAL(Broken<SubImgBoxField>().setSubImgBoxValue({}));
  EXPECT_FATAL(Broken<SubImgBoxfField>().setSubImgBoxfValue({}));
  EXPECT_FATAL(Broken<VXDataTypeField>().setVXDataTypeValue(1));
  EXPECT_FATAL(Broken<Vec2fField>().getVec2fValue());
  EXPECT_FATAL(Broken<Vec3fField>().getVec3fValue());
  EXPECT_FATAL(Broken<Vec4fField>().getVec4fValue());
  EXPECT_FATAL(Broken<Vec6fField>().getVec6fValue());
  EXPECT_FATAL(Broken<MatrixField>().getMatrixValue());
  EXPECT_FATAL(Broken<VectorField>().getVectorValue());
  EXPECT_FATAL(Broken<SubImgBoxField>().getSubImgBoxValue());
  EXPECT_FATAL(Broken<SubImgBoxfField>().getSubImgBoxfValue());
  EXPECT_FATAL(Broken<VXDataTypeField>().getVXDataTypeValue());
}

}  // namespace
}  // namespace vx::test
