// vxtile at work: what its commands print and what its files hold.

#include "VxtileFixture.h"

#include <cstring>
#include <fstream>
#include <numeric>
#include <regex>
#include <signal.h>
#include <thread>

namespace vx::test {
namespace {

// A pattern whose voxels are numbered from 0 in memory order.
std::string indexPattern(const std::string& extent, const std::string& type = "unsigned int8",
                         const std::string& more = {}) {
  return patternNetwork(R"("pattern": "index", "maxValue": 100000, "dataType": ")" + type + R"(", "extent": )" +
                        extent + more);
}

template <class T>
std::vector<T> counted(std::size_t number, T first = 0) {
  std::vector<T> values(number);
  std::iota(values.begin(), values.end(), first);
  return values;
}

TEST_F(VxtileTest, TypesListsTheModulesOfALibrary) {
  const Outcome outcome = run({"types"});
  EXPECT_EQ(outcome.code, 0) << outcome;
  EXPECT_EQ(outcome.err, "");
  EXPECT_NE(outcome.out.find("\nTestPattern        BaseOp  VXStandardModules\n"), std::string::npos) << outcome;
  const Outcome names = run({"types", "--names"});
  EXPECT_NE(names.out.find("\nTestPattern\nThreshold\n"), std::string::npos) << names;
}

TEST_F(VxtileTest, DescribeShowsInputsOutputsAndWhatFieldsTake) {
  const Outcome outcome = run({"describe", "Projection"});
  EXPECT_EQ(outcome.code, 0) << outcome;
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out,
            "Projection, derived from BaseOp, of the library VXStandardModules\n"
            "Inputs: input0\n"
            "Outputs: output0\n"
            "Fields, with type, value and what they take:\n"
            "  instanceName  StringField  \"\"           a text\n"
            "  axis          EnumField    \"z\"          one of x, y, z, c, t, u\n"
            "  mode          EnumField    \"maximum\"    one of maximum, minimum, mean\n"
            "  outputType    EnumField    \"automatic\"  one of automatic, int8, unsigned int8, int16, unsigned int16, "
            "int32, unsigned int32, float, double, long double, int64\n");
  const Outcome pattern = run({"describe", "TestPattern"});
  EXPECT_NE(pattern.out.find("Inputs: none\n"), std::string::npos) << pattern;
  EXPECT_NE(pattern.out.find("VectorField      \"128 128 4 1 1 1\"    6 whole numbers\n"), std::string::npos)
      << pattern;
}

TEST_F(VxtileTest, WhyTellsEachPlaceAndReason) {
  const Outcome outcome = run({"why", "VXStandardModules"});
  EXPECT_EQ(outcome.code, 0) << outcome;
  EXPECT_TRUE(std::regex_match(outcome.out, std::regex("(no      /.*\n        There is no such file\\.\n)+"
                                                       "loaded  /.*/vx/modules/libVXStandardModules\\.so\n")))
      << outcome;
  write("libBroken.so", "no library");
  const Outcome broken = run({"why", "./Broken"});
  EXPECT_EQ(broken.code, 4) << broken;
  EXPECT_EQ(broken.out.rfind("no      ./libBroken.so\n        ", 0), 0U) << broken;
  EXPECT_NE(broken.out.find("no      ./Broken\n        There is no such file.\n"), std::string::npos) << broken;
  EXPECT_EQ(broken.err, "vxtile: the library ./Broken was not found in 2 places\n");
}

TEST_F(VxtileTest, GraphNeedsNoLibrary) {
  const Outcome outcome = run({"graph", "-"}, R"({"libraries": ["None"], "modules": {"a": {"type": "Unknown"}}})");
  EXPECT_EQ(outcome.code, 0) << outcome;
  EXPECT_NE(outcome.out.find("  \"a\" [label=\"a\\nUnknown\"];\n"), std::string::npos) << outcome;
}

TEST_F(VxtileTest, RawHoldsTheVoxelsAsTheyAre) {
  const Outcome outcome = runNetwork(indexPattern("[5, 4, 3, 2, 2, 2]", "int32"), {"-o", "pattern.output0", "f.raw"});
  EXPECT_EQ(outcome.code, 0) << outcome;
  EXPECT_EQ(outcome.out, "f.raw: pattern.output0, x 0:4, y 0:3, z 0:2, c 0:1, t 0:1, u 0:1, int32\n");
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(read("f.raw"), bytesOf(counted<int>(480)));
  EXPECT_EQ(files(), (std::vector<std::string>{"f.raw"})) << "nothing else is left";
}

TEST_F(VxtileTest, LargeImagesArriveInOrder) {
  const Outcome outcome = runNetwork(patternNetwork(R"("pattern": "index", "maxValue": 1e9, "dataType": "int32",
      "extent": [300, 200, 50, 1, 1, 1], "pageExtent": [64, 50, 7, 1, 1, 1])"),
                                     {"-o", "pattern.output0", "--cache-kb", "100", "-q", "f.raw"});
  EXPECT_EQ(outcome.code, 0) << outcome;
  EXPECT_EQ(outcome.out, "");
  EXPECT_TRUE(read("f.raw") == bytesOf(counted<int>(3000000)));
}

TEST_F(VxtileTest, ABoxIsPartOfTheImage) {
  const Outcome outcome =
      runNetwork(indexPattern("[5, 4, 3, 1, 1, 1]", "int16"), {"-o", "pattern.output0", "-b", "x=3:4,z=2", "f.raw"});
  EXPECT_EQ(outcome.out, "f.raw: pattern.output0, x 3:4, y 0:3, z 2, int16\n") << outcome;
  EXPECT_EQ(read("f.raw"), bytesOf<short>({43, 44, 48, 49, 53, 54, 58, 59}));
  runNetwork(indexPattern("[5, 4, 3, 1, 1, 1]", "int16"), {"-o", "pattern.output0", "-b", "3,0,2,4,1,2", "f.raw"});
  EXPECT_EQ(read("f.raw"), bytesOf<short>({43, 44, 48, 49}));
}

TEST_F(VxtileTest, VoxelsAreConvertedToTheType) {
  for (const char* const type : {"unsigned int16", "uint16"}) {
    const Outcome outcome =
        runNetwork(indexPattern("[3, 1, 1, 1, 1, 1]", "float"), {"-o", "pattern.output0", "-t", type, "f.raw"});
    EXPECT_EQ(outcome.out, "f.raw: pattern.output0, x 0:2, unsigned int16\n") << outcome;
    EXPECT_EQ(read("f.raw"), bytesOf<unsigned short>({0, 1, 2}));
  }
}

TEST_F(VxtileTest, ARangeIsMappedToBytesAndLimited) {
  const Outcome outcome = runNetwork(indexPattern("[8, 1, 1, 1, 1, 1]", "int16", R"(, "minValue": -3)"),
                                     {"-o", "pattern.output0", "-r", "-1,2", "f.raw"});
  EXPECT_EQ(outcome.out, "f.raw: pattern.output0, x 0:7, unsigned int8, window -1 to 2\n") << outcome;
  EXPECT_EQ(read("f.raw"), bytesOf<unsigned char>({0, 0, 0, 85, 170, 255, 255, 255}));
}

TEST_F(VxtileTest, APictureShowsAPlane) {
  const std::string network = indexPattern("[5, 4, 3, 1, 1, 1]");
  EXPECT_EQ(runNetwork(network, {"-o", "pattern.output0", "-b", "z=1", "f.png"}).code, 0);
  Picture picture = readPicture("f.png");
  EXPECT_EQ(std::make_tuple(picture.width, picture.height, picture.bits, picture.channels),
            std::make_tuple(5U, 4U, 8, 1));
  EXPECT_EQ(picture.pixels, bytesOf(counted<unsigned char>(20, 20)));
  EXPECT_EQ(runNetwork(network, {"-o", "pattern.output0", "-b", "y=1", "f.png"}).code, 0);
  picture = readPicture("f.png");
  EXPECT_EQ(std::make_tuple(picture.width, picture.height), std::make_tuple(5U, 3U));
  EXPECT_EQ(picture.pixels.substr(5, 5), bytesOf(counted<unsigned char>(5, 25)));
  EXPECT_EQ(runNetwork(network, {"-o", "pattern.output0", "-b", "x=4", "f.png"}).code, 0);
  picture = readPicture("f.png");
  EXPECT_EQ(picture.pixels, bytesOf<unsigned char>({4, 9, 14, 19, 24, 29, 34, 39, 44, 49, 54, 59}));
}

TEST_F(VxtileTest, APictureIsFlippedOnDemand) {
  const std::string network = indexPattern("[3, 2, 1, 1, 1, 1]");
  const std::vector<std::pair<std::string, std::vector<unsigned char>>> rows = {
      {"horizontal", {2, 1, 0, 5, 4, 3}}, {"vertical", {3, 4, 5, 0, 1, 2}}, {"both", {5, 4, 3, 2, 1, 0}}};
  for (const auto& [how, pixels] : rows) {
    EXPECT_EQ(runNetwork(network, {"-o", "pattern.output0", "--flip", how, "f.png"}).code, 0);
    EXPECT_EQ(readPicture("f.png").pixels, bytesOf(pixels)) << how;
  }
}

TEST_F(VxtileTest, ALargePictureIsFlippedAcrossItsPieces) {
  const Outcome outcome = runNetwork(indexPattern("[2000, 3000, 1, 1, 1, 1]", "unsigned int16"),
                                     {"-o", "pattern.output0", "--flip", "vertical", "f.png"});
  EXPECT_EQ(outcome.code, 0) << outcome;
  const Picture picture = readPicture("f.png");
  EXPECT_EQ(picture.bits, 16);
  ASSERT_EQ(picture.pixels.size(), 12000000U);
  const auto valueAt = [&](std::size_t x, std::size_t y) {
    unsigned short value = 0;
    std::memcpy(&value, &picture.pixels[2 * (y * 2000 + x)], 2);
    return value;
  };
  for (std::size_t y = 0; y < 3000; ++y) {
    // Numbers begin anew behind the largest value, and are limited to that of the type.
    ASSERT_EQ(valueAt(1, y), std::min<std::size_t>(((2999 - y) * 2000 + 1) % 100001, 65535)) << y;
  }
}

TEST_F(VxtileTest, TheDimensionCBecomesChannels) {
  const std::string network = indexPattern("[2, 2, 1, 3, 1, 1]");
  EXPECT_EQ(runNetwork(network, {"-o", "pattern.output0", "f.png"}).code, 0);
  const Picture picture = readPicture("f.png");
  EXPECT_EQ(picture.channels, 3);
  EXPECT_EQ(picture.pixels, bytesOf<unsigned char>({0, 4, 8, 1, 5, 9, 2, 6, 10, 3, 7, 11}));
}

TEST_F(VxtileTest, APictureOfOtherTypesShowsTheRangeOfTheImage) {
  const Outcome outcome = runNetwork(
      patternNetwork(
          R"("pattern": "ramp", "dataType": "float", "extent": [6, 1, 1, 1, 1, 1], "minValue": -1, "maxValue": 4)"),
      {"-o", "pattern.output0", "f.png"});
  EXPECT_EQ(outcome.out, "f.png: pattern.output0, x 0:5, unsigned int8, window -1 to 4\n") << outcome;
  EXPECT_EQ(readPicture("f.png").pixels, bytesOf<unsigned char>({0, 51, 102, 153, 204, 255}));
}

// The parts of a NIfTI header that are looked at.
struct NiftiHeader {
  std::vector<short> dim;
  short datatype = 0;
  short bitpix = 0;
  std::vector<float> pixdim;
  float offset = 0;
  std::vector<float> rows;
  std::string magic;
};
template <class T>
std::vector<T> values(const std::string& bytes, std::size_t position, std::size_t number) {
  std::vector<T> list(number);
  std::memcpy(list.data(), bytes.substr(position, number * sizeof(T)).data(), number * sizeof(T));
  return list;
}
NiftiHeader niftiHeader(const std::string& bytes) {
  return {values<short>(bytes, 40, 8), values<short>(bytes, 70, 1)[0],  values<short>(bytes, 72, 1)[0],
          values<float>(bytes, 76, 8), values<float>(bytes, 108, 1)[0], values<float>(bytes, 280, 12),
          bytes.substr(344, 4)};
}

TEST_F(VxtileTest, NiftiHoldsVoxelsAndWorldMatrix) {
  const std::string network = indexPattern("[5, 4, 3, 1, 1, 1]", "int16", R"(, "voxelSize": [0.5, 2, 3])");
  for (const char* const file : {"f.nii", "f.nii.gz"}) {
    const Outcome outcome = runNetwork(network, {"-o", "pattern.output0", "-b", "x=2:4,z=1:2", file});
    EXPECT_EQ(outcome.code, 0) << outcome;
    const std::string bytes = readGz(file);
    ASSERT_EQ(bytes.size(), 352U + 48) << file;
    const NiftiHeader header = niftiHeader(bytes);
    EXPECT_EQ(header.dim, (std::vector<short>{3, 3, 4, 2, 1, 1, 1, 1}));
    EXPECT_EQ(header.datatype, 4);
    EXPECT_EQ(header.bitpix, 16);
    EXPECT_EQ(header.pixdim, (std::vector<float>{1, 0.5, 2, 3, 1, 1, 1, 1}));
    EXPECT_EQ(header.offset, 352);
    EXPECT_EQ(header.rows, (std::vector<float>{0.5, 0, 0, 1, 0, 2, 0, 0, 0, 0, 3, 3})) << "shifted with the box";
    EXPECT_EQ(header.magic, std::string("n+1\0", 4));
    EXPECT_EQ(bytes.substr(352, 6), bytesOf<short>({22, 23, 24}));
  }
  EXPECT_EQ(read("f.nii").size(), 400U);
  EXPECT_EQ(read("f.nii.gz").substr(0, 2), "\x1f\x8b") << "compressed";
}

TEST_F(VxtileTest, NiftiHasTInFrontOfC) {
  EXPECT_EQ(runNetwork(indexPattern("[2, 1, 1, 2, 3, 1]", "int32"), {"-o", "pattern.output0", "f.nii"}).code, 0);
  const std::string bytes = read("f.nii");
  EXPECT_EQ(niftiHeader(bytes).dim, (std::vector<short>{5, 2, 1, 1, 3, 2, 1, 1}));
  EXPECT_EQ(bytes.substr(352), bytesOf<int>({0, 1, 4, 5, 8, 9, 2, 3, 6, 7, 10, 11}));
}

TEST_F(VxtileTest, WhatNiftiHoldsIsLoadedAgain) {
  for (const std::string type :
       {"int8", "unsigned int8", "int16", "unsigned int16", "int32", "unsigned int32", "float", "double", "int64"}) {
    const std::string network =
        indexPattern("[3, 4, 2, 3, 2, 1]", type, R"(, "voxelSize": [0.5, 2, 3], "maxValue": 100)");
    const Outcome first = runNetwork(
        patternNetwork(R"("pattern": "index", "maxValue": 100, "extent": [3, 4, 2, 3, 2, 1], "dataType": ")" + type +
                       "\""),
        {"-o", "pattern.output0", "f.nii.gz"});
    EXPECT_EQ(first.code, 0) << first;
    const Outcome second =
        runNetwork(R"({"modules": {"f": {"type": "NiftiLoad", "fields": {"filename": "f.nii.gz"}}}})",
                   {"-o", "f.output0", "f.raw"});
    EXPECT_EQ(second.out, "f.raw: f.output0, x 0:2, y 0:3, z 0:1, c 0:2, t 0:1, " + type + "\n") << second;
    const Outcome third = runNetwork(
        patternNetwork(R"("pattern": "index", "maxValue": 100, "extent": [3, 4, 2, 3, 2, 1], "dataType": ")" + type +
                       "\""),
        {"-o", "pattern.output0", "g.raw"});
    EXPECT_EQ(third.code, 0);
    EXPECT_EQ(read("f.raw"), read("g.raw")) << type;
    EXPECT_FALSE(read("f.raw").empty());
  }
}

