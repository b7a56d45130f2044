#include "vxFieldsEngineHooks.h"

#include "vxGuards.h"

#include <utility>

namespace vx {

namespace {

// Installed once, before other threads run, and constant from there on.
FieldsEngineHooks installedHooks = {nullptr, nullptr, nullptr, nullptr};

}  // namespace

FieldsEngineHooks installFieldsEngineHooks(const FieldsEngineHooks& hooks) noexcept {
  return std::exchange(installedHooks, hooks);
}

const FieldsEngineHooks& fieldsEngineHooks() {
  checkFatal(installedHooks.newPagedImg != nullptr);
  return installedHooks;
}

}  // namespace vx
