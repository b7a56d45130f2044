// The work space of requests: records and lists that one request leaves to the next.

#ifndef VX_REQUEST_LEVELS_H
#define VX_REQUEST_LEVELS_H

#include "vxThreadDataClass.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace vx {

/// The work space for the pages of one group.
class RequestLevel {
 public:
  /// \return the block for a page that is not a record yet. \throw std::bad_alloc
  SubImg& nextBlock() { return _next().block; }
  /// Makes the page of nextBlock() a record. \throw std::bad_alloc
  ThreadDataClass& addRecord();
  /// Takes the last record back.
  void removeLastRecord() { _records.pop_back(); }

  /// \return the records, in the order of their pages.
  const std::vector<ThreadDataClass*>& records() const { return _records; }
  /// \copydoc records()
  std::vector<ThreadDataClass*>& records() { return _records; }

  std::vector<VXint64> ids;         ///< For the pages of a tile.
  std::vector<VXint64> idsOfGroup;  ///< For the pages of one of its groups.

  /// Forgets the records; what is more than a usual group needs is freed.
  void clear();

 private:
  struct Page {
    SubImg block;
    ThreadDataClass record;
  };
  static constexpr std::size_t _numPagesKept = 256;

  Page& _next();

  std::vector<std::unique_ptr<Page>> _pages;  // those of the records, then free ones
  std::vector<ThreadDataClass*> _records;
};

/// The levels of the requests of one host: one for each group that is being calculated, the requested one first and
/// inputs after it. Used like a stack, by one thread at a time.
class RequestLevels {
 public:
  /// Takes a level for the length of a scope.
  class Scope {
   public:
    /// \throw int ::VX_NO_MEMORY, after a fatal report.
    explicit Scope(RequestLevels& levels);
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

    RequestLevel& operator*() const { return _level; }
    RequestLevel* operator->() const { return &_level; }

   private:
    RequestLevels& _levels;
    RequestLevel& _level;
  };

 private:
  static constexpr std::size_t _numLevelsKept = 64;

  RequestLevel& _enter();
  void _leave();

  std::vector<std::unique_ptr<RequestLevel>> _levels;  // those in use, then free ones
  std::size_t _numUsed = 0;
};

}  // namespace vx

#endif
