// Operations of a type that need no more than its record.

#include "vxComponentCodes.h"
#include "vxErrorOutput.h"
#include "vxMemory.h"

#include <algorithm>

namespace {

using vx::bytesAt;
using vx::CallLabel;
using vx::forEachComponent;

constexpr char badSource[] = "Invalid infos or p passed; ignoring call and returning false.";
constexpr char badResult[] = "Invalid infos or q passed; ignoring call and returning false.";
constexpr char badInfos[] = "Invalid infos passed; ignoring call.";
constexpr char badOther[] = "Invalid otherInfos, myInfos, otherData or myData passed; ignoring call.";
constexpr char badOtherInEqual[] = "Invalid otherInfos, myInfos, otherData or myData passed; returning 0.";
constexpr char badOtherInOrder[] = "Invalid myInfos, myData, otherInfos or otherData passed; returning 0.";

// Whether all pointers are set; if not, that is reported.
template <class... Pointers>
bool areSet(const CallLabel& label, const char* reason, Pointers... pointers) {
  if ((... && (pointers != nullptr))) return true;
  vx::report(VX_ERROR, label, VX_BAD_POINTER, reason);
  return false;
}

template <class Operand, class Combine>
void combineComponents(const CallLabel& label, const VXTypeInfos* infos, const unsigned char* voxel, Operand operand,
                       unsigned char* result, Combine combine) {
  if (!areSet(label, badInfos, infos, voxel, result)) return;
  forEachComponent(*infos, [&](char code, VXuint32 offset) {
    const int mine = VXTypeGetIntComponent(code, bytesAt(voxel, offset));
    VXTypeSetIntComponent(code, combine(mine, operand(code, offset)), bytesAt(result, offset));
    return true;
  });
}

// The operand of a binary operation: one number for all components, or the components of a voxel.
auto number(int value) {
  return [value](char, VXuint32) { return value; };
}
auto componentsOf(const unsigned char* voxel) {
  return [voxel](char code, VXuint32 offset) { return VXTypeGetIntComponent(code, bytesAt(voxel, offset)); };
}

int andBits(int a, int b) { return a & b; }
int orBits(int a, int b) { return a | b; }
int xorBits(int a, int b) { return a ^ b; }

template <class Combine>
void combineVoxels(const CallLabel& label, const VXTypeInfos* infos, const unsigned char* a, const unsigned char* b,
                   unsigned char* result, Combine combine) {
  if (areSet(label, badInfos, infos, a, b, result))
    combineComponents(label, infos, a, componentsOf(b), result, combine);
}

bool isSameType(const VXTypeInfos& a, const VXTypeInfos& b) {
  // Records that are not registered share a number, but that doesn't make them one type.
  return &a == &b || (a.dataType == b.dataType && a.dataType >= 0);
}

void cast(const VXTypeInfos& from, const unsigned char* source, const VXTypeInfos& to, unsigned char* result) {
  if (isSameType(from, to)) {
    std::memmove(result, source, to.typeSize);
    return;
  }
  unsigned char copy[VX_MAX_TYPE_SIZE];
  if (source == result) {
    // What is written first may lie over what is read later.
    std::memcpy(copy, source, std::min<std::size_t>(from.typeSize, sizeof copy));
    source = copy;
  }
  const VXuint32 numComponents = std::min<VXuint32>({from.numComponents, to.numComponents, VX_MAX_TYPE_COMPONENTS});
  for (VXuint32 i = 0; i < numComponents; ++i) {
    const double value = VXTypeGetDoubleComponent(from.structInfoString[i], bytesAt(source, from.componentOffsets[i]));
    VXTypeSetDoubleComponent(to.structInfoString[i], value, bytesAt(result, to.componentOffsets[i]));
  }
}

short compare(const CallLabel& label, const char* reason, const VXTypeInfos* myInfos, const unsigned char* myData,
              const VXTypeInfos* otherInfos, const unsigned char* otherData, VXTypeTypeTypeTest VXTypeInfos::*test) {
  if (!areSet(label, reason, otherInfos, myInfos, otherData, myData)) return 0;
  const vx::MemoryPtr<unsigned char> converted(VXTypeInfosCreateBuffer(myInfos));
  if (!converted) return 0;
  // The other type may have fewer components.
  std::memset(converted.get(), 0, myInfos->physicalSize);
  cast(*otherInfos, otherData, *myInfos, converted.get());
  return (myInfos->*test)(myData, converted.get());
}

void combine(const CallLabel& label, const VXTypeInfos* myInfos, const unsigned char* myData,
             const VXTypeInfos* otherInfos, const unsigned char* otherData, unsigned char* result,
             VXTypeTypeTypeOp VXTypeInfos::*operation) {
  if (!areSet(label, badOther, otherInfos, myInfos, otherData, myData, result)) return;
  unsigned char mine[VX_MAX_TYPE_SIZE];
  if (myData == result) {
    // The cast below overwrites it.
    std::memcpy(mine, myData, std::min<std::size_t>(myInfos->typeSize, sizeof mine));
    myData = mine;
  }
  cast(*otherInfos, otherData, *myInfos, result);
  (myInfos->*operation)(myData, result, result);
}

}  // namespace

// Casts

short VXTypeCastToBool(const VXTypeInfos* infos, const unsigned char* p) {
  if (!areSet("VXTypeCastToBool", badSource, infos, p)) return 0;
  return std::any_of(p, p + infos->typeSize, [](unsigned char byte) { return byte != 0; });
}

int VXTypeCastToInt(const VXTypeInfos* infos, const unsigned char* p) {
  return areSet("VXTypeCastToInt", badSource, infos, p) ? VXTypeGetIntComponent(infos->structInfoString[0], p) : 0;
}

