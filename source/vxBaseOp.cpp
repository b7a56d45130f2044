#include "vxBaseOp.h"

#include "vxErrorOutput.h"
#include "vxGuards.h"
#include "vxNotify.h"
#include "vxTraceBuffer.h"

#include <algorithm>

namespace vx {

VX_ABSTRACT_CLASS_SOURCE(BaseOp, "Base")

namespace {

constexpr unsigned int moduleRegistered = 0x200002;
constexpr unsigned int moduleRemoved = 0x200004;
constexpr std::size_t numReservedModules = 8192;

constexpr char instanceNameField[] = "instanceName";

constexpr VXTypePropBits onlyStandardTypes = {{0xFFFF, 0xFFFFFFFF, 0x1F, 0x1FFFFF83}};
constexpr VXTypePropBits standardTypesNarrow = {{0xFFFF, 0xFFFFFFFF, 0x1F, 0x1FFFFF03}};
constexpr VXTypePropBits scalarTypesOnly = {{0, 0xF0F000, 0, 0xFF003}};

}  // namespace

// Modules are made and deleted also by static objects of other libraries: the list must be good before and after all
// static objects of this one.
constinit std::vector<BaseOp*>* BaseOp::_instantiatedModules = nullptr;
constinit VXint64 BaseOp::_globalHandleNotificationDepth = 0;

BaseOp::BaseOp(int numInputs, int numOutputs)
    : _fieldContainer(nullptr, &BaseOp::handleSensorNotification), _voxelDataTypeRequirements(onlyStandardTypes) {
  const TraceFrame trace("source/vxBaseOp:BaseOp::BaseOp()");
  _fieldContainer._setBaseOp(this);
  // A module without one of these is none: what the container has reported is thrown on.
  for (int i = 0; i < numInputs; ++i) checkFatal(_fieldContainer.addInputConnector(this, i), VX_NO_MEMORY);
  for (int i = 0; i < numOutputs; ++i) checkFatal(_fieldContainer.addOutputConnector(this, i), VX_NO_MEMORY);
  checkFatal(_fieldContainer.addString(instanceNameField), VX_NO_MEMORY);
  _addBaseOp(*this);
}

BaseOp::BaseOp(const BaseOp& /*other*/) : BaseOp(0, 0) {
  report(VX_FATAL, "BaseOp::BaseOp(const BaseOp &)", VX_MISUSED_INTERFACE,
         "Usage of copy constructor of BaseOp is not supported.");
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): nothing is assigned
BaseOp& BaseOp::operator=(const BaseOp& /*other*/) {
  report(VX_FATAL, "BaseOp& BaseOp::operator=(const BaseOp &)", VX_MISUSED_INTERFACE,
         "Usage of assignment operator of BaseOp is not supported.");
  return *this;
}

BaseOp::~BaseOp() {
  const TraceFrame trace("source/vxBaseOp:BaseOp::~BaseOp()");
  try {
    guardedBlock([this] { _removeBaseOp(*this); }, VX_DESTRUCTOR_FAILED);
  } catch (...) {
    // A callback failed, which has been reported; thrown on from here it would end the process.
  }
}

// Operations ----------------------------------------------------------------------------------------------------------

BaseOp::INPUT_HANDLE BaseOp::handleInput(int /*inIndex*/, INPUT_STATE /*state*/) const { return INVALIDATE_OUTPUT; }

void BaseOp::calcOutImageProps(int /*outIndex*/) {}

SubImgBox BaseOp::calcInSubImageBox(int /*inIndex*/, const SubImgBox& outSubImgBox, int /*outIndex*/) {
  return outSubImgBox;
}

void BaseOp::calcOutSubImage(SubImg* outSubImg, int outIndex, SubImg* inSubImgs, ThreadInfo& /*threadInfo*/) {
  calcOutSubImage(outSubImg, outIndex, inSubImgs);
}

void BaseOp::calcOutSubImage(SubImg* outSubImg, int outIndex, SubImg* inSubImgs) {
  const TraceFrame trace("source/vxBaseOp:BaseOp::calcOutSubImage()");
  const VXint64 numInputs = getInputNum();
  if (numInputs <= 0) return;
  checkFatal(outSubImg != nullptr);
  checkFatal(inSubImgs != nullptr);
  // The index is -1 where pages are walked through without an output.
  outSubImg->copySubImage(inSubImgs[std::clamp<VXint64>(outIndex, 0, numInputs - 1)]);
}

void BaseOp::calcInSubImageProps(int /*inIndex*/, InSubImageProps& /*props*/, int /*outIndex*/) {}

void BaseOp::handleNotification(Field* /*field*/) {}

void BaseOp::activateAttachments() { _fieldContainer.activateAttachments(); }

void BaseOp::deactivateAttachments() { _fieldContainer.deactivateAttachments(); }

void BaseOp::beginSaveFields() {}

void BaseOp::endSaveFields() {}

void BaseOp::notifyFirstCalcOutSubImage(int /*outIndex*/, bool /*isProcessAllPages*/) {}

void BaseOp::setMarker(int marker) { _marker = marker; }

int BaseOp::getMarker() { return static_cast<int>(static_cast<VXuint32>(_marker)); }

// Names and types -----------------------------------------------------------------------------------------------------

std::string BaseOp::whoAmI(bool addInstanceName) const {
  const TraceFrame trace("source/vxBaseOp:BaseOp::whoAmI()");
  std::string text = getTypeIdName();
  if (!addInstanceName) return text;
  checkFatal(_fieldContainer.hasField(instanceNameField));
  const std::string instanceName = _fieldContainer.getField(instanceNameField)->getStringValue();
  if (!instanceName.empty()) text += "(" + instanceName + ")";
  return text;
}

void BaseOp::setVoxelDataTypeSupport(PERMITTED_TYPES permitted, VXTypePropBits bits) {
  _voxelDataTypeSupport = permitted;
  switch (permitted) {
    case ONLY_STANDARD_TYPES:
      _voxelDataTypeRequirements = onlyStandardTypes;
      return;
    case STANDARD_TYPES_NARROW:
      _voxelDataTypeRequirements = standardTypesNarrow;
      return;
    case EXPLICIT_TYPES:
      _voxelDataTypeRequirements = bits;
      return;
    case SCALAR_TYPES_ONLY:
      _voxelDataTypeRequirements = scalarTypesOnly;
      return;
  }
  report(VX_ERROR, "BaseOp::setVoxelDataTypeSupport", VX_BAD_PARAMETER,
         "Invalid parameter passed. Using ONLY_STANDARD_TYPES instead.");
  _voxelDataTypeRequirements = onlyStandardTypes;
}

// The list of all modules ---------------------------------------------------------------------------------------------

VXint64 BaseOp::getNumBaseOps() {
  return _instantiatedModules ? static_cast<VXint64>(_instantiatedModules->size()) : 0;
}

BaseOp* BaseOp::getBaseOp(unsigned int index) {
  if (!_instantiatedModules || index >= _instantiatedModules->size()) return nullptr;
  return (*_instantiatedModules)[index];
}

VXint64 BaseOp::findBaseOpIndex(const BaseOp& op) {
  if (!_instantiatedModules) return -1;
  const auto found = std::find(_instantiatedModules->begin(), _instantiatedModules->end(), &op);
  return found == _instantiatedModules->end() ? -1 : found - _instantiatedModules->begin();
}

void BaseOp::destroyBaseOp() {
  const TraceFrame trace("source/vxBaseOp:BaseOp::destroyBaseOp()");
  guardedDelete(_instantiatedModules);
}

bool BaseOp::_addBaseOp(BaseOp& op) {
  const TraceFrame trace("source/vxBaseOp:BaseOp::_addBaseOp()");
  if (!_instantiatedModules) _instantiatedModules = new std::vector<BaseOp*>();
  std::vector<BaseOp*>& modules = *_instantiatedModules;
  if (modules.size() == modules.capacity()) modules.reserve(modules.size() + numReservedModules);
  modules.push_back(&op);
  try {
    VXNotify.notify(moduleRegistered, &op, nullptr);
  } catch (...) {
    // The constructor fails, and no destructor would take the module out again.
    const VXint64 index = findBaseOpIndex(op);
    if (index >= 0) _instantiatedModules->erase(_instantiatedModules->begin() + index);
    throw;
  }
  return true;
}

VXint64 BaseOp::_removeBaseOp(BaseOp& op) {
  const TraceFrame trace("source/vxBaseOp:BaseOp::_removeBaseOp()");
  // The newest module is the first to go where modules come and go in scopes.
  const bool isNewest = getNumBaseOps() > 0 && _instantiatedModules->back() == &op;
  const VXint64 index = isNewest ? getNumBaseOps() - 1 : findBaseOpIndex(op);
  if (index < 0) return -1;
  _instantiatedModules->erase(_instantiatedModules->begin() + index);
  VXNotify.notify(moduleRemoved, &op, nullptr);
  return index;
}

}  // namespace vx
