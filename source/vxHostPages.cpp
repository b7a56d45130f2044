// The road of a tile, second station: the pages of a group. Those that exist are locked, the others become records,
// whose inputs are requested first; then the records are calculated.

#include "vxBaseOp.h"
#include "vxCachedBuffer.h"
#include "vxGuards.h"
#include "vxHost.h"
#include "vxPageBytes.h"
#include "vxPageGroup.h"
#include "vxPagedImg.h"
#include "vxProcessingGuards.h"
#include "vxTraceBuffer.h"

#include <algorithm>
#include <cstring>

namespace vx {

namespace {

bool isReady(const CachedBuffer* page) { return page && page->isInitialized(); }

// A page that was calculated before is locked. \return whether there is one.
bool lockExistingPage(const PageGroup& group, VXint64 id) {
  if (group.hasNoOutput) return false;
  CachedBuffer* const page =
      group.outImg.getPage(id, group.tryBypass ? PagedImg::OWN_OR_BYPASSED_PAGE : PagedImg::OWN_PAGE);
  if (!isReady(page)) return false;
  page->lock();
  return true;
}

// Begins the record of a page, before the page: what fails from here on finds the page in the record.
ThreadDataClass& addRecord(const PageGroup& group, Host& host) {
  return withMemory([&]() -> ThreadDataClass& {
    SubImg& block = group.level.nextBlock();
    ThreadDataClass& record = group.level.addRecord();
    record.assign(&group.op, &group.outImg, group.outIndex, &block, nullptr, &host);
    return record;
  });
}

// Fills the page from the memory image if that holds all of it. The page is cheap then and goes first.
bool fillFromMemoryImg(const PageGroup& group, SubImg& block, CachedBuffer& page) {
  const MemoryImg& memoryImg = group.outImg.getMemoryImg();
  if (group.hasNoOutput || !memoryImg.isValid()) return false;
  const SubImg& memory = memoryImg.getSubImg();
  if (memory.getDataType() != block.getDataType()) return false;
  const SubImgBox wanted = SubImgBox::intersect(block.getBox(), group.outImg.getBoxFromImgExt());
  if (SubImgBox::intersect(memory.getBox(), wanted) != wanted) return false;
  block.copySubImage(memory, ScaleShiftData());
  page.setPriority(0);
  return true;
}

// If the inputs of the last record have made the page that stands in for its own, that page takes its place.
void takeBypassedPage(const PageGroup& group, VXint64 id) {
  if (!group.tryBypass || group.hasNoOutput) return;
  CachedBuffer* const input = group.outImg.getPage(id, PagedImg::BYPASSED_PAGE);
  if (!isReady(input)) return;
  input->lock();
  group.level.records().back()->releaseInputs();
  group.level.removeLastRecord();
  group.outImg.removePage(id, true);
}

void releaseInputs(const PageGroup& group) {
  for (ThreadDataClass* const record : group.level.records()) record->releaseInputs();
}

// A page that was not calculated stays in the image; it must not show what its memory held before.
void clearFailedPages(const PageGroup& group) {
  for (const ThreadDataClass* const record : group.level.records()) {
    CachedBuffer* const page = record->_outPage;
    if (record->_isCalculated || !isReady(page)) continue;
    std::memset(page->getData(), 0, static_cast<std::size_t>(page->getSize()));
  }
}

VXuint64 countCalculatedPages(const PageGroup& group) {
  const auto& records = group.level.records();
  return static_cast<VXuint64>(std::count_if(records.begin(), records.end(),
                                             [](const ThreadDataClass* record) { return record->_isCalculated; }));
}

void throwFirstErrorCode(const PageGroup& group) {
  for (const ThreadDataClass* const record : group.level.records()) {
    if (record->_errorCode != 0) throw int{record->_errorCode};
  }
}

void reportFailedGroup(const BaseOp& op, VXint32 numThreadErrors) {
  if (numThreadErrors > 0) {
    withComposedLabel([&] { return "Module " + op.whoAmI(true) + " called by Host::_calcPages:"; }, __FILE__, __LINE__,
                      [](const CallLabel& label) { report(VX_ERROR, label, VX_PAGE_CALCULATION_FAILED, ""); });
  }
  VXPrintAndNotifyFatal(__FILE__, __LINE__, VX_BAD_POINTER);
}

}  // namespace

void Host::_calcPages(BaseOp& op, PagedImg& outImg, VXint64 outIndex, const std::vector<VXint64>& ids, VXuint64 depth,
                      bool hasNoOutput) {
  const TraceFrame trace("source/vxHost:Host::_calcPages()");
  const RequestLevels::Scope level(*_levels);
  PageGroup group{op, outImg, outIndex, ids, depth, hasNoOutput, outImg.getBypassIndex() >= 0 && depth == 0, *level};
  try {
    for (std::size_t position = 0; position < ids.size(); ++position) _preparePage(group, position);
    _runChunks(group);
    _numPagesCalculated.fetch_add(countCalculatedPages(group), std::memory_order_relaxed);
    releaseInputs(group);
    _cache.flushCache();
    throwFirstErrorCode(group);
    clearFailedPages(group);  // where a module threw no error code, the request goes on
  } catch (...) {
    clearFailedPages(group);
    releaseInputs(group);
    reportFailedGroup(op, _numThreadErrors);
    throw;
  }
}

void Host::_preparePage(PageGroup& group, std::size_t position) {
  const VXint64 id = group.ids[position];
  if (lockExistingPage(group, id)) {
    _numPagesHit.fetch_add(1, std::memory_order_relaxed);
    return;
  }
  ThreadDataClass& record = addRecord(group, *this);
  record._outPage = &_makePage(group, id, *record._outSubImg);
  if (fillFromMemoryImg(group, *record._outSubImg, *record._outPage)) {
    group.level.removeLastRecord();
    return;
  }
  _initializePageData(record, position == 0, static_cast<unsigned long>(group.depth));
  takeBypassedPage(group, id);
}

// Makes the page, locked, and describes it in the block. New pages have the greatest priority, so as not to go first.
CachedBuffer& Host::_makePage(const PageGroup& group, VXint64 id, SubImg& block) {
  constexpr VXuint64 priority = 9;
  PagedImg& outImg = group.outImg;
  block.setImgProps(outImg);
  block.setBox(outImg.getPageBox(id));
  const VXuint64 bytes = group.hasNoOutput ? 0 : numBytesChecked(outImg.getDataType(), block.getBox());
  CachedBuffer& page =
      withMemory([&]() -> CachedBuffer& { return outImg._initPage(_cache, id, priority, bytes, nullptr, true); });
  block.setDataType(outImg.getDataType());
  block.setData(group.hasNoOutput ? nullptr : page.getData());
  return page;
}

}  // namespace vx
