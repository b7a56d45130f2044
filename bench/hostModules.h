/// \file hostModules.h
/// The modules that the host is measured with. Each does its work by a loop of hostLoops.h.

#ifndef VX_HOST_MODULES_H
#define VX_HOST_MODULES_H

#include "hostLoops.h"

#include "vxBaseOp.h"
#include "vxDataTypes.h"
#include "vxPagedImg.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace vx::bench {

/// \return the number of voxels of a block.
inline std::size_t numVoxelsOf(const SubImg& block) { return static_cast<std::size_t>(block.getBox().getNumVoxels()); }

/// \return the voxels of a block.
template <class T>
T* voxelsOf(const SubImg& block) {
  return static_cast<T*>(block.getData());
}

/// A module that may run on threads and only reads its inputs.
class BenchModule : public BaseOp {
 public:
  explicit BenchModule(int numInputs, int numOutputs = 1) : BaseOp(numInputs, numOutputs) {
    setThreadSupport(THREAD_SUPPORTED);
    setInputsReadOnly(true);
  }
  using BaseOp::calcOutSubImage;
};

/// Gives voxels of 2 bytes that it holds in memory.
class MemorySource : public BenchModule {
 public:
  MemorySource(const TVector<VXint64>& ext, std::uint16_t* voxels)
      : BenchModule(0),
        _ext(ext),
        _image(SubImgBox(TVector<VXint64>(), ext - TVector<VXint64>(1)), VXuint16Type, voxels) {}

  void calcOutImageProps(int outIndex) override {
    getOutImg(outIndex)->setDataType(VXuint16Type);
    getOutImg(outIndex)->setImgExt(_ext);
  }
  void calcOutSubImage(SubImg* outSubImg, int, SubImg*) override { outSubImg->copySubImage(_image); }

 private:
  TVector<VXint64> _ext;
  SubImg _image;
};

/// Gives voxels that it calculates, row by row.
template <class T>
class CalculatedSource : public BenchModule {
 public:
  using Row = std::function<void(std::int64_t x, std::int64_t y, T* out, std::size_t n)>;

  CalculatedSource(const TVector<VXint64>& ext, VXDataType dataType, Row row)
      : BenchModule(0), _ext(ext), _dataType(dataType), _row(std::move(row)) {}

  void calcOutImageProps(int outIndex) override {
    getOutImg(outIndex)->setDataType(_dataType);
    getOutImg(outIndex)->setImgExt(_ext);
  }
  void calcOutSubImage(SubImg* outSubImg, int, SubImg*) override {
    const SubImgBox box = outSubImg->getBox();
    const auto n = static_cast<std::size_t>(box.getExt().x);
    T* out = voxelsOf<T>(*outSubImg);
    for (VXint64 y = box.v1.y; y <= box.v2.y; ++y, out += n) _row(box.v1.x, y, out, n);
  }

 private:
  TVector<VXint64> _ext;
  VXDataType _dataType;
  Row _row;
};

/// Passes its input through, as BaseOp does.
class PassThrough : public BenchModule {
 public:
  explicit PassThrough(BaseOp& input) : BenchModule(1) { connectInput(0, input, 0); }
};

/// One of the point operations on floats, of one image or two.
class PointModule : public BenchModule {
 public:
  using Run = std::function<void(SubImg* inputs, float* out, std::size_t n)>;

  PointModule(std::initializer_list<BaseOp*> inputs, Run run)
      : BenchModule(static_cast<int>(inputs.size())), _run(std::move(run)) {
    int index = 0;
    for (BaseOp* const input : inputs) connectInput(index++, *input, 0);
  }

  void calcOutImageProps(int outIndex) override { getOutImg(outIndex)->setDataType(VXfloatType); }
  void calcOutSubImage(SubImg* outSubImg, int, SubImg* inSubImgs) override {
    _run(inSubImgs, voxelsOf<float>(*outSubImg), numVoxelsOf(*outSubImg));
  }

 private:
  Run _run;
};

/// Means of 3 x 3 voxels, the border of the image repeated outside.
class MeanModule : public BenchModule {
 public:
  explicit MeanModule(BaseOp& input) : BenchModule(1) {
    setInputsReadOnly(false);
    connectInput(0, input, 0);
  }

  SubImgBox calcInSubImageBox(int, const SubImgBox& outSubImgBox, int) override {
    const TVector<VXint64> border(1, 1, 0, 0, 0, 0);
    return SubImgBox(outSubImgBox.v1 - border, outSubImgBox.v2 + border);
  }
  void calcOutSubImage(SubImg* outSubImg, int, SubImg* inSubImgs) override {
    inSubImgs[0].fillBordersWithClampedInputValues(getOutImg(0)->getBoxFromImgExt());
    const TVector<VXint64> ext = outSubImg->getBox().getExt();
    const auto n = static_cast<std::size_t>(ext.x);
    const auto* const in = voxelsOf<std::uint8_t>(inSubImgs[0]);
    auto* const out = voxelsOf<std::uint8_t>(*outSubImg);
    for (std::size_t y = 0; y < static_cast<std::size_t>(ext.y); ++y) {
      const std::uint8_t* const rows[3] = {in + y * (n + 2), in + (y + 1) * (n + 2), in + (y + 2) * (n + 2)};
      mean3x3(rows, out + y * n, n);
    }
  }
};

/// Collects the sum of its input, page by page, on one thread.
class SumModule : public BenchModule {
 public:
  SumModule(BaseOp& input, std::function<double(const SubImg&)> sumOf) : BenchModule(1, 0), _sumOf(std::move(sumOf)) {
    connectInput(0, input, 0);
    setThreadSupport(NO_THREAD_SUPPORT);
  }

  void calcOutSubImage(SubImg*, int, SubImg* inSubImgs) override { _sum += _sumOf(inSubImgs[0]); }

  double takeSum() { return std::exchange(_sum, 0); }

 private:
  std::function<double(const SubImg&)> _sumOf;
  double _sum = 0;
};

}  // namespace vx::bench

#endif
