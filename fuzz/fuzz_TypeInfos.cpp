// Descriptions of voxel types: any of them is taken or refused as documented, and whatever is then done to voxels of
// such types stays within the components.

#include "FuzzCheck.h"
#include "FuzzInput.h"

#include "vxTypeInfos.h"
#include "vxUtilsAPI.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

using vx::fuzz::FuzzInput;
using vx::fuzz::quote;
using vx::fuzz::require;
using vx::fuzz::requireEqual;
using Bytes = std::vector<unsigned char>;

constexpr char codes[] = {'b', 'c', 'C', 's', 'S', 'i', 'I', 'l', 'L', 'f', 'd', 'D', '6'};
constexpr unsigned char padding = 0xA5;

struct Free {
  void operator()(char* text) const { VXFree(text); }
};
using Text = std::unique_ptr<char, Free>;

// The arguments of a description, and what holds them.
struct Description {
  std::string name, components;
  std::vector<VXuint32> offsets;
  VXuint64 size = 0;
  bool isWithinVoxel = true;
  bool isBasic = false;
  VXDataType equivalent = 0;
  VXuint64 numGoodCastTos = 0;
  Bytes voxel;
  VXTypeInfos infos;
};

// Components one behind the other with gaps, in a voxel that has room for them, unless the input wants it otherwise.
void takeDescription(FuzzInput& input, Description& type) {
  type.name = input.takeBool() ? "a type" : std::string(input.takeInRange<std::size_t>(0, 300), 'n');
  const auto isAnyCode = input.take<VXuint8>() % 16 == 0;
  const auto numComponents = input.takeInRange<std::size_t>(0, input.take<VXuint8>() % 8 == 0 ? 520 : 9);
  VXuint32 end = 0;
  for (std::size_t i = 0; i < numComponents; ++i) {
    const char code = isAnyCode ? static_cast<char>(input.take<VXuint8>() | 1U) : input.pick(codes);
    if (i > 0) end += input.take<VXuint8>() % 4 == 0 ? input.takeInRange<VXuint32>(0, 9) : 0;
    type.components += code;
    type.offsets.push_back(end);
    end += VXTypeComponentSize(code);
  }
  type.isBasic = input.take<VXuint8>() % 8 == 0;
  type.size = end + (type.isBasic ? 0 : input.takeInRange<VXuint32>(0, 3));
  if (input.take<VXuint8>() % 8 == 0) type.size = static_cast<VXuint64>(input.takeNumber());
  type.isWithinVoxel = type.size >= end;
  type.equivalent = static_cast<VXDataType>(
      input.take<VXuint8>() % 8 == 0 ? input.takeNumber() : static_cast<long long>(type.name.size() % 10));
  type.numGoodCastTos = input.take<VXuint8>() % 8 == 0 ? static_cast<VXuint64>(input.takeNumber()) : 0;
}

// Whether the record was made. Whether it had to be is told by the arguments.
bool initialize(Description& type) {
  // Addresses need not be those of memory.
  static const unsigned char origin[1024 * 16] = {};
  std::vector<const unsigned char*> addresses;
  for (const VXuint32 offset : type.offsets) addresses.push_back(origin + offset);
  std::memset(static_cast<void*>(&type.infos), 0, sizeof type.infos);
  VXTypeSetDefaultFunctionPointers(&type.infos);
  VXTypeInfos before;
  std::memcpy(static_cast<void*>(&before), static_cast<const void*>(&type.infos), sizeof before);
  const int result = VXTypeInfosInit(&type.infos, type.size, type.name.c_str(), -1, 1, nullptr, nullptr, nullptr,
                                     type.components.c_str(), type.isBasic ? 1 : 0, type.equivalent, addresses.data(),
                                     type.numGoodCastTos, nullptr);
  const bool areArgumentsGood = !type.name.empty() && type.name.size() <= VX_MAX_TYPE_NAME_LENGTH &&
                                !type.components.empty() && type.components.size() <= VX_MAX_TYPE_COMPONENTS &&
                                type.equivalent >= 0 && type.equivalent <= 9 &&
                                type.numGoodCastTos <= std::numeric_limits<VXuint32>::max();
  const bool hasCarrier = type.size >= 1 && type.size <= VX_MAX_TYPE_SIZE;
  if (!areArgumentsGood || (!type.isBasic && !hasCarrier)) require(result == 0, "a bad description is refused");
  if (areArgumentsGood && !type.isBasic && hasCarrier) require(result == 1, "a good description is taken");
  if (result == 0) {
    require(std::memcmp(&before, &type.infos, sizeof before) == 0, "a refused description changes nothing");
    return false;
  }
  require(type.infos.typeSize == type.size && type.infos.physicalSize >= type.size, "a voxel has room");
  require(type.infos.numComponents == type.components.size(), "components are counted");
  for (std::size_t i = 0; i < type.offsets.size(); ++i) {
    require(type.infos.componentOffsets[i] == type.offsets[i], "offsets count from the first component");
  }
  return true;
}

// A voxel of its very size, so that the sanitizer sees who leaves it.
Bytes takeVoxel(FuzzInput& input, const Description& type) {
  Bytes voxel(type.infos.physicalSize, padding);
  voxel.shrink_to_fit();
  for (std::size_t i = 0; i < type.components.size(); ++i) {
    const auto bytes = input.takeBytes(VXTypeComponentSize(type.components[i]));
    std::memcpy(voxel.data() + type.offsets[i], bytes.data() ? bytes.data() : "", bytes.size());
  }
  return voxel;
}

