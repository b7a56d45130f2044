/// \file requests.h
/// Requests of a network, one after the other.

#ifndef VXTILE_REQUESTS_H
#define VXTILE_REQUESTS_H

#include "liveNetwork.h"
#include "network.h"

#include <string>

namespace vxtile {

/// How requests are run.
struct RunSettings {
  std::string directory;  ///< Folder for files with a relative path; empty for the current one.
  bool isQuiet = false;   ///< Print nothing about what was written.
};

/// Checks of a request what needs no calculation: the format of its file and the name of its voxel type.
/// \throw Failure
void checkRequest(const Request& request);

/// Runs a request: touches, calculates and writes, prints fields. What was written is told on standard output.
/// \throw Failure; ExitCode::interrupted after Ctrl-C.
void runRequest(const LiveNetwork& network, const Request& request, const RunSettings& settings);

}  // namespace vxtile

#endif
