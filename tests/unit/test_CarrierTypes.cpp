// Carriers of all twenty kinds, with types of as many floats as they have room for.

#include "MessageRecorder.h"

#include "vxCarrierTypes.h"

#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using vx::test::Message;
using vx::test::MessageRecorder;

// The operations that carriers called, in their order.
using Calls = std::vector<std::string>;
Calls calls;

// A registered type of `size` bytes: floats, which numbers are written to as they are, with `step` added by casts from
// numbers so that the types of the two sides differ.
template <unsigned int size, int step>
struct FloatsType {
  static constexpr unsigned int numFloats = size / 4;
  using Floats = float[numFloats];

  static void read(const unsigned char* v, Floats& floats) { std::memcpy(floats, v, size); }
  static void fill(double value, unsigned char* r) {
    Floats floats;
    for (float& component : floats) component = static_cast<float>(value);
    std::memcpy(r, floats, size);
  }
  template <class Function>
  static void map(const unsigned char* v, unsigned char* r, Function function) {
    Floats floats;
    read(v, floats);
    for (float& component : floats) component = static_cast<float>(function(component));
    std::memcpy(r, floats, size);
  }
  static float first(const unsigned char* v) {
    Floats floats;
    read(v, floats);
    return floats[0];
  }

  static int castToInt(const unsigned char* v) {
    calls.emplace_back("castToInt");
    return static_cast<int>(first(v));
  }
  static VXldouble castToDouble(const unsigned char* v) {
    calls.emplace_back("castToDouble");
    return first(v);
  }
  static void castFromInt(int x, unsigned char* r) {
    calls.emplace_back("castFromInt");
    fill(x + step, r);
  }
  static void castFromDouble(double x, unsigned char* r) {
    calls.emplace_back("castFromDouble");
    fill(x + step, r);
  }
  static void castFromOtherType(const VXTypeInfos* other, const unsigned char* v, unsigned char* r) {
    calls.push_back("castFromOtherType " + std::string(other->name));
    float component;
    std::memcpy(&component, v, sizeof component);
    fill(component, r);
  }
  static void multWithDouble(const unsigned char* v, double x, unsigned char* r) {
    calls.emplace_back("multWithDouble");
    map(v, r, [&](double component) { return component * x; });
  }
  static void plusDouble(const unsigned char* v, double x, unsigned char* r) {
    calls.emplace_back("plusDouble");
    map(v, r, [&](double component) { return component + x; });
  }
  static short isEqualToType(const unsigned char* a, const unsigned char* b) {
    calls.emplace_back("isEqualToType");
    return std::memcmp(a, b, size) == 0;
  }
  static short isSmallerThanType(const unsigned char* a, const unsigned char* b) {
    calls.emplace_back("isSmallerThanType");
    return first(a) < first(b);
  }
  static short isGreaterThanType(const unsigned char* a, const unsigned char* b) {
    calls.emplace_back("isGreaterThanType");
    return first(a) > first(b);
  }

  static const std::string& name() {
    static const std::string text = "floats" + std::to_string(size) + "+" + std::to_string(step);
    return text;
  }

  // Number of the type, which is registered at the first call.
  static VXDataType number() {
    static VXTypeInfos record;
    static const std::string codes(numFloats, 'f');
    static const Floats voxel = {};
    static const bool isRegistered = [] {
      VXInitializeTypes();
      VXTypeSetDefaultFunctionPointers(&record);
      record.castToInt = &castToInt;
      record.castToDouble = &castToDouble;
      record.castFromInt = &castFromInt;
      record.castFromDouble = &castFromDouble;
      record.castFromOtherType = &castFromOtherType;
      record.multWithDouble = &multWithDouble;
      record.plusDouble = &plusDouble;
      record.isEqualToType = &isEqualToType;
      record.isSmallerThanType = &isSmallerThanType;
      record.isGreaterThanType = &isGreaterThanType;
      const unsigned char* components[numFloats];
      for (unsigned int i = 0; i < numFloats; ++i) components[i] = reinterpret_cast<const unsigned char*>(&voxel[i]);
      return VXTypeInfosInit(&record, size, name().c_str(), 0, 0, nullptr, nullptr, nullptr, codes.c_str(), 0,
                             VXfloatType, components, 0, nullptr) &&
             VXRegisterTypeInfos(&record);
    }();
    return isRegistered ? record.dataType : -1;
  }
};

