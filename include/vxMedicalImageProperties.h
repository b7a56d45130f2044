/// \file vxMedicalImageProperties.h
/// Where an image lies in space, and what else is known about it.

#ifndef VX_MEDICAL_IMAGE_PROPERTIES_H
#define VX_MEDICAL_IMAGE_PROPERTIES_H

#include "vxDateTime.h"
#include "vxImageProperties.h"
#include "vxImagePropertyExtension.h"
#include "vxMat4.h"
#include "vxVec3.h"

#include <string>
#include <vector>

namespace vx {

class DicomTagList;

/// Image properties with voxel size, voxel-to-world matrix, DICOM tag list, information on the dimensions c, t and u,
/// and open-ended extensions.
///
/// Space: a voxel coordinate is a point of the continuous voxel grid, no half voxel is added anywhere, and the matrix
/// maps it to world coordinates as a column vector, from the left. Voxel size and matrix are kept in step: the size is
/// the length of the first three columns. Setting the size rescales these columns, setting the matrix recomputes the
/// size. The last row of the matrix becomes (0, 0, 0, 1) whenever the matrix or the size is set. The inverse is kept
/// beside the matrix; for a singular matrix, which is reported as an error with ::VX_BAD_PARAMETER by each function
/// that computes it, the identity stands there.
///
/// The tag list is held by a counted reference, all else by value. An object belongs to one thread at a time; any
/// number of threads may call its constant functions. A pointer argument that is null is a fatal error with
/// ::VX_BAD_POINTER, which is thrown, unless said otherwise. An exception that leaves a function, from the tag list or
/// for want of memory, is reported as fatal with ::VX_UNKNOWN_EXCEPTION and thrown on; members set before it keep their
/// new values.
class VX_EXPORT MedicalImageProperties : public ImageProperties {
 public:
  /// Voxel size 1, identity, no tag list, no infos and no extensions.
  MedicalImageProperties();

  /// Copies everything. The tag list is shared, and the voxel size is computed from the matrix.
  MedicalImageProperties(const MedicalImageProperties& other);
  /// As the copy constructor; does nothing for the object itself.
  MedicalImageProperties& operator=(const MedicalImageProperties& other);

  /// Removes the reference to the tag list. An exception of the list is reported and goes no further.
  ~MedicalImageProperties() override;

  VX_CLASS_HEADER(MedicalImageProperties)

  /// As operator=(), but whether this image is up to date stays.
  void setImgProps(const MedicalImageProperties& other);

  /// An object equals nothing but itself: any other object differs, even with the same contents. It differs from itself
  /// as well if a value doesn't compare equal to itself, such as NaN.
  bool operator==(const MedicalImageProperties& other) const;
  /// \return the negation of operator==().
  bool operator!=(const MedicalImageProperties& other) const { return !(*this == other); }

  // Voxel size -------------------------------------------------------------------------------------------------------

  /// Reads the size of a voxel in world units. \param x,y,z take the edge lengths.
  void getVoxelSize(float* x, float* y, float* z) const;
  /// \return the edge lengths of a voxel in world units.
  Tvec3<double> getVoxelSize() const;
  /// Sets the size of a voxel, after the repair of the matrix that setToWorldMatrix() tells. The columns of the matrix
  /// keep their direction and get the new length.
  /// \param x,y,z edge lengths in world units. A negative one turns its column around and is stored as it is. 0 empties
  /// its column, so that the matrix is singular until the next repair.
  void setVoxelSize(float x, float y, float z);
  /// The same. \param voxelSize edge lengths, rounded to single precision.
  void setVoxelSize(const Tvec3<double>& voxelSize);

  // Position in space ------------------------------------------------------------------------------------------------

  /// \return the voxel-to-world matrix, good as long as the object.
  const Tmat4<double>* getToWorldMatrix() const { return &_toWorldMatrix; }
  /// Reads the voxel-to-world matrix. \param m takes 16 values, row after row.
  void getToWorldMatrix(float* m) const;
  /// \return the world-to-voxel matrix, good as long as the object.
  const Tmat4<double>* getToVoxelMatrix() const { return &_toVoxelMatrix; }
  /// Reads the world-to-voxel matrix. \param m takes 16 values, row after row.
  void getToVoxelMatrix(float* m) const;

  /// Sets the voxel-to-world matrix, repairs it and computes the voxel size. The repair puts 1 on the diagonal where
  /// one of the first three columns or rows is zero in space, and (0, 0, 0, 1) in the last row. \param matrix the
  /// matrix, which is not tested for null; may be that of getToWorldMatrix().
  void setToWorldMatrix(const Tmat4<double>* matrix);
  /// The same. \param m 16 values, row after row, which is not tested for null.
  void setToWorldMatrix(float* m);
  /// Makes the voxel-to-world matrix the identity, and the voxel size 1.
  void setToWorldMatrixIdentity();

