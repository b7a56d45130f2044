#include "vxMedicalImageProperties.h"

#include "vxDicomTagList.h"
#include "vxGuards.h"
#include "vxTraceBuffer.h"

#include <cmath>
#include <limits>

namespace vx {

VX_CLASS_SOURCE(MedicalImageProperties, "ImageProperties")

namespace {

constexpr std::size_t numSpaceDims = 3;

bool isZero(double entry) { return std::abs(entry) < std::numeric_limits<double>::min(); }

double columnLength(const Tmat4<double>& matrix, std::size_t j) {
  return std::sqrt(matrix[0][j] * matrix[0][j] + matrix[1][j] * matrix[1][j] + matrix[2][j] * matrix[2][j]);
}

Tvec3<double> transformPoint(const Tmat4<double>& matrix, const Tvec3<double>& point) {
  return Tvec3<double>(matrix * Tvec4<double>(point[0], point[1], point[2], 1.0), true);
}

template <class T>
void transformInPlace(const Tmat4<double>& matrix, T* x, T* y, T* z) {
  checkFatal(x && y && z);
  const Tvec3<double> point = transformPoint(matrix, Tvec3<double>(*x, *y, *z));
  *x = static_cast<T>(point[0]);
  *y = static_cast<T>(point[1]);
  *z = static_cast<T>(point[2]);
}

}  // namespace

MedicalImageProperties::MedicalImageProperties() = default;

// Delegates, so that the destructor removes the reference to the tag list if a later member can't be copied.
MedicalImageProperties::MedicalImageProperties(const MedicalImageProperties& other) : MedicalImageProperties() {
  const TraceFrame trace("source/vxMedicalImageProperties:MedicalImageProperties::MedicalImageProperties()");
  guardedBlock([&] {
    ImageProperties::operator=(other);
    _assignMembers(other);
  });
}

MedicalImageProperties& MedicalImageProperties::operator=(const MedicalImageProperties& other) {
  const TraceFrame trace("source/vxMedicalImageProperties:MedicalImageProperties::operator=()");
  guardedBlock([&] {
    if (this == &other) return;
    ImageProperties::operator=(other);
    _assignMembers(other);
  });
  return *this;
}

MedicalImageProperties::~MedicalImageProperties() {
  const TraceFrame trace("source/vxMedicalImageProperties:MedicalImageProperties::~MedicalImageProperties()");
  try {
    guardedBlock([&] {
      if (_dicomTagList) _dicomTagList->unref();
    });
  } catch (...) {
    // Reported already; thrown on from here it would end the process.
  }
}

void MedicalImageProperties::setImgProps(const MedicalImageProperties& other) {
  const TraceFrame trace("source/vxMedicalImageProperties:MedicalImageProperties::setImgProps()");
  guardedBlock([&] {
    if (this == &other) return;
    ImageProperties::setImgProps(other);
    _assignMembers(other);
  });
}

bool MedicalImageProperties::operator==(const MedicalImageProperties& other) const {
  const TraceFrame trace("source/vxMedicalImageProperties:MedicalImageProperties::operator==()");
  return guardedBlock([&] {
    // Hosts see two distinct objects as different, whatever they hold.
    if (this != &other) return false;
    constexpr double tolerance = 0.001 * std::numeric_limits<float>::epsilon();
    for (std::size_t j = 0; j < numSpaceDims; ++j) {
      if (!(std::abs(double(_voxelSize[j]) - double(other._voxelSize[j])) < tolerance)) return false;
    }
    return _dicomTagList == other._dicomTagList && _toWorldMatrix == other._toWorldMatrix &&
           _toVoxelMatrix == other._toVoxelMatrix && _isToWorldMatrixValid == other._isToWorldMatrixValid &&
           _cDimInfos == other._cDimInfos && _tDimInfos == other._tDimInfos && _uDimInfos == other._uDimInfos &&
           _imagePropertyContainer == other._imagePropertyContainer;
  });
}

void MedicalImageProperties::getVoxelSize(float* x, float* y, float* z) const {
  const TraceFrame trace("source/vxMedicalImageProperties:MedicalImageProperties::getVoxelSize()");
  guardedBlock([&] {
    checkFatal(x && y && z);
    *x = _voxelSize[0];
    *y = _voxelSize[1];
    *z = _voxelSize[2];
  });
}

Tvec3<double> MedicalImageProperties::getVoxelSize() const { return Tvec3<double>(_voxelSize); }

void MedicalImageProperties::setVoxelSize(float x, float y, float z) {
  const TraceFrame trace("source/vxMedicalImageProperties:MedicalImageProperties::setVoxelSize()");
  guardedBlock([&] {
    _voxelSize[0] = x;
    _voxelSize[1] = y;
    _voxelSize[2] = z;
    updateToWorldMatrixFromVoxelSize();
  });
}

void MedicalImageProperties::setVoxelSize(const Tvec3<double>& voxelSize) {
  setVoxelSize(static_cast<float>(voxelSize[0]), static_cast<float>(voxelSize[1]), static_cast<float>(voxelSize[2]));
}

void MedicalImageProperties::getToWorldMatrix(float* m) const {
  const TraceFrame trace("source/vxMedicalImageProperties:MedicalImageProperties::getToWorldMatrix()");
  guardedBlock([&] {
    checkFatal(m);
    _toWorldMatrix.setValues(m);
  });
}

void MedicalImageProperties::getToVoxelMatrix(float* m) const {
  const TraceFrame trace("source/vxMedicalImageProperties:MedicalImageProperties::getToVoxelMatrix()");
  guardedBlock([&] {
    checkFatal(m);
    _toVoxelMatrix.setValues(m);
  });
}

void MedicalImageProperties::setToWorldMatrix(const Tmat4<double>* matrix) {
  const TraceFrame trace("source/vxMedicalImageProperties:MedicalImageProperties::setToWorldMatrix()");
  guardedBlock([&] {
    if (matrix != &_toWorldMatrix) _toWorldMatrix = *matrix;
    updateVoxelSizeFromToWorldMatrix();
  });
}

void MedicalImageProperties::setToWorldMatrix(float* m) {
  const TraceFrame trace("source/vxMedicalImageProperties:MedicalImageProperties::setToWorldMatrix()");
  guardedBlock([&] {
    const float* const values = m;  // The overload for an array that isn't constant writes it.
    _toWorldMatrix.setValues(values);
    updateVoxelSizeFromToWorldMatrix();
  });
}

void MedicalImageProperties::setToWorldMatrixIdentity() {
  const TraceFrame trace("source/vxMedicalImageProperties:MedicalImageProperties::setToWorldMatrixIdentity()");
  guardedBlock([&] {
    _toWorldMatrix = Tmat4<double>::getIdentity();
    updateVoxelSizeFromToWorldMatrix();
  });
}

void MedicalImageProperties::transformToWorldCoord(double* x, double* y, double* z) const {
  const TraceFrame trace("source/vxMedicalImageProperties:MedicalImageProperties::transformToWorldCoord()");
  guardedBlock([&] { transformInPlace(_toWorldMatrix, x, y, z); });
}

void MedicalImageProperties::transformToWorldCoord(float* x, float* y, float* z) const {
  const TraceFrame trace("source/vxMedicalImageProperties:MedicalImageProperties::transformToWorldCoord()");
  guardedBlock([&] { transformInPlace(_toWorldMatrix, x, y, z); });
}

void MedicalImageProperties::transformToWorldCoord(const Tvec3<double>& in, Tvec3<double>& out) const {
  const TraceFrame trace("source/vxMedicalImageProperties:MedicalImageProperties::transformToWorldCoord()");
  guardedBlock([&] { out = transformPoint(_toWorldMatrix, in); });
}

void MedicalImageProperties::transformToVoxelCoord(double* x, double* y, double* z) const {
  const TraceFrame trace("source/vxMedicalImageProperties:MedicalImageProperties::transformToVoxelCoord()");
  guardedBlock([&] { transformInPlace(_toVoxelMatrix, x, y, z); });
}

void MedicalImageProperties::transformToVoxelCoord(float* x, float* y, float* z) const {
  const TraceFrame trace("source/vxMedicalImageProperties:MedicalImageProperties::transformToVoxelCoord()");
  guardedBlock([&] { transformInPlace(_toVoxelMatrix, x, y, z); });
}

void MedicalImageProperties::transformToVoxelCoord(const Tvec3<double>& in, Tvec3<double>& out) const {
  const TraceFrame trace("source/vxMedicalImageProperties:MedicalImageProperties::transformToVoxelCoord()");
  guardedBlock([&] { out = transformPoint(_toVoxelMatrix, in); });
}

void MedicalImageProperties::translateImage(float x, float y, float z) {
  const TraceFrame trace("source/vxMedicalImageProperties:MedicalImageProperties::translateImage()");
  guardedBlock([&] {
    _toWorldMatrix = _toWorldMatrix * Tmat4<double>(1, 0, 0, x, 0, 1, 0, y, 0, 0, 1, z, 0, 0, 0, 1);
    _toVoxelMatrix = _toWorldMatrix.inverse(nullptr);
  });
}

void MedicalImageProperties::scaleImage(float x, float y, float z) {
  const TraceFrame trace("source/vxMedicalImageProperties:MedicalImageProperties::scaleImage()");
  guardedBlock([&] {
    _toWorldMatrix = _toWorldMatrix * Tmat4<double>(x, 0, 0, 0, 0, y, 0, 0, 0, 0, z, 0, 0, 0, 0, 1);
    updateVoxelSizeFromToWorldMatrix();
  });
}

void MedicalImageProperties::setDicomTagList(const DicomTagList* tagList) {
  const TraceFrame trace("source/vxMedicalImageProperties:MedicalImageProperties::setDicomTagList()");
  guardedBlock([&] {
    auto* const newList = const_cast<DicomTagList*>(tagList);
    // The new reference first: a list that is held already must not lose its last one in between.
    if (newList) newList->ref();
    if (_dicomTagList) _dicomTagList->unref();
    _dicomTagList = newList;
  });
}

void MedicalImageProperties::correctToWorldMatrix() {
  Tmat4<double>& m = _toWorldMatrix;
  for (std::size_t j = 0; j < numSpaceDims; ++j) {
    if (isZero(m[0][j]) && isZero(m[1][j]) && isZero(m[2][j])) m[j][j] = 1;
  }
  for (std::size_t i = 0; i < numSpaceDims; ++i) {
    if (isZero(m[i][0]) && isZero(m[i][1]) && isZero(m[i][2])) m[i][i] = 1;
  }
  m[3] = Tvec4<double>(0, 0, 0, 1);
  _toVoxelMatrix = m.inverse(nullptr);
}

void MedicalImageProperties::updateVoxelSizeFromToWorldMatrix() {
  correctToWorldMatrix();
  for (std::size_t j = 0; j < numSpaceDims; ++j) _voxelSize[j] = static_cast<float>(columnLength(_toWorldMatrix, j));
}

void MedicalImageProperties::updateToWorldMatrixFromVoxelSize() {
  correctToWorldMatrix();
  for (std::size_t j = 0; j < numSpaceDims; ++j) {
    const auto length = static_cast<float>(columnLength(_toWorldMatrix, j));
    if (!(length > 0)) continue;
    for (std::size_t i = 0; i < numSpaceDims; ++i) {
      double& entry = _toWorldMatrix[i][j];
      entry = static_cast<double>(_voxelSize[j]) * entry / static_cast<double>(length);
    }
  }
  _toVoxelMatrix = _toWorldMatrix.inverse(nullptr);
}

void MedicalImageProperties::_assignMembers(const MedicalImageProperties& other) {
  if (this == &other) return;
  setDicomTagList(other._dicomTagList);
  setToWorldMatrix(&other._toWorldMatrix);
  _isToWorldMatrixValid = other._isToWorldMatrixValid;
  _cDimInfos = other._cDimInfos;
  _tDimInfos = other._tDimInfos;
  _uDimInfos = other._uDimInfos;
  _imagePropertyContainer = other._imagePropertyContainer;
}

}  // namespace vx
