// The road of a tile, third station: the inputs of a page. The module says which regions it needs; their pages are
// calculated first, by the second station, and then the input blocks are given memory, or left to the worker.

#include "vxBaseOp.h"
#include "vxCachedBuffer.h"
#include "vxDataTypes.h"
#include "vxGuards.h"
#include "vxHost.h"
#include "vxPageBytes.h"
#include "vxPagedImg.h"
#include "vxProcessingGuards.h"
#include "vxThreadDataClass.h"
#include "vxTraceBuffer.h"

namespace vx {

namespace {

// Asks the module how it wants an input.
InSubImageProps askModule(const ThreadDataClass& data, VXint64 inIndex, SubImg& block) {
  BaseOp& op = *data._op;
  InSubImageProps props(data._outSubImg->getDataType());
  guardProcessing(
      [&] {
        const int in = static_cast<int>(inIndex);
        const int out = static_cast<int>(data._outIndex);
        block.setBox(op.calcInSubImageBox(in, data._outSubImg->getBox(), out));
        op.calcInSubImageProps(in, props, out);
      },
      [&](int code) {
        reportThrownCode(code, "Host::_initializePageData( ) on module ", op);
        throw;
      },
      [&] {
        reportUnknownException(VX_IN_SUBIMAGE_CALCULATION_FAILED, "", "", op, "::calcInSubImageProps/Box()");
        throw;
      });
  return props;
}

void warnOfInTileCaching(const BaseOp& op, VXErrorCode code, const char* reason) {
  withComposedLabel([&] { return op.whoAmI(true) + "::calcInSubImageProps"; }, __FILE__, __LINE__,
                    [&](const CallLabel& label) { report(VX_WARNING, label, code, reason); });
}

// In-tile caching takes the whole input as it is, once for all pages. A memory image that a page of an outer level
// reads in another type can't be had.
void checkInTileCaching(const ThreadDataClass& data, InputPageData& input, const SubImgBox& box, bool isFirstPage) {
  if (!input._inTileCaching) return;
  if (!isFirstPage || input._inImg->getMemoryImg().getManualControl()) {
    input._inTileCaching = false;
    return;
  }
  if (input._dataType != data._outSubImg->getDataType()) {
    input._inTileCaching = false;
    warnOfInTileCaching(*data._op, VX_BAD_DATA_TYPE,
                        "inTileCaching has been disabled, because it does not work togehther with requested change of "
                        "the input data types type. This could degrade performance strongly.");
  }
  if (box != input._inImg->getBoxFromImgExt()) {
    input._inTileCaching = false;
    warnOfInTileCaching(*data._op, VX_BAD_PARAMETER,
                        "It is prohibited to activate inTileCaching without requesting tiles of input volume size. "
                        "Hence inTileCaching has been deactivated which might degrade performance strongly.");
  }
  if (input._scaleShiftData != ScaleShiftData()) {
    input._inTileCaching = false;
    warnOfInTileCaching(*data._op, VX_BAD_PARAMETER,
                        "inTileCaching has been disabled, because it does not work togehther with requested "
                        "scaling/shifting of data. This could degrade performance strongly.");
  }
}

// Whether the memory image is what the input block is to be: the region, in the type and with the values wanted.
bool holdsInput(const MemoryImg& memoryImg, const SubImgBox& box, const InputPageData& input) {
  return memoryImg.isValid() && memoryImg.getSubImg().getBox() == box &&
         memoryImg.getSubImg().getDataType() == input._dataType && input._scaleShiftData == ScaleShiftData();
}

void provideMemory(MemoryImg& memoryImg, const SubImgBox& box, VXDataType dataType) {
  checkFatal(memoryImg.update(nullptr, 0, box, dataType) != VX_NO_MEMORY, VX_NO_MEMORY);
}

// The memory of the page that an input block is a copy of, if it is one of a whole page and the module only reads it;
// else null.
void* findSharedPage(const ThreadDataClass& data, const InputPageData& input, const SubImgBox& box) {
  if (!data._op->areInputsReadOnly() || input._pageIDs.size() != 1) return nullptr;
  const PagedImg& inImg = *input._inImg;
  const VXint64 id = input._pageIDs[0];
  if (input._dataType != inImg.getDataType() || input._scaleShiftData != ScaleShiftData()) return nullptr;
  if (inImg.getPageBox(id) != box) return nullptr;
  const CachedBuffer* const page = inImg.getPage(id, PagedImg::OWN_OR_BYPASSED_PAGE);
  // The type of the image may have changed since the page got its memory.
  const bool isWhole = page && page->isLocked() && page->getSize() >= numBytesOrTooMany(inImg.getDataType(), box);
  return isWhole ? page->getData() : nullptr;
}

void copyInput(const InputPageData& input, SubImg& block) {
  input._inImg->copyPages(input._pageIDs, &block, input._scaleShiftData, PagedImg::OWN_OR_BYPASSED_PAGE);
}

// Gives an input block its memory, and fills it unless a worker does that.
void provideInput(ThreadDataClass& data, InputPageData& input, SubImg& block) {
  checkFatal(input._inImg != nullptr);
  MemoryImg& memoryImg = input._inImg->getMemoryImg();
  block.setDataType(input._dataType);
  if (input._useInplace) {
    block.setData(data._outSubImg->getData());
    // Left to the worker, the page is still in its caches when the module runs. Conversions of registered types must
    // not meet, for which the run doesn't look at the types of input images.
    input._copyInThread = VXIsStandardType(input._inImg->getDataType());
    if (!input._copyInThread) copyInput(input, block);
  } else if (input._useMemoryImg) {
    block.setData(memoryImg.getSubImg().getData());
  } else if (input._inTileCaching) {
    block.setData(memoryImg.getSubImg().getData());
    copyInput(input, block);
    memoryImg.setValid(true);
  } else {
    block.setData(findSharedPage(data, input, block.getBox()));
    input._copyInThread = !block.getData();
  }
}

}  // namespace

void Host::_initializePageData(ThreadDataClass& data, bool isFirstPage, unsigned long depth) {
  const TraceFrame trace("source/vxHost:Host::_initializePageData()");
  for (VXint64 i = 0; i < data._numInputs; ++i) _requestInput(data, i, isFirstPage, depth);
  for (VXint64 i = 0; i < data._numInputs; ++i) {
    const auto index = static_cast<std::size_t>(i);
    provideInput(data, data._inputData[index], data._inSubImgs[index]);
  }
}

void Host::_requestInput(ThreadDataClass& data, VXint64 inIndex, bool isFirstPage, unsigned long depth) {
  const BaseOp& op = *data._op;
  InputPageData& input = data._inputData[static_cast<std::size_t>(inIndex)];
  SubImg& block = data._inSubImgs[static_cast<std::size_t>(inIndex)];
  BaseOp* inOp = nullptr;
  VXint64 inOpIndex = -1;
  BaseOp::getInInfos(op, inIndex, false, nullptr, &inOp, &input._inImg, &inOpIndex);
  if (!input._inImg) {
    report(VX_FATAL, "Host::_initializePageData", VX_OPEN_INPUT,
           "The VX detected an open input where a valid one should be. A reason could be that "
           "BaseOp::handleInput(...) const has not been overloaded correctly (forgotten const?).");
    throw int{VX_OPEN_INPUT};
  }
  block.setImgProps(*input._inImg);
  block.setData(nullptr);
  const InSubImageProps props = askModule(data, inIndex, block);
  input._inTileCaching = props.inTileCaching;
  input._dataType = props.dataType;
  input._scaleShiftData = props.scaleShiftData;
  input._copyInThread = false;
  const SubImgBox box = block.getBox();
  checkInTileCaching(data, input, box, isFirstPage);
  input._useInplace = data._outIndex != -1 && op.getOutImgInplace(data._outIndex) == inIndex &&
                      box == data._outSubImg->getBox() && input._dataType == data._outSubImg->getDataType();

  MemoryImg& memoryImg = input._inImg->getMemoryImg();
  const bool isHeld = holdsInput(memoryImg, box, input);
  if (input._inTileCaching && !isHeld) {
    input._inTileCaching = !memoryImg.hasReaders();
    if (input._inTileCaching) provideMemory(memoryImg, box, input._dataType);
  }
  input._useMemoryImg = isHeld && !box.isEmpty() && !input._useInplace;
  if (input._useMemoryImg || input._inTileCaching) input.readMemoryImg(memoryImg);
  if (box.isEmpty() || input._useMemoryImg) return;
  checkFatal(inOp != nullptr);
  withMemory([&] { input._inImg->getPageIDs(input._pageIDs, box); });
  try {
    _calcPages(*inOp, *input._inImg, inOpIndex, input._pageIDs, depth + 1, false);
  } catch (...) {
    input._pageIDs.clear();  // of a group that failed; its pages stay locked
    throw;
  }
}

}  // namespace vx
