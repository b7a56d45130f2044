/// \file vxSystemInfo.h
/// What the library asks about the machine.

#ifndef VX_SYSTEM_INFO_H
#define VX_SYSTEM_INFO_H

#include "vxTypes.h"

namespace vx {

/// Questions about the machine. All functions are static and safe from any thread.
class VX_EXPORT SystemInfo {
 public:
  SystemInfo() = delete;

  /// \return the number of logical processors that this process may use, at least 1.
  static VXuint32 getNumVirtualProcessors() noexcept;
};

}  // namespace vx

#endif
