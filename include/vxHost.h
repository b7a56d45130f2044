/// \file vxHost.h
/// The host: calculates images on demand, and connects a running calculation with the application.

#ifndef VX_HOST_H
#define VX_HOST_H

#include "vxCache.h"
#include "vxMutex.h"
#include "vxRuntime.h"
#include "vxScaleShiftData.h"
#include "vxSubImgBox.h"
#include "vxTypes.h"

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <ostream>
#include <vector>

namespace vx {

class BaseOp;
class CachedBuffer;
class ChunkRun;
class Field;
class PagedImg;
class RequestLevels;
class SubImg;
class ThreadDataClass;
struct PageGroup;

/// Delivers boxes of voxels (tiles) of the outputs of a network of modules.
///
/// For a tile the host brings the image properties up to date from the inputs of the network towards the requested
/// output, finds the pages that cover the box, takes those that the cache still holds, and calculates the others depth
/// first through the network. Pages are calculated on up to getMaxNumThreads() threads where the module supports that.
/// Boxes are in voxels of the image, in the order x, y, z, c, t, u, with both corners inclusive.
///
/// Module libraries and applications use the default host, see getDefaultHost(). A host may be used by one thread at a
/// time. Only what runs inside a calculation may request tiles while it lasts: BaseOp::calcOutSubImage(), also on a
/// worker thread, where requests are served one after the other.
///
/// All failures come as error codes, 0 is success; a failure that was thrown has been reported. While exception
/// handling is off (VXIsExceptionHandlingEnabled()), exceptions of modules that aren't error codes pass to the caller.
/// On every path the state of notifications, the counter of isProcessingActive() and the cache are put in order. A
/// failure leaves the pages of the group that failed in the image, locked; one whose calculation failed is all zeros.
/// They go when the page list of the image is cleared.
class VX_EXPORT Host {
 public:
  /// Called to show that a calculation goes on. \param userData as registered. \param info1,info2 what runs, and what
  /// it does.
  using ProgressCB = void (*)(void* userData, const char* info1, const char* info2);
  /// Called to ask the application. \param userData as registered. \param field null: the result says whether to stop
  /// (not 0). Otherwise takes the notify field that was pressed, a vx::Field, and the result doesn't count.
  using BreakCheckCB = int (*)(void* userData, void** field);

  /// Makes a host with an empty cache of its own, no callbacks, and 2 threads.
  Host();
  /// Not supported: reports as fatal with ::VX_MISUSED_INTERFACE and makes a host as Host().
  Host(const Host& other);
  /// Not supported: reports as fatal with ::VX_MISUSED_INTERFACE and changes nothing.
  Host& operator=(const Host& other);
  /// Clears the cache: all pages that it holds lose their memory, locked ones as well.
  virtual ~Host();

  VX_ROOT_CLASS_HEADER(Host)

  /// \name Tiles
  ///@{

  /// Delivers a tile into memory.
  /// \param op,outIndex the output. \param box the tile; voxels outside the image are left as they are, unless a page
  ///        reaches there.
  /// \param dataType voxel type of the tile. Voxels are converted to it as by SubImg::copySubImage().
  /// \param data the tile's memory, enough for the box; if it points to null, memory is allocated and stored, also when
  ///        the calculation fails later, and goes back through freeTile().
  /// \param scaleShift mapping of the values.
  /// \return 0 or an error code: ::VX_BAD_OUTPUT_INDEX; ::VX_NO_MEMORY, also for a tile whose size isn't representable;
  ///         what updateImageProps() says; the code of the module that failed. After a failure the tile is incomplete.
  int getTile(BaseOp& op, VXint64 outIndex, SubImgBox box, int dataType, void** data,
              const ScaleShiftData& scaleShift = ScaleShiftData());
  /// Delivers a tile into a block, which says box and voxel type. Its other properties become those of the image.
  /// \param op,outIndex,scaleShift as above. \param subImg the block; if it has no data, it gets memory that goes back
  ///        through freeTile(). \return as above.
  int getTile(BaseOp& op, VXint64 outIndex, SubImg& subImg, const ScaleShiftData& scaleShift = ScaleShiftData());
  /// Delivers a tile into a buffer that the cache of this host accounts for.
  /// \param op,outIndex,box,dataType,scaleShift as above. \param buffer initialised here with priority 0, not locked.
  /// \return as above.
  int getTile(BaseOp& op, VXint64 outIndex, SubImgBox box, int dataType, CachedBuffer& buffer,
              const ScaleShiftData& scaleShift = ScaleShiftData());

