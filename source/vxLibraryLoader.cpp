#include "vxLibraryLoader.h"

#include "vxEnvironment.h"
#include "vxLibraryFile.h"

#include <dlfcn.h>
#include <exception>
#include <link.h>
#include <string_view>
#include <utility>

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

void addFileNames(std::vector<LibraryPlace>& places, const std::string& folder, const std::string& name,
                  const char* refusal = nullptr) {
  places.push_back({folder + "lib" + name + ".so", refusal});
  places.push_back({folder + name, refusal});
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

std::vector<LibraryPlace> libraryPlaces(const std::string& name, const LibrarySearchEnvironment& environment,
                                        const std::string& ownFolder) {
  std::vector<LibraryPlace> places;
  if (const std::size_t slash = name.rfind('/'); slash != std::string::npos) {
    addFileNames(places, name.substr(0, slash + 1), name.substr(slash + 1));
    return places;
  }
  for (const std::string_view folder : splitPath(environment.modulePath)) {
    if (folder.empty()) continue;
    addFileNames(places, std::string(folder) + "/", name,
                 isAbsolute(folder) ? nullptr : "Not searched: a folder of VX_MODULE_PATH must be absolute.");
  }
  if (!ownFolder.empty()) {
    addFileNames(places, ownFolder + "/", name);
    addFileNames(places, ownFolder + "/vx/modules/", name);
  }
  // Without a slash a name is left to the system's loader.
  addFileNames(places, "", name,
               namesCurrentFolder(environment.loaderPath)
                   ? "Not searched: LD_LIBRARY_PATH has a component that means the current folder."
                   : nullptr);
  return places;
}

std::vector<std::string> libraryCandidates(const std::string& name, const LibrarySearchEnvironment& environment,
                                           const std::string& ownFolder) {
  std::vector<std::string> candidates;
  for (const LibraryPlace& place : libraryPlaces(name, environment, ownFolder)) {
    if (!place.refusal) candidates.push_back(place.path);
  }
  return candidates;
}

namespace {

constexpr const char* noSuchFile = "There is no such file.";

// A call of the system's loader, which runs the start of the library. Loads may be nested.
class RunningLoad {
 public:
  RunningLoad() : _outer(std::exchange(current, this)) {}
  ~RunningLoad() { current = _outer; }
  RunningLoad(const RunningLoad&) = delete;
  RunningLoad& operator=(const RunningLoad&) = delete;

  // Notes a failure; the text is cut to what there is room for.
  void fail(const char* reason) noexcept {
    _hasFailed = true;
    _failure[std::string_view(reason).copy(_failure, sizeof _failure - 1)] = '\0';
  }
  bool hasFailed() const noexcept { return _hasFailed; }
  const char* getFailure() const noexcept { return _failure; }

  static inline RunningLoad* current = nullptr;

 private:
  RunningLoad* _outer;
  bool _hasFailed = false;
  char _failure[256] = {};
};

// The system's header says that dlopen() doesn't throw; but it runs the start of the library, which may. Called through
// a pointer, the exception can pass.
using OpenFunction = void* (*)(const char*, int);
OpenFunction volatile openFunction = &dlopen;

// Closes a library whose start was left by an exception: the loader has counted it as open, and gave no handle.
void closeUnfinished(const std::string& path) {
  void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD);
  if (!handle) return;
  dlclose(handle);
  dlclose(handle);
}

// Lets the system's loader open a library. \param reason takes why that failed.
void* openByLoader(const std::string& path, std::string& reason) {
  RunningLoad load;
  void* handle = nullptr;
  bool hasThrown = false;
  try {
    handle = openFunction(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) reason = dlerror();
  } catch (const std::exception& exception) {
    hasThrown = true;
    reason = std::string("The start of the library threw an exception: ") + exception.what();
  } catch (...) {
    hasThrown = true;
    reason = "The start of the library threw an exception.";
  }
  // Not before the exception is gone, whose class may be the library's.
  if (hasThrown) closeUnfinished(path);
  if (!handle || !load.hasFailed()) return handle;
  dlclose(handle);
  reason = load.getFailure();
  return nullptr;
}

// The file that the loader's own path leads to for a name without a slash; "" if there is none.
std::string findInLoaderPath(const std::string& name, const char* loaderPath) {
  for (const std::string_view folder : splitPath(loaderPath)) {
    std::string path = std::string(folder) + "/" + name;
    if (doesFileExist(path)) return path;
  }
  return {};
}

}  // namespace

bool noteLibraryFailure(const char* reason) noexcept {
  if (!RunningLoad::current) return false;
  RunningLoad::current->fail(reason);
  return true;
}

void* openLibrary(const char* name, std::string* reason, const TellPlace& tell) {
  const LibrarySearchEnvironment environment{environmentText("VX_MODULE_PATH"), environmentText("LD_LIBRARY_PATH")};
  std::string reasons;
  for (const LibraryPlace& place : libraryPlaces(name, environment, ownFolder())) {
    const bool isPath = place.path.find('/') != std::string::npos;
    const std::string file = isPath ? place.path : findInLoaderPath(place.path, environment.loaderPath);
    const bool isMissing = isPath && !doesFileExist(file);
    std::string fault;
    if (place.refusal) {
      fault = place.refusal;
    } else if (isMissing) {
      fault = noSuchFile;
    } else if (!file.empty()) {
      fault = findLibraryFileFault(file);
    }
    void* const handle = fault.empty() ? openByLoader(place.path, fault) : nullptr;
    if (tell) tell(place.path.c_str(), handle ? nullptr : fault.c_str());
    if (handle) return handle;
    // A place where there is nothing, or that isn't searched, explains nothing by itself.
    if (place.refusal || isMissing) continue;
    if (!reasons.empty()) reasons += ' ';
    reasons += (file.empty() ? place.path : file) + ": " + fault;
  }
  if (reason) *reason = reasons.empty() ? noSuchFile : reasons;
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
