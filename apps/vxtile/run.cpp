// vxtile run: calculates what a network file or the command line asks for.

#include "commands.h"
#include "console.h"
#include "liveNetwork.h"
#include "requests.h"
#include "session.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <sys/resource.h>

namespace vxtile {

namespace {

struct RunOptions {
  std::string network;
  std::string file;
  std::vector<std::string> libraries;
  std::vector<std::string> assignments;
  std::string output;
  std::string box;
  std::string type;
  std::string range;
  std::string flip;
  std::vector<std::string> touches;
  std::vector<std::string> shows;
  std::string directory;
  int threads = 0;
  int cacheKB = -1;
  bool printStats = false;
  bool isQuiet = false;

  bool hasRequest() const { return !output.empty() || !touches.empty() || !shows.empty(); }
};

// Reads the value of an option, whose failures name it.
template <class Read>
auto readOption(const char* option, const std::string& text, const Read& read) {
  try {
    return read(text);
  } catch (const std::invalid_argument& error) {
    throw Failure(ExitCode::usage, std::string(option) + ": " + error.what());
  }
}

void assign(Network& network, const std::string& assignment) {
  const std::size_t equals = assignment.find('=');
  if (equals == std::string::npos) {
    throw Failure(ExitCode::usage, "--set: \"" + assignment + "\" is not of the form MODULE.FIELD=VALUE");
  }
  const FieldName name = readOption("--set", assignment.substr(0, equals), readFieldName);
  const auto module = std::find_if(network.modules.begin(), network.modules.end(),
                                   [&](const ModuleEntry& entry) { return entry.name == name.module; });
  if (module == network.modules.end()) {
    throw Failure(ExitCode::network, "--set: " + name.text() + ": there is no module \"" + name.module + "\"");
  }
  Value value = assignment.substr(equals + 1);
  for (auto& [field, former] : module->fields) {
    if (field == name.field) {
      former = std::move(value);
      return;
    }
  }
  module->fields.emplace_back(name.field, std::move(value));
}

// The requests of the command line, in place of those of the file.
std::vector<Request> readRequests(const RunOptions& options) {
  std::vector<Request> requests;
  for (const std::string& touch : options.touches) {
    requests.emplace_back().touch = readOption("--touch", touch, readFieldName);
  }
  if (!options.output.empty()) {
    Request& request = requests.emplace_back();
    request.output = readOption("--output", options.output, readFieldName);
    request.file = options.file;
    request.type = options.type;
    if (!options.box.empty()) request.box = readOption("--box", options.box, readBox);
    if (!options.flip.empty()) request.flip = readOption("--flip", options.flip, readFlip);
    if (!options.range.empty()) {
      request.window = readOption("--range", options.range, [](const std::string& text) {
        const auto numbers = readNumbers(text);
        if (!numbers) throw std::invalid_argument("\"" + text + "\" is not of the form LOW,HIGH");
        return windowOf(*numbers);
      });
    }
  }
  Request& last = requests.empty() ? requests.emplace_back() : requests.back();
  for (const std::string& show : options.shows) last.show.push_back(readOption("--show", show, readFieldName));
  return requests;
}

void printStats(std::chrono::steady_clock::duration time) {
  std::array<char, 32> seconds;
  std::snprintf(seconds.data(), seconds.size(), "%.3f", std::chrono::duration<double>(time).count());
  rusage usage = {};
  ::getrusage(RUSAGE_SELF, &usage);
  std::cout << "time     " << seconds.data() << " s on at most " << VXGetMaxNumThreads() << " threads\n"
            << "pages    " << VXHostGetNumPagesCalculated() << " calculated, " << VXHostGetNumPagesHit() << " hit\n"
            << "cache    " << VXCacheGetCurrentSizeKB() << " KB held, " << VXCacheGetPeakSizeKB() << " KB peak, "
            << VXCacheGetMaxSizeKB() << " KB limit\n"
            << "memory   " << usage.ru_maxrss << " KB peak of the process" << std::endl;
}

void run(const RunOptions& options) {
  Network network = readNetwork(options.network);
  for (const std::string& assignment : options.assignments) assign(network, assignment);
  const std::vector<Request> requests = options.hasRequest() ? readRequests(options) : network.requests;
  if (requests.empty()) {
    throw Failure(ExitCode::network, options.network + ": there are no requests; --output names one");
  }
  network.libraries.insert(network.libraries.end(), options.libraries.begin(), options.libraries.end());

  Session session;
  session.load(network.libraries);
  if (options.threads > 0) VXSetMaxNumThreads(options.threads);
  if (options.cacheKB >= 0) VXCacheSetMaxSizeKB(options.cacheKB);
  for (const Request& request : requests) checkRequest(request);
  catchInterrupts();
  const LiveNetwork live(network);
  const auto begin = std::chrono::steady_clock::now();
  for (const Request& request : requests) runRequest(live, request, {options.directory, options.isQuiet});
  if (options.printStats) printStats(std::chrono::steady_clock::now() - begin);
}

}  // namespace

void addRunCommand(CLI::App& application) {
  CLI::App* const command =
      application.add_subcommand("run", "Run the requests of a network, or one from the command line");
  const auto options = std::make_shared<RunOptions>();
  const auto repeatable = [](CLI::Option* option) { option->allow_extra_args(false); };
  command->add_option("NETWORK", options->network, "Network file, or - for standard input")->required();
  CLI::Option* const file =
      command->add_option("FILE", options->file,
                          "File for the voxels of --output: .png, .nii, .nii.gz or .raw. Without it they are dropped");
  repeatable(command->add_option("-s,--set", options->assignments, "Set a field before anything runs; may be repeated")
                 ->type_name("MODULE.FIELD=VALUE"));
  CLI::Option* const output =
      command->add_option("-o,--output", options->output, "Calculate this output instead of the file's requests")
          ->type_name("MODULE.OUTPUT");
  CLI::Option* const box =
      command
          ->add_option("-b,--box", options->box,
                       "Part of the image, such as x=10:99,z=5; or two corners of 3 or 6 numbers. Default: all of it")
          ->type_name("BOX");
  CLI::Option* const type =
      command->add_option("-t,--type", options->type, "Voxel type of the file, such as float or uint8")
          ->type_name("TYPE");
  CLI::Option* const range =
      command->add_option("-r,--range", options->range, "Map these values to 0 and 255, and voxels to uint8")
          ->type_name("LOW,HIGH");
  CLI::Option* const flip =
      command->add_option("--flip", options->flip, "Mirror a picture: horizontal, vertical or both")->type_name("HOW");
  for (CLI::Option* const option : {file, box, type, range, flip}) option->needs(output);
  repeatable(command->add_option("--touch", options->touches, "Touch a field, such as a trigger; may be repeated")
                 ->type_name("MODULE.FIELD"));
  repeatable(command->add_option("--show", options->shows, "Print a field at the end; may be repeated")
                 ->type_name("MODULE.FIELD"));
  command->add_option("-d,--directory", options->directory, "Folder for files with a relative path; made if missing")
      ->type_name("FOLDER");
  command->add_option("-j,--threads", options->threads, "Threads that calculate pages")->check(CLI::Range(1, 1024));
  command->add_option("--cache-kb", options->cacheKB, "Limit of the page cache in KB of 1024 bytes")
      ->check(CLI::Range(0, 2147483647));
  addLibraryOption(*command, options->libraries, "Load this library as well; may be repeated");
  command->add_flag("--stats", options->printStats, "Print time, pages, cache and memory at the end");
  command->add_flag("-q,--quiet", options->isQuiet, "Don't tell what was written");
  command->callback([options] { run(*options); });
}

}  // namespace vxtile
