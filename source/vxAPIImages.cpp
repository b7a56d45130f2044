// Properties and state of images through the C interface.

#include "vxAPIImages.h"

#include "vxAPI.h"
#include "vxBaseOp.h"
#include "vxHost.h"
#include "vxPagedImg.h"
#include "vxRuntime.h"
#include "vxTraceBuffer.h"

#include <utility>

namespace vx {

OutputConnector* _VXGetOutput(Field* outField, const CallLabel& label, const char* reason) {
  auto* const field = checkedObject<OutputConnectorField>(outField, label, reason);
  return field ? &field->getOutputConnectorValue() : nullptr;
}

VXErrorCode _VXGetPagedImg(Field* outField, PagedImg** img) {
  const TraceFrame trace("source/vxAPI:_VXGetPagedImg()");
  const OutputConnector* const output =
      _VXGetOutput(outField, "vxAPI: _VXGetPagedImg",
                   "Invalid outField pointer or type. Setting img to NULL and Returning BAD_FIELD.");
  *img = output ? &output->getPagedImg() : nullptr;
  return output ? VX_RESULT_OK : VX_BAD_FIELD;
}

namespace {

VXErrorCode getOutputParams(Field* outField, BaseOp** baseOp, int* outIndex, PagedImg** img) {
  const TraceFrame trace("source/vxAPI:_VXGetOutputParams()");
  const OutputConnector* const output =
      _VXGetOutput(outField, "vxAPI: _VXGetOutputParams", "Invalid outField pointer or type. ");
  if (!output) return VX_BAD_FIELD;
  return withRecursionGuard("_VXGetOutputParams", "Terminating/breaking recursion. Not returning image type.",
                            [=]() -> VXErrorCode {
                              *img = &output->getPagedImg();
                              *baseOp = &output->getOp();
                              *outIndex = static_cast<int>(output->getIndex());
                              return Host::getDefaultHost().updateImageProps(**baseOp, *outIndex);
                            });
}

}  // namespace

VXErrorCode _VXGetOutputParams(Field* outField, BaseOp** baseOp, int* outIndex, PagedImg** img) {
  return callFramed("vxAPI:__VXGetOutputParams(outField, baseOp, outIndex, img)", returnsErrorCode, getOutputParams,
                    outField, baseOp, outIndex, img);
}

}  // namespace vx

namespace {

using vx::callFramed;
using vx::checkArgument;
using vx::DicomTagList;
using vx::Field;
using vx::ImagePropertyExtension;
using vx::PagedImg;
using vx::TraceFrame;

// Brings the image of an output up to date and lets it be read. Gives 0, or the code of an image that isn't valid.
template <class Read>
VXErrorCode readUpdatedImage(Field* outField, Read&& read) {
  vx::BaseOp* baseOp = nullptr;
  int outIndex = 0;
  PagedImg* img = nullptr;
  const VXErrorCode code = vx::_VXGetOutputParams(outField, &baseOp, &outIndex, &img);
  if (code == VX_RESULT_OK) std::forward<Read>(read)(*img);
  return code;
}

// Extents

using Extent = vx::TVector<VXint64>;

// Where the components of an extent go.
struct ExtentOutputs {
  int *x, *y, *z, *c, *t, *u;

