// A host that does what its arguments say, one after the other, and prints what it sees.

#include "vxAPI.h"
#include "vxBaseOp.h"
#include "vxErrorOutput.h"
#include "vxHost.h"
#include "vxImagePropertyExtension.h"
#include "vxInitSystemVX.h"
#include "vxNotify.h"
#include "vxSystemInfo.h"
#include "vxTraceBuffer.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace {

void settings() {
  std::printf("filter=%u fullDebugging=%d exceptions=%d multithreading=%d\n", vx::VXErrorOutput.getMessageFilter(),
              vx::VXErrorOutput.isFullDebuggingOn(), VXIsExceptionHandlingEnabled(), VXIsMultithreadingActive());
}

// What the environment says to the default host.
void host() {
  const vx::Host& host = vx::Host::getDefaultHost();
  std::printf("threads=%u level=%llu cacheKB=%llu\n", host.getMaxNumThreads(),
              host.getConstCache().getMemoryOptimizationLevel(), host.getConstCache().getMaxCacheSizeKB());
}

// A module of the host, which may live longer than it should.
std::unique_ptr<vx::BaseOp> module;

int numTypes() {
  int number = 0;
  for (const vx::RuntimeType* type = vx::Runtime::getFirstEntry(); type; type = vx::Runtime::getNextEntry()) ++number;
  return number;
}

void types() {
  for (const vx::RuntimeType* type = vx::Runtime::getFirstEntry(); type; type = vx::Runtime::getNextEntry()) {
    std::printf("%s(%s,%s) ", type->getName(), type->getParentName(), type->getDllName());
  }
  std::printf("\n");
}

void trace() {
  for (unsigned short i = 0; i < vx::VXGlobalTraceBuffer._listIndex; ++i) {
    std::printf("%s\n", vx::VXGlobalTraceBuffer._list[i]);
  }
}

// What a host may do after the end without a crash.
void afterDestroy() {
  std::printf("types=%d init=%d again=%d environment=", numTypes(), VXInit(1, 8, 68), VXDestroy());
  vx::setVXEnvironment();
  settings();
  const vx::RuntimeType* type = vx::ImagePropertyExtensionContainer::getClassTypeId();
  std::printf("%s below %s, abstract=%d\n", type->getName(), type->getParentName(), type->isAbstract());
  vx::ImagePropertyExtensionContainer container;
  std::printf("%s counter=%ld\n", container.getTypeIdName(), container.typeInstanceCounter());
  vx::VXNotify.notify(1, nullptr, nullptr);
  vx::report(VX_ERROR, "probe", VX_BAD_PARAMETER, "still heard");
}

// A library through its whole life.
void library(const char* name) {
  void* handle = nullptr;
  char* text = nullptr;
  std::printf("load=%d\n", VXLoadLibraryWOErrorExt(name, &handle));
  const vx::RuntimeType* type = vx::Runtime::fromName("LoadedClass");
  if (!type) return;
  std::printf("type of '%s' in use=%lld\n", type->getDllName(), vx::Runtime::getNumInstancesDependentOnDll(name));
  auto* object = static_cast<vx::Base*>(type->getCreateCB()());
  std::printf("unload with an instance=%d\n", VXUnLoadLibrary(name, handle, &text, 0));
  std::printf("still there=%d text=%s\n", vx::Runtime::fromName("LoadedClass") == type, text ? text : "none");
  delete object;
  std::printf("unload=%d", VXUnLoadLibrary(name, handle, &text, 0));
  std::printf(" text=%s unloading=%d gone=%d\n", text, VXIsCurrentlyUnloadingLibrary(),
              vx::Runtime::fromName("LoadedClass") == nullptr);
  VXFree(text);
  std::printf("unload of what is unknown now=%d\n", VXUnLoadLibrary(name, handle, nullptr, 0));
}

// A library with modules, which are made by name.
void moduleLibrary(const char* name) {
  void* handle = nullptr;
  std::printf("load=%d\n", VXLoadLibraryWOErrorExt(name, &handle));
  const vx::RuntimeType* const type = vx::Runtime::fromName("TouchCounter");
  if (!type || !vx::Runtime::fromName("AddOne")) return;
  std::unique_ptr<vx::BaseOp> counter(static_cast<vx::BaseOp*>(type->getCreateCB()()));
  vx::FieldContainer& fields = *counter->getFieldContainer();
  fields.getField("touch")->notifyAttachments(vx::FieldSensor::VX_FULL_NOTIFICATION);
  fields.getField("touch")->notifyAttachments(vx::FieldSensor::VX_FULL_NOTIFICATION);
  std::printf("%s of %s below %s counts %s\n", counter->whoAmI(true).c_str(), type->getDllName(), type->getParentName(),
              fields.getField("count")->getStringValue().c_str());
  std::printf("in use=%lld\n", vx::Runtime::getNumInstancesDependentOnDll(name));
  std::printf("unload with an instance=%d\n", VXUnLoadLibrary(name, handle, nullptr, 0));
  counter.reset();
  const int result = VXUnLoadLibrary(name, handle, nullptr, 0);
  std::printf("unload=%d known=%d\n", result, vx::Runtime::fromName("AddOne") || vx::Runtime::fromName("TouchCounter"));
}

