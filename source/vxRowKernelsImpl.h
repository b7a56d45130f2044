/// \file vxRowKernelsImpl.h
/// The loops over runs of voxels, compiled once for each instruction set.
///
/// The including source defines VX_ROW_KERNELS_TABLE, the name of its table, and `Lanes` and `FloatLanes` in an unnamed
/// namespace. It is compiled for more than the least processor, so nothing here may end up in a function that other
/// sources share: all is in the unnamed namespace, and no function of the standard library but memmove() is called.

#ifndef VX_ROW_KERNELS_IMPL_H
#define VX_ROW_KERNELS_IMPL_H

#include "vxRowKernels.h"
#include "vxRowKernelsConversion.h"
#include "vxRowKernelsInFloat.h"
#include "vxStdTypeInfos.h"

#include <cstring>
#include <type_traits>

namespace vx {
namespace {

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

/// Narrow voxels take longer to compute in double than to store, unless they are looked up: past the caches they only
/// wait.
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
    return;
  }
  const ConvertScaledRun inFloat = mappingInFloat<Out, In>(n, scale, shift);
  const ConvertScaledRun map = inFloat != nullptr ? inFloat : &convertScaledInCache<Out, In>;
  const bool isFasterThanMemory = inFloat != nullptr || isMappedFasterThanMemory<Out, In>();
  if (canStream && isFasterThanMemory && n >= streamingBytes / sizeof(Out)) {
    convertStreaming(in, sizeof(In), out, sizeof(Out), n,
                     [=](const void* from, void* to, std::size_t count) { map(from, to, count, scale, shift); });
  } else {
    map(in, out, n, scale, shift);
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
