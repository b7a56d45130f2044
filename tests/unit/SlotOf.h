// The slot of a virtual function, where the compiler's form of member pointers is known.

#ifndef VX_TESTS_SLOT_OF_H
#define VX_TESTS_SLOT_OF_H

#ifdef __x86_64__
#define VX_TESTS_SLOTS_ARE_KNOWN

#include <cstddef>
#include <cstring>

namespace vx::test {

/// \param function a virtual function; the member pointer holds 1 plus its offset in the table.
/// \return its slot. A destructor takes two.
template <class Function>
std::size_t slotOf(Function function) {
  std::size_t words[2];
  static_assert(sizeof(function) == sizeof(words));
  std::memcpy(words, &function, sizeof(words));
  return (words[0] - 1) / sizeof(void*);
}

}  // namespace vx::test

#endif

#endif