  bool areSet() const { return x && y && z && c && t && u; }
  void write(const Extent& extent) const {
    *x = static_cast<int>(extent.x);
    *y = static_cast<int>(extent.y);
    *z = static_cast<int>(extent.z);
    *c = static_cast<int>(extent.c);
    *t = static_cast<int>(extent.t);
    *u = static_cast<int>(extent.u);
  }
};

VXErrorCode readExtent(Field* outField, const ExtentOutputs& outputs, const vx::CallLabel& label,
                       const Extent& (*extentOf)(const PagedImg&)) {
  if (!checkArgument(outputs.areSet(), label,
                     "Invalid x,y,z,c,t or u pointer. Ignoring call and returning VX_BAD_PARAMETER.")) {
    return VX_BAD_PARAMETER;
  }
  outputs.write(Extent());
  return readUpdatedImage(outField, [&](const PagedImg& img) { outputs.write(extentOf(img)); });
}

VXErrorCode _VXImageGetSize6D(Field* outField, int* x, int* y, int* z, int* c, int* t, int* u) {
  const TraceFrame trace("source/vxAPI:_VXImageGetSize6D()");
  return readExtent(outField, {x, y, z, c, t, u}, "VXImageGetSize6D",
                    [](const PagedImg& img) -> const Extent& { return img.getImgExt(); });
}

VXErrorCode _VXImageGetSize(Field* outField, int* x, int* y, int* z, int* c) {
  const TraceFrame trace("source/vxAPI:_VXImageGetSize()");
  int t = 0;
  int u = 0;
  return VXImageGetSize6D(outField, x, y, z, c, &t, &u);
}

VXErrorCode _VXImageGetPageSize6D(Field* outField, int* x, int* y, int* z, int* c, int* t, int* u) {
  const TraceFrame trace("source/vxAPI:_VXImageGetPageSize6D()");
  return readExtent(outField, {x, y, z, c, t, u}, "VXImageGetPageSize6D",
                    [](const PagedImg& img) -> const Extent& { return img.getPageExt(); });
}

// Voxels

VXErrorCode _VXImageGetType(Field* outField, int* dType, int* dSize) {
  const TraceFrame trace("source/vxAPI:_VXImageGetType()");
  if (!checkArgument(dType && dSize, "VXImageGetType",
                     "Invalid dType or dSize pointer. Ignoring call and returning VX_BAD_PARAMETER.")) {
    return VX_BAD_PARAMETER;
  }
  return readUpdatedImage(outField, [=](const PagedImg& img) {
    *dType = img.getDataType();
    *dSize = static_cast<int>(VXSizeOf(img.getDataType()));
  });
}

VXErrorCode _VXImageGetVoxelSize(Field* outField, float* x, float* y, float* z) {
  const TraceFrame trace("source/vxAPI:_VXImageGetVoxelSize()");
  if (!checkArgument(x && y && z, "VXImageGetVoxelSize",
                     "Invalid x,y or z pointer. Ignoring call and returning VX_BAD_PARAMETER.")) {
    return VX_BAD_PARAMETER;
  }
  *x = *y = *z = 0.0F;
  return readUpdatedImage(outField, [=](const PagedImg& img) { img.getVoxelSize(x, y, z); });
}

// What is attached to an image

// The check of an output's field that the functions below make on their own.
bool isOutput(Field* outField, const char* reason) {
  return vx::_VXGetOutput(outField, "vxAPI: VXImageGetDicomTagList", reason) != nullptr;
}

VXErrorCode _VXImageGetFirstImagePropertyExtensionByType(Field* outField, const char* imagePropertyTypeClassName,
                                                         const ImagePropertyExtension** imagePropertyExtension) {
  const TraceFrame trace("source/vxAPI:_VXImageGetFirstImagePropertyExtensionByType()");
  const auto setNullUnless = [=](VXErrorCode code) {
    if (imagePropertyExtension && code != VX_RESULT_OK) *imagePropertyExtension = nullptr;
    return code;
  };
  if (!isOutput(outField,
                "Invalid outField pointer or type. Setting *imagePropertyExtension to NULL and returning "
                "VX_BAD_FIELD.")) {
    return setNullUnless(VX_BAD_FIELD);
  }
  if (!checkArgument(imagePropertyTypeClassName && imagePropertyExtension,
                     "VXImageGetFirstImagePropertyExtensionByType",
                     "Invalid imagePropertyTypeClassName or imagePropertyExtension pointer. Ignoring call and "
                     "returning VX_BAD_PARAMETER.")) {
    return VX_BAD_PARAMETER;
  }
  return setNullUnless(readUpdatedImage(outField, [=](const PagedImg& img) {
    const vx::RuntimeType* const type = vx::Runtime::fromName(imagePropertyTypeClassName);
    const ImagePropertyExtension* const found = img.getConstImagePropertyContainer().getFirstEntryOfType(type);
    if (found) *imagePropertyExtension = found;
  }));
}

VXErrorCode _VXImageGetDicomTagList(Field* outField, const DicomTagList** tagList) {
  const TraceFrame trace("source/vxAPI:_VXImageGetDicomTagList()");
  if (tagList) *tagList = nullptr;
  if (!isOutput(outField, "Invalid outField pointer or type. Setting *tagList to NULL and returning VX_BAD_FIELD.")) {
    return VX_BAD_FIELD;
  }
  if (!checkArgument(tagList != nullptr, "VXImageGetDicomTagList",
                     "Invalid tagList pointer. Ignoring call and returning VX_BAD_PARAMETER.")) {
    return VX_BAD_PARAMETER;
  }
  return readUpdatedImage(outField, [=](const PagedImg& img) { *tagList = img.getDicomTagList(); });
}

// State

VXErrorCode _VXGetImageState(Field* outField) {
  const TraceFrame trace("source/vxAPI:_VXImageIsValid()");
  return readUpdatedImage(outField, [](const PagedImg&) {});
}

const char* _VXGetImageStateString(Field* outField) {
  const TraceFrame trace("source/vxAPI:_VXGetImageStateString()");
  if (!outField) return VXGetErrorCodeDescription(VX_OPEN_NETWORK);
  vx::BaseOp* baseOp = nullptr;
  int outIndex = 0;
  PagedImg* img = nullptr;
  const VXErrorCode code = vx::_VXGetOutputParams(outField, &baseOp, &outIndex, &img);
  return img ? img->getStateInfoString().c_str() : VXGetErrorCodeDescription(code);
}

}  // namespace

