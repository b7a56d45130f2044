// The loops over runs of voxels for processors with AVX-512.

#include "vxTypes.h"

#include <cstddef>
#include <immintrin.h>

namespace vx {
namespace {

constexpr int vectorBytes = 64;
constexpr bool canStream = true;
constexpr bool mapsFasterInFloat = true;

/// Writes 64 aligned bytes past the caches.
inline void streamLine(const unsigned char* from, unsigned char* to) {
  _mm512_stream_si512(reinterpret_cast<__m512i*>(to), _mm512_load_si512(from));
}

inline void finishStreaming() { _mm_sfence(); }

inline __m128i load128(const unsigned char* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline __m128i load64(const unsigned char* p) { return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)); }
inline __m256i load256(const unsigned char* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
inline void store64(unsigned char* p, __m128i v) { _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v); }
inline void store128(unsigned char* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
inline void store256(unsigned char* p, __m256i v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }

/// Eight voxels as double. The last argument of load() and store() is only the type of the voxels.
struct Lanes {
  static constexpr int size = 8;
  __m512d v;

  static Lanes all(double value) { return {_mm512_set1_pd(value)}; }
  Lanes times(Lanes other) const { return {_mm512_mul_pd(v, other.v)}; }

  /// Adds by v * 1 + other, which has the same bits: the units that multiply are free when those that add convert.
  Lanes plus(Lanes other) const { return {_mm512_fmadd_pd(v, opaqueOne(), other.v)}; }

  /// 1, but compilers don't know.
  static __m512d opaqueOne() {
    __m512d one = _mm512_set1_pd(1);
    asm("" : "+v"(one));
    return one;
  }

  static Lanes load(const unsigned char* p, VXint8) { return {_mm512_cvtepi32_pd(_mm256_cvtepi8_epi32(load64(p)))}; }
  static Lanes load(const unsigned char* p, VXuint8) { return {_mm512_cvtepi32_pd(_mm256_cvtepu8_epi32(load64(p)))}; }
  static Lanes load(const unsigned char* p, VXint16) { return {_mm512_cvtepi32_pd(_mm256_cvtepi16_epi32(load128(p)))}; }
  static Lanes load(const unsigned char* p, VXuint16) {
    return {_mm512_cvtepi32_pd(_mm256_cvtepu16_epi32(load128(p)))};
  }
  static Lanes load(const unsigned char* p, VXint32) { return {_mm512_cvtepi32_pd(load256(p))}; }
  static Lanes load(const unsigned char* p, VXuint32) { return {_mm512_cvtepu32_pd(load256(p))}; }
  static Lanes load(const unsigned char* p, VXint64) { return {_mm512_cvtepi64_pd(_mm512_loadu_si512(p))}; }
  static Lanes load(const unsigned char* p, VXfloat) { return {_mm512_cvtps_pd(_mm256_castsi256_ps(load256(p)))}; }
  static Lanes load(const unsigned char* p, VXdouble) { return {_mm512_loadu_pd(p)}; }

  /// Four lanes of voxels of 16 bits, placed in the mantissas of 2^52: cheaper than to widen and convert them.
  /// \param lowest the voxel whose bits are all 0 in `words`.
  static void fromWords(__m512i words, double lowest, Lanes (&lanes)[4]) {
    const __m512i exponent = _mm512_set1_epi64(0x4330000000000000);
    const __m512d offset = _mm512_set1_pd(4503599627370496.0 - lowest);
    for (int i = 0; i < 4; ++i) {
      const __m512i chosen = _mm512_add_epi64(_mm512_setr_epi64(0, 1, 2, 3, 4, 5, 6, 7), _mm512_set1_epi64(8 * i));
      const __m512i bits = _mm512_mask_permutexvar_epi16(exponent, 0x11111111U, chosen, words);
      lanes[i].v = _mm512_sub_pd(_mm512_castsi512_pd(bits), offset);
    }
  }
  static void loadFour(const unsigned char* p, Lanes (&lanes)[4], VXuint16) {
    fromWords(_mm512_loadu_si512(p), 0, lanes);
  }
  static void loadFour(const unsigned char* p, Lanes (&lanes)[4], VXint16) {
    fromWords(_mm512_xor_si512(_mm512_loadu_si512(p), _mm512_set1_epi16(-32768)), -32768, lanes);
  }

  // What doesn't fit the integers of the processor's conversions becomes their minimum, as it must.
  __m256i as32Bits() const { return _mm512_cvttpd_epi32(v); }
  __m512i as64Bits() const { return _mm512_cvttpd_epi64(v); }

  void store(unsigned char* p, VXint8) const { store64(p, _mm256_cvtepi32_epi8(as32Bits())); }
  void store(unsigned char* p, VXuint8) const { store64(p, _mm256_cvtepi32_epi8(as32Bits())); }
  void store(unsigned char* p, VXint16) const { store128(p, _mm256_cvtepi32_epi16(as32Bits())); }
  void store(unsigned char* p, VXuint16) const { store128(p, _mm256_cvtepi32_epi16(as32Bits())); }
  void store(unsigned char* p, VXint32) const { store256(p, as32Bits()); }
  void store(unsigned char* p, VXuint32) const { store256(p, _mm512_cvtepi64_epi32(as64Bits())); }
  void store(unsigned char* p, VXint64) const { _mm512_storeu_si512(p, as64Bits()); }
  void store(unsigned char* p, VXfloat) const { store256(p, _mm256_castps_si256(_mm512_cvtpd_ps(v))); }
  void store(unsigned char* p, VXdouble) const { _mm512_storeu_pd(p, v); }
};

/// Sixteen voxels as float.
struct FloatLanes {
  static constexpr int size = 16;
  static constexpr bool has64Bits = true;
  __m512 v;

  static FloatLanes all(float value) { return {_mm512_set1_ps(value)}; }
  FloatLanes times(FloatLanes other) const { return {_mm512_mul_ps(v, other.v)}; }
  FloatLanes plus(FloatLanes other) const { return {_mm512_add_ps(v, other.v)}; }

  static FloatLanes load(const unsigned char* p) { return {_mm512_loadu_ps(p)}; }
  static FloatLanes load(const unsigned char* p, VXint16) {
    return {_mm512_cvtepi32_ps(_mm512_cvtepi16_epi32(load256(p)))};
  }
  static FloatLanes load(const unsigned char* p, VXuint16) {
    return {_mm512_cvtepi32_ps(_mm512_cvtepu16_epi32(load256(p)))};
  }

  __m512i as32Bits() const { return _mm512_cvttps_epi32(v); }

  void store(unsigned char* p, VXint8) const { store128(p, _mm512_cvtepi32_epi8(as32Bits())); }
  void store(unsigned char* p, VXuint8) const { store128(p, _mm512_cvtepi32_epi8(as32Bits())); }
  void store(unsigned char* p, VXint16) const { store256(p, _mm512_cvtepi32_epi16(as32Bits())); }
  void store(unsigned char* p, VXuint16) const { store256(p, _mm512_cvtepi32_epi16(as32Bits())); }
  void store(unsigned char* p, VXint32) const { _mm512_storeu_si512(p, as32Bits()); }

  __m512i lowAs64Bits() const { return _mm512_cvttps_epi64(_mm512_castps512_ps256(v)); }
  __m512i highAs64Bits() const { return _mm512_cvttps_epi64(_mm512_extractf32x8_ps(v, 1)); }

  void store(unsigned char* p, VXuint32) const {
    // Numbers that fit need no step through 64 bits, which is the slower one.
    const __mmask16 isNotNegative = _mm512_cmp_ps_mask(v, _mm512_setzero_ps(), _CMP_GE_OQ);
    if (_mm512_mask_cmp_ps_mask(isNotNegative, v, _mm512_set1_ps(4294967296.0F), _CMP_LT_OQ) == 0xffff) {
      _mm512_storeu_si512(p, _mm512_cvttps_epu32(v));
      return;
    }
    store256(p, _mm512_cvtepi64_epi32(lowAs64Bits()));
    store256(p + 32, _mm512_cvtepi64_epi32(highAs64Bits()));
  }
  void store(unsigned char* p, VXint64) const {
    _mm512_storeu_si512(p, lowAs64Bits());
    _mm512_storeu_si512(p + 64, highAs64Bits());
  }
};

// Tables of 256 results, for processors that permute bytes: bits 0 to 6 of a voxel choose in each half of the table,
// and bit 7 chooses the half.

inline bool canLookUp() { return __builtin_cpu_supports("avx512vbmi"); }

/// A table of bytes.
struct ByteTable {
  __m512i quarters[4];

  explicit ByteTable(const unsigned char* bytes) {
    for (int i = 0; i < 4; ++i) quarters[i] = _mm512_loadu_si512(bytes + 64 * i);
  }
  __attribute__((target("avx512vbmi"))) __m512i at(__m512i voxels) const {
    const __m512i low = _mm512_permutex2var_epi8(quarters[0], voxels, quarters[1]);
    const __m512i high = _mm512_permutex2var_epi8(quarters[2], voxels, quarters[3]);
    return _mm512_mask_blend_epi8(_mm512_movepi8_mask(voxels), low, high);
  }
};

/// Replaces each byte of a run by its result in the table. The run may be the result's.
__attribute__((target("avx512vbmi"))) void lookUp(const VXuint8* results, const unsigned char* in, unsigned char* out,
                                                  std::size_t n) {
  const ByteTable table(results);
  std::size_t i = 0;
  for (; n - i >= 64; i += 64) _mm512_storeu_si512(out + i, table.at(_mm512_loadu_si512(in + i)));
  for (; i < n; ++i) out[i] = results[in[i]];
}

/// The same for results of 16 bits, whose bytes have a table each.
__attribute__((target("avx512vbmi"))) void lookUp(const VXuint16* results, const unsigned char* in, unsigned char* out,
                                                  std::size_t n) {
  unsigned char lowBytes[256];
  unsigned char highBytes[256];
  for (int i = 0; i < 256; ++i) {
    lowBytes[i] = static_cast<unsigned char>(results[i]);
    highBytes[i] = static_cast<unsigned char>(results[i] >> 8);
  }
  const ByteTable lowTable(lowBytes);
  const ByteTable highTable(highBytes);
  // Bytes are put side by side within 128 bits: the first half of the run goes to the low halves of these.
  const __m512i order = _mm512_setr_epi64(0, 4, 1, 5, 2, 6, 3, 7);
  std::size_t i = 0;
  for (; n - i >= 64; i += 64) {
    const __m512i voxels = _mm512_permutexvar_epi64(order, _mm512_loadu_si512(in + i));
    const __m512i low = lowTable.at(voxels);
    const __m512i high = highTable.at(voxels);
    _mm512_storeu_si512(out + 2 * i, _mm512_unpacklo_epi8(low, high));
    _mm512_storeu_si512(out + 2 * i + 64, _mm512_unpackhi_epi8(low, high));
  }
  for (; i < n; ++i) __builtin_memcpy(out + 2 * i, results + in[i], 2);
}

}  // namespace
}  // namespace vx

#define VX_ROW_KERNELS_TABLE rowKernelsAvx512
#include "vxRowKernelsImpl.h"
