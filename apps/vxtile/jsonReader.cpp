#include "jsonReader.h"

#include "failure.h"

#include <algorithm>
#include <limits>
#include <set>

namespace vxtile {

namespace {

using Json = JsonReader::Json;

// What the parser calls for each piece. The parser itself keeps the last of several members with one key, in silence.
class DuplicateFinder {
 public:
  explicit DuplicateFinder(std::string source) : _source(std::move(source)) {}

  bool operator()(int /*depth*/, Json::parse_event_t event, Json& parsed) {
    switch (event) {
      case Json::parse_event_t::object_start:
        _keys.emplace_back();
        break;
      case Json::parse_event_t::object_end:
        _keys.pop_back();
        break;
      case Json::parse_event_t::key: {
        const auto key = parsed.get<std::string>();
        if (!_keys.back().insert(key).second) {
          throw Failure(ExitCode::network, _source + ": \"" + key + "\" stands twice in one object");
        }
        break;
      }
      default:
        break;
    }
    return true;
  }

 private:
  std::string _source;
  std::vector<std::set<std::string>> _keys;
};

// The parser's own text without its number in brackets.
std::string plainText(const Json::exception& error) {
  const std::string text = error.what();
  const std::size_t bracket = text.find("] ");
  return bracket == std::string::npos ? text : text.substr(bracket + 2);
}

}  // namespace

JsonDocument::JsonDocument(const std::string& text, const std::string& source) : _source(source) {
  try {
    _json = Json::parse(text, DuplicateFinder(source), true, true);
  } catch (const Json::exception& error) {
    throw Failure(ExitCode::network, source + ": " + plainText(error));
  }
}

void JsonReader::fail(const std::string& text) const {
  throw Failure(ExitCode::network, _source + ": " + (_path.empty() ? "" : _path + ": ") + text);
}

std::string JsonReader::text() const {
  if (!_json.is_string()) fail("must be a text");
  return _json.get<std::string>();
}

std::string JsonReader::name() const {
  std::string result = text();
  if (result.empty()) fail("must not be empty");
  return result;
}

Number JsonReader::number() const {
  if (_json.is_number_float()) {
    // Whole numbers that no 64 bits hold come as real ones, so they stay numbers where real ones are allowed.
    return _json.get<double>();
  }
  if (!_json.is_number()) fail("must be a number");
  if (_json.is_number_unsigned() &&
      _json.get<unsigned long long>() > static_cast<unsigned long long>(std::numeric_limits<long long>::max())) {
    return static_cast<double>(_json.get<unsigned long long>());
  }
  return _json.get<long long>();
}

long long JsonReader::wholeNumber() const {
  const Number result = number();
  const auto* const whole = std::get_if<long long>(&result);
  if (!whole) fail("must be a whole number of 64 bits");
  return *whole;
}

std::vector<Number> JsonReader::numbers() const {
  std::vector<Number> list;
  forEachElement([&](const JsonReader& element) { list.push_back(element.number()); });
  return list;
}

std::vector<long long> JsonReader::wholeNumbers() const {
  std::vector<long long> list;
  forEachElement([&](const JsonReader& element) { list.push_back(element.wholeNumber()); });
  return list;
}

Value JsonReader::value() const {
  if (_json.is_boolean()) return _json.get<bool>();
  if (_json.is_number()) return number();
  if (_json.is_string()) return text();
  if (_json.is_array()) return numbers();
  fail("must be true, false, a number, a text or a list of numbers");
}

void JsonReader::expectKeys(std::initializer_list<const char*> keys) const {
  forEachMember([&](const std::string& key, const JsonReader&) {
    if (std::find(keys.begin(), keys.end(), key) != keys.end()) return;
    std::string known;
    for (const char* const name : keys) known += (known.empty() ? "" : ", ") + std::string(name);
    fail("\"" + key + "\" is unknown here; known are " + known);
  });
}

std::optional<JsonReader> JsonReader::optional(const std::string& key) const {
  if (!_json.is_object()) fail("must be an object");
  const auto member = _json.find(key);
  if (member == _json.end()) return std::nullopt;
  return _member(key, *member);
}

JsonReader JsonReader::required(const std::string& key) const {
  auto member = optional(key);
  if (!member) fail("\"" + key + "\" is missing");
  return *member;
}

void JsonReader::forEachMember(const std::function<void(const std::string&, const JsonReader&)>& f) const {
  if (!_json.is_object()) fail("must be an object");
  for (const auto& member : _json.items()) {
    f(member.key(), _member(member.key(), member.value()));
  }
}

void JsonReader::forEachElement(const std::function<void(const JsonReader&)>& f) const {
  if (!_json.is_array()) fail("must be a list");
  std::size_t index = 0;
  for (const Json& element : _json) f({element, _source, _path + "[" + std::to_string(index++) + "]"});
}

}  // namespace vxtile
