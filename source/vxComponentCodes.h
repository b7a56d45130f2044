/// \file vxComponentCodes.h
/// The table of component codes, and typed access to a component by its code.

#ifndef VX_COMPONENT_CODES_H
#define VX_COMPONENT_CODES_H

#include "vxTypeInfos.h"

#include <cstring>

namespace vx {

/// The one list of component codes:
/// X(code, name in C, name of the voxel type, voxel type, stored type, isSigned, isInteger, isFloat, isLong).
/// Sizes are fixed: "l" and "L" are stored in 4 bytes and "D" in 8 on every platform.
#define VX_FOR_EACH_COMPONENT_CODE(X)                                            \
  X('b', "bool", "unsigned int8", VXuint8Type, VXuint8, 0, 1, 0, 0)              \
  X('c', "unsigned char", "unsigned int8", VXuint8Type, VXuint8, 0, 1, 0, 0)     \
  X('C', "char", "int8", VXint8Type, VXint8, 1, 1, 0, 0)                         \
  X('s', "unsigned short", "unsigned int16", VXuint16Type, VXuint16, 0, 1, 0, 0) \
  X('S', "signed short", "int16", VXint16Type, VXint16, 1, 1, 0, 0)              \
  X('i', "unsigned int", "unsigned int32", VXuint32Type, VXuint32, 0, 1, 0, 0)   \
  X('I', "signed int", "int32", VXint32Type, VXint32, 1, 1, 0, 0)                \
  X('l', "unsigned long", "unsigned int32", VXuint32Type, VXuint32, 0, 1, 0, 0)  \
  X('L', "long", "int32", VXint32Type, VXint32, 1, 1, 0, 0)                      \
  X('f', "float", "float", VXfloatType, VXfloat, 1, 0, 1, 0)                     \
  X('d', "double", "double", VXdoubleType, VXdouble, 1, 0, 1, 0)                 \
  X('D', "long double", "long double", VXldoubleType, VXldouble, 1, 0, 1, 1)     \
  X('6', "int64", "int64", VXint64Type, VXint64, 1, 1, 0, 1)

/// A row of the table.
struct ComponentCode {
  char code;
  const char* cName;
  const char* vxName;
  VXDataType dataType;
  VXuint32 size;
  VXint32 isSigned, isInteger, isFloat, isLong;
};

/// The table of component codes.
inline constexpr ComponentCode componentCodes[] = {
#define VX_COMPONENT_ROW(code, cName, vxName, dataType, Stored, isSigned, isInteger, isFloat, isLong) \
  {code, cName, vxName, dataType, sizeof(Stored), isSigned, isInteger, isFloat, isLong},
    VX_FOR_EACH_COMPONENT_CODE(VX_COMPONENT_ROW)
#undef VX_COMPONENT_ROW
};

/// \return the row of a code, null for an unknown one.
constexpr const ComponentCode* findComponentCode(char code) noexcept {
  for (const ComponentCode& row : componentCodes) {
    if (row.code == code) return &row;
  }
  return nullptr;
}

/// A component whose code is known at compile time. Addresses need not be aligned.
template <char componentCode, class T>
struct Component {
  using Type = T;
  static constexpr char code = componentCode;
  static constexpr bool isBool = componentCode == 'b';

  /// \return the stored number; 1 or 0 for "b".
  static T load(const void* address) noexcept {
    T value;
    std::memcpy(&value, address, sizeof(T));
    if constexpr (isBool) value = value != 0 ? 1 : 0;
    return value;
  }
  static void store(T value, void* address) noexcept { std::memcpy(address, &value, sizeof(T)); }
};

/// Calls `visitor` with the Component of a code. \return what it returns, `fallback` for an unknown code.
template <class Result, class Visitor>
Result visitComponent(char code, Result fallback, Visitor&& visitor) {
  switch (code) {
#define VX_VISIT_COMPONENT(code, cName, vxName, dataType, Stored, isSigned, isInteger, isFloat, isLong) \
  case code:                                                                                            \
    return visitor(Component<code, Stored>());
    VX_FOR_EACH_COMPONENT_CODE(VX_VISIT_COMPONENT)
#undef VX_VISIT_COMPONENT
    default:
      return fallback;
  }
}

/// Calls `function(code, offset)` for each component of a type until it returns false.
template <class Function>
void forEachComponent(const VXTypeInfos& infos, Function&& function) {
  for (VXuint32 i = 0; i < infos.numComponents && i < VX_MAX_TYPE_COMPONENTS; ++i) {
    if (!function(infos.structInfoString[i], infos.componentOffsets[i])) return;
  }
}

/// \return the bytes of a component of a voxel.
inline const unsigned char* bytesAt(const void* voxel, VXuint32 offset) noexcept {
  return static_cast<const unsigned char*>(voxel) + offset;
}
/// \copydoc bytesAt
inline unsigned char* bytesAt(void* voxel, VXuint32 offset) noexcept {
  return static_cast<unsigned char*>(voxel) + offset;
}

}  // namespace vx

#endif
