#include "vxCallbackList.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <new>
#include <utility>
#include <vector>

namespace vx {

// All entries stand in one register of the process as long as some list or copy holds them: a registration that was
// put aside in a copy can still be removed where it was made.
struct CallbackList::Entry : std::enable_shared_from_this<Entry> {
  Entry(const CallbackList& list, VXCallbackHandle entryHandle, Function entryFunction, void* data,
        unsigned int entryMask);
  ~Entry();
  Entry(const Entry&) = delete;
  Entry& operator=(const Entry&) = delete;

  const CallbackList* const origin;  // only compared
  const VXCallbackHandle handle;
  const Function function;
  void* const userData;
  const unsigned int mask;
  std::atomic<bool> isRemoved{false};
  std::atomic<unsigned int> numRunning{0};

  Entry* previous = nullptr;  // neighbours in the register
  Entry* next = nullptr;
};

struct CallbackList::Entries {
  std::vector<std::shared_ptr<Entry>> list;
};

namespace {

using Entry = CallbackList::Entry;

std::atomic<VXCallbackHandle> lastHandle{0};

constinit std::mutex registerMutex;  // guards the register; a leaf
constinit Entry* firstEntry = nullptr;

// The entry that a list handed out a handle for; null if there is none any more.
std::shared_ptr<Entry> findInRegister(const CallbackList& origin, VXCallbackHandle handle) {
  const std::lock_guard lock(registerMutex);
  for (Entry* entry = firstEntry; entry; entry = entry->next) {
    if (entry->handle == handle && entry->origin == &origin) return entry->weak_from_this().lock();
  }
  return nullptr;
}

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
// Gives whether the entry was not silent before.
bool silence(Entry& entry) {
  const bool wasRemoved = entry.isRemoved.exchange(true);
  if (innermostCall) return !wasRemoved;
  for (unsigned int running = entry.numRunning.load(); running != 0; running = entry.numRunning.load()) {
    entry.numRunning.wait(running);
  }
  return !wasRemoved;
}

}  // namespace

CallbackList::Entry::Entry(const CallbackList& list, VXCallbackHandle entryHandle, Function entryFunction, void* data,
                           unsigned int entryMask)
    : origin(&list), handle(entryHandle), function(entryFunction), userData(data), mask(entryMask) {
  const std::lock_guard lock(registerMutex);
  next = firstEntry;
  if (next) next->previous = this;
  firstEntry = this;
}

CallbackList::Entry::~Entry() {
  const std::lock_guard lock(registerMutex);
  (previous ? previous->next : firstEntry) = next;
  if (next) next->previous = previous;
}

CallbackList::CallbackList(const CallbackList& other) : _entries(other._snapshot()), _wasUsed(other._wasUsed.load()) {}

CallbackList& CallbackList::operator=(const CallbackList& other) {
  if (this == &other) return *this;
  std::shared_ptr<const Entries> entries = other._snapshot();
  const std::lock_guard lock(_mutex);
  _entries.swap(entries);
  _wasUsed.store(true);
  return *this;
}

CallbackList::~CallbackList() = default;

std::shared_ptr<const CallbackList::Entries> CallbackList::_snapshot() const noexcept {
  const std::lock_guard lock(_mutex);
  return _entries;
}

VXCallbackHandle CallbackList::add(Function function, void* userData, unsigned int mask) {
  const VXCallbackHandle handle = ++lastHandle;
  auto entry = std::make_shared<Entry>(*this, handle, function, userData, mask);
  auto entries = std::make_shared<Entries>();
  std::shared_ptr<const Entries> before;  // released behind the lock
  const std::lock_guard lock(_mutex);
  if (_entries) {
    entries->list.reserve(_entries->list.size() + 1);
    std::copy_if(_entries->list.begin(), _entries->list.end(), std::back_inserter(entries->list),
                 [](const auto& other) { return !other->isRemoved.load(); });
  }
  entries->list.push_back(std::move(entry));
  before = std::exchange(_entries, std::move(entries));
  _wasUsed.store(true);
  return handle;
}

bool CallbackList::remove(VXCallbackHandle handle) {
  std::shared_ptr<Entry> removed = _take(handle);
  if (!removed) removed = findInRegister(*this, handle);
  return removed && silence(*removed);
}

std::shared_ptr<CallbackList::Entry> CallbackList::_take(VXCallbackHandle handle) {
  std::shared_ptr<const Entries> before;  // released behind the lock
  const std::lock_guard lock(_mutex);
  if (!_entries) return nullptr;
  const auto& list = _entries->list;
  const auto found =
      std::find_if(list.begin(), list.end(), [handle](const auto& entry) { return entry->handle == handle; });
  if (found == list.end()) return nullptr;
  std::shared_ptr<Entry> taken = *found;
  try {
    auto entries = std::make_shared<Entries>();
    entries->list.reserve(list.size() - 1);
    std::copy_if(list.begin(), list.end(), std::back_inserter(entries->list),
                 [&taken](const auto& entry) { return entry != taken; });
    before = std::exchange(_entries, std::move(entries));
  } catch (const std::bad_alloc&) {
    // The entry stays in the list, where its mark will keep it from being called.
  }
  return taken;
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
  if (!_wasUsed.load(std::memory_order_acquire)) return;
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
