/// \file vxMatBase.h
/// What the square matrices of all sizes share.

#ifndef VX_MAT_BASE_H
#define VX_MAT_BASE_H

#include "vxErrorOutput.h"
#include "vxLinearAlgebraTools.h"

#include <cstddef>
#include <ostream>
#include <type_traits>

namespace vx {

/// Function labels of the messages of one size of matrix.
struct MatLabels {
  const char* row;       ///< Access to a row.
  const char* constRow;  ///< Access to a row of a constant matrix.
  const char* inverse;   ///< Inversion.
};

/// Labels of the matrices of size 2 to 6. Hosts match these texts, the uneven blanks among them.
inline constexpr MatLabels matLabels[] = {
    {"Tvec2<DT>& Tmat2<DT>::operator[](const size_t i), illegal index i",
     "const Tvec2<DT>& Tmat2<DT>::operator[](const size_t i), illegal index i",
     "Tmat2<DT> Tmat2<DT>::inverse(bool *isInvertible) const, matrix not invertable"},
    {"Tvec3<DT> &Tmat3<DT>::operator[](const size_t i), illegal index i",
     "const Tvec3<DT> &Tmat3<DT>::operator[](const size_t i), illegal index i",
     "Tmat3<DT> Tmat3<DT>::inverse(bool *isInvertible) const, matrix not invertable"},
    {"Tvec4<DT> &Tmat4<DT>::operator[](const size_t i), illegal index i",
     "const Tvec4<DT> &Tmat4<DT>::operator[](const size_t i), illegal index i",
     "Tmat4<DT> Tmat4<DT>::inverse(bool *isInvertible) const, matrix not invertable"},
    {"Tvec5<DT>& Tmat5<DT>::operator[](const size_t i), illegal index i",
     "const Tvec5<DT>& Tmat5<DT>::operator[](const size_t i), illegal index i",
     "Tmat5<DT> Tmat5<DT>::inverse(bool *isInvertible) const, matrix not invertable"},
    {"Tvec6<DT>& Tmat6<DT>::operator[](const size_t i), illegal index i",
     "const Tvec6<DT>& Tmat6<DT>::operator[](const size_t i), illegal index i",
     "Tmat6<DT> Tmat6<DT>::inverse(bool *isInvertible) const, matrix not invertable"},
};

/// Base of the matrices `Tmat2` to `Tmat6`: N rows of N components, contiguous, row after row.
///
/// A plain value with no heap memory and no virtual functions. `Mat` is the matrix class that derives from it, `Vec`
/// the vector of its size. Vectors are columns: a matrix acts on a vector from the left. Comparison is exact. Functions
/// may be called from any thread on different objects.
template <class Mat, class Vec>
class TmatBase {
  static constexpr std::size_t N = Vec::size();

 public:
  /// Type of a component.
  using ValueType = typename Vec::ValueType;

  /// Number of rows and of columns.
  static constexpr std::size_t size() noexcept { return N; }

  /// All components 0.
  constexpr TmatBase() noexcept : _rows{} {}
  /// A multiple of the identity. \param diagonal value on the diagonal; all else is 0.
  constexpr explicit TmatBase(ValueType diagonal) noexcept : _rows{} {
    for (std::size_t i = 0; i < N; ++i) _rows[i][i] = diagonal;
  }
  /// Each row takes a vector.
  template <class... Rows, std::enable_if_t<sizeof...(Rows) == N && (std::is_same_v<Rows, Vec> && ...), int> = 0>
  constexpr TmatBase(const Rows&... rows) noexcept : _rows{rows...} {}
  /// Each component takes a value of its own, row after row.
  template <
      class... Scalars,
      std::enable_if_t<sizeof...(Scalars) == N * N && (std::is_convertible_v<Scalars, ValueType> && ...), int> = 0>
  constexpr TmatBase(Scalars... values) noexcept : _rows{} {
    const ValueType array[] = {static_cast<ValueType>(values)...};
    _assign(array);
  }
  /// Takes the components from an array.
  /// \param values N * N numbers of any type, row after row, not null. A template, so that a literal 0 stays a number.
  template <class Scalar, std::enable_if_t<std::is_arithmetic_v<Scalar>, int> = 0>
  constexpr explicit TmatBase(const Scalar* values) : _rows{} {
    _assign(values);
  }

  /// \return the identity.
  static constexpr Mat getIdentity() noexcept { return Mat(ValueType(1)); }

  /// Takes the components from an array. \param values N * N values, row after row, not null.
  constexpr void setValues(const double* values) { _assign(values); }

  /// \param i 0 to N-1; what is above is reported as an error with ::VX_BAD_INDEX and counts as 0. \return that row.
  constexpr Vec& operator[](const std::size_t i) noexcept { return _rows[_checkRow(i, _labels().row)]; }
  /// \copydoc operator[]()
  constexpr const Vec& operator[](const std::size_t i) const noexcept {
    return _rows[_checkRow(i, _labels().constRow)];
  }

