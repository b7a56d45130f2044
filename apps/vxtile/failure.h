/// \file failure.h
/// How vxtile fails: an exit code and a text that names what was wrong.

#ifndef VXTILE_FAILURE_H
#define VXTILE_FAILURE_H

#include <stdexcept>
#include <string>

namespace vxtile {

/// What vxtile returns to the shell. The manual page lists the same.
enum class ExitCode : int {
  ok = 0,
  calculation = 1,   ///< An image is not valid, or the calculation of voxels failed.
  usage = 2,         ///< The command line is wrong.
  network = 3,       ///< The network can't be read or built: syntax, modules, fields, values, connections, requests.
  library = 4,       ///< A library could not be loaded, or libVX doesn't fit.
  file = 5,          ///< A file could not be written.
  memory = 6,        ///< There is not enough memory.
  interrupted = 130  ///< Stopped by Ctrl-C.
};

/// Ends a command. The text goes to standard error.
class Failure : public std::runtime_error {
 public:
  Failure(ExitCode code, const std::string& text) : std::runtime_error(text), _code(code) {}
  ExitCode code() const noexcept { return _code; }

 private:
  ExitCode _code;
};

}  // namespace vxtile

#endif
