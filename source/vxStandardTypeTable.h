/// \file vxStandardTypeTable.h
/// What is known of the ten standard types but for their C types: names, codes, ranks and good casts.

#ifndef VX_STANDARD_TYPE_TABLE_H
#define VX_STANDARD_TYPE_TABLE_H

#include "vxTypes.h"

namespace vx {

/// Number of standard types.
inline constexpr VXDataType numStandardTypes = 10;

/// A standard type.
struct StandardType {
  const char* name;
  char structInfoString[2];    ///< One component code.
  VXint32 rangeOrder;          ///< Rank by range; signed and unsigned types of one width share one.
  VXuint32 numGoodCastTos;     ///< Number of `goodCastTos`.
  const char* goodCastTos[8];  ///< Names of the types that hold this one's values.
};

/// The standard types, indexed by number.
inline constexpr StandardType standardTypes[numStandardTypes] = {
    {"int8", "C", 1, 6, {"int16", "int32", "float", "double", "long double", "int64"}},
    {"unsigned int8",
     "c",
     1,
     8,
     {"int16", "unsigned int16", "int32", "unsigned int32", "float", "double", "long double", "int64"}},
    {"int16", "S", 2, 5, {"int32", "float", "double", "long double", "int64"}},
    {"unsigned int16", "s", 2, 6, {"int32", "unsigned int32", "float", "double", "long double", "int64"}},
    {"int32", "I", 3, 4, {"float", "double", "long double", "int64"}},
    {"unsigned int32", "i", 3, 4, {"float", "double", "long double", "int64"}},
    {"float", "f", 5, 2, {"double", "long double"}},
    {"double", "d", 6, 1, {"long double"}},
    {"long double", "D", 7, 0, {}},
    {"int64", "6", 4, 3, {"float", "double", "long double"}},
};

}  // namespace vx

#endif
