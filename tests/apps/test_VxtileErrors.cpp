// vxtile and everything that can be wrong: the exact message and the exit code, and no file left.

#include "VxtileFixture.h"

#include <regex>

namespace vx::test {
namespace {

// Modules `a` (a pattern), `b` (a filter behind it) and more text.
std::string network(const std::string& rest = {}, const std::string& fields = {}) {
  return R"({"modules": {"a": {"type": "TestPattern", "fields": {"extent": [8, 4, 2, 1, 1, 1])" + fields +
         R"(}}, "b": {"type": "Threshold"}}, "connections": [{"from": "a.output0", "to": "b.input0"}])" +
         (rest.empty() ? "" : ", " + rest) + "}";
}

struct Row {
  std::vector<std::string> arguments;
  std::string message;
};

class VxtileErrorsTest : public VxtileTest {
 protected:
  void expect(const std::vector<Row>& rows, int code) const {
    for (const Row& row : rows) {
      const Outcome outcome = runNetwork(network(), row.arguments);
      EXPECT_EQ(outcome.code, code) << row.message << "\n" << outcome;
      EXPECT_EQ(outcome.err, "vxtile: " + row.message + "\n");
      EXPECT_EQ(outcome.out, "");
      EXPECT_TRUE(files().empty()) << row.message;
    }
  }
};

TEST_F(VxtileErrorsTest, ValuesThatDontFitNameModuleFieldAndValue) {
  const auto set = [](const std::string& assignment, const std::string& message) {
    return Row{{"-s", assignment, "-o", "b.output0"}, message};
  };
  expect({set("c.lower=1", "--set: c.lower: there is no module \"c\""),
          set("b.low=1",
              "b.low: the class Threshold has no field \"low\"; it has input0, output0, instanceName, lower, upper, "
              "keepInside, insideValue, outsideValue, outputType"),
          set("b.lower=x", "b.lower: takes a number, not \"x\""), set("b.lower=", "b.lower: takes a number, not \"\""),
          set("b.lower=1e999", "b.lower: takes a number, not \"1e999\""),
          set("b.lower=0,5", "b.lower: takes a number, not \"0,5\""),
          set("b.keepInside=yes", "b.keepInside: takes true or false, not \"yes\""),
          set("b.outputType=real",
              "b.outputType: takes one of automatic, int8, unsigned int8, int16, unsigned int16, int32, "
              "unsigned int32, float, double, long double, int64, not \"real\""),
          set("a.pattern=stars",
              "a.pattern: takes one of constant, index, ramp, checkerboard, ball, rings, noise, not \"stars\""),
          set("a.extent=1 2 3", "a.extent: takes 6 whole numbers, not \"1 2 3\""),
          set("a.extent=1 2 3 4 5 6.5", "a.extent: takes 6 whole numbers, not \"1 2 3 4 5 6.5\""),
          set("a.extent=1 2 3 4 5 9007199254740993",
              "a.extent: takes 6 whole numbers, not \"1 2 3 4 5 9007199254740993\""),
          set("a.voxelSize=1 2", "a.voxelSize: takes 3 numbers, not \"1 2\""),
          set("a.dataType=int5", "a.dataType: takes a voxel type, not \"int5\""),
          set("a.seed=1.5", "a.seed: takes a whole number, not \"1.5\""),
          set("a.seed=9223372036854775808", "a.seed: takes a whole number, not \"9223372036854775808\""),
          set("a.output0=1", "a.output0: fields of class OutputConnectorField can't be set")},
         3);
}

TEST_F(VxtileErrorsTest, ValuesOfTheFileAreChecked) {
  const std::vector<std::pair<std::string, std::string>> rows = {
      {R"(, "minValue": "text")", "a.minValue: takes a number, not \"text\""},
      {R"(, "minValue": true)", "a.minValue: takes a number, not \"true\""},
      {R"(, "minValue": [1])", "a.minValue: takes a number, not \"1\""},
      {R"(, "seed": 1.5)", "a.seed: takes a whole number, not \"1.5\""},
      {R"(, "seed": 9223372036854775808)", "a.seed: takes a whole number, not \"9223372036854775808\""},
      {R"(, "pattern": 3)",
       "a.pattern: takes one of constant, index, ramp, checkerboard, ball, rings, noise, not \"3\""},
      {R"(, "none": 3)",
       "a.none: the class TestPattern has no field \"none\"; it has output0, instanceName, pattern, "
       "extent, pageExtent, dataType, minValue, maxValue, cellSize, seed, voxelSize"}};
  for (const auto& [fields, message] : rows) {
    const Outcome outcome = runNetwork(network({}, fields), {"-o", "b.output0"});
    EXPECT_EQ(outcome.code, 3) << outcome;
    EXPECT_EQ(outcome.err, "vxtile: " + message + "\n");
  }
}

TEST_F(VxtileErrorsTest, ModulesAndConnectionsThatDontFitAreNamed) {
  const std::vector<std::pair<std::string, std::string>> rows = {
      {R"({"modules": {"m": {"type": "Nothing"}}})",
       "m: there is no module class \"Nothing\"; `vxtile types` lists them"},
      {R"({"modules": {"m": {"type": "IntField"}}})",
       "m: there is no module class \"IntField\"; `vxtile types` lists them"},
      {R"({"modules": {"m": {"type": "BaseOp"}}})", "m: the class \"BaseOp\" is abstract"}};
  for (const auto& [text, message] : rows) {
    const Outcome outcome = runNetwork(text, {"-o", "m.output0"});
    EXPECT_EQ(outcome.code, 3) << outcome;
    EXPECT_EQ(outcome.err, "vxtile: " + message + "\n");
  }
  const auto connect = [&](const std::string& from, const std::string& to) {
    return runNetwork(
        R"({"modules": {"a": {"type": "TestPattern"}, "b": {"type": "Threshold"}}, "connections": [{"from": ")" + from +
            R"(", "to": ")" + to + R"("}]})",
        {"-o", "b.output0"});
  };
  EXPECT_EQ(connect("a.output1", "b.input0")
                .err.rfind("vxtile: a.output1: the class TestPattern has no field \"output1\"", 0),
            0U);
  EXPECT_EQ(connect("a.seed", "b.input0").err,
            "vxtile: a.seed -> b.input0: a IntField does not fit a InputConnectorField\n");
  EXPECT_EQ(connect("a.output0", "b.lower").err,
            "vxtile: a.output0 -> b.lower: a OutputConnectorField does not fit a DoubleField\n");
  EXPECT_EQ(connect("a.output0", "b.output0").err,
            "vxtile: a.output0 -> b.output0: nothing can be connected to an output\n");
  EXPECT_EQ(connect("b.input0", "b.lower").err, "vxtile: b.input0 -> b.lower: an input gives nothing away\n");
  EXPECT_EQ(connect("b.input0", "b.lower").code, 3);
}

