// Network files and texts of the command line, and what is wrong with them.

#include "failure.h"
#include "network.h"

#include <gtest/gtest.h>
#include <sstream>

namespace vxtile {
namespace {

// The message for a network that is refused, without "net: " in front; the code is always the same.
std::string refusalOf(const std::string& text) {
  try {
    parseNetwork(text, "net");
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.code(), ExitCode::network);
    const std::string message = failure.what();
    EXPECT_EQ(message.rfind("net: ", 0), 0U) << message;
    return message.substr(std::min<std::size_t>(message.size(), 5));
  }
  return "accepted";
}

// A network with one module `a` and something else.
std::string withModule(const std::string& rest) { return R"({"modules": {"a": {"type": "T"}}, )" + rest + "}"; }

// A module with one field.
std::string withField(const std::string& value) {
  return R"({"modules": {"a": {"type": "T", "fields": {"f": )" + value + "}}}}";
}
Value fieldValue(const std::string& value) { return parseNetwork(withField(value), "net").modules[0].fields[0].second; }

TEST(VxtileNetwork, HasModulesFieldsConnectionsAndRequestsInTheOrderOfTheFile) {
  const Network network = parseNetwork(R"({
    // A comment.
    "libraries": ["One", "Two"],
    "modules": {
      "z": {"type": "Source", "fields": {"second": 2, "first": "text"}},
      "a": {"type": "Filter"}
    },
    "connections": [{"from": "z.output0", "to": "a.input0"}],
    "requests": [
      {"output": "a.output0", "file": "a.png", "box": {"z": 5, "x": [1, 9]}, "type": "float", "range": [0, 2.5],
       "flip": "both"},
      {"touch": "a.update", "show": ["a.status"]}
    ]
  })",
                                       "net");
  EXPECT_EQ(network.libraries, (std::vector<std::string>{"One", "Two"}));
  ASSERT_EQ(network.modules.size(), 2U);
  EXPECT_EQ(network.modules[0].name, "z");
  EXPECT_EQ(network.modules[0].type, "Source");
  ASSERT_EQ(network.modules[0].fields.size(), 2U);
  EXPECT_EQ(network.modules[0].fields[0].first, "second");
  EXPECT_EQ(network.modules[0].fields[0].second, Value(Number(2LL)));
  EXPECT_EQ(network.modules[0].fields[1].second, Value(std::string("text")));
  EXPECT_EQ(network.modules[1].name, "a");
  ASSERT_EQ(network.connections.size(), 1U);
  EXPECT_EQ(network.connections[0].from.text(), "z.output0");
  EXPECT_EQ(network.connections[0].to.text(), "a.input0");
  ASSERT_EQ(network.requests.size(), 2U);
  const Request& image = network.requests[0];
  EXPECT_EQ(image.output->text(), "a.output0");
  EXPECT_EQ(image.file, "a.png");
  EXPECT_EQ(image.type, "float");
  ASSERT_TRUE(image.box[0] && image.box[2]);
  EXPECT_EQ(image.box[0]->first, 1);
  EXPECT_EQ(image.box[0]->last, 9);
  EXPECT_EQ(image.box[2]->first, 5);
  EXPECT_EQ(image.box[2]->last, 5);
  EXPECT_FALSE(image.box[1] || image.box[3] || image.box[4] || image.box[5]);
  EXPECT_EQ(image.window->low, 0);
  EXPECT_EQ(image.window->high, 2.5);
  EXPECT_TRUE(image.flip.horizontal && image.flip.vertical);
  EXPECT_EQ(network.requests[1].touch->text(), "a.update");
  EXPECT_EQ(network.requests[1].show.at(0).text(), "a.status");
}

TEST(VxtileNetwork, UsesTheStandardModulesUnlessItNamesLibraries) {
  EXPECT_EQ(parseNetwork(R"({"modules": {}})", "net").libraries, (std::vector<std::string>{"VXStandardModules"}));
  EXPECT_TRUE(parseNetwork(R"({"libraries": [], "modules": {}})", "net").libraries.empty());
}

