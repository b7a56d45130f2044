// Names, sizes, ranges and component codes of voxel types.

#include "vxDataTypes.h"

#include "vxComponentCodes.h"
#include "vxStandardTypeTable.h"
#include "vxTypeTable.h"

#include <cstring>

namespace {

// A member of a type's record, or the value for an invalid number.
template <class T>
T memberOf(VXDataType dataType, T VXTypeInfos::*member, T invalid) {
  return vx::typeTable.contains(dataType) ? vx::typeTable.records[dataType]->*member : invalid;
}

int hasProperty(VXDataType dataType, VXTypePropBits property) {
  return VXTypePropBitsTest(memberOf(dataType, &VXTypeInfos::propertyBits, VXTypeHasNoProperties), property);
}

// Sizes of the physical types: the standard types, then the carriers.
constexpr VXuint32 physicalSizes[] = {1, 1, 2, 2, 4, 4, 4, 8, 8, 8, 4, 8, 12, 16, 24, 32, 64, 128, 256, 512};
constexpr VXDataType numPhysicalTypes = sizeof physicalSizes / sizeof physicalSizes[0];

// The type of code "b" follows the size of a voxel of type 1.
bool isWideBool(char code) { return code == 'b' && VXSizeOf(VXuint8Type) != 1; }

void write(VXint32* output, VXint32 value) {
  if (output) *output = value;
}

}  // namespace

// Names and numbers

VXint32 VXNumDataTypes(void) { return vx::typeTable.numTypes; }

const char** VXDataTypeNames(void) { return vx::typeTable.names; }

const char* VXNameFromDataType(VXDataType dataType) {
  return vx::typeTable.contains(dataType) ? vx::typeTable.names[dataType] : "";
}

VXDataType VXDataTypeFromName(const char* name) {
  if (!name) return -1;
  for (VXDataType dataType = 0; dataType < vx::typeTable.numTypes; ++dataType) {
    if (std::strcmp(vx::typeTable.names[dataType], name) == 0) return dataType;
  }
  return -1;
}

// Ranges and sizes

double VXDataTypeMin(VXDataType dataType) { return memberOf(dataType, &VXTypeInfos::typeMinDbl, 0.0); }

double VXDataTypeMax(VXDataType dataType) { return memberOf(dataType, &VXTypeInfos::typeMaxDbl, 0.0); }

VXuint32 VXSizeOf(VXDataType dataType) { return memberOf(dataType, &VXTypeInfos::physicalSize, 0U); }

VXuint32 VXSizeOfRegisteredType(VXDataType dataType) { return memberOf(dataType, &VXTypeInfos::typeSize, 0U); }

VXuint32 VXSizeOfPhysicalType(VXDataType physicalType) {
  return physicalType >= 0 && physicalType < numPhysicalTypes ? physicalSizes[physicalType] : 0;
}

VXDataType VXGetPhysicalDataType(VXDataType dataType) { return memberOf(dataType, &VXTypeInfos::physicalType, -1); }

VXDataType VXGetCarrierTypeForSize(VXuint64 size) {
  if (size == 0) return -1;
  for (VXDataType carrier = vx::numStandardTypes; carrier < numPhysicalTypes; ++carrier) {
    if (size <= physicalSizes[carrier]) return carrier;
  }
  return -1;
}

// Classification

int VXIsValidType(VXDataType dataType) { return vx::typeTable.contains(dataType); }

int VXIsStandardType(VXDataType dataType) { return dataType >= 0 && dataType < vx::numStandardTypes; }

int VXIsSigned(VXDataType dataType) { return hasProperty(dataType, VXTypeIsSignedType); }

int VXIsIntType(VXDataType dataType) { return hasProperty(dataType, VXTypeIsIntegerType); }

int VXIsFloatType(VXDataType dataType) { return hasProperty(dataType, VXTypeIsFloatingPointType); }

// Component codes

const char* VXGetCDataTypeNameForCharCode(char code) {
  const vx::ComponentCode* const row = vx::findComponentCode(code);
  return row ? row->cName : "";
}

const char* VXGetVXDataTypeNameForCharCode(char code) {
  const vx::ComponentCode* const row = vx::findComponentCode(code);
  if (!row) return "";
  return isWideBool(code) ? vx::standardTypes[VXuint16Type].name : row->vxName;
}

VXDataType VXGetVXDataTypeForCharCode(char code) {
  const vx::ComponentCode* const row = vx::findComponentCode(code);
  if (!row) return -1;
  return isWideBool(code) ? static_cast<VXDataType>(VXuint16Type) : row->dataType;
}

VXuint32 VXTypeComponentSize(char code) {
  const vx::ComponentCode* const row = vx::findComponentCode(code);
  return row ? row->size : 0;
}

int VXTypeGetComponentProperties(char code, VXint32* isSigned, VXint32* isInteger, VXint32* isFloat, VXint32* isLong) {
  const vx::ComponentCode* const row = vx::findComponentCode(code);
  write(isSigned, row ? row->isSigned : 0);
  write(isInteger, row ? row->isInteger : 0);
  write(isFloat, row ? row->isFloat : 0);
  write(isLong, row ? row->isLong : 0);
  return row ? 1 : 0;
}
