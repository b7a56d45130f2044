#include "vxMemory.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <malloc.h>

namespace {

constexpr VXuint64 alignment = 64;

// A block of the size asked for, rounded up to whole alignments; null if there is none.
void* allocate(VXuint64 size) {
  if (size > PTRDIFF_MAX - alignment) return nullptr;
  const VXuint64 rounded = size == 0 ? alignment : (size + alignment - 1) / alignment * alignment;
  return std::aligned_alloc(alignment, rounded);
}

void* checked(void* memory, VXMemoryErrorHandling handling, int line) {
  if (!memory && handling == VX_FATAL_MEMORY_ERROR) VXPrintAndNotifyFatal(__FILE__, line, VX_NO_MEMORY);
  return memory;
}

}  // namespace

void* VXAlloc(VXuint64 size, VXMemoryErrorHandling handling) { return checked(allocate(size), handling, __LINE__); }

void* VXRealloc(void* memory, VXuint64 size, VXMemoryErrorHandling handling) {
  if (!memory) return VXAlloc(size, handling);
  // realloc() would lose the alignment. A block that holds the size without wasting half of itself stays.
  const VXuint64 usable = malloc_usable_size(memory);
  if (size <= usable && size >= usable / 2) return memory;
  void* const moved = checked(allocate(size), handling, __LINE__);
  if (!moved) return nullptr;
  std::memcpy(moved, memory, static_cast<std::size_t>(size < usable ? size : usable));
  std::free(memory);
  return moved;
}

void VXFree(void* memory) { std::free(memory); }

char* VXStrDup(const char* text, VXMemoryErrorHandling handling) {
  return text ? static_cast<char*>(VXMemDup(text, std::strlen(text) + 1, handling)) : nullptr;
}

void* VXMemDup(const void* data, VXuint64 size, VXMemoryErrorHandling handling) {
  if (!data) return nullptr;
  void* const copy = VXAlloc(size, handling);
  if (copy) std::memcpy(copy, data, static_cast<std::size_t>(size));
  return copy;
}

namespace vx {

void* Memory::allocateMemory(unsigned long long size, VXMemoryErrorHandling handling) {
  return VXAlloc(size, handling);
}

void* Memory::reallocateMemory(void* memory, unsigned long long size, VXMemoryErrorHandling handling) {
  return VXRealloc(memory, size, handling);
}

void Memory::freeMemory(void* memory) { VXFree(memory); }

}  // namespace vx