TEST(VxtileNetwork, ValuesAreFlagsNumbersTextsAndLists) {
  EXPECT_EQ(fieldValue("true"), Value(true));
  EXPECT_EQ(fieldValue("-9223372036854775808"), Value(Number(-9223372036854775807LL - 1)));
  EXPECT_EQ(fieldValue("9223372036854775807"), Value(Number(9223372036854775807LL)));
  EXPECT_EQ(fieldValue("9223372036854775808"), Value(Number(9223372036854775808.0))) << "no whole number any more";
  EXPECT_EQ(fieldValue("18446744073709551616"), Value(Number(18446744073709551616.0)));
  EXPECT_EQ(fieldValue("1.5e3"), Value(Number(1500.0)));
  EXPECT_EQ(fieldValue("\"t\\u00e4xt\""), Value(std::string("t\xc3\xa4xt")));
  EXPECT_EQ(fieldValue("[1, 2.5]"), Value(std::vector<Number>{1LL, 2.5}));
  EXPECT_EQ(fieldValue("[]"), Value(std::vector<Number>{}));
}

struct Refused {
  std::string text;
  std::string message;
};

TEST(VxtileNetwork, WhatIsWrongIsNamedWithItsPlace) {
  const std::vector<Refused> rows = {
      {"[]", "must be an object"},
      {"{}", "\"modules\" is missing"},
      {R"({"modules": []})", "modules: must be an object"},
      {R"({"modules": {}, "module": {}})",
       "\"module\" is unknown here; known are libraries, modules, connections, requests"},
      {R"({"modules": {"a": {}}})", "modules.a: \"type\" is missing"},
      {R"({"modules": {"a": {"type": 1}}})", "modules.a.type: must be a text"},
      {R"({"modules": {"a": {"type": ""}}})", "modules.a.type: must not be empty"},
      {R"({"modules": {"a": {"type": "T", "field": {}}}})",
       "modules.a: \"field\" is unknown here; known are type, fields"},
      {R"({"modules": {"a.b": {"type": "T"}}})", "modules.a.b: the name of a module must have no dot and not be empty"},
      {R"({"modules": {"": {"type": "T"}}})", "modules.: the name of a module must have no dot and not be empty"},
      {R"({"modules": {"a": {"type": "T"}, "a": {"type": "U"}}})", "\"a\" stands twice in one object"},
      {R"({"modules": {"a": {"type": "T", "fields": {"f": 1, "f": 1}}}})", "\"f\" stands twice in one object"},
      {withField("null"), "modules.a.fields.f: must be true, false, a number, a text or a list of numbers"},
      {withField("{}"), "modules.a.fields.f: must be true, false, a number, a text or a list of numbers"},
      {withField("[1, \"2\"]"), "modules.a.fields.f[1]: must be a number"},
      {R"({"modules": {"a": {"type": "T", "fields": {"": 1}}}})",
       "modules.a.fields.: the name of a field must not be empty"},
      {R"({"libraries": "One", "modules": {}})", "libraries: must be a list"},
      {R"({"libraries": [""], "modules": {}})", "libraries[0]: must not be empty"},
      {withModule(R"("connections": [{"from": "a.o"}])"), "connections[0]: \"to\" is missing"},
      {withModule(R"("connections": [{"from": "a", "to": "a.i"}])"),
       "connections[0].from: \"a\" is not of the form MODULE.FIELD"},
      {withModule(R"("connections": [{"from": "a.", "to": "a.i"}])"),
       "connections[0].from: \"a.\" is not of the form MODULE.FIELD"},
      {withModule(R"("connections": [{"from": "a.o", "to": "b.i"}])"), "connections[0].to: there is no module \"b\""},
      {withModule(R"("connections": [{"from": "a.o", "to": "a.i"}, {"from": "a.p", "to": "a.i"}])"),
       "connections[1]: \"a.i\" is connected already"},
      {withModule(R"("requests": [{}])"), "requests[0]: a request needs \"output\", \"touch\" or \"show\""},
      {withModule(R"("requests": [{"output": "a.o", "touch": "a.t"}])"),
       "requests[0]: a request has either \"output\" or \"touch\""},
      {withModule(R"("requests": [{"touch": "a.t", "file": "f.png"}])"), "requests[0]: \"file\" needs an \"output\""},
      {withModule(R"("requests": [{"output": "b.o"}])"), "requests[0].output: there is no module \"b\""},
      {withModule(R"("requests": [{"output": "a.o", "box": {"w": 1}}])"),
       "requests[0].box.w: \"w\" is no axis; they are x, y, z, c, t and u"},
      {withModule(R"("requests": [{"output": "a.o", "box": {"x": 1.5}}])"),
       "requests[0].box.x: must be a whole number of 64 bits"},
      {withModule(R"("requests": [{"output": "a.o", "box": {"x": 9223372036854775808}}])"),
       "requests[0].box.x: must be a whole number of 64 bits"},
      {withModule(R"("requests": [{"output": "a.o", "box": {"x": [3, 2]}}])"),
       "requests[0].box.x: axis x runs backward, from 3 to 2"},
      {withModule(R"("requests": [{"output": "a.o", "box": {"x": [3]}}])"),
       "requests[0].box.x: must be a voxel, or a list of the first and the last one"},
      {withModule(R"("requests": [{"output": "a.o", "box": [1, 2, 3]}])"),
       "requests[0].box: two corners have 6 or 12 numbers, not 3"},
      {withModule(R"("requests": [{"output": "a.o", "range": [1]}])"),
       "requests[0].range: a range has two numbers, not 1"},
      {withModule(R"("requests": [{"output": "a.o", "range": [2, 2]}])"),
       "requests[0].range: the range from 2 to 2 does not rise"},
      {withModule(R"("requests": [{"output": "a.o", "flip": "up"}])"),
       "requests[0].flip: \"up\" is none of horizontal, vertical, both"},
      {withModule(R"("requests": [{"output": "a.o", "show": "a.s"}])"), "requests[0].show: must be a list"},
  };
  for (const Refused& row : rows) EXPECT_EQ(refusalOf(row.text), row.message) << row.text;
}

