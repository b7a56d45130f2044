// What vxtile does for those who sit before it: the line of progress, Ctrl-C, and completion in the shell.

#include "VxtileFixture.h"

#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <regex>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vx::test {
namespace {

using std::chrono::steady_clock;

constexpr const char* clearLine = "\r\033[K";
const std::string longNetwork = patternNetwork(R"("pattern": "rings", "extent": [1000, 1000, 4000, 1, 1, 1])");

// A terminal with vxtile before it: standard error is shown there, standard output goes to the file "out".
class Terminal {
 public:
  Terminal(const std::string& folder, const std::vector<std::string>& arguments) {
    _process = ::forkpty(&_screen, nullptr, nullptr, nullptr);
    if (_process != 0) return;
    std::vector<std::string> words{VXTILE};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    if (::chdir(folder.c_str()) != 0) ::_exit(98);
    const int out = ::open("out", O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (out < 0 || ::dup2(out, STDOUT_FILENO) < 0) ::_exit(99);
    ::execv(VXTILE, pointers.data());
    ::_exit(97);
  }
  ~Terminal() {
    if (!_isFinished) {
      ::kill(_process, SIGKILL);
      ::waitpid(_process, nullptr, 0);
    }
    ::close(_screen);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  void type(char key) const { EXPECT_EQ(::write(_screen, &key, 1), 1); }

  // Reads what is shown until it holds a text or nothing comes any more. \return all that was shown.
  const std::string& readUntil(const std::string& text) {
    const auto end = steady_clock::now() + std::chrono::seconds(60);
    while (_shown.find(text) == std::string::npos && steady_clock::now() < end && readSome()) continue;
    return _shown;
  }
  const std::string& readAll() {
    const auto end = steady_clock::now() + std::chrono::seconds(60);
    while (steady_clock::now() < end && readSome()) continue;
    return _shown;
  }
  // \return the exit code.
  int finish() {
    int status = 0;
    ::waitpid(_process, &status, 0);
    _isFinished = true;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
  }

 private:
  // \return whether more may come.
  bool readSome() {
    pollfd watched{_screen, POLLIN, 0};
    if (::poll(&watched, 1, 1000) == 0) return true;
    char buffer[4096];
    const ssize_t number = ::read(_screen, buffer, sizeof buffer);  // fails when the other side is closed
    if (number > 0) _shown.append(buffer, static_cast<std::size_t>(number));
    return number > 0;
  }

  int _screen = -1;
  pid_t _process = -1;
  bool _isFinished = false;
  std::string _shown;
};

class VxtileTerminalTest : public VxtileTest {};

TEST_F(VxtileTerminalTest, ALineTellsTheProgressAndIsGoneAtTheEnd) {
  write("network.json", patternNetwork(R"("pattern": "rings", "extent": [600, 600, 60, 1, 1, 1])"));
  Terminal terminal(folder.string(), {"run", "network.json", "-o", "pattern.output0", "f.raw"});
  const std::string shown = terminal.readAll();
  EXPECT_EQ(terminal.finish(), 0) << shown;
  // Each line takes the place of the one before.
  EXPECT_TRUE(std::regex_match(shown, std::regex("(pattern\\.output0  [0-9]+ %[^\r\n]*\r\033\\[K)+"))) << shown;
  EXPECT_EQ(shown.rfind(clearLine), shown.size() - 4) << shown;
  EXPECT_EQ(read("out"), "f.raw: pattern.output0, x 0:599, y 0:599, z 0:59, unsigned int8\n");
}

TEST_F(VxtileTerminalTest, TheProgressGrowsUpToTheEndAndFitsALine) {
  write("network.json", patternNetwork(R"("pattern": "rings", "extent": [600, 600, 60, 1, 1, 1])"));
  Terminal terminal(folder.string(), {"run", "network.json", "-o", "pattern.output0"});
  const std::string shown = terminal.readAll();
  EXPECT_EQ(terminal.finish(), 0) << shown;
  const std::regex line("pattern\\.output0  ([0-9]+) %[^\r]*");
  int last = 0;
  for (std::sregex_iterator i(shown.begin(), shown.end(), line), end; i != end; ++i) {
    const int percent = std::stoi((*i)[1]);
    EXPECT_GE(percent, last);
    EXPECT_LE(percent, 100);
    EXPECT_LE((*i)[0].length(), 78);
    last = percent;
  }
}

TEST_F(VxtileTerminalTest, AnErrorTakesThePlaceOfTheProgress) {
  write("network.json", patternNetwork(R"("extent": [0, 1, 1, 1, 1, 1])"));
  Terminal terminal(folder.string(), {"run", "network.json", "-o", "pattern.output0"});
  const std::string shown = terminal.readAll();
  EXPECT_EQ(terminal.finish(), 1) << shown;
  const std::size_t error = shown.find("vxtile: pattern.output0: there is no valid image");
  ASSERT_NE(error, std::string::npos) << shown;
  EXPECT_TRUE(error == 0 || shown[error - 1] == '\n' || shown[error - 1] == 'K') << shown;
}

TEST_F(VxtileTerminalTest, ThereIsNoProgressWhereNobodyLooks) {
  const Outcome outcome = runNetwork(patternNetwork(R"("pattern": "rings", "extent": [600, 600, 60, 1, 1, 1])"),
                                     {"-q", "-o", "pattern.output0"});
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.err, "");
}

TEST_F(VxtileTerminalTest, CtrlCStopsItAndSaysSo) {
  write("network.json", longNetwork);
  Terminal terminal(folder.string(), {"run", "network.json", "-o", "pattern.output0", "f.raw"});
  EXPECT_NE(terminal.readUntil("pattern.output0").find("pattern.output0"), std::string::npos);
  const auto begin = steady_clock::now();
  terminal.type('\x03');
  const std::string shown = terminal.readAll();
  EXPECT_LT(steady_clock::now() - begin, std::chrono::seconds(20));
  EXPECT_EQ(terminal.finish(), 130) << shown;
  const std::string told = "vxtile: stopped: the calculation of pattern.output0 was interrupted\r\n";
  ASSERT_GE(shown.size(), told.size() + 4);
  EXPECT_EQ(shown.substr(shown.size() - told.size()), told);
  EXPECT_EQ(shown.substr(shown.size() - told.size() - 4, 4), clearLine) << "the progress is gone";
  EXPECT_EQ(read("out"), "");
  EXPECT_EQ(files(), (std::vector<std::string>{"network.json", "out"})) << "no unfinished file is left";
}

class VxtileCompletionTest : public VxtileTest {
 protected:
  // What bash offers for the last word. \param words bash words behind the name of the program.
  std::vector<std::string> complete(const std::string& words) const {
    const std::string script = "cd '" + folder.string() +
                               "' && source '" VX_SOURCE_DIR "/apps/vxtile/vxtile.bash' && " +
                               "COMP_WORDS=('" VXTILE "' " + words +
                               ") && COMP_CWORD=$((${#COMP_WORDS[@]} - 1)) && "
                               "{ _vxtile; printf '%s\\n' \"${COMPREPLY[@]}\"; }";
    write("script", script);
    std::vector<std::string> offered;
    const std::string command = "bash '" + path("script") + "' 2>&1";
    std::FILE* const pipe = ::popen(command.c_str(), "r");
    if (!pipe) return offered;
    char line[1024];
    while (std::fgets(line, sizeof line, pipe)) {
      offered.emplace_back(line);
      offered.back().pop_back();
    }
    EXPECT_EQ(::pclose(pipe), 0) << command;
    if (offered == std::vector<std::string>{""}) offered.clear();
    return offered;
  }
};

using Words = std::vector<std::string>;

TEST_F(VxtileCompletionTest, BeginsWithTheCommands) {
  EXPECT_EQ(complete("''"), (Words{"types", "describe", "run", "graph", "why", "--help", "--version"}));
  EXPECT_EQ(complete("d"), Words{"describe"});
  EXPECT_EQ(complete("--v"), Words{"--version"});
}

TEST_F(VxtileCompletionTest, KnowsTheOptionsOfEachCommand) {
  EXPECT_EQ(complete("run --t"), (Words{"--type", "--touch", "--threads"}));
  EXPECT_EQ(complete("run n.json --s"), (Words{"--set", "--show", "--stats"}));
  EXPECT_EQ(complete("types --"), (Words{"--help", "--library", "--names"}));
  EXPECT_EQ(complete("describe --l"), Words{"--library"});
  EXPECT_EQ(complete("why --"), Words{"--help"});
}

TEST_F(VxtileCompletionTest, KnowsTheValuesOfOptions) {
  EXPECT_EQ(complete("run n.json --type u"), (Words{"uint8", "uint16", "uint32"}));
  EXPECT_EQ(complete("run n.json -t d"), Words{"double"});
  EXPECT_EQ(complete("run n.json --flip ''"), (Words{"horizontal", "vertical", "both"}));
  EXPECT_EQ(complete("run n.json --set a"), Words{}) << "what nobody can know";
}

TEST_F(VxtileCompletionTest, AsksForTheClassesOfModules) {
  EXPECT_EQ(complete("describe Th"), Words{"Threshold"});
  EXPECT_EQ(complete("describe Re"), (Words{"Reformat", "Resample"}));
}

TEST_F(VxtileCompletionTest, OffersFilesAndFolders) {
  write("network.json", "{}");
  write("notes.txt", "");
  std::filesystem::create_directory(folder / "results");
  EXPECT_EQ(complete("run n"), (Words{"network.json", "notes.txt"}));
  EXPECT_EQ(complete("graph net"), Words{"network.json"});
  EXPECT_EQ(complete("run network.json --directory r"), Words{"results"});
}

}  // namespace
}  // namespace vx::test
