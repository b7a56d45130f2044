/// \file vxTypeInfos.h
/// The record of a voxel type, its registration, and the table of slots through which typed code reaches its
/// operations. For C and C++.
///
/// A type from outside the library is made in four steps: VXTypeSetDefaultFunctionPointers(), set the operations that
/// the type has, VXTypeInfosInit(), VXRegisterTypeInfos(). The record and everything it points to belong to the author
/// of the type and must stay as they are until the end of the process.
///
/// No function here throws on its own; an exception of a type's own operation passes. Types are registered only while
/// no multi-threaded work runs. Everything else may be called from any thread.

#ifndef VX_TYPE_INFOS_H
#define VX_TYPE_INFOS_H

#include "vxDataTypes.h"
#include "vxTypeOperations.h"

#ifdef __cplusplus
#include <cstring>
#include <iosfwd>
#endif

// Limits -------------------------------------------------------------------------------------------------------------

/// Largest number of components of a voxel.
#define VX_MAX_TYPE_COMPONENTS 512
/// Largest number of bytes of a voxel: the size of the largest carrier.
#define VX_MAX_TYPE_SIZE 512
/// Longest name of a type, in characters.
#define VX_MAX_TYPE_NAME_LENGTH 256
/// Longest text of a voxel, in characters.
#define VX_MAX_TYPE_TEXT_LENGTH 23040
/// Longest text of a component, in characters.
#define VX_MAX_COMPONENT_TEXT_LENGTH 4095
/// Number of slots of ::VXTypeInfosTable.
#define VX_NUM_TYPE_SLOTS 40
/// Distance of a carrier's input slot from its output slot.
#define VX_INPUT_SLOT_OFFSET 20

// Properties ---------------------------------------------------------------------------------------------------------

/// A set of properties of a voxel type: which operations it has, and what kind of type it is.
typedef struct VXTypePropBits {
  VXuint32 words[4];  ///< Word 0 to word 3.
#ifdef __cplusplus
  /// \param word 0 to 3, not checked. \return that word.
  VXuint32& operator[](unsigned int word) { return words[word]; }
  /// \copydoc operator[]()
  const VXuint32& operator[](unsigned int word) const { return words[word]; }
#endif
} VXTypePropBits;

/// One constant for each operation with a property, such as ::VXTypeHasCastToBool.
#define VX_DECLARE_TYPE_PROPERTY(member, Name, signature, word, bit, reported) \
  VX_C_API const VXTypePropBits VXTypeHas##Name;
#define VX_NO_TYPE_PROPERTY(member, Name, signature)
VX_FOR_EACH_TYPE_OPERATION(VX_DECLARE_TYPE_PROPERTY, VX_NO_TYPE_PROPERTY)
#undef VX_DECLARE_TYPE_PROPERTY
#undef VX_NO_TYPE_PROPERTY

/// All components are signed.
VX_C_API const VXTypePropBits VXTypeIsSignedType;
/// All components are floating point numbers.
VX_C_API const VXTypePropBits VXTypeIsFloatingPointType;
/// All components are integers.
VX_C_API const VXTypePropBits VXTypeIsIntegerType;
/// The type is stored as the standard type that it is made of, not in a carrier.
VX_C_API const VXTypePropBits VXTypeIsBasicType;

/// The empty set.
VX_C_API const VXTypePropBits VXTypeHasNoProperties;
/// All operations but the functions from the sine to the square root, of a basic type.
VX_C_API const VXTypePropBits VXTypeOnlyStandardTypes;
/// All operations but the functions from the sine to the square root.
VX_C_API const VXTypePropBits VXTypeFullyOperational;
/// What a module can expect of any useful type: texts, casts, comparison and multiplication by itself.
VX_C_API const VXTypePropBits VXTypeMinimumOperational;

