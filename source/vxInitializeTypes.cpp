// Start-up of the type table: the ten standard types and their slots.

#include <cstring>
#include <limits>

#include "vxStandardTypeTable.h"
#include "vxTraceBuffer.h"
#include "vxTypeInfos.h"
#include "vxTypeTable.h"

namespace {

// More types than anyone registers: the arrays stay where they are.
constexpr VXint32 numReservedTypes = 2048;

bool areTypesInitialized = false;

// The record of a standard type, made at the first call.
template <VXDataType number, class T>
VXTypeInfos& standardRecord() {
  static const T smallest = std::numeric_limits<T>::lowest();
  static const T largest = std::numeric_limits<T>::max();
  static const T zero = 0;
  static VXTypeInfos record;
  static const int isFilled = [] {
    const vx::StandardType& type = vx::standardTypes[number];
    const unsigned char* const address = reinterpret_cast<const unsigned char*>(&zero);
    VXTypeSetDefaultFunctionPointers(&record);
    return VXTypeInfosInit(&record, sizeof(T), type.name, static_cast<double>(smallest), static_cast<double>(largest),
                           &smallest, &largest, &zero, type.structInfoString, 1, number, &address,
                           type.numGoodCastTos, type.goodCastTos);
  }();
  static_cast<void>(isFilled);
  return record;
}

}  // namespace

int VXInitializeTypes(void) {
  const vx::TraceFrame trace("source/vxTypeInfos:VXInitializeTypes()");
  vx::typeTable.reserve(numReservedTypes);
  static const bool areSlotsCleared = [] {
    for (VXTypeInfos& slot : VXTypeInfosTable) slot.dataType = -1;
    return true;
  }();
  static_cast<void>(areSlotsCleared);

  VXTypeInfos* const records[vx::numStandardTypes] = {
      &standardRecord<VXint8Type, VXint8>(),       &standardRecord<VXuint8Type, VXuint8>(),
      &standardRecord<VXint16Type, VXint16>(),     &standardRecord<VXuint16Type, VXuint16>(),
      &standardRecord<VXint32Type, VXint32>(),     &standardRecord<VXuint32Type, VXuint32>(),
      &standardRecord<VXfloatType, VXfloat>(),     &standardRecord<VXdoubleType, VXdouble>(),
      &standardRecord<VXldoubleType, VXldouble>(), &standardRecord<VXint64Type, VXint64>()};
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
