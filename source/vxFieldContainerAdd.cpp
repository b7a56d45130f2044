// How fields come into a container.

#include "vxFieldContainer.h"
#include "vxGuards.h"
#include "vxTraceBuffer.h"

#include <limits>
#include <memory>

namespace vx {

namespace {

std::string textOf(const char* text) { return text ? text : ""; }

// Makes a field of a class; null after a fatal report.
template <class FieldClass, class... Value>
std::unique_ptr<FieldClass> makeField(const FieldName& name, Value&&... value) {
  return std::unique_ptr<FieldClass>(
      guardedNew<FieldClass>(SourcePosition(), name.getText(), std::forward<Value>(value)...));
}

// Hands a field over to a container, which refuses a null one.
template <class FieldClass>
FieldClass* addOwned(FieldContainer& container, std::unique_ptr<FieldClass> field, bool createSensor = true) {
  container.addField(field.get(), createSensor);
  return field.release();
}

// Adds a connector field, which stands in its own list first.
template <class ConnectorField>
ConnectorField* addConnector(FieldContainer& container, std::vector<ConnectorField*>& connectorFields, const char* name,
                             BaseOp* op, VXint64 index) {
  std::unique_ptr<ConnectorField> field = makeField<ConnectorField>(name, op, index);
  if (!field) return addOwned(container, std::move(field));
  connectorFields.push_back(field.get());
  try {
    return addOwned(container, std::move(field));
  } catch (...) {
    connectorFields.pop_back();
    throw;
  }
}

// The field class of a name, with or without "Field" at its end; null if there is none.
const RuntimeType* fieldTypeFromName(const std::string& name) {
  const RuntimeType* const fieldType = Field::getClassTypeId();
  for (const std::string& candidate : {name, name + "Field"}) {
    const RuntimeType* const type = Runtime::fromName(candidate.c_str());
    if (type && type->isDerivedFrom(fieldType)) return type;
  }
  return nullptr;
}

}  // namespace

Field* FieldContainer::addField(Field* field, bool createSensor) {
  const TraceFrame trace("source/vxFieldContainer:FieldContainer::addField()");
  if (!field) {
    report(VX_ERROR, "FieldContainer::addField(Field*, bool)", VX_FIELD_NOT_ADDED,
           "Returning NULL because no field has been added");
    return nullptr;
  }
  std::unique_ptr<FieldSensor> sensor;
  if (createSensor) sensor = std::make_unique<FieldSensor>(_callback, _baseOp);
  _fields.push_back(field);
  if (sensor) {
    try {
      sensor->attachField(field);
      _fieldSensors.push_back(sensor.get());
    } catch (...) {
      _fields.pop_back();
      throw;
    }
    sensor.release();
  }
  return field;
}

Field* FieldContainer::addField(const char* name, const char* type, const char* value, bool createSensor) {
  const TraceFrame trace("source/vxFieldContainer:FieldContainer::addField()");
  constexpr char label[] = "FieldContainer::addField(const char*, const char*, const char*, bool)";
  const std::string typeName = textOf(type);
  const RuntimeType* const fieldType = fieldTypeFromName(typeName);
  if (!fieldType) {
    reportComposed(VX_ERROR, label, VX_BAD_OBJECT_TYPE,
                   [&typeName] { return "Returning NULL for bad field type" + typeName; });
    return nullptr;
  }
  const auto createField = fieldType->getCreateCB();
  std::unique_ptr<Field> field(createField ? static_cast<Field*>(createField()) : nullptr);
  if (!field) {
    report(VX_ERROR, label, VX_BAD_FIELD_REQUEST, "Returning NULL for a bad field");
    return nullptr;
  }
  field->setName(textOf(name));
  field->setStringValue(textOf(value));
  return addOwned(*this, std::move(field), createSensor);
}

// One function for each class of field whose constructor takes the name and what stands here ------------------------

#define VX_DEFINE_ADD(NAME, CLASS, VALUE)                                             \
  CLASS* FieldContainer::add##NAME(const FieldName& name, VALUE value) {              \
    const TraceFrame trace("source/vxFieldContainer:FieldContainer::add" #NAME "()"); \
    return addOwned(*this, makeField<CLASS>(name, value));                            \
  }
#define VX_DEFINE_ADD_BY_NAME(NAME, CLASS, ...)                                       \
  CLASS* FieldContainer::add##NAME(const FieldName& name) {                           \
    const TraceFrame trace("source/vxFieldContainer:FieldContainer::add" #NAME "()"); \
    return addOwned(*this, makeField<CLASS>(name __VA_OPT__(, ) __VA_ARGS__));        \
  }

VX_DEFINE_ADD(Bool, BoolField, bool*)
VX_DEFINE_ADD(Int, IntField, VXint64*)
VX_DEFINE_ADD(Toggle, ToggleField, int*)
VX_DEFINE_ADD(Float, FloatField, float*)
VX_DEFINE_ADD(Progress, ProgressField, float*)
VX_DEFINE_ADD(Double, DoubleField, double*)
VX_DEFINE_ADD_BY_NAME(LongDouble, LongDoubleField)
VX_DEFINE_ADD_BY_NAME(String, StringField)
VX_DEFINE_ADD_BY_NAME(Notify, NotifyField)
VX_DEFINE_ADD_BY_NAME(Pointer, PointerField)
VX_DEFINE_ADD(Base, BaseField, Base**)
VX_DEFINE_ADD(SoNode, SoNodeField, SoNode**)
VX_DEFINE_ADD(DicomTagList, DicomTagListField, DicomTagList**)
VX_DEFINE_ADD(Enum, EnumField, const std::vector<std::string>&)
VX_DEFINE_ADD(Vec2f, Vec2fField, Tvec2<double>*)
VX_DEFINE_ADD(Vec3f, Vec3fField, Tvec3<double>*)
VX_DEFINE_ADD(Vec4f, Vec4fField, Tvec4<double>*)
VX_DEFINE_ADD(Vec6f, Vec6fField, Tvec6<double>*)
VX_DEFINE_ADD(Color, ColorField, Tvec3<double>*)
VX_DEFINE_ADD(Matrix, MatrixField, Tmat4<double>*)
VX_DEFINE_ADD(Vector, VectorField, TVector<VXint64>*)
VX_DEFINE_ADD(SubImgBox, SubImgBoxField, TSubImgBox<VXint64>*)
VX_DEFINE_ADD(SubImgBoxf, SubImgBoxfField, SubImgBoxf*)
VX_DEFINE_ADD(VXDataType, VXDataTypeField, int*)
VX_DEFINE_ADD_BY_NAME(UniversalType, UniversalTypeField, -1)

#undef VX_DEFINE_ADD
#undef VX_DEFINE_ADD_BY_NAME

EnumField* FieldContainer::addEnum(const FieldName& name, const char* const* items, VXint64 numItems, int* value) {
  const TraceFrame trace("source/vxFieldContainer:FieldContainer::addEnum()");
  // A number out of range becomes one that the field refuses, instead of being cut to one that it takes.
  constexpr VXint64 tooMany = std::numeric_limits<unsigned int>::max();
  const VXint64 number = numItems < 0 || numItems > tooMany ? tooMany : numItems;
  return addOwned(*this, makeField<EnumField>(name, items, static_cast<unsigned int>(number), value));
}

InputConnectorField* FieldContainer::addInputConnector(const char* name, BaseOp* op, VXint64 index) {
  const TraceFrame trace("source/vxFieldContainer:FieldContainer::addInputConnector()");
  return addConnector(*this, _inputConnectorFields, name, op, index);
}

InputConnectorField* FieldContainer::addInputConnector(BaseOp* op, VXint64 index) {
  return addInputConnector(("input" + std::to_string(index)).c_str(), op, index);
}

OutputConnectorField* FieldContainer::addOutputConnector(const char* name, BaseOp* op, VXint64 index) {
  const TraceFrame trace("source/vxFieldContainer:FieldContainer::addOutputConnector()");
  return addConnector(*this, _outputConnectorFields, name, op, index);
}

OutputConnectorField* FieldContainer::addOutputConnector(BaseOp* op, VXint64 index) {
  return addOutputConnector(("output" + std::to_string(index)).c_str(), op, index);
}

}  // namespace vx
