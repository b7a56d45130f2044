#include "CAPIFixture.h"

#include "vxHost.h"
#include "vxNotify.h"

#include <iostream>
#include <sstream>

namespace vx::test {

namespace {

class CAPIServicesTest : public CAPITest {
 protected:
  CAPIServicesTest() { _handle = VXAddNotifyCB(&CAPIServicesTest::note, this, ~0U); }
  void TearDown() override {
    VXRemoveNotifyCB(_handle);
    VXHostSetProgressCB(nullptr, nullptr);
    VXHostSetBreakCheckCB(nullptr, nullptr);
    VXCacheSetMaxSizeKB(50000);
    VXCacheSetMemoryOptLevel(0);
    CAPITest::TearDown();
  }
  static void note(void* userData, unsigned int code, void*, void*) {
    static_cast<CAPIServicesTest*>(userData)->notified.push_back(code);
  }

  std::vector<unsigned int> notified;

 private:
  VXCallbackHandle _handle = 0;
};

TEST_F(CAPIServicesTest, TheNumberOfThreadsIsSetAndGot) {
  const int before = VXGetMaxNumThreads();
  EXPECT_EQ(VXSetMaxNumThreads(before + 3), 0);
  EXPECT_EQ(VXGetMaxNumThreads(), before + 3);
  EXPECT_EQ(Host::getDefaultHost().getMaxNumThreads(), static_cast<VXuint32>(before + 3));
  EXPECT_EQ(notified, (std::vector<unsigned int>{0x100001}));
  EXPECT_EQ(VXSetMaxNumThreads(0), 19);
  EXPECT_EQ(VXGetMaxNumThreads(), before + 3) << "left as it was";
  EXPECT_EQ(VXSetMaxNumThreads(-1), 0);
  EXPECT_EQ(Host::getDefaultHost().getMaxNumThreads(), ~VXuint32{0});
  Host::getDefaultHost().setMaxNumThreads(0);
  EXPECT_EQ(VXGetMaxNumThreads(), 1);
  VXSetMaxNumThreads(before);
  expectSilence();
}

TEST_F(CAPIServicesTest, TheCacheIsLimited) {
  VXClearCache();
  EXPECT_EQ(notified, (std::vector<unsigned int>{0x80001}));
  EXPECT_EQ(VXCacheGetCurrentSizeKB(), 0U);
  EXPECT_EQ(VXCacheGetMaxSizeKB(), 50000U);
  VXCacheSetMaxSizeKB(123);
  EXPECT_EQ(VXCacheGetMaxSizeKB(), 123U);
  EXPECT_EQ(notified.back(), 0x80008U);
  VXCacheSetMaxSizeKB(-1);
  EXPECT_EQ(VXCacheGetMaxSizeKB(), ~VXuint64{0}) << "widened by sign";
  expectSilence();
}

TEST_F(CAPIServicesTest, PagesAreCountedAndThePeakIsKept) {
  RampModule ramp;
  OutputConnectorField* const output = ramp.getOutField(0);
  int nx, ny, nz, nc;
  int px, py, pz, pc, pt, pu;
  ASSERT_EQ(VXImageGetSize(output, &nx, &ny, &nz, &nc), 0);
  ASSERT_EQ(VXImageGetPageSize6D(output, &px, &py, &pz, &pc, &pt, &pu), 0);
  const auto numPages = static_cast<VXuint64>((nx + px - 1) / px * ((ny + py - 1) / py));
  const VXuint64 calculated = VXHostGetNumPagesCalculated();
  const VXuint64 hit = VXHostGetNumPagesHit();
  const auto getSlice = [&] {
    void* memory = nullptr;
    EXPECT_EQ(VXImageGetTile(output, &memory, 0, 0, 0, nx, ny, 1, VXint32Type), 0);
    VXImageFreeTile(memory);
  };
  getSlice();
  EXPECT_EQ(VXHostGetNumPagesCalculated() - calculated, numPages);
  EXPECT_EQ(VXHostGetNumPagesHit() - hit, 0U);
  getSlice();
  EXPECT_EQ(VXHostGetNumPagesCalculated() - calculated, numPages);
  EXPECT_EQ(VXHostGetNumPagesHit() - hit, numPages);
  EXPECT_EQ(VXHostGetNumPagesCalculated(), Host::getDefaultHost().getNumPagesCalculated());
  EXPECT_EQ(VXCacheGetPeakSizeKB(), Host::getDefaultHost().getCache().getFigures().peak / 1024);
  EXPECT_GE(VXCacheGetPeakSizeKB(), VXCacheGetCurrentSizeKB());
  const VXuint64 peak = VXCacheGetPeakSizeKB();
  VXClearCache();
  EXPECT_EQ(VXCacheGetPeakSizeKB(), peak) << "of all times";
  expectSilence();
}

TEST_F(CAPIServicesTest, TheMemoryOptimizationLevelIsSetAndGot) {
  EXPECT_EQ(VXCacheGetMemoryOptLevel(), 0U);
  VXCacheSetMemoryOptLevel(3);
  EXPECT_EQ(VXCacheGetMemoryOptLevel(), 3U);
  EXPECT_EQ(notified, (std::vector<unsigned int>{0x80002}));
  VXCacheSetMemoryOptLevel(-1);
  EXPECT_EQ(VXCacheGetMemoryOptLevel(), 10U) << "huge, and so the greatest";
  expectSilence();
}

TEST_F(CAPIServicesTest, ProgressReachesTheCallback) {
  VXHostUpdateProgress("nobody", "listens");
  std::string log;
  VXHostSetProgressCB(&log, [](void* userData, const char* info1, const char* info2) {
    *static_cast<std::string*>(userData) += std::string(info1) + "/" + info2;
  });
  VXHostUpdateProgress("a", "b");
  EXPECT_EQ(log, "a/b");
  EXPECT_EQ(notified, (std::vector<unsigned int>{0x100004}));
  VXHostSetProgressCB(nullptr, nullptr);
  VXHostUpdateProgress("c", "d");
  EXPECT_EQ(log, "a/b");
  expectSilence();
}

TEST_F(CAPIServicesTest, AProgressCallbackThatThrowsEndsInTheFrame) {
  VXHostSetProgressCB(nullptr, [](void*, const char*, const char*) { throw 1; });
  VXHostUpdateProgress("a", "b");
  const Messages taken = messages.take();
  ASSERT_FALSE(taken.empty());
  EXPECT_EQ(taken.back(), (Message{VX_FATAL, 1, "vxAPI:_VXHostUpdateProgress(info1, info2)",
                                   frameReason("Returning VX_EMPTY_PARAM.")}));
}

TEST_F(CAPIServicesTest, ABreakCheckIsSet) {
  int asked = 0;
  const VXBreakCheckCB callback = [](void* userData, void** field) {
    ++*static_cast<int*>(userData);
    return field ? 0 : 1;
  };
  VXHostSetBreakCheckCB(&asked, callback);
  EXPECT_EQ(notified, (std::vector<unsigned int>{0x100002}));
  EXPECT_EQ(Host::getDefaultHost().getBreakCheckCB(), callback);
  EXPECT_EQ(Host::getDefaultHost().getBreakCheckCBUserData(), &asked);
  EXPECT_TRUE(BaseOp::shouldTerminate());
  EXPECT_EQ(BaseOp::getPressedNotifyField(), nullptr);
  EXPECT_EQ(asked, 2);
  expectSilence();
}

TEST_F(CAPIServicesTest, StreamsAreSwitched) {
  EXPECT_EQ(VXAreMessagesSentToCout(), 0);
  EXPECT_EQ(VXAreMessagesSentToCerr(), 0);
  VXSendMessagesToCout(1);
  VXSendMessagesToCerr(-7);
  EXPECT_EQ(VXAreMessagesSentToCout(), 1);
  EXPECT_EQ(VXAreMessagesSentToCerr(), 1);
  VXSendMessagesToCout(0);
  EXPECT_EQ(VXAreMessagesSentToCout(), 0);
  EXPECT_EQ(VXAreMessagesSentToCerr(), 1);
  VXSendMessagesToCerr(0);
  EXPECT_EQ(VXAreMessagesSentToCerr(), 0);
  expectSilence();
}

}  // namespace
}  // namespace vx::test