VXErrorCode VXImageGetSize6D(VXField* outField, int* x, int* y, int* z, int* c, int* t, int* u) {
  return callFramed("vxAPI:_VXImageGetSize6D(outField, x, y, z, c, t, u)", vx::returnsErrorCode, _VXImageGetSize6D,
                    outField, x, y, z, c, t, u);
}

VXErrorCode VXImageGetSize(VXField* outField, int* x, int* y, int* z, int* c) {
  return callFramed("vxAPI:_VXImageGetSize(outField, x, y, z, c)", vx::returnsErrorCode, _VXImageGetSize, outField, x,
                    y, z, c);
}

VXErrorCode VXImageGetPageSize6D(VXField* outField, int* x, int* y, int* z, int* c, int* t, int* u) {
  return callFramed("vxAPI:_VXImageGetPageSize6D(outField, x, y, z, c, t, u)", vx::returnsErrorCode,
                    _VXImageGetPageSize6D, outField, x, y, z, c, t, u);
}

VXErrorCode VXImageGetType(VXField* outField, int* dType, int* dSize) {
  return callFramed("vxAPI:_VXImageGetType(outField, dType, dSize)", vx::returnsErrorCode, _VXImageGetType, outField,
                    dType, dSize);
}

VXErrorCode VXImageGetVoxelSize(VXField* outField, float* x, float* y, float* z) {
  return callFramed("vxAPI:_VXImageGetVoxelSize(outField, x, y, z)", vx::returnsErrorCode, _VXImageGetVoxelSize,
                    outField, x, y, z);
}

VXErrorCode VXImageGetFirstImagePropertyExtensionByType(VXField* outField, const char* imagePropertyTypeClassName,
                                                        const VXImagePropertyExtension** imagePropertyExtension) {
  return callFramed(
      "vxAPI:_VXImageGetFirstImagePropertyExtensionByType(outField, imagePropertyTypeClassName, "
      "imagePropertyExtension)",
      vx::returnsErrorCode, _VXImageGetFirstImagePropertyExtensionByType, outField, imagePropertyTypeClassName,
      imagePropertyExtension);
}

VXErrorCode VXImageGetDicomTagList(VXField* outField, const VXDicomTagList** tagList) {
  return callFramed("vxAPI:_VXImageGetDicomTagList(outField, tagList)", vx::returnsErrorCode, _VXImageGetDicomTagList,
                    outField, tagList);
}

VXErrorCode VXGetImageState(VXField* outField) {
  return callFramed("vxAPI:_VXGetImageState(outField)", vx::returnsErrorCode, _VXGetImageState, outField);
}

const char* VXGetImageStateString(VXField* outField) {
  return callFramed("vxAPI:_VXGetImageStateString(outField)", vx::returnsStateText, _VXGetImageStateString, outField);
}
