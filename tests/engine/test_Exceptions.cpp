// Every operation of a module that the library calls throws everything there is to throw: what the caller sees, what is
// said, what is left of it, and that the next request works.

#include "ExceptionTable.h"
#include "MessageRecorder.h"

#include "vxCachedBuffer.h"
#include "vxField.h"
#include "vxHost.h"
#include "vxPagedImg.h"
#include "vxUtilsAPI.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <optional>
#include <sstream>

namespace vx::test {
namespace {

constexpr VXint16 untouched = 0x5AA5;

// One case: a row with what is thrown, by whom, and how.
struct Case {
  const ExceptionRow& row;
  Thrown thrown;
  bool isHandlingOn;
  unsigned int numThreads;
  int level;

  const Outcome& outcome() const {
    if (isCode(thrown)) return isHandlingOn ? row.codeWhenOn : row.codeWhenOff;
    return isHandlingOn ? row.otherWhenOn : row.otherWhenOff;
  }
  int result() const { return level == 0 ? outcome().resultHere : outcome().resultAbove; }
  // Whether the operation is called at all.
  bool isReached() const { return row.operation != Operation::notifyFirst || level == 0; }
  bool isPageForgotten() const { return row.operation == Operation::calcOutSubImage && result() == VX_RESULT_OK; }
  std::string text() const {
    std::ostringstream stream;
    stream << nameOf(row.operation) << " of L" << level << " throws " << nameOf(thrown) << " in request "
           << static_cast<int>(row.request) << ", handling " << (isHandlingOn ? "on" : "off") << ", " << numThreads
           << " threads";
    return stream.str();
  }
};

int codeOf(Thrown thrown) { return thrown == Thrown::code7 ? 7 : thrown == Thrown::codeMinus1 ? -1 : 0; }

// The texts of the table with the names of the modules.
std::string named(const char* text, int thrower) {
  const auto replace = [](std::string& line, const std::string& from, const std::string& to) {
    if (const auto at = line.find(from); at != std::string::npos) line.replace(at, from.size(), to);
  };
  std::string line = text;
  if (line.rfind("T::", 0) == 0) line = "module T" + line.substr(1);
  replace(line, "odule T", "odule ThrowingModule(L" + std::to_string(thrower) + ")");
  replace(line, "odule R", "odule ThrowingModule(L0)");
  if (line.rfind("module ", 0) == 0) line = line.substr(7);
  return line;
}

// The messages of a case, one after the other.
std::vector<Said> expectedMessages(const Case& test, std::vector<std::string>& labels) {
  std::vector<Said> messages;
  const auto add = [&](const Said& said, const std::string& label) {
    messages.push_back(said);
    labels.push_back(label);
  };
  if (!test.isReached()) return messages;
  for (const Said& said : test.outcome().messages) {
    if (said.level != 0) {
      add(said, said.label ? named(said.label, test.level) : "");
      continue;
    }
    if (said.code == silencedFields.code) {
      // Of each module on the way the input and, but for the one that throws, the output; and the source's output.
      const int numFields = 2 * (ThrowingChain::numLevels - test.level);
      for (int i = 0; i < numFields; ++i) add({VX_FATAL, VX_UNKNOWN_EXCEPTION, nullptr, nullptr}, "");
      continue;
    }
    for (int level = test.level; level >= 0; --level) {
      if (said.code == failedGroupsAfterPages.code) {
        add({VX_ERROR, VX_PAGE_CALCULATION_FAILED, "", ""},
            "Module ThrowingModule(L" + std::to_string(level) + ") called by Host::_calcPages:");
      }
      add(fatal41, "");
    }
  }
  return messages;
}

std::string toText(VXMessageType level, int code, const std::string& label, const std::string& reason) {
  return std::to_string(level) + " " + std::to_string(code) + " " + label + " | " + reason;
}

// Compares what was said. The code of a thrown 0 may be any in a message.
void compareMessages(const Case& test, const std::vector<Message>& messages) {
  std::vector<std::string> labels;
  const std::vector<Said> expected = expectedMessages(test, labels);
  std::vector<std::string> expectedTexts;
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const int code = expected[i].code == theCode ? codeOf(test.thrown) : expected[i].code;
    expectedTexts.push_back(toText(expected[i].level, code, labels[i], expected[i].reason ? expected[i].reason : ""));
  }
  for (std::size_t i = 0; i < messages.size(); ++i) {
    const bool isKnown = i < expected.size();
    const bool hasAnyText = isKnown && !expected[i].label;
    const bool hasAnyCode = isKnown && expected[i].code == theCode && test.thrown == Thrown::code0;
    texts.push_back(toText(messages[i].type, hasAnyCode ? 0 : messages[i].code, hasAnyText ? "" : messages[i].function,
                           hasAnyText ? "" : messages[i].reason));
  }
  EXPECT_EQ(texts, expectedTexts);
}

class ExceptionTest : public testing::TestWithParam<std::size_t> {
 protected:
  static constexpr std::size_t numVoxels = 32;

