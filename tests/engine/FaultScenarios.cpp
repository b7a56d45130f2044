#include "FaultScenarios.h"

#include "FaultNetwork.h"
#include "FaultRecorder.h"
#include "TestTypes.h"

#include "vxAPI.h"
#include "vxConnectorFields.h"
#include "vxDataTypes.h"
#include "vxHost.h"

#include <gtest/gtest.h>
#include <utility>

namespace vx::test {

namespace {

template <class Scenario, class... Arguments>
std::unique_ptr<Scenario> made(Arguments... arguments) {
  return std::make_unique<Scenario>(arguments...);
}

using ScenarioPtr = std::unique_ptr<FaultScenario>;

template <class Scenario>
ScenarioPtr make() {
  return made<Scenario>();
}

// Tiles ---------------------------------------------------------------------------------------------------------------

ScenarioPtr onePage(TileForm form) {
  auto tile = made<FaultTile>();
  tile->form = form;
  return tile;
}

ScenarioPtr ninePages(TileForm form, VXint64 pageSize) {
  auto tile = made<FaultTile>(pageSize);
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
  tile->inputGroup = 9;  // they stand in for the pages of the requested group
  tile->numSteps = 1;
  return tile;
}

// A module that holds its input whole for all of its pages.
ScenarioPtr inTileCaching() {
  auto tile = wholeImage();
  const SubImgBox whole = tile->wholeBox();
  tile->inputGroup = 9;
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

// A source of two pages, of a class that the interface makes by name.
class FaultRamp : public BaseOp {
 public:
  FaultRamp() : BaseOp(0, 1) {
    if (!getFieldContainer()->addInt("parameter")) throw int{VX_NO_MEMORY};
  }
  VX_CLASS_HEADER(FaultRamp)

  void calcOutImageProps(int outIndex) override {
    getOutImg(outIndex)->setImgExt(ext(8, 1));
    getOutImg(outIndex)->setPageExt(ext(4, 1));
    getOutImg(outIndex)->setDataType(VXuint16Type);
  }
  void calcOutSubImage(SubImg* outSubImg, int /*outIndex*/, SubImg* /*inSubImgs*/) override {
    setVoxels<VXuint16>(*outSubImg, sourceValue);
  }
};
VX_CLASS_SOURCE(FaultRamp, "BaseOp")

// Hands its input on.
class FaultStep : public BaseOp {
 public:
  FaultStep() : BaseOp(1, 1) {}
  VX_CLASS_HEADER(FaultStep)
};
VX_CLASS_SOURCE(FaultStep, "BaseOp")

struct DeleteModule {
  void operator()(BaseOp* module) const { VXDeleteModule(module); }
};
using ModulePtr = std::unique_ptr<BaseOp, DeleteModule>;

// A module that is made by name.
class Creation : public FaultScenario {
 public:
  int call() override {
    _module.reset(VXCreateModuleFromName("FaultRamp"));
    return _module ? VX_RESULT_OK : refused;
  }
  void expectRight() override {
    EXPECT_GE(BaseOp::findBaseOpIndex(*_module), 0);
    EXPECT_EQ(VXModuleGetNumFields(_module.get()), 3);
  }
  void expectFailed() override { EXPECT_EQ(BaseOp::getNumBaseOps(), _numModules); }

 private:
  ModulePtr _module;
  VXint64 _numModules = BaseOp::getNumBaseOps();
};

class Connection : public FaultScenario {
 public:
  int call() override {
    VXFieldDisconnect(_in);
    return VXFieldConnectFrom(_in, _out) ? VX_RESULT_OK : refused;
  }
  void expectRight() override {
    EXPECT_EQ(_in->getInputConnectorValue().getLink(), &_out->getOutputConnectorValue());
    EXPECT_EQ(_in->getNumSourceFields(), 1U);
    EXPECT_EQ(_out->getNumDestinationFields(), 1U);
  }
  void expectFailed() override {
    EXPECT_EQ(_in->getInputConnectorValue().getLink(), nullptr);
    EXPECT_EQ(_in->getNumSourceFields(), 0U);
    EXPECT_EQ(_out->getNumDestinationFields(), 0U);
  }

 private:
  FaultRamp _source;
  FaultStep _step;
  InputConnectorField* _in = _step.getInField(0);
  OutputConnectorField* _out = _source.getOutField(0);
};

// All there is from the first module to the last one's end.
class WholeRoad : public FaultScenario {
 public:
  ~WholeRoad() override { mend(); }

  int call() override {
    _source.reset(VXCreateModuleFromName("FaultRamp"));
    if (!_source) return refused;
    _step.reset(VXCreateModuleFromName("FaultStep"));
    if (!_step) return refused;
    if (!VXFieldConnectFrom(_step->getInField(0), _source->getOutField(0))) return refused;
    if (const int code = VXImageGetTile(_step->getOutField(0), &_tile, 0, 0, 0, 8, 1, 1, VXuint16Type)) return code;
    _step.reset();
    _source.reset();
    return VX_RESULT_OK;
  }
  void expectRight() override {
    ASSERT_NE(_tile, nullptr);
    for (VXint64 x = 0; x < 8; ++x) {
      EXPECT_EQ(static_cast<const VXuint16*>(_tile)[x], sourceValue(TVector<VXint64>(x, 0, 0, 0, 0, 0)));
    }
    EXPECT_EQ(BaseOp::getNumBaseOps(), _numModules);
  }
  void mend() override {
    _step.reset();
    _source.reset();
    VXImageFreeTile(std::exchange(_tile, nullptr));
  }

 private:
  VXint64 _numModules = BaseOp::getNumBaseOps();
  ModulePtr _source;
  ModulePtr _step;
  void* _tile = nullptr;
};

// The end of a network that has pages.
class Deletion : public FaultScenario {
 public:
  Deletion() { prepare(); }

  int call() override {
    _step.reset();
    _source.reset();
    return VX_RESULT_OK;
  }
  void expectRight() override {
    EXPECT_EQ(BaseOp::getNumBaseOps(), _numModules);
    EXPECT_EQ(Host::getDefaultHost().getCache().getFigures().held, 0U);
  }
  void mend() override { prepare(); }

 private:
  void prepare() {
    _source.reset(VXCreateModuleFromName("FaultRamp"));
    _step.reset(VXCreateModuleFromName("FaultStep"));
    VXFieldConnectFrom(_step->getInField(0), _source->getOutField(0));
    void* tile = nullptr;
    VXImageGetTile(_step->getOutField(0), &tile, 0, 0, 0, 8, 1, 1, VXuint16Type);
    VXImageFreeTile(tile);
  }

  VXint64 _numModules = BaseOp::getNumBaseOps();
  ModulePtr _source;
  ModulePtr _step;
};

// A tile in a state of its own.
class PushedState : public FaultTile {
 public:
  int call() override {
    Host* const host = &Host::getDefaultHost();
    if (const int code = VXPushState(0)) {
      EXPECT_EQ(&Host::getDefaultHost(), host);
      return code;
    }
    FaultRecorder::listen();
    int result = refused;
    try {
      result = FaultTile::call();
    } catch (...) {
      leave(host);
      throw;
    }
    leave(host);
    return result;
  }

 private:
  void leave(const Host* host) {
    {
      const UnaffectedAllocations unaffected;
      mend();
    }
    EXPECT_EQ(VXPopState(), 0);
    EXPECT_EQ(&Host::getDefaultHost(), host);
  }
};

}  // namespace

void registerFaultModules() {
  registerTestModules();
  registerTestTypes();
  FaultRamp::initClass(nullptr, nullptr);
  FaultStep::initClass(nullptr, nullptr);
}

const std::vector<FaultRow>& faultRows() {
  constexpr int refused = FaultScenario::refused;
  // An image behind one whose properties failed isn't calculated, and an input behind that is as good as open.
  static const std::vector<int> propertyCodes = {VX_NO_MEMORY, VX_IMAGE_NOT_CALCULATED};
  static const std::vector<int> walkCodes = {VX_NO_MEMORY, VX_IMAGE_NOT_CALCULATED, VX_OPEN_INPUT};
  static const std::vector<FaultRow> rows = {
      {"Creation", &make<Creation>, {refused}, Escape::whenOff},
      {"Connection", &make<Connection>, {refused}, Escape::whenOff},
      {"Properties", &make<FaultProperties>, propertyCodes, Escape::never},
      {"OnePage", [] { return onePage(TileForm::memory); }, propertyCodes, Escape::never},
      {"OnePageIntoABlock", [] { return onePage(TileForm::block); }, propertyCodes, Escape::never},
      {"OnePageIntoABuffer", [] { return onePage(TileForm::buffer); }, propertyCodes, Escape::never},
      {"OnePageByC", [] { return onePage(TileForm::c); }, propertyCodes, Escape::never},
      {"NinePages", [] { return ninePages(TileForm::memory, 16); }, propertyCodes, Escape::never},
      {"NinePagesOfSlabs", [] { return ninePages(TileForm::memory, 48); }, propertyCodes, Escape::never},
      {"NinePagesByC", [] { return ninePages(TileForm::c, 16); }, propertyCodes, Escape::never},
      {"InPlace", &inPlace, propertyCodes, Escape::never},
      {"Bypass", &bypassed, propertyCodes, Escape::never},
      {"InTileCaching", &inTileCaching, propertyCodes, Escape::never},
      {"ConvertedInputs", &convertedInputs, propertyCodes, Escape::never},
      {"RegisteredType", &registeredType, propertyCodes, Escape::never},
      {"SmallCache", &smallCache, propertyCodes, Escape::never},
      {"AllPages", [] { return ScenarioPtr(made<FaultWalk>(false)); }, walkCodes, Escape::never},
      {"AllPagesOfAnInput", [] { return ScenarioPtr(made<FaultWalk>(true)); }, walkCodes, Escape::never},
      {"PushedState", &make<PushedState>, {VX_NO_MEMORY, VX_IMAGE_NOT_CALCULATED, VX_MISUSED_INTERFACE}, Escape::never},
      {"Deletion", &make<Deletion>, {}, Escape::never},
      {"WholeRoad", &make<WholeRoad>, {refused, VX_NO_MEMORY, VX_IMAGE_NOT_CALCULATED}, Escape::whenOff},
  };
  return rows;
}

}  // namespace vx::test
