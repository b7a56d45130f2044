/// \file vxImageProperties.h
/// What an image is: its extent, its voxel type and the range of its values.

#ifndef VX_IMAGE_PROPERTIES_H
#define VX_IMAGE_PROPERTIES_H

#include "vxRuntime.h"
#include "vxSubImgBox.h"
#include "vxVector.h"

namespace vx {

/// Extent in the six dimensions x, y, z, c, t, u, voxel type, and range of voxel values of an image.
///
/// Nothing here holds the members together: an extent may be zero or negative, and the range is what the owner says,
/// neither computed from voxels nor put in order. An object belongs to one thread at a time; any number of threads may
/// read it. All functions take constant time and allocate nothing.
class VX_EXPORT ImageProperties {
 public:
  /// Extent 0 in all dimensions, type ::VXuint8Type, values from 0 to 0, out of date.
  ImageProperties() = default;

  /// Takes all properties as they are; the image is out of date.
  /// \param imgExt voxels in each dimension. \param dataType voxel type, not tested.
  /// \param minVoxelValue,maxVoxelValue range of the values, held as `double`.
  ImageProperties(const TVector<VXint64>& imgExt, VXDataType dataType, long double minVoxelValue,
                  long double maxVoxelValue);

  /// Copies everything, whether the image is up to date included.
  ImageProperties(const ImageProperties& other) = default;
  /// \copydoc ImageProperties(const ImageProperties&)
  ImageProperties& operator=(const ImageProperties& other) = default;

  virtual ~ImageProperties();

  /// Sets the extent. \param imgExt voxels in each dimension, not tested.
  virtual void setImgExt(const TVector<VXint64>& imgExt);

  /// Sets the voxel type. An invalid one is reported as fatal with ::VX_BAD_PARAMETER, and the type becomes
  /// ::VXuint8Type.
  virtual void setDataType(int dataType);

  /// \return whether the properties are valid.
  virtual bool isUpToDate() const;
  /// Declares the properties valid.
  virtual void setUpToDate();
  /// Declares the properties invalid; they stay readable.
  virtual void setOutOfDate();

  VX_ROOT_CLASS_HEADER(ImageProperties)

  /// Copies everything but whether the image is up to date. A subclass that overrides a setter isn't asked.
  void setImgProps(const ImageProperties& other);

  /// Compares all members. Two bounds of the range are equal if they differ by less than the smallest normal `double`;
  /// infinities and NaN therefore differ from themselves.
  bool operator==(const ImageProperties& other) const;
  /// \return the negation of operator==().
  bool operator!=(const ImageProperties& other) const { return !(*this == other); }

  /// \return voxels in each dimension.
  const TVector<VXint64>& getImgExt() const { return _imgExt; }
  /// \return the box from the origin with the extent of the image; empty if a component of the extent is below 1.
  SubImgBox getBoxFromImgExt() const { return SubImgBox(TVector<VXint64>(), _imgExt - TVector<VXint64>(1)); }

  /// \return the voxel type.
  VXDataType getDataType() const { return _dataType; }

  /// \return the smallest value of a voxel.
  VXldouble getMinVoxelValue() const { return _minVoxelValue; }
  /// \return the greatest value of a voxel.
  VXldouble getMaxVoxelValue() const { return _maxVoxelValue; }
  /// Sets the smallest value of a voxel, held as `double`.
  void setMinVoxelValue(long double value) { _minVoxelValue = static_cast<VXldouble>(value); }
  /// Sets the greatest value of a voxel, held as `double`.
  void setMaxVoxelValue(long double value) { _maxVoxelValue = static_cast<VXldouble>(value); }

 protected:
  VXDataType _dataType = VXuint8Type;  ///< Voxel type.
  TVector<VXint64> _imgExt;            ///< Voxels in each dimension.
  VXldouble _minVoxelValue = 0;        ///< Smallest value of a voxel.
  VXldouble _maxVoxelValue = 0;        ///< Greatest value of a voxel.
  bool _isUpToDate = false;            ///< Whether the properties are valid.
};

}  // namespace vx

#endif
