// The loops over runs of voxels for every processor; on x86, with the SSE2 that each of 64 bits has.

#include "vxTypes.h"

#include <cstddef>

#if defined(__SSE2__) && defined(__x86_64__)
#define VX_HAS_SSE2 1
#include <emmintrin.h>
#else
#define VX_HAS_SSE2 0
#include "vxTruncate.h"
#endif

namespace vx {
namespace {

constexpr int vectorBytes = 16;
constexpr bool canStream = VX_HAS_SSE2;
constexpr bool mapsFasterInFloat = false;

#if VX_HAS_SSE2

/// Writes 64 aligned bytes past the caches.
inline void streamLine(const unsigned char* from, unsigned char* to) {
  const auto* source = reinterpret_cast<const __m128i*>(from);
  auto* target = reinterpret_cast<__m128i*>(to);
  for (int i = 0; i < 4; ++i) _mm_stream_si128(target + i, _mm_load_si128(source + i));
}

inline void finishStreaming() { _mm_sfence(); }

// What doesn't fit the integers of the processor's conversions becomes their minimum, as it must.
inline VXint32 truncateTo32Bits(double value) { return _mm_cvttsd_si32(_mm_set_sd(value)); }
inline VXint64 truncateTo64Bits(double value) { return _mm_cvttsd_si64(_mm_set_sd(value)); }

#else

inline void streamLine(const unsigned char*, unsigned char*) {}
inline void finishStreaming() {}
inline VXint32 truncateTo32Bits(double value) { return truncateTo<VXint32>(value); }
inline VXint64 truncateTo64Bits(double value) { return truncateTo<VXint64>(value); }

#endif

/// Eight voxels, in plain loops that compilers unroll. Their numbers are of the type `Number`. The last argument of
/// load() and store() is only the type of the voxels.
template <class Number>
struct PlainLanes {
  static constexpr int size = 8;
  static constexpr bool has64Bits = true;
  Number v[size];

  static PlainLanes all(Number value) {
    PlainLanes result;
    for (Number& number : result.v) number = value;
    return result;
  }
  PlainLanes times(const PlainLanes& other) const {
    PlainLanes result;
    for (int i = 0; i < size; ++i) result.v[i] = v[i] * other.v[i];
    return result;
  }
  PlainLanes plus(const PlainLanes& other) const {
    PlainLanes result;
    for (int i = 0; i < size; ++i) result.v[i] = v[i] + other.v[i];
    return result;
  }

  template <class T>
  static PlainLanes load(const unsigned char* p, T) {
    T in[size];
    __builtin_memcpy(in, p, sizeof in);
    PlainLanes result;
    for (int i = 0; i < size; ++i) result.v[i] = static_cast<Number>(in[i]);
    return result;
  }
  static PlainLanes load(const unsigned char* p) { return load(p, Number()); }

  template <class T>
  void store(unsigned char* p, T) const {
    T out[size];
    for (int i = 0; i < size; ++i) out[i] = static_cast<T>(truncateTo32Bits(static_cast<double>(v[i])));
    __builtin_memcpy(p, out, sizeof out);
  }
  void store(unsigned char* p, VXuint32) const {
    VXuint32 out[size];
    for (int i = 0; i < size; ++i) out[i] = static_cast<VXuint32>(truncateTo64Bits(static_cast<double>(v[i])));
    __builtin_memcpy(p, out, sizeof out);
  }
  void store(unsigned char* p, VXint64) const {
    VXint64 out[size];
    for (int i = 0; i < size; ++i) out[i] = truncateTo64Bits(static_cast<double>(v[i]));
    __builtin_memcpy(p, out, sizeof out);
  }
  void store(unsigned char* p, VXfloat) const {
    VXfloat out[size];
    for (int i = 0; i < size; ++i) out[i] = static_cast<VXfloat>(v[i]);
    __builtin_memcpy(p, out, sizeof out);
  }
  void store(unsigned char* p, VXdouble) const { __builtin_memcpy(p, v, sizeof v); }
};

using Lanes = PlainLanes<VXdouble>;
using FloatLanes = PlainLanes<VXfloat>;

// There are no lookups in vectors.
inline bool canLookUp() { return false; }
template <class Result>
void lookUp(const Result*, const unsigned char*, unsigned char*, std::size_t) {}

}  // namespace
}  // namespace vx

#define VX_ROW_KERNELS_TABLE rowKernelsBaseline
#include "vxRowKernelsImpl.h"