/// \return the union of two sets.
VX_C_API VXTypePropBits VXTypePropBitsOr(VXTypePropBits a, VXTypePropBits b);
/// \return what two sets have in common.
VX_C_API VXTypePropBits VXTypePropBitsAnd(VXTypePropBits a, VXTypePropBits b);
/// \return what is in exactly one of two sets.
VX_C_API VXTypePropBits VXTypePropBitsXor(VXTypePropBits a, VXTypePropBits b);
/// \return 1 if every bit of `mask` is set in `bits`, else 0. The empty mask gives 1.
VX_C_API int VXTypePropBitsTest(VXTypePropBits bits, VXTypePropBits mask);

// The record ---------------------------------------------------------------------------------------------------------

/// Everything the library knows of a voxel type. The order of the members is part of the interface.
typedef struct VXTypeInfos {
  VXuint32 numComponents;                  ///< Length of `structInfoString`, 1 to 512.
  VXuint32 typeSize;                       ///< Bytes of a voxel as its author declared them.
  VXDataType physicalType;                 ///< Type in which voxels are stored.
  VXuint32 physicalSize;                   ///< Bytes of a voxel in memory, at least `typeSize`.
  const char* name;                        ///< 1 to 256 characters.
  VXDataType rangeAndPrecisionEquivalent;  ///< The standard type that this one behaves like, 0 to 9.
  double typeMinDbl;                       ///< Smallest value as a number.
  double typeMaxDbl;                       ///< Largest value as a number.
  const unsigned char* typeMinPtr;         ///< Voxel with the smallest value, or null.
  const unsigned char* typeMaxPtr;         ///< Voxel with the largest value, or null.
  const unsigned char* typeDefaultPtr;     ///< Voxel with the default value, or null.
  VXuint32 numGoodCastTos;                 ///< Number of `goodCastTos`.
  const char* const* goodCastTos;          ///< Names of the types that hold this one's values.
  /// Byte offsets of the components from the first one.
  VXuint32 componentOffsets[VX_MAX_TYPE_COMPONENTS];
  const char* structInfoString;  ///< One component code for each component.
  VXDataType dataType;           ///< Number of the type, -1 until it is registered.
  VXTypePropBits propertyBits;   ///< What the type can do.
  /// The operations, each a function pointer under the name of the list.
#define VX_DECLARE_TYPE_MEMBER(member, Name, signature, word, bit, reported) signature member;
#define VX_DECLARE_PLAIN_TYPE_MEMBER(member, Name, signature) signature member;
  VX_FOR_EACH_TYPE_OPERATION(VX_DECLARE_TYPE_MEMBER, VX_DECLARE_PLAIN_TYPE_MEMBER)
#undef VX_DECLARE_TYPE_MEMBER
#undef VX_DECLARE_PLAIN_TYPE_MEMBER
} VXTypeInfos;

/// Fills a record but for its operations, which must be set before, since the property bits depend on them.
/// Pointers are kept, not followed later than this says: name, texts, lists and voxels must outlive the record.
/// \param infos the record; after a failure it is unchanged.
/// \param size bytes of a voxel; for a type that is not basic 1 to 512.
/// \param name 1 to 256 characters.
/// \param minDouble,maxDouble limits as numbers.
/// \param minPtr,maxPtr,defaultPtr voxels of `size` bytes with limits and default; may be null.
/// \param structInfoString one component code for each component, 1 to 512.
/// \param isBasicType non-zero stores voxels as the standard type that signedness, kind and size of the components
///        choose; 0 stores them in the smallest carrier with room for `size`.
/// \param rangeAndPrecisionEquivalent a standard type, 0 to 9.
/// \param componentAddresses addresses of the components within any one voxel, as many as there are codes. All of a
///        component must lie in the `size` bytes from the first address: a record that lies about this lets the
///        library write beyond voxels. Null is reported as fatal with ::VX_BAD_POINTER.
/// \param numGoodCastTos,goodCastTos names of the types that hold this one's values.
/// \return 1, or 0 if an argument is out of its bounds or no physical type fits, without a message.
VX_C_API int VXTypeInfosInit(VXTypeInfos* infos, VXuint64 size, const char* name, double minDouble, double maxDouble,
                             const void* minPtr, const void* maxPtr, const void* defaultPtr,
                             const char* structInfoString, int isBasicType, VXDataType rangeAndPrecisionEquivalent,
                             const unsigned char* const* componentAddresses, VXuint64 numGoodCastTos,
                             const char* const* goodCastTos);

