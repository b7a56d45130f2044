#include "vxFieldsEngineHooks.h"

#include "vxGuards.h"

namespace vx {

namespace {

// Installed once, before other threads run, and constant from there on.
FieldsEngineHooks installedHooks = {nullptr, nullptr, nullptr, nullptr};

}  // namespace

void installFieldsEngineHooks(const FieldsEngineHooks& hooks) noexcept { installedHooks = hooks; }

const FieldsEngineHooks& fieldsEngineHooks() {
  checkFatal(installedHooks.newPagedImg != nullptr);
  return installedHooks;
}

}  // namespace vx
