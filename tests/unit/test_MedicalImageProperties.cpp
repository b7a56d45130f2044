#include "MessageRecorder.h"

#include "vxDicomTagList.h"
#include "vxMedicalImageProperties.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace vx::test {
namespace {

using Messages = std::vector<Message>;
using Mat = Tmat4<double>;
using Vec = Tvec3<double>;
using Ext = TVector<VXint64>;

const Mat identity = Mat::getIdentity();

const Message singular = {VX_ERROR, VX_BAD_PARAMETER,
                          "Tmat4<DT> Tmat4<DT>::inverse(bool *isInvertible) const, matrix not invertable",
                          "Returning identity"};

Mat diagonal(double x, double y, double z) { return Mat(x, 0, 0, 0, 0, y, 0, 0, 0, 0, z, 0, 0, 0, 0, 1); }

// Shows the members, and where they lie.
class OpenProperties : public MedicalImageProperties {
 public:
  using MedicalImageProperties::_cDimInfos;
  using MedicalImageProperties::_dicomTagList;
  using MedicalImageProperties::_imagePropertyContainer;
  using MedicalImageProperties::_isToWorldMatrixValid;
  using MedicalImageProperties::_isUpToDate;
  using MedicalImageProperties::_tDimInfos;
  using MedicalImageProperties::_toVoxelMatrix;
  using MedicalImageProperties::_toWorldMatrix;
  using MedicalImageProperties::_uDimInfos;
  using MedicalImageProperties::_voxelSize;
};

// A tag list that keeps a log of what is called. It is not deleted by its last reference.
class LoggingTagList : public DicomTagList {
 public:
  LoggingTagList(const char* name, std::string& log) : _name(name), _log(log) {}
  void ref() override {
    ++count;
    _log += "+" + _name;
    if (throws) throw 7;
  }
  void unref() override {
    --count;
    _log += "-" + _name;
    if (throws) throw 7;
  }

  int count = 0;
  bool throws = false;

 private:
  std::string _name;
  std::string& _log;
};

class Remark : public ImagePropertyExtension {
 public:
  explicit Remark(std::string newText = {}) : text(std::move(newText)) {}
  std::unique_ptr<ImagePropertyExtension> clone() const override {
    if (text == "no copy") throw 5;
    return std::make_unique<Remark>(text);
  }
  bool equals(const ImagePropertyExtension& other) const override {
    const auto* const remark = dynamic_cast<const Remark*>(&other);
    return remark && remark->text == text;
  }
  VX_CLASS_HEADER(Remark)
  std::string text;
};
VX_CLASS_SOURCE(Remark, "ImagePropertyExtension")

Message unknownException() { return {VX_FATAL, VX_UNKNOWN_EXCEPTION, {}, {}}; }

// Levels and codes alone: a message without allocation has texts of its own.
std::vector<std::pair<int, int>> levelsAndCodes(const Messages& messages) {
  std::vector<std::pair<int, int>> pairs;
  for (const Message& message : messages) pairs.emplace_back(message.type, message.code);
  return pairs;
}

class MedicalImagePropertiesTest : public ::testing::Test {
 protected:
  void TearDown() override { EXPECT_EQ(recorder.take(), Messages()); }

  void expectVoxelSize(const MedicalImageProperties& p, float x, float y, float z) {
    float size[3] = {-1, -1, -1};
    p.getVoxelSize(&size[0], &size[1], &size[2]);
    EXPECT_EQ(size[0], x);
    EXPECT_EQ(size[1], y);
    EXPECT_EQ(size[2], z);
    EXPECT_EQ(p.getVoxelSize(), Vec(x, y, z));
  }

  void expectPlace(const MedicalImageProperties& p, const Mat& toWorld, const Mat& toVoxel, float x, float y, float z) {
    EXPECT_EQ(*p.getToWorldMatrix(), toWorld);
    EXPECT_EQ(*p.getToVoxelMatrix(), toVoxel);
    expectVoxelSize(p, x, y, z);
  }

  // The state that holds after each function that sets matrix or size.
  void expectInStep(const MedicalImageProperties& p) {
    const Mat& world = *p.getToWorldMatrix();
    EXPECT_EQ(world[3], Tvec4<double>(0, 0, 0, 1));
    EXPECT_EQ(*p.getToVoxelMatrix(), world.inverse(nullptr));
    const Vec size = p.getVoxelSize();
    for (std::size_t j = 0; j < 3; ++j) {
      const double length =
          std::sqrt(world[0][j] * world[0][j] + world[1][j] * world[1][j] + world[2][j] * world[2][j]);
      EXPECT_NEAR(std::abs(size[j]), length, 1e-6 * length);
    }
  }

