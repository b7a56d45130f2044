/// \file vxTypes.h
/// Number types, voxel type numbers, error codes, message types and memory error modes: the vocabulary of every
/// interface of the library, for C and C++.

#ifndef VX_TYPES_H
#define VX_TYPES_H

#include <stddef.h>

// Linkage ------------------------------------------------------------------------------------------------------------

/// Marks what a library exports. Everything else is hidden.
#if defined(__GNUC__)
#define VX_EXPORT __attribute__((visibility("default")))
#else
#define VX_EXPORT
#endif

/// Linkage of a function of the C interface.
#ifdef __cplusplus
#define VX_C_API extern "C" VX_EXPORT
#else
#define VX_C_API VX_EXPORT extern
#endif

/// A default argument, which only C++ callers have.
#ifdef __cplusplus
#define VX_DEFAULT(value) = value
#else
#define VX_DEFAULT(value)
#endif

/// Enumerators that are plain `int` in both languages.
#ifdef __cplusplus
#define VX_INT_ENUM : int
#else
#define VX_INT_ENUM
#endif

// Numbers ------------------------------------------------------------------------------------------------------------

typedef char VXint8;              ///< Signed 8-bit integer. The library is built with a signed `char`.
typedef unsigned char VXuint8;    ///< Unsigned 8-bit integer.
typedef short VXint16;            ///< Signed 16-bit integer.
typedef unsigned short VXuint16;  ///< Unsigned 16-bit integer.
typedef int VXint32;              ///< Signed 32-bit integer.
typedef unsigned int VXuint32;    ///< Unsigned 32-bit integer.
typedef float VXfloat;            ///< IEEE 754 binary32.
typedef double VXdouble;          ///< IEEE 754 binary64.
typedef double VXldouble;         ///< The second name of the 8-byte floating point format, see ::VXldoubleType.
#ifdef __cplusplus
typedef long long VXint64;            ///< Signed 64-bit integer, never `long`.
typedef unsigned long long VXuint64;  ///< Unsigned 64-bit integer, never `unsigned long`.
#else
__extension__ typedef long long VXint64;
__extension__ typedef unsigned long long VXuint64;
#endif

#ifdef __cplusplus
static_assert(static_cast<char>(-1) < 0, "VXint8 needs a signed char: compile with -fsigned-char");
static_assert(sizeof(VXint16) == 2 && sizeof(VXint32) == 4 && sizeof(VXint64) == 8, "integers of fixed size");
static_assert(sizeof(VXfloat) == 4 && sizeof(VXdouble) == 8, "IEEE 754 floating point");
#endif

// Voxel types --------------------------------------------------------------------------------------------------------

/// Number of a voxel type: an index into the table of types, -1 for none.
typedef VXint32 VXDataType;

/// The ten standard voxel types. The numbers are part of the interface.
enum VXStandardDataTypes VX_INT_ENUM {
  VXint8Type = 0,     ///< "int8"
  VXuint8Type = 1,    ///< "unsigned int8"
  VXint16Type = 2,    ///< "int16"
  VXuint16Type = 3,   ///< "unsigned int16"
  VXint32Type = 4,    ///< "int32"
  VXuint32Type = 5,   ///< "unsigned int32"
  VXfloatType = 6,    ///< "float"
  VXdoubleType = 7,   ///< "double"
  VXldoubleType = 8,  ///< "long double": the format of "double" under a second name, 8 bytes
  VXint64Type = 9     ///< "int64"; last in number, below the floating point types in range
};

// Error codes --------------------------------------------------------------------------------------------------------

/// Result of most functions: 0 for success, else one of the codes below.
typedef int VXErrorCode;