/// Sets each operation but `shiftIntLeft` and `shiftIntRight` to a default that reports the call as invalid and
/// returns an empty text, 0 or nothing. Null is ignored.
VX_C_API void VXTypeSetDefaultFunctionPointers(VXTypeInfos* infos);

/// Sets the property bit of each operation that differs from its default and clears the others; what kind of type it
/// is stays. Null is ignored.
VX_C_API void VXTypeCorrectPropertyBits(VXTypeInfos* infos);

/// What the default of an operation calls: a fatal message with ::VX_MISUSED_INTERFACE.
/// \param operationName name of the operation, shown in the trace.
VX_C_API void _VXTypeInvalidOperation(const char* operationName);

// Registration -------------------------------------------------------------------------------------------------------

/// Gives a type the next number. Names are not compared: of two types with one name the first is found by it.
/// \param infos a record from VXTypeInfosInit(). It is kept for the rest of the process.
/// \return 1, and `dataType` is set; 0 for null, a record that is registered already, one without a name, or if there
///         is no number or no memory left.
VX_C_API VXint32 VXRegisterTypeInfos(VXTypeInfos* infos);

/// \return 1 if this very record is registered, else 0.
VX_C_API VXint32 VXIsRegisteredTypeInfos(const VXTypeInfos* infos);
/// \return number of registered records, standard types among them.
VX_C_API VXint32 VXGetNumRegisteredTypeInfos(void);
/// \return the record at an index, which is the number of its type; null if out of range.
VX_C_API VXTypeInfos* VXTypeInfosAtIdx(VXint32 index);
/// \return the record of a type, null for an invalid number.
VX_C_API VXTypeInfos* VXGetTypeInfosForDataType(VXDataType dataType);

/// Registers the ten standard types and copies their records into their slots. The library calls it at load; further
/// calls change nothing.
/// \return 1 if the standard types are registered, else 0.
VX_C_API int VXInitializeTypes(void);
/// \return what VXInitializeTypes() returned last, 0 before.
VX_C_API int VXAreTypesInitialized(void);
/// Does nothing: records outlive the library's shutdown, since others may still ask for them.
VX_C_API void VXDestroyTypes(void);

/// \return number of components of a type, 0 for an invalid number.
VX_C_API VXuint32 VXTypeGetNumComponents(VXDataType dataType);
/// \return component codes of a type, "" for an invalid number.
VX_C_API const char* VXTypeGetStructInfoString(VXDataType dataType);

/// Finds the standard type that can take any component of a voxel: the first code's type, promoted with each further
/// one.
/// \param chars component codes. \param noInt64 non-zero gives double in place of int64.
/// \param noLongDouble non-zero gives double in place of long double.
/// \return a standard type; -1 for null, an empty text or an invalid further code.
VX_C_API VXDataType VXTypeGetBestScalarTypeForTypeComponentChars(const char* chars, int noInt64, int noLongDouble);
/// As VXTypeGetBestScalarTypeForTypeComponentChars(), for the components of a type; -1 for an invalid number.
VX_C_API VXDataType VXTypeGetBestScalarTypeForTypeComponents(VXDataType dataType, int noInt64, int noLongDouble);

// Buffers ------------------------------------------------------------------------------------------------------------

/// \return memory for one voxel, `physicalSize` bytes, not initialised; null for null or without memory. It goes back
///         through VXTypeInfosRemoveBuffer().
VX_C_API unsigned char* VXTypeInfosCreateBuffer(const VXTypeInfos* infos);
/// Gives back a buffer. Null is ignored.
VX_C_API void VXTypeInfosRemoveBuffer(void* buffer);

/// Allocates voxels.
/// \param dataType their type. \param count number of voxels.
/// \param defaultVoxel a voxel of VXSizeOfRegisteredType() bytes that each is set to, with zeros behind it up to
///        VXSizeOf(); null leaves the memory uninitialised.
/// \return the voxels, to be given back by VXFree(); null for an invalid type, a size beyond 64 bits or no memory.
VX_C_API unsigned char* VXAllocateVoxelBuffer(VXDataType dataType, VXuint64 count, const void* defaultVoxel);