  MedicalImageProperties properties;
  MessageRecorder recorder;
  std::string log;
};

TEST_F(MedicalImagePropertiesTest, DefaultsAreTheUnitGridAtTheOrigin) {
  expectPlace(properties, identity, identity, 1, 1, 1);
  EXPECT_EQ(properties.getDicomTagList(), nullptr);
  EXPECT_TRUE(properties.isToWorldMatrixValid());
  EXPECT_TRUE(properties.getCDimInfos().empty());
  EXPECT_TRUE(properties.getTDimInfos().empty());
  EXPECT_TRUE(properties.getUDimInfos().empty());
  EXPECT_EQ(properties.getImagePropertyContainer().getNumEntries(), 0U);
  EXPECT_TRUE(static_cast<const ImageProperties&>(properties) == ImageProperties());
}

TEST_F(MedicalImagePropertiesTest, MembersLieInTheirOrder) {
  const OpenProperties open;
  const std::vector<const void*> members = {&open._isUpToDate,    &open._voxelSize,
                                            &open._dicomTagList,  &open._toWorldMatrix,
                                            &open._toVoxelMatrix, &open._isToWorldMatrixValid,
                                            &open._cDimInfos,     &open._tDimInfos,
                                            &open._uDimInfos,     &open._imagePropertyContainer};
  for (std::size_t i = 1; i < members.size(); ++i) EXPECT_LT(members[i - 1], members[i]) << i;
}

TEST_F(MedicalImagePropertiesTest, TheClassIsRegisteredBelowImageProperties) {
  const RuntimeType* type = Runtime::fromName("MedicalImageProperties");
  ASSERT_NE(type, nullptr);
  EXPECT_EQ(type, MedicalImageProperties::getClassTypeId());
  EXPECT_EQ(type->getParent(), ImageProperties::getClassTypeId());
  EXPECT_STREQ(type->getParentName(), "ImageProperties");
  const std::unique_ptr<ImageProperties> made(static_cast<MedicalImageProperties*>(MedicalImageProperties::createCB()));
  EXPECT_EQ(made->getTypeId(), type);
  EXPECT_STREQ(made->getTypeIdName(), "MedicalImageProperties");
  EXPECT_EQ(&made->typeInstanceCounter(), &type->instanceCounter());
}

// Matrix and voxel size ---------------------------------------------------------------------------------------------

TEST_F(MedicalImagePropertiesTest, VoxelSizeOnTheIdentityIsTheDiagonal) {
  properties.setVoxelSize(2, 2, 2);
  expectPlace(properties, diagonal(2, 2, 2), diagonal(0.5, 0.5, 0.5), 2, 2, 2);
}

TEST_F(MedicalImagePropertiesTest, VoxelSizeRescalesColumnsAndKeepsTheTranslation) {
  const Mat matrix(0, 5, 0, 7, 3, 0, 0, 8, 4, 0, 2, 9, 0, 0, 0, 1);
  properties.setToWorldMatrix(&matrix);
  expectVoxelSize(properties, 5, 5, 2);
  properties.setVoxelSize(10, 0.5F, 4);
  EXPECT_EQ(*properties.getToWorldMatrix(), Mat(0, 0.5, 0, 7, 6, 0, 0, 8, 8, 0, 4, 9, 0, 0, 0, 1));
  expectVoxelSize(properties, 10, 0.5F, 4);
  expectInStep(properties);
}

TEST_F(MedicalImagePropertiesTest, ScalingMultipliesBeforeItDivides) {
  const Mat matrix(0.1, 0, 0, 0, 0.2, 1, 0, 0, 0.3, 0, 1, 0, 0, 0, 0, 1);
  properties.setToWorldMatrix(&matrix);
  properties.setVoxelSize(0.7F, 1, 1);
  const auto length = static_cast<float>(std::sqrt(0.1 * 0.1 + 0.2 * 0.2 + 0.3 * 0.3));
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ((*properties.getToWorldMatrix())[i][0],
              static_cast<double>(0.7F) * matrix[i][0] / static_cast<double>(length));
  }
}

TEST_F(MedicalImagePropertiesTest, VoxelSizeOfDoublesIsRoundedToFloat) {
  properties.setVoxelSize(Vec(0.1, 0.2, 0.3));
  expectVoxelSize(properties, 0.1F, 0.2F, 0.3F);
  EXPECT_EQ(*properties.getToWorldMatrix(), diagonal(0.1F, 0.2F, 0.3F));
}

TEST_F(MedicalImagePropertiesTest, NegativeVoxelSizeTurnsTheColumnUntilTheSizeIsComputed) {
  properties.setVoxelSize(-2, 3, 1);
  expectPlace(properties, diagonal(-2, 3, 1), diagonal(-0.5, 1.0 / 3, 1), -2, 3, 1);
  properties.setToWorldMatrix(properties.getToWorldMatrix());
  expectPlace(properties, diagonal(-2, 3, 1), diagonal(-0.5, 1.0 / 3, 1), 2, 3, 1);
}

