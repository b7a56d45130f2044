/// \file vxMemory.h
/// Memory of the library for C++ callers.

#ifndef VX_MEMORY_H
#define VX_MEMORY_H

#include "vxUtilsAPI.h"

#include <memory>

namespace vx {

/// The C++ names of VXAlloc(), VXRealloc() and VXFree(), with the same contracts. Blocks may be mixed with theirs.
class VX_EXPORT Memory {
 public:
  Memory() = delete;

  /// See VXAlloc().
  static void* allocateMemory(unsigned long long size, VXMemoryErrorHandling handling);
  /// See VXRealloc().
  static void* reallocateMemory(void* memory, unsigned long long size, VXMemoryErrorHandling handling);
  /// See VXFree().
  static void freeMemory(void* memory);
};

/// Gives a block back to VXFree().
struct MemoryDeleter {
  /// \param memory the block, or null.
  void operator()(void* memory) const noexcept { VXFree(memory); }
};

/// A block from VXAlloc() and its kin that is given back at the end of a scope.
template <class T>
using MemoryPtr = std::unique_ptr<T, MemoryDeleter>;

/// Multiplies two sizes. \param a,b the sizes. \param product takes the result, unchanged on overflow. \return whether
/// it fits 64 bits.
constexpr bool multiplySizes(unsigned long long a, unsigned long long b, unsigned long long& product) noexcept {
  if (b != 0 && a > ~0ULL / b) return false;
  product = a * b;
  return true;
}

}  // namespace vx

#endif
