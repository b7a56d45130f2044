// Arithmetic: combines two images, or an image and a number, voxel by voxel.
//
// Input 0: the first image. Input 1: the second image; while it is open, the number `constant` stands for each of its
// voxels. Each extent of the second image equals that of the first or is 1, and then its voxels are repeated.
// Output 0: the result, with the properties of the first image.
//
// Field       Type    Default    Meaning
// operation   enum    add        add, subtract, multiply, divide, minimum, maximum; difference is |first - second|
// constant    double  0          the second operand while input 1 is open
// outputType  enum    automatic  voxel type; automatic holds both inputs' types, or is the first's if input 1 is open
//
// Values are calculated in double precision, rounded and limited to the range of the output's type. A division by 0
// gives infinity or NaN: the limit of an integer type, or 0. Minimum and maximum take the first operand where one is
// NaN.

#include "vxModuleTools.h"

#include <algorithm>
#include <cmath>

namespace vx::modules {

namespace {

enum Operation : int {
  addOperation,
  subtractOperation,
  multiplyOperation,
  divideOperation,
  minimumOperation,
  maximumOperation,
  differenceOperation
};
constexpr const char* operationItems[] = {"add", "subtract", "multiply", "divide", "minimum", "maximum", "difference"};

// Calls f with the function of an operation, so that the loop over a row is made for each of them.
template <class F>
void visitOperation(int operation, F&& f) {
  switch (operation) {
    case addOperation:
      return f([](double a, double b) { return a + b; });
    case subtractOperation:
      return f([](double a, double b) { return a - b; });
    case multiplyOperation:
      return f([](double a, double b) { return a * b; });
    case divideOperation:
      return f([](double a, double b) { return a / b; });
    case minimumOperation:
      return f([](double a, double b) { return b < a ? b : a; });
    case maximumOperation:
      return f([](double a, double b) { return b > a ? b : a; });
    default:
      return f([](double a, double b) { return std::fabs(a - b); });
  }
}

}  // namespace

class Arithmetic : public StandardModule {
 public:
  Arithmetic() : StandardModule(2, 1) {
    addEnum("operation", operationItems, &_operation);
    fields().addDouble("constant", &_constant);
    addOutputType();
    setThreadSupport(THREAD_SUPPORTED);
  }

  VX_CLASS_HEADER(Arithmetic)

  INPUT_HANDLE handleInput(int inIndex, INPUT_STATE state) const override {
    return inIndex == 1 && state == INPUT_NOT_CONNECTED ? USE_PLACEHOLDER : INVALIDATE_OUTPUT;
  }
  void calcOutImageProps(int outIndex) override;
  SubImgBox calcInSubImageBox(int inIndex, const SubImgBox& box, int outIndex) override;
  void calcInSubImageProps(int /*inIndex*/, InSubImageProps& props, int /*outIndex*/) override {
    props.dataType = VXdoubleType;
  }
  using StandardModule::calcOutSubImage;
  void calcOutSubImage(SubImg* outSubImg, int outIndex, SubImg* inSubImgs) override;

 private:
  void calcRange(PagedImg& image, double low, double high) const;

  int _operation = addOperation;
  double _constant = 0;
};

VX_MODULE_SOURCE(Arithmetic)

void Arithmetic::calcOutImageProps(int /*outIndex*/) {
  if (!isValidEnum("operation", _operation, std::size(operationItems))) return;
  PagedImg& image = *getOutImg(0);
  VXDataType type = image.getDataType();
  double low = _constant;
  double high = _constant;
  if (isConnected(1)) {
    const PagedImg& second = *getInImg(1, true);
    for (std::size_t d = 0; d < Vector::size(); ++d) {
      if (second.getImgExt()[d] != image.getImgExt()[d] && second.getImgExt()[d] != 1) {
        return invalidate("The extents of the inputs don't fit: " + extentText(image.getImgExt()) + " and " +
                          extentText(second.getImgExt()) + '.');
      }
    }
    type =
        VXPromotedType(VXGetRangeAndPrecisionEquivalent(type), VXGetRangeAndPrecisionEquivalent(second.getDataType()));
    low = second.getMinVoxelValue();
    high = second.getMaxVoxelValue();
  }
  image.setDataType(getOutputType(type));
  calcRange(image, low, high);
}

// The range of the result, as wide as the corners of the operands' ranges say.
void Arithmetic::calcRange(PagedImg& image, double low, double high) const {
  double lowest = VXDataTypeMax(image.getDataType());
  double highest = VXDataTypeMin(image.getDataType());
  const double limits[] = {highest, lowest};
  const double firsts[] = {image.getMinVoxelValue(), image.getMaxVoxelValue()};
  visitOperation(_operation, [&](auto operation) {
    for (const double a : firsts) {
      for (const double b : {low, high}) {
        const double value = operation(a, b);
        if (std::isnan(value)) continue;
        lowest = std::min(lowest, std::clamp(value, limits[0], limits[1]));
        highest = std::max(highest, std::clamp(value, limits[0], limits[1]));
      }
    }
  });
  const bool passesZero = low <= 0 && high >= 0;
  if (_operation == divideOperation && passesZero) {
    lowest = limits[0];
    highest = limits[1];
  } else if (_operation == differenceOperation) {
    lowest = std::min(lowest, 0.0);
  }
  image.setMinVoxelValue(std::min(lowest, highest));
  image.setMaxVoxelValue(std::max(lowest, highest));
}

SubImgBox Arithmetic::calcInSubImageBox(int inIndex, const SubImgBox& box, int /*outIndex*/) {
  SubImgBox wanted = getValidBox(box);
  if (inIndex == 0 || wanted.isEmpty()) return wanted;
  if (!isConnected(1)) return SubImgBox();
  const SubImgBox second = getInImg(1, true)->getBoxFromImgExt();
  wanted.v1 = compMin(wanted.v1, second.v2);  // where an extent is 1, that is position 0
  wanted.v2 = compMin(wanted.v2, second.v2);
  return wanted;
}

void Arithmetic::calcOutSubImage(SubImg* outSubImg, int /*outIndex*/, SubImg* inSubImgs) {
  const SubImg& second = inSubImgs[1];
  const SubImgBox secondBox = second.getBox();
  const bool isConstant = secondBox.isEmpty();
  const bool isRepeated = isConstant || secondBox.v1.x == secondBox.v2.x;
  visitOperation(_operation, [&](auto operation) {
    writeRows(*outSubImg, inSubImgs[0].getBox(), [&](const Vector& position, double* values, std::size_t number) {
      const double* const a = voxelAt<double>(inSubImgs[0], position);
      const double* const b = isConstant ? &_constant : voxelAt<double>(second, secondBox.clamp(position));
      if (isRepeated) {
        const double value = *b;
        for (std::size_t i = 0; i < number; ++i) values[i] = operation(a[i], value);
      } else {
        for (std::size_t i = 0; i < number; ++i) values[i] = operation(a[i], b[i]);
      }
    });
  });
}

}  // namespace vx::modules
