/// \file network.h
/// A network as its file describes it. Nothing here knows the library: names of classes and fields are only texts.

#ifndef VXTILE_NETWORK_H
#define VXTILE_NETWORK_H

#include "values.h"

#include <iosfwd>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vxtile {

/// A field of a module of the network.
struct FieldName {
  std::string module;
  std::string field;
  std::string text() const { return module + "." + field; }
};

/// A module with the fields that are set, in the order of the file.
struct ModuleEntry {
  std::string name;
  std::string type;
  std::vector<std::pair<std::string, Value>> fields;
};

/// Connects two fields.
struct Connection {
  FieldName from;
  FieldName to;
};

/// What to calculate: an image of an output, or what a touch of a field sets going.
struct Request {
  std::optional<FieldName> output;  ///< An image; else `touch` is set or there is only something to show.
  std::string file;                 ///< Where voxels go; empty: they are calculated and dropped.
  BoxRequest box;                   ///< Part of the image.
  std::string type;                 ///< Voxel type; empty for that of the image, or what the file needs.
  std::optional<Window> window;     ///< Values that are mapped to 0 and 255.
  Flip flip;                        ///< For pictures.
  std::optional<FieldName> touch;   ///< Field to touch.
  std::vector<FieldName> show;      ///< Fields to print afterwards.
};

/// All of a network file.
struct Network {
  std::vector<std::string> libraries;  ///< Module libraries by name.
  std::vector<ModuleEntry> modules;    ///< In the order of the file.
  std::vector<Connection> connections;
  std::vector<Request> requests;

  /// \return the module of that name, or null.
  const ModuleEntry* find(const std::string& name) const;
};

/// The library that networks use if they name none.
inline constexpr const char* standardLibrary = "VXStandardModules";

/// Reads a network and checks all that can be checked without the library: keys and their types, names that stand
/// twice, references to modules that aren't there, inputs with two connections.
/// \param text JSON, in which comments are permitted. \param source name for messages.
/// \throw Failure ExitCode::network with the place and what is wrong there.
Network parseNetwork(const std::string& text, const std::string& source);

/// Reads a network from a file. \param path "-" reads the standard input. \throw Failure
Network readNetwork(const std::string& path);

/// Splits "module.field" at its first dot. \throw std::invalid_argument if a half is missing.
FieldName readFieldName(const std::string& text);

/// Writes the network as a graph for `dot`. \param title name of the graph.
void writeGraph(std::ostream& stream, const Network& network, const std::string& title);

}  // namespace vxtile

#endif
