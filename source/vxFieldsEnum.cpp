// The field of a choice.

#include "vxCLocale.h"
#include "vxEnumField.h"
#include "vxStringConversion.h"
#include "vxTraceBuffer.h"

#include <cstdlib>
#include <limits>

namespace vx {

VX_CLASS_SOURCE(EnumField, "Field")

namespace {

constexpr unsigned int maxNumItems = std::numeric_limits<int>::max();
constexpr char setterLabel[] = "EnumField::setStringValue()";

}  // namespace

EnumField::EnumField() : EnumField(std::string(), static_cast<const char* const*>(nullptr), 0, nullptr) {}

EnumField::EnumField(const std::string& name) : TValueField(name) {
  report(VX_FATAL, "EnumField::EnumField( )", VX_MISUSED_INTERFACE,
         "Default constructor of EnumField must not be called.");
}

EnumField::EnumField(const std::string& name, const char* const* items, unsigned int numItems, int* value)
    : TValueField(name, value) {
  checkFatal(items || numItems == 0);
  _copyItems(numItems, [items](unsigned int i) { return std::string(items[i] ? items[i] : ""); });
}

EnumField::EnumField(const std::string& name, const std::string* items, unsigned int numItems, int* value)
    : TValueField(name, value) {
  checkFatal(items || numItems == 0);
  _copyItems(numItems, [items](unsigned int i) -> const std::string& { return items[i]; });
}

EnumField::EnumField(const std::string& name, const std::vector<std::string>& items) : TValueField(name, nullptr) {
  checkFatal(items.size() <= maxNumItems);
  _copyItems(static_cast<unsigned int>(items.size()),
             [&items](unsigned int i) -> const std::string& { return items[i]; });
}

EnumField::~EnumField() { _freeItems(); }

template <class GetItem>
void EnumField::_copyItems(unsigned int numItems, GetItem getItem) {
  const TraceFrame trace("source/vxFields:EnumField::EnumField()");
  checkFatal(numItems <= maxNumItems);
  try {
    _items = new char*[numItems];
    for (; _numItems < numItems; ++_numItems) _items[_numItems] = StringConversion::newString(getItem(_numItems));
  } catch (const std::bad_alloc&) {
    _freeItems();
    throwFatal(VX_NO_MEMORY);
  } catch (...) {
    // newString() has reported it.
    _freeItems();
    throw;
  }
}

void EnumField::_freeItems() noexcept {
  while (_numItems > 0) StringConversion::deleteString(_items[--_numItems]);
  delete[] _items;
  _items = nullptr;
}

int EnumField::_stripItemIndex(std::string& text) {
  const CLocaleScope cLocale;
  const char* const begin = text.c_str();
  char* end = nullptr;
  const unsigned long index = std::strtoul(begin, &end, 10);
  if (end == begin || *end != ':') return -1;
  text.erase(0, static_cast<std::size_t>(end - begin) + 1);
  return index <= static_cast<unsigned long>(std::numeric_limits<int>::max()) ? static_cast<int>(index) : -1;
}

bool EnumField::_chooseItem(const std::string& item, int index) {
  for (unsigned int i = 0; i < _numItems; ++i) {
    if (item != _items[i]) continue;
    const int position = static_cast<int>(i);
    _getValue() = position;
    if (index >= 0 && index != position) {
      reportComposed(VX_WARNING, setterLabel, VX_BAD_PARAMETER, [&] {
        return "Value " + item + " moved from " + std::to_string(index) + " to " + std::to_string(position);
      });
    }
    notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
    return true;
  }
  return false;
}

void EnumField::setStringValue(const std::string& value) {
  const TraceFrame trace("source/vxFields:EnumField::setStringValue()");
  _getValue();  // a field without a value has nothing to say of the text
  std::string item = value;
  const int index = _stripItemIndex(item);
  if (_chooseItem(item, index)) return;
  if (!_isInRange(index)) {
    report(VX_WARNING, setterLabel, VX_BAD_PARAMETER, "Bad field value, call is ignored!");
    return;
  }
  reportComposed(VX_WARNING, setterLabel, VX_BAD_PARAMETER,
                 [&] { return "Value " + item + " not found, using index " + std::to_string(index); });
  setEnumValue(index);
}

void EnumField::setStringValueDefaulted(const std::string& value, int defaultIndex) {
  const TraceFrame trace("source/vxFields:EnumField::setStringValueDefaulted()");
  _getValue();
  std::string item = value;
  const int index = _stripItemIndex(item);
  if (_chooseItem(item, index)) return;
  if (!_isInRange(defaultIndex)) {
    report(VX_WARNING, "EnumField::setStringValueDefaulted()", VX_BAD_PARAMETER, "Bad default item, call is ignored!");
    return;
  }
  setEnumValue(defaultIndex);
}

std::string EnumField::getStringValue() const {
  const TraceFrame trace("source/vxFields:EnumField::getStringValue()");
  const int value = _getValue();
  if (_numItems == 0) return std::string();
  return getStringValue(_isInRange(value) ? static_cast<unsigned int>(value) : 0U);
}

std::string EnumField::getStringValue(unsigned int index) const { return getItemText(index); }

const char* EnumField::getItemText(unsigned int index) const {
  checkFatal(index < _numItems);
  checkFatal(index < maxNumItems);
  checkFatal(_items != nullptr);
  return _items[index];
}

VXint64 EnumField::isValidValue() { return _valuePtr && _isInRange(*_valuePtr) ? 1 : 0; }

}  // namespace vx
