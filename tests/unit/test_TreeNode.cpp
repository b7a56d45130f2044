#include "MessageRecorder.h"

#include "vxStringConversion.h"
#include "vxTreeNode.h"

#include <cstdint>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace vx::test {
namespace {

std::string messageOf(const TreeNodeException& exception) {
  char* text = exception.getMessage();
  std::string message = text;
  StringConversion::deleteString(text);
  return message;
}

// Code and message of what a call throws.
std::string failureOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const TreeNodeException& exception) {
    return messageOf(exception);
  }
  return "no failure";
}

std::string missing(const std::string& operation) {
  return "TreeNodeException occurred (code 0): Missing implementation - " + operation;
}

// A node that overrides nothing.
class BareNode : public TreeNode {
 public:
  BareNode() = default;
  explicit BareNode(ConstructionMode mode) : TreeNode(mode) {}
  explicit BareNode(std::vector<int>& deleted, int number) : _deleted(&deleted), _number(number) {}
  ~BareNode() override {
    if (_deleted) _deleted->push_back(_number);
  }
  using TreeNode::_appendNewChild;
  using TreeNode::_getChildTreeNodes;
  using TreeNode::_readNextIndex;

 private:
  std::vector<int>* _deleted = nullptr;
  int _number = 0;
};

template <class T>
std::string failureOfAdding(const T& value) {
  BareNode node;
  return failureOf([&] { node.addChild(value, "name"); });
}

template <class T>
std::string failureOfReading() {
  BareNode node;
  T value{};
  return failureOf([&] { node.readChild(value, "name"); });
}

TEST(TreeNodeTest, ANodeStartsEmpty) {
  const BareNode node;
  EXPECT_EQ(node.getLastReadChildName(), nullptr);
  EXPECT_FALSE(node.isRootNode());
  EXPECT_EQ(node._readNextIndex, -1);
  EXPECT_TRUE(node._getChildTreeNodes().empty());
  EXPECT_TRUE(BareNode(TreeNode::ReadMode).isRootNode());
  EXPECT_TRUE(BareNode(TreeNode::WriteMode).isRootNode());
}

TEST(TreeNodeTest, ChildrenAreDeletedInTheirOrder) {
  std::vector<int> deleted;
  {
    BareNode root(deleted, 0);
    for (int i = 1; i <= 3; ++i) root._appendNewChild(*new BareNode(deleted, i));
    ASSERT_EQ(root._getChildTreeNodes().size(), 3U);
    static_cast<BareNode*>(root._getChildTreeNodes()[1])->_appendNewChild(*new BareNode(deleted, 4));
    EXPECT_TRUE(deleted.empty());
  }
  EXPECT_EQ(deleted, (std::vector<int>{0, 1, 2, 4, 3}));
}

TEST(TreeNodeTest, WhatAFormatLeavesOutFailsWithItsName) {
  BareNode node;
  char* text = nullptr;
  EXPECT_EQ(failureOf([&] { node.writeToFile("file"); }), missing("writeToFile"));
  EXPECT_EQ(failureOf([&] { node.readFromFile("file"); }), missing("readFromFile"));
  EXPECT_EQ(failureOf([&] { node.writeToString(text); }), missing("writeToString"));
  EXPECT_EQ(failureOf([&] { node.readFromString("text"); }), missing("readFromString"));
  EXPECT_EQ(failureOf([&] { node.hasChild("name"); }), missing("TreeNode* hasChild()"));
  EXPECT_EQ(failureOf([&] { node.deleteString(text); }), missing("deleteString(char*)"));
  EXPECT_EQ(failureOf([&] { node.setVersion("Class", 1); }), missing("setVersion()"));
  EXPECT_EQ(failureOf([&] { node.getVersion("Class"); }), missing("getVersion()"));
  EXPECT_EQ(failureOf([&] { node.correctName("name"); }), missing("correctName()"));
  EXPECT_EQ(failureOf([&] { node.isCorrectName("name"); }), missing("isCorrectName()"));
}

