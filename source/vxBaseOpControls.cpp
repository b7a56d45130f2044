// What a module permits the host to do.

#include "vxBaseOp.h"
#include "vxErrorOutput.h"
#include "vxPagedImg.h"
#include "vxTraceBuffer.h"

namespace vx {

namespace {

constexpr char badOutputOrInput[] = "Invalid index (outIndex or inIndex), call is ignored!";

// Reports a bad index. \param call the function, up to the name of the module.
void reportBadIndex(const BaseOp& op, VXMessageType type, const char* call, const char* reason) {
  withComposedLabel([&] { return call + op.whoAmI(true); }, __FILE__, __LINE__,
                    [&](const CallLabel& label) { report(type, label, VX_BAD_OUTPUT_INDEX, reason); });
}

}  // namespace

void BaseOp::setOutImgInplace(VXint64 outIndex, VXint64 inIndex) {
  const TraceFrame trace("source/vxBaseOp:BaseOp::setOutImgInplace()");
  if (_isOutput(outIndex) && (inIndex == -1 || _isInput(inIndex))) {
    getOutImg(outIndex)->_inplaceIndex = inIndex;
  } else {
    reportBadIndex(*this, VX_WARNING, "BaseOp::setOutImgInplace() of module ", badOutputOrInput);
  }
}

void BaseOp::unsetOutImgInplace(VXint64 outIndex) {
  const TraceFrame trace("source/vxBaseOp:BaseOp::unsetOutImgInplace()");
  if (PagedImg* const image = getOutImg(outIndex)) {
    image->_inplaceIndex = -1;
  } else {
    reportBadIndex(*this, VX_WARNING, "BaseOp::unsetOutImgInplace() of module ",
                   "Invalid index (outIndex), call is ignored!");
  }
}

VXint64 BaseOp::getOutImgInplace(VXint64 outIndex) const {
  const PagedImg* const image = getOutImg(outIndex);
  return image ? image->_inplaceIndex : -1;
}

void BaseOp::setBypass(VXint64 outIndex, VXint64 inIndex) {
  const TraceFrame trace("source/vxBaseOp:BaseOp::setBypass()");
  if (_isOutput(outIndex) && (inIndex == -1 || _isInput(inIndex))) {
    getOutImg(outIndex)->_bypassIndex = inIndex;
  } else {
    reportBadIndex(*this, VX_WARNING, "BaseOp::setBypass() of module ", badOutputOrInput);
  }
}

VXint64 BaseOp::getBypass(VXint64 outIndex) const {
  const PagedImg* const image = getOutImg(outIndex);
  return image ? image->_bypassIndex : -1;
}

void BaseOp::setMemoryOutputControl(VXint64 outIndex, bool manualControl) {
  const TraceFrame trace("source/vxBaseOp:BaseOp::setMemoryOutputControl()");
  if (PagedImg* const image = getOutImg(outIndex)) {
    image->getMemoryImg().setManualControl(manualControl);
  } else {
    reportBadIndex(*this, VX_FATAL, "BaseOp::setMemoryOutputControl() of module ", "Ignoring function call");
  }
}

bool BaseOp::getMemoryOutputControl(VXint64 outIndex) const {
  const TraceFrame trace("source/vxBaseOp:BaseOp::getMemoryOutputControl()");
  if (const PagedImg* const image = getOutImg(outIndex)) return image->getMemoryImg().getManualControl();
  reportBadIndex(*this, VX_FATAL, "BaseOp::getMemoryOutputControl() of module ", "Returning false");
  return false;
}

}  // namespace vx
