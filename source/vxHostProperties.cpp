// The property update: brings what is known of an image up to date, from the inputs of the network to the output.

#include "vxBaseOp.h"
#include "vxDataTypes.h"
#include "vxDummyOp.h"
#include "vxGuards.h"
#include "vxHost.h"
#include "vxPagedImg.h"
#include "vxProcessingGuards.h"
#include "vxTraceBuffer.h"
#include "vxTypeInfos.h"

#include <new>
#include <string>

namespace vx {

namespace {

// Sets the state, without its text where that finds no memory.
void setState(PagedImg& img, int code) {
  try {
    img.setStateInfoErrorCode(code);
  } catch (const std::bad_alloc&) {
    img.setStateInfo(std::string(), code);
  }
}

int invalidate(PagedImg& img, int code) {
  img.setOutOfDate();
  setState(img, code);
  return code;
}

bool hasEmptyComponent(const TVector<VXint64>& ext) {
  for (std::size_t i = 0; i < ext.size(); ++i) {
    if (ext[i] < 1) return true;
  }
  return false;
}

// Every output starts as a copy of the first input, which drops its pages.
int copyFirstInput(const BaseOp& op, PagedImg& img) {
  if (op.getInputNum() < 1) return VX_RESULT_OK;
  const PagedImg* const input = op.getInImg(0, false);
  checkFatal(input != nullptr);
  try {
    img.setImgProps(*input);
  } catch (int code) {  // of the table of pages
    reportThrownCode(code, "Host::_updateImageProps( ) on module ", op);
    return failureCode(code);
  }
  return VX_RESULT_OK;
}

// Lets the module set the properties. Whatever it throws leaves the image out of date, with a code.
void calcProperties(BaseOp& op, VXint64 outIndex, PagedImg& img) {
  guardProcessing([&] { op.calcOutImageProps(static_cast<int>(outIndex)); },
                  [&](int code) {
                    invalidate(img, code);
                    reportThrownCode(code, "Host::_updateImageProps( ) on module ", op);
                  },
                  [&] {
                    reportUnknownException(VX_PROPERTY_CALCULATION_FAILED, "", "", op, "::calcOutImageProps()");
                    invalidate(img, VX_PROPERTY_CALCULATION_FAILED);
                  });
}

int refuseBypass(const BaseOp& op, PagedImg& img, const char* state, const char* reason) {
  invalidate(img, VX_MISUSED_INTERFACE);
  withMemory([&] { img.setStateInfo(state, VX_MISUSED_INTERFACE); });
  withComposedLabel([&] { return op.whoAmI(true) + "::calcOutImageProps()"; }, __FILE__, __LINE__,
                    [&](const CallLabel& label) { report(VX_ERROR, label, VX_MISUSED_INTERFACE, reason); });
  return VX_MISUSED_INTERFACE;
}

// A bypassed input must have the pages of the output.
int checkBypass(const BaseOp& op, VXint64 outIndex, PagedImg& img) {
  const VXint64 bypass = op.getBypass(outIndex);
  if (bypass < 0) return VX_RESULT_OK;
  if (bypass >= op.getInputNum()) {
    return refuseBypass(op, img, "Module uses an invalid bypass index.",
                        "Host::_updateImageProps() has detected that bypass mode was used with an invalid input "
                        "connector index. The output image has been invalidated.");
  }
  const PagedImg* const in = op.getInImg(bypass, false);
  if (!in || (in->getDataType() == img.getDataType() && in->getPageExt() == img.getPageExt() &&
              in->getImgExt() == img.getImgExt())) {
    return VX_RESULT_OK;
  }
  return refuseBypass(
      op, img, "Module uses bypassing mode incorrectly.",
      "Host::_updateImageProps() has detected that bypass mode was used incorrectly in combination with "
      "type, page or image extent changes. The output image has been invalidated.");
}

bool hasOperations(VXDataType dataType, const VXTypePropBits& required) {
  const VXTypeInfos* const infos = VXGetTypeInfosForDataType(dataType);
  return infos && VXTypePropBitsTest(infos->propertyBits, required) != 0;
}

}  // namespace

int Host::updateImageProps(BaseOp& op, VXint64 outIndex) {
  const TraceFrame trace("source/vxHost:Host::updateImageProps()");
  if (outIndex < 0 || outIndex >= op.getOutputNum()) return VX_BAD_OUTPUT_INDEX;
  const PagedImg* const img = op.getOutImg(outIndex);
  if (!img) return VX_NO_DEFAULT_VALUE;
  if (img->isUpToDate()) return VX_RESULT_OK;
  const NestedRequestScope nested;
  const ProcessingScope processing(*this);
  return _updateImageProps(op, outIndex);
}

int Host::_updateImageProps(BaseOp& op, VXint64 outIndex) {
  const TraceFrame trace("source/vxHost:Host::_updateImageProps()");
  PagedImg* const img = op.getOutImg(outIndex);
  if (!img) return VX_UNKNOWN_EXCEPTION;
  if (op.getMarker() != 0) return invalidate(*img, VX_CYCLIC_NETWORK);
  if (img->isUpToDate()) {
    setState(*img, VX_RESULT_OK);
    return VX_RESULT_OK;
  }
  if (const int code = _updateInputs(op, *img)) return invalidate(*img, code);
  return _updateOutput(op, outIndex, *img);
}

// The marker finds a network that leads back to this module. It is off again when the output is worked on, so that a
// module which feeds two inputs is met twice.
int Host::_updateInputs(BaseOp& op, PagedImg& img) {
  const MarkerScope marker(op);
  const VXint64 numInputs = op.getInputNum();
  for (VXint64 i = 0; i < numInputs; ++i) {
    BaseOp* inOp = nullptr;
    PagedImg* real = nullptr;
    VXint64 inOpIndex = -1;
    BaseOp::getInInfos(op, i, true, nullptr, &inOp, &real, &inOpIndex);
    // An image that the walk came back to is part of the cycle itself, and not just behind an invalid input.
    if (img.getStateInfoErrorCode() == VX_CYCLIC_NETWORK) setState(img, VX_IMAGE_NOT_CALCULATED);
    if (real && (real->isUpToDate() || _updateImageProps(*inOp, inOpIndex) == VX_RESULT_OK)) continue;
    const bool isInCycle = img.getStateInfoErrorCode() == VX_CYCLIC_NETWORK;
    // The module may take the placeholder for an input that is open or invalid.
    const PagedImg* const accepted = op.getInImg(i, false);
    if (!accepted) return VX_OPEN_NETWORK;
    if (accepted != DummyOp::getGlobalOutImg()) return isInCycle ? VX_CYCLIC_NETWORK : VX_IMAGE_NOT_CALCULATED;
  }
  return VX_RESULT_OK;
}

int Host::_updateOutput(BaseOp& op, VXint64 outIndex, PagedImg& img) {
  if (const int code = copyFirstInput(op, img)) return invalidate(img, code);
  img.setUpToDate();
  try {
    return _calcOutput(op, outIndex, img);
  } catch (...) {
    // What a module lets pass leaves properties that nobody has tested.
    invalidate(img, VX_IMAGE_NOT_CALCULATED);
    throw;
  }
}

int Host::_calcOutput(BaseOp& op, VXint64 outIndex, PagedImg& img) {
  calcProperties(op, outIndex, img);
  if (!img.isUpToDate()) {
    if (img.getStateInfoErrorCode() == VX_RESULT_OK) setState(img, VX_IMAGE_NOT_CALCULATED);
    return img.getStateInfoErrorCode();
  }
  if (hasEmptyComponent(img.getImgExt()) || hasEmptyComponent(img.getPageExt())) {
    return invalidate(img, VX_BAD_IMAGE_EXTENT);
  }
  if (!_requiredOperationsComplete(op, outIndex)) return invalidate(img, VX_REQUIRED_OPERATIONS_MISSING);
  if (const int code = checkBypass(op, outIndex, img)) return code;
  const int code = img.isUpToDate() ? VX_RESULT_OK : VX_IMAGE_NOT_CALCULATED;
  setState(img, code);
  return code;
}

bool Host::_requiredOperationsComplete(BaseOp& op, VXint64 outIndex) {
  const TraceFrame trace("source/vxHost:Host::_requiredOperationsComplete()");
  const PagedImg* const img = op.getOutImg(outIndex);
  checkFatal(img != nullptr);
  const VXTypePropBits required = op.getVoxelDataTypeRequirements();
  if (!hasOperations(img->getDataType(), required)) return false;
  const VXint64 numInputs = op.getInputNum();
  for (VXint64 i = 0; i < numInputs; ++i) {
    InSubImageProps props(img->getDataType());
    op.calcInSubImageProps(static_cast<int>(i), props, static_cast<int>(outIndex));
    if (!hasOperations(props.dataType, required)) return false;
  }
  return true;
}

}  // namespace vx
