#include "MessageRecorder.h"
#include "SlotOf.h"
#include "TestAllocator.h"

#include "vxBaseOp.h"
#include "vxNotify.h"
#include "vxPagedImg.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <tuple>

namespace vx::test {
namespace {

using Messages = std::vector<Message>;

// A module that does what a test says.
class TestOp : public BaseOp {
 public:
  using BaseOp::_addBaseOp;
  using BaseOp::_marker;
  using BaseOp::_removeBaseOp;
  using BaseOp::BaseOp;

  void handleNotification(Field* field) override {
    heard.push_back(field);
    if (onNotification) onNotification(field);
  }
  using BaseOp::calcOutSubImage;
  void calcOutSubImage(SubImg* outSubImg, int outIndex, SubImg* inSubImgs) override {
    calls.emplace_back(outSubImg, outIndex, inSubImgs);
  }

  std::vector<Field*> heard;
  std::function<void(Field*)> onNotification;
  std::vector<std::tuple<SubImg*, int, SubImg*>> calls;
};

// Hears the notifications of one code.
class Notifications {
 public:
  explicit Notifications(unsigned int code) : _handle(VXNotify.addNotifyCB(&Notifications::_hear, this, code)) {}
  ~Notifications() { VXNotify.removeNotifyCB(_handle); }
  Notifications(const Notifications&) = delete;
  Notifications& operator=(const Notifications&) = delete;

  std::vector<std::tuple<unsigned int, void*, void*>> heard;
  std::function<void()> onNotification;

 private:
  static void _hear(void* userData, unsigned int code, void* first, void* second) {
    auto& self = *static_cast<Notifications*>(userData);
    self.heard.emplace_back(code, first, second);
    if (self.onNotification) self.onNotification();
  }
  VXCallbackHandle _handle;
};

using Heard = std::vector<std::tuple<unsigned int, void*, void*>>;

class BaseOpTest : public ::testing::Test {
 protected:
  void TearDown() override { VXEnableExceptionHandling(1); }

