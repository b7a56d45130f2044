// Requests to a chain of three modules, as scenarios.

#ifndef VX_TESTS_FAULT_NETWORK_H
#define VX_TESTS_FAULT_NETWORK_H

#include "FaultScenarios.h"

#include "vxCachedBuffer.h"
#include "vxScaleShiftData.h"
#include "vxSubImg.h"

namespace vx::test {

/// A request to a chain of modules: a source, and two that add 1 to each voxel. They run on threads.
class FaultNetwork : public FaultScenario {
 public:
  /// \param pageSize in x and y. \param numPagesX,numPagesY of the image.
  explicit FaultNetwork(VXint64 pageSize = 16, VXDataType dataType = VXuint16Type, VXint64 numPagesX = 3,
                        VXint64 numPagesY = 3);

  void mend() override;
  std::vector<TestModule*> modules() override { return {&last, &middle, &source}; }

  /// \return what a voxel of the image of the last module is.
  VXint64 valueAt(const TVector<VXint64>& position) const { return sourceValue(position) + numSteps; }
  SubImgBox wholeBox() const { return boxOf(0, 0, _imgExt.x - 1, _imgExt.y - 1); }
  SubImgBox firstPage() const { return boxOf(0, 0, _pageSize - 1, _pageSize - 1); }

  SourceModule source;
  TestModule middle{1, 1};
  TestModule last{1, 1};
  int numSteps = 2;

 private:
  VXint64 _pageSize;
  TVector<VXint64> _imgExt;
};

/// The three ways to ask for a tile by C++, and that by C.
enum class TileForm { memory, block, buffer, c };

/// A tile of a network.
class FaultTile : public FaultNetwork {
 public:
  using FaultNetwork::FaultNetwork;
  ~FaultTile() override;

  int call() override;
  void expectRight() override;
  void expectFailed() override;
  std::vector<const CachedBuffer*> buffers() override { return {&_buffer}; }

  std::size_t numPagesOfInput() const override { return inputGroup; }

  SubImgBox box = firstPage();
  std::size_t inputGroup = 1;
  VXDataType tileType = VXuint16Type;
  ScaleShiftData scaleShift;
  TileForm form = TileForm::memory;

 private:
  int request();

  void* _data = nullptr;
  SubImg _block;
  CachedBuffer _buffer;
};

/// The properties of a network that is out of date.
class FaultProperties : public FaultNetwork {
 public:
  int call() override;
  void expectRight() override;
  void expectFailed() override;
};

/// A walk through all pages of the last module, or of its input.
class FaultWalk : public FaultNetwork {
 public:
  explicit FaultWalk(bool isOfInput) : _isOfInput(isOfInput) {}

  int call() override;
  void expectRight() override;
  std::vector<TestModule*> modules() override;
  int numLocksOfResult() const override { return _isOfInput ? 0 : 1; }

 private:
  bool _isOfInput;
};

}  // namespace vx::test

#endif