/// Reads a voxel as a number.
/// \param voxel the voxel. \param dataType its type.
/// \param errorCode may be null; becomes 0, ::VX_BAD_DATA_TYPE for an invalid type or one without `castToDouble`, or
///        ::VX_BAD_POINTER for a null voxel.
/// \return the number, 0 after a failure.
VX_C_API double VXGetVoxelValueAsDouble(const void* voxel, VXDataType dataType, VXErrorCode* errorCode VX_DEFAULT(0));

// Slots --------------------------------------------------------------------------------------------------------------

/// The records that typed code works through: 0 to 9 the standard types, 10 to 19 the carriers that are written, 30 to
/// 39 those that are read; 20 to 29 are empty. A slot is read without a lock between its push and its pop.
VX_C_API VXTypeInfos VXTypeInfosTable[VX_NUM_TYPE_SLOTS];

/// What a push did to a slot; its pop needs it.
typedef struct VXTypePushSingleInfo {
  VXint32 pushInfo;  ///< 0 nothing, 1 an output slot changed, 2 an input slot changed, 3 the type was there already.
  VXint32 slot;      ///< Number of the slot, that of the standard type itself for one; -1 for an invalid type.
} VXTypePushSingleInfo;

/// Two pushes, done in this order and undone in the opposite one.
typedef struct VXTypePushInfo {
  VXTypePushSingleInfo first;   ///< First type; the output one of VXTypeInfosPushAndSetBoth().
  VXTypePushSingleInfo second;  ///< Second type; the input one of VXTypeInfosPushAndSetBoth().
} VXTypePushInfo;

/// Brings a registered type into the slot of its carrier and saves what was there. Standard types touch nothing.
/// Each push is followed by one pop on the same thread, in the opposite order. During multi-threaded work a slot takes
/// one type at a time: pushing another one is reported as fatal with ::VX_TYPE_CHANGE_IN_THREADS, and the slot stays.
/// Costs a copy of the record, about 3 KB, where the slot changes. Without memory for it the slot stays, which is
/// reported as fatal with ::VX_NO_MEMORY, and nothing is left to pop.
/// \param dataType the type. \param isInput non-zero for the slot that is read.
VX_C_API VXTypePushSingleInfo _VXTypeInfosPushAndSet(VXDataType dataType, int isInput);
/// Pushes a type that is read, see _VXTypeInfosPushAndSet().
VX_C_API VXTypePushSingleInfo VXTypeInfosPushAndSetInput(VXDataType dataType);
/// Pushes a type that is written, see _VXTypeInfosPushAndSet().
VX_C_API VXTypePushSingleInfo VXTypeInfosPushAndSetOutput(VXDataType dataType);
/// Pushes a type that is written and read.
VX_C_API VXTypePushInfo VXTypeInfosPushAndSetBoth(VXDataType dataType);
/// Pushes two types.
VX_C_API VXTypePushInfo VXTypeInfosPushAndSetTypes(VXDataType dataType1, int isInput1, VXDataType dataType2,
                                                   int isInput2);

/// Undoes a push: the slot holds again, byte for byte, what it held before. During multi-threaded work the last user
/// of a slot does it. Nothing left to restore is reported as fatal with ::VX_EMPTY_STACK.
/// \param pushInfo,slot members of the record that the push gave.
VX_C_API void VXTypeInfoPop(VXint32 pushInfo, VXint32 slot);
/// Undoes two pushes, the second one first.
VX_C_API void VXTypeInfosPop(VXTypePushInfo pushInfo);

// Components ---------------------------------------------------------------------------------------------------------
// Addresses need not be aligned. An unknown code, and a null address, reads as 0 and writes nothing. A number that
// doesn't fit a component keeps its low bytes; a floating point number is truncated, see vx::truncateTo().

