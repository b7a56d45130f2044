// The number of pages that an image is cut into.

#ifndef VX_PAGE_DIVISION_H
#define VX_PAGE_DIVISION_H

#include "vxVector.h"

#include <limits>

namespace vx {

/// \return a * b, or the limit of 64 bits on the side of the product. The lower limit is that of the absolute values,
/// so that the result can be negated.
constexpr VXint64 saturatingMultiply(VXint64 a, VXint64 b) noexcept {
  constexpr VXint64 limit = std::numeric_limits<VXint64>::max();
  VXint64 product = 0;
  if (__builtin_mul_overflow(a, b, &product)) return (a < 0) == (b < 0) ? limit : -limit;
  return product < -limit ? -limit : product;
}

/// \return the product of all components, saturated as saturatingMultiply(); 0 if one of them is 0.
constexpr VXint64 saturatingProduct(const TVector<VXint64>& factors) noexcept {
  VXint64 product = 1;
  for (std::size_t i = 0; i < factors.size(); ++i) product = saturatingMultiply(product, factors[i]);
  return product;
}

/// The number of pages along each dimension: the quotients rounded to single precision, and then up, as divCeil().
/// A quotient above 64 bits is their maximum, where divCeil() has their minimum: too many pages stay too many.
/// \param imgExt extent of the image. \param pageExt extent of a page. A 0 in it is a fatal error.
inline TVector<VXint64> ceilQuotient(const TVector<VXint64>& imgExt, const TVector<VXint64>& pageExt) {
  TVector<VXint64> quotient = divCeil(imgExt, pageExt);
  for (std::size_t i = 0; i < quotient.size(); ++i) {
    const bool isNegative = (imgExt[i] < 0) != (pageExt[i] < 0);
    if (quotient[i] < 0 && !isNegative) quotient[i] = std::numeric_limits<VXint64>::max();
  }
  return quotient;
}

}  // namespace vx

#endif
