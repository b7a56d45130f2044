// Ranges, matrices, coordinates and tiles of images through the C interface: the functions that check the output and
// guard against recursion themselves.

#include "vxAPI.h"
#include "vxAPIImages.h"
#include "vxBaseOp.h"
#include "vxHost.h"
#include "vxPagedImg.h"
#include "vxScaleShiftData.h"
#include "vxTraceBuffer.h"

#include <utility>

namespace {

using vx::callFramed;
using vx::CallLabel;
using vx::checkArgument;
using vx::Field;
using vx::Host;
using vx::OutputConnector;
using vx::PagedImg;
using vx::ScaleShiftData;
using vx::TraceFrame;

// Labels and texts of a function, as its checks report them.
struct Refusals {
  CallLabel objectLabel;
  const char* objectReason;
  CallLabel label;
  const char* pointerReason;
  const char* recursionText;
};

// Lets the image of an output be read after it was brought up to date. \param arePointersSet whether the function got
// all its outputs. Gives 0 or an error code.
template <class Read>
VXErrorCode readGuarded(Field* outField, bool arePointersSet, const Refusals& refusals, Read&& read) {
  const OutputConnector* const output = vx::_VXGetOutput(outField, refusals.objectLabel, refusals.objectReason);
  if (!output) return VX_BAD_FIELD;
  if (!checkArgument(arePointersSet, refusals.label, refusals.pointerReason)) return VX_BAD_PARAMETER;
  return vx::withRecursionGuard(refusals.label, refusals.recursionText, [&]() -> VXErrorCode {
    vx::BaseOp& baseOp = output->getOp();
    const VXErrorCode code = Host::getDefaultHost().updateImageProps(baseOp, output->getIndex());
    if (code == VX_RESULT_OK) std::forward<Read>(read)(*baseOp.getOutImg(output->getIndex()));
    return code;
  });
}

// Range of values

VXErrorCode _VXImageGetMinValue(Field* outField, double* minValue) {
  const TraceFrame trace("source/vxAPI:_VXImageGetMinValue()");
  if (minValue) *minValue = 0.0;
  return readGuarded(outField, minValue != nullptr,
                     {"vxAPI: VXImageGetMinValue",
                      "Invalid outField pointer or type. Setting *minValue to 0 and returning VX_BAD_FIELD.",
                      "VXImageGetMinValue", "Invalid minValue pointer. Ignoring call and returning VX_BAD_PARAMETER.",
                      "Terminating/breaking recursion. Returning 0 as minValue."},
                     [=](const PagedImg& img) { *minValue = img.getMinVoxelValue(); });
}

VXErrorCode _VXImageGetMaxValue(Field* outField, double* maxValue) {
  const TraceFrame trace("source/vxAPI:_VXImageGetMaxValue()");
  if (maxValue) *maxValue = 0.0;
  return readGuarded(outField, maxValue != nullptr,
                     {"vxAPI: VXImageGetMaxValue",
                      "Invalid outField pointer or type. Setting *maxValue to 0 and returning VX_BAD_FIELD.",
                      "VXImageGetMaxValue", "Invalid maxValue pointer. Ignoring call and returning VX_BAD_PARAMETER.",
                      "Terminating/breaking recursion. Returning 0 as maxValue."},
                     [=](const PagedImg& img) { *maxValue = img.getMaxVoxelValue(); });
}

// Position in space

Refusals matrixRefusals(CallLabel objectLabel, CallLabel label) {
  return {objectLabel, "Invalid outField pointer or type. Leaving *mat unchanged and returning VX_BAD_FIELD.", label,
          "Invalid mat pointer. Ignoring call and returning VX_BAD_PARAMETER.",
          "Terminating/breaking recursion. Returning unchanged matrix."};
}

VXErrorCode _VXImageGetVoxelToWorldMatrix(Field* outField, float* mat) {
  const TraceFrame trace("source/vxAPI:_VXImageGetVoxelToWorldMatrix()");
  return readGuarded(outField, mat != nullptr,
                     matrixRefusals("vxAPI: VXImageGetVoxelToWorldMatrix", "VXImageGetVoxelToWorldMatrix"),
                     [=](const PagedImg& img) { img.getToWorldMatrix(mat); });
}

VXErrorCode _VXImageGetWorldToVoxelMatrix(Field* outField, float* mat) {
  const TraceFrame trace("source/vxAPI:_VXImageGetWorldToVoxelMatrix()");
  return readGuarded(outField, mat != nullptr,
                     matrixRefusals("vxAPI: VXImageGetWorldToVoxelMatrix", "VXImageGetWorldToVoxelMatrix"),
                     [=](const PagedImg& img) { img.getToVoxelMatrix(mat); });
}

// A point and where its image goes.
struct Mapping {
  float srcX, srcY, srcZ;
  float *dstX, *dstY, *dstZ;
};

using MapPoint = void (PagedImg::*)(float*, float*, float*) const;

VXErrorCode mapPoint(Field* outField, const Mapping& point, CallLabel objectLabel, CallLabel label, MapPoint map) {
  const Refusals refusals{
      objectLabel,
      "Invalid outField pointer or type. Leaving *dstX, *dstY and *dstZ unchanged and returning VX_BAD_FIELD.", label,
      "Invalid dstX,dstY or dstZ pointer. Ignoring call and returning VX_BAD_PARAMETER.",
      "Terminating/breaking recursion. Not mapping coordinates."};
  // These pointers are tested before the field.
  if (!checkArgument(point.dstX && point.dstY && point.dstZ, label, refusals.pointerReason)) return VX_BAD_PARAMETER;
  return readGuarded(outField, true, refusals, [&](const PagedImg& img) {
    *point.dstX = point.srcX;
    *point.dstY = point.srcY;
    *point.dstZ = point.srcZ;
    (img.*map)(point.dstX, point.dstY, point.dstZ);
  });
}

VXErrorCode _VXImageMapVoxelToWorld(Field* outField, float srcX, float srcY, float srcZ, float* dstX, float* dstY,
                                    float* dstZ) {
  const TraceFrame trace("source/vxAPI:_VXImageMapVoxelToWorld()");
  return mapPoint(outField, {srcX, srcY, srcZ, dstX, dstY, dstZ}, "vxAPI: VXImageMapVoxelToWorld",
                  "VXImageMapVoxelToWorld", &PagedImg::transformToWorldCoord);
}

VXErrorCode _VXImageMapWorldToVoxel(Field* outField, float srcX, float srcY, float srcZ, float* dstX, float* dstY,
                                    float* dstZ) {
  const TraceFrame trace("source/vxAPI:_VXImageMapWorldToVoxel()");
  return mapPoint(outField, {srcX, srcY, srcZ, dstX, dstY, dstZ}, "vxAPI: VXImageMapWorldToVoxel",
                  "VXImageMapWorldToVoxel", &PagedImg::transformToVoxelCoord);
}

// Tiles

// A range of voxels along one dimension, as the caller tells it.
struct Range {
  int start, extent;

