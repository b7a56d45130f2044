#include "pagedLoops.h"

#include "hostLoops.h"

#include <cstring>
#include <new>

#ifdef __linux__
#include <sys/mman.h>
#endif
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace vx::bench {

namespace {

constexpr std::size_t imageSide = 512;
constexpr std::size_t pageSide = 128;
constexpr std::size_t pageVoxels = pageSide * pageSide;
constexpr std::size_t pagesPerRow = imageSide / pageSide;
constexpr std::size_t numPages = imageSide * imageSide * 256 / pageVoxels;
constexpr std::align_val_t ringAlignment{2 << 20};
constexpr std::size_t lineBytes = 64;

// The first voxel of a row of a page within its image.
std::size_t rowOf(std::size_t page, std::size_t row) {
  const std::size_t z = page / (pagesPerRow * pagesPerRow);
  const std::size_t y = page / pagesPerRow % pagesPerRow * pageSide + row;
  return (z * imageSide + y) * imageSide + page % pagesPerRow * pageSide;
}

// Rows of an image lie apart, so those to come are asked for.
void readPage(const std::uint16_t* image, std::size_t page, std::uint16_t* out) {
  constexpr std::size_t numRowsAhead = 4;
  for (std::size_t row = 0; row < pageSide; ++row) {
    const std::uint16_t* const from = image + rowOf(page, row);
    for (std::size_t i = 0; i < pageSide; i += lineBytes / sizeof *from) {
      __builtin_prefetch(from + numRowsAhead * imageSide + i, 0, 2);
    }
    std::memcpy(out + row * pageSide, from, pageSide * sizeof *from);
  }
}

// Rows go past the caches, as a whole image doesn't fit there.
template <class T>
void writePage(const T* page, std::size_t index, T* image) {
  for (std::size_t row = 0; row < pageSide; ++row) {
    const T* const from = page + row * pageSide;
    T* const to = image + rowOf(index, row);
#ifdef __SSE2__
    const auto* const source = reinterpret_cast<const __m128i*>(from);
    auto* const target = reinterpret_cast<__m128i*>(to);
    for (std::size_t i = 0; i < pageSide * sizeof(T) / sizeof(__m128i); ++i) {
      _mm_stream_si128(target + i, _mm_loadu_si128(source + i));
    }
#else
    std::memcpy(to, from, pageSide * sizeof(T));
#endif
  }
}

void convert(const std::uint16_t* in, float* out) {
  for (std::size_t i = 0; i < pageVoxels; ++i) out[i] = in[i];
}

}  // namespace

PageRing::PageRing(std::size_t bytes)
    : _size(bytes), _memory(static_cast<unsigned char*>(::operator new(bytes, ringAlignment))) {
#ifdef __linux__
  madvise(_memory, bytes, MADV_HUGEPAGE);
#endif
  std::memset(_memory, 1, bytes);
}

PageRing::~PageRing() { ::operator delete(_memory, ringAlignment); }

unsigned char* PageRing::_take(std::size_t bytes) {
  if (_size - _next < bytes) _next = 0;
  unsigned char* const memory = _memory + _next;
  _next += bytes;
  return memory;
}

void copyByPages(const std::uint16_t* in, std::uint16_t* out, int numCopies, PageRing& ring) {
  for (std::size_t page = 0; page < numPages; ++page) {
    auto* voxels = ring.take<std::uint16_t>(pageVoxels);
    readPage(in, page, voxels);
    for (int i = 0; i < numCopies; ++i) {
      auto* const copy = ring.take<std::uint16_t>(pageVoxels);
      std::memcpy(copy, voxels, pageVoxels * sizeof *copy);
      voxels = copy;
    }
    writePage(voxels, page, out);
  }
}

void chainByPages(const std::uint16_t* a, const std::uint16_t* b, float* out, PageRing& ring) {
  alignas(lineBytes) static float block[pageVoxels];  // an input in the type that the operation works in
  const auto convertedInput = [&](const std::uint16_t* image, std::size_t page) {
    auto* const voxels = ring.take<std::uint16_t>(pageVoxels);
    readPage(image, page, voxels);
    convert(voxels, block);
    return static_cast<const float*>(block);
  };
  const auto newPage = [&ring] { return ring.take<float>(pageVoxels); };
  for (std::size_t page = 0; page < numPages; ++page) {
    float* const scaled = newPage();
    subtractAndScale(convertedInput(a, page), scaled, pageVoxels);
    float* const sum = newPage();
    add(scaled, convertedInput(b, page), sum, pageVoxels);
    float* const positive = newPage();
    absolute(sum, positive, pageVoxels);
    float* const cleared = newPage();
    clearBelow(positive, cleared, pageVoxels);
    float* const scaledDown = newPage();
    scaleDown(cleared, scaledDown, pageVoxels);
    writePage(scaledDown, page, out);
  }
}

}  // namespace vx::bench
