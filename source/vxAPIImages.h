// What the image functions of the C interface share: from the field of an output to its image.

#ifndef VX_API_IMAGES_H
#define VX_API_IMAGES_H

#include "vxAPIFrame.h"

namespace vx {

class BaseOp;
class OutputConnector;
class PagedImg;

/// The object check of an output's field, with the label and reason of a function. \return the output; null after a
/// refusal, which has been reported.
OutputConnector* _VXGetOutput(Field* outField, const CallLabel& label, const char* reason);

/// Finds the image of an output and brings it up to date, in the recursion guard. Behind an exception frame of its own.
/// \param outField field of the output. \param baseOp,outIndex,img take module, index and image of the output; left as
///        they are by a call that is refused. \return 0 if the image is valid, else an error code.
VXErrorCode _VXGetOutputParams(Field* outField, BaseOp** baseOp, int* outIndex, PagedImg** img);

/// Finds the image of an output without bringing it up to date. \param outField field of the output. \param img takes
/// the image, or null for a bad field. \return 0 or ::VX_BAD_FIELD.
VXErrorCode _VXGetPagedImg(Field* outField, PagedImg** img);

}  // namespace vx

#endif
