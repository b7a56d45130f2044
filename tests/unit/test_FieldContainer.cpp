#include "FieldsEngineStandIn.h"
#include "MessageRecorder.h"
#include "TestAllocator.h"

#include "vxFieldContainer.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace vx::test {
namespace {

using Messages = std::vector<Message>;
using Log = std::vector<std::string>;

// A container whose lists can be seen.
class OpenContainer : public FieldContainer {
 public:
  using FieldContainer::_baseOp;
  using FieldContainer::_fields;
  using FieldContainer::_fieldSensors;
  using FieldContainer::_inputConnectorFields;
  using FieldContainer::_outputConnectorFields;
  using FieldContainer::_setBaseOp;
  using FieldContainer::FieldContainer;
};

// Names its end.
class MortalField : public StringField {
 public:
  MortalField(const std::string& name, Log& log) : StringField(name), _log(log) {}
  ~MortalField() override { _log.push_back("~" + getName() + (_sensors.empty() ? "" : " with a sensor")); }

 private:
  Log& _log;
};

class FieldContainerTest : public ::testing::Test {
 protected:
  static inline Log heard;  // the field of each sensor that called
  static inline void* user = nullptr;

  void SetUp() override { heard.clear(); }
  static void hear(void* userData, void* sensor) {
    user = userData;
    heard.push_back(static_cast<FieldSensor*>(sensor)->getField()->getName());
  }