TEST_F(MedicalImagePropertiesTest, VoxelSizeZeroEmptiesTheColumnUntilTheNextRepair) {
  properties.setVoxelSize(0, 1, 1);
  EXPECT_EQ(recorder.take(), Messages({singular}));
  expectPlace(properties, diagonal(0, 1, 1), identity, 0, 1, 1);

  // A repair alone: the size of another column is set, and that of this one stays what it is.
  properties.setVoxelSize(0, 2, 1);
  EXPECT_EQ(recorder.take(), Messages({singular}));
  expectPlace(properties, diagonal(0, 2, 1), identity, 0, 2, 1);

  properties.setVoxelSize(3, 2, 1);
  expectPlace(properties, diagonal(3, 2, 1), diagonal(1.0 / 3, 0.5, 1), 3, 2, 1);
}

TEST_F(MedicalImagePropertiesTest, RecomputedSizeOfARepairedColumnIsOne) {
  properties.setVoxelSize(0, 1, 1);
  EXPECT_EQ(recorder.take(), Messages({singular}));
  properties.setToWorldMatrix(properties.getToWorldMatrix());
  expectPlace(properties, identity, identity, 1, 1, 1);
}

TEST_F(MedicalImagePropertiesTest, ColumnWithoutMeasurableLengthStaysAsItIs) {
  // The entry counts as a number, but its square vanishes.
  const Mat matrix(1e-200, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1);
  properties.setToWorldMatrix(&matrix);
  EXPECT_EQ(recorder.take(), Messages({singular}));
  expectPlace(properties, matrix, identity, 0, 1, 1);
  properties.setVoxelSize(5, 2, 1);
  EXPECT_EQ(recorder.take(), Messages({singular, singular}));
  expectPlace(properties, diagonal(1e-200, 2, 1), identity, 5, 2, 1);
}

TEST_F(MedicalImagePropertiesTest, ZeroMatrixBecomesTheIdentity) {
  const Mat zero;
  properties.setToWorldMatrix(&zero);
  expectPlace(properties, identity, identity, 1, 1, 1);
}

TEST_F(MedicalImagePropertiesTest, RepairFillsZeroColumnsThenZeroRows) {
  struct Case {
    Mat given;
    Mat repaired;
  };
  const Case cases[] = {
      // Zero columns.
      {Mat(0, 1, 1, 5, 0, 1, 0, 6, 0, 0, 1, 7, 0, 0, 0, 1), Mat(1, 1, 1, 5, 0, 1, 0, 6, 0, 0, 1, 7, 0, 0, 0, 1)},
      {Mat(1, 0, 0, 5, 1, 0, 1, 6, 0, 0, 1, 7, 0, 0, 0, 1), Mat(1, 0, 0, 5, 1, 1, 1, 6, 0, 0, 1, 7, 0, 0, 0, 1)},
      {Mat(1, 0, 0, 5, 0, 1, 0, 6, 1, 1, 0, 7, 0, 0, 0, 1), Mat(1, 0, 0, 5, 0, 1, 0, 6, 1, 1, 1, 7, 0, 0, 0, 1)},
      // Zero rows.
      {Mat(0, 0, 0, 5, 2, 1, 0, 6, 3, 0, 1, 7, 0, 0, 0, 1), Mat(1, 0, 0, 5, 2, 1, 0, 6, 3, 0, 1, 7, 0, 0, 0, 1)},
      {Mat(1, 2, 0, 5, 0, 0, 0, 6, 0, 3, 1, 7, 0, 0, 0, 1), Mat(1, 2, 0, 5, 0, 1, 0, 6, 0, 3, 1, 7, 0, 0, 0, 1)},
      {Mat(1, 0, 2, 5, 0, 1, 3, 6, 0, 0, 0, 7, 0, 0, 0, 1), Mat(1, 0, 2, 5, 0, 1, 3, 6, 0, 0, 1, 7, 0, 0, 0, 1)},
      // A column that is filled leaves no zero row behind, and one that isn't leaves the row to be filled.
      {Mat(0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1), identity},
      {Mat(0, 0, 0, 0, 0, 1, 1, 0, 0, 0, 1, 0, 0, 0, 0, 1), Mat(1, 0, 0, 0, 0, 1, 1, 0, 0, 0, 1, 0, 0, 0, 0, 1)},
      // Below the smallest normal number counts as zero, and is left in place off the diagonal.
      {Mat(1e-310, 0, 0, 0, -1e-310, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1),
       Mat(1, 0, 0, 0, -1e-310, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1)},
      // The last row is replaced whatever it holds.
      {Mat(2, 0, 0, 1, 0, 2, 0, 2, 0, 0, 2, 3, 4, 5, 6, 7), Mat(2, 0, 0, 1, 0, 2, 0, 2, 0, 0, 2, 3, 0, 0, 0, 1)},
      {Mat(2, 0, 0, 1, 0, 2, 0, 2, 0, 0, 2, 3, 0, 0, 0, 0), Mat(2, 0, 0, 1, 0, 2, 0, 2, 0, 0, 2, 3, 0, 0, 0, 1)},
  };
  for (const Case& c : cases) {
    properties.setToWorldMatrix(&c.given);
    EXPECT_EQ(*properties.getToWorldMatrix(), c.repaired) << c.given;
    expectInStep(properties);
  }
}