  void SetUp() override {
    _handling = VXIsExceptionHandlingEnabled();
    Host::pushDefaultHost();
  }
  void TearDown() override {
    VXEnableExceptionHandling(_handling);
    Host::popDefaultHost();
  }

  int requestTile() {
    std::fill(_tile.begin(), _tile.end(), untouched);
    void* data = _tile.data();
    return BaseOp::getTile(&_chain->level(0), 0, SubImgBox({}, {7, 3, 0, 0, 0, 0}), VXint16Type, &data);
  }

  int perform(Request request) {
    switch (request) {
      case Request::properties:
        return BaseOp::updateImageProps(&_chain->level(0), 0);
      case Request::allPages:
        return _chain->level(0).processAllPages(0, -1, SubImgBox());
      case Request::touch:
        _chain->touchSource();
        return VX_RESULT_OK;
      default:
        return requestTile();
    }
  }

  void prepare(Request request) {
    _chain->touchSource();
    if (request == Request::newTile || request == Request::properties) return;
    EXPECT_EQ(requestTile(), VX_RESULT_OK);
    for (int i = 0; i < ThrowingChain::numLevels; ++i) image(i).clearPageListAndMemoryImg();
    _chain->source().getOutImg(0)->clearPageListAndMemoryImg();
  }

  PagedImg& image(int level) { return *_chain->level(level).getOutImg(0); }

  void run(const Case& test) {
    VXEnableExceptionHandling(1);
    Host::getDefaultHost().setMaxNumThreads(test.numThreads);
    prepare(test.row.request);
    VXEnableExceptionHandling(test.isHandlingOn);
    std::fill(_tile.begin(), _tile.end(), untouched);
    _chain->level(test.level).arm(test.row.operation, test.thrown);
    _recorder.take();

    int result = VX_RESULT_OK;
    const Thrown caughtHere = caughtFrom([&] { return perform(test.row.request); }, result);
    _chain->level(test.level).arm(Operation::none, Thrown::nothing);
    compareMessages(test, _recorder.take());
    compareResult(test, caughtHere, result);
    compareCounters();
    compareProperties(test);
    comparePages(test);
    VXEnableExceptionHandling(1);
    mend(test);
  }

  void compareResult(const Case& test, Thrown caughtHere, int result) {
    if (test.result() == passesOn) {
      EXPECT_EQ(caughtHere, test.thrown);
    } else {
      EXPECT_EQ(caughtHere, Thrown::nothing);
      if (test.result() != theCode) {
        EXPECT_EQ(result, test.result());
      } else if (test.thrown == Thrown::code0) {
        EXPECT_NE(result, VX_RESULT_OK);
      } else {
        EXPECT_EQ(result, codeOf(test.thrown));
      }
    }
    // The tile is written only where the request went well.
    const bool isWritten = std::any_of(_tile.begin(), _tile.end(), [](VXint16 voxel) { return voxel != untouched; });
    const bool isTile = test.row.request == Request::tile || test.row.request == Request::newTile;
    EXPECT_EQ(isWritten, isTile && test.result() == VX_RESULT_OK);
  }

