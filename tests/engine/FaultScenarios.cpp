#include "FaultScenarios.h"

#include "FailingAllocator.h"
#include "FaultNetwork.h"
#include "TestTypes.h"

#include "vxAPI.h"
#include "vxDataTypes.h"
#include "vxErrorOutput.h"
#include "vxHost.h"

#include <gtest/gtest.h>
#include <optional>

namespace vx::test {

namespace {

template <class Scenario, class... Arguments>
std::unique_ptr<Scenario> made(Arguments... arguments) {
  return std::make_unique<Scenario>(arguments...);
}

using ScenarioPtr = std::unique_ptr<FaultScenario>;

// Tiles ---------------------------------------------------------------------------------------------------------------

ScenarioPtr onePage(TileForm form) {
  auto tile = made<FaultTile>();
  tile->form = form;
  return tile;
}

ScenarioPtr ninePages(TileForm form) {
  auto tile = made<FaultTile>(VXint64{48});  // large enough to be cut from slabs
  tile->form = form;
  tile->box = tile->wholeBox();
  tile->tileType = VXdoubleType;
  tile->scaleShift = {0.5, 3};
  return tile;
}

std::unique_ptr<FaultTile> wholeImage(VXDataType dataType = VXuint16Type) {
  auto tile = made<FaultTile>(VXint64{16}, dataType);
  tile->box = tile->wholeBox();
  tile->tileType = dataType;
  return tile;
}

ScenarioPtr inPlace() {
  auto tile = wholeImage();
  tile->middle.setOutImgInplace(0, 0);
  tile->last.setOutImgInplace(0, 0);
  return tile;
}

ScenarioPtr bypassed() {
  auto tile = wholeImage();
  tile->last.setBypass(0, 0);
  tile->numSteps = 1;
  return tile;
}

// A module that holds its input whole for all of its pages.
ScenarioPtr inTileCaching() {
  auto tile = wholeImage();
  const SubImgBox whole = tile->wholeBox();
  tile->last.onCalcInSubImageBox = [whole](int, const SubImgBox&, int) { return whole; };
  tile->last.onCalcInSubImageProps = [](int, InSubImageProps& props, int) { props.inTileCaching = true; };
  return tile;
}

// Inputs in another type, which are copied before each page is calculated.
ScenarioPtr convertedInputs() {
  auto tile = wholeImage();
  tile->last.onCalcInSubImageProps = [](int, InSubImageProps& props, int) { props.dataType = VXdoubleType; };
  return tile;
}

// Voxels whose copies take place one after the other.
ScenarioPtr registeredType() { return wholeImage(complexType()); }

// Nothing of the inputs is kept.
ScenarioPtr smallCache() {
  auto tile = wholeImage();
  Host::getDefaultHost().getCache().setMaxCacheSizeKB(0);
  return tile;
}

// The network itself --------------------------------------------------------------------------------------------------

// A module with two inputs, which the interface makes by name.
class FaultModule : public BaseOp {
 public:
  FaultModule() : BaseOp(2, 1) { getFieldContainer()->addInt("parameter"); }
  VX_CLASS_HEADER(FaultModule)
};
VX_CLASS_SOURCE(FaultModule, "BaseOp")

// Modules of a class that the interface makes by name.
class Modules : public FaultScenario {
 public:
  Modules() { FaultModule::initClass(nullptr, nullptr); }

  int call() override {
    _module.reset(VXCreateModuleFromName("FaultModule"));
    return _module ? VX_RESULT_OK : refused;
  }
  void expectRight() override {
    EXPECT_GE(BaseOp::findBaseOpIndex(*_module), 0);
    EXPECT_EQ(VXModuleGetNumFields(_module.get()), 5);
  }

 protected:
  struct Delete {
    void operator()(BaseOp* module) const { VXDeleteModule(module); }
  };
  std::unique_ptr<BaseOp, Delete> _module;
};

}  // namespace

const std::vector<FaultRow>& faultRows() {
  static const std::vector<FaultRow> rows = {
      {"Properties", [] { return ScenarioPtr(made<FaultProperties>()); }, {2}, Escape::always},
      {"OnePage", [] { return onePage(TileForm::memory); }, {2}, Escape::whenOff},
      {"OnePageIntoABlock", [] { return onePage(TileForm::block); }, {2}, Escape::whenOff},
      {"OnePageIntoABuffer", [] { return onePage(TileForm::buffer); }, {2}, Escape::whenOff},
      {"OnePageByC", [] { return onePage(TileForm::c); }, {2}, Escape::whenOff},
      {"NinePages", [] { return ninePages(TileForm::memory); }, {2}, Escape::whenOff},
      {"NinePagesByC", [] { return ninePages(TileForm::c); }, {2}, Escape::whenOff},
      {"InPlace", &inPlace, {2}, Escape::whenOff},
      {"Bypass", &bypassed, {2}, Escape::whenOff},
      {"InTileCaching", &inTileCaching, {2}, Escape::whenOff},
      {"ConvertedInputs", &convertedInputs, {2}, Escape::whenOff},
      {"RegisteredType", &registeredType, {2}, Escape::whenOff},
      {"SmallCache", &smallCache, {2}, Escape::whenOff},
      {"AllPages", [] { return ScenarioPtr(made<FaultWalk>(false)); }, {2}, Escape::whenOff},
      {"AllPagesOfAnInput", [] { return ScenarioPtr(made<FaultWalk>(true)); }, {2}, Escape::whenOff},
      {"Module", [] { return ScenarioPtr(made<Modules>()); }, {FaultScenario::refused}, Escape::whenOff},
  };
  return rows;
}

}  // namespace vx::test
