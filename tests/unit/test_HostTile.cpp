#include "MessageRecorder.h"
#include "TestModules.h"

#include "vxCachedBuffer.h"
#include "vxDataTypes.h"
#include "vxHost.h"
#include "vxMemory.h"

#include <gtest/gtest.h>
#include <vector>

namespace vx::test {
namespace {

// The voxels of a tile as numbers.
std::vector<VXint64> valuesOf(const SubImgBox& box, VXDataType dataType, void* data) {
  std::vector<VXint64> values(static_cast<std::size_t>(box.getNumVoxels()));
  SubImg(box, VXint64Type, values.data()).copySubImage(SubImg(box, dataType, data));
  return values;
}

template <class ValueAt>
std::vector<VXint64> valuesAt(const SubImgBox& box, ValueAt&& valueAt) {
  std::vector<VXint64> values(static_cast<std::size_t>(box.getNumVoxels()));
  SubImg block(box, VXint64Type, values.data());
  setVoxels<VXint64>(block, valueAt);
  return values;
}

class HostTileTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { startEngine(); }

  // A tile as numbers; the result code goes to `code`.
  std::vector<VXint64> tile(BaseOp& op, const SubImgBox& box, VXDataType dataType = VXint64Type,
                            const ScaleShiftData& scaleShift = ScaleShiftData()) {
    void* data = nullptr;
    code = host.getTile(op, 0, box, dataType, &data, scaleShift);
    const std::vector<VXint64> values = valuesOf(box, dataType, data);
    host.freeTile(data);
    return values;
  }

  MessageRecorder messages;
  Host host;
  int code = -1;
};

TEST_F(HostTileTest, DeliversATileFromSeveralPages) {
  SourceModule source(ext(50, 40), ext(16, 16), VXuint16Type);
  const SubImgBox box = boxOf(5, 7, 44, 33);
  EXPECT_EQ(tile(source, box, VXint32Type), valuesAt(box, sourceValue));
  EXPECT_EQ(code, 0);
  EXPECT_EQ(messages.take(), std::vector<Message>());
  EXPECT_EQ(source.numPages, 9);
}

TEST_F(HostTileTest, DeliversThroughAChainOnAnyNumberOfThreads) {
  for (const VXuint32 numThreads : {0U, 1U, 2U, 3U, 8U, 1000U, ~0U}) {
    host.setMaxNumThreads(numThreads);
    SourceModule source(ext(50, 40, 3), ext(16, 16), VXuint16Type);
    source.threaded();
    TestModule sum(2, 1);
    sum.threaded().connect(0, source).connect(1, source);
    sum.onCalcInSubImageBox = [](int in, const SubImgBox& box, int) {
      SubImgBox wanted = box;
      wanted.v1.x -= in;
      wanted.v2.x -= in;
      return wanted;
    };
    sum.onCalcOutSubImage = [](SubImg& out, int, SubImg* in, ThreadInfo&) {
      const auto numVoxels = out.getBox().getNumVoxels();
      for (VXint64 i = 0; i < numVoxels; ++i) {
        static_cast<VXuint16*>(out.getData())[i] = static_cast<VXuint16>(static_cast<VXuint16*>(in[0].getData())[i] +
                                                                         static_cast<VXuint16*>(in[1].getData())[i]);
      }
    };
    TestModule pass(1, 1);
    pass.threaded().connect(0, sum);
    const SubImgBox box({5, 7, 0, 0, 0, 0}, {44, 33, 2, 0, 0, 0});
    EXPECT_EQ(tile(pass, box), valuesAt(box, [](TVector<VXint64> p) {
                const VXint64 value = sourceValue(p);
                --p.x;
                return value + sourceValue(p);
              }));
    EXPECT_EQ(code, 0);
    EXPECT_EQ(messages.take(), std::vector<Message>());
    EXPECT_EQ(sum.numPages, 27);
    EXPECT_EQ(source.numPages, 27);
    EXPECT_EQ(host.isProcessingActive(), 0U);
    EXPECT_EQ(Field::isEnabledNotifications(), 1);
    EXPECT_EQ(VXIsMultithreadingActive(), 0);
  }
}

}  // namespace
}  // namespace vx::test
