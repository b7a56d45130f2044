// The rows of api.def as objects: each can be called well, and badly in each of its arguments.

#ifndef VX_TESTS_CAPI_ROWS_H
#define VX_TESTS_CAPI_ROWS_H

#include "Arguments.h"

#include <memory>
#include <tuple>

namespace vx::test::rows {

/// A call that is refused.
struct RefusedCall {
  std::string name;  ///< Function and argument.
  Refusal refusal;
  std::string label;
  /// Makes the arguments. The function that it gives calls with them, and says whether the answer is that of a refused
  /// call.
  std::function<std::function<bool()>()> prepare;
  bool run() const { return prepare()(); }
};

/// One function of the C interface.
struct Row {
  std::string name;
  Kind kind;
  /// Makes good arguments. The function that it gives calls with them; an answer that is a number comes as one,
  /// everything else as 0.
  std::function<std::function<long long()>(World&)> prepare;
  long long call(World& world) const { return prepare(world)(); }
  /// The calls with one bad argument each. They live as long as the world.
  std::function<std::vector<RefusedCall>(World&)> refusedCalls;

  friend std::ostream& operator<<(std::ostream& stream, const Row& row) { return stream << row.name; }
};

/// Whether a result is what a function answers to a refused call.
template <class R>
bool isAnswer([[maybe_unused]] R result, Answer answer, const Refusal& refusal) {
  if constexpr (std::is_pointer_v<R>) {
    if (answer == Answer::null) return result == nullptr;
    if constexpr (std::is_same_v<R, const char*>) {
      if (answer == Answer::emptyText) return result && *result == '\0';
      if (answer == Answer::stateText) {
        return result && std::strcmp(result, VXGetErrorCodeDescription(refusal.result())) == 0;
      }
    }
    return false;
  } else {
    switch (answer) {
      case Answer::code:
        return result == static_cast<R>(refusal.result());
      case Answer::zero:
        return result == R{};
      case Answer::minusOne:
        return result == static_cast<R>(-1);
      default:
        return false;
    }
  }
}

/// The bad value, or the good one of an argument.
template <bool isBad, class T, class BadValue>
T valueOf(const Argument<T>& argument, [[maybe_unused]] const BadValue& badValue, [[maybe_unused]] World& world) {
  if constexpr (isBad) {
    return badValue;
  } else {
    return argument.good(world);
  }
}

template <class R, class... P>
Row makeRow(const char* name, Kind kind, Answer answer, R (*function)(P...),
            std::type_identity_t<Argument<P>>... arguments) {
  auto list = std::make_shared<std::tuple<Argument<P>...>>(std::move(arguments)...);
  Row row;
  row.name = name;
  row.kind = kind;
  // One after the other, from the first.
  const auto goodValues = [list](World& world) {
    return std::apply([&](const Argument<P>&... argument) { return std::tuple<P...>{argument.good(world)...}; }, *list);
  };
  row.prepare = [=](World& world) -> std::function<long long()> {
    return [function, owner = &world, values = goodValues(world)]() -> long long {
      (void)owner;
      if constexpr (std::is_arithmetic_v<R>) {
        return static_cast<long long>(std::apply(function, values));
      } else if constexpr (std::is_same_v<R, BaseOp*> || std::is_same_v<R, FieldSensor*>) {
        owner->own(std::apply(function, values));
        return 0;
      } else {
        std::apply(function, values);
        return 0;
      }
    };
  };
  row.refusedCalls = [=](World& world) {
    std::vector<RefusedCall> calls;
    const auto addBadOnes = [&]<std::size_t I>(std::integral_constant<std::size_t, I>) {
      for (const auto& bad : std::get<I>(*list).bad(world)) {
        const auto prepare = [=, &world]() -> std::function<bool()> {
          world.forgetOutputs();
          // No good value is made where a bad one stands: it might be an object that nobody takes.
          const std::tuple<P...> values = [&]<std::size_t... J>(std::index_sequence<J...>) {
            return std::tuple<P...>{valueOf<J == I>(std::get<J>(*list), bad.value, world)...};
          }
          (std::index_sequence_for<P...>());
          return [function, values, expected = answer, refusal = bad.refusal]() -> bool {
            (void)expected;
            if constexpr (std::is_void_v<R>) {
              std::apply(function, values);
              return true;
            } else {
              return isAnswer(std::apply(function, values), expected, refusal);
            }
          };
        };
        calls.push_back(
            {std::string(name) + ", argument " + std::to_string(I), bad.refusal, bad.refusal.labelFor(name), prepare});
      }
    };
    [&]<std::size_t... I>(std::index_sequence<I...>) { (addBadOnes(std::integral_constant<std::size_t, I>()), ...); }
    (std::index_sequence_for<P...>());
    return calls;
  };
  return row;
}

/// All rows of functions of vxAPI.h.
const std::vector<Row>& allRows();

}  // namespace vx::test::rows

#endif
