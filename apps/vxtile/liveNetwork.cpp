#include "liveNetwork.h"

#include "fieldValues.h"

namespace vxtile {

namespace {

std::string fieldNames(VXBaseOp* module) {
  std::string names;
  for (VXField* const field : fieldsOf(module)) {
    names += (names.empty() ? "" : ", ") + textOrEmpty(VXFieldGetName(field));
  }
  return names.empty() ? "none" : names;
}

VXField* findField(VXBaseOp* module, const std::string& name) {
  for (VXField* const field : fieldsOf(module)) {
    if (name == textOrEmpty(VXFieldGetName(field))) return field;
  }
  return nullptr;
}

}  // namespace

ModuleHandle makeModule(const std::string& type, const std::string& name) {
  const std::string lead = name.empty() ? std::string() : name + ": ";
  const VXRuntimeType* const runtimeType = VXTypeFromName(type.c_str());
  if (!runtimeType || !VXTypeIsDerivedFrom(runtimeType, "BaseOp")) {
    throw Failure(ExitCode::network, lead + "there is no module class \"" + type + "\"; `vxtile types` lists them");
  }
  if (VXTypeIsAbstract(runtimeType) != 0) {
    throw Failure(ExitCode::network, lead + "the class \"" + type + "\" is abstract");
  }
  ModuleHandle module(VXCreateModuleFromType(runtimeType));
  if (!module) throw Failure(ExitCode::network, lead + "no module of class \"" + type + "\" could be made");
  return module;
}

std::vector<VXField*> fieldsOf(VXBaseOp* module) {
  std::vector<VXField*> fields;
  const int number = VXModuleGetNumFields(module);
  for (int i = 0; i < number; ++i) fields.push_back(VXModuleGetIndexedField(module, i));
  return fields;
}

LiveNetwork::LiveNetwork(const Network& network) {
  for (const ModuleEntry& entry : network.modules) {
    _modules.emplace(entry.name, Member{entry.type, makeModule(entry.type, entry.name)});
  }
  for (const ModuleEntry& entry : network.modules) {
    // Messages of the library name modules by this field.
    if (VXField* const name = findField(_modules.at(entry.name).handle.get(), "instanceName")) {
      VXFieldSetValue(name, entry.name.c_str());
    }
    for (const auto& [field, value] : entry.fields) set({entry.name, field}, value);
  }
  for (const Connection& connection : network.connections) _connect(connection);
}

VXField* LiveNetwork::field(const FieldName& name) const {
  const auto found = _modules.find(name.module);
  if (found == _modules.end()) {
    throw Failure(ExitCode::network, name.text() + ": there is no module \"" + name.module + "\"");
  }
  const Member& module = found->second;
  if (VXField* const result = findField(module.handle.get(), name.field)) return result;
  throw Failure(ExitCode::network, name.text() + ": the class " + module.type + " has no field \"" + name.field +
                                       "\"; it has " + fieldNames(module.handle.get()));
}

VXField* LiveNetwork::output(const FieldName& name) const {
  VXField* const result = field(name);
  if (!isOutput(result)) throw Failure(ExitCode::network, name.text() + ": this is no output but a " + classOf(result));
  return result;
}

void LiveNetwork::set(const FieldName& name, const Value& value) const { setField(field(name), name.text(), value); }

void LiveNetwork::_connect(const Connection& connection) const {
  VXField* const from = field(connection.from);
  VXField* const to = field(connection.to);
  const std::string lead = connection.from.text() + " -> " + connection.to.text() + ": ";
  if (isOutput(to)) throw Failure(ExitCode::network, lead + "nothing can be connected to an output");
  if (isInput(from)) throw Failure(ExitCode::network, lead + "an input gives nothing away");
  if (isOutput(from) != isInput(to)) {
    throw Failure(ExitCode::network, lead + "a " + classOf(from) + " does not fit a " + classOf(to));
  }
  if (!VXFieldConnectFrom(to, from)) throw Failure(ExitCode::network, lead + "the library refused the connection");
}

}  // namespace vxtile
