// vxtile graph: a network as a picture, by way of `dot`.

#include "commands.h"
#include "network.h"

#include <iostream>
#include <ostream>

namespace vxtile {

namespace {

std::string quoted(const std::string& text) {
  std::string result = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') result += '\\';
    if (c == '\n') {
      result += "\\n";
    } else if (static_cast<unsigned char>(c) >= ' ') {
      result += c;
    }
  }
  return result + '"';
}

std::string labelOf(const ModuleEntry& module) {
  std::string label = module.name + "\n" + module.type;
  for (const auto& [field, value] : module.fields) label += "\n" + field + " = " + textOf(value);
  return label;
}

std::string labelOf(const Request& request) {
  std::string label = request.file.empty() ? "calculate" : request.file;
  for (std::size_t i = 0; i < numAxes; ++i) {
    if (!request.box[i]) continue;
    label += "\n" + std::string(1, axisLetters[i]) + " " + std::to_string(request.box[i]->first);
    if (request.box[i]->last != request.box[i]->first) label += ":" + std::to_string(request.box[i]->last);
  }
  if (!request.type.empty()) label += "\n" + request.type;
  if (request.window) {
    label += "\nrange " + textOf(Number(request.window->low)) + " " + textOf(Number(request.window->high));
  }
  return label;
}

}  // namespace

void writeGraph(std::ostream& stream, const Network& network, const std::string& title) {
  stream << "digraph " << quoted(title) << " {\n"
         << "  rankdir=LR;\n"
         << "  node [shape=box, fontname=\"Helvetica\"];\n"
         << "  edge [fontname=\"Helvetica\", fontsize=10];\n";
  for (const ModuleEntry& module : network.modules) {
    stream << "  " << quoted(module.name) << " [label=" << quoted(labelOf(module)) << "];\n";
  }
  for (const Connection& connection : network.connections) {
    stream << "  " << quoted(connection.from.module) << " -> " << quoted(connection.to.module)
           << " [label=" << quoted(connection.from.field + " to " + connection.to.field) << "];\n";
  }
  std::size_t number = 0;
  for (const Request& request : network.requests) {
    const std::string node = quoted("request." + std::to_string(number++));  // no module has a dot in its name
    if (request.output) {
      stream << "  " << node << " [shape=note, label=" << quoted(labelOf(request)) << "];\n  "
             << quoted(request.output->module) << " -> " << node
             << " [style=dashed, label=" << quoted(request.output->field) << "];\n";
    } else if (request.touch) {
      stream << "  " << node << " [shape=note, label=" << quoted("touch " + request.touch->text()) << "];\n  " << node
             << " -> " << quoted(request.touch->module) << " [style=dashed];\n";
    }
  }
  stream << "}\n";
}

void addGraphCommand(CLI::App& application) {
  CLI::App* const command = application.add_subcommand("graph", "Write a network as a graph for dot; loads no library");
  const auto path = std::make_shared<std::string>();
  command->add_option("NETWORK", *path, "Network file, or - for standard input")->required();
  command->callback([path] { writeGraph(std::cout, readNetwork(*path), *path); });
}

}  // namespace vxtile