template <class Pair>
class CarrierTypesTest : public testing::Test {
 public:
  static constexpr bool isInput = Pair::id >= 30;
  static constexpr int otherId = isInput ? Pair::id - 20 : Pair::id + 20;
  using Carrier = VXTCarrierType<Pair::size, Pair::id>;
  using OtherCarrier = VXTCarrierType<Pair::size, otherId>;
  using Own = FloatsType<Pair::size, 0>;
  using Foreign = FloatsType<Pair::size, 1>;

 protected:
  CarrierTypesTest() : _pushed(VXTypeInfosPushAndSetTypes(Own::number(), isInput, Foreign::number(), !isInput)) {
    calls.clear();
  }
  ~CarrierTypesTest() override { VXTypeInfosPop(_pushed); }

  static Calls taken() { return std::exchange(calls, {}); }

 private:
  VXTypePushInfo _pushed;
};

template <unsigned int bytes, int slot>
struct Pair {
  static constexpr unsigned int size = bytes;
  static constexpr int id = slot;
};
using Pairs =
    testing::Types<Pair<4, 10>, Pair<8, 11>, Pair<12, 12>, Pair<16, 13>, Pair<24, 14>, Pair<32, 15>, Pair<64, 16>,
                   Pair<128, 17>, Pair<256, 18>, Pair<512, 19>, Pair<4, 30>, Pair<8, 31>, Pair<12, 32>, Pair<16, 33>,
                   Pair<24, 34>, Pair<32, 35>, Pair<64, 36>, Pair<128, 37>, Pair<256, 38>, Pair<512, 39>>;
TYPED_TEST_SUITE(CarrierTypesTest, Pairs);

TYPED_TEST(CarrierTypesTest, HoldsItsBytesAndNothingElse) {
  using C = typename TestFixture::Carrier;
  EXPECT_EQ(sizeof(C), TypeParam::size);
  EXPECT_EQ(sizeof(C[3]), 3 * TypeParam::size);
  EXPECT_EQ(alignof(C), 1U);
  EXPECT_TRUE(std::is_trivially_copyable_v<C>);
  EXPECT_TRUE(std::is_trivially_default_constructible_v<C>);
  EXPECT_TRUE(std::is_standard_layout_v<C>);
  EXPECT_EQ(VXSizeOfPhysicalType(TestFixture::isInput ? TypeParam::id - 20 : TypeParam::id), TypeParam::size);
}

TYPED_TEST(CarrierTypesTest, IntegersComeThroughCastFromInt) {
  using C = typename TestFixture::Carrier;
  const auto test = [](auto number, int expected) {
    const C made(number);
    C assigned;
    assigned = number;
    EXPECT_EQ(TestFixture::taken(), (Calls{"castFromInt", "castFromInt"}));
    EXPECT_EQ(TestFixture::Own::first(made.data()), static_cast<float>(expected));
    EXPECT_EQ(std::memcmp(made.data(), assigned.data(), sizeof made), 0);
  };
  test(true, 1);
  test('a', 97);
  test(static_cast<signed char>(-3), -3);
  test(static_cast<unsigned char>(200), 200);
  test(static_cast<short>(-300), -300);
  test(static_cast<unsigned short>(60000), 60000);
  test(-70000, -70000);
  test(4294967295U, -1);
  test(5L, 5);
  test(6UL, 6);
  test(4294967297LL, 1);
  test(7ULL, 7);
}

