// Each function of the C interface, called from inside of every place where code of a module or a host runs.

#include "Rows.h"

#include "vxNotify.h"

namespace vx::test {
namespace {

using Inside = std::function<void()>;

class Reentry;

// A place where user code runs.
struct Place {
  const char* name;
  bool isImageCallRunning;  // so that image functions are refused
  bool isProcessing;        // so that nothing may be freed
  // Runs an operation that reaches the place, and lets `inside` run there.
  void (*run)(Reentry& test, const Inside& inside);

  friend std::ostream& operator<<(std::ostream& stream, const Place& place) { return stream << place.name; }
};

class Reentry : public CAPITest, public ::testing::WithParamInterface<Place> {
 public:
  void TearDown() override {
    VXHostSetProgressCB(nullptr, nullptr);
    VXHostSetBreakCheckCB(nullptr, nullptr);
    CAPITest::TearDown();
  }

  // Runs `inside` the next time that a module's operation is reached.
  void runAt(const std::string& operation, const Inside& inside) {
    modulePlace = [this, operation, inside](const std::string& here) {
      if (here == operation) once(inside);
    };
  }
  // Runs it the first time only: what it calls may lead here again.
  void once(const Inside& inside) {
    if (_hasRun) return;
    _hasRun = true;
    inside();
  }

  // Requests a tile of the two modules, which are calculated anew.
  void requestTile() {
    VXFieldTouch(out);
    VXint32 voxel = -1;
    void* memory = &voxel;
    EXPECT_EQ(VXImageGetTile3D(stageOut, &memory, 5, 1, 0, 1, 1, 1, VXint32Type), 0);
    EXPECT_EQ(voxel, 15);
  }

  // What the row does here. A refusal is told by the message alone, where a function returns no code.
  void expectRow(const rows::Row& row, World& world, const Place& place) {
    SCOPED_TRACE(row.name + " inside of " + place.name);
    messages.take();
    const long long result = row.call(world);
    const Messages taken = messages.take();
    const bool isRecursion = row.kind == rows::Kind::image && place.isImageCallRunning;
    const bool wouldFree = place.isProcessing && (row.kind == rows::Kind::frees || row.kind == rows::Kind::stops);
    if (isRecursion) {
      ASSERT_EQ(taken.size(), 1U);
      EXPECT_EQ(taken[0].code, 22);
      EXPECT_EQ(taken[0].reason.find("Terminating/breaking recursion."), 0U);
      EXPECT_TRUE(result == 22 || row.name == "VXGetImageStateString") << result;
    } else if (wouldFree) {
      ASSERT_EQ(taken.size(), 1U);
      EXPECT_EQ(taken[0].type, VX_ERROR);
      EXPECT_EQ(taken[0].function, "vxAPI: " + row.name);
      EXPECT_EQ(taken[0].reason,
                "This call would free what is being calculated. It is not allowed during image processing. Ignoring "
                "call.");
    } else {
      for (const Message& message : taken) {
        EXPECT_NE(message.type, VX_FATAL) << message;
        EXPECT_NE(message.code, 22) << message;
        EXPECT_NE(message.code, 14) << message;
      }
    }
  }

  ModulePtr source = makeModule("RampModule");
  ModulePtr stage = makeModule("PassModule");
  Field* out = VXModuleGetField(source.get(), "output0");
  Field* stageIn = VXModuleGetField(stage.get(), "input0");
  Field* stageOut = VXModuleGetField(stage.get(), "output0");

