// Free blocks of memory that are kept for the next allocation of the same size.

#ifndef VX_WARM_BLOCKS_H
#define VX_WARM_BLOCKS_H

#include "vxTypes.h"

#include <cstddef>

namespace vx {

class BlockSlabs;

// A bounded store of free blocks. The system zeroes and maps fresh memory page by page at the first touch, which costs
// several times what a copy into the block costs; a block that was in use before is mapped already.
//
// The store keeps its books in the blocks themselves and so never allocates. Blocks go to the slabs at last, wherever
// they came from. The one who uses a store locks it.
class WarmBlocks {
 public:
  // Smaller blocks share pages of the system with others, and are left to the system's own store.
  static constexpr VXuint64 minBlockSize = 1024;

  WarmBlocks(BlockSlabs& slabs, VXuint64 maxBytes) noexcept : _slabs(slabs), _maxBytes(maxBytes) {}
  ~WarmBlocks() { clear(); }
  WarmBlocks(const WarmBlocks&) = delete;
  WarmBlocks& operator=(const WarmBlocks&) = delete;

  // Takes out the block of exactly that size that was put in last. Returns null if none was found at once.
  void* take(VXuint64 size) noexcept;

  // Takes over a block of exactly that size. The blocks that lie here longest go where the bound is reached; a block
  // that doesn't suit is freed.
  void put(void* block, VXuint64 size) noexcept;

  // Changes the bound. The blocks that lie here longest go until it holds.
  void setBound(VXuint64 maxBytes) noexcept;

  // Frees all blocks.
  void clear() noexcept;

  // Bytes of all blocks.
  VXuint64 getBytes() const noexcept { return _bytes; }

 private:
  struct Block;
  static constexpr std::size_t numBins = 64;
  // How many blocks of other sizes are passed over in a search.
  static constexpr int maxSteps = 8;

  Block*& _bin(VXuint64 size) noexcept;
  void _unlink(Block* block) noexcept;
  void _freeOldest(VXuint64 maxBytes) noexcept;

  BlockSlabs& _slabs;
  VXuint64 _maxBytes;
  VXuint64 _bytes = 0;
  Block* _oldest = nullptr;
  Block* _newest = nullptr;
  Block* _bins[numBins] = {};  // by a hash of the size, newest first
};

}  // namespace vx

#endif