VXldouble VXTypeCastToDouble(const VXTypeInfos* infos, const unsigned char* p) {
  return areSet("VXTypeCastToDouble", badSource, infos, p) ? VXTypeGetDoubleComponent(infos->structInfoString[0], p)
                                                           : 0;
}

void VXTypeCastFromBool(const VXTypeInfos* infos, short value, unsigned char* q) {
  if (areSet("VXTypeCastFromBool", badResult, infos, q)) VXTypeSetAllIntComponents(infos, value, q);
}

void VXTypeCastFromInt(const VXTypeInfos* infos, int value, unsigned char* q) {
  if (areSet("VXTypeCastFromInt", badResult, infos, q)) VXTypeSetAllIntComponents(infos, value, q);
}

void VXTypeCastFromDouble(const VXTypeInfos* infos, double value, unsigned char* q) {
  if (areSet("VXTypeCastFromDouble", badResult, infos, q)) VXTypeSetAllDoubleComponents(infos, value, q);
}

void VXTypeCastToOtherType(const VXTypeInfos* myInfos, const unsigned char* myData, const VXTypeInfos* otherInfos,
                           unsigned char* otherData) {
  if (areSet("VXTypeCastToOtherType", badOther, otherInfos, myInfos, otherData, myData)) {
    cast(*myInfos, myData, *otherInfos, otherData);
  }
}

// Bits

void VXTypeBinaryAndInt(const VXTypeInfos* infos, const unsigned char* voxel, int value, unsigned char* result) {
  combineComponents("VXTypeBinaryAndInt", infos, voxel, number(value), result, andBits);
}

void VXTypeBinaryOrInt(const VXTypeInfos* infos, const unsigned char* voxel, int value, unsigned char* result) {
  combineComponents("VXTypeBinaryOrInt", infos, voxel, number(value), result, orBits);
}

void VXTypeBinaryXorInt(const VXTypeInfos* infos, const unsigned char* voxel, int value, unsigned char* result) {
  combineComponents("VXTypeBinaryXorInt", infos, voxel, number(value), result, xorBits);
}

void VXTypeBinaryAnd(const VXTypeInfos* infos, const unsigned char* a, const unsigned char* b, unsigned char* result) {
  combineVoxels("VXTypeBinaryAnd", infos, a, b, result, andBits);
}

void VXTypeBinaryOr(const VXTypeInfos* infos, const unsigned char* a, const unsigned char* b, unsigned char* result) {
  combineVoxels("VXTypeBinaryOr", infos, a, b, result, orBits);
}

void VXTypeBinaryXor(const VXTypeInfos* infos, const unsigned char* a, const unsigned char* b, unsigned char* result) {
  combineVoxels("VXTypeBinaryXor", infos, a, b, result, xorBits);
}

// Comparison with another type

short VXTypeIsEqualToOtherType(const VXTypeInfos* myInfos, const unsigned char* myData, const VXTypeInfos* otherInfos,
                               const unsigned char* otherData) {
  return compare("VXTypeIsEqualToOtherType", badOtherInEqual, myInfos, myData, otherInfos, otherData,
                 &VXTypeInfos::isEqualToType);
}

short VXTypeIsSmallerThanOtherType(const VXTypeInfos* myInfos, const unsigned char* myData,
                                   const VXTypeInfos* otherInfos, const unsigned char* otherData) {
  return compare("VXTypeIsSmallerThanOtherType", badOtherInOrder, myInfos, myData, otherInfos, otherData,
                 &VXTypeInfos::isSmallerThanType);
}

short VXTypeIsGreaterThanOtherType(const VXTypeInfos* myInfos, const unsigned char* myData,
                                   const VXTypeInfos* otherInfos, const unsigned char* otherData) {
  return compare("VXTypeIsGreaterThanOtherType", badOtherInOrder, myInfos, myData, otherInfos, otherData,
                 &VXTypeInfos::isGreaterThanType);
}

// Arithmetic with another type

void VXTypeMultWithOtherType(const VXTypeInfos* myInfos, const unsigned char* myData, const VXTypeInfos* otherInfos,
                             const unsigned char* otherData, unsigned char* result) {
  combine("VXTypeMultWithOtherType", myInfos, myData, otherInfos, otherData, result, &VXTypeInfos::multWithType);
}

void VXTypeDivByOtherType(const VXTypeInfos* myInfos, const unsigned char* myData, const VXTypeInfos* otherInfos,
                          const unsigned char* otherData, unsigned char* result) {
  combine("VXTypeDivByOtherType", myInfos, myData, otherInfos, otherData, result, &VXTypeInfos::divByType);
}

void VXTypeAddOtherType(const VXTypeInfos* myInfos, const unsigned char* myData, const VXTypeInfos* otherInfos,
                        const unsigned char* otherData, unsigned char* result) {
  combine("VXTypeAddOtherType", myInfos, myData, otherInfos, otherData, result, &VXTypeInfos::plusType);
}

void VXTypeSubtractOtherType(const VXTypeInfos* myInfos, const unsigned char* myData, const VXTypeInfos* otherInfos,
                             const unsigned char* otherData, unsigned char* result) {
  combine("VXTypeSubtractOtherType", myInfos, myData, otherInfos, otherData, result, &VXTypeInfos::minusType);
}

void VXTypePowerOfOtherType(const VXTypeInfos* myInfos, const unsigned char* myData, const VXTypeInfos* otherInfos,
                            const unsigned char* otherData, unsigned char* result) {
  combine("VXTypePowerOfOtherType", myInfos, myData, otherInfos, otherData, result, &VXTypeInfos::powerOfType);
}
