// Joins the fields with the engine above them.

#ifndef VX_ENGINE_HOOKS_H
#define VX_ENGINE_HOOKS_H

namespace vx {

/// Gives the fields the functions of the engine that they need: the first step of the start-up that makes modules
/// possible.
void installEngineHooks() noexcept;

}  // namespace vx

#endif
