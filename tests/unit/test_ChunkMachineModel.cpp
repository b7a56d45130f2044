#include "ChunkMachineModel.h"

#include <gtest/gtest.h>

namespace vx::test {
namespace {

// All numbers of pages of up to three chunks.
std::vector<std::vector<int>> allChunks() {
  std::vector<std::vector<int>> all;
  for (int numChunks = 1; numChunks <= 3; ++numChunks) {
    for (int mask = 0; mask < 1 << numChunks; ++mask) {
      std::vector<int> numPages;
      for (int i = 0; i < numChunks; ++i) numPages.push_back((mask >> i & 1) != 0 ? 2 : 1);
      all.push_back(numPages);
    }
  }
  return all;
}

// All sets of chunks whose thread can't be started.
std::vector<std::vector<bool>> allMissingThreads(std::size_t numChunks) {
  std::vector<std::vector<bool>> all;
  for (unsigned mask = 0; mask < 1U << numChunks; ++mask) {
    std::vector<bool> isMissing;
    for (std::size_t i = 0; i < numChunks; ++i) isMissing.push_back((mask >> i & 1) != 0);
    all.push_back(isMissing);
  }
  return all;
}

template <class Counters = ChunkCounters>
ModelResult tryAllOrders(const ModelRun& run) {
  return ChunkMachineModel<Counters>(run).tryAllOrders();
}

long expectAllOrdersToEnd(const ModelRun& run) {
  const ModelResult result = tryAllOrders(run);
  EXPECT_EQ(result.violation, "") << run;
  return result.numStates;
}

TEST(ChunkMachineModelTest, EveryOrderEndsWithOrWithoutThreadsThatCannotBeStarted) {
  long numStates = 0;
  for (const bool serialize : {false, true}) {
    for (const std::vector<int>& numPages : allChunks()) {
      for (const std::vector<bool>& isMissing : allMissingThreads(numPages.size())) {
        numStates += expectAllOrdersToEnd({numPages, isMissing, serialize});
      }
    }
  }
  EXPECT_GT(numStates, 10000);
}

TEST(ChunkMachineModelTest, EveryOrderEndsWithOneFailureAnywhere) {
  for (const bool serialize : {false, true}) {
    for (const std::vector<int>& numPages : allChunks()) {
      for (int chunk = 0; chunk < static_cast<int>(numPages.size()); ++chunk) {
        for (int page = 0; page < numPages[static_cast<std::size_t>(chunk)]; ++page) {
          for (const PageFailure failure : {PageFailure::codeAtCopy, PageFailure::leavesAtCopy,
                                            PageFailure::codeAtCalculation, PageFailure::leavesAtCalculation}) {
            expectAllOrdersToEnd({numPages, std::vector<bool>(numPages.size()), serialize, chunk, page, failure});
          }
        }
      }
    }
  }
}

TEST(ChunkMachineModelTest, EveryOrderOfTwoChunksEndsWithAFailureBesideAThreadThatCannotBeStarted) {
  for (const bool serialize : {false, true}) {
    for (const std::vector<bool>& isMissing : allMissingThreads(2)) {
      for (int chunk = 0; chunk < 2; ++chunk) {
        for (int page = 0; page < 2; ++page) {
          for (const PageFailure failure : {PageFailure::codeAtCopy, PageFailure::leavesAtCopy,
                                            PageFailure::codeAtCalculation, PageFailure::leavesAtCalculation}) {
            expectAllOrdersToEnd({{2, 2}, isMissing, serialize, chunk, page, failure});
          }
        }
      }
    }
  }
}

// Variants with a fault each: the model must find it.

// One barrier that is no more than a counter serves both points, and everybody who leaves it resets it.
struct ResettingCounters : ChunkCounters {
  using ChunkCounters::ChunkCounters;
  Barrier& afterCopy() noexcept { return beforeCopy(); }
  [[nodiscard]] bool arrive(Barrier& barrier) noexcept {
    barrier.numArrived = barrier.numArrived < 0 ? 1 : barrier.numArrived + 1;
    return barrier.numArrived == numWorkers;
  }
  static bool hasOpened(const Barrier& barrier, VXuint32 /*numOpenings*/) noexcept {
    return barrier.numArrived < 0 || barrier.numArrived >= numWorkers;
  }
  [[nodiscard]] bool leave(Barrier& barrier) noexcept {
    barrier.numArrived = -1;
    return true;
  }
  static constexpr VXint32 numWorkers = 2;
};

TEST(ChunkMachineModelTest, FindsTheArrivalThatASlowWorkerErases) {
  EXPECT_NE(tryAllOrders<ResettingCounters>({{2, 2}, {false, false}, true}).violation, "");
}

// Threads that could not be started are waited for.
struct HopefulCounters : ChunkCounters {
  using ChunkCounters::ChunkCounters;
  [[nodiscard]] bool allThreadsStarted() noexcept { return false; }
};

TEST(ChunkMachineModelTest, FindsTheWaitForAThreadThatWasNotStarted) {
  EXPECT_NE(tryAllOrders<HopefulCounters>({{1, 1}, {false, true}, false}).violation, "");
}

// A worker that ends tells only the requesting thread.
struct SilentCounters : ChunkCounters {
  using ChunkCounters::ChunkCounters;
  [[nodiscard]] bool threadEnds() noexcept {
    const bool isTold = ChunkCounters::threadEnds();
    return isTold && haveAllThreadsEnded();
  }
};

TEST(ChunkMachineModelTest, FindsTheWakeUpThatALastPageOwesTheOthers) {
  EXPECT_NE(tryAllOrders<SilentCounters>({{1, 2, 2}, {false, false, false}, true}).violation, "");
}

// The requesting thread doesn't wait.
struct HastyCounters : ChunkCounters {
  using ChunkCounters::ChunkCounters;
  bool haveAllThreadsEnded() const noexcept { return true; }
};

TEST(ChunkMachineModelTest, FindsTheUseOfARunThatIsGone) {
  EXPECT_NE(tryAllOrders<HastyCounters>({{1}, {false}, false}).violation, "");
}

// Nobody waits at the second point.
struct OneBarrierCounters : ChunkCounters {
  using ChunkCounters::ChunkCounters;
  Barrier& afterCopy() noexcept { return none; }
  [[nodiscard]] bool arrive(Barrier& barrier) noexcept {
    if (&barrier != &none) return ChunkCounters::arrive(barrier);
    ++barrier.numOpenings;
    return true;
  }
  Barrier none;
};

TEST(ChunkMachineModelTest, FindsACopyWhileAnotherOneCalculates) {
  EXPECT_NE(tryAllOrders<OneBarrierCounters>({{1, 2}, {false, false}, true}).violation, "");
}

}  // namespace
}  // namespace vx::test
