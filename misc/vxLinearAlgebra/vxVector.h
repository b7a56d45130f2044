/// \file vxVector.h
/// The vector of six integers that carries every image position, extent and stride.

#ifndef VX_VECTOR_H
#define VX_VECTOR_H

#include "vxGuards.h"
#include "vxWrappingArithmetic.h"

#include <cmath>
#include <cstddef>
#include <ostream>

namespace vx {

/// Six integers, named and stored in the order of the image dimensions: x, y, z, c, t, u. x runs fastest in memory.
///
/// A plain value with no heap memory. All arithmetic works component by component and wraps around; nothing here is
/// undefined for any value. Division by a zero component is a fatal error (::VX_BAD_POINTER, thrown), and the
/// operands are as they were then. Functions may be called from any thread on different objects.
template <class intT>
class TVector {
 public:
  intT x;  ///< Columns.
  intT y;  ///< Rows.
  intT z;  ///< Slices.
  intT c;  ///< Channels, such as colours.
  intT t;  ///< Time points.
  intT u;  ///< User dimension.

  /// Number of components.
  static constexpr std::size_t size() noexcept { return 6; }

  /// All components 0.
  constexpr TVector() noexcept : x(0), y(0), z(0), c(0), t(0), u(0) {}
  /// All components take one value.
  constexpr explicit TVector(intT value) noexcept : x(value), y(value), z(value), c(value), t(value), u(value) {}
  /// Each component takes a value of its own.
  constexpr TVector(intT newX, intT newY, intT newZ, intT newC, intT newT, intT newU) noexcept
      : x(newX), y(newY), z(newZ), c(newC), t(newT), u(newU) {}
  /// Component k takes `values[k]` where `num` is greater than k, and `defaultValue` elsewhere.
  /// \param num length of the array; what is beyond 6 is not read. \param values the array. Null is a fatal error,
  /// also if `num` is 0. \param defaultValue value of the components that the array lacks.
  constexpr TVector(VXint64 num, const intT* values, intT defaultValue) : TVector(defaultValue) {
    if (!values) throwFatal(VX_BAD_POINTER);
    for (std::size_t i = 0; i < _clampCount(num); ++i) (*this)[i] = values[i];
  }

  /// Writes the first components in the order x to u.
  /// \param num how many; 6 if it is greater, none if it is 0 or negative. \param values array of at least that
  /// length. Null is a fatal error, also if `num` is 0.
  constexpr void copy(VXint64 num, intT* values) const {
    if (!values) throwFatal(VX_BAD_POINTER);
    for (std::size_t i = 0; i < _clampCount(num); ++i) values[i] = (*this)[i];
  }

  /// \param i 0 for x to 5 for u; what is above counts as 5. \return that component.
  constexpr intT& operator[](std::size_t i) noexcept { return this->*_getComponent(i); }
  /// \copydoc operator[]()
  constexpr const intT& operator[](std::size_t i) const noexcept { return this->*_getComponent(i); }

  /// Adds component by component, wrapping.
  constexpr TVector& operator+=(const TVector& other) noexcept { return _combine(other, wrapAdd<intT>); }
  /// Subtracts component by component, wrapping.
  constexpr TVector& operator-=(const TVector& other) noexcept { return _combine(other, wrapSubtract<intT>); }
  /// Multiplies component by component, wrapping.
  constexpr TVector& operator*=(const TVector& other) noexcept { return _combine(other, wrapMultiply<intT>); }
  /// Divides component by component, truncating. A 0 in the divisor is a fatal error, before anything changes.
  constexpr TVector& operator/=(const TVector& divisor) {
    divisor._checkAllNonZero();
    return _combine(divisor, wrapDivide<intT>);
  }
  /// Multiplies all components by one factor, wrapping.
  constexpr TVector& operator*=(intT factor) noexcept { return *this *= TVector(factor); }
  /// Divides all components by one divisor, truncating. 0 is a fatal error, before anything changes.
  constexpr TVector& operator/=(intT divisor) { return *this /= TVector(divisor); }

  friend constexpr TVector operator+(TVector a, const TVector& b) noexcept { return a += b; }
  friend constexpr TVector operator-(TVector a, const TVector& b) noexcept { return a -= b; }
  friend constexpr TVector operator*(TVector a, const TVector& b) noexcept { return a *= b; }
  friend constexpr TVector operator/(TVector a, const TVector& b) { return a /= b; }
  friend constexpr TVector operator*(TVector a, intT factor) noexcept { return a *= factor; }
  friend constexpr TVector operator*(intT factor, TVector a) noexcept { return a *= factor; }
  friend constexpr TVector operator/(TVector a, intT divisor) { return a /= divisor; }
  /// \return the vector of the negated components, wrapped.
  constexpr TVector operator-() const noexcept { return TVector() - *this; }

  friend constexpr bool operator==(const TVector& a, const TVector& b) noexcept {
    return a.x == b.x && a.y == b.y && a.z == b.z && a.c == b.c && a.t == b.t && a.u == b.u;
  }
  friend constexpr bool operator!=(const TVector& a, const TVector& b) noexcept { return !(a == b); }

  /// Writes "(x,y,z,c,t,u)".
  friend std::ostream& operator<<(std::ostream& stream, const TVector& v) {
    return stream << '(' << v.x << ',' << v.y << ',' << v.z << ',' << v.c << ',' << v.t << ',' << v.u << ')';
  }