TYPED_TEST(CarrierTypesTest, FloatingPointNumbersComeThroughCastFromDouble) {
  using C = typename TestFixture::Carrier;
  const auto test = [](auto number) {
    const C made(number);
    C assigned;
    assigned = number;
    EXPECT_EQ(TestFixture::taken(), (Calls{"castFromDouble", "castFromDouble"}));
    EXPECT_EQ(TestFixture::Own::first(made.data()), 2.5F);
    EXPECT_EQ(std::memcmp(made.data(), assigned.data(), sizeof made), 0);
  };
  test(2.5F);
  test(2.5);
  test(2.5L);
}

TYPED_TEST(CarrierTypesTest, ConvertsToNumbers) {
  const typename TestFixture::Carrier carrier(-3.75);
  TestFixture::taken();
  EXPECT_EQ(static_cast<char>(carrier), -3);
  EXPECT_EQ(static_cast<unsigned char>(carrier), 253);
  EXPECT_EQ(static_cast<short>(carrier), -3);
  EXPECT_EQ(static_cast<unsigned short>(carrier), 65533);
  EXPECT_EQ(static_cast<int>(carrier), -3);
  EXPECT_EQ(static_cast<unsigned int>(carrier), 4294967293U);
  EXPECT_EQ(static_cast<long>(carrier), -3L);
  EXPECT_EQ(static_cast<VXint64>(carrier), -3LL);
  EXPECT_EQ(TestFixture::taken(), Calls(8, "castToInt"));
  EXPECT_EQ(static_cast<float>(carrier), -3.75F);
  EXPECT_EQ(static_cast<double>(carrier), -3.75);
  EXPECT_EQ(static_cast<long double>(carrier), -3.75L);
  EXPECT_EQ(TestFixture::taken(), Calls(3, "castToDouble"));
  const double number = carrier;
  EXPECT_EQ(number, -3.75);
}

TYPED_TEST(CarrierTypesTest, ScalesByTheArithmeticOfItsType) {
  using C = typename TestFixture::Carrier;
  const C carrier(3);
  TestFixture::taken();
  const C mapped = carrier * 2.5 + 0.25;
  EXPECT_EQ(TestFixture::taken(), (Calls{"multWithDouble", "plusDouble"}));
  float components[TestFixture::Own::numFloats];
  TestFixture::Own::read(mapped.data(), components);
  for (const float component : components) EXPECT_EQ(component, 7.75F);
  EXPECT_EQ(TestFixture::Own::first(carrier.data()), 3.0F) << "the operand stays";
  EXPECT_EQ(static_cast<int>(carrier * 2 + 1), 7);
  EXPECT_EQ(TestFixture::taken(), (Calls{"multWithDouble", "plusDouble", "castToInt"}));
}

TYPED_TEST(CarrierTypesTest, ComparesByItsType) {
  using C = typename TestFixture::Carrier;
  const C one(1);
  const C two(2);
  const C copy = one;
  TestFixture::taken();
  EXPECT_TRUE(one == copy);
  EXPECT_FALSE(one == two);
  EXPECT_TRUE(one < two);
  EXPECT_FALSE(two < one);
  EXPECT_TRUE(two > one);
  EXPECT_FALSE(one > copy);
  EXPECT_EQ(TestFixture::taken(), (Calls{"isEqualToType", "isEqualToType", "isSmallerThanType", "isSmallerThanType",
                                         "isGreaterThanType", "isGreaterThanType"}));
}

TYPED_TEST(CarrierTypesTest, ComesFromACarrierOfAnotherSlotByTheRecordOfThatSlot) {
  using C = typename TestFixture::Carrier;
  using Other = typename TestFixture::OtherCarrier;
  const Other other(4);
  EXPECT_EQ(TestFixture::Foreign::first(other.data()), 5.0F) << "the other slot has another type";
  TestFixture::taken();
  const std::string call = "castFromOtherType " + TestFixture::Foreign::name();
  C carrier(1);
  carrier = other;
  const C made(other);
  EXPECT_EQ(TestFixture::taken(), (Calls{"castFromInt", call, call}));
  EXPECT_EQ(static_cast<double>(carrier), 5.0);
  EXPECT_EQ(static_cast<double>(made), 5.0);

  // One and the same object, seen through both slots.
  TestFixture::taken();
  carrier = *reinterpret_cast<const Other*>(carrier.data());
  EXPECT_EQ(TestFixture::taken(), Calls{});
}

