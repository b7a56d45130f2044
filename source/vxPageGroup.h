// The pages that one level of a request calculates.

#ifndef VX_PAGE_GROUP_H
#define VX_PAGE_GROUP_H

#include "vxRequestLevels.h"

#include <atomic>
#include <cstddef>

namespace vx {

class BaseOp;
class PagedImg;

/// Where the pages of a requested group go when all of them are calculated.
///
/// The requesting thread copies them, unless workers have calculated all pages: these are awake, and have the pages in
/// their caches. Pages are apart in the tile, so several threads may copy.
struct TileCopy {
  SubImg& tile;
  const ScaleShiftData& scaleShift;
  std::atomic<std::size_t> numPagesCopied{0};  // by workers; if that isn't all, the requesting thread copies them all
};

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
  TileCopy* tile;                   // where the pages go, null for nowhere
};

}  // namespace vx

#endif