TEST(VxtileNetwork, BadSyntaxIsToldWithLineAndColumn) {
  EXPECT_EQ(refusalOf("{\n  \"modules\": }").rfind("parse error at line 2, column 14", 0), 0U);
  EXPECT_EQ(refusalOf("").rfind("parse error at line 1, column 1", 0), 0U);
  EXPECT_NE(refusalOf(withField("1e999")).find("number overflow"), std::string::npos) << refusalOf(withField("1e999"));
  EXPECT_NE(refusalOf(R"({"modules": {}} x)"), "accepted");
  EXPECT_NE(refusalOf("{\"modules\": {\"\xff\": {}}}"), "accepted");
}

TEST(VxtileNetwork, DeepNestingIsNoDanger) {
  std::string text(100000, '[');
  EXPECT_NE(refusalOf(text), "accepted");
  text += std::string(100000, ']');
  EXPECT_EQ(refusalOf(text), "must be an object");
}

TEST(VxtileNetwork, AFileThatCantBeReadIsNamed) {
  try {
    readNetwork("/no/such/net.json");
    FAIL();
  } catch (const Failure& failure) {
    EXPECT_STREQ(failure.what(), "/no/such/net.json: the file can't be read");
    EXPECT_EQ(failure.code(), ExitCode::network);
  }
}

TEST(VxtileValues, NumbersAreReadWhole) {
  EXPECT_EQ(readNumber("12"), Number(12LL));
  EXPECT_EQ(readNumber("+12"), Number(12LL));
  EXPECT_EQ(readNumber("-0.5e1"), Number(-5.0));
  EXPECT_EQ(readNumber("9223372036854775808"), Number(9223372036854775808.0));
  for (const char* const text : {"", " 1", "1 ", "1,5", "0x10", "nan", "inf", "-inf", "1e999", "+-1", "+", "text"}) {
    EXPECT_FALSE(readNumber(text)) << text;
  }
  EXPECT_EQ(readNumbers(" 1, 2.5\t3 "), (std::vector<Number>{1LL, 2.5, 3LL}));
  EXPECT_FALSE(readNumbers("1 x"));
}

