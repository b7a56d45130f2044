/// \file vxCLocale.h
/// Numbers as in the C locale, whatever locale the host has set.

#ifndef VX_C_LOCALE_H
#define VX_C_LOCALE_H

#include "vxTypes.h"

#include <locale.h>

namespace vx {

/// Switches the calling thread to the C locale for the life of a scope, so that `printf`, `scanf`, `strtod` and their
/// kin read and write numbers with a decimal point. Other threads keep their locale. It allocates nothing.
class VX_EXPORT CLocaleScope {
 public:
  CLocaleScope() noexcept;
  ~CLocaleScope();
  CLocaleScope(const CLocaleScope&) = delete;
  CLocaleScope& operator=(const CLocaleScope&) = delete;

 private:
  locale_t _previous;
};

}  // namespace vx

#endif