TEST(TreeNodeTest, EachFormOfAddChildFailsWithTheNameOfWhatItStores) {
  BareNode node;
  EXPECT_EQ(failureOf([&] { node.addChild("name"); }), missing("TreeNode* addChild()"));
  EXPECT_EQ(failureOf([&] { node.addChild("block", 5, "name"); }), missing("addChild(void*)"));
  const Base* object = nullptr;
  EXPECT_EQ(failureOf([&] { node.addChild(object, "name", true); }), missing("addChild(Base*)"));
  EXPECT_EQ(failureOf([&] { node.addChild(object, "name"); }), missing("addChild(Base*)"));
  EXPECT_EQ(failureOfAdding(SubImgBoxf()), missing("addChild(SubImgBoxf)"));
  EXPECT_EQ(failureOfAdding(TSubImgBox<VXint64>()), missing("addChild(SubImgBox)"));
  EXPECT_EQ(failureOfAdding(Tmat4<double>()), missing("addChild(mat4)"));
  EXPECT_EQ(failureOfAdding(Tmat3<double>()), missing("addChild(mat3)"));
  EXPECT_EQ(failureOfAdding(TVector<VXint64>()), missing("addChild(Vector)"));
  EXPECT_EQ(failureOfAdding(Tvec6<double>()), missing("addChild(vec6)"));
  EXPECT_EQ(failureOfAdding(Tvec4<double>()), missing("addChild(vec4)"));
  EXPECT_EQ(failureOfAdding(Tvec3<double>()), missing("addChild(vec3)"));
  EXPECT_EQ(failureOfAdding(Tvec2<double>()), missing("addChild(vec2)"));
  EXPECT_EQ(failureOfAdding("text"), missing("addChild(const char* const)"));
  EXPECT_EQ(failureOfAdding(1.0L), missing("addChild(long double)"));
  EXPECT_EQ(failureOfAdding(1.0), missing("addChild(long double)"));
  EXPECT_EQ(failureOfAdding(1.0F), missing("addChild(long double)"));
  EXPECT_EQ(failureOfAdding(VXint64{1}), missing("addChild(VXint64)"));
  EXPECT_EQ(failureOfAdding(VXuint64{1}), missing("addChild(VXuint64)"));
  EXPECT_EQ(failureOfAdding(1L), missing("addChild(long)"));
  EXPECT_EQ(failureOfAdding(1UL), missing("addChild(unsigned long)"));
  EXPECT_EQ(failureOfAdding(1), missing("addChild(long)"));
  EXPECT_EQ(failureOfAdding(1U), missing("addChild(unsigned long)"));
  EXPECT_EQ(failureOfAdding(short{1}), missing("addChild(long)"));
  EXPECT_EQ(failureOfAdding(static_cast<unsigned short>(1)), missing("addChild(unsigned long)"));
  EXPECT_EQ(failureOfAdding('a'), missing("addChild(long)"));
  EXPECT_EQ(failureOfAdding(static_cast<unsigned char>(1)), missing("addChild(unsigned long)"));
  EXPECT_EQ(failureOfAdding(true), missing("addChild(unsigned long)"));
}