TEST_F(MedicalImagePropertiesTest, SmallestNormalNumberIsNotRepaired) {
  const double smallest = std::numeric_limits<double>::min();
  const Mat matrix = diagonal(smallest, 1, 1);
  properties.setToWorldMatrix(&matrix);
  EXPECT_EQ(recorder.take(), Messages({singular}));
  expectPlace(properties, matrix, identity, 0, 1, 1);
}

TEST_F(MedicalImagePropertiesTest, SingularMatrixIsReportedAndHasTheIdentityAsInverse) {
  const Mat matrix(1, 1, 0, 0, 1, 1, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1);
  properties.setToWorldMatrix(&matrix);
  EXPECT_EQ(recorder.take(), Messages({singular}));
  expectPlace(properties, matrix, identity, std::sqrt(2.0F), std::sqrt(2.0F), 2);
}

TEST_F(MedicalImagePropertiesTest, SettingTheMatrixComputesInverseAndSize) {
  const Mat matrix(0, -4, 0, 10, 2, 0, 0, 20, 0, 0, 8, 30, 0, 0, 0, 1);
  properties.setToWorldMatrix(&matrix);
  expectPlace(properties, matrix, Mat(0, 0.5, 0, -10, -0.25, 0, 0, 2.5, 0, 0, 0.125, -3.75, 0, 0, 0, 1), 2, 4, 8);
}

TEST_F(MedicalImagePropertiesTest, MatrixOfFloatsIsReadAndWrittenRowByRow) {
  float values[16] = {0, -4, 0, 10, 2, 0, 0, 20, 0, 0, 8, 30, 1, 2, 3, 4};
  properties.setToWorldMatrix(values);
  EXPECT_EQ(*properties.getToWorldMatrix(), Mat(0, -4, 0, 10, 2, 0, 0, 20, 0, 0, 8, 30, 0, 0, 0, 1));
  expectVoxelSize(properties, 2, 4, 8);
  EXPECT_EQ(values[12], 1);  // The array is only read.

  const float toWorld[16] = {0, -4, 0, 10, 2, 0, 0, 20, 0, 0, 8, 30, 0, 0, 0, 1};
  const float toVoxel[16] = {0, 0.5F, 0, -10, -0.25F, 0, 0, 2.5F, 0, 0, 0.125F, -3.75F, 0, 0, 0, 1};
  properties.getToWorldMatrix(values);
  for (int k = 0; k < 16; ++k) EXPECT_EQ(values[k], toWorld[k]) << k;
  properties.getToVoxelMatrix(values);
  for (int k = 0; k < 16; ++k) EXPECT_EQ(values[k], toVoxel[k]) << k;
}

TEST_F(MedicalImagePropertiesTest, MatrixPointersAreThoseOfTheMembers) {
  const OpenProperties open;
  EXPECT_EQ(open.getToWorldMatrix(), &open._toWorldMatrix);
  EXPECT_EQ(open.getToVoxelMatrix(), &open._toVoxelMatrix);
}

TEST_F(MedicalImagePropertiesTest, OwnInverseCanBeSetAsMatrix) {
  properties.setVoxelSize(2, 4, 8);
  properties.setToWorldMatrix(properties.getToVoxelMatrix());
  expectPlace(properties, diagonal(0.5, 0.25, 0.125), diagonal(2, 4, 8), 0.5F, 0.25F, 0.125F);
}

TEST_F(MedicalImagePropertiesTest, IdentityResetsMatrixAndSize) {
  properties.setVoxelSize(2, 3, 4);
  properties.translateImage(1, 2, 3);
  properties.setToWorldMatrixValid(false);
  properties.setToWorldMatrixIdentity();
  expectPlace(properties, identity, identity, 1, 1, 1);
  EXPECT_FALSE(properties.isToWorldMatrixValid());
}

