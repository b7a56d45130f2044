/// \file vxImagePropertyExtension.h
/// Open-ended extensions of image properties.

#ifndef VX_IMAGE_PROPERTY_EXTENSION_H
#define VX_IMAGE_PROPERTY_EXTENSION_H

#include "vxBase.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace vx {

/// A property of an image that the library knows nothing about. A subclass registers its own run-time type, holds the
/// value, and says how it is copied and compared.
class VX_EXPORT ImagePropertyExtension : public Base {
 public:
  /// \return a copy of the object with its own class, which the caller owns.
  virtual std::unique_ptr<ImagePropertyExtension> clone() const = 0;

  /// \param other an object of the same run-time type, as long as both are registered.
  /// \return whether the other object has the same class and the same value.
  virtual bool equals(const ImagePropertyExtension& other) const = 0;

  VX_ABSTRACT_CLASS_HEADER(ImagePropertyExtension)
};

/// The extensions of one image, in the order in which they were added. It owns them. Copy and comparison go element
/// by element. No function locks.
class VX_EXPORT ImagePropertyExtensionContainer : public Base {
 public:
  ImagePropertyExtensionContainer();
  /// Copies all extensions.
  ImagePropertyExtensionContainer(const ImagePropertyExtensionContainer& other);
  ~ImagePropertyExtensionContainer() override;

  /// Copies all extensions. \throw whatever a copy throws, with this container unchanged.
  ImagePropertyExtensionContainer& operator=(const ImagePropertyExtensionContainer& other);

  /// \return whether both hold equal extensions in the same order.
  bool operator==(const ImagePropertyExtensionContainer& other) const;
  /// \return the negation of operator==().
  bool operator!=(const ImagePropertyExtensionContainer& other) const { return !(*this == other); }

  /// Adds an extension at the end. \param extension null is ignored.
  void appendEntry(std::unique_ptr<ImagePropertyExtension> extension);

  /// Removes all extensions.
  void clear() noexcept;

  /// \return the number of extensions.
  std::size_t getNumEntries() const noexcept { return _entries.size(); }

  /// \return the extension at an index, owned by the container; null beyond the end.
  const ImagePropertyExtension* getEntry(std::size_t index) const noexcept;

  /// \return the first extension that is of the given class or derived from it, owned by the container; null if there
  ///         is none, and for a null class.
  const ImagePropertyExtension* getFirstEntryOfType(const RuntimeType* type) const;

  VX_CLASS_HEADER(ImagePropertyExtensionContainer)

 private:
  std::vector<std::unique_ptr<ImagePropertyExtension>> _entries;
};

}  // namespace vx

#endif
