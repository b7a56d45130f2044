// Blocks of registered voxels: their own operations do all the work, on both sides of a copy.

#include "MessageRecorder.h"
#include "SubImgReference.h"
#include "TestTypes.h"

#include "vxTSubImg.h"
#include "vxTypeInfos.h"

#include <atomic>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <thread>

namespace vx::test {
namespace {

const std::vector<Message> none;

const SubImgBox outBox(Position(0), Position(5, 2, 1, 1, 1, 1));
const SubImgBox inBox(Position(2, 1, 0, 0, 0, 0), Position(8, 2, 2, 1, 0, 1));
const SubImgBox common = SubImgBox::intersect(outBox, inBox);

// A second type in the carrier of the complex numbers, whose numbers stand for twice themselves: casts from others
// double the real part, casts to others halve it.
struct Doubled {
  static VXTypeInfos infos;
  static Complex load(const unsigned char* v) {
    Complex c;
    std::memcpy(&c, v, sizeof c);
    return c;
  }
  static void store(Complex c, unsigned char* r) { std::memcpy(r, &c, sizeof c); }
  static void castFromOther(const VXTypeInfos* other, const unsigned char* v, unsigned char* r) {
    store({static_cast<float>(2 * other->castToDouble(v)), 1}, r);
  }
  static void castFromDouble(double x, unsigned char* r) { store({static_cast<float>(2 * x), 1}, r); }
  static void castFromInt(int x, unsigned char* r) { castFromDouble(x, r); }
  static VXldouble castToDouble(const unsigned char* v) { return load(v).re / 2; }
  static int castToInt(const unsigned char* v) { return static_cast<int>(load(v).re / 2); }
};
VXTypeInfos Doubled::infos;

VXDataType doubledType() {
  static const VXDataType number = [] {
    Doubled::infos = *VXGetTypeInfosForDataType(complexType());
    Doubled::infos.name = "doubled";
    Doubled::infos.dataType = -1;
    Doubled::infos.castFromOtherType = &Doubled::castFromOther;
    Doubled::infos.castFromDouble = &Doubled::castFromDouble;
    Doubled::infos.castFromInt = &Doubled::castFromInt;
    Doubled::infos.castToDouble = &Doubled::castToDouble;
    Doubled::infos.castToInt = &Doubled::castToInt;
    VXRegisterTypeInfos(&Doubled::infos);
    return Doubled::infos.dataType;
  }();
  return number;
}

class RegisteredSubImgTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    ASSERT_TRUE(registerTestTypes());
    ASSERT_GE(doubledType(), 10);
  }
  void SetUp() override { rememberSlots(); }
  void TearDown() override {
    EXPECT_EQ(recorder.take(), none);
    EXPECT_EQ(std::memcmp(before.data(), VXTypeInfosTable, before.size()), 0) << "the slots are as they were";
  }
  // Gives each voxel of a block a value of its own, by the cast of its type.
  static void number(TestBlock& block) {
    const VXTypeInfos& infos = *VXGetTypeInfosForDataType(block.img.getDataType());
    int i = 0;
    forEachPosition(block.img.getBox(), [&](const Position& p) { infos.castFromInt(i++, block.at(p)); });
  }
  void rememberSlots() { std::memcpy(before.data(), VXTypeInfosTable, before.size()); }
  static std::string nameOf(VXDataType type) { return VXNameFromDataType(type); }

  std::vector<unsigned char> before = std::vector<unsigned char>(sizeof VXTypeInfosTable);
  MessageRecorder recorder;
};

std::vector<VXDataType> registeredTypes() {
  return {complexType(), vector3Type(), mixedType(), largeType(), doubledType()};
}

void expectSame(const TestBlock& block, const TestBlock& expected) { EXPECT_TRUE(block.bytes() == expected.bytes()); }

TEST_F(RegisteredSubImgTest, CopiesBetweenAllRegisteredTypesUseTheCastOfTheOutput) {
  for (const VXDataType outType : registeredTypes()) {
    for (const VXDataType inType : registeredTypes()) {
      SCOPED_TRACE(nameOf(inType) + " into " + nameOf(outType));
      TestBlock in(inBox, inType), out(outBox, outType), expected(outBox, outType);
      number(in);
      const VXTypeInfos& outInfos = *VXGetTypeInfosForDataType(outType);
      const VXTypeInfos& inInfos = *VXGetTypeInfosForDataType(inType);
      forEachPosition(common, [&](const Position& p) {
        if (outType == inType) {
          std::memcpy(expected.at(p), in.at(p), VXSizeOf(outType));
        } else {
          std::memset(expected.at(p), 0, VXSizeOf(outType));
          outInfos.castFromOtherType(&inInfos, in.at(p), expected.at(p));
        }
      });
      out.img.copySubImage(in.img, ScaleShiftData());
      expectSame(out, expected);
    }
  }
}

