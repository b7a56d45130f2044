/// \file commands.h
/// The commands of vxtile. Each has a file of its own, which adds it to the command line.

#ifndef VXTILE_COMMANDS_H
#define VXTILE_COMMANDS_H

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

namespace vxtile {

/// Each adds a command to the application, which runs it as soon as the command line is read.
/// A command that fails throws Failure.
void addTypesCommand(CLI::App& application);
void addDescribeCommand(CLI::App& application);
void addRunCommand(CLI::App& application);
void addGraphCommand(CLI::App& application);
void addWhyCommand(CLI::App& application);

/// Adds `--library`, which most commands have. \param libraries takes the names.
inline void addLibraryOption(CLI::App& command, std::vector<std::string>& libraries, const std::string& help) {
  command.add_option("-l,--library", libraries, help)->type_name("NAME")->allow_extra_args(false);
}

}  // namespace vxtile

#endif
