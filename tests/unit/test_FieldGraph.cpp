// Random graphs of fields and sensors, rings included, against a small model of the rules.

#include "RecordingField.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <random>

namespace vx::test {
namespace {

// The rules of attaching and notifying, with indices in place of pointers.
struct Model {
  struct Destination {
    std::size_t field;
    int flag;
    bool isTouchOrigin;
  };
  struct Node {
    std::string value;
    bool isActive = true;
    bool isNotifying = false;
    std::vector<std::size_t> sensors;
    std::vector<Destination> destinations;
    std::vector<std::size_t> sources;
  };
  std::vector<Node> fields;
  VXint64 counter = 1;
  CallLog log;

  static std::string fieldName(std::size_t field) { return "f" + std::to_string(field); }
  static std::string sensorName(std::size_t sensor) { return "s" + std::to_string(sensor); }

  void set(std::size_t field, const std::string& text) {
    log.push_back(fieldName(field) + "=" + text);
    fields[field].value = text;
    notify(field, 2);
  }
  bool isSilent(const Node& node) const { return node.isNotifying || !node.isActive || counter == 0; }
  void tellSensors(const Node& node, int strength) {
    for (const std::size_t sensor : node.sensors) {
      log.push_back(sensorName(sensor) + "(" + std::to_string(strength) + ")");
    }
  }
  void notify(std::size_t field, int strength) {
    log.push_back(fieldName(field) + "+" + std::to_string(strength));
    Node& node = fields[field];
    if (isSilent(node)) return;
    node.isNotifying = true;
    tellSensors(node, strength);
    for (const Destination& destination : node.destinations) {
      if (destination.flag != 0) {
        set(destination.field, node.value);
      } else {
        notify(destination.field, 2);
      }
    }
    node.isNotifying = false;
  }
  void notifySensors(std::size_t field, int strength) {
    if (!isSilent(fields[field])) tellSensors(fields[field], strength);
  }
  std::vector<Destination>::iterator find(std::size_t from, std::size_t to) {
    auto& list = fields[from].destinations;
    return std::find_if(list.begin(), list.end(), [to](const Destination& entry) { return entry.field == to; });
  }
  void attach(std::size_t from, std::size_t to, int flag) {
    const auto found = find(from, to);
    if (found != fields[from].destinations.end()) {
      found->flag = flag;
      return;
    }
    fields[from].destinations.push_back({to, flag ? 1 : 0, flag == 0});
    fields[to].sources.push_back(from);
    if (flag) set(to, fields[from].value);
  }
  void detach(std::size_t from, std::size_t to, int flag) {
    const auto found = find(from, to);
    if (found == fields[from].destinations.end()) return;
    if (flag && found->flag && found->isTouchOrigin) {
      found->flag = 0;
      return;
    }
    fields[from].destinations.erase(found);
    auto& sources = fields[to].sources;
    sources.erase(std::remove(sources.begin(), sources.end(), from), sources.end());
  }
  void detachSources(std::size_t field) {
    while (!fields[field].sources.empty()) detach(fields[field].sources.back(), field, 0);
  }
  void detachDestinations(std::size_t field) {
    while (!fields[field].destinations.empty()) detach(field, fields[field].destinations.back().field, 0);
  }
  void detachSensor(std::size_t sensor) {
    for (Node& node : fields) {
      node.sensors.erase(std::remove(node.sensors.begin(), node.sensors.end(), sensor), node.sensors.end());
    }
  }
  bool hears(std::size_t field, std::size_t sensor) const {
    const auto& sensors = fields[field].sensors;
    return std::find(sensors.begin(), sensors.end(), sensor) != sensors.end();
  }
  void attachSensorFromField(std::size_t field, std::size_t sensor) {
    if (!hears(field, sensor)) attachSensorFromSensor(field, sensor);
  }
  void attachSensorFromSensor(std::size_t field, std::size_t sensor) {
    detachSensor(sensor);
    fields[field].sensors.push_back(sensor);
  }
};

class FieldGraphTest : public ::testing::TestWithParam<unsigned int> {
 protected:
  static constexpr std::size_t numFields = 5, numSensors = 6;

  void SetUp() override {
    model.fields.resize(numFields);
    for (std::size_t i = 0; i < numFields; ++i) makeField(i);
    for (std::size_t i = 0; i < numSensors; ++i) makeSensor(i);
  }
  void TearDown() override { Field::enableNotificationsCounterState() = 1; }

  void makeField(std::size_t i) { fields[i] = std::make_unique<RecordingField>(Model::fieldName(i), log); }
  void makeSensor(std::size_t i) { sensors[i] = std::make_unique<RecordingSensor>(Model::sensorName(i), log); }

