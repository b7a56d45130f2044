// The whole vocabulary of the persistence tree, through one complete format.

#include "TextTree.h"

#include "vxStringConversion.h"
#include "vxUtilsAPI.h"

#include <cstdio>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <random>
#include <string>

namespace vx::test {
namespace {

// An object that writes its state as a tree, in its second version.
class Lamp : public Base {
 public:
  void addStateToTree(TreeNode* parent) const override {
    parent->setVersion("Lamp", 2);
    parent->addChild(isOn, "isOn");
    parent->addChild(brightness, "brightness");
    parent->addChild("shade")->addChild(colour.c_str(), "colour");
  }
  void readStateFromTree(TreeNode* parent) override {
    if (parent->getVersion("Lamp") > 2) throw TreeNodeException(TreeNodeException::UnsupportedVersion, "Lamp");
    parent->readChild(isOn, "isOn");
    parent->readChild(brightness, "brightness");
    char* text = nullptr;
    TreeNode* shade = parent->readContainerChild("shade");
    shade->readChild(text, "colour");
    colour = text;
    shade->deleteString(text);
  }
  char* getPersistentState() const override { return VXStrDup(colour.c_str(), VX_RETURN_NULL); }
  void setPersistentState(const char* state) override { colour = state; }

  bool isOn = false;
  float brightness = 0;
  std::string colour;
  VX_CLASS_HEADER(Lamp)
};
VX_CLASS_SOURCE(Lamp, "Base")

// An object that can't be made by name.
class Fixture : public Base {
 public:
  VX_ABSTRACT_CLASS_HEADER(Fixture)
};
VX_ABSTRACT_CLASS_SOURCE(Fixture, "Base")

class TextTreeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    Lamp::initClass("TextTreeTest", nullptr);
    Fixture::initClass("TextTreeTest", nullptr);
  }
  void TearDown() override { Runtime::destroyRuntimeTypesOfDll("TextTreeTest"); }

  std::string writtenText(TreeNode& node) {
    char* text = nullptr;
    node.writeToString(text);
    std::string whole = text;
    node.deleteString(text);
    return whole;
  }

  // Writes the tree and reads it into the other one, which is what all values have to survive.
  void passThroughText() { copy.readFromString(writtenText(tree).c_str()); }

  template <class T>
  T read(const char* name) {
    T value{};
    copy.readChild(value, name);
    return value;
  }

  // The code that a call throws; -1 for none.
  static int codeOf(const std::function<void()>& call) {
    try {
      call();
    } catch (const TreeNodeException& exception) {
      return exception.getCode();
    }
    return -1;
  }

  template <class T>
  int codeOfReading(const char* name) {
    return codeOf([&] { read<T>(name); });
  }

  TextTree tree{TreeNode::WriteMode};
  TextTree copy{TreeNode::ReadMode};
};

TEST_F(TextTreeTest, NumbersOfAllTypesComeBack) {
  tree.addChild(true, "bool");
  tree.addChild('A', "char");
  tree.addChild(static_cast<unsigned char>(255), "unsigned char");
  tree.addChild(short{-32768}, "short");
  tree.addChild(static_cast<unsigned short>(65535), "unsigned short");
  tree.addChild(std::numeric_limits<int>::min(), "int");
  tree.addChild(4294967295U, "unsigned int");
  tree.addChild(std::numeric_limits<long>::min(), "long");
  tree.addChild(std::numeric_limits<unsigned long>::max(), "unsigned long");
  tree.addChild(std::numeric_limits<VXint64>::min(), "VXint64");
  tree.addChild(std::numeric_limits<VXuint64>::max(), "VXuint64");
  tree.addChild(0.1F, "float");
  tree.addChild(-1.25e-300, "double");
  tree.addChild(0.5L, "long double");
  passThroughText();
  EXPECT_TRUE(read<bool>("bool"));
  EXPECT_EQ(read<char>("char"), 'A');
  EXPECT_EQ(read<unsigned char>("unsigned char"), 255);
  EXPECT_EQ(read<short>("short"), -32768);
  EXPECT_EQ(read<unsigned short>("unsigned short"), 65535);
  EXPECT_EQ(read<int>("int"), std::numeric_limits<int>::min());
  EXPECT_EQ(read<unsigned int>("unsigned int"), 4294967295U);
  EXPECT_EQ(read<long>("long"), std::numeric_limits<long>::min());
  EXPECT_EQ(read<unsigned long>("unsigned long"), std::numeric_limits<unsigned long>::max());
  EXPECT_EQ(read<VXint64>("VXint64"), std::numeric_limits<VXint64>::min());
  EXPECT_EQ(read<VXuint64>("VXuint64"), std::numeric_limits<VXuint64>::max());
  EXPECT_EQ(read<float>("float"), 0.1F);
  EXPECT_EQ(read<double>("double"), -1.25e-300);
  EXPECT_EQ(read<long double>("long double"), 0.5L);
}

