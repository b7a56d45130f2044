#include "MessageRecorder.h"
#include "RecordingField.h"

#include "vxFieldSensor.h"

#include <gtest/gtest.h>
#include <memory>

namespace vx::test {
namespace {

using Sensors = std::vector<FieldSensor*>;

class FieldSensorTest : public ::testing::Test {
 protected:
  CallLog log;
  RecordingField a{"a", log}, b{"b", log};
  RecordingSensor s{"s", log}, t{"t", log}, u{"u", log};
};

TEST_F(FieldSensorTest, ASensorStartsDetached) {
  EXPECT_EQ(s.getField(), nullptr);
  EXPECT_EQ(s.getNotificationStrength(), 0);
  EXPECT_EQ(s._userData, &s);
}

TEST_F(FieldSensorTest, StrengthsAreNumbered) {
  EXPECT_EQ(static_cast<int>(FieldSensor::VX_NO_NOTIFICATION), 0);
  EXPECT_EQ(static_cast<int>(FieldSensor::VX_WEAK_NOTIFICATION), 1);
  EXPECT_EQ(static_cast<int>(FieldSensor::VX_FULL_NOTIFICATION), 2);
}

TEST_F(FieldSensorTest, AttachingMayBeginOnEitherSide) {
  s.attachField(&a);
  a.attachFieldSensor(&t);
  EXPECT_EQ(a._sensors, (Sensors{&s, &t}));
  EXPECT_EQ(s.getField(), &a);
  EXPECT_EQ(t.getField(), &a);
}

TEST_F(FieldSensorTest, DetachingMayBeginOnEitherSide) {
  for (RecordingSensor* sensor : {&s, &t, &u}) a.attachFieldSensor(sensor);
  s.detachField();
  a.detachFieldSensor(&u);
  EXPECT_EQ(a._sensors, (Sensors{&t}));
  EXPECT_EQ(s.getField(), nullptr);
  EXPECT_EQ(u.getField(), nullptr);
  s.detachField();
  a.detachFieldSensor(&u);
  EXPECT_EQ(a._sensors, (Sensors{&t})) << "detaching again does nothing";
}

TEST_F(FieldSensorTest, AttachingToASecondFieldLeavesTheFirst) {
  s.attachField(&a);
  s.attachField(&b);
  EXPECT_TRUE(a._sensors.empty());
  EXPECT_EQ(b._sensors, (Sensors{&s}));
  EXPECT_EQ(s.getField(), &b);
  a.attachFieldSensor(&s);
  EXPECT_EQ(a._sensors, (Sensors{&s}));
  EXPECT_TRUE(b._sensors.empty());
  EXPECT_EQ(s.getField(), &a);
}

TEST_F(FieldSensorTest, AttachingAgainFromTheFieldChangesNothing) {
  a.attachFieldSensor(&s);
  a.attachFieldSensor(&t);
  a.attachFieldSensor(&s);
  EXPECT_EQ(a._sensors, (Sensors{&s, &t}));
  EXPECT_EQ(s.getField(), &a);
}

TEST_F(FieldSensorTest, AttachingAgainFromTheSensorMovesItToTheEnd) {
  s.attachField(&a);
  t.attachField(&a);
  s.attachField(&a);
  EXPECT_EQ(a._sensors, (Sensors{&t, &s}));
  EXPECT_EQ(s.getField(), &a);
}

TEST_F(FieldSensorTest, NullIsIgnored) {
  s.attachField(&a);
  s.attachField(nullptr);
  EXPECT_EQ(s.getField(), &a);
}

TEST_F(FieldSensorTest, AllSensorsOfAFieldAreDetached) {
  for (RecordingSensor* sensor : {&s, &t, &u}) a.attachFieldSensor(sensor);
  a.detachFieldSensors();
  EXPECT_TRUE(a._sensors.empty());
  for (const RecordingSensor* sensor : {&s, &t, &u}) EXPECT_EQ(sensor->getField(), nullptr);
}

TEST_F(FieldSensorTest, EveryEntryOfASensorIsDetached) {
  a.attachFieldSensor(&s);
  a._sensors = {&s, &t, &s};
  a.detachFieldSensor(&s);
  EXPECT_EQ(a._sensors, (Sensors{&t}));
  EXPECT_EQ(s.getField(), nullptr);
  a._sensors.clear();
}

TEST_F(FieldSensorTest, TheStrengthIsThereDuringTheCallbackOnly) {
  FieldSensor::Strength seen = FieldSensor::VX_NO_NOTIFICATION;
  s.action = [&] { seen = s.getNotificationStrength(); };
  s.callback(weak);
  EXPECT_EQ(seen, weak);
  EXPECT_EQ(s.getNotificationStrength(), FieldSensor::VX_NO_NOTIFICATION);
  s.callback(full);
  EXPECT_EQ(seen, full);
  EXPECT_EQ(log, (CallLog{"s(1)", "s(2)"}));
}

TEST_F(FieldSensorTest, AMissingCallbackIsFatal) {
  MessageRecorder messages;
  FieldSensor sensor(nullptr, nullptr);
  sensor.attachField(&a);
  try {
    sensor.callback(full);
    FAIL() << "nothing was thrown";
  } catch (int code) {
    EXPECT_EQ(code, VX_BAD_POINTER);
  }
  const auto taken = messages.take();
  ASSERT_EQ(taken.size(), 1U);
  EXPECT_EQ(taken[0].type, VX_FATAL);
  EXPECT_EQ(taken[0].code, 41);
  EXPECT_EQ(sensor.getNotificationStrength(), FieldSensor::VX_NO_NOTIFICATION);
}

TEST_F(FieldSensorTest, ASensorThatDetachesItselfLetsTheNextBePassedOver) {
  for (RecordingSensor* sensor : {&s, &t, &u}) a.attachFieldSensor(sensor);
  s.action = [&] { s.detachField(); };
  a.notifyAttachments(full);
  EXPECT_EQ(log, (CallLog{"a+2", "s(2)", "u(2)"}));
}

TEST_F(FieldSensorTest, ADestroyedSensorLeavesNoEntry) {
  {
    RecordingSensor gone("gone", log);
    a.attachFieldSensor(&gone);
    a.attachFieldSensor(&s);
  }
  EXPECT_EQ(a._sensors, (Sensors{&s}));
}

TEST_F(FieldSensorTest, ASensorOutlivesItsField) {
  auto gone = std::make_unique<RecordingField>("gone", log);
  s.attachField(gone.get());
  t.attachField(gone.get());
  gone.reset();
  EXPECT_EQ(s.getField(), nullptr);
  EXPECT_EQ(t.getField(), nullptr);
}

TEST_F(FieldSensorTest, ACopyTakesTheMembersAndAttachesNothing) {
  s.attachField(&a);
  {
    const FieldSensor copy(static_cast<const FieldSensor&>(s));
    EXPECT_EQ(copy.getField(), &a);
    EXPECT_EQ(a._sensors, (Sensors{&s}));
    FieldSensor assigned(nullptr, nullptr);
    assigned = copy;
    EXPECT_EQ(assigned.getField(), &a);
    assigned.callback(full);
    EXPECT_EQ(log, (CallLog{"s(2)"})) << "callback and user data are those of the original";
  }
  EXPECT_EQ(a._sensors, (Sensors{&s}));
  EXPECT_EQ(s.getField(), &a);
}

}  // namespace
}  // namespace vx::test