  /// Gives back a tile that getTile() allocated. \param data null is ignored.
  void freeTile(void* data);

  /// Runs a module over all pages of a box, for modules that collect results. Its pages are calculated anew, and stay
  /// locked until the page list is cleared. Without an output they have no memory.
  /// \param op the module. \param outIndex the output whose pages are calculated, or -1.
  /// \param inIndex the input whose image gives the pages if `outIndex` is -1, else -1.
  /// \param box pages outside it are left out; an empty one stands for the whole image.
  /// \return 0 or an error code: ::VX_BAD_OUTPUT_INDEX or ::VX_BAD_INPUT_INDEX for bad indices, ::VX_OPEN_INPUT or
  ///         ::VX_IMAGE_NOT_CALCULATED for an input without a valid image, and those of getTile().
  int processAllPages(BaseOp& op, VXint64 outIndex, VXint64 inIndex, SubImgBox box);
  ///@}

  /// Brings the properties of an image up to date, upward through the network. No voxel is calculated; for an image
  /// that is up to date it costs one test.
  /// \param op,outIndex the output. \return 0 or an error code, which is the code of the image's state as well:
  /// ::VX_BAD_OUTPUT_INDEX, ::VX_NO_DEFAULT_VALUE if there is no image, ::VX_OPEN_NETWORK, ::VX_CYCLIC_NETWORK,
  /// ::VX_IMAGE_NOT_CALCULATED, ::VX_MISUSED_INTERFACE, ::VX_PROPERTY_CALCULATION_FAILED, ::VX_BAD_IMAGE_EXTENT,
  /// ::VX_REQUIRED_OPERATIONS_MISSING, or what the module threw.
  int updateImageProps(BaseOp& op, VXint64 outIndex);

  /// \name Progress
  ///@{

  /// Stores a callback and sends notification 0x100004. \param userData passed to it. \param cb null for none.
  void setProgressCB(void* userData, ProgressCB cb);
  /// \return the callback, or null.
  ProgressCB getProgressCB() const { return _progressCB; }
  /// \return what is passed to the callback.
  void* getProgressCBUserData() const { return _progressCBUserData; }
  /// Calls the callback if there is one, on the calling thread.
  void updateProgress(const char* info1, const char* info2) const;
  ///@}

  /// \name Break check
  ///@{

  /// Stores a callback and sends notification 0x100002. Modules may ask on worker threads, so it must bear that.
  /// \param userData passed to it. \param cb null for none.
  void setBreakCheckCB(void* userData, BreakCheckCB cb);
  /// \return the callback, or null.
  BreakCheckCB getBreakCheckCB() const { return _breakCheckCB; }
  /// \return what is passed to the callback.
  void* getBreakCheckCBUserData() const { return _breakCheckCBUserData; }
  /// \return whether the application wants the calculation to stop; false without a callback.
  bool shouldTerminate() const;
  /// \return the field that was pressed during the calculation, or null.
  Field* getPressedNotifyField() const;
  ///@}

  /// \name Threads
  ///@{

  /// Sets the greatest number of threads of a calculation; a change sends notification 0x100001.
  /// \param numThreads any number; 0 counts as 1, and there are never more threads than pages to be calculated.
  void setMaxNumThreads(VXuint32 numThreads);
  /// \return the number as it was set.
  VXuint32 getMaxNumThreads() const { return _maxNumThreads; }
  ///@}

  /// \name State of processing
  ///@{

  /// \return how many property updates and requests are running inside each other; 0 if none is.
  VXuint32 isProcessingActive() const { return _processingActive.load(std::memory_order_relaxed); }
  /// Adds 1 to the counter.
  void _setProcessingActive();
  /// Subtracts 1 from the counter if it isn't 0.
  void _unsetProcessingActive();
  ///@}

  /// \name Figures
  ///@{

  /// \return the number of pages that modules have calculated since this host was made. From any thread.
  VXuint64 getNumPagesCalculated() const noexcept { return _numPagesCalculated.load(std::memory_order_relaxed); }
  /// \return how often a calculation found a page that it needed calculated already, since this host was made. From
  ///         any thread.
  VXuint64 getNumPagesHit() const noexcept { return _numPagesHit.load(std::memory_order_relaxed); }
  ///@}

  /// \return the cache of all pages that this host calculates.
  Cache& getCache() { return _cache; }
  /// \copydoc getCache()
  const Cache& getConstCache() const { return _cache; }

  /// \name Default host
  /// Not locked: one thread at a time.
  ///@{

