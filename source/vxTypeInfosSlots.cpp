// The slots through which typed code works on registered types: push and pop.

#include "vxErrorOutput.h"
#include "vxMutex.h"
#include "vxStandardTypeTable.h"
#include "vxTraceBuffer.h"
#include "vxTypeInfos.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

VXTypeInfos VXTypeInfosTable[VX_NUM_TYPE_SLOTS];

namespace {

using vx::MultithreadingLock;
using vx::Mutex;

constexpr VXint32 pushedNothing = 0;
constexpr VXint32 pushedOutput = 1;
constexpr VXint32 pushedInput = 2;
constexpr VXint32 wasInSlot = 3;

constexpr char changeInThreadsReason[] =
    "Changing/setting up carrier/registered types in multithreaded mode operations are supported only once, because "
    "otherwise deadlocks might occur. See VX Programming guide for details. Maybe you used carrier/registered types "
    "indirectly by calling functions from a BaseOp::calcOutSubImage() body (e.g. by using copySubImage operations on "
    "non standard types). The VXTypeInfosTable is not updated therefore which might lead to invalid calculations or "
    "crashes.";

bool isSlot(VXint32 slot) { return slot >= 0 && slot < VX_NUM_TYPE_SLOTS; }

// What a slot held before a push, as bytes: a copy of the members would leave out the padding between them.
struct SavedSlot {
  VXint32 slot;
  bool isOfThreads;  // saved while multi-threading was active
  bool isLeftOver;   // all who used the slot have popped, and nobody restored it
  unsigned char record[sizeof(VXTypeInfos)];
};

// The saved records and use counts of all slots. This lock is taken last: nothing is called while it is held.
class SlotStack {
 public:
  // What became of a push or a pop. Failures are reported by the caller, when the lock is free again.
  enum class Outcome { done, refused, noMemory, nothingSaved };

  Outcome push(const VXTypeInfos& infos, VXint32 slot, VXint32& pushInfo) {
    const MultithreadingLock lock(_mutex);
    const bool isMultithreaded = VXIsMultithreadingActive() != 0;
    if (VXTypeInfosTable[slot].dataType == infos.dataType) pushInfo = wasInSlot;
    if (isMultithreaded) ++_numUsers[slot];
    if (pushInfo == wasInSlot) return Outcome::done;
    if (isMultithreaded && _numUsers[slot] > 1) return Outcome::refused;
    if (!_save(slot, isMultithreaded)) {
      if (isMultithreaded) --_numUsers[slot];
      return Outcome::noMemory;
    }
    std::memcpy(&VXTypeInfosTable[slot], &infos, sizeof(VXTypeInfos));
    return Outcome::done;
  }

  Outcome pop(VXint32 slot, VXint32 pushInfo) {
    const MultithreadingLock lock(_mutex);
    if (VXIsMultithreadingActive() && _numUsers[slot] > 0) --_numUsers[slot];
    if (_numUsers[slot] > 0) return Outcome::done;
    const auto saved = _topmost(slot);
    if (pushInfo == wasInSlot) {
      // The last thread leaves a slot that another one had set: the type stays, and so does what was saved for that
      // other thread, for a pop that comes before the slot is set anew.
      if (VXIsMultithreadingActive() && saved != _saved.rend() && saved->isOfThreads) saved->isLeftOver = true;
      return Outcome::done;
    }
    // The topmost record of this slot, since threads may pop different slots in any order.
    if (saved == _saved.rend()) return Outcome::nothingSaved;
    std::memcpy(&VXTypeInfosTable[slot], saved->record, sizeof(VXTypeInfos));
    _saved.erase(saved.base() - 1);
    return Outcome::done;
  }

 private:
  using Saved = std::vector<SavedSlot>;

  Saved::reverse_iterator _topmost(VXint32 slot) VX_REQUIRES(_mutex) {
    return std::find_if(_saved.rbegin(), _saved.rend(), [=](const SavedSlot& saved) { return saved.slot == slot; });
  }

