// What the fields need of the engine above them: an output connector owns a paged image, and touching its field asks
// the host. The engine installs these functions at start-up, so that this storey builds without the storey above.

#ifndef VX_FIELDS_ENGINE_HOOKS_H
#define VX_FIELDS_ENGINE_HOOKS_H

#include "vxTypes.h"

namespace vx {

class BaseOp;
class PagedImg;

/// The functions of the engine; null before they are installed.
struct FieldsEngineHooks {
  /// Makes the image of an output. Exceptions pass on. \return the image, which goes back through `deletePagedImg`.
  PagedImg* (*newPagedImg)(BaseOp& op, VXint64 index);
  /// Deletes an image that `newPagedImg` made; null is ignored.
  void (*deletePagedImg)(PagedImg* image);
  /// Clears the page list and memory image of an output's image, and then declares the image out of date.
  void (*invalidatePagedImg)(PagedImg& image);
  /// \return not 0 while the default host processes.
  VXint64 (*isProcessingActive)();
};

/// Installs the functions of the engine: at start-up, before the first output connector is made.
/// \return what was installed before.
FieldsEngineHooks installFieldsEngineHooks(const FieldsEngineHooks& hooks) noexcept;

/// \return the installed functions. \throw int ::VX_BAD_POINTER after a fatal report if there are none.
const FieldsEngineHooks& fieldsEngineHooks();

}  // namespace vx

#endif
