/// \file vxInSubImageProps.h
/// How a module wants an input delivered.

#ifndef VX_IN_SUB_IMAGE_PROPS_H
#define VX_IN_SUB_IMAGE_PROPS_H

#include "vxScaleShiftData.h"
#include "vxTypes.h"

namespace vx {

/// The wishes of a module for one input of one page. A plain record that is filled with what the module gets without
/// asking, and read after BaseOp::calcInSubImageProps().
struct InSubImageProps {
  /// No type, no caching, no mapping.
  InSubImageProps() = default;
  /// \param outputType voxel type of the output.
  explicit InSubImageProps(VXDataType outputType) noexcept : dataType(outputType) {}

  VXDataType dataType = -1;       ///< Voxel type of the input's block, that of the output unless changed.
  bool inTileCaching = false;     ///< Whether the whole input shall be kept in one block for all pages.
  ScaleShiftData scaleShiftData;  ///< Mapping of the input's values, none unless changed.
};

}  // namespace vx

#endif
