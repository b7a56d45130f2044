#include "MessageRecorder.h"
#include "TestAllocator.h"

#include "vxBase.h"
#include "vxRuntime.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>
#include <vector>

namespace vx::test {
namespace {

using Messages = std::vector<Message>;

class Shape : public Base {
 public:
  VX_ABSTRACT_CLASS_HEADER(Shape)
};
VX_ABSTRACT_CLASS_SOURCE(Shape, "Base")

class Circle : public Shape {
 public:
  VX_CLASS_HEADER(Circle)
};
VX_CLASS_SOURCE(Circle, "Shape")

class Unregistered : public Base {
 public:
  VX_CLASS_HEADER(Unregistered)
};
VX_CLASS_SOURCE(Unregistered, "Base")

class Stranger : public Base {
 public:
  VX_CLASS_HEADER(Stranger)
};
VX_CLASS_SOURCE(Stranger, "Base")

class RuntimeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    Runtime::setRecentlyLoadedDllName("Shapes");
    Shape::initClass(nullptr, nullptr);
    Circle::initClass(nullptr, nullptr);
  }
  void TearDown() override {
    Runtime::destroyRuntimeTypesOfDll("Shapes");
    Runtime::destroyRuntimeTypesOfDll("Other");
  }
};

TEST_F(RuntimeTest, BaseIsARootFromTheStart) {
  const RuntimeType* base = Runtime::fromName("Base");
  ASSERT_NE(base, nullptr);
  EXPECT_EQ(base->getParent(), nullptr);
  EXPECT_STREQ(base->getParentName(), "No parent");
  EXPECT_TRUE(base->isAbstract());
  EXPECT_EQ(Base::getClassTypeId(), base);
  EXPECT_EQ(Runtime::getFirstEntry(), base);
}

TEST_F(RuntimeTest, ARegisteredClassHasNameLibraryParentAndCreator) {
  const RuntimeType* circle = Circle::getClassTypeId();
  ASSERT_NE(circle, nullptr);
  EXPECT_EQ(Runtime::fromName("Circle"), circle);
  EXPECT_STREQ(circle->getName(), "Circle");
  EXPECT_STREQ(circle->getDllName(), "Shapes");
  EXPECT_EQ(circle->getParent(), Shape::getClassTypeId());
  EXPECT_STREQ(circle->getParentName(), "Shape");
  EXPECT_EQ(circle->getCreateCB(), &Circle::createCB);
  EXPECT_FALSE(circle->isAbstract());
  EXPECT_TRUE(Shape::getClassTypeId()->isAbstract());
}

TEST_F(RuntimeTest, AnotherRegistrationChangesNothing) {
  const RuntimeType* before = Circle::getClassTypeId();
  EXPECT_EQ(Runtime::initType(nullptr, "Base", "Other", "Circle", nullptr), before);
  EXPECT_STREQ(before->getDllName(), "Shapes");
  EXPECT_STREQ(before->getParentName(), "Shape");
  EXPECT_FALSE(before->isAbstract());
  EXPECT_EQ(Runtime::initType(before, "Base", "Other", "Whatever", nullptr), before);
  EXPECT_EQ(Runtime::fromName("Whatever"), nullptr);
}

TEST_F(RuntimeTest, NamesAreComparedWithTheirCase) {
  EXPECT_EQ(Runtime::fromName("circle"), nullptr);
  EXPECT_EQ(Runtime::fromName(""), nullptr);
  EXPECT_EQ(Runtime::fromName(nullptr), nullptr);
}

TEST_F(RuntimeTest, AClassTakesAnotherNameAndLibraryWhenGiven) {
  Unregistered::initClass("Other", "Renamed");
  const RuntimeType* type = Runtime::fromName("Renamed");
  ASSERT_NE(type, nullptr);
  EXPECT_STREQ(type->getDllName(), "Other");
  EXPECT_EQ(Unregistered::getClassTypeId(), type);
  Runtime::destroyType("Renamed");
}

