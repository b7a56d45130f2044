// What tests of the standard modules share: the loaded library, images as numbers, a source that shows such an image,
// and whole-image tiles.

#ifndef VX_TESTS_MODULE_FIXTURE_H
#define VX_TESTS_MODULE_FIXTURE_H

#include "MessageRecorder.h"

#include "vxModule.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace vx::test {

using Vector = TVector<VXint64>;

/// A whole image: its voxels in memory order, as double precision numbers.
struct Image {
  Vector extent;
  VXDataType dataType = VXdoubleType;
  std::vector<double> values;

  Image() = default;
  Image(const Vector& ext, VXDataType type)
      : extent(ext), dataType(type), values(static_cast<std::size_t>(ext.getProduct())) {}

  double& at(const Vector& p) { return values[static_cast<std::size_t>(dot(p, extent.getStrides()))]; }
  double at(const Vector& p) const { return values[static_cast<std::size_t>(dot(p, extent.getStrides()))]; }
  /// The voxel nearest to a position.
  double clamped(const Vector& p) const { return at(SubImgBox(Vector(0), extent - Vector(1)).clamp(p)); }
  bool contains(const Vector& p) const {
    for (std::size_t d = 0; d < Vector::size(); ++d) {
      if (p[d] < 0 || p[d] >= extent[d]) return false;
    }
    return true;
  }
};

/// Calls f(position) for all positions of an extent, in memory order.
template <class F>
void forEachPosition(const Vector& extent, F&& f) {
  Vector p;
  for (p.u = 0; p.u < extent.u; ++p.u)
    for (p.t = 0; p.t < extent.t; ++p.t)
      for (p.c = 0; p.c < extent.c; ++p.c)
        for (p.z = 0; p.z < extent.z; ++p.z)
          for (p.y = 0; p.y < extent.y; ++p.y)
            for (p.x = 0; p.x < extent.x; ++p.x) f(static_cast<const Vector&>(p));
}

/// An image from a function of the position, stored as the type stores it.
Image makeImage(const Vector& extent, VXDataType type, const std::function<double(const Vector&)>& valueAt);
/// An image of random voxels over much of the type's range, in which the limits occur; 64 bits stay below 2^46, so that
/// sums are exact.
Image randomImage(const Vector& extent, VXDataType type, unsigned seed);

/// What a module stores for a calculated number: rounded to nearest even, limited to the type; NaN is 0 in integers.
double stored(double value, VXDataType type);

/// A module that shows an image.
class ImageSource : public BaseOp {
 public:
  ImageSource(const Image& image, const Vector& pageExt);
  VX_ABSTRACT_CLASS_HEADER(ImageSource)
  void calcOutImageProps(int outIndex) override;
  using BaseOp::calcOutSubImage;
  void calcOutSubImage(SubImg* outSubImg, int outIndex, SubImg* inSubImgs) override;

  /// Shows another image.
  void show(const Image& image, const Vector& pageExt);
  Tmat4<double> toWorldMatrix = Tmat4<double>::getIdentity();
  double minimum = 0;
  double maximum = 255;
  bool isBroken = false;      ///< Whether the image is out of date for good.
  bool failsOnPages = false;  ///< Whether each page throws VX_BAD_FIELD.

 private:
  Image _image;
  Vector _pageExt;
};

/// One setting under which results must be the same.
struct Setting {
  Vector pageExt;
  unsigned numThreads;
};
inline const std::vector<Setting> settings = {
    {{128, 128, 1, 1, 1, 1}, 1}, {{7, 5, 3, 2, 1, 2}, 1}, {{16, 9, 4, 1, 2, 1}, 4}, {{40, 16, 8, 4, 4, 4}, 4}};

inline const std::vector<VXDataType> allTypes = {VXint8Type,   VXuint8Type, VXint16Type,  VXuint16Type,  VXint32Type,
                                                 VXuint32Type, VXfloatType, VXdoubleType, VXldoubleType, VXint64Type};

class ModuleFixture : public testing::Test {
 protected:
  static void SetUpTestSuite();
  void SetUp() override { Host::getDefaultHost().setMaxNumThreads(2); }
  void TearDown() override { EXPECT_EQ(messages.take(), std::vector<Message>()); }

  /// Makes a module by the name of its class.
  std::unique_ptr<BaseOp> make(const char* name);
  static void set(BaseOp& op, const char* field, const std::string& text) {
    op.getFieldContainer()->setValue(field, text);
  }
  static std::string get(BaseOp& op, const char* field) { return op.getFieldContainer()->getValue(field); }

  /// Connects an input to output 0 of a module, as the C interface does, and says so.
  static void connect(BaseOp& op, VXint64 inIndex, BaseOp& source) {
    disconnect(op, inIndex);
    op.getInField(inIndex)->getInputConnectorValue().connect(source.getOutField(0)->getOutputConnectorValue());
    source.getOutField(0)->attachField(op.getInField(inIndex), 0);
    op.getInField(inIndex)->notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
  }
  /// Takes the connection back, and says so.
  static void disconnect(BaseOp& op, VXint64 inIndex) {
    op.getInField(inIndex)->getInputConnectorValue().disconnect();
    op.getInField(inIndex)->detachSourceFields();
    op.getInField(inIndex)->notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
  }

  /// The image of output 0 after an update that must succeed.
  static PagedImg& updated(BaseOp& op);
  /// Expects an update to fail with a code and a text as the image's state.
  static void expectInvalid(BaseOp& op, int code, const std::string& text);
  /// The whole image of output 0.
  static Image tile(BaseOp& op, VXDataType type = VXdoubleType);
  /// A box of output 0.
  static Image tile(BaseOp& op, const SubImgBox& box, VXDataType type);

  MessageRecorder messages;
};

/// Expects equal extents and voxels, NaN being equal to itself. \param tolerance largest difference of voxels, relative
/// where they are large.
void expectEqual(const Image& result, const Image& expected, const std::string& what, double tolerance = 0);

/// Six numbers as a text.
std::string text(const Vector& v);

}  // namespace vx::test

#endif