  void expectTheSame() {
    ASSERT_EQ(log, model.log);
    log.clear();
    model.log.clear();
    std::vector<Field*> heard(numSensors, nullptr);
    for (std::size_t i = 0; i < numFields; ++i) {
      const Model::Node& node = model.fields[i];
      RecordingField& field = *fields[i];
      std::vector<Field*> destinations, sources;
      std::vector<VXint16> copyFlags, originFlags;
      for (const auto& entry : node.destinations) {
        destinations.push_back(fields[entry.field].get());
        copyFlags.push_back(static_cast<VXint16>(entry.flag));
        originFlags.push_back(entry.isTouchOrigin ? 1 : 0);
      }
      for (const std::size_t source : node.sources) sources.push_back(fields[source].get());
      std::vector<FieldSensor*> fieldSensors;
      for (const std::size_t sensor : node.sensors) {
        fieldSensors.push_back(sensors[sensor].get());
        heard[sensor] = &field;
      }
      ASSERT_EQ(field._destinations, destinations);
      ASSERT_EQ(field._copyValueFlags, copyFlags);
      ASSERT_EQ(field._touchOriginFlags, originFlags);
      ASSERT_EQ(field._sources, sources);
      ASSERT_EQ(field._sensors, fieldSensors);
      ASSERT_EQ(field.value, node.value);
      ASSERT_FALSE(field._isNotifying);
    }
    for (std::size_t i = 0; i < numSensors; ++i) ASSERT_EQ(sensors[i]->getField(), heard[i]);
  }

  std::size_t below(std::size_t n) { return random() % n; }

  // One random operation on both.
  void step(int number) {
    const std::size_t f = below(numFields), g = below(numFields), s = below(numSensors);
    Field& field = *fields[f];
    const auto flag = static_cast<VXint16>(below(3));
    switch (below(20)) {
      case 0:
      case 1:
      case 2:
        field.attachField(fields[g].get(), flag);
        model.attach(f, g, flag);
        break;
      case 3:
      case 4:
        field.detachField(fields[g].get(), flag);
        model.detach(f, g, flag);
        break;
      case 5:
        field.detachSourceFields();
        model.detachSources(f);
        break;
      case 6:
        field.detachDestinationFields();
        model.detachDestinations(f);
        break;
      case 7:
        field.detachAllFields();
        model.detachDestinations(f);
        model.detachSources(f);
        break;
      case 8:
        field.attachFieldSensor(sensors[s].get());
        model.attachSensorFromField(f, s);
        break;
      case 9:
      case 10:
        sensors[s]->attachField(&field);
        model.attachSensorFromSensor(f, s);
        break;
      case 11:
        if (model.hears(f, s)) model.detachSensor(s);
        field.detachFieldSensor(sensors[s].get());
        break;
      case 12:
        sensors[s]->detachField();
        model.detachSensor(s);
        break;
      case 13: {
        const bool isActive = below(3) != 0;
        isActive ? field.activateAttachments() : field.deactivateAttachments();
        model.fields[f].isActive = isActive;
        break;
      }
      case 14: {
        const bool isUp = model.counter < 1;
        isUp ? Field::enableNotifications() : Field::disableNotifications();
        model.counter += isUp ? 1 : -1;
        break;
      }
      case 15:
        makeField(f);
        model.detachDestinations(f);
        model.detachSources(f);
        model.fields[f] = {};
        break;
      case 16:
        makeSensor(s);
        model.detachSensor(s);
        break;
      case 17:
        field.notifyAttachments(flag == 1 ? weak : full);
        model.notify(f, flag == 1 ? 1 : 2);
        break;
      case 18:
        field.notifyAttachedSensors(flag == 1 ? weak : full);
        model.notifySensors(f, flag == 1 ? 1 : 2);
        break;
      default:
        field.setStringValue(std::to_string(number));
        model.set(f, std::to_string(number));
    }
  }

  std::mt19937 random{GetParam()};
  CallLog log;
  Model model;
  // Sensors go first: what is left attached at the end is detached by them and then by the fields.
  std::unique_ptr<RecordingField> fields[numFields];
  std::unique_ptr<RecordingSensor> sensors[numSensors];
};

TEST_P(FieldGraphTest, EveryCallAndEveryListIsAsTheRulesSay) {
  for (int number = 0; number < 3000; ++number) {
    step(number);
    expectTheSame();
    if (HasFatalFailure()) {
      FAIL() << "seed " << GetParam() << ", step " << number;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, FieldGraphTest, ::testing::Range(1U, 9U));

}  // namespace
}  // namespace vx::test