  FieldsEngineStandIn engine;
  BaseOp* op = engine.module();
  MessageRecorder messages;
  OpenContainer container{op, &hear};
};

// Adding --------------------------------------------------------------------------------------------------------------

TEST_F(FieldContainerTest, AContainerStartsEmpty) {
  EXPECT_EQ(container.getSize(), 0U);
  EXPECT_EQ(container.getNumInputConnectorFields(), 0);
  EXPECT_EQ(container.getNumOutputConnectorFields(), 0);
  EXPECT_EQ(container.getBaseOp(), op);
  std::ostringstream stream;
  stream << container;
  EXPECT_EQ(stream.str(), "");
}

TEST_F(FieldContainerTest, ASensorReportsToTheModule) {
  StringField* const field = container.addString("text");
  field->setStringValue("x");
  EXPECT_EQ(heard, (Log{"text"}));
  EXPECT_EQ(user, op);
  ASSERT_EQ(container._fieldSensors.size(), 1U);
  EXPECT_EQ(container._fieldSensors[0]->getField(), field);
}

TEST_F(FieldContainerTest, AFieldMayBeAddedWithoutASensor) {
  auto* const field = new StringField("text");
  EXPECT_EQ(container.addField(field, false), field);
  field->setStringValue("x");
  EXPECT_EQ(heard, Log{});
  EXPECT_TRUE(container._fieldSensors.empty());
  EXPECT_EQ(container.getField(0), field);
}

TEST_F(FieldContainerTest, ANullFieldIsRefused) {
  EXPECT_EQ(container.addField(nullptr, true), nullptr);
  EXPECT_EQ(messages.take(), (Messages{{VX_ERROR, 30, "FieldContainer::addField(Field*, bool)",
                                        "Returning NULL because no field has been added"}}));
  EXPECT_EQ(container.getSize(), 0U);
  EXPECT_TRUE(container._fieldSensors.empty());
}

// Adds a field of each kind, with a variable and with an own value, and looks at what came out.
template <class FieldClass, class Value>
void expectAdded(OpenContainer& container, FieldClass* (FieldContainer::*add)(const FieldName&, Value*),
                 Value variable = {}) {
  const std::string className(FieldClass::getClassTypeId()->getName());
  for (const bool isReferenced : {true, false}) {
    const unsigned int size = container.getSize();
    FieldClass* const field = (container.*add)("name", isReferenced ? &variable : nullptr);
    ASSERT_NE(field, nullptr) << className;
    EXPECT_EQ(field->getName(), "name");
    EXPECT_EQ(field->getTypeId(), FieldClass::getClassTypeId());
    EXPECT_EQ(field->hasReferencedValue(), isReferenced) << className;
    EXPECT_EQ(container.getSize(), size + 1);
    EXPECT_EQ(container.getField(size), field);
    ASSERT_EQ(container._fieldSensors.size(), size + 1);
    EXPECT_EQ(container._fieldSensors.back()->getField(), field);
    if (isReferenced) container.removeField(field);  // the variable ends here
  }
}

template <class FieldClass>
void expectAdded(OpenContainer& container, FieldClass* (FieldContainer::*add)(const FieldName&)) {
  const unsigned int size = container.getSize();
  FieldClass* const field = (container.*add)("name");
  ASSERT_NE(field, nullptr);
  EXPECT_EQ(field->getName(), "name");
  EXPECT_EQ(field->getTypeId(), FieldClass::getClassTypeId());
  EXPECT_EQ(container.getField(size), field);
  EXPECT_EQ(container._fieldSensors.back()->getField(), field);
}

TEST_F(FieldContainerTest, EachClassHasItsFunction) {
  using C = FieldContainer;
  expectAdded<BoolField, bool>(container, &C::addBool);
  expectAdded<IntField, VXint64>(container, &C::addInt);
  expectAdded<ToggleField, int>(container, &C::addToggle);
  expectAdded<FloatField, float>(container, &C::addFloat);
  expectAdded<ProgressField, float>(container, &C::addProgress);
  expectAdded<DoubleField, double>(container, &C::addDouble);
  expectAdded<LongDoubleField>(container, &C::addLongDouble);
  expectAdded<StringField>(container, &C::addString);
  expectAdded<NotifyField>(container, &C::addNotify);
  expectAdded<PointerField>(container, &C::addPointer);
  expectAdded<BaseField, Base*>(container, &C::addBase);
  expectAdded<SoNodeField, SoNode*>(container, &C::addSoNode);
  expectAdded<DicomTagListField, DicomTagList*>(container, &C::addDicomTagList);
  expectAdded<Vec2fField, Tvec2<double>>(container, &C::addVec2f);
  expectAdded<Vec3fField, Tvec3<double>>(container, &C::addVec3f);
  expectAdded<Vec4fField, Tvec4<double>>(container, &C::addVec4f);
  expectAdded<Vec6fField, Tvec6<double>>(container, &C::addVec6f);
  expectAdded<ColorField, Tvec3<double>>(container, &C::addColor);
  expectAdded<MatrixField, Tmat4<double>>(container, &C::addMatrix);
  expectAdded<VectorField, TVector<VXint64>>(container, &C::addVector);
  expectAdded<SubImgBoxField, TSubImgBox<VXint64>>(container, &C::addSubImgBox);
  expectAdded<SubImgBoxfField, SubImgBoxf>(container, &C::addSubImgBoxf);
  expectAdded<VXDataTypeField, int>(container, &C::addVXDataType);
  expectAdded<UniversalTypeField>(container, &C::addUniversalType);
  EXPECT_EQ(container.addUniversalType("u")->getDataType(), -1);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(FieldContainerTest, AReferencedVariableKeepsItsValueAndFollowsTheField) {
  VXint64 variable = 17;
  IntField* const field = container.addInt("n", &variable);
  EXPECT_EQ(field->getStringValue(), "17");
  container.setValue("n", "18");
  EXPECT_EQ(variable, 18);
  container.removeField(field);
}

TEST_F(FieldContainerTest, NamesAreCTextsOrStrings) {
  const std::string name = "n";
  VXint64 variable = 17;
  EXPECT_EQ(container.addInt(name + "1", &variable)->getName(), "n1");
  EXPECT_EQ(container.addString(name)->getName(), "n");
  EXPECT_EQ(container.addEnum(name + "2", {"a", "b"})->getName(), "n2");
  EXPECT_EQ(container.addNotify("n3")->getName(), "n3");
  EXPECT_EQ(container.addUniversalType(nullptr)->getName(), "");
}

TEST_F(FieldContainerTest, ChoicesComeFromTextsOrPlainTexts) {
  const char* const items[] = {"a", "b", "c"};
  int value = 2;
  EnumField* const plain = container.addEnum("plain", items, 2, &value);
  EXPECT_EQ(plain->getEnumNum(), 2U);
  EXPECT_TRUE(plain->hasReferencedValue());
  EXPECT_EQ(plain->getEnumValue(), 2);
  EnumField* const own = container.addEnum("own", items, 3, nullptr);
  EXPECT_FALSE(own->hasReferencedValue());
  EnumField* const texts = container.addEnum("texts", std::vector<std::string>{"x", "y"});
  EXPECT_EQ(texts->getEnumNum(), 2U);
  EXPECT_EQ(texts->getStringValue(), "x");
  EXPECT_EQ(container.getSize(), 3U);
  EXPECT_EQ(container._fieldSensors.size(), 3U);
}

TEST_F(FieldContainerTest, AFieldThatCannotBeMadeIsReportedAndNotAdded) {
  const char* const items[] = {"a"};
  for (const VXint64 number : {VXint64{-1}, VXint64{1} << 32, (VXint64{1} << 32) + 1}) {
    EXPECT_EQ(container.addEnum("e", items, number, nullptr), nullptr);
    const Messages taken = messages.take();
    ASSERT_EQ(taken.size(), 3U);
    EXPECT_EQ(taken[0].code, 41);
    EXPECT_EQ(taken[1].code, 33);
    EXPECT_EQ(taken[2], (Message{VX_ERROR, 30, "FieldContainer::addField(Field*, bool)",
                                 "Returning NULL because no field has been added"}));
  }
  EXPECT_EQ(container.getSize(), 0U);
  FieldsEngineStandIn::failure = [] { throw 2; };
  EXPECT_EQ(container.addOutputConnector(op, 0), nullptr);
  EXPECT_EQ(messages.take().back().code, 30);
  EXPECT_EQ(container.getNumOutputConnectorFields(), 0);
  EXPECT_EQ(container.getSize(), 0U);
}

TEST_F(FieldContainerTest, ConnectorsStandInTwoLists) {
  InputConnectorField* const in = container.addInputConnector("in", op, 7);
  OutputConnectorField* const out = container.addOutputConnector("out", op, 8);
  EXPECT_EQ(in->getInputConnectorValue().getIndex(), 7);
  EXPECT_EQ(&in->getInputConnectorValue().getOp(), op);
  EXPECT_EQ(out->getOutputConnectorValue().getIndex(), 8);
  EXPECT_EQ(container.getSize(), 2U);
  EXPECT_EQ(container.getNumInputConnectorFields(), 1);
  EXPECT_EQ(container.getNumOutputConnectorFields(), 1);
  EXPECT_EQ(container.getInputConnectorField(0), in);
  EXPECT_EQ(container.getOutputConnectorField(0), out);
  EXPECT_EQ(container.getField("in"), in);
  EXPECT_EQ(container.getField("out"), out);
  in->notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
  EXPECT_EQ(heard, (Log{"in"}));
}

TEST_F(FieldContainerTest, AConnectorIsNamedForItsNumberNotForItsPosition) {
  for (const VXint64 index : {0LL, 3LL}) {
    container.addInputConnector(op, index);
    container.addOutputConnector(op, index);
  }
  EXPECT_EQ(container.getInputConnectorField(0)->getName(), "input0");
  EXPECT_EQ(container.getInputConnectorField(1)->getName(), "input3");
  EXPECT_EQ(container.getOutputConnectorField(0)->getName(), "output0");
  EXPECT_EQ(container.getOutputConnectorField(1)->getName(), "output3");
  EXPECT_EQ(container.addInputConnector(op, -9223372036854775807LL - 1)->getName(), "input-9223372036854775808");
}

TEST_F(FieldContainerTest, AConnectorPositionOutOfRangeIsNeitherReportedNorRead) {
  container.addInputConnector(op, 0);
  for (const VXint64 index : {-1LL, 1LL}) EXPECT_THROW(container.getInputConnectorField(index), std::out_of_range);
  for (const VXint64 index : {-1LL, 0LL}) EXPECT_THROW(container.getOutputConnectorField(index), std::out_of_range);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(FieldContainerTest, ATextMakesAFieldByTheNameOfItsClass) {
  Field* const shortName = container.addField("a", "Int", "5", true);
  Field* const longName = container.addField("b", "IntField", "6", false);
  ASSERT_NE(shortName, nullptr);
  ASSERT_NE(longName, nullptr);
  EXPECT_EQ(shortName->getTypeId(), IntField::getClassTypeId());
  EXPECT_EQ(longName->getTypeId(), IntField::getClassTypeId());
  EXPECT_EQ(heard, Log{}) << "the value is set before the field is in the container";
  EXPECT_EQ(container.getValue("a"), "5");
  EXPECT_EQ(container.getValue("b"), "6");
  EXPECT_EQ(container.getField(0), shortName);
  EXPECT_EQ(container._fieldSensors.size(), 1U);
  container.setValue("a", "7");
  container.setValue("b", "7");
  EXPECT_EQ(heard, (Log{"a"}));
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(FieldContainerTest, AClassThatIsNoFieldGivesWayToTheFieldOfThatName) {
  // "Base" is a class of its own, and "BaseField" a field.
  Field* const field = container.addField("a", "Base", "0", false);
  ASSERT_NE(field, nullptr);
  EXPECT_EQ(field->getTypeId(), BaseField::getClassTypeId());
}

TEST_F(FieldContainerTest, AClassOfTheExactNameGoesBeforeOneWithFieldAtItsEnd) {
  ASSERT_NE(Runtime::initType(nullptr, "Field", nullptr, "IntFieldField", &StringField::createCB), nullptr);
  Field* const field = container.addField("a", "IntField", "5", false);
  Runtime::destroyType("IntFieldField");
  ASSERT_NE(field, nullptr);
  EXPECT_EQ(field->getTypeId(), IntField::getClassTypeId());
}

TEST_F(FieldContainerTest, ATextThatNamesNoFieldClassIsRefused) {
  constexpr char label[] = "FieldContainer::addField(const char*, const char*, const char*, bool)";
  EXPECT_EQ(container.addField("a", "Nonsense", "", true), nullptr);
  EXPECT_EQ(container.addField("a", "TreeNode", "", true), nullptr) << "a class, but no field";
  EXPECT_EQ(container.addField("a", "int", "", true), nullptr) << "case counts";
  EXPECT_EQ(messages.take(), (Messages{{VX_ERROR, 29, label, "Returning NULL for bad field typeNonsense"},
                                       {VX_ERROR, 29, label, "Returning NULL for bad field typeTreeNode"},
                                       {VX_ERROR, 29, label, "Returning NULL for bad field typeint"}}));
  for (const char* type : {"InputConnectorField", "OutputConnector", "Field", "", static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(container.addField("a", type, "", true), nullptr);
    EXPECT_EQ(messages.take(), (Messages{{VX_ERROR, 31, label, "Returning NULL for a bad field"}}));
  }
  EXPECT_EQ(container.getSize(), 0U);
}

TEST_F(FieldContainerTest, NullTextsCountAsEmpty) {
  EXPECT_EQ(container.addString(nullptr)->getName(), "");
  Field* const field = container.addField(nullptr, "Int", nullptr, true);
  ASSERT_NE(field, nullptr);
  EXPECT_EQ(field->getName(), "");
  EXPECT_EQ(field->getStringValue(), "0");
}

TEST_F(FieldContainerTest, WithoutMemoryAContainerStaysAsItIs) {
  bool failed = true;
  for (long n = 0; failed && n < 20; ++n) {
    OpenContainer fresh(op, &hear);
    auto field = std::make_unique<StringField>("text");
    failed = false;
    try {
      const FailingAllocations failing(n);
      fresh.addField(field.get(), true);
    } catch (const std::bad_alloc&) {
      failed = true;
    }
    EXPECT_EQ(fresh.getSize(), failed ? 0U : 1U);
    EXPECT_EQ(fresh._fieldSensors.size(), failed ? 0U : 1U);
    if (!failed) field.release();
  }
  EXPECT_FALSE(failed);
}

// Looking up ----------------------------------------------------------------------------------------------------------

TEST_F(FieldContainerTest, TheFirstFieldOfANameWins) {
  StringField* const first = container.addString("same");
  StringField* const second = container.addString("same");
  second->setStringValue("second");
  first->setStringValue("first");
  EXPECT_EQ(container.getField("same"), first);
  EXPECT_EQ(container.getValue("same"), "first");
  EXPECT_EQ(container.getField(static_cast<Field*>(first)), 0);
  EXPECT_EQ(container.getField(static_cast<Field*>(second)), 1);
  const StringField stranger("same");
  EXPECT_EQ(container.getField(&stranger), -1);
}

TEST_F(FieldContainerTest, NamesAreComparedExactly) {
  container.addString("Name");
  EXPECT_TRUE(container.hasField("Name"));
  EXPECT_FALSE(container.hasField("name"));
  EXPECT_FALSE(container.hasField("Nam"));
  EXPECT_FALSE(container.hasField(""));
  EXPECT_EQ(messages.take(), Messages{}) << "hasField() reports nothing";
}

TEST_F(FieldContainerTest, WhatIsNotThereIsReported) {
  container.addString("text")->setStringValue("x");
  heard.clear();
  EXPECT_EQ(container.getField("other"), nullptr);
  EXPECT_EQ(container.getField(-1), nullptr);
  EXPECT_EQ(container.getField(container.getSize()), nullptr);
  EXPECT_EQ(container.getValue("other"), "");
  EXPECT_EQ(container.getValue(-1), "");
  EXPECT_EQ(container.getValue(1), "");
  container.setValue("other", "y");
  container.setValue("other", 5);
  container.setValue(-1, "y");
  container.setValue(1, "y");
  EXPECT_EQ(messages.take(),
            (Messages{{VX_WARNING, 7, "FieldContainer::getField()", "Bad field name!"},
                      {VX_WARNING, 26, "FieldContainer::getField()", "Bad field index!"},
                      {VX_WARNING, 26, "FieldContainer::getField()", "Bad field index!"},
                      {VX_WARNING, 19, "FieldContainer::getValue()", "Field name not found, returning empty string!"},
                      {VX_WARNING, 26, "FieldContainer::getValue()", "Bad field index, returning empty string!"},
                      {VX_WARNING, 26, "FieldContainer::getValue()", "Bad field index, returning empty string!"},
                      {VX_WARNING, 26, "FieldContainer::setValue()", "Bad field name, value not set!"},
                      {VX_WARNING, 26, "FieldContainer::setValue()", "Bad field name, value not set!"},
                      {VX_WARNING, 26, "FieldContainer::setValue()", "Bad field index, value not set!"},
                      {VX_WARNING, 26, "FieldContainer::setValue()", "Bad field index, value not set!"}}));
  EXPECT_EQ(heard, Log{});
  EXPECT_EQ(container.getValue("text"), "x");
}

TEST_F(FieldContainerTest, ValuesAreSetByNameByIndexAndFromNumbers) {
  container.addInt("n");
  container.addString("text");
  container.setValue("n", "12");
  EXPECT_EQ(container.getValue(0), "12");
  container.setValue(0, "13");
  EXPECT_EQ(container.getValue("n"), "13");
  container.setValue("n", -14);
  EXPECT_EQ(container.getValue("n"), "-14");
  container.setValue("text", -9223372036854775807LL - 1);
  EXPECT_EQ(container.getValue(1), "-9223372036854775808");
  EXPECT_EQ(heard, (Log{"n", "n", "n", "text"}));
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(FieldContainerTest, ANullEntryIsFatal) {
  container.addString("first");
  container._fields.push_back(nullptr);
  const auto expectFatal = [&](const char* what, auto&& call) {
    EXPECT_THROW(call(), int) << what;
    const Messages taken = messages.take();
    ASSERT_EQ(taken.size(), 1U) << what;
    EXPECT_EQ(taken[0].type, VX_FATAL);
    EXPECT_EQ(taken[0].code, 41);
  };
  expectFatal("hasField", [&] { container.hasField("x"); });
  expectFatal("getField", [&] { container.getField("x"); });
  expectFatal("getValue", [&] { container.getValue("x"); });
  expectFatal("getValue", [&] { container.getValue(1); });
  expectFatal("setValue", [&] { container.setValue("x", "y"); });
  expectFatal("setValue", [&] { container.setValue("x", 5); });
  expectFatal("setValue", [&] { container.setValue(1, "y"); });
  expectFatal("activateAttachments", [&] { container.activateAttachments(); });
  expectFatal("deactivateAttachments", [&] { container.deactivateAttachments(); });
  EXPECT_TRUE(container.hasField("first")) << "a field in front of it is found";
  EXPECT_EQ(container.getField(1), nullptr);
  std::ostringstream stream;
  stream << container;
  EXPECT_EQ(stream.str(), "first : \n<noValidField>");
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(FieldContainerTest, AStreamShowsAFieldALine) {
  container.addField("n", "Int", "5", true);
  container.addField("text", "String", "some words", true);
  std::ostringstream stream;
  stream << container;
  EXPECT_EQ(stream.str(), "n : 5\ntext : some words");
}

// Attachments, removal, end -------------------------------------------------------------------------------------------

// Names what it is told.
class ToldField : public StringField {
 public:
  ToldField(const std::string& name, Log& log) : StringField(name), _log(log) {}
  void activateAttachments() override { _log.push_back("+" + getName()); }
  void deactivateAttachments() override { _log.push_back("-" + getName()); }

 private:
  Log& _log;
};

TEST_F(FieldContainerTest, FieldsAreSilencedAndWokenInOrder) {
  Log log;
  for (const char* name : {"a", "b"}) container.addField(new ToldField(name, log), false);
  container.deactivateAttachments();
  container.activateAttachments();
  EXPECT_EQ(log, (Log{"-a", "-b", "+a", "+b"}));
}

TEST_F(FieldContainerTest, AllFieldsAreSilencedAndWokenTogether) {
  container.addString("a");
  container.addString("b");
  container.deactivateAttachments();
  container.setValue("a", "x");
  container.setValue("b", "x");
  EXPECT_EQ(heard, Log{});
  container.activateAttachments();
  EXPECT_EQ(heard, Log{});
  container.setValue("b", "y");
  container.setValue("a", "y");
  EXPECT_EQ(heard, (Log{"b", "a"}));
}

TEST_F(FieldContainerTest, ARemovedFieldIsDeletedAndTheOthersMoveUp) {
  Log log;
  auto* const field = new MortalField("gone", log);
  container.addField(field, true);
  StringField* const next = container.addString("next");
  EXPECT_TRUE(container.removeField(field));
  EXPECT_EQ(log, (Log{"~gone"}));
  EXPECT_EQ(container.getSize(), 1U);
  EXPECT_EQ(container.getField(0), next);
  ASSERT_EQ(container._fieldSensors.size(), 1U);
  EXPECT_EQ(container._fieldSensors[0]->getField(), next);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(FieldContainerTest, AStrangeFieldIsNotRemovedButLosesTheContainersSensors) {
  EXPECT_FALSE(container.removeField(nullptr));
  StringField* const own = container.addString("own");
  StringField stranger("stranger");
  container._fieldSensors[0]->attachField(&stranger);
  EXPECT_FALSE(container.removeField(&stranger));
  EXPECT_TRUE(container._fieldSensors.empty());
  EXPECT_EQ(container.getField(0), own);
  stranger.setStringValue("x");
  EXPECT_EQ(heard, Log{});
}

TEST_F(FieldContainerTest, TheEndDeletesTheFieldsInOrder) {
  Log log;
  {
    FieldContainer other(op, &hear);
    for (const char* name : {"a", "b", "c"}) other.addField(new MortalField(name, log), true);
    other.getField("a")->attachField(other.getField("c"), 0);
    other.getField("c")->attachField(other.getField("a"), 1);
    other.addInputConnector(op, 0)->getInputConnectorValue().connect(
        other.addOutputConnector(op, 0)->getOutputConnectorValue());
    heard.clear();
  }
  EXPECT_EQ(log, (Log{"~a with a sensor", "~b with a sensor", "~c with a sensor"}));
  EXPECT_EQ(heard, Log{}) << "nobody is notified";
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(FieldContainerTest, AFieldThatIsNotNotifyingMayBeRemovedByASensor) {
  static FieldContainer* removing;
  static Field* removed;
  OpenContainer other(op, [](void* /*userData*/, void* /*sensor*/) {
    if (removed) removing->removeField(std::exchange(removed, nullptr));
  });
  removing = &other;
  StringField* const first = other.addString("first");
  removed = nullptr;
  first->attachField(other.addString("second"), 1);
  removed = other.getField("second");
  first->setStringValue("x");
  EXPECT_EQ(other.getSize(), 1U);
  EXPECT_EQ(first->getNumDestinationFields(), 0U);
}

TEST_F(FieldContainerTest, CopiesAreRefused) {
  container.addString("text");
  const FieldContainer copy(container);
  EXPECT_EQ(messages.take(), (Messages{{VX_FATAL, 14, "FieldContainer::FieldContainer(const FieldContainer &)",
                                        "Usage of copy constructor of FieldContainer is not supported."}}));
  EXPECT_EQ(copy.getSize(), 0U);
  EXPECT_EQ(copy.getBaseOp(), nullptr);
  FieldContainer other(op, nullptr);
  other.addString("own");
  EXPECT_EQ(&(other = container), &other);
  EXPECT_EQ(messages.take(), (Messages{{VX_FATAL, 14, "FieldContainer& operator=(const FieldContainer &))",
                                        "Usage of assignment operator of FieldContainer is not supported."}}));
  EXPECT_EQ(other.getSize(), 1U);
  EXPECT_TRUE(other.hasField("own"));
}

TEST_F(FieldContainerTest, TheModuleMayBeSetLater) {
  OpenContainer other(nullptr, &hear);
  other._setBaseOp(op);
  EXPECT_EQ(other.getBaseOp(), op);
  user = nullptr;
  other.addString("text")->setStringValue("x");
  EXPECT_EQ(user, op);
}

TEST_F(FieldContainerTest, TheClassIsARootThatIsMadeByName) {
  const RuntimeType* const type = Runtime::fromName("FieldContainer");
  ASSERT_NE(type, nullptr);
  EXPECT_EQ(type, FieldContainer::getClassTypeId());
  EXPECT_EQ(type->getParent(), nullptr);
  ASSERT_FALSE(type->isAbstract());
  const std::unique_ptr<FieldContainer> made(static_cast<FieldContainer*>(type->getCreateCB()()));
  EXPECT_STREQ(made->getTypeIdName(), "FieldContainer");
  EXPECT_EQ(made->getBaseOp(), nullptr);
  EXPECT_EQ(made->getSize(), 0U);
}

TEST_F(FieldContainerTest, ItIsRegisteredBehindTheFieldsAndBeforeTheImages) {
  Log names;
  for (const RuntimeType* type = Runtime::getFirstEntry(); type; type = Runtime::getNextEntry()) {
    names.emplace_back(type->getName());
  }
  const auto positionOf = [&names](const char* name) { return std::find(names.begin(), names.end(), name); };
  const auto position = positionOf("FieldContainer");
  ASSERT_NE(position, names.end());
  EXPECT_EQ(*(position - 1), "UniversalTypeField");
  EXPECT_LT(positionOf("Field"), position);
  EXPECT_LT(position, positionOf("ImageProperties"));
}

}  // namespace
}  // namespace vx::test
