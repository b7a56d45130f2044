#include "HostFixture.h"
#include "TestAllocator.h"

#include "vxFields.h"
#include "vxNotify.h"

#include <sstream>

namespace vx::test {
namespace {

// Records the notifications of the host while it lives.
class NotifyRecorder {
 public:
  NotifyRecorder() : _handle(VXNotify.addNotifyCB(&NotifyRecorder::_record, this, 0x1fffff)) {}
  ~NotifyRecorder() { VXNotify.removeNotifyCB(_handle); }
  NotifyRecorder(const NotifyRecorder&) = delete;
  NotifyRecorder& operator=(const NotifyRecorder&) = delete;

  std::vector<unsigned int> codes;

 private:
  static void _record(void* self, unsigned int code, void* arg1, void* arg2) {
    EXPECT_EQ(arg1, nullptr);
    EXPECT_EQ(arg2, nullptr);
    static_cast<NotifyRecorder*>(self)->codes.push_back(code);
  }
  VXCallbackHandle _handle;
};

class HostServicesTest : public HostFixture {};

// The default hosts of a test of its own: whatever was there is put aside.
class DefaultHostTest : public HostFixture {
 protected:
  void SetUp() override { Host::destroyDefaultHost(); }
  void TearDown() override {
    while (Host::popDefaultHost() != 44) {
    }
    HostFixture::TearDown();
  }
};

TEST_F(HostServicesTest, StartsWithDefaults) {
  EXPECT_EQ(host.getProgressCB(), nullptr);
  EXPECT_EQ(host.getProgressCBUserData(), nullptr);
  EXPECT_EQ(host.getBreakCheckCB(), nullptr);
  EXPECT_EQ(host.getBreakCheckCBUserData(), nullptr);
  EXPECT_EQ(host.getMaxNumThreads(), 2U);
  EXPECT_EQ(host.isProcessingActive(), 0U);
  EXPECT_EQ(&host.getCache(), &host.getConstCache());
  EXPECT_EQ(host.getCache().getMaxCacheSizeKB(), 50000U);
}

// A class that derives from the host may look at its members.
class OpenHost : public Host {
 public:
  void expectStart() const {
    EXPECT_EQ(_progressCBUserData, nullptr);
    EXPECT_EQ(_progressCB, nullptr);
    EXPECT_EQ(_breakCheckCBUserData, nullptr);
    EXPECT_EQ(_breakCheckCB, nullptr);
    EXPECT_EQ(_maxNumThreads, 2U);
    EXPECT_EQ(_processingActive.load(), 0U);
    EXPECT_EQ(_numThreadErrors, 0);
    EXPECT_EQ(&_cache, &getConstCache());
  }
  static Host* defaultHost() { return _defaultHost; }
  static std::size_t stackDepth() { return _defaultHostStack.size(); }
};

TEST_F(HostServicesTest, ItsMembersStartWithTheirDefaults) { OpenHost().expectStart(); }

TEST_F(HostServicesTest, IsARunTimeType) {
  EXPECT_STREQ(host.getTypeIdName(), "Host");
  EXPECT_EQ(host.getTypeId(), Host::getClassTypeId());
  EXPECT_EQ(Host::getClassTypeId(), Runtime::fromName("Host"));
}

TEST_F(HostServicesTest, CopiesAreReportedAndCopyNothing) {
  host.setMaxNumThreads(7);
  Host copy(host);
  EXPECT_EQ(copy.getMaxNumThreads(), 2U);
  copy = host;
  EXPECT_EQ(copy.getMaxNumThreads(), 2U);
  EXPECT_EQ(messages.take(), (std::vector<Message>{{VX_FATAL, 14, "Host::Host(const Host &)",
                                                    "Usage of copy constructor of Host is not supported."},
                                                   {VX_FATAL, 14, "Host& Host::operator=(const Host &)",
                                                    "Usage of assignment operator of Host is not supported."}}));
}

TEST_F(HostServicesTest, EachSetterNotifies) {
  NotifyRecorder notifications;
  host.setProgressCB(&host, nullptr);
  host.setBreakCheckCB(&host, nullptr);
  host.setMaxNumThreads(3);
  EXPECT_EQ(notifications.codes, (std::vector<unsigned int>{0x100004, 0x100002, 0x100001}));
  host.setMaxNumThreads(3);
  host.setProgressCB(&host, nullptr);
  EXPECT_EQ(notifications.codes, (std::vector<unsigned int>{0x100004, 0x100002, 0x100001, 0x100004}));
  EXPECT_EQ(host.getProgressCBUserData(), &host);
  EXPECT_EQ(host.getBreakCheckCBUserData(), &host);
}

TEST_F(HostServicesTest, TheNumberOfThreadsIsKeptAsItIs) {
  for (const VXuint32 number : {0U, 1U, 1000U, ~0U}) {
    host.setMaxNumThreads(number);
    EXPECT_EQ(host.getMaxNumThreads(), number);
  }
}

TEST_F(HostServicesTest, ProgressGoesToTheCallback) {
  host.updateProgress("nobody", "hears");
  std::string heard;
  host.setProgressCB(&heard, [](void* userData, const char* info1, const char* info2) {
    *static_cast<std::string*>(userData) += std::string(info1) + "/" + info2;
  });
  host.updateProgress("a", "b");
  EXPECT_EQ(heard, "a/b");
}

TEST_F(HostServicesTest, OneCallbackAnswersTwoQuestions) {
  EXPECT_FALSE(host.shouldTerminate());
  EXPECT_EQ(host.getPressedNotifyField(), nullptr);
  struct Application {
    int result = 0;
    Field* pressed = nullptr;
    int numChecks = 0;
  } application;
  host.setBreakCheckCB(&application, [](void* userData, void** field) {
    auto& app = *static_cast<Application*>(userData);
    if (field) {
      EXPECT_EQ(*field, nullptr);
      if (app.pressed) *field = app.pressed;
      return 1;
    }
    ++app.numChecks;
    return app.result;
  });
  EXPECT_FALSE(host.shouldTerminate());
  application.result = -5;
  EXPECT_TRUE(host.shouldTerminate());
  EXPECT_EQ(application.numChecks, 2);
  EXPECT_EQ(host.getPressedNotifyField(), nullptr);
  NotifyField field("button");
  application.pressed = &field;
  EXPECT_EQ(host.getPressedNotifyField(), &field);
}

TEST_F(HostServicesTest, TheProcessingCounterStopsAtZero) {
  host._unsetProcessingActive();
  EXPECT_EQ(host.isProcessingActive(), 0U);
  host._setProcessingActive();
  host._setProcessingActive();
  host._unsetProcessingActive();
  EXPECT_EQ(host.isProcessingActive(), 1U);
  host._unsetProcessingActive();
}

TEST_F(HostServicesTest, PrintsItsState) {
  std::ostringstream stream;
  std::ostringstream cache;
  stream << host;
  cache << host.getConstCache();
  const std::string text = stream.str();
  std::size_t position = 0;
  for (const char* head :
       {"host.getProgressCBUserData()   = ", "host.getProgressCB()     = ", "host.getBreakCheckCBUserData() = ",
        "host.getBreakCheckCB()   = ", "host.getMaxNumThreads()  = 2", "host.isProcessingActive()   = 0",
        "host.getConstCache()     = "}) {
    const std::size_t found = text.find(head, position);
    ASSERT_NE(found, std::string::npos) << head;
    EXPECT_TRUE(found == 0 || text[found - 1] == '\n') << head;
    position = found + 1;
  }
  EXPECT_NE(text.find("host.getConstCache()     = " + cache.str()), std::string::npos);
}

TEST_F(DefaultHostTest, IsMadeOnTheFirstCall) {
  Host& first = Host::getDefaultHost();
  EXPECT_EQ(&Host::getDefaultHost(), &first);
  first.setMaxNumThreads(17);
  Host::destroyDefaultHost();
  EXPECT_EQ(OpenHost::defaultHost(), nullptr);
  Host::destroyDefaultHost();
  EXPECT_EQ(Host::getDefaultHost().getMaxNumThreads(), 2U);
}

TEST_F(DefaultHostTest, APushBringsANewHostAndAPopTheFormerOneWithItsCache) {
  Host& first = Host::getDefaultHost();
  first.setMaxNumThreads(5);
  SourceModule source(ext(10, 10), ext(16, 16), VXuint8Type);
  void* data = nullptr;
  EXPECT_EQ(BaseOp::getTile(&source, 0, boxOf(0, 0, 1, 1), VXuint8Type, &data), 0);
  EXPECT_EQ(Host::pushDefaultHost(), 0);
  EXPECT_NE(&Host::getDefaultHost(), &first);
  EXPECT_EQ(Host::getDefaultHost().getMaxNumThreads(), 2U);
  EXPECT_EQ(Host::popDefaultHost(), 0);
  EXPECT_EQ(&Host::getDefaultHost(), &first);
  EXPECT_EQ(BaseOp::getTile(&source, 0, boxOf(0, 0, 1, 1), VXuint8Type, &data), 0);
  EXPECT_EQ(source.numPages, 1);
  BaseOp::freeTile(data);
}

TEST_F(DefaultHostTest, PagesOfAHostThatIsGoneAreCalculatedAnew) {
  Host::getDefaultHost();
  SourceModule source(ext(10, 10), ext(16, 16), VXuint8Type);
  void* data = nullptr;
  Host::pushDefaultHost();
  EXPECT_EQ(BaseOp::getTile(&source, 0, boxOf(0, 0, 1, 1), VXuint8Type, &data), 0);
  EXPECT_EQ(Host::popDefaultHost(), 0);
  EXPECT_EQ(source.img().isValidPage(0), 0);
  EXPECT_EQ(BaseOp::getTile(&source, 0, boxOf(0, 0, 1, 1), VXuint8Type, &data), 0);
  EXPECT_EQ(source.numPages, 2);
  BaseOp::freeTile(data);
}

TEST_F(DefaultHostTest, AnEmptyStackCannotBePopped) { EXPECT_EQ(Host::popDefaultHost(), 44); }

TEST_F(DefaultHostTest, APushAsTheFirstCallPushesNoHost) {
  EXPECT_EQ(Host::pushDefaultHost(), 0);
  Host& pushed = Host::getDefaultHost();
  EXPECT_EQ(Host::popDefaultHost(), 42);
  EXPECT_EQ(OpenHost::stackDepth(), 0U);
  EXPECT_EQ(OpenHost::defaultHost(), &pushed);
  EXPECT_EQ(&Host::getDefaultHost(), &pushed);
  EXPECT_EQ(Host::popDefaultHost(), 44);
}

TEST_F(DefaultHostTest, MissingMemoryThrowsAndChangesNothing) {
  Host& first = Host::getDefaultHost();
  for (long n = 0;; ++n) {
    int thrown = 0;
    try {
      const FailingAllocations failing(n);
      Host::pushDefaultHost();
    } catch (int number) {
      thrown = number;
    }
    if (thrown == 0) break;
    EXPECT_EQ(thrown, 2);
    EXPECT_EQ(&Host::getDefaultHost(), &first);
    EXPECT_EQ(Host::popDefaultHost(), 44);
    messages.take();
    ASSERT_LT(n, 100);
  }
  EXPECT_EQ(Host::popDefaultHost(), 0);
}

}  // namespace
}  // namespace vx::test
