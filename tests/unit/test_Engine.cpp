#include "MessageRecorder.h"

#include "vxEngine.h"

#include <gtest/gtest.h>

namespace vx::test {
namespace {

using Messages = std::vector<Message>;

class TestEngine : public Engine {
 public:
  using Engine::_isActive;
  using Engine::Engine;
};

class EngineTest : public ::testing::Test {
 protected:
  MessageRecorder messages;
};

TEST_F(EngineTest, TheClassIsDerivedFromModules) {
  const RuntimeType* const type = Engine::getClassTypeId();
  ASSERT_NE(type, nullptr);
  EXPECT_STREQ(type->getName(), "Engine");
  EXPECT_STREQ(type->getParentName(), "BaseOp");
}

TEST_F(EngineTest, AnEngineHasNoImages) {
  const TestEngine engine(0, 0);
  EXPECT_EQ(engine.getInputNum(), 0);
  EXPECT_EQ(engine.getOutputNum(), 0);
  EXPECT_FALSE(engine._isActive);
  EXPECT_EQ(engine.whoAmI(true), "Engine");
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(EngineTest, ImagesAreReportedAndMade) {
  for (const auto& [numInputs, numOutputs] : {std::pair<int, int>{1, 0}, {0, 1}, {2, 3}}) {
    const TestEngine engine(numInputs, numOutputs);
    EXPECT_EQ(messages.take(),
              (Messages{{VX_FATAL, 14, "Engine::Engine", "Engines currently does not support inputs or outputs."}}));
    EXPECT_EQ(engine.getInputNum(), numInputs);
    EXPECT_EQ(engine.getOutputNum(), numOutputs);
  }
}

TEST_F(EngineTest, CopiesOnlyReport) {
  const TestEngine engine;
  TestEngine copy(engine);
  EXPECT_EQ(
      messages.take(),
      (Messages{{VX_FATAL, 14, "Engine::Engine(const Engine &)", "Copy constructor of Engine is not implemented."}}));
  static_cast<Engine&>(copy) = engine;
  EXPECT_EQ(messages.take(), (Messages{{VX_FATAL, 14, "Engine&Engine::operator=(const Engine &)",
                                        "Assignment operator of Engine is not implemented."}}));
}

}  // namespace
}  // namespace vx::test
