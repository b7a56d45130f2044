// Runs a fuzz target without libFuzzer, so with any compiler:
//
//   fuzz_NAME_seeded [--runs N] [--seconds S] FOLDER...   inputs from a seed, which begin with those of the folders
//   fuzz_NAME_seeded FILE...                              the inputs in the files, one after the other
//
// VX_FUZZ_RUNS, VX_FUZZ_SECONDS and VX_FUZZ_SEED win over the arguments; whichever limit is reached first ends it, and
// without one it is 10 seconds. An input that fails is written to `crash-NAME` in the current folder.

#include "seededInputs.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

extern "C" {
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
__attribute__((weak)) int LLVMFuzzerInitialize(int* argc, char*** argv);
// Of the sanitizers, where there are any.
__attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());
}

namespace {

using vx::fuzz::Bytes;

// What a handler of signals needs, so plain memory.
struct Current {
  const std::uint8_t* data = nullptr;
  std::size_t size = 0;
  unsigned long long seed = 0;
  unsigned long long run = 0;
  char path[256] = "crash";
};
Current current;

void keepInput() {
  const std::uint8_t* const data = current.data;
  if (!data) return;
  current.data = nullptr;
  char text[512];
  const int length = std::snprintf(text, sizeof text, "The input of run %llu with seed %llu is in %s (%zu bytes).\n",
                                   current.run, current.seed, current.path, current.size);
  [[maybe_unused]] auto written = ::write(STDERR_FILENO, text, static_cast<std::size_t>(length));
  const int file = ::open(current.path, O_WRONLY | O_CREAT | O_TRUNC, 0666);
  written = ::write(file, data, current.size);
  ::close(file);
}

void handleSignal(int signal) {
  keepInput();
  std::signal(signal, SIG_DFL);
  ::raise(signal);
}

void watchForCrashes(const char* program) {
  const std::string name = std::filesystem::path(program).filename().string();
  std::snprintf(current.path, sizeof current.path, "crash-%.200s", name.c_str());
  std::signal(SIGABRT, handleSignal);
  if (__sanitizer_set_death_callback) {
    __sanitizer_set_death_callback(keepInput);
    return;
  }
  for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTERM}) std::signal(signal, handleSignal);
}

void runInput(const Bytes& bytes) {
  // Memory of exactly this size, so that the sanitizer sees who reads beyond it.
  auto* const data = static_cast<std::uint8_t*>(std::malloc(bytes.size()));
  if (!bytes.empty()) std::memcpy(data, bytes.data(), bytes.size());
  current.data = data;
  current.size = bytes.size();
  LLVMFuzzerTestOneInput(data, bytes.size());
  current.data = nullptr;
  std::free(data);
}

unsigned long long fromEnvironment(const char* name, unsigned long long otherwise) {
  const char* const text = std::getenv(name);
  return text && *text ? std::strtoull(text, nullptr, 10) : otherwise;
}

struct Arguments {
  unsigned long long runs = 0;  // 0: no limit
  unsigned long long seconds = 0;
  unsigned long long seed = 1;
  std::vector<std::string> paths;
};

Arguments readArguments(int argc, char** argv) {
  Arguments arguments;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    const bool isNumber = (word == "--runs" || word == "--seconds") && i + 1 < argc;
    if (!isNumber) {
      arguments.paths.push_back(word);
      continue;
    }
    (word == "--runs" ? arguments.runs : arguments.seconds) = std::strtoull(argv[++i], nullptr, 10);
  }
  arguments.runs = fromEnvironment("VX_FUZZ_RUNS", arguments.runs);
  arguments.seconds = fromEnvironment("VX_FUZZ_SECONDS", arguments.seconds);
  arguments.seed = fromEnvironment("VX_FUZZ_SEED", arguments.seed);
  if (arguments.runs == 0 && arguments.seconds == 0) arguments.seconds = 10;
  return arguments;
}

}  // namespace

int main(int argc, char** argv) {
  watchForCrashes(argv[0]);
  if (LLVMFuzzerInitialize) LLVMFuzzerInitialize(&argc, &argv);
  const Arguments arguments = readArguments(argc, argv);

  std::vector<Bytes> corpus;
  bool hasFiles = false;
  for (const std::string& path : arguments.paths) {
    if (std::filesystem::is_directory(path)) {
      for (Bytes& bytes : vx::fuzz::readFolder(path)) corpus.push_back(std::move(bytes));
      continue;
    }
    hasFiles = true;
    Bytes bytes;
    if (!vx::fuzz::readFile(path, bytes)) {
      std::fprintf(stderr, "%s: can't be read\n", path.c_str());
      return 2;
    }
    runInput(bytes);
  }
  if (hasFiles) return 0;

  using Clock = std::chrono::steady_clock;
  const auto begin = Clock::now();
  const auto seconds = [begin] { return std::chrono::duration<double>(Clock::now() - begin).count(); };
  vx::fuzz::SeededInputs inputs(arguments.seed, std::move(corpus));
  current.seed = arguments.seed;
  for (; arguments.runs == 0 || current.run < arguments.runs; ++current.run) {
    if (arguments.seconds != 0 && seconds() >= static_cast<double>(arguments.seconds)) break;
    runInput(inputs.make(current.run));
  }
  std::printf("%llu runs with seed %llu in %.1f s\n", current.run, current.seed, seconds());
  return 0;
}
