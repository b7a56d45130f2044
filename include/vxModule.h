/// \file vxModule.h
/// All that a module library includes, and the declaration that makes it one.

#ifndef VX_MODULE_H
#define VX_MODULE_H

#include "vxAPI.h"
#include "vxBaseOp.h"
#include "vxBaseOpTools.h"
#include "vxCache.h"
#include "vxCachedBuffer.h"
#include "vxDataTypes.h"
#include "vxDummyOp.h"
#include "vxEngine.h"
#include "vxErrorOutput.h"
#include "vxFieldContainer.h"
#include "vxGuards.h"
#include "vxHost.h"
#include "vxMemoryImg.h"
#include "vxPagedImg.h"
#include "vxRuntime.h"
#include "vxSubImg.h"
#include "vxTSubImg.h"
#include "vxTraceBuffer.h"
#include "vxTypeInfos.h"
#include "vxUtilsAPI.h"

#include <initializer_list>

namespace vx {

/// Registers classes under their own names, in the order given: parents before their children. They belong to the
/// library that VX is loading. Call it when a library is loaded.
template <class... Classes>
void registerClasses() {
  (Classes::initClass(nullptr, nullptr), ...);
}

/// Removes classes, in reverse order, if VX is unloading a library; at the plain end of the process they stay, since
/// other static objects may still use them. Call it when a library is unloaded.
template <class... Classes>
void removeClasses() {
  if (!VXIsCurrentlyUnloadingLibrary()) return;
  using DestroyClass = void (*)();
  const std::initializer_list<DestroyClass> destroyers = {&Classes::destroyClass...};
  for (auto destroyer = destroyers.end(); destroyer != destroyers.begin();) (*--destroyer)();
}

}  // namespace vx

/// Makes a library a module library: its classes are registered when a host loads it by VXLoadLibrary(), and removed
/// when the host unloads it by VXUnLoadLibrary(). It stands once in a library, outside of all namespaces.
///
/// The arguments are the classes, parents before their children. Each carries VX_CLASS_HEADER or its abstract form in
/// its declaration, and VX_CLASS_SOURCE in a source. A host makes a module of a class by the class's name.
#define VX_MODULE_LIBRARY(...)                                                                        \
  namespace {                                                                                         \
  __attribute__((constructor)) void vxAttachModuleLibrary() { ::vx::registerClasses<__VA_ARGS__>(); } \
  __attribute__((destructor)) void vxDetachModuleLibrary() { ::vx::removeClasses<__VA_ARGS__>(); }    \
  }                                                                                                   \
  static_assert(true, "needs a semicolon")

#endif