TEST_F(VxtileErrorsTest, RequestsThatMakeNoSenseAreNamed) {
  expect(
      {{{"-o", "a.seed"}, "a.seed: this is no output but a IntField"},
       {{"-o", "a.output0", "-b", "z=2", "f.raw"}, "a.output0: the box z 2:2 reaches past the image, which has z 0:1"},
       {{"-o", "a.output0", "-t", "int5", "f.raw"},
        "a.output0: \"int5\" is no voxel type; known are int8, unsigned int8, int16, unsigned int16, int32, unsigned "
        "int32, float, double, long double, int64"},
       {{"-o", "a.output0", "-t", "float", "-r", "0,1", "f.raw"},
        "a.output0: a range gives voxels of type \"unsigned int8\", not \"float\""},
       {{"-o", "a.output0", "f.png"},
        "a.output0: a .png picture holds one plane; the box has x 0:7, y 0:3, z 0:1. Choose a plane with a box such as "
        "z=1"},
       {{"-o", "a.output0", "-b", "z=0", "-t", "float", "f.png"},
        "a.output0: a .png picture holds voxels of type \"unsigned int8\" or \"unsigned int16\", not \"float\""},
       {{"-o", "a.output0", "-s", "a.extent=2 2 1 5 1 1", "f.png"},
        "a.output0: a .png picture holds one t, one u and up to 4 c; the box has x 0:1, y 0:1, c 0:4"},
       {{"-o", "a.output0", "--flip", "both", "f.raw"}, "a.output0: only a .png picture can be flipped"},
       {{"-o", "a.output0", "-s", "a.extent=40000 1 1 1 1 1", "f.nii"},
        "a.output0: a .nii file holds at most 32767 voxels along an axis, not 40000"}},
      3);
}

