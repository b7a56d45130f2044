// Loading and unloading of libraries through the C interface.

#include "vxAPI.h"
#include "vxAPIFrame.h"
#include "vxErrorOutput.h"
#include "vxLibraryLoader.h"
#include "vxRuntime.h"
#include "vxTraceBuffer.h"

#include <atomic>
#include <string>

namespace {

std::atomic<int> _vxIsUnloadingLibrary{0};
std::atomic<int> unloadLibraryState{0};

// The name of the file for a library name. The search for the file knows prefix and suffix.
const char* _determineRealLibraryName(const char* name) { return name; }

// Sets the unloading flag for a scope.
class UnloadingScope {
 public:
  UnloadingScope() { _vxIsUnloadingLibrary.store(1); }
  ~UnloadingScope() { _vxIsUnloadingLibrary.store(0); }
  UnloadingScope(const UnloadingScope&) = delete;
  UnloadingScope& operator=(const UnloadingScope&) = delete;
};

}  // namespace

VXErrorCode VXLoadLibraryWOErrorExt(const char* name, void** handle) {
  const vx::TraceFrame trace("source/vxAPI:VXLoadLibraryWOErrorExt()");
  if (!vx::checkArgument(!vx::isEmptyText(name), "vxAPI: VXLoadLibraryWOError",
                         "Invalid name passed. Returning VX_BAD_PARAMETER.")) {
    return VX_BAD_PARAMETER;
  }
  vx::Runtime::setRecentlyLoadedDllName(name);
  void* const library =
      vx::callSilently<void*>(nullptr, [name] { return vx::openLibrary(_determineRealLibraryName(name)); });
  if (handle) *handle = library;
  return library ? VX_RESULT_OK : VX_LIBRARY_LOAD_FAILED;
}

VXErrorCode VXLoadLibraryWOError(const char* name) {
  const vx::TraceFrame trace("source/vxAPI:VXLoadLibraryWOError()");
  return VXLoadLibraryWOErrorExt(name, nullptr);
}

int VXLoadLibrary(const char* name) {
  const vx::TraceFrame trace("source/vxAPI:VXLoadLibrary()");
  if (!vx::checkArgument(!vx::isEmptyText(name), "vxAPI: VXLoadLibrary", "Invalid name passed. Returning 0(=false).")) {
    return 0;
  }
  const VXErrorCode code = VXLoadLibraryWOErrorExt(name, nullptr);
  if (code == VX_RESULT_OK) return 1;
  vx::reportComposed(VX_ERROR, "VXLoadLibrary", code, [name] {
    return "Could not load or create library " + std::string(_determineRealLibraryName(name)) +
           ". Some modules may not be creatable.";
  });
  return 0;
}

VXErrorCode VXUnLoadLibrary(const char* name, void* handle, char** errorText, int force) {
  const vx::TraceFrame trace("source/vxAPI:VXUnLoadLibrary()");
  if (!vx::checkArgument(!vx::isEmptyText(name), "vxAPI: VXUnLoadLibrary",
                         "Invalid name passed. Returning VX_BAD_PARAMETER.")) {
    return VX_BAD_PARAMETER;
  }
  if (!vx::checkNotProcessing("vxAPI: VXUnLoadLibrary", VX_LIBRARY_IN_USE)) return VX_LIBRARY_IN_USE;
  const long long numInstances = vx::Runtime::getNumInstancesDependentOnDll(name);
  if (numInstances < 0) return VX_BAD_PARAMETER;
  if (numInstances > 0 && !force) return VX_LIBRARY_IN_USE;

  const UnloadingScope unloading;
  if (errorText) *errorText = nullptr;
  return vx::callSilently<VXErrorCode>(VX_LIBRARY_UNLOAD_FAILED, [=] {
    const std::string libraryName(name);  // the text may be the library's
    std::string text;
    bool isGone = false;
    const bool isUnloaded = vx::closeLibrary(handle, text, &isGone);
    // A library that doesn't remove its types itself must not leave creation functions that are gone with it.
    if (isGone) vx::Runtime::destroyRuntimeTypesOfDll(libraryName.c_str());
    if (errorText) *errorText = VXStrDup(text.c_str(), VX_RETURN_NULL);
    return isUnloaded ? VX_RESULT_OK : VX_LIBRARY_UNLOAD_FAILED;
  });
}

int VXIsCurrentlyUnloadingLibrary(void) { return _vxIsUnloadingLibrary.load(); }

VXErrorCode VXSetUnloadLibraryState(int state) {
  if (!vx::checkArgument(state == 0 || state == 1, "vxAPI: VXSetUnloadLibraryState",
                         "Invalid parameter value passed, leaving state unchanged.")) {
    return VX_BAD_PARAMETER;
  }
  unloadLibraryState.store(state);
  return VX_RESULT_OK;
}

int VXGetUnloadLibraryState(void) { return unloadLibraryState.load(); }
