#include "MessageRecorder.h"

#include "vxMat2.h"
#include "vxMat3.h"
#include "vxMat4.h"
#include "vxMat5.h"
#include "vxMat6.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <sstream>
#include <type_traits>
#include <utility>
#include <vector>

namespace vx::test {
namespace {

using Messages = std::vector<Message>;

template <class Mat>
struct Labels;
template <>
struct Labels<mat2> {
  static constexpr const char* row = "Tvec2<DT>& Tmat2<DT>::operator[](const size_t i), illegal index i";
  static constexpr const char* constRow = "const Tvec2<DT>& Tmat2<DT>::operator[](const size_t i), illegal index i";
};
template <>
struct Labels<mat3> {
  static constexpr const char* row = "Tvec3<DT> &Tmat3<DT>::operator[](const size_t i), illegal index i";
  static constexpr const char* constRow = "const Tvec3<DT> &Tmat3<DT>::operator[](const size_t i), illegal index i";
};
template <>
struct Labels<mat4> {
  static constexpr const char* row = "Tvec4<DT> &Tmat4<DT>::operator[](const size_t i), illegal index i";
  static constexpr const char* constRow = "const Tvec4<DT> &Tmat4<DT>::operator[](const size_t i), illegal index i";
};
template <>
struct Labels<mat5> {
  static constexpr const char* row = "Tvec5<DT>& Tmat5<DT>::operator[](const size_t i), illegal index i";
  static constexpr const char* constRow = "const Tvec5<DT>& Tmat5<DT>::operator[](const size_t i), illegal index i";
};
template <>
struct Labels<mat6> {
  static constexpr const char* row = "Tvec6<DT>& Tmat6<DT>::operator[](const size_t i), illegal index i";
  static constexpr const char* constRow = "const Tvec6<DT>& Tmat6<DT>::operator[](const size_t i), illegal index i";
};

template <class Mat>
class MatTest : public ::testing::Test {
 protected:
  static constexpr std::size_t n = Mat::size();

