#include "session.h"

#include "console.h"

namespace vxtile {

namespace {

const char* levelName(VXMessageType type) {
  switch (type) {
    case VX_WARNING:
      return "warning";
    case VX_ERROR:
      return "error";
    case VX_FATAL:
      return "fatal error";
    default:
      return "debug";
  }
}

// May be called from any thread, also from several at once.
void showMessage(void* /*userData*/, const VXMessage* message) {
  if (message->type != VX_DEBUG && isInterrupted()) return;  // the pages that were given up all complain
  std::string line = std::string(levelName(message->type)) + " " + std::to_string(message->errorCode) + " (" +
                     message->errorText + ") " + message->functionName;
  if (*message->reason != '\0') line += std::string(": ") + message->reason;
  printError(line);
}

}  // namespace

std::vector<SearchStep> loadLibrary(const std::string& name) {
  std::vector<SearchStep> steps;
  const VXLibrarySearchCB note = [](void* userData, const char* path, const char* reason) {
    SearchStep step{path, textOrEmpty(reason), reason == nullptr};
    // The loader begins with the path, which is told anyway.
    const std::string lead = step.path + ": ";
    if (step.reason.rfind(lead, 0) == 0) step.reason.erase(0, lead.size());
    static_cast<std::vector<SearchStep>*>(userData)->push_back(std::move(step));
  };
  VXLoadLibraryExplained(name.c_str(), &steps, note);
  return steps;
}

Session::Session() : _listener(&showMessage, nullptr) { VXSendMessagesToCerr(0); }

void Session::load(const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    const std::vector<SearchStep> steps = loadLibrary(name);
    if (!steps.empty() && steps.back().isFound) continue;
    std::string text = "the library " + name + " could not be loaded:";
    for (const SearchStep& step : steps) text += "\n  " + step.path + "\n    " + step.reason;
    throw Failure(ExitCode::library, text);
  }
}

}  // namespace vxtile
