#include "CAPIModules.h"

#include "vxPagedImg.h"
#include "vxTSubImg.h"

#include <algorithm>
#include <atomic>

namespace vx::test {

VX_CLASS_SOURCE(RampModule, "BaseOp")
VX_CLASS_SOURCE(PassModule, "BaseOp")
VX_CLASS_SOURCE(FieldsModule, "BaseOp")
VX_CLASS_SOURCE(CodeThrower, "BaseOp")
VX_CLASS_SOURCE(TextThrower, "BaseOp")
VX_CLASS_SOURCE(UnregisteredModule, "BaseOp")
VX_CLASS_SOURCE(UnregisteredField, "BoolField")

std::function<void(const std::string& place)> modulePlace;
int numCalculatedPages = 0;
std::string moduleLog;

namespace {

void enter(const char* place) {
  if (modulePlace) modulePlace(place);
}

void note(const char* operation) {
  enter(operation);
  moduleLog += operation;
  moduleLog += ' ';
}

}  // namespace

void initModuleClasses() {
  for (const auto initClass : {&RampModule::initClass, &PassModule::initClass, &FieldsModule::initClass,
                               &CodeThrower::initClass, &TextThrower::initClass}) {
    initClass("CAPITest", nullptr);
  }
}

RampModule::RampModule() : BaseOp(0, 1) {
  _extent = getFieldContainer()->addVector("extent");
  _pageExtent = getFieldContainer()->addVector("pageExtent");
  _offset = getFieldContainer()->addInt("offset");
  _isValid = getFieldContainer()->addBool("isValid");
  _extent->setVectorValue(TVector<VXint64>(20, 10, 3, 2, 2, 2));
  _pageExtent->setVectorValue(TVector<VXint64>(8, 8, 1, 1, 1, 1));
  _isValid->setBoolValue(true);
  enter("constructor");
}

RampModule::~RampModule() { enter("destructor"); }

void RampModule::calcOutImageProps(int outIndex) {
  enter("calcOutImageProps");
  PagedImg& image = *getOutImg(outIndex);
  if (!_isValid->getBoolValue()) {
    image.setOutOfDate();
    return;
  }
  image.setImgExt(_extent->getVectorValue());
  image.setPageExt(_pageExtent->getVectorValue());
  image.setDataType(VXint32Type);
  image.setMinVoxelValue(-5);
  image.setMaxVoxelValue(222);
  image.setVoxelSize(2, 3, 4);
}

void RampModule::calcOutSubImage(SubImg* outSubImg, int /*outIndex*/, SubImg* /*inSubImgs*/) {
  enter("calcOutSubImage");
  ++numCalculatedPages;
  auto* voxel = static_cast<VXint32*>(outSubImg->getData());
  const SubImgBox box = outSubImg->getBox();
  TVector<VXint64> p = box.v1;
  for (p.u = box.v1.u; p.u <= box.v2.u; ++p.u) {
    for (p.t = box.v1.t; p.t <= box.v2.t; ++p.t) {
      for (p.c = box.v1.c; p.c <= box.v2.c; ++p.c) {
        for (p.z = box.v1.z; p.z <= box.v2.z; ++p.z) {
          for (p.y = box.v1.y; p.y <= box.v2.y; ++p.y) {
            for (p.x = box.v1.x; p.x <= box.v2.x; ++p.x) {
              *voxel++ = static_cast<VXint32>(p.x + 10 * p.y + 100 * p.z + 1000 * p.c + 10000 * p.t + 100000 * p.u +
                                              _offset->getIntValue());
            }
          }
        }
      }
    }
  }
}

void RampModule::handleNotification(Field* field) {
  enter("handleNotification");
  if (field == _extent || field == _pageExtent || field == _offset || field == _isValid) {
    getOutField(0)->notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
  }
}

BaseOp::INPUT_HANDLE PassModule::handleInput(int inIndex, INPUT_STATE state) const {
  enter("handleInput");
  return BaseOp::handleInput(inIndex, state);
}

void PassModule::calcOutImageProps(int outIndex) {
  enter("calcOutImageProps");
  BaseOp::calcOutImageProps(outIndex);
}

SubImgBox PassModule::calcInSubImageBox(int inIndex, const SubImgBox& outSubImgBox, int outIndex) {
  enter("calcInSubImageBox");
  return BaseOp::calcInSubImageBox(inIndex, outSubImgBox, outIndex);
}

void PassModule::calcInSubImageProps(int inIndex, InSubImageProps& props, int outIndex) {
  enter("calcInSubImageProps");
  BaseOp::calcInSubImageProps(inIndex, props, outIndex);
}

void PassModule::calcOutSubImage(SubImg* outSubImg, int outIndex, SubImg* inSubImgs) {
  enter("calcOutSubImage");
  ++numCalculatedPages;
  BaseOp::calcOutSubImage(outSubImg, outIndex, inSubImgs);
}

void PassModule::handleNotification(Field* field) {
  enter("handleNotification");
  if (field == getInField(0)) getOutField(0)->notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
}

void PassModule::activateAttachments() {
  note("activateAttachments");
  BaseOp::activateAttachments();
}

void PassModule::deactivateAttachments() {
  note("deactivateAttachments");
  BaseOp::deactivateAttachments();
}

void PassModule::beginSaveFields() { note("beginSaveFields"); }

void PassModule::endSaveFields() { note("endSaveFields"); }

FieldsModule::FieldsModule() : BaseOp(1, 1) {
  FieldContainer& fields = *getFieldContainer();
  fields.addBool("BoolField");
  fields.addInt("IntField");
  fields.addToggle("ToggleField");
  fields.addFloat("FloatField");
  fields.addProgress("ProgressField");
  fields.addDouble("DoubleField");
  fields.addLongDouble("LongDoubleField");
  fields.addString("StringField");
  fields.addNotify("NotifyField");
  fields.addPointer("PointerField");
  fields.addBase("BaseField");
  fields.addSoNode("SoNodeField");
  fields.addDicomTagList("DicomTagListField");
  fields.addEnum("EnumField", {"red", "green", "blue"});
  fields.addVec3f("Vec3fField");
  fields.addVector("VectorField");
  fields.addUniversalType("UniversalTypeField");
}

}  // namespace vx::test
