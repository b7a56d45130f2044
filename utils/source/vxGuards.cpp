#include "vxGuards.h"

namespace vx {

void throwFatal(VXErrorCode code, SourcePosition position) {
  VXPrintAndNotifyFatal(position.file, position.line, code);
  throw int{code};
}

}  // namespace vx