/// \return a component as a floating point number.
VX_C_API double VXTypeGetDoubleComponent(char code, const void* address);
/// \return a component as a 32-bit integer; of a longer one the low bytes.
VX_C_API int VXTypeGetIntComponent(char code, const void* address);
/// Writes a component. Code 'b' stores whether the number is not 0.
VX_C_API void VXTypeSetDoubleComponent(char code, double value, void* address);
/// Writes a component. Code 'b' stores whether the number is not 0.
VX_C_API void VXTypeSetIntComponent(char code, int value, void* address);
/// Writes one number into all components of a voxel. Null pointers are ignored.
VX_C_API void VXTypeSetAllDoubleComponents(const VXTypeInfos* infos, double value, void* voxel);
/// Writes one number into all components of a voxel. Null pointers are ignored.
VX_C_API void VXTypeSetAllIntComponents(const VXTypeInfos* infos, int value, void* voxel);

/// Shifts a component. Integers shift at their own width by the low five bits of the distance (six for code '6'), to
/// the right with their sign; floating point numbers are multiplied or divided by the power of two; code 'b' shifted
/// to the left is 0.
/// \param code component code. \param n distance to the left, negative to the right; 0 copies. \param source,result may
/// be one; null is ignored.
VX_C_API void VXTypeShiftLeftComponent(char code, const void* source, int n, void* result);
/// Shifts each component, see VXTypeShiftLeftComponent(). A null `infos` is an error with ::VX_BAD_POINTER.
VX_C_API void VXTypeShiftComponentsLeft(const VXTypeInfos* infos, const void* source, int n, void* result);

// Text ---------------------------------------------------------------------------------------------------------------
// A voxel's text is its components in order, separated by one blank, as in the C locale, cut off after
// VX_MAX_TYPE_TEXT_LENGTH characters. Texts are given back by VXFree().

/// Makes the text of a voxel.
/// \param infos record of its type. \param voxel the voxel.
/// \param numDigits digits behind the point of a floating point component, at most 6 for float and 15 for double;
///        negative for the shortest form of that many significant digits.
/// \return the text, null for a null argument or without memory.
VX_C_API char* _VXTypeComponentsToString(const VXTypeInfos* infos, const void* voxel, int numDigits);
/// As _VXTypeComponentsToString() with a negative `numDigits`, and an empty text in place of null.
VX_C_API char* VXTypeComponentsToString(const VXTypeInfos* infos, const void* voxel);
/// As _VXTypeComponentsToString(), and an empty text in place of null.
VX_C_API char* VXTypeComponentsToStringLimited(const VXTypeInfos* infos, const void* voxel, int numDigits);

/// Makes the text of a voxel.
/// \param voxel the voxel. \param dataType its type.
/// \param errorCode may be null; becomes 0, or ::VX_BAD_DATA_TYPE for an invalid type.
/// \param numDigits as in _VXTypeComponentsToString().
/// \return the text, an empty one after a failure.
VX_C_API char* VXGetVoxelValueAsString(const void* voxel, VXDataType dataType, VXErrorCode* errorCode VX_DEFAULT(0),
                                       int numDigits VX_DEFAULT(-1));
/// As VXGetVoxelValueAsString().
VX_C_API char* VXGetVoxelValueAsStringLimited(const void* voxel, VXDataType dataType, VXErrorCode* errorCode,
                                              int numDigits);

/// Reads a voxel from a text. Integers may stand in decimal, octal ("010") or hexadecimal ("0x10") form, but for code
/// '6', which is decimal; those beyond 32 bits become the nearest 32-bit limit and then keep the low bytes that the
/// component has.
/// \param infos record of the type. \param text the components in order, with white space between.
/// \param defaultVoxel gives the component that could not be read and all behind it. With null a component that could
///        not be read stays as it was, the walk goes on with the next one, and the result is 1 all the same.
/// \param result the voxel.
/// \return 1 if every component was read, else 0; 0 for a null argument, and then nothing is written.
VX_C_API int VXTypeComponentsFromString(const VXTypeInfos* infos, const char* text, const void* defaultVoxel,
                                        void* result);

