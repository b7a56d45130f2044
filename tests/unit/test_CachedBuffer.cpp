#include "CacheFixture.h"
#include "TestAllocator.h"

#include <chrono>
#include <cmath>
#include <limits>
#include <locale>
#include <memory>
#include <sstream>
#include <thread>
#include <type_traits>

namespace {

// Negative: all that is asked for is given.
long blocksLeft = -1;
long blocksAllocated = 0;
// Null outside of the tests: the library frees blocks at its end, too.
std::vector<void*>* freedRecord = nullptr;

}  // namespace

// The linker leads calls of VXAlloc() and VXFree() here.
extern "C" {
void* __real_VXAlloc(VXuint64 size, VXMemoryErrorHandling handling);
void __real_VXFree(void* memory);
void* __wrap_VXAlloc(VXuint64 size, VXMemoryErrorHandling handling);
void __wrap_VXFree(void* memory);

void* __wrap_VXAlloc(VXuint64 size, VXMemoryErrorHandling handling) {
  if (blocksLeft == 0) return nullptr;
  if (blocksLeft > 0) --blocksLeft;
  ++blocksAllocated;
  return __real_VXAlloc(size, handling);
}

void __wrap_VXFree(void* memory) {
  if (freedRecord && freedRecord->size() < freedRecord->capacity()) freedRecord->push_back(memory);
  __real_VXFree(memory);
}
}

namespace vx::test {
namespace {

const CachedBufferPosition nowhere;

void* newBlock(VXuint64 size) { return VXAlloc(size, VX_RETURN_NULL); }

// What a module does that follows a null pointer; the sanitizer would end the program here.
__attribute__((noinline, no_sanitize("undefined"))) void initWithoutCache(CachedBuffer& buffer) {
  Cache* volatile none = nullptr;
  buffer.init(*none, 1, 2 * KB, nullptr);
}

class CachedBufferTest : public CacheFixture {
 protected:
  CachedBufferTest() {
    blocksFreed.reserve(100);
    blocksLeft = -1;
    freedRecord = &blocksFreed;
  }
  ~CachedBufferTest() override {
    blocksLeft = -1;
    freedRecord = nullptr;
  }

  void expectUninitialized() {
    EXPECT_FALSE(buffer.isInitialized());
    check({&buffer});
  }

