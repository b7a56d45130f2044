// A model of the threads of one run: the workers, the requesting thread, and the condition that they wait on, stepped
// through in every possible order. The counters that it drives are those of the library.

#ifndef VX_TESTS_CHUNK_MACHINE_MODEL_H
#define VX_TESTS_CHUNK_MACHINE_MODEL_H

#include "vxChunkCounters.h"

#include <array>
#include <cstring>
#include <ostream>
#include <string>
#include <unordered_set>
#include <vector>

namespace vx::test {

/// What goes wrong with a page.
enum class PageFailure { none, codeAtCopy, leavesAtCopy, codeAtCalculation, leavesAtCalculation };

/// One run to be tried in all orders.
struct ModelRun {
  std::vector<int> numPages;          ///< Pages of each chunk.
  std::vector<bool> isThreadMissing;  ///< Chunks whose thread can't be started.
  bool serializeInputCopies = false;  ///< Whether copies take place in rounds.
  int failingChunk = -1;              ///< The chunk with a failure, -1 for none.
  int failingPage = 0;                ///< Its page.
  PageFailure failure = PageFailure::none;

  friend std::ostream& operator<<(std::ostream& stream, const ModelRun& run) {
    stream << (run.serializeInputCopies ? "serialised" : "parallel") << ", pages";
    for (std::size_t i = 0; i < run.numPages.size(); ++i) {
      stream << ' ' << run.numPages[i] << (run.isThreadMissing[i] ? " without a thread" : "");
    }
    return stream << ", failure " << static_cast<int>(run.failure) << " in chunk " << run.failingChunk << ", page "
                  << run.failingPage;
  }
};

/// The outcome of all orders.
struct ModelResult {
  std::string violation;  ///< What went wrong in one of them, and the order of steps; empty if nothing did.
  long numStates = 0;     ///< States that were reached.
};

/// Tries all orders of the steps of one run. \tparam Counters the counters, or a faulty variant of them.
template <class Counters>
class ChunkMachineModel {
 public:
  explicit ChunkMachineModel(const ModelRun& run) : _run(run), _numChunks(static_cast<int>(run.numPages.size())) {}

  ModelResult tryAllOrders() {
    State first(Counters(_numChunks, _run.serializeInputCopies));
    for (int i = 0; i < _numChunks; ++i) first.actors[i].place = Place::unstarted;
    first.requester().place = Place::start;
    _visit(first);
    return {_violation, static_cast<long>(_visited.size())};
  }

 private:
  static constexpr int _maxActors = 4;

  using Key = std::array<VXuint32, (sizeof(Counters) + 3) / 4 + _maxActors>;
  struct KeyHash {
    std::size_t operator()(const Key& key) const {
      std::size_t hash = 0;
      for (const VXuint32 word : key) hash = (hash ^ word) * 0x9E3779B97F4A7C15ULL;
      return hash ^ hash >> 32;
    }
  };

  // Where an actor stands: what it does in its next step.
  enum class Place : signed char {
    unstarted,
    begin,
    arriveBefore,
    waitBefore,
    leaveBefore,
    copyBegin,
    copyEnd,
    arriveAfter,
    waitAfter,
    leaveAfter,
    calcBegin,
    calcEnd,
    end,
    done,  // of all who calculate
    start,
    allStarted,
    nextChunk,
    waitForEnd,
    release  // of the requesting thread
  };

  struct Actor {
    Place place = Place::done;
    signed char page = 0;
    signed char chunk = 0;   // of the requesting thread: the next one to be started or to be calculated
    bool hasFailed = false;  // the chunk ends after this page
    bool isAsleep = false;
    bool isCopying = false;
    bool isCalculating = false;
    VXuint32 numOpenings = 0;  // of the barrier, before the arrival
  };

  struct State {
    explicit State(const Counters& c) : counters(c) {}
    Counters counters;
    Actor actors[_maxActors];  // the workers, and the requesting thread last
    bool isReleased = false;

    Actor& requester() { return actors[_maxActors - 1]; }

