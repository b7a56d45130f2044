/// \file vxStdTypeInfos.h
/// The ten standard voxel types: the record and the operations of a type that C knows.

#ifndef VX_STD_TYPE_INFOS_H
#define VX_STD_TYPE_INFOS_H

#include "vxTypeInfos.h"

#include <limits>
#include <type_traits>

/// The ten standard types in number order: X(T, number).
///
/// `long double` is only the tag of type 8: its voxels are stored and computed as ::VXldouble, in 8 bytes.
#define VX_FOR_EACH_STANDARD_TYPE(X) \
  X(char, VXint8Type)                \
  X(unsigned char, VXuint8Type)      \
  X(short, VXint16Type)              \
  X(unsigned short, VXuint16Type)    \
  X(int, VXint32Type)                \
  X(unsigned int, VXuint32Type)      \
  X(float, VXfloatType)              \
  X(double, VXdoubleType)            \
  X(long double, VXldoubleType)      \
  X(VXint64, VXint64Type)

namespace vx {

/// What a voxel of the standard type `T` is in memory: `T` itself, and ::VXldouble for `long double`.
template <class T>
using StoredVoxel = std::conditional_t<std::is_same_v<T, long double>, VXldouble, T>;

}  // namespace vx

/// The record of a standard type and its operations.
///
/// VXInitializeTypes() makes the one object of each type; the record lives on without it, to the end of the process.
/// The operations have no state and may be called from any thread. Voxels need not be aligned, and a result may be one
/// of the operands. An operation costs an unaligned load and store beside its arithmetic; those on another type, on
/// texts and on shifts, and the bit operations of floating point types, go through the record.
///
/// - An integer result that doesn't fit wraps at the width of `T`. A floating point result is cast to an integer by
///   vx::truncateTo(), so it is truncated toward zero.
/// - Operands of different types meet as they do in C, but for comparisons with an integer `T`: there the number is
///   cast to `T` first.
/// - Floating point numbers are equal if they differ by less than the smallest normal number of their type; infinities
///   are never equal.
/// - `castToBool` of a floating point number is false below the smallest normal number.
/// - `invert` and `divByInt` give the maximum in place of a division by 0. `divByDouble` by less than 1e-06 is reported
///   by VXPrintAndNotifyFatal() with ::VX_BAD_POINTER, which is thrown. `divIntBy` and `divByType` don't test their
///   divisor: the caller must not pass an integer 0.
/// - `negate` copies an unsigned voxel; `normalize` gives 1 for every voxel.
/// - A power is computed as VXldouble, that of an integer exponent by repeated multiplication.
template <class T>
class VX_EXPORT VXTStdTypeInfos {
 public:
  static VXTypeInfos* _myInfos;  ///< The one record of `T`, null before the first object and after a lack of memory.
  static int _numInstances;      ///< Number of objects made.

  static constexpr T _typeMin = std::numeric_limits<vx::StoredVoxel<T>>::lowest();  ///< Smallest finite value.
  static constexpr T _typeMax = std::numeric_limits<vx::StoredVoxel<T>>::max();     ///< Largest finite value.
  static constexpr T _typeDefault = 0;                                              ///< Value of a voxel by default.
  static const char* const _typeInfoString;                                         ///< The one component code of `T`.

  /// Makes the record with all its operations, not yet registered. Any object but the first is reported as fatal with
  /// ::VX_MISUSED_INTERFACE and changes nothing. Without memory for the record, which is reported as fatal with
  /// ::VX_NO_MEMORY, the object doesn't count, and the next one tries again.
  VXTStdTypeInfos();

  /// \return the name of the voxel type; the argument only selects it and may be null.
  static const char* typeName(T*);

  /// The operations, `VXTYPE_` and the name of the record's member, with its signature.
#define VX_DECLARE_STD_TYPE_OPERATION(member, Name, signature, word, bit, reported) \
  static std::remove_pointer_t<signature> VXTYPE_##member;
#define VX_DECLARE_PLAIN_STD_TYPE_OPERATION(member, Name, signature) \
  static std::remove_pointer_t<signature> VXTYPE_##member;
  VX_FOR_EACH_TYPE_OPERATION(VX_DECLARE_STD_TYPE_OPERATION, VX_DECLARE_PLAIN_STD_TYPE_OPERATION)
#undef VX_DECLARE_STD_TYPE_OPERATION
#undef VX_DECLARE_PLAIN_STD_TYPE_OPERATION

 protected:
  /// \return the standard type that this one behaves like: itself.
  static VXDataType _rangeAndPrecisionEquiv(T);

  /// Gives the types into which values may be cast without loss of range.
  /// \param count takes their number. \param names takes their names, which live as long as the process; null for none.
  static void _getGoodCastTos(T, VXuint64& count, const char**& names);
};

#define VX_DECLARE_STD_TYPE_INFOS(T, number) extern template class VXTStdTypeInfos<T>;
VX_FOR_EACH_STANDARD_TYPE(VX_DECLARE_STD_TYPE_INFOS)
#undef VX_DECLARE_STD_TYPE_INFOS

namespace vx {
using ::VXTStdTypeInfos;
}  // namespace vx

#endif
