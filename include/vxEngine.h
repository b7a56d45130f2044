/// \file vxEngine.h
/// The base of modules without images.

#ifndef VX_ENGINE_H
#define VX_ENGINE_H

#include "vxBaseOp.h"

namespace vx {

/// A module that has fields only: it reacts to them in handleNotification() and takes no part in calculating images.
class VX_EXPORT Engine : public BaseOp {
 public:
  /// \param numInputs,numOutputs image inputs and outputs, which are to be 0. Others are reported as fatal with
  ///        ::VX_MISUSED_INTERFACE and made all the same.
  explicit Engine(int numInputs = 0, int numOutputs = 0);

  /// Not supported: reports as fatal with ::VX_MISUSED_INTERFACE and makes a module of its own.
  Engine(const Engine& other);
  /// Not supported: reports as fatal with ::VX_MISUSED_INTERFACE and changes nothing.
  Engine& operator=(const Engine& other);

  ~Engine() override;

  VX_ABSTRACT_CLASS_HEADER(Engine)

 protected:
  bool _isActive = false;  ///< For subclasses; the library doesn't read it.
};

}  // namespace vx

#endif
