// Random networks against plain loops over whole images.
//
// The environment changes how much is done: VX_REFERENCE_NETWORKS is the number of networks, VX_REFERENCE_TILES that of
// tiles of each, VX_REFERENCE_SEED the seed of the first network. The next ones have the next seeds, so that a network
// that failed is repeated by its seed and the number 1.

#include "MessageRecorder.h"
#include "RandomNetwork.h"

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

// Runs one network. \return what was wrong, or an empty text.
std::string runNetwork(unsigned long long seed, unsigned long long numTiles, unsigned long long& numDelivered) {
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
  numDelivered += static_cast<unsigned long long>(network.numDelivered());
  return "";
}

// How much was tested.
void printSummary(unsigned long long numDelivered) {
  std::cout << numDelivered << " tiles were delivered, the others refused. Pages, and those on threads:";
  for (int kind = 0; kind < numModuleKinds; ++kind) {
    const auto moduleKind = static_cast<ModuleKind>(kind);
    const long numThreaded = NetworkModule::numCalculations(moduleKind, true);
    std::cout << " " << nameOf(moduleKind) << " " << numThreaded + NetworkModule::numCalculations(moduleKind, false)
              << " " << numThreaded << (kind + 1 < numModuleKinds ? "," : "");
  }
  std::cout << std::endl;
}

TEST(ReferenceTest, EveryTileOfARandomNetworkEqualsThePlainLoops) {
  ASSERT_TRUE(registerNetworkModules());
  const unsigned long long numNetworks = setting("VX_REFERENCE_NETWORKS", VX_REFERENCE_NETWORKS);
  const unsigned long long numTiles = setting("VX_REFERENCE_TILES", 10);
  const unsigned long long seed = setting("VX_REFERENCE_SEED", 1);
  std::cout << numNetworks << " networks of " << numTiles << " tiles from seed " << seed << std::endl;
  unsigned long long numDelivered = 0;
  for (unsigned long long i = 0; i < numNetworks; ++i) {
    const std::string error = runNetwork(seed + i, numTiles, numDelivered);
    ASSERT_EQ(error, "") << "repeat with VX_REFERENCE_SEED=" << seed + i
                         << " VX_REFERENCE_NETWORKS=1 VX_REFERENCE_TILES=" << numTiles;
  }
  printSummary(numDelivered);
  // Most networks are valid, so that the comparison means something.
  if (numNetworks >= 100) {
    EXPECT_GE(2 * numDelivered, numNetworks * numTiles);
  }
}

}  // namespace
}  // namespace vx::test
