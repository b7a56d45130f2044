/// \file liveNetwork.h
/// A network at work: modules of the library, made and connected as a network file says.

#ifndef VXTILE_LIVE_NETWORK_H
#define VXTILE_LIVE_NETWORK_H

#include "network.h"

#include "vxHandles.h"

#include <map>
#include <string>
#include <vector>

namespace vxtile {

/// Makes a module. \param name for messages. \throw Failure ExitCode::network if there is no such class.
ModuleHandle makeModule(const std::string& type, const std::string& name);

/// \return the fields of a module in order.
std::vector<VXField*> fieldsOf(VXBaseOp* module);

/// The modules of a network, which live as long as it.
class LiveNetwork {
 public:
  /// Makes and connects all modules. Values are set before connections are made.
  /// \throw Failure ExitCode::network for unknown classes and fields, and for values and connections that don't fit.
  explicit LiveNetwork(const Network& network);
  LiveNetwork(const LiveNetwork&) = delete;
  LiveNetwork& operator=(const LiveNetwork&) = delete;

  /// \return a field. \throw Failure ExitCode::network if there is no such module or field.
  VXField* field(const FieldName& name) const;
  /// \return the field of an output. \throw Failure ExitCode::network also for another field.
  VXField* output(const FieldName& name) const;
  /// Sets a field. \throw Failure as setField() in fieldValues.h.
  void set(const FieldName& name, const Value& value) const;

 private:
  void _connect(const Connection& connection) const;

  struct Member {
    std::string type;
    ModuleHandle handle;
  };
  std::map<std::string, Member> _modules;
};

}  // namespace vxtile

#endif