/// Reads the components of a voxel from a text as floating point numbers.
/// \param infos record of the type. \param text as in VXTypeComponentsFromString(). \param values takes a number for
/// each component read. \param maxNumValues room in `values`. \return how many components were read, up to the first
/// that could not be; 0 for a null argument.
VX_C_API VXuint32 VXTypeGetDataValuesFromString(const VXTypeInfos* infos, const char* text, double* values,
                                                VXuint32 maxNumValues);

// Byte order ---------------------------------------------------------------------------------------------------------

/// Swaps the bytes of each component. Bytes between components are left alone. Null pointers are ignored. An unknown
/// code ends the work on each voxel with an error message, ::VX_BAD_PARAMETER.
/// \param infos record of the type. \param source,result voxels of `typeSize` bytes, one behind the other; may be one
/// block. \param count number of voxels.
VX_C_API void VXTypeToggleEndianType(const VXTypeInfos* infos, const void* source, void* result, VXuint64 count);
/// As VXTypeToggleEndianType() on a big-endian machine; nothing, not even a copy, on a little-endian one.
VX_C_API void VXTypeConvertToLittleEndian(const VXTypeInfos* infos, const void* source, void* result, VXuint64 count);
/// As VXTypeToggleEndianType() on a little-endian machine; nothing, not even a copy, on a big-endian one.
VX_C_API void VXTypeConvertToBigEndian(const VXTypeInfos* infos, const void* source, void* result, VXuint64 count);

// Operations from the record alone -----------------------------------------------------------------------------------
// What a registered type may put behind its own operations in place of writing them. Each reports a null pointer as
// an error with ::VX_BAD_POINTER, and then returns 0 or leaves its result alone.

/// \return 1 if any byte of the voxel is not 0.
VX_C_API short VXTypeCastToBool(const VXTypeInfos* infos, const unsigned char* p);
/// \return the first component.
VX_C_API int VXTypeCastToInt(const VXTypeInfos* infos, const unsigned char* p);
/// \return the first component.
VX_C_API VXldouble VXTypeCastToDouble(const VXTypeInfos* infos, const unsigned char* p);
/// Sets every component.
VX_C_API void VXTypeCastFromBool(const VXTypeInfos* infos, short value, unsigned char* q);
/// Sets every component.
VX_C_API void VXTypeCastFromInt(const VXTypeInfos* infos, int value, unsigned char* q);
/// Sets every component.
VX_C_API void VXTypeCastFromDouble(const VXTypeInfos* infos, double value, unsigned char* q);

/// Combines the bits of each component, read as `int`, with a number.
VX_C_API void VXTypeBinaryAndInt(const VXTypeInfos* infos, const unsigned char* voxel, int value,
                                 unsigned char* result);
/// \copydoc VXTypeBinaryAndInt
VX_C_API void VXTypeBinaryOrInt(const VXTypeInfos* infos, const unsigned char* voxel, int value, unsigned char* result);
/// \copydoc VXTypeBinaryAndInt
VX_C_API void VXTypeBinaryXorInt(const VXTypeInfos* infos, const unsigned char* voxel, int value,
                                 unsigned char* result);
/// Combines the bits of the components of two voxels, read as `int`.
VX_C_API void VXTypeBinaryAnd(const VXTypeInfos* infos, const unsigned char* a, const unsigned char* b,
                              unsigned char* result);
/// \copydoc VXTypeBinaryAnd
VX_C_API void VXTypeBinaryOr(const VXTypeInfos* infos, const unsigned char* a, const unsigned char* b,
                             unsigned char* result);
/// \copydoc VXTypeBinaryAnd
VX_C_API void VXTypeBinaryXor(const VXTypeInfos* infos, const unsigned char* a, const unsigned char* b,
                              unsigned char* result);

/// Casts a voxel of my type to another: a copy of the bytes within one type, otherwise component by component as
/// floating point numbers, as far as both have components; further components of the other stay.
/// \param myInfos,myData my type and voxel. \param otherInfos the other type.
/// \param otherData takes the result; may be `myData`.
VX_C_API void VXTypeCastToOtherType(const VXTypeInfos* myInfos, const unsigned char* myData,
                                    const VXTypeInfos* otherInfos, unsigned char* otherData);

