// Replaces `operator new` of the test program that this is linked into: counts allocations and lets them fail.

#ifndef VX_TESTS_TEST_ALLOCATOR_H
#define VX_TESTS_TEST_ALLOCATOR_H

namespace vx::test {

/// \return the number of allocations by `operator new` so far.
long numAllocations();

/// Lets allocations of this thread fail while it lives: from the given one on, counted from 0.
class FailingAllocations {
 public:
  explicit FailingAllocations(long firstFailure = 0);
  ~FailingAllocations();
  FailingAllocations(const FailingAllocations&) = delete;
  FailingAllocations& operator=(const FailingAllocations&) = delete;
};

}  // namespace vx::test

#endif
