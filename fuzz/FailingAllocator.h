// Allocations that fail on demand, in the whole program and the libraries that it has loaded.

#ifndef VX_FUZZ_FAILING_ALLOCATOR_H
#define VX_FUZZ_FAILING_ALLOCATOR_H

namespace vx::fuzz {

/// Lets one allocation fail. \param number which one: 0 is the next; negative for none.
void failAllocation(long number);

/// Takes back what failAllocation() wished for. \return what is left of it; negative if the allocation has failed, or
/// none was to fail.
long stopFailing();

}  // namespace vx::fuzz

#endif
