#include "vxWarmBlocks.h"

#include "vxUtilsAPI.h"

#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define VX_POISONS_FREE_BLOCKS
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VX_POISONS_FREE_BLOCKS
#endif
#endif
#ifdef VX_POISONS_FREE_BLOCKS
#include <sanitizer/asan_interface.h>
#endif

namespace vx {

// The head of a free block: its neighbours of all sizes by age, and those of its bin.
struct WarmBlocks::Block {
  VXuint64 size;
  Block* older;
  Block* newer;
  Block* before;
  Block* behind;
};

namespace {

// Use of a block that lies here is as wrong as of one that was given back, and the address sanitizer shall see it.
void poison([[maybe_unused]] void* block, [[maybe_unused]] VXuint64 size, [[maybe_unused]] std::size_t headSize) {
#ifdef VX_POISONS_FREE_BLOCKS
  ASAN_POISON_MEMORY_REGION(static_cast<char*>(block) + headSize, static_cast<std::size_t>(size) - headSize);
#endif
}

void unpoison([[maybe_unused]] void* block, [[maybe_unused]] VXuint64 size) {
#ifdef VX_POISONS_FREE_BLOCKS
  ASAN_UNPOISON_MEMORY_REGION(block, static_cast<std::size_t>(size));
#endif
}

}  // namespace

WarmBlocks::Block*& WarmBlocks::_bin(VXuint64 size) noexcept {
  // Sizes of pages are multiples of powers of two: the product brings their upper bits into the index.
  return _bins[size * 0x9E3779B97F4A7C15ULL >> 58];
}

void WarmBlocks::_unlink(Block* block) noexcept {
  (block->before ? block->before->behind : _bin(block->size)) = block->behind;
  if (block->behind) block->behind->before = block->before;
  (block->older ? block->older->newer : _oldest) = block->newer;
  (block->newer ? block->newer->older : _newest) = block->older;
  _bytes -= block->size;
}

void* WarmBlocks::take(VXuint64 size) noexcept {
  Block* block = _bin(size);
  for (int step = 0; block && block->size != size; block = block->behind) {
    if (++step > maxSteps) return nullptr;
  }
  if (!block) return nullptr;
  _unlink(block);
  unpoison(block, size);
  return block;
}

void WarmBlocks::put(void* block, VXuint64 size) noexcept {
  if (size < minBlockSize || size > _maxBytes) {
    VXFree(block);
    return;
  }
  while (_bytes > _maxBytes - size) {
    Block* const oldest = _oldest;
    _unlink(oldest);
    unpoison(oldest, oldest->size);
    VXFree(oldest);
  }
  Block*& bin = _bin(size);
  Block* const head = ::new (block) Block{size, _newest, nullptr, nullptr, bin};
  if (bin) bin->before = head;
  bin = head;
  (_newest ? _newest->newer : _oldest) = head;
  _newest = head;
  _bytes += size;
  poison(block, size, sizeof(Block));
}

void WarmBlocks::clear() noexcept {
  while (Block* const block = _oldest) {
    _unlink(block);
    unpoison(block, block->size);
    VXFree(block);
  }
}

}  // namespace vx
