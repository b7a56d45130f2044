/// \file vxSubImgBoxFields.h
/// Fields of boxes: SubImgBoxField and SubImgBoxfField.

#ifndef VX_SUB_IMG_BOX_FIELDS_H
#define VX_SUB_IMG_BOX_FIELDS_H

#include "vxSubImgBox.h"
#include "vxSubImgBoxf.h"
#include "vxTCompositeField.h"

#include <string>

namespace vx {

/// A box of voxels, both corners inclusive.
///
/// Its text is twelve numbers: the lower corner from x to u, then the upper one. They are written and read as those of
/// a VectorField.
class VX_EXPORT SubImgBoxField : public TValueField<TSubImgBox<VXint64>> {
 public:
  /// \param name name of the field. \param value the caller's variable; null for an own value, the empty box from 0 to
  /// -1 at first.
  explicit SubImgBoxField(const std::string& name = std::string(), TSubImgBox<VXint64>* value = nullptr)
      : TValueField(name, value) {}

  void setStringValue(const std::string& value) override;
  std::string getStringValue() const override;

  /// Stores a box and notifies.
  void setSubImgBoxValue(const TSubImgBox<VXint64>& value) { _setValue(value); }
  /// \return the box, which lives as long as the variable that holds it.
  const TSubImgBox<VXint64>& getSubImgBoxValue() const { return _getValue(); }

  VX_CLASS_HEADER(SubImgBoxField)
};

/// A box with corners in double precision; its text holds the lower corner from x to u, then the upper one.
class VX_EXPORT SubImgBoxfField : public TCompositeField<SubImgBoxf> {
 public:
  /// \param name name of the field. \param value the caller's variable; null for an own value, from 0 to -1 at first.
  explicit SubImgBoxfField(const std::string& name = std::string(), SubImgBoxf* value = nullptr)
      : TCompositeField(name, value) {}

  /// Stores a box and notifies.
  void setSubImgBoxfValue(const SubImgBoxf& value) { _setValue(value); }
  /// \return the box, which lives as long as the variable that holds it.
  const SubImgBoxf& getSubImgBoxfValue() const { return _getValue(); }

  VX_CLASS_HEADER(SubImgBoxfField)
};

}  // namespace vx

#endif