  /// \return the host in use, made on the first call. \throw int ::VX_NO_MEMORY
  static Host& getDefaultHost();
  /// Deletes the default host. The next getDefaultHost() makes a new one.
  static void destroyDefaultHost();
  /// Makes a new host, with a new cache and no callbacks, the default one and keeps the former on a stack.
  /// \return 0. \throw int ::VX_NO_MEMORY; nothing has changed then.
  static int pushDefaultHost();
  /// Makes the host on top of the stack the default one again and deletes the one that was in use.
  /// \return 0; ::VX_EMPTY_STACK; ::VX_BAD_INTERNAL_POINTER if there was no host at the push, and then the one in use
  ///         stays.
  static int popDefaultHost();
  ///@}

  /// Writes callbacks, number of threads, state and cache, each with a head of its own.
  friend VX_EXPORT std::ostream& operator<<(std::ostream& stream, const Host& host);

 private:
  // Property update.
  int _updateImageProps(BaseOp& op, VXint64 outIndex);
  int _updateInputs(BaseOp& op, PagedImg& img);
  int _updateOutput(BaseOp& op, VXint64 outIndex, PagedImg& img);
  int _calcOutput(BaseOp& op, VXint64 outIndex, PagedImg& img);
  bool _requiredOperationsComplete(BaseOp& op, VXint64 outIndex);

  // The road of a tile, in the order of its stations. The request:
  int _getTileCore(BaseOp& op, VXint64 outIndex, const SubImgBox& box, int dataType, void* data,
                   const ScaleShiftData& scaleShift);
  int _processPagesHelper(BaseOp& op, VXint64 outIndex, const SubImgBox& box, int dataType, void* data,
                          const ScaleShiftData& scaleShift, bool isProcessAllPages, PagedImg& outImg);
  int _processGroups(BaseOp& op, VXint64 outIndex, SubImg& tile, const ScaleShiftData& scaleShift,
                     bool isProcessAllPages, PagedImg& outImg);
  int _processGroup(BaseOp& op, VXint64 outIndex, const std::vector<VXint64>& ids, SubImg& tile,
                    const ScaleShiftData& scaleShift, bool isProcessAllPages, PagedImg& outImg);
  // The pages of a group:
  void _calcPages(BaseOp& op, PagedImg& outImg, VXint64 outIndex, const std::vector<VXint64>& ids, VXuint64 depth,
                  bool hasNoOutput);
  void _preparePage(PageGroup& group, std::size_t position);
  CachedBuffer& _makePage(const PageGroup& group, VXint64 id, SubImg& block);
  // The inputs of a page:
  void _initializePageData(ThreadDataClass& data, bool isFirstPage, unsigned long depth);
  void _requestInput(ThreadDataClass& data, VXint64 inIndex, bool isFirstPage, unsigned long depth);
  // The chunks of the group, and one of them:
  void _runChunks(PageGroup& group);
  void _finishThreads(PageGroup& group, ChunkRun& run);
  static void _calcPagesMT(void* arg);

 protected:
  void* _progressCBUserData = nullptr;         ///< Passed to the progress callback.
  ProgressCB _progressCB = nullptr;            ///< The progress callback, or null.
  void* _breakCheckCBUserData = nullptr;       ///< Passed to the break check callback.
  BreakCheckCB _breakCheckCB = nullptr;        ///< The break check callback, or null.
  VXuint32 _maxNumThreads = 2;                 ///< As it was set, 0 as well.
  std::atomic<VXuint32> _processingActive{0};  ///< Updates and requests that run inside each other.
  Cache _cache;                                ///< The cache of all pages.

  /// Guards the counters of the runs whose chunks are being calculated; changes that others wait for are signalled. It
  /// is taken before the mutex of the table of voxel types and that of the cache, and never while one of these is held.
  Mutex _threadStateMutex;
  std::condition_variable_any _threadStateChanged;  ///< Signals those changes.

  /// Failures of the last run of the request that is under way; used by the thread that requests.
  VXint32 _numThreadErrors = 0;

  static Host* _defaultHost;                    ///< The default host, or null.
  static std::vector<Host*> _defaultHostStack;  ///< The default hosts before it, which may be null.

 private:
  // Memory that a request leaves to the next one; used by the thread that requests.
  std::unique_ptr<RequestLevels> _levels;

  // Modules may request tiles from worker threads, so the figures synchronise themselves.
  std::atomic<VXuint64> _numPagesCalculated{0};
  std::atomic<VXuint64> _numPagesHit{0};
};

}  // namespace vx

#endif
