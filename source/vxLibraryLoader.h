// Finding and opening libraries at run time.

#ifndef VX_LIBRARY_LOADER_H
#define VX_LIBRARY_LOADER_H

#include <functional>
#include <string>
#include <vector>

namespace vx {

/// The environment as far as it directs the search; null members count as not set.
struct LibrarySearchEnvironment {
  const char* modulePath;  ///< VX_MODULE_PATH: folders with colons between.
  const char* loaderPath;  ///< LD_LIBRARY_PATH, which directs the system's loader.
};

/// A place in which a library is looked for.
struct LibraryPlace {
  std::string path;               ///< A file, or a name for the system's loader.
  const char* refusal = nullptr;  ///< Why the place isn't searched; null if it is.
};

/// \return the places of a library in order, those that are not searched among them. Arguments are those of
/// libraryCandidates().
std::vector<LibraryPlace> libraryPlaces(const std::string& name, const LibrarySearchEnvironment& environment,
                                        const std::string& ownFolder);

/// \return the paths at which a library is looked for, in order.
/// \param name the library, or a path if it holds a slash. \param ownFolder folder of this library, "" if unknown.
std::vector<std::string> libraryCandidates(const std::string& name, const LibrarySearchEnvironment& environment,
                                           const std::string& ownFolder);

/// Takes a place and why the library wasn't opened there, null if it was.
using TellPlace = std::function<void(const char* path, const char* reason)>;

/// Opens a library. No file is given to the system's loader that isn't whole, see findLibraryFileFault().
/// \param name not empty. \param reason takes why nothing could be loaded, "" after success; may be null.
/// \param tell told of each place up to that of the library; may be empty.
/// \return the system's handle, or null. A library whose start failed, by an exception or by noteLibraryFailure(), is
///         closed again.
void* openLibrary(const char* name, std::string* reason = nullptr, const TellPlace& tell = {});

/// Lets the load that is running fail, from the start of the library that is loaded.
/// \param reason why. \return whether openLibrary() is running at all.
bool noteLibraryFailure(const char* reason) noexcept;

/// Closes a library.
/// \param handle from openLibrary(); null and the handle of this library itself are failures.
/// \param errorText takes the system's text. \param isGone takes whether the library is loaded no more; may be null.
/// \return success.
bool closeLibrary(void* handle, std::string& errorText, bool* isGone = nullptr);

}  // namespace vx

#endif
