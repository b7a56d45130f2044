// What images hold in memory, through the C interface.

#include "vxAPI.h"
#include "vxAPIImages.h"
#include "vxPagedImg.h"
#include "vxTraceBuffer.h"

namespace {

using vx::callFramed;
using vx::CallLabel;
using vx::Field;
using vx::PagedImg;
using vx::TraceFrame;

// The image of an output, checked for the calling function, or null.
PagedImg* imageOf(Field* outField, const CallLabel& label, const char* reason) {
  PagedImg* img = nullptr;
  if (vx::_VXGetOutput(outField, label, reason)) vx::_VXGetPagedImg(outField, &img);
  return img;
}

template <class Clear>
VXErrorCode clearImage(Field* outField, const CallLabel& label, Clear clear) {
  PagedImg* const img =
      imageOf(outField, label, "Invalid outField pointer or type. Ignoring call and returning BAD_FIELD.");
  if (!img) return VX_BAD_FIELD;
  if (!vx::checkNotProcessing(label)) return VX_MISUSED_INTERFACE;
  clear(*img);
  return VX_RESULT_OK;
}

VXErrorCode _VXClearPages(Field* outField) {
  const TraceFrame trace("source/vxAPI:_VXClearPages()");
  return clearImage(outField, "vxAPI: VXClearPages", [](PagedImg& img) { img.clearPageList(); });
}

VXErrorCode _VXClearMemoryImg(Field* outField) {
  const TraceFrame trace("source/vxAPI:_VXClearMemoryImg()");
  return clearImage(outField, "vxAPI: VXClearMemoryImg", [](PagedImg& img) { img.getMemoryImg().clearMemoryImg(); });
}

VXErrorCode _VXClearPagesAndMemoryImg(Field* outField) {
  const TraceFrame trace("source/vxAPI:_VXClearPagesAndMemoryImg()");
  return clearImage(outField, "vxAPI: VXClearPagesAndMemoryImg",
                    [](PagedImg& img) { img.clearPageListAndMemoryImg(); });
}

template <class NumBytesOf>
VXErrorCode readSize(Field* outField, unsigned int* numBytes, const CallLabel& objectLabel, const CallLabel& label,
                     NumBytesOf numBytesOf) {
  if (!vx::checkArgument(numBytes != nullptr, label,
                         "Invalid numBytes pointer. Ignoring call and returning VX_BAD_PARAMETER.")) {
    return VX_BAD_PARAMETER;
  }
  *numBytes = 0;
  const PagedImg* const img = imageOf(
      outField, objectLabel, "Invalid outField pointer or type. Setting *numBytes to 0 and returning VX_BAD_FIELD.");
  if (!img) return VX_BAD_FIELD;
  *numBytes = numBytesOf(*img);
  return VX_RESULT_OK;
}

VXErrorCode _VXGetPageMemorySize(Field* outField, unsigned int* numBytes) {
  const TraceFrame trace("source/vxAPI:_VXGetPageMemorySize()");
  return readSize(outField, numBytes, "vxAPI: VXGetPageMemorySize", "VXGetPageMemorySize",
                  [](const PagedImg& img) { return img.getPageMemorySize(); });
}

VXErrorCode _VXGetMemoryImgSize(Field* outField, unsigned int* numBytes) {
  const TraceFrame trace("source/vxAPI:_VXGetMemoryImgSize()");
  return readSize(outField, numBytes, "vxAPI: VXGetMemoryImgSize", "VXGetMemoryImgSize",
                  [](const PagedImg& img) { return img.getMemoryImg().getMemoryImgSize(); });
}

}  // namespace

VXErrorCode VXClearPages(VXField* outField) {
  return callFramed("vxAPI:_VXClearPages(outField)", vx::returnsErrorCode, _VXClearPages, outField);
}

VXErrorCode VXClearMemoryImg(VXField* outField) {
  return callFramed("vxAPI:_VXClearMemoryImg(outField)", vx::returnsErrorCode, _VXClearMemoryImg, outField);
}

VXErrorCode VXClearPagesAndMemoryImg(VXField* outField) {
  return callFramed("vxAPI:_VXClearPagesAndMemoryImg(outField)", vx::returnsErrorCode, _VXClearPagesAndMemoryImg,
                    outField);
}

VXErrorCode VXGetPageMemorySize(VXField* outField, unsigned int* numBytes) {
  return callFramed("vxAPI:_VXGetPageMemorySize(outField, numBytes)", vx::returnsErrorCode, _VXGetPageMemorySize,
                    outField, numBytes);
}

VXErrorCode VXGetMemoryImgSize(VXField* outField, unsigned int* numBytes) {
  return callFramed("vxAPI:_VXGetMemoryImgSize(outField, numBytes)", vx::returnsErrorCode, _VXGetMemoryImgSize,
                    outField, numBytes);
}