TEST(TreeNodeTest, EachFormOfReadChildFailsWithTheNameOfWhatItReads) {
  BareNode node;
  void* block = nullptr;
  unsigned long size = 0;
  EXPECT_EQ(failureOf([&] { node.readChild(block, size, "name"); }), missing("readChild(char*&)"));
  struct Thing : Base {
  } thing;
  EXPECT_EQ(failureOf([&] { node.readChild(thing, "name"); }), missing("readChild(Base&)"));
  EXPECT_EQ(failureOf([&] { node.readContainerChild("name"); }), missing("readChild(TreeNode*&)"));
  EXPECT_EQ(failureOf([&] { node.readBaseChild("name"); }), missing("readChild(Base*&)"));
  EXPECT_EQ(failureOfReading<char*>(), missing("readChild(char*&)"));
  EXPECT_EQ(failureOfReading<TreeNode*>(), missing("readChild(TreeNode*&)"));
  EXPECT_EQ(failureOfReading<Base*>(), missing("readChild(Base*&)"));
  EXPECT_EQ(failureOfReading<SubImgBoxf>(), missing("readChild(SubImgBoxf&)"));
  EXPECT_EQ(failureOfReading<TSubImgBox<VXint64>>(), missing("readChild(SubImgBox&)"));
  EXPECT_EQ(failureOfReading<Tmat4<double>>(), missing("readChild(mat4&)"));
  EXPECT_EQ(failureOfReading<Tmat3<double>>(), missing("readChild(mat3&)"));
  EXPECT_EQ(failureOfReading<TVector<VXint64>>(), missing("readChild(Vector&)"));
  EXPECT_EQ(failureOfReading<Tvec6<double>>(), missing("readChild(vec6&)"));
  EXPECT_EQ(failureOfReading<Tvec4<double>>(), missing("readChild(vec4&)"));
  EXPECT_EQ(failureOfReading<Tvec3<double>>(), missing("readChild(vec3&)"));
  EXPECT_EQ(failureOfReading<Tvec2<double>>(), missing("readChild(vec2&)"));
  EXPECT_EQ(failureOfReading<long double>(), missing("readChild(long double&)"));
  EXPECT_EQ(failureOfReading<double>(), missing("readChild(long double&)"));
  EXPECT_EQ(failureOfReading<float>(), missing("readChild(long double&)"));
  EXPECT_EQ(failureOfReading<VXuint64>(), missing("readChild(VXuint64&)"));
  EXPECT_EQ(failureOfReading<VXint64>(), missing("readChild(VXint64&)"));
  EXPECT_EQ(failureOfReading<unsigned long>(), missing("readChild(unsigned long&)"));
  EXPECT_EQ(failureOfReading<long>(), missing("readChild(long&)"));
  EXPECT_EQ(failureOfReading<unsigned int>(), missing("readChild(unsigned long&)"));
  EXPECT_EQ(failureOfReading<int>(), missing("readChild(long&)"));
  EXPECT_EQ(failureOfReading<unsigned short>(), missing("readChild(unsigned long&)"));
  EXPECT_EQ(failureOfReading<short>(), missing("readChild(long&)"));
  EXPECT_EQ(failureOfReading<unsigned char>(), missing("readChild(unsigned long&)"));
  EXPECT_EQ(failureOfReading<char>(), missing("readChild(long&)"));
  EXPECT_EQ(failureOfReading<bool>(), missing("readChild(long&)"));
}

TEST(TreeNodeTest, AFailedReadThroughAnotherFormLeavesTheValue) {
  BareNode node;
  int value = 5;
  EXPECT_THROW(node.readChild(value, "name"), TreeNodeException);
  EXPECT_EQ(value, 5);
}

// A node that keeps what the widest forms were given, and gives it back.
class WideNode : public TreeNode {
 public:
  using TreeNode::addChild;
  using TreeNode::readChild;
  void addChild(long double value, const char*) override { real = value; }
  void addChild(long value, const char*) override { integer = value; }
  void addChild(unsigned long value, const char*) override { natural = value; }
  void readChild(long double& value, const char*) override { value = real; }
  void readChild(long& value, const char*) override { value = integer; }
  void readChild(unsigned long& value, const char*) override { value = natural; }

  long double real = 0;
  long integer = 0;
  unsigned long natural = 0;
};

template <class T>
T readAs(WideNode& node) {
  T value{};
  node.readChild(value, "name");
  return value;
}

TEST(TreeNodeTest, NarrowNumbersPassThroughTheWidestOfTheirKind) {
  WideNode node;
  node.addChild(0.1F, "name");
  EXPECT_EQ(node.real, static_cast<long double>(0.1F));
  node.addChild(0.1, "name");
  EXPECT_EQ(node.real, static_cast<long double>(0.1));
  EXPECT_EQ(readAs<float>(node), 0.1F);
  EXPECT_EQ(readAs<double>(node), 0.1);
  node.addChild(-5, "name");
  EXPECT_EQ(node.integer, -5);
  node.addChild('A', "name");
  EXPECT_EQ(node.integer, 65);
  node.addChild(short{-3}, "name");
  EXPECT_EQ(node.integer, -3);
  EXPECT_EQ(readAs<int>(node), -3);
  EXPECT_EQ(readAs<short>(node), -3);
  EXPECT_EQ(readAs<char>(node), -3);
  node.addChild(4294967295U, "name");
  EXPECT_EQ(node.natural, 4294967295UL);
  EXPECT_EQ(readAs<unsigned int>(node), 4294967295U);
  EXPECT_EQ(readAs<unsigned short>(node), 65535U);
  EXPECT_EQ(readAs<unsigned char>(node), 255U);
}