TEST_F(TextTreeTest, VectorsMatricesAndBoxesComeBack) {
  const TVector<VXint64> position(1, -2, 3, -4, 5, -6);
  const Tvec6<double> corner(0.5, 1, 1.5, 2, 2.5, 3);
  Tmat3<double> mat3 = Tmat3<double>::getIdentity();
  Tmat4<double> mat4 = Tmat4<double>::getIdentity();
  mat3[0][2] = mat4[3][1] = -7.75;
  tree.addChild(Tvec2<double>(1, 2), "vec2");
  tree.addChild(Tvec3<double>(1, 2, 3), "vec3");
  tree.addChild(Tvec4<double>(1, 2, 3, 4), "vec4");
  tree.addChild(corner, "vec6");
  tree.addChild(position, "Vector");
  tree.addChild(mat3, "mat3");
  tree.addChild(mat4, "mat4");
  tree.addChild(TSubImgBox<VXint64>(position, -position), "SubImgBox");
  tree.addChild(SubImgBoxf(corner, -corner), "SubImgBoxf");
  passThroughText();
  EXPECT_EQ(read<Tvec2<double>>("vec2"), Tvec2<double>(1, 2));
  EXPECT_EQ(read<Tvec3<double>>("vec3"), Tvec3<double>(1, 2, 3));
  EXPECT_EQ(read<Tvec4<double>>("vec4"), Tvec4<double>(1, 2, 3, 4));
  EXPECT_EQ(read<Tvec6<double>>("vec6"), corner);
  EXPECT_EQ(read<TVector<VXint64>>("Vector"), position);
  EXPECT_EQ(read<Tmat3<double>>("mat3"), mat3);
  EXPECT_EQ(read<Tmat4<double>>("mat4"), mat4);
  EXPECT_EQ(read<TSubImgBox<VXint64>>("SubImgBox"), TSubImgBox<VXint64>(position, -position));
  EXPECT_EQ(read<SubImgBoxf>("SubImgBoxf"), SubImgBoxf(corner, -corner));
}

TEST_F(TextTreeTest, TextsAndMemoryComeBack) {
  const char* const texts[] = {"", "two words", " blanks around ", "a line\nand \\n another\n", "end"};
  int number = 0;
  for (const char* text : texts) tree.addChild(text, ("text" + std::to_string(number++)).c_str());
  const unsigned char block[] = {0, 1, 0x7f, 0x80, 0xff};
  tree.addChild(block, sizeof block, "block");
  tree.addChild(nullptr, 0, "empty");
  passThroughText();
  number = 0;
  for (const char* text : texts) {
    char* value = read<char*>(("text" + std::to_string(number++)).c_str());
    EXPECT_STREQ(value, text);
    copy.deleteString(value);
  }
  void* memory = nullptr;
  unsigned long size = 0;
  copy.readChild(memory, size, "block");
  ASSERT_EQ(size, sizeof block);
  EXPECT_EQ(std::memcmp(memory, block, size), 0);
  VXFree(memory);
  copy.readChild(memory, size, "empty");
  EXPECT_EQ(size, 0U);
  VXFree(memory);
}

TEST_F(TextTreeTest, ATreeLooksLikeThis) {
  Lamp lamp;
  lamp.isOn = true;
  lamp.brightness = 0.5F;
  lamp.colour = "light\ngreen";
  tree.setVersion("Room", 3);
  tree.addChild("kitchen")->addChild(&lamp, "lamp");
  tree.addChild(&lamp, "2nd lamp", true);
  EXPECT_EQ(writtenText(tree),
            "TextTree 1\n"
            "version Room 3\n"
            "node kitchen \n"
            " object lamp Lamp\n"
            "  version Lamp 2\n"
            "  unsignedLong isOn 1\n"
            "  longDouble brightness 0.5\n"
            "  node shade \n"
            "   text colour light\\ngreen\n"
            "  end\n"
            " end\n"
            "end\n"
            "object _2nd_lamp Lamp\n"
            " text persistentState light\\ngreen\n"
            "end\n");
  passThroughText();
  EXPECT_EQ(writtenText(copy), writtenText(tree));
}

