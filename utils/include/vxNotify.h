/// \file vxNotify.h
/// Notification of a host about events of the library.

#ifndef VX_NOTIFY_H
#define VX_NOTIFY_H

#include "vxCallbackList.h"

#include <iosfwd>

namespace vx {

/// The list of notification callbacks. Use the one object vx::VXNotify. All functions are safe from any thread.
class VX_EXPORT Notify {
 public:
  constexpr Notify() noexcept = default;
  /// A copy shares the callbacks of the original.
  Notify(const Notify& other) = default;
  /// \copydoc Notify(const Notify&)
  Notify& operator=(const Notify& other) = default;
  ~Notify();

  /// Calls all callbacks whose mask has all bits of the code, in the order of their registration. An exception of a
  /// callback passes on.
  /// \param code one class bit and one event bit. \param arg1,arg2 what the code says.
  void notify(unsigned int code, void* arg1, void* arg2) const;

  /// Registers a callback, see VXAddNotifyCB(). \return its handle, 0 for a null callback.
  VXCallbackHandle addNotifyCB(VXNotifyCB callback, void* userData, unsigned int codeMask);
  /// Removes a callback, see VXRemoveNotifyCB(). \return whether the handle named one.
  bool removeNotifyCB(VXCallbackHandle handle);
  /// Removes all callbacks, with the promises of removeNotifyCB().
  void removeAllNotifyCBs();

  /// Back to the default, no callbacks. They live on in copies of this object.
  void reset();

  /// Writes the number of callbacks on one line.
  friend VX_EXPORT std::ostream& operator<<(std::ostream& stream, const Notify& notify);

 private:
  CallbackList _callbacks;  // synchronises itself
};

/// The notification of the process. It is good for its whole life, also in the destructors of other objects.
VX_EXPORT extern Notify& VXNotify;

}  // namespace vx

#endif
