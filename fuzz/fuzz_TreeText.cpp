// The text of persistence trees: any text is read, or refused by an exception of trees, and what was read is written as
// it was.

#include "FuzzCheck.h"
#include "TextTree.h"

#include "vxUtilsAPI.h"

#include <cstdint>
#include <string>

using namespace vx;

namespace {

// Runs what may fail as an operation on a tree. \return whether it did not.
template <class Operation>
bool tryOn(Operation operation) {
  try {
    operation();
  } catch (const TreeNodeException& exception) {
    VXFree(exception.getMessage());
    return false;
  }
  return true;
}

std::string write(TreeNode& tree) {
  char* text = nullptr;
  tree.writeToString(text);
  std::string whole = text;
  tree.deleteString(text);
  return whole;
}

template <class Value>
void readAs(TreeNode& tree, const char* name) {
  Value value{};
  tryOn([&] { tree.readChild(value, name); });
}

// A child as all types there are, and back under another name.
void readAsEverything(TreeNode& tree, const char* name) {
#define VX_READ_AS(type, argument, word, code) readAs<type>(tree, name);
  TEXT_TREE_FOR_EACH_VALUE(VX_READ_AS)
#undef VX_READ_AS
  readAs<double>(tree, name);
  readAs<float>(tree, name);
  readAs<int>(tree, name);
  readAs<unsigned int>(tree, name);
  readAs<short>(tree, name);
  readAs<unsigned short>(tree, name);
  readAs<char>(tree, name);
  readAs<unsigned char>(tree, name);
  readAs<bool>(tree, name);
  readAs<TreeNode*>(tree, name);
  Base* object = nullptr;
  tryOn([&] { tree.readChild(object, name); });
  delete object;
  void* memory = nullptr;
  unsigned long numBytes = 0;
  tryOn([&] { tree.readChild(memory, numBytes, name); });
  VXFree(memory);
  char* text = nullptr;
  if (!tryOn([&] { tree.readChild(text, name); })) return;
  test::TextTree other;
  other.addChild(text, name);
  const std::string value = text;
  tree.deleteString(text);
  test::TextTree copy;
  copy.readFromString(write(other).c_str());
  copy.readChild(text, name);
  fuzz::requireEqual(std::string(text), value, "a text in a tree comes back", fuzz::quote);
  copy.deleteString(text);
}

void readChildren(TreeNode& tree, int depth) {
  const char* name = nullptr;
  TreeNode* child = nullptr;
  // Null is the child behind the one that was read last; a child without children of its own can be read as a text.
  const auto readNext = [&] { tree.readChild(child, nullptr); };
  for (int i = 0; i < 64; ++i) {
    child = nullptr;
    const char* const before = tree.getLastReadChildName();
    const bool isContainer = tryOn(readNext);
    name = tree.getLastReadChildName();
    if (!isContainer && name == before) return;
    fuzz::require(tree.hasChild(name), "a child that was read is there");
    if (isContainer && depth > 0) readChildren(*child, depth - 1);
    const std::string copy = name;
    TreeNode* first = nullptr;
    tryOn([&] { first = tree.readContainerChild(copy.c_str()); });
    if (i == 0) readAsEverything(tree, copy.c_str());
    // Reading by name goes back to the first child of that name.
    if (tree.getLastReadChildName() != name) return;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::silenceMessages();
  const std::string text(data, data + size);
  test::TextTree tree;
  if (!tryOn([&] { tree.readFromString(text.c_str()); })) return 0;
  const std::string written = write(tree);
  test::TextTree copy;
  copy.readFromString(written.c_str());
  fuzz::requireEqual(write(copy), written, "the text of a tree comes back", fuzz::quote);
  readChildren(tree, 4);
  char* const name = tree.correctName(text.c_str());
  fuzz::require(tree.isCorrectName(name), "a corrected name is a correct one");
  tree.deleteString(name);
  return 0;
}
