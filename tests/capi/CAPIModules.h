// Modules for tests of the C interface: an image, a stage behind it, and one with a field of each class.

#ifndef VX_TESTS_CAPI_MODULES_H
#define VX_TESTS_CAPI_MODULES_H

#include "vxBaseOp.h"

#include <functional>
#include <string>

namespace vx::test {

/// Called at each place where a module's code runs, with the name of the operation. It may throw.
extern std::function<void(const std::string& place)> modulePlace;
/// Number of calls of calcOutSubImage() in all modules.
extern int numCalculatedPages;
/// Operations on attachments and saving that ran, each followed by a blank.
extern std::string moduleLog;

/// Registers the classes below for a library "CAPITest".
void initModuleClasses();

/// An image of voxels x + 10 y + 100 z + 1000 c + 10000 t + 100000 u + offset, of type int32.
class RampModule : public BaseOp {
 public:
  RampModule();
  ~RampModule() override;

  void calcOutImageProps(int outIndex) override;
  void calcOutSubImage(SubImg* outSubImg, int outIndex, SubImg* inSubImgs) override;
  void handleNotification(Field* field) override;

  VX_CLASS_HEADER(RampModule)

 private:
  VectorField* _extent;
  VectorField* _pageExtent;
  IntField* _offset;
  BoolField* _isValid;
};

/// Hands its input on.
class PassModule : public BaseOp {
 public:
  PassModule() : BaseOp(1, 1) {}

  INPUT_HANDLE handleInput(int inIndex, INPUT_STATE state) const override;
  void calcOutImageProps(int outIndex) override;
  SubImgBox calcInSubImageBox(int inIndex, const SubImgBox& outSubImgBox, int outIndex) override;
  void calcInSubImageProps(int inIndex, InSubImageProps& props, int outIndex) override;
  void calcOutSubImage(SubImg* outSubImg, int outIndex, SubImg* inSubImgs) override;
  void handleNotification(Field* field) override;
  void activateAttachments() override;
  void deactivateAttachments() override;
  void beginSaveFields() override;
  void endSaveFields() override;

  VX_CLASS_HEADER(PassModule)
};

/// Has a field of each class, named as the class.
class FieldsModule : public BaseOp {
 public:
  FieldsModule();
  VX_CLASS_HEADER(FieldsModule)
};

/// Throws an error code, 7, when it is made.
class CodeThrower : public BaseOp {
 public:
  CodeThrower() : BaseOp(0, 0) { throw 7; }
  VX_CLASS_HEADER(CodeThrower)
};

/// Throws something else when it is made.
class TextThrower : public BaseOp {
 public:
  TextThrower() : BaseOp(0, 0) { throw std::string("text"); }
  VX_CLASS_HEADER(TextThrower)
};

/// A class that is never registered.
class UnregisteredModule : public BaseOp {
 public:
  UnregisteredModule() : BaseOp(0, 1) {}
  VX_CLASS_HEADER(UnregisteredModule)
};

/// A field of a class that is never registered.
class UnregisteredField : public BoolField {
 public:
  UnregisteredField() : BoolField("unregistered") {}
  VX_CLASS_HEADER(UnregisteredField)
};

}  // namespace vx::test

#endif
