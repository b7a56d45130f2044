// The start of module libraries.

#include "vxAPIFrame.h"
#include "vxErrorOutput.h"
#include "vxInitSystemVX.h"
#include "vxLibraryLoader.h"
#include "vxModule.h"

#include <exception>
#include <string>

namespace vx {

namespace {

struct Version {
  int major, minor, release, build;
  const char* text;
};

// Registers the classes of a library. \return why that failed, "" after success.
std::string registerGuarded(const Version& version, void (*registerAll)()) {
  if (!VXCheckCPPAPILinkCompatibility(version.major, version.minor, version.release, version.build, version.text,
                                      "attachModuleLibrary")) {
    return std::string("The library was compiled for version ") + (version.text ? version.text : "") +
           ", which does not fit this one, " + VXVersionString + ".";
  }
  try {
    registerAll();
    return {};
  } catch (const std::exception& exception) {
    return std::string("The start of the library threw an exception: ") + exception.what();
  } catch (...) {
    return "The start of the library threw an exception.";
  }
}

}  // namespace

void attachModuleLibrary(int major, int minor, int release, int build, const char* version,
                         void (*registerAll)()) noexcept {
  const TraceFrame trace("source/vxModuleLibrary:attachModuleLibrary()");
  std::string memory;
  const char* const reason = callSilently<const char*>("There is no memory.", [&] {
    memory = registerGuarded({major, minor, release, build, version}, registerAll);
    return memory.c_str();
  });
  // A library that isn't loaded through VX can only be told of.
  if (*reason != '\0' && !noteLibraryFailure(reason)) {
    report(VX_ERROR, "attachModuleLibrary()", VX_LIBRARY_LOAD_FAILED, reason);
  }
}

}  // namespace vx
