// The four flags that end the recursion between a field and a sensor that attach or detach each other.

#ifndef VX_ATTACH_GUARDS_H
#define VX_ATTACH_GUARDS_H

#include "vxTypes.h"

namespace vx {

/// One flag for each entry, shared by all fields and sensors. Not 0 while the entry runs the other side.
struct AttachGuards {
  VXint16 fieldAttachesSensor = 0;
  VXint16 fieldDetachesSensor = 0;
  VXint16 sensorAttachesField = 0;
  VXint16 sensorDetachesField = 0;
};

/// The flags of the process; they have no lock.
inline AttachGuards attachGuards;

/// Holds a flag for a block. It is cleared on every way out: a flag that stayed set would keep all others from
/// attaching.
class AttachGuardScope {
 public:
  explicit AttachGuardScope(VXint16& flag) noexcept : _flag(flag) { _flag = 1; }
  ~AttachGuardScope() { _flag = 0; }
  AttachGuardScope(const AttachGuardScope&) = delete;
  AttachGuardScope& operator=(const AttachGuardScope&) = delete;

 private:
  VXint16& _flag;
};

}  // namespace vx

#endif
