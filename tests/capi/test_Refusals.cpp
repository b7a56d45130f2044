// Each function of the C interface with each of its arguments bad in each way.

#include "Rows.h"

namespace vx::test {
namespace {

class CAPIRefusals : public CAPITest, public ::testing::WithParamInterface<rows::Row> {};

TEST_P(CAPIRefusals, AreReportedAnsweredAndDoNothing) {
  World world;
  expectSilence();
  for (const rows::RefusedCall& call : GetParam().refusedCalls(world)) {
    SCOPED_TRACE(call.name);
    EXPECT_TRUE(call.run()) << "another answer";
    expectRefusal(call.refusal.code, call.label, call.refusal.reason);
    EXPECT_TRUE(call.refusal.code != VX_BAD_PARAMETER || world.areOutputsUntouched()) << "something was written";
  }
}

TEST_P(CAPIRefusals, GoodArgumentsArePassed) {
  if (GetParam().kind == rows::Kind::stops) return;  // the processes that test the stop call it
  World world;
  GetParam().call(world);
  for (const Message& message : messages.take()) {
    EXPECT_NE(message.type, VX_FATAL) << message;
    EXPECT_EQ(message.reason.find("Invalid"), std::string::npos) << message;
  }
  while (VXPopState() == 0) continue;
}

INSTANTIATE_TEST_SUITE_P(AllFunctions, CAPIRefusals, ::testing::ValuesIn(rows::allRows()),
                         [](const auto& instance) { return instance.param.name; });

}  // namespace
}  // namespace vx::test
