#include "vxCarrierTypes.h"

#include "vxErrorOutput.h"

#include <type_traits>

void _VXTypeError(const char* function, const char* reason) {
  vx::report(VX_FATAL, function ? function : "", VX_MISUSED_INTERFACE, reason ? reason : "");
}

namespace {

// Images are moved as bytes, and voxels of a carrier lie side by side at any address.
template <unsigned int size, int id>
constexpr bool isPlainBlock =
    sizeof(VXTCarrierType<size, id>) == size && alignof(VXTCarrierType<size, id>) == 1 &&
    std::is_trivial_v<VXTCarrierType<size, id>>&& std::is_standard_layout_v<VXTCarrierType<size, id>>;

#define VX_CHECK_CARRIER(size, outputId, inputId) \
  static_assert(isPlainBlock<size, outputId> && isPlainBlock<size, inputId>, "a carrier is its bytes alone");
VX_FOR_EACH_CARRIER_SIZE(VX_CHECK_CARRIER)
#undef VX_CHECK_CARRIER

}  // namespace