TEST_F(RuntimeTest, DescendantsAreDerivedFromTheirAncestorsAndThemselves) {
  const RuntimeType* base = Base::getClassTypeId();
  const RuntimeType* shape = Shape::getClassTypeId();
  const RuntimeType* circle = Circle::getClassTypeId();
  EXPECT_TRUE(circle->isDerivedFrom(circle));
  EXPECT_TRUE(circle->isDerivedFrom(shape));
  EXPECT_TRUE(circle->isDerivedFrom(base));
  EXPECT_FALSE(shape->isDerivedFrom(circle));
  EXPECT_FALSE(circle->isDerivedFrom(nullptr));
}

TEST_F(RuntimeTest, ALiteralNullParentMakesARootInSilence) {
  MessageRecorder messages;
  for (const char* parent : {static_cast<const char*>(nullptr), "", "NULL"}) {
    const RuntimeType* root = Runtime::initType(nullptr, parent, "Other", "Root", nullptr);
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root->getParent(), nullptr);
    Runtime::destroyType("Root");
  }
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(RuntimeTest, AnUnknownParentIsReportedAndMakesARoot) {
  MessageRecorder messages;
  const RuntimeType* orphan = Runtime::initType(nullptr, "Nobody", "Other", "Orphan", nullptr);
  ASSERT_NE(orphan, nullptr);
  EXPECT_EQ(orphan->getParent(), nullptr);
  EXPECT_EQ(messages.take(),
            (Messages{{VX_ERROR, VX_BAD_PARAMETER, "Runtime::initType()",
                       "The parent class 'Nobody' of class 'Orphan' is not registered. Registering the class as a "
                       "root."}}));
}

TEST_F(RuntimeTest, AClassWithoutANameIsRefused) {
  MessageRecorder messages;
  EXPECT_EQ(Runtime::initType(nullptr, "Base", "Other", "", nullptr), nullptr);
  EXPECT_EQ(Runtime::initType(nullptr, "Base", "Other", nullptr, nullptr), nullptr);
  const Message refusal{VX_ERROR, VX_BAD_PARAMETER, "Runtime::initType()",
                        "A class without a name can't be registered."};
  EXPECT_EQ(messages.take(), (Messages{refusal, refusal}));
}

TEST_F(RuntimeTest, RemovedEntriesStayReadableAndComeBackInPlace) {
  const RuntimeType* circle = Circle::getClassTypeId();
  Circle::destroyClass();
  EXPECT_EQ(Runtime::fromName("Circle"), nullptr);
  EXPECT_EQ(Circle::getClassTypeId(), circle);
  EXPECT_STREQ(circle->getName(), "Circle");
  EXPECT_TRUE(circle->isAbstract()) << "a removed class can't be created any more";
  Circle::initClass(nullptr, nullptr);
  EXPECT_EQ(Circle::getClassTypeId(), circle);
  EXPECT_EQ(Runtime::fromName("Circle"), circle);
  EXPECT_FALSE(circle->isAbstract());
  Runtime::destroyType("Circle");
  Runtime::destroyType("Circle");
  Runtime::destroyType(nullptr);
}

TEST_F(RuntimeTest, TheClassesOfOneLibraryAreRemovedTogether) {
  Runtime::initType(nullptr, "Base", "Other", "Lodger", nullptr);
  Runtime::destroyRuntimeTypesOfDll("Shapes");
  Runtime::destroyRuntimeTypesOfDll("No such library");
  Runtime::destroyRuntimeTypesOfDll(nullptr);
  EXPECT_EQ(Runtime::fromName("Shape"), nullptr);
  EXPECT_EQ(Runtime::fromName("Circle"), nullptr);
  EXPECT_NE(Runtime::fromName("Lodger"), nullptr);
  EXPECT_NE(Runtime::fromName("Base"), nullptr);
}