TEST_F(TextTreeTest, ObjectsComeBackIntoOthersAndAsNewOnes) {
  Lamp lamp;
  lamp.isOn = true;
  lamp.brightness = 2;
  lamp.colour = "red";
  tree.addChild(&lamp, "tree");
  tree.addChild(&lamp, "text", true);
  passThroughText();

  Lamp other;
  copy.readChild(other, "tree");
  EXPECT_TRUE(other.isOn);
  EXPECT_EQ(other.brightness, 2);
  EXPECT_EQ(other.colour, "red");

  const std::unique_ptr<Base> made(copy.readBaseChild("text"));
  ASSERT_STREQ(made->getTypeIdName(), "Lamp");
  EXPECT_EQ(static_cast<Lamp&>(*made).colour, "red");
  EXPECT_FALSE(static_cast<Lamp&>(*made).isOn);
}

TEST_F(TextTreeTest, ObjectsThatCannotBeHandledFail) {
  const Base* none = nullptr;
  EXPECT_EQ(codeOf([&] { tree.addChild(none, "none"); }), 3);
  const Fixture fixture;
  tree.addChild(&fixture, "fixture");
  tree.addChild(1, "number");
  passThroughText();
  EXPECT_EQ(codeOfReading<Base*>("fixture"), 4);
  EXPECT_EQ(codeOfReading<Base*>("number"), 4);
  EXPECT_EQ(codeOf([&] { read<Lamp>("fixture"); }), 4);
  EXPECT_EQ(codeOf([&] { copy.readBaseChild("missing"); }), 2);
}

TEST_F(TextTreeTest, AVersionThatAClassDoesNotKnowIsRefused) {
  EXPECT_EQ(codeOf([&] { tree.getVersion("Lamp"); }), 2);
  tree.setVersion("Lamp", 1);
  EXPECT_EQ(tree.getVersion("Lamp"), 1);
  copy.readFromString("TextTree 1\nobject lamp Lamp\n version Lamp 3\nend\n");
  EXPECT_EQ(codeOf([&] { read<Lamp>("lamp"); }), 31);
  EXPECT_EQ(codeOfReading<Base*>("lamp"), 31);
}

TEST_F(TextTreeTest, NamesAreCorrected) {
  const struct {
    const char* name;
    const char* correct;
  } table[] = {{"name", "name"}, {"_a9", "_a9"},           {"two words", "two_words"},
               {"1st", "_1st"},  {"caf\xc3\xa9", "caf__"}, {"", "_"},
               {nullptr, "_"},   {"a\nb", "a_b"}};
  for (const auto& line : table) {
    char* correct = tree.correctName(line.name);
    EXPECT_STREQ(correct, line.correct);
    EXPECT_TRUE(tree.isCorrectName(correct));
    EXPECT_EQ(tree.isCorrectName(line.name), line.name && std::string(line.name) == line.correct);
    tree.deleteString(correct);
  }
  tree.addChild(5, "my value");
  passThroughText();
  EXPECT_TRUE(copy.hasChild("my value"));
  EXPECT_TRUE(copy.hasChild("my_value"));
  EXPECT_FALSE(copy.hasChild("myvalue"));
  EXPECT_EQ(read<int>("my value"), 5);
  EXPECT_STREQ(copy.getLastReadChildName(), "my_value");
}

TEST_F(TextTreeTest, ChildrenAreReadInTurnWithoutTheirNames) {
  tree.addChild(1, "a");
  tree.addChild(2, "b");
  tree.addChild(3, "b");
  passThroughText();
  EXPECT_EQ(read<int>(nullptr), 1);
  EXPECT_EQ(read<int>(nullptr), 2);
  EXPECT_EQ(read<int>(nullptr), 3);
  EXPECT_STREQ(copy.getLastReadChildName(), "b");
  EXPECT_EQ(codeOfReading<int>(nullptr), 26);
  EXPECT_EQ(read<int>("a"), 1);
  EXPECT_EQ(read<int>(nullptr), 2);
}

