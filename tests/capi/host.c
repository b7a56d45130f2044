/* A host in C99 that walks the whole road: start, load a module library, make modules, connect them, set fields, listen
   to them, read images and tiles, push and pop states, unload, stop. The argument is the path of the module library. It
   ends with 0 if everything was as it should be, and tells the line of what was not. */

#include "vxAPI.h"

#include <stdio.h>
#include <string.h>

static int numFailures = 0;

#define CHECK(condition)                                            \
  do {                                                              \
    if (!(condition)) {                                             \
      fprintf(stderr, "host.c:%d: not %s\n", __LINE__, #condition); \
      ++numFailures;                                                \
    }                                                               \
  } while (0)

static void countChange(void* userData, void* sensor) {
  (void)sensor;
  ++*(int*)userData;
}

static void noteProgress(void* userData, const char* info1, const char* info2) {
  (void)info1;
  (void)info2;
  ++*(int*)userData;
}

static int neverBreak(void* userData, void** field) {
  (void)userData;
  if (field) *field = NULL;
  return 0;
}

static void countMessage(void* userData, const VXMessage* message) {
  (void)message;
  ++*(int*)userData;
}

static void lookAtTypes(void) {
  const VXRuntimeType* type = VXTypeFromName("PluginRamp");
  const VXRuntimeType* entry;
  int numTypes = 0;
  CHECK(type != NULL);
  CHECK(strcmp(VXTypeGetName(type), "PluginRamp") == 0);
  CHECK(strcmp(VXTypeGetParentName(type), "BaseOp") == 0);
  CHECK(VXTypeGetParentType(type) == VXTypeFromName("BaseOp"));
  CHECK(VXTypeIsAbstract(type) == 0);
  CHECK(VXTypeIsDerivedFrom(type, "BaseOp") == 1);
  for (entry = VXRuntimeGetFirstModuleType(); entry; entry = VXRuntimeGetNextModuleType()) ++numTypes;
  CHECK(numTypes > 40);
}

static void setFields(VXBaseOp* ramp) {
  char text[8];
  int i;
  VXField* const offset = VXModuleGetField(ramp, "offset");
  for (i = 0; i < VXModuleGetNumFields(ramp); ++i) CHECK(VXModuleGetIndexedField(ramp, i) != NULL);
  CHECK(strcmp(VXFieldGetName(offset), "offset") == 0);
  CHECK(strcmp(VXFieldGetType(offset), "IntField") == 0);
  VXFieldSetValue(offset, "100");
  CHECK(VXFieldGetIntValue(offset) == 100);
  VXFieldSetIntValue(offset, 7);
  CHECK(VXFieldGetValueSize(offset) == 1);
  CHECK(VXFieldGetValue(offset, text, (int)sizeof text) == 2);
  CHECK(strcmp(text, "7") == 0);
  VXBeginLoadFields(ramp);
  VXModuleSetFieldValue(ramp, "instanceName", "source");
  VXModuleSetFieldValue(ramp, "offset", "0");
  VXEndLoadFields(ramp);
}

static void readImage(VXField* image) {
  int x, y, z, c, t, u, type, size;
  float matrix[16], point[3];
  double minimum, maximum;
  CHECK(VXGetImageState(image) == VX_RESULT_OK);
  CHECK(strcmp(VXGetImageStateString(image), VXGetErrorCodeDescription(VX_RESULT_OK)) == 0);
  CHECK(VXImageGetSize6D(image, &x, &y, &z, &c, &t, &u) == VX_RESULT_OK);
  CHECK(x == 64 && y == 8 && z == 1 && c == 1 && t == 1 && u == 1);
  CHECK(VXImageGetPageSize6D(image, &x, &y, &z, &c, &t, &u) == VX_RESULT_OK);
  CHECK(x == 16 && y == 8 && z == 1);
  CHECK(VXImageGetType(image, &type, &size) == VX_RESULT_OK);
  CHECK(type == VXint32Type && size == 4);
  CHECK(VXImageGetMinValue(image, &minimum) == VX_RESULT_OK);
  CHECK(VXImageGetMaxValue(image, &maximum) == VX_RESULT_OK);
  CHECK(VXImageGetVoxelToWorldMatrix(image, matrix) == VX_RESULT_OK);
  CHECK(matrix[0] > 0.5F && matrix[15] > 0.5F);
  CHECK(VXImageMapVoxelToWorld(image, 1, 2, 3, &point[0], &point[1], &point[2]) == VX_RESULT_OK);
}

/* The first voxel of a tile of two. */
static VXint32 readVoxel(VXField* image, int x) {
  VXint32 voxels[2] = {-1, -1};
  void* memory = voxels;
  CHECK(VXImageGetTile(image, &memory, x, 0, 0, 2, 1, 1, VXint32Type) == VX_RESULT_OK);
  CHECK(memory == voxels);
  return voxels[0];
}

static void readTiles(VXField* image, VXBaseOp* ramp) {
  void* memory = NULL;
  unsigned int numBytes = 0;
  int numChanges = 0;
  VXFieldSensor* const sensor = VXCreateFieldSensor(&numChanges, countChange);
  CHECK(readVoxel(image, 20) == 40);
  CHECK(VXGetPageMemorySize(image, &numBytes) == VX_RESULT_OK);
  CHECK(numBytes > 0);
  CHECK(VXImageGetScaledTile(image, &memory, 0, 0, 0, 64, 8, 1, VXdoubleType, 0, 126, 0, 63) == VX_RESULT_OK);
  CHECK(memory != NULL && ((double*)memory)[63] > 62.99 && ((double*)memory)[63] < 63.01);
  VXImageFreeTile(memory);
  CHECK(VXClearPages(image) == VX_RESULT_OK);

  /* A change upstream comes through both modules and is heard. */
  VXFieldSensorAttach(sensor, image);
  CHECK(VXFieldSensorGetField(sensor) == image);
  VXFieldSetIntValue(VXModuleGetField(ramp, "offset"), 5);
  CHECK(numChanges == 1);
  CHECK(readVoxel(image, 20) == 50);
  VXFieldSensorDetach(sensor);
  VXDeleteFieldSensor(sensor);
}

static void useStates(VXField* image) {
  int numMessages = 0;
  const VXCallbackHandle handle = VXAddMessageCB(countMessage, &numMessages, ~0U);
  VXCacheSetMaxSizeKB(1000);
  CHECK(VXPushState(0) == VX_RESULT_OK);
  CHECK(VXCacheGetMaxSizeKB() == 50000);
  VXSendMessagesToCerr(0);
  CHECK(VXFieldGetName(NULL) == NULL);
  CHECK(numMessages == 0);
  VXFieldTouch(image);
  CHECK(readVoxel(image, 20) == 50);
  CHECK(VXPopState() == VX_RESULT_OK);
  CHECK(VXPopState() == VX_EMPTY_STACK);
  CHECK(VXCacheGetMaxSizeKB() == 1000);
  CHECK(VXAreMessagesSentToCerr() == 1);
  CHECK(readVoxel(image, 20) == 50);
  VXSendMessagesToCerr(0);
  CHECK(VXFieldGetName(NULL) == NULL);
  CHECK(numMessages == 1);
  VXSendMessagesToCerr(1);
  CHECK(VXRemoveMessageCB(handle) == 1);
}

static void useServices(void) {
  int numCalls = 0;
  CHECK(VXSetMaxNumThreads(2) == VX_RESULT_OK);
  CHECK(VXGetMaxNumThreads() == 2);
  CHECK(VXSetMaxNumThreads(0) == VX_BAD_PARAMETER);
  VXHostSetProgressCB(&numCalls, noteProgress);
  VXHostUpdateProgress("host", "runs");
  VXHostSetProgressCB(NULL, NULL);
  CHECK(numCalls == 1);
  VXHostSetBreakCheckCB(NULL, neverBreak);
  VXHostSetBreakCheckCB(NULL, NULL);
  VXCacheSetMemoryOptLevel(1);
  CHECK(VXCacheGetMemoryOptLevel() == 1);
  VXClearCache();
  CHECK(VXCacheGetCurrentSizeKB() == 0);
}

int main(int numArguments, char** arguments) {
  void* library = NULL;
  char* errorText = NULL;
  VXBaseOp *ramp, *stage;
  VXField *input, *image;
  if (numArguments != 2) return 2;

  CHECK(VXInit(VX_C_API_MAJOR_VERSION, VX_C_API_MINOR_VERSION, VX_C_API_RELEASE_VERSION) == 1);
  CHECK(VXLoadLibraryWOErrorExt(arguments[1], &library) == VX_RESULT_OK);
  CHECK(VXGetLoadLibraryErrorText()[0] == '\0');
  lookAtTypes();

  ramp = VXCreateModuleFromName("PluginRamp");
  stage = VXCreateModuleFromType(VXTypeFromName("PluginDouble"));
  CHECK(ramp != NULL && stage != NULL);
  CHECK(VXBaseIsDerivedFrom((VXBase*)ramp, "BaseOp") == 1);
  CHECK(strcmp(VXBaseGetType((VXBase*)stage), "PluginDouble") == 0);
  input = VXModuleGetField(stage, "input0");
  image = VXModuleGetField(stage, "output0");
  CHECK(VXGetImageState(image) == VX_OPEN_NETWORK);
  CHECK(VXFieldConnectFrom(input, VXModuleGetField(ramp, "output0")) == 1);
  setFields(ramp);
  readImage(image);
  readTiles(image, ramp);
  useStates(image);
  useServices();
  CHECK(VXUnLoadLibrary(arguments[1], library, NULL, 0) == VX_LIBRARY_IN_USE);

  VXFieldDisconnect(input);
  CHECK(VXGetImageState(image) == VX_RESULT_OK);
  VXFieldTouch(image);
  CHECK(VXGetImageState(image) == VX_OPEN_NETWORK);
  VXDeleteModule(stage);
  VXDeleteModule(ramp);
  CHECK(VXUnLoadLibrary(arguments[1], library, &errorText, 0) == VX_RESULT_OK);
  CHECK(errorText != NULL);
  VXFree(errorText);
  CHECK(VXTypeFromName("PluginRamp") == NULL);
  CHECK(VXDestroy() == 1);
  return numFailures == 0 ? 0 : 1;
}