TEST_F(RuntimeTest, IterationGivesAllEntriesInOrderOfRegistration) {
  std::vector<std::string> names;
  for (const RuntimeType* type = Runtime::getFirstEntry(); type; type = Runtime::getNextEntry()) {
    names.emplace_back(type->getName());
  }
  ASSERT_GE(names.size(), 3U);
  EXPECT_EQ(names.front(), "Base");
  EXPECT_EQ(names[names.size() - 2], "Shape");
  EXPECT_EQ(names.back(), "Circle");
  EXPECT_EQ(Runtime::getNextEntry(), nullptr);
  EXPECT_EQ(Runtime::getNextEntry(), nullptr);
}

TEST_F(RuntimeTest, IterationSurvivesTheRemovalOfWhatItHasPassed) {
  for (const RuntimeType* type = Runtime::getFirstEntry(); type; type = Runtime::getNextEntry()) {
    if (type == Shape::getClassTypeId()) break;
  }
  Runtime::destroyType("Shape");
  EXPECT_EQ(Runtime::getNextEntry(), Circle::getClassTypeId());
}

TEST_F(RuntimeTest, InstancesMadeByNameAreCountedForTheirLibrary) {
  EXPECT_EQ(Runtime::getNumInstancesDependentOnDll("Shapes"), 0);
  auto* first = static_cast<Circle*>(Circle::getClassTypeId()->getCreateCB()());
  auto* second = static_cast<Circle*>(Circle::createCB());
  EXPECT_EQ(first->typeInstanceCounter(), 2);
  EXPECT_EQ(Runtime::getNumInstancesDependentOnDll("Shapes"), 2);
  EXPECT_STREQ(first->getTypeIdName(), "Circle");
  delete first;
  delete static_cast<Base*>(second);
  EXPECT_EQ(Runtime::getNumInstancesDependentOnDll("Shapes"), 0);
  Circle counted;
  ++counted.typeInstanceCounter();
  EXPECT_EQ(Runtime::getNumInstancesDependentOnDll("Shapes"), 1);
  --counted.typeInstanceCounter();
}

class Final final : public Base {
 public:
  VX_CLASS_HEADER(Final)
};
VX_CLASS_SOURCE(Final, "Base")

TEST_F(RuntimeTest, AFinalClassCanBeMadeByNameToo) {
  Final::initClass(nullptr, nullptr);
  auto* object = static_cast<Base*>(static_cast<Final*>(Final::createCB()));
  EXPECT_STREQ(object->getTypeIdName(), "Final");
  delete object;
}

static_assert(std::is_standard_layout_v<RuntimeType>);
static_assert(offsetof(RuntimeType, _name) == 0);
static_assert(offsetof(RuntimeType, _dllName) == sizeof(void*));
static_assert(offsetof(RuntimeType, _parent) == 2 * sizeof(void*));
static_assert(offsetof(RuntimeType, _createCB) == 6 * sizeof(void*));
static_assert(offsetof(RuntimeType, _instanceCounter) == 7 * sizeof(void*));

TEST_F(RuntimeTest, TheMembersOfAnEntryMayBeReadWithoutACall) {
  const RuntimeType* circle = Circle::getClassTypeId();
  EXPECT_STREQ(circle->_name, "Circle");
  EXPECT_STREQ(circle->_dllName, "Shapes");
  EXPECT_EQ(circle->_parent, Shape::getClassTypeId());
  EXPECT_EQ(circle->_createCB, &Circle::createCB);
  EXPECT_EQ(Shape::getClassTypeId()->_createCB, nullptr);
  EXPECT_EQ(&Circle().typeInstanceCounter(), &circle->_instanceCounter);
}

TEST_F(RuntimeTest, TheNumberOfInstancesOfAnUnknownLibraryIsNegative) {
  EXPECT_LT(Runtime::getNumInstancesDependentOnDll("No such library"), 0);
  EXPECT_LT(Runtime::getNumInstancesDependentOnDll(nullptr), 0);
}

