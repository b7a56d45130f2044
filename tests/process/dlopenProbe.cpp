// A host that loads the library at run time: argument 1 is its path, argument 2 what to do.

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fstream>
#include <link.h>
#include <string>
#include <thread>
#include <vector>

namespace {

using VXUnLoadLibraryFunction = int (*)(const char*, void*, char**, int);

void* load(const char* path) {
  void* handle = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (!handle) std::printf("no library: %s\n", dlerror());
  return handle;
}

template <class Function>
Function find(void* handle, const char* name) {
  void* symbol = dlsym(handle, name);
  if (!symbol) {
    std::printf("no symbol %s\n", name);
    std::exit(1);
  }
  return reinterpret_cast<Function>(symbol);
}

bool isLoaded(const char* path) {
  void* handle = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
  if (handle) dlclose(handle);
  return handle != nullptr;
}

struct ThreadHandle {
  bool valid;
  std::uintptr_t thread;
};
using StartThreadFunction = ThreadHandle (*)(void (*)(void*), unsigned int, void*);

// A thread that has given its signal, but has some way to go.
void signalAndLinger(void* hasSignalled) {
  static_cast<std::atomic<bool>*>(hasSignalled)->store(true);
  std::this_thread::sleep_for(std::chrono::milliseconds(2));
}

// Unloads the library as soon as its thread has given its signal.
bool unloadBehindThread(const char* path) {
  void* handle = load(path);
  if (!handle) return false;
  const auto startThread = find<StartThreadFunction>(handle, "_ZN2vx11StartThreadEPFvPvEjS0_");
  std::atomic<bool> hasSignalled{false};
  if (!startThread(&signalAndLinger, 0, &hasSignalled).valid) return false;
  while (!hasSignalled) std::this_thread::yield();
  return dlclose(handle) == 0 && !isLoaded(path);
}

// Where a part of a library's file stands in memory, to find its texts once it is unloaded.
struct Segment {
  std::uintptr_t address;
  std::uintptr_t size;
  std::uintptr_t offset;
};

std::vector<Segment> segmentsOf(void* handle) {
  struct Search {
    const link_map* map = nullptr;
    std::vector<Segment> segments;
  } search;
  dlinfo(handle, RTLD_DI_LINKMAP, &search.map);
  dl_iterate_phdr(
      [](dl_phdr_info* info, std::size_t, void* data) {
        auto& s = *static_cast<Search*>(data);
        if (info->dlpi_addr != s.map->l_addr) return 0;
        for (int i = 0; i < info->dlpi_phnum; ++i) {
          const ElfW(Phdr)& header = info->dlpi_phdr[i];
          if (header.p_type != PT_LOAD) continue;
          s.segments.push_back({info->dlpi_addr + header.p_vaddr, header.p_filesz, header.p_offset});
        }
        return 0;
      },
      &search);
  return search.segments;
}

// The beginning of the trace buffer, as far as it is looked at here.
struct TraceBuffer {
  unsigned short stackTop;
  unsigned short listIndex;
  const char* stack[65536];
  const char* list[65536];
};

// What the library noted first in the trace when it was unloaded.
void printFirstTraceOfUnload(const char* path, void* utils) {
  const auto* const trace = find<const TraceBuffer*>(utils, "_ZN2vx19VXGlobalTraceBufferE");
  void* handle = load(path);
  if (!handle) return;
  const std::vector<Segment> segments = segmentsOf(handle);
  const unsigned short before = trace->listIndex;
  dlclose(handle);
  std::printf("depth=%d ", trace->stackTop);
  const auto text = reinterpret_cast<std::uintptr_t>(trace->list[before]);
  for (const Segment& segment : segments) {
    if (text - segment.address >= segment.size) continue;
    std::ifstream file(path, std::ios::binary);
    file.seekg(static_cast<std::streamoff>(segment.offset + (text - segment.address)));
    std::string traced;
    std::getline(file, traced, '\0');
    std::printf("%s\n", traced.c_str());
  }
}

// Asks the library once more when the static objects of the host go: it was made before the library came.
struct LateCaller {
  VXUnLoadLibraryFunction unload = nullptr;
  ~LateCaller() {
    if (unload) std::printf("late=%d\n", unload("NoSuchLibrary", nullptr, nullptr, 0));
  }
} lateCaller;

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  const char* path = argv[1];
  const std::string what = argv[2];
  // One variable may be longer than what the system passes to a new process.
  const std::string longText(1 << 20, what == "long-digits" ? '9' : 'x');
  if (what == "long-text" || what == "long-digits") {
    for (const char* name : {"VX_NUM_THREADS", "VX_DEBUG_ON", "VX_DEBUG_ALL", "VX_USE_EXCEPTIONS", "VX_MESSAGE_FILTER",
                             "VX_MEM_OPT_LEVEL", "VX_CACHE_SIZE_IN_KB", "VX_MODULE_PATH"}) {
      setenv(name, longText.c_str(), 1);
    }
  }
  if (what == "thread") {
    for (int round = 0; round < 20; ++round) {
      if (!unloadBehindThread(path)) return 1;
    }
    std::printf("unloaded\n");
    return 0;
  }
  // The base layer alone, so that its state can be looked at before the start-up and after the unload.
  int* alwaysFalse = nullptr;
  if (what == "always-false" || what == "trace") {
    const std::string folder = std::string(path).substr(0, std::string(path).rfind('/'));
    void* utils = load((folder + "/libVXUtils.so.1").c_str());
    if (!utils) return 1;
    if (what == "trace") {
      printFirstTraceOfUnload(path, utils);
      return 0;
    }
    alwaysFalse = find<int*>(utils, "VXAlwaysFalse");
    *alwaysFalse = 0x12345677;
  }
  const int numRounds = what == "often" ? 50 : 1;
  for (int round = 0; round < numRounds; ++round) {
    void* handle = load(path);
    if (!handle) return 1;
    const auto init = find<int (*)(int, int, int)>(handle, "VXInit");
    const auto fromName = find<int (*)(const char*)>(handle, "VXLoadLibraryWOError");
    const auto destroy = find<int (*)()>(handle, "VXDestroy");
    if (round == 0) std::printf("init=%d load=%d ", init(1, 8, 68), fromName("NoSuchLibrary"));
    if (alwaysFalse) std::printf("always false=%d ", *alwaysFalse);
    if (what == "itself") {
      const auto unload = find<VXUnLoadLibraryFunction>(handle, "VXUnLoadLibrary");
      char* text = nullptr;
      const int result = unload("VX", handle, &text, 0);
      std::printf("unload=%d %s ", result, text);
      find<void (*)(void*)>(handle, "VXFree")(text);
    }
    if (what == "late-call") {
      lateCaller.unload = find<VXUnLoadLibraryFunction>(handle, "VXUnLoadLibrary");
      return 0;
    }
    if (what == "destroy" || what == "often") {
      const int result = destroy();
      if (round == 0) std::printf("destroy=%d ", result);
    }
    dlclose(handle);
    if (isLoaded(path)) {
      std::printf("still loaded in round %d\n", round);
      return 1;
    }
  }
  std::printf("unloaded\n");
  return 0;
}
