#include "HostFixture.h"
#include "TestAllocator.h"

#include "vxMemoryImg.h"
#include "vxNotify.h"

#include <cstring>
#include <set>

namespace vx::test {
namespace {

class HostTileTest : public HostFixture {
 protected:
  SourceModule source{ext(50, 40), ext(16, 16), VXuint16Type};
  TestModule module{1, 1};
};

// Requests -----------------------------------------------------------------------------------------------------------

TEST_F(HostTileTest, DeliversATileFromSeveralPages) {
  const SubImgBox box = boxOf(5, 7, 44, 33);
  EXPECT_EQ(tile(source, box, VXint32Type), valuesAt(box, sourceValue));
  EXPECT_EQ(code, 0);
  EXPECT_EQ(source.numPages, 9);
}

TEST_F(HostTileTest, ConvertsAndMaps) {
  const SubImgBox box = boxOf(3, 3, 20, 20);
  EXPECT_EQ(tile(source, box, VXdoubleType, ScaleShiftData(2, -7)),
            valuesAt(box, [](const TVector<VXint64>& p) { return 2 * sourceValue(p) - 7; }));
}

TEST_F(HostTileTest, RefusesAnOutputThatIsNotThere) {
  void* data = nullptr;
  for (const VXint64 outIndex : {VXint64{-1}, VXint64{1}}) {
    EXPECT_EQ(host.getTile(source, outIndex, boxOf(0, 0, 1, 1), VXuint8Type, &data), 6);
    EXPECT_EQ(data, nullptr);
    SubImg block(boxOf(0, 0, 1, 1), VXuint8Type);
    EXPECT_EQ(host.getTile(source, outIndex, block), 6);
    CachedBuffer buffer;
    EXPECT_EQ(host.getTile(source, outIndex, boxOf(0, 0, 1, 1), VXuint8Type, buffer), 6);
    EXPECT_FALSE(buffer.isInitialized());
  }
}

TEST_F(HostTileTest, LeavesTheTileAloneOutsideTheImage) {
  EXPECT_EQ(tile(source, boxOf(100, 100, 101, 100)), (std::vector<VXint64>{-1, -1}));
  EXPECT_EQ(code, 0);
  EXPECT_EQ(source.numPages, 0);
  EXPECT_EQ(source.numNotifyFirst, 0);
}

TEST_F(HostTileTest, AnEmptyTileIsNoError) {
  EXPECT_EQ(tile(source, SubImgBox()), std::vector<VXint64>());
  EXPECT_EQ(code, 0);
  EXPECT_EQ(source.numPages, 0);
}

TEST_F(HostTileTest, ASecondRequestCalculatesNothing) {
  const SubImgBox box = boxOf(0, 0, 49, 39);
  module.connect(0, source);
  const std::vector<VXint64> first = tile(module, box);
  EXPECT_EQ(module.numPages, 12);
  EXPECT_EQ(source.numPages, 12);
  EXPECT_EQ(tile(module, box), first);
  EXPECT_EQ(module.numPages, 12);
  EXPECT_EQ(source.numPages, 12);
}

TEST_F(HostTileTest, ReturnsTheCodeOfThePropertyUpdate) {
  tile(module, boxOf(0, 0, 1, 1));
  EXPECT_EQ(code, 3);
  SubImg block(boxOf(0, 0, 1, 1), VXuint8Type);
  EXPECT_EQ(host.getTile(module, 0, block), 3);
  EXPECT_EQ(block.getData(), nullptr);
}

TEST_F(HostTileTest, RefusesATileWhoseSizeIsNotRepresentable) {
  constexpr VXint64 last = 65535;
  const SubImgBox box({0, 0, 0, 0, 0, 0}, {last, last, last, last, 0, 0});
  void* data = nullptr;
  EXPECT_EQ(host.getTile(source, 0, box, VXuint8Type, &data), 2);
  EXPECT_EQ(data, nullptr);
  const std::vector<Message> reported = messages.take();
  ASSERT_EQ(reported.size(), 1U);
  EXPECT_EQ(reported[0].code, 2);
  EXPECT_EQ(reported[0].type, VX_FATAL);
  CachedBuffer buffer;
  EXPECT_EQ(host.getTile(source, 0, box, VXuint8Type, buffer), 2);
  EXPECT_FALSE(buffer.isInitialized());
  char voxel = 1;
  data = &voxel;
  EXPECT_EQ(host.getTile(source, 0, box, VXuint8Type, &data), 2);
  EXPECT_EQ(voxel, 1);
  messages.take();
  EXPECT_EQ(tile(source, boxOf(0, 0, 0, 0)), (std::vector<VXint64>{0}));
}

TEST_F(HostTileTest, ABlockTakesThePropertiesOfTheImageAndKeepsBoxAndType) {
  source.onCalcOutImageProps = [](PagedImg& img, int) {
    img.setImgExt(ext(50, 40));
    img.setDataType(VXuint16Type);
    img.setMinVoxelValue(-3);
    img.setMaxVoxelValue(500);
  };
  const SubImgBox box = boxOf(2, 3, 9, 4);
  SubImg block(box, VXint32Type);
  EXPECT_EQ(host.getTile(source, 0, block), 0);
  EXPECT_EQ(block.getBox(), box);
  EXPECT_EQ(block.getDataType(), VXint32Type);
  EXPECT_EQ(block.getMinVoxelValue(), -3);
  EXPECT_EQ(block.getMaxVoxelValue(), 500);
  EXPECT_EQ(valuesOf(box, VXint32Type, block.getData()), valuesAt(box, sourceValue));
  host.freeTile(block.getData());
}

TEST_F(HostTileTest, ABlockKeepsItsOwnMemory) {
  const SubImgBox box = boxOf(2, 3, 9, 4);
  std::vector<VXint32> voxels(16);
  SubImg block(box, VXint32Type, voxels.data());
  EXPECT_EQ(host.getTile(source, 0, block), 0);
  EXPECT_EQ(block.getData(), voxels.data());
  EXPECT_EQ(valuesOf(box, VXint32Type, voxels.data()), valuesAt(box, sourceValue));
}

TEST_F(HostTileTest, ABufferIsAccountedForByTheCache) {
  const SubImgBox box = boxOf(2, 3, 9, 4);
  CachedBuffer buffer;
  EXPECT_EQ(host.getTile(source, 0, box, VXint32Type, buffer), 0);
  EXPECT_EQ(buffer.getCache(), &host.getCache());
  EXPECT_EQ(buffer.getPriority(), 0U);
  EXPECT_EQ(buffer.getSize(), 64U);
  EXPECT_EQ(buffer.getLockCount(), 0);
  EXPECT_EQ(valuesOf(box, VXint32Type, buffer.getData()), valuesAt(box, sourceValue));
}

TEST_F(HostTileTest, NothingStaysLocked) {
  module.connect(0, source);
  tile(module, boxOf(0, 0, 49, 39));
  for (VXint64 id = 0; id < 12; ++id) {
    EXPECT_EQ(module.img().getPage(id, PagedImg::OWN_PAGE)->getLockCount(), 0);
    EXPECT_EQ(source.img().getPage(id, PagedImg::OWN_PAGE)->getLockCount(), 0);
  }
}

TEST_F(HostTileTest, TellsTheModuleOfItsFirstPageOncePerClearing) {
  std::vector<std::pair<int, bool>> calls;
  source.onNotifyFirst = [&](int outIndex, bool isProcessAllPages) {
    calls.emplace_back(outIndex, isProcessAllPages);
    EXPECT_EQ(Field::isEnabledNotifications(), 0);
    EXPECT_EQ(host.isProcessingActive(), 1U);
  };
  tile(source, boxOf(0, 0, 1, 1));
  tile(source, boxOf(20, 20, 21, 21));
  EXPECT_EQ(calls, (std::vector<std::pair<int, bool>>{{0, false}}));
  source.img().clearPageList();
  tile(source, boxOf(0, 0, 1, 1));
  EXPECT_EQ(calls.size(), 2U);
}

TEST_F(HostTileTest, OnlyTheRequestedModuleIsToldOfItsFirstPage) {
  module.connect(0, source);
  tile(module, boxOf(0, 0, 1, 1));
  EXPECT_EQ(module.numNotifyFirst, 1);
  EXPECT_EQ(source.numNotifyFirst, 0);
}

// What a module with two inputs sees of a request of its second output, beside what it sees of its marker.
TEST_F(HostTileTest, AModuleIsCalledInOrderWithItsIndices) {
  std::vector<std::string> calls;
  const auto note = [&](const std::string& call, int first, int second) {
    calls.push_back(call + " " + std::to_string(first) + " " + std::to_string(second));
  };
  SourceModule a(ext(20, 10), ext(16, 16), VXuint16Type);
  SourceModule b(ext(20, 10), ext(16, 16), VXuint16Type);
  a.onNotifyFirst = b.onNotifyFirst = [&](int, bool) { calls.emplace_back("notify of an input"); };
  const auto watch = [&](SourceModule& input, const std::string& name) {
    input.onCalcOutImageProps = [&, name, props = input.onCalcOutImageProps](PagedImg& img, int outIndex) {
      note(name + ".props", outIndex, 0);
      props(img, outIndex);
    };
    input.onCalcOutSubImage = [&, name](SubImg& out, int outIndex, SubImg* in, ThreadInfo&) {
      note(name + ".calc", outIndex, static_cast<int>(out.getPosition().x));
      EXPECT_EQ(in, nullptr);
    };
  };
  watch(a, "a");
  watch(b, "b");
  TestModule both(2, 2);
  both.connect(0, a).connect(1, b);
  both.onSetMarker = [&](int marker) { note("marker", marker, 0); };
  both.onCalcOutImageProps = [&](PagedImg&, int outIndex) { note("props", outIndex, 0); };
  both.onCalcInSubImageProps = [&](int inIndex, InSubImageProps&, int outIndex) { note("inProps", inIndex, outIndex); };
  both.onCalcInSubImageBox = [&](int inIndex, const SubImgBox& box, int outIndex) {
    note("inBox", inIndex, outIndex);
    EXPECT_EQ(box.getExt(), ext(16, 16));  // not cut to the image
    return box;
  };
  both.onNotifyFirst = [&](int outIndex, bool isProcessAllPages) { note("notify", outIndex, isProcessAllPages); };
  both.onCalcOutSubImage = [&](SubImg& out, int outIndex, SubImg* in, ThreadInfo&) {
    note("calc", outIndex, static_cast<int>(out.getPosition().x));
    EXPECT_EQ(in[0].getBox(), out.getBox());
    EXPECT_EQ(in[1].getBox(), out.getBox());
  };
  tile(both, boxOf(0, 0, 19, 9), VXuint16Type, ScaleShiftData(), 1);
  EXPECT_EQ(code, 0);
  EXPECT_EQ(calls, (std::vector<std::string>{"marker 1 0",  "a.props 0 0", "b.props 0 0", "marker 0 0",  "props 1 0",
                                             "inProps 0 1", "inProps 1 1", "notify 1 0",  "inBox 0 1",   "inProps 0 1",
                                             "a.calc 0 0",  "inBox 1 1",   "inProps 1 1", "b.calc 0 0",  "inBox 0 1",
                                             "inProps 0 1", "a.calc 0 16", "inBox 1 1",   "inProps 1 1", "b.calc 0 16",
                                             "calc 1 0",    "calc 1 16"}));
  EXPECT_EQ(both.numHandleInput, 0);
  EXPECT_EQ(both.img(0).isUpToDate(), false);
}

// Once for each group, also for one of input pages, and once for the request.
TEST_F(HostTileTest, TheCacheIsFlushedAfterEachGroupAndAtTheEnd) {
  // How many requests are under way at each flush.
  struct Flushes {
    Host& host;
    std::vector<VXuint32> levels;
  } flushes{host, {}};
  const VXCallbackHandle handle = VXNotify.addNotifyCB(
      [](void* userData, unsigned int notification, void*, void*) {
        auto& self = *static_cast<Flushes*>(userData);
        if (notification == 0x80004) self.levels.push_back(self.host.isProcessingActive());
      },
      &flushes, 0x1fffff);
  const auto flushesOf = [&](TestModule& op) {
    flushes.levels.clear();
    tile(op, boxOf(0, 0, 31, 0));
    return flushes.levels;
  };
  module.connect(0, source);
  EXPECT_EQ(flushesOf(module), (std::vector<VXuint32>{1, 1, 1, 0}));
  EXPECT_EQ(flushesOf(module), (std::vector<VXuint32>{1, 0}));
  module.img().clearPageList();
  module.onCalcOutSubImage = [](SubImg&, int, SubImg*, ThreadInfo&) { throw 7; };
  EXPECT_EQ(flushesOf(module), (std::vector<VXuint32>{1, 1, 1, 0}));
  EXPECT_EQ(code, 7);
  messages.take();
  TestModule open(1, 1);
  EXPECT_EQ(flushesOf(open), std::vector<VXuint32>());
  VXNotify.removeNotifyCB(handle);
}

// An image in groups of 16 MB, a cache whose limit is 0, and what it holds and keeps free at each flush.
class HostGroupMemoryTest : public HostFixture {
 protected:
  HostGroupMemoryTest() {
    host.setMaxNumThreads(1);
    host.getCache().setMaxCacheSizeKB(0);
    pages.onCalcOutSubImage = nullptr;
  }
  ~HostGroupMemoryTest() override { VXNotify.removeNotifyCB(_handle); }