TEST_F(VxtileTest, TheRequestsOfTheFileRunInOrder) {
  const Outcome outcome = runNetwork(R"({
    "modules": {
      "pattern": {"type": "TestPattern", "fields": {"extent": [4, 3, 2, 1, 1, 1], "pattern": "index"}},
      "half": {"type": "ScaleShift", "fields": {"scale": 0.5, "outputType": "float"}},
      "statistics": {"type": "ImageStatistics", "fields": {"numBins": 2}}
    },
    "connections": [{"from": "pattern.output0", "to": "half.input0"}, {"from": "half.output0", "to": "statistics.input0"}],
    "requests": [
      {"output": "half.output0", "file": "half.raw"},
      {"touch": "statistics.update", "show": ["statistics.status", "statistics.count", "statistics.maximum"]},
      {"output": "pattern.output0", "box": {"z": 1}}
    ]
  })",
                                     {"-d", "new/folder"});
  EXPECT_EQ(outcome.code, 0) << outcome;
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out,
            "new/folder/half.raw: half.output0, x 0:3, y 0:2, z 0:1, float\n"
            "statistics.status = ok\nstatistics.count = 24\nstatistics.maximum = 11.5\n"
            "calculated: pattern.output0, x 0:3, y 0:2, z 1, unsigned int8\n");
  const std::vector<float> halves = values<float>(read("new/folder/half.raw"), 0, 24);
  for (std::size_t i = 0; i < 24; ++i) EXPECT_EQ(halves[i], 0.5F * static_cast<float>(i));
}