TEST_F(MedicalImagePropertiesTest, ValidityOfTheMatrixIsAFlagAlone) {
  properties.setVoxelSize(2, 2, 2);
  properties.setToWorldMatrixValid(false);
  EXPECT_FALSE(properties.isToWorldMatrixValid());
  expectPlace(properties, diagonal(2, 2, 2), diagonal(0.5, 0.5, 0.5), 2, 2, 2);
  properties.setToWorldMatrixValid(true);
  EXPECT_TRUE(properties.isToWorldMatrixValid());
}

TEST_F(MedicalImagePropertiesTest, RandomPlacesStayInStepFromBothSides) {
  std::mt19937 random(4711);
  std::uniform_real_distribution<double> entry(-10, 10);
  std::uniform_real_distribution<float> length(0.01F, 20);
  for (int run = 0; run < 200; ++run) {
    double values[16];
    for (double& value : values) value = entry(random);
    const Mat matrix(values);
    properties.setToWorldMatrix(&matrix);
    expectInStep(properties);
    properties.setVoxelSize(length(random), length(random), length(random));
    expectInStep(properties);
    properties.scaleImage(length(random), -length(random), length(random));
    expectInStep(properties);

    const Vec voxel(entry(random), entry(random), entry(random));
    Vec world;
    Vec back;
    properties.transformToWorldCoord(voxel, world);
    properties.transformToVoxelCoord(world, back);
    // A random matrix may be close to singular.
    if (std::abs((*properties.getToVoxelMatrix())[0].length()) > 1e3) continue;
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(back[i], voxel[i], 1e-6);
  }
  recorder.take();
}

// Coordinates and moves ---------------------------------------------------------------------------------------------

TEST_F(MedicalImagePropertiesTest, OriginMapsToTheTranslationColumn) {
  const Mat matrix(2, 0, 0, 10, 0, 2, 0, 20, 0, 0, 2, 30, 0, 0, 0, 1);
  properties.setToWorldMatrix(&matrix);
  double x = 0, y = 0, z = 0;
  properties.transformToWorldCoord(&x, &y, &z);
  EXPECT_EQ(Vec(x, y, z), Vec(10, 20, 30));
  properties.transformToVoxelCoord(&x, &y, &z);
  EXPECT_EQ(Vec(x, y, z), Vec(0, 0, 0));
}

TEST_F(MedicalImagePropertiesTest, AllFormsOfTheMappingAgree) {
  const Mat matrix(0, -4, 0, 10, 2, 0, 0, 20, 0, 0, 8, 30, 0, 0, 0, 1);
  properties.setToWorldMatrix(&matrix);
  const Vec voxel(1, 2, 3);
  const Vec world(2, 22, 54);

  Vec out;
  properties.transformToWorldCoord(voxel, out);
  EXPECT_EQ(out, world);
  properties.transformToVoxelCoord(out, out);
  EXPECT_EQ(out, voxel);

  double d[3] = {1, 2, 3};
  properties.transformToWorldCoord(&d[0], &d[1], &d[2]);
  EXPECT_EQ(Vec(d), world);
  properties.transformToVoxelCoord(&d[0], &d[1], &d[2]);
  EXPECT_EQ(Vec(d), voxel);

  float f[3] = {1, 2, 3};
  properties.transformToWorldCoord(&f[0], &f[1], &f[2]);
  EXPECT_EQ(Vec(f), world);
  properties.transformToVoxelCoord(&f[0], &f[1], &f[2]);
  EXPECT_EQ(Vec(f), voxel);
}

TEST_F(MedicalImagePropertiesTest, FloatsAreMappedInDoublePrecision) {
  const Mat matrix(1, 0, 0, 16777216, 0, 1, 0, -16777216, 0, 0, 1, 0, 0, 0, 0, 1);
  properties.setToWorldMatrix(&matrix);
  properties.scaleImage(3, 1, 1);
  float x = 0.5F, y = 0, z = 0;
  properties.transformToWorldCoord(&x, &y, &z);
  EXPECT_EQ(x, 16777218.0F);  // 16777217.5, rounded once
  EXPECT_EQ(y, -16777216.0F);
  EXPECT_EQ(z, 0.0F);
}

TEST_F(MedicalImagePropertiesTest, TranslationIsInVoxels) {
  properties.setVoxelSize(2, 2, 2);
  properties.translateImage(1, 2, 3);
  expectPlace(properties, Mat(2, 0, 0, 2, 0, 2, 0, 4, 0, 0, 2, 6, 0, 0, 0, 1),
              Mat(0.5, 0, 0, -1, 0, 0.5, 0, -2, 0, 0, 0.5, -3, 0, 0, 0, 1), 2, 2, 2);
}

