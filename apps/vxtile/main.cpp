// vxtile: runs networks of modules from the command line. It uses the C interface of the library and nothing else.

#include "commands.h"
#include "console.h"
#include "failure.h"

#include "vxAPI.h"

#include <iostream>
#include <new>
#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {

using vxtile::ExitCode;

// The heap of glibc leaves holes between blocks of modules that come and go: an aligned block doesn't fit into the hole
// of one of the same size. Blocks with memory of their own go back as a whole. The value is below that of a block of 64
// KB, the usual size; set by hand it stays, else it would grow with the first large block that is freed, such as a
// decompressed file.
void keepBlocksOffTheHeap() {
#ifdef __GLIBC__
  ::mallopt(M_MMAP_THRESHOLD, 32 * 1024);
#endif
}

ExitCode run(int argc, char** argv) {
  CLI::App application("Runs networks of VX modules: calculates boxes of images and writes them to files.", "vxtile");
  const auto version = [] {
    return "vxtile " + std::to_string(VX_C_API_MAJOR_VERSION) + "." + std::to_string(VX_C_API_MINOR_VERSION) + "." +
           std::to_string(VX_C_API_RELEASE_VERSION);
  };
  application.set_version_flag("--version", version, "Print the version and exit");
  application.require_subcommand(1);
  application.failure_message(CLI::FailureMessage::simple);
  application.footer(
      "Exit codes: 0 done, 1 calculation failed, 2 bad command line, 3 bad network, 4 library not loaded,\n"
      "5 file not written, 6 no memory, 130 interrupted. More is in the manual page vxtile(1).");
  vxtile::addTypesCommand(application);
  vxtile::addDescribeCommand(application);
  vxtile::addRunCommand(application);
  vxtile::addGraphCommand(application);
  vxtile::addWhyCommand(application);
  try {
    application.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return application.exit(error, std::cout, std::cerr) == 0 ? ExitCode::ok : ExitCode::usage;
  } catch (const vxtile::Failure& failure) {
    vxtile::clearProgress();
    vxtile::printError(failure.what());
    return failure.code();
  } catch (const std::bad_alloc&) {
    vxtile::printError("there is not enough memory");
    return ExitCode::memory;
  }
  std::cout.flush();
  if (!std::cout) {
    vxtile::printError("standard output can't be written");
    return ExitCode::file;
  }
  return ExitCode::ok;
}

}  // namespace

int main(int argc, char** argv) {
  keepBlocksOffTheHeap();
  try {
    return static_cast<int>(run(argc, argv));
  } catch (const std::exception& error) {
    vxtile::printError(error.what());
    return static_cast<int>(ExitCode::calculation);
  }
}