    // All that tells the state from others; numbers of the actors are small.
    Key key() const {
      Key key{};
      std::memcpy(key.data(), &counters, sizeof counters);
      for (std::size_t i = 0; i < _maxActors; ++i) {
        const Actor& a = actors[i];
        VXuint32 word = static_cast<VXuint32>(a.place);
        word = word * 4 + static_cast<VXuint32>(a.page);
        word = word * 8 + static_cast<VXuint32>(a.chunk + 1);
        word = word * 16 + a.numOpenings % 16;
        for (const bool flag : {a.hasFailed, a.isAsleep, a.isCopying, a.isCalculating})
          word = word * 2 + (flag ? 1 : 0);
        key[key.size() - 1 - i] = word;
      }
      key[0] ^= isReleased ? ~0U : 0U;
      return key;
    }
  };

  void _visit(const State& state) {
    if (!_violation.empty() || !_visited.insert(state.key()).second) return;
    bool canAnyoneGoOn = false;
    bool areAllDone = true;
    for (int i = 0; i < _maxActors; ++i) {
      const Actor& actor = state.actors[i];
      const bool isDone = actor.place == Place::done || actor.place == Place::unstarted;
      areAllDone = areAllDone && isDone;
      if (isDone || actor.isAsleep) continue;
      canAnyoneGoOn = true;
      State next = state;
      _order += static_cast<char>('0' + i);
      _step(next, i);
      _visit(next);
      _order.pop_back();
      if (!_violation.empty()) return;
    }
    if (!areAllDone && !canAnyoneGoOn) _violate("everybody sleeps");
  }

  void _violate(const std::string& what) {
    if (_violation.empty()) _violation = what + ", order of actors " + _order;
  }

  // Whoever is told wakes up and looks again.
  static void _tell(State& state, bool isTold) {
    if (!isTold) return;
    for (Actor& actor : state.actors) actor.isAsleep = false;
  }

  PageFailure _failure(int chunk, int page) const {
    return chunk == _run.failingChunk && page == _run.failingPage ? _run.failure : PageFailure::none;
  }

  void _step(State& state, int index) {
    Actor& actor = state.actors[index];
    if (state.isReleased) _violate("somebody uses a run that is gone");
    index == _maxActors - 1 && actor.place >= Place::start ? _stepRequester(state, actor)
                                                           : _stepChunk(state, actor, index);
  }

  void _stepRequester(State& state, Actor& actor) {
    switch (actor.place) {
      case Place::start:
        if (!_run.isThreadMissing[static_cast<std::size_t>(actor.chunk)]) {
          state.actors[static_cast<int>(actor.chunk)].place = Place::begin;
          state.counters.threadStarted();
        }
        if (++actor.chunk == _numChunks) actor.place = Place::allStarted;
        break;
      case Place::allStarted:
        _tell(state, state.counters.allThreadsStarted());
        actor.chunk = -1;
        actor.place = Place::nextChunk;
        break;
      case Place::nextChunk:  // of those without a thread
        if (!actor.hasFailed || _run.failure == PageFailure::codeAtCopy ||
            _run.failure == PageFailure::codeAtCalculation) {
          do {
            ++actor.chunk;
          } while (actor.chunk < _numChunks && !_run.isThreadMissing[static_cast<std::size_t>(actor.chunk)]);
        } else {
          actor.chunk = static_cast<signed char>(_numChunks);  // the exception passes the chunks that are left
        }
        actor.page = 0;
        actor.hasFailed = false;
        if (actor.chunk < _numChunks) {
          actor.place = _firstPlaceOfPage();
        } else {
          _tell(state, state.counters.requesterEnds());
          actor.place = Place::waitForEnd;
        }
        break;
      case Place::waitForEnd:
        state.counters.haveAllThreadsEnded() ? void(actor.place = Place::release) : void(actor.isAsleep = true);
        break;
      case Place::release:
        state.isReleased = true;
        actor.place = Place::done;
        _checkEnd(state);
        break;
      default:
        _violate("the model has lost its way");
        break;
    }
  }

  Place _firstPlaceOfPage() const { return _run.serializeInputCopies ? Place::arriveBefore : Place::copyBegin; }

