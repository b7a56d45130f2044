// Reading of environment variables.

#ifndef VX_ENVIRONMENT_H
#define VX_ENVIRONMENT_H

namespace vx {

/// \return the value of an environment variable, null if it isn't set. A process with elevated rights takes none from
///         whoever started it.
const char* environmentText(const char* name) noexcept;

}  // namespace vx

#endif
