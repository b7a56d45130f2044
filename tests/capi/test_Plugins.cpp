// Loading of module libraries that are in order and of files that aren't.

#include "CAPIFixture.h"

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <link.h>
#include <malloc.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace vx::test {
namespace {

namespace fs = std::filesystem;

class PluginsTest : public CAPITest {
 protected:
  PluginsTest() {
    std::string pattern = (fs::temp_directory_path() / "vx_plugins_XXXXXX").string();
    _folder = mkdtemp(pattern.data());
    _types = typeNames();
  }
  ~PluginsTest() override { fs::remove_all(_folder); }

  static std::string pathOf(const char* name) { return std::string(VX_PLUGINS) + "/" + name; }
  static std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }
  std::string write(const std::string& name, const std::string& contents) {
    const std::string path = _folder / name;
    std::ofstream(path, std::ios::binary) << contents;
    return path;
  }
  static std::vector<std::string> typeNames() {
    std::vector<std::string> names;
    for (auto* type = VXRuntimeGetFirstModuleType(); type; type = VXRuntimeGetNextModuleType()) {
      names.emplace_back(VXTypeGetName(type));
    }
    return names;
  }
  static bool isMapped(const std::string& part) {
    return contentsOf("/proc/self/maps").find(part) != std::string::npos;
  }

  // Expects that a library is refused in each way of loading it, with a reason, and that nothing stays.
  void expectRefused(const std::string& path, const std::string& reason) {
    SCOPED_TRACE(path);
    int handle = 0;
    void* library = &handle;
    EXPECT_EQ(VXLoadLibraryWOErrorExt(path.c_str(), &library), 23);
    EXPECT_EQ(library, nullptr);
    EXPECT_NE(std::string(VXGetLoadLibraryErrorText()).find(reason), std::string::npos) << VXGetLoadLibraryErrorText();
    for (const Message& message : messages.take()) {
      EXPECT_EQ(message.function, "VXCheckCPPAPILinkCompatibility()") << message;
    }
    EXPECT_EQ(VXLoadLibrary(path.c_str()), 0);
    const Messages taken = messages.take();
    ASSERT_FALSE(taken.empty());
    EXPECT_EQ(taken.back(),
              (Message{VX_ERROR, 23, "VXLoadLibrary",
                       "Could not load or create library " + path + ". Some modules may not be creatable."}));
    EXPECT_EQ(taken.back().errorText, std::string(VXGetErrorCodeDescription(23)) + " " + VXGetLoadLibraryErrorText());
    EXPECT_EQ(typeNames(), _types);
    EXPECT_FALSE(isMapped(path));
  }

  fs::path _folder;

 private:
  std::vector<std::string> _types;
};

TEST_F(PluginsTest, AMissingFileIsRefused) {
  expectRefused((_folder / "libMissing.so").string(), "There is no such file.");
}

TEST_F(PluginsTest, AnEmptyFileIsRefused) { expectRefused(write("empty.so", ""), "The file is empty."); }

TEST_F(PluginsTest, ATextIsRefused) {
  expectRefused(write("short.so", "a"), "The file is no library.");
  expectRefused(write("text.so", "this is a text and no library\n"), "The file is no library.");
  expectRefused(write("long.so", std::string(10000, 'x')), "The file is no library.");
}

TEST_F(PluginsTest, AFolderIsRefused) {
  fs::create_directory(_folder / "folder.so");
  expectRefused((_folder / "folder.so").string(), "This is no file.");
}

TEST_F(PluginsTest, AFileThatIsNotReadableIsRefused) {
  const std::string path = write("secret.so", contentsOf(pathOf("libGoodPlugin.so")));
  fs::permissions(path, fs::perms::none);
  if (std::ifstream(path)) return;  // whoever runs the test may read everything
  expectRefused(path, "The file can't be read");
}

TEST_F(PluginsTest, ASocketIsRefused) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  const std::string path = _folder / "socket.so";
  ASSERT_LT(path.size(), sizeof address.sun_path);
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_GE(descriptor, 0);
  ASSERT_EQ(bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  expectRefused(path, std::string("The file can't be read: ") + std::strerror(ENXIO) + ".");
  close(descriptor);
}