TEST_F(MedicalImagePropertiesTest, TranslationFollowsTheAxesOfTheImage) {
  const Mat matrix(0, -1, 0, 10, 1, 0, 0, 20, 0, 0, 1, 30, 0, 0, 0, 1);
  properties.setToWorldMatrix(&matrix);
  properties.translateImage(1, 2, 3);
  EXPECT_EQ(*properties.getToWorldMatrix(), Mat(0, -1, 0, 8, 1, 0, 0, 21, 0, 0, 1, 33, 0, 0, 0, 1));
}

TEST_F(MedicalImagePropertiesTest, TranslationNeitherRepairsNorComputesTheSize) {
  properties.setVoxelSize(-1, 0, 1);
  EXPECT_EQ(recorder.take(), Messages({singular}));
  properties.translateImage(1, 1, 1);
  EXPECT_EQ(recorder.take(), Messages({singular}));
  expectPlace(properties, Mat(-1, 0, 0, -1, 0, 0, 0, 0, 0, 0, 1, 1, 0, 0, 0, 1), identity, -1, 0, 1);
}

TEST_F(MedicalImagePropertiesTest, ScalingComputesTheSize) {
  const Mat matrix(0, -4, 0, 10, 2, 0, 0, 20, 0, 0, 8, 30, 0, 0, 0, 1);
  properties.setToWorldMatrix(&matrix);
  properties.scaleImage(2, -0.5F, 0.25F);
  expectPlace(properties, Mat(0, 2, 0, 10, 4, 0, 0, 20, 0, 0, 2, 30, 0, 0, 0, 1),
              Mat(0, 0.25, 0, -5, 0.5, 0, 0, -5, 0, 0, 0.5, -15, 0, 0, 0, 1), 4, 2, 2);
}

TEST_F(MedicalImagePropertiesTest, ScalingByZeroIsRepaired) {
  properties.setVoxelSize(4, 4, 4);
  properties.scaleImage(0, 1, 1);
  expectPlace(properties, diagonal(1, 4, 4), diagonal(1, 0.25, 0.25), 1, 4, 4);
}

// Tag list ----------------------------------------------------------------------------------------------------------

TEST_F(MedicalImagePropertiesTest, TagListIsReferencedBeforeTheOldOneIsReleased) {
  LoggingTagList a("a", log);
  LoggingTagList b("b", log);
  {
    MedicalImageProperties owner;
    owner.setDicomTagList(&a);
    EXPECT_EQ(owner.getDicomTagList(), &a);
    EXPECT_EQ(log, "+a");
    owner.setDicomTagList(&b);
    EXPECT_EQ(owner.getDicomTagList(), &b);
    EXPECT_EQ(log, "+a+b-a");
    owner.setDicomTagList(&b);
    EXPECT_EQ(log, "+a+b-a+b-b");
    owner.setDicomTagList(nullptr);
    EXPECT_EQ(owner.getDicomTagList(), nullptr);
    EXPECT_EQ(log, "+a+b-a+b-b-b");
    owner.setDicomTagList(nullptr);
    EXPECT_EQ(log, "+a+b-a+b-b-b");
    owner.setDicomTagList(&a);
  }
  EXPECT_EQ(log, "+a+b-a+b-b-b+a-a");
  EXPECT_EQ(a.count, 0);
  EXPECT_EQ(b.count, 0);
}

TEST_F(MedicalImagePropertiesTest, CopiesShareTheTagList) {
  LoggingTagList a("a", log);
  LoggingTagList b("b", log);
  {
    MedicalImageProperties first;
    first.setDicomTagList(&a);
    {
      const MedicalImageProperties copy(first);
      EXPECT_EQ(copy.getDicomTagList(), &a);
      EXPECT_EQ(a.count, 2);
    }
    EXPECT_EQ(a.count, 1);

    MedicalImageProperties second;
    second.setDicomTagList(&b);
    second = first;
    EXPECT_EQ(a.count, 2);
    EXPECT_EQ(b.count, 0);
    second.setImgProps(MedicalImageProperties());
    EXPECT_EQ(second.getDicomTagList(), nullptr);
    EXPECT_EQ(a.count, 1);
  }
  EXPECT_EQ(a.count, 0);
}

TEST_F(MedicalImagePropertiesTest, SelfAssignmentTouchesNothing) {
  LoggingTagList a("a", log);
  MedicalImageProperties owner;
  owner.setDicomTagList(&a);
  owner.setVoxelSize(-2, 1, 1);
  owner.getCDimInfos() = {"red"};
  const MedicalImageProperties& self = owner;
  owner = self;
  owner.setImgProps(self);
  EXPECT_EQ(log, "+a");
  expectVoxelSize(owner, -2, 1, 1);
  EXPECT_EQ(owner.getConstCDimInfos(), std::vector<std::string>({"red"}));
}

