// The run-time type of an object that a message is about.

#ifndef VX_TYPE_OR_NULL_H
#define VX_TYPE_OR_NULL_H

#include "vxRuntimeType.h"

namespace vx {

/// \return the run-time type of an object in whatever state; null if it can't be asked.
template <class Object>
const RuntimeType* typeOrNull(const Object* object) noexcept {
  try {
    return object->getTypeId();
  } catch (...) {
    return nullptr;
  }
}

}  // namespace vx

#endif