  /// \return whether the matrix means anything.
  bool isToWorldMatrixValid() const { return _isToWorldMatrixValid; }
  /// Says whether the matrix means anything. This changes nothing else.
  void setToWorldMatrixValid(bool isValid) { _isToWorldMatrixValid = isValid; }

  /// Maps a voxel coordinate to world coordinates, in place. \param x,y,z the point, in and out.
  void transformToWorldCoord(double* x, double* y, double* z) const;
  /// The same, computed in double precision.
  void transformToWorldCoord(float* x, float* y, float* z) const;
  /// Maps a voxel coordinate to world coordinates. \param in the point. \param out its image; may be the same object.
  void transformToWorldCoord(const Tvec3<double>& in, Tvec3<double>& out) const;

  /// Maps a world coordinate to voxel coordinates, in place. \param x,y,z the point, in and out.
  void transformToVoxelCoord(double* x, double* y, double* z) const;
  /// The same, computed in double precision.
  void transformToVoxelCoord(float* x, float* y, float* z) const;
  /// Maps a world coordinate to voxel coordinates. \param in the point. \param out its image; may be the same object.
  void transformToVoxelCoord(const Tvec3<double>& in, Tvec3<double>& out) const;

  /// Shifts the image, before the mapping to the world. The matrix is not repaired, and the voxel size stays.
  /// \param x,y,z shift in voxels.
  void translateImage(float x, float y, float z);
  /// Scales the image, before the mapping to the world, repairs the matrix and computes the voxel size.
  /// \param x,y,z factors; 0 leads to a repair, a negative one mirrors.
  void scaleImage(float x, float y, float z);

  // What else is known -----------------------------------------------------------------------------------------------

  /// \return the tag list, on which this object holds a reference; null if there is none.
  DicomTagList* getDicomTagList() const { return _dicomTagList; }
  /// Takes a reference on a tag list and removes the one on the list held so far. Setting the same list is safe.
  /// \param tagList the list, or null for none. It must not be an object defined constant, since it is counted.
  void setDicomTagList(const DicomTagList* tagList);

  /// \return the text for each c index, which may be fewer or more than the image has.
  std::vector<std::string>& getCDimInfos() { return _cDimInfos; }
  /// \return the time for each t index, which may be fewer or more than the image has.
  std::vector<DateTime>& getTDimInfos() { return _tDimInfos; }
  /// \return the text for each u index, which may be fewer or more than the image has.
  std::vector<std::string>& getUDimInfos() { return _uDimInfos; }
  /// \return the extensions.
  ImagePropertyExtensionContainer& getImagePropertyContainer() { return _imagePropertyContainer; }

  /// \copydoc getCDimInfos()
  const std::vector<std::string>& getConstCDimInfos() const { return _cDimInfos; }
  /// \copydoc getTDimInfos()
  const std::vector<DateTime>& getConstTDimInfos() const { return _tDimInfos; }
  /// \copydoc getUDimInfos()
  const std::vector<std::string>& getConstUDimInfos() const { return _uDimInfos; }
  /// \copydoc getImagePropertyContainer()
  const ImagePropertyExtensionContainer& getConstImagePropertyContainer() const { return _imagePropertyContainer; }

 protected:
  float _voxelSize[3] = {1, 1, 1};                              ///< Edge lengths of a voxel.
  DicomTagList* _dicomTagList = nullptr;                        ///< Counted reference, or null.
  Tmat4<double> _toWorldMatrix = Tmat4<double>::getIdentity();  ///< Voxel to world.
  Tmat4<double> _toVoxelMatrix = Tmat4<double>::getIdentity();  ///< World to voxel.
  bool _isToWorldMatrixValid = true;                            ///< Whether the matrix means anything.
  std::vector<std::string> _cDimInfos;                          ///< Text for each c index.
  std::vector<DateTime> _tDimInfos;                             ///< Time for each t index.
  std::vector<std::string> _uDimInfos;                          ///< Text for each u index.
  ImagePropertyExtensionContainer _imagePropertyContainer;      ///< Extensions.

 private:
  void correctToWorldMatrix();
  void updateVoxelSizeFromToWorldMatrix();
  void updateToWorldMatrixFromVoxelSize();
  void _assignMembers(const MedicalImageProperties& other);
};

}  // namespace vx

#endif
