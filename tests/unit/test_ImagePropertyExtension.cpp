#include "vxImagePropertyExtension.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <utility>

namespace vx::test {
namespace {

class TextExtension : public ImagePropertyExtension {
 public:
  explicit TextExtension(std::string value = {}) : text(std::move(value)) {}
  std::unique_ptr<ImagePropertyExtension> clone() const override { return std::make_unique<TextExtension>(*this); }
  bool equals(const ImagePropertyExtension& other) const override {
    const auto* same = dynamic_cast<const TextExtension*>(&other);
    return same && same->text == text;
  }
  VX_CLASS_HEADER(TextExtension)

  std::string text;
};
VX_CLASS_SOURCE(TextExtension, "ImagePropertyExtension")

class LabelExtension : public TextExtension {
 public:
  using TextExtension::TextExtension;
  std::unique_ptr<ImagePropertyExtension> clone() const override { return std::make_unique<LabelExtension>(*this); }
  VX_CLASS_HEADER(LabelExtension)
};
VX_CLASS_SOURCE(LabelExtension, "TextExtension")

class ImagePropertyExtensionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ImagePropertyExtensionContainer::initClass(nullptr, nullptr);
    ImagePropertyExtension::initClass(nullptr, nullptr);
    TextExtension::initClass("Extensions", nullptr);
    LabelExtension::initClass("Extensions", nullptr);
  }
  void TearDown() override { Runtime::destroyRuntimeTypesOfDll("Extensions"); }

  static ImagePropertyExtensionContainer filled() {
    ImagePropertyExtensionContainer container;
    container.appendEntry(std::make_unique<TextExtension>("first"));
    container.appendEntry(std::make_unique<LabelExtension>("label"));
    return container;
  }
};

TEST_F(ImagePropertyExtensionTest, ClassesStandBelowBase) {
  EXPECT_STREQ(ImagePropertyExtension::getClassTypeId()->getParentName(), "Base");
  EXPECT_TRUE(ImagePropertyExtension::getClassTypeId()->isAbstract());
  EXPECT_STREQ(ImagePropertyExtensionContainer::getClassTypeId()->getParentName(), "Base");
  EXPECT_FALSE(ImagePropertyExtensionContainer::getClassTypeId()->isAbstract());
}

TEST_F(ImagePropertyExtensionTest, TheFirstEntryOfAClassOrDerivedFromItIsFound) {
  const ImagePropertyExtensionContainer container = filled();
  EXPECT_EQ(container.getFirstEntryOfType(TextExtension::getClassTypeId()), container.getEntry(0));
  EXPECT_EQ(container.getFirstEntryOfType(ImagePropertyExtension::getClassTypeId()), container.getEntry(0));
  EXPECT_EQ(container.getFirstEntryOfType(LabelExtension::getClassTypeId()), container.getEntry(1));
  EXPECT_EQ(container.getFirstEntryOfType(ImagePropertyExtensionContainer::getClassTypeId()), nullptr);
  EXPECT_EQ(container.getFirstEntryOfType(nullptr), nullptr);
}

TEST_F(ImagePropertyExtensionTest, CopiesAreDeepAndKeepTheClass) {
  ImagePropertyExtensionContainer copy;
  copy.appendEntry(std::make_unique<TextExtension>("goes away"));
  {
    const ImagePropertyExtensionContainer original = filled();
    copy = original;
    EXPECT_NE(copy.getEntry(0), original.getEntry(0));
    EXPECT_TRUE(copy == original);
    EXPECT_FALSE(copy != original);
  }
  ASSERT_EQ(copy.getNumEntries(), 2U);
  EXPECT_EQ(static_cast<const TextExtension*>(copy.getEntry(0))->text, "first");
  EXPECT_STREQ(copy.getEntry(1)->getTypeIdName(), "LabelExtension");
  const ImagePropertyExtensionContainer& self = copy;
  copy = self;
  EXPECT_EQ(copy.getNumEntries(), 2U);
}

TEST_F(ImagePropertyExtensionTest, ComparisonGoesElementByElement) {
  ImagePropertyExtensionContainer a = filled();
  ImagePropertyExtensionContainer b = filled();
  EXPECT_TRUE(a == b);
  b.appendEntry(std::make_unique<TextExtension>("third"));
  EXPECT_FALSE(a == b);
  EXPECT_FALSE(b == a);
  a.appendEntry(std::make_unique<TextExtension>("other"));
  EXPECT_TRUE(a != b);
}

TEST_F(ImagePropertyExtensionTest, ExtensionsOfDifferentClassesAreNeverEqual) {
  ImagePropertyExtensionContainer texts;
  texts.appendEntry(std::make_unique<TextExtension>("same"));
  ImagePropertyExtensionContainer labels;
  labels.appendEntry(std::make_unique<LabelExtension>("same"));
  EXPECT_FALSE(texts == labels);
  EXPECT_FALSE(labels == texts);
}

TEST_F(ImagePropertyExtensionTest, EmptyContainersAreEqualAndNullIsNotAdded) {
  ImagePropertyExtensionContainer container;
  container.appendEntry(nullptr);
  EXPECT_EQ(container.getNumEntries(), 0U);
  EXPECT_EQ(container.getEntry(0), nullptr);
  EXPECT_TRUE(container == ImagePropertyExtensionContainer());
  container = filled();
  container.clear();
  EXPECT_EQ(container.getNumEntries(), 0U);
}

}  // namespace
}  // namespace vx::test
