#include "vxEngineHooks.h"

#include "vxFieldsEngineHooks.h"
#include "vxGuards.h"
#include "vxHost.h"
#include "vxPagedImg.h"

namespace vx {

namespace {

PagedImg* newPagedImg(BaseOp& op, VXint64 index) { return new PagedImg(&op, index); }

void deletePagedImg(PagedImg* image) { guardedDelete(image); }

void invalidatePagedImg(PagedImg& image) {
  image.clearPageListAndMemoryImg();
  image.setOutOfDate();
}

VXint64 isProcessingActive() { return Host::getDefaultHost().isProcessingActive(); }

}  // namespace

void installEngineHooks() noexcept {
  installFieldsEngineHooks({&newPagedImg, &deletePagedImg, &invalidatePagedImg, &isProcessingActive});
}

}  // namespace vx
