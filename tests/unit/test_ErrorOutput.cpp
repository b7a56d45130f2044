#include "MessageRecorder.h"
#include "TestAllocator.h"

#include "vxErrorOutput.h"
#include "vxRuntime.h"

#include <atomic>
#include <gtest/gtest.h>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace vx::test {
namespace {

using Messages = std::vector<Message>;

// Takes what is written to a standard stream.
class StreamCapture {
 public:
  explicit StreamCapture(std::ostream& stream) : _stream(stream), _buffer(stream.rdbuf(_text.rdbuf())) {}
  ~StreamCapture() { _stream.rdbuf(_buffer); }
  std::string text() const { return _text.str(); }

 private:
  std::ostringstream _text;
  std::ostream& _stream;
  std::streambuf* _buffer;
};

// Restores the settings of the channel.
class ErrorOutputTest : public ::testing::Test {
 protected:
  void SetUp() override { VXErrorOutput.reset(); }
  void TearDown() override { VXErrorOutput.reset(); }
};

void sendTo(const ErrorOutput& output, VXMessageType type, const std::string& reason = "reason") {
  output.printAndNotify(type, "VX", "Function=", "label", VX_BAD_PARAMETER, reason, "source.cpp", 12, nullptr, nullptr);
}

TEST_F(ErrorOutputTest, DefaultsAreWarningsErrorsAndFatalMessagesToTheErrorStream) {
  const ErrorOutput fresh;
  EXPECT_EQ(fresh.getMessageFilter(), 7U);
  EXPECT_FALSE(fresh.isFullDebuggingOn());
  EXPECT_FALSE(fresh.areMessagesSentToCout());
  EXPECT_TRUE(fresh.areMessagesSentToCerr());
}

TEST_F(ErrorOutputTest, AMessageIsOneLineWithLevelCodeDescriptionFunctionReasonFileAndLine) {
  const StreamCapture cerr(std::cerr);
  const StreamCapture cout(std::cout);
  sendTo(VXErrorOutput, VX_ERROR);
  sendTo(VXErrorOutput, VX_WARNING, "two\nlines\tand \x01 more");
  sendTo(VXErrorOutput, VX_FATAL, "");
  EXPECT_EQ(cerr.text(),
            "VX error 19 (An argument is invalid.): Function=label, Reason=reason, File=source.cpp, Line=12\n"
            "VX warning 19 (An argument is invalid.): Function=label, Reason=two\\nlines\\tand \\x01 more, "
            "File=source.cpp, Line=12\n"
            "VX fatal error 19 (An argument is invalid.): Function=label, Reason=, File=source.cpp, Line=12\n");
  EXPECT_EQ(cout.text(), "");
}

TEST_F(ErrorOutputTest, ControlCharactersAndUnknownLevelsLeaveALineWhole) {
  const StreamCapture cerr(std::cerr);
  VXErrorOutput.setMessageFilter(0xFF);
  sendTo(VXErrorOutput, 0x10, "a\rb\x7f\x1f");
  EXPECT_EQ(cerr.text(),
            "VX message 19 (An argument is invalid.): Function=label, Reason=a\\rb\\x7f\\x1f, File=source.cpp, "
            "Line=12\n");
}

TEST_F(ErrorOutputTest, StreamsAreSwitchedApart) {
  const StreamCapture cerr(std::cerr);
  const StreamCapture cout(std::cout);
  VXErrorOutput.sendMessagesToCout(true);
  VXErrorOutput.sendMessagesToCerr(false);
  EXPECT_TRUE(VXErrorOutput.areMessagesSentToCout());
  EXPECT_FALSE(VXErrorOutput.areMessagesSentToCerr());
  sendTo(VXErrorOutput, VX_DEBUG);
  VXErrorOutput.setMessageFilter(VX_DEBUG);
  sendTo(VXErrorOutput, VX_DEBUG);
  EXPECT_EQ(cerr.text(), "");
  EXPECT_EQ(cout.text(),
            "VX debug 19 (An argument is invalid.): Function=label, Reason=reason, File=source.cpp, Line=12\n");
}

TEST_F(ErrorOutputTest, AFailureWithATextOfItsOwnShowsThatInPlaceOfTheDescription) {
  const StreamCapture cerr(std::cerr);
  MessageRecorder messages;
  VXErrorOutput.sendMessagesToCerr(true);
  VXErrorOutput.printAndNotify(VX_FATAL, "VX", "Function=", "label", std::string("what was thrown"), "reason",
                               "source.cpp", 3, &messages, nullptr, 0);
  EXPECT_EQ(cerr.text(),
            "VX fatal error 0 (what was thrown): Function=label, Reason=reason, File=source.cpp, Line=3\n");
  const auto taken = messages.take();
  ASSERT_EQ(taken.size(), 1U);
  EXPECT_EQ(taken[0].errorText, "what was thrown");
  EXPECT_EQ(taken[0].code, 0);
}

TEST_F(ErrorOutputTest, CallbacksGetTheWholeMessage) {
  MessageRecorder messages;
  const RuntimeType* type = Runtime::fromName("Base");
  const int object = 0;
  VXErrorOutput.printAndNotify(VX_WARNING, "VX", "Function=", "f()", VX_BAD_FIELD, "why", "a/b.cpp", 99, &object, type);
  const auto taken = messages.take();
  ASSERT_EQ(taken.size(), 1U);
  EXPECT_EQ(taken[0], (Message{VX_WARNING, VX_BAD_FIELD, "f()", "why"}));
  EXPECT_EQ(taken[0].prefix, "VX");
  EXPECT_EQ(taken[0].functionLead, "Function=");
  EXPECT_EQ(taken[0].errorText, VXGetErrorCodeDescription(VX_BAD_FIELD));
  EXPECT_EQ(taken[0].file, "a/b.cpp");
  EXPECT_EQ(taken[0].line, 99);
  EXPECT_EQ(taken[0].handledObject, &object);
  EXPECT_EQ(taken[0].handledObjectType, type);
}

TEST_F(ErrorOutputTest, TheFilterDecidesForStreamsAndCallbacks) {
  MessageRecorder messages;
  for (unsigned int filter = 0; filter < 16; ++filter) {
    VXErrorOutput.setMessageFilter(filter);
    EXPECT_EQ(VXErrorOutput.getMessageFilter(), filter);
    for (const VXMessageType type : {VX_WARNING, VX_ERROR, VX_FATAL, VX_DEBUG}) {
      sendTo(VXErrorOutput, type);
      EXPECT_EQ(messages.take().size(), (filter & static_cast<unsigned int>(type)) ? 1U : 0U);
    }
  }
}

TEST_F(ErrorOutputTest, FullDebuggingLetsDebugMessagesPassAnyFilter) {
  MessageRecorder messages;
  VXErrorOutput.setMessageFilter(0);
  VXErrorOutput.setFullDebuggingOn(true);
  sendTo(VXErrorOutput, VX_DEBUG);
  sendTo(VXErrorOutput, VX_ERROR);
  EXPECT_EQ(messages.take(), (Messages{{VX_DEBUG, VX_BAD_PARAMETER, "label", "reason"}}));
  VXErrorOutput.setFullDebuggingOn(false);
  sendTo(VXErrorOutput, VX_DEBUG);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(ErrorOutputTest, ReportsCarryPrefixLeadAndThePositionOfTheCall) {
  MessageRecorder messages;
  const int line = __LINE__ + 1;
  report(VX_ERROR, "where()", VX_BAD_INDEX, "why");
  const auto taken = messages.take();
  ASSERT_EQ(taken.size(), 1U);
  EXPECT_EQ(taken[0], (Message{VX_ERROR, VX_BAD_INDEX, "where()", "why"}));
  EXPECT_EQ(taken[0].prefix, "VX");
  EXPECT_EQ(taken[0].functionLead, "Function=");
  EXPECT_EQ(taken[0].file, "tests/unit/test_ErrorOutput.cpp");
  EXPECT_EQ(taken[0].line, line);
}

TEST_F(ErrorOutputTest, AReportIsGivenThoughTheFlagOfItsGuardIsSpoilt) {
  MessageRecorder messages;
  VXAlwaysFalse = 1;
  report(VX_ERROR, "where()", VX_BAD_INDEX, "why");
  reportText(VX_FATAL, "where()", "a text", "why");
  VXAlwaysFalse = 0;
  EXPECT_EQ(messages.take(), (Messages{{VX_ERROR, VX_BAD_INDEX, "where()", "why"}, {VX_FATAL, 0, "where()", "why"}}));
}

TEST_F(ErrorOutputTest, MasksSelectLevelsForEachCallback) {
  int numErrors = 0;
  VXErrorOutput.sendMessagesToCerr(false);
  const auto count = [](void* userData, const VXMessage*) { ++*static_cast<int*>(userData); };
  const VXCallbackHandle handle = VXAddMessageCB(count, &numErrors, VX_ERROR | VX_FATAL);
  ASSERT_NE(handle, 0U);
  for (const VXMessageType type : {VX_WARNING, VX_ERROR, VX_FATAL}) sendTo(VXErrorOutput, type);
  EXPECT_EQ(numErrors, 2);
  EXPECT_EQ(VXRemoveMessageCB(handle), 1);
  EXPECT_EQ(VXRemoveMessageCB(handle), 0);
  EXPECT_EQ(VXRemoveMessageCB(0), 0);
  sendTo(VXErrorOutput, VX_ERROR);
  EXPECT_EQ(numErrors, 2);
  EXPECT_EQ(VXAddMessageCB(nullptr, nullptr, 7), 0U);
}

TEST_F(ErrorOutputTest, ACallbackThatReportsAgainIsNotCalledForThatMessage) {
  VXErrorOutput.sendMessagesToCerr(false);
  struct Counts {
    int first = 0;
    int second = 0;
  } counts;
  VXErrorOutput.addMessageCB(
      [](void* userData, const VXMessage*) {
        ++static_cast<Counts*>(userData)->first;
        report(VX_WARNING, "inside", VX_RESULT_OK, "nested");
      },
      &counts, ~0U);
  VXErrorOutput.addMessageCB([](void* userData, const VXMessage*) { ++static_cast<Counts*>(userData)->second; },
                             &counts, ~0U);
  sendTo(VXErrorOutput, VX_ERROR);
  EXPECT_EQ(counts.first, 1);
  EXPECT_EQ(counts.second, 2) << "the message and the one that the first callback sent";
}

TEST_F(ErrorOutputTest, ACallbackMayRemoveItselfAndOthersWhileItRuns) {
  VXErrorOutput.sendMessagesToCerr(false);
  struct Registrations {
    VXCallbackHandle self = 0;
    VXCallbackHandle other = 0;
    int numSelf = 0;
    int numOther = 0;
  } registrations;
  registrations.self = VXErrorOutput.addMessageCB(
      [](void* userData, const VXMessage*) {
        auto& all = *static_cast<Registrations*>(userData);
        ++all.numSelf;
        EXPECT_TRUE(VXErrorOutput.removeMessageCB(all.self));
        EXPECT_TRUE(VXErrorOutput.removeMessageCB(all.other));
      },
      &registrations, ~0U);
  registrations.other = VXErrorOutput.addMessageCB(
      [](void* userData, const VXMessage*) { ++static_cast<Registrations*>(userData)->numOther; }, &registrations, ~0U);
  sendTo(VXErrorOutput, VX_ERROR);
  sendTo(VXErrorOutput, VX_ERROR);
  EXPECT_EQ(registrations.numSelf, 1);
  EXPECT_EQ(registrations.numOther, 0);
}

TEST_F(ErrorOutputTest, ACallbackMayAddOthersWhichSeeTheNextMessage) {
  VXErrorOutput.sendMessagesToCerr(false);
  static int numLate = 0;
  numLate = 0;
  VXErrorOutput.addMessageCB(
      [](void*, const VXMessage*) {
        VXErrorOutput.addMessageCB([](void*, const VXMessage*) { ++numLate; }, nullptr, ~0U);
      },
      nullptr, ~0U);
  sendTo(VXErrorOutput, VX_ERROR);
  EXPECT_EQ(numLate, 0);
  sendTo(VXErrorOutput, VX_ERROR);
  EXPECT_EQ(numLate, 1);
}

TEST_F(ErrorOutputTest, RemovalWaitsForTheCallOfAnotherThread) {
  VXErrorOutput.sendMessagesToCerr(false);
  struct Stage {
    std::atomic<bool> isInside{false};
    std::atomic<bool> mayLeave{false};
    std::atomic<bool> hasLeft{false};
  } stage;
  const VXCallbackHandle handle = VXErrorOutput.addMessageCB(
      [](void* userData, const VXMessage*) {
        auto& s = *static_cast<Stage*>(userData);
        s.isInside = true;
        s.isInside.notify_all();
        s.mayLeave.wait(false);
        s.hasLeft = true;
      },
      &stage, ~0U);
  std::thread sender([] { sendTo(VXErrorOutput, VX_ERROR); });
  stage.isInside.wait(false);
  std::thread releaser([&stage] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    stage.mayLeave = true;
    stage.mayLeave.notify_all();
  });
  EXPECT_TRUE(VXErrorOutput.removeMessageCB(handle));
  EXPECT_TRUE(stage.hasLeft) << "the callback still ran when its removal returned";
  sender.join();
  releaser.join();
}

TEST_F(ErrorOutputTest, TwoCallbacksThatRemoveEachOtherOnTwoThreadsDoNotWaitForever) {
  VXErrorOutput.sendMessagesToCerr(false);
  struct Pair {
    std::atomic<int> numInside{0};
    VXCallbackHandle handles[2] = {0, 0};
  } pair;
  const auto meet = [](Pair& p) {
    ++p.numInside;
    p.numInside.notify_all();
    for (int n = p.numInside; n < 2; n = p.numInside) p.numInside.wait(n);
  };
  static decltype(meet)* meeting = nullptr;
  meeting = &meet;
  pair.handles[0] = VXErrorOutput.addMessageCB(
      [](void* userData, const VXMessage*) {
        auto& p = *static_cast<Pair*>(userData);
        (*meeting)(p);
        VXErrorOutput.removeMessageCB(p.handles[1]);
      },
      &pair, VX_ERROR);
  pair.handles[1] = VXErrorOutput.addMessageCB(
      [](void* userData, const VXMessage*) {
        auto& p = *static_cast<Pair*>(userData);
        (*meeting)(p);
        VXErrorOutput.removeMessageCB(p.handles[0]);
      },
      &pair, VX_WARNING);
  std::thread first([] { sendTo(VXErrorOutput, VX_ERROR); });
  std::thread second([] { sendTo(VXErrorOutput, VX_WARNING); });
  first.join();
  second.join();
  EXPECT_FALSE(VXErrorOutput.removeMessageCB(pair.handles[0]));
  EXPECT_FALSE(VXErrorOutput.removeMessageCB(pair.handles[1]));
}

TEST_F(ErrorOutputTest, ManyThreadsSendAddAndRemoveAtOnce) {
  VXErrorOutput.sendMessagesToCerr(true);
  const StreamCapture cerr(std::cerr);
  constexpr int numThreads = 4;
  constexpr int numRounds = 200;
  std::atomic<int> numSeen{0};
  const auto count = [](void* userData, const VXMessage*) { ++*static_cast<std::atomic<int>*>(userData); };
  VXErrorOutput.addMessageCB(count, &numSeen, ~0U);
  std::vector<std::thread> threads;
  for (int i = 0; i < numThreads; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < numRounds; ++round) {
        std::atomic<int> own{0};
        const VXCallbackHandle handle = VXErrorOutput.addMessageCB(count, &own, ~0U);
        sendTo(VXErrorOutput, VX_ERROR);
        EXPECT_TRUE(VXErrorOutput.removeMessageCB(handle));
        EXPECT_GE(own, 1);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(numSeen, numThreads * numRounds);
  std::istringstream lines(cerr.text());
  int numLines = 0;
  for (std::string line; std::getline(lines, line); ++numLines) {
    ASSERT_EQ(line, "VX error 19 (An argument is invalid.): Function=label, Reason=reason, File=source.cpp, Line=12");
  }
  EXPECT_EQ(numLines, numThreads * numRounds);
}

TEST_F(ErrorOutputTest, AnExceptionOfACallbackPassesOnAndTheReportsOfTheLibraryTurnItIntoAFatalMessage) {
  VXErrorOutput.sendMessagesToCerr(false);
  VXErrorOutput.addMessageCB(
      [](void*, const VXMessage* message) {
        if (message->errorCode == VX_BAD_PARAMETER) throw std::runtime_error("callback failed");
      },
      nullptr, ~0U);
  EXPECT_THROW(sendTo(VXErrorOutput, VX_ERROR), std::runtime_error);
  MessageRecorder messages;
  report(VX_ERROR, {"label", "some.cpp", 5}, VX_BAD_PARAMETER, "reason");
  const auto taken = messages.take();
  ASSERT_EQ(taken.size(), 1U);
  EXPECT_EQ(taken[0].type, VX_FATAL);
  EXPECT_EQ(taken[0].code, VX_UNKNOWN_EXCEPTION);
  EXPECT_EQ(taken[0].file, "some.cpp");
  EXPECT_EQ(taken[0].line, 5);
}

TEST_F(ErrorOutputTest, TheFatalMessageIsPrintedAndNotifiedWithoutAllocating) {
  const StreamCapture cerr(std::cerr);
  static int numCalls = 0;
  numCalls = 0;
  VXErrorOutput.addMessageCB([](void*, const VXMessage*) { ++numCalls; }, nullptr, VX_FATAL);
  VXPrintAndNotifyFatal("warm.cpp", 1, VX_NO_MEMORY);  // the capture grows its text here
  VXErrorOutput.sendMessagesToCerr(false);
  const long before = numAllocations();
  VXPrintAndNotifyFatal("source.cpp", 7, VX_NO_MEMORY);
  EXPECT_EQ(numAllocations(), before);
  EXPECT_EQ(numCalls, 2);
  EXPECT_EQ(cerr.text(),
            "VX fatal error 2 (An allocation of memory failed.): Function=VXPrintAndNotifyFatal(), Reason=A guarded "
            "block was left by a failure., File=warm.cpp, Line=1\n");
}

TEST_F(ErrorOutputTest, AReportThatFindsNoMemoryBecomesAFatalMessage) {
  VXErrorOutput.sendMessagesToCerr(false);
  struct Heard {
    int number = 0;
    VXErrorCode code = 0;
  } heard;
  VXErrorOutput.addMessageCB(
      [](void* userData, const VXMessage* message) {
        ++static_cast<Heard*>(userData)->number;
        static_cast<Heard*>(userData)->code = message->errorCode;
      },
      &heard, ~0U);
  {
    const FailingAllocations failing;
    report(VX_ERROR, "a label that is too long for the room inside a string", VX_BAD_PARAMETER, "reason");
    EXPECT_EQ(VXAddMessageCB([](void*, const VXMessage*) {}, nullptr, ~0U), 0U);
  }
  EXPECT_EQ(heard.number, 2);
  EXPECT_EQ(heard.code, VX_NO_MEMORY) << "of the registration; the report before had code 1";
}

TEST_F(ErrorOutputTest, TheFatalMessageTakesNoFileAndDropsWhatACallbackThrows) {
  VXErrorOutput.sendMessagesToCerr(false);
  VXErrorOutput.addMessageCB([](void*, const VXMessage*) { throw 1; }, nullptr, VX_FATAL);
  VXPrintAndNotifyFatal(nullptr, 0, VX_NO_MEMORY);
  VXErrorOutput.setMessageFilter(0);
  VXPrintAndNotifyFatal("source.cpp", 7, VX_NO_MEMORY);
}

TEST_F(ErrorOutputTest, ResetBringsTheDefaultsBackAndLeavesCopiesTheirCallbacks) {
  MessageRecorder messages;
  VXErrorOutput.setFullDebuggingOn(true);
  VXErrorOutput.sendMessagesToCout(true);
  VXErrorOutput.setMessageFilter(3);
  const ErrorOutput copy(VXErrorOutput);
  VXErrorOutput.reset();
  EXPECT_EQ(VXErrorOutput.getMessageFilter(), 7U);
  EXPECT_FALSE(VXErrorOutput.isFullDebuggingOn());
  EXPECT_FALSE(VXErrorOutput.areMessagesSentToCout());
  EXPECT_TRUE(VXErrorOutput.areMessagesSentToCerr());
  EXPECT_EQ(copy.getMessageFilter(), 3U);
  EXPECT_TRUE(copy.isFullDebuggingOn());
  EXPECT_TRUE(copy.areMessagesSentToCout());
  EXPECT_FALSE(copy.areMessagesSentToCerr());
  VXErrorOutput.sendMessagesToCerr(false);
  sendTo(VXErrorOutput, VX_ERROR);
  EXPECT_EQ(messages.take(), Messages{});
  const StreamCapture cout(std::cout);
  sendTo(copy, VX_ERROR);
  EXPECT_EQ(messages.take().size(), 1U);
}

TEST_F(ErrorOutputTest, ACallbackThatWasPutAsideInACopyCanStillBeRemoved) {
  VXErrorOutput.sendMessagesToCerr(false);
  int numCalls = 0;
  const VXCallbackHandle handle =
      VXAddMessageCB([](void* userData, const VXMessage*) { ++*static_cast<int*>(userData); }, &numCalls, ~0U);
  const ErrorOutput saved(VXErrorOutput);
  VXErrorOutput.reset();
  sendTo(saved, VX_ERROR);
  EXPECT_EQ(numCalls, 1);
  EXPECT_EQ(VXRemoveNotifyCB(handle), 0) << "a handle of the other list";
  EXPECT_EQ(VXRemoveMessageCB(handle), 1);
  sendTo(saved, VX_ERROR);
  EXPECT_EQ(numCalls, 1) << "its user data may be gone";
  EXPECT_EQ(VXRemoveMessageCB(handle), 0);
}

TEST_F(ErrorOutputTest, ARemovalWithoutMemoryCountsOnce) {
  VXErrorOutput.sendMessagesToCerr(false);
  int numCalls = 0;
  const auto count = [](void* userData, const VXMessage*) { ++*static_cast<int*>(userData); };
  const VXCallbackHandle handle = VXAddMessageCB(count, &numCalls, ~0U);
  {
    const FailingAllocations failing;
    EXPECT_EQ(VXRemoveMessageCB(handle), 1);
    EXPECT_EQ(VXRemoveMessageCB(handle), 0);
  }
  EXPECT_EQ(VXRemoveMessageCB(handle), 0);
  sendTo(VXErrorOutput, VX_ERROR);
  EXPECT_EQ(numCalls, 0);
  EXPECT_NE(VXAddMessageCB(count, &numCalls, ~0U), 0U);
  sendTo(VXErrorOutput, VX_ERROR);
  EXPECT_EQ(numCalls, 1);
}

// Refuses everything, and says how often it was asked.
class BrokenBuffer : public std::streambuf {
 public:
  int numWrites = 0;

 protected:
  int_type overflow(int_type) override { return traits_type::eof(); }
  std::streamsize xsputn(const char*, std::streamsize) override {
    ++numWrites;
    return 0;
  }
};

TEST_F(ErrorOutputTest, AStreamThatThrowsDoesNotKeepAMessageFromTheCallbacks) {
  MessageRecorder messages;
  VXErrorOutput.sendMessagesToCout(true);
  BrokenBuffer broken;
  std::streambuf* const before = std::cout.rdbuf(&broken);
  std::cout.exceptions(std::ios_base::badbit);
  EXPECT_NO_THROW(sendTo(VXErrorOutput, VX_ERROR));
  std::cout.exceptions(std::ios_base::goodbit);
  std::cout.rdbuf(before);
  EXPECT_EQ(broken.numWrites, 1);
  EXPECT_EQ(messages.take().size(), 1U);
}

// Counts the pieces in which a text arrives.
class PieceCounter : public std::stringbuf {
 public:
  int numPieces = 0;

 protected:
  std::streamsize xsputn(const char* text, std::streamsize length) override {
    ++numPieces;
    return std::stringbuf::xsputn(text, length);
  }
};

TEST_F(ErrorOutputTest, ALineIsWrittenInOnePieceAndALongOneWhole) {
  PieceCounter pieces;
  std::streambuf* const before = std::cerr.rdbuf(&pieces);
  sendTo(VXErrorOutput, VX_ERROR);
  const int numPieces = pieces.numPieces;
  const std::string longReason(5000, 'x');
  sendTo(VXErrorOutput, VX_ERROR, longReason);
  std::cerr.rdbuf(before);
  EXPECT_EQ(numPieces, 1);
  EXPECT_EQ(pieces.str(),
            "VX error 19 (An argument is invalid.): Function=label, Reason=reason, File=source.cpp, Line=12\n"
            "VX error 19 (An argument is invalid.): Function=label, Reason=" +
                longReason + ", File=source.cpp, Line=12\n");
}

TEST_F(ErrorOutputTest, DestroyRemovesTheCallbacksAndKeepsPrinting) {
  MessageRecorder messages;
  VXErrorOutput.destroy();
  VXErrorOutput.sendMessagesToCerr(true);
  const StreamCapture cerr(std::cerr);
  sendTo(VXErrorOutput, VX_ERROR);
  EXPECT_EQ(messages.take(), Messages{});
  EXPECT_NE(cerr.text(), "");
}

TEST_F(ErrorOutputTest, StreamOutputShowsTheSettings) {
  std::ostringstream text;
  text << VXErrorOutput;
  EXPECT_EQ(text.str(), "ErrorOutput(messageFilter=7, fullDebugging=off, cout=off, cerr=on, numCallbacks=0)");
  text.str("");
  VXErrorOutput.setMessageFilter(3);
  VXErrorOutput.setFullDebuggingOn(true);
  VXErrorOutput.sendMessagesToCout(true);
  VXErrorOutput.sendMessagesToCerr(false);
  text << VXErrorOutput;
  EXPECT_EQ(text.str(), "ErrorOutput(messageFilter=3, fullDebugging=on, cout=on, cerr=off, numCallbacks=0)");
}

TEST(VXGetErrorCodeDescription, EachKnownCodeHasItsNumberAndATextOfItsOwn) {
  struct Row {
    VXErrorCode constant;
    int code;
  };
  const Row rows[] = {{VX_RESULT_OK, 0},
                      {VX_UNKNOWN_EXCEPTION, 1},
                      {VX_NO_MEMORY, 2},
                      {VX_OPEN_NETWORK, 3},
                      {VX_CYCLIC_NETWORK, 4},
                      {VX_BAD_MODULE_POINTER, 5},
                      {VX_BAD_OUTPUT_INDEX, 6},
                      {VX_BAD_FIELD, 7},
                      {VX_UNINITIALIZED_RESULT, 8},
                      {VX_IMAGE_NOT_CALCULATED, 10},
                      {VX_BAD_INPUT_INDEX, 11},
                      {VX_OPEN_INPUT, 12},
                      {VX_BAD_DATA_TYPE, 13},
                      {VX_MISUSED_INTERFACE, 14},
                      {VX_PAGE_CALCULATION_FAILED, 16},
                      {VX_PROPERTY_CALCULATION_FAILED, 17},
                      {VX_IN_SUBIMAGE_CALCULATION_FAILED, 18},
                      {VX_BAD_PARAMETER, 19},
                      {VX_IMAGE_INVALID, 20},
                      {VX_BAD_IMAGE_EXTENT, 21},
                      {VX_RECURSION_STOPPED, 22},
                      {VX_LIBRARY_LOAD_FAILED, 23},
                      {VX_BAD_INDEX, 26},
                      {VX_BAD_PAGE_ID, 27},
                      {VX_REQUIRED_OPERATIONS_MISSING, 28},
                      {VX_BAD_OBJECT_TYPE, 29},
                      {VX_FIELD_NOT_ADDED, 30},
                      {VX_BAD_FIELD_REQUEST, 31},
                      {VX_TYPE_INIT_FAILED, 32},
                      {VX_CONSTRUCTOR_FAILED, 33},
                      {VX_DESTRUCTOR_FAILED, 34},
                      {VX_OBJECT_NOT_INITIALIZED, 39},
                      {VX_BAD_POINTER, 41},
                      {VX_BAD_INTERNAL_POINTER, 42},
                      {VX_EMPTY_STACK, 44},
                      {VX_STACK_NOT_EMPTY, 46},
                      {VX_NO_DEFAULT_VALUE, 53},
                      {VX_TYPE_CHANGE_IN_THREADS, 64},
                      {VX_LIBRARY_UNLOAD_FAILED, 66},
                      {VX_LIBRARY_IN_USE, 69}};
  std::vector<std::string> texts;
  for (const Row& row : rows) {
    EXPECT_EQ(row.constant, row.code);
    const std::string text = VXGetErrorCodeDescription(row.code);
    EXPECT_FALSE(text.empty());
    EXPECT_NE(text, "Unknown error code.") << row.code;
    EXPECT_EQ(std::count(texts.begin(), texts.end(), text), 0) << text;
    texts.push_back(text);
  }
  for (const int unknown : {-1, 9, 15, 24, 25, 35, 40, 43, 65, 70, 1000}) {
    EXPECT_STREQ(VXGetErrorCodeDescription(unknown), "Unknown error code.");
  }
  EXPECT_EQ(VX_WARNING, 1);
  EXPECT_EQ(VX_ERROR, 2);
  EXPECT_EQ(VX_FATAL, 4);
  EXPECT_EQ(VX_DEBUG, 8);
}

}  // namespace
}  // namespace vx::test
