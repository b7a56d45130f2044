#include "VxtileFixture.h"

#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <png.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zlib.h>

namespace vx::test {

namespace {

constexpr const char* ownFiles[] = {".in", ".out", ".err"};

void redirect(const std::string& path, int flags, int descriptor) {
  const int file = ::open(path.c_str(), flags, 0600);
  if (file < 0 || ::dup2(file, descriptor) < 0) ::_exit(99);
}

}  // namespace

VxtileTest::VxtileTest() {
  std::string name = (std::filesystem::temp_directory_path() / "vxtile-XXXXXX").string();
  if (!::mkdtemp(name.data())) std::abort();
  folder = name;
}

VxtileTest::~VxtileTest() {
  std::error_code error;
  std::filesystem::remove_all(folder, error);
}

int VxtileTest::start(const std::vector<std::string>& arguments, const std::string& input) const {
  write(".in", input);
  std::vector<std::string> words{VXTILE};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  const pid_t process = ::fork();
  if (process != 0) return process;
  if (::chdir(folder.c_str()) != 0) ::_exit(98);
  redirect(path(".in"), O_RDONLY, STDIN_FILENO);
  redirect(path(".out"), O_WRONLY | O_CREAT | O_TRUNC, STDOUT_FILENO);
  redirect(path(".err"), O_WRONLY | O_CREAT | O_TRUNC, STDERR_FILENO);
  for (const char* const variable : {"VX_MODULE_PATH", "VX_NUM_THREADS", "VX_CACHE_SIZE_IN_KB", "VX_MESSAGE_FILTER"}) {
    ::unsetenv(variable);
  }
  ::execv(VXTILE, pointers.data());
  ::_exit(97);
}

Outcome VxtileTest::finish(int process) const {
  int status = 0;
  ::waitpid(process, &status, 0);
  Outcome outcome;
  outcome.code = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
  outcome.out = read(".out");
  outcome.err = read(".err");
  return outcome;
}

Outcome VxtileTest::run(const std::vector<std::string>& arguments, const std::string& input) const {
  return finish(start(arguments, input));
}

Outcome VxtileTest::runNetwork(const std::string& network, std::vector<std::string> arguments) const {
  arguments.insert(arguments.begin(), {"run", "-"});
  return run(arguments, network);
}

void VxtileTest::write(const std::string& file, const std::string& text) const {
  std::ofstream(folder / file, std::ios::binary) << text;
}

std::string VxtileTest::read(const std::string& file) const {
  std::ifstream stream(folder / file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::string VxtileTest::readGz(const std::string& file) const {
  gzFile stream = gzopen(path(file).c_str(), "rb");
  std::string text;
  char buffer[65536];
  for (int number; stream && (number = gzread(stream, buffer, sizeof buffer)) > 0;) {
    text.append(buffer, static_cast<std::size_t>(number));
  }
  if (stream) gzclose(stream);
  return text;
}

Picture VxtileTest::readPicture(const std::string& file) const {
  Picture picture;
  std::FILE* const stream = std::fopen(path(file).c_str(), "rb");
  if (!stream) return picture;
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  if (setjmp(png_jmpbuf(png)) == 0) {
    png_init_io(png, stream);
    png_read_png(png, info, PNG_TRANSFORM_SWAP_ENDIAN, nullptr);
    picture.width = png_get_image_width(png, info);
    picture.height = png_get_image_height(png, info);
    picture.bits = png_get_bit_depth(png, info);
    picture.channels = png_get_channels(png, info);
    const std::size_t rowBytes = png_get_rowbytes(png, info);
    for (unsigned y = 0; y < picture.height; ++y) {
      picture.pixels.append(reinterpret_cast<const char*>(png_get_rows(png, info)[y]), rowBytes);
    }
  }
  png_destroy_read_struct(&png, &info, nullptr);
  std::fclose(stream);
  return picture;
}

std::vector<std::string> VxtileTest::files() const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    const std::string name = entry.path().filename().string();
    if (std::find(std::begin(ownFiles), std::end(ownFiles), name) == std::end(ownFiles)) names.push_back(name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string patternNetwork(const std::string& fields, const std::string& rest) {
  return R"({"modules": {"pattern": {"type": "TestPattern", "fields": {)" + fields + "}}}" +
         (rest.empty() ? "" : ", " + rest) + "}";
}

}  // namespace vx::test
