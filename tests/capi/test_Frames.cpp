// What the entries make of an exception: who reports it, and how they answer.

#include "CAPIFixture.h"

#include <string>
#include <type_traits>
#include <utility>

namespace vx::test {
namespace {

// A field, and an object, that throw when they are asked for their class.
class ThrowingField : public BoolField {
 public:
  const RuntimeType* getTypeId() const override { throw 3; }
};
class ThrowingObject : public Base {
 public:
  const RuntimeType* getTypeId() const override { throw 3; }
};

class CAPIFramesTest : public CAPITest {
 protected:
  /// Calls an entry, and expects one report and an answer; without exception handling the exception itself.
  template <class Result, class... Parameters, class... Arguments>
  void expectFrame(const std::string& label, const char* words, std::type_identity_t<Result> answer,
                   Result (*entry)(Parameters...), Arguments... arguments) {
    SCOPED_TRACE(label);
    EXPECT_EQ(comparable(entry(arguments...)), comparable(answer));
    expectMessages({{VX_FATAL, 1, "vxAPI:" + label, frameReason(words)}});
    VXEnableExceptionHandling(0);
    EXPECT_THROW(entry(arguments...), int);
    VXEnableExceptionHandling(1);
    expectSilence();
  }
  template <class... Parameters, class... Arguments>
  void expectFrame(const std::string& label, void (*entry)(Parameters...), Arguments... arguments) {
    SCOPED_TRACE(label);
    entry(arguments...);
    expectMessages({{VX_FATAL, 1, "vxAPI:" + label, frameReason("Returning VX_EMPTY_PARAM.")}});
    VXEnableExceptionHandling(0);
    EXPECT_THROW(entry(arguments...), int);
    VXEnableExceptionHandling(1);
    expectSilence();
  }

  static constexpr char code[] = "Returning VX_UNKNOWN_EXCEPTION.";
  static constexpr char null[] = "Returning NULL.";
  static constexpr char zero[] = "Returning 0.";
  static constexpr char empty[] = "Returning \"\".";

  ThrowingField thrower;
  Field* const bad = &thrower;

