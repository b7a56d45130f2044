// The text of a voxel, and a voxel from its text.

#include "vxComponentCodes.h"
#include "vxErrorOutput.h"
#include "vxNumberText.h"
#include "vxTraceBuffer.h"

#include <algorithm>
#include <istream>
#include <string>
#include <type_traits>

namespace {

using vx::bytesAt;
using vx::forEachComponent;
using vx::NumberText;
using vx::visitComponent;

// A text of limited length; what is beyond is cut off.
class LimitedText {
 public:
  void append(const char* text, std::size_t length) {
    const std::size_t room = VX_MAX_TYPE_TEXT_LENGTH - _length;
    const std::size_t copied = std::min(length, room);
    std::memcpy(_text + _length, text, copied);
    _length += copied;
  }
  void append(const NumberText& number) {
    const auto length = static_cast<std::size_t>(number.end() - number.begin());
    append(number.begin(), std::min<std::size_t>(length, VX_MAX_COMPONENT_TEXT_LENGTH));
  }
  char* duplicate() {
    _text[_length] = '\0';
    return VXStrDup(_text, VX_RETURN_NULL);
  }

 private:
  char _text[VX_MAX_TYPE_TEXT_LENGTH + 1];
  std::size_t _length = 0;
};

NumberText floatText(double value, int numDigits, int maxNumDigits) {
  return numDigits < 0 ? NumberText::general(value, maxNumDigits)
                       : NumberText::fixed(value, std::min(numDigits, maxNumDigits));
}

void appendComponent(char code, const void* address, int numDigits, LimitedText& text) {
  visitComponent(code, false, [&](auto component) {
    using Type = typename decltype(component)::Type;
    if constexpr (std::is_floating_point_v<Type>) {
      text.append(floatText(component.load(address), numDigits, sizeof(Type) == 4 ? 6 : 15));
    } else {
      text.append(NumberText(component.load(address)));
    }
    return true;
  });
}

// Reads a component; returns what stands behind it, or null, with nothing written, if there is none.
const char* readComponent(char code, const char* text, void* address) {
  return visitComponent(code, static_cast<const char*>(nullptr), [=](auto component) {
    using Type = typename decltype(component)::Type;
    const auto read = [=](auto number, auto* reader) {
      const char* const end = reader(text, number);
      if (end) component.store(static_cast<Type>(component.isBool ? number != 0 : number), address);
      return end;
    };
    if constexpr (std::is_floating_point_v<Type>) {
      return read(double{}, &vx::readDouble);
    } else if constexpr (sizeof(Type) == 8) {
      return read(VXint64{}, &vx::readInt64);
    } else if constexpr (std::is_signed_v<Type> || component.isBool) {
      return read(VXint32{}, &vx::readInt32);
    } else {
      return read(VXuint32{}, &vx::readUint32);
    }
  });
}

void copyComponent(char code, const void* source, void* result, VXuint32 offset) {
  std::memmove(bytesAt(result, offset), bytesAt(source, offset), VXTypeComponentSize(code));
}

char* orEmpty(char* text) { return text ? text : VXStrDup("", VX_RETURN_NULL); }

}  // namespace

char* _VXTypeComponentsToString(const VXTypeInfos* infos, const void* voxel, int numDigits) {
  const vx::TraceFrame trace("source/vxTypeInfos:_VXTypeComponentsToString()");
  if (!infos || !voxel) return nullptr;
  LimitedText text;
  bool isFirst = true;
  forEachComponent(*infos, [&](char code, VXuint32 offset) {
    if (!isFirst) text.append(" ", 1);
    isFirst = false;
    appendComponent(code, bytesAt(voxel, offset), numDigits, text);
    return true;
  });
  return text.duplicate();
}

char* VXTypeComponentsToString(const VXTypeInfos* infos, const void* voxel) {
  return orEmpty(_VXTypeComponentsToString(infos, voxel, -1));
}

char* VXTypeComponentsToStringLimited(const VXTypeInfos* infos, const void* voxel, int numDigits) {
  return orEmpty(_VXTypeComponentsToString(infos, voxel, numDigits));
}

char* VXGetVoxelValueAsString(const void* voxel, VXDataType dataType, VXErrorCode* errorCode, int numDigits) {
  const VXTypeInfos* const infos = VXGetTypeInfosForDataType(dataType);
  if (errorCode) *errorCode = infos ? VX_RESULT_OK : VX_BAD_DATA_TYPE;
  return orEmpty(_VXTypeComponentsToString(infos, voxel, numDigits));
}

char* VXGetVoxelValueAsStringLimited(const void* voxel, VXDataType dataType, VXErrorCode* errorCode, int numDigits) {
  return VXGetVoxelValueAsString(voxel, dataType, errorCode, numDigits);
}

int VXTypeComponentsFromString(const VXTypeInfos* infos, const char* text, const void* defaultVoxel, void* result) {
  const vx::TraceFrame trace("source/vxTypeInfos:VXTypeComponentsFromString()");
  if (!infos || !text || !result || infos->numComponents == 0) return 0;
  bool hasFailed = false;
  forEachComponent(*infos, [&](char code, VXuint32 offset) {
    text = vx::skipWhiteSpace(text);
    const char* const end = hasFailed ? nullptr : readComponent(code, text, bytesAt(result, offset));
    if (end) {
      text = end;
    } else if (defaultVoxel) {
      hasFailed = true;
      copyComponent(code, defaultVoxel, result, offset);
    }
    return true;
  });
  return hasFailed ? 0 : 1;
}

VXuint32 VXTypeGetDataValuesFromString(const VXTypeInfos* infos, const char* text, double* values,
                                       VXuint32 maxNumValues) {
  if (!infos || !text || !values) return 0;
  VXuint32 numRead = 0;
  forEachComponent(*infos, [&](char code, VXuint32) {
    if (numRead == maxNumValues) return false;
    unsigned char component[8];
    const char* const end = readComponent(code, text, component);
    if (!end) return false;
    text = end;
    values[numRead++] = VXTypeGetDoubleComponent(code, component);
    return true;
  });
  return numRead;
}

VXuint32 VXTypeComponentsFromStream(const VXTypeInfos* infos, std::istream& stream, const unsigned char* defaultVoxel,
                                    unsigned char* result) {
  const vx::TraceFrame trace("source/vxTypeInfos:VXTypeComponentsFromStream()");
  if (!infos || !result) return 0;
  if (!defaultVoxel) defaultVoxel = infos->typeDefaultPtr;
  if (!defaultVoxel) {
    vx::report(VX_ERROR, "VXTypeComponentsFromStream", VX_NO_DEFAULT_VALUE,
               "Could not determine default value from infos, ignoring call.");
    return 0;
  }
  VXuint32 numRead = 0;
  bool hasFailed = false;
  forEachComponent(*infos, [&](char code, VXuint32 offset) {
    std::string word;
    hasFailed = hasFailed || !(stream >> word) || !readComponent(code, word.c_str(), bytesAt(result, offset));
    if (hasFailed) {
      copyComponent(code, defaultVoxel, result, offset);
    } else {
      ++numRead;
    }
    return true;
  });
  return numRead;
}