  void compareCounters() {
    EXPECT_EQ(Host::getDefaultHost().isProcessingActive(), 0U);
    EXPECT_EQ(Field::enableNotificationsCounterState(), 1);
    EXPECT_FALSE(VXIsMultithreadingActive());
    for (int i = 0; i < ThrowingChain::numLevels; ++i) {
      EXPECT_EQ(_chain->level(i).getMarker(), 0);
      EXPECT_EQ(_chain->level(i).getHandleNotificationEntryCounter(), 0);
    }
  }

  // Whether images are valid. After a failure of properties those from the module that threw on are not.
  void compareProperties(const Case& test) {
    const bool areNew = test.row.request == Request::newTile || test.row.request == Request::properties;
    for (int i = 0; i < ThrowingChain::numLevels; ++i) {
      SCOPED_TRACE("image of L" + std::to_string(i));
      if (test.row.request == Request::touch) {
        // A module that threw has told nobody behind it.
        EXPECT_EQ(image(i).isUpToDate(), i <= test.level);
        continue;
      }
      // The mark is set before a module's inputs are looked at.
      const bool areInputsUpdated =
          test.row.operation != Operation::setMarker && test.row.operation != Operation::getMarker;
      EXPECT_EQ(image(i).isUpToDate(), !areNew || (areInputsUpdated && i > test.level));
      if (test.row.operation != Operation::calcOutImageProps || test.result() == passesOn) continue;
      const int ownCode = !isCode(test.thrown)       ? VX_PROPERTY_CALCULATION_FAILED
                          : codeOf(test.thrown) == 0 ? VX_IMAGE_NOT_CALCULATED
                                                     : codeOf(test.thrown);
      EXPECT_EQ(image(i).getStateInfoErrorCode(), i > test.level    ? VX_RESULT_OK
                                                  : i == test.level ? ownCode
                                                                    : VX_IMAGE_NOT_CALCULATED);
    }
  }

  // How often a page is locked, -1 if there is none.
  static VXint64 lockCount(const PagedImg& image, int id) {
    if (id >= image.getNumPages()) return -1;
    const CachedBuffer* const page = image.getPage(id, PagedImg::OWN_PAGE);
    return page ? page->getLockCount() : -1;
  }

  VXint64 expectedLockCount(const Case& test, int level, int id) const {
    const bool isForgotten = test.isPageForgotten();
    const bool hasFailed = test.isReached() && !isForgotten;
    if (!hasFailed) {
      // A walk leaves its own pages locked.
      if (test.row.request == Request::allPages) return level == 0 ? 1 : 0;
      return test.row.request == Request::tile ? 0 : -1;
    }
    if (test.row.pages == Pages::none) return -1;
    if (level > test.level) {
      // Inputs are asked for in their order, and the second one fails after the first.
      const bool areInputsThere =
          test.row.operation == Operation::calcOutSubImage || test.row.operation == Operation::handleInput;
      return areInputsThere ? 0 : -1;
    }
    if (level == test.level && test.row.pages == Pages::allThere) return 1;
    return id == 0 ? 1 : -1;
  }

  void comparePages(const Case& test) {
    if (test.row.request == Request::touch) return;
    for (int level = 0; level < ThrowingChain::numLevels; ++level) {
      for (int id = 0; id < ThrowingChain::numPages; ++id) {
        SCOPED_TRACE("page " + std::to_string(id) + " of L" + std::to_string(level));
        const VXint64 expected = expectedLockCount(test, level, id);
        EXPECT_EQ(lockCount(image(level), id), expected);
        if (expected <= 0 || (test.row.request == Request::allPages && !test.isReached())) continue;
        // What wasn't calculated is 0. On threads the other pages of the module were.
        const bool isCalculated =
            test.row.operation == Operation::calcOutSubImage && level == test.level && id > 0 && test.numThreads > 1;
        if (!isCalculated && !test.isPageForgotten()) {
          EXPECT_EQ(pageOf(level, id), std::vector<VXint16>(8, 0));
        }
      }
    }
    if (test.isPageForgotten() && test.row.request == Request::tile) compareTile(test);
  }

