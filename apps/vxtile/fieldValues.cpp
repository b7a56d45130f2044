#include "fieldValues.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vxtile {

namespace {

// How the value of a field is made.
enum class Form { flag, whole, real, item, text, reals, wholes, voxelType, trigger, none };

struct FieldClass {
  const char* name;
  Form form;
  std::size_t count;  // of numbers in a list
};

// A class stands before the one that it counts as derived from.
constexpr FieldClass fieldClasses[] = {
    {"BoolField", Form::flag, 0},           {"ToggleField", Form::flag, 0},       {"IntField", Form::whole, 0},
    {"UniversalTypeField", Form::text, 0},  {"FloatField", Form::real, 0},        {"DoubleField", Form::real, 0},
    {"LongDoubleField", Form::real, 0},     {"EnumField", Form::item, 0},         {"StringField", Form::text, 0},
    {"NotifyField", Form::trigger, 0},      {"Vec2fField", Form::reals, 2},       {"Vec3fField", Form::reals, 3},
    {"Vec4fField", Form::reals, 4},         {"Vec6fField", Form::reals, 6},       {"MatrixField", Form::reals, 16},
    {"VectorField", Form::wholes, 6},       {"SubImgBoxField", Form::wholes, 12}, {"SubImgBoxfField", Form::reals, 12},
    {"VXDataTypeField", Form::voxelType, 0}};

const FieldClass& classEntry(VXField* field) {
  static constexpr FieldClass unknown{"", Form::none, 0};
  for (const FieldClass& entry : fieldClasses) {
    if (isField(field, entry.name)) return entry;
  }
  return unknown;
}

std::vector<std::string> itemsOf(VXField* field) {
  std::vector<std::string> items;
  const int number = VXFieldGetNumEnums(field);
  for (int i = 0; i < number; ++i) {
    int index = 0;
    items.emplace_back(textOrEmpty(VXFieldGetEnumName(field, i, &index)));
  }
  return items;
}

std::string joined(const std::vector<std::string>& texts) {
  std::string list;
  for (const std::string& text : texts) list += (list.empty() ? "" : ", ") + text;
  return list;
}

// Sets one field.
class FieldSetter {
 public:
  FieldSetter(VXField* field, const std::string& name, const Value& value)
      : _field(field), _name(name), _value(value) {}

  void set() {
    const FieldClass& entry = classEntry(_field);
    switch (entry.form) {
      case Form::flag:
        return setText(readFlag() ? "TRUE" : "FALSE");
      case Form::whole:
        return setWhole(readWhole());
      case Form::real:
        return setReal(readReal(), entry);
      case Form::item:
        return setItem(readText());
      case Form::text:
        return setText(textOf(_value));
      case Form::reals:
      case Form::wholes:
        return setText(textOf(Value(readList(entry))));
      case Form::voxelType:
        return setVoxelType(readText());
      case Form::trigger:
        fail("a trigger has no value; it is touched by a request or --touch");
      case Form::none:
        break;
    }
    fail("fields of class " + classOf(_field) + " can't be set");
  }

 private:
  [[noreturn]] void fail(const std::string& text) const { throw Failure(ExitCode::network, _name + ": " + text); }
  [[noreturn]] void refuse() const { fail("takes " + describeAccepted(_field) + ", not \"" + textOf(_value) + "\""); }

  // The value if it has the type, or what a text of it reads as.
  template <class T, class Read>
  T take(const Read& read) const {
    if (const T* const value = std::get_if<T>(&_value)) return *value;
    const auto* const text = std::get_if<std::string>(&_value);
    if (!text) refuse();
    const auto value = read(*text);
    if (!value) refuse();
    return *value;
  }

