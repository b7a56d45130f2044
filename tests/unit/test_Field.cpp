#include "MessageRecorder.h"
#include "RecordingField.h"
#include "SlotOf.h"
#include "TestAllocator.h"

#include "vxField.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace vx::test {
namespace {

using Names = std::vector<std::string>;
using Flags = std::vector<VXint16>;
using Messages = std::vector<Message>;

class FieldTest : public ::testing::Test {
 protected:
  void TearDown() override { Field::enableNotificationsCounterState() = 1; }
  CallLog takeLog() { return std::exchange(log, {}); }

  CallLog log;
  RecordingField a{"a", log}, b{"b", log}, c{"c", log}, d{"d", log};
};

// Values ------------------------------------------------------------------------------------------------------------

TEST_F(FieldTest, AFieldStartsActiveAndAlone) {
  EXPECT_EQ(a.getName(), "a");
  EXPECT_TRUE(a._sensors.empty());
  EXPECT_EQ(a.getNumDestinationFields(), 0U);
  EXPECT_EQ(a.getNumSourceFields(), 0U);
  EXPECT_FALSE(a._isNotifying);
  EXPECT_FALSE(a._ownsValue);
  EXPECT_EQ(a.isActiveAttachments(), 1);
  EXPECT_EQ(a.isValidValue(), 1);
  EXPECT_TRUE(a.hasReferencedValue());
  a._ownsValue = true;
  EXPECT_FALSE(a.hasReferencedValue());
}

TEST_F(FieldTest, RenamingNotifiesNobody) {
  a.attachField(&b, 0);
  a.setName("other");
  EXPECT_EQ(a.getName(), "other");
  EXPECT_EQ(log, CallLog{});
}

TEST_F(FieldTest, TheTextIsCopiedAsByStrncpy) {
  a.value = "four";
  EXPECT_EQ(a.getCStringValueSize(), 4);
  char text[8];
  const auto copied = [&](VXint64 size) {
    std::fill_n(text, sizeof(text), 'x');
    a.copyCStringValue(text, size);
    return std::string(text, sizeof(text));
  };
  EXPECT_EQ(copied(4), "fourxxxx") << "no terminator";
  EXPECT_EQ(copied(3), "fouxxxxx");
  EXPECT_EQ(copied(5), std::string("four\0xxx", 8));
  EXPECT_EQ(copied(8), std::string("four\0\0\0\0", 8));
  EXPECT_EQ(copied(0), "xxxxxxxx");
  EXPECT_EQ(copied(-1), "xxxxxxxx");
  a.value = std::string("a\0b", 3);
  EXPECT_EQ(a.getCStringValueSize(), 3);
  EXPECT_EQ(copied(3), std::string("a\0\0xxxxx", 8));
  a.copyCStringValue(nullptr, 0);
}

TEST_F(FieldTest, AStreamShowsNameAndValue) {
  a.value = "1 2";
  std::ostringstream stream;
  stream << a;
  EXPECT_EQ(stream.str(), "a : 1 2");
}

// Attaching ---------------------------------------------------------------------------------------------------------

TEST_F(FieldTest, AttachingRegistersBothSidesInOrder) {
  a.attachField(&b, 0);
  a.attachField(&c, 0);
  d.attachField(&c, 0);
  EXPECT_EQ(a.destinations(), (Names{"b", "c"}));
  EXPECT_EQ(b.sources(), (Names{"a"}));
  EXPECT_EQ(c.sources(), (Names{"a", "d"}));
  EXPECT_EQ(a.getNumDestinationFields(), 2U);
  EXPECT_EQ(a.getDestinationField(1), &c);
  EXPECT_EQ(a.getDestinationField(2), nullptr);
  EXPECT_EQ(c.getNumSourceFields(), 2U);
  EXPECT_EQ(c.getSourceField(0), &a);
  EXPECT_EQ(c.getSourceField(2), nullptr);
  EXPECT_EQ(log, CallLog{}) << "touch-only connections notify nobody";
}

TEST_F(FieldTest, NullIsIgnored) {
  a.attachField(nullptr, 1);
  a.detachField(nullptr, 0);
  a.attachFieldSensor(nullptr);
  a.detachFieldSensor(nullptr);
  a.attachSourceField(nullptr);
  a.detachSourceField(nullptr);
  a.detachField(&b, 0);
  EXPECT_TRUE(a.destinations().empty() && a.sources().empty() && a._sensors.empty());
}

TEST_F(FieldTest, AConnectionWithCopyCopiesAtOnceAndIsRemovedOutright) {
  a.value = "v";
  a.attachField(&b, 1);
  EXPECT_EQ(takeLog(), (CallLog{"b=v", "b+2"}));
  EXPECT_EQ(a._copyValueFlags, (Flags{1}));
  EXPECT_EQ(a._touchOriginFlags, (Flags{0}));
  a.detachField(&b, 1);
  EXPECT_EQ(a.destinations(), Names{});
  EXPECT_EQ(b.sources(), Names{});
}

TEST_F(FieldTest, ATouchOnlyConnectionMayCopyForAWhile) {
  a.value = "v";
  a.attachField(&b, 0);
  a.attachField(&b, 1);
  EXPECT_EQ(log, CallLog{}) << "no copy at this call";
  EXPECT_EQ(a.destinations(), (Names{"b"}));
  EXPECT_EQ(a._copyValueFlags, (Flags{1}));
  EXPECT_EQ(a._touchOriginFlags, (Flags{1}));
  a.setStringValue("w");
  EXPECT_EQ(takeLog(), (CallLog{"a=w", "a+2", "b=w", "b+2"}));
  a.detachField(&b, 1);
  EXPECT_EQ(a.destinations(), (Names{"b"}));
  EXPECT_EQ(a._copyValueFlags, (Flags{0}));
  EXPECT_EQ(a._touchOriginFlags, (Flags{1}));
  a.detachField(&b, 1);
  EXPECT_EQ(a.destinations(), Names{});
  EXPECT_EQ(b.sources(), Names{});
}

TEST_F(FieldTest, AttachingAgainStoresTheFlagUnchanged) {
  a.attachField(&b, -7);
  EXPECT_EQ(a._copyValueFlags, (Flags{1})) << "the first time it is 0 or 1";
  a.attachField(&b, -7);
  EXPECT_EQ(a._copyValueFlags, (Flags{-7}));
  a.attachField(&b, 0);
  EXPECT_EQ(a._copyValueFlags, (Flags{0}));
  EXPECT_EQ(a._touchOriginFlags, (Flags{0}));
  EXPECT_EQ(b.sources(), (Names{"a"}));
}

TEST_F(FieldTest, DetachingWithFlagZeroAlwaysRemoves) {
  a.attachField(&b, 0);
  a.attachField(&c, 1);
  a.attachField(&d, 0);
  a.attachField(&d, 3);
  a.detachField(&b, 0);
  EXPECT_EQ(a.destinations(), (Names{"c", "d"}));
  EXPECT_EQ(a._copyValueFlags, (Flags{1, 3}));
  EXPECT_EQ(a._touchOriginFlags, (Flags{0, 1}));
  a.detachField(&d, 0);
  a.detachField(&c, 0);
  EXPECT_TRUE(a._destinations.empty() && a._copyValueFlags.empty() && a._touchOriginFlags.empty());
}

TEST_F(FieldTest, TheCopyAtAttachingIgnoresTheSendersSwitches) {
  a.value = "v";
  a.deactivateAttachments();
  Field::disableNotifications();
  a.attachField(&b, 1);
  EXPECT_EQ(takeLog(), (CallLog{"b=v", "b+2"}));
}

TEST_F(FieldTest, SourcesAreNotedOnceAndForgottenWhole) {
  a.attachSourceField(&b);
  a.attachSourceField(&b);
  EXPECT_EQ(a.sources(), (Names{"b"}));
  a._sources = {&b, &c, &b};
  a.detachSourceField(&b);
  EXPECT_EQ(a.sources(), (Names{"c"}));
  a._sources.clear();
}

// Notes the order in which connections are taken away.
class DetachRecorder : public RecordingField {
 public:
  using RecordingField::RecordingField;
  void detachField(Field* destination, VXint16 flag) override {
    log->push_back(_name + "-" + destination->getName() + "," + std::to_string(flag));
    Field::detachField(destination, flag);
  }
};

TEST_F(FieldTest, AllFieldsAreDetachedFromTheEndDestinationsFirst) {
  DetachRecorder m("m", log), n("n", log), o("o", log);
  for (DetachRecorder* other : {&n, &o}) {
    m.attachField(other, 1);
    other->attachField(&m, 0);
  }
  takeLog();
  m.detachAllFields();
  EXPECT_EQ(takeLog(), (CallLog{"m-o,0", "m-n,0", "o-m,0", "n-m,0"}));
  EXPECT_TRUE(m.sources().empty() && m.destinations().empty() && n.sources().empty() && o.destinations().empty());
}

TEST_F(FieldTest, SourcesAndDestinationsAreDetachedApart) {
  a.attachField(&b, 0);
  b.attachField(&c, 0);
  b.detachDestinationFields();
  EXPECT_EQ(b.sources(), (Names{"a"}));
  EXPECT_EQ(c.sources(), Names{});
  b.attachField(&c, 0);
  b.detachSourceFields();
  EXPECT_EQ(a.destinations(), Names{});
  EXPECT_EQ(b.destinations(), (Names{"c"}));
}

// Notification --------------------------------------------------------------------------------------------------------

TEST_F(FieldTest, SensorsHearBeforeDestinationsEachInOrder) {
  RecordingSensor s("s", log), t("t", log), u("u", log);
  a.attachField(&b, 0);
  a.attachField(&c, 1);
  a.attachFieldSensor(&t);
  a.attachFieldSensor(&s);
  c.attachFieldSensor(&u);
  takeLog();
  a.setStringValue("x");
  EXPECT_EQ(takeLog(), (CallLog{"a=x", "a+2", "t(2)", "s(2)", "b+2", "c=x", "c+2", "u(2)"}));
  EXPECT_FALSE(a._isNotifying);
}

TEST_F(FieldTest, AWeakNotificationIsWeakForTheOwnSensorsOnly) {
  RecordingSensor s("s", log), t("t", log);
  a.attachFieldSensor(&s);
  b.attachFieldSensor(&t);
  a.attachField(&b, 0);
  a.notifyAttachments(weak);
  EXPECT_EQ(takeLog(), (CallLog{"a+1", "s(1)", "b+2", "t(2)"}));
}

TEST_F(FieldTest, NotifyingTheSensorsLeavesTheDestinationsAlone) {
  RecordingSensor s("s", log);
  a.attachFieldSensor(&s);
  a.attachField(&b, 0);
  a.notifyAttachedSensors(weak);
  EXPECT_EQ(takeLog(), (CallLog{"s(1)"}));
  s.action = [&] {
    EXPECT_TRUE(a._isNotifying);
    a.notifyAttachedSensors(full);
    a.notifyAttachments(full);
  };
  a.notifyAttachedSensors(full);
  EXPECT_EQ(takeLog(), (CallLog{"s(2)", "a+2"})) << "one flag for both kinds";
  EXPECT_FALSE(a._isNotifying);
  a.deactivateAttachments();
  a.notifyAttachedSensors(full);
  a.activateAttachments();
  Field::disableNotifications();
  a.notifyAttachedSensors(full);
  EXPECT_EQ(log, CallLog{});
}

TEST_F(FieldTest, AnInactiveFieldDropsNotifications) {
  a.attachField(&b, 1);
  takeLog();
  a.deactivateAttachments();
  EXPECT_EQ(a.isActiveAttachments(), 0);
  a.setStringValue("x");
  EXPECT_EQ(takeLog(), (CallLog{"a=x", "a+2"}));
  a.activateAttachments();
  EXPECT_EQ(a.isActiveAttachments(), 1);
  EXPECT_EQ(log, CallLog{}) << "nothing is made up for";
  EXPECT_EQ(b.value, "");
}

TEST_F(FieldTest, TheCounterSilencesAtZeroOnly) {
  a.attachField(&b, 0);
  const auto isHeard = [&] {
    log.clear();
    a.notifyAttachments(full);
    return log.size() == 2;
  };
  EXPECT_EQ(Field::enableNotificationsCounterState(), 1);
  EXPECT_EQ(Field::isEnabledNotifications(), 1);
  EXPECT_TRUE(isHeard());
  Field::disableNotifications();
  EXPECT_EQ(Field::isEnabledNotifications(), 0);
  EXPECT_FALSE(isHeard());
  Field::disableNotifications();
  EXPECT_EQ(Field::enableNotificationsCounterState(), -1);
  EXPECT_EQ(Field::isEnabledNotifications(), 0);
  EXPECT_TRUE(isHeard());
  Field::enableNotificationsCounterState() = 1;
  Field::enableNotifications();
  EXPECT_EQ(Field::enableNotificationsCounterState(), 2);
  EXPECT_EQ(Field::isEnabledNotifications(), 1);
  EXPECT_EQ(&Field::enableNotificationsCounterState(), &RecordingField::_enableNotifications);
}

TEST_F(FieldTest, ARingOfCopiesEndsWithAllHoldingTheValue) {
  a.attachField(&b, 1);
  b.attachField(&a, 1);
  takeLog();
  a.setStringValue("x");
  EXPECT_EQ(takeLog(), (CallLog{"a=x", "a+2", "b=x", "b+2", "a=x", "a+2"}));
  EXPECT_EQ(a.value, "x");
  EXPECT_EQ(b.value, "x");
  EXPECT_FALSE(a._isNotifying || b._isNotifying);
}

TEST_F(FieldTest, AFieldMayBeAttachedToItself) {
  a.attachField(&a, 0);
  EXPECT_EQ(a.sources(), (Names{"a"}));
  a.notifyAttachments(full);
  EXPECT_EQ(takeLog(), (CallLog{"a+2", "a+2"}));
  a.detachAllFields();
  EXPECT_TRUE(a.destinations().empty() && a.sources().empty());
}

TEST_F(FieldTest, TheListsAreReadAfreshDuringTheWalk) {
  RecordingSensor s("s", log), t("t", log), u("u", log), v("v", log);
  for (RecordingSensor* sensor : {&s, &t, &u}) a.attachFieldSensor(sensor);
  s.action = [&] {
    s.detachField();
    a.attachFieldSensor(&v);
  };
  a.attachField(&b, 0);
  a.attachField(&c, 0);
  RecordingSensor w("w", log);
  b.attachFieldSensor(&w);
  w.action = [&] {
    a.detachField(&b, 0);
    a.attachField(&d, 0);
  };
  a.notifyAttachments(full);
  EXPECT_EQ(takeLog(), (CallLog{"a+2", "s(2)", "u(2)", "v(2)", "b+2", "w(2)", "d+2"}))
      << "t and c took the places that were passed already";
}

TEST_F(FieldTest, AChangedFlagCountsInTheSameWalk) {
  RecordingSensor s("s", log);
  a.attachFieldSensor(&s);
  a.attachField(&b, 0);
  s.action = [&] { a.attachField(&b, 1); };
  a.value = "x";
  a.notifyAttachments(full);
  EXPECT_EQ(takeLog(), (CallLog{"a+2", "s(2)", "b=x", "b+2"}));
}

TEST_F(FieldTest, ATouchAllocatesNothing) {
  class SilentField : public Field {
   public:
    void setStringValue(const std::string& /*value*/) override {}
    std::string getStringValue() const override { return {}; }
  };
  SilentField from, to;
  int calls = 0;
  FieldSensor sensor([](void* count, void* /*sensor*/) { ++*static_cast<int*>(count); }, &calls);
  to.attachFieldSensor(&sensor);
  from.attachField(&to, 0);
  const long before = numAllocations();
  from.notifyAttachments(full);
  EXPECT_EQ(numAllocations(), before);
  EXPECT_EQ(calls, 1);
}

// Exceptions ----------------------------------------------------------------------------------------------------------

// The levels and codes of messages; the fatal path has texts of its own.
std::vector<std::pair<VXMessageType, VXErrorCode>> codesOf(const Messages& messages) {
  std::vector<std::pair<VXMessageType, VXErrorCode>> codes;
  for (const Message& message : messages) codes.emplace_back(message.type, message.code);
  return codes;
}
using Codes = std::vector<std::pair<VXMessageType, VXErrorCode>>;

TEST_F(FieldTest, AnExceptionOfASensorSilencesTheFieldForGood) {
  MessageRecorder messages;
  RecordingSensor s("s", log), t("t", log);
  a.attachFieldSensor(&s);
  a.attachFieldSensor(&t);
  s.action = [] { throw std::runtime_error("sensor"); };
  EXPECT_THROW(a.notifyAttachments(full), std::runtime_error);
  EXPECT_EQ(takeLog(), (CallLog{"a+2", "s(2)"}));
  EXPECT_EQ(codesOf(messages.take()), (Codes{{VX_FATAL, 1}}));
  EXPECT_TRUE(a._isNotifying);
  EXPECT_EQ(s.getNotificationStrength(), FieldSensor::VX_NO_NOTIFICATION);
  s.action = nullptr;
  a.notifyAttachments(full);
  a.notifyAttachedSensors(full);
  EXPECT_EQ(takeLog(), (CallLog{"a+2"}));
  // Others aren't affected, nor is attaching.
  b.attachFieldSensor(&s);
  b.notifyAttachments(full);
  EXPECT_EQ(takeLog(), (CallLog{"b+2", "s(2)"}));
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(FieldTest, AnExceptionPassesAllFieldsOnItsWay) {
  MessageRecorder messages;
  a.attachField(&b, 0);
  b.attachField(&c, 1);
  c.onSet = [] { throw 7; };
  EXPECT_THROW(a.notifyAttachments(full), int);
  EXPECT_EQ(codesOf(messages.take()), (Codes{{VX_FATAL, 1}, {VX_FATAL, 1}})) << "b and then a";
  EXPECT_TRUE(a._isNotifying && b._isNotifying);
  EXPECT_FALSE(c._isNotifying);
}

TEST_F(FieldTest, AnExceptionAmongTheSensorsAloneIsTreatedAlike) {
  MessageRecorder messages;
  RecordingSensor s("s", log);
  a.attachFieldSensor(&s);
  s.action = [] { throw 7; };
  EXPECT_THROW(a.notifyAttachedSensors(full), int);
  EXPECT_EQ(codesOf(messages.take()), (Codes{{VX_FATAL, 1}}));
  EXPECT_TRUE(a._isNotifying);
}

TEST_F(FieldTest, WithoutMemoryNothingIsAttached) {
  a.value = std::string(100, 'v');
  RecordingSensor s("s", log);
  b.attachFieldSensor(&s);
  bool failed = true;
  for (long n = 0; failed && n < 20; ++n) {
    RecordingField from("from", log), to("to", log);
    failed = false;
    try {
      const FailingAllocations failing(n);
      from.attachField(&to, 0);
    } catch (const std::bad_alloc&) {
      failed = true;
    }
    EXPECT_EQ(from._destinations.size(), failed ? 0U : 1U);
    EXPECT_EQ(from._copyValueFlags.size(), failed ? 0U : 1U);
    EXPECT_EQ(from._touchOriginFlags.size(), failed ? 0U : 1U);
    EXPECT_EQ(to._sources.size(), failed ? 0U : 1U);
  }
  EXPECT_FALSE(failed);
  {
    const FailingAllocations failing;
    EXPECT_THROW(s.attachField(&a), std::bad_alloc);
  }
  EXPECT_EQ(s.getField(), nullptr);
  EXPECT_TRUE(a._sensors.empty() && b._sensors.empty());
  a.attachFieldSensor(&s);
  EXPECT_EQ(s.getField(), &a) << "no guard stays set";
  {
    const FailingAllocations failing;
    EXPECT_THROW(d.attachFieldSensor(&s), std::bad_alloc);
  }
  EXPECT_EQ(s.getField(), &a);
  EXPECT_TRUE(d._sensors.empty());
}

// Lifetime ------------------------------------------------------------------------------------------------------------

TEST_F(FieldTest, ADestroyedFieldIsForgottenByAllWithoutANotification) {
  RecordingSensor s("s", log);
  {
    RecordingField gone("gone", log);
    gone.attachField(&a, 0);
    gone.attachField(&gone, 0);
    b.attachField(&gone, 0);
    gone.attachFieldSensor(&s);
  }
  EXPECT_EQ(log, CallLog{});
  EXPECT_EQ(a.sources(), Names{});
  EXPECT_EQ(b.destinations(), Names{});
  EXPECT_TRUE(b._copyValueFlags.empty() && b._touchOriginFlags.empty());
  EXPECT_EQ(s.getField(), nullptr);
}

TEST_F(FieldTest, ACopyHasAllMembersAndIsKnownToNobody) {
  RecordingSensor s("s", log);
  a.attachField(&b, 0);
  c.attachField(&a, 0);
  a.attachFieldSensor(&s);
  a.deactivateAttachments();
  a._ownsValue = true;
  a._isNotifying = true;
  {
    RecordingField copy(a);
    EXPECT_EQ(copy.getName(), "a");
    EXPECT_EQ(copy._sensors, a._sensors);
    EXPECT_EQ(copy._destinations, a._destinations);
    EXPECT_EQ(copy._copyValueFlags, a._copyValueFlags);
    EXPECT_EQ(copy._touchOriginFlags, a._touchOriginFlags);
    EXPECT_EQ(copy._sources, a._sources);
    EXPECT_TRUE(copy._isNotifying && copy._ownsValue && !copy._isActive);
    d = copy;
    EXPECT_EQ(d._sources, a._sources);
    EXPECT_EQ(b._sources, (std::vector<Field*>{&a}));
    EXPECT_EQ(c._destinations, (std::vector<Field*>{&a}));
    EXPECT_EQ(s.getField(), &a);
    copy._sensors.clear();
    d._sensors.clear();
  }
  // The end of the copy doesn't wait for fields that don't know it.
  EXPECT_EQ(a.destinations(), (Names{"b"}));
  EXPECT_EQ(a.sources(), (Names{"c"}));
}

TEST_F(FieldTest, SensorsMayBeDeletedDuringTheWalk) {
  RecordingSensor s("s", log), v("v", log);
  auto t = std::make_unique<RecordingSensor>("t", log);
  auto u = std::make_unique<RecordingSensor>("u", log);
  a.attachFieldSensor(t.get());
  a.attachFieldSensor(&s);
  a.attachFieldSensor(u.get());
  a.attachFieldSensor(&v);
  s.action = [&] { u.reset(); };
  a.notifyAttachments(full);
  EXPECT_EQ(takeLog(), (CallLog{"a+2", "t(2)", "s(2)", "v(2)"}));
  s.action = [&] { t.reset(); };
  a.notifyAttachments(full);
  EXPECT_EQ(takeLog(), (CallLog{"a+2", "t(2)", "s(2)"})) << "v took the place of s";
}

TEST_F(FieldTest, FieldsThatAreNotNotifyingMayBeDeletedDuringTheWalk) {
  RecordingSensor s("s", log), t("t", log);
  auto e = std::make_unique<RecordingField>("e", log);
  auto f = std::make_unique<RecordingField>("f", log);
  auto source = std::make_unique<RecordingField>("source", log);
  source->attachField(&a, 0);
  a.attachField(e.get(), 0);
  a.attachField(&b, 0);
  a.attachField(f.get(), 0);
  a.attachField(&c, 0);
  a.attachFieldSensor(&s);
  b.attachFieldSensor(&t);
  s.action = [&] {
    e.reset();
    source.reset();
  };
  t.action = [&] { f.reset(); };
  a.notifyAttachments(full);
  EXPECT_EQ(takeLog(), (CallLog{"a+2", "s(2)", "b+2", "t(2)", "c+2"}));
}

// Registration --------------------------------------------------------------------------------------------------------

TEST_F(FieldTest, TheClassIsARootThatCannotBeMadeByName) {
  const RuntimeType* const type = Runtime::fromName("Field");
  ASSERT_NE(type, nullptr);
  EXPECT_EQ(Field::getClassTypeId(), type);
  EXPECT_EQ(a.getTypeId(), type);
  EXPECT_STREQ(a.getTypeIdName(), "Field");
  EXPECT_EQ(type->getParent(), nullptr);
  EXPECT_TRUE(type->isAbstract());
  EXPECT_EQ(&a.typeInstanceCounter(), &type->instanceCounter());
}

TEST_F(FieldTest, AClassThatIsNotRegisteredIsReported) {
  MessageRecorder messages;
  const RuntimeType* const type = std::exchange(RecordingField::_classType, nullptr);
  EXPECT_STREQ(a.getTypeIdName(), "<Name of Uninitialized Type>");
  EXPECT_EQ(messages.take(),
            (Messages{{VX_ERROR, 39, "Field",
                       "Returning '<Name of Uninitialized Type>'instead of real type name since type is not "
                       "initialized. Did you forget to call 'Field::initClass' during library initialization?"}}));
  EXPECT_THROW(a.typeInstanceCounter(), int);
  RecordingField::_classType = type;
  const Messages taken = messages.take();
  EXPECT_EQ(codesOf(taken), (Codes{{VX_FATAL, 39}, {VX_FATAL, 41}}));
  ASSERT_FALSE(taken.empty());
  EXPECT_EQ(taken[0], (Message{VX_FATAL, 39, "Field", "Cannot determine counter reference."}));
}

#ifdef VX_TESTS_SLOTS_ARE_KNOWN
TEST_F(FieldTest, TheVirtualFunctionsHaveTheirSlots) {
  class Open : public Field {
   public:
    using Field::attachSourceField;
    using Field::detachSourceField;
  };
  const std::vector<std::size_t> slots{slotOf(&Field::setStringValue),
                                       slotOf(&Field::getStringValue),
                                       slotOf(&Field::isValidValue),
                                       slotOf(&Field::attachFieldSensor),
                                       slotOf(&Field::detachFieldSensor),
                                       slotOf(&Field::detachFieldSensors),
                                       slotOf(&Field::notifyAttachedSensors),
                                       slotOf(&Field::attachField),
                                       slotOf(&Field::detachField),
                                       slotOf(&Field::detachSourceFields),
                                       slotOf(&Field::detachDestinationFields),
                                       slotOf(&Field::detachAllFields),
                                       slotOf(&Field::getNumDestinationFields),
                                       slotOf(&Field::getDestinationField),
                                       slotOf(&Field::getNumSourceFields),
                                       slotOf(&Field::getSourceField),
                                       slotOf(&Field::notifyAttachments),
                                       slotOf(&Field::deactivateAttachments),
                                       slotOf(&Field::activateAttachments),
                                       slotOf(&Field::isActiveAttachments),
                                       slotOf(&Field::hasReferencedValue),
                                       slotOf(&Open::attachSourceField),
                                       slotOf(&Open::detachSourceField),
                                       slotOf(&Field::getTypeId),
                                       slotOf(&Field::getTypeIdName),
                                       slotOf(&Field::typeInstanceCounter)};
  for (std::size_t i = 0; i < slots.size(); ++i) EXPECT_EQ(slots[i], i + 2) << "the destructor takes two";
}
#endif

}  // namespace
}  // namespace vx::test
