/// \file vxCallbackList.h
/// The list of registered callbacks below the message channel and the notification.

#ifndef VX_CALLBACK_LIST_H
#define VX_CALLBACK_LIST_H

#include "vxUtilsAPI.h"

#include <atomic>
#include <memory>
#include <mutex>

namespace vx {

/// Callbacks with user data and a mask, added and removed from any thread, also from inside a callback.
///
/// A call works on the list as it stood when the call began; a callback that is removed meanwhile isn't called any
/// more. No lock is held while a callback runs, and a call allocates nothing. Copies share the registrations: a
/// callback that is removed from one of them is silent in all. A handle is good at the list that gave it also while
/// only a copy holds the registration.
class VX_EXPORT CallbackList {
 public:
  /// A callback whose real type the user of the list knows.
  using Function = void (*)();
  /// Calls one callback with the arguments of the event.
  using Invoke = void (*)(Function function, void* userData, const void* event);

  /// Which callbacks an event reaches.
  enum class Match {
    anyBit,  ///< those whose mask has a bit of the event
    allBits  ///< those whose mask has all bits of the event
  };
  /// Whether an event that a callback causes reaches that callback again.
  enum class Reentry { allowed, skipped };

  constexpr CallbackList() noexcept = default;
  /// A copy shares the registrations.
  CallbackList(const CallbackList& other);
  /// Shares the registrations of the other one in place of its own, which are forgotten as by release().
  CallbackList& operator=(const CallbackList& other);
  ~CallbackList();

  /// Adds a callback. \return its handle, never 0. \throw std::bad_alloc with the list unchanged.
  VXCallbackHandle add(Function function, void* userData, unsigned int mask);

  /// Removes a callback, and waits until no other thread runs it, unless this thread is inside a callback of any list.
  /// \return whether the handle named a callback that stands in this list, or that was added to it and stands in a
  /// copy.
  bool remove(VXCallbackHandle handle);

  /// Removes all callbacks that stand in this list, as remove() does.
  void clear();

  /// Forgets all callbacks without silencing them in other copies.
  void release() noexcept;

  /// \return the number of callbacks.
  std::size_t size() const noexcept;

  /// Calls the callbacks that match, in the order of their registration. An exception of a callback passes on.
  /// \param bits the event's bits. \param match,reentry which callbacks it reaches. \param invoke calls one of them.
  /// \param event passed through to `invoke`.
  void call(unsigned int bits, Match match, Reentry reentry, Invoke invoke, const void* event) const;

  struct Entry;    ///< One registration.
  struct Entries;  ///< The registrations, constant once they are seen by others.

 private:
  std::shared_ptr<const Entries> _snapshot() const noexcept;
  std::shared_ptr<Entry> _take(VXCallbackHandle handle);

  mutable std::mutex _mutex;  // guards _entries; a leaf: nothing else is locked while it is held
  std::shared_ptr<const Entries> _entries;
  std::atomic<bool> _wasUsed{false};  // whether there ever was an entry: most lists have none, and need no lock then
};

}  // namespace vx

#endif