  bool readFlag() const {
    if (const auto* const number = std::get_if<Number>(&_value)) {
      const double real = asDouble(*number);
      if (real == 0 || real == 1) return real == 1;
    }
    return take<bool>([](const std::string& text) -> std::optional<bool> {
      if (text == "true" || text == "TRUE" || text == "1") return true;
      if (text == "false" || text == "FALSE" || text == "0") return false;
      return std::nullopt;
    });
  }
  long long readWhole() const {
    const auto number = take<Number>([](const std::string& text) { return readNumber(text); });
    if (!std::holds_alternative<long long>(number)) refuse();
    return std::get<long long>(number);
  }
  double readReal() const {
    return asDouble(take<Number>([](const std::string& text) { return readNumber(text); }));
  }
  std::string readText() const {
    if (const auto* const text = std::get_if<std::string>(&_value)) return *text;
    refuse();
  }
  std::vector<Number> readList(const FieldClass& entry) const {
    auto list = take<std::vector<Number>>([](const std::string& text) { return readNumbers(text); });
    if (list.size() != entry.count) refuse();
    constexpr long long exact = 1LL << 53;  // such fields read their texts through `double`
    for (const Number& number : list) {
      const auto* const whole = std::get_if<long long>(&number);
      if (entry.form == Form::wholes && (!whole || *whole > exact || *whole < -exact)) refuse();
    }
    return list;
  }

  void setText(const std::string& text) const {
    if (text.find('\0') != std::string::npos) fail("a text must not hold a character of code 0");
    VXFieldSetValue(_field, text.c_str());
  }
  void setWhole(long long value) const {
    VXFieldSetIntValue64(_field, value);
    const long long taken = VXFieldGetIntValue64(_field);
    if (taken != value) failBeyondLimits(textOf(Number(taken)));
  }
  void setReal(double value, const FieldClass& entry) const {
    if (std::strcmp(entry.name, "FloatField") == 0) {
      const auto single = static_cast<float>(value);
      if (!std::isfinite(single)) fail(textOf(_value) + " is too large for single precision");
      VXFieldSetFloatValue(_field, single);
      const float taken = VXFieldGetFloatValue(_field);
      if (taken < single || taken > single) failBeyondLimits(textOf(Number(static_cast<double>(taken))));
    } else if (std::strcmp(entry.name, "DoubleField") == 0) {
      VXFieldSetDoubleValue(_field, value);
      const double taken = VXFieldGetDoubleValue(_field);
      if (taken < value || taken > value) failBeyondLimits(textOf(Number(taken)));
    } else {
      setText(textOf(Number(value)));
    }
  }
  void setItem(const std::string& text) const {
    const std::vector<std::string> items = itemsOf(_field);
    const auto found = std::find(items.begin(), items.end(), text);
    if (found == items.end()) refuse();
    VXFieldSetEnumValue(_field, static_cast<int>(found - items.begin()));
  }
  void setVoxelType(const std::string& text) const {
    const VXDataType type = readVoxelType(text);
    if (type < 0) refuse();
    VXFieldSetValue(_field, VXNameFromDataType(type));
  }
  [[noreturn]] void failBeyondLimits(const std::string& taken) const {
    fail("\"" + textOf(_value) + "\" is beyond the limits of the field, which took " + taken);
  }

  VXField* _field;
  const std::string& _name;
  const Value& _value;
};

}  // namespace

std::string describeAccepted(VXField* field) {
  const FieldClass& entry = classEntry(field);
  switch (entry.form) {
    case Form::flag:
      return "true or false";
    case Form::whole:
      return "a whole number";
    case Form::real:
      return "a number";
    case Form::item:
      return "one of " + joined(itemsOf(field));
    case Form::text:
      return "a text";
    case Form::reals:
      return std::to_string(entry.count) + " numbers";
    case Form::wholes:
      return std::to_string(entry.count) + " whole numbers";
    case Form::voxelType:
      return "a voxel type";
    case Form::trigger:
      return "a touch";
    case Form::none:
      break;
  }
  return "nothing";
}

void setField(VXField* field, const std::string& name, const Value& value) { FieldSetter(field, name, value).set(); }

VXDataType readVoxelType(const std::string& name) {
  const VXDataType type = VXDataTypeFromName(name.c_str());
  if (type >= 0 || name.rfind("uint", 0) != 0) return type;
  return VXDataTypeFromName(("unsigned " + name.substr(1)).c_str());
}

std::string voxelTypeNames() {
  std::vector<std::string> names;
  for (VXDataType type = 0; type < VXNumDataTypes(); ++type) names.emplace_back(VXNameFromDataType(type));
  return joined(names);
}

}  // namespace vxtile
