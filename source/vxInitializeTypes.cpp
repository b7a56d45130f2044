// Start-up of the type table: the ten standard types and their slots.

#include "vxStandardTypeTable.h"
#include "vxStdTypeInfos.h"
#include "vxTraceBuffer.h"
#include "vxTypeTable.h"
#include "vxUtilsAPI.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <type_traits>
#include <utility>

namespace {

// More types than anyone registers: the arrays stay where they are.
constexpr VXint32 numReservedTypes = 2048;

bool areTypesInitialized = false;

// The record of a standard type, made by the first call that has the memory for it; null without.
template <class T>
VXTypeInfos* standardRecord() {
  if (VXTStdTypeInfos<T>::_numInstances == 0) static_cast<void>(VXTStdTypeInfos<T>());
  return VXTStdTypeInfos<T>::_myInfos;
}

template <class T>
void releaseRecord() {
  static_assert(std::is_trivially_destructible_v<VXTypeInfos>);
  VXFree(std::exchange(VXTStdTypeInfos<T>::_myInfos, nullptr));
  VXTStdTypeInfos<T>::_numInstances = 0;
}

// The types go with the code of the library, behind the destructors of all static objects.
__attribute__((destructor(101))) void releaseTypes() {
  areTypesInitialized = false;
  vx::typeTable.release();
#define VX_RELEASE_STANDARD_RECORD(T, number) releaseRecord<T>();
  VX_FOR_EACH_STANDARD_TYPE(VX_RELEASE_STANDARD_RECORD)
#undef VX_RELEASE_STANDARD_RECORD
}

}  // namespace

int VXInitializeTypes(void) {
  const vx::TraceFrame trace("source/vxTypeInfos:VXInitializeTypes()");
  static const bool areSlotsCleared = [] {
    for (VXTypeInfos& slot : VXTypeInfosTable) slot.dataType = -1;
    return true;
  }();
  static_cast<void>(areSlotsCleared);

  // Numbers are positions in the table, so the types are registered together or not at all: what the first lack of
  // memory left undone, the next call does.
#define VX_STANDARD_RECORD(T, number) standardRecord<T>(),
  VXTypeInfos* const records[] = {VX_FOR_EACH_STANDARD_TYPE(VX_STANDARD_RECORD)};
#undef VX_STANDARD_RECORD
  static_assert(std::size(records) == vx::numStandardTypes);
  const bool haveRecords = std::find(std::begin(records), std::end(records), nullptr) == std::end(records);
  if (!haveRecords || !vx::typeTable.reserve(numReservedTypes)) return areTypesInitialized;

  bool hasRegistered = false;
  for (VXTypeInfos* const record : records) hasRegistered = VXRegisterTypeInfos(record) || hasRegistered;
  if (hasRegistered && !areTypesInitialized) {
    for (VXDataType slot = 0; slot < vx::numStandardTypes; ++slot) {
      std::memcpy(&VXTypeInfosTable[slot], records[slot], sizeof(VXTypeInfos));
    }
  }
  // A later call finds all of them registered.
  areTypesInitialized = areTypesInitialized || hasRegistered;
  return areTypesInitialized;
}

int VXAreTypesInitialized(void) { return areTypesInitialized; }

void VXDestroyTypes(void) {}
