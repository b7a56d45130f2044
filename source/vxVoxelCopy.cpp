#include "vxVoxelCopy.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace vx {

namespace {

using Byte = unsigned char;

constexpr std::size_t lineBytes = 64;             // of the caches
constexpr std::size_t prefetchedRowBytes = 4096;  // longer rows are found by the processor itself
constexpr std::size_t prefetchDistance = 4096;    // bytes of rows that are on the way at a time
constexpr int toSecondCache = 2;                  // the first one has room for few lines that are on the way

// Rows that are apart in memory end before the processor sees that they go on: the rows to come are asked for in time.
class RowPrefetch {
 public:
  RowPrefetch(const VoxelBlock& out, const VoxelBlock& in, const SubImgBox& box)
      : _rowBytesIn(bytesOfRow(in, box)), _rowBytesOut(bytesOfRow(out, box)) {
    const std::size_t rowBytes = std::max(_rowBytesIn, _rowBytesOut);
    if (rowBytes == 0 || rowBytes > prefetchedRowBytes) return;
    const auto numRows = static_cast<VXint64>(std::clamp<std::size_t>(prefetchDistance / rowBytes, 1, 16));
    _stepIn = stepOf(in, _rowBytesIn, numRows);
    _stepOut = stepOf(out, _rowBytesOut, numRows);
  }

  void operator()(const Byte* from) const {
    if (_stepIn != 0) prefetch<0>(from, _stepIn, _rowBytesIn);
  }
  void operator()(const Byte* from, const Byte* to) const {
    operator()(from);
    if (_stepOut != 0) prefetch<1>(to, _stepOut, _rowBytesOut);
  }

 private:
  static std::size_t bytesOfRow(const VoxelBlock& block, const SubImgBox& box) {
    return static_cast<std::size_t>(box.getExt().x) * static_cast<std::size_t>(block.voxelSize);
  }
  // The bytes to the row to come; 0 where rows follow each other.
  static VXuint64 stepOf(const VoxelBlock& block, std::size_t rowBytes, VXint64 numRows) {
    const VXuint64 stride = static_cast<VXuint64>(block.stride.y) * block.voxelSize;
    return stride == rowBytes ? 0 : stride * static_cast<VXuint64>(numRows);
  }
  // An address past the block is harmless.
  template <int isWritten>
  static void prefetch(const Byte* row, VXuint64 step, std::size_t rowBytes) {
    const auto first = reinterpret_cast<std::uintptr_t>(row) + step;
    for (std::size_t i = 0; i < rowBytes; i += lineBytes) {
      __builtin_prefetch(reinterpret_cast<const void*>(first + i), isWritten, toSecondCache);
    }
  }

