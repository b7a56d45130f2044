#include "vxRowKernels.h"
#include "vxStdTypeInfos.h"
#include "vxTruncate.h"

#include <cmath>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace vx {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

// The reference ------------------------------------------------------------------------------------------------------

template <class Out, class In>
Out castVoxel(In value) {
  if constexpr (std::is_floating_point_v<In>) {
    return truncateTo<Out>(static_cast<double>(value));
  } else {
    return static_cast<Out>(value);
  }
}

template <class Out, class In>
Out mapVoxel(In value, double scale, double shift) {
  if (std::isnan(scale) || std::isnan(shift)) return truncateTo<Out>(nan);
  const double product = static_cast<double>(value) * scale;
  const double sum = product + shift;
  return truncateTo<Out>(sum);
}

// Types and versions -------------------------------------------------------------------------------------------------

/// Calls `f(value of the type, number)` for each standard type.
template <class Function>
void forEachType(Function f) {
#define VX_CALL(T, number) f(StoredVoxel<T>(), static_cast<VXDataType>(number));
  VX_FOR_EACH_STANDARD_TYPE(VX_CALL)
#undef VX_CALL
}

/// Calls `f(value of Out, outType, value of In, inType)` for each pair of standard types.
template <class Function>
void forEachPair(Function f) {
  forEachType([&](auto out, VXDataType outType) {
    forEachType([&](auto in, VXDataType inType) { f(out, outType, in, inType); });
  });
}

struct Version {
  const char* name;
  InstructionSet set;
};

std::vector<Version> supportedVersions() {
  std::vector<Version> versions;
  for (const Version version : {Version{"Baseline", InstructionSet::Baseline}, Version{"Avx2", InstructionSet::Avx2},
                                Version{"Avx512", InstructionSet::Avx512}}) {
    if (isSupported(version.set)) versions.push_back(version);
  }
  return versions;
}

std::string describe(const Version& version, VXDataType outType, VXDataType inType) {
  return std::string(version.name) + ", type " + std::to_string(inType) + " to " + std::to_string(outType);
}

// Voxels -------------------------------------------------------------------------------------------------------------

const std::vector<double>& edgeNumbers() {
  static const std::vector<double> numbers = [] {
    std::vector<double> result = {
        0.0,  -0.0, 0.1,  0.5,  0.9,  1.0,    1.2,  1.5,   1.7,    2.5,   2.9,   299.9,  300.0,    300.7, 65536.0 + 44,
        1e10, 1e18, 1e19, 1e20, 1e38, 3.5e38, 1e39, 1e300, 5e-324, 1e-46, 1e-40, 1e-310, infinity, nan,   4294967301.0};
    for (const int bits : {7, 8, 15, 16, 23, 24, 31, 32, 33, 52, 53, 62, 63, 64}) {
      const double power = std::ldexp(1.0, bits);
      for (const double number : {power, power - 1, power + 1, power - 0.5, power + 0.5, power * 3 + 5,
                                  std::nextafter(power, 0.0), std::nextafter(power, infinity)}) {
        result.push_back(number);
      }
      const auto single = static_cast<float>(power);
      result.push_back(static_cast<double>(std::nextafter(single, 0.0F)));
      result.push_back(static_cast<double>(std::nextafter(single, 1e38F)));
    }
    result.push_back(static_cast<double>(std::numeric_limits<float>::max()));
    result.push_back(std::numeric_limits<double>::max());
    const std::vector<double> positive = result;
    for (const double number : positive) result.push_back(-number);
    return result;
  }();
  return numbers;
}