  std::vector<VXint16> pageOf(int level, int id) {
    std::vector<VXint16> voxels(8);
    std::memcpy(voxels.data(), image(level).getPageData(id, PagedImg::OWN_PAGE), 16);
    return voxels;
  }

  // A page that was forgotten is 0, and so are those that one thread would have calculated after it.
  void compareTile(const Case& test) {
    for (int id = 0; id < ThrowingChain::numPages; ++id) {
      const bool isZero = id == 0 || test.numThreads == 1;
      const std::vector<VXint16> expected = _chain->expectedPage(id, isZero, test.level);
      EXPECT_EQ(tilePage(id), expected) << "page " << id;
    }
  }

  std::vector<VXint16> tilePage(int id) const {
    std::vector<VXint16> voxels;
    for (int y = 2 * (id / 2); y < 2 * (id / 2) + 2; ++y) {
      for (int x = 4 * (id % 2); x < 4 * (id % 2) + 4; ++x)
        voxels.push_back(_tile[static_cast<std::size_t>(8 * y + x)]);
    }
    return voxels;
  }

  // The next request is right: at once where no page was made, else after a change that clears the pages.
  void mend(const Case& test) {
    SCOPED_TRACE("after mending");
    if (test.row.request == Request::touch && test.result() == passesOn) _chain.emplace();
    if (test.row.pages != Pages::none || test.row.request == Request::touch) _chain->touchSource();
    EXPECT_EQ(requestTile(), VX_RESULT_OK);
    for (int id = 0; id < ThrowingChain::numPages; ++id) {
      EXPECT_EQ(tilePage(id), _chain->expectedPage(id, false, 0)) << "page " << id;
    }
    EXPECT_EQ(_recorder.take(), std::vector<Message>());
    compareCounters();
    for (const CachedBufferList& list : Host::getDefaultHost().getCache().getCacheTable()) {
      for (const CachedBuffer* const buffer : list) {
        const bool isOfWalk = test.row.request == Request::allPages && !test.isReached();
        EXPECT_TRUE(!buffer->isLocked() || isOfWalk);
      }
    }
  }

 private:
  MessageRecorder _recorder;
  std::optional<ThrowingChain> _chain{std::in_place};
  std::vector<VXint16> _tile = std::vector<VXint16>(numVoxels);
  int _handling = 1;
};

TEST_P(ExceptionTest, EveryExceptionEndsAsTheTableSays) {
  const ExceptionRow& row = exceptionTable()[GetParam()];
  for (const Thrown thrown : {Thrown::code7, Thrown::code0, Thrown::codeMinus1, Thrown::string, Thrown::text,
                              Thrown::runtimeError, Thrown::badAlloc, Thrown::ownType}) {
    for (const bool isHandlingOn : {true, false}) {
      for (const unsigned int numThreads : {1U, 4U}) {
        for (const int level : {0, 3}) {
          const Case test{row, thrown, isHandlingOn, numThreads, level};
          SCOPED_TRACE(test.text());
          run(test);
        }
      }
    }
  }
}

std::string rowName(const testing::TestParamInfo<std::size_t>& info) {
  static constexpr const char* requests[] = {"NewTile", "Tile", "Properties", "AllPages", "Touch"};
  const ExceptionRow& row = exceptionTable()[info.param];
  return std::string(nameOf(row.operation)) + "In" + requests[static_cast<int>(row.request)];
}

INSTANTIATE_TEST_SUITE_P(Table, ExceptionTest, testing::Range(std::size_t{0}, exceptionTable().size()), rowName);

}  // namespace
}  // namespace vx::test