TEST_F(VxtileErrorsTest, ABadCommandLineNamesTheOption) {
  expect({{{"-o", "output0"}, "--output: \"output0\" is not of the form MODULE.FIELD"},
          {{"-s", "b.lower", "-o", "b.output0"}, "--set: \"b.lower\" is not of the form MODULE.FIELD=VALUE"},
          {{"-s", "lower=1", "-o", "b.output0"}, "--set: \"lower\" is not of the form MODULE.FIELD"},
          {{"-o", "b.output0", "-b", "z=x"}, "--box: \"x\" is neither a voxel nor FIRST:LAST"},
          {{"-o", "b.output0", "-r", "5"}, "--range: a range has two numbers, not 1"},
          {{"-o", "b.output0", "-r", "5,x"}, "--range: \"5,x\" is not of the form LOW,HIGH"},
          {{"-o", "b.output0", "-r", "5,4"}, "--range: the range from 5 to 4 does not rise"},
          {{"-o", "b.output0", "--flip", "up", "f.png"}, "--flip: \"up\" is none of horizontal, vertical, both"},
          {{"--touch", "a"}, "--touch: \"a\" is not of the form MODULE.FIELD"},
          {{"-o", "b.output0", "f.jpg"}, "f.jpg: the ending is none of .png, .nii, .nii.gz, .raw"},
          {{"-o", "b.output0", ".png"}, ".png: the ending is none of .png, .nii, .nii.gz, .raw"}},
         2);
  const std::vector<std::vector<std::string>> rows = {{},
                                                      {"nothing"},
                                                      {"run"},
                                                      {"describe"},
                                                      {"why"},
                                                      {"why", ""},
                                                      {"graph"},
                                                      {"run", "-", "f.png"},
                                                      {"run", "-", "-b", "z=1"},
                                                      {"run", "-", "-j", "0"},
                                                      {"run", "-", "-j", "x"},
                                                      {"run", "-", "--cache-kb", "-1"},
                                                      {"run", "-", "--cache-kb", "2147483648"},
                                                      {"run", "-", "--unknown"}};
  for (const auto& arguments : rows) {
    const Outcome outcome = run(arguments, network());
    EXPECT_EQ(outcome.code, 2) << outcome;
    EXPECT_NE(outcome.err, "");
    EXPECT_EQ(outcome.out, "");
  }
}

