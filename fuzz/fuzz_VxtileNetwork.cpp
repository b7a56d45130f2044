// Network files of vxtile and the texts of its command line: any text is read, or refused with a message.

#include "FuzzCheck.h"
#include "failure.h"
#include "network.h"

#include <cmath>
#include <cstdint>
#include <sstream>
#include <stdexcept>
#include <string>

using namespace vxtile;
using vx::fuzz::require;

namespace {

// Reads a text by a function that refuses texts by std::invalid_argument, with a reason.
template <class Read>
void readOrRefuse(Read read) {
  try {
    read();
  } catch (const std::invalid_argument& error) {
    require(*error.what() != '\0', "a refusal has a reason");
  }
}

void checkNumber(const Number& number) {
  const std::string text = textOf(number);
  const auto back = readNumber(text);
  require(back.has_value(), "a number's text is read");
  require(asDouble(*back) == asDouble(number), "a number comes back");
  require(std::isfinite(asDouble(number)), "a number is finite");
}

void checkValue(const Value& value) {
  textOf(value);
  if (const auto* const number = std::get_if<Number>(&value)) checkNumber(*number);
  if (const auto* const numbers = std::get_if<std::vector<Number>>(&value)) {
    for (const Number& number : *numbers) checkNumber(number);
    const auto back = readNumbers(textOf(value));
    require(numbers->empty() || (back && back->size() == numbers->size()), "a list comes back");
  }
}

void checkBox(const BoxRequest& box) {
  for (const auto& interval : box) require(!interval || interval->first <= interval->last, "an interval runs forward");
}

void checkNetwork(const Network& network) {
  for (const ModuleEntry& module : network.modules) {
    for (const auto& [field, value] : module.fields) checkValue(value);
  }
  for (const Request& request : network.requests) {
    checkBox(request.box);
    if (request.window) require(request.window->low < request.window->high, "a window rises");
  }
  std::ostringstream graph;
  writeGraph(graph, network, "net");
  require(!graph.str().empty(), "a network has a graph");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  try {
    checkNetwork(parseNetwork(text, "net"));
  } catch (const Failure& failure) {
    require(failure.code() == ExitCode::network, "a network that can't be read has its exit code");
    require(std::string(failure.what()).rfind("net", 0) == 0, "a refusal names the file");
  }
  readOrRefuse([&] { checkBox(readBox(text)); });
  readOrRefuse([&] { readFlip(text); });
  readOrRefuse([&] { readFieldName(text); });
  if (const auto number = readNumber(text)) checkNumber(*number);
  if (const auto numbers = readNumbers(text)) {
    readOrRefuse([&] { checkBox(boxOfCorners(*numbers)); });
    readOrRefuse([&] { require(windowOf(*numbers).low < windowOf(*numbers).high, "a window rises"); });
  }
  return 0;
}
