/// \file vxLinearAlgebraTools.h
/// Algorithms on vectors and matrices of any size: matrix inversion, and by `vxVector.h` the division that counts
/// pages.

#ifndef VX_LINEAR_ALGEBRA_TOOLS_H
#define VX_LINEAR_ALGEBRA_TOOLS_H

#include "vxErrorOutput.h"
#include "vxVector.h"

#include <cmath>
#include <cstddef>
#include <utility>

namespace vx {

/// Inverts a matrix by Gauss-Jordan elimination with the largest element of each column as pivot.
///
/// A pivot whose magnitude is below the tolerance makes the matrix count as singular, and the identity is returned.
/// \param matrix the matrix, of any of the classes `Tmat2` to `Tmat6`.
/// \param isInvertible takes whether an inverse was found. If it is null, a singular matrix is reported as an error
/// with
/// ::VX_BAD_PARAMETER. \param zeroTolerance smallest magnitude of a pivot. \param label function label of that report.
/// \return the inverse or the identity. The cost grows with the third power of the size.
template <class MAT>
MAT VXInverseMatHelper(const MAT& matrix, bool* isInvertible, typename MAT::ValueType zeroTolerance,
                       const char* label) {
  MAT a = matrix;
  MAT b = MAT::getIdentity();
  for (std::size_t j = 0; j < MAT::size(); ++j) {
    std::size_t pivotRow = j;
    for (std::size_t i = j + 1; i < MAT::size(); ++i) {
      if (std::abs(a[i][j]) > std::abs(a[pivotRow][j])) pivotRow = i;
    }
    std::swap(a[j], a[pivotRow]);
    std::swap(b[j], b[pivotRow]);

    const typename MAT::ValueType pivot = a[j][j];
    if (std::abs(pivot) < zeroTolerance) {
      if (isInvertible) {
        *isInvertible = false;
      } else {
        report(VX_ERROR, label, VX_BAD_PARAMETER, "Returning identity");
      }
      return MAT::getIdentity();
    }
    b[j] /= pivot;
    a[j] /= pivot;

    for (std::size_t k = 0; k < MAT::size(); ++k) {
      if (k == j) continue;
      const typename MAT::ValueType factor = a[k][j];
      b[k] -= factor * b[j];
      a[k] -= factor * a[j];
    }
  }
  if (isInvertible) *isInvertible = true;
  return b;
}

}  // namespace vx

#endif