TEST_F(TextTreeTest, AFailedReadHasTheCodeOfItsTypeAndLeavesTheValue) {
  tree.addChild("no number", "text");
  tree.addChild("node");
  passThroughText();
  EXPECT_EQ(codeOfReading<unsigned long>("text"), 11);
  EXPECT_EQ(codeOfReading<long>("text"), 12);
  EXPECT_EQ(codeOfReading<int>("text"), 12);
  EXPECT_EQ(codeOfReading<bool>("text"), 12);
  EXPECT_EQ(codeOfReading<float>("text"), 15);
  EXPECT_EQ(codeOfReading<double>("text"), 15);
  EXPECT_EQ(codeOfReading<long double>("text"), 15);
  EXPECT_EQ(codeOfReading<char*>("node"), 16);
  EXPECT_EQ(codeOfReading<Tvec2<double>>("text"), 17);
  EXPECT_EQ(codeOfReading<Tvec3<double>>("text"), 18);
  EXPECT_EQ(codeOfReading<Tvec4<double>>("text"), 19);
  EXPECT_EQ(codeOfReading<Tvec6<double>>("text"), 20);
  EXPECT_EQ(codeOfReading<TVector<VXint64>>("text"), 21);
  EXPECT_EQ(codeOfReading<Tmat3<double>>("text"), 22);
  EXPECT_EQ(codeOfReading<Tmat4<double>>("text"), 23);
  EXPECT_EQ(codeOfReading<TSubImgBox<VXint64>>("text"), 24);
  EXPECT_EQ(codeOfReading<SubImgBoxf>("text"), 25);
  EXPECT_EQ(codeOfReading<TreeNode*>("text"), 27);
  EXPECT_EQ(codeOfReading<VXint64>("text"), 33);
  EXPECT_EQ(codeOfReading<VXuint64>("text"), 34);
  EXPECT_EQ(codeOfReading<int>("missing"), 2);
  int value = 5;
  EXPECT_EQ(codeOf([&] { copy.readChild(value, "text"); }), 12);
  EXPECT_EQ(value, 5);
  void* memory = nullptr;
  unsigned long size = 0;
  EXPECT_EQ(codeOf([&] { copy.readChild(memory, size, "text"); }), 16);
}

TEST_F(TextTreeTest, AFileHoldsTheText) {
  const std::string fileName = ::testing::TempDir() + "vxTextTree.txt";
  tree.addChild(5, "value");
  tree.writeToFile(fileName.c_str());
  copy.readFromFile(fileName.c_str());
  EXPECT_EQ(read<int>("value"), 5);
  std::remove(fileName.c_str());
  EXPECT_EQ(codeOf([&] { copy.readFromFile(fileName.c_str()); }), 28);
  EXPECT_EQ(codeOf([&] { copy.readFromFile(::testing::TempDir().c_str()); }), 29);
  EXPECT_EQ(codeOf([&] { tree.writeToFile((fileName + "/below").c_str()); }), 30);
  EXPECT_EQ(read<int>("value"), 5);
}

TEST_F(TextTreeTest, ATextThatIsNoTreeIsRefusedAndChangesNothing) {
  tree.addChild(5, "value");
  passThroughText();
  std::string nested = "TextTree 1\n";
  for (int i = 0; i < 5000; ++i) nested += "node n \n";
  for (const std::string& text : {std::string(), std::string("TextTree 2\n"), std::string("TextTree 1\nend\n"),
                                  std::string("TextTree 1\nnode n \n"), std::string("TextTree 1\nlong 1st 5\n"),
                                  std::string("TextTree 1\nversion A x\n"), nested}) {
    EXPECT_EQ(codeOf([&] { copy.readFromString(text.c_str()); }), 29) << text.substr(0, 40);
    EXPECT_EQ(read<int>("value"), 5);
  }
  EXPECT_EQ(codeOf([&] { copy.readFromString(nullptr); }), 29);
}

TEST_F(TextTreeTest, MutatedTextsAreReadOrRefused) {
  Lamp lamp;
  tree.addChild("kitchen")->addChild(&lamp, "lamp");
  tree.addChild(Tvec3<double>(1, 2, 3), "vec3");
  tree.addChild("a\nb", "text");
  const std::string whole = writtenText(tree);
  std::mt19937 random(1);
  for (int i = 0; i < 5000; ++i) {
    std::string text = whole;
    for (std::size_t changes = 1 + random() % 3; changes > 0; --changes) {
      text[random() % text.size()] = static_cast<char>(1 + random() % 255);
    }
    const int code = codeOf([&] { copy.readFromString(text.c_str()); });
    ASSERT_TRUE(code == -1 || code == 29) << text;
    codeOf([&] { read<Tvec3<double>>("vec3"); });
    codeOf([&] { delete copy.readContainerChild("kitchen")->readBaseChild("lamp"); });
  }
}

}  // namespace
}  // namespace vx::test