  bool _save(VXint32 slot, bool isOfThreads) VX_REQUIRES(_mutex) {
    // Left-over records must not add up where threads set a slot again and again.
    if (const auto last = _topmost(slot); last != _saved.rend() && last->isLeftOver) _saved.erase(last.base() - 1);
    try {
      SavedSlot& saved = _saved.emplace_back();
      saved.slot = slot;
      saved.isOfThreads = isOfThreads;
      saved.isLeftOver = false;
      std::memcpy(saved.record, &VXTypeInfosTable[slot], sizeof(VXTypeInfos));
      return true;
    } catch (const std::bad_alloc&) {
      return false;
    }
  }

  Mutex _mutex;
  Saved _saved VX_GUARDED_BY(_mutex);
  VXuint64 _numUsers[VX_NUM_TYPE_SLOTS] VX_GUARDED_BY(_mutex) = {};
};

// Never destroyed: a destructor at the end of the process may still push and pop.
SlotStack& slotStack() {
  alignas(SlotStack) static unsigned char storage[sizeof(SlotStack)];
  static SlotStack& stack = *::new (static_cast<void*>(storage)) SlotStack;
  return stack;
}

}  // namespace

VXTypePushSingleInfo _VXTypeInfosPushAndSet(VXDataType dataType, int isInput) {
  const vx::TraceFrame trace("source/vxTypeInfos:_VXTypeInfosPushAndSet()");
  const VXTypeInfos* const infos = VXGetTypeInfosForDataType(dataType);
  if (!infos) return {pushedNothing, -1};
  if (dataType < vx::numStandardTypes) return {pushedNothing, infos->physicalType};
  const VXint32 slot = infos->physicalType + (isInput ? VX_INPUT_SLOT_OFFSET : 0);
  if (!isSlot(slot)) return {pushedNothing, -1};

  VXTypePushSingleInfo pushed = {isInput ? pushedInput : pushedOutput, slot};
  switch (slotStack().push(*infos, slot, pushed.pushInfo)) {
    case SlotStack::Outcome::refused:
      vx::report(VX_FATAL, "_VXTypeInfosPushAndSet()", VX_TYPE_CHANGE_IN_THREADS, changeInThreadsReason);
      break;
    case SlotStack::Outcome::noMemory:
      vx::report(VX_FATAL, "_VXTypeInfosPushAndSet()", VX_NO_MEMORY, "The VXTypeInfosTable is not updated.");
      return {pushedNothing, slot};
    default:
      break;
  }
  return pushed;
}

VXTypePushSingleInfo VXTypeInfosPushAndSetInput(VXDataType dataType) { return _VXTypeInfosPushAndSet(dataType, 1); }

VXTypePushSingleInfo VXTypeInfosPushAndSetOutput(VXDataType dataType) { return _VXTypeInfosPushAndSet(dataType, 0); }

VXTypePushInfo VXTypeInfosPushAndSetBoth(VXDataType dataType) {
  return VXTypeInfosPushAndSetTypes(dataType, 0, dataType, 1);
}

VXTypePushInfo VXTypeInfosPushAndSetTypes(VXDataType dataType1, int isInput1, VXDataType dataType2, int isInput2) {
  VXTypePushInfo pushed;
  pushed.first = _VXTypeInfosPushAndSet(dataType1, isInput1);
  pushed.second = _VXTypeInfosPushAndSet(dataType2, isInput2);
  return pushed;
}

void VXTypeInfoPop(VXint32 pushInfo, VXint32 slot) {
  const vx::TraceFrame trace("source/vxTypeInfos:VXTypeInfoPop()");
  if (pushInfo == pushedNothing || !isSlot(slot)) return;
  if (slotStack().pop(slot, pushInfo) == SlotStack::Outcome::nothingSaved) {
    vx::report(VX_FATAL, "VXTypeInfoPop(VXTypePushSingleInfo pushInfo) (2)", VX_EMPTY_STACK, "Ignoring call.");
  }
}

void VXTypeInfosPop(VXTypePushInfo pushInfo) {
  VXTypeInfoPop(pushInfo.second.pushInfo, pushInfo.second.slot);
  VXTypeInfoPop(pushInfo.first.pushInfo, pushInfo.first.slot);
}
