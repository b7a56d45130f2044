// The byte order of voxels.

#include "vxComponentCodes.h"
#include "vxErrorOutput.h"
#include "vxTraceBuffer.h"

#include <algorithm>

void VXTypeToggleEndianType(const VXTypeInfos* infos, const void* source, void* result, VXuint64 count) {
  const vx::TraceFrame trace("source/vxTypeInfos:VXTypeToggleEndianType()");
  if (!infos || !source || !result) return;
  const auto* from = static_cast<const unsigned char*>(source);
  auto* to = static_cast<unsigned char*>(result);
  for (; count > 0; --count, from += infos->typeSize, to += infos->typeSize) {
    vx::forEachComponent(*infos, [=](char code, VXuint32 offset) {
      const VXuint32 size = VXTypeComponentSize(code);
      if (size == 0) {
        vx::report(VX_ERROR, "VXTypeToggleEndianType: invalid component in structInfoString", VX_BAD_PARAMETER,
                   "Not changing rest of type instance.");
        return false;
      }
      unsigned char component[8];
      std::reverse_copy(from + offset, from + offset + size, component);
      std::memcpy(to + offset, component, size);
      return true;
    });
  }
}

void VXTypeConvertToLittleEndian(const VXTypeInfos* infos, const void* source, void* result, VXuint64 count) {
  if (!VXIsLittleEndian()) VXTypeToggleEndianType(infos, source, result, count);
}

void VXTypeConvertToBigEndian(const VXTypeInfos* infos, const void* source, void* result, VXuint64 count) {
  if (VXIsLittleEndian()) VXTypeToggleEndianType(infos, source, result, count);
}
