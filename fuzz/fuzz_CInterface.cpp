// The C interface as a program: each opcode calls one function of vxAPI.h, well or with one bad argument, from the host
// or from inside of a callback, and an allocation may fail in it. A call that fails says so, and no other one does.

#include "FailingAllocator.h"
#include "FuzzCheck.h"
#include "FuzzInput.h"
#include "Rows.h"

#include "vxAPI.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

using namespace vx;
using test::World;
using test::rows::Kind;
using test::rows::Row;

namespace {

// Whether a function says something by itself when it is called well, and what it returns then.
struct Habit {
  bool isSilent = true;
  long long result = 0;
};

// Takes messages without an allocation of its own, since one may be about to fail.
int numFailuresHeard = 0;
VXErrorCode lastCode = 0;
bool hasReason = false;
const char* wantedReason = nullptr;

void hear(void*, const VXMessage* message) {
  if ((message->type & (VX_ERROR | VX_FATAL)) == 0) return;
  ++numFailuresHeard;
  lastCode = message->errorCode;
  hasReason = hasReason || (wantedReason && std::strcmp(message->reason, wantedReason) == 0);
}

// A pushed state has neither callbacks nor settings of the one below.
void startHearing() {
  fuzz::silenceMessages();
  fuzz::require(VXErrorOutput.addMessageCB(&hear, nullptr, VX_ERROR | VX_FATAL) != 0, "messages can't be heard");
}

void forgetMessages(const char* reason = nullptr) {
  numFailuresHeard = 0;
  hasReason = false;
  wantedReason = reason;
}

void tidyUp() {
  while (VXPopState() == VX_RESULT_OK) continue;
  VXClearCache();
}

// Those that leave a program something to go on with.
const std::vector<Row>& usableRows() {
  static const std::vector<Row> rows = [] {
    std::vector<Row> usable;
    for (const Row& row : test::rows::allRows()) {
      if (row.kind != Kind::stops) usable.push_back(row);
    }
    return usable;
  }();
  return rows;
}

// What the functions do in a fresh world. A few first calls make what is kept for later.
std::vector<Habit> learnHabits() {
  std::vector<Habit> habits;
  for (const Row& row : usableRows()) {
    Habit habit;
    for (int i = 0; i < 3; ++i) {
      World world;
      forgetMessages();
      habit.result = row.call(world);
      habit.isSilent = numFailuresHeard == 0;
      tidyUp();
    }
    habits.push_back(habit);
  }
  return habits;
}

// One program. Its calls share a world.
class Program {
 public:
  Program(fuzz::FuzzInput& input, const std::vector<Habit>& habits) : _input(input), _habits(habits) {
    _sensor = VXCreateFieldSensor(this, [](void* program, void*) { static_cast<Program*>(program)->_callBack(); });
    constexpr const char* listened[] = {"StringField", "IntField", "EnumField", "InputConnectorField",
                                        "OutputConnectorField"};
    VXFieldSensorAttach(_sensor, _world.field(_input.pick(listened)));
    test::modulePlace = [this](const std::string&) { _callBack(); };
    VXEnableExceptionHandling(_input.takeBool() ? 1 : 0);
  }
  ~Program() {
    test::modulePlace = nullptr;
    VXDeleteFieldSensor(_sensor);
    tidyUp();
    VXEnableExceptionHandling(1);
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  void run() {
    while (!_input.isEmpty() && _numCalls < maxNumCalls) _call();
  }

 private:
  // As many as there is room for in the world without an allocation.
  static constexpr int maxNumFailingCalls = 7;
  static constexpr int maxNumCalls = 16;
  static constexpr int maxDepth = 2;

  // An exception that passes a calculation to the host ends all calculations of the process.
  void _call() {
    const auto number = _input.takeInRange<std::size_t>(0, usableRows().size() - 1);
    const Row& row = usableRows()[number];
    ++_numCalls;
    const auto bad = _input.takeInRange<std::size_t>(0, 15);
    const auto wish = _input.take<std::uint8_t>();
    const bool mayFail =
        _depth == 0 && _numCalls <= maxNumFailingCalls && (row.kind == Kind::plain || VXIsExceptionHandlingEnabled());
    const long failing = mayFail && wish < 64 ? wish % 32 : -1;
    if (row.name == "VXPushState") {
      if (VXPushState(0) == VX_RESULT_OK) startHearing();
    } else if (bad >= 8) {
      _callBadly(row, bad - 8, failing);
    } else {
      _callWell(row, _habits[number], failing);
    }
    // Functions for the held object have a good field for as long as it holds one.
    if (row.name == "VXBaseFieldSetPtr") VXBaseFieldSetPtr(_world.heldBaseField(), _heldObject);
  }

  // How a call came back, one allocation of which may have failed.
  struct Outcome {
    long long result = 0;
    bool hasThrown = false;
    bool hasFailed = false;  // whether the allocation was met
  };

  template <class Call>
  static Outcome _callWithFailure(const std::string& name, const Call& call, long failing) {
    Outcome outcome;
    test::failAllocation(failing);
    try {
      outcome.result = call();
    } catch (...) {
      outcome.hasThrown = true;
    }
    outcome.hasFailed = test::stopFailing() < 0 && failing >= 0;
    // An exception is a failure that is told as well, where the host wants exceptions.
    if (outcome.hasThrown && (!outcome.hasFailed || VXIsExceptionHandlingEnabled())) fuzz::fail(name + " throws");
    return outcome;
  }

  void _callWell(const Row& row, const Habit& habit, long failing) {
    const auto call = row.prepare(_world);
    const int numCallsBefore = _numCalls;
    forgetMessages();
    const auto [result, hasThrown, hasFailed] = _callWithFailure(row.name, call, failing);
    // What calls from inside say isn't told apart, and they change what there is to say.
    if (_depth > 0 || _numCalls != numCallsBefore || !habit.isSilent || row.name == "VXPopState") return;
    if (!hasFailed && numFailuresHeard > 0) {
      fuzz::fail(row.name + " reports a failure where none was: " + std::to_string(lastCode));
    }
    if (hasFailed && !hasThrown && habit.result == 0 && result != 0 && numFailuresHeard == 0) {
      fuzz::fail(row.name + " fails with " + std::to_string(result) + " and doesn't say so");
    }
  }

  void _callBadly(const Row& row, std::size_t index, long failing) {
    // A refused call takes back the places for results that were made before, which the calls around it still need.
    const auto calls = row.refusedCalls(_depth == 0 ? _world : _innerWorlds[_depth - 1]);
    if (calls.empty()) return;
    const auto& refused = calls[index % calls.size()];
    const auto call = refused.prepare();
    forgetMessages(refused.refusal.reason.c_str());
    const Outcome outcome = _callWithFailure(refused.name, call, failing);
    if (_depth == 0 && !outcome.hasFailed) {
      if (!outcome.result) fuzz::fail(refused.name + " isn't refused");
      if (!hasReason) fuzz::fail(refused.name + " is refused without its reason");
    }
    forgetMessages();
  }

  // Called from inside of a call, by a sensor or by a module.
  void _callBack() {
    if (_depth >= maxDepth || _numCalls >= maxNumCalls || std::this_thread::get_id() != _thread) return;
    if (_input.isEmpty()) return;
    const long failing = test::stopFailing();
    const auto wish = _input.take<std::uint8_t>();
    if (wish < 96) {
      ++_depth;
      _call();
      --_depth;
    }
    test::failAllocation(failing);
  }

  fuzz::FuzzInput& _input;
  const std::vector<Habit>& _habits;
  World _world;
  World _innerWorlds[maxDepth];
  Base* _heldObject = VXBaseFieldGetPtr(_world.heldBaseField());
  VXFieldSensor* _sensor = nullptr;
  std::thread::id _thread = std::this_thread::get_id();
  int _numCalls = 0;
  int _depth = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::vector<Habit> habits = [] {
    startHearing();
    return learnHabits();
  }();
  fuzz::silenceMessages();
  fuzz::FuzzInput input(data, size);
  Program program(input, habits);
  program.run();
  return 0;
}
