// vxtile describe: the inputs, outputs and fields of a module.

#include "commands.h"
#include "fieldValues.h"
#include "liveNetwork.h"
#include "session.h"

#include <algorithm>
#include <iostream>

namespace vxtile {

namespace {

struct DescribeOptions {
  std::string type;
  std::vector<std::string> libraries{standardLibrary};
};

struct FieldRow {
  std::string name;
  std::string type;
  std::string value;
  std::string takes;
};

void printNames(const char* head, const std::vector<std::string>& names) {
  std::cout << head;
  for (const std::string& name : names) std::cout << ' ' << name;
  std::cout << (names.empty() ? " none\n" : "\n");
}

void printFields(const std::vector<FieldRow>& rows) {
  std::size_t nameWidth = 0;
  std::size_t typeWidth = 0;
  std::size_t valueWidth = 0;
  constexpr std::size_t widestValue = 24;  // a longer one pushes only its own line
  for (const FieldRow& row : rows) {
    nameWidth = std::max(nameWidth, row.name.size());
    typeWidth = std::max(typeWidth, row.type.size());
    if (row.value.size() <= widestValue) valueWidth = std::max(valueWidth, row.value.size());
  }
  const auto padded = [](std::string text, std::size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
  };
  std::cout << (rows.empty() ? "Fields: none\n" : "Fields, with type, value and what they take:\n");
  for (const FieldRow& row : rows) {
    std::cout << "  " << padded(row.name, nameWidth) << "  " << padded(row.type, typeWidth) << "  "
              << padded(row.value, valueWidth) << "  " << row.takes << '\n';
  }
}

void runDescribe(const DescribeOptions& options) {
  Session session;
  session.load(options.libraries);
  const ModuleHandle module = makeModule(options.type, {});
  std::vector<std::string> inputs;
  std::vector<std::string> outputs;
  std::vector<FieldRow> rows;
  for (VXField* const field : fieldsOf(module.get())) {
    const std::string name = textOrEmpty(VXFieldGetName(field));
    if (isInput(field)) {
      inputs.push_back(name);
    } else if (isOutput(field)) {
      outputs.push_back(name);
    } else {
      rows.push_back({name, classOf(field), "\"" + valueText(field) + "\"", describeAccepted(field)});
    }
  }
  const VXRuntimeType* const type = VXTypeFromName(options.type.c_str());
  std::cout << options.type << ", derived from " << textOrEmpty(VXTypeGetParentName(type)) << ", of the library "
            << textOrEmpty(VXTypeGetDllName(type)) << '\n';
  printNames("Inputs:", inputs);
  printNames("Outputs:", outputs);
  printFields(rows);
}

}  // namespace

void addDescribeCommand(CLI::App& application) {
  CLI::App* const command =
      application.add_subcommand("describe", "Show the inputs, outputs and fields of a class of modules");
  const auto options = std::make_shared<DescribeOptions>();
  command->add_option("TYPE", options->type, "Name of the class")->required();
  addLibraryOption(*command, options->libraries,
                   "Load this library instead of " + std::string(standardLibrary) + "; may be repeated");
  command->callback([options] { runDescribe(*options); });
}

}  // namespace vxtile
