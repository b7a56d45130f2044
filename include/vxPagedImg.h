/// \file vxPagedImg.h
/// The image of an output: its properties and its pages.

#ifndef VX_PAGED_IMG_H
#define VX_PAGED_IMG_H

#include "vxMedicalImageProperties.h"
#include "vxMemoryImg.h"
#include "vxScaleShiftData.h"
#include "vxSubImg.h"

#include <ostream>
#include <string>
#include <vector>

namespace vx {

class BaseOp;
class Cache;
class CachedBuffer;

/// An image that is cut into a regular grid of pages, and those of its pages that have been calculated.
///
/// A page is a block of voxels of one extent, the same for all pages; those at the far border reach past the image. Its
/// id is its position in the grid, x fastest and u slowest. Only the host makes pages, when tiles are requested; each
/// is a CachedBuffer that the image owns and whose memory the cache may take at any time unless it is locked. A change
/// of the extent of the image or of its pages drops all pages and clears the memory image.
///
/// Beside the pages the image has the state that the host found it in: a code, 0 for a valid image, and a text.
///
/// The image belongs to the thread that requests tiles. While that thread waits for others, these may call the constant
/// functions: the table of pages changes only before they start and after they end. Functions on one page take constant
/// time.
class VX_EXPORT PagedImg : public MedicalImageProperties {
 public:
  /// Where a page is looked for.
  enum BYPASS_TYPES : int {
    OWN_PAGE = 0,              ///< Among the pages of the image.
    OWN_OR_BYPASSED_PAGE = 1,  ///< There, and then among the pages of the input that stands in.
    BYPASSED_PAGE = 2          ///< Among the pages of the input that stands in.
  };

  /// An image of extent 0 without pages, out of date, in the state ::VX_IMAGE_NOT_CALCULATED.
  /// \param op module that the image belongs to, which must outlive it; null for a free-standing image.
  /// \param outIndex number of the output in the module, not tested.
  explicit PagedImg(BaseOp* op = nullptr, VXint64 outIndex = -1);

  /// Not supported: reports as fatal with ::VX_MISUSED_INTERFACE and makes a free-standing image.
  PagedImg(const PagedImg& other);
  /// Not supported: reports as fatal with ::VX_MISUSED_INTERFACE and changes nothing.
  PagedImg& operator=(const PagedImg& other);

  /// Destroys all pages, locked ones as well.
  ~PagedImg() override;

  /// Sets the extent of the image and drops all pages. If there would be more than 524288 pages, a warning with
  /// ::VX_BAD_PARAMETER goes out and another page extent is chosen.
  /// \param imgExt voxels in each dimension, not tested. \throw int ::VX_NO_MEMORY without memory for the table of
  /// pages,
  ///        which is then empty.
  void setImgExt(const TVector<VXint64>& imgExt) override;

  VX_CLASS_HEADER(PagedImg)

  /// The same with the extent of a box; its position doesn't matter.
  virtual void setImgExt(const SubImgBox& box);

  /// Copies the properties and the page extent of another image and drops all pages. Whether the image is up to date,
  /// its state, its processing controls and its memory image's control stay.
  virtual void setImgProps(const PagedImg& other);

  /// Sets the state. \param text explanation. \param code 0 for a valid image.
  virtual void setStateInfo(const std::string& text, int code);
  /// Sets the state with the description of its code.
  virtual void setStateInfoErrorCode(int code);
  /// \return the explanation of the state, which lives until the state changes.
  virtual const std::string& getStateInfoString() const;
  /// \return the code of the state.
  virtual int getStateInfoErrorCode() const;