TEST_F(RegisteredSubImgTest, MappedCopiesMultiplyAndAddByTheInputThenCast) {
  for (const VXDataType outType : registeredTypes()) {
    for (const VXDataType inType : registeredTypes()) {
      if (inType == mixedType()) continue;  // has no arithmetic
      SCOPED_TRACE(nameOf(inType) + " into " + nameOf(outType));
      TestBlock in(inBox, inType), out(outBox, outType), expected(outBox, outType);
      number(in);
      const VXTypeInfos& outInfos = *VXGetTypeInfosForDataType(outType);
      const VXTypeInfos& inInfos = *VXGetTypeInfosForDataType(inType);
      unsigned char voxel[512];
      forEachPosition(common, [&](const Position& p) {
        inInfos.multWithDouble(in.at(p), 3, voxel);
        inInfos.plusDouble(voxel, 2, voxel);
        if (outType == inType) {
          std::memcpy(expected.at(p), voxel, VXSizeOf(outType));
        } else {
          std::memset(expected.at(p), 0, VXSizeOf(outType));
          outInfos.castFromOtherType(&inInfos, voxel, expected.at(p));
        }
      });
      out.img.copySubImage(in.img, ScaleShiftData(3, 2));
      expectSame(out, expected);
    }
  }
}

TEST_F(RegisteredSubImgTest, StandardVoxelsAreCastIntoRegisteredOnes) {
  for (const VXDataType outType : registeredTypes()) {
    for (VXDataType inType = 0; inType < 10; ++inType) {
      for (const ScaleShiftData mapping : {ScaleShiftData(), ScaleShiftData(0.5, 1.25)}) {
        SCOPED_TRACE(nameOf(inType) + " into " + nameOf(outType));
        TestBlock in(inBox, inType), out(outBox, outType), expected(outBox, outType);
        int i = 0;
        forEachPosition(inBox, [&](const Position& p) { writeVoxel(inType, {true, 0, i++ + 0.75}, in.at(p)); });
        const VXTypeInfos& infos = *VXGetTypeInfosForDataType(outType);
        forEachPosition(common, [&](const Position& p) {
          const Value v = readVoxel(inType, in.at(p));
          std::memset(expected.at(p), 0, VXSizeOf(outType));
          if (mapping != ScaleShiftData()) {
            infos.castFromDouble(v.real * mapping.scale + mapping.shift, expected.at(p));
          } else if (v.isFloat) {
            infos.castFromDouble(v.real, expected.at(p));
          } else {
            infos.castFromInt(static_cast<int>(v.whole), expected.at(p));
          }
        });
        out.img.copySubImage(in.img, mapping);
        expectSame(out, expected);
      }
    }
  }
}

TEST_F(RegisteredSubImgTest, RegisteredVoxelsAreCastIntoStandardOnes) {
  for (const VXDataType inType : registeredTypes()) {
    for (VXDataType outType = 0; outType < 10; ++outType) {
      for (const ScaleShiftData mapping : {ScaleShiftData(), ScaleShiftData(3, 2)}) {
        if (mapping != ScaleShiftData() && inType == mixedType()) continue;
        SCOPED_TRACE(nameOf(inType) + " into " + nameOf(outType));
        TestBlock in(inBox, inType), out(outBox, outType), expected(outBox, outType);
        number(in);
        const VXTypeInfos& infos = *VXGetTypeInfosForDataType(inType);
        const bool isFloat = outType >= 6 && outType <= 8;
        unsigned char voxel[512];
        forEachPosition(common, [&](const Position& p) {
          std::memcpy(voxel, in.at(p), VXSizeOf(inType));
          if (mapping != ScaleShiftData()) {
            infos.multWithDouble(voxel, mapping.scale, voxel);
            infos.plusDouble(voxel, mapping.shift, voxel);
          }
          if (isFloat) {
            writeVoxel(outType, {true, 0, infos.castToDouble(voxel)}, expected.at(p));
          } else {
            writeVoxel(outType, {false, infos.castToInt(voxel), 0}, expected.at(p));
          }
        });
        out.img.copySubImage(in.img, mapping);
        expectSame(out, expected);
      }
    }
  }
}

