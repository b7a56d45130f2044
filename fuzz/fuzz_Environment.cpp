// Environment values at start: whatever the texts, the settings are the documented numbers, and no library is looked
// for where it must not be.

#include "FuzzCheck.h"
#include "FuzzInput.h"

#include "vxCache.h"
#include "vxHost.h"
#include "vxInitSystemVX.h"
#include "vxLibraryLoader.h"
#include "vxSystemInfo.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>

using namespace vx;
using fuzz::require;

namespace {

__extension__ using Wide = __int128;
using Text = std::optional<std::string>;

Text takeVariable(fuzz::FuzzInput& input) {
  if (!input.takeBool()) return {};
  return input.takeText(40).c_str();
}

void set(const char* name, const Text& value) {
  if (value) {
    setenv(name, value->c_str(), 1);
  } else {
    unsetenv(name);
  }
}

// The number that a text begins with: limited to 64 bits, then wrapped to 32.
int toInt(const std::string& text) {
  std::size_t i = text.find_first_not_of(" \t\n\v\f\r");
  if (i == std::string::npos) return 0;
  const bool isNegative = text[i] == '-';
  if (text[i] == '-' || text[i] == '+') ++i;
  Wide number = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
    number = std::min(number * 10 + (text[i] - '0'), (Wide{1} << 63));
  }
  number = isNegative ? -number : std::min(number, (Wide{1} << 63) - 1);
  return static_cast<int>(number);
}

void checkNumbers(fuzz::FuzzInput& input) {
  const Text numThreads = takeVariable(input);
  const Text level = takeVariable(input);
  const Text cacheSize = takeVariable(input);
  const Text filter = takeVariable(input);
  const Text debugOn = takeVariable(input);
  const Text debugAll = takeVariable(input);
  const Text useExceptions = takeVariable(input);
  set("VX_NUM_THREADS", numThreads);
  set("VX_MEM_OPT_LEVEL", level);
  set("VX_CACHE_SIZE_IN_KB", cacheSize);
  set("VX_MESSAGE_FILTER", filter);
  set("VX_DEBUG_ON", debugOn);
  set("VX_DEBUG_ALL", debugAll);
  set("VX_USE_EXCEPTIONS", useExceptions);

  Host& host = Host::getDefaultHost();
  const unsigned int filterBefore = VXErrorOutput.getMessageFilter();
  const VXuint64 levelBefore = host.getCache().getMemoryOptimizationLevel();
  const VXuint64 sizeBefore = host.getCache().getMaxCacheSizeKB();
  setVXEnvironment();
  require(host.getMaxNumThreads() ==
              (numThreads ? static_cast<VXuint32>(toInt(*numThreads)) : SystemInfo::getNumVirtualProcessors()),
          "the number of threads");
  const bool isDebugOn = debugOn && toInt(*debugOn) != 0;
  require(VXErrorOutput.getMessageFilter() == (filter      ? static_cast<unsigned int>(toInt(*filter))
                                               : isDebugOn ? filterBefore | VX_DEBUG
                                                           : filterBefore & 0xF7U),
          "the filter of messages");
  require(VXErrorOutput.isFullDebuggingOn() == (debugAll && toInt(*debugAll) != 0), "full debugging");
  const auto wantedLevel = level ? static_cast<VXuint64>(toInt(*level)) : levelBefore;
  require(host.getCache().getMemoryOptimizationLevel() == std::min<VXuint64>(wantedLevel, 10),
          "the level of the cache");
  require(host.getCache().getMaxCacheSizeKB() == (cacheSize ? static_cast<VXuint64>(toInt(*cacheSize)) : sizeBefore),
          "the limit of the cache");
}

void checkSearch(fuzz::FuzzInput& input) {
  const std::string name = input.takeText(20);
  const Text modulePath = takeVariable(input);
  const Text loaderPath = takeVariable(input);
  const LibrarySearchEnvironment environment{modulePath ? modulePath->c_str() : nullptr,
                                             loaderPath ? loaderPath->c_str() : nullptr};
  const bool isPath = name.find('/') != std::string::npos;
  for (const std::string& place : libraryCandidates(name, environment, "/own")) {
    // Without a slash a name is for the system's loader, which looks at its own path only.
    const bool isForLoader = place.find('/') == std::string::npos;
    require(isPath || isForLoader || place[0] == '/', "no relative folder is searched");
    require(!isPath || place.compare(0, name.rfind('/') + 1, name, 0, name.rfind('/') + 1) == 0,
            "a path is a path only");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::silenceMessages();
  // Loading a library by this name is not what is looked at.
  set("VX_SUPPRESS_VXTYPEEXTENSION_LOAD", "1");
  fuzz::FuzzInput input(data, size);
  checkNumbers(input);
  checkSearch(input);
  return 0;
}