  // The last voxel, computed in 32 bits, where a sum that doesn't fit wraps.
  VXint64 getEnd() const {
    return static_cast<int>(static_cast<unsigned int>(start) + static_cast<unsigned int>(extent) - 1U);
  }
};

// A tile as the caller tells it.
struct Tile {
  Range x, y, z, c, t, u;
  VXDataType datatype;

  vx::SubImgBox getBox() const {
    return {{x.start, y.start, z.start, c.start, t.start, u.start},
            {x.getEnd(), y.getEnd(), z.getEnd(), c.getEnd(), t.getEnd(), u.getEnd()}};
  }
};

VXErrorCode getTile(Field* outField, void** memory, const Tile& tile, const ScaleShiftData& scaleShift,
                    CallLabel objectLabel, const char* objectReason, CallLabel label) {
  const OutputConnector* const output = vx::_VXGetOutput(outField, objectLabel, objectReason);
  if (!output) return VX_BAD_FIELD;
  // The type says how many bytes are written.
  if (!checkArgument(memory != nullptr, label,
                     "Invalid memory pointer. Ignoring call and returning VX_BAD_PARAMETER.") ||
      !checkArgument(VXIsValidType(tile.datatype) != 0, label,
                     "Invalid datatype. Ignoring call and returning VX_BAD_PARAMETER.")) {
    return VX_BAD_PARAMETER;
  }
  return vx::withRecursionGuard(label, "Terminating/breaking recursion.", [&] {
    return Host::getDefaultHost().getTile(output->getOp(), output->getIndex(), tile.getBox(), tile.datatype, memory,
                                          scaleShift);
  });
}

VXErrorCode _VXImageGetTile6D(Field* outField, void** memory, int x, int y, int z, int c, int t, int u, int nx, int ny,
                              int nz, int nc, int nt, int nu, VXDataType datatype) {
  const TraceFrame trace("source/vxAPI:_VXImageGetTile6D()");
  return getTile(outField, memory, {{x, nx}, {y, ny}, {z, nz}, {c, nc}, {t, nt}, {u, nu}, datatype}, ScaleShiftData(),
                 "vxAPI: VXImageGetTile6D", "Invalid outField pointer or type. Returning VX_BAD_FIELD.",
                 "VXImageGetTile6D");
}

VXErrorCode _VXImageGetScaledTile6D(Field* outField, void** memory, int x, int y, int z, int c, int t, int u, int nx,
                                    int ny, int nz, int nc, int nt, int nu, VXDataType datatype, double srcMin,
                                    double srcMax, double dstMin, double dstMax) {
  const TraceFrame trace("source/vxAPI:_VXImageGetScaledTile6D()");
  ScaleShiftData scaleShift;
  scaleShift.setFromMinMaxToMinMax(srcMin, srcMax, dstMin, dstMax);
  return getTile(outField, memory, {{x, nx}, {y, ny}, {z, nz}, {c, nc}, {t, nt}, {u, nu}, datatype}, scaleShift,
                 "vxAPI: VXImageGetScaledTile6D", "Invalid outField pointer or type. Returning BAD_FIELD.",
                 "VXImageGetScaledTile6D");
}

void _VXImageFreeTile(void* data) {
  const TraceFrame trace("source/vxAPI:_VXImageFreeTile()");
  Host::getDefaultHost().freeTile(data);
}

}  // namespace

