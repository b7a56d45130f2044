#include "vxEngine.h"

#include "vxErrorOutput.h"

namespace vx {

VX_ABSTRACT_CLASS_SOURCE(Engine, "BaseOp")

Engine::Engine(int numInputs, int numOutputs) : BaseOp(numInputs, numOutputs) {
  if (numInputs != 0 || numOutputs != 0) {
    report(VX_FATAL, "Engine::Engine", VX_MISUSED_INTERFACE, "Engines currently does not support inputs or outputs.");
  }
}

Engine::Engine(const Engine& /*other*/) : Engine(0, 0) {
  report(VX_FATAL, "Engine::Engine(const Engine &)", VX_MISUSED_INTERFACE,
         "Copy constructor of Engine is not implemented.");
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): nothing is assigned
Engine& Engine::operator=(const Engine& /*other*/) {
  report(VX_FATAL, "Engine&Engine::operator=(const Engine &)", VX_MISUSED_INTERFACE,
         "Assignment operator of Engine is not implemented.");
  return *this;
}

Engine::~Engine() = default;

}  // namespace vx