TEST(TreeNodeTest, ABoolIsWrittenUnsignedAndReadSigned) {
  WideNode node;
  node.addChild(true, "name");
  EXPECT_EQ(node.natural, 1UL);
  EXPECT_EQ(node.integer, 0);
  EXPECT_FALSE(readAs<bool>(node));
  node.integer = 256;
  EXPECT_TRUE(readAs<bool>(node));
}

TEST(TreeNodeTest, BothClassesAreRegisteredAsRoots) {
  for (const char* name : {"TreeNode", "TreeNodeException"}) {
    const RuntimeType* type = Runtime::fromName(name);
    ASSERT_NE(type, nullptr) << name;
    EXPECT_EQ(type->getParent(), nullptr) << name;
    EXPECT_TRUE(type->isAbstract()) << name;
    EXPECT_STREQ(type->getDllName(), "VX") << name;
  }
  BareNode node;
  EXPECT_EQ(node.getTypeId(), TreeNode::getClassTypeId());
  EXPECT_STREQ(node.getTypeIdName(), "TreeNode");
  EXPECT_EQ(&node.typeInstanceCounter(), &TreeNode::getClassTypeId()->instanceCounter());
  EXPECT_STREQ(TreeNodeException(0).getTypeIdName(), "TreeNodeException");
}

// Exceptions ---------------------------------------------------------------------------------------------------------

TEST(TreeNodeExceptionTest, EachCodeHasItsText) {
  const char* const texts[] = {"Missing implementation",
                               "Operation not supported by current implementation.",
                               "Child not found",
                               "Error adding Base object",
                               "Error reading Base object",
                               "Error reading unsigned char",
                               "Error reading char",
                               "Error reading unsigned short",
                               "Error reading short",
                               "Error reading unsigned int",
                               "Error reading int",
                               "Error reading unsigned long",
                               "Error reading long",
                               "Error reading float",
                               "Error reading double",
                               "Error reading long double",
                               "Error reading string (char*)",
                               "Error reading vec2",
                               "Error reading vec3",
                               "Error reading vec4",
                               "Error reading vec6",
                               "Error reading Vector",
                               "Error reading mat3",
                               "Error reading mat4",
                               "Error reading SubImgBox",
                               "Error reading SubImgBoxf",
                               "Invalid readNext() statement",
                               "Parent node invalid",
                               "File Not Found error",
                               "Error reading from file",
                               "Error writing to file",
                               "Error reading object: Class version not supported by readStateFromTree()",
                               "Unknown error",
                               "Error reading VXint64",
                               "Error reading VXuint64",
                               ""};
  int code = 0;
  for (const std::string text : texts) {
    const std::string lead = "TreeNodeException occurred (code " + std::to_string(code) + "): ";
    EXPECT_EQ(messageOf(TreeNodeException(code, nullptr)), lead + text);
    EXPECT_EQ(messageOf(TreeNodeException(code, "extra")), lead + text + " - extra");
    EXPECT_EQ(TreeNodeException(code, nullptr).getCode(), code);
    ++code;
  }
  EXPECT_EQ(code, 36);
}

TEST(TreeNodeExceptionTest, ACodeBeyondTheTableHasNoTextOfItsOwn) {
  for (const int code : {36, 99, 2147483647, -1}) {
    const std::string lead = "TreeNodeException occurred (code " + std::to_string(code) + "): ";
    EXPECT_EQ(messageOf(TreeNodeException(code, nullptr)), lead + "No additional information available.");
    EXPECT_EQ(messageOf(TreeNodeException(code, "extra")), lead + "extra");
  }
}

// The order of the virtual functions ----------------------------------------------------------------------------------

#if defined(__x86_64__) && defined(__GNUC__)

// Index of a function in the table of virtual functions; the destructor takes the first two.
template <class Function>
std::size_t slotOf(Function function) {
  std::uintptr_t words[2];
  static_assert(sizeof words == sizeof function);
  std::memcpy(words, &function, sizeof words);
  return (words[0] - 1) / sizeof(void*);
}