/// The whole range of an 8-bit or 16-bit type; of others edge values and random ones.
template <class T>
std::vector<T> testVoxels() {
  std::vector<T> voxels;
  if constexpr (sizeof(T) <= 2) {
    for (int i = std::numeric_limits<T>::min(); i <= std::numeric_limits<T>::max(); ++i) {
      voxels.push_back(static_cast<T>(i));
    }
    if constexpr (sizeof(T) == 1) {
      // Runs of some length are mapped by tables; the voxels past the last whole vector are mapped on their own.
      for (int i = 0; i < 1100; ++i) voxels.push_back(static_cast<T>(i * 7));
    }
    return voxels;
  }
  for (const double number : edgeNumbers()) voxels.push_back(truncateTo<T>(number));
  if constexpr (std::is_integral_v<T>) {
    for (const T base : {std::numeric_limits<T>::min(), std::numeric_limits<T>::max(), static_cast<T>(1LL << 53),
                         static_cast<T>(1LL << 24), T(0)}) {
      for (int i = -3; i <= 3; ++i) {
        voxels.push_back(static_cast<T>(static_cast<VXuint64>(base) + static_cast<VXuint64>(i)));
      }
    }
  }
  std::mt19937_64 random(4711);
  for (int i = 0; i < 3000; ++i) {
    if constexpr (std::is_integral_v<T>) {
      voxels.push_back(static_cast<T>(random() >> (i % 64)));
    } else {
      // Any bits but for signalling NaNs: a reference can't pass them on unchanged.
      std::conditional_t<sizeof(T) == 4, VXuint32, VXuint64> bits;
      bits = static_cast<decltype(bits)>(random());
      T voxel;
      std::memcpy(&voxel, &bits, sizeof voxel);
      voxels.push_back(std::isnan(voxel) ? T(1) : voxel);
      voxels.push_back(static_cast<T>(std::ldexp(static_cast<double>(random() >> 11), i % 80 - 60)));
    }
  }
  return voxels;
}

template <class T>
T loadVoxel(const unsigned char* p) {
  T voxel;
  std::memcpy(&voxel, p, sizeof voxel);
  return voxel;
}

template <class T>
Bytes toBytes(const std::vector<T>& voxels) {
  Bytes bytes(voxels.size() * sizeof(T));
  if (!bytes.empty()) std::memcpy(bytes.data(), voxels.data(), bytes.size());
  return bytes;
}

/// What a conversion of `in` must give.
template <class Out, class In, class Function>
Bytes expected(const std::vector<In>& in, Function convertVoxel) {
  std::vector<Out> out;
  for (const In voxel : in) out.push_back(convertVoxel(voxel));
  return toBytes(out);
}

template <class Out, class In>
::testing::AssertionResult sameVoxels(const Bytes& result, const Bytes& wanted, const std::vector<In>& in) {
  for (std::size_t i = 0; i < in.size(); ++i) {
    if (std::memcmp(result.data() + i * sizeof(Out), wanted.data() + i * sizeof(Out), sizeof(Out)) != 0) {
      return ::testing::AssertionFailure() << "voxel " << i << " of value " << +in[i] << " became "
                                           << +loadVoxel<Out>(result.data() + i * sizeof(Out)) << " and not "
                                           << +loadVoxel<Out>(wanted.data() + i * sizeof(Out));
    }
  }
  return ::testing::AssertionSuccess();
}

struct Mapping {
  double scale;
  double shift;
};

const Mapping mappings[] = {{2, 0},
                            {1, 0.5},
                            {0.5, 0.5},
                            {-1.5, 3},
                            {1.0 / 3, 1e10},
                            {0.1, 0.7},
                            {0, 0},
                            {-0.0, -0.0},
                            {1e300, 0},
                            {1e-320, 0},
                            {1e38, -1e38},
                            {16777217, -300},
                            {4294967296, 1},
                            {-2147483648.0, 1},
                            {infinity, 0},
                            {1, infinity},
                            {infinity, -infinity},
                            {nan, 1},
                            {1, -nan},
                            {nan, nan},
                            {1.1, 1e15},
                            {3, 9007199254740993.0}};

// Conversion ---------------------------------------------------------------------------------------------------------

TEST(RowKernelsTest, TheChosenVersionIsTheWidestSupported) {
  const std::vector<Version> versions = supportedVersions();
  EXPECT_EQ(&rowKernels(), &rowKernelsFor(versions.back().set));
  EXPECT_EQ(versions.front().set, InstructionSet::Baseline);
}

TEST(RowKernelsTest, EveryEntryOfEachTableIsSet) {
  for (const Version& version : supportedVersions()) {
    const RowKernels& kernels = rowKernelsFor(version.set);
    for (int type = 0; type < numRowKernelTypes; ++type) {
      EXPECT_NE(kernels.minMax[type], nullptr);
      EXPECT_NE(kernels.isOneValued[type], nullptr);
      EXPECT_NE(kernels.fill[type], nullptr);
      for (int other = 0; other < numRowKernelTypes; ++other) {
        EXPECT_NE(kernels.convert[type][other], nullptr);
        EXPECT_NE(kernels.convertScaled[type][other], nullptr);
      }
    }
  }
}

