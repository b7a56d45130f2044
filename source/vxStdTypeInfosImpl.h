/// \file vxStdTypeInfosImpl.h
/// The operations of the standard types, for explicit instantiation.
///
/// Families of operations that differ only in their operands are defined at once by a macro, since the names of their
/// members follow no single scheme. What differs, the arithmetic, is in vxStdTypeArithmetic.h.

#ifndef VX_STD_TYPE_INFOS_IMPL_H
#define VX_STD_TYPE_INFOS_IMPL_H

#include "vxStdTypeArithmetic.h"

#define VX_STD_TYPE_OPERATION(Result, member) \
  template <class T>                          \
  Result VXTStdTypeInfos<T>::VXTYPE_##member

// Texts and values ---------------------------------------------------------------------------------------------------

VX_STD_TYPE_OPERATION(char*, getStringValue)(const unsigned char* v) { return VXTypeComponentsToString(_myInfos, v); }

VX_STD_TYPE_OPERATION(void, setStringValue)(const char* text, unsigned char* r) {
  const vx::StoredVoxel<T> defaultVoxel = 0;
  VXTypeComponentsFromString(_myInfos, text, &defaultVoxel, r);
}

VX_STD_TYPE_OPERATION(void, setToMinimum)(unsigned char* r) {
  vx::stdTypes::store<T>(static_cast<vx::StoredVoxel<T>>(_typeMin), r);
}

VX_STD_TYPE_OPERATION(void, setToMaximum)(unsigned char* r) {
  vx::stdTypes::store<T>(static_cast<vx::StoredVoxel<T>>(_typeMax), r);
}

VX_STD_TYPE_OPERATION(void, setToDefault)(unsigned char* r) {
  vx::stdTypes::store<T>(static_cast<vx::StoredVoxel<T>>(_typeDefault), r);
}

VX_STD_TYPE_OPERATION(void, copy)(const unsigned char* v, unsigned char* r) {
  // Bytes and not a number: a floating point register may change the bits of a NaN.
  std::memmove(r, v, sizeof(vx::StoredVoxel<T>));
}

// Casts --------------------------------------------------------------------------------------------------------------

VX_STD_TYPE_OPERATION(short, castToBool)(const unsigned char* v) {
  using S = vx::StoredVoxel<T>;
  const S value = vx::stdTypes::load<T>(v);
  if constexpr (std::is_integral_v<S>) {
    return static_cast<short>(value != 0);
  } else {
    return static_cast<short>(std::fabs(value) >= std::numeric_limits<S>::min());
  }
}

VX_STD_TYPE_OPERATION(int, castToInt)(const unsigned char* v) {
  return vx::stdTypes::castTo<int>(vx::stdTypes::load<T>(v));
}

VX_STD_TYPE_OPERATION(VXldouble, castToDouble)(const unsigned char* v) {
  return static_cast<VXldouble>(vx::stdTypes::load<T>(v));
}

VX_STD_TYPE_OPERATION(void, castToOtherType)(const unsigned char* v, const VXTypeInfos* other, unsigned char* r) {
  VXTypeCastToOtherType(_myInfos, v, other, r);
}

VX_STD_TYPE_OPERATION(void, castFromBool)(short b, unsigned char* r) { vx::stdTypes::store<T>(b, r); }

VX_STD_TYPE_OPERATION(void, castFromInt)(int x, unsigned char* r) { vx::stdTypes::store<T>(x, r); }

VX_STD_TYPE_OPERATION(void, castFromDouble)(double x, unsigned char* r) { vx::stdTypes::store<T>(x, r); }

VX_STD_TYPE_OPERATION(void, castFromOtherType)(const VXTypeInfos* other, const unsigned char* v, unsigned char* r) {
  VXTypeCastToOtherType(other, v, _myInfos, r);
}

// Bits ---------------------------------------------------------------------------------------------------------------

