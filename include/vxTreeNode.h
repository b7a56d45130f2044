/// \file vxTreeNode.h
/// The vocabulary in which objects write their state into a tree of named children and read it back.

#ifndef VX_TREE_NODE_H
#define VX_TREE_NODE_H

#include "vxBase.h"
#include "vxMat3.h"
#include "vxMat4.h"
#include "vxSubImgBox.h"
#include "vxSubImgBoxf.h"
#include "vxTreeNodeException.h"
#include "vxVec2.h"
#include "vxVec3.h"
#include "vxVec4.h"
#include "vxVec6.h"
#include "vxVector.h"

#include <vector>

namespace vx {

/// A node of a persistence tree: typed children under names. Subclasses make it a format of a file or a text.
///
/// A format overrides what throws here: the four functions for files and texts, hasChild(), the forms of addChild() and
/// readChild() for all types but the narrower numbers, deleteString(), setVersion(), getVersion(), correctName() and
/// isCorrectName(). The narrower numbers are stored and read as the widest of their kind unless a format overrides them
/// as well. Whoever overrides some of the forms of addChild() or readChild() writes `using TreeNode::addChild;` and
/// `using TreeNode::readChild;`, since otherwise the others are hidden.
///
/// Every failure is a TreeNodeException, thrown by value. An operation that a format leaves out throws
/// TreeNodeException::MissingImplementation with its name. What a failed read was to fill is unchanged if the failure
/// comes from a form that reads through another one; the rest is the format's to say.
///
/// A tree belongs to one thread at a time. The order of the virtual functions is binding for module libraries.
class VX_EXPORT TreeNode {
 public:
  /// What a root is made for.
  enum ConstructionMode : int {
    WriteMode = 0,  ///< To write a state.
    ReadMode = 1    ///< To read a state.
  };

  TreeNode(const TreeNode&) = delete;
  TreeNode& operator=(const TreeNode&) = delete;

  /// Deletes the children, in the order in which they were appended.
  virtual ~TreeNode();

  /// \name Files and texts
  /// What a file or text looks like is the format's to say. Texts are not null; a text that writeToString() gives goes
  /// back through deleteString().
  ///@{

  /// Writes the tree below this root to a file. \param fileName path.
  virtual void writeToFile(const char* fileName);
  /// Makes the tree that a file holds. \param fileName path.
  virtual void readFromFile(const char* fileName);
  /// Writes the tree below this root. \param text takes the text.
  virtual void writeToString(char*& text);
  /// Makes the tree that a text holds. \param text stays the caller's.
  virtual void readFromString(const char* text);
  ///@}

  /// \name Writing
  /// Each form adds a child of one type. The value is copied. The name should be one that isCorrectName() accepts.
  ///@{

  /// Adds a child that holds children of its own. \return that child, which stays the tree's.
  virtual TreeNode* addChild(const char* name);
  /// Adds an object by Base::addStateToTree(). \param object,name what, and under which name. \param flag its meaning
  /// is the format's.
  virtual void addChild(const Base* const object, const char* name, bool flag = false);
  /// Adds a block of memory. \param data,size its first byte and its size in bytes. \param name of the child.
  virtual void addChild(const void* const data, unsigned int size, const char* name);
  virtual void addChild(const SubImgBoxf& value, const char* name);           ///< \overload
  virtual void addChild(const TSubImgBox<VXint64>& value, const char* name);  ///< \overload
  virtual void addChild(const Tmat4<double>& value, const char* name);        ///< \overload
  virtual void addChild(const Tmat3<double>& value, const char* name);        ///< \overload
  virtual void addChild(const TVector<VXint64>& value, const char* name);     ///< \overload
  virtual void addChild(const Tvec6<double>& value, const char* name);        ///< \overload
  virtual void addChild(const Tvec4<double>& value, const char* name);        ///< \overload
  virtual void addChild(const Tvec3<double>& value, const char* name);        ///< \overload
  virtual void addChild(const Tvec2<double>& value, const char* name);        ///< \overload
  virtual void addChild(const char* const value, const char* name);           ///< \overload
  virtual void addChild(long double value, const char* name);                 ///< \overload
  virtual void addChild(double value, const char* name);                      ///< \overload
  virtual void addChild(float value, const char* name);                       ///< \overload
  virtual void addChild(VXint64 value, const char* name);                     ///< \overload
  virtual void addChild(VXuint64 value, const char* name);                    ///< \overload
  virtual void addChild(long value, const char* name);                        ///< \overload
  virtual void addChild(unsigned long value, const char* name);               ///< \overload
  virtual void addChild(int value, const char* name);                         ///< \overload
  virtual void addChild(unsigned int value, const char* name);                ///< \overload
  virtual void addChild(short value, const char* name);                       ///< \overload
  virtual void addChild(unsigned short value, const char* name);              ///< \overload
  virtual void addChild(char value, const char* name);                        ///< \overload
  virtual void addChild(unsigned char value, const char* name);               ///< \overload
  /// Written through the form for `unsigned long`, though it is read through the one for `long`.
  virtual void addChild(bool value, const char* name);
  ///@}

