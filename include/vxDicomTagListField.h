/// \file vxDicomTagListField.h
/// The field of a DICOM tag list.

#ifndef VX_DICOM_TAG_LIST_FIELD_H
#define VX_DICOM_TAG_LIST_FIELD_H

#include "vxTValueField.h"

#include <string>

namespace vx {

class DicomTagList;

/// A pointer to a DICOM tag list, on which the field holds a reference.
///
/// The reference in a variable of the caller's is the field's as well: the field releases it when another list is set
/// and when it is destroyed. The text form does not come back: writing gives the address of the variable that holds the
/// pointer, and reading takes a number for the address of a list, on which it takes a reference. So a text that is
/// given to this field must come from a trusted source.
class VX_EXPORT DicomTagListField : public TValueField<DicomTagList*> {
 public:
  /// \param name name of the field. \param value the caller's variable; null for an own value, null at first.
  explicit DicomTagListField(const std::string& name = std::string(), DicomTagList** value = nullptr)
      : TValueField(name, value) {}

  /// Releases the list. An exception of that is reported as fatal with ::VX_DESTRUCTOR_FAILED and goes no further.
  ~DicomTagListField() override;

  void setStringValue(const std::string& value) override;
  std::string getStringValue() const override;
  /// \return 1 if there is a list, else 0.
  VXint64 isValidValue() override;

  /// Takes a reference on a list, releases the one held so far, stores the new one and notifies.
  /// \param list the list, or null for none; the same one again is safe.
  void setDicomTagListValue(DicomTagList* list);
  /// \return the list, for which the field keeps its reference.
  DicomTagList* getDicomTagListValue() const {
    return _getValueOrReport("DicomTagListField::getDicomTagListValue", "NULL");
  }

  VX_CLASS_HEADER(DicomTagListField)
};

}  // namespace vx

#endif
