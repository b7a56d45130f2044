// Threads that can't be started, in every choice of them: the result is right all the same.

#include "FaultNetwork.h"
#include "HostFixture.h"
#include "TestTypes.h"
#include "ThreadStarts.h"

#include <string>
#include <tuple>

namespace vx::test {
namespace {

// The voxel type, whose copies take place one after the other if it is a registered one; and the number of threads.
using Parameters = std::tuple<bool, VXuint32>;

class MissingThreads : public testing::TestWithParam<Parameters> {
 protected:
  static constexpr VXint64 numPages = 8;

  void SetUp() override {
    registerTestModules();
    ASSERT_TRUE(registerTestTypes());
    Host::pushDefaultHost();
    Host::getDefaultHost().setMaxNumThreads(std::get<1>(GetParam()));
  }
  void TearDown() override { Host::popDefaultHost(); }

  void expectTileWithout(const std::set<int>& missing) {
    const VXDataType dataType = std::get<0>(GetParam()) ? complexType() : VXDataType{VXuint16Type};
    FaultTile tile(8, dataType, 4, 2);
    tile.box = tile.wholeBox();
    tile.tileType = dataType;
    const ThreadStarts starts(missing);
    EXPECT_EQ(tile.call(), 0);
    tile.expectRight();
    EXPECT_EQ(starts.numStarts, static_cast<int>(std::get<1>(GetParam())));
    EXPECT_EQ(tile.last.numPages, numPages);
    EXPECT_EQ(VXIsMultithreadingActive(), 0);
    EXPECT_EQ(Host::getDefaultHost().isProcessingActive(), 0U);
    EXPECT_EQ(Field::enableNotificationsCounterState(), 1);
    for (TestModule* const module : tile.modules()) {
      for (VXint64 id = 0; id < numPages; ++id) {
        EXPECT_EQ(module->img().getPage(id, PagedImg::OWN_PAGE)->getLockCount(), 0);
      }
    }
    EXPECT_EQ(recorder.take(), std::vector<Message>());
  }

  MessageRecorder recorder;
};

TEST_P(MissingThreads, EachMayBeMissing) {
  for (int missing = -1; missing < static_cast<int>(std::get<1>(GetParam())); ++missing) {
    SCOPED_TRACE("without thread " + std::to_string(missing));
    expectTileWithout({missing});
  }
}

class MissingThreadsOfThree : public MissingThreads {};

TEST_P(MissingThreadsOfThree, AnyMayBeMissing) {
  for (int mask = 0; mask < 8; ++mask) {
    SCOPED_TRACE("mask " + std::to_string(mask));
    std::set<int> missing;
    for (int i = 0; i < 3; ++i) {
      if ((mask >> i & 1) != 0) missing.insert(i);
    }
    expectTileWithout(missing);
  }
}

std::string nameOf(const testing::TestParamInfo<Parameters>& instance) {
  return std::string(std::get<0>(instance.param) ? "Serialised" : "Free") + "CopiesOn" +
         std::to_string(std::get<1>(instance.param)) + "Threads";
}

INSTANTIATE_TEST_SUITE_P(Runs, MissingThreads, testing::Combine(testing::Bool(), testing::Values(2U, 3U, 5U)), &nameOf);
INSTANTIATE_TEST_SUITE_P(Runs, MissingThreadsOfThree, testing::Combine(testing::Bool(), testing::Values(3U)), &nameOf);

}  // namespace
}  // namespace vx::test
