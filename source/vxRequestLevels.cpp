#include "vxRequestLevels.h"

#include "vxBaseOp.h"
#include "vxCachedBuffer.h"
#include "vxPagedImg.h"
#include "vxProcessingGuards.h"

#include <utility>

namespace vx {

void InputPageData::reset() {
  _inImg = nullptr;
  _pageIDs.clear();
  _readMemoryImg = nullptr;
}

void InputPageData::readMemoryImg(MemoryImg& memoryImg) {
  _readMemoryImg = &memoryImg;
  memoryImg.addReader();
}

void InputPageData::release() {
  while (!_pageIDs.empty()) {
    CachedBuffer* const page = _inImg->getPage(_pageIDs.back(), PagedImg::OWN_OR_BYPASSED_PAGE);
    _pageIDs.pop_back();
    if (page && page->getCache()) page->unlock();  // a module may have cleared the pages of its input
  }
  if (_readMemoryImg) std::exchange(_readMemoryImg, nullptr)->removeReader();
}

void ThreadDataClass::assign(BaseOp* op, PagedImg* outImg, VXint64 outIndex, SubImg* outSubImg, CachedBuffer* outPage,
                             Host* host) {
  _op = op;
  _outImg = outImg;
  _outIndex = outIndex;
  _outSubImg = outSubImg;
  _outPage = outPage;
  _host = host;
  _numInputs = op->getInputNum();
  withMemory([this] {
    _inputData.resize(static_cast<std::size_t>(_numInputs));
    _inSubImgs.resize(static_cast<std::size_t>(_numInputs));
  });
  for (InputPageData& input : _inputData) input.reset();
  _threadHandle = {};
  _hasHandle.store(false, std::memory_order_relaxed);
  _numPagesInChunk = 0;
  _errorCode = 0;
  _isCalculated = false;
  _run = nullptr;
}

void ThreadDataClass::releaseInputs() {
  for (InputPageData& input : _inputData) input.release();
}

RequestLevel::Page& RequestLevel::_next() {
  if (_pages.size() == _records.size()) _pages.push_back(std::make_unique<Page>());
  return *_pages[_records.size()];
}

ThreadDataClass& RequestLevel::addRecord() {
  ThreadDataClass& record = _next().record;
  _records.push_back(&record);
  return record;
}

void RequestLevel::clear() {
  _records.clear();
  if (_pages.size() > _numPagesKept) _pages.resize(_numPagesKept);
}

RequestLevel& RequestLevels::_enter() {
  if (_levels.size() == _numUsed) _levels.push_back(std::make_unique<RequestLevel>());
  return *_levels[_numUsed++];
}

void RequestLevels::_leave() {
  _levels[--_numUsed]->clear();
  if (_numUsed == 0 && _levels.size() > _numLevelsKept) _levels.resize(_numLevelsKept);
}

RequestLevels::Scope::Scope(RequestLevels& levels)
    : _levels(levels), _level(withMemory([&levels]() -> RequestLevel& { return levels._enter(); })) {}

RequestLevels::Scope::~Scope() { _levels._leave(); }

}  // namespace vx