TYPED_TEST(CarrierTypesTest, WorksAtAnyAddress) {
  using C = typename TestFixture::Carrier;
  const auto memory = std::make_unique<unsigned char[]>(2 * sizeof(C) + 1);
  auto* const carriers = reinterpret_cast<C*>(memory.get() + 1);
  carriers[0] = 6;
  carriers[1] = carriers[0] * 0.5;
  EXPECT_EQ(static_cast<int>(carriers[1]), 3);
}

TEST(CarrierTypesMisuseTest, EmptySlotIsReported) {
  using C = VXTCarrierType<24, 14>;
  VXInitializeTypes();
  MessageRecorder recorder;
  const Message expected{VX_FATAL, VX_MISUSED_INTERFACE, "VXTCarrierType",
                         "No type is set in the slot of this carrier. Ignoring call or returning 0."};
  const C carrier(5);
  EXPECT_EQ(recorder.take(), std::vector<Message>{expected});
  EXPECT_EQ(static_cast<int>(carrier), 0);
  EXPECT_EQ(recorder.take(), std::vector<Message>{expected});
  EXPECT_FALSE(carrier == carrier);
  EXPECT_EQ(recorder.take(), std::vector<Message>{expected});
  const C zeros = carrier * 2.0;
  EXPECT_EQ(recorder.take(), std::vector<Message>{expected});
  for (unsigned int i = 0; i < sizeof zeros; ++i) EXPECT_EQ(zeros.data()[i], 0);
}

TEST(CarrierTypesMisuseTest, MissingOperationReportsItself) {
  static VXTypeInfos record;
  static const float voxel[1] = {};
  const unsigned char* const component = reinterpret_cast<const unsigned char*>(&voxel);
  VXInitializeTypes();
  VXTypeSetDefaultFunctionPointers(&record);
  ASSERT_EQ(VXTypeInfosInit(&record, 4, "withoutOperations", 0, 0, nullptr, nullptr, nullptr, "f", 0, VXfloatType,
                            &component, 0, nullptr),
            1);
  ASSERT_EQ(VXRegisterTypeInfos(&record), 1);
  const VXTypePushSingleInfo pushed = VXTypeInfosPushAndSetOutput(record.dataType);
  {
    MessageRecorder recorder;
    VXTCarrierType<4, 10> carrier(1);
    carrier = carrier * 2.0;
    EXPECT_EQ(static_cast<double>(carrier), 0.0);
    const auto messages = recorder.take();
    ASSERT_EQ(messages.size(), 3U);
    for (const Message& message : messages) {
      EXPECT_EQ(message.type, VX_FATAL);
      EXPECT_EQ(message.code, VX_MISUSED_INTERFACE);
      EXPECT_EQ(message.function, "_VXTypeInvalidOperation: Invalid type operation called");
      EXPECT_EQ(message.reason, "Ignoring call or returning 0.");
    }
  }
  VXTypeInfoPop(pushed);
}

TEST(CarrierTypesMisuseTest, TypeErrorReportsItsTexts) {
  MessageRecorder recorder;
  _VXTypeError("a function", "a reason");
  _VXTypeError(nullptr, nullptr);
  EXPECT_EQ(recorder.take(), (std::vector<Message>{{VX_FATAL, VX_MISUSED_INTERFACE, "a function", "a reason"},
                                                   {VX_FATAL, VX_MISUSED_INTERFACE, "", ""}}));
}

}  // namespace