TEST_F(VxtileErrorsTest, AnImageThatIsNotValidSaysWhy) {
  const Outcome bad = runNetwork(network({}, R"(, "cellSize": 0)"), {"-o", "b.output0", "f.raw"});
  EXPECT_EQ(bad.code, 1) << bad;
  EXPECT_NE(bad.err.find("vxtile: b.output0: there is no valid image (code "), std::string::npos) << bad;
  EXPECT_TRUE(files().empty());
  const Outcome itself = runNetwork(network({}, R"(, "cellSize": 0)"), {"-o", "a.output0", "f.raw"});
  EXPECT_NE(itself.err.find("Field cellSize: must be at least 1."), std::string::npos) << itself;
  const Outcome open = runNetwork(R"({"modules": {"b": {"type": "Threshold"}}})", {"-o", "b.output0"});
  EXPECT_EQ(open.code, 1) << open;
  EXPECT_NE(open.err.find("vxtile: b.output0: there is no valid image (code 3, "), std::string::npos) << open;
  const Outcome cyclic = runNetwork(R"({"modules": {"b": {"type": "Threshold"}, "c": {"type": "Threshold"}},
      "connections": [{"from": "b.output0", "to": "c.input0"}, {"from": "c.output0", "to": "b.input0"}]})",
                                    {"-o", "b.output0"});
  EXPECT_EQ(cyclic.code, 1) << cyclic;
  EXPECT_NE(cyclic.err.find("(code 4, The network is cyclic: a module was reached twice.)"), std::string::npos)
      << cyclic;
  const Outcome missing = runNetwork(
      R"({"modules": {"head": {"type": "NiftiLoad", "fields": {"filename": "missing.nii"}}}})", {"-o", "head.output0"});
  EXPECT_EQ(missing.code, 1) << missing;
  EXPECT_NE(missing.err.find("missing.nii"), std::string::npos) << missing;
}

TEST_F(VxtileErrorsTest, MessagesOfTheLibraryHaveLevelAndReason) {
  const Outcome outcome = runNetwork(R"({"modules": {"b": {"type": "Threshold"}}})", {"-o", "b.output0"});
  for (const std::string& line : {outcome.err}) {
    EXPECT_EQ(line.rfind("vxtile: ", 0), 0U) << outcome;
    EXPECT_EQ(line.find("VX error"), std::string::npos) << "each message once";
  }
}

TEST_F(VxtileErrorsTest, ALibraryThatIsMissingIsToldWithEachPlace) {
  const Outcome outcome = runNetwork(R"({"libraries": ["/no/Such"], "modules": {}})", {"--show", "a.b"});
  EXPECT_EQ(outcome.code, 4) << outcome;
  EXPECT_EQ(outcome.err,
            "vxtile: the library /no/Such could not be loaded:\n  /no/libSuch.so\n    There is no such file.\n"
            "  /no/Such\n    There is no such file.\n");
}

TEST_F(VxtileErrorsTest, AFileThatCantBeWrittenIsNamed) {
  for (const std::string file : {"no/folder/f.raw", "no/folder/f.png", "no/folder/f.nii", "no/folder/f.nii.gz"}) {
    const Outcome outcome = runNetwork(network(), {"-o", "a.output0", "-b", "z=0", file});
    EXPECT_EQ(outcome.code, 5) << outcome;
    EXPECT_EQ(outcome.err, "vxtile: " + file + ": No such file or directory\n");
  }
  write("folder", "a file in its place");
  const Outcome outcome = runNetwork(network(), {"-o", "a.output0", "-d", "folder", "f.raw"});
  EXPECT_EQ(outcome.code, 5) << outcome;
  EXPECT_EQ(outcome.err.rfind("vxtile: folder: ", 0), 0U) << outcome;
}

TEST_F(VxtileErrorsTest, AnOlderFileStaysUntilTheNewOneIsComplete) {
  write("f.raw", "old");
  const Outcome outcome = runNetwork(network({}, R"(, "cellSize": 0)"), {"-o", "a.output0", "f.raw"});
  EXPECT_EQ(outcome.code, 1);
  EXPECT_EQ(read("f.raw"), "old");
  EXPECT_EQ(runNetwork(network(), {"-o", "a.output0", "f.raw"}).code, 0);
  EXPECT_EQ(read("f.raw").size(), 64U);
  EXPECT_EQ(files(), (std::vector<std::string>{"f.raw"}));
}

TEST_F(VxtileErrorsTest, ANetworkWithoutRequestsNeedsOne) {
  const Outcome outcome = runNetwork(network());
  EXPECT_EQ(outcome.code, 3);
  EXPECT_EQ(outcome.err, "vxtile: -: there are no requests; --output names one\n");
}

}  // namespace
}  // namespace vx::test
