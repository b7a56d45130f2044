/// \file vxTypeOperations.h
/// The one list of the operations of a voxel type, in the order of the record, for C and C++.
///
/// The members of ::VXTypeInfos, their defaults, the property bits and their constants, and the tables of the
/// standard types are all made from this list.

#ifndef VX_TYPE_OPERATIONS_H
#define VX_TYPE_OPERATIONS_H

#include "vxTypes.h"

#ifdef __cplusplus
extern "C" {
#endif

struct VXTypeInfos;

// Signatures ---------------------------------------------------------------------------------------------------------
// A voxel is a pointer to its bytes, which need not be aligned. `result` may be one of the operands.

/// Text of a voxel; the caller gives it back by VXFree().
typedef char* (*VXTypeGetTextOp)(const unsigned char* voxel);
/// Reads a voxel from a text.
typedef void (*VXTypeSetTextOp)(const char* text, unsigned char* result);
/// Writes a value of the type's own.
typedef void (*VXTypeSetOp)(unsigned char* result);
/// An operation on one voxel.
typedef void (*VXTypeUnaryOp)(const unsigned char* voxel, unsigned char* result);

/// Casts a voxel to a truth value: 1 or 0.
typedef short (*VXTypeToBoolOp)(const unsigned char* voxel);
/// Casts a voxel to an integer.
typedef int (*VXTypeToIntOp)(const unsigned char* voxel);
/// Casts a voxel to a floating point number.
typedef VXldouble (*VXTypeToDoubleOp)(const unsigned char* voxel);
/// Casts a voxel to one of the type `other`.
typedef void (*VXTypeToOtherOp)(const unsigned char* voxel, const struct VXTypeInfos* other, unsigned char* result);
/// Casts a truth value, 1 or 0, to a voxel.
typedef void (*VXTypeFromBoolOp)(short value, unsigned char* result);
/// Casts an integer to a voxel.
typedef void (*VXTypeFromIntOp)(int value, unsigned char* result);
/// Casts a floating point number to a voxel.
typedef void (*VXTypeFromDoubleOp)(double value, unsigned char* result);
/// Casts a voxel of the type `other` to one of the record's type.
typedef void (*VXTypeFromOtherOp)(const struct VXTypeInfos* other, const unsigned char* voxel, unsigned char* result);

/// An operation on a voxel, the left operand, and an integer.
typedef void (*VXTypeTypeIntOp)(const unsigned char* voxel, int value, unsigned char* result);
/// An operation on a voxel, the left operand, and a floating point number.
typedef void (*VXTypeTypeDoubleOp)(const unsigned char* voxel, double value, unsigned char* result);
/// An operation on an integer, the left operand, and a voxel.
typedef void (*VXTypeIntTypeOp)(int value, const unsigned char* voxel, unsigned char* result);
/// An operation on a floating point number, the left operand, and a voxel.
typedef void (*VXTypeDoubleTypeOp)(double value, const unsigned char* voxel, unsigned char* result);
/// An operation on two voxels of the record's type, `a` being the left operand.
typedef void (*VXTypeTypeTypeOp)(const unsigned char* a, const unsigned char* b, unsigned char* result);
/// An operation on two voxels: `a` is of the record's own type and the left operand, `b` is of the type `other`.
typedef void (*VXTypeOtherTypeOp)(const struct VXTypeInfos* other, const unsigned char* b, const unsigned char* a,
                                  unsigned char* result);

/// Compares a voxel, the left operand, with an integer: 1 or 0.
typedef short (*VXTypeTypeIntTest)(const unsigned char* voxel, int value);
/// Compares a voxel, the left operand, with a floating point number: 1 or 0.
typedef short (*VXTypeTypeDoubleTest)(const unsigned char* voxel, double value);
/// Compares an integer, the left operand, with a voxel: 1 or 0.
typedef short (*VXTypeIntTypeTest)(int value, const unsigned char* voxel);
/// Compares a floating point number, the left operand, with a voxel: 1 or 0.
typedef short (*VXTypeDoubleTypeTest)(double value, const unsigned char* voxel);
/// Compares two voxels of the record's type, `a` being the left operand: 1 or 0.
typedef short (*VXTypeTypeTypeTest)(const unsigned char* a, const unsigned char* b);
/// Compares two voxels, 1 or 0: `a` is of the record's own type and the left operand, `b` is of the type `other`.
typedef short (*VXTypeOtherTypeTest)(const struct VXTypeInfos* other, const unsigned char* b, const unsigned char* a);

#ifdef __cplusplus
}
#endif