/// Compares by my type's `isEqualToType` after casting the other voxel to my type; 0 without memory for that.
VX_C_API short VXTypeIsEqualToOtherType(const VXTypeInfos* myInfos, const unsigned char* myData,
                                        const VXTypeInfos* otherInfos, const unsigned char* otherData);
/// Compares by my type's `isSmallerThanType`, see VXTypeIsEqualToOtherType().
VX_C_API short VXTypeIsSmallerThanOtherType(const VXTypeInfos* myInfos, const unsigned char* myData,
                                            const VXTypeInfos* otherInfos, const unsigned char* otherData);
/// Compares by my type's `isGreaterThanType`, see VXTypeIsEqualToOtherType().
VX_C_API short VXTypeIsGreaterThanOtherType(const VXTypeInfos* myInfos, const unsigned char* myData,
                                            const VXTypeInfos* otherInfos, const unsigned char* otherData);

/// Casts the other voxel into `result` as my type, then combines my voxel with it by my type's `multWithType`.
/// \param myInfos,myData my type and voxel. \param otherInfos,otherData the other type and voxel.
/// \param result a voxel of my type; may be `myData` or `otherData`.
VX_C_API void VXTypeMultWithOtherType(const VXTypeInfos* myInfos, const unsigned char* myData,
                                      const VXTypeInfos* otherInfos, const unsigned char* otherData,
                                      unsigned char* result);
/// By my type's `divByType`, see VXTypeMultWithOtherType().
VX_C_API void VXTypeDivByOtherType(const VXTypeInfos* myInfos, const unsigned char* myData,
                                   const VXTypeInfos* otherInfos, const unsigned char* otherData,
                                   unsigned char* result);
/// By my type's `plusType`, see VXTypeMultWithOtherType().
VX_C_API void VXTypeAddOtherType(const VXTypeInfos* myInfos, const unsigned char* myData, const VXTypeInfos* otherInfos,
                                 const unsigned char* otherData, unsigned char* result);
/// By my type's `minusType`, see VXTypeMultWithOtherType().
VX_C_API void VXTypeSubtractOtherType(const VXTypeInfos* myInfos, const unsigned char* myData,
                                      const VXTypeInfos* otherInfos, const unsigned char* otherData,
                                      unsigned char* result);
/// By my type's `powerOfType`, see VXTypeMultWithOtherType().
VX_C_API void VXTypePowerOfOtherType(const VXTypeInfos* myInfos, const unsigned char* myData,
                                     const VXTypeInfos* otherInfos, const unsigned char* otherData,
                                     unsigned char* result);

// C++ ----------------------------------------------------------------------------------------------------------------

#ifdef __cplusplus

/// Reads a voxel from a stream, component by component, with the rule of VXTypeComponentsFromString(): the component
/// that could not be read, and all behind it, come from the default.
/// \param infos record of the type. \param stream texts separated by white space; it is left behind the last text that
/// was taken. \param defaultVoxel null takes the type's own default; a type without one is an error,
/// ::VX_NO_DEFAULT_VALUE, and
///        nothing is read.
/// \param result the voxel.
/// \return how many components were read; 0 for a null pointer.
VX_EXPORT VXuint32 VXTypeComponentsFromStream(const VXTypeInfos* infos, std::istream& stream,
                                              const unsigned char* defaultVoxel, unsigned char* result);

/// VXTypeInfosInit() with component addresses of any pointer type.
template <class Address>
int VXTypeInfosInit(VXTypeInfos* infos, VXuint64 size, const char* name, double minDouble, double maxDouble,
                    const void* minPtr, const void* maxPtr, const void* defaultPtr, const char* structInfoString,
                    int isBasicType, VXDataType rangeAndPrecisionEquivalent, const Address* const* componentAddresses,
                    VXuint64 numGoodCastTos, const char* const* goodCastTos) {
  const unsigned char* addresses[VX_MAX_TYPE_COMPONENTS] = {};
  const std::size_t numCodes = structInfoString ? std::strlen(structInfoString) : 0;
  if (componentAddresses) {
    for (std::size_t i = 0; i < numCodes && i < VX_MAX_TYPE_COMPONENTS; ++i) {
      addresses[i] = static_cast<const unsigned char*>(static_cast<const void*>(componentAddresses[i]));
    }
  }
  return VXTypeInfosInit(infos, size, name, minDouble, maxDouble, minPtr, maxPtr, defaultPtr, structInfoString,
                         isBasicType, rangeAndPrecisionEquivalent,
                         componentAddresses ? static_cast<const unsigned char* const*>(addresses) : nullptr,
                         numGoodCastTos, goodCastTos);
}

