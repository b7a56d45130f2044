#include "MessageRecorder.h"
#include "SlotOf.h"
#include "TestAllocator.h"

#include "vxBaseOp.h"
#include "vxBaseOpTools.h"
#include "vxCache.h"
#include "vxCachedBuffer.h"
#include "vxDataTypes.h"
#include "vxHost.h"
#include "vxPageDivision.h"
#include "vxPagedImg.h"

#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <random>
#include <sstream>

namespace vx::test {
namespace {

using Messages = std::vector<Message>;
using Vector = TVector<VXint64>;
using IDs = std::vector<VXint64>;

constexpr VXint64 farAway = std::numeric_limits<VXint64>::max();

const Message tooManyPages{VX_WARNING, 19, "PagedImg::_updateAll()",
                           "The specified page extent causes that too many pages for this image would be created. "
                           "Therefore the page extent is going to be optimized to avoid too many pages."};

// A module whose first output can pass on the pages of its input.
class BypassOp : public BaseOp {
 public:
  BypassOp() : BaseOp(1, 1) {}
};

class PagedImgTest : public ::testing::Test {
 protected:
  // 200 x 200 voxels in pages of 128 x 128.
  void makeFourPages(PagedImg& img) { img.setImgExt(Vector(200, 200, 1, 1, 1, 1)); }

  // Gives a page of 8-bit voxels memory that holds one value.
  void fillPage(PagedImg& img, VXint64 id, int value) {
    img.initPage(cache, id, 0, pageBytes, nullptr);
    std::memset(img.getPageData(id, PagedImg::OWN_PAGE), value, pageBytes);
  }

  void expectFatal(int code, const std::function<void()>& call) {
    try {
      call();
      ADD_FAILURE() << "no exception";
    } catch (int thrown) {
      EXPECT_EQ(thrown, code);
    }
    const Messages taken = messages.take();
    ASSERT_EQ(taken.size(), 1U);
    EXPECT_EQ(taken[0].type, VX_FATAL);
    EXPECT_EQ(taken[0].code, code);
  }

  static constexpr VXuint64 pageBytes = 128 * 128;

