/// \file session.h
/// What every command that uses the library begins with: the library, its messages, its module libraries.

#ifndef VXTILE_SESSION_H
#define VXTILE_SESSION_H

#include "vxHandles.h"

#include <string>
#include <utility>
#include <vector>

namespace vxtile {

/// A place in which a library was looked for, and why it wasn't loaded from there; no reason where it was.
struct SearchStep {
  std::string path;
  std::string reason;
  bool isFound = false;
};

/// Loads a library. \return the places in which it was looked for, the last one being its own if it was found.
std::vector<SearchStep> loadLibrary(const std::string& name);

/// The library in use. Its messages go to standard error, a line each, with level, code and reason.
class Session {
 public:
  /// \throw Failure ExitCode::library
  Session();

  /// Loads module libraries. \throw Failure ExitCode::library with each place and reason for the first that isn't
  /// found.
  void load(const std::vector<std::string>& names);

 private:
  Library _library;
  MessageListener _listener;
};

}  // namespace vxtile

#endif