TEST_F(MedicalImagePropertiesTest, ExceptionOfTheTagListIsReportedAndThrownOn) {
  LoggingTagList a("a", log);
  MedicalImageProperties owner;
  a.throws = true;
  try {
    owner.setDicomTagList(&a);
    ADD_FAILURE() << "nothing was thrown";
  } catch (int code) {
    EXPECT_EQ(code, 7);
  }
  EXPECT_EQ(levelsAndCodes(recorder.take()), levelsAndCodes({unknownException()}));
  EXPECT_EQ(owner.getDicomTagList(), nullptr);
}

TEST_F(MedicalImagePropertiesTest, DestructorReportsAnExceptionOfTheTagListAndGoesOn) {
  LoggingTagList a("a", log);
  {
    MedicalImageProperties owner;
    owner.setDicomTagList(&a);
    a.throws = true;
  }
  EXPECT_EQ(log, "+a-a");
  EXPECT_EQ(levelsAndCodes(recorder.take()), levelsAndCodes({unknownException()}));
}

// Copies ------------------------------------------------------------------------------------------------------------

class MedicalImagePropertiesCopyTest : public MedicalImagePropertiesTest {
 protected:
  void SetUp() override {
    const Mat matrix(0, -4, 0, 10, 2, 0, 0, 20, 0, 0, 8, 30, 0, 0, 0, 1);
    original.setToWorldMatrix(&matrix);
    original.setVoxelSize(-2, 4, 8);
    original.setToWorldMatrixValid(false);
    original.getCDimInfos() = {"red", "green"};
    original.getTDimInfos() = {DateTime{2024, 2, 29, 12, 30, 59, 1}};
    original.getUDimInfos() = {"a", "", "c"};
    original.getImagePropertyContainer().appendEntry(std::make_unique<Remark>("hello"));
    original.setImgExt(Ext(1, 2, 3, 4, 5, 6));
    original.setDataType(VXint16Type);
    original.setMinVoxelValue(-1);
    original.setMaxVoxelValue(9);
    original.setUpToDate();
  }

  void expectCopy(const MedicalImageProperties& copy) {
    EXPECT_EQ(*copy.getToWorldMatrix(), *original.getToWorldMatrix());
    EXPECT_EQ(*copy.getToVoxelMatrix(), *original.getToVoxelMatrix());
    expectVoxelSize(original, -2, 4, 8);
    expectVoxelSize(copy, 2, 4, 8);  // computed from the matrix
    EXPECT_FALSE(copy.isToWorldMatrixValid());
    EXPECT_EQ(copy.getConstCDimInfos(), original.getConstCDimInfos());
    EXPECT_EQ(copy.getConstTDimInfos(), original.getConstTDimInfos());
    EXPECT_EQ(copy.getConstUDimInfos(), original.getConstUDimInfos());
    EXPECT_TRUE(copy.getConstImagePropertyContainer() == original.getConstImagePropertyContainer());
    EXPECT_EQ(copy.getImgExt(), Ext(1, 2, 3, 4, 5, 6));
    EXPECT_EQ(copy.getDataType(), VXint16Type);
    EXPECT_EQ(copy.getMinVoxelValue(), -1.0);
    EXPECT_EQ(copy.getMaxVoxelValue(), 9.0);
  }

  MedicalImageProperties original;
};

TEST_F(MedicalImagePropertiesCopyTest, CopyConstructorTakesAll) {
  const MedicalImageProperties copy(original);
  expectCopy(copy);
  EXPECT_TRUE(copy.isUpToDate());
}

TEST_F(MedicalImagePropertiesCopyTest, AssignmentTakesAll) {
  MedicalImageProperties copy;
  EXPECT_EQ(&(copy = original), &copy);
  expectCopy(copy);
  EXPECT_TRUE(copy.isUpToDate());
}

TEST_F(MedicalImagePropertiesCopyTest, SetImgPropsTakesAllButTheState) {
  MedicalImageProperties copy;
  copy.setImgProps(original);
  expectCopy(copy);
  EXPECT_FALSE(copy.isUpToDate());
}

TEST_F(MedicalImagePropertiesCopyTest, CopiedMatrixIsRepaired) {
  original.setToWorldMatrixIdentity();
  original.scaleImage(3, 3, 3);
  original.setVoxelSize(0, 3, 3);
  EXPECT_EQ(recorder.take(), Messages({singular}));
  const MedicalImageProperties copy(original);
  expectPlace(copy, diagonal(1, 3, 3), diagonal(1, 1.0 / 3, 1.0 / 3), 1, 3, 3);
}