TEST_F(VxtileTest, SetComesBeforeTheFileAndReadsTexts) {
  const Outcome outcome =
      runNetwork(patternNetwork(R"("pattern": "constant", "minValue": 300)"),
                 {"-s", "pattern.minValue=7", "--set", "pattern.extent=2 1 1 1 1 1", "-s", "pattern.dataType=uint16",
                  "--show", "pattern.minValue", "--show", "pattern.extent", "--show", "pattern.instanceName", "-o",
                  "pattern.output0", "f.raw"});
  EXPECT_EQ(outcome.code, 0) << outcome;
  EXPECT_EQ(outcome.out,
            "f.raw: pattern.output0, x 0:1, unsigned int16\npattern.minValue = 7\npattern.extent = 2 1 1 1 1 1\n"
            "pattern.instanceName = pattern\n");
  EXPECT_EQ(read("f.raw"), bytesOf<unsigned short>({7, 7}));
}

TEST_F(VxtileTest, ParametersCanBeConnected) {
  const Outcome outcome = runNetwork(R"({
    "modules": {
      "a": {"type": "TestPattern", "fields": {"extent": [2, 1, 1, 1, 1, 1], "cellSize": 5}},
      "b": {"type": "TestPattern"}
    },
    "connections": [{"from": "a.extent", "to": "b.extent"}, {"from": "a.cellSize", "to": "b.seed"}],
    "requests": [{"show": ["b.extent", "b.seed"]}]
  })");
  EXPECT_EQ(outcome.code, 0) << outcome;
  EXPECT_EQ(outcome.out, "b.extent = 2 1 1 1 1 1\nb.seed = 5\n");
}

