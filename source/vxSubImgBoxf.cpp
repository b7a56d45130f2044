#include "vxSubImgBoxf.h"

#include "vxTraceBuffer.h"
#include "vxVec3.h"

#include <limits>
#include <ostream>
#include <utility>

namespace vx {

void SubImgBoxf::correct() noexcept {
  for (std::size_t i = 0; i < v1.size(); ++i) {
    if (v1[i] > v2[i]) std::swap(v1[i], v2[i]);
  }
}

SubImgBoxf SubImgBoxf::calcAATransformedBox(const TSubImgBox<VXint64>& box, const Tmat4<double>& matrix) {
  const TraceFrame trace("source/vxSubImgBoxf:SubImgBoxf::calcAATransformedBox()");
  if (box.isEmpty()) return SubImgBoxf();

  TVector<VXint64> corners[8];
  box.get3DCorners(corners);
  constexpr double limit = std::numeric_limits<float>::max();
  Tvec3<double> low(limit);
  Tvec3<double> high(-limit);
  for (const TVector<VXint64>& corner : corners) {
    const Tvec4<double> position(corner.x, corner.y, corner.z, 1.);
    const Tvec3<double> transformed(matrix * position, true);
    low = compMin(low, transformed);
    high = compMax(high, transformed);
  }

  SubImgBoxf result;
  for (std::size_t i = 0; i < result.v1.size(); ++i) {
    result.v1[i] = i < 3 ? low[i] : static_cast<double>(box.v1[i]);
    result.v2[i] = i < 3 ? high[i] : static_cast<double>(box.v2[i]);
  }
  return result;
}

std::ostream& operator<<(std::ostream& stream, const SubImgBoxf& box) {
  return stream << "(v1=" << box.v1 << ", v2=" << box.v2 << ')';
}

}  // namespace vx
