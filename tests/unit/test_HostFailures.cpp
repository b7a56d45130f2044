#include "HostFixture.h"
#include "TestAllocator.h"

#include <atomic>
#include <pthread.h>

namespace {

// Allocations of voxel memory until one fails; negative: none fails. Only that one fails.
std::atomic<long> numAllocsUntilFailure{-1};

}  // namespace

extern "C" {
void* __real_VXAlloc(VXuint64 size, VXMemoryErrorHandling handling);
void* __wrap_VXAlloc(VXuint64 size, VXMemoryErrorHandling handling) {
  const bool isMissing = numAllocsUntilFailure >= 0 && numAllocsUntilFailure-- == 0;
  return __real_VXAlloc(isMissing ? ~VXuint64{0} : size, handling);
}
}

namespace vx::test {
namespace {

class HostFailuresTest : public HostFixture {
 protected:
  HostFailuresTest() {
    source.threaded();
    module.threaded().connect(0, source);
  }

  void TearDown() override {
    messages.take();
    HostFixture::TearDown();
  }

  // After a failure the pages are cleared, and the same request works.
  void expectNextRequestToWork() {
    expectRest();
    source.img().clearPageList();
    module.img().clearPageList();
    messages.take();
    EXPECT_EQ(tile(module, box), valuesAt(box, sourceValue));
    EXPECT_EQ(code, 0);
    EXPECT_EQ(messages.take(), std::vector<Message>());
    source.img().clearPageList();
    module.img().clearPageList();
  }