TEST(RowKernelsTest, EachVersionConvertsLikeACast) {
  forEachPair([](auto outTag, VXDataType outType, auto inTag, VXDataType inType) {
    using Out = decltype(outTag);
    using In = decltype(inTag);
    const std::vector<In> in = testVoxels<In>();
    const Bytes wanted = expected<Out>(in, [](In voxel) { return castVoxel<Out>(voxel); });
    for (const Version& version : supportedVersions()) {
      Bytes out(wanted.size());
      rowKernelsFor(version.set).convert[outType][inType](in.data(), out.data(), in.size());
      EXPECT_TRUE(sameVoxels<Out>(out, wanted, in)) << describe(version, outType, inType);
    }
  });
}

TEST(RowKernelsTest, EachVersionMapsInDoubleAndTruncates) {
  forEachPair([](auto outTag, VXDataType outType, auto inTag, VXDataType inType) {
    using Out = decltype(outTag);
    using In = decltype(inTag);
    const std::vector<In> in = testVoxels<In>();
    for (const Mapping& m : mappings) {
      const Bytes wanted = expected<Out>(in, [&](In voxel) { return mapVoxel<Out>(voxel, m.scale, m.shift); });
      for (const Version& version : supportedVersions()) {
        Bytes out(wanted.size());
        rowKernelsFor(version.set).convertScaled[outType][inType](in.data(), out.data(), in.size(), m.scale, m.shift);
        EXPECT_TRUE(sameVoxels<Out>(out, wanted, in))
            << describe(version, outType, inType) << ", scale " << m.scale << ", shift " << m.shift;
      }
    }
  });
}

/// What memory around a result holds.
constexpr unsigned char untouched = 0xA5;

TEST(RowKernelsTest, RunsOfAnyLengthAtAnyAddressTouchNothingElse) {
  forEachPair([](auto outTag, VXDataType outType, auto inTag, VXDataType inType) {
    using Out = decltype(outTag);
    using In = decltype(inTag);
    for (const Version& version : supportedVersions()) {
      const RowKernels& kernels = rowKernelsFor(version.set);
      for (std::size_t n = 0; n <= 70; ++n) {
        std::vector<In> in;
        for (std::size_t i = 0; i < n; ++i) in.push_back(castVoxel<In>(static_cast<int>(i) * 37 - 900));
        const std::size_t inOffset = n % 9;
        const std::size_t outOffset = 1 + n * 5 % 13;
        Bytes inBytes(inOffset, untouched);
        const Bytes voxels = toBytes(in);
        inBytes.insert(inBytes.end(), voxels.begin(), voxels.end());
        for (const bool scaled : {false, true}) {
          Bytes wanted(outOffset, untouched);
          const Bytes result = expected<Out>(
              in, [&](In voxel) { return scaled ? mapVoxel<Out>(voxel, 1.25, -3.5) : castVoxel<Out>(voxel); });
          wanted.insert(wanted.end(), result.begin(), result.end());
          wanted.resize(wanted.size() + 70, untouched);
          Bytes out(wanted.size(), untouched);
          if (scaled) {
            kernels.convertScaled[outType][inType](inBytes.data() + inOffset, out.data() + outOffset, n, 1.25, -3.5);
          } else {
            kernels.convert[outType][inType](inBytes.data() + inOffset, out.data() + outOffset, n);
          }
          EXPECT_EQ(out, wanted) << describe(version, outType, inType) << ", " << n << " voxels, scaled " << scaled;
        }
      }
    }
  });
}

TEST(RowKernelsTest, VoxelsOfOneTypeAreMappedInPlace) {
  forEachType([](auto tag, VXDataType type) {
    using T = decltype(tag);
    const std::vector<T> in = testVoxels<T>();
    const Bytes wanted = expected<T>(in, [](T voxel) { return mapVoxel<T>(voxel, -0.75, 11); });
    for (const Version& version : supportedVersions()) {
      Bytes run = toBytes(in);
      rowKernelsFor(version.set).convertScaled[type][type](run.data(), run.data(), in.size(), -0.75, 11);
      EXPECT_TRUE(sameVoxels<T>(run, wanted, in)) << describe(version, type, type);
    }
  });
}

