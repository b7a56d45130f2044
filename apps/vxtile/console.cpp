#include "console.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <mutex>
#include <unistd.h>

namespace vxtile {

namespace {

// A signal sets it, and modules on worker threads ask for it.
std::atomic<bool> interrupted = false;
static_assert(std::atomic<bool>::is_always_lock_free);

extern "C" void noteInterrupt(int) { interrupted.store(true, std::memory_order_relaxed); }

// What is on the last line of the terminal, and since when.
struct ProgressLine {
  std::mutex mutex;
  bool isTerminal = ::isatty(STDERR_FILENO) != 0;
  bool isShown = false;
  std::chrono::steady_clock::time_point shownAt{};

  void clear() {
    if (isShown) std::fputs("\r\033[K", stderr);
    isShown = false;
  }
};

ProgressLine& progressLine() {
  static ProgressLine line;
  return line;
}

}  // namespace

void printError(const std::string& text) {
  ProgressLine& line = progressLine();
  const std::lock_guard<std::mutex> lock(line.mutex);
  line.clear();
  std::fputs(("vxtile: " + text + "\n").c_str(), stderr);
}

void showProgress(const std::string& text) {
  ProgressLine& line = progressLine();
  if (!line.isTerminal) return;
  const auto now = std::chrono::steady_clock::now();
  const std::lock_guard<std::mutex> lock(line.mutex);
  if (line.isShown && now - line.shownAt < std::chrono::milliseconds(100)) return;
  line.clear();
  std::fputs(text.c_str(), stderr);
  std::fflush(stderr);
  line.isShown = true;
  line.shownAt = now;
}

void clearProgress() {
  ProgressLine& line = progressLine();
  const std::lock_guard<std::mutex> lock(line.mutex);
  line.clear();
  std::fflush(stderr);
}

void catchInterrupts() {
  struct sigaction action = {};
  action.sa_handler = &noteInterrupt;
  sigemptyset(&action.sa_mask);
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  ::sigaction(SIGINT, &action, nullptr);
  ::sigaction(SIGTERM, &action, nullptr);
}

bool isInterrupted() { return interrupted.load(std::memory_order_relaxed); }

}  // namespace vxtile
