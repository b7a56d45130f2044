#include "FailingAllocator.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

// How many allocations until one fails; negative for none. One fails, those after it don't.
std::atomic<long> untilFailure{-1};

bool shallFail() { return untilFailure.load() >= 0 && untilFailure.fetch_sub(1) == 0; }

void* allocate(std::size_t size, std::size_t alignment) noexcept {
  if (shallFail()) return nullptr;
  void* memory = nullptr;
  return posix_memalign(&memory, alignment, size ? size : 1) == 0 ? memory : nullptr;
}

void* allocateOrThrow(std::size_t size, std::size_t alignment) {
  if (void* const memory = allocate(size, alignment)) return memory;
  throw std::bad_alloc();
}

constexpr std::size_t ordinary = alignof(std::max_align_t);

}  // namespace

namespace vx::fuzz {

void failAllocation(long number) { untilFailure = number; }
long stopFailing() { return untilFailure.exchange(-1); }

}  // namespace vx::fuzz

void* operator new(std::size_t size) { return allocateOrThrow(size, ordinary); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return allocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size, ordinary); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }

// What voxel memory comes from.
extern "C" void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept { return allocate(size, alignment); }