TEST_F(MedicalImagePropertiesCopyTest, FailedCopyReleasesTheTagList) {
  LoggingTagList a("a", log);
  original.setDicomTagList(&a);
  original.getImagePropertyContainer().appendEntry(std::make_unique<Remark>("no copy"));
  EXPECT_THROW(const MedicalImageProperties copy(original), int);
  EXPECT_EQ(levelsAndCodes(recorder.take()), levelsAndCodes({unknownException()}));
  EXPECT_EQ(a.count, 1);
  original.setDicomTagList(nullptr);
  EXPECT_EQ(a.count, 0);

  MedicalImageProperties target;
  EXPECT_THROW(target = original, int);
  EXPECT_THROW(target.setImgProps(original), int);
  EXPECT_EQ(levelsAndCodes(recorder.take()), levelsAndCodes({unknownException(), unknownException()}));
}

// Comparison --------------------------------------------------------------------------------------------------------

TEST_F(MedicalImagePropertiesTest, DistinctObjectsDifferWhateverTheyHold) {
  const MedicalImageProperties other;
  EXPECT_FALSE(properties == other);
  EXPECT_TRUE(properties != other);
  const MedicalImageProperties copy(properties);
  EXPECT_FALSE(properties == copy);
}

TEST_F(MedicalImagePropertiesTest, AnObjectEqualsItself) {
  const MedicalImageProperties& self = properties;
  EXPECT_TRUE(properties == self);
  EXPECT_FALSE(properties != self);
  properties.getCDimInfos() = {"red"};
  properties.getImagePropertyContainer().appendEntry(std::make_unique<Remark>("hello"));
  EXPECT_TRUE(properties == self);
}

TEST_F(MedicalImagePropertiesTest, AnObjectDiffersFromItselfIfAValueDoes) {
  const MedicalImageProperties& self = properties;
  properties.setVoxelSize(std::numeric_limits<float>::infinity(), 1, 1);
  EXPECT_FALSE(properties == self);
  EXPECT_TRUE(properties != self);

  const Mat notANumber(1, 0, 0, std::nan(""), 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1);
  properties.setToWorldMatrix(&notANumber);
  expectVoxelSize(properties, 1, 1, 1);
  EXPECT_FALSE(properties == self);
  recorder.take();
}

TEST_F(MedicalImagePropertiesTest, RangeOfValuesHasNoPartInTheComparison) {
  const MedicalImageProperties& self = properties;
  properties.setMaxVoxelValue(std::numeric_limits<long double>::infinity());
  EXPECT_TRUE(properties == self);
  EXPECT_FALSE(static_cast<const ImageProperties&>(properties) == static_cast<const ImageProperties&>(self));
}

// Infos, extensions, pointers ---------------------------------------------------------------------------------------

TEST_F(MedicalImagePropertiesTest, InfosAndExtensionsAreThoseOfTheMembers) {
  OpenProperties open;
  EXPECT_EQ(&open.getCDimInfos(), &open._cDimInfos);
  EXPECT_EQ(&open.getTDimInfos(), &open._tDimInfos);
  EXPECT_EQ(&open.getUDimInfos(), &open._uDimInfos);
  EXPECT_EQ(&open.getImagePropertyContainer(), &open._imagePropertyContainer);
  EXPECT_EQ(&open.getConstCDimInfos(), &open._cDimInfos);
  EXPECT_EQ(&open.getConstTDimInfos(), &open._tDimInfos);
  EXPECT_EQ(&open.getConstUDimInfos(), &open._uDimInfos);
  EXPECT_EQ(&open.getConstImagePropertyContainer(), &open._imagePropertyContainer);
}

TEST_F(MedicalImagePropertiesTest, NullOutputsAreFatal) {
  float f = 0;
  double d = 0;
  const std::vector<std::pair<int, int>> fatal = {{VX_FATAL, VX_BAD_POINTER}, {VX_FATAL, VX_UNKNOWN_EXCEPTION}};
  const auto expectFatal = [&](auto call) {
    try {
      call();
      ADD_FAILURE() << "nothing was thrown";
    } catch (int code) {
      EXPECT_EQ(code, VX_BAD_POINTER);
    }
    EXPECT_EQ(levelsAndCodes(recorder.take()), fatal);
  };
  expectFatal([&] { properties.getVoxelSize(&f, nullptr, &f); });
  expectFatal([&] { properties.getToWorldMatrix(nullptr); });
  expectFatal([&] { properties.getToVoxelMatrix(nullptr); });
  expectFatal([&] { properties.transformToWorldCoord(&d, &d, nullptr); });
  expectFatal([&] { properties.transformToWorldCoord(nullptr, &f, &f); });
  expectFatal([&] { properties.transformToVoxelCoord(&d, nullptr, &d); });
  expectFatal([&] { properties.transformToVoxelCoord(&f, &f, nullptr); });
}

}  // namespace
}  // namespace vx::test
