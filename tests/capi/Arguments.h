// What the rows of api.def are made of: arguments with a good value and all the bad ones, and what a refusal says.

#ifndef VX_TESTS_CAPI_ARGUMENTS_H
#define VX_TESTS_CAPI_ARGUMENTS_H

#include "World.h"

#include <functional>
#include <initializer_list>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace vx::test::rows {

/// How a function behaves inside of other calls.
enum class Kind { plain, image, frees, stops };

/// What a function returns for a refused call.
enum class Answer { code, nothing, null, zero, minusOne, emptyText, stateText };

/// What a refusal says. An empty label is the function's own: with "vxAPI: " in front for handles and names.
struct Refusal {
  VXErrorCode code;
  std::string reason;
  std::string label;
  bool isPointerCheck = false;

  std::string labelFor(const std::string& function) const {
    if (!label.empty()) return label;
    return isPointerCheck ? function : "vxAPI: " + function;
  }
  /// The code that a function with a code returns.
  VXErrorCode result() const {
    return code == VX_OBJECT_NOT_INITIALIZED || code == VX_BAD_OBJECT_TYPE ? VX_BAD_FIELD : code;
  }
};

template <class T>
struct Bad {
  T value;
  Refusal refusal;
};

/// An argument of a row. Values are made when they are asked for, in a world of their own.
template <class T>
struct Argument {
  using Value = T;
  std::function<T(World&)> good;
  std::function<std::vector<Bad<T>>(World&)> bad = [](World&) { return std::vector<Bad<T>>(); };
};

// Values that nothing is wrong with -----------------------------------------------------------------------------------

template <class T>
Argument<T> any(T value) {
  return {[value](World&) { return value; }};
}

inline Argument<VXFieldSensorCB> keptCallback() {
  return any<VXFieldSensorCB>([](void*, void*) {});
}
inline Argument<void*> keptProgressData() {
  return {[](World&) { return Host::getDefaultHost().getProgressCBUserData(); }};
}
inline Argument<VXProgressCB> keptProgress() {
  return {[](World&) { return Host::getDefaultHost().getProgressCB(); }};
}
inline Argument<void*> keptBreakCheckData() {
  return {[](World&) { return Host::getDefaultHost().getBreakCheckCBUserData(); }};
}
inline Argument<VXBreakCheckCB> keptBreakCheck() {
  return {[](World&) { return Host::getDefaultHost().getBreakCheckCB(); }};
}

/// A listener to a search for a library: null is refused.
inline Argument<VXLibrarySearchCB> searchCallback(std::string reason) {
  const Refusal refusal{VX_BAD_PARAMETER, std::move(reason), {}};
  return {[](World&) -> VXLibrarySearchCB { return [](void*, const char*, const char*) {}; },
          [refusal](World&) -> std::vector<Bad<VXLibrarySearchCB>> {
            return {{nullptr, refusal}};
          }};
}

// Texts and numbers ---------------------------------------------------------------------------------------------------

/// A name: null and empty are refused.
inline Argument<const char*> name(const char* good, std::string reason, std::string label = {}) {
  const Refusal refusal{VX_BAD_PARAMETER, std::move(reason), std::move(label)};
  return {[good](World&) { return good; },
          [refusal](World&) -> std::vector<Bad<const char*>> {
            return {{nullptr, refusal}, {"", refusal}};
          }};
}

/// A text: null is refused.
inline Argument<const char*> text(const char* good, std::string reason, std::string label = {}) {
  const Refusal refusal{VX_BAD_PARAMETER, std::move(reason), std::move(label), true};
  return {[good](World&) { return good; },
          [refusal](World&) -> std::vector<Bad<const char*>> {
            return {{nullptr, refusal}};
          }};
}

/// A number with bad values.
inline Argument<int> number(int good, std::initializer_list<int> bad, std::string reason, std::string label = {},
                            VXErrorCode code = VX_BAD_PARAMETER) {
  const Refusal refusal{code, std::move(reason), std::move(label)};
  return {[good](World&) { return good; },
          [refusal, values = std::vector<int>(bad)](World&) {
            std::vector<Bad<int>> list;
            for (const int value : values) list.push_back({value, refusal});
            return list;
          }};
}

inline Argument<int> index(int good, std::initializer_list<int> bad, std::string reason) {
  return number(good, bad, std::move(reason), {}, VX_BAD_INDEX);
}

inline Argument<VXDataType> datatype(std::string label = {}) {
  const Refusal refusal{VX_BAD_PARAMETER, "Invalid datatype. Ignoring call and returning VX_BAD_PARAMETER.",
                        std::move(label), true};
  return {[](World&) { return VXDataType{VXint32Type}; },
          [refusal](World&) -> std::vector<Bad<VXDataType>> {
            return {{-1, refusal}, {12345, refusal}};
          }};
}

// Outputs -------------------------------------------------------------------------------------------------------------

/// A place for a result: null is refused.
template <class T>
Argument<T*> output(std::string reason, std::string label = {}) {
  const Refusal refusal{VX_BAD_PARAMETER, std::move(reason), std::move(label), true};
  return {[](World& world) { return static_cast<T*>(world.outputPlace()); },
          [refusal](World&) -> std::vector<Bad<T*>> {
            return {{nullptr, refusal}};
          }};
}

