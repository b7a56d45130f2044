/// \file vxTreeNodeException.h
/// What the persistence tree throws.

#ifndef VX_TREE_NODE_EXCEPTION_H
#define VX_TREE_NODE_EXCEPTION_H

#include "vxRuntime.h"

namespace vx {

/// The one list of failures of a tree: X(name, code, text).
#define VX_FOR_EACH_TREE_NODE_ERROR(X)                                                                  \
  X(MissingImplementation, 0, "Missing implementation")                                                 \
  X(NotSupported, 1, "Operation not supported by current implementation.")                              \
  X(ChildNotFound, 2, "Child not found")                                                                \
  X(AddingBase, 3, "Error adding Base object")                                                          \
  X(ReadingBase, 4, "Error reading Base object")                                                        \
  X(ReadingUnsignedChar, 5, "Error reading unsigned char")                                              \
  X(ReadingChar, 6, "Error reading char")                                                               \
  X(ReadingUnsignedShort, 7, "Error reading unsigned short")                                            \
  X(ReadingShort, 8, "Error reading short")                                                             \
  X(ReadingUnsignedInt, 9, "Error reading unsigned int")                                                \
  X(ReadingInt, 10, "Error reading int")                                                                \
  X(ReadingUnsignedLong, 11, "Error reading unsigned long")                                             \
  X(ReadingLong, 12, "Error reading long")                                                              \
  X(ReadingFloat, 13, "Error reading float")                                                            \
  X(ReadingDouble, 14, "Error reading double")                                                          \
  X(ReadingLongDouble, 15, "Error reading long double")                                                 \
  X(ReadingString, 16, "Error reading string (char*)")                                                  \
  X(ReadingVec2, 17, "Error reading vec2")                                                              \
  X(ReadingVec3, 18, "Error reading vec3")                                                              \
  X(ReadingVec4, 19, "Error reading vec4")                                                              \
  X(ReadingVec6, 20, "Error reading vec6")                                                              \
  X(ReadingVector, 21, "Error reading Vector")                                                          \
  X(ReadingMat3, 22, "Error reading mat3")                                                              \
  X(ReadingMat4, 23, "Error reading mat4")                                                              \
  X(ReadingSubImgBox, 24, "Error reading SubImgBox")                                                    \
  X(ReadingSubImgBoxf, 25, "Error reading SubImgBoxf")                                                  \
  X(InvalidReadNext, 26, "Invalid readNext() statement")                                                \
  X(InvalidParent, 27, "Parent node invalid")                                                           \
  X(FileNotFound, 28, "File Not Found error")                                                           \
  X(ReadingFile, 29, "Error reading from file")                                                         \
  X(WritingFile, 30, "Error writing to file")                                                           \
  X(UnsupportedVersion, 31, "Error reading object: Class version not supported by readStateFromTree()") \
  X(UnknownError, 32, "Unknown error")                                                                  \
  X(ReadingInt64, 33, "Error reading VXint64")                                                          \
  X(ReadingUint64, 34, "Error reading VXuint64")

/// Tells by a code, and perhaps a further text, why an operation of a TreeNode failed. It is thrown by value.
class VX_EXPORT TreeNodeException {
 public:
  /// The codes that have a standard text. A format may use others as well.
  enum Code : int {
#define VX_DEFINE_TREE_NODE_ERROR(name, code, text) name = code,
    VX_FOR_EACH_TREE_NODE_ERROR(VX_DEFINE_TREE_NODE_ERROR)
#undef VX_DEFINE_TREE_NODE_ERROR
  };

  /// \param errCode what failed, one of #Code or any other number.
  /// \param additionalInfo further text or null. It isn't copied: pass a literal, or what outlives the exception.
  explicit TreeNodeException(int errCode, const char* additionalInfo = nullptr) noexcept;
  /// A copy shares the further text.
  TreeNodeException(const TreeNodeException&) = default;
  /// \copydoc TreeNodeException(const TreeNodeException&)
  TreeNodeException& operator=(const TreeNodeException&) = default;

  virtual ~TreeNodeException();

  /// Composes a message from the code, its standard text and the additional information.
  /// \return a new text, which the caller releases by StringConversion::deleteString() or VXFree().
  /// \throw int ::VX_NO_MEMORY after a fatal report; `std::bad_alloc`.
  virtual char* getMessage() const;

  VX_ABSTRACT_ROOT_CLASS_HEADER(TreeNodeException)

  /// \return the code.
  int getCode() const noexcept { return _errCode; }

 private:
  /// Standard texts by code. The last one is null: its code is in use, but has no text.
  static const char* const _stdErrorMsg[36];

  int _errCode;
  const char* _additionalInfo;
};

}  // namespace vx

#endif
