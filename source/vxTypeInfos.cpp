// Records of voxel types: filling them, registering them, and asking for them.

#include "vxTypeInfos.h"

#include "vxComponentCodes.h"
#include "vxErrorOutput.h"
#include "vxStandardTypeTable.h"
#include "vxTraceBuffer.h"
#include "vxTypeTable.h"

#include <cassert>
#include <cstring>
#include <limits>

namespace {

// Length of a text, 0 for null; longer ones count as one more than the limit.
std::size_t boundedLength(const char* text, std::size_t limit) { return text ? ::strnlen(text, limit + 1) : 0; }

// What all components of a type have in common.
struct CommonProperties {
  bool isSigned = true, isInteger = true, isFloat = true, isLong = true;

  explicit CommonProperties(const char* structInfoString) {
    for (const char* code = structInfoString; *code; ++code) {
      VXint32 componentIsSigned, componentIsInteger, componentIsFloat, componentIsLong;
      VXTypeGetComponentProperties(*code, &componentIsSigned, &componentIsInteger, &componentIsFloat, &componentIsLong);
      isSigned = isSigned && componentIsSigned;
      isInteger = isInteger && componentIsInteger;
      isFloat = isFloat && componentIsFloat;
      isLong = isLong && componentIsLong;
    }
  }
};

// The standard type that a basic type is stored in, -1 for none.
VXDataType physicalTypeOfBasicType(const CommonProperties& common, VXuint64 size) {
  if (!common.isSigned) {
    if (!common.isInteger) return -1;
    return size == 1 ? VXuint8Type : size == 2 ? VXuint16Type : size == 4 ? VXuint32Type : -1;
  }
  if (!common.isInteger) {
    return size == 4 ? VXfloatType : size == 8 ? (common.isLong ? VXldoubleType : VXdoubleType) : -1;
  }
  if (size == 1) return VXint8Type;
  if (size == 2) return VXint16Type;
  if (size == 4 && !common.isLong) return VXint32Type;
  return size == 8 && common.isLong ? static_cast<VXDataType>(VXint64Type) : -1;
}

// Whether every component lies within the voxel, and the voxel within its carrier. A record that was filled by hand may
// say nothing of its size.
[[maybe_unused]] bool areSizesConsistent(const VXTypeInfos& infos) {
  if (infos.typeSize == 0 || !infos.structInfoString) return true;
  bool areConsistent = infos.typeSize <= infos.physicalSize;
  vx::forEachComponent(infos, [&](char code, VXuint32 offset) {
    areConsistent = areConsistent && VXuint64{offset} + VXTypeComponentSize(code) <= infos.typeSize;
    return areConsistent;
  });
  return areConsistent;
}

}  // namespace

int VXTypeInfosInit(VXTypeInfos* infos, VXuint64 size, const char* name, double minDouble, double maxDouble,
                    const void* minPtr, const void* maxPtr, const void* defaultPtr, const char* structInfoString,
                    int isBasicType, VXDataType rangeAndPrecisionEquivalent,
                    const unsigned char* const* componentAddresses, VXuint64 numGoodCastTos,
                    const char* const* goodCastTos) {
  const vx::TraceFrame trace("source/vxTypeInfos:VXTypeInfosInit()");
  const std::size_t nameLength = boundedLength(name, VX_MAX_TYPE_NAME_LENGTH);
  const std::size_t numComponents = boundedLength(structInfoString, VX_MAX_TYPE_COMPONENTS);
  if (!infos || nameLength == 0 || nameLength > VX_MAX_TYPE_NAME_LENGTH) return 0;
  if (numComponents == 0 || numComponents > VX_MAX_TYPE_COMPONENTS) return 0;
  if (!VXIsStandardType(rangeAndPrecisionEquivalent)) return 0;
  if (numGoodCastTos > std::numeric_limits<VXuint32>::max()) return 0;
  if (!componentAddresses) {
    vx::report(VX_FATAL, "VXTypeInfosInit", VX_BAD_POINTER,
               "Could not determine component addresses. Not registering types.");
    return 0;
  }
  const CommonProperties common(structInfoString);
  const VXDataType physicalType = isBasicType ? physicalTypeOfBasicType(common, size) : VXGetCarrierTypeForSize(size);
  if (physicalType < 0) return 0;

  infos->numComponents = static_cast<VXuint32>(numComponents);
  infos->typeSize = static_cast<VXuint32>(size);
  infos->physicalType = physicalType;
  infos->physicalSize = VXSizeOfPhysicalType(physicalType);
  infos->name = name;
  infos->rangeAndPrecisionEquivalent = rangeAndPrecisionEquivalent;
  infos->typeMinDbl = minDouble;
  infos->typeMaxDbl = maxDouble;
  infos->typeMinPtr = static_cast<const unsigned char*>(minPtr);
  infos->typeMaxPtr = static_cast<const unsigned char*>(maxPtr);
  infos->typeDefaultPtr = static_cast<const unsigned char*>(defaultPtr);
  infos->numGoodCastTos = goodCastTos ? static_cast<VXuint32>(numGoodCastTos) : 0;
  infos->goodCastTos = goodCastTos;
  for (std::size_t i = 0; i < VX_MAX_TYPE_COMPONENTS; ++i) {
    infos->componentOffsets[i] =
        i < numComponents ? static_cast<VXuint32>(componentAddresses[i] - componentAddresses[0]) : 0;
  }
  infos->structInfoString = structInfoString;
  infos->dataType = -1;
  infos->propertyBits = VXTypeHasNoProperties;
  const auto add = [&](bool condition, const VXTypePropBits& bits) {
    if (condition) infos->propertyBits = VXTypePropBitsOr(infos->propertyBits, bits);
  };
  add(common.isSigned, VXTypeIsSignedType);
  add(common.isFloat, VXTypeIsFloatingPointType);
  add(common.isInteger, VXTypeIsIntegerType);
  add(isBasicType != 0, VXTypePropBitsOr(VXTypeIsBasicType, VXTypeOnlyStandardTypes));
  VXTypeCorrectPropertyBits(infos);
  return 1;
}