TEST_F(RegisteredSubImgTest, ATypeWithoutCastsIsCopiedToItselfAndReportsOtherwise) {
  TestBlock in(inBox, sparseType()), out(outBox, sparseType()), expected(outBox, sparseType());
  forEachPosition(inBox, [&](const Position& p) { in.set(p, Sparse{VXint16(p.x), VXint16(p.y)}); });
  forEachPosition(common, [&](const Position& p) { expected.set(p, in.get<Sparse>(p)); });
  out.img.copySubImage(in.img, ScaleShiftData());
  expectSame(out, expected);
  EXPECT_EQ(recorder.take(), none);

  TestBlock numbers(outBox, VXint32Type);
  numbers.img.copySubImage(in.img, ScaleShiftData());
  forEachPosition(common, [&](const Position& p) { EXPECT_EQ(numbers.get<VXint32>(p), 0); });
  const std::vector<Message> messages = recorder.take();
  EXPECT_EQ(messages.size(), static_cast<std::size_t>(common.getNumVoxels()));
  for (const Message& message : messages) {
    EXPECT_EQ(message.type, VX_FATAL);
    EXPECT_EQ(message.code, VX_MISUSED_INTERFACE);
  }
}

TEST_F(RegisteredSubImgTest, FillsCastTheValueOrCopyTheVoxel) {
  for (const VXDataType type : registeredTypes()) {
    SCOPED_TRACE(nameOf(type));
    const VXTypeInfos& infos = *VXGetTypeInfosForDataType(type);
    TestBlock out(outBox, type), expected(outBox, type);
    unsigned char voxel[512] = {};
    infos.castFromDouble(5, voxel);
    const SubImgBox hole(Position(1), Position(3, 1, 1, 1, 1, 1));
    forEachPosition(outBox, [&](const Position& p) {
      if (!contains(hole, p)) std::memcpy(expected.at(p), voxel, VXSizeOf(type));
    });
    out.img.fillBordersWithLDoubleValue(hole, 5);
    expectSame(out, expected);

    std::memset(voxel, 0, sizeof voxel);
    infos.castFromDouble(6, voxel);
    forEachPosition(outBox, [&](const Position& p) {
      if (!contains(hole, p)) std::memcpy(expected.at(p), voxel, VXSizeOf(type));
    });
    out.img.fillBordersWithTypeData(hole, voxel);
    expectSame(out, expected);

    forEachPosition(outBox, [&](const Position& p) { std::memcpy(expected.at(p), voxel, VXSizeOf(type)); });
    out.img.fillSubImg(6);
    expectSame(out, expected);
    out.img.fillSubImgWithTypeData(voxel);
    expectSame(out, expected);
    EXPECT_TRUE(out.img.isOneValued());
    infos.castFromDouble(7, out.at(outBox.v2));
    EXPECT_FALSE(out.img.isOneValued());
  }
}

TEST_F(RegisteredSubImgTest, BordersAreCopiedCastAndClamped) {
  const SubImgBox hole(Position(2, 1, 0, 0, 0, 1), Position(4, 1, 1, 0, 0, 1));
  for (const VXDataType outType : registeredTypes()) {
    for (const VXDataType inType : registeredTypes()) {
      SCOPED_TRACE(nameOf(inType) + " into " + nameOf(outType));
      const VXTypeInfos& outInfos = *VXGetTypeInfosForDataType(outType);
      TestBlock in(outBox, inType), out(outBox, outType), expected(outBox, outType);
      number(in);
      forEachPosition(outBox, [&](const Position& p) {
        if (contains(hole, p)) return;
        if (outType == inType) {
          std::memcpy(expected.at(p), in.at(p), VXSizeOf(outType));
        } else {
          std::memset(expected.at(p), 0, VXSizeOf(outType));
          outInfos.castFromOtherType(VXGetTypeInfosForDataType(inType), in.at(p), expected.at(p));
        }
      });
      out.img.fillBordersWithInputValues(hole, in.img);
      expectSame(out, expected);
    }
    TestBlock block(outBox, outType), expected(outBox, outType);
    number(block);
    forEachPosition(
        outBox, [&](const Position& p) { std::memcpy(expected.at(p), block.at(hole.clamp(p)), VXSizeOf(outType)); });
    block.img.fillBordersWithClampedInputValues(hole);
    expectSame(block, expected);
  }
}

