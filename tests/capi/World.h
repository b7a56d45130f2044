// The objects that table tests call the C interface with.

#ifndef VX_TESTS_CAPI_WORLD_H
#define VX_TESTS_CAPI_WORLD_H

#include "CAPIFixture.h"

#include "vxHost.h"

#include <cstring>
#include <deque>
#include <set>

namespace vx::test {

/// A field whose class isn't derived from Field.
class ForeignField : public BoolField {
 public:
  const RuntimeType* getTypeId() const override { return BaseOp::getClassTypeId(); }
  const char* getTypeIdName() const override { return "BaseOp"; }
};

/// An object with a state.
class StatefulObject : public Base {
 public:
  char* getPersistentState() const override { return nullptr; }
};

/// Modules, fields, sensors and places for results. It tidies up what the calls leave.
class World {
 public:
  World() {
    _ownSensors.reserve(8);
    _ownModules.reserve(8);
    initModuleClasses();
    _source = VXCreateModuleFromName("RampModule");
    _fields = VXCreateModuleFromName("FieldsModule");
    _sensor = VXCreateFieldSensor(nullptr, [](void*, void*) {});
    VXBaseFieldSetPtr(field("BaseField"), &_object);
  }
  ~World() {
    for (FieldSensor* const sensor : _ownSensors) VXDeleteFieldSensor(sensor);
    for (BaseOp* const module : _ownModules) VXDeleteModule(module);
    VXDeleteFieldSensor(_sensor);
    for (BaseOp* const module : _freshModules) {
      if (BaseOp::findBaseOpIndex(*module) >= 0) VXDeleteModule(module);
    }
    VXDeleteModule(_fields);
    VXDeleteModule(_source);
  }
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  BaseOp* module() { return _fields; }
  BaseOp* freshModule() {
    BaseOp* const module = VXCreateModuleFromName("RampModule");
    _freshModules.insert(module);
    return module;
  }
  /// Takes what a call made, without an allocation for the first few of them.
  void own(BaseOp* module) {
    if (module) _ownModules.push_back(module);
  }
  void own(FieldSensor* sensor) {
    if (sensor) _ownSensors.push_back(sensor);
  }
  FieldSensor* sensor() { return _sensor; }
  FieldSensor* freshSensor() {
    return VXCreateFieldSensor(nullptr, [](void*, void*) {});
  }
  const RuntimeType* type() { return VXTypeFromName("PassModule"); }
  Base* base() { return _source; }
  Base* unregisteredBase() { return &_unregisteredModule; }

  /// The field of a class, in the module that has one of each.
  Field* field(const std::string& className) {
    if (className == "InputConnectorField") return VXModuleGetField(_fields, "input0");
    if (className == "OutputConnectorField") return VXModuleGetField(_source, "output0");
    return VXModuleGetField(_fields, className.c_str());
  }
  Field* image() { return field("OutputConnectorField"); }
  Field* heldBaseField() { return field("BaseField"); }
  Field* unregisteredField() { return &_unregisteredField; }
  Field* foreignField() { return &_foreignField; }

  /// A place for a result of any type, filled with a pattern.
  void* outputPlace() {
    _places.emplace_back();
    std::memset(_places.back().bytes, pattern, sizeof _places.back().bytes);
    return _places.back().bytes;
  }
  /// Forgets the places that were handed out.
  void forgetOutputs() { _places.clear(); }
  /// Whether no place was written to.
  bool areOutputsUntouched() const {
    for (const Place& place : _places) {
      for (const unsigned char byte : place.bytes) {
        if (byte != pattern) return false;
      }
    }
    return _tile == _tileVoxels;
  }
  /// The address of a tile's address, with room for a few voxels.
  void** tileMemory() {
    _tile = _tileVoxels;
    return &_tile;
  }

 private:
  static constexpr unsigned char pattern = 0x5A;
  struct Place {
    alignas(16) unsigned char bytes[64];
  };

  BaseOp* _source = nullptr;
  BaseOp* _fields = nullptr;
  FieldSensor* _sensor = nullptr;
  std::set<BaseOp*> _freshModules;
  std::vector<BaseOp*> _ownModules;
  std::vector<FieldSensor*> _ownSensors;
  StatefulObject _object;
  UnregisteredModule _unregisteredModule;
  UnregisteredField _unregisteredField;
  ForeignField _foreignField;
  std::deque<Place> _places;
  VXint32 _tileVoxels[4] = {};
  void* _tile = _tileVoxels;
};

}  // namespace vx::test

#endif