template <class... Args>
std::size_t addSlot() {
  return slotOf(static_cast<void (TreeNode::*)(Args..., const char*)>(&TreeNode::addChild));
}
template <class... Args>
std::size_t readSlot() {
  return slotOf(static_cast<void (TreeNode::*)(Args & ..., const char*)>(&TreeNode::readChild));
}

TEST(TreeNodeTest, TheOrderOfTheVirtualFunctionsIsFixed) {
  const std::size_t slots[] = {
      slotOf(&TreeNode::writeToFile),
      slotOf(&TreeNode::readFromFile),
      slotOf(&TreeNode::writeToString),
      slotOf(&TreeNode::readFromString),
      slotOf(static_cast<TreeNode* (TreeNode::*)(const char*)>(&TreeNode::addChild)),
      slotOf(static_cast<void (TreeNode::*)(const Base*, const char*, bool)>(&TreeNode::addChild)),
      addSlot<const void*, unsigned int>(),
      addSlot<const SubImgBoxf&>(),
      addSlot<const TSubImgBox<VXint64>&>(),
      addSlot<const Tmat4<double>&>(),
      addSlot<const Tmat3<double>&>(),
      addSlot<const TVector<VXint64>&>(),
      addSlot<const Tvec6<double>&>(),
      addSlot<const Tvec4<double>&>(),
      addSlot<const Tvec3<double>&>(),
      addSlot<const Tvec2<double>&>(),
      addSlot<const char*>(),
      addSlot<long double>(),
      addSlot<double>(),
      addSlot<float>(),
      addSlot<VXint64>(),
      addSlot<VXuint64>(),
      addSlot<long>(),
      addSlot<unsigned long>(),
      addSlot<int>(),
      addSlot<unsigned int>(),
      addSlot<short>(),
      addSlot<unsigned short>(),
      addSlot<char>(),
      addSlot<unsigned char>(),
      addSlot<bool>(),
      slotOf(&TreeNode::hasChild),
      readSlot<char*>(),
      readSlot<TreeNode*>(),
      readSlot<Base>(),
      readSlot<Base*>(),
      readSlot<void*, unsigned long>(),
      readSlot<SubImgBoxf>(),
      readSlot<TSubImgBox<VXint64>>(),
      readSlot<Tmat4<double>>(),
      readSlot<Tmat3<double>>(),
      readSlot<TVector<VXint64>>(),
      readSlot<Tvec6<double>>(),
      readSlot<Tvec4<double>>(),
      readSlot<Tvec3<double>>(),
      readSlot<Tvec2<double>>(),
      readSlot<long double>(),
      readSlot<double>(),
      readSlot<float>(),
      readSlot<VXuint64>(),
      readSlot<VXint64>(),
      readSlot<unsigned long>(),
      readSlot<long>(),
      readSlot<unsigned int>(),
      readSlot<int>(),
      readSlot<unsigned short>(),
      readSlot<short>(),
      readSlot<unsigned char>(),
      readSlot<char>(),
      readSlot<bool>(),
      slotOf(&TreeNode::deleteString),
      slotOf(&TreeNode::readContainerChild),
      slotOf(&TreeNode::readBaseChild),
      slotOf(&TreeNode::setVersion),
      slotOf(&TreeNode::getVersion),
      slotOf(&TreeNode::correctName),
      slotOf(&TreeNode::isCorrectName),
      slotOf(&TreeNode::getTypeId),
      slotOf(&TreeNode::getTypeIdName),
      slotOf(&TreeNode::typeInstanceCounter),
  };
  std::size_t expected = 2;
  for (const std::size_t slot : slots) EXPECT_EQ(slot, expected++);
}

TEST(TreeNodeExceptionTest, TheOrderOfTheVirtualFunctionsIsFixed) {
  EXPECT_EQ(slotOf(&TreeNodeException::getMessage), 2U);
  EXPECT_EQ(slotOf(&TreeNodeException::getTypeId), 3U);
  EXPECT_EQ(slotOf(&TreeNodeException::getTypeIdName), 4U);
  EXPECT_EQ(slotOf(&TreeNodeException::typeInstanceCounter), 5U);
}

#endif

}  // namespace
}  // namespace vx::test
