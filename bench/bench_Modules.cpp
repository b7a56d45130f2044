// What the life of a module costs while many others are alive: the list of all modules must not make it dear.

#include "vxBaseOp.h"

#include <benchmark/benchmark.h>
#include <cstddef>
#include <deque>
#include <memory>

namespace {

using namespace vx;

using Modules = std::deque<std::unique_ptr<BaseOp>>;

std::unique_ptr<BaseOp> makeModule() { return std::make_unique<BaseOp>(2, 1); }

Modules makeModules(benchmark::State& state) {
  Modules modules;
  for (VXint64 i = 0; i < state.range(0); ++i) modules.push_back(makeModule());
  return modules;
}

/// A module comes and goes at the end of the list, as a host tries one after the other.
void createAndDeleteNewest(benchmark::State& state) {
  const Modules alive = makeModules(state);
  for (auto _ : state) benchmark::DoNotOptimize(makeModule());
}

/// A module comes and the oldest one goes, the dearest place to be taken from.
void createAndDeleteOldest(benchmark::State& state) {
  Modules alive = makeModules(state);
  for (auto _ : state) {
    alive.push_back(makeModule());
    alive.pop_front();
  }
}

/// The limit: the fields of a module, which are in no list.
void fieldsOnly(benchmark::State& state) {
  const std::unique_ptr<BaseOp> op = makeModule();
  for (auto _ : state) {
    FieldContainer fields(op.get(), &BaseOp::handleSensorNotification);
    for (VXint64 i = 0; i < 2; ++i) fields.addInputConnector(op.get(), i);
    fields.addOutputConnector(op.get(), 0);
    fields.addString("instanceName");
    benchmark::DoNotOptimize(&fields);
  }
}

BENCHMARK(fieldsOnly)->Name("FieldsOfAModuleOnly");
BENCHMARK(createAndDeleteNewest)->Name("CreateAndDeleteModule/newest")->ArgName("alive")->Arg(1)->Arg(100)->Arg(10000);
BENCHMARK(createAndDeleteOldest)->Name("CreateAndDeleteModule/oldest")->ArgName("alive")->Arg(1)->Arg(100)->Arg(10000);

}  // namespace

BENCHMARK_MAIN();
