// Who hears of a field: how sensors and other fields are attached and detached.

#include "vxAttachGuards.h"
#include "vxField.h"
#include "vxTraceBuffer.h"

#include <algorithm>

namespace vx {

namespace {

template <class T>
bool contains(const std::vector<T*>& entries, const T* entry) {
  return std::find(entries.begin(), entries.end(), entry) != entries.end();
}

// A field of a list in order of attachment, or null.
Field* fieldAt(const std::vector<Field*>& fields, unsigned int index) {
  return index < fields.size() ? fields[index] : nullptr;
}

// Calls `detach` with the last entry until none is left. An entry that the other side doesn't know, as in the copy of
// an attached field, is not taken away by it; it is dropped here, since the loop would never end.
template <class T, class Detach>
void detachFromTheEnd(std::vector<T*>& entries, Detach&& detach) {
  while (!entries.empty()) {
    const std::size_t count = entries.size();
    detach(entries.back());
    if (entries.size() >= count) entries.pop_back();
  }
}

}  // namespace

void Field::attachFieldSensor(FieldSensor* sensor) {
  const TraceFrame trace("source/vxField:Field::attachFieldSensor()");
  if (attachGuards.fieldAttachesSensor || !sensor) return;
  if (contains(_sensors, sensor)) return;
  _sensors.push_back(sensor);
  const AttachGuardScope guard(attachGuards.fieldAttachesSensor);
  sensor->attachField(this);
}

void Field::detachFieldSensor(FieldSensor* sensor) {
  const TraceFrame trace("source/vxField:Field::detachFieldSensor()");
  if (attachGuards.fieldDetachesSensor || !sensor) return;
  for (std::size_t i = 0; i < _sensors.size();) {
    if (_sensors[i] != sensor) {
      ++i;
      continue;
    }
    _sensors.erase(_sensors.begin() + static_cast<std::ptrdiff_t>(i));
    const AttachGuardScope guard(attachGuards.fieldDetachesSensor);
    sensor->detachField();
  }
}

void Field::detachFieldSensors() {
  const TraceFrame trace("source/vxField:Field::detachFieldSensors()");
  detachFromTheEnd(_sensors, [this](FieldSensor* sensor) { detachFieldSensor(sensor); });
}

void Field::attachField(Field* destination, VXint16 flag) {
  const TraceFrame trace("source/vxField:Field::attachField()");
  if (!destination) return;
  const auto found = std::find(_destinations.begin(), _destinations.end(), destination);
  if (found != _destinations.end()) {
    _copyValueFlags[static_cast<std::size_t>(found - _destinations.begin())] = flag;
    return;
  }
  const std::size_t count = _destinations.size();
  try {
    _destinations.push_back(destination);
    _touchOriginFlags.push_back(flag == 0 ? 1 : 0);
    _copyValueFlags.push_back(flag == 0 ? 0 : 1);
    destination->attachSourceField(this);
  } catch (...) {
    _destinations.resize(count);
    _touchOriginFlags.resize(count);
    _copyValueFlags.resize(count);
    throw;
  }
  if (flag != 0) destination->setStringValue(getStringValue());
}

void Field::detachField(Field* destination, VXint16 flag) {
  const TraceFrame trace("source/vxField:Field::detachField()");
  if (!destination) return;
  const auto found = std::find(_destinations.begin(), _destinations.end(), destination);
  if (found == _destinations.end()) return;
  const auto offset = found - _destinations.begin();
  const auto index = static_cast<std::size_t>(offset);
  if (flag != 0 && _copyValueFlags[index] != 0 && _touchOriginFlags[index] != 0) {
    _copyValueFlags[index] = 0;
    return;
  }
  _destinations.erase(found);
  _copyValueFlags.erase(_copyValueFlags.begin() + offset);
  _touchOriginFlags.erase(_touchOriginFlags.begin() + offset);
  destination->detachSourceField(this);
}

void Field::attachSourceField(Field* source) {
  if (source && !contains(_sources, source)) _sources.push_back(source);
}

void Field::detachSourceField(Field* source) {
  if (source) _sources.erase(std::remove(_sources.begin(), _sources.end(), source), _sources.end());
}

void Field::detachSourceFields() {
  const TraceFrame trace("source/vxField:Field::detachSourceFields()");
  detachFromTheEnd(_sources, [this](Field* source) { source->detachField(this, 0); });
}

void Field::detachDestinationFields() {
  const TraceFrame trace("source/vxField:Field::detachDestinationFields()");
  detachFromTheEnd(_destinations, [this](Field* destination) { detachField(destination, 0); });
}

void Field::detachAllFields() {
  const TraceFrame trace("source/vxField:Field::detachAllFields()");
  detachDestinationFields();
  detachSourceFields();
}

unsigned int Field::getNumDestinationFields() { return static_cast<unsigned int>(_destinations.size()); }

Field* Field::getDestinationField(unsigned int index) { return fieldAt(_destinations, index); }

unsigned int Field::getNumSourceFields() { return static_cast<unsigned int>(_sources.size()); }

Field* Field::getSourceField(unsigned int index) { return fieldAt(_sources, index); }

}  // namespace vx
