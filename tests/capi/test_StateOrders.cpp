#include "CAPIFixture.h"

#include <algorithm>

namespace vx::test {
namespace {

// Pushes and pops states, makes and deletes modules and requests tiles in any order, and expects what a plain model
// says.
class StateOrders : public CAPITest {
 protected:
  // Runs a step and gives its name.
  std::string run(int step) {
    switch (step) {
      case 0:
        push();
        return "push";
      case 1:
        create();
        return "create";
      case 2:
        remove();
        return "delete";
      case 3:
        tile();
        return "tile";
      default:
        pop();
        return "pop";
    }
  }

  void push() {
    ASSERT_EQ(VXPushState(0), 0);
    _stack.push_back({_listed});
  }

  void pop() {
    if (_stack.empty()) {
      EXPECT_EQ(VXPopState(), 44);
      return;
    }
    EXPECT_EQ(VXPopState(), 0);
    // What was deleted meanwhile does not come back, what was made meanwhile is no longer listed.
    std::erase_if(_listed, [this](const BaseOp* module) {
      const auto& saved = _stack.back().listed;
      return std::find(saved.begin(), saved.end(), module) == saved.end();
    });
    _stack.pop_back();
  }

  void create() {
    BaseOp* const module = VXCreateModuleFromName("RampModule");
    ASSERT_NE(module, nullptr);
    // Memory is used again: a module that stands where a deleted one stood counts as that one.
    _modules.push_back(module);
    _listed.push_back(module);
  }

  void remove() {
    if (_modules.empty()) return;
    BaseOp* const module = _modules.front();
    VXDeleteModule(module);
    std::erase(_modules, module);
    std::erase(_listed, module);
  }

  void tile() {
    for (BaseOp* const module : _modules) {
      VXint32 voxels[3] = {-1, -1, -1};
      void* memory = voxels;
      ASSERT_EQ(VXImageGetTile3D(VXModuleGetField(module, "output0"), &memory, 7, 1, 0, 3, 1, 1, VXint32Type), 0);
      EXPECT_EQ(voxels[0], 17);
      EXPECT_EQ(voxels[2], 19);
    }
  }

  void expectModel() {
    EXPECT_EQ(BaseOp::getNumBaseOps(), static_cast<VXint64>(_listed.size()) + 1) << "and the placeholder";
    for (const BaseOp* const module : _listed) EXPECT_GE(BaseOp::findBaseOpIndex(*module), 0);
  }

  void clear() {
    tile();
    while (!_stack.empty()) pop();
    tile();
    while (!_modules.empty()) remove();
    ASSERT_EQ(BaseOp::getNumBaseOps(), 1);
    VXClearCache();
  }

 private:
  struct Saved {
    std::vector<BaseOp*> listed;
  };
  std::vector<BaseOp*> _modules;
  std::vector<BaseOp*> _listed;
  std::vector<Saved> _stack;
};

TEST_F(StateOrders, AllOrdersUpToLengthFive) {
  constexpr int maxLength = 5;
  for (int length = 1, numOrders = 5; length <= maxLength; ++length, numOrders *= 5) {
    for (int order = 0; order < numOrders; ++order) {
      std::string names;
      for (int i = 0, rest = order; i < length; ++i, rest /= 5) {
        names += " " + run(rest % 5);
        expectModel();
      }
      clear();
      ASSERT_FALSE(HasFailure()) << names;
    }
  }
}

}  // namespace
}  // namespace vx::test
