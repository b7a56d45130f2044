/// \file pagedLoops.h
/// The work of some networks page by page, written by hand without any engine: what an image costs that goes through
/// pages at all. Each module's page goes to memory that was used as long ago as the cache is large.

#ifndef VX_PAGED_LOOPS_H
#define VX_PAGED_LOOPS_H

#include <cstddef>
#include <cstdint>

namespace vx::bench {

/// Memory for pages, handed out round and round.
class PageRing {
 public:
  /// \param bytes of the ring, more than one page. The memory is touched here, and in huge pages where there are any.
  explicit PageRing(std::size_t bytes);
  ~PageRing();
  PageRing(const PageRing&) = delete;
  PageRing& operator=(const PageRing&) = delete;

  /// \return the next `n` voxels; they stay until the ring has gone round.
  template <class T>
  T* take(std::size_t n) {
    return reinterpret_cast<T*>(_take(n * sizeof(T)));
  }

 private:
  unsigned char* _take(std::size_t bytes);

  std::size_t _size;
  unsigned char* _memory;
  std::size_t _next = 0;
};

/// \name Pages of 128 x 128 voxels of an image of 512 x 512 x 256
///@{
/// Takes each page out of an image, copies it on as often as told, and writes it to another image.
void copyByPages(const std::uint16_t* in, std::uint16_t* out, int numCopies, PageRing& ring);
/// Does the work of fusedChain() with a page for each of its five operations and for each input.
void chainByPages(const std::uint16_t* a, const std::uint16_t* b, float* out, PageRing& ring);
///@}

}  // namespace vx::bench

#endif
