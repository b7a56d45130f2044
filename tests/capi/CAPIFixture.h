// What the tests of the C interface share: the modules above, messages, and short forms.

#ifndef VX_TESTS_CAPI_FIXTURE_H
#define VX_TESTS_CAPI_FIXTURE_H

#include "CAPIModules.h"
#include "MessageRecorder.h"

#include "vxAPI.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace vx::test {

using Messages = std::vector<Message>;

/// Deletes a module through the C interface.
struct DeleteModule {
  void operator()(BaseOp* module) const { VXDeleteModule(module); }
};
using ModulePtr = std::unique_ptr<BaseOp, DeleteModule>;

inline ModulePtr makeModule(const char* className) { return ModulePtr(VXCreateModuleFromName(className)); }

/// The text of a frame's report with the words that it ends in.
inline std::string frameReason(const char* words) {
  return std::string("Standard exception checking detected a fatal execution error in this function.") + words;
}

class CAPITest : public ::testing::Test {
 protected:
  CAPITest() {
    initModuleClasses();
    modulePlace = nullptr;
    numCalculatedPages = 0;
    moduleLog.clear();
  }
  // Before the modules of a test go, which would call into a test that has ended.
  void TearDown() override {
    modulePlace = nullptr;
    VXEnableExceptionHandling(1);
  }

  /// Expects that these messages came since the last call, and no others.
  void expectMessages(const Messages& expected) { EXPECT_EQ(messages.take(), expected); }
  void expectRefusal(VXErrorCode code, const std::string& label, const std::string& reason) {
    expectMessages({{VX_ERROR, code, label, reason}});
  }
  void expectSilence() { expectMessages({}); }

  MessageRecorder messages;
};

}  // namespace vx::test

#endif
