#include "vxImagePropertyExtension.h"

#include <algorithm>

namespace vx {

VX_ABSTRACT_CLASS_SOURCE(ImagePropertyExtension, "Base")
VX_CLASS_SOURCE(ImagePropertyExtensionContainer, "Base")

ImagePropertyExtensionContainer::ImagePropertyExtensionContainer() = default;

ImagePropertyExtensionContainer::ImagePropertyExtensionContainer(const ImagePropertyExtensionContainer& other)
    : Base(other) {
  _entries.reserve(other._entries.size());
  for (const auto& entry : other._entries) _entries.push_back(entry->clone());
}

ImagePropertyExtensionContainer::~ImagePropertyExtensionContainer() = default;

ImagePropertyExtensionContainer& ImagePropertyExtensionContainer::operator=(
    const ImagePropertyExtensionContainer& other) {
  if (this != &other) {
    ImagePropertyExtensionContainer copy(other);
    _entries.swap(copy._entries);
  }
  return *this;
}

bool ImagePropertyExtensionContainer::operator==(const ImagePropertyExtensionContainer& other) const {
  return std::equal(_entries.begin(), _entries.end(), other._entries.begin(), other._entries.end(),
                    [](const auto& a, const auto& b) { return a->getTypeId() == b->getTypeId() && a->equals(*b); });
}

void ImagePropertyExtensionContainer::appendEntry(std::unique_ptr<ImagePropertyExtension> extension) {
  if (extension) _entries.push_back(std::move(extension));
}

void ImagePropertyExtensionContainer::clear() noexcept { _entries.clear(); }

const ImagePropertyExtension* ImagePropertyExtensionContainer::getEntry(std::size_t index) const noexcept {
  return index < _entries.size() ? _entries[index].get() : nullptr;
}

const ImagePropertyExtension* ImagePropertyExtensionContainer::getFirstEntryOfType(const RuntimeType* type) const {
  for (const auto& entry : _entries) {
    const RuntimeType* const entryType = entry->getTypeId();
    if (entryType && entryType->isDerivedFrom(type)) return entry.get();
  }
  return nullptr;
}

}  // namespace vx
