// Stands in for the engine below connector fields: images are numbers, and what is asked of them is written down.

#ifndef VX_TESTS_FIELDS_ENGINE_STAND_IN_H
#define VX_TESTS_FIELDS_ENGINE_STAND_IN_H

#include "MessageRecorder.h"

#include "vxFieldsEngineHooks.h"

#include <memory>
#include <string>

namespace vx::test {

/// Installs itself while it lives, and the engine that was there before afterwards.
class FieldsEngineStandIn {
 public:
  FieldsEngineStandIn() {
    const MessageRecorder silence;
    try {
      _before = fieldsEngineHooks();
    } catch (int) {
      _before = {};
    }
    log.clear();
    processing = 0;
    failure = nullptr;
    installFieldsEngineHooks({&newPagedImg, &deletePagedImg, &invalidatePagedImg, &isProcessingActive});
  }
  ~FieldsEngineStandIn() { installFieldsEngineHooks(_before); }
  FieldsEngineStandIn(const FieldsEngineStandIn&) = delete;
  FieldsEngineStandIn& operator=(const FieldsEngineStandIn&) = delete;

  /// A module, which nobody looks into.
  BaseOp* module() { return reinterpret_cast<BaseOp*>(&_module); }

  static inline std::string log;              ///< "new 3", "clear 3" or "delete 3", each followed by a blank.
  static inline VXint64 processing = 0;       ///< What the host says of processing.
  static inline void (*failure)() = nullptr;  ///< Called where an image is made.

 private:
  static PagedImg* newPagedImg(BaseOp& /*op*/, VXint64 index) {
    if (failure) failure();
    log += "new " + std::to_string(index) + " ";
    return reinterpret_cast<PagedImg*>(std::make_unique<VXint64>(index).release());
  }
  static void deletePagedImg(PagedImg* image) {
    const std::unique_ptr<VXint64> index(reinterpret_cast<VXint64*>(image));
    if (index) log += "delete " + std::to_string(*index) + " ";
  }
  static void invalidatePagedImg(PagedImg& image) {
    log += "clear " + std::to_string(*reinterpret_cast<VXint64*>(&image)) + " ";
  }
  static VXint64 isProcessingActive() { return processing; }

  FieldsEngineHooks _before = {};
  long _module = 0;
};

}  // namespace vx::test

#endif