/// The address of a tile's address: null is refused.
inline Argument<void**> memory(std::string label = {}) {
  const Refusal refusal{VX_BAD_PARAMETER, "Invalid memory pointer. Ignoring call and returning VX_BAD_PARAMETER.",
                        std::move(label), true};
  return {[](World& world) { return world.tileMemory(); },
          [refusal](World&) -> std::vector<Bad<void**>> {
            return {{nullptr, refusal}};
          }};
}

// Handles that only null is refused for
// ---------------------------------------------------------------------------------

template <class T>
Argument<T> handle(T (World::*good)(), std::string reason, std::string label = {}) {
  const Refusal refusal{VX_BAD_PARAMETER, std::move(reason), std::move(label)};
  return {[good](World& world) { return (world.*good)(); },
          [refusal](World&) -> std::vector<Bad<T>> {
            return {{nullptr, refusal}};
          }};
}
inline auto module(std::string reason) { return handle(&World::module, std::move(reason)); }
inline auto freshModule(std::string reason) { return handle(&World::freshModule, std::move(reason)); }
inline auto sensor(std::string reason) { return handle(&World::sensor, std::move(reason)); }
inline auto freshSensor(std::string reason) { return handle(&World::freshSensor, std::move(reason)); }
inline auto type(std::string reason) { return handle(&World::type, std::move(reason)); }
inline auto base(std::string reason) { return handle(&World::base, std::move(reason)); }

inline Argument<Base*> registeredBase(std::string nullReason, std::string unregisteredReason) {
  return {[](World& world) { return world.base(); },
          [=](World& world) -> std::vector<Bad<Base*>> {
            return {{nullptr, {VX_BAD_PARAMETER, nullReason, {}}},
                    {world.unregisteredBase(), {VX_BAD_PARAMETER, unregisteredReason, {}}}};
          }};
}

// Fields --------------------------------------------------------------------------------------------------------------

/// The bad fields for a class that an object check asks for. \param className "Field" for any field.
inline std::vector<Bad<Field*>> badFields(World& world, const std::string& className, const std::string& reason,
                                          const std::string& label) {
  std::vector<Bad<Field*>> list;
  list.push_back({nullptr, {VX_BAD_FIELD, reason, label}});
  list.push_back({world.unregisteredField(),
                  {VX_OBJECT_NOT_INITIALIZED,
                   reason + " The field seems to be uninitialized, maybeclass::initClass() code is not called on code "
                            "initialization.",
                   label}});
  if (className == "Field") {
    list.push_back({world.foreignField(), {VX_BAD_FIELD, reason, label}});
  } else {
    list.push_back({world.field("BoolField"),
                    {VX_BAD_OBJECT_TYPE,
                     reason + " The field must be initialized an it should be of type " + className +
                         " (or derived from it), but it seems to be of type BoolField.",
                     label}});
  }
  return list;
}

inline Argument<Field*> checkedField(std::function<Field*(World&)> good, std::string className, std::string reason,
                                     std::string label = {}) {
  return {std::move(good), [=](World& world) { return badFields(world, className, reason, label); }};
}

/// A field of a class, which the module with all fields has one of.
inline Argument<Field*> field(const char* className, std::string reason, std::string label = {}) {
  return checkedField([className](World& world) { return world.field(className); }, className, std::move(reason),
                      std::move(label));
}
/// Any field.
inline Argument<Field*> anyField(std::string reason, std::string label = {}) {
  return checkedField([](World& world) { return world.field("StringField"); }, "Field", std::move(reason),
                      std::move(label));
}
/// Any field; the good one is that of an input.
inline Argument<Field*> inputField(std::string reason) {
  return checkedField([](World& world) { return world.field("InputConnectorField"); }, "Field", std::move(reason));
}
/// The field of an output with a valid image.
inline Argument<Field*> image(std::string reason, std::string label = {}) {
  return checkedField([](World& world) { return world.image(); }, "OutputConnectorField", std::move(reason),
                      std::move(label));
}
/// The same, where null isn't reported.
inline Argument<Field*> silentImage(std::string reason, std::string label) {
  Argument<Field*> argument = image(reason, label);
  argument.bad = [=](World& world) {
    std::vector<Bad<Field*>> list = badFields(world, "OutputConnectorField", reason, label);
    list.erase(list.begin());
    return list;
  };
  return argument;
}
/// A field to be listened to: null is no bad field but a bad argument.
inline Argument<Field*> listenedField(std::string reason) {
  Argument<Field*> argument = anyField(reason);
  argument.bad = [=](World& world) {
    std::vector<Bad<Field*>> list = badFields(world, "Field", reason, {});
    list.front().refusal.code = VX_BAD_PARAMETER;
    return list;
  };
  return argument;
}
/// A base field that holds an object.
inline Argument<Field*> heldBaseField(std::string reason) {
  return checkedField([](World& world) { return world.heldBaseField(); }, "BaseField", std::move(reason));
}

}  // namespace vx::test::rows

#endif