VXErrorCode VXImageGetMinValue(VXField* outField, double* minValue) {
  return callFramed("vxAPI:_VXImageGetMinValue(outField, minValue)", vx::returnsErrorCode, _VXImageGetMinValue,
                    outField, minValue);
}

VXErrorCode VXImageGetMaxValue(VXField* outField, double* maxValue) {
  return callFramed("vxAPI:_VXImageGetMaxValue(outField, maxValue)", vx::returnsErrorCode, _VXImageGetMaxValue,
                    outField, maxValue);
}

VXErrorCode VXImageGetVoxelToWorldMatrix(VXField* outField, float* mat) {
  return callFramed("vxAPI:_VXImageGetVoxelToWorldMatrix(outField, mat)", vx::returnsErrorCode,
                    _VXImageGetVoxelToWorldMatrix, outField, mat);
}

VXErrorCode VXImageGetWorldToVoxelMatrix(VXField* outField, float* mat) {
  return callFramed("vxAPI:_VXImageGetWorldToVoxelMatrix(outField, mat)", vx::returnsErrorCode,
                    _VXImageGetWorldToVoxelMatrix, outField, mat);
}

VXErrorCode VXImageMapVoxelToWorld(VXField* outField, float srcX, float srcY, float srcZ, float* dstX, float* dstY,
                                   float* dstZ) {
  return callFramed("vxAPI:_VXImageMapVoxelToWorld(outField, srcX, srcY, srcZ, dstX, dstY, dstZ)", vx::returnsErrorCode,
                    _VXImageMapVoxelToWorld, outField, srcX, srcY, srcZ, dstX, dstY, dstZ);
}