  MessageRecorder messages;
  Cache cache;
  PagedImg image{nullptr, -1};
};

#ifdef VX_TESTS_SLOTS_ARE_KNOWN
TEST_F(PagedImgTest, TheVirtualFunctionsHaveTheirSlots) {
  using WithExtent = void (PagedImg::*)(const Vector&);
  using WithBox = void (PagedImg::*)(const SubImgBox&);
  const std::vector<std::size_t> slots{slotOf(static_cast<WithExtent>(&PagedImg::setImgExt)),
                                       slotOf(&PagedImg::setDataType),
                                       slotOf(&PagedImg::isUpToDate),
                                       slotOf(&PagedImg::setUpToDate),
                                       slotOf(&PagedImg::setOutOfDate),
                                       slotOf(&PagedImg::getTypeId),
                                       slotOf(&PagedImg::getTypeIdName),
                                       slotOf(&PagedImg::typeInstanceCounter),
                                       slotOf(static_cast<WithBox>(&PagedImg::setImgExt)),
                                       slotOf(&PagedImg::setImgProps),
                                       slotOf(&PagedImg::setStateInfo),
                                       slotOf(&PagedImg::setStateInfoErrorCode),
                                       slotOf(&PagedImg::getStateInfoString),
                                       slotOf(&PagedImg::getStateInfoErrorCode)};
  for (std::size_t i = 0; i < slots.size(); ++i) EXPECT_EQ(slots[i], i + 2) << "the destructor takes two";
}
#endif

TEST_F(PagedImgTest, AnImageStartsEmpty) {
  EXPECT_EQ(image.getOp(), nullptr);
  EXPECT_EQ(image.getOutIndex(), -1);
  EXPECT_EQ(image.getPageExt(), Vector(128, 128, 1, 1, 1, 1));
  EXPECT_EQ(image.getPageStride(), Vector());
  EXPECT_EQ(image.getPagesPerDim(), Vector());
  EXPECT_EQ(image.getNumPages(), 0);
  EXPECT_EQ(image.getInplaceIndex(), -1);
  EXPECT_EQ(image.getBypassIndex(), -1);
  EXPECT_TRUE(image.areNoPagesCalculated());
  EXPECT_FALSE(image.getMemoryImg().isValid());
  EXPECT_EQ(image.getStateInfoErrorCode(), 10);
  EXPECT_EQ(image.getStateInfoString(), VXGetErrorCodeDescription(10));
  EXPECT_FALSE(image.isUpToDate());
  EXPECT_EQ(PagedImg::OWN_PAGE, 0);
  EXPECT_EQ(PagedImg::OWN_OR_BYPASSED_PAGE, 1);
  EXPECT_EQ(PagedImg::BYPASSED_PAGE, 2);
}

TEST_F(PagedImgTest, AnImageCanBeMadeByName) {
  const RuntimeType* const type = PagedImg::getClassTypeId();
  ASSERT_NE(type, nullptr);
  EXPECT_STREQ(type->getName(), "PagedImg");
  EXPECT_STREQ(type->getParentName(), "MedicalImageProperties");
  const std::unique_ptr<PagedImg> made(static_cast<PagedImg*>(PagedImg::createCB()));
  EXPECT_EQ(made->getOp(), nullptr);
  EXPECT_EQ(made->getOutIndex(), -1);
}

TEST_F(PagedImgTest, CopiesOnlyReport) {
  makeFourPages(image);
  PagedImg copy(image);
  EXPECT_EQ(messages.take(), (Messages{{VX_FATAL, 14, "PagedImg::PagedImg(const PagedImg&)",
                                        "Usage of copy constructor of PagedImg is senseless."}}));
  EXPECT_EQ(copy.getNumPages(), 0);
  copy = image;
  EXPECT_EQ(messages.take(), (Messages{{VX_FATAL, 14, "PagedImg::operator=(const PagedImg&)",
                                        "Usage of assignent operator of PagedImg is senseless."}}));
  EXPECT_EQ(copy.getNumPages(), 0);
}

TEST_F(PagedImgTest, TheStateHasACodeAndAText) {
  image.setStateInfo("why", 14);
  EXPECT_EQ(image.getStateInfoErrorCode(), 14);
  EXPECT_EQ(image.getStateInfoString(), "why");
  image.setStateInfoErrorCode(0);
  EXPECT_EQ(image.getStateInfoErrorCode(), 0);
  EXPECT_EQ(image.getStateInfoString(), VXGetErrorCodeDescription(0));
}

// Grid ----------------------------------------------------------------------------------------------------------------

TEST_F(PagedImgTest, TwoHundredVoxelsASideTakeFourPages) {
  makeFourPages(image);
  EXPECT_EQ(image.getNumPages(), 4);
  EXPECT_EQ(image.getPagesPerDim(), Vector(2, 2, 1, 1, 1, 1));
  EXPECT_EQ(image.getPageStride(), Vector(1, 2, 4, 4, 4, 4));
  EXPECT_EQ(image.getPageBox(0), SubImgBox(Vector(), Vector(127, 127, 0, 0, 0, 0)));
  EXPECT_EQ(image.getPageBox(3), SubImgBox(Vector(128, 128, 0, 0, 0, 0), Vector(255, 255, 0, 0, 0, 0)));
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(PagedImgTest, APageIsFoundInAllSixDimensions) {
  image.setImgExt(Vector(5, 6, 7, 8, 9, 10));
  image.setPageExt(Vector(2, 3, 7, 3, 4, 5));
  EXPECT_EQ(image.getPagesPerDim(), Vector(3, 2, 1, 3, 3, 2));
  EXPECT_EQ(image.getPageStride(), Vector(1, 3, 6, 6, 18, 54));
  EXPECT_EQ(image.getNumPages(), 108);
  // 2 + 1*3 + 0*6 + 1*6 + 2*18 + 1*54
  EXPECT_EQ(image.getPageBox(101), SubImgBox(Vector(4, 3, 0, 3, 8, 5), Vector(5, 5, 6, 5, 11, 9)));
}

TEST_F(PagedImgTest, ABadPageIDHasNoBox) {
  makeFourPages(image);
  for (const VXint64 id : {VXint64{-1}, VXint64{4}, farAway, -farAway - 1}) {
    EXPECT_TRUE(image.getPageBox(id).isEmpty());
    EXPECT_EQ(messages.take(), (Messages{{VX_FATAL, 27, "PagedImg::getPageBox", "Bad page id. Returning empty box."}}));
  }
}

TEST_F(PagedImgTest, TheExtentOfABoxIsThatOfTheImage) {
  image.setImgExt(SubImgBox(Vector(-100, 5, 0, 0, 0, 0), Vector(99, 204, 0, 0, 0, 0)));
  EXPECT_EQ(image.getImgExt(), Vector(200, 200, 1, 1, 1, 1));
  EXPECT_EQ(image.getNumPages(), 4);
  image.setImgExt(SubImgBox());
  EXPECT_EQ(image.getImgExt(), Vector());
  EXPECT_EQ(image.getNumPages(), 0);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(PagedImgTest, AnIllegalPageExtentFallsBack) {
  makeFourPages(image);
  for (std::size_t i = 0; i < 6; ++i) {
    for (const VXint64 bad : {VXint64{0}, VXint64{-1}, -farAway - 1}) {
      Vector pageExt(16);
      pageExt[i] = bad;
      image.setPageExt(Vector(32));
      image.setPageExt(pageExt);
      EXPECT_EQ(messages.take(),
                (Messages{{VX_FATAL, 19, "PagedImg::setPageExt()",
                           "Page extents must be >0 in each dimension! Continuing with 128x128x1x1x1x1."}}));
      EXPECT_EQ(image.getPageExt(), Vector(128, 128, 1, 1, 1, 1));
      EXPECT_EQ(image.getNumPages(), 4);
    }
  }
}

// Properties --------------------------------------------------------------------------------------------------------

TEST_F(PagedImgTest, PropertiesAreCopiedWithThePageExtent) {
  PagedImg other(nullptr, 3);
  other.setImgExt(Vector(10, 20, 30, 1, 1, 1));
  other.setPageExt(Vector(5, 5, 5, 1, 1, 1));
  other.setDataType(VXint16Type);
  other.setVoxelSize(1, 2, 3);
  other.setMaxVoxelValue(7);
  other.setUpToDate();
  other.setStateInfoErrorCode(0);
  makeFourPages(image);
  fillPage(image, 1, 1);
  image.setImgProps(other);
  EXPECT_EQ(image.getImgExt(), other.getImgExt());
  EXPECT_EQ(image.getPageExt(), other.getPageExt());
  EXPECT_EQ(image.getNumPages(), 2 * 4 * 6);
  EXPECT_EQ(image.getDataType(), VXint16Type);
  EXPECT_EQ(image.getVoxelSize(), Tvec3<double>(1, 2, 3));
  EXPECT_EQ(image.getMaxVoxelValue(), 7);
  EXPECT_EQ(image.isValidPage(1), 0);
  EXPECT_FALSE(image.isUpToDate());
  EXPECT_EQ(image.getOutIndex(), -1);
  EXPECT_EQ(image.getStateInfoErrorCode(), 10);
}

// An image whose members are set past the tests of the setters.
class UncheckedImg : public PagedImg {
 public:
  using PagedImg::_bypassIndex;
  using PagedImg::_pageExt;
};

TEST_F(PagedImgTest, PropertiesWithAnIllegalPageExtentFallBackAndDropAllPages) {
  UncheckedImg other;
  other.setImgExt(Vector(200, 200, 1, 1, 1, 1));
  other._pageExt = Vector();
  makeFourPages(image);
  fillPage(image, 3, 1);
  image.setImgProps(other);
  EXPECT_EQ(messages.take(),
            (Messages{{VX_FATAL, 19, "PagedImg::setPageExt()",
                       "Page extents must be >0 in each dimension! Continuing with 128x128x1x1x1x1."}}));
  EXPECT_EQ(image.getPageExt(), Vector(128, 128, 1, 1, 1, 1));
  EXPECT_EQ(image.getNumPages(), 4);
  EXPECT_EQ(image.getPage(3, PagedImg::OWN_PAGE), nullptr);
  EXPECT_TRUE(image.areNoPagesCalculated());
}

TEST_F(PagedImgTest, PropertiesOfAnEqualImageDropAllPagesToo) {
  PagedImg other(nullptr, 0);
  makeFourPages(image);
  makeFourPages(other);
  fillPage(image, 0, 1);
  fillPage(image, 3, 1);
  image.setImgProps(other);
  EXPECT_EQ(image.getPage(0, PagedImg::OWN_PAGE), nullptr);
  EXPECT_EQ(image.getPage(3, PagedImg::OWN_PAGE), nullptr);
  EXPECT_EQ(cache.getFigures().held, 0U);
  fillPage(image, 3, 1);
  image.setImgProps(image);
  EXPECT_EQ(image.getPage(3, PagedImg::OWN_PAGE), nullptr) << "the image itself";
  EXPECT_EQ(image.getNumPages(), 4);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(PagedImgTest, EachChangeOfAnExtentDropsPagesAndTheMemoryImage) {
  const SubImgBox box(Vector(0), Vector(9, 0, 0, 0, 0, 0));
  const std::function<void()> changes[] = {
      [this] { makeFourPages(image); },
      [this] { image.setImgExt(SubImgBox(Vector(0), Vector(10, 0, 0, 0, 0, 0))); },
      [this] { image.setPageExt(image.getPageExt()); },
  };
  for (const auto& change : changes) {
    makeFourPages(image);
    fillPage(image, 0, 1);
    image.getPage(0, PagedImg::OWN_PAGE)->lock();
    image.getMemoryImg().update(nullptr, 0, box, VXuint8Type);
    ASSERT_FALSE(image.areNoPagesCalculated());
    change();
    EXPECT_EQ(image.getPage(0, PagedImg::OWN_PAGE), nullptr);
    EXPECT_TRUE(image.areNoPagesCalculated());
    EXPECT_EQ(image.getMemoryImg().getMemoryImgSize(), 0U);
    EXPECT_EQ(cache.getFigures().held, 0U);
  }
}

TEST_F(PagedImgTest, AMemoryImageUnderManualControlSurvivesChanges) {
  image.getMemoryImg().update(nullptr, 0, SubImgBox(Vector(0), Vector(9, 0, 0, 0, 0, 0)), VXuint8Type);
  image.getMemoryImg().setValid(true);
  image.getMemoryImg().setManualControl(true);
  makeFourPages(image);
  image.clearPageListAndMemoryImg();
  EXPECT_TRUE(image.getMemoryImg().isValid());
  EXPECT_EQ(image.getMemoryImg().getMemoryImgSize(), 10U);
}

// Too many pages ------------------------------------------------------------------------------------------------------

TEST_F(PagedImgTest, AsManyPagesAsPermittedAreTaken) {
  image.setPageExt(Vector(1));
  image.setImgExt(Vector(1024, 512, 1, 1, 1, 1));
  EXPECT_EQ(image.getNumPages(), 524288);
  EXPECT_EQ(image.getPageExt(), Vector(1));
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(PagedImgTest, TooManyPagesLeadToAnotherPageExtent) {
  image.setPageExt(Vector(1));
  image.setImgExt(Vector(1025, 512, 1, 1, 1, 1));
  EXPECT_EQ(messages.take(), Messages{tooManyPages});
  Vector expected(64, 64, 1, 1, 1, 1);
  BaseOpTools::adaptPageExt(expected, VXuint8Type, image.getImgExt(), Vector(), Vector(32, 32, 1, 1, 1, 1), Vector(),
                            Vector(256, 256, 1, 1, 1, 1));
  EXPECT_EQ(image.getPageExt(), expected);
  EXPECT_EQ(image.getPagesPerDim(), ceilQuotient(image.getImgExt(), expected));
  EXPECT_EQ(image.getNumPages(), image.getPagesPerDim().getProduct());
  EXPECT_LE(image.getNumPages(), 524288);
}

TEST_F(PagedImgTest, APageCountBeyond64BitsIsTooManyPages) {
  // As wrapped products the first is 0 pages and the second 1.
  for (const Vector& imgExt : {Vector(VXint64{1} << 32, VXint64{1} << 32, 1, 1, 1, 1),
                               Vector((VXint64{1} << 40) + 1, (VXint64{1} << 40) + 1, 3, 3, 3, 3), Vector(farAway)}) {
    image.setImgExt(Vector());
    image.setPageExt(Vector(1));
    messages.take();
    try {
      image.setImgExt(imgExt);
      EXPECT_GT(image.getNumPages(), 0);
      EXPECT_LE(image.getNumPages(), 524288);
    } catch (int code) {
      ADD_FAILURE() << code << " for " << imgExt;
    }
    const Messages taken = messages.take();
    ASSERT_FALSE(taken.empty());
    EXPECT_EQ(taken[0], tooManyPages);
    EXPECT_EQ(taken.size(), 1U);
    const SubImgBox last = image.getPageBox(image.getNumPages() - 1);
    EXPECT_FALSE(last.isEmpty());
    EXPECT_EQ(messages.take(), Messages{});
  }
}

TEST_F(PagedImgTest, ATableThatIsTooLargeIsMissingMemory) {
  // Negative extents give counts that no choice of a page extent brings down.
  image.setPageExt(Vector(1));
  for (const Vector& imgExt : {Vector(-farAway, 1, 1, 1, 1, 1), Vector(-farAway, farAway, 1, 1, 1, 1)}) {
    try {
      image.setImgExt(imgExt);
      ADD_FAILURE() << "no exception";
    } catch (int code) {
      EXPECT_EQ(code, 2);
    }
    EXPECT_EQ(messages.take(),
              (Messages{{VX_FATAL, 2, "PagedImg::_reallocPages", "Returning without valid page list"}}));
    EXPECT_EQ(image.getNumPages(), 0) << "no short table";
    EXPECT_EQ(image.getPage(0, PagedImg::OWN_PAGE), nullptr);
  }
  makeFourPages(image);
  EXPECT_EQ(image.getPageExt(), Vector(1));
  EXPECT_EQ(image.getNumPages(), 40000) << "all is well again";
}

TEST_F(PagedImgTest, WithoutMemoryForTheTableThereAreNoPages) {
  makeFourPages(image);
  fillPage(image, 0, 1);
  try {
    const FailingAllocations failing;
    image.setImgExt(Vector(1000, 1000, 1, 1, 1, 1));
    ADD_FAILURE() << "no exception";
  } catch (int code) {
    EXPECT_EQ(code, 2);
  }
  EXPECT_EQ(image.getNumPages(), 0);
  EXPECT_TRUE(image.areNoPagesCalculated());
  EXPECT_EQ(cache.getFigures().held, 0U);
  image.setImgExt(Vector(1000, 1000, 1, 1, 1, 1));
  EXPECT_EQ(image.getNumPages(), 64);
}

// Ids -----------------------------------------------------------------------------------------------------------------

TEST_F(PagedImgTest, APageIsCoveredByItsOwnBox) {
  image.setImgExt(Vector(5, 6, 7, 8, 9, 10));
  image.setPageExt(Vector(2, 3, 7, 3, 4, 5));
  for (VXint64 id = 0; id < image.getNumPages(); ++id) {
    IDs ids;
    image.getPageIDs(ids, image.getPageBox(id));
    EXPECT_EQ(ids, IDs{id});
  }
}

TEST_F(PagedImgTest, TheIDsOfABoxComeInAscendingOrder) {
  makeFourPages(image);
  IDs ids = {17};
  image.getPageIDs(ids, SubImgBox(Vector(127, 127, 0, 0, 0, 0), Vector(128, 128, 0, 0, 0, 0)));
  EXPECT_EQ(ids, (IDs{0, 1, 2, 3}));
  image.getPageIDs(ids, SubImgBox(Vector(128, 0, 0, 0, 0, 0), Vector(128, 128, 0, 0, 0, 0)));
  EXPECT_EQ(ids, (IDs{1, 3}));
  image.getPageIDs(ids, SubImgBox(Vector(-farAway), Vector(farAway)));
  EXPECT_EQ(ids, (IDs{0, 1, 2, 3}));
}

TEST_F(PagedImgTest, ABoxOutsideTheImageHasNoIDs) {
  makeFourPages(image);
  for (const SubImgBox& box : {SubImgBox(Vector(200, 0, 0, 0, 0, 0), Vector(300, 10, 0, 0, 0, 0)),
                               SubImgBox(Vector(0, 0, 1, 0, 0, 0), Vector(10, 10, 1, 0, 0, 0)),
                               SubImgBox(Vector(-5), Vector(-1)), SubImgBox()}) {
    IDs ids = {17};
    image.getPageIDs(ids, box);
    EXPECT_EQ(ids, IDs{});
  }
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(PagedImgTest, TheStaticFormTakesAnyImage) {
  IDs ids;
  PagedImg::getPageIDs(ids, SubImgBox(Vector(1, 1, 0, 0, 0, 0), Vector(4, 2, 0, 0, 0, 0)), Vector(6, 4, 1, 1, 1, 1),
                       Vector(2, 2, 1, 1, 1, 1));
  EXPECT_EQ(ids, (IDs{0, 1, 2, 3, 4, 5}));
}

TEST_F(PagedImgTest, TheIDsAreThoseOfThePagesThatOverlapTheBox) {
  std::mt19937 random(7);
  const auto number = [&random](VXint64 low, VXint64 high) {
    return std::uniform_int_distribution<VXint64>(low, high)(random);
  };
  for (int round = 0; round < 300; ++round) {
    Vector imgExt;
    Vector pageExt;
    SubImgBox box;
    for (std::size_t i = 0; i < 6; ++i) {
      imgExt[i] = number(1, 6);
      pageExt[i] = number(1, 4);
      box.v1[i] = number(-2, 6);
      box.v2[i] = box.v1[i] + number(-1, 6);
    }
    image.setImgExt(imgExt);
    image.setPageExt(pageExt);
    IDs expected;
    for (VXint64 id = 0; id < image.getNumPages(); ++id) {
      const SubImgBox inside = SubImgBox::intersect(box, image.getBoxFromImgExt());
      if (!SubImgBox::intersect(image.getPageBox(id), inside).isEmpty()) expected.push_back(id);
    }
    IDs ids;
    image.getPageIDs(ids, box);
    ASSERT_EQ(ids, expected) << imgExt << pageExt << box;
  }
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(PagedImgTest, AnImageWithANegativeExtentHasNoIDs) {
  for (const VXint64 extent : {VXint64{0}, VXint64{-1}, std::numeric_limits<VXint64>::min()}) {
    IDs ids = {17};
    PagedImg::getPageIDs(ids, SubImgBox(Vector(0), Vector(9)), Vector(extent, 10, 10, 1, 1, 1), Vector(4));
    EXPECT_EQ(ids, IDs{}) << extent;
  }
}

TEST_F(PagedImgTest, MoreIDsThanMemoryHoldsAreMissingMemory) {
  IDs ids;
  for (const Vector& imgExt : {Vector(farAway, 1, 1, 1, 1, 1), Vector(farAway)}) {
    try {
      PagedImg::getPageIDs(ids, SubImgBox(Vector(0), imgExt - Vector(1)), imgExt, Vector(1));
      ADD_FAILURE() << "no exception";
    } catch (int code) {
      EXPECT_EQ(code, 2);
    }
  }
  expectFatal(41, [&] { PagedImg::getPageIDs(ids, SubImgBox(Vector(0), Vector(0)), Vector(1), Vector(0)); });
}

// Pages ---------------------------------------------------------------------------------------------------------------

TEST_F(PagedImgTest, APageComesWithItsMemory) {
  makeFourPages(image);
  EXPECT_EQ(image.getPage(2, PagedImg::OWN_PAGE), nullptr);
  EXPECT_EQ(image.isValidPage(2), 0);
  image.initPage(cache, 2, 9, pageBytes, nullptr);
  CachedBuffer* const page = image.getPage(2, PagedImg::OWN_PAGE);
  ASSERT_NE(page, nullptr);
  EXPECT_EQ(page->getCache(), &cache);
  EXPECT_EQ(page->getPriority(), 9U);
  EXPECT_EQ(page->getSize(), pageBytes);
  EXPECT_EQ(image.getPageData(2, PagedImg::OWN_PAGE), page->getData());
  EXPECT_EQ(image.isValidPage(2), 1);
  EXPECT_FALSE(image.areNoPagesCalculated());
  image.initPage(cache, 2, 3, pageBytes, nullptr);
  EXPECT_EQ(image.getPage(2, PagedImg::OWN_PAGE), page) << "the same page anew";
  EXPECT_EQ(page->getPriority(), 3U);
  EXPECT_EQ(image.getPageMemorySize(), pageBytes);
  fillPage(image, 0, 1);
  EXPECT_EQ(image.getPageMemorySize(), 2 * pageBytes);
}

TEST_F(PagedImgTest, APageTakesMemoryThatItIsGiven) {
  makeFourPages(image);
  void* const data = VXAlloc(10, VX_RETURN_NULL);
  image.initPage(cache, 0, 0, 10, data);
  EXPECT_EQ(image.getPageData(0, PagedImg::OWN_PAGE), data);
}

TEST_F(PagedImgTest, APageThatTheCacheClearedIsNotValid) {
  makeFourPages(image);
  fillPage(image, 1, 1);
  cache.clearCache();
  EXPECT_NE(image.getPage(1, PagedImg::OWN_PAGE), nullptr);
  EXPECT_EQ(image.isValidPage(1), 0);
  EXPECT_EQ(image.getPageMemorySize(), 0U);
  EXPECT_EQ(image.getPageData(1, PagedImg::OWN_PAGE), nullptr) << "no memory that is gone";
}

TEST_F(PagedImgTest, ThereIsNoDataWithoutAPage) {
  makeFourPages(image);
  expectFatal(41, [&] { image.getPageData(1, PagedImg::OWN_PAGE); });
}

TEST_F(PagedImgTest, APageWithoutMemoryIsNotKept) {
  makeFourPages(image);
  try {
    image.initPage(cache, 1, 0, ~VXuint64{0}, nullptr);
    ADD_FAILURE() << "no exception";
  } catch (int code) {
    EXPECT_EQ(code, 2);
  }
  EXPECT_EQ(image.getPage(1, PagedImg::OWN_PAGE), nullptr);
  EXPECT_TRUE(image.areNoPagesCalculated());
  messages.take();
  for (long failure = 0;; ++failure) {
    try {
      const FailingAllocations failing(failure);
      image.initPage(cache, 1, 0, pageBytes, nullptr);
      break;
    } catch (int code) {
      EXPECT_EQ(code, 2);
      EXPECT_EQ(image.isValidPage(1), 0);
    } catch (const std::bad_alloc&) {
      EXPECT_EQ(image.isValidPage(1), 0);
    }
    ASSERT_LT(failure, 100);
  }
  EXPECT_EQ(image.isValidPage(1), 1);
}

TEST_F(PagedImgTest, APageIDBeyondTheTableIsRefused) {
  expectFatal(27, [&] { image.initPage(cache, 0, 0, 1, nullptr); });
  makeFourPages(image);
  expectFatal(27, [&] { image.initPage(cache, 4, 0, 1, nullptr); });
  expectFatal(27, [&] { image.initPage(cache, -1, 0, 1, nullptr); });
  for (const VXint64 id : {VXint64{-1}, VXint64{4}, farAway}) {
    EXPECT_EQ(image.getPage(id, PagedImg::OWN_OR_BYPASSED_PAGE), nullptr);
    EXPECT_EQ(image.isValidPage(id), 0);
    image.removePage(id, true);
  }
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(PagedImgTest, ALockedPageStaysUnlessItIsForced) {
  makeFourPages(image);
  fillPage(image, 0, 1);
  fillPage(image, 1, 1);
  image.getPage(1, PagedImg::OWN_PAGE)->lock();
  image.removePage(0, false);
  image.removePage(1, false);
  image.removePage(2, false);
  EXPECT_EQ(image.getPage(0, PagedImg::OWN_PAGE), nullptr);
  EXPECT_EQ(image.isValidPage(1), 1);
  image.removePage(1, true);
  EXPECT_EQ(image.getPage(1, PagedImg::OWN_PAGE), nullptr);
  EXPECT_EQ(cache.getFigures().held, 0U);
  EXPECT_FALSE(image.areNoPagesCalculated()) << "nobody cleared the list";
}

TEST_F(PagedImgTest, ClearingTheListRemovesLockedPagesToo) {
  makeFourPages(image);
  fillPage(image, 0, 1);
  fillPage(image, 3, 1);
  image.getPage(3, PagedImg::OWN_PAGE)->lock();
  image.removePage(3, false);
  EXPECT_EQ(image.isValidPage(3), 1);
  image.clearPageList();
  EXPECT_EQ(image.getPage(0, PagedImg::OWN_PAGE), nullptr);
  EXPECT_EQ(image.getPage(3, PagedImg::OWN_PAGE), nullptr);
  EXPECT_TRUE(image.areNoPagesCalculated());
  EXPECT_EQ(image.getNumPages(), 4);
  EXPECT_EQ(cache.getFigures().held, 0U);
}

TEST_F(PagedImgTest, PagesMayOutliveTheirCache) {
  makeFourPages(image);
  {
    Cache shortLived;
    image.initPage(shortLived, 0, 0, pageBytes, nullptr);
    image.initPage(shortLived, 1, 0, pageBytes, nullptr);
    image.getPage(1, PagedImg::OWN_PAGE)->lock();
  }
  EXPECT_EQ(image.isValidPage(0), 0);
  EXPECT_EQ(image.isValidPage(1), 0);
  fillPage(image, 1, 3);
  EXPECT_EQ(image.isValidPage(1), 1);
  image.clearPageList();
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(PagedImgTest, AnImageGoesWithItsPages) {
  {
    PagedImg other(nullptr, 0);
    makeFourPages(other);
    fillPage(other, 0, 1);
    other.getPage(0, PagedImg::OWN_PAGE)->lock();
    EXPECT_EQ(cache.getFigures().held, pageBytes);
  }
  EXPECT_EQ(cache.getFigures().held, 0U);
}

// Bypass --------------------------------------------------------------------------------------------------------------

class PagedImgBypassTest : public PagedImgTest {
 protected:
  void SetUp() override {
    op.connectInput(0, input, 0);
    op.setBypass(0, 0);
    makeFourPages(out);
    makeFourPages(in);
    in.setUpToDate();
  }
  void TearDown() override {
    // Before the cache.
    out.clearPageList();
    in.clearPageList();
  }

  BypassOp input;
  BypassOp op;
  PagedImg& in = *input.getOutImg(0);
  PagedImg& out = *op.getOutImg(0);
};

TEST_F(PagedImgBypassTest, APageOfTheInputStandsIn) {
  fillPage(in, 1, 7);
  CachedBuffer* const page = in.getPage(1, PagedImg::OWN_PAGE);
  EXPECT_EQ(out.getPage(1, PagedImg::OWN_PAGE), nullptr);
  EXPECT_EQ(out.getPage(1, PagedImg::OWN_OR_BYPASSED_PAGE), page);
  EXPECT_EQ(out.getPage(1, PagedImg::BYPASSED_PAGE), page);
  EXPECT_EQ(out.isValidPage(1), 0);
  EXPECT_EQ(out.getPageMemorySize(), 0U);
  fillPage(out, 1, 8);
  EXPECT_NE(out.getPage(1, PagedImg::OWN_OR_BYPASSED_PAGE), page) << "the own one comes first";
  EXPECT_EQ(out.getPage(1, PagedImg::BYPASSED_PAGE), page);
}

TEST_F(PagedImgBypassTest, APageOfTheInputCountsOnlyWithMemory) {
  fillPage(in, 1, 7);
  cache.clearCache();
  EXPECT_EQ(out.getPage(1, PagedImg::OWN_OR_BYPASSED_PAGE), nullptr);
  fillPage(out, 1, 8);
  cache.clearCache();
  EXPECT_NE(out.getPage(1, PagedImg::OWN_OR_BYPASSED_PAGE), nullptr) << "an own one counts without";
}

TEST_F(PagedImgBypassTest, WithoutABypassOrAnInputNothingStandsIn) {
  fillPage(in, 1, 7);
  op.setBypass(0, -1);
  EXPECT_EQ(out.getPage(1, PagedImg::BYPASSED_PAGE), nullptr);
  op.setBypass(0, 0);
  EXPECT_NE(out.getPage(1, PagedImg::BYPASSED_PAGE), nullptr);
  op.getInField(0)->getInputConnectorValue().disconnect();
  EXPECT_EQ(out.getPage(1, PagedImg::BYPASSED_PAGE), nullptr);
}

TEST_F(PagedImgBypassTest, NothingStandsInForAFreeStandingImage) {
  UncheckedImg free;
  makeFourPages(free);
  free._bypassIndex = 0;
  EXPECT_EQ(free.getPage(1, PagedImg::OWN_OR_BYPASSED_PAGE), nullptr);
  EXPECT_EQ(free.getPage(1, PagedImg::BYPASSED_PAGE), nullptr);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(PagedImgBypassTest, AnInputWithoutATableHasNoPage) {
  in.setImgExt(Vector());
  EXPECT_EQ(out.getPage(1, PagedImg::BYPASSED_PAGE), nullptr);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(PagedImgBypassTest, TheBypassOfTheInputIsNotFollowed) {
  BypassOp last;
  last.connectInput(0, op, 0);
  last.setBypass(0, 0);
  makeFourPages(*last.getOutImg(0));
  out.setUpToDate();
  fillPage(in, 1, 7);
  EXPECT_NE(out.getPage(1, PagedImg::OWN_OR_BYPASSED_PAGE), nullptr);
  EXPECT_EQ(last.getOutImg(0)->getPage(1, PagedImg::OWN_OR_BYPASSED_PAGE), nullptr);
}

// Copies --------------------------------------------------------------------------------------------------------------

class PagedImgCopyTest : public PagedImgTest {
 protected:
  void SetUp() override {
    image.setImgExt(Vector(4, 2, 1, 1, 1, 1));
    image.setPageExt(Vector(2, 2, 1, 1, 1, 1));
    for (VXint64 id = 0; id < 2; ++id) {
      image.initPage(cache, id, 0, 4, nullptr);
      for (int i = 0; i < 4; ++i) {
        static_cast<unsigned char*>(image.getPageData(id, PagedImg::OWN_PAGE))[i] =
            static_cast<unsigned char>(10 * id + i);
      }
    }
  }

  Message invalidPage{VX_FATAL, 19, "PagedImg::copyPages",
                      "Fatal error in PagedImg::copyPages(): A page to be copied is invalid, maybe a wrong page id has "
                      "been passed or we ran out of memory. Trying to continuing without copying that page."};
  float voxels[6] = {-1, -1, -1, -1, -1, -1};
  SubImg dest{SubImgBox(Vector(1, 0, 0, 0, 0, 0), Vector(3, 1, 0, 0, 0, 0)), VXfloatType, voxels};
};

TEST_F(PagedImgCopyTest, PagesAreCopiedWhereTheyOverlapTheBlock) {
  image.copyPages({0, 1}, &dest, ScaleShiftData(2, 1), PagedImg::OWN_PAGE);
  const float expected[] = {3, 21, 23, 7, 25, 27};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(voxels[i], expected[i]) << i;
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(PagedImgCopyTest, APageWithoutMemoryIsSkipped) {
  image.getPage(0, PagedImg::OWN_PAGE)->clear();
  image.copyPages({0, 1}, &dest, ScaleShiftData(), PagedImg::OWN_PAGE);
  EXPECT_EQ(messages.take(), Messages{invalidPage});
  const float expected[] = {-1, 10, 11, -1, 12, 13};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(voxels[i], expected[i]) << i;
}

TEST_F(PagedImgCopyTest, APageThatIsTooSmallForTheTypeOfTheImageIsSkipped) {
  image.setDataType(VXint32Type);
  image.copyPages({0}, &dest, ScaleShiftData(), PagedImg::OWN_PAGE);
  EXPECT_EQ(messages.take(), Messages{invalidPage});
  EXPECT_EQ(voxels[0], -1);
}

TEST_F(PagedImgCopyTest, AMissingPageAndAMissingBlockAreFatal) {
  image.removePage(0, true);
  expectFatal(41, [&] { image.copyPages({0}, &dest, ScaleShiftData(), PagedImg::OWN_PAGE); });
  expectFatal(41, [&] { image.copyPages({1}, nullptr, ScaleShiftData(), PagedImg::OWN_PAGE); });
  image.copyPages({}, nullptr, ScaleShiftData(), PagedImg::OWN_PAGE);
  EXPECT_EQ(messages.take(), Messages{});
}

// Tiles of free-standing images ---------------------------------------------------------------------------------------

TEST_F(PagedImgTest, AFreeStandingImageGivesNoTile) {
  const std::string reason =
      "Invalid call to PagedImg::getTile although no BaseOp pointer is specified. Not executing getTile call.";
  const SubImgBox box(Vector(0), Vector(0));
  void* data = nullptr;
  EXPECT_EQ(image.getTile(box, VXuint8Type, &data), 14);
  EXPECT_EQ(data, nullptr);
  EXPECT_EQ(messages.take(),
            (Messages{{VX_FATAL, 14, "PagedImg::getTile(loc, dataType, data, scaleShiftData)", reason}}));
  SubImg block;
  EXPECT_EQ(image.getTile(block), 14);
  EXPECT_EQ(messages.take(), (Messages{{VX_FATAL, 14, "PagedImg::getTile(subImg, scaleShiftData)", reason}}));
  CachedBuffer buffer;
  EXPECT_EQ(image.getTile(box, VXuint8Type, buffer, ScaleShiftData(1, 0)), 14);
  EXPECT_EQ(messages.take(),
            (Messages{{VX_FATAL, 14, "PagedImg::getTile(loc, dataType, cachedBuffer, scaleShiftData)", reason}}));
}

TEST_F(PagedImgTest, AFreeStandingImageReportsAndFreesATile) {
  image.freeTile(VXAlloc(100, VX_RETURN_NULL));
  EXPECT_EQ(messages.take(), (Messages{{VX_FATAL, 14, "PagedImg::freeTile(data)",
                                        "Invalid call to PagedImg::getTile although no BaseOp pointer is specified. "
                                        "Not executing freeTile call."}}));
  BaseOp op(0, 1);
  op.getOutImg(0)->freeTile(VXAlloc(100, VX_RETURN_NULL));
  EXPECT_EQ(messages.take(), Messages{});
}

// Printing ------------------------------------------------------------------------------------------------------------

TEST_F(PagedImgTest, ValidPagesArePrintedAsAGrid) {
  image.setImgExt(Vector(6, 4, 2, 1, 1, 1));
  image.setPageExt(Vector(2, 2, 1, 1, 1, 1));
  fillPage(image, 1, 0);
  fillPage(image, 6, 0);
  fillPage(image, 11, 0);
  std::ostringstream stream;
  image.printPages(stream);
  EXPECT_EQ(stream.str(),
            "-----------------VALID PAGES----------------------\n"
            "0 1 0 \n0 0 0 \n\n"
            "1 0 0 \n0 0 1 \n\n"
            "\n\n\n"
            "^^^^^^^^^^^^^^^^^VALID PAGES^^^^^^^^^^^^^^^^^^^^^^^^\n");
}

TEST_F(PagedImgTest, AnImageWithoutPagesPrintsAnEmptyGrid) {
  std::ostringstream stream;
  image.printPages(stream);
  EXPECT_EQ(stream.str(),
            "-----------------VALID PAGES----------------------\n"
            "^^^^^^^^^^^^^^^^^VALID PAGES^^^^^^^^^^^^^^^^^^^^^^^^\n");
}

TEST_F(PagedImgTest, APageIsPrintedAsABlock) {
  image.setImgExt(Vector(2, 2, 1, 1, 1, 1));
  image.setPageExt(Vector(2, 2, 1, 1, 1, 1));
  fillPage(image, 0, 5);
  std::ostringstream stream;
  std::ostringstream expected;
  image.printPageData(0, stream);
  expected << SubImg(image.getPageBox(0), VXuint8Type, image.getPageData(0, PagedImg::OWN_PAGE));
  EXPECT_EQ(stream.str(), expected.str());
}

TEST_F(PagedImgTest, AnImageIsPrintedLineByLine) {
  makeFourPages(image);
  image.setDataType(VXint16Type);
  std::ostringstream stream;
  stream << image;
  const std::string text = "\n" + stream.str();
  for (const char* line : {"\n  PageSetExt   : (128,128,1,1,1,1)\n", "\n  InPlaceIndex : -1\n",
                           "\n  Data Type    : int16\n", "\n  NumPages     : 4\n"}) {
    EXPECT_NE(text.find(line), std::string::npos) << line << text;
  }
}

}  // namespace
}  // namespace vx::test
