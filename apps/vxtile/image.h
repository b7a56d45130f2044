/// \file image.h
/// What an image is, as far as a request needs it, and the pieces in which a box of it is calculated.

#ifndef VXTILE_IMAGE_H
#define VXTILE_IMAGE_H

#include "values.h"

#include "vxHandles.h"

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace vxtile {

/// Voxels or positions along x, y, z, c, t, u.
using Extent = std::array<int, numAxes>;

/// Properties of a valid image.
struct ImageInfo {
  Extent extent{};
  Extent pageExtent{};
  VXDataType type = -1;
  double minimum = 0;  ///< As the image says, not measured.
  double maximum = 0;
  std::array<float, 16> toWorld{};  ///< Row after row.
};

/// Reads the properties of an image, which brings it up to date.
/// \param name of the output, for messages. \throw Failure ExitCode::calculation with the state of the image.
ImageInfo readImageInfo(VXField* output, const std::string& name);

/// A box of voxels of an image.
struct Box {
  Extent first{};
  Extent extent{};
  /// \return the number of voxels; sizes that don't fit are as good as SIZE_MAX.
  std::size_t numVoxels() const;
  /// \return "x 0:300, y 0:369, z 5": axes of extent 1 at 0 are left out, all of them gives "one voxel".
  std::string text() const;
};

/// \return the part of an image that a request means. \param name of the output, for messages.
/// \throw Failure ExitCode::network where the request reaches past the image.
Box boxOf(const BoxRequest& request, const Extent& imageExtent, const std::string& name);

/// How a box is cut into pieces that a writer can take one after the other.
struct CutRules {
  std::array<std::size_t, numAxes> order{0, 1, 2, 3, 4, 5};  ///< Axes in the order of the file, the fastest first.
  std::size_t firstCut = 0;                                  ///< Position in `order` from which on the box may be cut.
  std::size_t lastCut = numAxes - 1;  ///< Pieces have extent 1 along all axes behind this position.
  bool isBackward = false;            ///< Pieces come in the opposite order.
};

/// Cuts a box into pieces of about a size. Cuts lie between pages where that is possible, so that no page is needed
/// twice. \param voxelBytes of the tile. \param pieceBytes the size aimed at.
std::vector<Box> cutBox(const Box& box, const Extent& pageExtent, std::size_t voxelBytes, std::size_t pieceBytes,
                        const CutRules& rules);

}  // namespace vxtile

#endif