/// The one list of error codes: X(name, code, description). VXGetErrorCodeDescription() gives the third column.
#define VX_FOR_EACH_ERROR_CODE(X)                                                                                 \
  X(VX_RESULT_OK, 0, "No error.")                                                                                 \
  X(VX_UNKNOWN_EXCEPTION, 1, "An exception of unknown kind reached a boundary.")                                  \
  X(VX_NO_MEMORY, 2, "An allocation of memory failed.")                                                           \
  X(VX_OPEN_NETWORK, 3, "No image can be had: an input is open or the output field is missing.")                  \
  X(VX_CYCLIC_NETWORK, 4, "The network is cyclic: a module was reached twice.")                                   \
  X(VX_BAD_MODULE_POINTER, 5, "No module was given where one is needed.")                                         \
  X(VX_BAD_OUTPUT_INDEX, 6, "The output index is out of range.")                                                  \
  X(VX_BAD_FIELD, 7, "The field pointer is invalid.")                                                             \
  X(VX_UNINITIALIZED_RESULT, 8, "The calculation of a tile failed; the returned memory is not filled.")           \
  X(VX_IMAGE_NOT_CALCULATED, 10, "The image has not been calculated yet.")                                        \
  X(VX_BAD_INPUT_INDEX, 11, "The input index is out of range.")                                                   \
  X(VX_OPEN_INPUT, 12, "An input is open where a valid one is needed.")                                           \
  X(VX_BAD_DATA_TYPE, 13, "The voxel data type is invalid or not handled.")                                       \
  X(VX_MISUSED_INTERFACE, 14, "An interface was used in a way that its contract forbids.")                        \
  X(VX_PAGE_CALCULATION_FAILED, 16, "The calculation of a page failed; others go on.")                            \
  X(VX_PROPERTY_CALCULATION_FAILED, 17,                                                                           \
    "An exception of unknown kind left a module while image properties were updated.")                            \
  X(VX_IN_SUBIMAGE_CALCULATION_FAILED, 18,                                                                        \
    "An exception of unknown kind left a module while its input regions were determined.")                        \
  X(VX_BAD_PARAMETER, 19, "An argument is invalid.")                                                              \
  X(VX_IMAGE_INVALID, 20, "The image could not be made valid.")                                                   \
  X(VX_BAD_IMAGE_EXTENT, 21, "An image extent or page extent has a component below 1.")                           \
  X(VX_RECURSION_STOPPED, 22, "A re-entered call was refused.")                                                   \
  X(VX_LIBRARY_LOAD_FAILED, 23, "A library could not be loaded.")                                                 \
  X(VX_BAD_INDEX, 26, "An index is out of range in a list or an enumeration.")                                    \
  X(VX_BAD_PAGE_ID, 27, "A page id is out of range.")                                                             \
  X(VX_REQUIRED_OPERATIONS_MISSING, 28, "The voxel type of an output lacks operations that the module requires.") \
  X(VX_BAD_OBJECT_TYPE, 29, "An object is not of the required run-time type.")                                    \
  X(VX_FIELD_NOT_ADDED, 30, "A field could not be added.")                                                        \
  X(VX_BAD_FIELD_REQUEST, 31, "A field of that name or type can't be made.")                                      \
  X(VX_TYPE_INIT_FAILED, 32, "The standard voxel types could not be registered.")                                 \
  X(VX_CONSTRUCTOR_FAILED, 33, "A constructor threw an exception.")                                               \
  X(VX_DESTRUCTOR_FAILED, 34, "A destructor threw an exception.")                                                 \
  X(VX_OBJECT_NOT_INITIALIZED, 39, "The type information of an object is missing: its class was not registered.") \
  X(VX_BAD_POINTER, 41, "A pointer that must be valid is not.")                                                   \
  X(VX_BAD_INTERNAL_POINTER, 42, "An internal pointer is unset.")                                                 \
  X(VX_EMPTY_STACK, 44, "An entry was to be taken from an empty stack.")                                          \
  X(VX_STACK_NOT_EMPTY, 46, "The state stack is not empty at shutdown.")                                          \
  X(VX_NO_DEFAULT_VALUE, 53, "A registered voxel type has no default value.")                                     \
  X(VX_TYPE_CHANGE_IN_THREADS, 64, "Registered voxel types were changed twice during multi-threading.")           \
  X(VX_LIBRARY_UNLOAD_FAILED, 66, "A library could not be unloaded.")                                             \
  X(VX_LIBRARY_IN_USE, 69, "Instances of the library's classes remain.")

/// The error codes as constants.
enum VXErrorCodes VX_INT_ENUM {
#define VX_DEFINE_ERROR_CODE(name, code, description) name = code,
  VX_FOR_EACH_ERROR_CODE(VX_DEFINE_ERROR_CODE)
#undef VX_DEFINE_ERROR_CODE
};

// Messages -----------------------------------------------------------------------------------------------------------

/// Level of a message: a bit, so that one filter word selects several levels.
typedef int VXMessageType;

/// The message levels.
enum VXMessageTypes VX_INT_ENUM {
  VX_WARNING = 1,  ///< Behaviour is changed or a request refused, without harm.
  VX_ERROR = 2,    ///< A bad call: it is ignored or answered by a default.
  VX_FATAL = 4,    ///< The library's own guarantee is broken, such as an exception caught at the boundary.
  VX_DEBUG = 8     ///< Debug output.
};

// Memory -------------------------------------------------------------------------------------------------------------

/// What an allocation function does on failure.
typedef int VXMemoryErrorHandling;

/// The modes of ::VXMemoryErrorHandling.
enum VXMemoryErrorHandlings VX_INT_ENUM {
  VX_RETURN_NULL = 0,        ///< Return null; the caller handles it.
  VX_FATAL_MEMORY_ERROR = 1  ///< Report a fatal message with ::VX_NO_MEMORY, then return null.
};

#endif