 private:
  bool _hasRun = false;
};

// A calculation with a module's operation.
template <const char* operation>
void runInCalculation(Reentry& test, const Inside& inside) {
  test.runAt(operation, inside);
  test.requestTile();
}
constexpr char calcOutImageProps[] = "calcOutImageProps";
constexpr char calcInSubImageBox[] = "calcInSubImageBox";
constexpr char calcInSubImageProps[] = "calcInSubImageProps";
constexpr char calcOutSubImage[] = "calcOutSubImage";

void runInHandleInput(Reentry& test, const Inside& inside) {
  VXFieldDisconnect(test.stageIn);
  VXFieldTouch(test.stageOut);
  test.runAt("handleInput", inside);
  EXPECT_EQ(VXGetImageState(test.stageOut), 3);
}

void runInHandleNotification(Reentry& test, const Inside& inside) {
  test.runAt("handleNotification", inside);
  VXFieldTouch(VXModuleGetField(test.stage.get(), "instanceName"));
}

// What a callback of the C interface needs as user data.
struct Callback {
  Reentry& test;
  const Inside& inside;
  static void run(void* userData) {
    auto& callback = *static_cast<Callback*>(userData);
    callback.test.once(callback.inside);
  }
};

void runInSensor(Reentry& test, const Inside& inside) {
  Callback callback{test, inside};
  VXFieldSensor* const sensor = VXCreateFieldSensor(&callback, [](void* userData, void*) { Callback::run(userData); });
  Field* const field = VXModuleGetField(test.stage.get(), "instanceName");
  VXFieldSensorAttach(sensor, field);
  VXFieldTouch(field);
  VXDeleteFieldSensor(sensor);
}

void runInProgress(Reentry& test, const Inside& inside) {
  Callback callback{test, inside};
  VXHostSetProgressCB(&callback, [](void* userData, const char*, const char*) { Callback::run(userData); });
  VXHostUpdateProgress("a", "b");
}

void runInProgressOfCalculation(Reentry& test, const Inside& inside) {
  Callback callback{test, inside};
  VXHostSetProgressCB(&callback, [](void* userData, const char*, const char*) { Callback::run(userData); });
  modulePlace = [](const std::string& here) {
    if (here == calcOutSubImage) BaseOp::updateProgress("a", "b");
  };
  test.requestTile();
}

void runInBreakCheck(Reentry& test, const Inside& inside) {
  Callback callback{test, inside};
  VXHostSetBreakCheckCB(&callback, [](void* userData, void**) {
    Callback::run(userData);
    return 0;
  });
  modulePlace = [](const std::string& here) { EXPECT_FALSE(here == calcOutSubImage && BaseOp::shouldTerminate()); };
  test.requestTile();
}

VXCallbackHandle addMessageCallback(Callback& callback) {
  return VXAddMessageCB([](void* userData, const VXMessage*) { Callback::run(userData); }, &callback, ~0U);
}

void runInMessage(Reentry& test, const Inside& inside) {
  Callback callback{test, inside};
  const VXCallbackHandle handle = addMessageCallback(callback);
  EXPECT_EQ(VXFieldGetName(nullptr), nullptr);
  VXRemoveMessageCB(handle);
}

void runInMessageOfCalculation(Reentry& test, const Inside& inside) {
  Callback callback{test, inside};
  modulePlace = [&](const std::string& here) {
    if (here != calcOutSubImage) return;
    const VXCallbackHandle handle = addMessageCallback(callback);
    VXFieldGetName(nullptr);
    VXRemoveMessageCB(handle);
  };
  test.requestTile();
}

void runInNotification(Reentry& test, const Inside& inside) {
  Callback callback{test, inside};
  const VXCallbackHandle handle =
      VXAddNotifyCB([](void* userData, unsigned int, void*, void*) { Callback::run(userData); }, &callback, 0x80001);
  VXClearCache();
  VXRemoveNotifyCB(handle);
}

// The cache is flushed with its lock held.
void runInNotificationOfCalculation(Reentry& test, const Inside& inside) {
  Callback callback{test, inside};
  const VXCallbackHandle handle =
      VXAddNotifyCB([](void* userData, unsigned int, void*, void*) { Callback::run(userData); }, &callback, 0x80004);
  test.requestTile();
  VXRemoveNotifyCB(handle);
}

void runInConstructor(Reentry& test, const Inside& inside) {
  test.runAt("constructor", inside);
  EXPECT_NE(makeModule("RampModule"), nullptr);
}

void runInDestructor(Reentry& test, const Inside& inside) {
  ModulePtr module = makeModule("RampModule");
  test.runAt("destructor", inside);
  module.reset();
}

const Place places[] = {
    {"PropertyUpdate", true, true, &runInCalculation<calcOutImageProps>},
    {"OpenInput", true, true, &runInHandleInput},
    {"InputBox", true, true, &runInCalculation<calcInSubImageBox>},
    {"InputProperties", true, true, &runInCalculation<calcInSubImageProps>},
    {"PageCalculation", true, true, &runInCalculation<calcOutSubImage>},
    {"FieldNotification", false, false, &runInHandleNotification},
    {"Sensor", false, false, &runInSensor},
    {"Progress", false, false, &runInProgress},
    {"ProgressOfCalculation", true, true, &runInProgressOfCalculation},
    {"BreakCheck", true, true, &runInBreakCheck},
    {"MessageCallback", false, false, &runInMessage},
    {"MessageCallbackOfCalculation", true, true, &runInMessageOfCalculation},
    {"Notification", false, false, &runInNotification},
    {"NotificationOfCalculation", true, true, &runInNotificationOfCalculation},
    {"Constructor", false, false, &runInConstructor},
    {"Destructor", false, false, &runInDestructor},
};

TEST_P(Reentry, EachFunctionRunsOrIsRefused) {
  const Place& place = GetParam();
  World world;
  ASSERT_EQ(VXFieldConnectFrom(stageIn, out), 1);
  int numRows = 0;
  place.run(*this, [&] {
    for (const rows::Row& row : rows::allRows()) {
      if (row.kind == rows::Kind::stops && !place.isProcessing) continue;  // nothing would be left to test
      expectRow(row, world, place);
      ++numRows;
    }
  });
  EXPECT_GT(numRows, 100);
  modulePlace = nullptr;

  // Usable afterwards.
  VXFieldConnectFrom(stageIn, out);
  requestTile();
  EXPECT_EQ(VXPopState(), 44);
  EXPECT_EQ(Field::isEnabledNotifications(), 1);
  EXPECT_EQ(Host::getDefaultHost().isProcessingActive(), 0U);
}

INSTANTIATE_TEST_SUITE_P(AllPlaces, Reentry, ::testing::ValuesIn(places),
                         [](const auto& instance) { return std::string(instance.param.name); });

}  // namespace
}  // namespace vx::test