TEST_F(VxtileTest, StatsCountPagesAndCache) {
  const Outcome outcome =
      runNetwork(patternNetwork(R"("extent": [128, 128, 8, 1, 1, 1])",
                                R"("requests": [{"output": "pattern.output0"}, {"output": "pattern.output0"}])"),
                 {"--stats", "-q", "-j", "1", "--cache-kb", "1000"});
  EXPECT_EQ(outcome.code, 0) << outcome;
  EXPECT_TRUE(std::regex_match(outcome.out, std::regex("time     [0-9]+\\.[0-9]{3} s on at most 1 threads\n"
                                                       "pages    2 calculated, 2 hit\n"
                                                       "cache    128 KB held, 128 KB peak, 1000 KB limit\n"
                                                       "memory   [0-9]+ KB peak of the process\n")))
      << outcome;
}

#ifdef VX_MEASURES_MEMORY
// The network of the demo on an image of the demo's size: a compressed file, of which the decompressed voxels are kept.
TEST_F(VxtileTest, MemoryStaysWithinTheLimitOfTheCacheAndSixtyFourMegabytesBeyondTheFile) {
  constexpr long long fileKB = (301LL * 370 * 316 + 352) / 1024;
  const Outcome made = runNetwork(
      patternNetwork(R"("pattern": "rings", "extent": [301, 370, 316, 1, 1, 1], "dataType": "unsigned int8")"),
      {"-o", "pattern.output0", "head.nii.gz"});
  ASSERT_EQ(made.code, 0) << made;
  const auto expectLittleMemory = [this](const std::vector<std::string>& request, long long cacheKB) {
    std::vector<std::string> arguments{"run", VX_SOURCE_DIR "/apps/vxtile/examples/head.json"};
    arguments.insert(arguments.end(), {"-s", "head.filename=" + path("head.nii.gz"), "--stats", "-q", "-j", "2"});
    arguments.insert(arguments.end(), {"--cache-kb", std::to_string(cacheKB)});
    arguments.insert(arguments.end(), request.begin(), request.end());
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.code, 0) << outcome;
    std::smatch match;
    ASSERT_TRUE(std::regex_search(outcome.out, match, std::regex("memory   ([0-9]+) KB"))) << outcome;
    EXPECT_LE(std::stoll(match[1]), cacheKB + 64 * 1024 + fileKB) << outcome;
  };
  expectLittleMemory({}, 50000);
  expectLittleMemory({"-o", "overlay.output0", "-b", "x=150"}, 30000);
  expectLittleMemory({"-o", "overlay.output0", "-b", "z=100:139", "-t", "double", "overlay.raw"}, 50000);
}
#endif

