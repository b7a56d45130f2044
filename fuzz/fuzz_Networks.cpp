// Random networks of modules against plain loops over whole images. The input is the seed of a network and how many
// tiles are requested of it, with edits between them.

#include "FuzzCheck.h"
#include "FuzzInput.h"
#include "MessageRecorder.h"
#include "RandomNetwork.h"

#include <cstdint>
#include <string>

using namespace vx;

namespace {

// A wish to hold an input in one block that can't be granted is the only thing that may be said.
bool isExpected(const test::Message& message) {
  return message.type == VX_WARNING && message.reason.find("inTileCaching has been") != std::string::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool isReady = test::registerNetworkModules();
  fuzz::require(isReady, "the modules can't be registered");
  fuzz::FuzzInput input(data, size);
  const auto seed = input.take<std::uint64_t>();
  const auto numTiles = input.takeInRange(1, 8);
  test::MessageRecorder recorder;
  test::RandomNetwork network(seed);
  for (int i = 0; i < numTiles; ++i) {
    const std::string error = network.requestTile();
    if (!error.empty()) fuzz::fail(error + "\n" + network.description());
    for (const test::Message& message : recorder.take()) {
      if (!isExpected(message)) fuzz::fail("a message: " + message.reason + "\n" + network.description());
    }
    network.editSometimes();
  }
  return 0;
}
