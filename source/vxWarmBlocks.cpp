#include "vxWarmBlocks.h"

#include "vxBlockSlabs.h"
#include "vxMemoryPoison.h"

#include <new>

namespace vx {

// The head of a free block: its neighbours of all sizes by age, and those of its bin.
struct WarmBlocks::Block {
  VXuint64 size;
  Block* older;
  Block* newer;
  Block* before;
  Block* behind;
};

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

// Frees blocks until those that are left have no more bytes than that.
void WarmBlocks::_freeOldest(VXuint64 maxBytes) noexcept {
  while (_bytes > maxBytes) {
    Block* const block = _oldest;
    const VXuint64 size = block->size;
    _unlink(block);
    unpoisonMemory(block, size);
    _slabs.free(block, size);
  }
}

void* WarmBlocks::take(VXuint64 size) noexcept {
  Block* block = _bin(size);
  for (int step = 0; block && block->size != size; block = block->behind) {
    if (++step > maxSteps) return nullptr;
  }
  if (!block) return nullptr;
  _unlink(block);
  unpoisonMemory(block, size);
  return block;
}

void WarmBlocks::put(void* block, VXuint64 size) noexcept {
  if (size < minBlockSize || size > _maxBytes) {
    _slabs.free(block, size);
    return;
  }
  _freeOldest(_maxBytes - size);
  Block*& bin = _bin(size);
  Block* const head = ::new (block) Block{size, _newest, nullptr, nullptr, bin};
  if (bin) bin->before = head;
  bin = head;
  (_newest ? _newest->newer : _oldest) = head;
  _newest = head;
  _bytes += size;
  poisonMemory(head + 1, size - sizeof(Block));
}

void WarmBlocks::setBound(VXuint64 maxBytes) noexcept {
  _maxBytes = maxBytes;
  _freeOldest(maxBytes);
}

void WarmBlocks::clear() noexcept { _freeOldest(0); }

}  // namespace vx
