// Start-up, shutdown and library loading as hosts see them.

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <ostream>
#include <regex>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using Strings = std::vector<std::string>;

struct Output {
  int status = -1;   ///< Exit status, or -1 for a process that did not end by itself.
  std::string text;  ///< What it printed, errors too.
};

// The environment of this test without the variables of the library, and with others.
Strings environmentWith(const Strings& variables) {
  Strings environment;
  for (char** entry = environ; *entry; ++entry) {
    const std::string text(*entry);
    if (text.rfind("VX_", 0) != 0 && text.rfind("LD_LIBRARY_PATH=", 0) != 0) environment.push_back(text);
  }
  environment.insert(environment.end(), variables.begin(), variables.end());
  return environment;
}

std::vector<char*> pointersTo(Strings& strings) {
  std::vector<char*> pointers;
  for (std::string& string : strings) pointers.push_back(string.data());
  pointers.push_back(nullptr);
  return pointers;
}

Output run(Strings arguments, const Strings& variables) {
  int pipeEnds[2];
  if (pipe(pipeEnds) != 0) return {};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], 1);
  posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], 2);
  posix_spawn_file_actions_addclose(&actions, pipeEnds[0]);
  Strings environment = environmentWith(variables);
  pid_t child = 0;
  const int error = posix_spawn(&child, arguments[0].c_str(), &actions, nullptr, pointersTo(arguments).data(),
                                pointersTo(environment).data());
  posix_spawn_file_actions_destroy(&actions);
  close(pipeEnds[1]);
  Output output;
  char buffer[4096];
  for (ssize_t size = read(pipeEnds[0], buffer, sizeof buffer); size > 0;
       size = read(pipeEnds[0], buffer, sizeof buffer)) {
    output.text.append(buffer, static_cast<std::size_t>(size));
  }
  close(pipeEnds[0]);
  int status = 0;
  if (error == 0 && waitpid(child, &status, 0) == child && WIFEXITED(status)) output.status = WEXITSTATUS(status);
  return output;
}

// The output of the linked host. The search for the extension library is off unless a test is about it.
std::string probe(const Strings& commands, Strings variables = {}) {
  Strings arguments = {VX_PROBE};
  arguments.insert(arguments.end(), commands.begin(), commands.end());
  const Output output = run(arguments, variables);
  EXPECT_EQ(output.status, 0) << output.text;
  return output.text;
}

std::string dlopenProbe(const std::string& what, const Strings& variables = {}) {
  const Output output = run({VX_DLOPEN_PROBE, VX_LIBRARY, what}, variables);
  EXPECT_EQ(output.status, 0) << output.text;
  return output.text;
}

constexpr char defaults[] = "filter=7 fullDebugging=0 exceptions=1 multithreading=0\n";

TEST(Start, LoadingStartsTheLibraryInSilence) {
  EXPECT_EQ(probe({"settings", "version"}), std::string(defaults) + "1.8.68.23.87\n");
}

TEST(Start, TheStartUpIsTracedInItsOrder) {
  const std::string text = probe({"trace"});
  EXPECT_EQ(text.rfind("source/vxInitSystemVX:VXinit()\n", 0), 0U) << text;
  EXPECT_LT(text.find("source/vxInitSystemVX:setVXEnvironment()"), text.find("VXLoadLibraryWOError")) << text;
}

TEST(Start, AnotherInitFindsTheLibraryStarted) {
  const std::string text = probe({"count", "init", "init", "count"});
  const std::string count = text.substr(0, text.find('\n') + 1);
  EXPECT_EQ(text, count + "init=1\ninit=1\n" + count);
}

TEST(Start, AnIncompatibleCallerIsToldAndStillGetsAStartedLibrary) {
  EXPECT_EQ(probe({"init-newer", "init-other", "settings"}), std::string("init=0\ninit=0\n") + defaults);
}

