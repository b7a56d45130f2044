/// \file vxRuntimeType.h
/// One class in the table of run-time types.

#ifndef VX_RUNTIME_TYPE_H
#define VX_RUNTIME_TYPE_H

#include "vxTypes.h"

namespace vx {

/// A registered class: its name, its library, its parent, how instances are made and how many live.
///
/// Entries are made by Runtime::initType() and owned by the base layer. An entry that is removed stays readable until
/// the base layer is unloaded, so that a class may keep pointing to it; it only isn't found any more.
/// Names, library and parent are constant while the entry is registered and may be read from any thread.
class RuntimeType {
 public:
  /// Makes an instance; the caller owns it.
  using CreateCB = void* (*)();

  /// \return the class name, "BadType" if there is none.
  const char* getName() const noexcept { return _name ? _name : "BadType"; }
  /// \return the name of the library that registered the class, "" if there is none.
  const char* getDllName() const noexcept { return _dllName ? _dllName : ""; }
  /// \return the parent class, null at a root.
  const RuntimeType* getParent() const noexcept { return _parent; }
  /// \return the parent's name, "No parent" at a root, "BadType" if the parent has no name.
  const char* getParentName() const noexcept { return _parent ? _parent->getName() : "No parent"; }
  /// \return whether no instances can be made by name.
  bool isAbstract() const noexcept { return _createCB == nullptr; }
  /// \return the creation function, null for an abstract class and for one that is no longer registered.
  CreateCB getCreateCB() const noexcept { return _createCB; }
  /// \return the counter of live instances. A class changes it through `typeInstanceCounter()`.
  long& instanceCounter() const noexcept { return _instanceCounter; }

  /// \return whether this is `other` or one of its descendants; false for null.
  VX_EXPORT bool isDerivedFrom(const RuntimeType* other) const noexcept;

  // The members are laid out for all who read them without a call. Only the table of run-time types writes them.
  const char* _name = nullptr;              ///< Class name.
  const char* _dllName = nullptr;           ///< Library that registered the class.
  const RuntimeType* _parent = nullptr;     ///< Parent class, null at a root.
  bool _isRegistered = false;               ///< Whether the entry stands in the table.
  void* _reserved[2] = {nullptr, nullptr};  ///< Room for the table.
  CreateCB _createCB = nullptr;             ///< Makes an instance; null marks an abstract class.
  mutable long _instanceCounter = 0;        ///< Live instances.

 private:
  friend struct RuntimeTypeLayout;
  RuntimeType() = default;
};

}  // namespace vx

#endif
