// The loops over runs of voxels for processors with AVX2.

#include "vxTypes.h"

#include <cstddef>
#include <immintrin.h>

namespace vx {
namespace {

constexpr int vectorBytes = 32;
constexpr bool canStream = true;
constexpr bool mapsFasterInFloat = true;

/// Writes 64 aligned bytes past the caches.
inline void streamLine(const unsigned char* from, unsigned char* to) {
  const auto* source = reinterpret_cast<const __m256i*>(from);
  auto* target = reinterpret_cast<__m256i*>(to);
  _mm256_stream_si256(target, _mm256_load_si256(source));
  _mm256_stream_si256(target + 1, _mm256_load_si256(source + 1));
}

inline void finishStreaming() { _mm_sfence(); }

inline __m128i load128(const unsigned char* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline __m128i load64(const unsigned char* p) { return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)); }
inline void store64(unsigned char* p, __m128i v) { _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v); }
inline void store128(unsigned char* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
inline void store256(unsigned char* p, __m256i v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }

// Eight 32-bit integers to voxels of the type of the last argument: the low bytes.

/// Takes the low bytes of each 64 bits by `order`, and puts the two halves side by side.
inline __m128i gatherLowBytes(__m256i v, __m256i order) {
  const __m256i low = _mm256_shuffle_epi8(v, order);
  return _mm_or_si128(_mm256_castsi256_si128(low), _mm256_extracti128_si256(low, 1));
}

inline void store32Bits(unsigned char* p, __m256i v, VXuint8) {
  store64(p, gatherLowBytes(v, _mm256_setr_epi8(0, 4, 8, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1,  //
                                                -1, -1, -1, -1, 0, 4, 8, 12, -1, -1, -1, -1, -1, -1, -1, -1)));
}
inline void store32Bits(unsigned char* p, __m256i v, VXuint16) {
  store128(p, gatherLowBytes(v, _mm256_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, -1, -1, -1, -1, -1, -1, -1, -1,  //
                                                 -1, -1, -1, -1, -1, -1, -1, -1, 0, 1, 4, 5, 8, 9, 12, 13)));
}
inline void store32Bits(unsigned char* p, __m256i v, VXint8) { store32Bits(p, v, VXuint8()); }
inline void store32Bits(unsigned char* p, __m256i v, VXint16) { store32Bits(p, v, VXuint16()); }
inline void store32Bits(unsigned char* p, __m256i v, VXint32) { store256(p, v); }

/// Eight voxels as double. The last argument of load() and store() is only the type of the voxels.
struct Lanes {
  static constexpr int size = 8;
  __m256d low;
  __m256d high;

  static Lanes all(double value) { return {_mm256_set1_pd(value), _mm256_set1_pd(value)}; }
  Lanes times(Lanes other) const { return {_mm256_mul_pd(low, other.low), _mm256_mul_pd(high, other.high)}; }
  Lanes plus(Lanes other) const { return {_mm256_add_pd(low, other.low), _mm256_add_pd(high, other.high)}; }

  static Lanes from32Bits(__m256i v) {
    return {_mm256_cvtepi32_pd(_mm256_castsi256_si128(v)), _mm256_cvtepi32_pd(_mm256_extracti128_si256(v, 1))};
  }
  static Lanes load(const unsigned char* p, VXint8) { return from32Bits(_mm256_cvtepi8_epi32(load64(p))); }
  static Lanes load(const unsigned char* p, VXuint8) { return from32Bits(_mm256_cvtepu8_epi32(load64(p))); }
  static Lanes load(const unsigned char* p, VXint16) { return from32Bits(_mm256_cvtepi16_epi32(load128(p))); }
  static Lanes load(const unsigned char* p, VXuint16) { return from32Bits(_mm256_cvtepu16_epi32(load128(p))); }
  static Lanes load(const unsigned char* p, VXint32) {
    return {_mm256_cvtepi32_pd(load128(p)), _mm256_cvtepi32_pd(load128(p + 16))};
  }
  /// Four unsigned 32-bit integers as double, exactly: put below the bits of 2^52, which is then taken away.
  static __m256d fromUnsigned(__m128i v) {
    const __m256d power = _mm256_set1_pd(4503599627370496.0);
    const __m256i bits = _mm256_or_si256(_mm256_cvtepu32_epi64(v), _mm256_castpd_si256(power));
    return _mm256_sub_pd(_mm256_castsi256_pd(bits), power);
  }
  static Lanes load(const unsigned char* p, VXuint32) {
    return {fromUnsigned(load128(p)), fromUnsigned(load128(p + 16))};
  }
  static Lanes load(const unsigned char* p, VXint64) {
    VXint64 in[size];
    double out[size];
    __builtin_memcpy(in, p, sizeof in);
#pragma GCC unroll 8
    for (int i = 0; i < size; ++i) out[i] = static_cast<double>(in[i]);
    return {_mm256_loadu_pd(out), _mm256_loadu_pd(out + 4)};
  }
  static Lanes load(const unsigned char* p, VXfloat) {
    const auto* in = reinterpret_cast<const float*>(p);
    return {_mm256_cvtps_pd(_mm_loadu_ps(in)), _mm256_cvtps_pd(_mm_loadu_ps(in + 4))};
  }
  static Lanes load(const unsigned char* p, VXdouble) {
    const auto* in = reinterpret_cast<const double*>(p);
    return {_mm256_loadu_pd(in), _mm256_loadu_pd(in + 4)};
  }

