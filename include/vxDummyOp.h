/// \file vxDummyOp.h
/// The module that stands in for open and invalid inputs.

#ifndef VX_DUMMY_OP_H
#define VX_DUMMY_OP_H

#include "vxBaseOp.h"

namespace vx {

/// A module without inputs whose only output is an image of one voxel, of type ::VXuint8Type and with the value 0.
///
/// One instance serves the whole process: a module whose BaseOp::handleInput() accepts an open input gets its image.
/// The library makes it at start-up, before any other module, and deletes it at shutdown.
class VX_EXPORT DummyOp : public BaseOp {
 public:
  /// Makes a module and its image valid. A failure of that is reported as fatal with ::VX_IMAGE_INVALID.
  DummyOp();

  /// Not supported: reports as fatal with ::VX_MISUSED_INTERFACE and makes a module of its own.
  DummyOp(const DummyOp& other);
  /// Not supported: reports as fatal with ::VX_MISUSED_INTERFACE and changes nothing.
  DummyOp& operator=(const DummyOp& other);

  ~DummyOp() override;

  VX_CLASS_HEADER(DummyOp)

  void calcOutImageProps(int outIndex) override;
  /// \return an empty box.
  SubImgBox calcInSubImageBox(int inIndex, const SubImgBox& outSubImgBox, int outIndex) override;
  using BaseOp::calcOutSubImage;
  /// Fills the block with 0. \throw int ::VX_BAD_POINTER, after a fatal report, for a null block.
  void calcOutSubImage(SubImg* outSubImg, int outIndex, SubImg* inSubImgs) override;

  /// Not supported: reports as fatal with ::VX_MISUSED_INTERFACE and changes nothing.
  virtual void setOutOfDate();
  /// Not supported: reports as fatal with ::VX_MISUSED_INTERFACE and changes nothing.
  virtual void setImgProps(const PagedImg& image);

  /// \return the one instance, made by the first call. \throw int ::VX_NO_MEMORY without memory.
  static DummyOp* getGlobalInstance();
  /// \return the image of the one instance, see getGlobalInstance().
  static PagedImg* getGlobalOutImg();
  /// Deletes the one instance, at shutdown. A later request makes another.
  static void destroyDummyOp();

 private:
  // Makes the one instance if it isn't there, or deletes it. \return the instance, or null.
  static DummyOp* _dummyOpManager(bool destroy);
};

}  // namespace vx

#endif