TEST(RowKernelsTest, VoxelsOfOneTypeMayMoveToAnOverlappingRun) {
  forEachType([](auto tag, VXDataType type) {
    using T = decltype(tag);
    for (const Version& version : supportedVersions()) {
      std::vector<T> run;
      for (int i = 0; i < 200; ++i) run.push_back(static_cast<T>(i));
      rowKernelsFor(version.set).convert[type][type](run.data(), run.data() + 1, 199);
      for (int i = 1; i < 200; ++i) ASSERT_EQ(run[static_cast<std::size_t>(i)], static_cast<T>(i - 1));
    }
  });
}

/// Runs that exceed the caches, which are written another way.
template <class Out, class In>
void checkLongRun(VXDataType outType, VXDataType inType, std::size_t outOffset) {
  const std::size_t n = (std::size_t(16) << 20) / sizeof(Out) + 12345;
  std::vector<In> in(n);
  for (std::size_t i = 0; i < n; ++i) in[i] = static_cast<In>(i * 7 % 101);
  for (const bool scaled : {false, true}) {
    Bytes wanted(outOffset, untouched);
    wanted.resize(outOffset + n * sizeof(Out) + 64, untouched);
    for (std::size_t i = 0; i < n; ++i) {
      const Out voxel = scaled ? mapVoxel<Out>(in[i], 0.75, 2) : castVoxel<Out>(in[i]);
      std::memcpy(wanted.data() + outOffset + i * sizeof(Out), &voxel, sizeof voxel);
    }
    for (const Version& version : supportedVersions()) {
      const RowKernels& kernels = rowKernelsFor(version.set);
      Bytes out(wanted.size(), untouched);
      if (scaled) {
        kernels.convertScaled[outType][inType](in.data(), out.data() + outOffset, n, 0.75, 2);
      } else {
        kernels.convert[outType][inType](in.data(), out.data() + outOffset, n);
      }
      EXPECT_TRUE(out == wanted) << describe(version, outType, inType) << ", scaled " << scaled;
    }
  }
}

TEST(RowKernelsTest, LongRunsAreConvertedWhole) {
  checkLongRun<VXint16, VXfloat>(VXint16Type, VXfloatType, 0);
  checkLongRun<VXuint8, VXint8>(VXuint8Type, VXint8Type, 5);
  checkLongRun<VXdouble, VXuint8>(VXdoubleType, VXuint8Type, 24);
}

TEST(RowKernelsTest, LongRunsBetweenVoxelBoundsAreConvertedWhole) {
  checkLongRun<VXfloat, VXuint16>(VXfloatType, VXuint16Type, 3);
}

TEST(RowKernelsTest, LongRunsAreMappedInPlace) {
  const std::size_t n = (std::size_t(16) << 20) / sizeof(VXint16) + 77;
  for (const Version& version : supportedVersions()) {
    std::vector<VXint16> run(n);
    for (std::size_t i = 0; i < n; ++i) run[i] = static_cast<VXint16>(i);
    rowKernelsFor(version.set).convertScaled[VXint16Type][VXint16Type](run.data(), run.data(), n, 2.5, 1);
    for (std::size_t i = 0; i < n; ++i) {
      ASSERT_EQ(run[i], mapVoxel<VXint16>(static_cast<VXint16>(i), 2.5, 1)) << version.name << ", voxel " << i;
    }
  }
}

// Long runs of 16-bit voxels, which are mapped in single precision where that is exact
// -----------------------------------

/// The least length of such runs.
constexpr std::size_t longRun = std::size_t(1) << 20;

/// All voxels of a 16-bit type over and over.
template <class In>
std::vector<In> allVoxelsRepeated(std::size_t n) {
  std::vector<In> in(n);
  for (std::size_t i = 0; i < n; ++i) in[i] = static_cast<In>(i);
  return in;
}

/// The number of voxels of a 16-bit type that single precision maps to something else than double precision.
template <class Out, class In>
int countDifferentInFloat(const Mapping& m) {
  int count = 0;
  for (int i = std::numeric_limits<In>::min(); i <= std::numeric_limits<In>::max(); ++i) {
    const float product = static_cast<float>(i) * static_cast<float>(m.scale);
    const float sum = product + static_cast<float>(m.shift);
    if (truncateTo<Out>(static_cast<double>(sum)) != mapVoxel<Out>(static_cast<In>(i), m.scale, m.shift)) ++count;
  }
  return count;
}