  /// \name Reading
  ///@{

  /// \return whether there is a child of that name.
  virtual bool hasChild(const char* name);
  /// Reads a text. \param name of the child. \param value takes it; it goes back through deleteString().
  virtual void readChild(char*& value, const char* name);
  /// Finds a child that holds children. \param name of the child. \param value takes it; it stays the tree's.
  virtual void readChild(TreeNode*& value, const char* name);
  /// Reads the state of an object that exists already, by Base::readStateFromTree().
  virtual void readChild(Base& value, const char* name);
  /// Makes an object and reads its state. \param name of the child. \param value takes the object, which is the
  /// caller's.
  virtual void readChild(Base*& value, const char* name);
  /// Reads a block of memory. \param name of the child. \param value takes it. \param size takes its size in bytes.
  virtual void readChild(void*& value, unsigned long& size, const char* name);
  virtual void readChild(SubImgBoxf& value, const char* name);           ///< \overload
  virtual void readChild(TSubImgBox<VXint64>& value, const char* name);  ///< \overload
  virtual void readChild(Tmat4<double>& value, const char* name);        ///< \overload
  virtual void readChild(Tmat3<double>& value, const char* name);        ///< \overload
  virtual void readChild(TVector<VXint64>& value, const char* name);     ///< \overload
  virtual void readChild(Tvec6<double>& value, const char* name);        ///< \overload
  virtual void readChild(Tvec4<double>& value, const char* name);        ///< \overload
  virtual void readChild(Tvec3<double>& value, const char* name);        ///< \overload
  virtual void readChild(Tvec2<double>& value, const char* name);        ///< \overload
  virtual void readChild(long double& value, const char* name);          ///< \overload
  virtual void readChild(double& value, const char* name);               ///< \overload
  virtual void readChild(float& value, const char* name);                ///< \overload
  virtual void readChild(VXuint64& value, const char* name);             ///< \overload
  virtual void readChild(VXint64& value, const char* name);              ///< \overload
  virtual void readChild(unsigned long& value, const char* name);        ///< \overload
  virtual void readChild(long& value, const char* name);                 ///< \overload
  virtual void readChild(unsigned int& value, const char* name);         ///< \overload
  virtual void readChild(int& value, const char* name);                  ///< \overload
  virtual void readChild(unsigned short& value, const char* name);       ///< \overload
  virtual void readChild(short& value, const char* name);                ///< \overload
  virtual void readChild(unsigned char& value, const char* name);        ///< \overload
  virtual void readChild(char& value, const char* name);                 ///< \overload
  /// Read through the form for `long`: true for all but 0.
  virtual void readChild(bool& value, const char* name);
  /// Releases a text that this node gave. Null is for the format to treat.
  virtual void deleteString(char* text) const;
  /// readChild() of a child that holds children. \return the child, which stays the tree's.
  virtual TreeNode* readContainerChild(const char* name);
  /// readChild() of an object that is made. \return the object, which is the caller's.
  virtual Base* readBaseChild(const char* name);
  ///@}

  /// \name Versions and names
  ///@{

  /// Stores the version of a class's state, so that a later version of the class knows what it reads.
  virtual void setVersion(const char* className, int version);
  /// \return the stored version. A class that can't read it throws TreeNodeException::UnsupportedVersion.
  virtual int getVersion(const char* className);
  /// \return a legal name for a child, made from any text; it goes back through deleteString().
  virtual char* correctName(const char* name) const;
  /// \return whether a text is a legal name for a child.
  virtual bool isCorrectName(const char* name) const;
  ///@}

  VX_ABSTRACT_ROOT_CLASS_HEADER(TreeNode)

  /// \return the name of the child that was read last, owned by the format; null before the first read.
  const char* getLastReadChildName() const noexcept { return _lastReadChildName; }

  /// \return whether this node was made as the root of a tree.
  bool isRootNode() const noexcept { return _isRootNode; }

 protected:
  /// A node below a root.
  TreeNode();
  /// The root of a tree. \param mode is not used here.
  explicit TreeNode(ConstructionMode mode);

  /// Appends a child. \param child a node made by `new`, which this node deletes from now on; if there is no memory to
  /// note it, `std::bad_alloc` is thrown and it stays the caller's.
  void _appendNewChild(TreeNode& child);

  /// \return the children in the order in which they were appended. They are this node's: who takes one out owns it.
  std::vector<TreeNode*>& _getChildTreeNodes() noexcept { return _children; }
  /// \copydoc _getChildTreeNodes()
  const std::vector<TreeNode*>& _getChildTreeNodes() const noexcept { return _children; }

  const char* _lastReadChildName;    ///< Name of the child that was read last, or null; a format sets it.
  int _readNextIndex;                ///< Free for a format that reads children in turn; -1 at first.
  std::vector<TreeNode*> _children;  ///< The children, owned.
  bool _isRootNode;                  ///< Whether this is the root of a tree.
};

}  // namespace vx

#endif