TEST(Start, TheClassesOfTheLibraryStandInTheOrderOfTheStartUpAndBelongToIt) {
  const std::string text = probe({"types"});
  EXPECT_EQ(text.rfind("Base(No parent,) ", 0), 0U) << text;
  const Strings inOrder = {"BaseOp(Base,VX) ",
                           "Cache(No parent,VX) ",
                           "DummyOp(BaseOp,VX) ",
                           "Engine(BaseOp,VX) ",
                           "Field(No parent,VX) ",
                           "BoolField(Field,VX) ",
                           "UniversalTypeField(FloatField,VX) ",
                           "FieldContainer(No parent,VX) ",
                           "Host(No parent,VX) ",
                           "ImageProperties(No parent,VX) ",
                           "ImagePropertyExtensionContainer(Base,VX) ",
                           "ImagePropertyExtension(Base,VX) ",
                           "MedicalImageProperties(ImageProperties,VX) ",
                           "MemoryImg(No parent,VX) ",
                           "PagedImg(MedicalImageProperties,VX) ",
                           "SubImg(ImageProperties,VX) ",
                           "TreeNode(No parent,VX) ",
                           "TreeNodeException(No parent,VX) "};
  std::size_t place = 0;
  for (const std::string& entry : inOrder) {
    const std::size_t found = text.find(entry);
    ASSERT_NE(found, std::string::npos) << entry << " in " << text;
    EXPECT_LT(place, found) << text;
    place = found;
  }
}

struct EnvironmentCase {
  Strings variables;
  const char* settings;
  friend std::ostream& operator<<(std::ostream& stream, const EnvironmentCase& c) {
    for (const std::string& variable : c.variables) stream << variable << ' ';
    return stream;
  }
};

class StartEnvironment : public ::testing::TestWithParam<EnvironmentCase> {};

