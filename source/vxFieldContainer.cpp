#include "vxFieldContainer.h"

#include "vxGuards.h"
#include "vxTraceBuffer.h"

#include <algorithm>
#include <ostream>

namespace vx {

VX_CLASS_SOURCE(FieldContainer, "NULL")

namespace {

// The condition never holds, and so nothing is ever reported: what refuses an invalid index is the access.
template <class ConnectorField>
ConnectorField* connectorFieldAt(const std::vector<ConnectorField*>& fields, VXint64 index, const CallLabel& label) {
  if (index < 0 && index >= static_cast<VXint64>(fields.size())) {
    report(VX_FATAL, label, VX_BAD_INDEX, "Continuing and returning NULL.");
    return nullptr;
  }
  return fields.at(static_cast<std::size_t>(index));
}

}  // namespace

FieldContainer::FieldContainer(BaseOp* baseOp, Callback callback) : _baseOp(baseOp), _callback(callback) {}

FieldContainer::FieldContainer(const FieldContainer& /*other*/) : _baseOp(nullptr), _callback(nullptr) {
  report(VX_FATAL, "FieldContainer::FieldContainer(const FieldContainer &)", VX_MISUSED_INTERFACE,
         "Usage of copy constructor of FieldContainer is not supported.");
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): nothing is assigned
FieldContainer& FieldContainer::operator=(const FieldContainer& /*other*/) {
  report(VX_FATAL, "FieldContainer& operator=(const FieldContainer &))", VX_MISUSED_INTERFACE,
         "Usage of assignment operator of FieldContainer is not supported.");
  return *this;
}

FieldContainer::~FieldContainer() {
  const TraceFrame trace("source/vxFieldContainer:FieldContainer::~FieldContainer()");
  for (Field*& field : _fields) guardedDelete(field);
  for (FieldSensor*& sensor : _fieldSensors) guardedDelete(sensor);
}

bool FieldContainer::removeField(Field* field) {
  const TraceFrame trace("source/vxFieldContainer:FieldContainer::removeField()");
  if (!field) return false;
  for (std::size_t i = 0; i < _fieldSensors.size();) {
    FieldSensor* sensor = _fieldSensors[i];
    if (sensor->getField() != field) {
      ++i;
      continue;
    }
    _fieldSensors.erase(_fieldSensors.begin() + static_cast<std::ptrdiff_t>(i));
    guardedDelete(sensor);
  }
  const auto found = std::find(_fields.begin(), _fields.end(), field);
  if (found == _fields.end()) return false;
  _fields.erase(found);
  guardedDelete(field);
  return true;
}

// Looking up ----------------------------------------------------------------------------------------------------------

Field& FieldContainer::_entry(std::size_t index) const {
  Field* const field = _fields[index];
  checkFatal(field != nullptr);
  return *field;
}

bool FieldContainer::_isIndex(VXint64 index) const noexcept {
  return index >= 0 && index < static_cast<VXint64>(_fields.size());
}

std::size_t FieldContainer::_find(const std::string& name) const {
  std::size_t index = 0;
  while (index < _fields.size() && _entry(index).getName() != name) ++index;
  return index;
}

bool FieldContainer::hasField(const std::string& name) const {
  const TraceFrame trace("source/vxFieldContainer:FieldContainer::hasField()");
  return _find(name) < _fields.size();
}

Field* FieldContainer::getField(const std::string& name) const {
  const TraceFrame trace("source/vxFieldContainer:FieldContainer::getField()");
  const std::size_t index = _find(name);
  if (index < _fields.size()) return _fields[index];
  report(VX_WARNING, "FieldContainer::getField()", VX_BAD_FIELD, "Bad field name!");
  return nullptr;
}

Field* FieldContainer::getField(VXint64 index) const {
  const TraceFrame trace("source/vxFieldContainer:FieldContainer::getField()");
  if (_isIndex(index)) return _fields[static_cast<std::size_t>(index)];
  report(VX_WARNING, "FieldContainer::getField()", VX_BAD_INDEX, "Bad field index!");
  return nullptr;
}

VXint64 FieldContainer::getField(const Field* field) const {
  const auto found = std::find(_fields.begin(), _fields.end(), field);
  return found == _fields.end() ? -1 : static_cast<VXint64>(found - _fields.begin());
}

InputConnectorField* FieldContainer::getInputConnectorField(VXint64 index) const {
  return connectorFieldAt(_inputConnectorFields, index, "FieldContainer::getInputConnectorField()");
}

OutputConnectorField* FieldContainer::getOutputConnectorField(VXint64 index) const {
  return connectorFieldAt(_outputConnectorFields, index, "FieldContainer::getOutputConnectorField()");
}

// Values --------------------------------------------------------------------------------------------------------------

std::string FieldContainer::getValue(const std::string& name) const {
  const TraceFrame trace("source/vxFieldContainer:FieldContainer::getValue()");
  const std::size_t index = _find(name);
  if (index < _fields.size()) return _fields[index]->getStringValue();
  report(VX_WARNING, "FieldContainer::getValue()", VX_BAD_PARAMETER, "Field name not found, returning empty string!");
  return {};
}

std::string FieldContainer::getValue(VXint64 index) const {
  const TraceFrame trace("source/vxFieldContainer:FieldContainer::getValue()");
  if (_isIndex(index)) return _entry(static_cast<std::size_t>(index)).getStringValue();
  report(VX_WARNING, "FieldContainer::getValue()", VX_BAD_INDEX, "Bad field index, returning empty string!");
  return {};
}

void FieldContainer::setValue(const std::string& name, const std::string& value) {
  const TraceFrame trace("source/vxFieldContainer:FieldContainer::setValue()");
  const std::size_t index = _find(name);
  if (index < _fields.size()) {
    _fields[index]->setStringValue(value);
  } else {
    report(VX_WARNING, "FieldContainer::setValue()", VX_BAD_INDEX, "Bad field name, value not set!");
  }
}

void FieldContainer::setValue(VXint64 index, const std::string& value) {
  const TraceFrame trace("source/vxFieldContainer:FieldContainer::setValue()");
  if (_isIndex(index)) {
    _entry(static_cast<std::size_t>(index)).setStringValue(value);
  } else {
    report(VX_WARNING, "FieldContainer::setValue()", VX_BAD_INDEX, "Bad field index, value not set!");
  }
}

void FieldContainer::setValue(const std::string& name, VXint64 value) { setValue(name, std::to_string(value)); }

// Attachments ---------------------------------------------------------------------------------------------------------

void FieldContainer::activateAttachments() {
  const TraceFrame trace("source/vxFieldContainer:FieldContainer::activateAttachments()");
  for (std::size_t i = 0; i < _fields.size(); ++i) _entry(i).activateAttachments();
}

void FieldContainer::deactivateAttachments() {
  const TraceFrame trace("source/vxFieldContainer:FieldContainer::deactivateAttachments()");
  for (std::size_t i = 0; i < _fields.size(); ++i) _entry(i).deactivateAttachments();
}

std::ostream& operator<<(std::ostream& stream, const FieldContainer& container) {
  const char* separator = "";
  for (const Field* const field : container._fields) {
    stream << separator;
    if (field) {
      stream << *field;
    } else {
      stream << "<noValidField>";
    }
    separator = "\n";
  }
  return stream;
}

}  // namespace vx
