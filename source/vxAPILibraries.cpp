// Loading and unloading of libraries through the C interface.

#include "vxAPI.h"
#include "vxAPIFrame.h"
#include "vxErrorOutput.h"
#include "vxLibraryLoader.h"
#include "vxRuntime.h"
#include "vxTraceBuffer.h"

#include <atomic>
#include <string>
#include <string_view>

namespace {

std::atomic<int> _vxIsUnloadingLibrary{0};
std::atomic<int> unloadLibraryState{0};

// Why the last load failed, cut to what there is room for.
char loadErrorText[1024] = {};

void setLoadErrorText(std::string_view text) noexcept {
  loadErrorText[text.copy(loadErrorText, sizeof loadErrorText - 1)] = '\0';
}

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

// What loading a library is, however the caller hears of it.
void* openModuleLibrary(const char* name, const vx::TellPlace& tell = {}) {
  const bool isKnown = vx::Runtime::getNumInstancesDependentOnDll(name) >= 0;
  vx::Runtime::setRecentlyLoadedDllName(name);
  setLoadErrorText("There is no memory.");
  void* const library = vx::callSilently<void*>(nullptr, [&] {
    std::string reason;
    void* const opened = vx::openLibrary(_determineRealLibraryName(name), &reason, tell);
    setLoadErrorText(reason);
    return opened;
  });
  // What a library registered before its start failed went with its code.
  if (!library && !isKnown) vx::Runtime::destroyRuntimeTypesOfDll(name);
  return library;
}

}  // namespace

VXErrorCode VXLoadLibraryWOErrorExt(const char* name, void** handle) {
  const vx::TraceFrame trace("source/vxAPI:VXLoadLibraryWOErrorExt()");
  if (!vx::checkArgument(!vx::isEmptyText(name), "vxAPI: VXLoadLibraryWOError",
                         "Invalid name passed. Returning VX_BAD_PARAMETER.")) {
    return VX_BAD_PARAMETER;
  }
  void* const library = openModuleLibrary(name);
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
  vx::callSilently(0, [name, code] {
    const std::string reason = "Could not load or create library " + std::string(_determineRealLibraryName(name)) +
                               ". Some modules may not be creatable.";
    const std::string errorText = std::string(VXGetErrorCodeDescription(code)) + " " + loadErrorText;
    vx::reportText(VX_ERROR, "VXLoadLibrary", errorText.c_str(), reason.c_str(), nullptr, nullptr, code);
    return 0;
  });
  return 0;
}

const char* VXGetLoadLibraryErrorText(void) { return loadErrorText; }

VXErrorCode VXLoadLibraryExplained(const char* name, void* userData, VXLibrarySearchCB callback) {
  const vx::TraceFrame trace("source/vxAPI:VXLoadLibraryExplained()");
  const vx::CallLabel label("vxAPI: VXLoadLibraryExplained");
  if (!vx::checkArgument(!vx::isEmptyText(name), label, "Invalid name passed. Returning VX_BAD_PARAMETER.") ||
      !vx::checkArgument(callback != nullptr, label, "Invalid callback passed. Returning VX_BAD_PARAMETER.")) {
    return VX_BAD_PARAMETER;
  }
  const auto tell = [=](const char* path, const char* reason) { callback(userData, path, reason); };
  return openModuleLibrary(name, tell) ? VX_RESULT_OK : VX_LIBRARY_LOAD_FAILED;
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
