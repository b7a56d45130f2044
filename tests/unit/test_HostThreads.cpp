#include "HostFixture.h"
#include "TestTypes.h"
#include "ThreadStarts.h"

#include "vxField.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace vx::test {
namespace {

// What one page was told of its thread.
struct PageCall {
  VXint64 page;
  VXint32 numPages;
  VXint32 pageIndex;
  bool isMultithreadingActive;
  bool hasThread;
  bool isRequester;
};

bool operator==(const PageCall& a, const PageCall& b) {
  return a.page == b.page && a.numPages == b.numPages && a.pageIndex == b.pageIndex &&
         a.isMultithreadingActive == b.isMultithreadingActive && a.hasThread == b.hasThread &&
         a.isRequester == b.isRequester;
}
std::ostream& operator<<(std::ostream& stream, const PageCall& call) {
  return stream << "{page " << call.page << ", " << call.pageIndex << " of " << call.numPages
                << (call.isMultithreadingActive ? ", active" : "") << (call.hasThread ? ", thread" : "")
                << (call.isRequester ? ", requester" : "") << "}";
}

class HostThreadsTest : public HostFixture {
 protected:
  // A module of pages of one voxel in a row, which notes what it is told and gives each page its number plus 1.
  void makeRow(VXint64 numPages, VXDataType dataType = VXuint16Type) {
    row = std::make_unique<TestModule>(0, 1);
    row->threaded().named("row");
    row->onCalcOutImageProps = [=](PagedImg& img, int) {
      img.setImgExt(ext(numPages, 1));
      img.setPageExt(ext(1, 1));
      img.setDataType(dataType);
    };
    row->onCalcOutSubImage = [this](SubImg& out, int, SubImg*, ThreadInfo& info) {
      const VXint64 page = out.getPosition().x;
      {
        const std::lock_guard lock(mutex);
        calls.push_back({page, info.numPages, info.pageIndex, info.isMultithreadingActive, info.threadHandle.valid,
                         std::this_thread::get_id() == requester});
        threads.insert({page, info.threadHandle.thread});
      }
      if (onPage) onPage(page);
      out.fillSubImg(static_cast<VXldouble>(page + 1));
    };
  }

  SubImgBox rowBox(VXint64 numPages) { return boxOf(0, 0, numPages - 1, 0); }

  std::vector<VXint64> numbers(VXint64 numPages) {
    return valuesAt(rowBox(numPages), [](const TVector<VXint64>& p) { return p.x + 1; });
  }

  std::vector<PageCall> sortedCalls() {
    std::sort(calls.begin(), calls.end(), [](const PageCall& a, const PageCall& b) { return a.page < b.page; });
    return std::exchange(calls, {});
  }

  // Messages of several threads come in any order.
  std::vector<Message> sortedMessages() {
    std::vector<Message> all = messages.take();
    std::stable_sort(all.begin(), all.end(), [](const Message& a, const Message& b) {
      return std::tie(a.type, a.code, a.function) < std::tie(b.type, b.code, b.function);
    });
    return all;
  }

  // The messages of a group that failed by a code in the requested module.
  static std::vector<Message> failedByCode(VXErrorCode number, const std::string& module) {
    return {{VX_ERROR, number, "Host::_calcPagesMT( ) on module " + module, controlledException},
            {VX_ERROR, number, "Host::_processPagesHelper() on module " + module, controlledException},
            {VX_ERROR, 16, "Module " + module + " called by Host::_calcPages:", ""},
            {VX_FATAL, 41, "VXPrintAndNotifyFatal()", "A guarded block was left by a failure."}};
  }