/// Maps a run at odd addresses with every version, and compares each voxel and the memory around the result.
template <class Out, class In>
void checkMappedRun(VXDataType outType, VXDataType inType, std::size_t n, const Mapping& m, std::size_t inOffset,
                    std::size_t outOffset) {
  std::vector<Out> results;
  for (int i = 0; i < 65536; ++i) results.push_back(mapVoxel<Out>(static_cast<In>(i), m.scale, m.shift));
  const Bytes voxels = toBytes(allVoxelsRepeated<In>(n));
  Bytes in(inOffset, untouched);
  in.insert(in.end(), voxels.begin(), voxels.end());
  Bytes wanted(outOffset + n * sizeof(Out) + 64, untouched);
  for (std::size_t i = 0; i < n; ++i) {
    std::memcpy(wanted.data() + outOffset + i * sizeof(Out), &results[i % results.size()], sizeof(Out));
  }
  for (const Version& version : supportedVersions()) {
    Bytes out(wanted.size(), untouched);
    const auto map = rowKernelsFor(version.set).convertScaled[outType][inType];
    map(in.data() + inOffset, out.data() + outOffset, n, m.scale, m.shift);
    EXPECT_TRUE(out == wanted) << describe(version, outType, inType) << ", " << n << " voxels, scale " << m.scale
                               << ", shift " << m.shift;
  }
}

/// Calls `f(value of Out, outType, value of In, inType)` for the pairs from 16 to 8 bits.
template <class Function>
void forEachNarrowingPair(Function f) {
  forEachPair([&](auto out, VXDataType outType, auto in, VXDataType inType) {
    if constexpr (sizeof(out) == 1 && sizeof(in) == 2) f(out, outType, in, inType);
  });
}

TEST(RowKernelsTest, LongRunsOf16BitsAreMappedAsInDouble) {
  forEachNarrowingPair([](auto outTag, VXDataType outType, auto inTag, VXDataType inType) {
    for (const Mapping& m : mappings) {
      checkMappedRun<decltype(outTag), decltype(inTag)>(outType, inType, longRun + 13, m, 1, 3);
    }
  });
}

TEST(RowKernelsTest, MappingsThatAreExactInFloatAndSuchThatAreNot) {
  int numExact = 0;
  int numInexact = 0;
  forEachNarrowingPair([&](auto outTag, VXDataType outType, auto inTag, VXDataType inType) {
    using Out = decltype(outTag);
    using In = decltype(inTag);
    for (const Mapping m : {Mapping{0.5, 3}, Mapping{0.5, 0.5}, Mapping{-0.25, -7.75}, Mapping{1.0 / 256, 128},
                            Mapping{-1, 0}, Mapping{1.0 / 3, 0.1}, Mapping{0.0712345, -31.7}, Mapping{1.1, 1e6},
                            Mapping{1, 16777216.5}, Mapping{3e38, 3e38}, Mapping{-4e38, 0}, Mapping{0, 1e39}}) {
      ++(countDifferentInFloat<Out, In>(m) == 0 ? numExact : numInexact);
      checkMappedRun<Out, In>(outType, inType, longRun, m, 0, 0);
    }
  });
  EXPECT_GE(numExact, 20);
  EXPECT_GE(numInexact, 8);
}

TEST(RowKernelsTest, OneVoxelThatDiffersInFloatIsEnoughForDouble) {
  constexpr double below = 1 - 0x1p-40;
  const Mapping differsAtTheEnd{62.0 / 65535 * below, 0};
  ASSERT_EQ((countDifferentInFloat<VXuint8, VXuint16>(differsAtTheEnd)), 1);
  ASSERT_EQ(mapVoxel<VXuint8>(VXuint16(65535), differsAtTheEnd.scale, 0), 61);
  checkMappedRun<VXuint8, VXuint16>(VXuint8Type, VXuint16Type, longRun, differsAtTheEnd, 0, 0);
  checkMappedRun<VXint8, VXuint16>(VXint8Type, VXuint16Type, longRun, differsAtTheEnd, 0, 0);

  const Mapping differsAtTheStart{61.0 / 32768 * below, 0};
  ASSERT_EQ((countDifferentInFloat<VXint8, VXint16>(differsAtTheStart)), 1);
  ASSERT_EQ(mapVoxel<VXint8>(VXint16(-32768), differsAtTheStart.scale, 0), -60);
  checkMappedRun<VXuint8, VXint16>(VXuint8Type, VXint16Type, longRun, differsAtTheStart, 0, 0);
  checkMappedRun<VXint8, VXint16>(VXint8Type, VXint16Type, longRun, differsAtTheStart, 0, 0);
}

