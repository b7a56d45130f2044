#include "vxCLocale.h"

namespace vx {

namespace {

// Made at load, so that no conversion later fails for want of memory. Without it the host's locale stays.
const locale_t cLocale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));

}  // namespace

CLocaleScope::CLocaleScope() noexcept : _previous(cLocale ? uselocale(cLocale) : static_cast<locale_t>(nullptr)) {}

CLocaleScope::~CLocaleScope() {
  if (_previous) uselocale(_previous);
}

}  // namespace vx
