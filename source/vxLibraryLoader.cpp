#include "vxLibraryLoader.h"

#include "vxEnvironment.h"

#include <dlfcn.h>
#include <link.h>
#include <string_view>

namespace vx {

namespace {

// The components of a search path, empty ones among them.
std::vector<std::string_view> splitPath(const char* path) {
  std::vector<std::string_view> folders;
  if (!path || *path == '\0') return folders;
  std::string_view rest(path);
  for (std::size_t colon = rest.find(':'); colon != std::string_view::npos; colon = rest.find(':')) {
    folders.push_back(rest.substr(0, colon));
    rest.remove_prefix(colon + 1);
  }
  folders.push_back(rest);
  return folders;
}

bool isAbsolute(std::string_view folder) { return folder.starts_with('/'); }

// Whether the system's loader might look into the current folder.
bool namesCurrentFolder(const char* path) {
  // The loader takes semicolons as separators too.
  std::string separated(path ? path : "");
  for (char& c : separated) {
    if (c == ';') c = ':';
  }
  for (const std::string_view folder : splitPath(separated.c_str())) {
    if (!isAbsolute(folder)) return true;
  }
  return false;
}

void addFileNames(std::vector<std::string>& candidates, const std::string& folder, const std::string& name) {
  candidates.push_back(folder + "lib" + name + ".so");
  candidates.push_back(folder + name);
}

std::string ownFolder() {
  Dl_info info;
  if (!dladdr(reinterpret_cast<const void*>(&openLibrary), &info) || !info.dli_fname) return {};
  const std::string_view path(info.dli_fname);
  return isAbsolute(path) ? std::string(path.substr(0, path.rfind('/'))) : std::string();
}

const link_map* mapOf(void* handle) {
  link_map* map = nullptr;
  return dlinfo(handle, RTLD_DI_LINKMAP, &map) == 0 ? map : nullptr;
}

// Whether a library is the one that this code stands in.
bool isOwnLibrary(const link_map* map) {
  Dl_info info;
  void* ownMap = nullptr;
  return dladdr1(reinterpret_cast<const void*>(&openLibrary), &info, &ownMap, RTLD_DL_LINKMAP) != 0 && ownMap == map;
}

bool isLoaded(const std::string& path) {
  void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD);
  if (handle) dlclose(handle);
  return handle != nullptr;
}

}  // namespace

std::vector<std::string> libraryCandidates(const std::string& name, const LibrarySearchEnvironment& environment,
                                           const std::string& ownFolder) {
  std::vector<std::string> candidates;
  if (const std::size_t slash = name.rfind('/'); slash != std::string::npos) {
    addFileNames(candidates, name.substr(0, slash + 1), name.substr(slash + 1));
    return candidates;
  }
  for (const std::string_view folder : splitPath(environment.modulePath)) {
    if (isAbsolute(folder)) addFileNames(candidates, std::string(folder) + "/", name);
  }
  if (!ownFolder.empty()) {
    addFileNames(candidates, ownFolder + "/", name);
    addFileNames(candidates, ownFolder + "/vx/modules/", name);
  }
  // Without a slash a name is left to the system's loader.
  if (!namesCurrentFolder(environment.loaderPath)) addFileNames(candidates, "", name);
  return candidates;
}

void* openLibrary(const char* name) {
  const LibrarySearchEnvironment environment{environmentText("VX_MODULE_PATH"), environmentText("LD_LIBRARY_PATH")};
  for (const std::string& candidate : libraryCandidates(name, environment, ownFolder())) {
    if (void* const handle = dlopen(candidate.c_str(), RTLD_NOW | RTLD_LOCAL)) return handle;
  }
  return nullptr;
}

bool closeLibrary(void* handle, std::string& errorText, bool* isGone) {
  if (isGone) *isGone = false;
  if (!handle) {
    errorText = "There is no library behind a null handle.";
    return false;
  }
  const link_map* const map = mapOf(handle);
  if (map && isOwnLibrary(map)) {
    errorText = "The library can't unload itself.";
    return false;
  }
  const std::string path(map ? map->l_name : "");
  dlerror();  // forget what failed before
  const bool isClosed = dlclose(handle) == 0;
  const char* const error = dlerror();
  errorText = error ? error : "No error.";
  if (isGone) *isGone = isClosed && !path.empty() && !isLoaded(path);
  return isClosed;
}

}  // namespace vx