TEST_F(PluginsTest, AnotherArchitectureIsRefused) {
  const std::string good = contentsOf(pathOf("libGoodPlugin.so"));
  constexpr std::size_t classByte = 4;
  constexpr std::size_t orderByte = 5;
  constexpr std::size_t machineByte = 18;
  for (const std::size_t byte : {classByte, orderByte, machineByte}) {
    std::string other = good;
    other[byte] = static_cast<char>(other[byte] ^ 3);
    expectRefused(write("other" + std::to_string(byte) + ".so", other), "The library is for another architecture.");
  }
}

TEST_F(PluginsTest, AProgramIsRefused) {
  std::string program = contentsOf(pathOf("libGoodPlugin.so"));
  constexpr std::size_t typeByte = 16;
  program[typeByte] = 1;  // an object file
  expectRefused(write("object.so", program), "The file is no library.");
}

TEST_F(PluginsTest, SegmentsOfAnotherSizeAndNoSegmentsAreRefused) {
  const std::string good = contentsOf(pathOf("libGoodPlugin.so"));
  std::string other = good;
  ++other[offsetof(ElfW(Ehdr), e_phentsize)];
  expectRefused(write("size.so", other), "The file is no library.");
  other = good;
  other.replace(offsetof(ElfW(Ehdr), e_phnum), 2, 2, '\0');
  expectRefused(write("none.so", other), "The file is no library.");
}

TEST_F(PluginsTest, ASegmentThatEndsBehindTheFileIsRefusedUnlessItIsUnused) {
  const std::string good = contentsOf(pathOf("libGoodPlugin.so"));
  ElfW(Ehdr) header;
  std::memcpy(&header, good.data(), sizeof header);
  for (std::size_t i = 0; i < header.e_phnum; ++i) {
    const std::size_t at = header.e_phoff + i * sizeof(ElfW(Phdr));
    ElfW(Phdr) segment;
    std::memcpy(&segment, good.data() + at, sizeof segment);
    segment.p_filesz = good.size() - segment.p_offset + 1;
    std::string other = good;
    other.replace(at, sizeof segment, reinterpret_cast<const char*>(&segment), sizeof segment);
    expectRefused(write("behind" + std::to_string(i) + ".so", other), "The file is truncated.");
    if (segment.p_type != PT_NOTE) continue;
    segment.p_type = PT_NULL;  // nobody misses a note
    other.replace(at, sizeof segment, reinterpret_cast<const char*>(&segment), sizeof segment);
    const std::string path = write("unused" + std::to_string(i) + ".so", other);
    void* handle = nullptr;
    EXPECT_EQ(VXLoadLibraryWOErrorExt(path.c_str(), &handle), 0) << VXGetLoadLibraryErrorText();
    EXPECT_EQ(VXUnLoadLibrary(path.c_str(), handle, nullptr, 0), 0);
  }
}

TEST_F(PluginsTest, HeadersThatPointBehindTheEndAreRefused) {
  const std::string good = contentsOf(pathOf("libGoodPlugin.so"));
  constexpr std::size_t offsetOfSegments = 32;
  constexpr std::size_t offsetOfSections = 40;
  for (const std::size_t at : {offsetOfSegments, offsetOfSections}) {
    for (const char byte : {'\x01', '\xff'}) {
      std::string other = good;
      other.replace(at + 4, 4, 4, byte);
      expectRefused(write("points" + std::to_string(at) + ".so", other), "The file is truncated.");
    }
  }
}

