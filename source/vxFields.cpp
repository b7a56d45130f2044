// What all classes of fields share: their registration and the report of a broken value pointer.

#include "vxFields.h"

#include "vxInitSystemVX.h"
#include "vxTraceBuffer.h"

namespace vx {

void reportBrokenValuePtr(const CallLabel& label, const char* returned) noexcept {
  reportComposed(VX_FATAL, label, VX_BAD_INTERNAL_POINTER,
                 [returned] { return std::string("_valuePtr is incorrectly set, returning ") + returned; });
}

void VXInitFields() {
  const TraceFrame trace("source/vxFields:VXInitFields()");
  for (const auto initClass : {
           &BoolField::initClass,
           &IntField::initClass,
           &ToggleField::initClass,
           &EnumField::initClass,
           &FloatField::initClass,
           &DoubleField::initClass,
           &LongDoubleField::initClass,
           &StringField::initClass,
           &NotifyField::initClass,
           &InputConnectorField::initClass,
           &OutputConnectorField::initClass,
           &BaseField::initClass,
           &SoNodeField::initClass,
           &PointerField::initClass,
           &DicomTagListField::initClass,
           &Vec2fField::initClass,
           &Vec3fField::initClass,
           &Vec4fField::initClass,
           &Vec6fField::initClass,
           &VectorField::initClass,
           &SubImgBoxField::initClass,
           &SubImgBoxfField::initClass,
           &ColorField::initClass,
           &MatrixField::initClass,
           &VXDataTypeField::initClass,
           &ProgressField::initClass,
           &UniversalTypeField::initClass,
       }) {
    initClass(nullptr, nullptr);
  }
}

}  // namespace vx
