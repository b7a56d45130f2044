/// \file vxDicomTagList.h
/// The part of a DICOM tag list that the library calls.

#ifndef VX_DICOM_TAG_LIST_H
#define VX_DICOM_TAG_LIST_H

namespace vx {

/// A list of DICOM tags that counts its references.
///
/// The class belongs to the host's DICOM library. What stands here are its first virtual functions, in their order: the
/// library holds such lists by pointer, counts its references, and looks at nothing else. The count, what happens when
/// it reaches zero, and whether both are safe from any thread, are the list's own business.
class DicomTagList {
 public:
  virtual ~DicomTagList() = default;

  /// Adds a reference.
  virtual void ref() = 0;

  /// Removes a reference. The list may delete itself with the last one.
  virtual void unref() = 0;
};

}  // namespace vx

#endif
