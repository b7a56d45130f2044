#include "vxCallbackList.h"

#include <algorithm>
#include <atomic>
#include <vector>

namespace vx {

struct CallbackList::Entry {
  Entry(VXCallbackHandle entryHandle, Function entryFunction, void* data, unsigned int entryMask)
      : handle(entryHandle), function(entryFunction), userData(data), mask(entryMask) {}

  const VXCallbackHandle handle;
  const Function function;
  void* const userData;
  const unsigned int mask;
  std::atomic<bool> isRemoved{false};
  std::atomic<unsigned int> numRunning{0};
};

struct CallbackList::Entries {
  std::vector<std::shared_ptr<Entry>> list;
};

namespace {

using Entry = CallbackList::Entry;

std::atomic<VXCallbackHandle> lastHandle{0};

// The callbacks that the thread is inside of, innermost first, as a list through its stack.
struct RunningCall;
thread_local const RunningCall* innermostCall = nullptr;

struct RunningCall {
  explicit RunningCall(Entry& calledEntry) : entry(calledEntry), outer(innermostCall) { innermostCall = this; }
  ~RunningCall() {
    innermostCall = outer;
    // The last one out wakes those who wait in remove().
    if (entry.numRunning.fetch_sub(1) == 1) entry.numRunning.notify_all();
  }
  RunningCall(const RunningCall&) = delete;
  RunningCall& operator=(const RunningCall&) = delete;

  Entry& entry;
  const RunningCall* const outer;
};

bool isRunningHere(const Entry& entry) {
  for (const RunningCall* call = innermostCall; call; call = call->outer) {
    if (&call->entry == &entry) return true;
  }
  return false;
}

// After this no new call of the entry begins; and none runs, unless the thread is inside a callback itself.
void silence(Entry& entry) {
  entry.isRemoved.store(true);
  if (innermostCall) return;
  for (unsigned int running = entry.numRunning.load(); running != 0; running = entry.numRunning.load()) {
    entry.numRunning.wait(running);
  }
}

}  // namespace

CallbackList::CallbackList(const CallbackList& other) : _entries(other._snapshot()) {}

CallbackList& CallbackList::operator=(const CallbackList& other) {
  if (this == &other) return *this;
  std::shared_ptr<const Entries> entries = other._snapshot();
  const std::lock_guard lock(_mutex);
  _entries.swap(entries);
  return *this;
}

CallbackList::~CallbackList() = default;

std::shared_ptr<const CallbackList::Entries> CallbackList::_snapshot() const noexcept {
  const std::lock_guard lock(_mutex);
  return _entries;
}

VXCallbackHandle CallbackList::add(Function function, void* userData, unsigned int mask) {
  const VXCallbackHandle handle = ++lastHandle;
  auto entry = std::make_shared<Entry>(handle, function, userData, mask);
  auto entries = std::make_shared<Entries>();
  const std::lock_guard lock(_mutex);
  if (_entries) {
    entries->list.reserve(_entries->list.size() + 1);
    entries->list = _entries->list;
  }
  entries->list.push_back(std::move(entry));
  _entries = std::move(entries);
  return handle;
}

bool CallbackList::remove(VXCallbackHandle handle) {
  std::shared_ptr<Entry> removed;
  {
    const std::lock_guard lock(_mutex);
    if (!_entries) return false;
    const auto& list = _entries->list;
    const auto found =
        std::find_if(list.begin(), list.end(), [handle](const auto& entry) { return entry->handle == handle; });
    if (found == list.end()) return false;
    removed = *found;
    try {
      auto entries = std::make_shared<Entries>();
      entries->list.reserve(list.size() - 1);
      std::copy_if(list.begin(), list.end(), std::back_inserter(entries->list),
                   [&removed](const auto& entry) { return entry != removed; });
      _entries = std::move(entries);
    } catch (const std::bad_alloc&) {
      // The entry stays in the list, where its mark keeps it from being called.
    }
  }
  return silence(*removed), true;
}

void CallbackList::clear() {
  std::shared_ptr<const Entries> entries;
  {
    const std::lock_guard lock(_mutex);
    entries.swap(_entries);
  }
  if (!entries) return;
  for (const auto& entry : entries->list) silence(*entry);
}

void CallbackList::release() noexcept {
  std::shared_ptr<const Entries> entries;
  const std::lock_guard lock(_mutex);
  entries.swap(_entries);
}

std::size_t CallbackList::size() const noexcept {
  const auto entries = _snapshot();
  if (!entries) return 0;
  return static_cast<std::size_t>(std::count_if(entries->list.begin(), entries->list.end(),
                                                [](const auto& entry) { return !entry->isRemoved.load(); }));
}

void CallbackList::call(unsigned int bits, Match match, Reentry reentry, Invoke invoke, const void* event) const {
  const auto entries = _snapshot();
  if (!entries) return;
  for (const auto& entry : entries->list) {
    const unsigned int common = entry->mask & bits;
    if (match == Match::anyBit ? common == 0 : common != bits) continue;
    if (reentry == Reentry::skipped && isRunningHere(*entry)) continue;
    // Counted before the mark is looked at, so that silence() either sees the call or stops it.
    entry->numRunning.fetch_add(1);
    const RunningCall running(*entry);
    if (!entry->isRemoved.load()) invoke(entry->function, entry->userData, event);
  }
}

}  // namespace vx
