// vxtile why: where a library was looked for.

#include "commands.h"
#include "session.h"

#include <iostream>

namespace vxtile {

namespace {

void runWhy(const std::string& name) {
  Session session;
  const std::vector<SearchStep> steps = loadLibrary(name);
  for (const SearchStep& step : steps) {
    const bool isLeftToLoader = step.path.find('/') == std::string::npos;
    std::cout << (step.isFound ? "loaded  " : "no      ") << step.path
              << (isLeftToLoader ? " (by the search of the system's loader)" : "") << '\n';
    if (!step.isFound) std::cout << "        " << step.reason << '\n';
  }
  if (steps.empty() || !steps.back().isFound) {
    std::cout.flush();
    throw Failure(ExitCode::library,
                  "the library " + name + " was not found in " + std::to_string(steps.size()) + " places");
  }
}

}  // namespace

void addWhyCommand(CLI::App& application) {
  CLI::App* const command = application.add_subcommand(
      "why", "Show each place where a library is looked for, and why it isn't loaded from there");
  const auto name = std::make_shared<std::string>();
  command->add_option("NAME", *name, "Name of the library, such as VXStandardModules, or a path with a slash")
      ->required()
      ->check([](const std::string& text) { return text.empty() ? std::string("must not be empty") : std::string(); });
  command->callback([name] { runWhy(*name); });
}

}  // namespace vxtile
