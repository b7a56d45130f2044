// The file of a library, looked at before the system's loader takes it.

#ifndef VX_LIBRARY_FILE_H
#define VX_LIBRARY_FILE_H

#include <string>

namespace vx {

/// Says why a file can't be loaded as a library of this system. The loader maps a file as its headers say; where it is
/// shorter than that, the process would die of the first access behind its end.
/// \param path the file.
/// \return what is wrong, for a message; "" if the file is there and all that its headers name lies within it. It may
///         still fail to load.
std::string findLibraryFileFault(const std::string& path);

/// \return whether there is a file, or whatever else, at a path.
bool doesFileExist(const std::string& path);

}  // namespace vx

#endif