  void _stepChunk(State& state, Actor& actor, int index) {
    const bool isRequester = index == _maxActors - 1;
    const int chunk = isRequester ? actor.chunk : index;
    const PageFailure failure = _failure(chunk, actor.page);
    switch (actor.place) {
      case Place::begin:
        state.counters.threadBegins();
        actor.place = _firstPlaceOfPage();
        break;
      case Place::arriveBefore:
        _arrive(state, actor, state.counters.beforeCopy(), Place::waitBefore);
        break;
      case Place::waitBefore:
        _wait(actor, state.counters.beforeCopy(), Place::leaveBefore);
        break;
      case Place::leaveBefore:
        _leave(state, actor, state.counters.beforeCopy(), Place::copyBegin);
        break;
      case Place::copyBegin:
        actor.isCopying = true;
        _checkApart(state);
        actor.place = Place::copyEnd;
        break;
      case Place::copyEnd:
        actor.isCopying = false;
        actor.hasFailed = failure == PageFailure::codeAtCopy || failure == PageFailure::leavesAtCopy;
        actor.place = failure == PageFailure::leavesAtCopy ? Place::end
                      : _run.serializeInputCopies          ? Place::arriveAfter
                                                           : Place::calcBegin;
        break;
      case Place::arriveAfter:
        _arrive(state, actor, state.counters.afterCopy(), Place::waitAfter);
        break;
      case Place::waitAfter:
        _wait(actor, state.counters.afterCopy(), Place::leaveAfter);
        break;
      case Place::leaveAfter:
        _leave(state, actor, state.counters.afterCopy(), Place::calcBegin);
        break;
      case Place::calcBegin:
        actor.isCalculating = !actor.hasFailed;
        _checkApart(state);
        actor.place = Place::calcEnd;
        break;
      case Place::calcEnd: {
        actor.isCalculating = false;
        actor.hasFailed = actor.hasFailed || failure != PageFailure::none;
        const bool isLast = ++actor.page >= _run.numPages[static_cast<std::size_t>(chunk)];
        actor.place = actor.hasFailed || isLast ? Place::end : _firstPlaceOfPage();
        break;
      }
      case Place::end:
        if (isRequester) {
          actor.place = Place::nextChunk;
        } else {
          _tell(state, state.counters.threadEnds());
          actor.place = Place::done;
        }
        break;
      default:
        _violate("the model has lost its way");
        break;
    }
  }

  template <class Barrier>
  void _arrive(State& state, Actor& actor, Barrier& barrier, Place next) {
    actor.numOpenings = barrier.numOpenings;
    _tell(state, state.counters.arrive(barrier));
    actor.place = next;
  }
  template <class Barrier>
  void _wait(Actor& actor, const Barrier& barrier, Place next) {
    Counters::hasOpened(barrier, actor.numOpenings) ? void(actor.place = next) : void(actor.isAsleep = true);
  }
  template <class Barrier>
  void _leave(State& state, Actor& actor, Barrier& barrier, Place next) {
    if constexpr (requires { state.counters.leave(barrier); }) _tell(state, state.counters.leave(barrier));
    actor.numOpenings = 0;
    actor.place = next;
  }

  // Between the two points there are copies alone.
  void _checkApart(const State& state) {
    if (!_run.serializeInputCopies) return;
    bool isAnyCopying = false;
    bool isAnyCalculating = false;
    for (const Actor& actor : state.actors) {
      isAnyCopying = isAnyCopying || actor.isCopying;
      isAnyCalculating = isAnyCalculating || actor.isCalculating;
    }
    if (isAnyCopying && isAnyCalculating) _violate("somebody copies while another one calculates");
  }

  void _checkEnd(State& state) {
    for (int i = 0; i < _numChunks; ++i) {
      const Actor& actor = state.actors[i];
      const bool isMissing = _run.isThreadMissing[static_cast<std::size_t>(i)];
      if (actor.place != (isMissing ? Place::unstarted : Place::done)) _violate("a worker runs after the end");
      if (!isMissing && i != _run.failingChunk && actor.page != _run.numPages[static_cast<std::size_t>(i)]) {
        _violate("a page was left out");
      }
    }
    if (state.counters.numActiveThreads() != 0) _violate("a worker counts as active after the end");
  }

  ModelRun _run;
  int _numChunks;
  std::unordered_set<Key, KeyHash> _visited;
  std::string _order;
  std::string _violation;
};

}  // namespace vx::test

#endif
