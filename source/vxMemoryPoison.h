// Marks for the address sanitizer: use of memory that lies free in a store is as wrong as of memory that was given
// back.

#ifndef VX_MEMORY_POISON_H
#define VX_MEMORY_POISON_H

#include "vxTypes.h"

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define VX_POISONS_FREE_MEMORY
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VX_POISONS_FREE_MEMORY
#endif
#endif
#ifdef VX_POISONS_FREE_MEMORY
#include <sanitizer/asan_interface.h>
#endif

namespace vx {

inline void poisonMemory([[maybe_unused]] void* memory, [[maybe_unused]] VXuint64 size) noexcept {
#ifdef VX_POISONS_FREE_MEMORY
  ASAN_POISON_MEMORY_REGION(memory, static_cast<std::size_t>(size));
#endif
}

inline void unpoisonMemory([[maybe_unused]] void* memory, [[maybe_unused]] VXuint64 size) noexcept {
#ifdef VX_POISONS_FREE_MEMORY
  ASAN_UNPOISON_MEMORY_REGION(memory, static_cast<std::size_t>(size));
#endif
}

}  // namespace vx

#endif
