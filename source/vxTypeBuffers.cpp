// Memory for voxels of a type, and the number that a voxel stands for.

#include "vxComponentCodes.h"
#include "vxMemory.h"
#include "vxTypeInfos.h"

#include <algorithm>
#include <cstring>

unsigned char* VXTypeInfosCreateBuffer(const VXTypeInfos* infos) {
  return infos ? static_cast<unsigned char*>(VXAlloc(infos->physicalSize, VX_RETURN_NULL)) : nullptr;
}

void VXTypeInfosRemoveBuffer(void* buffer) { VXFree(buffer); }

unsigned char* VXAllocateVoxelBuffer(VXDataType dataType, VXuint64 count, const void* defaultVoxel) {
  const VXuint32 voxelSize = VXSizeOf(dataType);
  VXuint64 size;
  if (voxelSize == 0 || !vx::multiplySizes(voxelSize, count, size)) return nullptr;
  auto* const voxels = static_cast<unsigned char*>(VXAlloc(size, VX_RETURN_NULL));
  if (!voxels || !defaultVoxel) return voxels;
  // The default has the size that its author declared: what the carrier has beyond that is not read from it.
  const VXuint32 copiedSize = std::min(VXSizeOfRegisteredType(dataType), voxelSize);
  for (unsigned char *voxel = voxels, *const end = voxels + size; voxel != end; voxel += voxelSize) {
    std::memcpy(voxel, defaultVoxel, copiedSize);
    std::memset(voxel + copiedSize, 0, voxelSize - copiedSize);
  }
  return voxels;
}

double VXGetVoxelValueAsDouble(const void* voxel, VXDataType dataType, VXErrorCode* errorCode) {
  VXErrorCode ignored;
  VXErrorCode& code = errorCode ? *errorCode : ignored;
  code = VX_RESULT_OK;
  const VXTypeInfos* const infos = VXGetTypeInfosForDataType(dataType);
  const bool isStandard = VXIsStandardType(dataType) != 0;
  if (!infos || (!isStandard && !VXTypePropBitsTest(infos->propertyBits, VXTypeHasCastToDouble))) {
    code = VX_BAD_DATA_TYPE;
    return 0;
  }
  if (!voxel) {
    code = VX_BAD_POINTER;
    return 0;
  }
  return isStandard ? VXTypeGetDoubleComponent(infos->structInfoString[0], voxel)
                    : infos->castToDouble(static_cast<const unsigned char*>(voxel));
}