TEST_F(RegisteredSubImgTest, TheRangeIsFoundByTheOrderOfTheType) {
  for (const VXDataType type : {complexType(), vector3Type(), largeType()}) {
    SCOPED_TRACE(nameOf(type));
    TestBlock block(outBox, type);
    number(block);
    VXldouble minValue = -1, maxValue = -1;
    EXPECT_EQ(block.img.calcMinMax(minValue, maxValue, nullptr), outBox.getNumVoxels());
    const VXTypeInfos& infos = *VXGetTypeInfosForDataType(type);
    EXPECT_EQ(minValue, infos.castToDouble(block.at(outBox.v1)));
    EXPECT_EQ(maxValue, infos.castToDouble(block.at(outBox.v2)));
    const SubImgBox part(Position(2, 1, 0, 0, 0, 0), Position(3, 1, 0, 0, 0, 9));
    EXPECT_EQ(block.img.calcMinMax(minValue, maxValue, &part), 4);
    EXPECT_EQ(minValue, infos.castToDouble(block.at(part.v1)));
    EXPECT_EQ(maxValue, infos.castToDouble(block.at(Position(3, 1, 0, 0, 0, 1))));
    const SubImgBox outside(Position(20), Position(30));
    EXPECT_EQ(block.img.calcMinMax(minValue, maxValue, &outside), 0);
    EXPECT_EQ(minValue, 0);
    EXPECT_EQ(maxValue, 0);
  }
}

TEST_F(RegisteredSubImgTest, TypedViewsBringTheirTypesIntoTheSlots) {
  TestBlock a(outBox, complexType()), b(outBox, doubledType());
  number(b);
  TSubImg<VXTCarrierType<8, 11>> out(a.img);
  out.copySubImg(TSubImg<VXTCarrierType<8, 31>>(b.img));
  forEachPosition(outBox, [&](const Position& p) { EXPECT_EQ(a.get<Complex>(p).re, b.get<Complex>(p).re); });
  TSubImg<VXTCarrierType<8, 11>>(b.img).copySubImg(TSubImg<VXTCarrierType<8, 31>>(a.img), ScaleShiftData(1, 1));
  forEachPosition(outBox, [&](const Position& p) {
    EXPECT_EQ(b.get<Complex>(p), (Complex{2 * (a.get<Complex>(p).re + 1), 1}));
  });
}

TEST_F(RegisteredSubImgTest, AViewReportsACarrierThatDoesNotFit) {
  const TestBlock block(outBox, complexType());
  const TSubImg<VXTCarrierType<8, 11>> output(block.img);
  const TSubImg<VXTCarrierType<8, 31>> input(block.img);
  EXPECT_EQ(recorder.take(), none);
  const std::vector<Message> mismatch({{VX_FATAL, VX_BAD_DATA_TYPE, "TSubImg::TSubImg()",
                                        "Mismatch of data type between argument and template typename."}});
  const TSubImg<VXTCarrierType<12, 12>> wideOutput(block.img);
  EXPECT_EQ(recorder.take(), mismatch);
  const TSubImg<VXTCarrierType<4, 30>> narrowInput(block.img);
  EXPECT_EQ(recorder.take(), mismatch);
  const TSubImg<VXint64> number(block.img);
  EXPECT_EQ(recorder.take(), mismatch);
  const TSubImg<VXint64> invalid(SubImg(outBox, -1, block.img.getData()));
  EXPECT_EQ(recorder.take(), mismatch);
}

TEST_F(RegisteredSubImgTest, AnInvalidInputTypeLeavesBlockAndSlotsAsTheyWere) {
  TestBlock out(outBox, complexType()), expected(outBox, complexType());
  const SubImg in(inBox, -1, out.img.getData());
  const char* const reason = "Type case not executed, case type -1 does not exist.";
  out.img.copySubImage(in, ScaleShiftData(2, 1));
  EXPECT_EQ(recorder.take(), std::vector<Message>({{VX_FATAL, VX_BAD_DATA_TYPE, "_copySubImage##DTYPE", reason}}));
  out.img.fillBordersWithInputValues(SubImgBox(), in);
  EXPECT_EQ(recorder.take(), std::vector<Message>({{VX_FATAL, VX_BAD_DATA_TYPE, "_fillBWIV##ODTYPE", reason}}));
  expectSame(out, expected);
}

