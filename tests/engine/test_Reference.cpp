// Random networks against plain loops over whole images.
//
// The environment changes how much is done: VX_REFERENCE_NETWORKS is the number of networks, VX_REFERENCE_TILES that of
// tiles of each, VX_REFERENCE_SEED the seed of the first network. The next ones have the next seeds, so that a network
// that failed is repeated by its seed and the number 1.

#include "MessageRecorder.h"
#include "RandomNetwork.h"

#include "vxTimeCounter.h"
#include "vxUtilsAPI.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <iostream>
#include <sstream>

namespace vx::test {
namespace {

unsigned long long setting(const char* name, unsigned long long otherwise) {
  const char* const text = std::getenv(name);
  return text && *text ? std::strtoull(text, nullptr, 10) : otherwise;
}

// A wish to hold an input in one block that can't be granted is the only thing that may be said.
bool isExpected(const Message& message) {
  return message.type == VX_WARNING && message.reason.find("inTileCaching has been") != std::string::npos;
}

std::string runNetwork(unsigned long long seed, unsigned long long numTiles) {
  MessageRecorder recorder;
  RandomNetwork network(seed);
  for (unsigned long long i = 0; i < numTiles; ++i) {
    std::string error = network.requestTile();
    for (const Message& message : recorder.take()) {
      if (!isExpected(message)) error += (std::ostringstream() << "\n  message " << message).str();
    }
    if (!error.empty()) return error + "\n" + network.description();
    network.editSometimes();
  }
  return "";
}

TEST(ReferenceTest, EveryTileOfARandomNetworkEqualsThePlainLoops) {
  ASSERT_TRUE(registerNetworkModules());
  const unsigned long long numNetworks = setting("VX_REFERENCE_NETWORKS", VX_REFERENCE_NETWORKS);
  const unsigned long long numTiles = setting("VX_REFERENCE_TILES", 10);
  const unsigned long long seed = setting("VX_REFERENCE_SEED", 1);
  std::cout << numNetworks << " networks of " << numTiles << " tiles from seed " << seed << std::endl;
  for (unsigned long long i = 0; i < numNetworks; ++i) {
    const TimeCounter time;
    const std::string error = runNetwork(seed + i, numTiles);
    if (time.getRunningTimeInSeconds() > 1)
      std::cout << "SLOW " << seed + i << " " << time.getRunningTimeInSeconds() << std::endl;
    ASSERT_EQ(error, "") << "repeat with VX_REFERENCE_SEED=" << seed + i
                         << " VX_REFERENCE_NETWORKS=1 VX_REFERENCE_TILES=" << numTiles;
  }
}

}  // namespace
}  // namespace vx::test
