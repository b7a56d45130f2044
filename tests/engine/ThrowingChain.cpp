#include "ThrowingChain.h"

#include "vxConnectorFields.h"
#include "vxFields.h"
#include "vxPagedImg.h"

#include <cstring>
#include <new>
#include <stdexcept>

namespace vx::test {

namespace {

struct OwnException {
  int value;
};

constexpr char thrownText[] = "a text";

ModuleParameters sourceParameters() {
  ModuleParameters p;
  p.kind = ModuleKind::source;
  p.extent = {8, 4, 1, 1, 1, 1};
  p.pageExtent = {4, 2, 1, 1, 1, 1};
  p.type = 2;
  p.seed = 4711;
  return p;
}

}  // namespace

const char* nameOf(Operation operation) {
  static constexpr const char* names[] = {"none",
                                          "handleInput",
                                          "calcOutImageProps",
                                          "calcInSubImageBox",
                                          "calcInSubImageProps",
                                          "calcOutSubImage",
                                          "notifyFirstCalcOutSubImage",
                                          "setMarker",
                                          "getMarker",
                                          "handleNotification"};
  return names[static_cast<int>(operation)];
}

const char* nameOf(Thrown thrown) {
  static constexpr const char* names[] = {"nothing",
                                          "code 7",
                                          "code 0",
                                          "code -1",
                                          "std::string",
                                          "a text",
                                          "std::runtime_error",
                                          "std::bad_alloc",
                                          "a type of its own",
                                          "something else"};
  return names[static_cast<int>(thrown)];
}

void throwIt(Thrown thrown) {
  switch (thrown) {
    case Thrown::code7:
      throw 7;
    case Thrown::code0:
      throw 0;
    case Thrown::codeMinus1:
      throw -1;
    case Thrown::string:
      throw std::string(thrownText);
    case Thrown::text:
      throw static_cast<const char*>(thrownText);
    case Thrown::runtimeError:
      throw std::runtime_error(thrownText);
    case Thrown::badAlloc:
      throw std::bad_alloc();
    default:
      throw OwnException{42};
  }
}

Thrown currentException() {
  try {
    throw;
  } catch (int code) {
    return code == 7    ? Thrown::code7
           : code == 0  ? Thrown::code0
           : code == -1 ? Thrown::codeMinus1
                        : Thrown::somethingElse;
  } catch (const std::string& text) {
    return text == thrownText ? Thrown::string : Thrown::somethingElse;
  } catch (const char* text) {
    return text == thrownText ? Thrown::text : Thrown::somethingElse;
  } catch (const std::runtime_error& error) {
    return std::strcmp(error.what(), thrownText) == 0 ? Thrown::runtimeError : Thrown::somethingElse;
  } catch (const std::bad_alloc&) {
    return Thrown::badAlloc;
  } catch (const OwnException& own) {
    return own.value == 42 ? Thrown::ownType : Thrown::somethingElse;
  } catch (...) {
    return Thrown::somethingElse;
  }
}

VX_ABSTRACT_CLASS_SOURCE(ThrowingModule, "BaseOp")

ThrowingModule::ThrowingModule(const std::string& name) : BaseOp(2, 1) {
  setThreadSupport(THREAD_SUPPORTED);
  getFieldContainer()->getField("instanceName")->setStringValue(name);
}

void ThrowingModule::arm(Operation operation, Thrown thrown) {
  _operation = operation;
  _thrown = thrown;
}

void ThrowingModule::throwFrom(Operation operation) const {
  if (_operation == operation) throwIt(_thrown);
}

BaseOp::INPUT_HANDLE ThrowingModule::handleInput(int inIndex, INPUT_STATE /*state*/) const {
  throwFrom(Operation::handleInput);
  return inIndex == 1 ? USE_PLACEHOLDER : INVALIDATE_OUTPUT;
}

void ThrowingModule::calcOutImageProps(int /*outIndex*/) {
  throwFrom(Operation::calcOutImageProps);
  _inputBox.high = toPlain(getOutImg(0)->getImgExt() - TVector<VXint64>(1));
}

SubImgBox ThrowingModule::calcInSubImageBox(int inIndex, const SubImgBox& /*outSubImgBox*/, int /*outIndex*/) {
  throwFrom(Operation::calcInSubImageBox);
  return inIndex == 0 ? toSubImgBox(_inputBox) : SubImgBox();
}

void ThrowingModule::calcInSubImageProps(int /*inIndex*/, InSubImageProps& /*props*/, int /*outIndex*/) {
  throwFrom(Operation::calcInSubImageProps);
}

void ThrowingModule::calcOutSubImage(SubImg* outSubImg, int /*outIndex*/, SubImg* inSubImgs,
                                     ThreadInfo& /*threadInfo*/) {
  const BlockView out(*outSubImg);
  if (out.box.low == PlainPosition{}) throwFrom(Operation::calcOutSubImage);
  const BlockView in(inSubImgs[0]);
  forEachPosition(out.box, [&](const PlainPosition& p) {
    writeComponent(out.type, out.at(p), 0, readComponent(in.type, in.at(p), 0) + 1);
  });
}

void ThrowingModule::handleNotification(Field* field) {
  throwFrom(Operation::handleNotification);
  if (!dynamic_cast<OutputConnectorField*>(field)) getOutField(0)->notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION);
}

void ThrowingModule::notifyFirstCalcOutSubImage(int /*outIndex*/, bool /*isProcessAllPages*/) {
  throwFrom(Operation::notifyFirst);
}

void ThrowingModule::setMarker(int marker) {
  // The mark is taken back at the end of a walk, where nobody could make use of an exception.
  if (marker != 0) throwFrom(Operation::setMarker);
  BaseOp::setMarker(marker);
}

int ThrowingModule::getMarker() {
  throwFrom(Operation::getMarker);
  return BaseOp::getMarker();
}

ThrowingChain::ThrowingChain() {
  ThrowingModule::initClass(nullptr, nullptr);
  registerNetworkModules();
  _source = makeModule(sourceParameters());
  for (int i = 0; i < numLevels; ++i) _levels.push_back(std::make_unique<ThrowingModule>("L" + std::to_string(i)));
  for (int i = 0; i + 1 < numLevels; ++i) connectInput(level(i), 0, level(i + 1), 0);
  connectInput(level(numLevels - 1), 0, *_source, 0);
}

void ThrowingChain::touchSource() { _source->getOutField(0)->notifyAttachments(FieldSensor::VX_FULL_NOTIFICATION); }

std::vector<VXint16> ThrowingChain::expectedPage(int pageId, bool isLevelZero, int zeroLevel) const {
  const PlainImage image = calculate(sourceParameters(), 0, {});
  std::vector<VXint16> voxels;
  const PlainPosition first{4 * (pageId % 2), 2 * (pageId / 2), 0, 0, 0, 0};
  forEachPosition({first, {first[0] + 3, first[1] + 1, 0, 0, 0, 0}}, [&](const PlainPosition& p) {
    VXint16 value;
    std::memcpy(&value, image.at(p), sizeof value);
    const int number = isLevelZero ? zeroLevel : value + numLevels;
    voxels.push_back(static_cast<VXint16>(number));
  });
  return voxels;
}

}  // namespace vx::test
