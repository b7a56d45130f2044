// Whether a library or a host fits this base layer.

#include "vxErrorOutput.h"

#include <string>

namespace {

struct Version {
  int major;
  int minor;
  int release;
};

constexpr Version ownVersion{1, 8, 68};

}  // namespace

int VXCheckCPPAPILinkCompatibility(int major, int minor, int release, int build, const char* version,
                                   const char* initName) {
  if (major == ownVersion.major && minor == ownVersion.minor && release == ownVersion.release) return 1;
  vx::reportComposed(VX_ERROR, "VXCheckCPPAPILinkCompatibility()", VX_BAD_PARAMETER, [=] {
    const auto number = [](int value) { return std::to_string(value); };
    return std::string("The library started by '") + (initName ? initName : "") + "' was compiled for version " +
           number(major) + "." + number(minor) + "." + number(release) + "." + number(build) + " ('" +
           (version ? version : "") + "'), which does not fit version " + number(ownVersion.major) + "." +
           number(ownVersion.minor) + "." + number(ownVersion.release) + " of the base layer.";
  });
  return 0;
}

int VXIsCAPILinkCompatible(int major, int minor, int release) {
  if (major != ownVersion.major || minor < 0 || release < 0) return 0;
  if (minor != ownVersion.minor) return minor < ownVersion.minor;
  return release <= ownVersion.release;
}
