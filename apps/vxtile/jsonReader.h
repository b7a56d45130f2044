/// \file jsonReader.h
/// A JSON text read with messages that name the place: "net.json: modules.head.type: must be a text".

#ifndef VXTILE_JSON_READER_H
#define VXTILE_JSON_READER_H

#include "values.h"

#include <functional>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace vxtile {

/// One value of a document, with the path that leads to it. It refers to the document, which must outlive it.
/// Every function throws Failure with ExitCode::network if the value isn't what it asks for.
class JsonReader {
 public:
  using Json = nlohmann::ordered_json;
  /// \param source name of the document. \param path keys and indices that lead to the value; empty for the document.
  JsonReader(const Json& json, const std::string& source, std::string path)
      : _json(json), _source(source), _path(std::move(path)) {}

  /// \throw Failure with the place in front of the text.
  [[noreturn]] void fail(const std::string& text) const;

  bool isText() const { return _json.is_string(); }
  bool isList() const { return _json.is_array(); }

  std::string text() const;
  /// A text that isn't empty.
  std::string name() const;
  long long wholeNumber() const;
  Number number() const;
  std::vector<Number> numbers() const;
  std::vector<long long> wholeNumbers() const;
  /// What a field may be set to: a flag, a number, a text, or a list of numbers.
  Value value() const;

  /// An object with no other keys than these.
  void expectKeys(std::initializer_list<const char*> keys) const;
  std::optional<JsonReader> optional(const std::string& key) const;
  JsonReader required(const std::string& key) const;
  /// Calls for each member of an object, in the order of the file.
  void forEachMember(const std::function<void(const std::string& key, const JsonReader& value)>& f) const;
  /// Calls for each element of a list.
  void forEachElement(const std::function<void(const JsonReader& element)>& f) const;

  /// Reads further by a function that throws std::invalid_argument, which fails with its text.
  template <class Read, class Argument>
  auto convert(const Read& read, const Argument& argument) const {
    try {
      return read(argument);
    } catch (const std::invalid_argument& error) {
      fail(error.what());
    }
  }

 private:
  JsonReader _member(const std::string& key, const Json& json) const {
    return {json, _source, _path.empty() ? key : _path + "." + key};
  }

  const Json& _json;
  const std::string& _source;
  std::string _path;
};

/// A parsed text.
class JsonDocument {
 public:
  /// \param source name in front of messages. \throw Failure ExitCode::network for bad syntax, and for a key that
  /// stands twice in one object.
  JsonDocument(const std::string& text, const std::string& source);
  JsonReader root() const { return {_json, _source, {}}; }

 private:
  std::string _source;
  JsonReader::Json _json;
};

}  // namespace vxtile

#endif
