// The module library as a whole: what it registers, how it comes and goes, and what any text in any field does.

#include "ModuleFixture.h"

#include <algorithm>

namespace vx::test {
namespace {

const char* const moduleNames[] = {"Arithmetic", "Convolution", "GradientMagnitude", "ImageStatistics",
                                   "Median",     "NiftiLoad",   "Projection",        "RawLoad",
                                   "Reformat",   "Resample",    "ScaleShift",        "SubImage",
                                   "Switch",     "TestPattern", "Threshold"};

class StandardModulesLibraryTest : public ModuleFixture {};

TEST_F(StandardModulesLibraryTest, ItRegistersItsModulesAndNothingElse) {
  std::vector<std::string> names;
  const RuntimeType* const source = Runtime::fromName("TestPattern");
  ASSERT_NE(source, nullptr);
  for (const RuntimeType* type = Runtime::getFirstEntry(); type; type = Runtime::getNextEntry()) {
    if (std::string(type->getDllName()) == source->getDllName()) names.push_back(type->getName());
  }
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, std::vector<std::string>(std::begin(moduleNames), std::end(moduleNames)));
  for (const char* name : moduleNames)
    EXPECT_EQ(Runtime::fromName(name)->getParent(), BaseOp::getClassTypeId()) << name;
}

TEST_F(StandardModulesLibraryTest, ModulesAreMadeAndDestroyedWithoutAWord) {
  const VXint64 numBefore = BaseOp::getNumBaseOps();
  for (const char* name : moduleNames) {
    const auto op = make(name);
    ASSERT_NE(op, nullptr);
    EXPECT_EQ(op->whoAmI(false), name);
    const FieldContainer& fields = *op->getFieldContainer();
    for (VXint64 i = 0; i < fields.getSize(); ++i) EXPECT_NE(fields.getField(i)->isValidValue(), 0) << name << " " << i;
  }
  EXPECT_EQ(BaseOp::getNumBaseOps(), numBefore);
}

TEST_F(StandardModulesLibraryTest, AnyTextInAnyFieldGivesAnImageOrAStateThatSaysWhy) {
  const char* const texts[] = {"",
                               "0",
                               "1",
                               "-1",
                               "2",
                               "1e300",
                               "-1e300",
                               "nan",
                               "-nan",
                               "inf",
                               "1e18",
                               "-9e18",
                               "3000000000",
                               "0.1",
                               "abc",
                               "%n%s",
                               "0 0 0 0 0 0",
                               "1 1 1 1 1 1",
                               "-5 -5 -5 -5 -5 -5 9 9 9 9 9 9",
                               "1e9 1e9 1e9 1e9 1e9 1e9",
                               "7 7 7 7 7 7",
                               "1e-30 1 1 1 1 1",
                               "zyxctu",
                               "/dev/null",
                               "/dev/zero",
                               "1000",
                               "65536"};
  const Image image = randomImage({9, 8, 7, 2, 2, 2}, VXint16Type, 5);
  ImageSource source(image, {4, 4, 4, 1, 1, 1});
  for (const char* name : moduleNames) {
    const auto reference = make(name);
    const auto numFields = static_cast<VXint64>(reference->getFieldContainer()->getSize());
    for (VXint64 i = 0; i < numFields; ++i) {
      for (const char* value : texts) {
        const auto op = make(name);
        for (VXint64 in = 0; in < op->getInputNum(); ++in) connect(*op, in, source);
        const Field* const field = op->getFieldContainer()->getField(i);
        op->getFieldContainer()->setValue(i, value);
        messages.take();  // fields report texts that they don't know
        if (op->getOutputNum() == 0) continue;
        const PagedImg& out = *op->getOutImg(0);
        if (BaseOp::updateImageProps(op.get(), 0) != 0) {
          EXPECT_FALSE(out.getStateInfoString().empty()) << name << " field " << field->getStringValue();
          continue;
        }
        void* data = nullptr;
        const Vector last = out.getImgExt() - Vector(1);
        EXPECT_EQ(BaseOp::getTile(op.get(), 0, SubImgBox(last, last), VXdoubleType, &data), 0) << name << " " << value;
        BaseOp::freeTile(data);
        messages.take();  // a huge image has its page extent adapted
      }
    }
  }
}

TEST_F(StandardModulesLibraryTest, ItStaysWhileModulesLive) {
  const std::string library = Runtime::fromName("TestPattern")->getDllName();
  void* handle = nullptr;
  ASSERT_EQ(VXLoadLibraryWOErrorExt(library.c_str(), &handle), 0);
  const auto op = make("TestPattern");
  EXPECT_EQ(VXUnLoadLibrary(library.c_str(), handle, nullptr, 0), VX_LIBRARY_IN_USE);
  messages.take();
}

}  // namespace
}  // namespace vx::test