VXint32 VXRegisterTypeInfos(VXTypeInfos* infos) {
  const vx::TraceFrame trace("source/vxTypeInfos:VXRegisterTypeInfos()");
  if (!infos || VXIsRegisteredTypeInfos(infos)) return 0;
  if (!infos->name || !*infos->name) return 0;
  if (VXNumDataTypes() == std::numeric_limits<VXint32>::max()) return 0;
  assert(areSizesConsistent(*infos));
  const VXDataType dataType = vx::typeTable.append(infos);
  if (dataType < 0) return 0;
  infos->dataType = dataType;
  return 1;
}

VXint32 VXIsRegisteredTypeInfos(const VXTypeInfos* infos) {
  for (VXDataType dataType = 0; dataType < vx::typeTable.numTypes; ++dataType) {
    if (vx::typeTable.records[dataType] == infos) return 1;
  }
  return 0;
}

VXint32 VXGetNumRegisteredTypeInfos(void) { return vx::typeTable.numTypes; }

VXTypeInfos* VXTypeInfosAtIdx(VXint32 index) { return VXGetTypeInfosForDataType(index); }

VXTypeInfos* VXGetTypeInfosForDataType(VXDataType dataType) {
  return vx::typeTable.contains(dataType) ? vx::typeTable.records[dataType] : nullptr;
}

VXuint32 VXTypeGetNumComponents(VXDataType dataType) {
  const VXTypeInfos* const infos = VXGetTypeInfosForDataType(dataType);
  return infos ? infos->numComponents : 0;
}

const char* VXTypeGetStructInfoString(VXDataType dataType) {
  const VXTypeInfos* const infos = VXGetTypeInfosForDataType(dataType);
  return infos && infos->structInfoString ? infos->structInfoString : "";
}

VXDataType VXTypeGetBestScalarTypeForTypeComponentChars(const char* chars, int noInt64, int noLongDouble) {
  if (!chars || !*chars) return -1;
  VXDataType best = VXGetVXDataTypeForCharCode(*chars);
  for (const char* code = chars + 1; *code; ++code) {
    const VXDataType next = VXGetVXDataTypeForCharCode(*code);
    if (next < 0) return -1;
    best = VXPromotedPrecision(VXPromotedType(best, next), next);
  }
  const bool isExcluded = (noInt64 && best == VXint64Type) || (noLongDouble && best == VXldoubleType);
  return isExcluded ? static_cast<VXDataType>(VXdoubleType) : best;
}

VXDataType VXTypeGetBestScalarTypeForTypeComponents(VXDataType dataType, int noInt64, int noLongDouble) {
  return VXTypeGetBestScalarTypeForTypeComponentChars(VXTypeGetStructInfoString(dataType), noInt64, noLongDouble);
}