// Demands that nothing but components changed.
void checkPadding(const Description& type, const Bytes& voxel, const char* what) {
  std::vector<bool> isComponent(voxel.size());
  for (std::size_t i = 0; i < type.components.size(); ++i) {
    for (VXuint32 k = 0; k < VXTypeComponentSize(type.components[i]); ++k) isComponent[type.offsets[i] + k] = true;
  }
  for (std::size_t i = 0; i < voxel.size(); ++i) require(isComponent[i] || voxel[i] == padding, what);
}

std::string toText(const Description& type, const Bytes& voxel) {
  const Text text(VXTypeComponentsToString(&type.infos, voxel.data()));
  return text ? text.get() : "";
}

void checkTexts(FuzzInput& input, const Description& type, const Bytes& voxel) {
  const std::string text = toText(type, voxel);
  const bool hasUnknownCode =
      std::any_of(type.components.begin(), type.components.end(), [](char c) { return VXTypeComponentSize(c) == 0; });
  Bytes copy(voxel.size(), padding);
  const int isComplete = VXTypeComponentsFromString(&type.infos, text.c_str(), voxel.data(), copy.data());
  checkPadding(type, copy, "reading a text stays within the components");
  if (!hasUnknownCode) {
    require(isComplete == 1, "the text of a voxel is read whole");
    // The text of the largest doubles rounds up to an infinity.
    if (text.find("e+308") == std::string::npos) {
      requireEqual(toText(type, copy), text, "the text of a voxel comes back", quote);
    }
  }
  const std::string anyText = input.takeText(200);
  VXTypeComponentsFromString(&type.infos, anyText.c_str(), nullptr, copy.data());
  const int isRead = VXTypeComponentsFromString(&type.infos, anyText.c_str(), voxel.data(), copy.data());
  if (isRead == 0 && anyText.find_first_not_of(" \t\n\v\f\r") == std::string::npos) {
    requireEqual(toText(type, copy), text, "an empty text gives the default", quote);
  }
  checkPadding(type, copy, "reading any text stays within the components");
  std::vector<double> values(input.takeInRange<std::size_t>(0, 12));
  const VXuint32 numRead =
      VXTypeGetDataValuesFromString(&type.infos, anyText.c_str(), values.data(), static_cast<VXuint32>(values.size()));
  require(numRead <= values.size() && numRead <= type.components.size(), "no more numbers than there is room");
  const Text limited(VXTypeComponentsToStringLimited(&type.infos, voxel.data(), static_cast<int>(input.takeNumber())));
  require(limited && std::strlen(limited.get()) <= VX_MAX_TYPE_TEXT_LENGTH, "a text of a voxel has a limit");
}

void checkOperations(FuzzInput& input, const Description& type, const Bytes& voxel) {
  Bytes result(voxel.size(), padding);
  const double number = std::ldexp(static_cast<double>(input.takeNumber()), input.takeInRange(0, 200) - 100);
  const auto integer = static_cast<int>(input.takeNumber());
  unsigned char* const to = result.data();
  const unsigned char* const from = voxel.data();
  VXTypeSetAllDoubleComponents(&type.infos, number, to);
  VXTypeSetAllIntComponents(&type.infos, integer, to);
  VXTypeShiftComponentsLeft(&type.infos, from, integer, to);
  VXTypeCastFromBool(&type.infos, static_cast<short>(integer), to);
  VXTypeCastFromInt(&type.infos, integer, to);
  VXTypeCastFromDouble(&type.infos, number, to);
  VXTypeBinaryAndInt(&type.infos, from, integer, to);
  VXTypeBinaryOrInt(&type.infos, from, integer, to);
  VXTypeBinaryXorInt(&type.infos, from, integer, to);
  VXTypeBinaryAnd(&type.infos, from, from, to);
  VXTypeBinaryXor(&type.infos, from, from, to);
  checkPadding(type, result, "operations stay within the components");
  VXTypeCastToInt(&type.infos, from);
  VXTypeCastToDouble(&type.infos, from);
  VXTypeCastToBool(&type.infos, from);
  Bytes swapped(voxel);
  VXTypeToggleEndianType(&type.infos, swapped.data(), swapped.data(), 1);
  VXTypeToggleEndianType(&type.infos, swapped.data(), swapped.data(), 1);
  require(swapped == voxel, "bytes that are swapped twice are as before");
}

void checkCast(const Description& mine, const Bytes& voxel, const Description& other) {
  Bytes result(other.infos.physicalSize, padding);
  VXTypeCastToOtherType(&mine.infos, voxel.data(), &other.infos, result.data());
  checkPadding(other, result, "a cast stays within the components of its result");
  VXTypeIsEqualToOtherType(&other.infos, result.data(), &mine.infos, voxel.data());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  vx::fuzz::silenceMessages();
  FuzzInput input(data, size);
  const auto mine = std::make_unique<Description>();
  const auto other = std::make_unique<Description>();
  takeDescription(input, *mine);
  takeDescription(input, *other);
  const bool isMine = initialize(*mine) && mine->isWithinVoxel;
  const bool isOther = initialize(*other) && other->isWithinVoxel;
  if (!isMine) return 0;
  const Bytes voxel = takeVoxel(input, *mine);
  checkTexts(input, *mine, voxel);
  checkOperations(input, *mine, voxel);
  if (isOther) checkCast(*mine, voxel, *other);
  return 0;
}
