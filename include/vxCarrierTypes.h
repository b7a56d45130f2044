/// \file vxCarrierTypes.h
/// Voxels of registered types as typed code sees them: blocks of bytes that work through a slot of the type table.

#ifndef VX_CARRIER_TYPES_H
#define VX_CARRIER_TYPES_H

#include "vxTypeInfos.h"

#include <type_traits>

/// The ten carrier sizes with the slots through which they are written and read: X(size, outputId, inputId).
#define VX_FOR_EACH_CARRIER_SIZE(X) \
  X(4, 10, 30)                      \
  X(8, 11, 31)                      \
  X(12, 12, 32)                     \
  X(16, 13, 33)                     \
  X(24, 14, 34)                     \
  X(32, 15, 35)                     \
  X(64, 16, 36)                     \
  X(128, 17, 37)                    \
  X(256, 18, 38)                    \
  X(512, 19, 39)

/// Reports a misused carrier as fatal, with ::VX_MISUSED_INTERFACE, and returns.
/// \param function where it happened. \param reason what was wrong.
VX_C_API void _VXTypeError(const char* function, const char* reason);

/// A voxel of a registered type: `size` bytes and nothing else, at any address.
///
/// Its operators call the operations of the type in slot `id` of ::VXTypeInfosTable, one indirect call each, so a type
/// must be pushed before and popped after their use. An operation that the type left out reports itself; one on an
/// empty slot is reported by _VXTypeError(). Either way the result is 0 or a voxel of zeros, and the target of an
/// assignment stays as it is. Copies of a carrier copy its bytes. A carrier may be used where its slot doesn't change,
/// from any thread.
template <unsigned int size, int id>
class VX_EXPORT VXTCarrierType {
  static constexpr bool _isPair() {
#define VX_IS_CARRIER_PAIR(bytes, outputId, inputId) (size == (bytes) && (id == (outputId) || id == (inputId))) ||
    return VX_FOR_EACH_CARRIER_SIZE(VX_IS_CARRIER_PAIR) false;
#undef VX_IS_CARRIER_PAIR
  }
  static_assert(_isPair(), "size and id must be one of the twenty pairs of the carrier types");

  template <class Number>
  using IfNumber = std::enable_if_t<std::is_arithmetic_v<Number>, int>;

 public:
  /// A voxel whose bytes are not initialised.
  VXTCarrierType() = default;

  // The conversions are implicit in both directions, so that a carrier stands where a number may stand.
  // NOLINTBEGIN(google-explicit-constructor)

  /// A voxel from a number: `castFromInt` with the low 32 bits of an integer, `castFromDouble` for floating point.
  template <class Number, IfNumber<Number> = 0>
  VXTCarrierType(Number value) : _bytes{} {
    *this = value;
  }
  /// A voxel from one of another slot, by `castFromOtherType`.
  template <unsigned int otherSize, int otherId>
  VXTCarrierType(const VXTCarrierType<otherSize, otherId>& other) : _bytes{} {
    *this = other;
  }

  /// As the constructors; an object that is assigned to itself in the guise of another slot stays as it is.
  template <class Number, IfNumber<Number> = 0>
  VXTCarrierType& operator=(Number value) {
    if constexpr (std::is_integral_v<Number>) {
      _call(&VXTypeInfos::castFromInt, static_cast<int>(value), data());
    } else {
      _call(&VXTypeInfos::castFromDouble, static_cast<double>(value), data());
    }
    return *this;
  }
  /// \copydoc operator=
  template <unsigned int otherSize, int otherId>
  VXTCarrierType& operator=(const VXTCarrierType<otherSize, otherId>& other) {
    if (data() != other.data()) {
      _call(&VXTypeInfos::castFromOtherType, &VXTypeInfosTable[otherId], other.data(), data());
    }
    return *this;
  }

  /// The voxel as a number: `castToInt` for integers, so no more than 32 bits, `castToDouble` for floating point.
  template <class Number, IfNumber<Number> = 0>
  operator Number() const {
    if constexpr (std::is_integral_v<Number>) {
      return static_cast<Number>(_call(&VXTypeInfos::castToInt, data()));
    } else {
      return static_cast<Number>(_call(&VXTypeInfos::castToDouble, data()));
    }
  }

  // NOLINTEND(google-explicit-constructor)

  /// The product with a number, by `multWithDouble`.
  template <class Number, IfNumber<Number> = 0>
  VXTCarrierType operator*(Number factor) const {
    VXTCarrierType result = _zeros();
    _call(&VXTypeInfos::multWithDouble, data(), static_cast<double>(factor), result.data());
    return result;
  }
  /// The sum with a number, by `plusDouble`.
  template <class Number, IfNumber<Number> = 0>
  VXTCarrierType operator+(Number summand) const {
    VXTCarrierType result = _zeros();
    _call(&VXTypeInfos::plusDouble, data(), static_cast<double>(summand), result.data());
    return result;
  }

  /// Comparisons by `isEqualToType`, `isSmallerThanType` and `isGreaterThanType`.
  bool operator==(const VXTCarrierType& other) const {
    return _call(&VXTypeInfos::isEqualToType, data(), other.data()) != 0;
  }
  /// \copydoc operator==
  bool operator<(const VXTCarrierType& other) const {
    return _call(&VXTypeInfos::isSmallerThanType, data(), other.data()) != 0;
  }
  /// \copydoc operator==
  bool operator>(const VXTCarrierType& other) const {
    return _call(&VXTypeInfos::isGreaterThanType, data(), other.data()) != 0;
  }

  /// \return the bytes of the voxel, `size` of them.
  unsigned char* data() { return _bytes; }
  /// \copydoc data()
  const unsigned char* data() const { return _bytes; }

 private:
  static VXTCarrierType _zeros() {
    VXTCarrierType zeros;
    for (unsigned char& byte : zeros._bytes) byte = 0;
    return zeros;
  }

  // Calls an operation of the slot's type.
  template <class Result, class... Parameters, class... Arguments>
  static Result _call(Result (*VXTypeInfos::*operation)(Parameters...), Arguments... arguments) {
    if (const auto function = VXTypeInfosTable[id].*operation) return function(arguments...);
    _VXTypeError("VXTCarrierType", "No type is set in the slot of this carrier. Ignoring call or returning 0.");
    return Result();
  }

  unsigned char _bytes[size];
};

namespace vx {
using ::VXTCarrierType;
}  // namespace vx

#endif
