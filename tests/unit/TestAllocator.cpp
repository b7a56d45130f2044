#include "TestAllocator.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> allocations{0};
thread_local long untilFailure = -1;  // negative: no failure is asked for

bool shallFail() {
  ++allocations;
  if (untilFailure < 0) return false;
  if (untilFailure == 0) return true;
  --untilFailure;
  return false;
}

void* orThrow(void* memory) {
  if (!memory) throw std::bad_alloc();
  return memory;
}

void* allocate(std::size_t size) { return shallFail() ? nullptr : std::malloc(size ? size : 1); }

void* allocate(std::size_t size, std::size_t alignment) {
  return shallFail() ? nullptr : std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
}

}  // namespace

void* operator new(std::size_t size) { return orThrow(allocate(size)); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return orThrow(allocate(size, static_cast<std::size_t>(alignment)));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
// Arrays too: sanitizers have functions of their own for them.
void* operator new[](std::size_t size) { return orThrow(allocate(size)); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }

namespace vx::test {

long numAllocations() { return allocations; }

FailingAllocations::FailingAllocations(long firstFailure) { untilFailure = firstFailure; }

FailingAllocations::~FailingAllocations() { untilFailure = -1; }

}  // namespace vx::test
