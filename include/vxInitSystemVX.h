/// \file vxInitSystemVX.h
/// Start-up and shutdown of the library, for C++ callers.

#ifndef VX_INIT_SYSTEM_VX_H
#define VX_INIT_SYSTEM_VX_H

#include "vxTypes.h"

/// The build's version text, "1.8.68.23.87".
VX_C_API const char VXVersionString[];

namespace vx {

/// Starts the library. Loading it has done that already, so this finds it started and does nothing.
/// \return 1. \throw what leaves the start-up, after a fatal report; it stays unstarted then.
VX_EXPORT int initVX();

/// Takes the library down: callbacks, classes, services. Objects of the library must have been deleted before. It
/// can't be started again without being loaded anew; types that classes point to stay readable.
/// \throw what leaves the shutdown, after a fatal report.
VX_EXPORT void destroyVX();

/// Reads the environment and sets the library's services by it, as the start-up does:
/// `VX_DEBUG_ON` (number: debug messages pass the filter; unset is 0), `VX_DEBUG_ALL` (number: all debug output on;
/// unset is 0), `VX_USE_EXCEPTIONS` (number: boundaries catch every exception), `VX_MESSAGE_FILTER` (number: the whole
/// filter) and `VX_SUPPRESS_VXTYPEEXTENSION_LOAD` (set to anything: the optional library "VXTypeExtensions" is not
/// loaded). A text that is no number counts as 0. Under elevated rights no variable counts as set.
/// \throw what leaves it, after a fatal report.
VX_EXPORT void setVXEnvironment();

/// Registers the classes of fields with the run-time type system, as the start-up does after `Field` itself. Classes
/// that are registered stay as they are.
VX_EXPORT void VXInitFields();

}  // namespace vx

#endif
