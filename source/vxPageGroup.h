// The pages that one level of a request calculates.

#ifndef VX_PAGE_GROUP_H
#define VX_PAGE_GROUP_H

#include "vxRequestLevels.h"

namespace vx {

class BaseOp;
class PagedImg;

/// What is asked of one level, and its work space.
struct PageGroup {
  BaseOp& op;
  PagedImg& outImg;
  VXint64 outIndex;                 // -1 where pages are walked through without output
  const std::vector<VXint64>& ids;  // the pages
  VXuint64 depth;                   // 0 for the image that is requested
  bool hasNoOutput;                 // pages have no memory
  bool tryBypass;                   // pages of an input may stand in
  RequestLevel& level;              // holds a record for each page that is to be calculated
};

}  // namespace vx

#endif