TEST_F(RuntimeTest, TheNameOfAnUnregisteredClassIsReportedOnceForEachCall) {
  MessageRecorder messages;
  const Stranger stranger;
  EXPECT_EQ(stranger.getTypeId(), nullptr);
  EXPECT_STREQ(stranger.getTypeIdName(), "<Name of Uninitialized Type>");
  EXPECT_STREQ(stranger.getTypeIdName(), "<Name of Uninitialized Type>");
  const Message report{VX_ERROR, VX_OBJECT_NOT_INITIALIZED, "Stranger",
                       "Returning '<Name of Uninitialized Type>'instead of real type name since type is not "
                       "initialized. Did you forget to call 'Stranger::initClass' during library initialization?"};
  EXPECT_EQ(messages.take(), (Messages{report, report}));
}

TEST_F(RuntimeTest, TheCounterOfAnUnregisteredClassIsFatal) {
  MessageRecorder messages;
  Stranger stranger;
  try {
    stranger.typeInstanceCounter();
    FAIL() << "nothing was thrown";
  } catch (int code) {
    EXPECT_EQ(code, VX_BAD_POINTER);
  }
  const auto taken = messages.take();
  ASSERT_EQ(taken.size(), 2U);
  EXPECT_EQ(taken[0],
            (Message{VX_FATAL, VX_OBJECT_NOT_INITIALIZED, "Stranger", "Cannot determine counter reference."}));
  EXPECT_EQ(taken[1].type, VX_FATAL);
  EXPECT_EQ(taken[1].code, VX_BAD_POINTER);
  EXPECT_EQ(taken[1].file, taken[0].file);
  EXPECT_EQ(taken[1].line, taken[0].line);
}

TEST_F(RuntimeTest, AnInstanceOfAnUnregisteredClassIsMadeAndNotCounted) {
  MessageRecorder messages;
  delete static_cast<Stranger*>(Stranger::createCB());
  EXPECT_EQ(messages.take(), Messages{});
}

TEST_F(RuntimeTest, AfterDestroyNothingIsFoundAndTheRootComesBackWithTheNextClass) {
  std::vector<const RuntimeType*> before;
  for (const RuntimeType* type = Runtime::getFirstEntry(); type; type = Runtime::getNextEntry()) before.push_back(type);
  Runtime::destroy();
  EXPECT_EQ(Runtime::getFirstEntry(), nullptr);
  EXPECT_EQ(Runtime::fromName("Base"), nullptr);
  EXPECT_STREQ(Circle::getClassTypeId()->getName(), "Circle");
  EXPECT_TRUE(Circle::getClassTypeId()->isDerivedFrom(Base::getClassTypeId()));
  Shape::initClass(nullptr, nullptr);
  EXPECT_EQ(Runtime::fromName("Base"), Base::getClassTypeId());
  EXPECT_EQ(Shape::getClassTypeId()->getParent(), Base::getClassTypeId());
}

TEST_F(RuntimeTest, ARegistrationWithoutMemoryIsRefusedAndLeavesTheTableAsItWas) {
  const char* const name = "AClassWithANameThatIsTooLongForTheRoomInsideAString";
  long numFailures = 0;
  for (;; ++numFailures) {
    MessageRecorder messages;
    messages.pause();
    VXErrorOutput.setMessageFilter(0);
    const RuntimeType* type = nullptr;
    {
      const FailingAllocations failing(numFailures);
      type = Runtime::initType(nullptr, "Base", "Other", name, nullptr);
    }
    if (type) break;
    EXPECT_EQ(Runtime::fromName(name), nullptr);
    int numEntries = 0;
    for (const RuntimeType* entry = Runtime::getFirstEntry(); entry; entry = Runtime::getNextEntry()) ++numEntries;
    EXPECT_GE(numEntries, 3);
  }
  EXPECT_GE(numFailures, 2);
  EXPECT_STREQ(Runtime::fromName(name)->getName(), name);
}

TEST(Base, HasAnEmptyPersistentState) {
  Circle circle;
  EXPECT_EQ(circle.getPersistentState(), nullptr);
  circle.setPersistentState("anything");
  circle.addStateToTree(nullptr);
  circle.readStateFromTree(nullptr);
  circle.clearPersistentState(nullptr);
  circle.clearPersistentState(VXStrDup("text", VX_RETURN_NULL));
}

}  // namespace
}  // namespace vx::test
