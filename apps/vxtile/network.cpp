#include "network.h"

#include "failure.h"
#include "jsonReader.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <set>

namespace vxtile {

namespace {

FieldName readFieldName(const JsonReader& json) {
  return json.convert([](const std::string& text) { return vxtile::readFieldName(text); }, json.text());
}

FieldName knownField(const JsonReader& json, const Network& network) {
  FieldName name = readFieldName(json);
  if (!network.find(name.module)) json.fail("there is no module \"" + name.module + "\"");
  return name;
}

ModuleEntry readModule(const std::string& name, const JsonReader& json) {
  if (name.empty() || name.find('.') != std::string::npos)
    json.fail("the name of a module must have no dot and not be empty");
  json.expectKeys({"type", "fields"});
  ModuleEntry module;
  module.name = name;
  module.type = json.required("type").name();
  if (const auto fields = json.optional("fields")) {
    fields->forEachMember([&](const std::string& field, const JsonReader& value) {
      if (field.empty()) value.fail("the name of a field must not be empty");
      module.fields.emplace_back(field, value.value());
    });
  }
  return module;
}

BoxRequest readBox(const JsonReader& json) {
  if (json.isText()) return json.convert([](const std::string& text) { return vxtile::readBox(text); }, json.text());
  if (json.isList()) return json.convert(boxOfCorners, json.numbers());
  BoxRequest box;
  json.forEachMember([&](const std::string& axis, const JsonReader& value) {
    Interval interval;
    if (value.isList()) {
      const std::vector<long long> ends = value.wholeNumbers();
      if (ends.size() != 2) value.fail("must be a voxel, or a list of the first and the last one");
      interval = {ends[0], ends[1]};
    } else {
      interval.first = interval.last = value.wholeNumber();
    }
    value.convert([&](const std::string& letter) { return addAxis(box, letter, interval), 0; }, axis);
  });
  return box;
}

Request readRequest(const JsonReader& json, const Network& network) {
  Request request;
  json.expectKeys({"output", "file", "box", "type", "range", "flip", "touch", "show"});
  const auto output = json.optional("output");
  const auto touch = json.optional("touch");
  if (output && touch) json.fail("a request has either \"output\" or \"touch\"");
  if (output) request.output = knownField(*output, network);
  if (touch) request.touch = knownField(*touch, network);
  for (const char* const key : {"file", "box", "type", "range", "flip"}) {
    if (!output && json.optional(key)) json.fail(std::string("\"") + key + "\" needs an \"output\"");
  }
  if (const auto file = json.optional("file")) request.file = file->name();
  if (const auto box = json.optional("box")) request.box = readBox(*box);
  if (const auto type = json.optional("type")) request.type = type->name();
  if (const auto range = json.optional("range")) request.window = range->convert(windowOf, range->numbers());
  if (const auto flip = json.optional("flip")) request.flip = flip->convert(readFlip, flip->text());
  if (const auto show = json.optional("show")) {
    show->forEachElement([&](const JsonReader& field) { request.show.push_back(knownField(field, network)); });
  }
  if (!output && !touch && request.show.empty()) json.fail("a request needs \"output\", \"touch\" or \"show\"");
  return request;
}

Connection readConnection(const JsonReader& json, const Network& network) {
  json.expectKeys({"from", "to"});
  return {knownField(json.required("from"), network), knownField(json.required("to"), network)};
}

}  // namespace

const ModuleEntry* Network::find(const std::string& name) const {
  const auto found = std::find_if(modules.begin(), modules.end(), [&](const ModuleEntry& m) { return m.name == name; });
  return found == modules.end() ? nullptr : &*found;
}

FieldName readFieldName(const std::string& text) {
  const std::size_t dot = text.find('.');
  if (dot == std::string::npos || dot == 0 || dot + 1 == text.size()) {
    throw std::invalid_argument("\"" + text + "\" is not of the form MODULE.FIELD");
  }
  return {text.substr(0, dot), text.substr(dot + 1)};
}

Network parseNetwork(const std::string& text, const std::string& source) {
  const JsonDocument document(text, source);
  const JsonReader root = document.root();
  root.expectKeys({"libraries", "modules", "connections", "requests"});
  Network network;
  if (const auto libraries = root.optional("libraries")) {
    libraries->forEachElement([&](const JsonReader& name) { network.libraries.push_back(name.name()); });
  } else {
    network.libraries.emplace_back(standardLibrary);
  }
  root.required("modules").forEachMember(
      [&](const std::string& name, const JsonReader& json) { network.modules.push_back(readModule(name, json)); });
  if (const auto connections = root.optional("connections")) {
    std::set<std::string> fed;
    connections->forEachElement([&](const JsonReader& json) {
      network.connections.push_back(readConnection(json, network));
      const std::string to = network.connections.back().to.text();
      if (!fed.insert(to).second) json.fail("\"" + to + "\" is connected already");
    });
  }
  if (const auto requests = root.optional("requests")) {
    requests->forEachElement([&](const JsonReader& json) { network.requests.push_back(readRequest(json, network)); });
  }
  return network;
}

Network readNetwork(const std::string& path) {
  if (path == "-") {
    return parseNetwork(std::string(std::istreambuf_iterator<char>(std::cin), {}), "standard input");
  }
  std::ifstream file(path, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(file), {}};
  if (!file) throw Failure(ExitCode::network, path + ": the file can't be read");
  return parseNetwork(text, path);
}

}  // namespace vxtile