// Loads and unloads a library with an instance of its class alive.
void forcedUnload(const char* name) {
  void* handle = nullptr;
  VXLoadLibraryWOErrorExt(name, &handle);
  const vx::RuntimeType* type = vx::Runtime::fromName("LoadedClass");
  ++type->instanceCounter();
  std::printf("forced=%d", VXUnLoadLibrary(name, handle, nullptr, 1));
  --type->instanceCounter();
  std::printf(" name of the removed type=%s\n", type->getName());
}

// Unloads a library that doesn't remove its types itself, loaded twice.
void forgetful(const char* name) {
  void* first = nullptr;
  void* second = nullptr;
  VXLoadLibraryWOErrorExt(name, &first);
  VXLoadLibraryWOErrorExt(name, &second);
  const auto isKnown = [] { return vx::Runtime::fromName("ExtensionClass") != nullptr; };
  const int firstResult = VXUnLoadLibrary(name, first, nullptr, 0);
  std::printf("first=%d known=%d\n", firstResult, isKnown());
  const int secondResult = VXUnLoadLibrary(name, second, nullptr, 0);
  std::printf("second=%d known=%d\n", secondResult, isKnown());
}

// Comes and goes many times.
void loadOften(const char* name) {
  const int before = numTypes();
  for (int i = 0; i < 100; ++i) {
    void* handle = nullptr;
    if (VXLoadLibraryWOErrorExt(name, &handle) != 0 || VXUnLoadLibrary(name, handle, nullptr, 0) != 0) {
      std::printf("failed in round %d\n", i);
    }
  }
  std::printf("types more=%d\n", numTypes() - before);
}

void refusals() {
  void* handle = &handle;
  char* text = nullptr;
  std::printf("%d ", VXLoadLibraryWOErrorExt(nullptr, &handle));
  std::printf("%d ", handle == &handle);
  std::printf("%d ", VXLoadLibraryWOErrorExt("", nullptr));
  std::printf("%d ", VXLoadLibraryWOError(nullptr));
  std::printf("%d ", VXLoadLibraryWOErrorExt("NoSuchLibrary", &handle));
  std::printf("%d ", handle == nullptr);
  std::printf("%d ", VXLoadLibrary(nullptr));
  std::printf("%d ", VXLoadLibrary("NoSuchLibrary"));
  std::printf("%d ", VXUnLoadLibrary(nullptr, nullptr, &text, 1));
  std::printf("%d ", VXUnLoadLibrary("NoSuchLibrary", nullptr, &text, 1));
  std::printf("%d ", VXUnLoadLibrary("VX", nullptr, &text, 1));
  std::printf("'%s' ", text);
  VXFree(text);
  std::printf("%d ", VXSetUnloadLibraryState(2));
  std::printf("%d ", VXGetUnloadLibraryState());
  std::printf("%d ", VXSetUnloadLibraryState(1));
  std::printf("%d ", VXGetUnloadLibraryState());
  std::printf("%d\n", VXSetUnloadLibraryState(0));
}

}  // namespace

int main(int argc, char** argv) {
  const std::map<std::string, std::function<void()>> commands = {
      {"settings", settings},
      {"host", host},
      {"processors", [] { std::printf("%u", vx::SystemInfo::getNumVirtualProcessors()); }},
      {"module", [] { module = std::make_unique<vx::BaseOp>(1, 1); }},
      {"delete-module",
       [] {
         std::printf("%s\n", module->whoAmI(true).c_str());
         module.reset();
       }},
      {"types", types},
      {"trace", trace},
      {"init", [] { std::printf("init=%d\n", VXInit(1, 8, 68)); }},
      {"init-newer", [] { std::printf("init=%d\n", VXInit(1, 9, 0)); }},
      {"init-other", [] { std::printf("init=%d\n", VXInit(2, 0, 0)); }},
      {"count", [] { std::printf("types=%d\n", numTypes()); }},
      {"version", [] { std::printf("%s\n", VXVersionString); }},
      {"reset", [] { vx::VXErrorOutput.reset(); }},
      {"environment", vx::setVXEnvironment},
      {"notify-cb",
       [] {
         VXAddNotifyCB([](void*, unsigned int, void*, void*) { std::printf("notified\n"); }, nullptr, ~0U);
         vx::VXNotify.notify(1, nullptr, nullptr);
       }},
      {"message-cb",
       [] {
         VXAddMessageCB([](void*, const VXMessage* message) { std::printf("heard %s\n", message->reason); }, nullptr,
                        ~0U);
         vx::report(VX_ERROR, "probe", VX_BAD_PARAMETER, "a message");
       }},
      {"push", [] { std::printf("push=%d\n", VXPushState(0)); }},
      {"pop", [] { std::printf("pop=%d\n", VXPopState()); }},
      {"destroy", [] { std::printf("destroy=%d\n", VXDestroy()); }},
      {"after-destroy", afterDestroy},
      {"library", [] { library("VXTestModules"); }},
      {"module-library", [] { moduleLibrary("VXImageModules"); }},
      {"forced-unload", [] { forcedUnload("VXTestModules"); }},
      {"forgetful", [] { forgetful("VXTypeExtensions"); }},
      {"load-often", [] { loadOften("VXTestModules"); }},
      {"decoy", [] { std::printf("decoy=%d\n", VXLoadLibraryWOError("VXTestModules")); }},
      {"refusals", refusals},
  };
  for (int i = 1; i < argc; ++i) {
    const auto command = commands.find(argv[i]);
    if (command == commands.end()) {
      std::fprintf(stderr, "probe: unknown command %s\n", argv[i]);
      return 2;
    }
    command->second();
    std::fflush(stdout);
  }
  return 0;
}
