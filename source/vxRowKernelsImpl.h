/// \file vxRowKernelsImpl.h
/// The loops over runs of voxels, compiled once for each instruction set.
///
/// The including source defines VX_ROW_KERNELS_TABLE, the name of its table, and `Lanes` and `FloatLanes` in an unnamed
/// namespace. It is compiled for more than the least processor, so nothing here may end up in a function that other
/// sources share: all is in the unnamed namespace, and no function of the standard library but memmove() is called.

#ifndef VX_ROW_KERNELS_IMPL_H
#define VX_ROW_KERNELS_IMPL_H

#include "vxRowKernels.h"
#include "vxStdTypeInfos.h"

#include <cstring>
#include <type_traits>

namespace vx {
namespace {

// Voxels in memory ---------------------------------------------------------------------------------------------------

/// A voxel at any address, whatever its neighbours are accessed as.
template <class T>
struct [[gnu::packed, gnu::may_alias]] Voxel {
  T value;
};

template <class T>
const Voxel<T>* voxels(const void* run) {
  return static_cast<const Voxel<T>*>(run);
}

template <class T>
Voxel<T>* voxels(void* run) {
  return static_cast<Voxel<T>*>(run);
}

using Byte = unsigned char;

/// An unsigned integer of the size of a voxel.
template <std::size_t size>
using BitsOfSize =
    std::conditional_t<size == 1, VXuint8,
                       std::conditional_t<size == 2, VXuint16, std::conditional_t<size == 4, VXuint32, VXuint64>>>;

// Conversion ---------------------------------------------------------------------------------------------------------

/// Works on a run in groups as wide as a type of lanes; the last group is completed in a buffer.
template <class Out, class In, int groupSize, class Group>
inline __attribute__((always_inline)) void forEachGroup(const void* in, void* out, std::size_t n, Group group) {
  auto inBytes = static_cast<const Byte*>(in);
  auto outBytes = static_cast<Byte*>(out);
  const std::size_t numGroups = n / groupSize;
  for (std::size_t i = 0; i < numGroups; ++i) {
    group(inBytes, outBytes);
    inBytes += groupSize * sizeof(In);
    outBytes += groupSize * sizeof(Out);
  }
  const std::size_t rest = n % groupSize;
  if (rest != 0) {
    Byte inRest[groupSize * sizeof(In)] = {};
    Byte outRest[groupSize * sizeof(Out)];
    std::memcpy(inRest, inBytes, rest * sizeof(In));
    group(inRest, outRest);
    std::memcpy(outBytes, outRest, rest * sizeof(Out));
  }
}

/// Loads four lanes that lie one after the other, together where the processor gains by that.
template <class In, class AnyLanes>
inline __attribute__((always_inline)) void loadFour(const Byte* in, AnyLanes (&lanes)[4]) {
  if constexpr (requires { AnyLanes::loadFour(in, lanes, In()); }) {
    AnyLanes::loadFour(in, lanes, In());
  } else {
    for (std::size_t i = 0; i < 4; ++i) lanes[i] = AnyLanes::load(in + i * AnyLanes::size * sizeof(In), In());
  }
}

/// Converts a run by way of lanes of double, which `map` maps.
template <class Out, class In, class Map>
inline __attribute__((always_inline)) void convertInLanes(const void* in, void* out, std::size_t n, Map map) {
  auto inBytes = static_cast<const Byte*>(in);
  auto outBytes = static_cast<Byte*>(out);
  constexpr std::size_t inStep = Lanes::size * sizeof(In);
  constexpr std::size_t outStep = Lanes::size * sizeof(Out);
  // Four at a time, so that one need not wait for the other.
  for (; n >= 4 * Lanes::size; n -= 4 * Lanes::size) {
    Lanes lanes[4];
    loadFour<In>(inBytes, lanes);
    for (Lanes& mapped : lanes) mapped = map(mapped);
    for (std::size_t i = 0; i < 4; ++i) lanes[i].store(outBytes + i * outStep, Out());
    inBytes += 4 * inStep;
    outBytes += 4 * outStep;
  }
  forEachGroup<Out, In, Lanes::size>(
      inBytes, outBytes, n, [=](const Byte* from, Byte* to) { map(Lanes::load(from, In())).store(to, Out()); });
}

template <class Out, class In>
[[gnu::noinline]] void convertInCache(const void* in, void* out, std::size_t n) {
  if constexpr (std::is_floating_point_v<In> && std::is_integral_v<Out>) {
    // The intermediate integer of truncateTo(): 32 bits are enough for all but these.
    constexpr bool needs64Bits = std::is_same_v<Out, VXuint32> || std::is_same_v<Out, VXint64>;
    if constexpr (std::is_same_v<In, VXfloat> && (!needs64Bits || FloatLanes::has64Bits)) {
      forEachGroup<Out, In, FloatLanes::size>(
          in, out, n, [](const Byte* from, Byte* to) { FloatLanes::load(from).store(to, Out()); });
    } else {
      forEachGroup<Out, In, Lanes::size>(in, out, n,
                                         [](const Byte* from, Byte* to) { Lanes::load(from, In()).store(to, Out()); });
    }
  } else {
    const auto* __restrict from = voxels<In>(in);
    auto* __restrict to = voxels<Out>(out);
    for (std::size_t i = 0; i < n; ++i) to[i].value = static_cast<Out>(from[i].value);
  }
}

/// No promise is made to the compiler that the runs don't overlap: one run may be mapped in place.
template <class Out, class In>
[[gnu::noinline]] void mapInCache(const void* in, void* out, std::size_t n, double scale, double shift) {
  const Lanes scales = Lanes::all(scale);
  const Lanes shifts = Lanes::all(shift);
  convertInLanes<Out, In>(in, out, n, [=](Lanes lanes) { return lanes.times(scales).plus(shifts); });
}

/// Runs of 8-bit voxels from this size on are mapped by a table of all results, where the processor has such lookups.
constexpr std::size_t lookUpLength = 1024;

template <class Out, class In>
void convertScaledInCache(const void* in, void* out, std::size_t n, double scale, double shift) {
  if constexpr (sizeof(In) == 1 && std::is_integral_v<Out> && sizeof(Out) <= 2) {
    if (n >= lookUpLength && canLookUp()) {
      Byte allVoxels[256];
      for (int i = 0; i < 256; ++i) allVoxels[i] = static_cast<Byte>(i);
      BitsOfSize<sizeof(Out)> results[256];
      mapInCache<Out, In>(allVoxels, results, 256, scale, shift);
      lookUp(results, static_cast<const Byte*>(in), static_cast<Byte*>(out), n);
      return;
    }
  }
  mapInCache<Out, In>(in, out, n, scale, shift);
}

// Results that exceed the caches -------------------------------------------------------------------------------------

/// From this size on a result is written past the caches, which saves reading the memory before it is written.
constexpr std::size_t streamingBytes = std::size_t(16) << 20;

/// Bytes that are converted at a time: a small part of the first cache.
constexpr std::size_t streamingChunkBytes = 4096;
constexpr std::size_t streamingAlignment = 64;

/// Converts a long run by way of a buffer, from which the result goes to memory past the caches.
/// \param convertPart converts a part of the run: (in, out, n).
template <class ConvertPart>
inline __attribute__((always_inline)) void convertStreaming(const void* in, std::size_t inSize, void* out,
                                                            std::size_t outSize, std::size_t n,
                                                            ConvertPart convertPart) {
  auto inBytes = static_cast<const Byte*>(in);
  auto outBytes = static_cast<Byte*>(out);
  const auto step = [&](std::size_t count) {
    inBytes += count * inSize;
    outBytes += count * outSize;
    n -= count;
  };
  const std::size_t beyond = reinterpret_cast<std::size_t>(out) % streamingAlignment;
  const std::size_t head = (streamingAlignment - beyond) / outSize;
  convertPart(inBytes, outBytes, head);
  step(head);
  if (reinterpret_cast<std::size_t>(outBytes) % streamingAlignment == 0) {
    alignas(streamingAlignment) Byte chunk[streamingChunkBytes];
    const std::size_t chunkSize = streamingChunkBytes / outSize;
    while (n >= chunkSize) {
      convertPart(inBytes, chunk, chunkSize);
      for (std::size_t i = 0; i < streamingChunkBytes; i += streamingAlignment) streamLine(chunk + i, outBytes + i);
      step(chunkSize);
    }
    finishStreaming();
  }
  convertPart(inBytes, outBytes, n);
}

template <class Out, class In>
void convertRun(const void* in, void* out, std::size_t n) {
  if constexpr (std::is_same_v<Out, In>) {
    if (n != 0) std::memmove(out, in, n * sizeof(Out));
  } else if (canStream && n >= streamingBytes / sizeof(Out)) {
    convertStreaming(in, sizeof(In), out, sizeof(Out), n, &convertInCache<Out, In>);
  } else {
    convertInCache<Out, In>(in, out, n);
  }
}

template <class Bits>
void fillRun(void* out, std::size_t n, const void* value);

/// Narrow voxels take longer to compute than to store, unless they are looked up: past the caches they only wait.
template <class Out, class In>
bool isMappedFasterThanMemory() {
  if (sizeof(In) + sizeof(Out) > 6) return true;
  return sizeof(In) == 1 && std::is_integral_v<Out> && sizeof(Out) <= 2 && canLookUp();
}

template <class Out, class In>
void convertScaledRun(const void* in, void* out, std::size_t n, double scale, double shift) {
  if (scale != scale || shift != shift) {
    // All results are NaN. Which operand's bits a NaN has is up to the compiler, so they are chosen here.
    const double result = __builtin_nan("");
    Out voxel;
    convertInCache<Out, double>(&result, &voxel, 1);
    fillRun<BitsOfSize<sizeof(Out)>>(out, n, &voxel);
  } else if (canStream && isMappedFasterThanMemory<Out, In>() && n >= streamingBytes / sizeof(Out)) {
    convertStreaming(in, sizeof(In), out, sizeof(Out), n, [=](const void* from, void* to, std::size_t count) {
      convertScaledInCache<Out, In>(from, to, count, scale, shift);
    });
  } else {
    convertScaledInCache<Out, In>(in, out, n, scale, shift);
  }
}

// Ranges and values --------------------------------------------------------------------------------------------------

/// Extends a range, voxel by voxel.
template <class T>
inline __attribute__((always_inline)) void minMaxInOrder(const Voxel<T>* voxel, std::size_t n, T& minValue,
                                                         T& maxValue) {
  T smallest = minValue;
  T largest = maxValue;
  for (std::size_t i = 0; i < n; ++i) {
    const T value = voxel[i].value;
    smallest = value < smallest ? value : smallest;
    largest = largest < value ? value : largest;
  }
  minValue = smallest;
  maxValue = largest;
}

/// The first zero of a run that has one.
template <class T>
T firstZero(const Voxel<T>* voxel) {
  while (voxel->value != 0) ++voxel;
  return voxel->value;
}

/// Extends a range of floating point numbers in independent lanes: the order in which numbers are compared can't be
/// seen but in the sign of zero, which is put right in the end.
template <class T>
void minMaxInLanes(const Voxel<T>* voxel, std::size_t n, T& minValue, T& maxValue) {
  constexpr int numLanes = static_cast<int>(vectorBytes / sizeof(T));
  constexpr int numVectors = 4;
  constexpr std::size_t groupSize = std::size_t(numLanes) * numVectors;
  typedef T Vector __attribute__((vector_size(vectorBytes)));
  if (n < groupSize) return minMaxInOrder(voxel, n, minValue, maxValue);
  Vector smallest[numVectors];
  Vector largest[numVectors];
  for (int j = 0; j < numVectors; ++j) {
    smallest[j] = Vector{} + minValue;
    largest[j] = Vector{} + maxValue;
  }
  std::size_t i = 0;
  for (; n - i >= groupSize; i += groupSize) {
#pragma GCC unroll 4
    for (int j = 0; j < numVectors; ++j) {
      Vector values;
      std::memcpy(&values, voxel + i + j * numLanes, sizeof values);
      smallest[j] = values < smallest[j] ? values : smallest[j];
      largest[j] = largest[j] < values ? values : largest[j];
    }
  }
  T minInLanes = minValue;
  T maxInLanes = maxValue;
  for (int j = 0; j < numVectors; ++j) {
    for (int lane = 0; lane < numLanes; ++lane) {
      if (smallest[j][lane] < minInLanes) minInLanes = smallest[j][lane];
      if (maxInLanes < largest[j][lane]) maxInLanes = largest[j][lane];
    }
  }
  minMaxInOrder(voxel + i, n - i, minInLanes, maxInLanes);
  if (minInLanes < minValue) minValue = minInLanes == 0 ? firstZero(voxel) : minInLanes;
  if (maxValue < maxInLanes) maxValue = maxInLanes == 0 ? firstZero(voxel) : maxInLanes;
}

template <class T>
void minMaxRun(const void* in, std::size_t n, void* minInOut, void* maxInOut) {
  T minValue = voxels<T>(minInOut)->value;
  T maxValue = voxels<T>(maxInOut)->value;
  if constexpr (std::is_floating_point_v<T>) {
    minMaxInLanes(voxels<T>(in), n, minValue, maxValue);
  } else {
    minMaxInOrder(voxels<T>(in), n, minValue, maxValue);
  }
  voxels<T>(minInOut)->value = minValue;
  voxels<T>(maxInOut)->value = maxValue;
}

/// Differences are gathered over a block of voxels, so that the loop has no exit within; blocks end early.
template <class T>
bool isOneValuedRun(const void* in, std::size_t n, const void* value) {
  using Bits = BitsOfSize<sizeof(T)>;
  constexpr std::size_t blockSize = 1024 / sizeof(T);
  const T wanted = voxels<T>(value)->value;
  const auto* voxel = voxels<T>(in);
  while (n > 0) {
    const std::size_t count = n < blockSize ? n : blockSize;
    Bits differences = 0;
    for (std::size_t i = 0; i < count; ++i) {
      if constexpr (std::is_floating_point_v<T>) {
        differences |= voxel[i].value == wanted ? Bits(0) : Bits(1);
      } else {
        differences = static_cast<Bits>(differences | static_cast<Bits>(voxel[i].value ^ wanted));
      }
    }
    if (differences != 0) return false;
    voxel += count;
    n -= count;
  }
  return true;
}

template <class Bits>
void fillRun(void* out, std::size_t n, const void* value) {
  const Bits bits = voxels<Bits>(value)->value;
  auto* to = voxels<Bits>(out);
  for (std::size_t i = 0; i < n; ++i) to[i].value = bits;
}

// Table --------------------------------------------------------------------------------------------------------------

template <class Tag>
using Stored = StoredVoxel<Tag>;

}  // namespace

#define VX_CONVERT_ENTRY(In, number) &convertRun<Out, Stored<In>>,
#define VX_CONVERT_SCALED_ENTRY(In, number) &convertScaledRun<Out, Stored<In>>,
#define VX_MIN_MAX_ENTRY(T, number) &minMaxRun<Stored<T>>,
#define VX_IS_ONE_VALUED_ENTRY(T, number) &isOneValuedRun<Stored<T>>,
#define VX_FILL_ENTRY(T, number) &fillRun<BitsOfSize<sizeof(Stored<T>)>>,

namespace {

/// The conversions to one type.
template <class Out>
struct ConversionsTo {
  static constexpr ConvertRun plain[numRowKernelTypes] = {VX_FOR_EACH_STANDARD_TYPE(VX_CONVERT_ENTRY)};
  static constexpr ConvertScaledRun scaled[numRowKernelTypes] = {VX_FOR_EACH_STANDARD_TYPE(VX_CONVERT_SCALED_ENTRY)};
};

/// Enters the conversions to one type in a table.
template <class Out>
constexpr void enterConversions(RowKernels& kernels, int outType) {
  for (int inType = 0; inType < numRowKernelTypes; ++inType) {
    kernels.convert[outType][inType] = ConversionsTo<Out>::plain[inType];
    kernels.convertScaled[outType][inType] = ConversionsTo<Out>::scaled[inType];
  }
}

constexpr RowKernels makeRowKernels() {
  RowKernels kernels{{},
                     {},
                     {VX_FOR_EACH_STANDARD_TYPE(VX_MIN_MAX_ENTRY)},
                     {VX_FOR_EACH_STANDARD_TYPE(VX_IS_ONE_VALUED_ENTRY)},
                     {VX_FOR_EACH_STANDARD_TYPE(VX_FILL_ENTRY)}};
#define VX_ENTER_CONVERSIONS(Out, number) enterConversions<Stored<Out>>(kernels, number);
  VX_FOR_EACH_STANDARD_TYPE(VX_ENTER_CONVERSIONS)
#undef VX_ENTER_CONVERSIONS
  return kernels;
}

}  // namespace

#undef VX_CONVERT_ENTRY
#undef VX_CONVERT_SCALED_ENTRY
#undef VX_MIN_MAX_ENTRY
#undef VX_IS_ONE_VALUED_ENTRY
#undef VX_FILL_ENTRY

/// Constant data: nothing of this source runs before a function of the table is called.
extern const RowKernels VX_ROW_KERNELS_TABLE;
constinit const RowKernels VX_ROW_KERNELS_TABLE = makeRowKernels();

}  // namespace vx

#endif