  /// Sets the extent of a page and drops all pages; too many are treated as setImgExt() does.
  /// \param pageExt voxels in each dimension. A component below 1 is reported as fatal with ::VX_BAD_PARAMETER, and the
  ///        extent becomes 128, 128, 1, 1, 1, 1.
  void setPageExt(const TVector<VXint64>& pageExt);
  /// \return voxels of a page in each dimension.
  const TVector<VXint64>& getPageExt() const noexcept { return _pageExt; }
  /// \return distances in page ids between neighbours in each dimension.
  const TVector<VXint64>& getPageStride() const noexcept { return _pageStride; }
  /// \return number of pages along each dimension.
  const TVector<VXint64>& getPagesPerDim() const noexcept { return _pagesPerDim; }
  /// \return number of page ids, which run from 0.
  VXint64 getNumPages() const noexcept { return _numPages; }

  /// \return the module, null for a free-standing image.
  BaseOp* getOp() const noexcept { return _op; }
  /// \return number of the output in the module.
  VXint64 getOutIndex() const noexcept { return _outIndex; }
  /// \return index of the input whose block may share memory with an output page, -1 for none.
  VXint64 getInplaceIndex() const noexcept { return _inplaceIndex; }
  /// \return index of the input whose pages stand in for those of the image, -1 for none.
  VXint64 getBypassIndex() const noexcept { return _bypassIndex; }
  /// \return whether no page was made since the pages were last cleared.
  bool areNoPagesCalculated() const noexcept { return _noPagesCalculated; }
  /// \return the memory image, which lives as long as the image.
  MemoryImg& getMemoryImg() noexcept { return _memoryImg; }
  /// \copydoc getMemoryImg()
  const MemoryImg& getMemoryImg() const noexcept { return _memoryImg; }

  /// Finds a page. A page of the input that stands in counts only while it is initialised, and an input that has others
  /// stand in for it is not asked further.
  /// \param id the page, which must be from 0 to below getNumPages(), not tested. \param type where to look.
  /// \return the page, which the image owns and which may be without memory, or null.
  CachedBuffer* getPage(VXint64 id, BYPASS_TYPES type) const;
  /// \return the first voxel of a page. \throw int ::VX_BAD_POINTER after a fatal report if there is no such page.
  void* getPageData(VXint64 id, BYPASS_TYPES type) const;
  /// \param id as for getPage(). \return 1 if the image has that page itself, with memory, else 0.
  VXint64 isValidPage(VXint64 id) const;
  /// \return bytes of all own pages that have memory, cut to 32 bits. Cost: linear in the number of pages.
  VXuint32 getPageMemorySize() const;

  /// \return the region of a page, not cut to the image. A bad id is reported as fatal with ::VX_BAD_PAGE_ID and gives
  /// an
  ///         empty box.
  SubImgBox getPageBox(VXint64 id) const;

  /// Finds the pages that cover a region. \param ids takes them in ascending order, and none where the region and the
  /// image have nothing in common. \param box region in image coordinates, may reach past the image.
  void getPageIDs(std::vector<VXint64>& ids, const SubImgBox& box) const;
  /// The same for any image. \param ids,box as above. \param imgExt extent of the image. \param pageExt extent of its
  /// pages, above 0.
  static void getPageIDs(std::vector<VXint64>& ids, const SubImgBox& box, const TVector<VXint64>& imgExt,
                         const TVector<VXint64>& pageExt);

  /// Gives a page memory, and makes the page if it isn't there.
  /// \param cache the cache that the page is registered in, which must outlive the page's stay in it.
  /// \param id as for getPage(). \param priority 0 to 9. \param size bytes.
  /// \param data memory from VXAlloc(), which the page owns from then on; null to have it allocated.
  /// \throw int ::VX_NO_MEMORY without memory.
  void initPage(Cache& cache, VXint64 id, VXuint64 priority, VXuint64 size, void* data);
  /// Destroys an own page. \param id as for getPage(). \param removeAlsoIfLocked false spares a locked page.
  void removePage(VXint64 id, bool removeAlsoIfLocked);
  /// Destroys all own pages, locked ones as well.
  void clearPageList();
  /// The same, and clears the memory image unless that is under manual control.
  void clearPageListAndMemoryImg();

