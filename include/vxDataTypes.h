/// \file vxDataTypes.h
/// Names, sizes, ranges, component codes and promotion of voxel types, for C and C++.
///
/// Every function here is silent: it sends no message, throws nothing, and answers a bad argument by the neutral value
/// told with it. Until VXInitializeTypes() has run, which the load of the library does, every number counts as
/// invalid. The functions read the type table without a lock, from any thread; types are registered only while no
/// multi-threaded work runs. Unless said otherwise a call takes constant time.

#ifndef VX_DATA_TYPES_H
#define VX_DATA_TYPES_H

#include "vxTypes.h"

// Names and numbers --------------------------------------------------------------------------------------------------

/// \return number of voxel types, standard and registered: valid numbers are 0 to this minus 1. 0 before start-up.
VX_C_API VXint32 VXNumDataTypes(void);

/// \return the names of all types in number order, VXNumDataTypes() of them. The array belongs to the library and is
///         good until the next registration. Not to be called while no type is registered.
VX_C_API const char** VXDataTypeNames(void);

/// \return the name of a type, owned by whoever registered it; "" for an invalid number, never null.
VX_C_API const char* VXNameFromDataType(VXDataType dataType);

/// Looks a type up by its name; takes a time linear in the number of types.
/// \param name compared byte by byte; may be null.
/// \return the lowest number with that name, or -1.
VX_C_API VXDataType VXDataTypeFromName(const char* name);

// Ranges and sizes ---------------------------------------------------------------------------------------------------

/// \return smallest value of a type, for floating point the most negative finite one; 0 for an invalid number.
VX_C_API double VXDataTypeMin(VXDataType dataType);
/// \return largest value of a type as the nearest double, which for ::VXint64Type lies just beyond the type; 0 for an
///         invalid number.
VX_C_API double VXDataTypeMax(VXDataType dataType);

/// \return bytes of a voxel in memory, that is of its physical type; 0 for an invalid number.
VX_C_API VXuint32 VXSizeOf(VXDataType dataType);
/// \return bytes that the author of a type declared, at most VXSizeOf(); 0 for an invalid number.
VX_C_API VXuint32 VXSizeOfRegisteredType(VXDataType dataType);
/// \param physicalType 0 to 9 for standard types, 10 to 19 for carriers; needs no start-up.
/// \return bytes of a physical type, 0 for any other number.
VX_C_API VXuint32 VXSizeOfPhysicalType(VXDataType physicalType);
/// \return the physical type that holds voxels of a type, a standard type itself; -1 for an invalid number.
VX_C_API VXDataType VXGetPhysicalDataType(VXDataType dataType);
/// \param size bytes of a registered voxel.
/// \return the smallest carrier (10 to 19) with room for it; -1 for 0 and for more than 512. Never a standard type.
VX_C_API VXDataType VXGetCarrierTypeForSize(VXuint64 size);

// Classification -----------------------------------------------------------------------------------------------------

/// \return 1 if the number is that of a type, else 0.
VX_C_API int VXIsValidType(VXDataType dataType);
/// \return 1 for 0 to 9, else 0; needs no start-up.
VX_C_API int VXIsStandardType(VXDataType dataType);
/// \return 1 if all components of the type are signed, as floating point ones are; 0 if not or for an invalid number.
VX_C_API int VXIsSigned(VXDataType dataType);
/// \return 1 if all components of the type are integers, else 0. A type with mixed components is neither this nor
///         VXIsFloatType().
VX_C_API int VXIsIntType(VXDataType dataType);
/// \return 1 if all components of the type are floating point numbers, else 0.
VX_C_API int VXIsFloatType(VXDataType dataType);

// Component codes ----------------------------------------------------------------------------------------------------
// One character tells the type of one component: b c C s S i I l L f d D 6. All sizes are fixed, whatever the
// platform's `long` and `long double` are. None of these needs the start-up, but for code 'b', whose VX type is
// "unsigned int8" when VXSizeOf(1) is 1 and "unsigned int16" otherwise.

/// \return name of the C type of a component code, such as "signed short"; "" for an unknown code.
VX_C_API const char* VXGetCDataTypeNameForCharCode(char code);
/// \return name of the voxel type of a component code; "" for an unknown code.
VX_C_API const char* VXGetVXDataTypeNameForCharCode(char code);
/// \return number of the voxel type of a component code; -1 for an unknown code.
VX_C_API VXDataType VXGetVXDataTypeForCharCode(char code);
/// \return bytes of a component; 0 for an unknown code.
VX_C_API VXuint32 VXTypeComponentSize(char code);
/// Tells what kind of number a component is. Each output may be null; the others take 1 or 0, for an unknown code 0.
/// \param code component code.
/// \param isSigned floating point counts as signed. \param isInteger `bool` counts as integer.
/// \param isFloat set for f, d, D. \param isLong set for D and 6, which need the 64-bit form of a size; not for d.
/// \return 1 for a known code, else 0.
VX_C_API int VXTypeGetComponentProperties(char code, VXint32* isSigned, VXint32* isInteger, VXint32* isFloat,
                                          VXint32* isLong);

// Promotion ----------------------------------------------------------------------------------------------------------

/// \return rank of a standard type by range: 1 for 8 bits, 2 for 16, 3 for 32, 4 for int64, 5 to 7 for float, double
///         and long double. A registered type ranks 0, below them all; ask for its equivalent instead. -1 for an
///         invalid number.
VX_C_API VXint32 VXRangeOrder(VXDataType dataType);

/// Tells whether one type can store the values of another: because both are one, because the author of `held` lists
/// `holder` as a good cast, or, for a standard `held`, by rank. Range counts, not exactness: float holds int64.
/// \return 1 or 0. Two equal numbers give 1, valid or not.
VX_C_API int VXHolds(VXDataType holder, VXDataType held);

/// Finds the type that holds both of two types, `first` before `second`, then the smallest standard type, then the
/// smallest registered one. Linear in the number of types if neither holds the other.
/// \return the type; the valid one if the other is invalid; -1 if there is none.
VX_C_API VXDataType VXPromotedType(VXDataType first, VXDataType second);

/// \return the one of two types with the better precision: floating point before integer, then the higher rank of
///         their equivalents, on a tie `first`. The valid one if the other is invalid.
VX_C_API VXDataType VXPromotedPrecision(VXDataType first, VXDataType second);

/// \return the standard type that a type behaves like in range and precision; -1 for an invalid number.
VX_C_API VXDataType VXGetRangeAndPrecisionEquivalent(VXDataType dataType);

/// Finds the smallest type for a range of values, after putting the range in order: swapped bounds change places, and
/// a range without width becomes one wide, which makes the type float.
/// \param minValue,maxValue bounds, in and out. If one is null nothing is written.
/// \param preferUnsigned non-zero tries unsigned types before signed ones of the same size.
/// \return a standard type; ::VXldoubleType for a null pointer.
VX_C_API VXDataType VXGetDataTypeForRange(double* minValue, double* maxValue, int preferUnsigned);

/// Finds the smallest type for a range of values. A range up to 1 wide is taken to hold fractions and gives float; a
/// range without width stays an integer type.
/// \param minValue,maxValue bounds in either order.
/// \param preferUnsigned as in VXGetDataTypeForRange().
/// \return a standard type; ::VXldoubleType where no other fits.
VX_C_API VXDataType VXGetDataTypeForUncorrectedRange(double minValue, double maxValue, int preferUnsigned);

#endif
