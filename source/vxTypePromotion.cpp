// Which type holds another, and which type to choose for two types or for a range.

#include "vxStandardTypeTable.h"
#include "vxTypeInfos.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

namespace {

constexpr double smallestNormal = std::numeric_limits<double>::min();

bool listsAsGoodCast(const VXTypeInfos& held, const char* holderName) {
  for (VXuint32 i = 0; i < held.numGoodCastTos; ++i) {
    if (std::strcmp(held.goodCastTos[i], holderName) == 0) return true;
  }
  return false;
}

// The smaller of a candidate and the best type so far; on equal size the best so far, which has the lower number.
void takeSmaller(VXDataType candidate, VXDataType& best) {
  if (best < 0 || VXSizeOf(candidate) < VXSizeOf(best)) best = candidate;
}

bool isInRange(VXDataType dataType, double value) {
  const long double exact = value;
  return VXDataTypeMin(dataType) <= exact && exact <= VXDataTypeMax(dataType);
}

}  // namespace

VXDataType VXGetRangeAndPrecisionEquivalent(VXDataType dataType) {
  const VXTypeInfos* const infos = VXGetTypeInfosForDataType(dataType);
  return infos ? infos->rangeAndPrecisionEquivalent : -1;
}

VXint32 VXRangeOrder(VXDataType dataType) {
  if (!VXIsValidType(dataType) || !VXIsStandardType(VXGetRangeAndPrecisionEquivalent(dataType))) return -1;
  // A registered type ranks below all standard ones, so that it holds only those that name it.
  return VXIsStandardType(dataType) ? vx::standardTypes[dataType].rangeOrder : 0;
}

int VXHolds(VXDataType holder, VXDataType held) {
  if (holder == held) return 1;
  const VXTypeInfos* const heldInfos = VXGetTypeInfosForDataType(held);
  if (heldInfos && listsAsGoodCast(*heldInfos, VXNameFromDataType(holder))) return 1;
  if (!VXIsStandardType(held)) return 0;
  if (VXRangeOrder(holder) <= VXRangeOrder(held)) return 0;
  return VXIsSigned(holder) || !VXIsSigned(held);
}

VXDataType VXPromotedType(VXDataType first, VXDataType second) {
  if (!VXIsValidType(first)) return VXIsValidType(second) ? second : -1;
  if (!VXIsValidType(second)) return first;
  if (VXHolds(first, second)) return first;
  if (VXHolds(second, first)) return second;
  VXDataType bestStandard = -1;
  VXDataType bestOther = -1;
  for (VXDataType candidate = 0; candidate < VXNumDataTypes(); ++candidate) {
    if (!VXHolds(candidate, first) || !VXHolds(candidate, second)) continue;
    takeSmaller(candidate, VXIsStandardType(candidate) ? bestStandard : bestOther);
  }
  return bestStandard >= 0 ? bestStandard : bestOther;
}

VXDataType VXPromotedPrecision(VXDataType first, VXDataType second) {
  const bool isFirstValid = VXIsValidType(first) != 0;
  if (isFirstValid != (VXIsValidType(second) != 0)) return isFirstValid ? first : second;
  const VXDataType firstEquivalent = VXGetRangeAndPrecisionEquivalent(first);
  const VXDataType secondEquivalent = VXGetRangeAndPrecisionEquivalent(second);
  const bool isFirstFloat = VXIsFloatType(firstEquivalent) != 0;
  if (isFirstFloat != (VXIsFloatType(secondEquivalent) != 0)) return isFirstFloat ? first : second;
  return VXRangeOrder(firstEquivalent) < VXRangeOrder(secondEquivalent) ? second : first;
}

VXDataType VXGetDataTypeForUncorrectedRange(double minValue, double maxValue, int preferUnsigned) {
  if (maxValue < minValue) std::swap(minValue, maxValue);

  static constexpr VXDataType order[2][9] = {{VXint8Type, VXuint8Type, VXint16Type, VXuint16Type, VXint32Type,
                                              VXuint32Type, VXint64Type, VXfloatType, VXdoubleType},
                                             {VXuint8Type, VXint8Type, VXuint16Type, VXint16Type, VXuint32Type,
                                              VXint32Type, VXint64Type, VXfloatType, VXdoubleType}};
  VXDataType found = VXldoubleType;
  for (const VXDataType candidate : order[preferUnsigned ? 1 : 0]) {
    if (isInRange(candidate, minValue) && isInRange(candidate, maxValue)) {
      found = candidate;
      break;
    }
  }

  // A narrow range is taken to hold fractions; one without width is a single value and keeps its type.
  const double width = maxValue - minValue;
  const bool isNarrow = width <= 1.0 && std::fabs(width) >= smallestNormal;
  const bool isFloat = found == VXfloatType || found == VXdoubleType || found == VXldoubleType;
  return isNarrow && !isFloat ? static_cast<VXDataType>(VXfloatType) : found;
}

VXDataType VXGetDataTypeForRange(double* minValue, double* maxValue, int preferUnsigned) {
  if (!minValue || !maxValue) return VXldoubleType;
  if (*maxValue < *minValue) std::swap(*minValue, *maxValue);
  if (std::fabs(*minValue - *maxValue) < smallestNormal) *maxValue = *minValue + 1.0;
  return VXGetDataTypeForUncorrectedRange(*minValue, *maxValue, preferUnsigned);
}