  /// \return the smaller of each pair of components.
  static constexpr TVector compMin(const TVector& a, const TVector& b) noexcept {
    return TVector(a)._combine(b, [](intT p, intT q) { return q < p ? q : p; });
  }
  /// \return the greater of each pair of components.
  static constexpr TVector compMax(const TVector& a, const TVector& b) noexcept {
    return TVector(a)._combine(b, [](intT p, intT q) { return p < q ? q : p; });
  }
  /// \return the sum of the products of each pair of components, wrapped; of a position and strides the linear index.
  static constexpr intT dot(const TVector& a, const TVector& b) noexcept {
    const TVector p = a * b;
    return wrapAdd(wrapAdd(wrapAdd(wrapAdd(wrapAdd(p.u, p.t), p.c), p.z), p.y), p.x);
  }
  /// \return the product of all components, wrapped; of an extent the number of voxels.
  constexpr intT getProduct() const noexcept {
    return wrapMultiply(wrapMultiply(wrapMultiply(wrapMultiply(wrapMultiply(u, t), c), z), y), x);
  }

  /// Strides of a block whose extent this vector is: the running product of the components below each, x fastest.
  /// The component u does not enter.
  /// \param start stride in x, in the unit of the result: 1 counts voxels. \return the strides, wrapped.
  constexpr TVector getStrides(intT start = 1) const noexcept {
    TVector strides;
    strides.x = start;
    strides.y = wrapMultiply(strides.x, x);
    strides.z = wrapMultiply(strides.y, y);
    strides.c = wrapMultiply(strides.z, z);
    strides.t = wrapMultiply(strides.c, c);
    strides.u = wrapMultiply(strides.t, t);
    return strides;
  }

  /// Takes a linear index apart by the strides that this vector holds, highest dimension first.
  /// \param index the index. \return the position. A stride of 0 is a fatal error.
  constexpr TVector getVectorPosition(intT index) const {
    _checkAllNonZero();
    TVector position;
    for (std::size_t i = size(); i-- > 0;) {
      const intT stride = (*this)[i];
      position[i] = wrapDivide(index, stride);
      index = wrapSubtract(index, wrapMultiply(position[i], stride));
    }
    return position;
  }

  /// \copydoc vx::divCeil()
  static TVector divCeil(const TVector& a, const TVector& b) {
    b._checkAllNonZero();
    return TVector(a)._combine(b, _divCeilComponent);
  }

 private:
  static constexpr intT TVector::*_getComponent(std::size_t i) noexcept {
    switch (i) {
      case 0:
        return &TVector::x;
      case 1:
        return &TVector::y;
      case 2:
        return &TVector::z;
      case 3:
        return &TVector::c;
      case 4:
        return &TVector::t;
      default:
        return &TVector::u;
    }
  }

  static constexpr std::size_t _clampCount(VXint64 num) noexcept {
    return num <= 0 ? 0 : num >= VXint64(size()) ? size() : std::size_t(num);
  }

  constexpr void _checkAllNonZero() const {
    for (std::size_t i = size(); i-- > 0;) {
      if ((*this)[i] == 0) throwFatal(VX_BAD_POINTER);
    }
  }

  template <class Operation>
  constexpr TVector& _combine(const TVector& other, Operation operation) {
    x = operation(x, other.x);
    y = operation(y, other.y);
    z = operation(z, other.z);
    c = operation(c, other.c);
    t = operation(t, other.t);
    u = operation(u, other.u);
    return *this;
  }

  static intT _divCeilComponent(intT a, intT b) noexcept {
    // Page counts of existing networks depend on the step through single precision.
    const float quotient = std::ceil(static_cast<float>(static_cast<long double>(a) / static_cast<long double>(b)));
    constexpr float limit = 9223372036854775808.0F;
    if (!(quotient >= -limit && quotient < limit)) return static_cast<intT>(-0x7fffffffffffffffLL - 1);
    return static_cast<intT>(static_cast<VXint64>(quotient));
  }
};

/// Ceiling division, component by component, as pages of an image are counted.
///
/// The quotient is rounded to single precision before the ceiling is taken, and the ceiling is a single precision
/// number: quotients above 2 to the power 24 lose their low bits, and a fraction too small for single precision
/// doesn't count. A result beyond 64 bits is the minimum of VXint64.
/// \param a the dividends. \param b the divisors. A 0 among them is a fatal error.
template <class intT>
TVector<intT> divCeil(const TVector<intT>& a, const TVector<intT>& b) {
  return TVector<intT>::divCeil(a, b);
}

/// \return the smaller of each pair of components.
template <class intT>
constexpr TVector<intT> compMin(const TVector<intT>& a, const TVector<intT>& b) noexcept {
  return TVector<intT>::compMin(a, b);
}

/// \return the greater of each pair of components.
template <class intT>
constexpr TVector<intT> compMax(const TVector<intT>& a, const TVector<intT>& b) noexcept {
  return TVector<intT>::compMax(a, b);
}

/// \copydoc TVector::dot()
template <class intT>
constexpr intT dot(const TVector<intT>& a, const TVector<intT>& b) noexcept {
  return TVector<intT>::dot(a, b);
}

/// The instance in use.
using Vector = TVector<VXint64>;

}  // namespace vx

#endif
