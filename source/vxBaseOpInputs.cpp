// Where a module gets its images from, and what it gives.

#include "vxBaseOp.h"
#include "vxDummyOp.h"
#include "vxErrorOutput.h"
#include "vxGuards.h"
#include "vxPagedImg.h"
#include "vxTraceBuffer.h"

namespace vx {

namespace {

template <class T>
void setIfWanted(T* result, T value) {
  if (result) *result = value;
}

}  // namespace

PagedImg* BaseOp::getOutImg(VXint64 outIndex) const {
  if (!_isOutput(outIndex)) return nullptr;
  OutputConnectorField* const field = getOutField(outIndex);
  checkFatal(field != nullptr);
  return &field->getOutputConnectorValue().getPagedImg();
}

// Inputs --------------------------------------------------------------------------------------------------------------

void BaseOp::getInInfos(const BaseOp& op, VXint64 inIndex, bool getReal, bool* valid, BaseOp** inOp, PagedImg** inImg,
                        VXint64* inOpIndex) {
  const TraceFrame trace("source/vxBaseOp:BaseOp::getInInfos()");
  const InputConnectorField* const field = op._isInput(inIndex) ? op.getInField(inIndex) : nullptr;
  checkFatal(field != nullptr);

  InputConnector& input = field->getInputConnectorValue();
  const OutputConnector* const output = input.isValidConnection() ? input.getLink() : nullptr;
  bool isValid = output != nullptr;
  BaseOp* module = output ? &output->getOp() : nullptr;
  PagedImg* image = output ? &output->getPagedImg() : nullptr;
  VXint64 outIndex = output ? output->getIndex() : -1;

  if (!getReal && !(image && image->isUpToDate())) {
    const INPUT_STATE state = image ? INPUT_NOT_VALID : INPUT_NOT_CONNECTED;
    isValid = op.handleInput(static_cast<int>(inIndex), state) != INVALIDATE_OUTPUT;
    if (isValid) {
      module = DummyOp::getGlobalInstance();
      image = DummyOp::getGlobalOutImg();
      outIndex = 0;
    }
  }
  setIfWanted(valid, isValid);
  setIfWanted(inOp, module);
  setIfWanted(inImg, image);
  setIfWanted(inOpIndex, outIndex);
}

void BaseOp::getInInfos(const BaseOp* op, VXint64 inIndex, bool getReal, bool* valid, BaseOp** inOp, PagedImg** inImg,
                        VXint64* inOpIndex) {
  checkFatal(op != nullptr);
  getInInfos(*op, inIndex, getReal, valid, inOp, inImg, inOpIndex);
}

BaseOp* BaseOp::getInOp(VXint64 inIndex, bool getReal) const {
  BaseOp* inOp = nullptr;
  getInInfos(*this, inIndex, getReal, nullptr, &inOp, nullptr, nullptr);
  return inOp;
}

VXint64 BaseOp::getInOpIndex(VXint64 inIndex, bool getReal) const {
  VXint64 inOpIndex = -1;
  getInInfos(*this, inIndex, getReal, nullptr, nullptr, nullptr, &inOpIndex);
  return inOpIndex;
}

PagedImg* BaseOp::getInImg(VXint64 inIndex, bool getReal) const {
  PagedImg* inImg = nullptr;
  getInInfos(*this, inIndex, getReal, nullptr, nullptr, &inImg, nullptr);
  return inImg;
}

PagedImg* BaseOp::getUpdatedInImg(VXint64 inIndex, bool getReal) const {
  const TraceFrame trace("source/vxBaseOp:BaseOp::getUpdatedInImg()");
  if (!_isInput(inIndex)) return nullptr;
  BaseOp* inOp = nullptr;
  PagedImg* inImg = nullptr;
  VXint64 inOpIndex = -1;
  getInInfos(*this, inIndex, true, nullptr, &inOp, &inImg, &inOpIndex);
  if (getReal && !(inImg && inOp)) return nullptr;
  if (inImg && inImg->isUpToDate()) return inImg;
  if (inOp && inOpIndex >= 0) updateImageProps(inOp, inOpIndex);
  if (inImg && inImg->isUpToDate()) return inImg;
  if (getReal) return nullptr;

  PagedImg* const seenImg = getInImg(inIndex, false);
  if (!seenImg || seenImg->isUpToDate()) return seenImg;
  if (seenImg != DummyOp::getGlobalOutImg()) return nullptr;
  seenImg->setUpToDate();
  return seenImg;
}

PagedImg* BaseOp::getNonDummyUpdatedInImg(int inIndex) const {
  PagedImg* const image = getUpdatedInImg(inIndex, false);
  return image == DummyOp::getGlobalOutImg() ? nullptr : image;
}

// Connections ---------------------------------------------------------------------------------------------------------

int BaseOp::connectInput(VXint64 inIndex, BaseOp& op, VXint64 outIndex) {
  const TraceFrame trace("source/vxBaseOp:BaseOp::connectInput()");
  const auto refuse = [this](VXErrorCode code, const char* reason) {
    withComposedLabel([this] { return "BaseOp::connectInput() of module " + whoAmI(true); }, __FILE__, __LINE__,
                      [&](const CallLabel& label) { report(VX_ERROR, label, code, reason); });
    return 0;
  };
  if (!_isInput(inIndex)) return refuse(VX_BAD_INPUT_INDEX, "Invalid index (inIndex), call is ignored!");
  if (!op._isOutput(outIndex)) return refuse(VX_BAD_OUTPUT_INDEX, "Invalid index (outIndex), call is ignored!");
  InputConnectorField* const inField = getInField(inIndex);
  OutputConnectorField* const outField = op.getOutField(outIndex);
  checkFatal(inField && outField);
  inField->getInputConnectorValue().connect(outField->getOutputConnectorValue());
  inField->attachField(outField, 0);
  return 1;
}

void BaseOp::clearOutImg(VXint64 outIndex) {
  const TraceFrame trace("source/vxBaseOp:BaseOp::clearOutImg()");
  PagedImg* const image = getOutImg(outIndex);
  checkFatal(image != nullptr);
  image->clearPageListAndMemoryImg();
  image->setOutOfDate();
}

}  // namespace vx
