/// \file vxVecBase.h
/// What the floating point vectors of all sizes share.

#ifndef VX_VEC_BASE_H
#define VX_VEC_BASE_H

#include "vxTypes.h"

#include <cmath>
#include <cstddef>
#include <ostream>
#include <type_traits>

namespace vx {

/// Base of the vectors `Tvec2` to `Tvec64`: N components of DT, contiguous, indexed from 0.
///
/// A plain value with no heap memory and no virtual functions. `Vec` is the vector class that derives from it.
/// Comparison is exact. Functions may be called from any thread on different objects.
template <class Vec, class DT, std::size_t N>
class TvecBase {
 public:
  /// Type of a component.
  using ValueType = DT;

  /// Number of components.
  static constexpr std::size_t size() noexcept { return N; }

  /// All components 0.
  constexpr TvecBase() noexcept : _values{} {}
  /// All components take one value.
  constexpr explicit TvecBase(DT value) noexcept : _values{} {
    for (DT& component : _values) component = value;
  }
  /// Each component takes a value of its own.
  template <class... Scalars,
            std::enable_if_t<sizeof...(Scalars) == N && (std::is_convertible_v<Scalars, DT> && ...), int> = 0>
  constexpr TvecBase(Scalars... values) noexcept : _values{static_cast<DT>(values)...} {}
  /// Takes the components from an array.
  /// \param values N numbers of any type, not null. A template, so that a literal 0 stays a number.
  template <class Scalar, std::enable_if_t<std::is_arithmetic_v<Scalar>, int> = 0>
  constexpr explicit TvecBase(const Scalar* values) : _values{} {
    for (std::size_t i = 0; i < N; ++i) _values[i] = static_cast<DT>(values[i]);
  }

  /// \param i 0 to N-1, not checked. \return that component.
  constexpr DT& operator[](std::size_t i) noexcept { return _values[i]; }
  /// \copydoc operator[]()
  constexpr const DT& operator[](std::size_t i) const noexcept { return _values[i]; }

  /// \return the first of the N components, good as long as the vector.
  constexpr DT* data() noexcept { return _values; }
  /// \copydoc data()
  constexpr const DT* data() const noexcept { return _values; }
  /// \return the first component, for loops over all of them.
  constexpr DT* begin() noexcept { return _values; }
  /// \return the place behind the last component.
  constexpr DT* end() noexcept { return _values + N; }
  /// \copydoc begin()
  constexpr const DT* begin() const noexcept { return _values; }
  /// \copydoc end()
  constexpr const DT* end() const noexcept { return _values + N; }

  /// Adds component by component. \return this vector.
  constexpr Vec& operator+=(const Vec& other) noexcept {
    for (std::size_t i = 0; i < N; ++i) _values[i] += other[i];
    return _self();
  }
  /// Subtracts component by component. \return this vector.
  constexpr Vec& operator-=(const Vec& other) noexcept {
    for (std::size_t i = 0; i < N; ++i) _values[i] -= other[i];
    return _self();
  }
  /// Multiplies each component. \return this vector.
  constexpr Vec& operator*=(DT factor) noexcept {
    for (DT& component : _values) component *= factor;
    return _self();
  }
  /// Divides each component; it is N divisions and not a reciprocal.
  constexpr Vec& operator/=(DT divisor) noexcept {
    for (DT& component : _values) component /= divisor;
    return _self();
  }

  friend constexpr Vec operator+(Vec a, const Vec& b) noexcept { return a += b; }
  friend constexpr Vec operator-(Vec a, const Vec& b) noexcept { return a -= b; }
  friend constexpr Vec operator*(Vec a, DT factor) noexcept { return a *= factor; }
  friend constexpr Vec operator*(DT factor, Vec a) noexcept { return a *= factor; }
  friend constexpr Vec operator/(Vec a, DT divisor) noexcept { return a /= divisor; }
  /// The dot product.
  friend constexpr DT operator*(const Vec& a, const Vec& b) noexcept { return a.dot(b); }
  /// \return the vector of the negated components.
  constexpr Vec operator-() const noexcept {
    Vec negated;
    for (std::size_t i = 0; i < N; ++i) negated[i] = -_values[i];
    return negated;
  }

  friend constexpr bool operator==(const Vec& a, const Vec& b) noexcept {
    for (std::size_t i = 0; i < N; ++i) {
      if (!(a[i] == b[i])) return false;
    }
    return true;
  }
  friend constexpr bool operator!=(const Vec& a, const Vec& b) noexcept { return !(a == b); }

  /// \return the sum of the products of each pair of components, added in the order of the index.
  constexpr DT dot(const Vec& other) const noexcept {
    DT sum = _values[0] * other[0];
    for (std::size_t i = 1; i < N; ++i) sum += _values[i] * other[i];
    return sum;
  }
  /// \return the square of length().
  constexpr DT lengthSquared() const noexcept { return dot(_self()); }
  /// \return the Euclidean length.
  DT length() const noexcept { return static_cast<DT>(std::sqrt(lengthSquared())); }
  /// Scales this vector to length 1. One of length 0 stays as it is. \return this vector.
  Vec& normalize() noexcept {
    const DT norm = length();
    return norm > DT(0) ? *this /= norm : _self();
  }
  /// \return a copy of length 1, see normalize().
  Vec normalized() const noexcept { return Vec(_self()).normalize(); }

  /// \return the smaller of each pair of components, the first unless the second is less.
  static constexpr Vec compMin(Vec a, const Vec& b) noexcept {
    for (std::size_t i = 0; i < N; ++i) a[i] = b[i] < a[i] ? b[i] : a[i];
    return a;
  }
  /// \return the greater of each pair of components, the first unless the second is greater.
  static constexpr Vec compMax(Vec a, const Vec& b) noexcept {
    for (std::size_t i = 0; i < N; ++i) a[i] = b[i] > a[i] ? b[i] : a[i];
    return a;
  }

  /// Writes the components in parentheses, separated by commas.
  friend std::ostream& operator<<(std::ostream& stream, const Vec& v) {
    stream << '(' << v[0];
    for (std::size_t i = 1; i < N; ++i) stream << ',' << v[i];
    return stream << ')';
  }

 private:
  constexpr Vec& _self() noexcept { return static_cast<Vec&>(*this); }
  constexpr const Vec& _self() const noexcept { return static_cast<const Vec&>(*this); }

  DT _values[N];
};

/// \return the dot product of two vectors of one size.
template <class Vec, class DT, std::size_t N>
constexpr DT dot(const TvecBase<Vec, DT, N>& a, const TvecBase<Vec, DT, N>& b) noexcept {
  return a.dot(static_cast<const Vec&>(b));
}

/// \return the smaller of each pair of components, see TvecBase::compMin().
template <class Vec, class DT, std::size_t N>
constexpr Vec compMin(const TvecBase<Vec, DT, N>& a, const TvecBase<Vec, DT, N>& b) noexcept {
  return Vec::compMin(static_cast<const Vec&>(a), static_cast<const Vec&>(b));
}

/// \return the greater of each pair of components, see TvecBase::compMax().
template <class Vec, class DT, std::size_t N>
constexpr Vec compMax(const TvecBase<Vec, DT, N>& a, const TvecBase<Vec, DT, N>& b) noexcept {
  return Vec::compMax(static_cast<const Vec&>(a), static_cast<const Vec&>(b));
}

}  // namespace vx

#endif