  const SubImgBox box = boxOf(0, 0, 49, 39);
  SourceModule source{ext(50, 40), ext(16, 16), VXuint16Type};
  TestModule module{1, 1};
};

TEST_F(HostFailuresTest, EveryAllocationOfTheHostMayFail) {
  for (const VXuint32 numThreads : {1U, 3U}) {
    long n = 0;
    for (int result = -1; result != 0; ++n) {
      ASSERT_LT(n, 1000);
      Host fresh;
      fresh.setMaxNumThreads(numThreads);
      ASSERT_EQ(fresh.updateImageProps(module, 0), 0);
      std::vector<VXint64> voxels(2000, -1);
      void* data = voxels.data();
      {
        const FailingAllocations failing(n);
        result = fresh.getTile(module, 0, box, VXint64Type, &data);
      }
      EXPECT_TRUE(result == 0 || result == 2) << "allocation " << n << " gave " << result;
      expectNextRequestToWork();
    }
    EXPECT_GT(n, 10);
  }
}

TEST_F(HostFailuresTest, EveryAllocationOfVoxelsMayFail) {
  for (const VXuint32 numThreads : {1U, 3U}) {
    host.setMaxNumThreads(numThreads);
    long n = 0;
    for (int result = -1; result != 0; ++n) {
      ASSERT_LT(n, 1000);
      host.getCache().clearCache();  // blocks that it has kept as well
      void* data = nullptr;
      numAllocsUntilFailure = n;
      result = host.getTile(module, 0, box, VXint64Type, &data);
      numAllocsUntilFailure = -1;
      host.freeTile(data);
      EXPECT_TRUE(result == 0 || result == 2) << "allocation " << n << " gave " << result;
      if (result == 2) {
        EXPECT_FALSE(messages.take().empty());
      }
      expectNextRequestToWork();
    }
    EXPECT_GT(n, 24);
  }
}

// Pages whose calculation failed, and those after them, hold zeros: not what the memory held before.
TEST_F(HostFailuresTest, PagesThatWereNotCalculatedAreZero) {
  host.setMaxNumThreads(1);
  module.onCalcOutSubImage = [&](SubImg& out, int, SubImg*, ThreadInfo&) {
    out.fillSubImg(7);
    if (out.getPosition().x == 16 && out.getPosition().y == 0) throw 7;
  };
  tile(module, box);
  EXPECT_EQ(code, 7);
  for (VXint64 id = 0; id < 12; ++id) {
    const CachedBuffer* const page = module.img().getPage(id, PagedImg::OWN_PAGE);
    EXPECT_EQ(page->getLockCount(), 1);
    const auto* const voxels = static_cast<const VXuint16*>(page->getData());
    for (int i = 0; i < 256; ++i) ASSERT_EQ(voxels[i], id == 0 ? 7 : 0) << "page " << id;
  }
}

TEST_F(HostFailuresTest, APageWhoseInputsFailedIsZero) {
  host.setMaxNumThreads(1);
  module.onCalcInSubImageBox = [](int, const SubImgBox& outBox, int) {
    if (outBox.v1.x == 16) throw 7;
    return outBox;
  };
  tile(module, box);
  EXPECT_EQ(code, 7);
  for (const VXint64 id : {0, 1}) {
    const auto* const voxels = static_cast<const VXuint16*>(module.img().getPageData(id, PagedImg::OWN_PAGE));
    for (int i = 0; i < 256; ++i) ASSERT_EQ(voxels[i], 0);
  }
  EXPECT_EQ(module.img().getPage(2, PagedImg::OWN_PAGE), nullptr);
  EXPECT_EQ(source.img().getPage(0, PagedImg::OWN_PAGE)->getLockCount(), 0);
}

TEST_F(HostFailuresTest, LaterGroupsAreLeftOut) {
  host.setMaxNumThreads(1);
  SourceModule large(ext(128 * 64, 128), ext(128, 128), VXint64Type);
  large.onCalcOutSubImage = [&](SubImg&, int, SubImg*, ThreadInfo&) {
    if (large.numPages == 20) throw 7;
  };
  void* data = nullptr;
  EXPECT_EQ(host.getTile(large, 0, boxOf(0, 0, 128 * 64 - 1, 0), VXuint8Type, &data), 7);
  host.freeTile(data);
  EXPECT_EQ(large.numPages, 20);
  EXPECT_EQ(large.img().getPage(15, PagedImg::OWN_PAGE)->getLockCount(), 0);
  EXPECT_EQ(large.img().getPage(63, PagedImg::OWN_PAGE), nullptr);
}

TEST_F(HostFailuresTest, AFailureThreeLevelsUpIsToldAtEachLevel) {
  TestModule second(1, 1);
  TestModule third(1, 1);
  second.named("2").connect(0, module.named("1"));
  third.named("3").connect(0, second);
  source.named("0").onCalcOutSubImage = [](SubImg&, int, SubImg*, ThreadInfo&) { throw 7; };
  tile(third, boxOf(0, 0, 0, 0));
  EXPECT_EQ(code, 7);
  const Message fatal = {VX_FATAL, 41, "VXPrintAndNotifyFatal()", "A guarded block was left by a failure."};
  const auto level = [](const char* name) {
    return Message{VX_ERROR, 16, std::string("Module TestModule(") + name + ") called by Host::_calcPages:", ""};
  };
  EXPECT_EQ(messages.take(),
            (std::vector<Message>{
                {VX_ERROR, 7, "Host::_calcPagesMT( ) on module TestModule(0)", controlledException},
                level("0"),
                fatal,
                level("1"),
                fatal,
                level("2"),
                fatal,
                level("3"),
                fatal,
                {VX_ERROR, 7, "Host::_processPagesHelper() on module TestModule(3)", controlledException}}));
  for (TestModule* const op : {static_cast<TestModule*>(&source), &module, &second, &third}) {
    EXPECT_EQ(op->img().getPage(0, PagedImg::OWN_PAGE)->getLockCount(), 1);
  }
}

TEST_F(HostFailuresTest, AFailureOfTheInputQueriesIsToldAsSuch) {
  module.named("m").onCalcInSubImageBox = [](int, const SubImgBox&, int) -> SubImgBox { throw 7; };
  tile(module, box);
  EXPECT_EQ(code, 7);
  const Message fatal = {VX_FATAL, 41, "VXPrintAndNotifyFatal()", "A guarded block was left by a failure."};
  EXPECT_EQ(messages.take(),
            (std::vector<Message>{
                {VX_ERROR, 7, "Host::_initializePageData( ) on module TestModule(m)", controlledException},
                fatal,
                {VX_ERROR, 7, "Host::_processPagesHelper() on module TestModule(m)", controlledException}}));
  module.onCalcInSubImageBox = [](int, const SubImgBox&, int) -> SubImgBox { throw OtherException(); };
  module.img().clearPageList();
  tile(module, box);
  EXPECT_EQ(code, 1);
  EXPECT_EQ(messages.take(), (std::vector<Message>{{VX_FATAL, 18, "TestModule(m)::calcInSubImageProps/Box()", ""},
                                                   fatal,
                                                   {VX_FATAL, 1, "Module TestModule(m) called by Host::getTile()",
                                                    "Ignoring function call."}}));
}

TEST_F(HostFailuresTest, AnExceptionOfTheInputQueriesPassesWhileExceptionHandlingIsOff) {
  const ExceptionHandling off(false);
  const Message fatal = {VX_FATAL, 41, "VXPrintAndNotifyFatal()", "A guarded block was left by a failure."};
  module.named("m").onCalcInSubImageBox = [](int, const SubImgBox&, int) -> SubImgBox { throw OtherException(); };
  EXPECT_THROW(tile(module, box), OtherException);
  EXPECT_EQ(messages.take(), std::vector<Message>{fatal});
  expectRest();
  module.onCalcInSubImageBox = [](int, const SubImgBox&, int) -> SubImgBox { throw 7; };
  module.img().clearPageList();
  tile(module, box);
  EXPECT_EQ(code, 7);
  EXPECT_EQ(messages.take(),
            (std::vector<Message>{
                {VX_ERROR, 7, "Host::_initializePageData( ) on module TestModule(m)", controlledException},
                fatal,
                {VX_ERROR, 7, "Host::_processPagesHelper() on module TestModule(m)", controlledException}}));
}

TEST_F(HostFailuresTest, TheCacheIsFlushedAfterAFailure) {
  host.getCache().setMaxCacheSizeKB(0);
  for (const bool isOn : {true, false}) {
    const ExceptionHandling handling(isOn);
    module.onCalcOutSubImage = [=](SubImg&, int, SubImg*, ThreadInfo&) {
      if (!isOn) throw OtherException();
      throw 7;
    };
    if (isOn) {
      tile(module, box);
      EXPECT_EQ(code, 7);
    } else {
      EXPECT_THROW(tile(module, box), OtherException);
    }
    for (VXint64 id = 0; id < 12; ++id) {
      EXPECT_EQ(source.img().isValidPage(id), 0);
      EXPECT_EQ(module.img().isValidPage(id), 1);
    }
    module.img().clearPageList();
    messages.take();
    expectRest();
  }
}

TEST_F(HostFailuresTest, TheTileHoldsTheGroupsBeforeTheFailure) {
  host.setMaxNumThreads(1);
  SourceModule large(ext(128 * 64, 128), ext(128, 128), VXint64Type);
  large.onCalcOutSubImage = [&](SubImg& out, int, SubImg*, ThreadInfo&) {
    if (large.numPages == 20) throw 7;
    out.fillSubImg(5);
  };
  const std::vector<VXint64> voxels = tile(large, boxOf(0, 0, 128 * 64 - 1, 0));
  EXPECT_EQ(code, 7);
  for (std::size_t x = 0; x < voxels.size(); ++x) ASSERT_EQ(voxels[x], x < 128 * 16 ? 5 : -1) << x;
}

TEST_F(HostFailuresTest, AllPagesOfAnImageMayFail) {
  source.named("s").onCalcOutSubImage = [](SubImg&, int, SubImg*, ThreadInfo&) { throw 7; };
  EXPECT_EQ(host.processAllPages(source, 0, -1, boxOf(0, 0, 0, 0)), 7);
  expectRest();
  EXPECT_EQ(source.img().getPage(0, PagedImg::OWN_PAGE)->getLockCount(), 1);
  EXPECT_EQ(messages.take(),
            (std::vector<Message>{
                {VX_ERROR, 7, "Host::_calcPagesMT( ) on module TestModule(s)", controlledException},
                {VX_ERROR, 16, "Module TestModule(s) called by Host::_calcPages:", ""},
                {VX_FATAL, 41, "VXPrintAndNotifyFatal()", "A guarded block was left by a failure."},
                {VX_ERROR, 7, "Host::_processPagesHelper() on module TestModule(s)", controlledException}}));
}

TEST_F(HostFailuresTest, WhatLeavesTheRequestItselfIsToldAtItsEntry) {
  source.named("s").onNotifyFirst = [](int, bool) { throw 7; };
  tile(source, box);
  EXPECT_EQ(code, 7);
  EXPECT_EQ(
      messages.take(),
      (std::vector<Message>{{VX_ERROR, 7, "Host::_getTileCore( ) on module TestModule(s)", controlledException}}));
  expectRest();
  EXPECT_EQ(host.processAllPages(source, 0, -1, box), 7);
  EXPECT_EQ(
      messages.take(),
      (std::vector<Message>{{VX_ERROR, 7, "Host::processAllPages( ) on module TestModule(s)", controlledException}}));
  source.onNotifyFirst = [](int, bool) { throw OtherException(); };
  tile(source, box);
  EXPECT_EQ(code, 8);
  const std::vector<Message> expected = {
      {VX_FATAL, 8, "Module TestModule(s) called by Host::_getTileCore()", "Returning uninitialized memory."}};
  EXPECT_EQ(messages.take(), expected);
  EXPECT_EQ(host.processAllPages(source, 0, -1, box), 8);
  EXPECT_EQ(messages.take(), expected);
  expectRest();
  const ExceptionHandling off(false);
  EXPECT_THROW(tile(source, box), OtherException);
  EXPECT_THROW(host.processAllPages(source, 0, -1, box), OtherException);
}

TEST_F(HostFailuresTest, AFailedBufferIsToldAtItsEntry) {
  source.named("s").onCalcOutImageProps = [](PagedImg&, int) { throw OtherException(); };
  CachedBuffer buffer;
  EXPECT_EQ(host.getTile(source, 0, box, VXuint8Type, buffer), 17);
  messages.take();
  buffer.clear();
  host.getCache().clearCache();  // blocks that it has kept as well
  numAllocsUntilFailure = 0;
  EXPECT_EQ(host.getTile(source, 0, boxOf(0, 0, 0, 9), VXuint8Type, buffer), 2);
  numAllocsUntilFailure = -1;
  const std::vector<Message> reported = messages.take();
  ASSERT_FALSE(reported.empty());
  EXPECT_EQ(reported.back(), (Message{VX_ERROR, 2, "Host::getTile() on module TestModule(s)", controlledException}));
}

// Depth --------------------------------------------------------------------------------------------------------------

void runOnAStackOf(std::size_t size, const std::function<void()>& body) {
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, size), 0);
  pthread_t thread;
  const auto entry = [](void* argument) -> void* {
    (*static_cast<const std::function<void()>*>(argument))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, entry, const_cast<std::function<void()>*>(&body)), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

TEST_F(HostFailuresTest, AChainOfTwoThousandModulesWorksOnEightMebibytes) {
  constexpr int depth = 2000;
  std::vector<std::unique_ptr<TestModule>> chain;
  for (int i = 0; i < depth; ++i) {
    chain.push_back(std::make_unique<TestModule>(1, 1));
    chain.back()->connectInput(0, i == 0 ? static_cast<BaseOp&>(source) : *chain[static_cast<std::size_t>(i) - 1], 0);
  }
  std::vector<VXint64> values;
  runOnAStackOf(std::size_t{8} << 20, [&] { values = tile(*chain.back(), boxOf(0, 0, 20, 20)); });
  EXPECT_EQ(values, valuesAt(boxOf(0, 0, 20, 20), sourceValue));
  EXPECT_EQ(code, 0);
  messages.take();
}

}  // namespace
}  // namespace vx::test
