// C texts: the persistent state of objects, and texts that a caller releases.

#include "vxBase.h"
#include "vxGuards.h"
#include "vxStringConversion.h"
#include "vxTraceBuffer.h"
#include "vxUtilsAPI.h"

#include <memory>

namespace vx {

bool StringConversion::readFromString(const std::string& text, Base& obj) {
  const TraceFrame trace("source/vxStringConversion:StringConversion::readFromString()");
  obj.setPersistentState(text.c_str());
  return true;
}

std::string StringConversion::writeToStdString(const Base& obj) {
  const TraceFrame trace("source/vxStringConversion:StringConversion::writeToStdString()");
  const auto release = [&obj](char* state) { obj.clearPersistentState(state); };
  const std::unique_ptr<char, decltype(release)> state(obj.getPersistentState(), release);
  return state ? std::string(state.get()) : std::string();
}

char* StringConversion::newString(const std::string& text) {
  const TraceFrame trace("source/vxStringConversion:StringConversion::newString()");
  char* const copy = static_cast<char*>(VXMemDup(text.c_str(), text.size() + 1, VX_RETURN_NULL));
  checkFatal(copy != nullptr, VX_NO_MEMORY);
  return copy;
}

void StringConversion::deleteString(char* text) { VXFree(text); }

VXint64 StringConversion::getFirstNonSpacePos(const std::string& text, VXint64 startPos) {
  const VXuint64 start = startPos < 0 ? 0 : static_cast<VXuint64>(startPos);
  const std::size_t position = start < text.size() ? text.find_first_not_of(' ', start) : std::string::npos;
  return static_cast<VXint64>(position == std::string::npos ? text.size() : position);
}

}  // namespace vx