  CachedBuffer buffer;
  std::vector<void*> blocksFreed;
};

TEST_F(CachedBufferTest, StartsWithoutMemoryAndCache) {
  EXPECT_EQ(buffer.getCache(), nullptr);
  EXPECT_EQ(buffer.getData(), nullptr);
  EXPECT_EQ(buffer.getSize(), 0U);
  EXPECT_EQ(buffer.getLockCount(), -1);
  EXPECT_EQ(buffer.getTotalLockCount(), 0);
  EXPECT_EQ(buffer.getPriority(), 0U);
  EXPECT_TRUE(buffer.getListPosition() == nowhere);
  EXPECT_FALSE(std::is_polymorphic_v<CachedBuffer>);
  expectUninitialized();
}

TEST_F(CachedBufferTest, CopyConstructionIsReportedAndSharesNothing) {
  buffer.init(cache, 3, KB, nullptr);
  const CachedBuffer copy(buffer);
  EXPECT_EQ(messages.take(), (std::vector<Message>{{VX_FATAL, 14, "CachedBuffer::CachedBuffer(const CachedBuffer &)",
                                                    "Usage of copy constructor of CachedBuffer is not supported."}}));
  EXPECT_EQ(copy.getLockCount(), -1);
  EXPECT_EQ(copy.getData(), nullptr);
  check({&buffer, &copy});
}

TEST_F(CachedBufferTest, AssignmentIsReportedAndChangesNothing) {
  CachedBuffer other;
  other.init(cache, 3, KB, nullptr);
  EXPECT_EQ(&(buffer = other), &buffer);
  EXPECT_EQ(messages.take(),
            (std::vector<Message>{{VX_FATAL, 14, "CachedBuffer& CachedBuffer::operator=(const CachedBuffer &)",
                                   "Usage of assignment operator of CachedBuffer is not supported."}}));
  EXPECT_EQ(buffer.getCache(), nullptr);
  check({&buffer, &other});
}

TEST_F(CachedBufferTest, WithoutACacheAllIsFatalButTheEnd) {
  EXPECT_EQ(thrownCode([&] { buffer.lock(); }), 41);
  EXPECT_EQ(thrownCode([&] { buffer.unlock(); }), 41);
  EXPECT_EQ(thrownCode([&] { buffer.clear(); }), 41);
  EXPECT_EQ(thrownCode([&] { buffer.setPriority(0); }), 41);
  EXPECT_EQ(thrownCode([&] { buffer.setPriority(7); }), 41);
  EXPECT_EQ(thrownCode([&] { buffer.updatePriority(0, 1); }), 41);
  EXPECT_EQ(messages.take(), std::vector<Message>(6, fatalMessage(41)));
  { const CachedBuffer untouched; }
  EXPECT_TRUE(messages.take().empty());
  expectUninitialized();
}

TEST_F(CachedBufferTest, InitAllocatesAndRegisters) {
  buffer.init(cache, 4, 3 * KB, nullptr);
  EXPECT_EQ(buffer.getCache(), &cache);
  ASSERT_NE(buffer.getData(), nullptr);
  std::memset(buffer.getData(), 7, 3 * KB);
  EXPECT_EQ(buffer.getSize(), 3 * KB);
  EXPECT_EQ(buffer.getLockCount(), 0);
  EXPECT_TRUE(buffer.isInitialized());
  EXPECT_FALSE(buffer.isLocked());
  EXPECT_EQ(buffer.getTotalLockCount(), 0);
  EXPECT_EQ(buffer.getPriority(), 4U);
  EXPECT_EQ(*buffer.getListPosition(), &buffer);
  EXPECT_EQ(buffersOf(cache, 4), Buffers{&buffer});
  EXPECT_EQ(cache.getCurrentCacheSizeKB(), 3U);
  check({&buffer});
}

TEST_F(CachedBufferTest, InitClampsThePriority) {
  buffer.init(cache, 10, KB, nullptr);
  EXPECT_EQ(buffer.getPriority(), 9U);
  check({&buffer});
  buffer.init(cache, hugeSize, KB, nullptr);
  EXPECT_EQ(buffer.getPriority(), 9U);
  check({&buffer});
}

TEST_F(CachedBufferTest, ABufferMayHoldNothing) {
  buffer.init(cache, 9, 0, nullptr);
  EXPECT_TRUE(buffer.isInitialized());
  EXPECT_EQ(cache.getFigures().held, 0U);
  check({&buffer});
}

TEST_F(CachedBufferTest, InitOfTheSameSizeKeepsTheBlockAndMovesToTheEnd) {
  buffer.init(cache, 4, 2 * KB, nullptr);
  void* const data = buffer.getData();
  std::memset(data, 7, 2 * KB);
  CachedBuffer other;
  other.init(cache, 4, KB, nullptr);
  buffer.lock();
  buffer.init(cache, 4, 2 * KB, nullptr);
  EXPECT_EQ(buffer.getData(), data);
  EXPECT_EQ(static_cast<unsigned char*>(data)[2 * KB - 1], 7);
  EXPECT_EQ(buffer.getLockCount(), 0);
  EXPECT_EQ(buffer.getTotalLockCount(), 1) << "it was initialised all the time";
  EXPECT_EQ(buffersOf(cache, 4), (Buffers{&other, &buffer}));
  EXPECT_EQ(cache.getFigures().held, 3 * KB);
  EXPECT_EQ(cache.getFigures().locked, 0U);
  check({&buffer, &other});
}

TEST_F(CachedBufferTest, InitOfAnotherSizeTakesAnotherBlock) {
  buffer.init(cache, 4, 2 * KB, nullptr);
  buffer.init(cache, 1, 3 * KB, nullptr);
  std::memset(buffer.getData(), 7, 3 * KB);
  EXPECT_EQ(cache.getFigures().held, 3 * KB);
  EXPECT_EQ(buffersOf(cache, 1), Buffers{&buffer});
  check({&buffer});
}

TEST_F(CachedBufferTest, InitTakesABlockOfTheCaller) {
  void* const data = newBlock(2 * KB);
  buffer.init(cache, 4, 2 * KB, data);
  EXPECT_EQ(buffer.getData(), data);
  EXPECT_TRUE(messages.take().empty());
  check({&buffer});
  buffer.clear();
  // How large it really was is not known, so it isn't kept for others.
  EXPECT_EQ(blocksFreed, std::vector<void*>{data});
  EXPECT_EQ(cache.getFigures().warm, 0U);
}

TEST_F(CachedBufferTest, ABlockOfTheCallerIsFreedWithItsBuffer) {
  void* const data = newBlock(2 * KB);
  { CachedBuffer().init(cache, 4, 2 * KB, data); }
  EXPECT_EQ(blocksFreed, std::vector<void*>{data});
  expectUninitialized();
}

TEST_F(CachedBufferTest, ASecondBlockIsReportedAndTheFirstLeftAlone) {
  for (const bool isFirstOwn : {true, false}) {
    buffer.init(cache, 4, 2 * KB, isFirstOwn ? nullptr : newBlock(2 * KB));
    void* const first = buffer.getData();
    void* const second = newBlock(KB);
    blocksFreed.clear();
    buffer.init(cache, 5, KB, second);
    EXPECT_EQ(messages.take(),
              (std::vector<Message>{
                  {VX_ERROR, 14, "CachedBuffer::init()",
                   "Badly implemented case: Buffer is illegally initialized. Probably a memory leak remains."}}));
    EXPECT_EQ(buffer.getData(), second);
    EXPECT_TRUE(blocksFreed.empty());
    EXPECT_EQ(cache.getFigures().held, KB);
    check({&buffer});
    buffer.clear();
    EXPECT_EQ(blocksFreed, std::vector<void*>{second});
    VXFree(first);
  }
}

TEST_F(CachedBufferTest, AClearedBufferHoldsNoBlockInTheWayOfAnother) {
  buffer.init(cache, 4, 2 * KB, nullptr);
  buffer.clear();
  buffer.init(cache, 4, KB, newBlock(KB));
  EXPECT_TRUE(messages.take().empty());
  check({&buffer});
}

TEST_F(CachedBufferTest, InitMovesFromOneCacheToAnother) {
  Cache other;
  for (const VXuint64 size : {2 * KB, 5 * KB}) {
    buffer.init(cache, 4, 2 * KB, nullptr);
    void* const data = buffer.getData();
    buffer.lock();
    buffer.init(other, 8, size, nullptr);
    EXPECT_EQ(buffer.getCache(), &other);
    EXPECT_EQ(buffer.getData() == data, size == 2 * KB);
    EXPECT_EQ(cache.getFigures().held, 0U);
    EXPECT_EQ(cache.getFigures().locked, 0U);
    EXPECT_EQ(other.getFigures().held, size);
    expectInvariants(cache, {});
    expectInvariants(other, {&buffer});
  }
  buffer.clear();
  buffer.init(cache, 1, KB, nullptr);
  check({&buffer});
  expectInvariants(other, {});
}

// Blocks of this size are parts of what one cache has from the system.
TEST_F(CachedBufferTest, APageMovesFromOneCacheToAnotherWithItsContents) {
  for (const VXuint64 size : {64 * KB, 128 * KB}) {
    for (const bool endsFirst : {false, true}) {
      auto former = std::make_unique<Cache>();
      CachedBuffer page;
      page.init(*former, 4, 64 * KB, nullptr);
      std::memset(page.getData(), 7, 64 * KB);
      page.init(cache, 8, size, nullptr);
      EXPECT_EQ(former->getFigures().held, 0U);
      EXPECT_EQ(former->getFigures().warm, 64 * KB);
      if (endsFirst) former.reset();
      const auto* const bytes = static_cast<const unsigned char*>(page.getData());
      if (size == 64 * KB) {
        EXPECT_EQ(std::vector<unsigned char>(bytes, bytes + size), std::vector<unsigned char>(size, 7));
      }
      check({&page});
      page.clear();
      EXPECT_EQ(cache.getFigures().held, 0U);
    }
  }
}

TEST_F(CachedBufferTest, ANullCacheIsRefused) {
  buffer.init(cache, 4, KB, nullptr);
  EXPECT_EQ(thrownCode([&] { initWithoutCache(buffer); }), 42);
  EXPECT_TRUE(messages.take().empty());
  EXPECT_EQ(buffersOf(cache, 4), Buffers{&buffer});
  EXPECT_EQ(buffer.getSize(), KB);
  check({&buffer});
}

TEST_F(CachedBufferTest, AFailedAllocationLeavesTheBufferUninitialized) {
  buffer.init(cache, 4, 2 * KB, nullptr);
  buffer.lock();
  blocksLeft = 0;
  EXPECT_EQ(thrownCode([&] { buffer.init(cache, 4, 3 * KB, nullptr); }), 2);
  EXPECT_EQ(buffer.getData(), nullptr);
  expectUninitialized();
  EXPECT_EQ(thrownCode([&] { buffer.init(cache, 4, 3 * KB, nullptr); }), 2);
  expectUninitialized();
  EXPECT_TRUE(messages.take().empty());
  buffer.clear();
  blocksLeft = -1;
  buffer.init(cache, 4, 3 * KB, nullptr);
  check({&buffer});
}

TEST_F(CachedBufferTest, ASizeBeyondAllMemoryFails) {
  for (const VXuint64 size : {hugeSize, hugeSize - 63, 1ULL << 63, (1ULL << 63) - 1}) {
    EXPECT_EQ(thrownCode([&] { buffer.init(cache, 4, size, nullptr); }), 2);
    expectUninitialized();
  }
  EXPECT_EQ(cache.getFigures().peak, 0U);
}

TEST_F(CachedBufferTest, APlaceThatWasLeftServesTheNextBufferWithoutAnAllocation) {
  buffer.init(cache, 4, 2 * KB, nullptr);
  const long before = numAllocations();
  buffer.init(cache, 5, 2 * KB, nullptr);
  buffer.clear();
  buffer.init(cache, 3, 2 * KB, nullptr);
  EXPECT_EQ(numAllocations(), before);
  check({&buffer});
}

TEST_F(CachedBufferTest, AFailedEntryLeavesTheBlockWithItsOwner) {
  void* const data = newBlock(2 * KB);
  for (void* const given : {static_cast<void*>(nullptr), data}) {
    blocksFreed.clear();
    {
      const FailingAllocations failing;
      EXPECT_EQ(thrownCode([&] { buffer.init(cache, 5, 2 * KB, given); }), 2);
    }
    EXPECT_EQ(buffer.getData(), nullptr);
    expectUninitialized();
  }
  EXPECT_TRUE(blocksFreed.empty());
  VXFree(data);
  EXPECT_TRUE(messages.take().empty());
  buffer.init(cache, 4, 2 * KB, nullptr);
  check({&buffer});
}

TEST_F(CachedBufferTest, FreeBlocksGiveWayWhenMemoryEnds) {
  buffer.init(cache, 4, 2 * KB, nullptr);
  void* const data = buffer.getData();
  buffer.clear();
  EXPECT_EQ(cache.getFigures().warm, 2 * KB);
  blocksLeft = 0;
  EXPECT_EQ(thrownCode([&] { buffer.init(cache, 4, 3 * KB, nullptr); }), 2);
  EXPECT_EQ(blocksFreed, std::vector<void*>{data});
  EXPECT_EQ(cache.getFigures().warm, 0U);
  expectUninitialized();
}

TEST_F(CachedBufferTest, AFreedBlockServesTheNextOfItsSizeOnly) {
  buffer.init(cache, 4, 2 * KB, nullptr);
  void* const data = buffer.getData();
  buffer.clear();
  const long before = blocksAllocated;
  CachedBuffer other;
  other.init(cache, 4, 2 * KB + 1, nullptr);
  EXPECT_EQ(blocksAllocated, before + 1);
  buffer.init(cache, 4, 2 * KB, nullptr);
  EXPECT_EQ(blocksAllocated, before + 1);
  EXPECT_EQ(buffer.getData(), data);
  check({&buffer, &other});
}

TEST_F(CachedBufferTest, LocksAreCounted) {
  buffer.init(cache, 4, KB, nullptr);
  buffer.lock();
  buffer.lock();
  EXPECT_EQ(buffer.getLockCount(), 2);
  EXPECT_EQ(buffer.getTotalLockCount(), 2);
  EXPECT_EQ(cache.getFigures().locked, KB);
  buffer.unlock();
  EXPECT_EQ(buffer.getLockCount(), 1);
  EXPECT_EQ(cache.getFigures().locked, KB);
  buffer.unlock();
  EXPECT_EQ(buffer.getLockCount(), 0);
  EXPECT_EQ(cache.getFigures().locked, 0U);
  buffer.unlock();
  EXPECT_EQ(buffer.getLockCount(), 0);
  buffer.lock();
  EXPECT_EQ(buffer.getTotalLockCount(), 3);
  check({&buffer});
}

TEST_F(CachedBufferTest, LockRestartsItsTimeAndInitBoth) {
  buffer.init(cache, 4, KB, nullptr);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  buffer.lock();
  const long double afterLock = buffer.getLastLockTime().getRunningTimeInSeconds();
  EXPECT_GE(buffer.getCreationTime().getRunningTimeInSeconds(), afterLock + 0.02L);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  buffer.unlock();
  EXPECT_GE(buffer.getLastLockTime().getRunningTimeInSeconds(), 0.02L);
  const TimeCounter beforeInit;
  buffer.init(cache, 4, KB, nullptr);
  EXPECT_LE(buffer.getCreationTime().getRunningTimeInSeconds(), beforeInit.getRunningTimeInSeconds());
  EXPECT_LE(buffer.getLastLockTime().getRunningTimeInSeconds(), beforeInit.getRunningTimeInSeconds());
}

TEST_F(CachedBufferTest, ABufferThatIsNotInitializedCannotBeLockedOrMoved) {
  buffer.init(cache, 4, KB, nullptr);
  buffer.clear();
  buffer.unlock();
  buffer.setPriority(7);
  buffer.updatePriority(5, 1);
  buffer.clear();
  EXPECT_TRUE(messages.take().empty());
  buffer.lock();
  EXPECT_EQ(messages.take(), (std::vector<Message>{{VX_ERROR, 14, "CachedBuffer::lock()",
                                                    "Buffer is not initialized and cannot be locked."}}));
  expectUninitialized();
}

TEST_F(CachedBufferTest, ClearResetsAllButTheAddress) {
  buffer.init(cache, 4, KB, nullptr);
  void* const data = buffer.getData();
  buffer.lock();
  buffer.clear();
  EXPECT_EQ(buffer.getData(), data);
  EXPECT_EQ(buffer.getSize(), 0U);
  EXPECT_EQ(buffer.getLockCount(), -1);
  EXPECT_EQ(buffer.getTotalLockCount(), 0);
  EXPECT_EQ(buffer.getPriority(), 0U);
  EXPECT_TRUE(buffer.getListPosition() == nowhere);
  EXPECT_EQ(buffer.getCache(), &cache);
  EXPECT_EQ(cache.getFigures().locked, 0U);
  expectUninitialized();
}

TEST_F(CachedBufferTest, TheEndOfABufferClearsIt) {
  {
    CachedBuffer page;
    page.init(cache, 4, KB, nullptr);
    page.lock();
  }
  EXPECT_TRUE(cache.getCacheTable()[4].empty());
  EXPECT_EQ(cache.getFigures().held, 0U);
  EXPECT_EQ(cache.getFigures().locked, 0U);
}

TEST_F(CachedBufferTest, SetPriorityMovesToTheEndOnlyForAChange) {
  CachedBuffer other;
  buffer.init(cache, 3, KB, nullptr);
  other.init(cache, 3, KB, nullptr);
  buffer.setPriority(3);
  EXPECT_EQ(buffersOf(cache, 3), (Buffers{&buffer, &other}));
  buffer.setPriority(99);
  EXPECT_EQ(buffer.getPriority(), 9U);
  EXPECT_EQ(buffersOf(cache, 9), Buffers{&buffer});
  other.setPriority(9);
  EXPECT_EQ(buffersOf(cache, 9), (Buffers{&buffer, &other}));
  buffer.setPriority(hugeSize);
  EXPECT_EQ(buffersOf(cache, 9), (Buffers{&buffer, &other}));
  check({&buffer, &other});
}

TEST_F(CachedBufferTest, SetPriorityAllocatesNothing) {
  buffer.init(cache, 3, KB, nullptr);
  const FailingAllocations failing;
  buffer.setPriority(8);
  EXPECT_EQ(buffer.getPriority(), 8U);
}

struct Cost {
  double seconds;
  VXint64 voxels;
  VXuint64 priority;
};

TEST_F(CachedBufferTest, ThePriorityFollowsTheMeasuredCost) {
  constexpr VXint64 measure = 262143;  // the seconds and those for 262144 voxels are the same
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const Cost costs[] = {
      {0.0015, 1000000, 0},
      {0.0015, 1000, 6},
      {0, measure, 0},
      {0.002, measure, 1},
      {0.004, measure, 2},
      {0.01, measure, 3},
      {0.04, measure, 4},
      {0.1, measure, 5},
      {0.25, measure, 6},
      {0.5, measure, 7},
      {1.0, measure, 8},
      {3.0, measure, 9},
      {1e300, measure, 9},
      {3.0, 1LL << 62, 9},  // seconds alone suffice
      {0.5, 1LL << 62, 7},
      {1e-5, 0, 8},        // 2.6 seconds for 262144 voxels
      {0.002, 524287, 1},  // 0.001 seconds, but the time itself counts
      {-1, measure, 0},
      {1e-9, -1, 9},  // no voxels at all
      {0.0, -1, 0},   // 0 / 0 reaches nothing
      {1.0, -262145, 8},
      {infinity, measure, 9},
      {std::nan(""), measure, 0},
      {0.5, std::numeric_limits<VXint64>::max(), 7},
      {0.5, std::numeric_limits<VXint64>::min(), 7},
  };
  buffer.init(cache, 5, KB, nullptr);
  for (const Cost& cost : costs) {
    buffer.updatePriority(cost.seconds, cost.voxels);
    EXPECT_EQ(buffer.getPriority(), cost.priority) << cost.seconds << " seconds, " << cost.voxels << " voxels";
    check({&buffer});
  }
  for (const double threshold : {0.002, 0.004, 0.01, 0.04, 0.1, 0.25, 0.5, 1.0, 3.0}) {
    buffer.updatePriority(threshold, 1LL << 62);
    const VXuint64 reached = buffer.getPriority();
    buffer.updatePriority(std::nextafter(threshold, 0.0), 1LL << 62);
    EXPECT_EQ(buffer.getPriority(), reached - 1) << threshold;
  }
}

TEST_F(CachedBufferTest, PrintsItsMembersAndBytes) {
  const std::locale old = std::locale::global(std::locale::classic());
  buffer.init(cache, 4, 35, nullptr);
  auto* const bytes = static_cast<unsigned char*>(buffer.getData());
  for (int i = 0; i < 35; ++i) bytes[i] = static_cast<unsigned char>(i * 8);
  std::ostringstream stream;
  stream << std::hex << buffer << 255;
  std::locale::global(old);
  const auto addressText = [](const void* address) {
    std::ostringstream text;
    text << address;
    return text.str();
  };
  EXPECT_EQ(stream.str(), "Cache    : " + addressText(&cache) +
                              "\n"
                              "Priority : 4\n"
                              "Size     : 35\n"
                              "Memaddr  : " +
                              addressText(bytes) +
                              "\n"
                              "    0: 0  8 10 18 20 28 30 38 40 48 50 58 60 68 70 78 "
                              "80 88 90 98 A0 A8 B0 B8 C0 C8 D0 D8 E0 E8 F0 F8 \n"
                              "   20: 0  8 10 \n"
                              "ff");
}

TEST_F(CachedBufferTest, PrintsNoBytesOfMemoryThatItDoesNotOwn) {
  std::ostringstream stream;
  stream << buffer;
  EXPECT_EQ(stream.str(), "Cache    : 0x0\nPriority : 0\nSize     : 0\nMemaddr  : 0x0\n");
  buffer.init(cache, 4, 8, newBlock(8));
  buffer.clear();
  stream.str("");
  stream << buffer;
  EXPECT_EQ(stream.str().find("    0:"), std::string::npos);
}

}  // namespace
}  // namespace vx::test
