#include "ModuleFixture.h"

#include "vxAPI.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace vx::test {

VX_ABSTRACT_CLASS_SOURCE(ImageSource, "BaseOp")

namespace {

// Rounds a number to what a voxel of a type can hold, by the conversion of blocks of voxels.
double throughType(double value, VXDataType type) {
  double result = 0;
  alignas(8) unsigned char voxel[8] = {};
  const SubImgBox box(Vector(0), Vector(0));
  SubImg in(box, VXdoubleType, &value);
  SubImg middle(box, type, voxel);
  SubImg out(box, VXdoubleType, &result);
  middle.copySubImage(in);
  out.copySubImage(middle);
  return result;
}

}  // namespace

Image makeImage(const Vector& extent, VXDataType type, const std::function<double(const Vector&)>& valueAt) {
  Image image(extent, type);
  forEachPosition(extent, [&](const Vector& p) { image.at(p) = throughType(valueAt(p), type); });
  return image;
}

Image randomImage(const Vector& extent, VXDataType type, unsigned seed) {
  std::mt19937_64 random(seed);
  const bool isWide = type == VXint64Type || VXIsFloatType(type);
  const double low = type == VXint64Type ? -0x1p46 : isWide ? -1000.0 : VXDataTypeMin(type);
  const double high = type == VXint64Type ? 0x1p46 : isWide ? 1000.0 : VXDataTypeMax(type);
  std::uniform_real_distribution<double> distribution(low, high);
  return makeImage(extent, type, [&](const Vector&) {
    const auto choice = random() % 16;
    return choice == 0 ? low : choice == 1 ? high : distribution(random);
  });
}

double stored(double value, VXDataType type) {
  if (VXIsFloatType(type)) return type == VXfloatType ? static_cast<double>(static_cast<float>(value)) : value;
  if (std::isnan(value)) return 0;
  const double rounded = std::nearbyint(value);
  return std::min(std::max(rounded, VXDataTypeMin(type)), VXDataTypeMax(type));
}

std::string text(const Vector& v) {
  std::string result;
  for (std::size_t d = 0; d < Vector::size(); ++d) result += (d ? " " : "") + std::to_string(v[d]);
  return result;
}

// Source --------------------------------------------------------------------------------------------------------------

ImageSource::ImageSource(const Image& image, const Vector& pageExt) : BaseOp(0, 1), _image(image), _pageExt(pageExt) {}

void ImageSource::show(const Image& image, const Vector& pageExt) {
  _image = image;
  _pageExt = pageExt;
  getOutField(0)->notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
}

void ImageSource::calcOutImageProps(int /*outIndex*/) {
  PagedImg& out = *getOutImg(0);
  if (isBroken) return out.setOutOfDate();
  out.setDataType(_image.dataType);
  out.setImgExt(_image.extent);
  out.setPageExt(_pageExt);
  out.setToWorldMatrix(&toWorldMatrix);
  out.setMinVoxelValue(minimum);
  out.setMaxVoxelValue(maximum);
}

void ImageSource::calcOutSubImage(SubImg* outSubImg, int /*outIndex*/, SubImg* /*inSubImgs*/) {
  if (failsOnPages) throw static_cast<int>(VX_BAD_FIELD);
  const SubImg whole(SubImgBox(Vector(0), _image.extent - Vector(1)), VXdoubleType, _image.values.data());
  // What lies past the image must not be seen by anybody.
  std::memset(outSubImg->getData(), 0x55,
              static_cast<std::size_t>(outSubImg->getBox().getNumVoxels()) * outSubImg->getDataTypeSize());
  outSubImg->copySubImage(whole);
}

// Fixture -------------------------------------------------------------------------------------------------------------

void ModuleFixture::SetUpTestSuite() {
  static const bool isLoaded = [] {
    ImageSource::initClass(nullptr, nullptr);
    return VXLoadLibrary(VX_STANDARD_MODULES) == 1;
  }();
  ASSERT_TRUE(isLoaded);
}

std::unique_ptr<BaseOp> ModuleFixture::make(const char* name) {
  const RuntimeType* const type = Runtime::fromName(name);
  if (!type || type->isAbstract()) {
    ADD_FAILURE() << "no module " << name;
    return nullptr;
  }
  return std::unique_ptr<BaseOp>(static_cast<BaseOp*>(static_cast<Base*>(type->getCreateCB()())));
}

PagedImg& ModuleFixture::updated(BaseOp& op) {
  EXPECT_EQ(BaseOp::updateImageProps(&op, 0), 0) << op.getOutImg(0)->getStateInfoString();
  return *op.getOutImg(0);
}

void ModuleFixture::expectInvalid(BaseOp& op, int code, const std::string& stateText) {
  EXPECT_EQ(BaseOp::updateImageProps(&op, 0), code);
  EXPECT_FALSE(op.getOutImg(0)->isUpToDate());
  EXPECT_EQ(op.getOutImg(0)->getStateInfoErrorCode(), code);
  EXPECT_EQ(op.getOutImg(0)->getStateInfoString(), stateText);
}

Image ModuleFixture::tile(BaseOp& op, VXDataType type) {
  PagedImg& image = updated(op);
  return image.isUpToDate() ? tile(op, image.getBoxFromImgExt(), type) : Image();
}

Image ModuleFixture::tile(BaseOp& op, const SubImgBox& box, VXDataType type) {
  Image result(box.getExt(), op.getOutImg(0)->getDataType());
  void* data = nullptr;
  EXPECT_EQ(BaseOp::getTile(&op, 0, box, type, &data), 0);
  if (data) SubImg(box, VXdoubleType, result.values.data()).copySubImage(SubImg(box, type, data));
  BaseOp::freeTile(data);
  return result;
}

void expectEqual(const Image& result, const Image& expected, const std::string& what, double tolerance) {
  ASSERT_EQ(result.extent, expected.extent) << what;
  int numDifferences = 0;
  forEachPosition(expected.extent, [&](const Vector& p) {
    const double a = result.at(p);
    const double b = expected.at(p);
    if (a == b || (std::isnan(a) && std::isnan(b))) return;
    if (std::fabs(a - b) <= tolerance * std::max(1.0, std::fabs(b))) return;
    if (++numDifferences <= 3) ADD_FAILURE() << what << ": at " << p << " is " << a << ", should be " << b;
  });
  EXPECT_EQ(numDifferences, 0) << what;
}

}  // namespace vx::test
