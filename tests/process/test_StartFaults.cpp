// Every allocation of the start of the library, of the load of a module library with the first tile of its modules, and
// of the end fails once. Each run is a process of its own, which loads the library as a host does that doesn't know it
// before.

#include "FailingAllocator.h"

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using vx::test::failAllocation;
using vx::test::getNumLiveBlocks;
using vx::test::stopFailing;

// Results of the process of a run.
constexpr int allWasRight = 0;
constexpr int somethingWasWrong = 1;
constexpr int noAllocationFailed = 2;
constexpr int leaked = 3;

[[noreturn]] void complain(const char* format, ...) __attribute__((format(printf, 1, 2)));
void complain(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::vprintf(format, arguments);
  va_end(arguments);
  std::puts("");
  std::fflush(stdout);
  _exit(somethingWasWrong);
}

// The system's header says that dlopen() doesn't throw; but it runs the start of the library, which may. Called through
// a pointer, the exception can pass.
using OpenFunction = void* (*)(const char*, int);
OpenFunction volatile openFunction = &dlopen;

void* open() {
  try {
    return openFunction(VX_LIBRARY, RTLD_NOW | RTLD_GLOBAL);
  } catch (...) {
    return nullptr;
  }
}

// What a run uses of the C interface.
struct Library {
  explicit Library(void* handle) : _handle(handle) {}

  template <class Function>
  Function* find(const char* name) const {
    void* const symbol = dlsym(_handle, name);
    if (!symbol) complain("no symbol %s", name);
    return reinterpret_cast<Function*>(symbol);
  }

  int init() const { return find<int(int, int, int)>("VXInit")(1, 8, 68); }
  int initTypes() const { return find<int()>("VXInitializeTypes")(); }
  bool areExceptionsHandled() const { return find<int()>("VXIsExceptionHandlingEnabled")() != 0; }
  int destroy() const { return find<int()>("VXDestroy")(); }
  int load(void** plugin) const {
    return find<int(const char*, void**)>("VXLoadLibraryWOErrorExt")(VX_GOOD_PLUGIN, plugin);
  }
  int unload(void* plugin) const {
    return find<int(const char*, void*, char**, int)>("VXUnLoadLibrary")(VX_GOOD_PLUGIN, plugin, nullptr, 0);
  }
  void* makeModule(const char* name) const { return find<void*(const char*)>("VXCreateModuleFromName")(name); }
  void deleteModule(void* module) const { find<void(void*)>("VXDeleteModule")(module); }
  void* field(void* module, const char* name) const {
    return find<void*(void*, const char*)>("VXModuleGetField")(module, name);
  }
  int tile(void* output, void** memory) const {
    constexpr int int32 = 4;
    return find<int(void*, void**, int, int, int, int, int, int, int)>("VXImageGetTile")(output, memory, 0, 0, 0, 64, 1,
                                                                                         1, int32);
  }
  void freeTile(void* memory) const { find<void(void*)>("VXImageFreeTile")(memory); }

 private:
  void* _handle;
};

// Loads a module library, requests a tile of one of its modules, and unloads it. \return whether all went well; where
// it did, the voxels were right.
bool walkTheRoad(const Library& library) {
  void* plugin = nullptr;
  if (library.load(&plugin) != 0) return false;
  void* const module = library.makeModule("PluginRamp");
  void* memory = nullptr;
  void* const output = module ? library.field(module, "output0") : nullptr;
  const bool isThere = output && library.tile(output, &memory) == 0;
  const auto* const voxels = static_cast<const std::int32_t*>(memory);
  for (int x = 0; isThere && x < 64; ++x) {
    if (voxels[x] != x) complain("voxel %d is %d", x, voxels[x]);
  }
  if (memory) library.freeTile(memory);
  if (module) library.deleteModule(module);
  // An unload that fails for want of memory has done nothing.
  const bool isUnloaded = library.unload(plugin) == 0;
  if (!isUnloaded && library.unload(plugin) != 0) complain("the plugin can't be unloaded");
  return isThere && isUnloaded;
}