// The list -----------------------------------------------------------------------------------------------------------

/// The 90 operations in record order.
///
/// X(member, Name, signature, word, bit, reported) stands for an operation with a property bit: the member of the
/// record, its name with a capital letter, its signature, the word and bit of its property, and the name that its
/// default reports. Y(member, Name, signature) stands for the two that have neither a default nor a property.
#define VX_FOR_EACH_TYPE_OPERATION(X, Y)                                                                  \
  X(getStringValue, GetStringValue, VXTypeGetTextOp, 3, 0, "getStringValue")                              \
  X(setStringValue, SetStringValue, VXTypeSetTextOp, 3, 1, "setStringValue")                              \
  X(setToMinimum, SetToMinimum, VXTypeSetOp, 3, 8, "setToMinimum")                                        \
  X(setToMaximum, SetToMaximum, VXTypeSetOp, 3, 9, "setToMaximum")                                        \
  X(setToDefault, SetToDefault, VXTypeSetOp, 3, 10, "setToDefault")                                       \
  X(copy, Copy, VXTypeUnaryOp, 3, 11, "copy")                                                             \
  X(castToBool, CastToBool, VXTypeToBoolOp, 3, 12, "castToBool")                                          \
  X(castToInt, CastToInt, VXTypeToIntOp, 3, 13, "castToInt")                                              \
  X(castToDouble, CastToDouble, VXTypeToDoubleOp, 3, 14, "castToDouble")                                  \
  X(castToOtherType, CastToOtherType, VXTypeToOtherOp, 3, 15, "castToOtherType")                          \
  X(castFromBool, CastFromBool, VXTypeFromBoolOp, 3, 16, "castFromBool")                                  \
  X(castFromInt, CastFromInt, VXTypeFromIntOp, 3, 17, "castFromInt")                                      \
  X(castFromDouble, CastFromDouble, VXTypeFromDoubleOp, 3, 18, "castFromDouble")                          \
  X(castFromOtherType, CastFromOtherType, VXTypeFromOtherOp, 3, 19, "castFromOtherType")                  \
  X(binaryAndInt, BinaryAndInt, VXTypeTypeIntOp, 3, 20, "binaryAndInt")                                   \
  X(binaryOrInt, BinaryOrInt, VXTypeTypeIntOp, 3, 21, "binaryOrInt")                                      \
  X(binaryXorInt, BinaryXorInt, VXTypeTypeIntOp, 3, 22, "binaryXorInt")                                   \
  X(binaryIntAnd, BinaryIntAnd, VXTypeIntTypeOp, 3, 23, "binaryIntAnd")                                   \
  X(binaryIntOr, BinaryIntOr, VXTypeIntTypeOp, 3, 24, "binaryIntOr")                                      \
  X(binaryIntXor, BinaryIntXor, VXTypeIntTypeOp, 3, 25, "binaryIntXor")                                   \
  X(binaryAnd, BinaryAnd, VXTypeTypeTypeOp, 3, 26, "binaryAnd")                                           \
  X(binaryOr, BinaryOr, VXTypeTypeTypeOp, 3, 27, "binaryOr")                                              \
  X(binaryXor, BinaryXor, VXTypeTypeTypeOp, 3, 28, "binaryXor")                                           \
  X(shiftLeft, ShiftLeft, VXTypeTypeIntOp, 2, 0, "shiftLeft")                                             \
  X(shiftRight, ShiftRight, VXTypeTypeIntOp, 2, 1, "shiftRight")                                          \
  Y(shiftIntLeft, ShiftIntLeft, VXTypeIntTypeOp)                                                          \
  Y(shiftIntRight, ShiftIntRight, VXTypeIntTypeOp)                                                        \
  X(isEqualToInt, IsEqualToInt, VXTypeTypeIntTest, 1, 0, "isEqualToInt")                                  \
  X(isEqualToDouble, IsEqualToDouble, VXTypeTypeDoubleTest, 1, 1, "isEqualToDouble")                      \
  X(isIntEqualTo, IsIntEqualTo, VXTypeIntTypeTest, 1, 2, "isIntEqualTo")                                  \
  X(isDoubleEqualTo, IsDoubleEqualTo, VXTypeDoubleTypeTest, 1, 3, "isDoubleEqualTo")                      \
  X(isEqualToType, IsEqualToType, VXTypeTypeTypeTest, 1, 4, "isEqualToType")                              \
  X(isEqualToOtherType, IsEqualToOtherType, VXTypeOtherTypeTest, 1, 5, "isEqualToOtherType")              \
  X(isSmallerThanInt, IsSmallerThanInt, VXTypeTypeIntTest, 1, 6, "isSmallerThanInt")                      \
  X(isSmallerThanDouble, IsSmallerThanDouble, VXTypeTypeDoubleTest, 1, 7, "isSmallerThanDouble")          \
  X(isIntSmallerThan, IsIntSmallerThan, VXTypeIntTypeTest, 1, 8, "isIntSmallerThan")                      \
  X(isDoubleSmallerThan, IsDoubleSmallerThan, VXTypeDoubleTypeTest, 1, 9, "isDoubleSmallerThan")          \
  X(isSmallerThanType, IsSmallerThanType, VXTypeTypeTypeTest, 1, 10, "isSmallerThanType")                 \
  X(isSmallerThanOtherType, IsSmallerThanOtherType, VXTypeOtherTypeTest, 1, 11, "isSmallerThanOtherType") \
  X(isGreaterThanInt, IsGreaterThanInt, VXTypeTypeIntTest, 1, 12, "isGreaterThanInt")                     \
  X(isGreaterThanDouble, IsGreaterThanDouble, VXTypeTypeDoubleTest, 1, 13, "isGreaterThanDouble")         \
  X(isIntGreaterThan, IsIntGreaterThan, VXTypeIntTypeTest, 1, 14, "isIntGreaterThan")                     \
  X(isDoubleGreaterThan, IsDoubleGreaterThan, VXTypeDoubleTypeTest, 1, 15, "isDoubleGreaterThan")         \
  X(isGreaterThanType, IsGreaterThanType, VXTypeTypeTypeTest, 1, 16, "isGreaterThanType")                 \
  X(isGreaterThanOtherType, IsGreaterThanOtherType, VXTypeOtherTypeTest, 1, 17, "isGreaterThanOtherType") \
  X(invert, Invert, VXTypeUnaryOp, 2, 2, "invert")                                                        \
  X(negate, Negate, VXTypeUnaryOp, 2, 3, "negate")                                                        \
  X(normalize, Normalize, VXTypeUnaryOp, 2, 4, "normalize")                                               \
  X(multWithInt, MultWithInt, VXTypeTypeIntOp, 1, 18, "multWithInt")                                      \
  X(multWithDouble, MultWithDouble, VXTypeTypeDoubleOp, 1, 19, "multWithDouble")                          \
  X(multIntWith, MultIntWith, VXTypeIntTypeOp, 1, 20, "multIntWith")                                      \
  X(multDoubleWith, MultDoubleWith, VXTypeDoubleTypeOp, 1, 21, "multDoubleWith")                          \
  X(multWithType, MultWithType, VXTypeTypeTypeOp, 1, 22, "multWithType")                                  \
  X(multWithOtherType, MultWithOtherType, VXTypeOtherTypeOp, 1, 23, "multWithOtherType")                  \
  X(divByInt, DivByInt, VXTypeTypeIntOp, 1, 24, "divByInt")                                               \
  X(divByDouble, DivByDouble, VXTypeTypeDoubleOp, 1, 25, "divByDouble")                                   \
  X(divIntBy, DivIntBy, VXTypeIntTypeOp, 1, 26, "divIntBy")                                               \
  X(divDoubleBy, DivDoubleBy, VXTypeDoubleTypeOp, 1, 27, "divDoubleBy")                                   \
  X(divByType, DivByType, VXTypeTypeTypeOp, 1, 28, "divByType")                                           \
  X(divByOtherType, DivByOtherType, VXTypeOtherTypeOp, 1, 29, "divByOtherType")                           \
  X(plusInt, PlusInt, VXTypeTypeIntOp, 1, 30, "plusInt")                                                  \
  X(plusDouble, PlusDouble, VXTypeTypeDoubleOp, 1, 31, "plusDouble")                                      \
  X(intPlus, IntPlus, VXTypeIntTypeOp, 0, 0, "intPlus")                                                   \
  X(doublePlus, DoublePlus, VXTypeDoubleTypeOp, 0, 1, "doublePlus")                                       \
  X(plusType, PlusType, VXTypeTypeTypeOp, 0, 2, "plusType")                                               \
  X(plusOtherType, PlusOtherType, VXTypeOtherTypeOp, 0, 3, "addOtherType")                                \
  X(minusInt, MinusInt, VXTypeTypeIntOp, 0, 4, "minusInt")                                                \
  X(minusDouble, MinusDouble, VXTypeTypeDoubleOp, 0, 5, "minusDouble")                                    \
  X(intMinus, IntMinus, VXTypeIntTypeOp, 0, 6, "intMinus")                                                \
  X(doubleMinus, DoubleMinus, VXTypeDoubleTypeOp, 0, 7, "doubleMinus")                                    \
  X(minusType, MinusType, VXTypeTypeTypeOp, 0, 8, "minusType")                                            \
  X(minusOtherType, MinusOtherType, VXTypeOtherTypeOp, 0, 9, "minusOtherType")                            \
  X(powerOfInt, PowerOfInt, VXTypeTypeIntOp, 0, 10, "powerOfInt")                                         \
  X(powerOfDouble, PowerOfDouble, VXTypeTypeDoubleOp, 0, 11, "powerOfDouble")                             \
  X(powerIntOf, PowerIntOf, VXTypeIntTypeOp, 0, 12, "powerIntOf")                                         \
  X(powerDoubleOf, PowerDoubleOf, VXTypeDoubleTypeOp, 0, 13, "powerDoubleOf")                             \
  X(powerOfType, PowerOfType, VXTypeTypeTypeOp, 0, 14, "powerOfType")                                     \
  X(powerOfOtherType, PowerOfOtherType, VXTypeOtherTypeOp, 0, 15, "powerOfOtherType")                     \
  X(sinOfType, SinOfType, VXTypeUnaryOp, 0, 16, "sinOfType")                                              \
  X(cosOfType, CosOfType, VXTypeUnaryOp, 0, 17, "cosOfType")                                              \
  X(tanOfType, TanOfType, VXTypeUnaryOp, 0, 18, "tanOfType")                                              \
  X(asinOfType, AsinOfType, VXTypeUnaryOp, 0, 19, "asinOfType")                                           \
  X(acosOfType, AcosOfType, VXTypeUnaryOp, 0, 20, "acosOfType")                                           \
  X(atanOfType, AtanOfType, VXTypeUnaryOp, 0, 21, "atanOfType")                                           \
  X(sinhOfType, SinhOfType, VXTypeUnaryOp, 0, 22, "sinhOfType")                                           \
  X(coshOfType, CoshOfType, VXTypeUnaryOp, 0, 23, "coshOfType")                                           \
  X(tanhOfType, TanhOfType, VXTypeUnaryOp, 0, 24, "tanhOfType")                                           \
  X(expOfType, ExpOfType, VXTypeUnaryOp, 0, 25, "expOfType")                                              \
  X(logOfType, LogOfType, VXTypeUnaryOp, 0, 26, "logOfType")                                              \
  X(sqrtOfType, SqrtOfType, VXTypeUnaryOp, 0, 27, "sqrtOfType")

#endif