// A registered type may be stored as a standard one; its slot of the input side has no loops.
TEST_F(RegisteredSubImgTest, ATypeStoredAsAStandardOneIsWrittenButNotReadAsInput) {
  static VXTypeInfos infos = *VXGetTypeInfosForDataType(VXint16Type);
  infos.name = "test int16";
  infos.dataType = -1;
  ASSERT_EQ(VXRegisterTypeInfos(&infos), 1);
  const VXDataType type = infos.dataType;
  ASSERT_GE(type, 10);

  TestBlock block(outBox, type);
  block.img.fillSubImg(-3.9);
  forEachPosition(outBox, [&](const Position& p) { ASSERT_EQ(block.get<VXint16>(p), -3); });
  EXPECT_TRUE(block.img.isOneValued());
  VXldouble minValue = 0, maxValue = 0;
  EXPECT_EQ(block.img.calcMinMax(minValue, maxValue, nullptr), outBox.getNumVoxels());
  EXPECT_EQ(minValue, -3);
  TestBlock numbers(outBox, VXfloatType);
  numbers.img.fillSubImg(8);
  block.img.copySubImage(numbers.img, ScaleShiftData(2, 1));
  EXPECT_EQ(block.get<VXint16>(outBox.v2), 17);
  EXPECT_EQ(recorder.take(), none);

  const char* const reason = "Type case not executed, case type 22 does not exist.";
  numbers.img.copySubImage(block.img, ScaleShiftData());
  EXPECT_EQ(recorder.take(), std::vector<Message>({{VX_FATAL, VX_BAD_DATA_TYPE, "_copySubImage##DTYPE", reason}}));
  numbers.img.fillBordersWithInputValues(SubImgBox(), block.img);
  EXPECT_EQ(recorder.take(), std::vector<Message>({{VX_FATAL, VX_BAD_DATA_TYPE, "_fillBWIV##ODTYPE", reason}}));
  EXPECT_EQ(numbers.get<float>(outBox.v2), 8);
}

TEST_F(RegisteredSubImgTest, WorkersShareATypeInItsSlot) {
  TestBlock in(inBox, complexType()), expected(outBox, vector3Type());
  number(in);
  expected.img.copySubImage(in.img, ScaleShiftData(2, 1));
  _VXSetMultithreadingActive(1);
  std::vector<std::thread> workers;
  std::atomic<int> numFailures = 0;
  for (int i = 0; i < 3; ++i) {
    workers.emplace_back([&] {
      for (int round = 0; round < 20; ++round) {
        TestBlock out(outBox, vector3Type());
        out.img.copySubImage(in.img, ScaleShiftData(2, 1));
        if (out.bytes() != expected.bytes()) ++numFailures;
      }
    });
  }
  for (std::thread& worker : workers) worker.join();
  _VXSetMultithreadingActive(0);
  EXPECT_EQ(numFailures, 0);
  // A type stays in its slot if the last worker to leave had found it there. Nothing else may stand in a slot.
  for (VXint32 slot = 0; slot < VX_NUM_TYPE_SLOTS; ++slot) {
    const VXDataType held = VXTypeInfosTable[slot].dataType;
    const VXDataType heldBefore = reinterpret_cast<const VXTypeInfos*>(before.data())[slot].dataType;
    EXPECT_TRUE(held == heldBefore || held == complexType() || held == vector3Type()) << "slot " << slot;
  }
  rememberSlots();
}

TEST_F(RegisteredSubImgTest, PrintsTheTextOfEachVoxel) {
  TestBlock block(SubImgBox(Position(0), Position(1, 0, 0, 0, 0, 0)), complexType());
  block.set(Position(0), Complex{1, 2});
  block.set(Position(1, 0, 0, 0, 0, 0), Complex{3, -4});
  std::ostringstream stream;
  stream << block.img;
  EXPECT_NE(stream.str().find("(0,0,0,0,0,0): 1 2 3 -4\n"), std::string::npos) << stream.str();
}

TEST_F(RegisteredSubImgTest, AnExceptionLeavesTheSlotsAsTheyWere) {
  SubImg block(outBox, complexType());
  EXPECT_THROW(block.fillSubImg(1), int);
  EXPECT_EQ(recorder.take().size(), 1U);
}

}  // namespace
}  // namespace vx::test