  std::size_t _rowBytesIn;
  std::size_t _rowBytesOut;
  VXuint64 _stepIn = 0;
  VXuint64 _stepOut = 0;
};

#ifdef __SSE2__

constexpr std::size_t chunkBytes = 4096;

// Whether a copy goes to a block that exceeds the caches, in rows too short for the loops to see that. The block is
// written past the caches then, which saves reading it before.
bool goesPastCaches(const VoxelBlock& out, const SubImgBox& box) {
  constexpr VXuint64 minBytes = VXuint64{16} << 20;
  const std::size_t rowBytes = static_cast<std::size_t>(box.getExt().x) * static_cast<std::size_t>(out.voxelSize);
  VXuint64 numVoxels = 0;
  return rowBytes >= 2 * lineBytes && rowBytes <= chunkBytes && out.box.getNumVoxelsChecked(numVoxels) &&
         numVoxels >= minBytes / out.voxelSize && box.getNumVoxels() > box.getExt().x;
}

void streamRow(const Byte* from, Byte* to, std::size_t n) {
  const std::size_t beyond = reinterpret_cast<std::uintptr_t>(to) % lineBytes;
  if (beyond != 0) {
    const std::size_t head = std::min(n, lineBytes - beyond);
    std::memcpy(to, from, head);
    from += head;
    to += head;
    n -= head;
  }
  for (; n >= lineBytes; n -= lineBytes, from += lineBytes, to += lineBytes) {
    const auto* const source = reinterpret_cast<const __m128i*>(from);
    auto* const target = reinterpret_cast<__m128i*>(to);
    const __m128i a = _mm_loadu_si128(source);
    const __m128i b = _mm_loadu_si128(source + 1);
    const __m128i c = _mm_loadu_si128(source + 2);
    const __m128i d = _mm_loadu_si128(source + 3);
    _mm_stream_si128(target, a);
    _mm_stream_si128(target + 1, b);
    _mm_stream_si128(target + 2, c);
    _mm_stream_si128(target + 3, d);
  }
  if (n != 0) std::memcpy(to, from, n);
}

bool doOverlap(const VoxelBlock& a, const VoxelBlock& b) {
  const auto sizeOf = [](const VoxelBlock& block) {
    return static_cast<VXuint64>(block.box.getNumVoxels()) * block.voxelSize;
  };
  const auto first = reinterpret_cast<std::uintptr_t>(a.data);
  const auto second = reinterpret_cast<std::uintptr_t>(b.data);
  return first < second ? second - first < sizeOf(a) : first - second < sizeOf(b);
}

// Runs longer than a chunk, rows that follow each other in both blocks, are left to the loop itself.
template <class Convert>
bool convertPastCaches(const SubImgBox& box, const VoxelBlock& out, const VoxelBlock& in, Convert&& convert) {
  if (!goesPastCaches(out, box)) return false;
  const RowPrefetch prefetch(out, in, box);
  alignas(lineBytes) Byte chunk[chunkBytes];
  walkRuns(box, out, in, [&](Byte* to, const Byte* from, std::size_t numVoxels) {
    const std::size_t n = numVoxels * static_cast<std::size_t>(out.voxelSize);
    if (n > chunkBytes) {
      convert(from, to, numVoxels);
      return;
    }
    prefetch(from);
    convert(from, chunk, numVoxels);
    streamRow(chunk, to, n);
  });
  _mm_sfence();
  return true;
}

bool copyPastCaches(const SubImgBox& box, const VoxelBlock& out, const VoxelBlock& in) {
  if (!goesPastCaches(out, box) || doOverlap(out, in)) return false;
  const RowPrefetch prefetch(out, in, box);
  walkRuns(box, out, in, [&](Byte* to, const Byte* from, std::size_t numVoxels) {
    const std::size_t n = numVoxels * static_cast<std::size_t>(out.voxelSize);
    if (n > chunkBytes) {
      std::memcpy(to, from, n);
      return;
    }
    prefetch(from);
    streamRow(from, to, n);
  });
  _mm_sfence();
  return true;
}

#else

template <class Convert>
bool convertPastCaches(const SubImgBox&, const VoxelBlock&, const VoxelBlock&, Convert&&) {
  return false;
}
bool copyPastCaches(const SubImgBox&, const VoxelBlock&, const VoxelBlock&) { return false; }

#endif

}  // namespace

bool isNeutral(const ScaleShiftData& scaleShift) {
  constexpr double epsilon = std::numeric_limits<double>::epsilon();
  return std::abs(scaleShift.scale - 1.0) < epsilon && std::abs(scaleShift.shift - 0.0) < epsilon;
}

SubImgBox boxToCopy(const VoxelBlock& out, const VoxelBlock& in) {
  const SubImgBox box = SubImgBox::intersect(out.box, in.box);
  if (box.isEmpty()) return SubImgBox();
  if (!out.data || !in.data) {
    report(VX_ERROR, "TSubImg::copySubImg()", VX_BAD_POINTER,
           "Valid data pointers in source and target subimage required forsubimage copying, thus call is ignored.");
    return SubImgBox();
  }
  return box;
}

void copyVoxels(const SubImgBox& box, const VoxelBlock& out, const VoxelBlock& in) {
  if (out.data == in.data && out.box == in.box && out.stride == in.stride) return;  // of a block to itself
  if (copyPastCaches(box, out, in)) return;
  const RowPrefetch prefetch(out, in, box);
  walkRuns(box, out, in, [&](Byte* to, const Byte* from, std::size_t numVoxels) {
    prefetch(from, to);
    std::memmove(to, from, numVoxels * static_cast<std::size_t>(out.voxelSize));
  });
}

void convertVoxels(const SubImgBox& box, const VoxelBlock& out, const VoxelBlock& in, ConvertRun convert) {
  if (convertPastCaches(box, out, in, convert)) return;
  const RowPrefetch prefetch(out, in, box);
  walkRuns(box, out, in, [&](Byte* to, const Byte* from, std::size_t numVoxels) {
    prefetch(from, to);
    convert(from, to, numVoxels);
  });
}

void convertVoxels(const SubImgBox& box, const VoxelBlock& out, const VoxelBlock& in, ConvertScaledRun convert,
                   const ScaleShiftData& scaleShift) {
  const auto map = [&](const Byte* from, Byte* to, std::size_t numVoxels) {
    convert(from, to, numVoxels, scaleShift.scale, scaleShift.shift);
  };
  // A block may be mapped onto itself, which a way past the caches is no use for.
  if (out.data != in.data && convertPastCaches(box, out, in, map)) return;
  const RowPrefetch prefetch(out, in, box);
  walkRuns(box, out, in, [&](Byte* to, const Byte* from, std::size_t numVoxels) {
    prefetch(from, to);
    map(from, to, numVoxels);
  });
}

}  // namespace vx