// A family of bit operations: voxel and int, int and voxel, two voxels. A floating point voxel has no bits of its own
// to work on, but an integer value.
#define VX_STD_TYPE_BIT_OPERATIONS(typeInt, intType, typeType, Operation, forwardInt, forwardType)                     \
  VX_STD_TYPE_OPERATION(void, typeInt)(const unsigned char* v, int x, unsigned char* r) {                              \
    if constexpr (std::is_integral_v<T>) {                                                                             \
      vx::stdTypes::store<T>(Operation::apply(vx::stdTypes::load<T>(v), x), r);                                        \
    } else {                                                                                                           \
      forwardInt(_myInfos, v, x, r);                                                                                   \
    }                                                                                                                  \
  }                                                                                                                    \
  VX_STD_TYPE_OPERATION(void, intType)(int x, const unsigned char* v, unsigned char* r) { VXTYPE_##typeInt(v, x, r); } \
  VX_STD_TYPE_OPERATION(void, typeType)(const unsigned char* a, const unsigned char* b, unsigned char* r) {            \
    if constexpr (std::is_integral_v<T>) {                                                                             \
      vx::stdTypes::store<T>(Operation::apply(vx::stdTypes::load<T>(a), vx::stdTypes::load<T>(b)), r);                 \
    } else {                                                                                                           \
      forwardType(_myInfos, a, b, r);                                                                                  \
    }                                                                                                                  \
  }

VX_STD_TYPE_BIT_OPERATIONS(binaryAndInt, binaryIntAnd, binaryAnd, vx::stdTypes::BitAnd, VXTypeBinaryAndInt,
                           VXTypeBinaryAnd)
VX_STD_TYPE_BIT_OPERATIONS(binaryOrInt, binaryIntOr, binaryOr, vx::stdTypes::BitOr, VXTypeBinaryOrInt, VXTypeBinaryOr)
VX_STD_TYPE_BIT_OPERATIONS(binaryXorInt, binaryIntXor, binaryXor, vx::stdTypes::BitXor, VXTypeBinaryXorInt,
                           VXTypeBinaryXor)
#undef VX_STD_TYPE_BIT_OPERATIONS

VX_STD_TYPE_OPERATION(void, shiftLeft)(const unsigned char* v, int n, unsigned char* r) {
  VXTypeShiftComponentsLeft(_myInfos, v, n, r);
}

VX_STD_TYPE_OPERATION(void, shiftRight)(const unsigned char* v, int n, unsigned char* r) {
  VXTypeShiftComponentsLeft(_myInfos, v, vx::stdTypes::Difference::apply(0, n), r);
}

VX_STD_TYPE_OPERATION(void, shiftIntLeft)(int x, const unsigned char* v, unsigned char* r) {
  vx::stdTypes::store<T>(vx::stdTypes::shiftedLeft(x, VXTYPE_castToInt(v)), r);
}

VX_STD_TYPE_OPERATION(void, shiftIntRight)(int x, const unsigned char* v, unsigned char* r) {
  vx::stdTypes::store<T>(vx::stdTypes::shiftedRight(x, VXTYPE_castToInt(v)), r);
}

// Comparisons --------------------------------------------------------------------------------------------------------

// A family of comparisons: the voxel to the left of a number, to its right, to the left of another voxel.
#define VX_STD_TYPE_COMPARISONS(typeInt, typeDouble, intType, doubleType, typeType, otherType, Comparison,            \
                                forwardOther)                                                                         \
  VX_STD_TYPE_OPERATION(short, typeInt)(const unsigned char* v, int x) {                                              \
    return vx::stdTypes::compare<Comparison, vx::StoredVoxel<T>>(vx::stdTypes::load<T>(v), x);                        \
  }                                                                                                                   \
  VX_STD_TYPE_OPERATION(short, typeDouble)(const unsigned char* v, double x) {                                        \
    return vx::stdTypes::compare<Comparison, vx::StoredVoxel<T>>(vx::stdTypes::load<T>(v), x);                        \
  }                                                                                                                   \
  VX_STD_TYPE_OPERATION(short, intType)(int x, const unsigned char* v) {                                              \
    return vx::stdTypes::compare<Comparison, vx::StoredVoxel<T>>(x, vx::stdTypes::load<T>(v));                        \
  }                                                                                                                   \
  VX_STD_TYPE_OPERATION(short, doubleType)(double x, const unsigned char* v) {                                        \
    return vx::stdTypes::compare<Comparison, vx::StoredVoxel<T>>(x, vx::stdTypes::load<T>(v));                        \
  }                                                                                                                   \
  VX_STD_TYPE_OPERATION(short, typeType)(const unsigned char* a, const unsigned char* b) {                            \
    return vx::stdTypes::compare<Comparison, vx::StoredVoxel<T>>(vx::stdTypes::load<T>(a), vx::stdTypes::load<T>(b)); \
  }                                                                                                                   \
  VX_STD_TYPE_OPERATION(short, otherType)(const VXTypeInfos* other, const unsigned char* b, const unsigned char* a) { \
    return forwardOther(_myInfos, a, other, b);                                                                       \
  }

