// Blocks of fresh memory, cut from slabs that lie in huge pages of the system.

#ifndef VX_BLOCK_SLABS_H
#define VX_BLOCK_SLABS_H

#include "vxTypes.h"

#include <map>

namespace vx {

// Where blocks of pages come from and go to at last. Pages of an image that go round in a cache larger than the caches
// of the processor are written and read through some ten thousand usual pages of the system, each with an address to
// translate; in huge ones a copy takes three quarters of the time.
//
// Blocks are cut one after the other and never come back to their place: those of one size are kept for each other by
// WarmBlocks, and when all of a slab are free, so is the slab. The memory of a free block goes back to the system at
// once, where the system can take it. So nothing is left of what came and went, as it would be in the heap of the C
// library: there an aligned block doesn't fit the hole of one of its own size.
//
// The one who uses it locks it.
class BlockSlabs {
 public:
  // Blocks of other sizes come from VXAlloc() alone.
  static constexpr VXuint64 minBlockSize = 4 << 10;
  static constexpr VXuint64 maxBlockSize = 1 << 20;
  // The first bytes of the only slab lie in usual pages: a huge page is taken whole or not at all.
  static constexpr VXuint64 usualBytes = 4 << 20;
  // The blocks of a slab at most. Memory of more than 32 MB glibc takes from the system and gives back to it in any
  // case; smaller slabs would make it keep tens of MB that are free. What no block is cut from is no memory yet.
  static constexpr VXuint64 slabBytes = 32 << 20;

  BlockSlabs() = default;
  // All blocks must be back.
  ~BlockSlabs() = default;
  BlockSlabs(const BlockSlabs&) = delete;
  BlockSlabs& operator=(const BlockSlabs&) = delete;

  // A block of at least that size, aligned as those of VXAlloc(), with any contents; null without memory.
  void* allocate(VXuint64 size) noexcept;

  // Takes back a block from allocate(), or one from VXAlloc().
  // \param size as it was asked for.
  void free(void* block, VXuint64 size) noexcept;

  // Whether a block was cut from one of these slabs.
  bool contains(const void* block) noexcept;

  // The number of slabs, all of which hold a block at least.
  std::size_t getNumSlabs() const noexcept { return _slabs.size(); }

 private:
  struct Slab {
    void* memory;      // from VXAlloc(); the blocks begin at the first huge page in it
    VXuint64 cut;      // bytes of blocks that were ever cut
    VXuint64 numUsed;  // blocks in use
    bool isHuge;       // whether the system may use huge pages
  };
  using Slabs = std::map<unsigned char*, Slab>;  // by the first byte of the blocks

  Slabs::iterator _findSlab(const void* block) noexcept;
  bool _addSlab() noexcept;

  Slabs _slabs;
  Slabs::iterator _newest = _slabs.end();  // the one that blocks are cut from
};

}  // namespace vx

#endif