  // What doesn't fit the integers of the processor's conversions becomes their minimum, as it must.
  __m256i as32Bits() const {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(_mm256_cvttpd_epi32(low)), _mm256_cvttpd_epi32(high), 1);
  }
  void as64Bits(VXint64* out) const {
    double in[size];
    _mm256_storeu_pd(in, low);
    _mm256_storeu_pd(in + 4, high);
#pragma GCC unroll 8
    for (int i = 0; i < size; ++i) out[i] = _mm_cvttsd_si64(_mm_load_sd(in + i));
  }

  template <class T>
  void store(unsigned char* p, T type) const {
    store32Bits(p, as32Bits(), type);
  }
  void store(unsigned char* p, VXuint32) const {
    VXint64 in[size];
    VXuint32 out[size];
    as64Bits(in);
#pragma GCC unroll 8
    for (int i = 0; i < size; ++i) out[i] = static_cast<VXuint32>(in[i]);
    __builtin_memcpy(p, out, sizeof out);
  }
  void store(unsigned char* p, VXint64) const {
    VXint64 out[size];
    as64Bits(out);
    __builtin_memcpy(p, out, sizeof out);
  }
  void store(unsigned char* p, VXfloat) const {
    store128(p, _mm_castps_si128(_mm256_cvtpd_ps(low)));
    store128(p + 16, _mm_castps_si128(_mm256_cvtpd_ps(high)));
  }
  void store(unsigned char* p, VXdouble) const {
    store256(p, _mm256_castpd_si256(low));
    store256(p + 32, _mm256_castpd_si256(high));
  }
};

/// Eight voxels as float.
struct FloatLanes {
  static constexpr int size = 8;
  static constexpr bool has64Bits = false;
  __m256 v;

  static FloatLanes all(float value) { return {_mm256_set1_ps(value)}; }
  FloatLanes times(FloatLanes other) const { return {_mm256_mul_ps(v, other.v)}; }
  FloatLanes plus(FloatLanes other) const { return {_mm256_add_ps(v, other.v)}; }

  static FloatLanes load(const unsigned char* p) { return {_mm256_loadu_ps(reinterpret_cast<const float*>(p))}; }
  static FloatLanes load(const unsigned char* p, VXint16) {
    return {_mm256_cvtepi32_ps(_mm256_cvtepi16_epi32(load128(p)))};
  }
  static FloatLanes load(const unsigned char* p, VXuint16) {
    return {_mm256_cvtepi32_ps(_mm256_cvtepu16_epi32(load128(p)))};
  }

  template <class T>
  void store(unsigned char* p, T type) const {
    store32Bits(p, _mm256_cvttps_epi32(v), type);
  }
};

// There are no lookups in vectors.
inline bool canLookUp() { return false; }
template <class Result>
void lookUp(const Result*, const unsigned char*, unsigned char*, std::size_t) {}

}  // namespace
}  // namespace vx

#define VX_ROW_KERNELS_TABLE rowKernelsAvx2
#include "vxRowKernelsImpl.h"
