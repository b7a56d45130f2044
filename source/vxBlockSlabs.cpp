#include "vxBlockSlabs.h"

#include "vxMemoryPoison.h"
#include "vxUtilsAPI.h"

#include <cstdint>
#include <new>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace vx {

namespace {

constexpr VXuint64 hugePageBytes = 2 << 20;
constexpr VXuint64 pageBytes = 4096;  // of the system; where they are larger, it refuses parts of them

VXuint64 roundUp(VXuint64 size, VXuint64 step) { return (size + step - 1) / step * step; }

bool isServed(VXuint64 size) { return size >= BlockSlabs::minBlockSize && size <= BlockSlabs::maxBlockSize; }

// Hints, without which all works as well.
void askForHugePages([[maybe_unused]] void* memory, [[maybe_unused]] VXuint64 size) {
#ifdef __linux__
  madvise(memory, static_cast<std::size_t>(size), MADV_HUGEPAGE);
#endif
}

// The system fills up huge pages again of which parts were given back, unless it is told not to.
void keepFromHugePages([[maybe_unused]] void* memory, [[maybe_unused]] VXuint64 size) {
#ifdef __linux__
  madvise(memory, static_cast<std::size_t>(size), MADV_NOHUGEPAGE);
#endif
}

void giveBackToSystem([[maybe_unused]] void* memory, [[maybe_unused]] VXuint64 size) {
#ifdef __linux__
  madvise(memory, static_cast<std::size_t>(size), MADV_DONTNEED);
#endif
}

}  // namespace

void* BlockSlabs::allocate(VXuint64 size) noexcept {
  if (!isServed(size)) return VXAlloc(size, VX_RETURN_NULL);
  const VXuint64 bytes = roundUp(size, pageBytes);
  const bool hasRoom = _newest != _slabs.end() && _newest->second.cut + bytes <= slabBytes;
  if (!hasRoom && !_addSlab()) return VXAlloc(size, VX_RETURN_NULL);
  Slab& slab = _newest->second;
  unsigned char* const block = _newest->first + slab.cut;
  slab.cut += bytes;
  ++slab.numUsed;
  unpoisonMemory(block, bytes);
  return block;
}

void BlockSlabs::free(void* block, VXuint64 size) noexcept {
  const Slabs::iterator found = _findSlab(block);
  if (found == _slabs.end()) {
    VXFree(block);
    return;
  }
  Slab& slab = found->second;
  if (--slab.numUsed != 0) {
    if (slab.isHuge) keepFromHugePages(found->first, slabBytes);
    slab.isHuge = false;
    giveBackToSystem(block, roundUp(size, pageBytes));
    poisonMemory(block, roundUp(size, pageBytes));
    return;
  }
  unpoisonMemory(found->first, slabBytes);
  VXFree(slab.memory);
  if (_newest == found) _newest = _slabs.end();
  _slabs.erase(found);
}

bool BlockSlabs::contains(const void* block) noexcept { return _findSlab(block) != _slabs.end(); }

BlockSlabs::Slabs::iterator BlockSlabs::_findSlab(const void* block) noexcept {
  const auto address = reinterpret_cast<std::uintptr_t>(block);
  auto next = _slabs.upper_bound(static_cast<unsigned char*>(const_cast<void*>(block)));
  if (next == _slabs.begin()) return _slabs.end();
  --next;
  return address - reinterpret_cast<std::uintptr_t>(next->first) < slabBytes ? next : _slabs.end();
}

bool BlockSlabs::_addSlab() noexcept {
  void* const memory = VXAlloc(slabBytes + hugePageBytes, VX_RETURN_NULL);
  if (!memory) return false;
  const auto address = reinterpret_cast<std::uintptr_t>(memory);
  unsigned char* const blocks = static_cast<unsigned char*>(memory) + (roundUp(address, hugePageBytes) - address);
  try {
    _newest = _slabs.emplace(blocks, Slab{memory, 0, 0, true}).first;
  } catch (const std::bad_alloc&) {
    VXFree(memory);
    return false;
  }
  const VXuint64 firstHuge = _slabs.size() == 1 ? usualBytes : 0;
  askForHugePages(blocks + firstHuge, slabBytes - firstHuge);
  poisonMemory(blocks, slabBytes);
  return true;
}

}  // namespace vx