TEST(RowKernelsTest, RunsAroundTheLengthsThatChangeTheLoopAreMappedWhole) {
  const std::size_t streamed = std::size_t(16) << 20;
  for (const std::size_t n : {longRun - 1, longRun, longRun + 1, streamed - 1, streamed, streamed + 4095}) {
    for (const Mapping m : {Mapping{0.5, 3}, Mapping{62.0 / 65535 * (1 - 0x1p-40), 0}}) {
      checkMappedRun<VXuint8, VXuint16>(VXuint8Type, VXuint16Type, n, m, 3, 7);
      checkMappedRun<VXint8, VXint16>(VXint8Type, VXint16Type, n, m, 0, 0);
    }
  }
}

// Ranges -------------------------------------------------------------------------------------------------------------

template <class T>
void extendRange(const std::vector<T>& run, T& minValue, T& maxValue) {
  for (const T voxel : run) {
    if (voxel < minValue) minValue = voxel;
    if (maxValue < voxel) maxValue = voxel;
  }
}

template <class T>
void checkRange(VXDataType type, const std::vector<T>& run, T minStart, T maxStart) {
  T wantedMin = minStart;
  T wantedMax = maxStart;
  extendRange(run, wantedMin, wantedMax);
  for (const Version& version : supportedVersions()) {
    Bytes bytes(1);
    const Bytes voxels = toBytes(run);
    bytes.insert(bytes.end(), voxels.begin(), voxels.end());
    T minValue = minStart;
    T maxValue = maxStart;
    rowKernelsFor(version.set).minMax[type](bytes.data() + 1, run.size(), &minValue, &maxValue);
    EXPECT_EQ(std::memcmp(&minValue, &wantedMin, sizeof(T)), 0)
        << version.name << ", type " << type << ", " << run.size() << " voxels: " << +minValue << ", not "
        << +wantedMin;
    EXPECT_EQ(std::memcmp(&maxValue, &wantedMax, sizeof(T)), 0)
        << version.name << ", type " << type << ", " << run.size() << " voxels: " << +maxValue << ", not "
        << +wantedMax;
  }
}

TEST(RowKernelsTest, RangesOfRunsOfAnyLength) {
  forEachType([](auto tag, VXDataType type) {
    using T = decltype(tag);
    std::mt19937 random(99);
    for (std::size_t n = 0; n < 300; ++n) {
      std::vector<T> run;
      for (std::size_t i = 0; i < n; ++i) run.push_back(castVoxel<T>(static_cast<int>(random() % 100000) - 50000));
      checkRange<T>(type, run, n > 0 ? run[0] : T(1), n > 0 ? run[0] : T(1));
      checkRange<T>(type, run, T(3), T(7));
    }
    checkRange<T>(type, testVoxels<T>(), T(1), T(1));
  });
}

template <class T>
class FloatingPointRangeTest : public ::testing::Test {
 public:
  static constexpr VXDataType type = std::is_same_v<T, VXfloat> ? VXfloatType : VXdoubleType;
};

using FloatingPointTypes = ::testing::Types<VXfloat, VXdouble>;
TYPED_TEST_SUITE(FloatingPointRangeTest, FloatingPointTypes);

TYPED_TEST(FloatingPointRangeTest, NaNNeverEnters) {
  using T = TypeParam;
  const T noNumber = std::numeric_limits<T>::quiet_NaN();
  std::vector<T> run(200, noNumber);
  checkRange<T>(this->type, run, T(1), T(2));
  run[77] = T(-5);
  run[150] = T(9);
  checkRange<T>(this->type, run, T(1), T(2));
}

