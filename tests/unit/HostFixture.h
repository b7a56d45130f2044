// What tests of the host share: a host with recorded messages, tiles as numbers, and the state that each call leaves.

#ifndef VX_TESTS_HOST_FIXTURE_H
#define VX_TESTS_HOST_FIXTURE_H

#include "MessageRecorder.h"
#include "TestModules.h"

#include "vxCachedBuffer.h"
#include "vxDataTypes.h"
#include "vxHost.h"
#include "vxMemory.h"

#include <gtest/gtest.h>
#include <vector>

namespace vx::test {

/// What a caught error code is reported with.
inline constexpr char controlledException[] =
    "Controlled but still undesired exception caught - continuing operation. "
    "Some processed image data may be invalid";

/// A kind of thing that a module may throw that is no error code.
struct OtherException {};

/// \return the voxels of a tile as numbers.
inline std::vector<VXint64> valuesOf(const SubImgBox& box, VXDataType dataType, void* data) {
  std::vector<VXint64> values(static_cast<std::size_t>(box.getNumVoxels()));
  if (!values.empty() && data) SubImg(box, VXint64Type, values.data()).copySubImage(SubImg(box, dataType, data));
  return values;
}

/// \return the voxels of a box by their position.
template <class ValueAt>
std::vector<VXint64> valuesAt(const SubImgBox& box, ValueAt&& valueAt) {
  std::vector<VXint64> values(static_cast<std::size_t>(box.getNumVoxels()));
  SubImg block(box, VXint64Type, values.data());
  setVoxels<VXint64>(block, valueAt);
  return values;
}

/// Switches exception handling for the length of a scope.
class ExceptionHandling {
 public:
  explicit ExceptionHandling(bool isOn) : _before(VXIsExceptionHandlingEnabled()) { VXEnableExceptionHandling(isOn); }
  ~ExceptionHandling() { VXEnableExceptionHandling(_before); }
  ExceptionHandling(const ExceptionHandling&) = delete;
  ExceptionHandling& operator=(const ExceptionHandling&) = delete;

 private:
  int _before;
};

/// A host whose counters are as before after each test, and whose messages are all expected.
class HostFixture : public testing::Test {
 protected:
  static void SetUpTestSuite() { registerTestModules(); }

  void TearDown() override {
    EXPECT_EQ(messages.take(), std::vector<Message>());
    expectRest();
  }

  // Nothing is under way.
  void expectRest() {
    EXPECT_EQ(host.isProcessingActive(), 0U);
    EXPECT_EQ(Field::enableNotificationsCounterState(), 1);
    EXPECT_EQ(VXIsMultithreadingActive(), 0);
  }

  // A tile as numbers; the result code goes to `code`. What isn't written is -1.
  std::vector<VXint64> tile(BaseOp& op, const SubImgBox& box, VXDataType dataType = VXint64Type,
                            const ScaleShiftData& scaleShift = ScaleShiftData(), VXint64 outIndex = 0) {
    SubImg block(box, dataType);
    block.allocate(VX_RETURN_NULL);
    block.fillSubImg(-1);
    void* data = block.getData();
    const MemoryPtr<void> memory(data);
    code = host.getTile(op, outIndex, box, dataType, &data, scaleShift);
    return valuesOf(box, dataType, data);
  }

  MessageRecorder messages;
  Host host;
  int code = -1;
};

}  // namespace vx::test

#endif
