/// \file hostLoops.h
/// The loops of the modules that the host is measured with, and the hand-written loops that do the work of a whole
/// network at once. Both are compiled alike, so that what is compared is the host.

#ifndef VX_HOST_LOOPS_H
#define VX_HOST_LOOPS_H

#include <cstddef>
#include <cstdint>

namespace vx::bench {

/// \name Point operations on a run; input and output may be one run
///@{
void subtractAndScale(const float* in, float* out, std::size_t n);  // (v - 100) * 1.5
void add(const float* a, const float* b, float* out, std::size_t n);
void absolute(const float* in, float* out, std::size_t n);
void clearBelow(const float* in, float* out, std::size_t n);  // 0 below 50
void scaleDown(const float* in, float* out, std::size_t n);   // * 0.25
///@}

/// The five operations above on 2-byte voxels at once.
void fusedChain(const std::uint16_t* a, const std::uint16_t* b, float* out, std::size_t n);

/// Converts and maps: v * scale + shift.
void convertAndMap(const std::uint16_t* in, float* out, std::size_t n, double scale, double shift);

/// Voxels of an image that is stored nowhere. \param x,y position of the first one of the run.
void synthesize(std::int64_t x, std::int64_t y, std::uint8_t* out, std::size_t n);

/// Means of 3 x 3 voxels. \param rows the three rows, from one voxel before the run to one behind it.
void mean3x3(const std::uint8_t* const rows[3], std::uint8_t* out, std::size_t n);

/// \return the sum of a run.
std::uint64_t sum(const std::uint8_t* in, std::size_t n);

/// The sum of the 3 x 3 means of rows of the image that synthesize() makes, whose border is repeated outside.
/// \param extent of the image in both directions. \param firstRow,numRows the rows. \param memory for four rows and
/// eight voxels.
std::uint64_t fusedMeanSum(std::int64_t extent, std::int64_t firstRow, std::int64_t numRows, std::uint8_t* memory);

}  // namespace vx::bench

#endif
