/// \file vxAPI.h
/// The C interface of the library, for host applications in any language.
///
/// Loading the library starts it. No exception passes this interface, and no bad argument does harm: a refused call is
/// reported through the message channel and answered as each function says. Unless a function says otherwise, all
/// calls belong to one thread, and texts and handles that go in stay the caller's.

#ifndef VX_API_H
#define VX_API_H

#include "vxDataTypes.h"
#include "vxTypeInfos.h"
#include "vxTypes.h"
#include "vxUtilsAPI.h"

/// Version of the C interface that a caller is compiled against: the arguments of VXInit().
#define VX_C_API_MAJOR_VERSION 1
#define VX_C_API_MINOR_VERSION 8
#define VX_C_API_RELEASE_VERSION 68

// Start-up -----------------------------------------------------------------------------------------------------------

/// Checks that the caller fits this library, and starts the library if its load hasn't done so.
/// \param major,minor,release ::VX_C_API_MAJOR_VERSION and its siblings, see VXIsCAPILinkCompatible().
/// \return 1 if the caller fits and the library is started, else 0. An incompatible caller still gets a started
///         library.
VX_C_API int VXInit(int major, int minor, int release);

/// Takes the library down, see vx::destroyVX(). Failures are reported and change nothing here. \return 1.
VX_C_API int VXDestroy(void);

// Libraries ----------------------------------------------------------------------------------------------------------
//
// A library is named without its prefix and suffix: for "Name", `libName.so` is tried before `Name` in each place.
// The places, in this order: the name as a path, and only so, if it holds a slash; each absolute folder of the
// environment variable VX_MODULE_PATH (folders with colons between); the folder of this library, and `vx/modules`
// beside it; the search of the system's loader, unless LD_LIBRARY_PATH has a component that means the current folder,
// which is never searched. Under elevated rights no environment variable counts.

/// Loads a library without reporting a failure of the load. Types that it registers meanwhile belong to `name`.
/// \param name null or empty is refused with an error, ::VX_BAD_PARAMETER.
/// \param handle takes the system's handle for VXUnLoadLibrary(), null after a failed load; may be null. A refused call
///        leaves it as it is.
/// \return 0, ::VX_BAD_PARAMETER or ::VX_LIBRARY_LOAD_FAILED.
VX_C_API VXErrorCode VXLoadLibraryWOErrorExt(const char* name, void** handle);

/// As VXLoadLibraryWOErrorExt(), without the handle.
VX_C_API VXErrorCode VXLoadLibraryWOError(const char* name);

/// Loads a library and reports an error if that fails. \return 1 on success, else 0.
VX_C_API int VXLoadLibrary(const char* name);

/// Unloads a library and removes its types.
/// \param name as it was loaded; null or empty is refused with an error, ::VX_BAD_PARAMETER.
/// \param handle from VXLoadLibraryWOErrorExt().
/// \param errorText takes the system's text about the unload, on success too, which the caller frees by VXFree(); may
///        be null. A call that doesn't reach the unload leaves it as it is.
/// \param force non-zero: unload although instances of the library's classes live.
/// \return 0; ::VX_BAD_PARAMETER for a bad or unknown name; ::VX_LIBRARY_IN_USE if instances live and nothing was
///         done; ::VX_LIBRARY_UNLOAD_FAILED, also for the handle of this library itself.
VX_C_API VXErrorCode VXUnLoadLibrary(const char* name, void* handle, char** errorText, int force);

/// \return 1 while VXUnLoadLibrary() unloads a library, else 0.
VX_C_API int VXIsCurrentlyUnloadingLibrary(void);

/// Stores a state for VXGetUnloadLibraryState(); nothing else looks at it.
/// \param state 0 or 1; another value is refused with an error. \return 0 or ::VX_BAD_PARAMETER.
VX_C_API VXErrorCode VXSetUnloadLibraryState(int state);
/// \return the state stored last, 0 at load.
VX_C_API int VXGetUnloadLibraryState(void);

#endif