  MessageRecorder messages;
};

#ifdef VX_TESTS_SLOTS_ARE_KNOWN
TEST_F(BaseOpTest, TheVirtualFunctionsHaveTheirSlots) {
  using WithThread = void (BaseOp::*)(SubImg*, int, SubImg*, ThreadInfo&);
  using WithoutThread = void (BaseOp::*)(SubImg*, int, SubImg*);
  const std::vector<std::size_t> slots{slotOf(&BaseOp::getPersistentState),
                                       slotOf(&BaseOp::setPersistentState),
                                       slotOf(&BaseOp::clearPersistentState),
                                       slotOf(&BaseOp::addStateToTree),
                                       slotOf(&BaseOp::readStateFromTree),
                                       slotOf(&BaseOp::getTypeId),
                                       slotOf(&BaseOp::getTypeIdName),
                                       slotOf(&BaseOp::typeInstanceCounter),
                                       slotOf(&BaseOp::handleInput),
                                       slotOf(&BaseOp::calcOutImageProps),
                                       slotOf(&BaseOp::calcInSubImageBox),
                                       slotOf(static_cast<WithThread>(&BaseOp::calcOutSubImage)),
                                       slotOf(static_cast<WithoutThread>(&BaseOp::calcOutSubImage)),
                                       slotOf(&BaseOp::calcInSubImageProps),
                                       slotOf(&BaseOp::processAllPages),
                                       slotOf(&BaseOp::handleNotification),
                                       slotOf(&BaseOp::activateAttachments),
                                       slotOf(&BaseOp::deactivateAttachments),
                                       slotOf(&BaseOp::beginSaveFields),
                                       slotOf(&BaseOp::endSaveFields),
                                       slotOf(&BaseOp::notifyFirstCalcOutSubImage),
                                       slotOf(&BaseOp::setMarker),
                                       slotOf(&BaseOp::getMarker)};
  for (std::size_t i = 0; i < slots.size(); ++i) EXPECT_EQ(slots[i], i + 2) << "the destructor takes two";
}
#endif

TEST_F(BaseOpTest, AModuleHasItsConnectorsAndItsNameAsFields) {
  BaseOp op(2, 3);
  FieldContainer& fields = *op.getFieldContainer();
  EXPECT_EQ(op.getConstFieldContainer(), &fields);
  EXPECT_EQ(fields.getBaseOp(), &op);
  std::vector<std::string> names;
  for (unsigned int i = 0; i < fields.getSize(); ++i) names.push_back(fields.getField(i)->getName());
  EXPECT_EQ(names, (std::vector<std::string>{"input0", "input1", "output0", "output1", "output2", "instanceName"}));
  EXPECT_STREQ(fields.getField("instanceName")->getTypeIdName(), "StringField");
  EXPECT_EQ(op.getInputNum(), 2);
  EXPECT_EQ(op.getOutputNum(), 3);
  for (VXint64 i = 0; i < 2; ++i) {
    InputConnector& input = op.getInField(i)->getInputConnectorValue();
    EXPECT_EQ(&input.getOp(), &op);
    EXPECT_EQ(input.getIndex(), i);
  }
  for (VXint64 i = 0; i < 3; ++i) {
    OutputConnector& output = op.getOutField(i)->getOutputConnectorValue();
    EXPECT_EQ(&output.getOp(), &op);
    EXPECT_EQ(output.getIndex(), i);
    EXPECT_EQ(op.getOutImg(i), &output.getPagedImg());
    EXPECT_EQ(op.getOutImg(i)->getOp(), &op);
    EXPECT_EQ(op.getOutImg(i)->getOutIndex(), i);
  }
  EXPECT_EQ(op.getOutImg(-1), nullptr);
  EXPECT_EQ(op.getOutImg(3), nullptr);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(BaseOpTest, AModuleStartsWithItsDefaults) {
  BaseOp op(0, 1);
  EXPECT_EQ(op.getThreadSupport(), BaseOp::NO_THREAD_SUPPORT);
  EXPECT_EQ(op.getHandleNotificationEntryCounter(), 0);
  EXPECT_FALSE(op.areRecursiveHandleNotificationsPermitted());
  EXPECT_TRUE(op.isHandleNotificationOn());
  EXPECT_EQ(op.getMarker(), 0);
  EXPECT_EQ(op.getVoxelDataTypeSupport(), BaseOp::ONLY_STANDARD_TYPES);
  EXPECT_EQ(op.getOutImgInplace(0), -1);
  EXPECT_EQ(op.getBypass(0), -1);
  EXPECT_FALSE(op.getMemoryOutputControl(0));
}

TEST_F(BaseOpTest, NegativeNumbersOfConnectorsCountAsNone) {
  const BaseOp op(-1, -2);
  EXPECT_EQ(op.getInputNum(), 0);
  EXPECT_EQ(op.getOutputNum(), 0);
}

TEST_F(BaseOpTest, TheClassIsAbstractAndDerivedFromBase) {
  const RuntimeType* const type = BaseOp::getClassTypeId();
  ASSERT_NE(type, nullptr);
  EXPECT_STREQ(type->getName(), "BaseOp");
  EXPECT_STREQ(type->getParentName(), "Base");
  EXPECT_TRUE(type->isAbstract());
}

TEST_F(BaseOpTest, CopiesOnlyReport) {
  const TestOp op(1, 1);
  const TestOp copy(op);
  EXPECT_EQ(messages.take(), (Messages{{VX_FATAL, 14, "BaseOp::BaseOp(const BaseOp &)",
                                        "Usage of copy constructor of BaseOp is not supported."}}));
  EXPECT_EQ(copy.getInputNum(), 0);
  BaseOp other(1, 0);
  other = op;
  EXPECT_EQ(messages.take(), (Messages{{VX_FATAL, 14, "BaseOp& BaseOp::operator=(const BaseOp &)",
                                        "Usage of assignment operator of BaseOp is not supported."}}));
  EXPECT_EQ(other.getInputNum(), 1);
}

TEST_F(BaseOpTest, TheEnumeratorsHaveTheirValues) {
  EXPECT_EQ(BaseOp::ONLY_STANDARD_TYPES, 0);
  EXPECT_EQ(BaseOp::STANDARD_TYPES_NARROW, 1);
  EXPECT_EQ(BaseOp::EXPLICIT_TYPES, 2);
  EXPECT_EQ(BaseOp::SCALAR_TYPES_ONLY, 3);
  EXPECT_EQ(BaseOp::NO_THREAD_SUPPORT, 0);
  EXPECT_NE(BaseOp::THREAD_SUPPORTED, 0);
  EXPECT_EQ(BaseOp::INPUT_NOT_CONNECTED, 0);
  EXPECT_EQ(BaseOp::INPUT_NOT_VALID, 1);
  EXPECT_EQ(BaseOp::INVALIDATE_OUTPUT, 0);
  EXPECT_EQ(BaseOp::USE_PLACEHOLDER, 1);
}

TEST_F(BaseOpTest, MarkersAreNumbersOf32Bits) {
  TestOp op(0, 0);
  for (const int marker : {1, -1, 0, 2147483647, -2147483647 - 1}) {
    op.setMarker(marker);
    EXPECT_EQ(op.getMarker(), marker);
    EXPECT_EQ(op._marker, VXint64{marker}) << "kept with its sign";
  }
  op._marker = (VXint64{3} << 32) | 0xFFFFFFFE;
  EXPECT_EQ(op.getMarker(), -2);
}

TEST_F(BaseOpTest, ThreadSupportIsKept) {
  BaseOp op(0, 0);
  op.setThreadSupport(BaseOp::THREAD_SUPPORTED);
  EXPECT_EQ(op.getThreadSupport(), BaseOp::THREAD_SUPPORTED);
  op.setThreadSupport(static_cast<BaseOp::THREAD_SUPPORT>(7));
  EXPECT_EQ(static_cast<int>(op.getThreadSupport()), 7);
}

// Voxel types ---------------------------------------------------------------------------------------------------------

TEST_F(BaseOpTest, TheSupportOfVoxelTypesSetsTheRequirements) {
  const VXTypePropBits own = {{1, 2, 3, 4}};
  struct Row {
    int permitted;
    VXuint32 words[4];
  };
  const Row rows[] = {{0, {0xFFFF, 0xFFFFFFFF, 0x1F, 0x1FFFFF83}},
                      {1, {0xFFFF, 0xFFFFFFFF, 0x1F, 0x1FFFFF03}},
                      {2, {1, 2, 3, 4}},
                      {3, {0, 0xF0F000, 0, 0xFF003}}};
  BaseOp op(0, 0);
  for (unsigned int i = 0; i < 4; ++i) EXPECT_EQ(op.getVoxelDataTypeRequirements()[i], rows[0].words[i]);
  for (const Row& row : rows) {
    op.setVoxelDataTypeSupport(static_cast<BaseOp::PERMITTED_TYPES>(row.permitted), own);
    EXPECT_EQ(static_cast<int>(op.getVoxelDataTypeSupport()), row.permitted);
    for (unsigned int i = 0; i < 4; ++i) {
      EXPECT_EQ(op.getVoxelDataTypeRequirements()[i], row.words[i]) << row.permitted << ", word " << i;
    }
  }
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(BaseOpTest, AnInvalidSupportOfVoxelTypesIsKeptAndRequiresStandardTypes) {
  BaseOp op(0, 0);
  op.setVoxelDataTypeSupport(BaseOp::SCALAR_TYPES_ONLY);
  op.setVoxelDataTypeSupport(static_cast<BaseOp::PERMITTED_TYPES>(7), {{1, 2, 3, 4}});
  EXPECT_EQ(messages.take(), (Messages{{VX_ERROR, 19, "BaseOp::setVoxelDataTypeSupport",
                                        "Invalid parameter passed. Using ONLY_STANDARD_TYPES instead."}}));
  EXPECT_EQ(static_cast<int>(op.getVoxelDataTypeSupport()), 7);
  const VXuint32 words[4] = {0xFFFF, 0xFFFFFFFF, 0x1F, 0x1FFFFF83};
  for (unsigned int i = 0; i < 4; ++i) EXPECT_EQ(op.getVoxelDataTypeRequirements()[i], words[i]);
}

TEST_F(BaseOpTest, StandardTypesMeetTheirRequirements) {
  BaseOp op(0, 0);
  for (VXDataType type = 0; type < 10; ++type) {
    EXPECT_EQ(VXTypePropBitsTest(VXGetTypeInfosForDataType(type)->propertyBits, op.getVoxelDataTypeRequirements()), 1)
        << type;
  }
}

// Operations ----------------------------------------------------------------------------------------------------------

TEST_F(BaseOpTest, OperationsHaveTheirDefaults) {
  BaseOp op(1, 1);
  EXPECT_EQ(op.handleInput(0, BaseOp::INPUT_NOT_CONNECTED), BaseOp::INVALIDATE_OUTPUT);
  EXPECT_EQ(op.handleInput(0, BaseOp::INPUT_NOT_VALID), BaseOp::INVALIDATE_OUTPUT);
  const SubImgBox box(TVector<VXint64>(-3), TVector<VXint64>(4));
  EXPECT_EQ(op.calcInSubImageBox(0, box, 0), box);
  InSubImageProps props(VXint16Type);
  op.calcInSubImageProps(0, props, 0);
  EXPECT_EQ(props.dataType, VXint16Type);
  EXPECT_FALSE(props.inTileCaching);
  EXPECT_EQ(props.scaleShiftData, ScaleShiftData());
  op.calcOutImageProps(0);
  op.handleNotification(nullptr);
  op.beginSaveFields();
  op.endSaveFields();
  op.notifyFirstCalcOutSubImage(0, true);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(BaseOpTest, ACalculationWithThreadInfoFallsBackOnTheOneWithout) {
  TestOp op(1, 1);
  SubImg out;
  SubImg in;
  ThreadInfo threadInfo;
  static_cast<BaseOp&>(op).calcOutSubImage(&out, 3, &in, threadInfo);
  EXPECT_EQ(op.calls, (std::vector<std::tuple<SubImg*, int, SubImg*>>{{&out, 3, &in}}));
}

TEST_F(BaseOpTest, TheDefaultCalculationCopiesTheInputOfTheOutputOrTheLast) {
  BaseOp op(2, 8);
  const SubImgBox box(TVector<VXint64>(0), TVector<VXint64>(1, 0, 0, 0, 0, 0));
  struct Row {
    int outIndex;
    VXuint8 first;
  };
  for (const Row& row : {Row{0, 10}, Row{1, 20}, Row{2, 20}, Row{5, 20}}) {
    VXuint8 a[] = {10, 11};
    VXuint8 b[] = {20, 21};
    VXint16 result[] = {0, 0};
    SubImg in[] = {SubImg(box, VXuint8Type, a), SubImg(box, VXuint8Type, b)};
    SubImg out(box, VXint16Type, result);
    op.calcOutSubImage(&out, row.outIndex, in);
    EXPECT_EQ(result[0], row.first) << row.outIndex;
    EXPECT_EQ(result[1], row.first + 1) << row.outIndex;
  }
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(BaseOpTest, TheDefaultCalculationNeedsBlocksIfThereAreInputs) {
  BaseOp withInput(1, 1);
  SubImg block;
  for (const auto& [out, in] : {std::pair<SubImg*, SubImg*>{nullptr, &block}, {&block, nullptr}}) {
    try {
      withInput.calcOutSubImage(out, 0, in);
      ADD_FAILURE() << "no exception";
    } catch (int code) {
      EXPECT_EQ(code, 41);
    }
    const Messages taken = messages.take();
    ASSERT_EQ(taken.size(), 1U);
    EXPECT_EQ(taken[0].type, VX_FATAL);
    EXPECT_EQ(taken[0].code, 41);
  }
  BaseOp withoutInput(0, 1);
  withoutInput.calcOutSubImage(nullptr, 0, nullptr);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(BaseOpTest, AttachmentsAreSwitchedForAllFields) {
  BaseOp op(1, 0);
  op.deactivateAttachments();
  EXPECT_EQ(op.getInField(0)->isActiveAttachments(), 0);
  op.activateAttachments();
  EXPECT_EQ(op.getInField(0)->isActiveAttachments(), 1);
}

// Names ---------------------------------------------------------------------------------------------------------------

TEST_F(BaseOpTest, AModuleTellsItsClassAndItsInstance) {
  BaseOp op(0, 0);
  EXPECT_EQ(op.whoAmI(false), "BaseOp");
  EXPECT_EQ(op.whoAmI(true), "BaseOp");
  op.getFieldContainer()->getField("instanceName")->setStringValue("left lung");
  EXPECT_EQ(op.whoAmI(false), "BaseOp");
  EXPECT_EQ(op.whoAmI(true), "BaseOp(left lung)");
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(BaseOpTest, AModuleWithoutTheFieldOfItsNameIsAFatalError) {
  BaseOp op(0, 0);
  op.getFieldContainer()->removeField(op.getFieldContainer()->getField("instanceName"));
  EXPECT_EQ(op.whoAmI(false), "BaseOp");
  EXPECT_EQ(messages.take(), Messages{});
  try {
    op.whoAmI(true);
    ADD_FAILURE() << "no exception";
  } catch (int code) {
    EXPECT_EQ(code, 41);
  }
  const Messages taken = messages.take();
  ASSERT_EQ(taken.size(), 1U);
  EXPECT_EQ(taken[0].type, VX_FATAL);
  EXPECT_EQ(taken[0].code, 41);
}

// The list of all modules ---------------------------------------------------------------------------------------------

TEST_F(BaseOpTest, LiveModulesStandInAListInOrderOfCreation) {
  const VXint64 before = BaseOp::getNumBaseOps();
  auto first = std::make_unique<BaseOp>(0, 0);
  auto second = std::make_unique<BaseOp>(0, 0);
  auto third = std::make_unique<BaseOp>(0, 0);
  EXPECT_EQ(BaseOp::getNumBaseOps(), before + 3);
  EXPECT_EQ(BaseOp::findBaseOpIndex(*second), before + 1);
  EXPECT_EQ(BaseOp::getBaseOp(static_cast<unsigned int>(before)), first.get());
  EXPECT_EQ(BaseOp::getBaseOp(static_cast<unsigned int>(before) + 2), third.get());
  EXPECT_EQ(BaseOp::getBaseOp(static_cast<unsigned int>(before) + 3), nullptr);
  EXPECT_EQ(BaseOp::getBaseOp(~0U), nullptr);
  first.reset();
  EXPECT_EQ(BaseOp::getNumBaseOps(), before + 2);
  EXPECT_EQ(BaseOp::findBaseOpIndex(*second), before);
  EXPECT_EQ(BaseOp::findBaseOpIndex(*third), before + 1);
}

TEST_F(BaseOpTest, TheListIsEmptiedWithoutDeletingModules) {
  std::vector<BaseOp*> others;
  for (unsigned int i = 0; BaseOp* const op = BaseOp::getBaseOp(i); ++i) others.push_back(op);
  TestOp op(0, 0);
  BaseOp::destroyBaseOp();
  EXPECT_EQ(BaseOp::getNumBaseOps(), 0);
  EXPECT_EQ(BaseOp::getBaseOp(0), nullptr);
  EXPECT_EQ(BaseOp::findBaseOpIndex(op), -1);
  EXPECT_EQ(op.whoAmI(false), "BaseOp");
  BaseOp::destroyBaseOp();
  for (BaseOp* const other : others) EXPECT_TRUE(TestOp::_addBaseOp(*other));
  EXPECT_EQ(BaseOp::getNumBaseOps(), static_cast<VXint64>(others.size()));
}

TEST_F(BaseOpTest, AModuleIsTakenFromTheListOnce) {
  TestOp op(0, 0);
  const VXint64 index = BaseOp::findBaseOpIndex(op);
  const Notifications removed(0x200004);
  EXPECT_EQ(TestOp::_removeBaseOp(op), index);
  EXPECT_EQ(TestOp::_removeBaseOp(op), -1);
  EXPECT_EQ(removed.heard, (Heard{{0x200004U, &op, nullptr}}));
  EXPECT_TRUE(TestOp::_addBaseOp(op));
}

TEST_F(BaseOpTest, TheListGrowsByManyModulesAtATime) {
  constexpr int numModules = 8192;
  TestOp op(0, 0);
  const VXint64 before = BaseOp::getNumBaseOps();
  const long allocations = numAllocations();
  for (int i = 0; i < numModules; ++i) TestOp::_addBaseOp(op);
  EXPECT_LE(numAllocations() - allocations, 1);
  for (int i = 0; i < numModules; ++i) TestOp::_removeBaseOp(op);
  EXPECT_EQ(BaseOp::getNumBaseOps(), before);
}

TEST_F(BaseOpTest, ListenersHearOfModulesThatComeAndGo) {
  const Notifications registered(0x200002);
  const Notifications removed(0x200004);
  auto op = std::make_unique<BaseOp>(0, 0);
  BaseOp* const address = op.get();
  EXPECT_EQ(registered.heard, (Heard{{0x200002U, address, nullptr}}));
  EXPECT_EQ(removed.heard, Heard{});
  op.reset();
  EXPECT_EQ(registered.heard.size(), 1U);
  EXPECT_EQ(removed.heard, (Heard{{0x200004U, address, nullptr}}));
}

TEST_F(BaseOpTest, AModuleOfWhichAListenerThrowsIsInNoList) {
  const VXint64 before = BaseOp::getNumBaseOps();
  Notifications registered(0x200002);
  registered.onNotification = [] { throw std::runtime_error("no modules"); };
  EXPECT_THROW(BaseOp(0, 0), std::runtime_error);
  EXPECT_EQ(BaseOp::getNumBaseOps(), before);
}

TEST_F(BaseOpTest, AListenerThatThrowsWhenAModuleGoesIsReported) {
  auto op = std::make_unique<BaseOp>(0, 0);
  {
    Notifications removed(0x200004);
    removed.onNotification = [] { throw 7; };
    op.reset();
  }
  const Messages taken = messages.take();
  ASSERT_EQ(taken.size(), 1U);
  EXPECT_EQ(taken[0].type, VX_FATAL);
  EXPECT_EQ(taken[0].code, 34);
}

TEST_F(BaseOpTest, WithoutMemoryNoModuleIsLeftBehind) {
  const VXint64 before = BaseOp::getNumBaseOps();
  for (long failure = 0;; ++failure) {
    try {
      const FailingAllocations failing(failure);
      const BaseOp op(1, 1);
      break;
    } catch (...) {
      EXPECT_EQ(BaseOp::getNumBaseOps(), before) << failure;
    }
    ASSERT_LT(failure, 1000);
  }
  EXPECT_EQ(BaseOp::getNumBaseOps(), before);
}

// Notifications -------------------------------------------------------------------------------------------------------

TEST_F(BaseOpTest, TheChangeOfAFieldReachesTheModule) {
  TestOp op(0, 0);
  StringField* const field = op.getFieldContainer()->addString("text");
  const Notifications finished(0x200001);
  op.onNotification = [&](Field*) {
    EXPECT_EQ(op.getHandleNotificationEntryCounter(), 1);
    EXPECT_TRUE(finished.heard.empty()) << "the module comes first";
  };
  field->setStringValue("x");
  EXPECT_EQ(op.heard, (std::vector<Field*>{field}));
  EXPECT_EQ(op.getHandleNotificationEntryCounter(), 0);
  EXPECT_EQ(finished.heard, (Heard{{0x200001U, static_cast<BaseOp*>(&op), static_cast<Field*>(field)}}));
}

TEST_F(BaseOpTest, ANotificationMayNotReenterItsModuleUnlessPermitted) {
  TestOp op(0, 0);
  StringField* const a = op.getFieldContainer()->addString("a");
  StringField* const b = op.getFieldContainer()->addString("b");
  op.onNotification = [&](Field* field) {
    if (field == a) b->setStringValue("changed");
  };
  const Notifications finished(0x200001);
  a->setStringValue("1");
  EXPECT_EQ(op.heard, (std::vector<Field*>{a}));
  EXPECT_EQ(b->getStringValue(), "changed");

  op.heard.clear();
  op.permitRecursiveHandleNotifications(true);
  EXPECT_TRUE(op.areRecursiveHandleNotificationsPermitted());
  a->setStringValue("2");
  EXPECT_EQ(op.heard, (std::vector<Field*>{a, b}));
  EXPECT_EQ(finished.heard.size(), 2U) << "the outermost notification only";
}

TEST_F(BaseOpTest, ANotificationWithinAnotherModuleIsNotTheOutermost) {
  TestOp outer(0, 0);
  TestOp inner(0, 0);
  StringField* const a = outer.getFieldContainer()->addString("a");
  StringField* const b = inner.getFieldContainer()->addString("b");
  outer.onNotification = [&](Field*) { b->setStringValue("changed"); };
  const Notifications finished(0x200001);
  a->setStringValue("1");
  EXPECT_EQ(inner.heard, (std::vector<Field*>{b}));
  EXPECT_EQ(finished.heard, (Heard{{0x200001U, static_cast<BaseOp*>(&outer), static_cast<Field*>(a)}}));
}

TEST_F(BaseOpTest, SwitchingNotificationsOffNests) {
  TestOp op(0, 0);
  StringField* const field = op.getFieldContainer()->addString("text");
  const Notifications finished(0x200001);
  op.handleNotificationOff();
  op.handleNotificationOff();
  field->setStringValue("1");
  op.handleNotificationOn();
  EXPECT_FALSE(op.isHandleNotificationOn());
  field->setStringValue("2");
  EXPECT_TRUE(op.heard.empty());
  EXPECT_EQ(finished.heard.size(), 2U) << "listeners hear all the same";
  op.handleNotificationOn();
  EXPECT_TRUE(op.isHandleNotificationOn());
  field->setStringValue("3");
  EXPECT_EQ(op.heard.size(), 1U);
  op.handleNotificationOn();
  op.handleNotificationOff();
  EXPECT_TRUE(op.isHandleNotificationOn()) << "calls ahead count";
}

TEST_F(BaseOpTest, TheCallbackIgnoresANullModuleAndRefusesANullSensor) {
  TestOp op(0, 0);
  BaseOp::handleSensorNotification(nullptr, nullptr);
  EXPECT_EQ(messages.take(), Messages{});
  try {
    BaseOp::handleSensorNotification(static_cast<BaseOp*>(&op), nullptr);
    ADD_FAILURE() << "no exception";
  } catch (int code) {
    EXPECT_EQ(code, 41);
  }
  EXPECT_EQ(messages.take().size(), 1U);
  EXPECT_EQ(op.getHandleNotificationEntryCounter(), 0);
}

struct ThrowCase {
  bool enabled;
  std::function<void(Field*)> thrower;
  Message message;
};

TEST_F(BaseOpTest, WhatANotificationThrowsIsReportedAsTheSettingSays) {
  TestOp op(0, 0);
  StringField* const field = op.getFieldContainer()->addString("text");
  op.getFieldContainer()->getField("instanceName")->setStringValue("i");
  op.heard.clear();
  const std::string label = "BaseOp::handleNotification() of module BaseOp(i)";
  const std::string broken = "Continuing after broken handleNotification call.";
  const ThrowCase cases[] = {
      {false,
       [](Field*) { throw 19; },
       {VX_ERROR, 19, label, "Controlled but undesired exception caught - continuing operation."}},
      {true, [](Field*) { throw 19; }, {VX_FATAL, 19, label, broken}},
      {true, [](Field*) { throw std::runtime_error("x"); }, {VX_FATAL, 1, label, broken}},
  };
  for (const ThrowCase& throwCase : cases) {
    VXEnableExceptionHandling(throwCase.enabled);
    op.onNotification = throwCase.thrower;
    const Notifications finished(0x200001);
    field->setStringValue("x");
    EXPECT_EQ(messages.take(), (Messages{throwCase.message}));
    EXPECT_EQ(op.getHandleNotificationEntryCounter(), 0);
    EXPECT_EQ(finished.heard.size(), 1U);
  }
}

TEST_F(BaseOpTest, AForeignExceptionPassesWhileExceptionHandlingIsOff) {
  TestOp op(0, 0);
  StringField* const field = op.getFieldContainer()->addString("text");
  FieldSensor sensor([](void*, void*) {}, nullptr);
  sensor.attachField(field);
  VXEnableExceptionHandling(0);
  op.onNotification = [](Field*) { throw std::runtime_error("x"); };
  const Notifications finished(0x200001);
  EXPECT_THROW(BaseOp::handleSensorNotification(static_cast<BaseOp*>(&op), &sensor), std::runtime_error);
  EXPECT_EQ(op.getHandleNotificationEntryCounter(), 0);
  EXPECT_EQ(finished.heard.size(), 1U);
  op.onNotification = nullptr;
  BaseOp::handleSensorNotification(static_cast<BaseOp*>(&op), &sensor);
  EXPECT_EQ(op.heard.size(), 2U);
  EXPECT_EQ(finished.heard.size(), 2U) << "the depth is back at 0";
}

// Processing controls -------------------------------------------------------------------------------------------------

TEST_F(BaseOpTest, ControlsAreKeptForEachOutput) {
  BaseOp op(2, 2);
  op.setOutImgInplace(1, 1);
  op.setBypass(0, 0);
  op.setMemoryOutputControl(1, true);
  EXPECT_EQ(op.getOutImgInplace(0), -1);
  EXPECT_EQ(op.getOutImgInplace(1), 1);
  EXPECT_EQ(op.getBypass(0), 0);
  EXPECT_EQ(op.getBypass(1), -1);
  EXPECT_FALSE(op.getMemoryOutputControl(0));
  EXPECT_TRUE(op.getMemoryOutputControl(1));
  EXPECT_TRUE(op.getOutImg(1)->getMemoryImg().getManualControl());
  op.unsetOutImgInplace(1);
  op.setBypass(0, -1);
  op.setMemoryOutputControl(1, false);
  EXPECT_EQ(op.getOutImgInplace(1), -1);
  EXPECT_EQ(op.getBypass(0), -1);
  EXPECT_FALSE(op.getMemoryOutputControl(1));
  op.setOutImgInplace(1, 0);
  op.setOutImgInplace(1, -1);
  EXPECT_EQ(op.getOutImgInplace(1), -1);
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(BaseOpTest, ControlsRefuseBadIndices) {
  BaseOp op(2, 1);
  op.setOutImgInplace(0, 1);
  op.setBypass(0, 1);
  op.getFieldContainer()->getField("instanceName")->setStringValue("i");
  const std::string both = "Invalid index (outIndex or inIndex), call is ignored!";
  for (const auto& [outIndex, inIndex] : {std::pair<VXint64, VXint64>{-1, 0}, {1, 0}, {0, -2}, {0, 2}}) {
    op.setOutImgInplace(outIndex, inIndex);
    EXPECT_EQ(messages.take(), (Messages{{VX_WARNING, 6, "BaseOp::setOutImgInplace() of module BaseOp(i)", both}}));
    op.setBypass(outIndex, inIndex);
    EXPECT_EQ(messages.take(), (Messages{{VX_WARNING, 6, "BaseOp::setBypass() of module BaseOp(i)", both}}));
  }
  for (const VXint64 outIndex : {-1, 1}) {
    op.unsetOutImgInplace(outIndex);
    EXPECT_EQ(messages.take(), (Messages{{VX_WARNING, 6, "BaseOp::unsetOutImgInplace() of module BaseOp(i)",
                                          "Invalid index (outIndex), call is ignored!"}}));
    op.setMemoryOutputControl(outIndex, true);
    EXPECT_EQ(
        messages.take(),
        (Messages{{VX_FATAL, 6, "BaseOp::setMemoryOutputControl() of module BaseOp(i)", "Ignoring function call"}}));
    EXPECT_FALSE(op.getMemoryOutputControl(outIndex));
    EXPECT_EQ(messages.take(),
              (Messages{{VX_FATAL, 6, "BaseOp::getMemoryOutputControl() of module BaseOp(i)", "Returning false"}}));
    EXPECT_EQ(op.getOutImgInplace(outIndex), -1);
    EXPECT_EQ(op.getBypass(outIndex), -1);
    EXPECT_EQ(messages.take(), Messages{});
  }
  EXPECT_EQ(op.getOutImgInplace(0), 1);
  EXPECT_EQ(op.getBypass(0), 1);
}

}  // namespace
}  // namespace vx::test
