// The line that a message makes on a stream.

#ifndef VX_ERROR_OUTPUT_FORMAT_H
#define VX_ERROR_OUTPUT_FORMAT_H

#include "vxUtilsAPI.h"

#include <cstddef>

namespace vx {

/// Takes a piece of a line. \param context passed through.
using LineSink = void (*)(void* context, const char* text, std::size_t length);

/// Writes a message as one line with its line end, in pieces, without allocating. Control characters are escaped.
void formatMessageLine(const VXMessage& message, LineSink sink, void* context);

/// \return the word for a level: "warning", "error", "fatal error", "debug", or "message".
const char* messageTypeName(VXMessageType type) noexcept;

}  // namespace vx

#endif
