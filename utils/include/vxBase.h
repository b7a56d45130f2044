/// \file vxBase.h
/// The root of all run-time typed classes.

#ifndef VX_BASE_H
#define VX_BASE_H

#include "vxRuntime.h"

namespace vx {

class TreeNode;

/// Root of the classes that take part in the run-time type system and that a field may hold.
///
/// A subclass that has a state overrides the persistence functions it needs; all of them do nothing here. No function
/// of this class locks: an object belongs to one thread at a time unless its class says otherwise.
class VX_EXPORT Base {
 public:
  Base() = default;
  /// A copy has a state of its own.
  Base(const Base&) = default;
  /// \copydoc Base(const Base&)
  Base& operator=(const Base&) = default;
  virtual ~Base();

  /// \return the object's state as a text, which goes back through clearPersistentState(); null for an empty state.
  virtual char* getPersistentState() const;

  /// Takes a state from a text that getPersistentState() gave. \param state the text, which stays the caller's.
  virtual void setPersistentState(const char* state);

  /// Releases a text of getPersistentState(), with VXFree() unless a subclass overrides both. Null is ignored.
  virtual void clearPersistentState(char* state) const;

  /// Writes the state as children of a node. \param parent the node, never null.
  virtual void addStateToTree(TreeNode* parent) const;

  /// Reads the state from the children of a node. \param parent the node, never null.
  virtual void readStateFromTree(TreeNode* parent);

  VX_ABSTRACT_ROOT_CLASS_HEADER(Base)
};

}  // namespace vx

#endif