TEST_F(VxtileTest, AnInterruptStopsItWithinAPage) {
  const int process = start({"run", "-", "-o", "pattern.output0", "f.raw"},
                            patternNetwork(R"("pattern": "rings", "extent": [1000, 1000, 4000, 1, 1, 1])"));
  for (int i = 0; i < 1000 && files().empty(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  ::kill(process, SIGINT);
  const auto begin = std::chrono::steady_clock::now();
  const Outcome outcome = finish(process);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
  EXPECT_EQ(outcome.code, 130) << outcome;
  EXPECT_EQ(outcome.err, "vxtile: stopped: the calculation of pattern.output0 was interrupted\n");
  EXPECT_EQ(outcome.out, "");
  EXPECT_TRUE(files().empty()) << "no unfinished file is left";
}

// A picture is requested as a whole; its pages take a second each, all of them more than a minute on one processor.
TEST_F(VxtileTest, AnInterruptDoesNotWaitForThePicture) {
  const int process = start({"run", "-", "-o", "smooth.output0", "-b", "z=500", "f.png"}, R"({
    "modules": {
      "pattern": {"type": "TestPattern", "fields": {"pattern": "noise", "extent": [1000, 1000, 1000, 1, 1, 1]}},
      "smooth": {"type": "Convolution", "fields": {"kernel": "Gauss", "sigma": [30, 30, 30, 0, 0, 0]}}
    },
    "connections": [{"from": "pattern.output0", "to": "smooth.input0"}]
  })");
  for (int i = 0; i < 1000 && files().empty(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  const auto begin = std::chrono::steady_clock::now();
  ::kill(process, SIGTERM);
  const Outcome outcome = finish(process);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
  EXPECT_EQ(outcome.code, 130) << outcome;
  EXPECT_EQ(outcome.err, "vxtile: stopped: the calculation of smooth.output0 was interrupted\n");
  EXPECT_TRUE(files().empty()) << "no unfinished file is left";
}

TEST_F(VxtileTest, ExamplesRunThroughTheParser) {
  for (const auto& entry : std::filesystem::directory_iterator(VX_SOURCE_DIR "/apps/vxtile/examples")) {
    const Outcome outcome = run({"graph", entry.path().string()});
    EXPECT_EQ(outcome.code, 0) << entry.path() << outcome;
  }
}

TEST_F(VxtileTest, HelpVersionManualAndCompletionAgree) {
  const Outcome version = run({"--version"});
  EXPECT_EQ(version.code, 0);
  EXPECT_TRUE(std::regex_match(version.out, std::regex("vxtile [0-9]+\\.[0-9]+\\.[0-9]+\n"))) << version;
  std::ifstream manualFile(VX_SOURCE_DIR "/apps/vxtile/vxtile.1");
  const std::string manual{std::istreambuf_iterator<char>(manualFile), {}};
  std::ifstream completionFile(VX_SOURCE_DIR "/apps/vxtile/vxtile.bash");
  const std::string completion{std::istreambuf_iterator<char>(completionFile), {}};
  const std::regex option("--[a-z-]+");
  for (const std::string command : {"", "types", "describe", "run", "graph", "why"}) {
    const Outcome help = command.empty() ? run({"--help"}) : run({command, "--help"});
    EXPECT_EQ(help.code, 0) << command;
    EXPECT_EQ(help.err, "") << command;
    EXPECT_NE(manual.find("vxtile " + command), std::string::npos) << command;
    for (std::sregex_iterator i(help.out.begin(), help.out.end(), option), end; i != end; ++i) {
      std::string escaped = std::regex_replace(i->str(), std::regex("-"), "\\-");
      EXPECT_NE(manual.find(escaped), std::string::npos) << command << " " << i->str() << " lacks in the manual";
      EXPECT_NE(completion.find(i->str()), std::string::npos) << command << " " << i->str() << " isn't completed";
    }
  }
}

}  // namespace
}  // namespace vx::test
