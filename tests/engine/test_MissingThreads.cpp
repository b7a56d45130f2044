// Threads that can't be started, in every choice of them: the result is right all the same.

#include "FaultNetwork.h"
#include "HostFixture.h"
#include "TestTypes.h"
#include "ThreadStarts.h"

#include <string>
#include <utility>

namespace vx::test {
namespace {

// The voxel type, whose copies take place one after the other if it is a registered one; and the number of threads.
using Parameters = std::pair<bool, VXuint32>;

class MissingThreads : public testing::TestWithParam<Parameters> {
 protected:
  static constexpr VXint64 numPages = 8;

  void SetUp() override {
    registerTestModules();
    ASSERT_TRUE(registerTestTypes());
    Host::pushDefaultHost();
    Host::getDefaultHost().setMaxNumThreads(GetParam().second);
  }
  void TearDown() override { Host::popDefaultHost(); }

  void expectTileWithout(const std::set<int>& missing) {
    const VXDataType dataType = GetParam().first ? complexType() : VXDataType{VXuint16Type};
    FaultTile tile(8, dataType, 4, 2);
    tile.box = tile.wholeBox();
    tile.tileType = dataType;
    const ThreadStarts starts(missing);
    EXPECT_EQ(tile.call(), 0);
    tile.expectRight();
    EXPECT_EQ(starts.numStarts, static_cast<int>(GetParam().second));
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
  for (int missing = -1; missing < static_cast<int>(GetParam().second); ++missing) {
    SCOPED_TRACE("without thread " + std::to_string(missing));
    expectTileWithout({missing});
  }
}

TEST_P(MissingThreads, AnyOfThreeMayBeMissing) {
  if (GetParam().second != 3) return;
  for (int mask = 0; mask < 8; ++mask) {
    SCOPED_TRACE("mask " + std::to_string(mask));
    std::set<int> missing;
    for (int i = 0; i < 3; ++i) {
      if ((mask >> i & 1) != 0) missing.insert(i);
    }
    expectTileWithout(missing);
  }
}

INSTANTIATE_TEST_SUITE_P(Runs, MissingThreads,
                         testing::Values(Parameters{false, 2}, Parameters{false, 3}, Parameters{false, 5},
                                         Parameters{true, 2}, Parameters{true, 3}, Parameters{true, 5}),
                         [](const auto& instance) {
                           return std::string(instance.param.first ? "Serialised" : "Free") + "CopiesOn" +
                                  std::to_string(instance.param.second) + "Threads";
                         });

}  // namespace
}  // namespace vx::test