TEST(VxtileValues, TextsOfNumbersReadBackTheSame) {
  for (const double value : {0.1, 1e308, 5e-324, -1.0 / 3, 16777217.0}) {
    EXPECT_EQ(asDouble(*readNumber(textOf(Number(value)))), value);
  }
  EXPECT_EQ(textOf(Value(std::vector<Number>{1LL, 0.5})), "1 0.5");
  EXPECT_EQ(textOf(Value(false)), "false");
}

std::string boxText(const BoxRequest& box) {
  std::string text;
  for (std::size_t i = 0; i < numAxes; ++i) {
    if (box[i]) text += axisLetters[i] + std::to_string(box[i]->first) + ":" + std::to_string(box[i]->last) + " ";
  }
  return text;
}

TEST(VxtileValues, BoxesAreAxesOrCorners) {
  EXPECT_EQ(boxText(readBox("x=10:20,z=5")), "x10:20 z5:5 ");
  EXPECT_EQ(boxText(readBox("u=-3:4 t=0")), "t0:0 u-3:4 ");
  EXPECT_EQ(boxText(readBox("1,2,3,4,5,6")), "x1:4 y2:5 z3:6 ");
  EXPECT_EQ(boxText(readBox("0 0 0 0 0 0 1 2 3 4 5 6")), "x0:1 y0:2 z0:3 c0:4 t0:5 u0:6 ");
}

TEST(VxtileValues, BadBoxesAreExplained) {
  const std::vector<Refused> rows = {
      {"5", "two corners have 6 or 12 numbers, not 1"},
      {"", "two corners have 6 or 12 numbers, not 0"},
      {"z", "\"z\" is neither AXIS=FIRST:LAST,... nor two corners"},
      {"z=5,y", "\"y\" lacks an axis"},
      {"z=", "\"\" is neither a voxel nor FIRST:LAST"},
      {"z=1:2:3", "\"1:2:3\" is neither a voxel nor FIRST:LAST"},
      {"z=99999999999999999999", "\"99999999999999999999\" is neither a voxel nor FIRST:LAST"},
      {"z=5,z=6", "axis z stands twice"},
      {"z=6:5", "axis z runs backward, from 6 to 5"},
      {"Z=5", "\"Z\" is no axis; they are x, y, z, c, t and u"},
      {"xy=5", "\"xy\" is no axis; they are x, y, z, c, t and u"},
      {"1,2,3,4,5,6.5", "a corner must have whole numbers, not 6.5"},
      {"5,0,0,4,0,0", "axis x runs backward, from 5 to 4"},
  };
  for (const Refused& row : rows) {
    try {
      readBox(row.text);
      ADD_FAILURE() << row.text << " is accepted";
    } catch (const std::invalid_argument& error) {
      EXPECT_EQ(error.what(), row.message) << row.text;
    }
  }
}

TEST(VxtileGraph, ShowsModulesConnectionsAndRequests) {
  const Network network = parseNetwork(R"({
    "modules": {"a": {"type": "Source", "fields": {"path": "C:\\x \"y\"\nz", "size": [1, 2]}}, "b": {"type": "Sink"}},
    "connections": [{"from": "a.output0", "to": "b.input0"}],
    "requests": [{"output": "a.output0", "file": "f.png", "box": "z=5,x=1:2", "range": [0, 9], "type": "uint8"},
                 {"output": "a.output0"}, {"touch": "b.update"}, {"show": ["b.result"]}]
  })",
                                       "net");
  std::ostringstream stream;
  writeGraph(stream, network, "net");
  EXPECT_EQ(stream.str(), R"(digraph "net" {
  rankdir=LR;
  node [shape=box, fontname="Helvetica"];
  edge [fontname="Helvetica", fontsize=10];
  "a" [label="a\nSource\npath = C:\\x \"y\"\nz\nsize = 1 2"];
  "b" [label="b\nSink"];
  "a" -> "b" [label="output0 to input0"];
  "request.0" [shape=note, label="f.png\nx 1:2\nz 5\nuint8\nrange 0 9"];
  "a" -> "request.0" [style=dashed, label="output0"];
  "request.1" [shape=note, label="calculate"];
  "a" -> "request.1" [style=dashed, label="output0"];
  "request.2" [shape=note, label="touch b.update"];
  "request.2" -> "b" [style=dashed];
}
)");
}

}  // namespace
}  // namespace vxtile
