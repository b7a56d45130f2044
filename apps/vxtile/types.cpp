// vxtile types: the classes of modules.

#include "commands.h"
#include "network.h"
#include "session.h"

#include <algorithm>
#include <iostream>

namespace vxtile {

namespace {

struct TypesOptions {
  std::vector<std::string> libraries{standardLibrary};
  bool onlyNames = false;
};

struct TypeRow {
  std::string name;
  std::string parent;
  std::string library;
};

std::vector<TypeRow> moduleTypes() {
  std::vector<TypeRow> rows;
  for (const VXRuntimeType* type = VXRuntimeGetFirstModuleType(); type; type = VXRuntimeGetNextModuleType()) {
    if (!VXTypeIsDerivedFrom(type, "BaseOp") || VXTypeIsAbstract(type) != 0) continue;
    rows.push_back({textOrEmpty(VXTypeGetName(type)), textOrEmpty(VXTypeGetParentName(type)),
                    textOrEmpty(VXTypeGetDllName(type))});
  }
  std::sort(rows.begin(), rows.end(), [](const TypeRow& a, const TypeRow& b) { return a.name < b.name; });
  return rows;
}

void runTypes(const TypesOptions& options) {
  Session session;
  session.load(options.libraries);
  const std::vector<TypeRow> rows = moduleTypes();
  std::size_t width = 0;
  std::size_t parentWidth = 0;
  for (const TypeRow& row : rows) {
    width = std::max(width, row.name.size());
    parentWidth = std::max(parentWidth, row.parent.size());
  }
  const auto padded = [](std::string text, std::size_t length) {
    text.resize(std::max(text.size(), length), ' ');
    return text;
  };
  for (const TypeRow& row : rows) {
    if (options.onlyNames) {
      std::cout << row.name << '\n';
    } else {
      std::cout << padded(row.name, width) << "  " << padded(row.parent, parentWidth) << "  " << row.library << '\n';
    }
  }
}

}  // namespace

void addTypesCommand(CLI::App& application) {
  CLI::App* const command = application.add_subcommand("types", "List the classes of modules with parent and library");
  const auto options = std::make_shared<TypesOptions>();
  addLibraryOption(*command, options->libraries,
                   "Load this library instead of " + std::string(standardLibrary) + "; may be repeated");
  command->add_flag("--names", options->onlyNames, "Print the names alone");
  command->callback([options] { runTypes(*options); });
}

}  // namespace vxtile
