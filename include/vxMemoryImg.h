/// \file vxMemoryImg.h
/// A region of an image that is held in memory as a whole.

#ifndef VX_MEMORY_IMG_H
#define VX_MEMORY_IMG_H

#include "vxRuntime.h"
#include "vxSubImg.h"

#include <string>

namespace vx {

class BaseOp;

/// One block of voxels beside the pages of an output: the input of a module that wants it whole, or the whole image of
/// a module that keeps its results itself.
///
/// It owns the voxels of its block: they come from VXAlloc() and go with the object. A block whose voxels are not
/// filled is not valid. No function locks; the object belongs to the thread that requests tiles, and other threads may
/// read the voxels meanwhile.
class VX_EXPORT MemoryImg {
 public:
  /// An empty block, not valid, not under manual control.
  MemoryImg() = default;
  MemoryImg(const MemoryImg&) = delete;
  MemoryImg& operator=(const MemoryImg&) = delete;

  /// Frees the voxels, also under manual control.
  virtual ~MemoryImg();

  VX_ROOT_CLASS_HEADER(MemoryImg)

  /// Provides memory for a region and fills it with a tile of an output. Memory of the same number of bytes is kept
  /// with its contents.
  /// \param op module of the output; null only provides memory. \param outIndex the output.
  /// \param box region in image coordinates; an empty one frees the memory. \param dataType voxel type.
  /// \return 0 if the block is now valid. ::VX_NO_MEMORY, after a fatal report, leaves an empty block.
  ///         ::VX_BAD_MODULE_POINTER for a null module or a region without voxels; nothing is reported. Any other code
  ///         is that of BaseOp::getTile(). The block is not valid in all these cases.
  int update(BaseOp* op, VXint64 outIndex, const SubImgBox& box, int dataType);

  /// Frees the memory, and the block is empty and not valid. Under manual control nothing happens.
  void clearMemoryImg();

  /// \return whether the block holds the voxels of its region.
  bool isValid() const noexcept { return _valid; }
  /// Declares the block filled, or not.
  void setValid(bool valid) noexcept { _valid = valid; }

  /// \return whether a module controls the block, so that the library neither clears nor fills it.
  bool getManualControl() const noexcept { return _manualControl; }
  /// Takes the block under the control of a module, or gives it back.
  void setManualControl(bool manualControl) noexcept { _manualControl = manualControl; }

  /// \return region, voxel type and voxels. Its pointer is the image's own: it may be read but not replaced.
  SubImg& getSubImg() noexcept { return _subImg; }
  /// \copydoc getSubImg()
  const SubImg& getSubImg() const noexcept { return _subImg; }

  /// A request reads the voxels from here on. The host doesn't provide other memory while there are readers.
  void addReader() noexcept { ++_numReaders; }
  /// Takes back one addReader().
  void removeReader() noexcept { --_numReaders; }
  /// \return whether a request reads the voxels.
  bool hasReaders() const noexcept { return _numReaders > 0; }

  /// \return the bytes of the block, cut to 32 bits; 0 without memory.
  VXuint32 getMemoryImgSize() const;

  /// \return the state as text for messages, at most 499 characters.
  std::string getAsString() const;

 protected:
  SubImg _subImg;               ///< Region, voxel type and voxels, which are owned.
  bool _valid = false;          ///< Whether the memory holds the region's voxels.
  bool _manualControl = false;  ///< Whether a module controls the block.

 private:
  // Bytes of the memory; 0 without.
  VXuint64 _numBytes() const;
  // Bytes of a region; saturates.
  static VXuint64 _numBytes(VXuint32 voxelSize, const SubImgBox& box);

  VXint64 _numReaders = 0;  // what requests read it
};

}  // namespace vx

#endif
