// The text form of an address.

#ifndef VX_POINTER_TEXT_H
#define VX_POINTER_TEXT_H

#include "vxStringConversion.h"
#include "vxUtilsAPI.h"

#include <cstdint>
#include <string>

namespace vx {

/// \return the address as a decimal number.
inline std::string writePointer(const volatile void* address) {
  return StringConversion::writeToStdString(static_cast<VXuint64>(reinterpret_cast<std::uintptr_t>(address)));
}

/// \return the address that a text gives; null after a report if it gives none. \param label function that reports.
template <class T>
T* readPointer(const std::string& text, const char* label) {
  return static_cast<T*>(VXStringToPtr(text.c_str(), 1, label));
}

}  // namespace vx

#endif