VXErrorCode VXImageMapWorldToVoxel(VXField* outField, float srcX, float srcY, float srcZ, float* dstX, float* dstY,
                                   float* dstZ) {
  return callFramed("vxAPI:_VXImageMapWorldToVoxel(outField, srcX, srcY, srcZ, dstX, dstY, dstZ)", vx::returnsErrorCode,
                    _VXImageMapWorldToVoxel, outField, srcX, srcY, srcZ, dstX, dstY, dstZ);
}

VXErrorCode VXImageGetTile6D(VXField* outField, void** memory, int x, int y, int z, int c, int t, int u, int nx, int ny,
                             int nz, int nc, int nt, int nu, VXDataType datatype) {
  return callFramed("vxAPI:_VXImageGetTile6D(outField, memory, x, y, z, c, t, u, nx, ny, nz, nc, nt, nu, datatype)",
                    vx::returnsErrorCode, _VXImageGetTile6D, outField, memory, x, y, z, c, t, u, nx, ny, nz, nc, nt, nu,
                    datatype);
}

VXErrorCode VXImageGetTile4D(VXField* outField, void** memory, int x, int y, int z, int c, int nx, int ny, int nz,
                             int nc, VXDataType datatype) {
  return VXImageGetTile6D(outField, memory, x, y, z, c, 0, 0, nx, ny, nz, nc, 1, 1, datatype);
}

VXErrorCode VXImageGetTile3D(VXField* outField, void** memory, int x, int y, int z, int nx, int ny, int nz,
                             VXDataType datatype) {
  return VXImageGetTile6D(outField, memory, x, y, z, 0, 0, 0, nx, ny, nz, 1, 1, 1, datatype);
}

VXErrorCode VXImageGetTile(VXField* outField, void** memory, int x, int y, int z, int nx, int ny, int nz,
                           VXDataType datatype) {
  return VXImageGetTile3D(outField, memory, x, y, z, nx, ny, nz, datatype);
}

VXErrorCode VXImageGetScaledTile6D(VXField* outField, void** memory, int x, int y, int z, int c, int t, int u, int nx,
                                   int ny, int nz, int nc, int nt, int nu, VXDataType datatype, double srcMin,
                                   double srcMax, double dstMin, double dstMax) {
  return callFramed(
      "vxAPI:_VXImageGetScaledTile6D(outField, memory, x, y, z, c, t, u, nx, ny, nz, nc, nt, nu, datatype, srcMin, "
      "srcMax, dstMin, dstMax)",
      vx::returnsErrorCode, _VXImageGetScaledTile6D, outField, memory, x, y, z, c, t, u, nx, ny, nz, nc, nt, nu,
      datatype, srcMin, srcMax, dstMin, dstMax);
}

VXErrorCode VXImageGetScaledTile4D(VXField* outField, void** memory, int x, int y, int z, int c, int nx, int ny, int nz,
                                   int nc, VXDataType datatype, double srcMin, double srcMax, double dstMin,
                                   double dstMax) {
  return VXImageGetScaledTile6D(outField, memory, x, y, z, c, 0, 0, nx, ny, nz, nc, 1, 1, datatype, srcMin, srcMax,
                                dstMin, dstMax);
}

VXErrorCode VXImageGetScaledTile3D(VXField* outField, void** memory, int x, int y, int z, int nx, int ny, int nz,
                                   VXDataType datatype, double srcMin, double srcMax, double dstMin, double dstMax) {
  return VXImageGetScaledTile6D(outField, memory, x, y, z, 0, 0, 0, nx, ny, nz, 1, 1, 1, datatype, srcMin, srcMax,
                                dstMin, dstMax);
}

VXErrorCode VXImageGetScaledTile(VXField* outField, void** memory, int x, int y, int z, int nx, int ny, int nz,
                                 VXDataType datatype, double srcMin, double srcMax, double dstMin, double dstMax) {
  return VXImageGetScaledTile3D(outField, memory, x, y, z, nx, ny, nz, datatype, srcMin, srcMax, dstMin, dstMax);
}

void VXImageFreeTile(void* data) {
  callFramed("vxAPI:_VXImageFreeTile(data)", vx::returnsNothing, _VXImageFreeTile, data);
}