TEST_F(PluginsTest, ALibraryThatIsCutAnywhereIsRefused) {
  const std::string good = contentsOf(pathOf("libGoodPlugin.so"));
  ASSERT_GT(good.size(), 1000U);
  std::vector<std::size_t> sizes;
  for (std::size_t size = 1; size < 200; ++size) sizes.push_back(size);
  for (std::size_t i = 1; i < 300; ++i) sizes.push_back(good.size() * i / 300);
  for (std::size_t i = 1; i < 200; ++i) sizes.push_back(good.size() - i);
  const std::string path = write("cut.so", good);
  for (const std::size_t size : sizes) {
    write("cut.so", good.substr(0, size));
    ASSERT_EQ(VXLoadLibraryWOError(path.c_str()), 23) << size;
    const std::string reason = VXGetLoadLibraryErrorText();
    ASSERT_TRUE(reason.find("The file is truncated.") != std::string::npos ||
                (size < 4 && reason.find("The file is no library.") != std::string::npos))
        << size << ' ' << reason;
  }
  expectSilence();
  fs::resize_file(path, 5000);
  expectRefused(path, "The file is truncated.");
  write("cut.so", good);
  void* handle = nullptr;
  ASSERT_EQ(VXLoadLibraryWOErrorExt(path.c_str(), &handle), 0) << "the whole file is in order";
  EXPECT_EQ(VXUnLoadLibrary(path.c_str(), handle, nullptr, 0), 0);
}

TEST_F(PluginsTest, ALibraryThatLacksASymbolIsRefused) {
  expectRefused(pathOf("libLacksSymbol.so"), "undefined symbol");
}

TEST_F(PluginsTest, ALibraryWhoseRegistrationThrowsIsRefused) {
  expectRefused(pathOf("libThrowsInRegistration.so"), "The start of the library threw an exception: registration");
  expectRefused(pathOf("libThrowsANumber.so"), "The start of the library threw an exception.");
}

TEST_F(PluginsTest, ALibraryWhoseStaticObjectThrowsIsRefused) {
  expectRefused(pathOf("libThrowsInStart.so"), "The start of the library threw an exception: static object");
  expectRefused(pathOf("libThrowsANumberInStart.so"), "The start of the library threw an exception.");
}

TEST_F(PluginsTest, ALibraryForAnotherVersionIsRefused) {
  expectRefused(pathOf("libIncompatible.so"),
                "The library was compiled for version 1.7.0.0, which does not fit this one, 1.8.68.23.87.");
}

TEST_F(PluginsTest, ALibraryForAnotherVersionThatTheHostOpensIsReported) {
  void* const handle = dlopen(pathOf("libIncompatible.so").c_str(), RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(handle, nullptr);
  const Messages taken = messages.take();
  ASSERT_EQ(taken.size(), 2U);
  EXPECT_EQ(taken[0].function, "VXCheckCPPAPILinkCompatibility()");
  EXPECT_EQ(taken[1], (Message{VX_ERROR, 23, "attachModuleLibrary()",
                               "The library was compiled for version 1.7.0.0, which does not fit this one, "
                               "1.8.68.23.87."}));
  EXPECT_EQ(VXTypeFromName("PluginBroken"), nullptr);
  dlclose(handle);
}

TEST_F(PluginsTest, AnIncompleteFileInTheLoadersPathIsNotGivenToIt) {
  const std::string good = contentsOf(pathOf("libGoodPlugin.so"));
  write("libInLoaderPath.so", good.substr(0, good.size() / 2));
  setenv("LD_LIBRARY_PATH", _folder.c_str(), 1);
  EXPECT_EQ(VXLoadLibraryWOError("InLoaderPath"), 23);
  EXPECT_NE(std::string(VXGetLoadLibraryErrorText()).find("The file is truncated."), std::string::npos)
      << VXGetLoadLibraryErrorText();
  unsetenv("LD_LIBRARY_PATH");
}

TEST_F(PluginsTest, ASuccessHasNoReason) {
  VXLoadLibraryWOError("/nowhere/at/all");
  EXPECT_STRNE(VXGetLoadLibraryErrorText(), "");
  void* handle = nullptr;
  const std::string path = pathOf("libGoodPlugin.so");
  ASSERT_EQ(VXLoadLibraryWOErrorExt(path.c_str(), &handle), 0);
  EXPECT_STREQ(VXGetLoadLibraryErrorText(), "");
  EXPECT_STREQ(VXTypeGetDllName(VXTypeFromName("PluginDouble")), path.c_str());
  EXPECT_EQ(VXUnLoadLibrary(path.c_str(), handle, nullptr, 0), 0);
  expectSilence();
}

TEST_F(PluginsTest, ALibraryThatLoadsIsToldWithoutAHandle) {
  const std::string path = pathOf("libGoodPlugin.so");
  std::string places;
  const VXLibrarySearchCB note = [](void* userData, const char* place, const char* reason) {
    *static_cast<std::string*>(userData) += std::string(place) + ": " + (reason ? reason : "loaded") + '\n';
  };
  const auto unload = [&path] {
    void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD);
    ASSERT_NE(handle, nullptr);
    dlclose(handle);  // counted twice for a moment
    EXPECT_NE(VXTypeFromName("PluginDouble"), nullptr);
    EXPECT_EQ(VXUnLoadLibrary(path.c_str(), handle, nullptr, 0), 0);
    EXPECT_FALSE(isMapped(path));
  };
  EXPECT_EQ(VXLoadLibrary(path.c_str()), 1);
  unload();
  EXPECT_EQ(VXLoadLibraryWOError(path.c_str()), 0);
  unload();
  EXPECT_EQ(VXLoadLibraryExplained(path.c_str(), &places, note), 0);
  unload();
  EXPECT_EQ(places, pathOf("liblibGoodPlugin.so.so") + ": There is no such file.\n" + path + ": loaded\n");
  expectSilence();
}