  static constexpr VXint64 pageBytes = 4 << 20;
  static constexpr VXuint64 groupBytes = 4 * pageBytes;

  SourceModule pages{ext(16, pageBytes), ext(1, pageBytes), VXuint8Type};
  SubImgBox box = boxOf(0, 0, 15, 0);
  std::vector<VXuint64> held, warm;

 private:
  static void _record(void* userData, unsigned int notification, void*, void*) {
    if (notification != 0x80004) return;
    auto& self = *static_cast<HostGroupMemoryTest*>(userData);
    const CacheFigures figures = self.host.getCache().getFigures();
    self.held.push_back(figures.held);
    self.warm.push_back(figures.warm);
  }
  VXCallbackHandle _handle = VXNotify.addNotifyCB(&_record, this, 0x1fffff);
};

// The pages of one group are dropped when those of the next one are there, and their memory is for the group after
// that.
TEST_F(HostGroupMemoryTest, ItIsForTheGroupsThatFollow) {
  tile(pages, box);
  EXPECT_EQ(code, 0);
  EXPECT_EQ(held, (std::vector<VXuint64>{groupBytes, groupBytes, groupBytes, groupBytes, 0}));
  EXPECT_EQ(warm, (std::vector<VXuint64>{0, groupBytes, groupBytes, groupBytes, Cache::maxWarmBytes}));
  EXPECT_EQ(host.getCache().getFigures().peak, 2 * groupBytes);
}

TEST_F(HostGroupMemoryTest, ARequestFromInsideLeavesIt) {
  SourceModule small(ext(1, 1), ext(1, 1), VXuint8Type);
  pages.onCalcOutSubImage = [&](SubImg& out, int, SubImg*, ThreadInfo&) {
    if (out.getBox().v1.x != 8) return;  // the first page of the third group
    held.clear();
    warm.clear();
    VXuint8 voxel = 0;
    void* data = &voxel;
    EXPECT_EQ(host.getTile(small, 0, boxOf(0, 0, 0, 0), VXuint8Type, &data), 0);
  };
  tile(pages, box);
  EXPECT_EQ(code, 0);
  // One flush with the page of a voxel, one at the end of that request, then those of the groups.
  EXPECT_EQ(held, (std::vector<VXuint64>{groupBytes + 1, groupBytes, groupBytes, groupBytes, 0}));
  EXPECT_EQ(warm, (std::vector<VXuint64>{groupBytes, groupBytes, groupBytes, groupBytes, Cache::maxWarmBytes}));
}

TEST_F(HostGroupMemoryTest, ItGoesAtTheEndOfARequestThatFails) {
  pages.onCalcOutSubImage = [](SubImg& out, int, SubImg*, ThreadInfo&) {
    if (out.getBox().v1.x == 8) throw 7;
  };
  tile(pages, box);
  EXPECT_EQ(code, 7);
  EXPECT_FALSE(messages.take().empty());
  // The pages of the group that failed stay, and are locked.
  EXPECT_EQ(held, (std::vector<VXuint64>{groupBytes, groupBytes, groupBytes, groupBytes}));
  EXPECT_EQ(warm, (std::vector<VXuint64>{0, groupBytes, groupBytes, Cache::maxWarmBytes}));
}

TEST_F(HostGroupMemoryTest, ItGoesAtTheEndOfARequestThatThrows) {
  const ExceptionHandling off(false);
  pages.onCalcOutSubImage = [](SubImg& out, int, SubImg*, ThreadInfo&) {
    if (out.getBox().v1.x == 8) throw OtherException();
  };
  EXPECT_THROW(tile(pages, box), OtherException);
  EXPECT_FALSE(messages.take().empty());
  ASSERT_FALSE(warm.empty());
  EXPECT_EQ(held.back(), groupBytes);
  EXPECT_EQ(warm.back(), Cache::maxWarmBytes);
}

TEST_F(HostTileTest, TheApplicationIsNotAskedToStop) {
  int numChecks = 0;
  host.setBreakCheckCB(&numChecks, [](void* userData, void**) { return ++*static_cast<int*>(userData); });
  module.connect(0, source);
  const SubImgBox box = boxOf(0, 0, 49, 39);
  EXPECT_EQ(tile(module, box), valuesAt(box, sourceValue));
  EXPECT_EQ(numChecks, 0);
}

TEST_F(HostTileTest, TheMemoryOfATileStaysWhereItFailed) {
  source.onCalcOutSubImage = [](SubImg&, int, SubImg*, ThreadInfo&) { throw 7; };
  const SubImgBox box = boxOf(0, 0, 1, 1);
  void* data = nullptr;
  EXPECT_EQ(host.getTile(source, 0, box, VXuint8Type, &data), 7);
  EXPECT_NE(data, nullptr);
  host.freeTile(data);
  source.img().clearPageList();
  SubImg block(box, VXuint8Type);
  EXPECT_EQ(host.getTile(source, 0, block), 7);
  EXPECT_NE(block.getData(), nullptr);
  host.freeTile(block.getData());
  source.img().clearPageList();
  CachedBuffer buffer;
  EXPECT_EQ(host.getTile(source, 0, box, VXuint8Type, buffer), 7);
  EXPECT_TRUE(buffer.isInitialized());
  EXPECT_FALSE(buffer.isLocked());
  messages.take();
}

TEST_F(HostTileTest, AModuleMayRequestTilesInsideItsOwnCalculation) {
  TestModule asking(0, 1);
  VXuint32 processing = 0;
  int inner = -1;
  asking.onCalcOutImageProps = [](PagedImg& img, int) {
    img.setImgExt(ext(4, 4));
    img.setDataType(VXuint16Type);
  };
  source.onNotifyFirst = [&](int, bool) { processing = host.isProcessingActive(); };
  asking.onCalcOutSubImage = [&](SubImg& out, int, SubImg*, ThreadInfo&) { inner = host.getTile(source, 0, out); };
  EXPECT_EQ(tile(asking, boxOf(0, 0, 3, 3)), valuesAt(boxOf(0, 0, 3, 3), sourceValue));
  EXPECT_EQ(inner, 0);
  EXPECT_EQ(processing, 2U);
}

TEST_F(HostTileTest, AModuleMayRequestTilesWhileItSetsProperties) {
  module.connect(0, source);
  VXint64 seen = -1;
  module.onCalcOutImageProps = [&](PagedImg& img, int) {
    void* data = &seen;
    EXPECT_EQ(host.getTile(source, 0, boxOf(20, 1, 20, 1), VXint64Type, &data), 0);
    img.setMaxVoxelValue(static_cast<long double>(seen));
  };
  EXPECT_EQ(tile(module, boxOf(0, 0, 1, 0)), (std::vector<VXint64>{0, 1}));
  EXPECT_EQ(seen, sourceValue(ext(20, 1, 0, 0, 0, 0)));
}

// Groups -------------------------------------------------------------------------------------------------------------

// The ids of the pages that each call of the property of inputs precedes, up to the next calculation.
TEST_F(HostTileTest, AGroupTakesAboutTwoMegabytesButEightPagesForEachThread) {
  struct Row {
    VXint64 numPages, pageSize;
    VXuint32 numThreads;
    std::vector<int> groups;
  };
  // Pages are pageSize x 1 x 1 voxels of 8 bytes.
  const std::vector<Row> rows = {
      {7, 1 << 20, 1, {7}},           // fewer than eight
      {16, 131072, 1, {4, 4, 4, 4}},  // eight are still above
      {64, 4096, 1, {64}},            // exactly 2 MB
      {65, 4096, 1, {32, 32, 1}},     // above
      {64, 8192, 8, {32, 32}},        // below 8 x 8 pages after one step
      {64, 8192, 9, {64}},            // below 8 x 9 pages
      {64, 8192, ~0U, {64}},          // the product takes more than 32 bits
      {20, 65536, 0, {5, 5, 5, 5}},   // no threads: down to below eight
  };
  for (const Row& row : rows) {
    host.setMaxNumThreads(row.numThreads);
    std::vector<int> groups;
    bool isCalculating = true;
    SourceModule pages(ext(row.numPages * row.pageSize, 1), ext(row.pageSize, 1), VXuint8Type);
    pages.onCalcOutSubImage = nullptr;
    TestModule walker(1, 1);
    walker.connect(0, pages);
    walker.onCalcOutImageProps = [](PagedImg& img, int) { img.setDataType(VXint64Type); };
    walker.onCalcInSubImageBox = [&](int, const SubImgBox&, int) {
      if (isCalculating) groups.push_back(0);
      isCalculating = false;
      ++groups.back();
      return SubImgBox();
    };
    walker.onCalcOutSubImage = [&](SubImg&, int, SubImg*, ThreadInfo&) { isCalculating = true; };
    const SubImgBox all({0, 0, 0, 0, 0, 0}, {row.numPages * row.pageSize - 1, 0, 0, 0, 0, 0});
    EXPECT_EQ(host.processAllPages(walker, 0, -1, all), 0);
    EXPECT_EQ(groups, row.groups) << row.numPages << " pages of " << row.pageSize << ", threads " << row.numThreads;
  }
}

// Inputs -------------------------------------------------------------------------------------------------------------

TEST_F(HostTileTest, RequestsInputsPageByPageAndDepthFirst) {
  std::string order;
  TestModule sum(2, 1);
  SourceModule second(ext(32, 16), ext(16, 16), VXuint16Type);
  SourceModule first(ext(32, 16), ext(16, 16), VXuint16Type);
  const auto note = [&](TestModule& op, const std::string& name) {
    const auto calc = op.onCalcOutSubImage;
    op.onCalcOutSubImage = [=, &order](SubImg& out, int index, SubImg* in, ThreadInfo& info) {
      order += name + std::to_string(out.getPosition().x / 16) + " ";
      if (calc) calc(out, index, in, info);
    };
  };
  note(first, "a");
  note(second, "b");
  note(module, "c");
  note(sum, "d");
  module.connect(0, first);
  sum.connect(0, module).connect(1, second);
  tile(sum, boxOf(0, 0, 31, 15));
  EXPECT_EQ(order, "a0 c0 b0 a1 c1 b1 d0 d1 ");
}

TEST_F(HostTileTest, AnEmptyInputRegionRequestsNothing) {
  module.connect(0, source);
  module.onCalcInSubImageBox = [](int, const SubImgBox&, int) { return SubImgBox(); };
  void* inputData = &module;
  module.onCalcOutSubImage = [&](SubImg& out, int, SubImg* in, ThreadInfo&) {
    inputData = in[0].getData();
    EXPECT_TRUE(in[0].getBox().isEmpty());
    out.fillSubImg(5);
  };
  EXPECT_EQ(tile(module, boxOf(0, 0, 1, 0)), (std::vector<VXint64>{5, 5}));
  EXPECT_EQ(inputData, nullptr);
  EXPECT_EQ(source.numPages, 0);
  EXPECT_EQ(module.numPages, 1);
}

TEST_F(HostTileTest, AnInputComesInTheRegionTypeAndMappingThatTheModuleWants) {
  module.connect(0, source);
  module.onCalcInSubImageBox = [](int, const SubImgBox& box, int) {
    return SubImgBox(box.v1 + ext(1, 1, 0, 0, 0, 0), box.v2 + ext(3, 1, 0, 0, 0, 0));
  };
  module.onCalcInSubImageProps = [](int, InSubImageProps& props, int) {
    props.dataType = VXdoubleType;
    props.scaleShiftData = ScaleShiftData(0.5, 100);
  };
  module.onCalcOutSubImage = [](SubImg& out, int, SubImg* in, ThreadInfo&) {
    EXPECT_EQ(in[0].getDataType(), VXdoubleType);
    const SubImgBox box = in[0].getBox();
    EXPECT_EQ(box, SubImgBox(out.getBox().v1 + ext(1, 1, 0, 0, 0, 0), out.getBox().v2 + ext(3, 1, 0, 0, 0, 0)));
    TVector<VXint64> p = box.v1;
    p.x += 2;
    const double expected = static_cast<double>(sourceValue(p)) * 0.5 + 100;
    EXPECT_EQ(static_cast<double*>(in[0].getData())[2], expected);
  };
  tile(module, boxOf(0, 0, 30, 20));
  EXPECT_EQ(code, 0);
}

TEST_F(HostTileTest, AnOpenInputThatTheUpdateDidNotSeeIsFatal) {
  module.onHandleInput = [isFirst = std::make_shared<int>(0)](int, BaseOp::INPUT_STATE) {
    return ++*isFirst <= 2 ? BaseOp::USE_PLACEHOLDER : BaseOp::INVALIDATE_OUTPUT;
  };
  tile(module.named("x"), boxOf(0, 0, 0, 0));
  EXPECT_EQ(code, 12);
  const std::vector<Message> reported = messages.take();
  ASSERT_EQ(reported.size(), 3U);
  EXPECT_EQ(reported[0],
            (Message{VX_FATAL, 12, "Host::_initializePageData",
                     "The VX detected an open input where a valid one should be. A reason could be that "
                     "BaseOp::handleInput(...) const has not been overloaded correctly (forgotten const?)."}));
  EXPECT_EQ(reported[1].code, 41);
  EXPECT_EQ(reported[2],
            (Message{VX_ERROR, 12, "Host::_processPagesHelper() on module TestModule(x)", controlledException}));
}

TEST_F(HostTileTest, AnInputInPlaceIsDeliveredInTheMemoryOfThePage) {
  module.connect(0, source).setOutImgInplace(0, 0);
  int numInPlace = 0;
  module.onCalcOutSubImage = [&](SubImg& out, int, SubImg* in, ThreadInfo&) {
    numInPlace += in[0].getData() == out.getData();
    EXPECT_EQ(
        valuesOf(out.getBox(), VXuint16Type, out.getData()),
        valuesAt(out.getBox(), [](const TVector<VXint64>& p) { return p.x < 64 && p.y < 48 ? sourceValue(p) : 0; }));
  };
  EXPECT_EQ(tile(module, boxOf(0, 0, 49, 39)), valuesAt(boxOf(0, 0, 49, 39), sourceValue));
  EXPECT_EQ(numInPlace, 12);
}

TEST_F(HostTileTest, AnInputOfAnotherTypeIsNotInPlace) {
  module.connect(0, source).setOutImgInplace(0, 0);
  module.onCalcInSubImageProps = [](int, InSubImageProps& props, int) { props.dataType = VXint32Type; };
  module.onCalcOutSubImage = [&](SubImg& out, int, SubImg* in, ThreadInfo&) {
    EXPECT_NE(in[0].getData(), out.getData());
    out.copySubImage(in[0]);
  };
  EXPECT_EQ(tile(module, boxOf(0, 0, 9, 9)), valuesAt(boxOf(0, 0, 9, 9), sourceValue));
}

// Inputs that are only read -------------------------------------------------------------------------------------------

class HostReadOnlyInputTest : public HostTileTest {
 protected:
  // Requests all of the module; \return how many input blocks lay in the page of the source.
  int countShared(VXDataType dataType = VXuint16Type) {
    int numShared = 0;
    module.onCalcOutSubImage = [&](SubImg& out, int, SubImg* in, ThreadInfo&) {
      for (VXint64 id = 0; id < source.img().getNumPages(); ++id) {
        const CachedBuffer* const page = source.img().getPage(id, PagedImg::OWN_PAGE);
        if (!page || page->getData() != in[0].getData()) continue;
        ++numShared;
        EXPECT_GT(page->getLockCount(), 0);
        EXPECT_EQ(source.img().getPageBox(id), in[0].getBox());
      }
      EXPECT_NE(in[0].getData(), out.getData());
      out.copySubImage(in[0]);
    };
    const SubImgBox box = boxOf(0, 0, 49, 39);
    EXPECT_EQ(tile(module, box, dataType), valuesAt(box, sourceValue));
    EXPECT_EQ(code, 0);
    for (VXint64 id = 0; id < source.img().getNumPages(); ++id) {
      EXPECT_EQ(source.img().getPage(id, PagedImg::OWN_PAGE)->getLockCount(), 0);
    }
    return numShared;
  }
};

TEST_F(HostReadOnlyInputTest, NothingIsPromisedAtFirst) {
  EXPECT_FALSE(module.areInputsReadOnly());
  module.connect(0, source);
  EXPECT_EQ(countShared(), 0);
}

TEST_F(HostReadOnlyInputTest, ABlockThatIsAPageLiesInThePage) {
  module.connect(0, source).setInputsReadOnly(true);
  EXPECT_TRUE(module.areInputsReadOnly());
  EXPECT_EQ(countShared(), 12);
}

TEST_F(HostReadOnlyInputTest, ABlockOfAnotherTypeOrMappingIsCopied) {
  module.connect(0, source).setInputsReadOnly(true);
  module.onCalcInSubImageProps = [](int, InSubImageProps& props, int) { props.dataType = VXint32Type; };
  EXPECT_EQ(countShared(), 0);
}

TEST_F(HostReadOnlyInputTest, ABlockOfAnotherRegionIsCopied) {
  module.connect(0, source).setInputsReadOnly(true);
  module.onCalcInSubImageBox = [](int, const SubImgBox& box, int) {
    return SubImgBox(box.v1, box.v2 + TVector<VXint64>(1, 0, 0, 0, 0, 0));
  };
  EXPECT_EQ(countShared(), 0);
}

TEST_F(HostReadOnlyInputTest, AnInputInPlaceStaysInPlace) {
  module.connect(0, source).setInputsReadOnly(true);
  module.setOutImgInplace(0, 0);
  int numInPlace = 0;
  module.onCalcOutSubImage = [&](SubImg& out, int, SubImg* in, ThreadInfo&) {
    numInPlace += in[0].getData() == out.getData();
  };
  EXPECT_EQ(tile(module, boxOf(0, 0, 49, 39)), valuesAt(boxOf(0, 0, 49, 39), sourceValue));
  EXPECT_EQ(numInPlace, 12);
}

// Bypass -------------------------------------------------------------------------------------------------------------

TEST_F(HostTileTest, ABypassedModuleDeliversThePagesOfItsInput) {
  module.connect(0, source).setBypass(0, 0);
  EXPECT_EQ(tile(module, boxOf(0, 0, 49, 39)), valuesAt(boxOf(0, 0, 49, 39), sourceValue));
  EXPECT_EQ(module.numPages, 0);
  EXPECT_EQ(source.numPages, 12);
  for (VXint64 id = 0; id < 12; ++id) {
    EXPECT_EQ(module.img().getPage(id, PagedImg::OWN_PAGE), nullptr);
    EXPECT_EQ(source.img().getPage(id, PagedImg::OWN_PAGE)->getLockCount(), 0);
  }
  tile(module, boxOf(0, 0, 49, 39));
  EXPECT_EQ(source.numPages, 12);
}

TEST_F(HostTileTest, AModuleIsBypassedOnlyWhereItIsRequested) {
  module.connect(0, source).setBypass(0, 0);
  TestModule behind(1, 1);
  behind.connect(0, module);
  EXPECT_EQ(tile(behind, boxOf(0, 0, 9, 9)), valuesAt(boxOf(0, 0, 9, 9), sourceValue));
  EXPECT_EQ(module.numPages, 1);
}

TEST_F(HostTileTest, AModuleIsCalculatedWhereItsInputMadeNoPage) {
  module.connect(0, source).setBypass(0, 0);
  module.onCalcInSubImageBox = [](int, const SubImgBox&, int) { return SubImgBox(); };
  module.onCalcOutSubImage = [](SubImg& out, int, SubImg*, ThreadInfo&) { out.fillSubImg(9); };
  EXPECT_EQ(tile(module, boxOf(0, 0, 0, 0)), (std::vector<VXint64>{9}));
}

// In-tile caching ----------------------------------------------------------------------------------------------------

class HostInTileTest : public HostTileTest {
 protected:
  HostInTileTest() {
    module.connect(0, source).named("m");
    module.onCalcInSubImageBox = [](int, const SubImgBox&, int) { return boxOf(0, 0, 49, 39); };
    module.onCalcInSubImageProps = [](int, InSubImageProps& props, int) { props.inTileCaching = true; };
    module.onCalcOutSubImage = [this](SubImg& out, int, SubImg* in, ThreadInfo&) {
      inputs.insert(in[0].getData());
      out.copySubImage(in[0]);
    };
  }