  // Rows (first, first + 1, ...), each going on where the last one ended.
  static Mat count(double first) {
    Mat m;
    for (std::size_t i = 0; i < n * n; ++i) m[i / n][i % n] = first + double(i);
    return m;
  }
  static Mat random(unsigned int seed) {
    std::mt19937 generator(seed);
    Mat m;
    for (std::size_t i = 0; i < n * n; ++i) m[i / n][i % n] = double(generator()) / 4294967296. - .5;
    return m;
  }
};
using AllMats = ::testing::Types<mat2, mat3, mat4, mat5, mat6>;
TYPED_TEST_SUITE(MatTest, AllMats);

TYPED_TEST(MatTest, IsAPlainContiguousValueOfZeros) {
  EXPECT_TRUE(std::is_trivially_copyable_v<TypeParam> && std::is_standard_layout_v<TypeParam>);
  EXPECT_EQ(sizeof(TypeParam), this->n * this->n * sizeof(double));
  const TypeParam m;
  for (std::size_t i = 0; i < this->n * this->n; ++i) EXPECT_EQ(m[i / this->n][i % this->n], 0.);
}

TYPED_TEST(MatTest, ValuesAreTakenRowAfterRow) {
  double values[36];
  for (int i = 0; i < 36; ++i) values[i] = i + 1;
  TypeParam m;
  m.setValues(values);
  EXPECT_EQ(m, this->count(1.));
  EXPECT_EQ(m[1][0], double(this->n) + 1);
  EXPECT_EQ(TypeParam(values), m);
}

TYPED_TEST(MatTest, IdentityHasOnesOnTheDiagonal) {
  const TypeParam m = TypeParam::getIdentity();
  for (std::size_t i = 0; i < this->n * this->n; ++i) {
    EXPECT_EQ(m[i / this->n][i % this->n], i / this->n == i % this->n ? 1. : 0.);
  }
}

TYPED_TEST(MatTest, IllegalRowIsReportedAndCountsAsRowZero) {
  TypeParam m = this->count(1.);
  for (std::size_t i : {this->n, this->n + 1, std::size_t(-1)}) {
    MessageRecorder recorder;
    EXPECT_EQ(&m[i], &m[0]);
    EXPECT_EQ(recorder.take(), (Messages{{VX_ERROR, 26, Labels<TypeParam>::row, "Using index 0"}}));
    EXPECT_EQ(&std::as_const(m)[i], &m[0]);
    EXPECT_EQ(recorder.take(), (Messages{{VX_ERROR, 26, Labels<TypeParam>::constRow, "Using index 0"}}));
  }
  MessageRecorder recorder;
  m[this->n][1] = 77;
  EXPECT_EQ(m[0][1], 77);
}

TYPED_TEST(MatTest, LegalRowsAreNotReported) {
  MessageRecorder recorder;
  TypeParam m = this->count(0.);
  for (std::size_t i = 0; i < this->n; ++i) EXPECT_EQ(&m[i] - &m[0], std::ptrdiff_t(i));
  EXPECT_EQ(recorder.take(), Messages{});
}

TYPED_TEST(MatTest, ArithmeticWorksOnEachComponent) {
  const TypeParam a = this->count(1.);
  const TypeParam b = this->count(-5.);
  for (std::size_t i = 0; i < this->n; ++i) {
    for (std::size_t j = 0; j < this->n; ++j) {
      EXPECT_EQ((a + b)[i][j], a[i][j] + b[i][j]);
      EXPECT_EQ((a - b)[i][j], 6.);
      EXPECT_EQ((a * 2)[i][j], 2 * a[i][j]);
      EXPECT_EQ((2 * a)[i][j], 2 * a[i][j]);
      EXPECT_EQ((a / 3)[i][j], a[i][j] / 3);
      EXPECT_EQ((-a)[i][j], -a[i][j]);
      EXPECT_EQ(a.transpose()[i][j], a[j][i]);
      double sum = 0;
      for (std::size_t k = 0; k < this->n; ++k) sum += a[i][k] * b[k][j];
      EXPECT_EQ((a * b)[i][j], sum);
    }
    EXPECT_EQ((a * b[0])[i], dot(a[i], b[0]));
  }
  EXPECT_NE(a, b);
  EXPECT_EQ(a * TypeParam::getIdentity(), a);
  TypeParam product = a;
  product *= b;
  EXPECT_EQ(product, a * b);
}

TYPED_TEST(MatTest, InverseUndoesTheMatrix) {
  for (unsigned int seed = 0; seed < 20; ++seed) {
    const TypeParam m = this->random(seed);
    bool isInvertible = false;
    const TypeParam product = m * m.inverse(&isInvertible);
    EXPECT_TRUE(isInvertible);
    for (std::size_t i = 0; i < this->n * this->n; ++i) {
      EXPECT_NEAR(product[i / this->n][i % this->n], i / this->n == i % this->n ? 1. : 0., 1e-9);
    }
  }
}

// The elimination in its order of steps, on plain numbers. Only to the last bit do ties of pivots, and a division in
// place of a product with the reciprocal, show.
template <class Mat>
Mat eliminated(const Mat& matrix) {
  constexpr std::size_t n = Mat::size();
  double a[n][n];
  double b[n][n] = {};
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < n; ++j) a[i][j] = matrix[i][j];
    b[i][i] = 1;
  }
  for (std::size_t j = 0; j < n; ++j) {
    std::size_t pivotRow = j;
    for (std::size_t i = j; i < n; ++i) {
      if (std::fabs(a[i][j]) > std::fabs(a[pivotRow][j])) pivotRow = i;
    }
    std::swap(a[j], a[pivotRow]);
    std::swap(b[j], b[pivotRow]);
    const double pivot = a[j][j];
    for (std::size_t i = 0; i < n; ++i) {
      b[j][i] = b[j][i] / pivot;
      a[j][i] = a[j][i] / pivot;
    }
    for (std::size_t k = 0; k < n; ++k) {
      if (k == j) continue;
      const double factor = a[k][j];
      for (std::size_t i = 0; i < n; ++i) {
        b[k][i] = b[k][i] - factor * b[j][i];
        a[k][i] = a[k][i] - factor * a[j][i];
      }
    }
  }
  return Mat(&b[0][0]);
}

TYPED_TEST(MatTest, InverseTakesTheStepsOfTheElimination) {
  for (unsigned int seed = 0; seed < 200; ++seed) {
    TypeParam m = this->random(seed);
    bool isInvertible = false;
    EXPECT_EQ(m.inverse(&isInvertible), eliminated(m)) << seed;
    EXPECT_TRUE(isInvertible);
    // The first column of one magnitude: the first of the equal candidates wins.
    for (std::size_t i = 0; i < this->n; ++i) m[i][0] = i % 2 ? -.7 : .7;
    EXPECT_EQ(m.inverse(&isInvertible), eliminated(m)) << seed;
    EXPECT_TRUE(isInvertible);
  }
}