  /// Copies pages into a block, as far as they overlap it, with conversion to its type.
  /// \param ids the pages. A page without memory is reported as fatal with ::VX_BAD_PARAMETER and skipped.
  /// \param dest the block. \param scaleShift mapping of the values. \param type where to look for pages.
  /// \throw int ::VX_BAD_POINTER, after a fatal report, for an id without a page and for a null block.
  void copyPages(const std::vector<VXint64>& ids, SubImg* dest, const ScaleShiftData& scaleShift,
                 BYPASS_TYPES type) const;

  /// \name Tiles
  /// See BaseOp::getTile(). A free-standing image reports as fatal, and the result is ::VX_MISUSED_INTERFACE.
  ///@{

  /// \param box region. \param dataType type of the tile's voxels. \param data pointer to the memory, or to null for a
  ///        tile that goes back through freeTile(). \param scaleShift mapping of the values. \return 0 or an error
  ///        code.
  int getTile(const SubImgBox& box, int dataType, void** data,
              const ScaleShiftData& scaleShift = ScaleShiftData()) const;
  /// \param subImg block to be filled. \param scaleShift mapping of the values. \return 0 or an error code.
  int getTile(SubImg& subImg, const ScaleShiftData& scaleShift = ScaleShiftData()) const;
  /// \param box,dataType,scaleShift as above. \param cachedBuffer takes the tile. \return 0 or an error code.
  int getTile(const SubImgBox& box, int dataType, CachedBuffer& cachedBuffer,
              const ScaleShiftData& scaleShift = ScaleShiftData()) const;
  ///@}
  /// Frees a tile. A free-standing image reports as fatal with ::VX_MISUSED_INTERFACE and frees it all the same.
  /// \param data the tile, or null.
  void freeTile(void* data) const;

  /// Prints the voxels of an own page as those of a SubImg. \throw int ::VX_BAD_POINTER if there is no such page.
  void printPageData(VXint64 id, std::ostream& stream) const;
  /// Prints which pages have memory, as a grid of 0 and 1.
  void printPages(std::ostream& stream) const;

 protected:
  BaseOp* _op;                      ///< Owning module, null for a free-standing image.
  VXint64 _outIndex;                ///< Number of the output in the module.
  TVector<VXint64> _pageExt;        ///< Voxels of a page in each dimension.
  TVector<VXint64> _pageStride;     ///< Distances in page ids, all 0 before the first extent is set.
  TVector<VXint64> _pagesPerDim;    ///< Pages along each dimension.
  VXint64 _numPages = 0;            ///< Length of `_pages`.
  CachedBuffer** _pages = nullptr;  ///< One entry for each page id, or null; owned, as are the pages.
  VXint64 _inplaceIndex = -1;       ///< Input whose block may share memory with an output page, -1 for none.
  VXint64 _bypassIndex = -1;        ///< Input whose pages stand in for those of the image, -1 for none.
  bool _noPagesCalculated = true;   ///< Whether no page was made since the pages were last cleared.
  MemoryImg _memoryImg;             ///< The memory image.
  std::string _stateInfoString;     ///< Explanation of the state.
  VXint32 _stateInfoErrorCode;      ///< Code of the state, 0 for a valid image.

 private:
  friend class BaseOp;
  friend class Host;

  // Cuts the image into pages anew, after a change of an extent.
  void _updateAll();
  // Makes a table for a number of pages; all entries are null.
  void _reallocPages(VXint64 count);
  void _deletePageList();
  bool _isPageID(VXint64 id) const noexcept;
  // As initPage(); the page may begin locked.
  CachedBuffer& _initPage(Cache& cache, VXint64 id, VXuint64 priority, VXuint64 size, void* data, bool isLocked);
  // A page as a block, without data unless the page has memory for all of its voxels.
  SubImg _wrapPage(VXint64 id, BYPASS_TYPES type) const;
  // Runs a tile request, unless the image is free-standing, which is reported.
  template <class Request>
  int _requestTile(const char* label, const Request& request) const;
};

/// Prints the properties and the members, one a line.
VX_EXPORT std::ostream& operator<<(std::ostream& stream, const PagedImg& image);

}  // namespace vx

#endif
