#include "FaultNetwork.h"

#include "TestTypes.h"

#include "vxAPI.h"
#include "vxDataTypes.h"
#include "vxHost.h"

#include <gtest/gtest.h>
#include <utility>

namespace vx::test {

namespace {

template <class T>
void addOneAs(SubImg& block) {
  T* const voxels = static_cast<T*>(block.getData());
  for (VXint64 i = 0; i < block.getBox().getNumVoxels(); ++i) voxels[i] = static_cast<T>(voxels[i] + 1);
}

void addOne(SubImg& out, int, SubImg* in, ThreadInfo&) {
  if (!out.getData()) return;  // pages are walked through without an output
  if (in[0].getData() != out.getData()) out.copySubImage(in[0]);
  if (out.getDataType() == complexType()) {
    auto* const voxels = static_cast<Complex*>(out.getData());
    for (VXint64 i = 0; i < out.getBox().getNumVoxels(); ++i) voxels[i].re += 1;
  } else {
    addOneAs<VXuint16>(out);
  }
}

double voxelAt(VXDataType dataType, const void* data, VXint64 index) {
  if (dataType == VXdoubleType) return static_cast<const double*>(data)[index];
  if (dataType == VXuint16Type) return static_cast<const VXuint16*>(data)[index];
  return static_cast<double>(static_cast<const Complex*>(data)[index].re);
}

// Whether a block is what it should be; the first voxel that isn't is told.
template <class ValueAt>
testing::AssertionResult isRight(const SubImgBox& box, VXDataType dataType, const void* data, ValueAt&& valueAt) {
  if (!data) return testing::AssertionFailure() << "no voxels";
  VXint64 index = 0;
  for (VXint64 y = box.v1.y; y <= box.v2.y; ++y) {
    for (VXint64 x = box.v1.x; x <= box.v2.x; ++x, ++index) {
      const double expected = valueAt(TVector<VXint64>(x, y, 0, 0, 0, 0));
      const double actual = voxelAt(dataType, data, index);
      if (actual == expected) continue;
      return testing::AssertionFailure() << actual << " instead of " << expected << " at " << x << ", " << y;
    }
  }
  return testing::AssertionSuccess();
}

}  // namespace

// The network ---------------------------------------------------------------------------------------------------------

FaultNetwork::FaultNetwork(VXint64 pageSize, VXDataType dataType, VXint64 numPagesX, VXint64 numPagesY)
    : source(ext(numPagesX * pageSize, numPagesY * pageSize), ext(pageSize, pageSize), dataType),
      _pageSize(pageSize),
      _imgExt(ext(numPagesX * pageSize, numPagesY * pageSize)) {
  source.threaded().anyType().named("source");
  // In place, since what a module allocates itself isn't the library's business.
  source.onCalcOutSubImage = [](SubImg& out, int, SubImg*, ThreadInfo&) {
    if (out.getDataType() == VXuint16Type) return setVoxels<VXuint16>(out, sourceValue);
    const SubImgBox box = out.getBox();
    auto* voxel = static_cast<Complex*>(out.getData());
    for (VXint64 y = box.v1.y; y <= box.v2.y; ++y) {
      for (VXint64 x = box.v1.x; x <= box.v2.x; ++x) {
        *voxel++ = {static_cast<float>(sourceValue(TVector<VXint64>(x, y, 0, 0, 0, 0))), 0};
      }
    }
  };
  middle.threaded().anyType().named("middle").connect(0, source).onCalcOutSubImage = &addOne;
  last.threaded().anyType().named("last").connect(0, middle).onCalcOutSubImage = &addOne;
}

void FaultNetwork::mend() {
  for (TestModule* const module : FaultNetwork::modules()) module->img().clearPageListAndMemoryImg();
}

// Tiles ---------------------------------------------------------------------------------------------------------------

FaultTile::~FaultTile() {
  Host::getDefaultHost().freeTile(_data);
  if (form == TileForm::block) _block.free();
}

int FaultTile::request() {
  Host& host = Host::getDefaultHost();
  switch (form) {
    case TileForm::memory:
      return host.getTile(last, 0, box, tileType, &_data, scaleShift);
    case TileForm::block:
      return host.getTile(last, 0, _block, scaleShift);
    case TileForm::buffer:
      return host.getTile(last, 0, box, tileType, _buffer, scaleShift);
    default: {
      const int size = static_cast<int>(box.v2.x) + 1;
      // Such that the mapping is that of the other forms.
      return VXImageGetScaledTile6D(last.getOutField(0), &_data, 0, 0, 0, 0, 0, 0, size, size, 1, 1, 1, 1, tileType, 0,
                                    1, scaleShift.shift, scaleShift.shift + scaleShift.scale);
    }
  }
}

int FaultTile::call() {
  if (form == TileForm::block) {
    _block.setBox(box);
    _block.setDataType(tileType);
  }
  return request();
}

void FaultTile::expectRight() {
  const void* data = form == TileForm::block ? _block.getData() : form == TileForm::buffer ? _buffer.getData() : _data;
  EXPECT_TRUE(isRight(box, tileType, data, [this](const TVector<VXint64>& position) {
    return static_cast<double>(valueAt(position)) * scaleShift.scale + scaleShift.shift;
  }));
}

void FaultTile::expectFailed() {
  if (form == TileForm::buffer) {
    EXPECT_FALSE(_buffer.isLocked());
  }
}

// Properties and walks ------------------------------------------------------------------------------------------------

int FaultProperties::call() { return BaseOp::updateImageProps(&last, 0); }

void FaultProperties::expectRight() {
  for (TestModule* const module : modules()) {
    const PagedImg& img = module->img();
    EXPECT_EQ(img.isUpToDate(), 1);
    EXPECT_EQ(img.getStateInfoErrorCode(), 0);
    EXPECT_EQ(img.getBoxFromImgExt(), wholeBox());
    EXPECT_EQ(img.getNumPages(), 9);
    EXPECT_EQ(img.getDataType(), VXuint16Type);
  }
}

void FaultProperties::expectFailed() { EXPECT_EQ(last.img().isUpToDate(), 0); }

int FaultWalk::call() {
  return _isOfInput ? last.processAllPages(-1, 0, SubImgBox()) : last.processAllPages(0, -1, SubImgBox());
}

std::vector<TestModule*> FaultWalk::modules() {
  if (_isOfInput) return {nullptr, &middle, &source};
  return FaultNetwork::modules();
}

void FaultWalk::expectRight() {
  EXPECT_GE(last.numPages, 9);
  const PagedImg& img = _isOfInput ? middle.img() : last.img();
  const int numAdded = _isOfInput ? 1 : 2;
  for (VXint64 id = 0; id < 9; ++id) {
    EXPECT_TRUE(isRight(
        img.getPageBox(id), VXuint16Type, img.getPageData(id, PagedImg::OWN_PAGE),
        [=](const TVector<VXint64>& position) { return static_cast<double>(sourceValue(position) + numAdded); }))
        << "page " << id;
  }
}

}  // namespace vx::test