TEST_P(StartEnvironment, SetsTheServices) {
  EXPECT_EQ(probe({"settings"}, GetParam().variables), std::string(GetParam().settings) + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    Variables, StartEnvironment,
    ::testing::Values(
        EnvironmentCase{{"VX_DEBUG_ON=1"}, "filter=15 fullDebugging=0 exceptions=1 multithreading=0"},
        EnvironmentCase{{"VX_DEBUG_ON=0"}, "filter=7 fullDebugging=0 exceptions=1 multithreading=0"},
        EnvironmentCase{{"VX_DEBUG_ON=-3"}, "filter=15 fullDebugging=0 exceptions=1 multithreading=0"},
        EnvironmentCase{{"VX_DEBUG_ON=yes"}, "filter=7 fullDebugging=0 exceptions=1 multithreading=0"},
        EnvironmentCase{{"VX_DEBUG_ON="}, "filter=7 fullDebugging=0 exceptions=1 multithreading=0"},
        EnvironmentCase{{"VX_DEBUG_ALL=1"}, "filter=7 fullDebugging=1 exceptions=1 multithreading=0"},
        EnvironmentCase{{"VX_DEBUG_ALL=0"}, "filter=7 fullDebugging=0 exceptions=1 multithreading=0"},
        EnvironmentCase{{"VX_DEBUG_ALL=on"}, "filter=7 fullDebugging=0 exceptions=1 multithreading=0"},
        EnvironmentCase{{"VX_USE_EXCEPTIONS=0"}, "filter=7 fullDebugging=0 exceptions=0 multithreading=0"},
        EnvironmentCase{{"VX_USE_EXCEPTIONS=2"}, "filter=7 fullDebugging=0 exceptions=1 multithreading=0"},
        EnvironmentCase{{"VX_USE_EXCEPTIONS=no"}, "filter=7 fullDebugging=0 exceptions=0 multithreading=0"},
        EnvironmentCase{{"VX_MESSAGE_FILTER=3"}, "filter=3 fullDebugging=0 exceptions=1 multithreading=0"},
        EnvironmentCase{{"VX_MESSAGE_FILTER= 12 x"}, "filter=12 fullDebugging=0 exceptions=1 multithreading=0"},
        EnvironmentCase{{"VX_MESSAGE_FILTER=-1"}, "filter=4294967295 fullDebugging=0 exceptions=1 multithreading=0"},
        EnvironmentCase{{"VX_MESSAGE_FILTER=abc"}, "filter=0 fullDebugging=0 exceptions=1 multithreading=0"},
        EnvironmentCase{{"VX_DEBUG_ON=1", "VX_MESSAGE_FILTER=0"},
                        "filter=0 fullDebugging=0 exceptions=1 multithreading=0"},
        EnvironmentCase{{"VX_DEBUG_ON=0", "VX_MESSAGE_FILTER=8"},
                        "filter=8 fullDebugging=0 exceptions=1 multithreading=0"},
        EnvironmentCase{{"VX_NUM_THREADS=abc"}, "filter=7 fullDebugging=0 exceptions=1 multithreading=0"},
        EnvironmentCase{{"VX_MEM_OPT_LEVEL=-1"}, "filter=7 fullDebugging=0 exceptions=1 multithreading=0"},
        EnvironmentCase{{"VX_CACHE_SIZE_IN_KB=-5"}, "filter=7 fullDebugging=0 exceptions=1 multithreading=0"},
        EnvironmentCase{{"VX_SUPPRESS_VXTYPEEXTENSION_LOAD=1"},
                        "filter=7 fullDebugging=0 exceptions=1 multithreading=0"},
        EnvironmentCase{{"VX_NUM_THREADS=99999999999999999999", "VX_DEBUG_ON=99999999999999999999",
                         "VX_DEBUG_ALL=-99999999999999999999", "VX_USE_EXCEPTIONS=99999999999999999999",
                         "VX_MESSAGE_FILTER=4294967303", "VX_MEM_OPT_LEVEL=99999999999999999999",
                         "VX_CACHE_SIZE_IN_KB=99999999999999999999", "VX_SUPPRESS_VXTYPEEXTENSION_LOAD="},
                        "filter=7 fullDebugging=0 exceptions=1 multithreading=0"}));

struct HostCase {
  Strings variables;
  const char* host;
  friend std::ostream& operator<<(std::ostream& stream, const HostCase& c) {
    for (const std::string& variable : c.variables) stream << variable << ' ';
    return stream;
  }
};

class StartHost : public ::testing::TestWithParam<HostCase> {};

TEST_P(StartHost, TakesItsSettingsFromTheEnvironment) {
  EXPECT_EQ(probe({"host"}, GetParam().variables), std::string(GetParam().host) + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    Variables, StartHost,
    ::testing::Values(HostCase{{"VX_NUM_THREADS=7"}, "threads=7 level=0 cacheKB=50000"},
                      HostCase{{"VX_NUM_THREADS=abc"}, "threads=0 level=0 cacheKB=50000"},
                      HostCase{{"VX_NUM_THREADS=-1"}, "threads=4294967295 level=0 cacheKB=50000"},
                      HostCase{{"VX_NUM_THREADS=1", "VX_MEM_OPT_LEVEL=3"}, "threads=1 level=3 cacheKB=50000"},
                      HostCase{{"VX_NUM_THREADS=1", "VX_MEM_OPT_LEVEL=25"}, "threads=1 level=10 cacheKB=50000"},
                      HostCase{{"VX_NUM_THREADS=1", "VX_MEM_OPT_LEVEL=-1"}, "threads=1 level=10 cacheKB=50000"},
                      HostCase{{"VX_NUM_THREADS=1", "VX_CACHE_SIZE_IN_KB=123"}, "threads=1 level=0 cacheKB=123"},
                      HostCase{{"VX_NUM_THREADS=1", "VX_CACHE_SIZE_IN_KB="}, "threads=1 level=0 cacheKB=0"},
                      HostCase{{"VX_NUM_THREADS=1", "VX_CACHE_SIZE_IN_KB=-5"},
                               "threads=1 level=0 cacheKB=18446744073709551611"}));

TEST(Environment, TheHostHasOneThreadForEachProcessorUnlessToldOtherwise) {
  EXPECT_EQ(probe({"host"}), "threads=" + probe({"processors"}) + " level=0 cacheKB=50000\n");
}

TEST(Environment, ReadingItAgainClearsTheDebugBitAndThoseAboveTheFirstByte) {
  EXPECT_EQ(probe({"settings", "environment", "settings"}, {"VX_MESSAGE_FILTER=-1"}),
            "filter=4294967295 fullDebugging=0 exceptions=1 multithreading=0\n"
            "filter=4294967295 fullDebugging=0 exceptions=1 multithreading=0\n")
      << "the whole filter comes last";
  EXPECT_EQ(probe({"reset", "environment", "settings"}, {"VX_DEBUG_ON=1", "VX_DEBUG_ALL=1"}),
            "filter=15 fullDebugging=1 exceptions=1 multithreading=0\n");
}

TEST(Environment, TheExtensionLibraryIsLoadedIfItIsThereAndMissedInSilence) {
  const std::string folder = std::string("VX_MODULE_PATH=") + VX_TEST_EXTENSIONS;
  EXPECT_EQ(probe({"settings"}), defaults);
  EXPECT_EQ(probe({"settings"}, {folder}), std::string("extensions loaded as VXTypeExtensions\n") + defaults);
}

TEST(Environment, TheExtensionLibraryIsSuppressedWhateverTheValue) {
  const std::string folder = std::string("VX_MODULE_PATH=") + VX_TEST_EXTENSIONS;
  for (const char* value : {"1", "0", ""}) {
    EXPECT_EQ(probe({"settings"}, {folder, std::string("VX_SUPPRESS_VXTYPEEXTENSION_LOAD=") + value}), defaults);
  }
}

TEST(Stop, DestroyRemovesCallbacksAndTypesAndGivesOne) {
  const std::string text = probe({"destroy", "count", "settings"});
  EXPECT_EQ(text, std::string("destroy=1\ntypes=0\n") + defaults);
}

// The message of a stop that finds another number of modules than one, the placeholder.
constexpr char undeletedModules[] =
    "VX warning 14 (An interface was used in a way that its contract forbids.): Function=VXdestroy(), Reason=There are "
    "still undeleted VX modules while calling destroyVX(). They must be deleted before, because they cannot be "
    "destructed after VX destruction or memory leaks would remain., File=source/vxInitSystemVX.cpp\n";

// A compiler cache may pass sources by their path from the build folder.
std::string withoutLines(const std::string& text) {
  return std::regex_replace(std::regex_replace(text, std::regex(", Line=[0-9]+"), ""), std::regex("File=(\\.\\./)+"),
                            "File=");
}

TEST(Stop, AModuleThatIsStillAliveIsReportedAndMayGoLater) {
  EXPECT_EQ(withoutLines(probe({"module", "destroy", "count", "delete-module", "settings"})),
            undeletedModules + std::string("destroy=1\ntypes=0\nBaseOp\n") + defaults);
  EXPECT_EQ(withoutLines(probe({"module", "destroy"})), undeletedModules + std::string("destroy=1\n"));
  EXPECT_EQ(probe({"module"}), "") << "without a stop";
}

TEST(Stop, AStateThatIsStillPushedIsReportedAndMayBePoppedLater) {
  EXPECT_EQ(
      withoutLines(probe({"push", "destroy", "pop", "pop", "settings"})),
      "push=0\n"
      "VX error 46 (The state stack is not empty at shutdown.): Function=VXdestroy(), Reason=Error while destroying "
      "VX state stack., File=source/vxInitSystemVX.cpp\n"
      "destroy=1\npop=0\npop=44\n" +
          std::string(defaults));
}

TEST(Stop, NothingCrashesAfterTheEnd) {
  const std::string text = probe({"notify-cb", "message-cb", "destroy", "after-destroy", "destroy", "library"});
  EXPECT_EQ(withoutLines(text),
            "notified\n"
            "VX error 19 (An argument is invalid.): Function=probe, Reason=a message, File=tests/process/probe.cpp\n"
            "heard a message\n"
            "destroy=1\n" +
                std::string(undeletedModules) +
                "types=0 init=1 again=1 environment=filter=7 fullDebugging=0 exceptions=1 multithreading=0\n"
                "ImagePropertyExtensionContainer below Base, abstract=1\n"
                "ImagePropertyExtensionContainer counter=0\n"
                "VX error 19 (An argument is invalid.): Function=probe, Reason=still heard, "
                "File=tests/process/probe.cpp\n" +
                undeletedModules +
                "destroy=1\n"
                "load=23\n");
}

TEST(Dlopen, TheLibraryComesAndGoes) {
  EXPECT_EQ(dlopenProbe("plain"), "init=1 load=23 unloaded\n");
  EXPECT_EQ(dlopenProbe("destroy"), "init=1 load=23 destroy=1 unloaded\n");
  EXPECT_EQ(dlopenProbe("often"), "init=1 load=23 destroy=1 unloaded\n");
}

TEST(Dlopen, AnUnloadWaitsForTheLastInstructionsOfAThread) { EXPECT_EQ(dlopenProbe("thread"), "unloaded\n"); }

TEST(Dlopen, TheUnloadIsTracedUnderItsOwnText) {
  const std::string text = dlopenProbe("trace");
  EXPECT_EQ(text, "depth=0 source/vxInitSystemVX:_destroyMethod##initDll()\n");
}

TEST(Dlopen, TheLibraryRefusesToUnloadItself) {
  EXPECT_EQ(dlopenProbe("itself"), "init=1 load=23 unload=66 The library can't unload itself. unloaded\n");
}

TEST(Dlopen, TheTypesAreGoodForTheStaticObjectsOfAHostThatWereMadeFirst) {
  EXPECT_EQ(dlopenProbe("late-call"), "init=1 load=23 late=19\n");
}

TEST(Dlopen, TheStartUpForcesTheFlagThatIsAlwaysFalse) {
  EXPECT_EQ(dlopenProbe("always-false"), "init=1 load=23 always false=0 unloaded\n");
}

TEST(Dlopen, TextsOfAMebibyteInEveryVariableDoNoHarm) {
  EXPECT_EQ(dlopenProbe("long-text"), "init=1 load=23 unloaded\n");
  EXPECT_EQ(dlopenProbe("long-digits"), "init=1 load=23 unloaded\n");
}

TEST(Libraries, ALibraryGoesThroughItsWholeLife) {
  EXPECT_EQ(probe({"library", "library"}, {std::string("VX_MODULE_PATH=/nowhere:") + VX_TEST_MODULES}),
            "load=0\n"
            "type of 'VXTestModules' in use=0\n"
            "unload with an instance=69\n"
            "still there=1 text=none\n"
            "unload=0 text=No error. unloading=0 gone=1\n"
            "unload of what is unknown now=19\n"
            "load=0\n"
            "type of 'VXTestModules' in use=0\n"
            "unload with an instance=69\n"
            "still there=1 text=none\n"
            "unload=0 text=No error. unloading=0 gone=1\n"
            "unload of what is unknown now=19\n");
}

TEST(Libraries, ModulesComeFromAModuleLibraryAndGoWithIt) {
  const std::string life =
      "load=0\n"
      "TouchCounter of VXImageModules below Engine counts 2\n"
      "in use=1\n"
      "unload with an instance=69\n"
      "unload=0 known=0\n";
  EXPECT_EQ(probe({"module-library", "module-library"}), life + life);
}

TEST(Libraries, AnUnloadCanBeForced) {
  EXPECT_EQ(probe({"forced-unload"}, {std::string("VX_MODULE_PATH=") + VX_TEST_MODULES}),
            "forced=0 name of the removed type=LoadedClass\n");
}

TEST(Libraries, ComingAndGoingLeavesNothingBehind) {
  EXPECT_EQ(probe({"load-often"}, {std::string("VX_MODULE_PATH=") + VX_TEST_MODULES}), "types more=0\n");
}

TEST(Libraries, TheTypesOfALibraryThatForgetsThemGoWithItsLastHandle) {
  EXPECT_EQ(
      probe({"forgetful"}, {std::string("VX_MODULE_PATH=") + VX_TEST_EXTENSIONS, "VX_SUPPRESS_VXTYPEEXTENSION_LOAD=1"}),
      "extensions loaded as VXTypeExtensions\nfirst=0 known=1\nsecond=0 known=0\n");
}

TEST(Libraries, ADecoyInTheCurrentFolderIsNeverLoaded) {
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(VX_TEST_MODULES);
  for (const Strings& variables :
       {Strings{}, Strings{"LD_LIBRARY_PATH="}, Strings{"LD_LIBRARY_PATH=:"}, Strings{"LD_LIBRARY_PATH=."},
        Strings{"VX_MODULE_PATH=:.:"}, Strings{"LD_LIBRARY_PATH=/lib:", "VX_MODULE_PATH=."}}) {
    EXPECT_EQ(probe({"decoy"}, variables), "decoy=23\n");
  }
  std::filesystem::current_path(before);
}

TEST(Libraries, BadCallsAreRefused) {
  const std::string text = probe({"refusals"}, {"VX_MESSAGE_FILTER=0"});
  EXPECT_EQ(text, "19 1 19 19 23 1 0 0 19 19 66 'There is no library behind a null handle.' 19 0 0 1 0\n");
}

TEST(Libraries, RefusalsAreReported) {
  const std::string text = probe({"refusals"});
  const auto line = [&text](const std::string& level, int code, const std::string& label, const std::string& reason) {
    EXPECT_NE(text.find("VX " + level + " " + std::to_string(code) + " ("), std::string::npos);
    EXPECT_NE(text.find("): Function=" + label + ", Reason=" + reason + ", File="), std::string::npos)
        << label << " in\n"
        << text;
  };
  line("error", 19, "vxAPI: VXLoadLibraryWOError", "Invalid name passed. Returning VX_BAD_PARAMETER.");
  line("error", 19, "vxAPI: VXLoadLibrary", "Invalid name passed. Returning 0(=false).");
  line("error", 23, "VXLoadLibrary",
       "Could not load or create library NoSuchLibrary. Some modules may not be creatable.");
  line("error", 19, "vxAPI: VXUnLoadLibrary", "Invalid name passed. Returning VX_BAD_PARAMETER.");
  line("error", 19, "vxAPI: VXSetUnloadLibraryState", "Invalid parameter value passed, leaving state unchanged.");
  std::size_t numLines = 0;
  for (const char c : text) numLines += c == '\n';
  EXPECT_EQ(numLines, 8U) << "seven messages and the results:\n" << text;
}

}  // namespace