// Runs a function in a process of its own. \return its result.
int runApart(const std::function<int()>& body) {
  const pid_t child = fork();
  if (child == 0) {
    alarm(250);
    _exit(body());
  }
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

class StartFaults : public testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    setenv("VX_SUPPRESS_VXTYPEEXTENSION_LOAD", "1", 1);
    setenv("VX_NUM_THREADS", "1", 1);
    setenv("VX_USE_EXCEPTIONS", GetParam() ? "1" : "0", 1);
  }

  // Lets each allocation of a run fail until one isn't reached. \return how many there are.
  static long sweep(int (*run)(long)) {
    for (long n = 0;; ++n) {
      SCOPED_TRACE("allocation " + std::to_string(n));
      const int result = runApart([=] { return run(n); });
      if (result == noAllocationFailed) return n;
      EXPECT_EQ(result, allWasRight);
      if (HasFailure()) return n;
    }
  }
};

// Whether anything was printed on the error stream, which is a file without a name.
bool wasTold() {
  std::fflush(stderr);
  return lseek(STDERR_FILENO, 0, SEEK_CUR) > 0;
}

void redirectErrors() {
  std::FILE* const file = std::tmpfile();
  if (!file || dup2(fileno(file), STDERR_FILENO) < 0) _exit(somethingWasWrong);
}

// A class that couldn't be registered is told of and stays unknown; all else is made good by the host's own start.
int startWithout(long n) {
  redirectErrors();
  failAllocation(n);
  void* handle = open();
  const bool hasFailed = stopFailing() < 0;
  const bool hasStarted = handle != nullptr;
  if (!handle) handle = open();
  if (!handle) return somethingWasWrong;
  const Library library(handle);
  const bool wasRoadWalked = library.init() == 1 && library.initTypes() != 0 && walkTheRoad(library);
  if (library.destroy() != 1) return somethingWasWrong;
  if (!hasFailed) return hasStarted && wasRoadWalked ? noAllocationFailed : somethingWasWrong;
  return wasRoadWalked || wasTold() ? allWasRight : somethingWasWrong;
}

TEST_P(StartFaults, OfTheStartAreToldOrMadeGood) { EXPECT_GT(sweep(&startWithout), 50); }

int loadWithout(long n) {
  redirectErrors();
  const Library library(open());
  if (library.init() != 1) complain("not started");
  // Kept for later by the first loads.
  for (int i = 0; i < 3; ++i) {
    if (!walkTheRoad(library)) complain("no road without a failure");
  }
  const long numBlocks = getNumLiveBlocks();
  bool isDone = false;
  failAllocation(n);
  try {
    isDone = walkTheRoad(library);
  } catch (...) {
    // The host lets the exception of a module pass, and so keeps its module.
    if (library.areExceptionsHandled()) complain("an exception has escaped");
    stopFailing();
    return allWasRight;
  }
  const bool hasFailed = stopFailing() < 0;
  if (getNumLiveBlocks() != numBlocks) return leaked;
  if (!hasFailed) return isDone ? noAllocationFailed : somethingWasWrong;
  if (!walkTheRoad(library)) complain("no road afterwards");
  return allWasRight;
}

TEST_P(StartFaults, OfALoadLeaveTheNextOneAlone) { EXPECT_GT(sweep(&loadWithout), 20); }

int endWithout(long n) {
  const Library library(open());
  if (!walkTheRoad(library)) complain("no road");
  failAllocation(n);
  const int isDestroyed = library.destroy();
  const bool hasFailed = stopFailing() < 0;
  if (isDestroyed != 1) complain("not destroyed");
  return hasFailed ? allWasRight : noAllocationFailed;
}

// However many there are: the end would best do without any.
TEST_P(StartFaults, OfTheEndDontKeepItFromItsEnd) { sweep(&endWithout); }

INSTANTIATE_TEST_SUITE_P(Exceptions, StartFaults, testing::Bool(),
                         [](const auto& instance) { return instance.param ? "Handled" : "Unhandled"; });

}  // namespace
