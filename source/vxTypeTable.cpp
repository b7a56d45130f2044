#include "vxTypeTable.h"

#include "vxUtilsAPI.h"

#include <algorithm>
#include <limits>

namespace vx {

TypeTable typeTable = {nullptr, nullptr, 0, 0};

namespace {

template <class T>
bool resize(T*& array, VXint32 numEntries) noexcept {
  void* const memory = VXRealloc(array, static_cast<VXuint64>(numEntries) * sizeof(T), VX_RETURN_NULL);
  if (memory) array = static_cast<T*>(memory);
  return memory != nullptr;
}

}  // namespace

bool TypeTable::reserve(VXint32 numEntries) noexcept {
  if (numEntries <= capacity) return true;
  // If only one of the two grows, that does no harm: the capacity is what counts.
  if (!resize(records, numEntries) || !resize(names, numEntries)) return false;
  capacity = numEntries;
  return true;
}

VXDataType TypeTable::append(VXTypeInfos* infos) noexcept {
  constexpr VXint32 largest = std::numeric_limits<VXint32>::max();
  if (numTypes == capacity) {
    const VXint32 grown = capacity > largest / 2 ? largest : std::max(2 * capacity, 16);
    if (!reserve(grown)) return -1;
  }
  records[numTypes] = infos;
  names[numTypes] = infos->name;
  return numTypes++;
}

void TypeTable::release() noexcept {
  VXFree(records);
  VXFree(names);
  *this = {nullptr, nullptr, 0, 0};
}

}  // namespace vx