  Message warning(VXErrorCode number, const char* reason) {
    return {VX_WARNING, number, "TestModule(m)::calcInSubImageProps", reason};
  }

  static constexpr char typeReason[] =
      "inTileCaching has been disabled, because it does not work togehther with requested change of the input data "
      "types "
      "type. This could degrade performance strongly.";
  static constexpr char boxReason[] =
      "It is prohibited to activate inTileCaching without requesting tiles of input volume size. Hence inTileCaching "
      "has "
      "been deactivated which might degrade performance strongly.";
  static constexpr char mappingReason[] =
      "inTileCaching has been disabled, because it does not work togehther with requested scaling/shifting of data. "
      "This "
      "could degrade performance strongly.";

  std::set<void*> inputs;
};

TEST_F(HostInTileTest, TheWholeInputIsCopiedOnce) {
  EXPECT_EQ(tile(module, boxOf(0, 0, 49, 39)), valuesAt(boxOf(0, 0, 49, 39), sourceValue));
  EXPECT_EQ(inputs, std::set<void*>{source.img().getMemoryImg().getSubImg().getData()});
  EXPECT_TRUE(source.img().getMemoryImg().isValid());
  EXPECT_EQ(module.numPages, 12);
  EXPECT_EQ(source.numPages, 12);
}

TEST_F(HostInTileTest, TheMemoryImageServesTheNextRequest) {
  tile(module, boxOf(0, 0, 9, 9));
  module.img().clearPageList();
  source.img().clearPageList();
  EXPECT_EQ(tile(module, boxOf(0, 0, 9, 9)), valuesAt(boxOf(0, 0, 9, 9), sourceValue));
  EXPECT_EQ(source.numPages, 12);
}

TEST_F(HostInTileTest, ItIsKeptInTheTypeThatTheModuleWants) {
  module.onCalcOutImageProps = [](PagedImg& img, int) { img.setDataType(VXfloatType); };
  EXPECT_EQ(tile(module, boxOf(0, 0, 49, 39)), valuesAt(boxOf(0, 0, 49, 39), sourceValue));
  EXPECT_EQ(inputs.size(), 1U);
  EXPECT_EQ(source.img().getMemoryImg().getSubImg().getDataType(), VXfloatType);
}

TEST_F(HostInTileTest, AnotherTypeIsRefused) {
  module.onCalcInSubImageProps = [](int, InSubImageProps& props, int) {
    props.inTileCaching = true;
    props.dataType = VXint32Type;
  };
  EXPECT_EQ(tile(module, boxOf(0, 0, 49, 39)), valuesAt(boxOf(0, 0, 49, 39), sourceValue));
  EXPECT_EQ(messages.take(), (std::vector<Message>{warning(13, typeReason)}));
  EXPECT_FALSE(source.img().getMemoryImg().isValid());
}

TEST_F(HostInTileTest, AllThatIsWrongIsToldInOrder) {
  module.onCalcInSubImageBox = [](int, const SubImgBox& box, int) { return box; };
  module.onCalcInSubImageProps = [](int, InSubImageProps& props, int) {
    props = InSubImageProps(VXint32Type);
    props.inTileCaching = true;
    props.scaleShiftData = ScaleShiftData(1, 1);
  };
  tile(module, boxOf(0, 0, 9, 9));
  EXPECT_EQ(messages.take(),
            (std::vector<Message>{warning(13, typeReason), warning(19, boxReason), warning(19, mappingReason)}));
}

TEST_F(HostInTileTest, OnlyTheFirstPageOfACallMayAskForIt) {
  tile(module, boxOf(0, 0, 0, 0));
  source.img().getMemoryImg().clearMemoryImg();
  tile(module, boxOf(0, 0, 49, 39));  // the first page is there
  EXPECT_FALSE(source.img().getMemoryImg().isValid());
}

// Two modules that want the same input whole, in different types: what one of them reads stays.
TEST_F(HostInTileTest, AMemoryImageThatIsBeingReadIsNotMadeAnother) {
  TestModule other(2, 1);
  other.connect(0, source).connect(1, module);
  other.onCalcOutImageProps = [](PagedImg& img, int) { img.setDataType(VXdoubleType); };
  other.onCalcInSubImageBox = [](int in, const SubImgBox& box, int) { return in == 0 ? boxOf(0, 0, 49, 39) : box; };
  other.onCalcInSubImageProps = [](int in, InSubImageProps& props, int) { props.inTileCaching = in == 0; };
  other.onCalcOutSubImage = [](SubImg& out, int, SubImg* in, ThreadInfo&) {
    auto* const voxels = static_cast<double*>(out.getData());
    out.copySubImage(in[0]);
    SubImg sum(out.getBox(), VXdoubleType);
    sum.allocate(VX_FATAL_MEMORY_ERROR);
    sum.copySubImage(in[1]);
    for (VXint64 i = 0; i < out.getBox().getNumVoxels(); ++i) voxels[i] += static_cast<double*>(sum.getData())[i];
    sum.free();
  };
  const SubImgBox box = boxOf(0, 0, 49, 39);
  EXPECT_EQ(tile(other, box), valuesAt(box, [](const TVector<VXint64>& p) { return 2 * sourceValue(p); }));
  EXPECT_FALSE(source.img().getMemoryImg().hasReaders());
  EXPECT_EQ(source.img().getMemoryImg().getSubImg().getDataType(), VXdoubleType);
}

TEST_F(HostInTileTest, AMemoryImageUnderManualControlIsLeftAlone) {
  source.setMemoryOutputControl(0, true);
  EXPECT_EQ(tile(module, boxOf(0, 0, 9, 9)), valuesAt(boxOf(0, 0, 9, 9), sourceValue));
  EXPECT_FALSE(source.img().getMemoryImg().isValid());
}

// Memory images ------------------------------------------------------------------------------------------------------

TEST_F(HostTileTest, PagesComeFromAValidMemoryImageAndGoFirst) {
  source.setMemoryOutputControl(0, true);
  EXPECT_EQ(host.updateImageProps(source, 0), 0);
  MemoryImg& memory = source.img().getMemoryImg();
  EXPECT_EQ(memory.update(nullptr, 0, boxOf(0, 0, 49, 39), VXuint16Type), 5);
  memory.getSubImg().fillSubImg(77);
  memory.setValid(true);
  EXPECT_EQ(tile(source, boxOf(48, 38, 49, 39)), (std::vector<VXint64>{77, 77, 77, 77}));
  EXPECT_EQ(source.numPages, 0);
  const CachedBuffer* const page = source.img().getPage(11, PagedImg::OWN_PAGE);
  EXPECT_EQ(page->getPriority(), 0U);
  EXPECT_EQ(page->getLockCount(), 0);
}

TEST_F(HostTileTest, AMemoryImageThatDoesNotHoldThePageIsNotUsed) {
  source.setMemoryOutputControl(0, true);
  EXPECT_EQ(host.updateImageProps(source, 0), 0);
  MemoryImg& memory = source.img().getMemoryImg();
  memory.update(nullptr, 0, boxOf(0, 0, 15, 14), VXuint16Type);
  memory.setValid(true);
  EXPECT_EQ(tile(source, boxOf(0, 0, 0, 0)), (std::vector<VXint64>{0}));
  EXPECT_EQ(source.numPages, 1);
  memory.update(nullptr, 0, boxOf(0, 0, 49, 39), VXint16Type);
  memory.setValid(true);
  EXPECT_EQ(tile(source, boxOf(20, 0, 20, 0)), (std::vector<VXint64>{20}));
  EXPECT_EQ(source.numPages, 2);
}

TEST_F(HostTileTest, AnInputFromTheMemoryImageIsMappedAndConvertedAsWanted) {
  source.setMemoryOutputControl(0, true);
  EXPECT_EQ(host.updateImageProps(source, 0), 0);
  MemoryImg& memory = source.img().getMemoryImg();
  const SubImgBox all = boxOf(0, 0, 49, 39);
  memory.update(nullptr, 0, all, VXuint16Type);
  memory.getSubImg().fillSubImg(7);
  memory.setValid(true);
  module.connect(0, source);
  module.onCalcInSubImageBox = [=](int, const SubImgBox&, int) { return all; };
  ScaleShiftData mapping;
  VXDataType wanted = VXuint16Type;
  void* input = nullptr;
  module.onCalcInSubImageProps = [&](int, InSubImageProps& props, int) {
    props.dataType = wanted;
    props.scaleShiftData = mapping;
  };
  module.onCalcOutSubImage = [&](SubImg& out, int, SubImg* in, ThreadInfo&) {
    input = in[0].getData();
    out.copySubImage(in[0]);
  };
  EXPECT_EQ(tile(module, boxOf(0, 0, 0, 0)), (std::vector<VXint64>{7}));
  EXPECT_EQ(input, memory.getSubImg().getData());
  mapping = ScaleShiftData(2, 1);
  EXPECT_EQ(tile(module, boxOf(16, 0, 16, 0)), (std::vector<VXint64>{15}));
  wanted = VXfloatType;
  EXPECT_EQ(tile(module, boxOf(32, 0, 32, 0)), (std::vector<VXint64>{15}));
  EXPECT_EQ(source.numPages, 0);
}

// All pages ----------------------------------------------------------------------------------------------------------

class HostAllPagesTest : public HostTileTest {};

TEST_F(HostAllPagesTest, ExactlyOneIndexIsGiven) {
  module.connect(0, source);
  EXPECT_EQ(host.processAllPages(module, -1, -1, SubImgBox()), 11);
  EXPECT_EQ(host.processAllPages(module, 0, 0, SubImgBox()), 11);
  EXPECT_EQ(host.processAllPages(module, -1, 1, SubImgBox()), 11);
  EXPECT_EQ(host.processAllPages(module, 1, -1, SubImgBox()), 6);
  EXPECT_EQ(host.processAllPages(module, -2, -1, SubImgBox()), 6);
  EXPECT_EQ(module.numPages, 0);
}

TEST_F(HostAllPagesTest, AnInputWithoutAnImageStopsIt) {
  EXPECT_EQ(host.processAllPages(module, -1, 0, SubImgBox()), 10);
  source.onCalcOutImageProps = [](PagedImg& img, int) { img.setOutOfDate(); };
  module.connect(0, source);
  EXPECT_EQ(host.processAllPages(module, -1, 0, SubImgBox()), 12);
}

TEST_F(HostAllPagesTest, AModuleWithoutOutputWalksThroughItsInput) {
  TestModule collector(1, 0);
  collector.connect(0, source);
  VXint64 sum = 0;
  std::vector<int> outIndices;
  collector.onCalcOutSubImage = [&](SubImg& out, int outIndex, SubImg* in, ThreadInfo&) {
    outIndices.push_back(outIndex);
    EXPECT_EQ(out.getData(), nullptr);
    const SubImgBox box = SubImgBox::intersect(out.getBox(), boxOf(0, 0, 49, 39));
    std::vector<VXint64> values(static_cast<std::size_t>(box.getNumVoxels()));
    SubImg(box, VXint64Type, values.data()).copySubImage(in[0]);
    for (const VXint64 value : values) sum += value;
  };
  EXPECT_EQ(host.processAllPages(collector, -1, 0, SubImgBox()), 0);
  VXint64 expected = 0;
  for (const VXint64 value : valuesAt(boxOf(0, 0, 49, 39), sourceValue)) expected += value;
  EXPECT_EQ(sum, expected);
  EXPECT_EQ(outIndices, std::vector<int>(12, -1));
  EXPECT_EQ(collector.numNotifyFirst, 1);
  EXPECT_EQ(source.img().getPage(0, PagedImg::OWN_PAGE)->getLockCount(), 0);
}

TEST_F(HostAllPagesTest, OnlyThePagesOfTheBox) {
  TestModule collector(1, 0);
  collector.connect(0, source).onCalcOutSubImage = [](SubImg&, int, SubImg*, ThreadInfo&) {};
  EXPECT_EQ(host.processAllPages(collector, -1, 0, boxOf(0, 0, 16, 0)), 0);
  EXPECT_EQ(collector.numPages, 2);
}

TEST_F(HostAllPagesTest, PagesOfAnOutputAreCalculatedAnewAndStayLocked) {
  module.connect(0, source);
  tile(module, boxOf(0, 0, 0, 0));
  bool isAll = false;
  module.onNotifyFirst = [&](int, bool isProcessAllPages) { isAll = isProcessAllPages; };
  EXPECT_EQ(host.processAllPages(module, 0, -1, SubImgBox()), 0);
  EXPECT_TRUE(isAll);
  EXPECT_EQ(module.numPages, 13);
  for (VXint64 id = 0; id < 12; ++id) {
    EXPECT_EQ(module.img().getPage(id, PagedImg::OWN_PAGE)->getLockCount(), 1);
    EXPECT_EQ(source.img().getPage(id, PagedImg::OWN_PAGE)->getLockCount(), 0);
  }
}

TEST_F(HostAllPagesTest, ReturnsTheCodeOfThePropertyUpdate) {
  source.onCalcOutImageProps = [](PagedImg& img, int) { img.setImgExt(ext(0, 1)); };
  EXPECT_EQ(host.processAllPages(source, 0, -1, SubImgBox()), 21);
}

// Limits -------------------------------------------------------------------------------------------------------------

TEST_F(HostTileTest, WorksWithACacheThatKeepsNothing) {
  host.getCache().setMaxCacheSizeKB(0);
  module.connect(0, source);
  const SubImgBox box = boxOf(0, 0, 49, 39);
  EXPECT_EQ(tile(module, box), valuesAt(box, sourceValue));
  EXPECT_EQ(host.getCache().getCurrentCacheSizeKB(), 0U);
  EXPECT_EQ(tile(module, box), valuesAt(box, sourceValue));
  EXPECT_EQ(module.numPages, 24);
}

TEST_F(HostTileTest, APageWhoseSizeIsNotRepresentableIsRefused) {
  source.onCalcOutImageProps = [](PagedImg& img, int) {
    img.setImgExt(ext(10, 10));
    img.setPageExt({1 << 20, 1 << 20, 1 << 20, 1 << 20, 1, 1});
  };
  tile(source, boxOf(0, 0, 0, 0));
  EXPECT_EQ(code, 2);
  EXPECT_FALSE(messages.take().empty());
}

}  // namespace
}  // namespace vx::test
