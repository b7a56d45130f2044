// What a host does from its first module to its last tile, each part of it as a scenario that may run out of memory.

#ifndef VX_TESTS_FAULT_SCENARIOS_H
#define VX_TESTS_FAULT_SCENARIOS_H

#include "TestModules.h"

#include "vxTypes.h"

#include <memory>
#include <vector>

namespace vx::test {

/// One run of a scenario: the objects it needs, made while memory is no matter, and the calls under test. All its
/// calls are made on the default host.
class FaultScenario {
 public:
  FaultScenario() = default;
  virtual ~FaultScenario() = default;
  FaultScenario(const FaultScenario&) = delete;
  FaultScenario& operator=(const FaultScenario&) = delete;

  /// Makes the calls under test; one that fails is the last. \return an error code, or `refused` where a function says
  /// by its neutral answer that it has failed.
  virtual int call() = 0;
  static constexpr int refused = -1;

  /// Expects what holds after the calls went well, byte by byte.
  virtual void expectRight() = 0;
  /// Expects what holds after a call has failed, beside what holds for all scenarios.
  virtual void expectFailed() {}
  /// What a host does before it asks again: pages that a failed group has left are cleared.
  virtual void mend() {}
  /// The modules whose images have pages, from the requested one, null if that has no image, to the source.
  virtual std::vector<TestModule*> modules() { return {}; }
  /// Other buffers in the cache.
  virtual std::vector<const CachedBuffer*> buffers() { return {}; }
  /// The number of pages of the first input that a group may have left locked.
  virtual std::size_t numPagesOfInput() const { return 1; }
  /// How often each page of the requested image is locked after the calls went well.
  virtual int numLocksOfResult() const { return 0; }
};

/// Whether std::bad_alloc may leave the calls of a scenario. Error codes never do.
enum class Escape {
  never,   ///< Not at all.
  whenOff  ///< While exception handling is off.
};

/// Registers the classes and types of all scenarios.
void registerFaultModules();

/// A row of the table.
struct FaultRow {
  const char* name;
  std::unique_ptr<FaultScenario> (*make)();
  std::vector<int> failureCodes;  ///< The results of a failure.
  Escape escape;
};

/// All rows.
const std::vector<FaultRow>& faultRows();

}  // namespace vx::test

#endif