TEST_F(PluginsTest, ALoadThatFailsKeepsTheTypesOfALibraryOfThatNameThatIsKnown) {
  const std::vector<std::string> types = typeNames();
  ASSERT_STREQ(VXTypeGetDllName(VXTypeFromName("RampModule")), "CAPITest");
  EXPECT_EQ(VXLoadLibraryWOError("CAPITest"), 23);
  EXPECT_EQ(typeNames(), types);
  expectSilence();
}

TEST_F(PluginsTest, ALibraryInUseIsKept) {
  const std::string path = pathOf("libGoodPlugin.so");
  void* handle = nullptr;
  ASSERT_EQ(VXLoadLibraryWOErrorExt(path.c_str(), &handle), 0);
  ModulePtr module = makeModule("PluginDouble");
  ASSERT_NE(module, nullptr);
  int text = 0;
  auto* errorText = reinterpret_cast<char*>(&text);
  EXPECT_EQ(VXUnLoadLibrary(path.c_str(), handle, &errorText, 0), 69);
  EXPECT_EQ(errorText, reinterpret_cast<char*>(&text)) << "nothing changed";
  EXPECT_TRUE(isMapped(path));
  expectSilence();
  module.reset();
  EXPECT_EQ(VXUnLoadLibrary(path.c_str(), handle, &errorText, 0), 0);
  EXPECT_STREQ(errorText, "No error.");
  VXFree(errorText);
  EXPECT_FALSE(isMapped(path));
  EXPECT_EQ(VXTypeFromName("PluginDouble"), nullptr);
}

TEST_F(PluginsTest, AThousandLivesLeaveNothingBehind) {
  const std::string path = pathOf("libGoodPlugin.so");
  const ModulePtr source = makeModule("RampModule");
  std::size_t bytesBefore = 0;
  for (int life = 0; life < 1000; ++life) {
    void* handle = nullptr;
    ASSERT_EQ(VXLoadLibraryWOErrorExt(path.c_str(), &handle), 0) << life;
    BaseOp* const module = VXCreateModuleFromName("PluginDouble");
    ASSERT_NE(module, nullptr);
    ASSERT_EQ(VXFieldConnectFrom(VXModuleGetField(module, "input0"), VXModuleGetField(source.get(), "output0")), 1);
    VXint32 voxels[2] = {};
    void* memory = voxels;
    ASSERT_EQ(VXImageGetTile3D(VXModuleGetField(module, "output0"), &memory, 3, 1, 0, 2, 1, 1, VXint32Type), 0);
    ASSERT_EQ(voxels[1], 28);
    VXDeleteModule(module);
    ASSERT_EQ(VXUnLoadLibrary(path.c_str(), handle, nullptr, 0), 0) << life;
    ASSERT_FALSE(isMapped(path)) << life;
    if (life == 100) bytesBefore = mallinfo2().uordblks;
  }
  EXPECT_LE(mallinfo2().uordblks, bytesBefore + 4096) << "bytes that are in use";
  expectSilence();
}

}  // namespace
}  // namespace vx::test