TYPED_TEST(MatTest, InverseNeedsThePivotSearch) {
  TypeParam m;
  for (std::size_t i = 0; i < this->n; ++i) m[i][(i + 1) % this->n] = double(i + 1);
  bool isInvertible = false;
  const TypeParam inverse = m.inverse(&isInvertible);
  EXPECT_TRUE(isInvertible);
  for (std::size_t i = 0; i < this->n; ++i) EXPECT_EQ(inverse[(i + 1) % this->n][i], 1. / double(i + 1));
}

TYPED_TEST(MatTest, SingularMatrixGivesTheIdentityAndTheFlagInPlaceOfAMessage) {
  MessageRecorder recorder;
  bool isInvertible = true;
  EXPECT_EQ(TypeParam().inverse(&isInvertible), TypeParam::getIdentity());
  EXPECT_FALSE(isInvertible);
  EXPECT_EQ(recorder.take(), Messages{});
}

TEST(Mat4Test, SingularMatrixIsReportedWithoutTheFlag) {
  MessageRecorder recorder;
  EXPECT_EQ(mat4().inverse(nullptr), mat4::getIdentity());
  const Message expected{VX_ERROR, 19, "Tmat4<DT> Tmat4<DT>::inverse(bool *isInvertible) const, matrix not invertable",
                         "Returning identity"};
  EXPECT_EQ(recorder.take(), Messages{expected});
}

TEST(Mat4Test, PivotBelowTheToleranceCountsAsSingular) {
  mat4 m = mat4::getIdentity();
  m[2][2] = 1e-14;
  bool isInvertible = true;
  EXPECT_EQ(m.inverse(&isInvertible), mat4::getIdentity());
  EXPECT_FALSE(isInvertible);
  m[2][2] = -1e-14;
  EXPECT_EQ(m.inverse(&isInvertible), mat4::getIdentity());
  EXPECT_FALSE(isInvertible);
  m[2][2] = 1e-13;
  const mat4 inverse = m.inverse(&isInvertible);
  EXPECT_TRUE(isInvertible);
  EXPECT_EQ(inverse[2][2], 1 / 1e-13);
}

TEST(Mat4Test, InverseOfATransformationIsExactWhereItCanBe) {
  const mat4 m(2, 0, 0, 10, 0, 4, 0, 20, 0, 0, 8, 30, 0, 0, 0, 1);
  EXPECT_EQ(m.inverse(), mat4(.5, 0, 0, -5, 0, .25, 0, -5, 0, 0, .125, -3.75, 0, 0, 0, 1));
}

TEST(Mat4Test, ScalarsStandRowAfterRow) {
  const mat4 m(0, 1, 2, 3, 10, 11, 12, 13, 20, 21, 22, 23, 30, 31, 32, 33);
  for (std::size_t i = 0; i < 4; ++i) {
    for (std::size_t j = 0; j < 4; ++j) EXPECT_EQ(m[i][j], double(10 * i + j));
  }
  EXPECT_EQ(m, mat4(vec4(0, 1, 2, 3), vec4(10, 11, 12, 13), vec4(20, 21, 22, 23), vec4(30, 31, 32, 33)));
}

TEST(Mat4Test, SinglePrecisionValuesAreWidenedAndWrittenBack) {
  float values[16];
  for (int i = 0; i < 16; ++i) values[i] = 0.1F * float(i);
  mat4 m;
  m.setValues(static_cast<const float*>(values));
  for (std::size_t i = 0; i < 16; ++i) EXPECT_EQ(m[i / 4][i % 4], double(values[i]));
  float written[16] = {};
  m.setValues(written);
  for (int i = 0; i < 16; ++i) EXPECT_EQ(written[i], values[i]);
  float writtenByConst[16] = {};
  std::as_const(m).setValues(writtenByConst);
  for (int i = 0; i < 16; ++i) EXPECT_EQ(writtenByConst[i], values[i]);
}

TEST(Mat4Test, VectorIsAColumn) {
  const mat4 m(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);
  vec4 v(1, 10, 100, 1000);
  v = m * v;
  EXPECT_EQ(v, vec4(4321, 8765, 13209, 17653));
}

TEST(Mat4Test, IsWrittenRowByRow) {
  std::ostringstream stream;
  stream << mat2(1, 2, 3, 4);
  EXPECT_EQ(stream.str(), "((1,2),(3,4))");
}

}  // namespace
}  // namespace vx::test