  std::unique_ptr<TestModule> row;
  std::function<void(VXint64 page)> onPage;
  const std::thread::id requester = std::this_thread::get_id();
  std::mutex mutex;
  std::vector<PageCall> calls;
  std::map<VXint64, std::uintptr_t> threads;
};

// Chunks -------------------------------------------------------------------------------------------------------------

TEST_F(HostThreadsTest, FivePagesOnTwoThreadsAreChunksOfTwoAndThree) {
  makeRow(5);
  host.setMaxNumThreads(2);
  EXPECT_EQ(tile(*row, rowBox(5)), numbers(5));
  EXPECT_EQ(sortedCalls(), (std::vector<PageCall>{{0, 2, 0, true, true, false},
                                                  {1, 2, 1, true, true, false},
                                                  {2, 3, 0, true, true, false},
                                                  {3, 3, 1, true, true, false},
                                                  {4, 3, 2, true, true, false}}));
  EXPECT_EQ(threads[0], threads[1]);
  EXPECT_EQ(threads[2], threads[4]);
  EXPECT_NE(threads[0], threads[2]);
}

TEST_F(HostThreadsTest, OnePageNeedsNoThread) {
  makeRow(5);
  host.setMaxNumThreads(4);
  ThreadStarts starts;
  EXPECT_EQ(tile(*row, rowBox(1)), numbers(1));
  EXPECT_EQ(sortedCalls(), (std::vector<PageCall>{{0, 1, 0, false, false, true}}));
  EXPECT_EQ(starts.numStarts, 0);
}

TEST_F(HostThreadsTest, NoThreadsCountAsOne) {
  makeRow(3);
  host.setMaxNumThreads(0);
  ThreadStarts starts;
  EXPECT_EQ(tile(*row, rowBox(3)), numbers(3));
  EXPECT_EQ(calls, (std::vector<PageCall>{
                       {0, 3, 0, false, false, true}, {1, 3, 1, false, false, true}, {2, 3, 2, false, false, true}}));
  EXPECT_EQ(starts.numStarts, 0);
}

TEST_F(HostThreadsTest, AModuleWithoutThreadSupportRunsInOrderOnTheRequestingThread) {
  makeRow(5);
  row->setThreadSupport(BaseOp::NO_THREAD_SUPPORT);
  ThreadStarts starts;
  EXPECT_EQ(tile(*row, rowBox(5)), numbers(5));
  EXPECT_EQ(calls, (std::vector<PageCall>{{0, 2, 0, false, false, true},
                                          {1, 2, 1, false, false, true},
                                          {2, 3, 0, false, false, true},
                                          {3, 3, 1, false, false, true},
                                          {4, 3, 2, false, false, true}}));
  EXPECT_EQ(starts.numStarts, 0);
}

TEST_F(HostThreadsTest, AnyOtherValueThanZeroSupportsThreads) {
  makeRow(2);
  row->setThreadSupport(static_cast<BaseOp::THREAD_SUPPORT>(77));
  tile(*row, rowBox(2));
  EXPECT_TRUE(calls[0].hasThread);
}

TEST_F(HostThreadsTest, MultithreadingIsOffAfterARun) {
  makeRow(3);
  host.setMaxNumThreads(1);
  _VXSetMultithreadingActive(1);
  tile(*row, rowBox(3));
  EXPECT_EQ(VXIsMultithreadingActive(), 0);
  host.setMaxNumThreads(3);
  row->img().clearPageList();
  onPage = [](VXint64) { EXPECT_EQ(VXIsMultithreadingActive(), 1); };
  tile(*row, rowBox(3));
  EXPECT_EQ(VXIsMultithreadingActive(), 0);
}

TEST_F(HostThreadsTest, HundredsOfChunksFinish) {
  ASSERT_TRUE(registerTestTypes());
  host.setMaxNumThreads(~0U);
  for (const VXDataType dataType : {VXDataType{VXuint16Type}, complexType()}) {
    makeRow(300, dataType);
    TestModule behind(1, 1);
    behind.threaded().connect(0, *row);
    row->anyType();
    behind.anyType();
    ThreadStarts starts;
    EXPECT_EQ(tile(behind, rowBox(300)), numbers(300)) << VXNameFromDataType(dataType);
    EXPECT_EQ(starts.numStarts, 300);
  }
}

TEST_F(HostThreadsTest, TheRequestingThreadShowsProgress) {
  makeRow(2);
  std::vector<std::string> heard;
  struct Application {
    std::thread::id requester;
    std::vector<std::string>& heard;
  } application{requester, heard};
  host.setProgressCB(&application, [](void* userData, const char* info1, const char* info2) {
    auto& app = *static_cast<Application*>(userData);
    EXPECT_EQ(std::this_thread::get_id(), app.requester);
    app.heard.push_back(std::string(info1) + "/" + info2);
  });
  onPage = [](VXint64) { std::this_thread::sleep_for(std::chrono::milliseconds(30)); };
  tile(*row, rowBox(2));
  EXPECT_EQ(heard, std::vector<std::string>{"TestModule/calculating"});
}

TEST_F(HostThreadsTest, ASingleThreadShowsProgressAtTheDefaultHostEveryThirdOfASecond) {
  makeRow(3);
  host.setMaxNumThreads(1);
  std::string heard;
  Host::getDefaultHost().setProgressCB(&heard, [](void* userData, const char* info1, const char* info2) {
    *static_cast<std::string*>(userData) += std::string(info1) + "/" + info2 + " ";
  });
  onPage = [](VXint64 page) { std::this_thread::sleep_for(std::chrono::milliseconds(page == 1 ? 310 : 1)); };
  tile(*row, rowBox(3));
  Host::getDefaultHost().setProgressCB(nullptr, nullptr);
  EXPECT_EQ(heard, "TestModule(row)/calculating ");
}

TEST_F(HostThreadsTest, TheCostOfAPageIsItsPriority) {
  makeRow(2);
  onPage = [](VXint64 page) { std::this_thread::sleep_for(std::chrono::milliseconds(page == 1 ? 30 : 0)); };
  tile(*row, rowBox(2));
  EXPECT_EQ(row->img().getPage(1, PagedImg::OWN_PAGE)->getPriority(), 9U);  // of one voxel
}

// New pages have priority 9 until their cost is known.
TEST_F(HostThreadsTest, ThePriorityIsThatOfItsVoxelsAlsoWhereAPageFailed) {
  for (const VXuint32 numThreads : {1U, 2U}) {
    host.setMaxNumThreads(numThreads);
    SourceModule large(ext(2048, 1024), ext(1024, 1024), VXuint8Type);
    large.threaded().onCalcOutSubImage = [](SubImg& out, int, SubImg*, ThreadInfo&) {
      if (out.getPosition().x != 0) throw 7;
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    };
    tile(large, boxOf(0, 0, 2047, 0), VXuint8Type);
    EXPECT_EQ(code, 7);
    const VXuint64 cheap = large.img().getPage(1, PagedImg::OWN_PAGE)->getPriority();
    const VXuint64 costly = large.img().getPage(0, PagedImg::OWN_PAGE)->getPriority();
    EXPECT_GE(costly, 3U);  // 20 ms and more
    EXPECT_LT(costly, 9U);
    EXPECT_LT(cheap, 9U);
    messages.take();
  }
}

// Threads that can't be started --------------------------------------------------------------------------------------

TEST_F(HostThreadsTest, ChunksWhoseThreadCannotBeStartedRunOnTheRequestingThread) {
  makeRow(5);
  host.setMaxNumThreads(2);
  ThreadStarts starts({0});
  EXPECT_EQ(tile(*row, rowBox(5)), numbers(5));
  EXPECT_EQ(sortedCalls(), (std::vector<PageCall>{{0, 2, 0, true, false, true},
                                                  {1, 2, 1, true, false, true},
                                                  {2, 3, 0, true, true, false},
                                                  {3, 3, 1, true, true, false},
                                                  {4, 3, 2, true, true, false}}));
}

TEST_F(HostThreadsTest, AnyThreadsMayBeMissingWithAndWithoutSerialisedCopies) {
  ASSERT_TRUE(registerTestTypes());
  constexpr int numThreads = 4;
  host.setMaxNumThreads(numThreads);
  for (const VXDataType dataType : {VXDataType{VXuint16Type}, complexType()}) {
    for (int mask = 0; mask < 1 << numThreads; ++mask) {
      makeRow(11, dataType);
      row->anyType();
      tile(*row, rowBox(11));
      TestModule behind(1, 1);
      behind.threaded().connect(0, *row);
      behind.anyType();
      std::set<int> missing;
      for (int i = 0; i < numThreads; ++i) {
        if ((mask >> i & 1) != 0) missing.insert(i);
      }
      ThreadStarts starts(missing);
      EXPECT_EQ(tile(behind, rowBox(11)), numbers(11)) << VXNameFromDataType(dataType) << ", mask " << mask;
      EXPECT_EQ(starts.numStarts, numThreads);
    }
  }
}

// All copies of a round take place while nobody calculates.
TEST_F(HostThreadsTest, SerialisedCopiesAreApartFromCalculations) {
  ASSERT_TRUE(registerTestTypes());
  host.setMaxNumThreads(3);
  makeRow(8, complexType());
  row->anyType();
  TestModule behind(1, 1);
  behind.threaded().connect(0, *row);
  behind.anyType();
  std::atomic<int> numBegun{0};
  behind.onCalcOutSubImage = [&](SubImg& out, int, SubImg* in, ThreadInfo& info) {
    // Chunks are 2, 2 and 4 pages long: nobody begins his second page before all three have copied for it, and so
    // finished their first.
    if (info.pageIndex == 1) {
      EXPECT_GE(numBegun.load(), 3);
    }
    if (info.pageIndex == 0) std::this_thread::sleep_for(std::chrono::milliseconds(5 * out.getPosition().x));
    ++numBegun;
    out.copySubImage(in[0]);
  };
  EXPECT_EQ(tile(behind, rowBox(8)), numbers(8));
  // The output is of a standard type, and the input isn't.
  numBegun = 0;
  behind.img().setOutOfDate();
  behind.onCalcOutImageProps = [](PagedImg& img, int) { img.setDataType(VXuint16Type); };
  behind.onCalcInSubImageProps = [](int, InSubImageProps& props, int) { props.dataType = complexType(); };
  EXPECT_EQ(tile(behind, rowBox(8)), numbers(8));
  EXPECT_EQ(numBegun, 8);
}

// Workers must not meet in a conversion of a registered type, and the run asks for rounds by the types of blocks alone.
TEST_F(HostThreadsTest, InPlaceCopiesFromARegisteredTypePrecedeTheRun) {
  ASSERT_TRUE(registerTestTypes());
  makeRow(4, complexType());
  row->anyType();
  TestModule behind(1, 1);
  behind.threaded().connect(0, *row);
  behind.anyType();
  behind.onCalcOutImageProps = [](PagedImg& img, int) { img.setDataType(VXdoubleType); };
  behind.setOutImgInplace(0, 0);
  std::atomic<int> numPages{0};
  behind.onCalcOutSubImage = [&](SubImg& out, int, SubImg* in, ThreadInfo&) {
    EXPECT_EQ(in[0].getData(), out.getData());
    for (VXint64 id = 0; id < 4; ++id) {
      const double expected = static_cast<double>(id) + 1;
      EXPECT_EQ(*static_cast<double*>(behind.img().getPageData(id, PagedImg::OWN_PAGE)), expected);
    }
    ++numPages;
  };
  for (const VXuint32 numThreads : {1U, 2U}) {
    host.setMaxNumThreads(numThreads);
    behind.img().clearPageList();
    EXPECT_EQ(tile(behind, rowBox(4)), numbers(4));
  }
  EXPECT_EQ(numPages, 8);
}

// The tile -----------------------------------------------------------------------------------------------------------

// No page of a group is in the tile before the last one of any chunk is calculated; whoever copies them.
TEST_F(HostThreadsTest, TheTileIsWrittenWhenAllChunksAreCalculated) {
  for (const std::set<int>& missing : {std::set<int>{}, {0}, {2}, {0, 1, 2}}) {
    for (const int slowPage : {0, 4, 8}) {
      makeRow(9);
      host.setMaxNumThreads(3);
      std::vector<VXuint16> memory(9, 99);
      onPage = [&](VXint64 page) {
        if (page != slowPage) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        EXPECT_EQ(memory, std::vector<VXuint16>(9, 99)) << slowPage;
      };
      void* data = memory.data();
      const ThreadStarts starts(missing);
      EXPECT_EQ(host.getTile(*row, 0, rowBox(9), VXuint16Type, &data), 0);
      EXPECT_EQ(memory, (std::vector<VXuint16>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
    }
  }
}

TEST_F(HostThreadsTest, TheTileIsWholeWhereSomePagesWereThere) {
  makeRow(9);
  host.setMaxNumThreads(3);
  EXPECT_EQ(tile(*row, boxOf(3, 0, 4, 0)), (std::vector<VXint64>{4, 5}));
  EXPECT_EQ(tile(*row, rowBox(9)), numbers(9));
  EXPECT_EQ(calls.size(), 9U);
}

// Also where that chunk is the last one that comes to its end.
TEST_F(HostThreadsTest, TheTileStaysAsItWasIfAChunkFails) {
  for (const std::set<int>& missing : {std::set<int>{}, {0}, {1}}) {
    for (const int failingPage : {0, 3, 5}) {
      makeRow(6);
      host.setMaxNumThreads(2);
      onPage = [failingPage](VXint64 page) {
        if (page != failingPage) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        throw 7;
      };
      const ThreadStarts starts(missing);
      EXPECT_EQ(tile(*row, rowBox(6)), std::vector<VXint64>(6, -1));
      EXPECT_EQ(code, 7);
      messages.take();
    }
  }
}

// Failures -----------------------------------------------------------------------------------------------------------

TEST_F(HostThreadsTest, AFailedPageEndsItsChunkAndNoOther) {
  makeRow(8);
  host.setMaxNumThreads(2);
  onPage = [](VXint64 page) {
    if (page == 1) throw 7;
  };
  EXPECT_EQ(tile(*row, rowBox(8)), std::vector<VXint64>(8, -1));
  EXPECT_EQ(code, 7);
  std::vector<VXint64> pages;
  for (const PageCall& call : sortedCalls()) pages.push_back(call.page);
  EXPECT_EQ(pages, (std::vector<VXint64>{0, 1, 4, 5, 6, 7}));
  EXPECT_EQ(sortedMessages(), failedByCode(7, "TestModule(row)"));
  expectRest();
  for (VXint64 id = 0; id < 8; ++id) {
    const CachedBuffer* const page = row->img().getPage(id, PagedImg::OWN_PAGE);
    EXPECT_EQ(page->getLockCount(), 1);
    const VXuint16 expected = static_cast<VXuint16>(id >= 1 && id <= 3 ? 0 : id + 1);
    EXPECT_EQ(*static_cast<VXuint16*>(page->getData()), expected) << id;
  }
}

TEST_F(HostThreadsTest, TheFirstCodeInTheOrderOfPagesIsTheResult) {
  makeRow(4);
  host.setMaxNumThreads(2);
  onPage = [](VXint64 page) {
    if (page == 1) {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      throw 5;
    }
    if (page == 2) throw 7;
  };
  tile(*row, rowBox(4));
  EXPECT_EQ(code, 5);
  messages.take();
}

TEST_F(HostThreadsTest, TheNextRequestWorks) {
  makeRow(8);
  onPage = [](VXint64) { throw 7; };
  tile(*row, rowBox(8));
  EXPECT_EQ(code, 7);
  messages.take();
  onPage = nullptr;
  row->img().clearPageList();
  EXPECT_EQ(tile(*row, rowBox(8)), numbers(8));
  EXPECT_EQ(code, 0);
}

TEST_F(HostThreadsTest, AThrownCodeOfZeroIsNoSuccess) {
  for (const VXuint32 numThreads : {1U, 2U}) {
    makeRow(2);
    host.setMaxNumThreads(numThreads);
    onPage = [](VXint64 page) {
      if (page == 0) throw 0;
    };
    tile(*row, rowBox(2));
    EXPECT_EQ(code, 1);
    const std::vector<Message> reported = sortedMessages();
    ASSERT_EQ(reported.size(), 4U);
    EXPECT_EQ(reported[0],
              (Message{VX_ERROR, 0, "Host::_calcPagesMT( ) on module TestModule(row)", controlledException}));
    EXPECT_EQ(reported[1],
              (Message{VX_ERROR, 1, "Host::_processPagesHelper() on module TestModule(row)", controlledException}));
  }
}

TEST_F(HostThreadsTest, AnUnknownExceptionIsReportedAndTheRequestGoesOn) {
  for (const VXuint32 numThreads : {1U, 2U}) {
    makeRow(4);
    host.setMaxNumThreads(numThreads);
    onPage = [](VXint64 page) {
      if (page == 2) throw std::runtime_error("text");
    };
    EXPECT_EQ(tile(*row, rowBox(4)), (std::vector<VXint64>{1, 2, 0, 0}));
    EXPECT_EQ(code, 0);
    EXPECT_EQ(
        messages.take(),
        (std::vector<Message>{{VX_FATAL, 16, "TestModule(row)::calcOutSubImage()", "Continuing with other pages."}}));
    expectRest();
  }
}

TEST_F(HostThreadsTest, ReportsOfACalculationHandOverTheModuleAndItsType) {
  for (const VXuint32 numThreads : {1U, 2U}) {
    host.setMaxNumThreads(numThreads);
    for (const bool isCode : {true, false}) {
      makeRow(2);
      onPage = [=](VXint64 page) {
        if (page == 0 && isCode) throw 7;
        if (page == 0) throw OtherException();
      };
      tile(*row, rowBox(2));
      int numWithModule = 0;
      for (const Message& message : messages.take()) {
        const bool isOfChunk = message.function == "Host::_calcPagesMT( ) on module TestModule(row)" ||
                               message.function == "TestModule(row)::calcOutSubImage()";
        EXPECT_EQ(message.handledObject, isOfChunk ? static_cast<const BaseOp*>(row.get()) : nullptr) << message;
        EXPECT_EQ(message.handledObjectType, isOfChunk ? TestModule::getClassTypeId() : nullptr) << message;
        numWithModule += isOfChunk;
      }
      EXPECT_EQ(numWithModule, 1);
    }
  }
}

TEST_F(HostThreadsTest, AnErrorCodeIsCaughtWhileExceptionHandlingIsOff) {
  const ExceptionHandling off(false);
  for (const VXuint32 numThreads : {1U, 2U}) {
    makeRow(4);
    host.setMaxNumThreads(numThreads);
    onPage = [](VXint64 page) {
      if (page == 2) throw -1;
    };
    EXPECT_EQ(tile(*row, rowBox(4)), std::vector<VXint64>(4, -1));
    EXPECT_EQ(code, -1);
    EXPECT_EQ(sortedMessages(), failedByCode(-1, "TestModule(row)"));
    expectRest();
  }
}

TEST_F(HostThreadsTest, AnUnknownExceptionReachesTheCallerWhileExceptionHandlingIsOff) {
  const ExceptionHandling off(false);
  for (const VXuint32 numThreads : {1U, 2U, 4U}) {
    makeRow(4);
    host.setMaxNumThreads(numThreads);
    onPage = [](VXint64 page) {
      if (page == 2) throw std::runtime_error("text");
    };
    EXPECT_THROW(tile(*row, rowBox(4)), std::runtime_error);
    expectRest();
    for (const Message& message : messages.take()) {
      EXPECT_EQ(message.type, VX_FATAL);
      EXPECT_EQ(message.code, 41);
    }
    EXPECT_EQ(*static_cast<VXuint16*>(row->img().getPageData(2, PagedImg::OWN_PAGE)), 0);
  }
}

TEST_F(HostThreadsTest, AFatalCheckInAChunkReachesTheCallerAsItsCode) {
  for (const VXuint32 numThreads : {1U, 2U}) {
    makeRow(4);
    host.setMaxNumThreads(numThreads);
    TestModule behind(1, 1);
    behind.threaded().connect(0, *row);
    behind.onCalcOutSubImage = [&](SubImg& out, int, SubImg* in, ThreadInfo&) {
      if (out.getPosition().x == 0) row->img().removePage(1, true);  // the copy for the next page finds none
      out.copySubImage(in[0]);
    };
    tile(behind, rowBox(4));
    EXPECT_EQ(code, 41);
    messages.take();
    expectRest();
    EXPECT_EQ(*static_cast<VXuint16*>(behind.img().getPageData(1, PagedImg::OWN_PAGE)), 0);
    for (const VXint64 id : {0, 2, 3}) {
      EXPECT_EQ(row->img().getPage(id, PagedImg::OWN_PAGE)->getLockCount(), 0);
    }
  }
}

TEST_F(HostThreadsTest, AnExceptionOfTheRequestingThreadWaitsForTheWorkers) {
  const ExceptionHandling off(false);
  makeRow(4);
  host.setMaxNumThreads(4);
  ThreadStarts starts({1});
  std::atomic<int> numEnded{0};
  onPage = [&](VXint64 page) {
    if (page == 1) throw std::runtime_error("text");
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    ++numEnded;
  };
  EXPECT_THROW(tile(*row, rowBox(4)), std::runtime_error);
  EXPECT_EQ(numEnded, 3);
  messages.take();
}

TEST_F(HostThreadsTest, AnExceptionOfTheProgressCallbackWaitsForTheWorkers) {
  makeRow(4);
  std::atomic<int> numEnded{0};
  onPage = [&](VXint64) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    ++numEnded;
  };
  host.setProgressCB(nullptr, [](void*, const char*, const char*) { throw 99; });
  EXPECT_EQ(tile(*row, rowBox(4)), std::vector<VXint64>(4, -1));
  EXPECT_EQ(code, 99);
  EXPECT_EQ(numEnded, 4);
  messages.take();
}

TEST_F(HostThreadsTest, AnInputBlockThatIsTooLargeIsAFailureOfMemory) {
  for (const VXuint32 numThreads : {1U, 2U}) {
    makeRow(4);
    host.setMaxNumThreads(numThreads);
    TestModule behind(1, 1);
    behind.threaded().connect(0, *row);
    behind.onCalcInSubImageBox = [](int, const SubImgBox& box, int) {
      constexpr VXint64 far = VXint64{1} << 40;
      return box.v1.x == 3 ? SubImgBox({-far, -far, 0, 0, 0, 0}, {far, far, 0, 0, 0, 0}) : box;
    };
    tile(behind, rowBox(4));
    EXPECT_EQ(code, 2);
    EXPECT_FALSE(messages.take().empty());
    EXPECT_EQ(row->img().getPage(0, PagedImg::OWN_PAGE)->getLockCount(), 0);
  }
}

TEST_F(HostThreadsTest, ManyFailuresAndMissingThreadsAtOnceFinish) {
  ASSERT_TRUE(registerTestTypes());
  host.setMaxNumThreads(6);
  unsigned random = 12345;
  const auto next = [&](unsigned below) { return (random = random * 1103515245U + 12345U) / 65536U % below; };
  for (int run = 0; run < 60; ++run) {
    const VXint64 numPages = 6 + next(12);
    makeRow(numPages, next(2) != 0 ? complexType() : VXuint16Type);
    row->anyType();
    host.setMaxNumThreads(1);
    tile(*row, rowBox(numPages));
    host.setMaxNumThreads(6);
    TestModule behind(1, 1);
    behind.threaded().connect(0, *row);
    behind.anyType();
    const VXint64 failing = next(static_cast<unsigned>(numPages));
    const unsigned kind = next(3);
    behind.onCalcOutSubImage = [&](SubImg& out, int, SubImg* in, ThreadInfo&) {
      if (out.getPosition().x == failing && kind == 0) throw 7;
      if (out.getPosition().x == failing && kind == 1) throw OtherException();
      out.copySubImage(in[0]);
    };
    const ThreadStarts starts({static_cast<int>(next(6)), static_cast<int>(next(6))});
    tile(behind, rowBox(numPages));
    EXPECT_EQ(code, kind == 0 ? 7 : 0);
    messages.take();
    expectRest();
  }
}

// Requests from inside -----------------------------------------------------------------------------------------------

TEST_F(HostThreadsTest, AWorkerIsServedATile) {
  host.setMaxNumThreads(4);
  makeRow(16);
  SourceModule source(ext(64, 64), ext(8, 8), VXuint16Type);
  TestModule pass(1, 1);
  source.threaded();
  pass.threaded().connect(0, source);
  std::atomic<int> numBad{0};
  onPage = [&](VXint64 page) {
    const SubImgBox box = boxOf(page, page, page + 20, page + 20);
    void* data = nullptr;
    if (host.getTile(pass, 0, box, VXint64Type, &data) != 0) ++numBad;
    if (valuesOf(box, VXint64Type, data) != valuesAt(box, sourceValue)) ++numBad;
    host.freeTile(data);
    if (VXIsMultithreadingActive() == 0) ++numBad;
  };
  EXPECT_EQ(tile(*row, rowBox(16)), numbers(16));
  EXPECT_EQ(numBad, 0);
  EXPECT_LE(source.numPages, 64);
  for (VXint64 id = 0; id < 64; ++id) {
    const CachedBuffer* const page = source.img().getPage(id, PagedImg::OWN_PAGE);
    EXPECT_TRUE(!page || page->getLockCount() == 0);
  }
}

TEST_F(HostThreadsTest, AFailureOfARequestFromInsideIsItsOwn) {
  host.setMaxNumThreads(3);
  makeRow(6);
  SourceModule failing(ext(4, 4), ext(8, 8), VXuint16Type);
  failing.onCalcOutSubImage = [](SubImg&, int, SubImg*, ThreadInfo&) { throw 7; };
  std::atomic<int> numRefused{0};
  onPage = [&](VXint64 page) {
    void* data = nullptr;
    if (page == 3 && host.getTile(failing, 0, boxOf(0, 0, 0, 0), VXuint16Type, &data) == 7) ++numRefused;
    host.freeTile(data);
  };
  EXPECT_EQ(tile(*row, rowBox(6)), numbers(6));
  EXPECT_EQ(code, 0);
  EXPECT_EQ(numRefused, 1);
  EXPECT_EQ(messages.take().size(), 4U);
}

TEST_F(HostThreadsTest, TheProgressCallbackIsServedATileWhileWorkersRun) {
  host.setMaxNumThreads(2);
  makeRow(4);
  SourceModule source(ext(40, 40), ext(8, 8), VXuint16Type);
  source.threaded();
  struct Application {
    Host& host;
    TestModule& source;
    std::vector<VXint64> values;
    int isActiveAfter;
  } application{host, source, {}, -1};
  host.setProgressCB(&application, [](void* userData, const char*, const char*) {
    auto& app = *static_cast<Application*>(userData);
    void* data = nullptr;
    app.host.getTile(app.source, 0, boxOf(0, 0, 39, 39), VXint64Type, &data);
    app.values = valuesOf(boxOf(0, 0, 39, 39), VXint64Type, data);
    app.host.freeTile(data);
    app.isActiveAfter = VXIsMultithreadingActive();
  });
  onPage = [](VXint64) { std::this_thread::sleep_for(std::chrono::milliseconds(20)); };
  EXPECT_EQ(tile(*row, rowBox(4)), numbers(4));
  EXPECT_EQ(application.values, valuesAt(boxOf(0, 0, 39, 39), sourceValue));
  EXPECT_EQ(application.isActiveAfter, 1);
}

TEST_F(HostThreadsTest, ARequestFromInsideASingleThreadMayUseThreads) {
  host.setMaxNumThreads(2);
  makeRow(4);
  TestModule asking(0, 1);
  asking.onCalcOutImageProps = [](PagedImg& img, int) {
    img.setImgExt(ext(4, 1));
    img.setPageExt(ext(4, 1));
    img.setDataType(VXuint16Type);
  };
  asking.onCalcOutSubImage = [&](SubImg& out, int, SubImg*, ThreadInfo&) {
    EXPECT_EQ(host.getTile(*row, 0, out), 0);
    EXPECT_EQ(VXIsMultithreadingActive(), 0);
  };
  EXPECT_EQ(tile(asking, rowBox(4)), numbers(4));
  EXPECT_TRUE(calls[0].hasThread);
}

}  // namespace
}  // namespace vx::test
