#include "FieldsEngineStandIn.h"
#include "MessageRecorder.h"

#include "vxConnectors.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <type_traits>

namespace vx::test {
namespace {

using Messages = std::vector<Message>;
using Links = std::vector<InputConnector*>;

class ConnectorsTest : public ::testing::Test {
 protected:
  static Links linksOf(const OutputConnector& output) {
    Links links;
    for (VXint64 i = 0; i < output.getLinkNum(); ++i) links.push_back(output.getLink(i));
    return links;
  }
  FieldsEngineStandIn engine;
  BaseOp& op = *engine.module();
  MessageRecorder messages;
};

TEST_F(ConnectorsTest, ANewConnectorKnowsItsModuleAndNumber) {
  const InputConnector input(op, 3);
  EXPECT_EQ(&input.getOp(), &op);
  EXPECT_EQ(input.getIndex(), 3);
  EXPECT_EQ(input.getLink(), nullptr);
  EXPECT_EQ(input.isValidConnection(), 0);
  const OutputConnector output(op, 5);
  EXPECT_EQ(&output.getOp(), &op);
  EXPECT_EQ(output.getIndex(), 5);
  EXPECT_EQ(output.getLinkNum(), 0);
}

TEST_F(ConnectorsTest, AnOutputOwnsAnImageOfItsModuleAndNumber) {
  {
    const OutputConnector output(op, 5);
    EXPECT_EQ(engine.log, "new 5 ");
    EXPECT_EQ(reinterpret_cast<const VXint64&>(output.getPagedImg()), 5) << "the image that was made";
  }
  EXPECT_EQ(engine.log, "new 5 delete 5 ");
}

TEST_F(ConnectorsTest, AnImageThatCannotBeMadeLeavesNoOutput) {
  engine.failure = [] { throw 2; };
  EXPECT_THROW(OutputConnector(op, 0), int);
  EXPECT_EQ(engine.log, "");
}

TEST_F(ConnectorsTest, ConnectingLinksBothSides) {
  OutputConnector output(op, 0);
  InputConnector first(op, 0), second(op, 1, output);
  first.connect(output);
  EXPECT_EQ(linksOf(output), (Links{&second, &first}));
  EXPECT_EQ(first.getLink(), &output);
  EXPECT_EQ(first.isValidConnection(), 1);
  EXPECT_EQ(second.isValidConnection(), 1);
}

TEST_F(ConnectorsTest, ConnectingElsewhereLeavesTheFirstOutput) {
  OutputConnector first(op, 0), second(op, 1);
  InputConnector input(op, 0, first), other(op, 1, first);
  input.connect(second);
  EXPECT_EQ(linksOf(first), (Links{&other}));
  EXPECT_EQ(linksOf(second), (Links{&input}));
  EXPECT_EQ(input.getLink(), &second);
}

TEST_F(ConnectorsTest, ConnectingTwiceLeavesOneEntryAtTheEnd) {
  OutputConnector output(op, 0);
  InputConnector first(op, 0, output), second(op, 1, output);
  first.connect(output);
  EXPECT_EQ(linksOf(output), (Links{&second, &first}));
}

TEST_F(ConnectorsTest, DisconnectingAnOpenInputDoesNothing) {
  OutputConnector output(op, 0);
  InputConnector input(op, 0), other(op, 1, output);
  input.disconnect();
  EXPECT_EQ(input.getLink(), nullptr);
  other.disconnect();
  other.disconnect();
  EXPECT_EQ(other.getLink(), nullptr);
  EXPECT_EQ(output.getLinkNum(), 0);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(ConnectorsTest, ABadLinkIndexIsReported) {
  OutputConnector output(op, 0);
  InputConnector input(op, 0, output);
  EXPECT_EQ(output.getLink(0), &input);
  EXPECT_EQ(messages.take(), Messages{});
  EXPECT_EQ(output.getLink(-1), nullptr);
  EXPECT_EQ(output.getLink(output.getLinkNum()), nullptr);
  const Message refusal{VX_ERROR, 26, "OutputConnector::getLink()", "Invalid link index, returning NULL."};
  EXPECT_EQ(messages.take(), (Messages{refusal, refusal}));
}

TEST_F(ConnectorsTest, ADestroyedOutputLeavesItsInputsOpen) {
  auto output = std::make_unique<OutputConnector>(op, 0);
  InputConnector first(op, 0, *output), second(op, 1, *output);
  output.reset();
  EXPECT_EQ(first.getLink(), nullptr);
  EXPECT_EQ(second.getLink(), nullptr);
  EXPECT_EQ(first.isValidConnection(), 0);
}

TEST_F(ConnectorsTest, ADestroyedInputLeavesNoEntry) {
  OutputConnector output(op, 0);
  InputConnector stays(op, 1, output);
  {
    const InputConnector gone(op, 0, output);
    EXPECT_EQ(output.getLinkNum(), 2);
  }
  EXPECT_EQ(linksOf(output), (Links{&stays}));
}

TEST_F(ConnectorsTest, ConnectorsCannotBeCopiedFromOutside) {
  EXPECT_FALSE(std::is_copy_constructible_v<InputConnector>);
  EXPECT_FALSE(std::is_copy_assignable_v<InputConnector>);
  EXPECT_FALSE(std::is_copy_constructible_v<OutputConnector>);
  EXPECT_FALSE(std::is_copy_assignable_v<OutputConnector>);
}

TEST_F(ConnectorsTest, AnyOrderOfConnectingAndDestroyingKeepsBothSidesTheSame) {
  std::mt19937 random(5);
  const auto below = [&random](std::size_t n) { return random() % n; };
  std::vector<std::unique_ptr<InputConnector>> inputs(6);
  std::vector<std::unique_ptr<OutputConnector>> outputs(4);
  std::vector<std::vector<std::size_t>> model(outputs.size());  // the inputs of each output, in order
  const auto forget = [&model](std::size_t input) {
    for (auto& links : model) links.erase(std::remove(links.begin(), links.end(), input), links.end());
  };
  for (std::size_t i = 0; i < inputs.size(); ++i)
    inputs[i] = std::make_unique<InputConnector>(op, static_cast<VXint64>(i));
  for (std::size_t o = 0; o < outputs.size(); ++o)
    outputs[o] = std::make_unique<OutputConnector>(op, static_cast<VXint64>(o));
  for (int step = 0; step < 4000; ++step) {
    const std::size_t input = below(inputs.size()), output = below(outputs.size());
    switch (below(8)) {
      case 0:
        inputs[input] = std::make_unique<InputConnector>(op, static_cast<VXint64>(input));
        forget(input);
        break;
      case 1:
        outputs[output] = std::make_unique<OutputConnector>(op, static_cast<VXint64>(output));
        model[output].clear();
        break;
      case 2:
        inputs[input]->disconnect();
        forget(input);
        break;
      default:
        inputs[input]->connect(*outputs[output]);
        forget(input);
        model[output].push_back(input);
    }
    std::vector<OutputConnector*> links(inputs.size(), nullptr);
    for (std::size_t o = 0; o < outputs.size(); ++o) {
      Links expected;
      for (const std::size_t i : model[o]) {
        expected.push_back(inputs[i].get());
        links[i] = outputs[o].get();
      }
      ASSERT_EQ(linksOf(*outputs[o]), expected) << "step " << step;
    }
    for (std::size_t i = 0; i < inputs.size(); ++i) {
      ASSERT_EQ(inputs[i]->getLink(), links[i]) << "step " << step;
      ASSERT_EQ(inputs[i]->isValidConnection(), links[i] ? 1 : 0);
    }
  }
}

}  // namespace
}  // namespace vx::test