TYPED_TEST(FloatingPointRangeTest, NaNAsFirstLimitStays) {
  using T = TypeParam;
  const T noNumber = std::numeric_limits<T>::quiet_NaN();
  checkRange<T>(this->type, std::vector<T>(200, T(4)), noNumber, noNumber);
  checkRange<T>(this->type, std::vector<T>(200, T(0)), -noNumber, T(-3));
  checkRange<T>(this->type, std::vector<T>(3, T(4)), T(5), noNumber);
}

TYPED_TEST(FloatingPointRangeTest, TheFirstOfZerosWithDifferentSignsStays) {
  using T = TypeParam;
  for (std::size_t first = 0; first < 200; first += 7) {
    for (std::size_t second = 0; second < 200; second += 11) {
      std::vector<T> run(200, T(8));
      run[first] = T(0);
      run[second] = T(-0.0);
      checkRange<T>(this->type, run, T(8), T(8));
      for (T& voxel : run) voxel = voxel == T(8) ? T(-8) : -voxel;
      checkRange<T>(this->type, run, T(-8), T(-8));
    }
  }
  checkRange<T>(this->type, std::vector<T>(200, T(0)), T(-0.0), T(-0.0));
  checkRange<T>(this->type, std::vector<T>(200, T(-0.0)), T(0), T(0));
}

// Values -------------------------------------------------------------------------------------------------------------

TEST(RowKernelsTest, OneDifferentVoxelAnywhereIsFound) {
  forEachType([](auto tag, VXDataType type) {
    using T = decltype(tag);
    for (const Version& version : supportedVersions()) {
      const auto isOneValued = rowKernelsFor(version.set).isOneValued[type];
      const T value = T(77);
      for (const std::size_t n : {1U, 2U, 15U, 16U, 64U, 127U, 129U, 1024U, 1025U, 3000U}) {
        std::vector<T> run(n + 1, value);
        run[n] = T(0);
        EXPECT_TRUE(isOneValued(run.data(), n, &value)) << version.name << ", type " << type;
        for (std::size_t i = 0; i < n; i += (n < 200 ? 1 : 61)) {
          for (const T other : {T(76), static_cast<T>(-77), T(0)}) {
            run[i] = other;
            EXPECT_FALSE(isOneValued(run.data(), n, &value)) << version.name << ", type " << type << ", voxel " << i;
          }
          run[i] = value;
        }
        run[n - 1] = T(0);
        EXPECT_FALSE(isOneValued(run.data(), n, &value)) << version.name << ", type " << type;
      }
      EXPECT_TRUE(isOneValued(&value, 0, &value));
    }
  });
}

TYPED_TEST(FloatingPointRangeTest, ZerosAreOneValueAndNaNIsNone) {
  using T = TypeParam;
  for (const Version& version : supportedVersions()) {
    const auto isOneValued = rowKernelsFor(version.set).isOneValued[this->type];
    std::vector<T> run(100, T(0));
    run[50] = T(-0.0);
    EXPECT_TRUE(isOneValued(run.data(), run.size(), &run[0])) << version.name;
    run.assign(100, std::numeric_limits<T>::quiet_NaN());
    EXPECT_FALSE(isOneValued(run.data(), run.size(), &run[0])) << version.name;
    EXPECT_FALSE(isOneValued(run.data(), 1, &run[0])) << version.name;
  }
}

TEST(RowKernelsTest, FillsRunsOfAnyLengthAtAnyAddress) {
  forEachType([](auto tag, VXDataType type) {
    using T = decltype(tag);
    unsigned char value[sizeof(T)];
    for (std::size_t i = 0; i < sizeof value; ++i) value[i] = static_cast<unsigned char>(0xF1 + 3 * i);
    for (const Version& version : supportedVersions()) {
      for (std::size_t n = 0; n <= 200; ++n) {
        const std::size_t offset = 1 + n % 7;
        Bytes out(offset + n * sizeof(T) + 70, 0x5A);
        Bytes wanted = out;
        for (std::size_t i = 0; i < n; ++i) std::memcpy(wanted.data() + offset + i * sizeof(T), value, sizeof value);
        rowKernelsFor(version.set).fill[type](out.data() + offset, n, value);
        EXPECT_EQ(out, wanted) << version.name << ", type " << type << ", " << n << " voxels";
      }
    }
  });
}

}  // namespace
}  // namespace vx