  /// Adds component by component. \return this matrix.
  constexpr Mat& operator+=(const Mat& other) noexcept {
    for (std::size_t i = 0; i < N; ++i) _rows[i] += other[i];
    return _self();
  }
  /// Subtracts component by component. \return this matrix.
  constexpr Mat& operator-=(const Mat& other) noexcept {
    for (std::size_t i = 0; i < N; ++i) _rows[i] -= other[i];
    return _self();
  }
  /// Multiplies each component. \return this matrix.
  constexpr Mat& operator*=(ValueType factor) noexcept {
    for (Vec& row : _rows) row *= factor;
    return _self();
  }
  /// Divides each component. \return this matrix.
  constexpr Mat& operator/=(ValueType divisor) noexcept {
    for (Vec& row : _rows) row /= divisor;
    return _self();
  }
  /// Multiplies by a matrix that stands to the right of this one.
  constexpr Mat& operator*=(const Mat& other) noexcept { return _self() = _self() * other; }

  friend constexpr Mat operator+(Mat a, const Mat& b) noexcept { return a += b; }
  friend constexpr Mat operator-(Mat a, const Mat& b) noexcept { return a -= b; }
  friend constexpr Mat operator*(Mat a, ValueType factor) noexcept { return a *= factor; }
  friend constexpr Mat operator*(ValueType factor, Mat a) noexcept { return a *= factor; }
  friend constexpr Mat operator/(Mat a, ValueType divisor) noexcept { return a /= divisor; }
  /// \return the matrix of the negated components.
  constexpr Mat operator-() const noexcept {
    Mat negated;
    for (std::size_t i = 0; i < N; ++i) negated[i] = -_rows[i];
    return negated;
  }

  /// Applies the matrix to a column vector: component i is the dot product of row i and the vector.
  friend constexpr Vec operator*(const Mat& matrix, const Vec& vector) noexcept {
    Vec product;
    for (std::size_t i = 0; i < N; ++i) product[i] = matrix[i].dot(vector);
    return product;
  }
  /// The matrix product; b acts first on a vector.
  friend constexpr Mat operator*(const Mat& a, const Mat& b) noexcept {
    const Mat columns = b.transpose();
    Mat product;
    for (std::size_t i = 0; i < N; ++i) product[i] = columns * a[i];
    return product;
  }

  friend constexpr bool operator==(const Mat& a, const Mat& b) noexcept {
    for (std::size_t i = 0; i < N; ++i) {
      if (a[i] != b[i]) return false;
    }
    return true;
  }
  friend constexpr bool operator!=(const Mat& a, const Mat& b) noexcept { return !(a == b); }

  /// \return a copy whose rows are the columns of this matrix.
  constexpr Mat transpose() const noexcept {
    Mat transposed;
    for (std::size_t i = 0; i < N; ++i) {
      for (std::size_t j = 0; j < N; ++j) transposed[j][i] = _rows[i][j];
    }
    return transposed;
  }

  /// Inverts the matrix, see VXInverseMatHelper(). A pivot below 1e-13 makes it count as singular.
  /// \param isInvertible takes whether there is an inverse. If it is null, a singular matrix is reported as an error
  /// with ::VX_BAD_PARAMETER. \return the inverse, or the identity for a singular matrix.
  Mat inverse(bool* isInvertible = nullptr) const {
    return VXInverseMatHelper(_self(), isInvertible, ValueType(1e-13), _labels().inverse);
  }

  /// Writes the rows in parentheses, separated by commas.
  friend std::ostream& operator<<(std::ostream& stream, const Mat& matrix) {
    stream << '(' << matrix[0];
    for (std::size_t i = 1; i < N; ++i) stream << ',' << matrix[i];
    return stream << ')';
  }

 protected:
  /// Takes all components from an array of numbers of any type.
  template <class Scalar>
  constexpr void _assign(const Scalar* values) {
    for (std::size_t i = 0; i < N * N; ++i) _rows[i / N][i % N] = static_cast<ValueType>(values[i]);
  }

 private:
  static constexpr const MatLabels& _labels() noexcept {
    static_assert(N >= 2 && N <= 6, "a size without labels");
    return matLabels[N - 2];
  }
  static constexpr std::size_t _checkRow(std::size_t i, const char* label) noexcept {
    if (i < N) return i;
    report(VX_ERROR, label, VX_BAD_INDEX, "Using index 0");
    return 0;
  }
  constexpr Mat& _self() noexcept { return static_cast<Mat&>(*this); }
  constexpr const Mat& _self() const noexcept { return static_cast<const Mat&>(*this); }

  Vec _rows[N];
};

}  // namespace vx

#endif
