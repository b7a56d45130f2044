#include "CAPIFixture.h"

#include "vxDicomTagList.h"
#include "vxImagePropertyExtension.h"
#include "vxPagedImg.h"

#include <array>
#include <memory>

namespace vx::test {
namespace {

// An extension that holds nothing.
class Note : public ImagePropertyExtension {
 public:
  std::unique_ptr<ImagePropertyExtension> clone() const override { return std::make_unique<Note>(); }
  bool equals(const ImagePropertyExtension& /*other*/) const override { return true; }
  VX_CLASS_HEADER(Note)
};
VX_CLASS_SOURCE(Note, "ImagePropertyExtension")

class EmptyList : public DicomTagList {
 public:
  void ref() override {}
  void unref() override {}
};

class CAPIImagesTest : public CAPITest {
 protected:
  CAPIImagesTest() { Note::initClass("CAPITest", nullptr); }

  void invalidate() { VXModuleSetFieldValue(source.get(), "isValid", "0"); }

  ModulePtr source = makeModule("RampModule");
  ModulePtr stage = makeModule("PassModule");
  Field* out = VXModuleGetField(source.get(), "output0");
  Field* open = VXModuleGetField(stage.get(), "output0");
};

constexpr char paramsLabel[] = "vxAPI: _VXGetOutputParams";
constexpr char paramsReason[] = "Invalid outField pointer or type. ";

std::string wrongClass(const std::string& reason) {
  return reason +
         " The field must be initialized an it should be of type OutputConnectorField (or derived from it), but it "
         "seems to be of type StringField.";
}

// Extents

using Size = std::array<int, 6>;
using SizeFunction = VXErrorCode (*)(Field*, int*, int*, int*, int*, int*, int*);

VXErrorCode call(SizeFunction function, Field* field, Size& size) {
  return function(field, &size[0], &size[1], &size[2], &size[3], &size[4], &size[5]);
}

TEST_F(CAPIImagesTest, TheExtentsOfImageAndPagesAreTold) {
  Size size = {-1, -1, -1, -1, -1, -1};
  EXPECT_EQ(call(&VXImageGetSize6D, out, size), 0);
  EXPECT_EQ(size, (Size{20, 10, 3, 2, 2, 2}));
  EXPECT_EQ(call(&VXImageGetPageSize6D, out, size), 0);
  EXPECT_EQ(size, (Size{8, 8, 1, 1, 1, 1}));
  Size four = {-1, -1, -1, -1, -1, -1};
  EXPECT_EQ(VXImageGetSize(out, &four[0], &four[1], &four[2], &four[3]), 0);
  EXPECT_EQ(four, (Size{20, 10, 3, 2, -1, -1}));
  expectSilence();
}

TEST_F(CAPIImagesTest, ABadImageHasExtentZero) {
  struct Function {
    SizeFunction function;
    const char* label;
  };
  for (const Function& f :
       {Function{&VXImageGetSize6D, "VXImageGetSize6D"}, Function{&VXImageGetPageSize6D, "VXImageGetPageSize6D"}}) {
    Size size = {1, 2, 3, 4, 5, 6};
    EXPECT_EQ(call(f.function, nullptr, size), 7);
    EXPECT_EQ(size, (Size{}));
    expectRefusal(7, paramsLabel, paramsReason);
    size = {1, 2, 3, 4, 5, 6};
    EXPECT_EQ(call(f.function, VXModuleGetField(source.get(), "instanceName"), size), 7);
    EXPECT_EQ(size, (Size{}));
    expectRefusal(29, paramsLabel, wrongClass(paramsReason));
    size = {1, 2, 3, 4, 5, 6};
    EXPECT_EQ(call(f.function, open, size), 3) << "an open input";
    EXPECT_EQ(size, (Size{}));
    expectSilence();
    for (int missing = 0; missing < 6; ++missing) {
      size = {1, 2, 3, 4, 5, 6};
      std::array<int*, 6> p{};
      for (int i = 0; i < 6; ++i)
        p[static_cast<std::size_t>(i)] = i == missing ? nullptr : &size[static_cast<std::size_t>(i)];
      EXPECT_EQ(f.function(out, p[0], p[1], p[2], p[3], p[4], p[5]), 19);
      EXPECT_EQ(size, (Size{1, 2, 3, 4, 5, 6})) << "nothing is written";
      expectRefusal(19, f.label, "Invalid x,y,z,c,t or u pointer. Ignoring call and returning VX_BAD_PARAMETER.");
    }
  }
  int x = 1;
  EXPECT_EQ(VXImageGetSize(nullptr, &x, &x, &x, &x), 7);
  EXPECT_EQ(x, 0);
  expectRefusal(7, paramsLabel, paramsReason);
  EXPECT_EQ(VXImageGetSize(out, &x, &x, &x, nullptr), 19);
  expectRefusal(19, "VXImageGetSize6D",
                "Invalid x,y,z,c,t or u pointer. Ignoring call and returning VX_BAD_PARAMETER.");
}

TEST_F(CAPIImagesTest, ALargeExtentIsCutTo32Bits) {
  PagedImg& image = *source->getOutImg(0);
  image.setUpToDate();
  image.ImageProperties::setImgExt(TVector<VXint64>(0x100000005LL, 1, 1, 1, 1, 0xffffffffLL));
  Size size{};
  EXPECT_EQ(call(&VXImageGetSize6D, out, size), 0);
  EXPECT_EQ(size, (Size{5, 1, 1, 1, 1, -1}));
  image.ImageProperties::setImgExt(TVector<VXint64>(1));
}

// Voxels

TEST_F(CAPIImagesTest, TypeSizeAndRangeOfVoxelsAreTold) {
  int type = -1;
  int bytes = -1;
  EXPECT_EQ(VXImageGetType(out, &type, &bytes), 0);
  EXPECT_EQ(type, VXint32Type);
  EXPECT_EQ(bytes, 4);
  float x = -1;
  float y = -1;
  float z = -1;
  EXPECT_EQ(VXImageGetVoxelSize(out, &x, &y, &z), 0);
  EXPECT_EQ(x, 2.0F);
  EXPECT_EQ(y, 3.0F);
  EXPECT_EQ(z, 4.0F);
  double value = -1;
  EXPECT_EQ(VXImageGetMinValue(out, &value), 0);
  EXPECT_EQ(value, -5.0);
  EXPECT_EQ(VXImageGetMaxValue(out, &value), 0);
  EXPECT_EQ(value, 222.0);
  expectSilence();
}

TEST_F(CAPIImagesTest, ABadImageLeavesTypeAndBytes) {
  invalidate();
  int type = -7;
  int bytes = -8;
  EXPECT_EQ(VXImageGetType(out, &type, &bytes), 10);
  EXPECT_EQ(VXImageGetType(open, &type, &bytes), 3);
  expectSilence();
  EXPECT_EQ(VXImageGetType(nullptr, &type, &bytes), 7);
  expectRefusal(7, paramsLabel, paramsReason);
  constexpr char reason[] = "Invalid dType or dSize pointer. Ignoring call and returning VX_BAD_PARAMETER.";
  EXPECT_EQ(VXImageGetType(out, nullptr, &bytes), 19);
  expectRefusal(19, "VXImageGetType", reason);
  EXPECT_EQ(VXImageGetType(out, &type, nullptr), 19);
  expectRefusal(19, "VXImageGetType", reason);
  EXPECT_EQ(type, -7);
  EXPECT_EQ(bytes, -8);
}

TEST_F(CAPIImagesTest, ABadImageHasVoxelsOfSizeZero) {
  invalidate();
  float x = 1;
  float y = 1;
  float z = 1;
  constexpr char reason[] = "Invalid x,y or z pointer. Ignoring call and returning VX_BAD_PARAMETER.";
  EXPECT_EQ(VXImageGetVoxelSize(out, nullptr, &y, &z), 19);
  expectRefusal(19, "VXImageGetVoxelSize", reason);
  EXPECT_EQ(VXImageGetVoxelSize(out, &x, nullptr, &z), 19);
  expectRefusal(19, "VXImageGetVoxelSize", reason);
  EXPECT_EQ(VXImageGetVoxelSize(out, &x, &y, nullptr), 19);
  expectRefusal(19, "VXImageGetVoxelSize", reason);
  EXPECT_EQ(x + y + z, 3.0F);
  EXPECT_EQ(VXImageGetVoxelSize(out, &x, &y, &z), 10);
  EXPECT_EQ(x, 0.0F);
  EXPECT_EQ(y, 0.0F);
  EXPECT_EQ(z, 0.0F);
  x = 1;
  EXPECT_EQ(VXImageGetVoxelSize(nullptr, &x, &y, &z), 7);
  EXPECT_EQ(x, 0.0F);
  expectRefusal(7, paramsLabel, paramsReason);
}

TEST_F(CAPIImagesTest, ABadImageHasARangeOfZero) {
  struct Function {
    VXErrorCode (*function)(Field*, double*);
    std::string name;
    std::string output;
  };
  for (const Function& f : {Function{&VXImageGetMinValue, "VXImageGetMinValue", "minValue"},
                            Function{&VXImageGetMaxValue, "VXImageGetMaxValue", "maxValue"}}) {
    const std::string reason =
        "Invalid outField pointer or type. Setting *" + f.output + " to 0 and returning VX_BAD_FIELD.";
    double value = 1;
    EXPECT_EQ(f.function(open, &value), 3);
    EXPECT_EQ(value, 0.0);
    expectSilence();
    value = 1;
    EXPECT_EQ(f.function(nullptr, &value), 7);
    EXPECT_EQ(value, 0.0);
    expectRefusal(7, "vxAPI: " + f.name, reason);
    value = 1;
    EXPECT_EQ(f.function(VXModuleGetField(source.get(), "instanceName"), &value), 7);
    EXPECT_EQ(value, 0.0);
    expectRefusal(29, "vxAPI: " + f.name, wrongClass(reason));
    EXPECT_EQ(f.function(nullptr, nullptr), 7);
    expectRefusal(7, "vxAPI: " + f.name, reason);
    EXPECT_EQ(f.function(out, nullptr), 19);
    expectRefusal(19, f.name, "Invalid " + f.output + " pointer. Ignoring call and returning VX_BAD_PARAMETER.");
  }
}

// Position in space

using Matrix = std::array<float, 16>;

TEST_F(CAPIImagesTest, TheMatricesAreTold) {
  Matrix matrix{};
  EXPECT_EQ(VXImageGetVoxelToWorldMatrix(out, matrix.data()), 0);
  EXPECT_EQ(matrix, (Matrix{2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1}));
  EXPECT_EQ(VXImageGetWorldToVoxelMatrix(out, matrix.data()), 0);
  EXPECT_EQ(matrix, (Matrix{0.5F, 0, 0, 0, 0, 1.0F / 3, 0, 0, 0, 0, 0.25F, 0, 0, 0, 0, 1}));
  expectSilence();
}

TEST_F(CAPIImagesTest, ABadImageLeavesTheMatrix) {
  struct Function {
    VXErrorCode (*function)(Field*, float*);
    std::string name;
  };
  constexpr char reason[] = "Invalid outField pointer or type. Leaving *mat unchanged and returning VX_BAD_FIELD.";
  for (const Function& f : {Function{&VXImageGetVoxelToWorldMatrix, "VXImageGetVoxelToWorldMatrix"},
                            Function{&VXImageGetWorldToVoxelMatrix, "VXImageGetWorldToVoxelMatrix"}}) {
    Matrix matrix;
    matrix.fill(7);
    const Matrix before = matrix;
    EXPECT_EQ(f.function(open, matrix.data()), 3);
    expectSilence();
    EXPECT_EQ(f.function(nullptr, matrix.data()), 7);
    expectRefusal(7, "vxAPI: " + f.name, reason);
    EXPECT_EQ(f.function(VXModuleGetField(source.get(), "instanceName"), matrix.data()), 7);
    expectRefusal(29, "vxAPI: " + f.name, wrongClass(reason));
    EXPECT_EQ(matrix, before);
    EXPECT_EQ(f.function(out, nullptr), 19);
    expectRefusal(19, f.name, "Invalid mat pointer. Ignoring call and returning VX_BAD_PARAMETER.");
  }
}

using Point = std::array<float, 3>;

TEST_F(CAPIImagesTest, CoordinatesAreMapped) {
  Point p{};
  EXPECT_EQ(VXImageMapVoxelToWorld(out, 1, 2, 3, &p[0], &p[1], &p[2]), 0);
  EXPECT_EQ(p, (Point{2, 6, 12}));
  EXPECT_EQ(VXImageMapWorldToVoxel(out, 2, 6, 12, &p[0], &p[1], &p[2]), 0);
  EXPECT_EQ(p, (Point{1, 2, 3}));
  expectSilence();
}

TEST_F(CAPIImagesTest, ABadImageLeavesTheDestinations) {
  using Function = VXErrorCode (*)(Field*, float, float, float, float*, float*, float*);
  constexpr char reason[] =
      "Invalid outField pointer or type. Leaving *dstX, *dstY and *dstZ unchanged and returning VX_BAD_FIELD.";
  constexpr char pointerReason[] = "Invalid dstX,dstY or dstZ pointer. Ignoring call and returning VX_BAD_PARAMETER.";
  struct Case {
    Function function;
    std::string name;
  };
  for (const Case& c : {Case{&VXImageMapVoxelToWorld, "VXImageMapVoxelToWorld"},
                        Case{&VXImageMapWorldToVoxel, "VXImageMapWorldToVoxel"}}) {
    Point p = {7, 8, 9};
    EXPECT_EQ(c.function(open, 1, 2, 3, &p[0], &p[1], &p[2]), 3);
    expectSilence();
    EXPECT_EQ(c.function(nullptr, 1, 2, 3, &p[0], &p[1], &p[2]), 7);
    expectRefusal(7, "vxAPI: " + c.name, reason);
    EXPECT_EQ(c.function(VXModuleGetField(source.get(), "instanceName"), 1, 2, 3, &p[0], &p[1], &p[2]), 7);
    expectRefusal(29, "vxAPI: " + c.name, wrongClass(reason));
    EXPECT_EQ(c.function(out, 1, 2, 3, nullptr, &p[1], &p[2]), 19);
    expectRefusal(19, c.name, pointerReason);
    EXPECT_EQ(c.function(out, 1, 2, 3, &p[0], nullptr, &p[2]), 19);
    expectRefusal(19, c.name, pointerReason);
    EXPECT_EQ(c.function(nullptr, 1, 2, 3, &p[0], &p[1], nullptr), 19) << "before the field";
    expectRefusal(19, c.name, pointerReason);
    EXPECT_EQ(p, (Point{7, 8, 9}));
  }
}

// Extensions and tag lists

TEST_F(CAPIImagesTest, TheFirstExtensionOfAClassIsFound) {
  int size = 0;
  VXImageGetType(out, &size, &size);
  ImagePropertyExtensionContainer& extensions = source->getOutImg(0)->getImagePropertyContainer();
  extensions.appendEntry(std::make_unique<Note>());
  const ImagePropertyExtension* found = nullptr;
  for (const char* const name : {"Note", "ImagePropertyExtension"}) {
    found = nullptr;
    EXPECT_EQ(VXImageGetFirstImagePropertyExtensionByType(out, name, &found), 0);
    EXPECT_EQ(found, extensions.getEntry(0));
  }
  const auto* const sentinel = found;
  for (const char* const name : {"NoSuchClass", "", "BaseOp"}) {
    EXPECT_EQ(VXImageGetFirstImagePropertyExtensionByType(out, name, &found), 0);
    EXPECT_EQ(found, sentinel) << "stored only if there is one";
  }
  expectSilence();
}

TEST_F(CAPIImagesTest, ABadImageHasNoExtension) {
  constexpr char label[] = "vxAPI: VXImageGetDicomTagList";
  constexpr char reason[] =
      "Invalid outField pointer or type. Setting *imagePropertyExtension to NULL and returning VX_BAD_FIELD.";
  const Note note;
  const ImagePropertyExtension* found = &note;
  EXPECT_EQ(VXImageGetFirstImagePropertyExtensionByType(open, "Note", &found), 3);
  EXPECT_EQ(found, nullptr);
  expectSilence();
  found = &note;
  EXPECT_EQ(VXImageGetFirstImagePropertyExtensionByType(nullptr, "Note", &found), 7);
  EXPECT_EQ(found, nullptr);
  expectRefusal(7, label, reason);
  found = &note;
  EXPECT_EQ(VXImageGetFirstImagePropertyExtensionByType(VXModuleGetField(source.get(), "instanceName"), "Note", &found),
            7);
  EXPECT_EQ(found, nullptr);
  expectRefusal(29, label, wrongClass(reason));
  EXPECT_EQ(VXImageGetFirstImagePropertyExtensionByType(nullptr, "Note", nullptr), 7);
  expectRefusal(7, label, reason);
  constexpr char pointerReason[] =
      "Invalid imagePropertyTypeClassName or imagePropertyExtension pointer. Ignoring call and returning "
      "VX_BAD_PARAMETER.";
  found = &note;
  EXPECT_EQ(VXImageGetFirstImagePropertyExtensionByType(out, nullptr, &found), 19);
  EXPECT_EQ(found, &note) << "nothing is written";
  expectRefusal(19, "VXImageGetFirstImagePropertyExtensionByType", pointerReason);
  EXPECT_EQ(VXImageGetFirstImagePropertyExtensionByType(out, "Note", nullptr), 19);
  expectRefusal(19, "VXImageGetFirstImagePropertyExtensionByType", pointerReason);
}

TEST_F(CAPIImagesTest, TheTagListIsTold) {
  EmptyList list;
  const DicomTagList* found = &list;
  EXPECT_EQ(VXImageGetDicomTagList(out, &found), 0);
  EXPECT_EQ(found, nullptr);
  source->getOutImg(0)->setDicomTagList(&list);
  EXPECT_EQ(VXImageGetDicomTagList(out, &found), 0);
  EXPECT_EQ(found, &list);
  EXPECT_EQ(VXImageGetDicomTagList(open, &found), 3);
  EXPECT_EQ(found, nullptr);
  expectSilence();
  constexpr char reason[] = "Invalid outField pointer or type. Setting *tagList to NULL and returning VX_BAD_FIELD.";
  found = &list;
  EXPECT_EQ(VXImageGetDicomTagList(nullptr, &found), 7);
  EXPECT_EQ(found, nullptr);
  expectRefusal(7, "vxAPI: VXImageGetDicomTagList", reason);
  EXPECT_EQ(VXImageGetDicomTagList(nullptr, nullptr), 7);
  expectRefusal(7, "vxAPI: VXImageGetDicomTagList", reason);
  EXPECT_EQ(VXImageGetDicomTagList(out, nullptr), 19);
  expectRefusal(19, "VXImageGetDicomTagList", "Invalid tagList pointer. Ignoring call and returning VX_BAD_PARAMETER.");
  source->getOutImg(0)->setDicomTagList(nullptr);
}

// State

TEST_F(CAPIImagesTest, TheStateOfAnImageIsTold) {
  EXPECT_EQ(VXGetImageState(out), 0);
  EXPECT_STREQ(VXGetImageStateString(out), VXGetErrorCodeDescription(0));
  EXPECT_EQ(VXGetImageState(open), 3);
  EXPECT_STREQ(VXGetImageStateString(open), VXGetErrorCodeDescription(3));
  invalidate();
  EXPECT_EQ(VXGetImageState(out), 10);
  EXPECT_STREQ(VXGetImageStateString(out), VXGetErrorCodeDescription(10));
  EXPECT_STREQ(VXGetImageStateString(nullptr), VXGetErrorCodeDescription(3));
  expectSilence();
  EXPECT_EQ(VXGetImageState(nullptr), 7);
  expectRefusal(7, paramsLabel, paramsReason);
  EXPECT_STREQ(VXGetImageStateString(VXModuleGetField(source.get(), "instanceName")), VXGetErrorCodeDescription(7));
  expectRefusal(29, paramsLabel, wrongClass(paramsReason));
}

// Memory

TEST_F(CAPIImagesTest, PagesAreMeasuredAndCleared) {
  unsigned int bytes = 7;
  EXPECT_EQ(VXGetPageMemorySize(out, &bytes), 0);
  EXPECT_EQ(bytes, 0U);
  void* tile = nullptr;
  ASSERT_EQ(VXImageGetTile3D(out, &tile, 0, 0, 0, 20, 1, 1, VXint32Type), 0);
  VXImageFreeTile(tile);
  EXPECT_EQ(VXGetPageMemorySize(out, &bytes), 0);
  EXPECT_EQ(bytes, 3U * 8 * 8 * 4);
  EXPECT_EQ(VXClearPages(out), 0);
  EXPECT_EQ(VXGetPageMemorySize(out, &bytes), 0);
  EXPECT_EQ(bytes, 0U);
  EXPECT_TRUE(source->getOutImg(0)->isUpToDate());
  expectSilence();
}

TEST_F(CAPIImagesTest, TheMemoryImageIsMeasuredAndCleared) {
  MemoryImg& memory = source->getOutImg(0)->getMemoryImg();
  const SubImgBox box(TVector<VXint64>(0), TVector<VXint64>(9, 0, 0, 0, 0, 0));
  unsigned int bytes = 7;
  using Clear = VXErrorCode (*)(Field*);
  for (const Clear clear : {Clear{&VXClearMemoryImg}, Clear{&VXClearPagesAndMemoryImg}}) {
    memory.update(nullptr, 0, box, VXint32Type);
    EXPECT_EQ(VXGetMemoryImgSize(out, &bytes), 0);
    EXPECT_EQ(bytes, 40U);
    EXPECT_EQ(clear(out), 0);
    EXPECT_EQ(VXGetMemoryImgSize(out, &bytes), 0);
    EXPECT_EQ(bytes, 0U);
  }
  memory.update(nullptr, 0, box, VXint32Type);
  EXPECT_EQ(VXClearPages(out), 0);
  EXPECT_EQ(VXGetMemoryImgSize(out, &bytes), 0);
  EXPECT_EQ(bytes, 40U) << "pages alone";
  expectSilence();
}

TEST_F(CAPIImagesTest, ABadFieldHasNoMemory) {
  using Clear = VXErrorCode (*)(Field*);
  struct ClearCase {
    Clear clear;
    const char* label;
  };
  for (const ClearCase& c :
       {ClearCase{&VXClearPages, "vxAPI: VXClearPages"}, ClearCase{&VXClearMemoryImg, "vxAPI: VXClearMemoryImg"},
        ClearCase{&VXClearPagesAndMemoryImg, "vxAPI: VXClearPagesAndMemoryImg"}}) {
    constexpr char reason[] = "Invalid outField pointer or type. Ignoring call and returning BAD_FIELD.";
    EXPECT_EQ(c.clear(nullptr), 7);
    expectRefusal(7, c.label, reason);
    EXPECT_EQ(c.clear(VXModuleGetField(source.get(), "instanceName")), 7);
    expectRefusal(29, c.label, wrongClass(reason));
  }
  struct SizeCase {
    VXErrorCode (*size)(Field*, unsigned int*);
    std::string name;
  };
  for (const SizeCase& c :
       {SizeCase{&VXGetPageMemorySize, "VXGetPageMemorySize"}, SizeCase{&VXGetMemoryImgSize, "VXGetMemoryImgSize"}}) {
    unsigned int bytes = 7;
    EXPECT_EQ(c.size(nullptr, &bytes), 7);
    EXPECT_EQ(bytes, 0U);
    expectRefusal(7, "vxAPI: " + c.name,
                  "Invalid outField pointer or type. Setting *numBytes to 0 and returning VX_BAD_FIELD.");
    EXPECT_EQ(c.size(out, nullptr), 19);
    expectRefusal(19, c.name, "Invalid numBytes pointer. Ignoring call and returning VX_BAD_PARAMETER.");
  }
}

}  // namespace
}  // namespace vx::test
