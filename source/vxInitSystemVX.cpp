#include "vxInitSystemVX.h"

#include "vxAPI.h"
#include "vxBaseOp.h"
#include "vxCache.h"
#include "vxDummyOp.h"
#include "vxEngine.h"
#include "vxEngineHooks.h"
#include "vxEnvironment.h"
#include "vxField.h"
#include "vxFieldContainer.h"
#include "vxGuards.h"
#include "vxHost.h"
#include "vxImageProperties.h"
#include "vxImagePropertyExtension.h"
#include "vxMedicalImageProperties.h"
#include "vxMemoryImg.h"
#include "vxNotify.h"
#include "vxPagedImg.h"
#include "vxSubImg.h"
#include "vxSystemInfo.h"
#include "vxThread.h"
#include "vxTraceBuffer.h"
#include "vxTreeNode.h"
#include "vxTypeInfos.h"

const char VXVersionString[] = "1.8.68.23.87";

namespace vx {

namespace {

constexpr char registryName[] = "VX";

bool _vxIsInitialized = false;

// A 32-bit value that is doubled thirty-six times is zero, whatever it held.
void forceAlwaysFalseToZero() {
  for (int i = 0; i < 36; ++i) VXAlwaysFalse = static_cast<int>(2U * static_cast<unsigned int>(VXAlwaysFalse));
}

// In the form of the functions that it stands among.
void initFieldClasses(const char* /*dllName*/, const char* /*className*/) { VXInitFields(); }

int VXinit() {
  const TraceFrame trace("source/vxInitSystemVX:VXinit()");
  if (_vxIsInitialized) return 1;
  guardedBlock([] {
    forceAlwaysFalseToZero();
    if (!VXInitializeTypes()) {
      report(VX_FATAL, "VXinit()", VX_TYPE_INIT_FAILED,
             "Could not initialize standard VX types required for basic operations.");
    }
    installEngineHooks();
    // Parents before their children: a class names its parent by text.
    for (const auto initClass : {
             &BaseOp::initClass,
             &Cache::initClass,
             &DummyOp::initClass,
             &Engine::initClass,
             &Field::initClass,
             &initFieldClasses,
             &FieldContainer::initClass,
             &Host::initClass,
             &ImageProperties::initClass,
             &ImagePropertyExtensionContainer::initClass,
             &ImagePropertyExtension::initClass,
             &MedicalImageProperties::initClass,
             &MemoryImg::initClass,
             &PagedImg::initClass,
             &SubImg::initClass,
             &TreeNode::initClass,
             &TreeNodeException::initClass,
         }) {
      initClass(nullptr, nullptr);
    }
    DummyOp::getGlobalInstance();  // before any module of a host
    _vxIsInitialized = true;
    setVXEnvironment();
  });
  return 1;
}

void VXdestroy() {
  const TraceFrame trace("source/vxInitSystemVX:VXdestroy()");
  guardedBlock([] {
    // The one is the placeholder.
    if (BaseOp::getNumBaseOps() != 1) {
      report(
          VX_WARNING, "VXdestroy()", VX_MISUSED_INTERFACE,
          "There are still undeleted VX modules while calling destroyVX(). They must be deleted before, because they "
          "cannot be destructed after VX destruction or memory leaks would remain.");
    }
    VXNotify.removeAllNotifyCBs();
    DummyOp::destroyDummyOp();
    BaseOp::destroyBaseOp();
    Host::destroyDefaultHost();
    Runtime::destroy();
    VXErrorOutput.destroy();
    VXDestroyTypes();
  });
}

// The text as a number, wrapped to 32 bits; 0 for a text that is none.
int toInt(const char* text) {
  VXint64 value = 0;
  VXint64Scan(text, &value);
  return static_cast<int>(static_cast<unsigned int>(value));
}

}  // namespace

int initVX() { return VXinit(); }

void destroyVX() { VXdestroy(); }

void setVXEnvironment() {
  const TraceFrame trace("source/vxInitSystemVX:setVXEnvironment()");
  guardedBlock([] {
    Host& host = Host::getDefaultHost();
    const char* const numThreads = environmentText("VX_NUM_THREADS");
    host.setMaxNumThreads(numThreads ? static_cast<VXuint32>(toInt(numThreads))
                                     : SystemInfo::getNumVirtualProcessors());

    const char* const debugOn = environmentText("VX_DEBUG_ON");
    const unsigned int filter = VXErrorOutput.getMessageFilter();
    VXErrorOutput.setMessageFilter(debugOn && toInt(debugOn) != 0 ? filter | VX_DEBUG : filter & 0xF7U);

    const char* const debugAll = environmentText("VX_DEBUG_ALL");
    VXErrorOutput.setFullDebuggingOn(debugAll && toInt(debugAll) != 0);

    if (const char* const useExceptions = environmentText("VX_USE_EXCEPTIONS")) {
      VXEnableExceptionHandling(toInt(useExceptions) != 0);
    }
    if (const char* const messageFilter = environmentText("VX_MESSAGE_FILTER")) {
      VXErrorOutput.setMessageFilter(static_cast<unsigned int>(toInt(messageFilter)));
    }
    // A negative number becomes a huge one.
    if (const char* const level = environmentText("VX_MEM_OPT_LEVEL")) {
      host.getCache().setMemoryOptimizationLevel(static_cast<VXuint64>(toInt(level)));
    }
    if (const char* const sizeKB = environmentText("VX_CACHE_SIZE_IN_KB")) {
      host.getCache().setMaxCacheSizeKB(static_cast<VXuint64>(toInt(sizeKB)));
    }
    if (!environmentText("VX_SUPPRESS_VXTYPEEXTENSION_LOAD")) VXLoadLibraryWOError("VXTypeExtensions");
  });
}

namespace {

// Load of the library. The priority is the highest there is, so the library is ready before its other static objects
// and before those of everything that links to it.
__attribute__((constructor(101))) void attachLibrary() {
  Runtime::setRecentlyLoadedDllName(registryName);
  VXCheckCPPAPILinkCompatibility(1, 8, 68, 23, VXVersionString, "VXinit");
  VXinit();
}

// Unload of the library, or the end of the process.
__attribute__((destructor)) void detachLibrary() {
  const TraceFrame trace("source/vxInitSystemVX:_destroyMethod##initDll()");
  if (VXIsCurrentlyUnloadingLibrary()) Runtime::destroyRuntimeTypesOfDll(registryName);
  waitForThreads(unloadWait);
}

// What the library made for itself goes behind all static objects, which may be modules; nobody is told any more.
__attribute__((destructor(102))) void releaseOwnObjects() {
  VXNotify.removeAllNotifyCBs();
  DummyOp::destroyDummyOp();
  BaseOp::destroyBaseOp();
  Host::destroyDefaultHost();
}

}  // namespace

}  // namespace vx