VX_STD_TYPE_COMPARISONS(isEqualToInt, isEqualToDouble, isIntEqualTo, isDoubleEqualTo, isEqualToType, isEqualToOtherType,
                        vx::stdTypes::Equal, VXTypeIsEqualToOtherType)
VX_STD_TYPE_COMPARISONS(isSmallerThanInt, isSmallerThanDouble, isIntSmallerThan, isDoubleSmallerThan, isSmallerThanType,
                        isSmallerThanOtherType, vx::stdTypes::Smaller, VXTypeIsSmallerThanOtherType)
VX_STD_TYPE_COMPARISONS(isGreaterThanInt, isGreaterThanDouble, isIntGreaterThan, isDoubleGreaterThan, isGreaterThanType,
                        isGreaterThanOtherType, vx::stdTypes::Greater, VXTypeIsGreaterThanOtherType)
#undef VX_STD_TYPE_COMPARISONS

// Arithmetic ---------------------------------------------------------------------------------------------------------

VX_STD_TYPE_OPERATION(void, invert)(const unsigned char* v, unsigned char* r) {
  using S = vx::StoredVoxel<T>;
  const S value = vx::stdTypes::load<T>(v);
  bool isZero;
  if constexpr (std::is_integral_v<S>) {
    isZero = value == 0;
  } else {
    isZero = vx::stdTypes::isNearlyZero<S>(value);
  }
  if (isZero) {
    VXTYPE_setToMaximum(r);
  } else {
    vx::stdTypes::store<T>(vx::stdTypes::Quotient::apply(S{1}, value), r);
  }
}

VX_STD_TYPE_OPERATION(void, negate)(const unsigned char* v, unsigned char* r) {
  using S = vx::StoredVoxel<T>;
  const S value = vx::stdTypes::load<T>(v);
  if constexpr (std::is_floating_point_v<S>) {
    vx::stdTypes::store<T>(-value, r);
  } else if constexpr (std::is_signed_v<S>) {
    vx::stdTypes::store<T>(vx::stdTypes::Difference::apply(S{0}, value), r);
  } else {
    vx::stdTypes::store<T>(value, r);
  }
}

VX_STD_TYPE_OPERATION(void, normalize)(const unsigned char*, unsigned char* r) { vx::stdTypes::store<T>(1, r); }