/// VXTypeInfoPop() with the record that the push gave.
inline void VXTypeInfoPop(VXTypePushSingleInfo pushed) { VXTypeInfoPop(pushed.pushInfo, pushed.slot); }

/// VXTypeInfosPop() of two pushes that were done one by one.
inline void VXTypeInfosPop(VXTypePushSingleInfo first, VXTypePushSingleInfo second) {
  VXTypeInfosPop(VXTypePushInfo{first, second});
}

// The same operations with the arguments of the record's members behind the record, so that an operation can pass its
// own arguments on as they come. They are templates so that a call where both would do, one with null pointers, takes
// the function of the C interface.

/// The function of the C interface in the order of the record's member.
template <class = void>
short VXTypeIsEqualToOtherType(const VXTypeInfos* myInfos, const VXTypeInfos* otherInfos,
                               const unsigned char* otherData, const unsigned char* myData) {
  return VXTypeIsEqualToOtherType(myInfos, myData, otherInfos, otherData);
}
/// The function of the C interface in the order of the record's member.
template <class = void>
short VXTypeIsSmallerThanOtherType(const VXTypeInfos* myInfos, const VXTypeInfos* otherInfos,
                                   const unsigned char* otherData, const unsigned char* myData) {
  return VXTypeIsSmallerThanOtherType(myInfos, myData, otherInfos, otherData);
}
/// The function of the C interface in the order of the record's member.
template <class = void>
short VXTypeIsGreaterThanOtherType(const VXTypeInfos* myInfos, const VXTypeInfos* otherInfos,
                                   const unsigned char* otherData, const unsigned char* myData) {
  return VXTypeIsGreaterThanOtherType(myInfos, myData, otherInfos, otherData);
}
/// The function of the C interface in the order of the record's member.
template <class = void>
void VXTypeMultWithOtherType(const VXTypeInfos* myInfos, const VXTypeInfos* otherInfos, const unsigned char* otherData,
                             const unsigned char* myData, unsigned char* result) {
  VXTypeMultWithOtherType(myInfos, myData, otherInfos, otherData, result);
}
/// The function of the C interface in the order of the record's member.
template <class = void>
void VXTypeDivByOtherType(const VXTypeInfos* myInfos, const VXTypeInfos* otherInfos, const unsigned char* otherData,
                          const unsigned char* myData, unsigned char* result) {
  VXTypeDivByOtherType(myInfos, myData, otherInfos, otherData, result);
}
/// The function of the C interface in the order of the record's member.
template <class = void>
void VXTypeAddOtherType(const VXTypeInfos* myInfos, const VXTypeInfos* otherInfos, const unsigned char* otherData,
                        const unsigned char* myData, unsigned char* result) {
  VXTypeAddOtherType(myInfos, myData, otherInfos, otherData, result);
}
/// The function of the C interface in the order of the record's member.
template <class = void>
void VXTypeSubtractOtherType(const VXTypeInfos* myInfos, const VXTypeInfos* otherInfos, const unsigned char* otherData,
                             const unsigned char* myData, unsigned char* result) {
  VXTypeSubtractOtherType(myInfos, myData, otherInfos, otherData, result);
}
/// The function of the C interface in the order of the record's member.
template <class = void>
void VXTypePowerOfOtherType(const VXTypeInfos* myInfos, const VXTypeInfos* otherInfos, const unsigned char* otherData,
                            const unsigned char* myData, unsigned char* result) {
  VXTypePowerOfOtherType(myInfos, myData, otherInfos, otherData, result);
}

#endif  // __cplusplus

#endif