 private:
  template <class T>
  static T comparable(T value) {
    return value;
  }
  static std::string comparable(const char* text) { return text ? text : "<null>"; }
};

TEST_F(CAPIFramesTest, FunctionsOfFieldsAnswerNeutrally) {
  int item = 0;
  char buffer[4] = {};
  expectFrame("_VXFieldGetName(field)", empty, "", &VXFieldGetName, bad);
  expectFrame("_VXFieldGetType(field)", empty, "", &VXFieldGetType, bad);
  expectFrame("_VXFieldSetValue(field, value)", &VXFieldSetValue, bad, "1");
  expectFrame("_VXFieldGetValueSize(field)", zero, 0, &VXFieldGetValueSize, bad);
  expectFrame("_VXFieldGetValue(field, value, size)", zero, 0, &VXFieldGetValue, bad, buffer, 4);
  expectFrame("_VXFieldTouch(field)", &VXFieldTouch, bad);
  expectFrame("_VXFieldSetFloatValue(field, value)", &VXFieldSetFloatValue, bad, 1.0F);
  expectFrame("_VXFieldGetFloatValue(field)", zero, 0.0F, &VXFieldGetFloatValue, bad);
  expectFrame("_VXFieldSetDoubleValue(field, value)", &VXFieldSetDoubleValue, bad, 1.0);
  expectFrame("_VXFieldGetDoubleValue(field)", zero, 0.0, &VXFieldGetDoubleValue, bad);
  expectFrame("_VXFieldSetIntValue64(field, value)", &VXFieldSetIntValue64, bad, 1);
  expectFrame("_VXFieldSetIntValue64(field, value)", &VXFieldSetIntValue, bad, 1);
  expectFrame("_VXFieldGetIntValue64(field)", zero, 0, &VXFieldGetIntValue64, bad);
  expectFrame("_VXFieldGetIntValue64(field)", zero, 0, &VXFieldGetIntValue, bad);
  expectFrame("_VXFieldGetEnumValue(field)", zero, 0, &VXFieldGetEnumValue, bad);
  expectFrame("_VXFieldSetEnumValue(field, val)", &VXFieldSetEnumValue, bad, 0);
  expectFrame("_VXFieldGetNumEnums(field)", zero, 0, &VXFieldGetNumEnums, bad);
  expectFrame("_VXFieldGetEnumName(field, i, value)", empty, "", &VXFieldGetEnumName, bad, 0, &item);
}

TEST_F(CAPIFramesTest, FunctionsOfPointerFieldsAnswerNeutrally) {
  expectFrame("_VXBaseFieldGetPtr(field)", null, nullptr, &VXBaseFieldGetPtr, bad);
  expectFrame("_VXBaseFieldSetPtr(field, ptr)", &VXBaseFieldSetPtr, bad, nullptr);
  expectFrame("_VXSoNodeFieldGetPtr(field)", null, nullptr, &VXSoNodeFieldGetPtr, bad);
  expectFrame("_VXSoNodeFieldSetPtr(field, ptr)", &VXSoNodeFieldSetPtr, bad, nullptr);
  expectFrame("_VXPointerFieldGetPtr(field)", null, nullptr, &VXPointerFieldGetPtr, bad);
  expectFrame("_VXPointerFieldSetPtr(field, ptr)", &VXPointerFieldSetPtr, bad, nullptr);
  expectFrame("_VXDicomTagListFieldGetPtr(field)", null, nullptr, &VXDicomTagListFieldGetPtr, bad);
  expectFrame("_VXDicomTagListFieldSetPtr(field, ptr)", &VXDicomTagListFieldSetPtr, bad, nullptr);
  expectFrame("_VXBaseFieldGetPersistentState(baseField)", null, nullptr, &VXBaseFieldGetPersistentState, bad);
  expectFrame("_VXBaseFieldSetPersistentState(baseField, state)", &VXBaseFieldSetPersistentState, bad, "state");
  expectFrame("_VXBaseFieldClearPersistentState(baseField, state)", &VXBaseFieldClearPersistentState, bad, nullptr);
}

TEST_F(CAPIFramesTest, ConnectionsAndSensorsAnswerNeutrally) {
  expectFrame("_VXImageFieldConnectFromNoNotify(inField, outField)", zero, 0, &VXImageFieldConnectFromNoNotify, bad,
              bad);
  expectFrame("_VXFieldConnectFrom(inField, outField)", zero, 0, &VXFieldConnectFrom, bad, bad);
  expectFrame("_VXFieldDisconnect(inField)", &VXFieldDisconnect, bad);
  VXFieldSensor* const sensor = VXCreateFieldSensor(nullptr, [](void*, void*) {});
  expectFrame("_VXFieldSensorAttach(sensor, field)", &VXFieldSensorAttach, sensor, bad);
  EXPECT_EQ(VXFieldSensorGetField(sensor), nullptr);
  VXDeleteFieldSensor(sensor);
}

TEST_F(CAPIFramesTest, ObjectsAnswerNeutrally) {
  ThrowingObject object;
  Base* const base = &object;
  expectFrame("_VXBaseGetTypeObject(base)", null, nullptr, &VXBaseGetTypeObject, base);
  expectFrame("_VXBaseGetType(base)", empty, "", &VXBaseGetType, base);
  expectFrame("_VXBaseGetParentType(base)", empty, "", &VXBaseGetParentType, base);
  expectFrame("_VXBaseIsDerivedFrom(base, superClassName)", zero, 0, &VXBaseIsDerivedFrom, base, "BaseOp");
}

TEST_F(CAPIFramesTest, FunctionsThatUpdateTheImageAnswerWithTheCodeOfTheirCommonFrame) {
  constexpr char params[] = "__VXGetOutputParams(outField, baseOp, outIndex, img)";
  int size[6] = {7, 7, 7, 7, 7, 7};
  float voxel[3] = {7, 7, 7};
  expectFrame(params, code, 1, &VXImageGetSize6D, bad, &size[0], &size[1], &size[2], &size[3], &size[4], &size[5]);
  for (int& component : size) EXPECT_EQ(std::exchange(component, 7), 0);
  expectFrame(params, code, 1, &VXImageGetPageSize6D, bad, &size[0], &size[1], &size[2], &size[3], &size[4], &size[5]);
  for (int& component : size) EXPECT_EQ(std::exchange(component, 7), 0);
  expectFrame(params, code, 1, &VXImageGetSize, bad, &size[0], &size[1], &size[2], &size[3]);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(std::exchange(size[i], 7), 0);
  expectFrame(params, code, 1, &VXImageGetType, bad, &size[0], &size[1]);
  EXPECT_EQ(size[0], 7);
  EXPECT_EQ(size[1], 7);
  expectFrame(params, code, 1, &VXImageGetVoxelSize, bad, &voxel[0], &voxel[1], &voxel[2]);
  for (const float component : voxel) EXPECT_EQ(component, 0.0F);
  expectFrame(params, code, 1, &VXGetImageState, bad);
  expectFrame(params, code, VXGetErrorCodeDescription(1), &VXGetImageStateString, bad);
}

TEST_F(CAPIFramesTest, FunctionsThatCheckTheImageThemselvesAnswerWithTheCode) {
  double range = 7;
  float values[16] = {7};
  unsigned int bytes = 7;
  const ImagePropertyExtension* extension = nullptr;
  const DicomTagList* list = nullptr;
  expectFrame("_VXImageGetMinValue(outField, minValue)", code, 1, &VXImageGetMinValue, bad, &range);
  EXPECT_EQ(std::exchange(range, 7), 0.0);
  expectFrame("_VXImageGetMaxValue(outField, maxValue)", code, 1, &VXImageGetMaxValue, bad, &range);
  EXPECT_EQ(range, 0.0);
  expectFrame("_VXImageGetVoxelToWorldMatrix(outField, mat)", code, 1, &VXImageGetVoxelToWorldMatrix, bad, values);
  expectFrame("_VXImageGetWorldToVoxelMatrix(outField, mat)", code, 1, &VXImageGetWorldToVoxelMatrix, bad, values);
  expectFrame("_VXImageMapVoxelToWorld(outField, srcX, srcY, srcZ, dstX, dstY, dstZ)", code, 1, &VXImageMapVoxelToWorld,
              bad, 1.0F, 2.0F, 3.0F, &values[0], &values[1], &values[2]);
  expectFrame("_VXImageMapWorldToVoxel(outField, srcX, srcY, srcZ, dstX, dstY, dstZ)", code, 1, &VXImageMapWorldToVoxel,
              bad, 1.0F, 2.0F, 3.0F, &values[0], &values[1], &values[2]);
  EXPECT_EQ(values[0], 7.0F);
  expectFrame(
      "_VXImageGetFirstImagePropertyExtensionByType(outField, imagePropertyTypeClassName, "
      "imagePropertyExtension)",
      code, 1, &VXImageGetFirstImagePropertyExtensionByType, bad, "BaseOp", &extension);
  expectFrame("_VXImageGetDicomTagList(outField, tagList)", code, 1, &VXImageGetDicomTagList, bad, &list);
  expectFrame("_VXClearPages(outField)", code, 1, &VXClearPages, bad);
  expectFrame("_VXClearMemoryImg(outField)", code, 1, &VXClearMemoryImg, bad);
  expectFrame("_VXClearPagesAndMemoryImg(outField)", code, 1, &VXClearPagesAndMemoryImg, bad);
  expectFrame("_VXGetPageMemorySize(outField, numBytes)", code, 1, &VXGetPageMemorySize, bad, &bytes);
  EXPECT_EQ(std::exchange(bytes, 7U), 0U);
  expectFrame("_VXGetMemoryImgSize(outField, numBytes)", code, 1, &VXGetMemoryImgSize, bad, &bytes);
  EXPECT_EQ(bytes, 0U);
}

TEST_F(CAPIFramesTest, TilesAnswerWithTheCode) {
  int voxel = -1;
  void* tile = &voxel;
  constexpr char plain[] = "_VXImageGetTile6D(outField, memory, x, y, z, c, t, u, nx, ny, nz, nc, nt, nu, datatype)";
  constexpr char scaled[] =
      "_VXImageGetScaledTile6D(outField, memory, x, y, z, c, t, u, nx, ny, nz, nc, nt, nu, datatype, srcMin, srcMax, "
      "dstMin, dstMax)";
  expectFrame(plain, code, 1, &VXImageGetTile6D, bad, &tile, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, VXint32Type);
  expectFrame(plain, code, 1, &VXImageGetTile4D, bad, &tile, 0, 0, 0, 0, 1, 1, 1, 1, VXint32Type);
  expectFrame(plain, code, 1, &VXImageGetTile3D, bad, &tile, 0, 0, 0, 1, 1, 1, VXint32Type);
  expectFrame(plain, code, 1, &VXImageGetTile, bad, &tile, 0, 0, 0, 1, 1, 1, VXint32Type);
  expectFrame(scaled, code, 1, &VXImageGetScaledTile6D, bad, &tile, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, VXint32Type,
              0.0, 1.0, 0.0, 2.0);
  expectFrame(scaled, code, 1, &VXImageGetScaledTile4D, bad, &tile, 0, 0, 0, 0, 1, 1, 1, 1, VXint32Type, 0.0, 1.0, 0.0,
              2.0);
  expectFrame(scaled, code, 1, &VXImageGetScaledTile3D, bad, &tile, 0, 0, 0, 1, 1, 1, VXint32Type, 0.0, 1.0, 0.0, 2.0);
  expectFrame(scaled, code, 1, &VXImageGetScaledTile, bad, &tile, 0, 0, 0, 1, 1, 1, VXint32Type, 0.0, 1.0, 0.0, 2.0);
  EXPECT_EQ(tile, &voxel);
  EXPECT_EQ(voxel, -1);
}

}  // namespace
}  // namespace vx::test