// A family of operations: the voxel to the left of a number, to its right, to the left of another voxel.
#define VX_STD_TYPE_ARITHMETIC(typeInt, typeDouble, intType, doubleType, typeType, otherType, TypeInt, TypeDouble, \
                               Operation, forwardOther)                                                            \
  VX_STD_TYPE_OPERATION(void, typeInt)(const unsigned char* v, int x, unsigned char* r) {                          \
    vx::stdTypes::store<T>(TypeInt::apply(vx::stdTypes::load<T>(v), x), r);                                        \
  }                                                                                                                \
  VX_STD_TYPE_OPERATION(void, typeDouble)(const unsigned char* v, double x, unsigned char* r) {                    \
    vx::stdTypes::store<T>(TypeDouble::apply(vx::stdTypes::load<T>(v), x), r);                                     \
  }                                                                                                                \
  VX_STD_TYPE_OPERATION(void, intType)(int x, const unsigned char* v, unsigned char* r) {                          \
    vx::stdTypes::store<T>(Operation::apply(x, vx::stdTypes::load<T>(v)), r);                                      \
  }                                                                                                                \
  VX_STD_TYPE_OPERATION(void, doubleType)(double x, const unsigned char* v, unsigned char* r) {                    \
    vx::stdTypes::store<T>(Operation::apply(x, vx::stdTypes::load<T>(v)), r);                                      \
  }                                                                                                                \
  VX_STD_TYPE_OPERATION(void, typeType)(const unsigned char* a, const unsigned char* b, unsigned char* r) {        \
    vx::stdTypes::store<T>(Operation::apply(vx::stdTypes::load<T>(a), vx::stdTypes::load<T>(b)), r);               \
  }                                                                                                                \
  VX_STD_TYPE_OPERATION(void, otherType)                                                                           \
  (const VXTypeInfos* other, const unsigned char* b, const unsigned char* a, unsigned char* r) {                   \
    forwardOther(_myInfos, a, other, b, r);                                                                        \
  }

VX_STD_TYPE_ARITHMETIC(multWithInt, multWithDouble, multIntWith, multDoubleWith, multWithType, multWithOtherType,
                       vx::stdTypes::Product, vx::stdTypes::Product, vx::stdTypes::Product, VXTypeMultWithOtherType)
VX_STD_TYPE_ARITHMETIC(divByInt, divByDouble, divIntBy, divDoubleBy, divByType, divByOtherType,
                       vx::stdTypes::QuotientOrMaximum, vx::stdTypes::CheckedQuotient, vx::stdTypes::Quotient,
                       VXTypeDivByOtherType)
VX_STD_TYPE_ARITHMETIC(plusInt, plusDouble, intPlus, doublePlus, plusType, plusOtherType, vx::stdTypes::Sum,
                       vx::stdTypes::Sum, vx::stdTypes::Sum, VXTypeAddOtherType)
VX_STD_TYPE_ARITHMETIC(minusInt, minusDouble, intMinus, doubleMinus, minusType, minusOtherType,
                       vx::stdTypes::Difference, vx::stdTypes::Difference, vx::stdTypes::Difference,
                       VXTypeSubtractOtherType)
VX_STD_TYPE_ARITHMETIC(powerOfInt, powerOfDouble, powerIntOf, powerDoubleOf, powerOfType, powerOfOtherType,
                       vx::stdTypes::PowerOfInt, vx::stdTypes::Power, vx::stdTypes::Power, VXTypePowerOfOtherType)
#undef VX_STD_TYPE_ARITHMETIC

// Functions ----------------------------------------------------------------------------------------------------------

// A function of the C library, computed as double for all types.
#define VX_STD_TYPE_FUNCTION(member, function)                                          \
  VX_STD_TYPE_OPERATION(void, member)(const unsigned char* v, unsigned char* r) {       \
    vx::stdTypes::store<T>(function(static_cast<double>(vx::stdTypes::load<T>(v))), r); \
  }

VX_STD_TYPE_FUNCTION(sinOfType, std::sin)
VX_STD_TYPE_FUNCTION(cosOfType, std::cos)
VX_STD_TYPE_FUNCTION(tanOfType, std::tan)
VX_STD_TYPE_FUNCTION(asinOfType, std::asin)
VX_STD_TYPE_FUNCTION(acosOfType, std::acos)
VX_STD_TYPE_FUNCTION(atanOfType, std::atan)
VX_STD_TYPE_FUNCTION(sinhOfType, std::sinh)
VX_STD_TYPE_FUNCTION(coshOfType, std::cosh)
VX_STD_TYPE_FUNCTION(tanhOfType, std::tanh)
VX_STD_TYPE_FUNCTION(expOfType, std::exp)
VX_STD_TYPE_FUNCTION(logOfType, std::log)
VX_STD_TYPE_FUNCTION(sqrtOfType, std::sqrt)
#undef VX_STD_TYPE_FUNCTION
#undef VX_STD_TYPE_OPERATION

#endif
